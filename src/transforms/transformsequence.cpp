#include "transforms/transformsequence.h"

#include "data/valueinterpretation.h"
#include "transforms/adjacentcells.h"
#include "transforms/framework/parameter.h"

#include <QRegularExpression>

#include <limits>

namespace {

// A reading format such as "yyyy-M-d" also reads "2024-01-05", yet would write "2024-1-5".
// New values are written as the column's first date is, with day and month padded to two
// digits when that is how the first date shows.
QString writingFormat(const QString &format, const Dataset &input, int column,
                      const QVector<bool> &valid)
{
    const int first = valid.indexOf(true);
    if (first < 0)
        return format;
    const QString sample = input.cell(first, column).trimmed();
    const QDate date = toDate(sample, format);
    if (date.toString(format) == sample)
        return format;
    static const QRegularExpression singleMonth(QStringLiteral("(?<!M)M(?!M)"));
    static const QRegularExpression singleDay(QStringLiteral("(?<!d)d(?!d)"));
    QString padded = format;
    padded.replace(singleMonth, QStringLiteral("MM"));
    padded.replace(singleDay, QStringLiteral("dd"));
    return date.toString(padded) == sample ? padded : format;
}

} // namespace

const TransformDescriptor &TransformSequence::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 52;
        d.typeName = QStringLiteral("Sequence");
        d.displayName = QStringLiteral("Sequence");
        d.category = CategoryRow;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Add missing rows from a sequence.");
        d.keywords = QStringList {QStringLiteral("missing"),  QStringLiteral("gaps"),
                                  QStringLiteral("complete"), QStringLiteral("series"),
                                  QStringLiteral("dates"),    QStringLiteral("integers"),
                                  QStringLiteral("numbers"),  QStringLiteral("days"),
                                  QStringLiteral("fill"),     QStringLiteral("range")};
        d.create = createTransform<TransformSequence>;
        return d;
    }();
    return descriptor;
}

void TransformSequence::migrateParameters(int version, QList<StoredParameter> *parameters) const
{
    // Before version 78 each bound was one text that held either a date or a number; they
    // became two options of their own kinds.
    if (version >= 78)
        return;
    for (StoredParameter &parameter : *parameters) {
        if (parameter.key != QLatin1String("User_Define_Minimum_Missing")
            && parameter.key != QLatin1String("User_Define_Maximum_Missing"))
            continue;
        const QString value = Parameter::decodeText(parameter.text).trimmed();
        const QDate date = QDate::fromString(value, QStringLiteral("yyyy-M-d"));
        if (date.isValid()) {
            parameter.key += QLatin1String("_Date");
            parameter.type = int(ParameterType::Date);
            parameter.text = date.toString(QStringLiteral("yyyy-MM-dd"));
        } else {
            parameter.key += QLatin1String("_Int");
            parameter.type = int(ParameterType::Int);
            parameter.text = value;
        }
    }
}

