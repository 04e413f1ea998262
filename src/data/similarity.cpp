#include "data/valueinterpretation.h"

#include <QVarLengthArray>

#include <utility>

// Edit distance and the percentage of likeness built on it, for the fuzzy operators, Dedupe
// and Lookup.

namespace {

// Floor of numerator / 100 for either sign; the percentage rules are stated with floor.
qint64 floorPercent(qint64 numerator)
{
    qint64 quotient = numerator / 100;
    if (numerator % 100 != 0 && numerator < 0)
        --quotient;
    return quotient;
}

int allowedDistance(int threshold, qint64 total)
{
    const qint64 allowed = floorPercent((100 - qint64(threshold)) * total);
    return int(qBound<qint64>(-1, allowed, total));
}

int percentAlike(qint64 distance, qint64 total)
{
    return int(100 - (distance * 100 + total - 1) / total);
}

} // namespace

int boundedLevenshtein(const QString &a, const QString &b, int bound)
{
    if (bound <= 0)
        return 0;
    const QChar *s = a.constData();
    const QChar *t = b.constData();
    int n = a.size();
    int m = b.size();
    if (n > m) {
        std::swap(s, t);
        std::swap(n, m);
    }
    while (n > 0 && *s == *t) {
        ++s;
        ++t;
        --n;
        --m;
    }
    while (n > 0 && s[n - 1] == t[m - 1]) {
        --n;
        --m;
    }
    const int difference = m - n;
    if (difference >= bound)
        return bound;
    if (n == 0)
        return difference;

    // Only cells with |j - i| <= reach can hold a distance below the bound. The band of a
    // row is stored by diagonal: slot k holds column j = i - reach + k, so that the cell
    // above-left is the slot's old value and the cell above is the next slot's old value.
    const int reach = qMin(bound - 1, m);
    const int cap = reach + 1;
    const int width = 2 * reach + 1;
    QVarLengthArray<int, 128> band(width);
    for (int k = 0; k < width; ++k) {
        const int j = k - reach;
        band[k] = j < 0 ? cap : qMin(j, cap);
    }
    for (int i = 1; i <= n; ++i) {
        const QChar si = s[i - 1];
        int rowMinimum = cap;
        for (int k = 0; k < width; ++k) {
            const int j = i - reach + k;
            int value;
            if (j < 0 || j > m) {
                value = cap;
            } else if (j == 0) {
                value = qMin(i, cap);
            } else {
                const int diagonal = band[k] + (si == t[j - 1] ? 0 : 1);
                const int above = k + 1 < width ? band[k + 1] + 1 : cap;
                const int left = k > 0 ? band[k - 1] + 1 : cap;
                value = qMin(qMin(diagonal, above), qMin(left, cap));
            }
            band[k] = value;
            rowMinimum = qMin(rowMinimum, value);
        }
        if (rowMinimum >= cap)
            return bound;
    }
    const int distance = band[difference + reach];
    return distance >= cap ? bound : distance;
}

int similarity(const QString &a, const QString &b, int threshold)
{
    const int maxLength = qMax(a.size(), b.size());
    if (maxLength == 0)
        return 100;
    const int allowed = allowedDistance(threshold, maxLength);
    if (allowed < 0)
        return -1;
    const int distance = boundedLevenshtein(a, b, allowed + 1);
    if (distance > allowed)
        return -1;
    return percentAlike(distance, maxLength);
}

int similarity(const QStringList &a, const QStringList &b, int threshold)
{
    if (a.size() != b.size())
        return 0;
    qint64 total = 0;
    for (int i = 0; i < a.size(); ++i)
        total += qMax(a.at(i).size(), b.at(i).size());
    if (total == 0)
        return 100;
    int remaining = allowedDistance(threshold, total);
    if (remaining < 0)
        return -1;
    qint64 distances = 0;
    for (int i = 0; i < a.size(); ++i) {
        const int distance = boundedLevenshtein(a.at(i), b.at(i), remaining + 1);
        if (distance >= remaining + 1)
            return -1;
        remaining -= distance;
        distances += distance;
    }
    return percentAlike(distances, total);
}
