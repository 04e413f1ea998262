#include "transforms/transformnumberformat.h"

#include "data/valueinterpretation.h"
#include "transforms/cellrules.h"
#include "transforms/framework/parameter.h"
#include "transforms/valueproblems.h"

#include <QLocale>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace {

enum Format { FormatE, FormatUpperE, FormatF, FormatG, FormatUpperG, FormatShortest };

bool isGrouping(QChar ch, QChar group)
{
    switch (ch.unicode()) {
    case ' ':
    case 0x00A0:
    case 0x202F:
    case '\'':
    case 0x2019:
        return true;
    default:
        return ch == group;
    }
}

// One text's say in which of '.' and ',' is the decimal separator: 1 for '.', -1 for ',', 0
// when both readings fit or neither character occurs.
int decimalVote(QStringView text)
{
    int dots = 0;
    int commas = 0;
    int lastDot = -1;
    int lastComma = -1;
    for (int i = 0; i < text.size(); ++i) {
        if (text.at(i) == QLatin1Char('.')) {
            ++dots;
            lastDot = i;
        } else if (text.at(i) == QLatin1Char(',')) {
            ++commas;
            lastComma = i;
        }
    }
    if (dots > 0 && commas > 0)
        return lastDot > lastComma ? 1 : -1;
    if (dots + commas == 0)
        return 0;
    const bool dot = dots > 0;
    // The one that repeats groups digits.
    if (dots > 1 || commas > 1)
        return dot ? -1 : 1;
    const int at = dot ? lastDot : lastComma;
    int digitsAfter = 0;
    while (at + 1 + digitsAfter < text.size() && text.at(at + 1 + digitsAfter).isDigit())
        ++digitsAfter;
    int digitsBefore = 0;
    for (int i = at - 1; i >= 0 && text.at(i).isDigit(); --i)
        ++digitsBefore;
    // "1,234" groups as well as it divides; "0,5", ",25" and "3,75" can only divide.
    const bool leadingZero
        = digitsBefore == 0 || (digitsBefore == 1 && text.at(at - 1) == QLatin1Char('0'));
    if (digitsAfter == 3 && !leadingZero)
        return 0;
    return dot ? 1 : -1;
}

} // namespace

const TransformDescriptor &TransformNumberFormat::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 35;
        d.typeName = QStringLiteral("Num_Format");
        d.displayName = QStringLiteral("Num Format");
        d.category = CategoryFormat;
        d.flags
            = TransformDescriptor::ChangesValuesOnly | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Change the number format in the selected column(s).");
        d.keywords = QStringLiteral("numbers decimals separators comma dot point precision "
                                    "rounding exponent scientific locales thousands grouping")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformNumberFormat>;
        return d;
    }();
    return descriptor;
}

QStringList TransformNumberFormat::decimalChoices()
{
    return {QStringLiteral("Automatic"), QStringLiteral("US/UK . (dot)"),
            QStringLiteral("European , (comma)"), QStringLiteral("Locale in Preferences"),
            QStringLiteral("Selected locale")};
}

QStringList TransformNumberFormat::formatChoices()
{
    return {QStringLiteral("e"), QStringLiteral("E"), QStringLiteral("f"),
            QStringLiteral("g"), QStringLiteral("G"), QStringLiteral("s")};
}

