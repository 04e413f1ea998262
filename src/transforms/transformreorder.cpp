#include "transforms/transformreorder.h"

#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"

const TransformDescriptor &TransformReorder::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 45;
        d.typeName = QStringLiteral("Reorder");
        d.displayName = QStringLiteral("Reorder Cols");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Drag columns to reorder.");
        d.keywords = QStringList {QStringLiteral("move"),    QStringLiteral("order"),
                                  QStringLiteral("arrange"), QStringLiteral("rearrange"),
                                  QStringLiteral("sort"),    QStringLiteral("swap")};
        d.create = createTransform<TransformReorder>;
        return d;
    }();
    return descriptor;
}

void TransformReorder::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);
    auto *columns = new Parameter(ParameterType::ReorderColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Columns"), input);
    columns->setToolTip(QStringLiteral("Drag columns to reorder."));
    // The list starts as the input's order, so that the user has something to drag.
    if (input) {
        const Dataset &dataset = *input->columnDataset();
        QList<ColumnId> ids;
        for (int c = 0; c < dataset.columnCount(); ++c) {
            if (!dataset.columnId(c).isNull())
                ids.append(dataset.columnId(c));
        }
        columns->setColumns(ids);
    }
    addParameter(columns);
}

Dataset &TransformReorder::process(Dataset &output, const TransformInputs &inputs,
                                   const RunContext &, bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));

    const Dataset &input = *inputs.first().dataset;
    const int columnCount = input.columnCount();
    QList<int> named;
    columnsOption->toColumnIndexes(&named, true);

    // The named columns first, each once, in the option's order; then the rest as they come.
    QVector<bool> placed(columnCount, false);
    QList<int> order;
    order.reserve(columnCount);
    for (int c : qAsConst(named)) {
        if (placed.at(c))
            continue;
        placed[c] = true;
        order.append(c);
    }
    for (int c = 0; c < columnCount; ++c) {
        if (!placed.at(c))
            order.append(c);
    }
    int moved = 0;
    for (int i = 0; i < columnCount; ++i)
        moved += order.at(i) != i ? 1 : 0;
    if (moved == 0) {
        output = input;
        setResult(QStringLiteral("No changes"));
        return output;
    }
    output = ColumnNames::arrangedColumns(input, order,
                                          [this](int r, int rowCount) { reportRow(r, rowCount); });
    setResult(QStringLiteral("%1 cols reordered").arg(formatCount(moved, true)));
    return output;
}
