#include "transforms/transformtranspose.h"

#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"

const TransformDescriptor &TransformTranspose::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 67;
        d.typeName = QStringLiteral("Transpose");
        d.displayName = QStringLiteral("Transpose");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Swap rows and columns.");
        d.keywords = QStringList {QStringLiteral("swap"), QStringLiteral("rotate"),
                                  QStringLiteral("flip"), QStringLiteral("pivot"),
                                  QStringLiteral("rows"), QStringLiteral("columns")};
        d.create = createTransform<TransformTranspose>;
        return d;
    }();
    return descriptor;
}

void TransformTranspose::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    auto *header = new Parameter(ParameterType::Bool, QStringLiteral("Header"),
                                 QStringLiteral("has header"), true);
    header->setToolTip(QStringLiteral("Make the first row of the result its header."));
    applyRememberedValue(useRemembered, header);
    addParameter(header);
}

Dataset &TransformTranspose::process(Dataset &output, const TransformInputs &inputs,
                                     const RunContext &, bool &)
{
    const Parameter *headerOption = &option(QStringLiteral("Header"));
    const Dataset &input = *inputs.first().dataset;
    const bool toHeader = headerOption->toBool();
    // The input's header is read as a row 0 in front of its rows, without copying them.
    const bool headerRow = input.hasHeader() && input.columnCount() > 0;
    const int workingRows = input.rowCount() + (headerRow ? 1 : 0);
    const int workingColumns = input.columnCount();
    if (workingRows == 0 || workingColumns == 0) {
        setResult(QStringLiteral("No changes"));
        return output;
    }
    const QStringList names = headerRow ? input.headers() : QStringList();

    beginOutput(output, workingRows, false, {});
    output.reserveRows(workingColumns);
    QStringList first;
    for (int c = 0; c < workingColumns; ++c) {
        reportRow(c, workingColumns);
        QStringList row;
        row.reserve(workingRows);
        if (headerRow)
            row.append(names.at(c));
        for (int r = 0; r < input.rowCount(); ++r)
            row.append(input.cell(r, c));
        if (toHeader && c == 0)
            first = row;
        else
            output.appendRow(row, false);
    }
    if (toHeader)
        output.setHeader(first);
    setResult(QStringLiteral("Transposed"));
    return output;
}
