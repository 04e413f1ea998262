#include "transforms/clusterblocking.h"

#include "data/valueinterpretation.h"

#include <QMap>
#include <QVarLengthArray>

#include <iterator>

#include <algorithm>

using ClusterBlocking::allowedEdits;
using ClusterBlocking::lengthsRuleOut;

namespace {

// Pairs of characters that a match of length n, allowed that many edits, must share with the
// query at least; zero or less proves nothing.
int pairsNeeded(int n, int allowed)
{
    return n - 1 - 2 * allowed;
}

} // namespace

ClosenessPattern::ClosenessPattern(const QString &text)
    : m_text(text)
    , m_parallel(text.size() <= 64)
{
    std::fill(std::begin(m_latin1), std::end(m_latin1), quint64(0));
    if (!m_parallel)
        return;
    for (int i = 0; i < text.size(); ++i) {
        const ushort unit = text.at(i).unicode();
        if (unit < 256)
            m_latin1[unit] |= quint64(1) << i;
        else
            m_others[unit] |= quint64(1) << i;
    }
}

int ClosenessPattern::closeness(const QString &other, int minimum) const
{
    minimum = qBound(0, minimum, 100);
    const int n = qMax(m_text.size(), other.size());
    if (n == 0)
        return 100;
    const int allowed = allowedEdits(minimum, n);
    if (qAbs(m_text.size() - other.size()) > allowed)
        return -1;
    if (!m_parallel)
        return similarity(m_text, other, minimum);
    const int d = distance(other, allowed);
    if (d > allowed)
        return -1;
    return 100 - int((qint64(d) * 100 + n - 1) / n);
}

// Myers (1999) in the form of Hyyrö (2001): the column of the edit-distance table for the
// text is held as bit vectors of vertical steps up and down, and each unit of other moves it
// one column on. Only the bottom cell, the distance so far, is kept as a number; a row of
// plus ones enters at the top, since the distance is over the whole of both texts.
int ClosenessPattern::distance(const QString &other, int bound) const
{
    const int m = m_text.size();
    const int n = other.size();
    if (m == 0)
        return n;
    const quint64 last = quint64(1) << (m - 1);
    quint64 up = ~quint64(0);
    quint64 down = 0;
    int d = m;
    const QChar *units = other.constData();
    for (int j = 0; j < n; ++j) {
        const ushort unit = units[j].unicode();
        const quint64 equal = unit < 256 ? m_latin1[unit] : m_others.value(unit, 0);
        const quint64 diagonal = (((equal & up) + up) ^ up) | equal | down;
        quint64 right = down | ~(diagonal | up);
        quint64 left = up & diagonal;
        if (right & last)
            ++d;
        else if (left & last)
            --d;
        // Each unit still to come can lower the distance by one at most.
        if (d - (n - 1 - j) > bound)
            return bound + 1;
        right = (right << 1) | 1;
        left <<= 1;
        up = left | ~(diagonal | right);
        down = right & diagonal;
    }
    return d;
}

FuzzyIndex::FuzzyIndex(const QStringList &entries)
    : m_entries(entries)
{
    QMap<int, QVector<int>> byLength;
    for (int i = 0; i < m_entries.size(); ++i) {
        const QString &text = m_entries.at(i);
        if (!m_exact.contains(text))
            m_exact.insert(text, i);
        byLength[text.size()].append(i);
        const Grams grams = gramsOf(text);
        for (const auto &gram : grams)
            m_postings[gram.first].append(Posting {i, gram.second});
    }
    m_lengths.reserve(byLength.size());
    m_byLength.reserve(byLength.size());
    for (auto it = byLength.cbegin(); it != byLength.cend(); ++it) {
        m_lengths.append(it.key());
        m_byLength.append(it.value());
    }
    m_shared.resize(m_entries.size());
    m_stamp.fill(0, m_entries.size());
}

FuzzyIndex::Grams FuzzyIndex::gramsOf(const QString &text)
{
    Grams grams;
    const int n = text.size();
    if (n < 2)
        return grams;
    QVarLengthArray<quint32, 64> keys;
    keys.reserve(n - 1);
    const QChar *data = text.constData();
    for (int i = 0; i + 1 < n; ++i)
        keys.append((quint32(data[i].unicode()) << 16) | data[i + 1].unicode());
    std::sort(keys.begin(), keys.end());
    for (int i = 0; i < keys.size();) {
        int j = i + 1;
        while (j < keys.size() && keys[j] == keys[i])
            ++j;
        grams.append({keys[i], j - i});
        i = j;
    }
    return grams;
}

void FuzzyIndex::countShared(const QString &query) const
{
    if (++m_epoch == 0) {
        m_stamp.fill(0);
        m_epoch = 1;
    }
    m_touched.resize(0);
    const Grams grams = gramsOf(query);
    for (const auto &gram : grams) {
        const auto it = m_postings.constFind(gram.first);
        if (it == m_postings.cend())
            continue;
        for (const Posting &posting : it.value()) {
            const int e = posting.entry;
            if (m_stamp.at(e) != m_epoch) {
                m_stamp[e] = m_epoch;
                m_shared[e] = 0;
                m_touched.append(e);
            }
            m_shared[e] += qMin(gram.second, posting.count);
        }
    }
}

