#include "transforms/transformintersect.h"

#include "data/valueinterpretation.h"
#include "graph/node.h"
#include "transforms/framework/parameter.h"
#include "transforms/keymatching.h"

QSet<QString> TransformIntersect::keywords() const
{
    QSet<QString> words = Transform::keywords();
    words << QStringLiteral("common") << QStringLiteral("shared") << QStringLiteral("both")
          << QStringLiteral("keys") << QStringLiteral("semi") << QStringLiteral("join")
          << QStringLiteral("match") << QStringLiteral("keep");
    return words;
}

void TransformIntersect::createParameters(const QList<Node *> &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Column_1"), QStringLiteral("Top key column"), inputs.value(0),
        QStringLiteral("The key column of the top dataset, whose rows are kept or dropped.")));
    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Column_2"), QStringLiteral("Bottom key column"), inputs.value(1),
        QStringLiteral("The key column of the bottom dataset.")));
    Parameter *caseSensitive = KeyMatching::createCaseSensitiveParameter();
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);
}

bool TransformIntersect::autoConfigure(const QList<Node *> &inputs)
{
    return KeyMatching::autoConfigureKeys(parameter(QStringLiteral("Column_1")),
                                          parameter(QStringLiteral("Column_2")), inputs);
}

Dataset &TransformIntersect::process(Dataset &output, const QList<Node *> &inputs, bool &)
{
    if (inputs.isEmpty() || inputs.size() > 2)
        return output;
    const Parameter *column1Option = parameter(QStringLiteral("Column_1"));
    const Parameter *column2Option = parameter(QStringLiteral("Column_2"));
    const Parameter *caseOption = parameter(QStringLiteral("Case_Sensitive"));
    if (!column1Option || !column2Option || !caseOption) {
        setResult(failureText());
        return output;
    }
    const Dataset &top = *inputs.at(0)->dataset();
    if (inputs.size() == 1) {
        output = top;
        setResult(KeyMatching::connectSecondText());
        return output;
    }
    const Dataset &bottom = *inputs.at(1)->dataset();
    // The top's shape and ids, without its rows.
    output = top;
    output.setRowCount(0);
    const int topKey = column1Option->toColumnIndex();
    const int bottomKey = column2Option->toColumnIndex();
    if (topKey < 0 || bottomKey < 0) {
        setResult(QStringLiteral("0 intersecting rows"));
        return output;
    }
    const bool caseSensitive = caseOption->toBool();
    const int topRows = top.rowCount();
    const int bottomRows = bottom.rowCount();
    const int total = topRows + bottomRows;

    const KeyMatching::KeyIndex index(bottom, bottomKey, caseSensitive,
                                      [this, total](int r) { reportRow(r, total); });
    for (int r = 0; r < topRows; ++r) {
        if (r % 1000 == 0)
            reportRow(0, total, qreal(bottomRows + r) / total);
        const QStringList &row = top.row(r);
        if (index.contains(KeyMatching::keyText(row.at(topKey), caseSensitive)))
            output.appendSharedRow(row);
    }

    const KeyMatching::KeyOverlap overlap
        = KeyMatching::keyOverlap(top, topKey, bottom, bottomKey, caseSensitive);
    setResult(QStringLiteral("%1 with keys in both, %2 top only, %3 bottom only")
                  .arg(KeyMatching::countText(output.rowCount(), QStringLiteral("row"),
                                              QStringLiteral("rows")),
                       formatCount(overlap.topRowsOnly), formatCount(overlap.bottomRowsOnly)));
    const QStringList lines = KeyMatching::overlapLines(overlap);
    for (const QString &line : lines)
        addInformation(line);
    return output;
}
