#include "transforms/transformnumbase.h"

#include "data/valueinterpretation.h"
#include "transforms/cellrules.h"
#include "transforms/framework/parameter.h"
#include "transforms/valueproblems.h"

#include <limits>

namespace {

// The value of a digit in any base up to 36, or -1.
int digitValue(QChar ch)
{
    const ushort u = ch.unicode();
    if (u >= '0' && u <= '9')
        return u - '0';
    if (u >= 'a' && u <= 'z')
        return u - 'a' + 10;
    if (u >= 'A' && u <= 'Z')
        return u - 'A' + 10;
    return -1;
}

bool hasHexPrefix(QStringView text)
{
    return text.size() > 2 && text.at(0) == QLatin1Char('0')
        && (text.at(1) == QLatin1Char('x') || text.at(1) == QLatin1Char('X'));
}

QStringView withoutSign(QStringView text)
{
    if (!text.isEmpty() && (text.at(0) == QLatin1Char('-') || text.at(0) == QLatin1Char('+')))
        return text.mid(1);
    return text;
}

} // namespace

const TransformDescriptor &TransformNumBase::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 34;
        d.typeName = QStringLiteral("Num_Base");
        d.displayName = QStringLiteral("Num Base");
        d.category = CategoryFormat;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly;
        d.description = QStringLiteral(
            "Change the number base of integer values, e.g. decimal to hexadecimal.");
        d.keywords = QStringLiteral("binary octal decimal denary hexadecimal hex radix integers "
                                    "convert conversion")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformNumBase>;
        return d;
    }();
    return descriptor;
}

void TransformNumBase::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(CellRules::createColumnsParameter(
        inputs.value(0), QStringLiteral("Select the column(s) with integers to change.")));

    auto *from = new Parameter(ParameterType::Int, QStringLiteral("From"),
                               QStringLiteral("Base from"), Guess);
    from->setMinimumInt(Guess);
    from->setMaximumInt(36);
    from->setSpecialValueText(QStringLiteral("Guess"));
    from->setToolTip(QStringLiteral(
        "The current base. E.g. 2 for binary and 10 for denary.\n'Guess' interprets each column "
        "based on the values in that column. \nValues starting with 0x (e.g. 0x123) are "
        "interpreted as hexadecimal (base 16)."));
    applyRememberedValue(useRemembered, from);
    addParameter(from);

    auto *to
        = new Parameter(ParameterType::Int, QStringLiteral("To"), QStringLiteral("Base to"), 16);
    to->setMinimumInt(2);
    to->setMaximumInt(36);
    to->setToolTip(QStringLiteral("The required base. E.g. 16 for hexadecimal."));
    applyRememberedValue(useRemembered, to);
    addParameter(to);

    const QStringList treatments {QStringLiteral("Leave unchanged"), QStringLiteral("Set to empty"),
                                  QStringLiteral("Set to NaN")};
    auto *nonNumeric = new Parameter(ParameterType::Selection, QStringLiteral("Non_Numeric"),
                                     QStringLiteral("Non-integer"), treatments.first(), treatments);
    nonNumeric->setToolTip(QStringLiteral("What to do with non-integer values.\n(%1=not a number).")
                               .arg(QStringLiteral("NaN")));
    applyRememberedValue(useRemembered, nonNumeric);
    addParameter(nonNumeric);
}

bool TransformNumBase::readInteger(QStringView text, int base, bool hexPrefix, Integer *value)
{
    text = text.trimmed();
    Integer integer;
    integer.negative = !text.isEmpty() && text.at(0) == QLatin1Char('-');
    text = withoutSign(text);
    if (hexPrefix && hasHexPrefix(text)) {
        base = 16;
        text = text.mid(2);
    }
    if (text.isEmpty() || base < 2 || base > 36)
        return false;
    constexpr quint64 largest = std::numeric_limits<quint64>::max();
    for (const QChar ch : text) {
        const int digit = digitValue(ch);
        if (digit < 0 || digit >= base)
            return false;
        if (integer.magnitude > (largest - quint64(digit)) / quint64(base))
            return false;
        integer.magnitude = integer.magnitude * quint64(base) + quint64(digit);
    }
    if (integer.negative && integer.magnitude > quint64(1) << 63)
        return false;
    integer.negative = integer.negative && integer.magnitude != 0;
    *value = integer;
    return true;
}

