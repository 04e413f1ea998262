#include "transforms/transformunfill.h"

#include "graph/node.h"

QSet<QString> TransformUnfill::keywords() const
{
    QSet<QString> words = Transform::keywords();
    words << QStringLiteral("empty") << QStringLiteral("blank") << QStringLiteral("repeated")
          << QStringLiteral("duplicates") << QStringLiteral("identical")
          << QStringLiteral("adjacent") << QStringLiteral("groups") << QStringLiteral("clear");
    return words;
}

void TransformUnfill::createParameters(const QList<Node *> &inputs, bool useRemembered)
{
    createAdjacentParameters(inputs, useRemembered,
                             QStringLiteral("Select the column(s) whose repeated values you "
                                            "want to set to empty."));
}

Dataset &TransformUnfill::process(Dataset &output, const QList<Node *> &inputs, bool &)
{
    if (inputs.size() != 1)
        return output;
    Walk walk;
    if (!readWalk(&walk))
        return output;

    const Dataset &input = *inputs.first()->dataset();
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