int FuzzyIndex::lengthPosition(int length) const
{
    return int(std::lower_bound(m_lengths.cbegin(), m_lengths.cend(), length) - m_lengths.cbegin());
}

FuzzyIndex::Match FuzzyIndex::closest(const QString &query, int minimum) const
{
    Match best;
    if (m_entries.isEmpty())
        return best;
    minimum = qBound(0, minimum, 100);
    const auto exact = m_exact.constFind(query);
    if (exact != m_exact.cend())
        return Match {exact.value(), 100};

    const int length = query.size();
    const ClosenessPattern pattern(query);
    // Whatever order entries are measured in, an entry replaces the best so far only when it is
    // closer, or as close and earlier in the list; asking for that much lets both filters and
    // the bounded distance give up sooner as better matches are found.
    const auto consider = [&](int j) {
        int need = minimum;
        if (best.index >= 0)
            need = qMax(minimum, j < best.index ? best.closeness : best.closeness + 1);
        if (need >= 100)
            return;
        const QString &entry = m_entries.at(j);
        const int n = qMax(length, entry.size());
        const int allowed = allowedEdits(need, n);
        if (qAbs(length - entry.size()) > allowed || sharedWith(j) < pairsNeeded(n, allowed))
            return;
        const int closeness = pattern.closeness(entry, need);
        if (closeness >= need)
            best = Match {j, closeness};
    };

    // Entries that share the most pairs first: they are the likeliest to be close, and a close
    // match found early rules most of the others out cheaply.
    countShared(query);
    m_bucketStart.fill(0, length + 1);
    for (int j : qAsConst(m_touched))
        ++m_bucketStart[qMin(m_shared.at(j), length)];
    int start = 0;
    for (int s = length; s >= 0; --s) {
        const int count = m_bucketStart.at(s);
        m_bucketStart[s] = start;
        start += count;
    }
    m_order.resize(m_touched.size());
    for (int j : qAsConst(m_touched))
        m_order[m_bucketStart[qMin(m_shared.at(j), length)]++] = j;
    for (int j : qAsConst(m_order))
        consider(j);

    // Entries that share no pair: only at lengths where that is no proof of being too far.
    const int position = lengthPosition(length);
    for (int k = position; k < m_lengths.size(); ++k) {
        const int low = best.index < 0 ? minimum : qMax(minimum, best.closeness);
        const int l = m_lengths.at(k);
        if (low >= 100 || lengthsRuleOut(length, l, low))
            break;
        if (pairsNeeded(l, allowedEdits(low, l)) > 0)
            continue;
        for (int j : m_byLength.at(k)) {
            if (!isTouched(j))
                consider(j);
        }
    }
    for (int k = position - 1; k >= 0; --k) {
        const int low = best.index < 0 ? minimum : qMax(minimum, best.closeness);
        const int l = m_lengths.at(k);
        if (low >= 100 || lengthsRuleOut(length, l, low)
            || pairsNeeded(length, allowedEdits(low, length)) > 0)
            break;
        for (int j : m_byLength.at(k)) {
            if (!isTouched(j))
                consider(j);
        }
    }
    return best;
}

void FuzzyIndex::forEachWithin(const QString &query, int minimum,
                               const std::function<void(int, int)> &found) const
{
    if (m_entries.isEmpty())
        return;
    minimum = qBound(0, minimum, 100);
    const int length = query.size();
    const ClosenessPattern pattern(query);
    const auto consider = [&](int j) {
        const int closeness = pattern.closeness(m_entries.at(j), minimum);
        if (closeness >= minimum)
            found(j, closeness);
    };

    // Below a closeness of one half, d edits may destroy every pair of the text, so the pairs
    // prove nothing and counting them would be wasted.
    const bool usePairs = minimum > 50;
    if (usePairs) {
        countShared(query);
        for (int j : qAsConst(m_touched)) {
            const int n = qMax(length, m_entries.at(j).size());
            const int allowed = allowedEdits(minimum, n);
            if (qAbs(length - m_entries.at(j).size()) <= allowed
                && m_shared.at(j) >= pairsNeeded(n, allowed))
                consider(j);
        }
    }
    const auto untouched = [&](int k) {
        for (int j : m_byLength.at(k)) {
            if (!usePairs || !isTouched(j))
                consider(j);
        }
    };
    const int position = lengthPosition(length);
    for (int k = position; k < m_lengths.size(); ++k) {
        const int l = m_lengths.at(k);
        if (lengthsRuleOut(length, l, minimum))
            break;
        if (!usePairs || pairsNeeded(l, allowedEdits(minimum, l)) <= 0)
            untouched(k);
    }
    if (usePairs && pairsNeeded(length, allowedEdits(minimum, length)) > 0)
        return;
    for (int k = position - 1; k >= 0; --k) {
        if (lengthsRuleOut(length, m_lengths.at(k), minimum))
            break;
        untouched(k);
    }
}
