#include "transforms/transformfilldown.h"

#include "graph/node.h"

QSet<QString> TransformFillDown::keywords() const
{
    QSet<QString> words = Transform::keywords();
    words << QStringLiteral("down") << QStringLiteral("up") << QStringLiteral("empty")
          << QStringLiteral("blanks") << QStringLiteral("missing") << QStringLiteral("copy")
          << QStringLiteral("repeat") << QStringLiteral("adjacent") << QStringLiteral("gaps")
          << QStringLiteral("forward");
    return words;
}

void TransformFillDown::createParameters(const QList<Node *> &inputs, bool useRemembered)
{
    createAdjacentParameters(inputs, useRemembered,
                             QStringLiteral("Select the column(s) whose empty cells you want "
                                            "to fill."));
}

Dataset &TransformFillDown::process(Dataset &output, const QList<Node *> &inputs, bool &)
{
    if (inputs.size() != 1)
        return output;
    Walk walk;
    if (!readWalk(&walk))
        return output;

    const Dataset &input = *inputs.first()->dataset();
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