void TransformNumberFormat::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(CellRules::createColumnsParameter(
        inputs.value(0), QStringLiteral("Select the column(s) with numbers to change.")));

    const QStringList decimals = decimalChoices();
    auto *decimalFrom = new Parameter(ParameterType::Selection, QStringLiteral("Decimal_From"),
                                      QStringLiteral("From"), decimals.first(), decimals);
    decimalFrom->setToolTip(
        QStringLiteral("Whether . (Dot) or , (Comma) characters should be interpreted as the "
                       "decimal separator in the input dataset:\n\n%1: Make an intelligent guess "
                       "for each column, based on the input data.\n%2: Use . (Dot) as the decimal "
                       "separator.\n%3: Use , (Comma) as the decimal separator.\n%4: Use the "
                       "locale in the 'Preferences' window.\n%5: Use the selected locale.\n\n"
                       "Click the ? button for more details.")
            .arg(decimals.at(0), decimals.at(1), decimals.at(2), decimals.at(3), decimals.at(4)));
    applyRememberedValue(useRemembered, decimalFrom);
    addParameter(decimalFrom);

    auto *inputLocale = new Parameter(ParameterType::Locale, QStringLiteral("Input_Locale"),
                                      QStringLiteral("Locale from"), QVariant());
    inputLocale->setToolTip(QStringLiteral("The locale whose decimal and group separators the "
                                           "input numbers use, for '%1'.")
                                .arg(decimals.at(SelectedLocale)));
    applyRememberedValue(useRemembered, inputLocale);
    addParameter(inputLocale);

    const QStringList formats = formatChoices();
    auto *format = new Parameter(ParameterType::Selection, QStringLiteral("Format"),
                                 QStringLiteral("Format to"), formats.at(FormatF), formats);
    format->setToolTip(QStringLiteral(
        "The new number format.\ne=exponent, e.g.: 1.230e+06\nE=exponent, e.g.: 1.230E+06\n"
        "f=floating point, e.g.: 1230000.000\ng=most concise of e or f\nG=most concise of E or "
        "f\ns=shortest accurate, e.g.: 1230000\n\nClick the ? button for more details."));
    applyRememberedValue(useRemembered, format);
    addParameter(format);

    auto *precision = new Parameter(ParameterType::Int, QStringLiteral("Precision"),
                                    QStringLiteral("Precision to"), 2);
    precision->setMaximumInt(30);
    precision->setToolTip(QStringLiteral(
        "The number of digits after the decimal point.\n\nClick the ? button for more details."));
    applyRememberedValue(useRemembered, precision);
    addParameter(precision);

    auto *outputLocale = new Parameter(ParameterType::Locale, QStringLiteral("Output_Locale"),
                                       QStringLiteral("Locale to"), QVariant());
    outputLocale->setToolTip(
        QStringLiteral("The locale whose decimal and group separators the new numbers use."));
    applyRememberedValue(useRemembered, outputLocale);
    addParameter(outputLocale);

    auto *group = new Parameter(ParameterType::Bool, QStringLiteral("Group_Separator"),
                                QStringLiteral("use group separator"), false);
    const QLocale locale;
    QLocale ungrouped = locale;
    ungrouped.setNumberOptions(QLocale::OmitGroupSeparator);
    QLocale grouped = locale;
    grouped.setNumberOptions({});
    group->setToolTip(QStringLiteral("Check to include the group separator for your locale.\n"
                                     "E.g. to turn '%1' into '%2'.")
                          .arg(ungrouped.toString(1234567), grouped.toString(1234567)));
    applyRememberedValue(useRemembered, group);
    addParameter(group);

    const QStringList treatments {QStringLiteral("Leave unchanged"), QStringLiteral("Set to empty"),
                                  QStringLiteral("Set to NaN")};
    auto *nonNumeric = new Parameter(ParameterType::Selection, QStringLiteral("Non_Numeric"),
                                     QStringLiteral("Non-numeric"), treatments.first(), treatments);
    nonNumeric->setToolTip(QStringLiteral("What to do with non-numeric values.\n(%1=not a number).")
                               .arg(QStringLiteral("NaN")));
    applyRememberedValue(useRemembered, nonNumeric);
    addParameter(nonNumeric);
}

void TransformNumberFormat::migrateParameters(int, QList<StoredParameter> *parameters) const
{
    // Some documents leave the list of columns unnamed.
    for (StoredParameter &parameter : *parameters) {
        if (parameter.key.isEmpty()
            && (parameter.type == int(ParameterType::MultipleColumns)
                || parameter.type == int(ParameterType::MultipleColumnsOrdered)))
            parameter.key = QStringLiteral("Columns");
    }
}