void TransformSequence::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    const QStringList hows {QStringLiteral("Missing integers"), QStringLiteral("Missing dates")};
    auto *how = new Parameter(ParameterType::Selection, QStringLiteral("How_Name"),
                              QStringLiteral("Add"), hows.first(), hows);
    how->setToolTip(QStringLiteral("Whether the column holds a sequence of integers or of "
                                   "dates (one row a day)."));
    applyRememberedValue(useRemembered, how);
    addParameter(how);

    auto *column = new Parameter(ParameterType::SingleColumn, QStringLiteral("Col_Name"),
                                 QStringLiteral("Column"), input);
    column->setToolTip(QStringLiteral("The column that holds the sequence."));
    column->selectOnlyColumn();
    addParameter(column);

    const QStringList limits {QStringLiteral("From data"), QStringLiteral("User defined")};
    const QDate defaultDate(2000, 1, 1);
    const auto addLimit = [&](const QString &which, const QString &label) {
        auto *type
            = new Parameter(ParameterType::Selection, QStringLiteral("%1_Missing_type").arg(which),
                            label, limits.first(), limits);
        type->setToolTip(QStringLiteral("Take the %1 value of the sequence from the data, or "
                                        "set it yourself.")
                             .arg(label.toLower()));
        applyRememberedValue(useRemembered, type);
        addParameter(type);

        auto *integer = new Parameter(ParameterType::Int,
                                      QStringLiteral("User_Define_%1_Missing_Int").arg(which),
                                      QStringLiteral("%1 integer").arg(label), 0);
        integer->setMinimumInt(-999999999);
        applyRememberedValue(useRemembered, integer);
        addParameter(integer);

        auto *date = new Parameter(ParameterType::Date,
                                   QStringLiteral("User_Define_%1_Missing_Date").arg(which),
                                   QStringLiteral("%1 date").arg(label), QVariant(defaultDate));
        applyRememberedValue(useRemembered, date);
        addParameter(date);
    };
    addLimit(QStringLiteral("Minimum"), QStringLiteral("Minimum"));
    addLimit(QStringLiteral("Maximum"), QStringLiteral("Maximum"));

    const QStringList orders {QStringLiteral("Ascending"), QStringLiteral("Descending")};
    auto *order = new Parameter(ParameterType::Selection, QStringLiteral("Order"),
                                QStringLiteral("Order"), orders.first(), orders);
    order->setToolTip(QStringLiteral("The order of the rows on the column."));
    applyRememberedValue(useRemembered, order);
    addParameter(order);

    const QStringList as {QStringLiteral("Blank"), QStringLiteral("Copy from above"),
                          QStringLiteral("Copy from below"), QStringLiteral("User defined")};
    auto *asOption = new Parameter(ParameterType::Selection, QStringLiteral("As_Name"),
                                   QStringLiteral("Other values"), as.first(), as);
    asOption->setToolTip(QStringLiteral("What the other cells of a new row hold."));
    applyRememberedValue(useRemembered, asOption);
    addParameter(asOption);

    auto *userValue = new Parameter(ParameterType::Text, QStringLiteral("User_Defined_Row_Value"),
                                    QStringLiteral("User defined value"), QString());
    userValue->setTextRequired(false);
    userValue->setToolTip(QStringLiteral("The value for the other cells of a new row."));
    applyRememberedValue(useRemembered, userValue);
    addParameter(userValue);
}

bool TransformSequence::usesDateFormats() const
{
    const Parameter *how = parameter(QStringLiteral("How_Name"));
    return how && how->toSelectionIndex() == MissingDates;
}

QList<ParameterState> TransformSequence::parameterStates() const
{
    const Parameter *how = parameter(QStringLiteral("How_Name"));
    const Parameter *minimum = parameter(QStringLiteral("Minimum_Missing_type"));
    const Parameter *maximum = parameter(QStringLiteral("Maximum_Missing_type"));
    const Parameter *as = parameter(QStringLiteral("As_Name"));
    const bool dates = how && how->toSelectionIndex() == MissingDates;
    const bool userMinimum = minimum && minimum->toSelectionIndex() == UserDefined;
    const bool userMaximum = maximum && maximum->toSelectionIndex() == UserDefined;
    return {{QStringLiteral("User_Define_Minimum_Missing_Int"), userMinimum && !dates},
            {QStringLiteral("User_Define_Minimum_Missing_Date"), userMinimum && dates},
            {QStringLiteral("User_Define_Maximum_Missing_Int"), userMaximum && !dates},
            {QStringLiteral("User_Define_Maximum_Missing_Date"), userMaximum && dates},
            {QStringLiteral("User_Defined_Row_Value"),
             as && as->toSelectionIndex() == UserDefinedValue}};
}

// What one run reads from the options; a bound is the integer or the date's day number.
struct TransformSequence::Options
{
    bool dates = false;
    int column = -1;
    bool userMinimum = false;
    bool userMaximum = false;
    qint64 userMinimumKey = 0;
    qint64 userMaximumKey = 0;
    bool descending = false;
    int as = Blank;
    QString userValue;
};

