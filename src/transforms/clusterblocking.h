#pragma once

#include <QHash>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

// A text made ready to be measured against many others: closeness() gives what similarity()
// gives. The edit distance comes from Myers' bit-parallel method, a few word operations a
// character of the other text, when this text has at most 64 units, and from the banded
// routine otherwise.
class ClosenessPattern
{
public:
    explicit ClosenessPattern(const QString &text);

    const QString &text() const { return m_text; }
    // similarity(text(), other, minimum): 0 to 100 when at least minimum alike, else -1.
    int closeness(const QString &other, int minimum) const;

private:
    // The edit distance, or more than bound as soon as it can't end at or below it.
    int distance(const QString &other, int bound) const;

    QString m_text;
    bool m_parallel = false;
    // For each unit, the positions in the text where it stands, as bits.
    quint64 m_latin1[256];
    QHash<ushort, quint64> m_others;
};

// A list of texts that answers "which entries are at least m percent alike to this text" (alike
// as similarity() measures it) without measuring the query against every entry. Two filters
// prove a pair to be below the mark before any edit distance is computed, so nothing that
// would match is ever passed over:
// - lengths: d >= |a - b|, so an entry whose length differs by more than the edits allowed
//   can't match;
// - shared pairs of characters: d edits destroy at most 2d of the n - 1 character pairs of the
//   longer text, so a match shares at least n - 1 - 2d pairs with the query.
// Entries are kept by length and by character pair, so a query looks only at the lengths in
// reach and at the entries that share pairs with it.
class FuzzyIndex
{
public:
    struct Match
    {
        int index = -1;
        int closeness = -1;
    };

    FuzzyIndex() = default;
    explicit FuzzyIndex(const QStringList &entries);

    int size() const { return m_entries.size(); }
    const QString &entry(int i) const { return m_entries.at(i); }

    // The closest entry at least minimum alike; of equally close entries the first in the list.
    // No match gives index -1.
    Match closest(const QString &query, int minimum) const;
    // Calls found(index, closeness) for each entry at least minimum alike, in no fixed order.
    void forEachWithin(const QString &query, int minimum,
                       const std::function<void(int index, int closeness)> &found) const;

private:
    struct Posting
    {
        int entry;
        int count;
    };
    using Grams = QVector<QPair<quint32, int>>;

    static Grams gramsOf(const QString &text);
    // Counts, for every entry that shares a pair with query, how many pairs it shares
    // (multiset intersection); those entries are listed in m_touched.
    void countShared(const QString &query) const;
    bool isTouched(int i) const { return m_stamp.at(i) == m_epoch; }
    int sharedWith(int i) const { return isTouched(i) ? m_shared.at(i) : 0; }
    // The position in m_lengths of the first length not below length.
    int lengthPosition(int length) const;

    QStringList m_entries;
    QHash<QString, int> m_exact;
    // Distinct lengths ascending, and the entries of each.
    QVector<int> m_lengths;
    QVector<QVector<int>> m_byLength;
    QHash<quint32, QVector<Posting>> m_postings;

    // Scratch of one query, kept to spare allocations between queries.
    mutable QVector<int> m_shared;
    mutable QVector<quint32> m_stamp;
    mutable quint32 m_epoch = 0;
    mutable QVector<int> m_touched;
    mutable QVector<int> m_order;
    mutable QVector<int> m_bucketStart;
};

namespace ClusterBlocking {

// The most edits that leave two texts whose longer has length n at least minimum alike.
inline int allowedEdits(int minimum, int n)
{
    return int((qint64(100 - minimum) * n) / 100);
}

// Whether lengths a and b alone rule out a closeness of minimum: d >= |a - b|.
inline bool lengthsRuleOut(int a, int b, int minimum)
{
    const int n = qMax(a, b);
    return qAbs(a - b) > allowedEdits(minimum, n);
}

} // namespace ClusterBlocking
