#include "transforms/keymatching.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"

#include <QSet>

#include <algorithm>

namespace KeyMatching {

namespace {

constexpr int MaxAutoRows = 10000;
constexpr int ScoreRows = 1000;
constexpr int ScoreValues = 200;
constexpr int PairSampleRows = 100;

// Up to ScoreValues distinct non-empty texts from the first ScoreRows rows: an empty text
// would make any two sparse columns look related.
QSet<QString> sampleValues(const Dataset &dataset, int column)
{
    QSet<QString> values;
    const int rows = std::min(ScoreRows, dataset.rowCount());
    for (int r = 0; r < rows && values.size() < ScoreValues; ++r) {
        const QString &text = dataset.cell(r, column);
        if (!text.isEmpty())
            values.insert(text);
    }
    return values;
}

bool hasOuterWhitespace(const QString &text)
{
    return !text.isEmpty() && (text.front().isSpace() || text.back().isSpace());
}

} // namespace

int KeyIndex::rowsOf(const QString &key) const
{
    int count = 0;
    for (int r = first(key); r >= 0; r = next(r))
        ++count;
    return count;
}

KeyOverlap keyOverlap(const Dataset &top, int topColumn, const Dataset &bottom, int bottomColumn,
                      bool caseSensitive)
{
    KeyOverlap overlap;
    const KeyIndex bottomIndex(bottom, bottomColumn, caseSensitive);
    QSet<QString> shared;
    QSet<QString> topKeys;
    const int topRows = top.rowCount();
    for (int r = 0; r < topRows; ++r) {
        const QString key = keyText(top.cell(r, topColumn), caseSensitive);
        topKeys.insert(key);
        if (bottomIndex.contains(key)) {
            ++overlap.topRowsMatched;
            shared.insert(key);
        } else {
            ++overlap.topRowsOnly;
        }
    }
    const int bottomRows = bottom.rowCount();
    for (int r = 0; r < bottomRows; ++r) {
        if (topKeys.contains(keyText(bottom.cell(r, bottomColumn), caseSensitive)))
            ++overlap.bottomRowsMatched;
        else
            ++overlap.bottomRowsOnly;
    }
    overlap.keysInBoth = shared.size();
    return overlap;
}

QStringList overlapLines(const KeyOverlap &overlap)
{
    return {QStringLiteral("%1 rows have keys in both datasets")
                .arg(formatCount(overlap.topRowsMatched + overlap.bottomRowsMatched)),
            QStringLiteral("%1 unique keys appear in both datasets")
                .arg(formatCount(overlap.keysInBoth))};
}

QStringList keyQualityLines(const Dataset &dataset, int column, bool caseSensitive,
                            const QString &which)
{
    QHash<QString, int> counts;
    qint64 padded = 0;
    const int rows = dataset.rowCount();
    for (int r = 0; r < rows; ++r) {
        const QString &cell = dataset.cell(r, column);
        ++counts[keyText(cell, caseSensitive)];
        if (hasOuterWhitespace(cell))
            ++padded;
    }
    qint64 duplicated = 0;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        if (it.value() > 1)
            ++duplicated;
    }
    QStringList lines;
    if (duplicated > 0)
        lines.append(
            QStringLiteral("%1 occurring more than once in the %2 dataset")
                .arg(countText(duplicated, QStringLiteral("key"), QStringLiteral("keys")), which));
    if (padded > 0)
        lines.append(
            QStringLiteral("%1 with leading or trailing whitespace in the %2 dataset")
                .arg(countText(padded, QStringLiteral("key"), QStringLiteral("keys")), which));
    return lines;
}

QString countText(qint64 count, const QString &singular, const QString &plural)
{
    return QStringLiteral("%1 %2").arg(formatCount(count), count == 1 ? singular : plural);
}

QStringList emptyRow(int width)
{
    QStringList row;
    row.reserve(width);
    for (int c = 0; c < width; ++c)
        row.append(QString());
    return row;
}

QString connectSecondText()
{
    return QStringLiteral("Connect a second dataset");
}

