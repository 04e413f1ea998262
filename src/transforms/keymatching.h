#pragma once

#include "data/dataset.h"
#include "transforms/framework/columnsource.h"

#include <QHash>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

class Parameter;

// What the transforms that match rows of two datasets by a key column share: the key text of
// a cell under the case option, an index of the bottom keys built once so that matching stays
// linear, the counts and report lines about keys, and the automatic choice of key columns when
// inputs are first connected.
namespace KeyMatching {

// Matching is on this text only: never trimmed, never read as a number or date.
inline QString keyText(const QString &cell, bool caseSensitive)
{
    return caseSensitive ? cell : cell.toLower();
}

// The rows of one column grouped by key text: for each distinct key the first row that holds
// it, and for each row the next row with the same key (-1 at the end of a chain). One hash
// entry per distinct key, rows in ascending order along a chain.
class KeyIndex
{
public:
    // progress, when given, is called before each row with the row number.
    template<typename Progress>
    KeyIndex(const Dataset &dataset, int column, bool caseSensitive, Progress progress)
    {
        const int rowCount = dataset.rowCount();
        m_next.fill(-1, rowCount);
        m_first.reserve(rowCount);
        for (int r = rowCount - 1; r >= 0; --r) {
            progress(rowCount - 1 - r);
            int &first = m_first[keyText(dataset.cell(r, column), caseSensitive)];
            m_next[r] = first - 1;
            first = r + 1;
        }
    }
    KeyIndex(const Dataset &dataset, int column, bool caseSensitive)
        : KeyIndex(dataset, column, caseSensitive, [](int) {})
    { }

    // The first row of key, or -1.
    int first(const QString &key) const { return m_first.value(key, 0) - 1; }
    // The row after r with the same key, or -1.
    int next(int r) const { return m_next.at(r); }
    bool contains(const QString &key) const { return m_first.contains(key); }
    int keyCount() const { return m_first.size(); }
    bool hasUniqueKeys() const { return m_first.size() == m_next.size(); }
    int rowsOf(const QString &key) const;

private:
    // One more than the row, so that a fresh entry (0) reads as "none yet".
    QHash<QString, int> m_first;
    QVector<int> m_next;
};

// How two key columns overlap, counted by rows and by distinct keys.
struct KeyOverlap
{
    qint64 topRowsMatched = 0;
    qint64 topRowsOnly = 0;
    qint64 bottomRowsMatched = 0;
    qint64 bottomRowsOnly = 0;
    qint64 keysInBoth = 0;
};

KeyOverlap keyOverlap(const Dataset &top, int topColumn, const Dataset &bottom, int bottomColumn,
                      bool caseSensitive);

// "%1 rows have keys in both datasets" and "%1 unique keys appear in both datasets".
QStringList overlapLines(const KeyOverlap &overlap);
// Notes on keys that are repeated within one dataset or carry leading or trailing white
// space; which is "top" or "bottom".
QStringList keyQualityLines(const Dataset &dataset, int column, bool caseSensitive,
                            const QString &which);

// "%1 row(s)" style count with the noun in singular or plural.
QString countText(qint64 count, const QString &singular, const QString &plural);

QStringList emptyRow(int width);

// The result of a two-input transform given a single input.
QString connectSecondText();

// Candidate key pairs (top column, bottom column): columns whose first rows look like keys on
// both sides, in top column order, then bottom column order.
QList<QPair<int, int>> columnPairs(const Dataset &top, const Dataset &bottom, int rows,
                                   const QStringList &dateFormats);

// How well a pair serves as keys: distinct values of the top column found among those of the
// bottom column, raised when the header names agree.
double pairScore(const Dataset &top, int topColumn, const Dataset &bottom, int bottomColumn);

// The best pair above the threshold for these inputs, or (-1, -1).
QPair<int, int> chooseKeyColumns(const Dataset &top, const Dataset &bottom,
                                 const QStringList &dateFormats);

// A key column option bound to input; its only column is chosen at once.
Parameter *createKeyParameter(const QString &key, const QString &label, ColumnSource *input,
                              const QString &toolTip);
Parameter *createCaseSensitiveParameter();
// The "Closeness" of fuzzy matching, a percentage from 40 to 99 (80 at first).
Parameter *createFuzzinessParameter(const QString &toolTip);

// Sets both key options from the data when both are unset, the inputs are connected and
// neither has more than 10000 rows. True when the options were set.
bool autoConfigureKeys(Parameter *topKey, Parameter *bottomKey, const ColumnSources &inputs);

} // namespace KeyMatching
