#include "transforms/rowalignment.h"

#include "data/valueinterpretation.h"
#include "transforms/keymatching.h"

#include <QHash>
#include <QLocale>

#include <algorithm>

namespace RowAlignment {

namespace {

constexpr int ProgressRows = 1000;
// The share of the work that grouping the rows by key takes; laying the pairs out is the
// rest.
constexpr double GroupingShare = 0.8;

bool tells(const Progress &progress, double fraction)
{
    return !progress || progress(fraction);
}

// The rows of one side grouped by key: the group of each row, and for each group its rows
// as a chain, first row and next row, in ascending order.
struct SideChains
{
    QVector<int> first;
    QVector<int> last;
    QVector<int> next;

    void addGroup()
    {
        first.append(-1);
        last.append(-1);
    }

    void addRow(int r, int group)
    {
        next[r] = -1;
        if (first.at(group) < 0)
            first[group] = r;
        else
            next[last.at(group)] = r;
        last[group] = r;
    }
};

// Groups the rows of both sides by key text; a group's number is the order of the key's
// first occurrence, on the left and then on the right.
class KeyGroups
{
public:
    KeyGroups(const Dataset &left, const Dataset &right, const Options &options)
        : m_left(left)
        , m_right(right)
        , m_options(options)
    {
        const int leftRows = left.rowCount();
        const int rightRows = right.rowCount();
        m_groupOfKey.reserve(std::max(leftRows, rightRows));
        m_leftChains.next.resize(leftRows);
        m_rightChains.next.resize(rightRows);
    }

    bool group(const Progress &progress)
    {
        const qint64 total = qint64(m_left.rowCount()) + m_right.rowCount();
        return groupSide(m_left, m_options.leftKey, m_leftChains, 0, total, progress)
            && groupSide(m_right, m_options.rightKey, m_rightChains, m_left.rowCount(), total,
                         progress);
    }

    int groupCount() const { return m_keys.size(); }
    QVector<int> sortedGroups() const;
    const SideChains &leftChains() const { return m_leftChains; }
    const SideChains &rightChains() const { return m_rightChains; }

private:
    bool groupSide(const Dataset &dataset, int column, SideChains &chains, qint64 done,
                   qint64 total, const Progress &progress)
    {
        const bool caseSensitive = m_options.caseSensitive;
        const int rowCount = dataset.rowCount();
        for (int r = 0; r < rowCount; ++r) {
            if (r % ProgressRows == 0 && !tells(progress, GroupingShare * (done + r) / total))
                return false;
            const QString key = KeyMatching::keyText(dataset.cell(r, column), caseSensitive);
            // One more than the group, so that a fresh entry (0) reads as a new key.
            int &slot = m_groupOfKey[key];
            if (slot == 0) {
                m_keys.append(key);
                m_leftChains.addGroup();
                m_rightChains.addGroup();
                slot = m_keys.size();
            }
            chains.addRow(r, slot - 1);
        }
        return true;
    }

    const Dataset &m_left;
    const Dataset &m_right;
    const Options &m_options;
    QHash<QString, int> m_groupOfKey;
    QVector<QString> m_keys;
    SideChains m_leftChains;
    SideChains m_rightChains;
};

QVector<int> KeyGroups::sortedGroups() const
{
    const int count = m_keys.size();
    QVector<double> numbers(count);
    QVector<char> isNumber(count);
    const bool decimalIsPoint = QLocale().decimalPoint() == QLatin1Char('.');
    for (int g = 0; g < count; ++g) {
        bool ok = false;
        numbers[g] = toDoubleFast(m_keys.at(g), decimalIsPoint, &ok);
        isNumber[g] = ok;
    }
    QVector<int> order(count);
    for (int g = 0; g < count; ++g)
        order[g] = g;
    // Keys are distinct, so the text settles every tie and the order is total.
    std::sort(order.begin(), order.end(), [&](int a, int b) {
        if (isNumber.at(a) != isNumber.at(b))
            return bool(isNumber.at(a));
        if (isNumber.at(a) && numbers.at(a) != numbers.at(b))
            return numbers.at(a) < numbers.at(b);
        return m_keys.at(a) < m_keys.at(b);
    });
    return order;
}

QVector<RowPair> alignByRowNumber(const Dataset &left, const Dataset &right,
                                  const Progress &progress)
{
    const int leftRows = left.rowCount();
    const int rightRows = right.rowCount();
    const int count = std::max(leftRows, rightRows);
    QVector<RowPair> pairs(count);
    for (int r = 0; r < count; ++r) {
        if (r % ProgressRows == 0 && !tells(progress, double(r) / count))
            return {};
        pairs[r] = {r < leftRows ? r : -1, r < rightRows ? r : -1};
    }
    return pairs;
}

QVector<RowPair> alignByKey(const Dataset &left, const Dataset &right, const Options &options,
                            const Progress &progress)
{
    KeyGroups groups(left, right, options);
    if (!groups.group(progress))
        return {};
    const int groupCount = groups.groupCount();
    QVector<int> order;
    if (options.sortByKey)
        order = groups.sortedGroups();

    const SideChains &leftChains = groups.leftChains();
    const SideChains &rightChains = groups.rightChains();
    QVector<RowPair> pairs;
    pairs.reserve(std::max(left.rowCount(), right.rowCount()));
    for (int i = 0; i < groupCount; ++i) {
        if (i % ProgressRows == 0
            && !tells(progress, GroupingShare + (1.0 - GroupingShare) * i / groupCount))
            return {};
        const int g = options.sortByKey ? order.at(i) : i;
        int l = leftChains.first.at(g);
        int r = rightChains.first.at(g);
        while (l >= 0 || r >= 0) {
            pairs.append({l, r});
            l = l >= 0 ? leftChains.next.at(l) : -1;
            r = r >= 0 ? rightChains.next.at(r) : -1;
        }
    }
    return pairs;
}

} // namespace

bool canAlign(const Dataset &left, const Dataset &right, const Options &options)
{
    if (options.mode == Mode::RowNumbers)
        return true;
    return options.leftKey >= 0 && options.leftKey < left.columnCount() && options.rightKey >= 0
        && options.rightKey < right.columnCount();
}

QVector<RowPair> align(const Dataset &left, const Dataset &right, const Options &options,
                       const Progress &progress)
{
    if (!canAlign(left, right, options))
        return {};
    if (options.mode == Mode::RowNumbers)
        return alignByRowNumber(left, right, progress);
    return alignByKey(left, right, options, progress);
}

} // namespace RowAlignment