// Each cell of the column read once into a key (the integer, or the date's day number), so
// that the sort compares plain numbers.
struct TransformSequence::ColumnKeys
{
    QVector<qint64> keys;
    QVector<bool> valid;
    qint64 invalidCount = 0;
    qint64 minimum = std::numeric_limits<qint64>::max();
    qint64 maximum = std::numeric_limits<qint64>::min();
};

Dataset &TransformSequence::process(Dataset &output, const TransformInputs &inputs,
                                    const RunContext &, bool &)
{
    Options options;
    if (!readOptions(&options)) {
        setResult(failureText());
        return output;
    }
    const Dataset &input = *inputs.first().dataset;
    output = input;
    const int rowCount = input.rowCount();
    const int column = options.column;
    if (column < 0 || rowCount == 0) {
        setResult(QStringLiteral("No changes"));
        return output;
    }
    QString format;
    if (options.dates) {
        input.isDateColumn(column, dateFormats(), &format);
        if (format.isEmpty()) {
            addWarning(
                QStringLiteral("No dates found in column '%1'").arg(input.headerText(column)));
            setResult(QStringLiteral("No changes"));
            return output;
        }
    }

    const ColumnKeys keys = readKeys(input, options, format);
    const qint64 invalidCount = keys.invalidCount;
    if (invalidCount > 0)
        addWarning(
            QStringLiteral("%1 %2 in column '%3' not %4, placed at the end")
                .arg(formatCount(invalidCount),
                     invalidCount == 1 ? QStringLiteral("value") : QStringLiteral("values"),
                     input.headerText(column),
                     options.dates ? QStringLiteral("a date") : QStringLiteral("an integer")));

    const QVector<int> order = orderRowsByKeys(keys.keys, keys.valid, options.descending);
    const qint64 added = writeRows(output, input, keys, order, options, format);

    bool reordered = false;
    for (int r = 0; r < rowCount && !reordered; ++r)
        reordered = order.at(r) != r;
    if (added > 0)
        setResult(QStringLiteral("%1 %2 added")
                      .arg(formatCount(added),
                           added == 1 ? QStringLiteral("row") : QStringLiteral("rows")));
    else if (reordered)
        setResult(QStringLiteral("Sorted"));
    else
        setResult(QStringLiteral("No changes"));
    if (added == 0 && !reordered)
        output = input;
    return output;
}

bool TransformSequence::readOptions(Options *options) const
{
    const QStringList keys {QStringLiteral("How_Name"),
                            QStringLiteral("Col_Name"),
                            QStringLiteral("Minimum_Missing_type"),
                            QStringLiteral("User_Define_Minimum_Missing_Int"),
                            QStringLiteral("User_Define_Minimum_Missing_Date"),
                            QStringLiteral("Maximum_Missing_type"),
                            QStringLiteral("User_Define_Maximum_Missing_Int"),
                            QStringLiteral("User_Define_Maximum_Missing_Date"),
                            QStringLiteral("Order"),
                            QStringLiteral("As_Name"),
                            QStringLiteral("User_Defined_Row_Value")};
    QList<const Parameter *> found;
    for (const QString &key : keys) {
        const Parameter *option = parameter(key);
        if (!option)
            return false;
        found.append(option);
    }
    const bool dates = found.at(0)->toSelectionIndex() == MissingDates;
    options->dates = dates;
    options->column = found.at(1)->toColumnIndex();
    options->userMinimum = found.at(2)->toSelectionIndex() == UserDefined;
    options->userMaximum = found.at(5)->toSelectionIndex() == UserDefined;
    options->userMinimumKey
        = dates ? found.at(4)->toDate().toJulianDay() : qint64(found.at(3)->toInt());
    options->userMaximumKey
        = dates ? found.at(7)->toDate().toJulianDay() : qint64(found.at(6)->toInt());
    options->descending = found.at(8)->toSelectionIndex() == Descending;
    options->as = found.at(9)->toSelectionIndex();
    options->userValue = found.at(10)->toString();
    return true;
}