QString TransformNumBase::writeInteger(const Integer &value, int base)
{
    if (value.negative && base == 10)
        return QLatin1Char('-') + QString::number(value.magnitude);
    const quint64 bits = value.negative ? ~value.magnitude + 1 : value.magnitude;
    return QString::number(bits, base).toUpper();
}

int TransformNumBase::guessBase(const Dataset &data, int c)
{
    int highest = -1;
    bool sawHex = false;
    bool sawOther = false;
    const int rowCount = data.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        const QStringView text = withoutSign(QStringView(data.cell(r, c)).trimmed());
        if (text.isEmpty())
            continue;
        if (hasHexPrefix(text)) {
            sawHex = true;
            continue;
        }
        sawOther = true;
        for (const QChar ch : text)
            highest = qMax(highest, digitValue(ch));
    }
    if (!sawOther)
        return sawHex ? 16 : 10;
    return highest < 10 ? 10 : (highest < 16 ? 16 : 36);
}

QVector<int> TransformNumBase::columnBases(const Dataset &data, const QList<int> &columns, int from)
{
    QVector<int> bases;
    for (int c : columns) {
        bases.append(from == Guess ? guessBase(data, c) : from);
        if (from == Guess)
            addInformation(QStringLiteral("Guessing base %1 for column %2 ('%3').")
                               .arg(QString::number(bases.last()), QString::number(c + 1),
                                    data.headerText(c)));
    }
    return bases;
}

Dataset &TransformNumBase::process(Dataset &output, const TransformInputs &inputs,
                                   const RunContext &context, bool &)
{
    const QList<int> columns = CellRules::selectedColumns(option(QStringLiteral("Columns")));
    const Parameter &fromOption = option(QStringLiteral("From"));
    const Parameter &toOption = option(QStringLiteral("To"));
    const int from = fromOption.toInt();
    const int to = qBound(2, toOption.toInt(), 36);
    const bool guess = from <= Guess;
    const auto nonInteger = UnreadValue(option(QStringLiteral("Non_Numeric")).toSelectionIndex());
    const QString replacement
        = nonInteger == UnreadValue::Replace ? QStringLiteral("NaN") : QString();

    output = inputDataset(inputs, 0);
    if (!guess && from == to) {
        addWarning(QStringLiteral("'%1' and '%2' values are the same.")
                       .arg(fromOption.label(), toOption.label()));
        setResult(QStringLiteral("No changes"));
        return output;
    }
    const QVector<int> bases = columnBases(output, columns, guess ? Guess : from);

    CellConversion conversion(QStringLiteral("%1 non-integer %2:"));
    conversion.unread = nonInteger;
    conversion.replacement = replacement;
    bool separators = false;
    bool negatives = false;
    convertCells(
        output, columns, conversion,
        [&](int i, const QString &cell, QString *text) {
            Integer value;
            if (!readInteger(cell, bases.at(i), guess || bases.at(i) == 16, &value)) {
                separators = separators || cell.contains(QLatin1Char(','))
                    || cell.contains(QLatin1Char('.'));
                return false;
            }
            negatives = negatives || (value.negative && to != 10);
            *text = writeInteger(value, to);
            return true;
        },
        [this](int r, int rowCount) { reportRow(r, rowCount); },
        [&context] { return context.isStopRequested(); });

    if (negatives)
        addWarning(QStringLiteral("Negative input values are shown as unsigned when converted to "
                                  "base %1.")
                       .arg(to));
    for (const QString &line : conversion.problems.lines())
        addWarning(line);
    if (separators)
        addWarning(QStringLiteral("Input values should not contain ',' or '.' characters."));
    setResult(conversion.result(QStringLiteral("non-integer")));
    return output;
}