QList<QPair<int, int>> columnPairs(const Dataset &top, const Dataset &bottom, int rows,
                                   const QStringList &dateFormats)
{
    Q_UNUSED(rows)
    QList<int> topColumns;
    for (int c = 0; c < top.columnCount(); ++c) {
        if (top.isKeyLikeColumn(c, dateFormats))
            topColumns.append(c);
    }
    QList<int> bottomColumns;
    for (int c = 0; c < bottom.columnCount(); ++c) {
        if (bottom.isKeyLikeColumn(c, dateFormats))
            bottomColumns.append(c);
    }
    QList<QPair<int, int>> pairs;
    for (int t : qAsConst(topColumns)) {
        for (int b : qAsConst(bottomColumns))
            pairs.append(qMakePair(t, b));
    }
    return pairs;
}

double pairScore(const Dataset &top, int topColumn, const Dataset &bottom, int bottomColumn)
{
    const QSet<QString> topValues = sampleValues(top, topColumn);
    const QSet<QString> bottomValues = sampleValues(bottom, bottomColumn);
    double score = 0.0;
    for (const QString &value : topValues) {
        if (bottomValues.contains(value))
            score += 1.0;
    }
    if (top.hasHeader() && bottom.hasHeader()) {
        const QString topName = top.headerText(topColumn).toLower();
        const QString bottomName = bottom.headerText(bottomColumn).toLower();
        if (topName == bottomName)
            score = (score + 2.0) * 1.5;
        else if ((topName.size() >= 3 && bottomName.contains(topName))
                 || (bottomName.size() >= 3 && topName.contains(bottomName)))
            score = (score + 1.0) * 1.25;
    }
    return score;
}

QPair<int, int> chooseKeyColumns(const Dataset &top, const Dataset &bottom,
                                 const QStringList &dateFormats)
{
    const QList<QPair<int, int>> pairs = columnPairs(top, bottom, PairSampleRows, dateFormats);
    QPair<int, int> best(-1, -1);
    double bestScore = -1.0;
    for (const QPair<int, int> &pair : pairs) {
        const double score = pairScore(top, pair.first, bottom, pair.second);
        if (score > bestScore) {
            bestScore = score;
            best = pair;
        }
    }
    if (best.first < 0)
        return best;
    double threshold = 5.0;
    if (top.hasHeader() || bottom.hasHeader()) {
        const double r1 = 200.0 / std::max(1, bottom.rowCount());
        const double r2 = 200.0 / std::max(1, top.rowCount());
        threshold = std::max(std::min(r1, r2) * 150.0, 10.0);
    }
    if (bestScore > threshold)
        return best;
    return qMakePair(-1, -1);
}

Parameter *createKeyParameter(const QString &key, const QString &label, ColumnSource *input,
                              const QString &toolTip)
{
    auto *parameter = new Parameter(ParameterType::SingleColumn, key, label, input);
    parameter->setToolTip(toolTip);
    parameter->selectOnlyColumn();
    return parameter;
}

Parameter *createCaseSensitiveParameter()
{
    auto *parameter = new Parameter(ParameterType::Bool, QStringLiteral("Case_Sensitive"),
                                    QStringLiteral("Case sensitive"), true);
    parameter->setToolTip(
        QStringLiteral("Whether keys must match in upper and lower case, e.g. 'abc' and 'ABC'."));
    return parameter;
}

Parameter *createFuzzinessParameter(const QString &toolTip)
{
    auto *parameter = new Parameter(ParameterType::Int, QStringLiteral("Fuzziness"),
                                    QStringLiteral("Closeness"), 80);
    parameter->setMinimumInt(40);
    parameter->setMaximumInt(99);
    parameter->setSuffix(QStringLiteral("%"));
    parameter->setToolTip(toolTip);
    return parameter;
}

bool autoConfigureKeys(Parameter *topKey, Parameter *bottomKey, const ColumnSources &inputs)
{
    if (!topKey || !bottomKey || inputs.size() < 2)
        return false;
    if (!topKey->isUnset() || !bottomKey->isUnset())
        return false;
    const Dataset &top = *inputs.at(0)->columnDataset();
    const Dataset &bottom = *inputs.at(1)->columnDataset();
    if (top.rowCount() > MaxAutoRows || bottom.rowCount() > MaxAutoRows)
        return false;
    const QPair<int, int> pair = chooseKeyColumns(top, bottom, dateFormats());
    if (pair.first < 0)
        return false;
    topKey->setSourceNode(inputs.at(0));
    bottomKey->setSourceNode(inputs.at(1));
    topKey->setColumnId(top.columnId(pair.first));
    bottomKey->setColumnId(bottom.columnId(pair.second));
    return true;
}

} // namespace KeyMatching