TransformSequence::ColumnKeys
TransformSequence::readKeys(const Dataset &input, const Options &options, const QString &format)
{
    const int rowCount = input.rowCount();
    const int column = options.column;
    const bool dates = options.dates;
    ColumnKeys keys;
    keys.keys.fill(0, rowCount);
    keys.valid.fill(false, rowCount);
    qint64 invalidCount = 0;
    qint64 minimum = keys.minimum;
    qint64 maximum = keys.maximum;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, 2 * rowCount);
        const QString &cell = input.cell(r, column);
        bool ok = false;
        qint64 key = 0;
        if (dates) {
            const QDate date = toDate(cell, format);
            ok = date.isValid();
            key = ok ? date.toJulianDay() : 0;
        } else {
            key = toLongLong(cell, false, false, &ok);
        }
        if (!ok) {
            ++invalidCount;
            continue;
        }
        keys.keys[r] = key;
        keys.valid[r] = true;
        minimum = qMin(minimum, key);
        maximum = qMax(maximum, key);
    }
    keys.invalidCount = invalidCount;
    keys.minimum = minimum;
    keys.maximum = maximum;
    return keys;
}

qint64 TransformSequence::writeRows(Dataset &output, const Dataset &input, const ColumnKeys &keys,
                                    const QVector<int> &order, const Options &options,
                                    const QString &format)
{
    const int rowCount = input.rowCount();
    const int column = options.column;
    const bool dates = options.dates;
    const bool descending = options.descending;
    const int as = options.as;
    const QVector<qint64> &cellKeys = keys.keys;
    const int validCount = rowCount - int(keys.invalidCount);
    const qint64 minimum = options.userMinimum ? options.userMinimumKey : keys.minimum;
    const qint64 maximum = options.userMaximum ? options.userMaximumKey : keys.maximum;
    // Without valid values "From data" gives no range; a minimum above the maximum neither.
    const bool hasRange
        = minimum <= maximum && (validCount > 0 || (options.userMinimum && options.userMaximum));

    const QString outputFormat = dates ? writingFormat(format, input, column, keys.valid) : format;
    const auto valueText = [&](qint64 key) {
        return dates ? QDate::fromJulianDay(key).toString(outputFormat) : QString::number(key);
    };
    QStringList blankRow;
    for (int c = 0; c < input.columnCount(); ++c)
        blankRow.append(as == UserDefinedValue ? options.userValue : QString());

    output.setRowCount(0);
    output.reserveRows(rowCount);
    qint64 added = 0;
    int next = 0; // position in order of the next existing row to output
    const auto emitExisting = [&]() {
        output.appendRow(input.row(order.at(next++)));
    };
    const auto emitNew = [&](qint64 key) {
        QStringList row;
        if (as == CopyFromAbove && output.rowCount() > 0)
            row = output.row(output.lastRow());
        else if (as == CopyFromBelow && next < validCount)
            row = input.row(order.at(next));
        else
            row = blankRow;
        row[column] = valueText(key);
        output.appendRow(row);
        ++added;
    };
    // Rows go out in the sequence's order: existing rows outside the range where they fall,
    // every value of the range that no row holds as a new row, then the rows without a value.
    const auto before = [&](qint64 a, qint64 b) {
        return descending ? a > b : a < b;
    };
    if (hasRange) {
        const qint64 first = descending ? maximum : minimum;
        const qint64 last = descending ? minimum : maximum;
        const qint64 step = descending ? -1 : 1;
        while (next < validCount && before(cellKeys.at(order.at(next)), first))
            emitExisting();
        // The walk over the range is the second half of the progress.
        const qreal span = qreal(last - first) * step + 1.0;
        for (qint64 key = first;; key += step) {
            const qint64 done = (key - first) * step;
            if (done % 1000 == 0)
                emit processed(0.5 + 0.5 * qreal(done) / span);
            if (next < validCount && cellKeys.at(order.at(next)) == key) {
                while (next < validCount && cellKeys.at(order.at(next)) == key)
                    emitExisting();
            } else {
                emitNew(key);
            }
            if (key == last)
                break;
        }
    }
    while (next < rowCount)
        emitExisting();
    return added;
}
