#include "transforms/transformfilldown.h"

const TransformDescriptor &TransformFillDown::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 17;
        d.typeName = QStringLiteral("Fill");
        d.displayName = QStringLiteral("Fill");
        d.category = CategoryFormat;
        d.flags
            = TransformDescriptor::ChangesValuesOnly | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Fill empty cells in selected columns from adjacent cells.");
        d.keywords = QStringList {QStringLiteral("down"),    QStringLiteral("up"),
                                  QStringLiteral("empty"),   QStringLiteral("blanks"),
                                  QStringLiteral("missing"), QStringLiteral("copy"),
                                  QStringLiteral("repeat"),  QStringLiteral("adjacent"),
                                  QStringLiteral("gaps"),    QStringLiteral("forward")};
        d.create = createTransform<TransformFillDown>;
        return d;
    }();
    return descriptor;
}

void TransformFillDown::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    createAdjacentParameters(inputs, useRemembered,
                             QStringLiteral("Select the column(s) whose empty cells you want "
                                            "to fill."));
}

Dataset &TransformFillDown::process(Dataset &output, const TransformInputs &inputs,
                                    const RunContext &, bool &)
{
    Walk walk;
    if (!readWalk(&walk))
        return output;

    const Dataset &input = *inputs.first().dataset;
    output = input;
    qint64 changed = 0;
    // The neighbour is read from the output: it has been visited already, so a value fills a
    // whole stretch of empty cells.
    walkPairs(input, walk, [&](int r, int c, int nr, int nc) {
        if (!output.cell(r, c).isEmpty())
            return;
        const QString &value = output.cell(nr, nc);
        if (value.isEmpty())
            return;
        output.setCell(r, c, value);
        ++changed;
    });
    const qint64 total = qint64(input.rowCount()) * walk.columns.size();
    setResult(cellsChangedText(changed, total - changed));
    return output;
}