QList<ParameterState> TransformNumberFormat::parameterStates() const
{
    const Parameter *decimalFrom = parameter(QStringLiteral("Decimal_From"));
    const Parameter *format = parameter(QStringLiteral("Format"));
    return {{QStringLiteral("Input_Locale"),
             decimalFrom && decimalFrom->toSelectionIndex() == SelectedLocale},
            {QStringLiteral("Precision"), format && format->toSelectionIndex() != FormatShortest}};
}

bool TransformNumberFormat::readNumber(QStringView text, const Syntax &syntax, double *value)
{
    text = text.trimmed();
    // Currency signs are dropped first, with the blanks that set them apart ("€ 12").
    QString withoutCurrency;
    if (std::any_of(text.begin(), text.end(),
                    [](QChar ch) { return ch.category() == QChar::Symbol_Currency; })) {
        for (const QChar ch : text) {
            if (ch.category() != QChar::Symbol_Currency)
                withoutCurrency += ch;
        }
        text = QStringView(withoutCurrency).trimmed();
    }
    std::string plain;
    plain.reserve(size_t(text.size()));
    const ushort zero = syntax.zero.unicode();
    const auto digitOf = [zero](QChar ch) {
        const ushort u = ch.unicode();
        if (u >= '0' && u <= '9')
            return int(u - '0');
        if (zero != '0' && u >= zero && u <= zero + 9)
            return int(u - zero);
        return -1;
    };
    // A separator between groups of three digits; Indian numbers group by two below the
    // thousands ("12,34,567"). Anything else, such as the dot of "1.5" where the comma is the
    // decimal separator, is no grouping.
    const auto groupFollows = [&](int at) {
        int n = 0;
        while (at + 1 + n < text.size() && digitOf(text.at(at + 1 + n)) >= 0)
            ++n;
        return n == 3 || (n == 2 && at + 3 < text.size() && text.at(at + 3) == text.at(at));
    };
    enum Part { Sign, Whole, Fraction, ExponentSign, Exponent } part = Sign;
    int digits = 0;
    int exponentDigits = 0;
    const int size = int(text.size());
    for (int i = 0; i < size; ++i) {
        const QChar ch = text.at(i);
        const int digit = digitOf(ch);
        if (digit >= 0) {
            plain += char('0' + digit);
            if (part == Sign)
                part = Whole;
            if (part == ExponentSign)
                part = Exponent;
            (part == Exponent ? exponentDigits : digits) += 1;
        } else if (part == Sign && plain.empty()
                   && (ch == QLatin1Char('-') || ch == QLatin1Char('+')
                       || ch.unicode() == 0x2212)) {
            if (ch != QLatin1Char('+'))
                plain += '-';
        } else if (part == Whole && isGrouping(ch, syntax.group) && digitOf(text.at(i - 1)) >= 0
                   && groupFollows(i)) {
            continue;
        } else if ((part == Sign || part == Whole) && ch == syntax.decimal) {
            plain += '.';
            part = Fraction;
        } else if ((part == Whole || part == Fraction) && digits > 0
                   && (ch == QLatin1Char('e') || ch == QLatin1Char('E'))) {
            plain += 'e';
            part = ExponentSign;
        } else if (part == ExponentSign && plain.back() == 'e'
                   && (ch == QLatin1Char('-') || ch == QLatin1Char('+'))) {
            plain += char(ch.unicode());
        } else {
            return false;
        }
    }
    if (digits == 0 || part == ExponentSign)
        return false;
    double number = 0.0;
    const std::from_chars_result parsed
        = std::from_chars(plain.data(), plain.data() + plain.size(), number);
    if (parsed.ec != std::errc() || parsed.ptr != plain.data() + plain.size()
        || !std::isfinite(number))
        return false;
    *value = number;
    return true;
}

