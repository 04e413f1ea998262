#include "transforms/transformcopy.h"

#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"

const TransformDescriptor &TransformCopy::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 8;
        d.typeName = QStringLiteral("Copy");
        d.displayName = QStringLiteral("Copy Cols");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Copy selected columns.");
        d.keywords = QStringList {QStringLiteral("duplicate"), QStringLiteral("clone"),
                                  QStringLiteral("repeat"), QStringLiteral("copies")};
        d.create = createTransform<TransformCopy>;
        return d;
    }();
    return descriptor;
}

void TransformCopy::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *columns = new Parameter(ParameterType::MultipleColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Columns"), input);
    columns->setToolTip(QStringLiteral("Select the column(s) you want to copy."));
    columns->selectOnlyColumn();
    addParameter(columns);

    auto *copies
        = new Parameter(ParameterType::Int, QStringLiteral("Copies"), QStringLiteral("Copies"), 1);
    copies->setMinimumInt(1);
    copies->setMaximumInt(1000);
    copies->setToolTip(QStringLiteral("The number of copies to make of each selected column."));
    applyRememberedValue(useRemembered, copies);
    addParameter(copies);
}

Dataset &TransformCopy::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                                bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));
    const Parameter *copiesOption = &option(QStringLiteral("Copies"));

    output = inputDataset(inputs, 0);
    QList<int> columns;
    columnsOption->toColumnIndexes(&columns, true);
    const int copies = copiesOption->toInt();
    if (columns.isEmpty() || copies < 1) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    // Each selected column repeated, in selection order: A A B B for two copies of A and B.
    QList<int> sources;
    sources.reserve(columns.size() * copies);
    for (int c : qAsConst(columns)) {
        for (int i = 0; i < copies; ++i)
            sources.append(c);
    }

    const int firstNew = output.columnCount();
    const bool hasHeader = output.hasHeader();
    QStringList header = output.header();
    if (hasHeader) {
        for (int c : qAsConst(sources))
            header.append(header.at(c));
    }
    // One widening pass over the rows rather than one per copy.
    output.setColumnCount(firstNew + sources.size());
    if (hasHeader)
        output.setHeader(header);
    const int rowCount = output.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        for (int i = 0; i < sources.size(); ++i) {
            const QString text = output.cell(r, sources.at(i));
            if (!text.isEmpty())
                output.setCell(r, firstNew + i, text);
        }
    }
    setResult(QStringLiteral("%1 added").arg(ColumnNames::countedCols(sources.size())));
    return output;
}
