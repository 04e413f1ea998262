#include "data/dataset.h"
#include "data/valueinterpretation.h"

#include <QHash>
#include <QVector>

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace {

// A key's cells read once before sorting: each cell's date (as a Julian day) in a date column
// or its number in a numeric column, NaN when it reads as neither. Neither reader yields a
// NaN, so NaN marks the cells that compare by text. Pairs in which both cells have a value
// compare by value, all other pairs by text.
struct SortKey
{
    int column = -1;
    bool ascending = true;
    QString format;
    bool numeric = false;
    QVector<double> values;
};

// The values of one key column, read once: numbers in a numeric column, Julian days in a
// date column, NaN for the cells that read as neither.
QVector<double> keyValues(const QList<QStringList> &rows, int column, const QString &format,
                          bool numeric)
{
    const int rowCount = rows.size();
    const double none = std::numeric_limits<double>::quiet_NaN();
    QVector<double> values(rowCount);
    double *out = values.data();
    if (numeric) {
        const bool plainDecimals = QLocale().decimalPoint() == QLatin1Char('.');
        for (int r = 0; r < rowCount; ++r) {
            prefetchAhead(rows, r);
            bool ok = false;
            const double value = toDoubleFast(rows.at(r).at(column), plainDecimals, &ok);
            out[r] = ok ? value : none;
        }
        return values;
    }
    // Reading a date by format is slow, and a date column holds few distinct texts.
    QHash<QString, double> days;
    for (int r = 0; r < rowCount; ++r) {
        prefetchAhead(rows, r);
        const QString &cell = rows.at(r).at(column);
        auto found = days.constFind(cell);
        if (found == days.constEnd()) {
            const QDate date = toDate(cell, format);
            found = days.insert(cell, date.isValid() ? double(date.toJulianDay()) : none);
        }
        out[r] = found.value();
    }
    return values;
}

class RowOrder
{
public:
    RowOrder(const QList<QStringList> &rows, const QVector<SortKey> &keys, bool localeAware,
             bool caseSensitive)
        : m_rows(rows)
        , m_keys(keys)
        , m_localeAware(localeAware)
        , m_caseSensitivity(caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive)
    { }

    bool operator()(int a, int b) const
    {
        for (const SortKey &key : m_keys) {
            const int comparison = compare(key, a, b);
            if (comparison != 0)
                return key.ascending ? comparison < 0 : comparison > 0;
        }
        return false;
    }

    // Ties are judged as the comparison judges, except that text must be equal exactly.
    bool ties(int a, int b) const
    {
        for (const SortKey &key : m_keys) {
            if (!key.values.isEmpty() && !std::isnan(key.values.at(a))
                && !std::isnan(key.values.at(b))) {
                if (key.values.at(a) != key.values.at(b))
                    return false;
            } else if (m_rows.at(a).at(key.column) != m_rows.at(b).at(key.column)) {
                return false;
            }
        }
        return true;
    }

private:
    int compare(const SortKey &key, int a, int b) const
    {
        if (!key.values.isEmpty()) {
            const double x = key.values.at(a);
            const double y = key.values.at(b);
            if (!std::isnan(x) && !std::isnan(y))
                return x < y ? -1 : (y < x ? 1 : 0);
        }
        const QString &textA = m_rows.at(a).at(key.column);
        const QString &textB = m_rows.at(b).at(key.column);
        if (m_localeAware)
            return QString::localeAwareCompare(textA, textB);
        return QString::compare(textA, textB, m_caseSensitivity);
    }

    const QList<QStringList> &m_rows;
    const QVector<SortKey> &m_keys;
    bool m_localeAware;
    Qt::CaseSensitivity m_caseSensitivity;
};

constexpr int InsertionSortLimit = 32;

template<typename Less> void insertionSort(int *first, int *last, const Less &less)
{
    for (int *i = first + 1; i < last; ++i) {
        const int moving = *i;
        int *j = i;
        while (j > first && less(moving, *(j - 1))) {
            *j = *(j - 1);
            --j;
        }
        *j = moving;
    }
}

// Quicksort partitions, insertion sort for short ranges and heap sort once the budget is
// spent. Every scan is bounded by its range, so a column whose pairs do not order
// consistently (a number beside a text compares as text) gives some order but never runs
// past the range; the budget also ends any partitioning that makes no progress.
template<typename Less> void introSort(int *first, int *last, qint64 budget, const Less &less)
{
    while (last - first > InsertionSortLimit) {
        if (budget <= 0) {
            std::make_heap(first, last, less);
            std::sort_heap(first, last, less);
            return;
        }
        budget = budget * 3 / 4;

        int *middle = first + (last - first) / 2;
        int *back = last - 1;
        if (less(*middle, *first))
            std::iter_swap(middle, first);
        if (less(*back, *middle)) {
            std::iter_swap(back, middle);
            if (less(*middle, *first))
                std::iter_swap(middle, first);
        }
        const int pivot = *middle;
        int *i = first;
        int *j = back;
        while (i <= j) {
            while (i <= j && less(*i, pivot))
                ++i;
            while (i <= j && less(pivot, *j))
                --j;
            if (i <= j) {
                std::iter_swap(i, j);
                ++i;
                --j;
            }
        }
        // Recursing into the shorter part keeps the stack shallow.
        if (j + 1 - first < last - i) {
            introSort(first, j + 1, budget, less);
            first = i;
        } else {
            introSort(i, last, budget, less);
            last = j + 1;
        }
    }
    insertionSort(first, last, less);
}

QString rankText(int rankType, int first, int last, int run, int groupSize)
{
    switch (rankType) {
    case Dataset::RankAverage:
        return numberToCellText((first + last) / 2.0);
    case Dataset::RankMaximum:
        return QString::number(last);
    case Dataset::RankDense:
        return QString::number(run);
    case Dataset::RankCumulative:
        return numberToCellText(double(last) / double(groupSize));
    default:
        return QString::number(first);
    }
}

// The rank of each row in sort order: rows are grouped by the text of column rankBy (all
// together when it is -1), and a run of tied rows at positions p to q of its group shares
// the rank that rankType makes of them.
QStringList rankTexts(const QList<QStringList> &rows, const QVector<int> &order,
                      const RowOrder &less, int rankType, int rankBy)
{
    const int rowCount = order.size();
    // Groups in order of first appearance, each with its positions in sort order.
    QHash<QString, int> groupByText;
    QVector<QVector<int>> groups;
    for (int i = 0; i < rowCount; ++i) {
        int group = 0;
        if (rankBy >= 0) {
            const QString &text = rows.at(order.at(i)).at(rankBy);
            auto it = groupByText.constFind(text);
            if (it == groupByText.constEnd())
                it = groupByText.insert(text, groups.size());
            group = it.value();
        }
        if (group == groups.size())
            groups.append(QVector<int>());
        groups[group].append(i);
    }
    QStringList ranks;
    ranks.reserve(rowCount);
    for (int i = 0; i < rowCount; ++i)
        ranks.append(QString());
    for (const QVector<int> &positions : qAsConst(groups)) {
        const int size = positions.size();
        int start = 0;
        int run = 0;
        while (start < size) {
            int end = start;
            while (end + 1 < size
                   && less.ties(order.at(positions.at(end)), order.at(positions.at(end + 1))))
                ++end;
            ++run;
            const QString text = rankText(rankType, start + 1, end + 1, run, size);
            for (int k = start; k <= end; ++k)
                ranks[positions.at(k)] = text;
            start = end + 1;
        }
    }
    return ranks;
}

} // namespace

