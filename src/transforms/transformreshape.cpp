#include "transforms/transformreshape.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"

const TransformDescriptor &TransformReshape::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 48;
        d.typeName = QStringLiteral("Reshape");
        d.displayName = QStringLiteral("Reshape");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Change the number of columns and rows.");
        d.keywords = QStringList {QStringLiteral("wrap"),  QStringLiteral("unwrap"),
                                  QStringLiteral("width"), QStringLiteral("resize"),
                                  QStringLiteral("rows"),  QStringLiteral("flatten"),
                                  QStringLiteral("fold")};
        d.create = createTransform<TransformReshape>;
        return d;
    }();
    return descriptor;
}

void TransformReshape::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    const ColumnSource *input = inputs.value(0);
    const Dataset *dataset = input ? input->columnDataset() : nullptr;
    const int columns = dataset && dataset->columnCount() > 0 ? dataset->columnCount() : 1;
    auto *newSize = new Parameter(ParameterType::Int, QStringLiteral("New_Size"),
                                  QStringLiteral("Number of columns"), columns);
    newSize->setMinimumInt(1);
    newSize->setToolTip(QStringLiteral(
        "The number of columns of the result. Cells are read row by row and written row by "
        "row, so the number of rows follows."));
    addParameter(newSize);
}

Dataset &TransformReshape::process(Dataset &output, const TransformInputs &inputs,
                                   const RunContext &, bool &)
{
    const Parameter *newSizeOption = &option(QStringLiteral("New_Size"));
    const Dataset &input = *inputs.first().dataset;
    const int newColumns = newSizeOption->toInt();
    const int oldColumns = input.columnCount();
    const int oldRows = input.rowCount();
    if (oldColumns == 0 || oldRows == 0 || newColumns <= 0 || newColumns == oldColumns) {
        output = input;
        setResult(QStringLiteral("No changes"));
        return output;
    }
    const qint64 cells = qint64(oldColumns) * oldRows;
    const int newRows = int((cells + newColumns - 1) / newColumns);

    beginOutput(output, newColumns, input.hasHeader(), namesOrNumbers(input, newColumns));
    keepColumnIds(output, input, newColumns);
    output.reserveRows(newRows);
    // One running position over the input's cells, read and written in reading order.
    int sourceRow = 0;
    int sourceColumn = 0;
    for (int r = 0; r < newRows; ++r) {
        reportRow(r, newRows);
        QStringList row;
        row.reserve(newColumns);
        for (int c = 0; c < newColumns && sourceRow < oldRows; ++c) {
            row.append(input.cell(sourceRow, sourceColumn));
            if (++sourceColumn == oldColumns) {
                sourceColumn = 0;
                ++sourceRow;
            }
        }
        output.appendRow(row, true);
    }
    setResult(QStringLiteral("Changed to %1 cols x %2 rows")
                  .arg(formatCount(newColumns, true), formatCount(newRows, true)));
    return output;
}
