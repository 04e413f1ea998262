#include "transforms/transformunfill.h"

const TransformDescriptor &TransformUnfill::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 69;
        d.typeName = QStringLiteral("Unfill");
        d.displayName = QStringLiteral("Unfill");
        d.category = CategoryFormat;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly
            | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral(
            "Set adjacent cells with identical values to empty in selected columns.");
        d.keywords = QStringList {QStringLiteral("empty"),     QStringLiteral("blank"),
                                  QStringLiteral("repeated"),  QStringLiteral("duplicates"),
                                  QStringLiteral("identical"), QStringLiteral("adjacent"),
                                  QStringLiteral("groups"),    QStringLiteral("clear")};
        d.create = createTransform<TransformUnfill>;
        return d;
    }();
    return descriptor;
}

void TransformUnfill::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    createAdjacentParameters(inputs, useRemembered,
                             QStringLiteral("Select the column(s) whose repeated values you "
                                            "want to set to empty."));
}

Dataset &TransformUnfill::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &, bool &)
{
    Walk walk;
    if (!readWalk(&walk))
        return output;

    const Dataset &input = *inputs.first().dataset;
    output = input;
    qint64 changed = 0;
    // Both cells are read from the input, so in a run of equal values every cell but the
    // first in the direction of travel is emptied, whatever the walking order.
    walkPairs(input, walk, [&](int r, int c, int nr, int nc) {
        const QString &value = input.cell(r, c);
        if (value.isEmpty() || value != input.cell(nr, nc))
            return;
        output.setCell(r, c, QString());
        ++changed;
    });
    const qint64 total = qint64(input.rowCount()) * walk.columns.size();
    setResult(cellsChangedText(changed, total - changed));
    return output;
}
