#include "transforms/calculateoperations.h"

#include "data/valueinterpretation.h"

#include <QHash>

#include <climits>
#include <cmath>

namespace Calculate {

namespace {

const QString NumberExpected = QStringLiteral("Error: number expected");
const QString BooleanExpected = QStringLiteral("Error: boolean expected");
const QString DateExpected = QStringLiteral("Error: date expected");
const QString InvalidOperation = QStringLiteral("Error: invalid operation");
const QString IntegerExpected = QStringLiteral("Error: integer expected");

struct FailureTexts
{
    const char *shortForm;
    // Null where the failure never names a column.
    const char *longForm;
    // Whether %1 is the value's text; otherwise the messages start with the column.
    bool quotesValue;
};

const FailureTexts &failureTexts(Failure failure)
{
    static const FailureTexts texts[] = {
        {"'%1' is not a valid ISO datetime at row %2",
         "'%1' is not a valid ISO datetime in column '%2' at row %3", true},
        {"'%1' is not a valid integer value for msecs at row %2",
         "'%1' is not a valid integer value for msecs in column '%2' at row %3", true},
        {"'%1' is not valid msecs since epoch at row %2",
         "'%1' is not valid msecs since epoch in column '%2' at row %3", true},
        {"'%1' is not a valid time at row %2", "'%1' is not a valid time in column '%2' at row %3",
         true},
        {"'%1' integer msecs expected at row %2",
         "'%1' integer msecs expected in column '%2' at row %3", true},
        {"'%1' msecs out of range at row %2", "'%1' msecs out of range in column '%2' at row %3",
         true},
        {"'%1' is not a valid integer expected for msecs at row %2",
         "'%1' is not a valid integer expected for msecs in column '%2' at row %3", true},
        {"'%1' is not a valid Julian day at row %2",
         "'%1' is not a valid Julian day in column '%2' at row %3", true},
        {"'%1' is out of range to represent a Julian day as an ISO date at row %2",
         "'%1' is out of range to represent a Julian day as an ISO date in column '%2' at row "
         "%3",
         true},
        {"'%1' is not a valid date at row %2", "'%1' is not a valid date in column '%2' at row %3",
         true},
        {"Operation not valid on date '%1' at row %2",
         "Operation not valid on date '%1' in column '%2' at row %3", true},
        {"Operation not valid on a date at row %1",
         "Operation not valid on a date in column '%1' at row %2", false},
        {"Operation not valid on 2 dates at row %1", nullptr, false},
        // Only two texts go in; the lowest marker left takes the row.
        {"'%1' is not a number at row %3", "'%1' is not a number in column '%2' at row %3", true},
        {"'%1' is not a valid value for this operation at row %2",
         "'%1' is not a valid value for this operation in column '%2' at row %3", true},
        {"'%1' <= 0 at row %2", "'%1' <= 0 in column '%2' at row %3", true},
        {"'%1' is not an integer at row %2", "'%1' is not an integer in column '%2' at row %3",
         true},
        {"Divide by 0 at row %1", "Divide by 0 in column '%1' at row %2", false},
        {"Modulus by 0 at row %1", "Modulus by 0 in column '%1' at row %2", false},
    };
    return texts[int(failure)];
}

bool isDateOnly(Operation operation)
{
    switch (operation) {
    case Operation::DayOfWeek:
    case Operation::DayOfMonth:
    case Operation::DayOfYear:
    case Operation::Month:
    case Operation::Year:
    case Operation::WeekOfYear:
    case Operation::DateToJulianDay:
    case Operation::Quarter:
    case Operation::DaysInMonth:
    case Operation::DaysInYear:
        return true;
    default:
        return false;
    }
}

} // namespace

const QStringList &operationNames()
{
    static const QStringList names {"+ Add",
                                    "- Subtract",
                                    "* Multiply",
                                    "/ Divide",
                                    "^ Power",
                                    "% Modulus",
                                    "Abs",
                                    "And",
                                    "AndBitwise",
                                    "Ceiling",
                                    "DateTimeToMSecs",
                                    "DateToJulianDay",
                                    "DaysInMonth",
                                    "DaysInYear",
                                    "DayOfWeek",
                                    "DayOfMonth",
                                    "DayOfYear",
                                    "Decrement",
                                    "Floor",
                                    "Increment",
                                    "IndexOf",
                                    "JulianDayToDate",
                                    "LastIndexOf",
                                    "Length",
                                    "LevDistance",
                                    "Log10",
                                    "Log2",
                                    "Ln",
                                    "Maximum",
                                    "Minimum",
                                    "Month",
                                    "MSecsToDateTime",
                                    "MSecsToTime",
                                    "Occurrences",
                                    "Or",
                                    "OrBitwise",
                                    "Quarter",
                                    "Round",
                                    "Sign",
                                    "TimeToMSecs",
                                    "WeekOfYear",
                                    "WordCount",
                                    "Xor",
                                    "XorBitwise",
                                    "Year"};
    return names;
}

Operation operationFromName(const QString &name)
{
    const int index = operationNames().indexOf(name);
    return index < 0 ? Operation::Count : Operation(index);
}

bool takesTwoValues(Operation operation)
{
    switch (operation) {
    case Operation::Add:
    case Operation::Subtract:
    case Operation::Multiply:
    case Operation::Divide:
    case Operation::Power:
    case Operation::Modulus:
    case Operation::LevDistance:
    case Operation::Maximum:
    case Operation::Minimum:
    case Operation::Or:
    case Operation::And:
    case Operation::Xor:
    case Operation::IndexOf:
    case Operation::LastIndexOf:
    case Operation::Occurrences:
    case Operation::AndBitwise:
    case Operation::OrBitwise:
    case Operation::XorBitwise:
        return true;
    default:
        return false;
    }
}

QString shortName(Operation operation)
{
    const QString &name = operationNames().at(int(operation));
    return operation <= Operation::Modulus ? name.left(name.indexOf(QLatin1Char(' '))) : name;
}

bool usesDates(Operation operation)
{
    switch (operation) {
    case Operation::Length:
    case Operation::WordCount:
    case Operation::DateTimeToMSecs:
    case Operation::MSecsToDateTime:
    case Operation::TimeToMSecs:
    case Operation::MSecsToTime:
    case Operation::JulianDayToDate:
    case Operation::LevDistance:
    case Operation::IndexOf:
    case Operation::LastIndexOf:
    case Operation::Occurrences:
        return false;
    default:
        return true;
    }
}

QString failureMessage(Failure failure, const QString &value, const QString *column, int row)
{
    const FailureTexts &texts = failureTexts(failure);
    const QString rowText = QString::number(row + 1);
    // All texts go in at once, so that a value holding "%2" stays as it is.
    if (!column || !texts.longForm) {
        const QString form = QString::fromLatin1(texts.shortForm);
        return texts.quotesValue ? form.arg(value, rowText) : form.arg(rowText);
    }
    const QString form = QString::fromLatin1(texts.longForm);
    return texts.quotesValue ? form.arg(value, *column, rowText) : form.arg(*column, rowText);
}

double roundHalfUp(double value)
{
    const double down = std::floor(value);
    return value - down >= 0.5 ? down + 1.0 : down;
}

int wordCount(const QString &text)
{
    int words = 0;
    bool inWord = false;
    for (const QChar ch : text) {
        const bool separator = ch.isSpace() || ch.isPunct();
        if (!separator && !inWord)
            ++words;
        inWord = !separator;
    }
    return words;
}

Calculator::Calculator(Operation operation, const Operand &value1, const Operand &value2)
    : m_operation(operation)
    , m_value1(value1)
    , m_value2(value2)
    , m_decimalIsPoint(QLocale().decimalPoint() == QLatin1Char('.'))
{
    m_integerLocale.setNumberOptions(m_integerLocale.numberOptions() | QLocale::OmitGroupSeparator);
    m_dates1.setFormat(value1.format);
    m_dates2.setFormat(value2.format);
}

void Calculator::calculate(const QString &a, const QString &b, Outcome *outcome) const
{
    outcome->problemCount = 0;
    if (takesTwoValues(m_operation))
        calculateTwo(a, b, outcome);
    else
        calculateOne(a, outcome);
}

void Calculator::calculateOne(const QString &a, Outcome *outcome) const
{
    if (m_operation == Operation::Length) {
        outcome->text = integerText(a.size());
    } else if (m_operation == Operation::WordCount) {
        outcome->text = integerText(wordCount(a));
    } else if (calculateConversion(a, outcome)) {
        return;
    } else if (m_value1.isDate) {
        calculateDateOne(a, outcome);
    } else if (isDateOnly(m_operation)) {
        outcome->fail(DateExpected, Failure::Date, 1);
    } else {
        calculateNumberOne(a, outcome);
    }
}

void Calculator::calculateNumberOne(const QString &a, Outcome *outcome) const
{
    bool ok = false;
    const double x = toDoubleFast(a, m_decimalIsPoint, &ok);
    if (!ok) {
        outcome->fail(NumberExpected, Failure::Number, 1);
        return;
    }
    bool isInteger = false;
    const qlonglong n = toLongLong(a, false, true, &isInteger);
    switch (m_operation) {
    case Operation::Abs:
        outcome->text
            = isInteger && n != LLONG_MIN ? integerText(qAbs(n)) : numberToCellText(std::fabs(x));
        return;
    case Operation::Ceiling:
    case Operation::Floor:
    case Operation::Round: {
        if (isInteger) {
            outcome->text = integerText(n);
            return;
        }
        const double rounded = m_operation == Operation::Ceiling ? std::ceil(x)
            : m_operation == Operation::Floor                    ? std::floor(x)
                                                                 : roundHalfUp(x);
        // A 32-bit result, as the rounding has always given; beyond it the nearest end.
        const double clamped = qBound(double(INT_MIN), rounded, double(INT_MAX));
        outcome->text = integerText(qlonglong(clamped));
        return;
    }
    case Operation::Sign:
        outcome->text = integerText(x > 0.0 ? 1 : (x < 0.0 ? -1 : 0));
        return;
    case Operation::Increment:
    case Operation::Decrement: {
        const int step = m_operation == Operation::Increment ? 1 : -1;
        const bool fits = step > 0 ? n < LLONG_MAX : n > LLONG_MIN;
        outcome->text = isInteger && fits ? integerText(n + step) : numberToCellText(x + step);
        return;
    }
    default:
        break;
    }
    // The logarithms are what is left.
    if (x <= 0.0) {
        outcome->fail(QStringLiteral("Error: >0 expected"), Failure::NotPositive, 1);
        return;
    }
    const double result = m_operation == Operation::Log10 ? std::log10(x)
        : m_operation == Operation::Log2                  ? std::log2(x)
                                                          : std::log(x);
    outcome->text = numberToCellText(result);
}

void Calculator::calculateTwo(const QString &a, const QString &b, Outcome *outcome) const
{
    switch (m_operation) {
    case Operation::LevDistance:
        outcome->text = integerText(boundedLevenshtein(a, b, qMax(a.size(), b.size())));
        return;
    case Operation::IndexOf:
        outcome->text = a.isEmpty() ? integerText(1) : QString();
        if (!a.isEmpty()) {
            const int at = b.indexOf(a);
            if (at >= 0)
                outcome->text = integerText(at + 1);
        }
        return;
    case Operation::LastIndexOf:
        outcome->text = a.isEmpty() ? integerText(b.size() + 1) : QString();
        if (!a.isEmpty()) {
            const int at = b.lastIndexOf(a);
            if (at >= 0)
                outcome->text = integerText(at + 1);
        }
        return;
    case Operation::Occurrences:
        outcome->text = a.isEmpty() ? QString() : integerText(b.count(a));
        return;
    default:
        break;
    }
    if (m_value1.isDate && m_value2.isDate) {
        calculateDates(a, b, outcome);
    } else if (m_value1.isDate) {
        calculateDatePlusDays(a, b, outcome);
    } else if (m_value2.isDate) {
        outcome->fail(InvalidOperation, Failure::OnDate, 2);
    } else if (m_operation == Operation::Or || m_operation == Operation::And
               || m_operation == Operation::Xor) {
        calculateBooleans(a, b, outcome);
    } else {
        calculateNumbers(a, b, outcome);
    }
}

void Calculator::calculateBooleans(const QString &a, const QString &b, Outcome *outcome) const
{
    bool okA = false;
    bool okB = false;
    const bool x = toBool(a, true, true, &okA);
    const bool y = toBool(b, true, true, &okB);
    if (!okA)
        outcome->fail(BooleanExpected, Failure::WrongKind, 1);
    if (!okB)
        outcome->fail(BooleanExpected, Failure::WrongKind, 2);
    if (outcome->failed())
        return;
    const bool result = m_operation == Operation::Or ? (x || y)
        : m_operation == Operation::And              ? (x && y)
                                                     : (x != y);
    outcome->text = result ? QStringLiteral("true") : QStringLiteral("false");
}

void Calculator::calculateNumbers(const QString &a, const QString &b, Outcome *outcome) const
{
    bool okA = false;
    bool okB = false;
    const double x = toDoubleFast(a, m_decimalIsPoint, &okA);
    const double y = toDoubleFast(b, m_decimalIsPoint, &okB);
    if (!okA)
        outcome->fail(NumberExpected, Failure::WrongKind, 1);
    if (!okB)
        outcome->fail(NumberExpected, Failure::WrongKind, 2);
    if (outcome->failed())
        return;
    double result = 0.0;
    switch (m_operation) {
    case Operation::Add:
        result = x + y;
        break;
    case Operation::Subtract:
        result = x - y;
        break;
    case Operation::Multiply:
        result = x * y;
        break;
    case Operation::Divide:
        if (y == 0.0) {
            outcome->fail(QStringLiteral("Error: divide by 0"), Failure::DivideByZero, 2);
            return;
        }
        result = x / y;
        break;
    case Operation::Power:
        result = std::pow(x, y);
        break;
    case Operation::Maximum:
        result = qMax(x, y);
        break;
    case Operation::Minimum:
        result = qMin(x, y);
        break;
    default:
        calculateIntegers(a, b, outcome);
        return;
    }
    outcome->text = numberToCellText(result);
}

// Modulus and the bitwise operations work on 32-bit integers. Their cells all say "invalid
// operation", while the messages tell which value was no integer, or the zero divisor.
void Calculator::calculateIntegers(const QString &a, const QString &b, Outcome *outcome) const
{
    bool okA = false;
    bool okB = false;
    const int x = toInt(a, false, false, &okA);
    const int y = toInt(b, false, false, &okB);
    if (!okA)
        outcome->fail(InvalidOperation, Failure::NotInteger, 1);
    if (!okB)
        outcome->fail(InvalidOperation, Failure::NotInteger, 2);
    if (outcome->failed())
        return;
    qlonglong result = 0;
    switch (m_operation) {
    case Operation::Modulus:
        if (y == 0) {
            outcome->fail(InvalidOperation, Failure::ModulusByZero, 2);
            return;
        }
        // INT_MIN % -1 overflows; any number modulo -1 is 0.
        result = y == -1 ? 0 : x % y;
        break;
    case Operation::AndBitwise:
        result = x & y;
        break;
    case Operation::OrBitwise:
        result = x | y;
        break;
    default:
        result = x ^ y;
        break;
    }
    outcome->text = integerText(result);
}

} // namespace Calculate
