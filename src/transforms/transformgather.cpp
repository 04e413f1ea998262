#include "transforms/transformgather.h"

#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"

#include <QSet>

const TransformDescriptor &TransformGather::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 19;
        d.typeName = QStringLiteral("Gather");
        d.displayName = QStringLiteral("Gather");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral("Gather selected columns into key and value columns.");
        d.keywords = QStringList {
            QStringLiteral("pivot_longer"), QStringLiteral("melts"),     QStringLiteral("molten"),
            QStringLiteral("normalise"),    QStringLiteral("normalize"), QStringLiteral("values"),
            QStringLiteral("keys"),         QStringLiteral("groups"),    QStringLiteral("pivots"),
            QStringLiteral("tall"),         QStringLiteral("longer"),    QStringLiteral("unpivots"),
            QStringLiteral("gathers")};
        d.create = createTransform<TransformGather>;
        return d;
    }();
    return descriptor;
}

void TransformGather::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    auto *columns = new Parameter(ParameterType::MultipleColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Columns"), inputs.value(0));
    columns->setToolTip(QStringLiteral("Select the column(s) you want to gather."));
    columns->selectOnlyColumn();
    addParameter(columns);

    auto *key = new Parameter(ParameterType::Text, QStringLiteral("Key_Column"),
                              QStringLiteral("Key column name"), QStringLiteral("Key"));
    key->setToolTip(QStringLiteral("The name for the new key column."));
    applyRememberedValue(useRemembered, key);
    addParameter(key);

    auto *value = new Parameter(ParameterType::Text, QStringLiteral("Value_Column"),
                                QStringLiteral("Value column name"), QStringLiteral("Value"));
    value->setToolTip(QStringLiteral("The name for the new value column."));
    applyRememberedValue(useRemembered, value);
    addParameter(value);
}

Dataset &TransformGather::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &, bool &)
{
    const Dataset &input = inputDataset(inputs, 0);
    const QString keyName = option(QStringLiteral("Key_Column")).toString();
    const QString valueName = option(QStringLiteral("Value_Column")).toString();
    QList<int> gathered;
    option(QStringLiteral("Columns")).toColumnIndexes(&gathered, true);

    if (gathered.isEmpty()) {
        output = input;
        ColumnNames::appendNamedColumn(output, keyName);
        ColumnNames::appendNamedColumn(output, valueName);
        setResult(shapeChangeText(input, output));
        return output;
    }

    const QSet<int> gatheredSet(gathered.cbegin(), gathered.cend());
    QList<int> kept;
    for (int c = 0; c < input.columnCount(); ++c) {
        if (!gatheredSet.contains(c))
            kept.append(c);
    }
    QStringList names;
    for (int c : qAsConst(kept))
        names.append(input.hasHeader() ? input.header().at(c) : QString());
    names << keyName << valueName;
    beginOutput(output, kept.size() + 2, input.hasHeader(), names);
    for (int i = 0; i < kept.size(); ++i)
        output.setColumnId(i, input.columnId(kept.at(i)));

    // The key of each gathered column is its name as the user sees it.
    QStringList keys;
    for (int c : qAsConst(gathered))
        keys.append(ColumnNames::joinedNames(input, {c}, QString()));

    const int rowCount = input.rowCount();
    output.reserveRows(rowCount * gathered.size());
    QStringList row;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        const QStringList &source = input.row(r);
        for (int g = 0; g < gathered.size(); ++g) {
            row.clear();
            row.reserve(kept.size() + 2);
            for (int c : qAsConst(kept))
                row.append(source.at(c));
            row.append(keys.at(g));
            row.append(source.at(gathered.at(g)));
            output.appendRow(row);
        }
    }
    setResult(shapeChangeText(input, output));
    return output;
}
