#include "transforms/transformheader.h"

#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"

namespace {

enum Mode { Overwrite = 0, Append = 1 };

} // namespace

const TransformDescriptor &TransformHeader::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 21;
        d.typeName = QStringLiteral("Header");
        d.displayName = QStringLiteral("Header");
        d.category = CategoryRow;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Move rows to the header.");
        d.keywords = QStringList {QStringLiteral("headers"), QStringLiteral("names"),
                                  QStringLiteral("titles"),  QStringLiteral("headings"),
                                  QStringLiteral("promote"), QStringLiteral("columns")};
        d.create = createTransform<TransformHeader>;
        return d;
    }();
    return descriptor;
}

void TransformHeader::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    auto *numRows = new Parameter(ParameterType::Int, QStringLiteral("Num_Rows"),
                                  QStringLiteral("Number of rows"), 1);
    numRows->setMinimumInt(0);
    numRows->setToolTip(QStringLiteral("The number of rows from the top to move to the header."));
    applyRememberedValue(useRemembered, numRows);
    addParameter(numRows);

    const QStringList modes {QStringLiteral("Overwrite"), QStringLiteral("Append")};
    auto *mode = new Parameter(ParameterType::Selection, QStringLiteral("Mode"),
                               QStringLiteral("Mode"), modes.first(), modes);
    mode->setToolTip(QStringLiteral("%1=replace the header names.\n%2=add to the header names.")
                         .arg(modes.at(Overwrite), modes.at(Append)));
    applyRememberedValue(useRemembered, mode);
    addParameter(mode);

    auto *delimiter = new Parameter(ParameterType::Text, QStringLiteral("Delimiter"),
                                    QStringLiteral("Delimiter"), " ");
    delimiter->setTextRequired(false);
    delimiter->setToolTip(QStringLiteral("The text put between the parts of a header name."));
    applyRememberedValue(useRemembered, delimiter);
    addParameter(delimiter);
}

Dataset &TransformHeader::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &, bool &)
{
    const Parameter *numRowsOption = &option(QStringLiteral("Num_Rows"));
    const Parameter *modeOption = &option(QStringLiteral("Mode"));
    const Parameter *delimiterOption = &option(QStringLiteral("Delimiter"));

    output = inputDataset(inputs, 0);
    const int moved = qMin(qMax(0, numRowsOption->toInt()), output.rowCount());
    if (moved == 0) {
        setResult(QStringLiteral("No changes"));
        return output;
    }
    const bool append = modeOption->toSelectionIndex() == Append;
    const QString delimiter = delimiterOption->toString();

    const QStringList before = output.headers();
    QStringList names;
    const int columnCount = output.columnCount();
    names.reserve(columnCount);
    QStringList parts;
    for (int c = 0; c < columnCount; ++c) {
        parts.clear();
        if (append)
            parts.append(before.at(c));
        for (int r = 0; r < moved; ++r)
            parts.append(output.cell(r, c));
        names.append(parts.join(delimiter));
    }
    output.setHeader(names);
    // Dropping the top rows one at a time costs nothing per row: the list only moves its start.
    for (int r = 0; r < moved; ++r) {
        reportRow(r, moved);
        output.removeRow(0);
    }

    if (output.headers() != before)
        setResult(QStringLiteral("Header names updated"));
    else
        setResult(QStringLiteral("%1 removed").arg(ColumnNames::countedRows(moved)));
    return output;
}