QChar TransformNumberFormat::guessDecimal(const Dataset &data, int c, QChar fallback)
{
    qint64 dots = 0;
    qint64 commas = 0;
    const int rowCount = data.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        const int vote = decimalVote(data.cell(r, c));
        dots += vote > 0;
        commas += vote < 0;
    }
    if (dots == commas)
        return fallback;
    return dots > commas ? QLatin1Char('.') : QLatin1Char(',');
}

TransformNumberFormat::Syntax TransformNumberFormat::syntaxFor(int decimalFrom, const Dataset &data,
                                                               int c)
{
    const QLocale preferences;
    Syntax syntax;
    switch (decimalFrom) {
    case Dot:
        break;
    case Comma:
        syntax.decimal = QLatin1Char(',');
        syntax.group = QLatin1Char('.');
        break;
    case PreferencesLocale:
    case SelectedLocale: {
        const QLocale locale = decimalFrom == PreferencesLocale
            ? preferences
            : option(QStringLiteral("Input_Locale")).toLocale();
        syntax.decimal = locale.decimalPoint();
        syntax.group = locale.groupSeparator();
        syntax.zero = locale.zeroDigit();
        break;
    }
    default: {
        const QChar fallback
            = preferences.decimalPoint() == QLatin1Char(',') ? QLatin1Char(',') : QLatin1Char('.');
        syntax.decimal = guessDecimal(data, c, fallback);
        syntax.group = syntax.decimal == QLatin1Char('.') ? QLatin1Char(',') : QLatin1Char('.');
        addInformation(QStringLiteral("Guessing decimal separator '%1' for column %2 ('%3').")
                           .arg(syntax.decimal, QString::number(c + 1), data.headerText(c)));
        break;
    }
    }
    return syntax;
}

Dataset &TransformNumberFormat::process(Dataset &output, const TransformInputs &inputs,
                                        const RunContext &context, bool &)
{
    const QList<int> columns = CellRules::selectedColumns(option(QStringLiteral("Columns")));
    const int decimalFrom = option(QStringLiteral("Decimal_From")).toSelectionIndex();
    const int format = option(QStringLiteral("Format")).toSelectionIndex();
    const int precision = format == FormatShortest ? int(QLocale::FloatingPointShortest)
                                                   : option(QStringLiteral("Precision")).toInt();
    const char formatChar = format == FormatShortest ? 'f' : "eEfgG"[format];
    QLocale locale = option(QStringLiteral("Output_Locale")).toLocale();
    locale.setNumberOptions(option(QStringLiteral("Group_Separator")).toBool()
                                ? QLocale::NumberOptions()
                                : QLocale::OmitGroupSeparator);
    const auto nonNumeric = UnreadValue(option(QStringLiteral("Non_Numeric")).toSelectionIndex());
    const QString replacement
        = nonNumeric == UnreadValue::Replace ? QStringLiteral("NaN") : QString();

    output = inputDataset(inputs, 0);
    QVector<Syntax> syntaxes;
    for (int c : columns)
        syntaxes.append(syntaxFor(decimalFrom, output, c));

    CellConversion conversion(QStringLiteral("%1 non-numeric %2:"));
    conversion.unread = nonNumeric;
    conversion.replacement = replacement;
    convertCells(
        output, columns, conversion,
        [&](int i, const QString &cell, QString *text) {
            double value = 0.0;
            if (!readNumber(cell, syntaxes.at(i), &value))
                return false;
            *text = locale.toString(value, formatChar, precision);
            return true;
        },
        [this](int r, int rowCount) { reportRow(r, rowCount); },
        [&context] { return context.isStopRequested(); });

    for (const QString &line : conversion.problems.lines())
        addWarning(line);
    setResult(conversion.result(QStringLiteral("non-numeric")));
    return output;
}