void Dataset::sortRows(const QList<int> &keys, const QStringList &dateFormats, bool addRank,
                       int rankType, int rankBy, bool localeAware, bool caseSensitive,
                       bool intelligent, QStringList *info)
{
    const int rowCount = m_rows.size();
    QVector<SortKey> sortKeys;
    for (const int signedNumber : keys) {
        SortKey key;
        key.column = std::abs(signedNumber) - 1;
        if (signedNumber == 0 || key.column >= m_columnCount)
            continue;
        key.ascending = signedNumber > 0;
        if (intelligent) {
            if (!isDateColumn(key.column, dateFormats, &key.format, 50)) {
                key.format.clear();
                key.numeric = isNumericColumn(key.column, true, 100);
            }
        }
        if (!key.format.isEmpty() || key.numeric)
            key.values = keyValues(m_rows, key.column, key.format, key.numeric);
        if (info && intelligent) {
            const QString kind = !key.format.isEmpty()
                ? QStringLiteral("Date (%1)").arg(key.format)
                : (key.numeric ? QStringLiteral("Numeric") : QStringLiteral("Text"));
            info->append(
                QStringLiteral("Column '%1' sorted %2 as %3")
                    .arg(headerText(key.column),
                         key.ascending ? QStringLiteral("ascending") : QStringLiteral("descending"),
                         kind));
        }
        sortKeys.append(key);
    }

    QVector<int> order(rowCount);
    for (int r = 0; r < rowCount; ++r)
        order[r] = r;
    const RowOrder less(m_rows, sortKeys, localeAware, caseSensitive);
    if (!sortKeys.isEmpty() && rowCount > 1)
        introSort(order.data(), order.data() + rowCount, rowCount, less);

    QStringList ranks;
    if (addRank && m_columnCount > 0 && rowCount > 0)
        ranks = rankTexts(m_rows, order, less, rankType, rankBy < m_columnCount ? rankBy : -1);
    // The read keys are done with: they are released before the rows are put in order, so
    // that the two never take memory at once.
    const bool sorted = !sortKeys.isEmpty();
    sortKeys = QVector<SortKey>();

    if (sorted) {
        // Rows move as shared lists: no cell is copied.
        QList<QStringList> inOrder;
        inOrder.reserve(rowCount);
        for (int i = 0; i < rowCount; ++i)
            inOrder.append(m_rows.at(order.at(i)));
        m_rows.swap(inOrder);
    }
    // Ranks are set only after the rows are in order, so that setCell pools them.
    for (int i = 0; i < ranks.size(); ++i)
        setCell(i, m_columnCount - 1, ranks.at(i));
    clearComparisonCaches();
}
