#include "transforms/transformspread.h"

#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"

#include <QHash>
#include <QVector>

#include <vector>

struct TransformSpread::Layout
{
    int keyColumn = -1;
    int valueColumn = -1;
    // The columns that make the group key, in input order.
    QList<int> groupColumns;
    // The new columns' names, in order of first appearance.
    QStringList keys;
    // For each input row, its output row and its new column.
    std::vector<int> rowOf;
    std::vector<int> keyOf;
    int groupCount = 0;
};

const TransformDescriptor &TransformSpread::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 59;
        d.typeName = QStringLiteral("Spread");
        d.displayName = QStringLiteral("Spread");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::Advanced;
        d.description
            = QStringLiteral("Spread the selected key and value columns into multiple columns.");
        d.keywords = QStringList {QStringLiteral("denormalise"), QStringLiteral("denormalize"),
                                  QStringLiteral("pivot_wider"), QStringLiteral("unmelts"),
                                  QStringLiteral("pairs"),       QStringLiteral("values"),
                                  QStringLiteral("keys"),        QStringLiteral("unstack"),
                                  QStringLiteral("cast"),        QStringLiteral("crosstabs"),
                                  QStringLiteral("pivots"),      QStringLiteral("wider"),
                                  QStringLiteral("multiple"),    QStringLiteral("spread")};
        d.create = createTransform<TransformSpread>;
        return d;
    }();
    return descriptor;
}

void TransformSpread::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *key = new Parameter(ParameterType::SingleColumn, QStringLiteral("Key_Column"),
                              QStringLiteral("Key column"), input);
    key->setToolTip(QStringLiteral("The column whose values are to be come new column headers."));
    addParameter(key);

    auto *value = new Parameter(ParameterType::SingleColumn, QStringLiteral("Value_Column"),
                                QStringLiteral("Value column"), input);
    value->setToolTip(QStringLiteral("The column whose values will be spread."));
    addParameter(value);

    auto *missing = new Parameter(ParameterType::Text, QStringLiteral("Missing_Value"),
                                  QStringLiteral("Missing value"), QString());
    missing->setTextRequired(false);
    missing->setToolTip(
        QStringLiteral("The value to set if no value found in the original dataset."));
    applyRememberedValue(useRemembered, missing);
    addParameter(missing);

    // A key column of ids by mistake would make a column per row; the maximum guards
    // against that, and is easily raised.
    const auto addCount
        = [&](const QString &name, const QString &label, int value, const QString &tip) {
              auto *count = new Parameter(ParameterType::Int, name, label, value);
              count->setMinimumInt(0);
              count->setMaximumInt(100000);
              count->setToolTip(tip);
              applyRememberedValue(useRemembered, count);
              addParameter(count);
          };
    addCount(QStringLiteral("Min_New_Cols"), QStringLiteral("Min. new cols"), 0,
             QStringLiteral("The minimum number of new columns to create."));
    addCount(QStringLiteral("Max_New_Cols"), QStringLiteral("Max. new cols"), 1000,
             QStringLiteral("The maximum number of new columns to create. Ignored if less than "
                            "minimum."));
}

bool TransformSpread::layOut(const Dataset &input, Layout &layout)
{
    layout.keyColumn = option(QStringLiteral("Key_Column")).toColumnIndex();
    layout.valueColumn = option(QStringLiteral("Value_Column")).toColumnIndex();
    if (input.columnCount() < 3 || layout.keyColumn < 0 || layout.valueColumn < 0)
        return false;
    for (int c = 0; c < input.columnCount(); ++c) {
        if (c != layout.keyColumn && c != layout.valueColumn)
            layout.groupColumns.append(c);
    }

    const int rowCount = input.rowCount();
    layout.rowOf.resize(rowCount);
    layout.keyOf.resize(rowCount);
    QHash<QString, int> groups;
    QHash<QString, int> keys;
    QString groupKey;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        const QStringList &row = input.row(r);
        groupKey.clear();
        for (int c : qAsConst(layout.groupColumns)) {
            groupKey += row.at(c);
            groupKey += QChar(0x1F);
        }
        auto group = groups.constFind(groupKey);
        if (group == groups.constEnd())
            group = groups.insert(groupKey, groups.size());
        layout.rowOf[r] = group.value();
        const QString &key = row.at(layout.keyColumn);
        auto found = keys.constFind(key);
        if (found == keys.constEnd()) {
            found = keys.insert(key, layout.keys.size());
            layout.keys.append(key);
        }
        layout.keyOf[r] = found.value();
    }
    layout.groupCount = groups.size();
    return true;
}

void TransformSpread::fill(const Dataset &input, const Layout &layout, Dataset &output)
{
    const int groupWidth = layout.groupColumns.size();
    QStringList names;
    for (int c : layout.groupColumns)
        names.append(ColumnNames::joinedNames(input, {c}, QString()));
    names += layout.keys;
    // The new columns are named by their keys, so the output has a header even where the
    // input had none.
    beginOutput(output, groupWidth + layout.keys.size(), true, names);
    for (int i = 0; i < groupWidth; ++i)
        output.setColumnId(i, input.columnId(layout.groupColumns.at(i)));

    const QString missing = option(QStringLiteral("Missing_Value")).toString();
    const int width = output.columnCount();
    QVector<QStringList> rows(layout.groupCount);
    std::vector<bool> filled(size_t(layout.groupCount) * size_t(layout.keys.size()), false);
    const QString multiple = QStringLiteral("Error: multiple values");
    for (int r = 0; r < input.rowCount(); ++r) {
        const QStringList &source = input.row(r);
        QStringList &target = rows[layout.rowOf[r]];
        if (target.isEmpty()) {
            target.reserve(width);
            for (int c : layout.groupColumns)
                target.append(source.at(c));
            for (int k = 0; k < layout.keys.size(); ++k)
                target.append(missing);
        }
        const size_t at = size_t(layout.rowOf[r]) * size_t(layout.keys.size()) + layout.keyOf[r];
        target[groupWidth + layout.keyOf[r]]
            = filled[at] ? multiple : source.at(layout.valueColumn);
        filled[at] = true;
    }
    output.reserveRows(rows.size());
    for (const QStringList &row : qAsConst(rows))
        output.appendRow(row);
}

void TransformSpread::fitNewColumns(Dataset &output, int firstNew)
{
    const int minimum = option(QStringLiteral("Min_New_Cols")).toInt();
    int maximum = option(QStringLiteral("Max_New_Cols")).toInt();
    if (maximum < minimum) {
        addWarning(QStringLiteral("'%1' < '%2'.").arg(maximum).arg(minimum));
        maximum = -1;
    }
    while (output.columnCount() - firstNew < minimum)
        ColumnNames::appendNamedColumn(output, QString());
    if (maximum >= 0 && output.columnCount() - firstNew > maximum)
        output.setColumnCount(firstNew + maximum);
}

Dataset &TransformSpread::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &, bool &)
{
    const Dataset &input = inputDataset(inputs, 0);
    Layout layout;
    if (!layOut(input, layout)) {
        output = input;
        setResult(QStringLiteral("No changes"));
        return output;
    }
    fill(input, layout, output);
    fitNewColumns(output, layout.groupColumns.size());
    QString result = shapeChangeText(input, output);
    if (result == QLatin1String("No changes") && !output.equals(input))
        result = QStringLiteral("Changed");
    setResult(result);
    return output;
}
