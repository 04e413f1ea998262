#pragma once

#include "transforms/calculatedates.h"

#include <QLocale>
#include <QString>
#include <QStringList>

// The operations of the Calculate transform and what one row of it computes. A row's values
// arrive as texts; the result is always a text, and a failure is an error text in the cell
// plus one or two problems for the transform's messages.
namespace Calculate {

// In the order in which the Operation option offers them.
enum class Operation {
    Add,
    Subtract,
    Multiply,
    Divide,
    Power,
    Modulus,
    Abs,
    And,
    AndBitwise,
    Ceiling,
    DateTimeToMSecs,
    DateToJulianDay,
    DaysInMonth,
    DaysInYear,
    DayOfWeek,
    DayOfMonth,
    DayOfYear,
    Decrement,
    Floor,
    Increment,
    IndexOf,
    JulianDayToDate,
    LastIndexOf,
    Length,
    LevDistance,
    Log10,
    Log2,
    Ln,
    Maximum,
    Minimum,
    Month,
    MSecsToDateTime,
    MSecsToTime,
    Occurrences,
    Or,
    OrBitwise,
    Quarter,
    Round,
    Sign,
    TimeToMSecs,
    WeekOfYear,
    WordCount,
    Xor,
    XorBitwise,
    Year,
    Count
};

// The display texts, in Operation order; documents store these.
const QStringList &operationNames();
// Operation::Count for a text that names none.
Operation operationFromName(const QString &name);
bool takesTwoValues(Operation operation);
// What stands for the operation in automatic column names: "+" for "+ Add", else the name.
QString shortName(Operation operation);
// Whether the operation looks at which values are dates; the others never need the probe.
bool usesDates(Operation operation);

// Why a value failed; each has a short message (the value is a constant) and a long one
// naming the column.
enum class Failure {
    IsoDateTime,
    MSecsNotInteger,
    MSecsNotEpoch,
    Time,
    TimeMSecsNotInteger,
    TimeMSecsRange,
    JulianNotInteger,
    JulianDay,
    JulianRange,
    Date,
    OnDate,
    OnValue1Date,
    OnTwoDates,
    Number,
    WrongKind,
    NotPositive,
    NotInteger,
    DivideByZero,
    ModulusByZero
};

// The message of a failure at row (0-based) for a value with the given text; column is the
// column's name, or null for a constant, which takes the short form.
QString failureMessage(Failure failure, const QString &value, const QString *column, int row);

// One value of a failure: the failure and which value (1 or 2) it is about; 0 for a failure
// of the row as a whole, which has only the short form.
struct Problem
{
    Failure failure = Failure::Number;
    int value = 0;
};

// The outcome of one row: the text for the cell and, when it failed, one or two problems.
struct Outcome
{
    QString text;
    Problem problems[2];
    int problemCount = 0;

    bool failed() const { return problemCount > 0; }
    void fail(const QString &cellText, Failure failure, int value)
    {
        text = cellText;
        if (problemCount < 2)
            problems[problemCount++] = {failure, value};
    }
};

// Whether a value is a date for the whole run, and the format that reads it.
struct Operand
{
    bool isDate = false;
    QString format;
};

// Computes rows for one operation, with what was decided once before the row loop.
class Calculator
{
public:
    Calculator(Operation operation, const Operand &value1, const Operand &value2);

    // a and b are the raw texts of Value 1 and 2; b is ignored by one-value operations.
    void calculate(const QString &a, const QString &b, Outcome *outcome) const;

private:
    void calculateOne(const QString &a, Outcome *outcome) const;
    // The conversions of times, date-times and Julian days, which need no date format;
    // false for any other operation.
    bool calculateConversion(const QString &a, Outcome *outcome) const;
    void calculateNumberOne(const QString &a, Outcome *outcome) const;
    void calculateDateOne(const QString &a, Outcome *outcome) const;
    void calculateTwo(const QString &a, const QString &b, Outcome *outcome) const;
    void calculateDates(const QString &a, const QString &b, Outcome *outcome) const;
    void calculateDatePlusDays(const QString &a, const QString &b, Outcome *outcome) const;
    void calculateBooleans(const QString &a, const QString &b, Outcome *outcome) const;
    void calculateNumbers(const QString &a, const QString &b, Outcome *outcome) const;
    void calculateIntegers(const QString &a, const QString &b, Outcome *outcome) const;
    QString integerText(qlonglong value) const { return m_integerLocale.toString(value); }

    Operation m_operation;
    Operand m_value1;
    Operand m_value2;
    bool m_decimalIsPoint;
    QLocale m_locale;
    // The locale without group separators, for integers written into cells.
    QLocale m_integerLocale;
    // Each value's dates in its own format; results are written in Value 1's.
    mutable DateTexts m_dates1;
    mutable DateTexts m_dates2;
};

// Halves go towards positive infinity: 2.5 gives 3, -2.5 gives -2.
double roundHalfUp(double value);
// The number of words: runs of characters that are neither white space nor punctuation.
int wordCount(const QString &text);

} // namespace Calculate
