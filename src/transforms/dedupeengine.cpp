#include "transforms/dedupeengine.h"

#include "data/valueinterpretation.h"

#include <QHash>
#include <QVector>

#include <algorithm>

namespace {

constexpr int ExactReportEvery = 1000;
constexpr int FuzzyReportEvery = 25;

bool dropped(QChar ch, const DedupeOptions &options)
{
    return (options.ignoreSpaces && ch.isSpace()) || (options.ignorePunctuation && ch.isPunct());
}

// Appends the normalised text to out without a temporary for the common case of ASCII text,
// which is most cells of most tables; other text goes through QString::toLower so that special
// casings are honoured.
void appendNormalised(QString &out, const QString &text, const DedupeOptions &options)
{
    const bool filter = options.ignoreSpaces || options.ignorePunctuation;
    if (options.caseSensitive && !filter) {
        out.append(text);
        return;
    }
    bool ascii = true;
    for (const QChar ch : text) {
        if (ch.unicode() >= 0x80) {
            ascii = false;
            break;
        }
    }
    if (!ascii) {
        const QString lowered = options.caseSensitive ? text : text.toLower();
        for (const QChar ch : lowered) {
            if (!filter || !dropped(ch, options))
                out.append(ch);
        }
        return;
    }
    for (const QChar ch : text) {
        if (filter && dropped(ch, options))
            continue;
        const ushort u = ch.unicode();
        out.append(!options.caseSensitive && u >= 'A' && u <= 'Z' ? QChar(u + ('a' - 'A')) : ch);
    }
}

// The key of a row for exact matching: each normalised cell preceded by its length, so that
// no cell text, whatever characters it holds, can make two different rows share a key.
void buildExactKey(QString &key, const Dataset &input, int r, const QList<int> &columns,
                   const DedupeOptions &options)
{
    key.resize(0);
    const QStringList &row = input.row(r);
    for (int c : columns) {
        const int lengthAt = key.size();
        key.append(QChar(0));
        key.append(QChar(0));
        appendNormalised(key, row.at(c), options);
        const int length = key.size() - lengthAt - 2;
        key[lengthAt] = QChar(ushort(length & 0xffff));
        key[lengthAt + 1] = QChar(ushort(uint(length) >> 16));
    }
}

QStringList fuzzyKey(const Dataset &input, int r, const QList<int> &columns,
                     const DedupeOptions &options)
{
    QStringList key;
    key.reserve(columns.size());
    const QStringList &row = input.row(r);
    for (int c : columns)
        key.append(DedupeEngine::normalise(row.at(c), options));
    return key;
}

// A pair whose lengths alone need more edits than the threshold allows can't match; the
// check saves the distance routine for most pairs of unlike rows.
bool cannotReach(const QStringList &a, const QStringList &b, int threshold)
{
    int total = 0;
    int difference = 0;
    for (int i = 0; i < a.size(); ++i) {
        const int sa = a.at(i).size();
        const int sb = b.at(i).size();
        total += qMax(sa, sb);
        difference += qAbs(sa - sb);
    }
    if (total == 0)
        return false;
    return double(difference) > double(100 - threshold) * double(total) / 100.0;
}

class Search
{
public:
    Search(DedupeProgress *progress, const Dataset &input, const DedupeOptions &options)
        : m_progress(progress)
        , m_input(input)
        , m_options(options)
        , m_columns(options.columns)
        , m_fuzzy(options.threshold < 100)
        , m_reportEvery(m_fuzzy ? FuzzyReportEvery : ExactReportEvery)
    {
        std::sort(m_columns.begin(), m_columns.end());
        m_columns.erase(std::unique(m_columns.begin(), m_columns.end()), m_columns.end());
    }

    DedupeResult run()
    {
        DedupeResult result;
        result.output.setColumnCount(m_input.columnCount());
        result.output.setColumnIds(m_input.columnIds());
        if (m_input.hasHeader())
            result.output.setHeader(m_input.header());
        if (m_options.mode == DedupeOptions::AddInformation)
            addInformation(result);
        else
            keepOrRemove(result);
        report(1.0, result);
        return result;
    }

private:
    void report(qreal fraction, const DedupeResult &result)
    {
        if (!m_progress)
            return;
        emit m_progress->processed(fraction);
        emit m_progress->processed(fraction, result.groups, result.duplicates);
    }

    void reportRow(int r, const DedupeResult &result)
    {
        if (r % m_reportEvery == 0)
            report(qreal(r) / qreal(m_input.rowCount()), result);
    }

    // The earliest reference at or above the threshold (modes 0 and 1), or the closest one
    // (mode 2, ties to the earlier group). Returns the reference's index, -1 for none.
    int matchFuzzy(const QStringList &key, bool closest, int *closeness) const
    {
        const auto exact = m_exactReferences.constFind(key);
        if (exact != m_exactReferences.cend()) {
            *closeness = 100;
            return exact.value();
        }
        int best = -1;
        int bestCloseness = -1;
        for (int i = 0; i < m_references.size(); ++i) {
            // Only a closer reference can win over the best so far, since ties go to the
            // earlier group: asking for that closeness lets the distance give up sooner.
            const int needed = std::max(m_options.threshold, bestCloseness + 1);
            const QStringList &reference = m_references.at(i);
            if (cannotReach(key, reference, needed))
                continue;
            const int alike = similarity(key, reference, needed);
            if (alike < needed)
                continue;
            best = i;
            bestCloseness = alike;
            if (!closest || alike == 100)
                break;
        }
        *closeness = bestCloseness;
        return best;
    }

    void addReference(const QStringList &key)
    {
        m_exactReferences.insert(key, m_references.size());
        m_references.append(key);
    }

    void keepOrRemove(DedupeResult &result)
    {
        Dataset &output = result.output;
        const bool keepDuplicates = m_options.mode == DedupeOptions::KeepOnlyDuplicates;
        const bool drilldown = m_options.drilldown && !m_fuzzy && !keepDuplicates;
        const int rowCount = m_input.rowCount();
        output.reserveRows(rowCount);
        QHash<QString, int> seen;
        QString key;
        for (int r = 0; r < rowCount; ++r) {
            reportRow(r, result);
            if (m_options.stopRequested && m_options.stopRequested())
                break;
            prefetchAhead(m_input.rows(), r);
            bool duplicate = false;
            int outputRow = -1;
            if (m_fuzzy) {
                const QStringList fuzzy = fuzzyKey(m_input, r, m_columns, m_options);
                int closeness = 0;
                duplicate = matchFuzzy(fuzzy, false, &closeness) >= 0;
                if (!duplicate)
                    addReference(fuzzy);
            } else {
                buildExactKey(key, m_input, r, m_columns, m_options);
                const auto it = seen.constFind(key);
                duplicate = it != seen.cend();
                if (duplicate)
                    outputRow = it.value();
                else
                    seen.insert(key, keepDuplicates ? -1 : output.rowCount());
            }
            if (duplicate) {
                ++result.duplicates;
                if (drilldown)
                    output.addSourceRow(outputRow, -1, r);
            } else {
                ++result.groups;
            }
            if (duplicate == keepDuplicates) {
                if (drilldown)
                    output.addSourceRow(output.rowCount(), -1, r);
                output.appendSharedRow(m_input.row(r));
            }
        }
    }

    void addInformation(DedupeResult &result)
    {
        const int rowCount = m_input.rowCount();
        // Per input row: its group (0-based), and its closeness, -1 for a group's first row.
        QVector<int> groupOf(rowCount, -1);
        QVector<int> closenessOf(rowCount, -1);
        QVector<int> duplicatesOfGroup;
        QHash<QString, int> exactGroups;
        QString key;
        int processed = 0;
        for (int r = 0; r < rowCount; ++r) {
            reportRow(r, result);
            if (m_options.stopRequested && m_options.stopRequested())
                break;
            processed = r + 1;
            prefetchAhead(m_input.rows(), r);
            int group = -1;
            int closeness = 100;
            if (m_fuzzy) {
                const QStringList fuzzy = fuzzyKey(m_input, r, m_columns, m_options);
                group = matchFuzzy(fuzzy, true, &closeness);
                if (group < 0)
                    addReference(fuzzy);
            } else {
                buildExactKey(key, m_input, r, m_columns, m_options);
                group = exactGroups.value(key, -1);
                if (group < 0)
                    exactGroups.insert(key, duplicatesOfGroup.size());
            }
            if (group < 0) {
                groupOf[r] = duplicatesOfGroup.size();
                duplicatesOfGroup.append(0);
                ++result.groups;
            } else {
                groupOf[r] = group;
                closenessOf[r] = closeness;
                ++duplicatesOfGroup[group];
                ++result.duplicates;
            }
        }

        // Group ascending, a group's first row first, closer duplicates before less close
        // ones, then input order; the row number makes the order total.
        QVector<int> order(processed);
        for (int r = 0; r < processed; ++r)
            order[r] = r;
        std::sort(order.begin(), order.end(), [&](int a, int b) {
            if (groupOf.at(a) != groupOf.at(b))
                return groupOf.at(a) < groupOf.at(b);
            const bool duplicateA = closenessOf.at(a) >= 0;
            const bool duplicateB = closenessOf.at(b) >= 0;
            if (duplicateA != duplicateB)
                return !duplicateA;
            if (closenessOf.at(a) != closenessOf.at(b))
                return closenessOf.at(a) > closenessOf.at(b);
            return a < b;
        });

        Dataset &output = result.output;
        const QStringList added = DedupeEngine::informationColumns();
        const int inputColumns = m_input.columnCount();
        QList<ColumnId> ids = m_input.columnIds();
        for (int i = 0; i < added.size(); ++i)
            ids.append(ColumnId());
        output.setColumnCount(inputColumns + added.size());
        output.setColumnIds(ids);
        // Like every new column, these are named only where the input has a header.
        if (m_input.hasHeader())
            output.setHeader(m_input.header() + added);
        output.reserveRows(processed);
        const QString trueText = QStringLiteral("true");
        const QString falseText = QStringLiteral("false");
        for (int r : order) {
            QStringList row = m_input.row(r);
            row.reserve(inputColumns + added.size());
            const bool duplicate = closenessOf.at(r) >= 0;
            row.append(QString::number(groupOf.at(r) + 1));
            row.append(QString::number(r + 1));
            row.append(duplicate ? QString::number(closenessOf.at(r)) : QString());
            row.append(duplicate ? trueText : falseText);
            row.append(duplicate ? QString()
                                 : QString::number(duplicatesOfGroup.at(groupOf.at(r))));
            output.appendRow(row);
        }
    }

    DedupeProgress *m_progress;
    const Dataset &m_input;
    const DedupeOptions &m_options;
    QList<int> m_columns;
    bool m_fuzzy;
    int m_reportEvery;
    QVector<QStringList> m_references;
    QHash<QStringList, int> m_exactReferences;
};

} // namespace

namespace DedupeEngine {

QStringList informationColumns()
{
    return {QStringLiteral("Group"), QStringLiteral("Row"), QStringLiteral("Closeness"),
            QStringLiteral("Duplicate"), QStringLiteral("Duplicates")};
}

QString normalise(const QString &text, const DedupeOptions &options)
{
    if (options.caseSensitive && !options.ignoreSpaces && !options.ignorePunctuation)
        return text;
    QString out;
    out.reserve(text.size());
    appendNormalised(out, text, options);
    return out;
}

DedupeResult findDuplicates(DedupeProgress *progress, const Dataset &input,
                            const DedupeOptions &options)
{
    return Search(progress, input, options).run();
}

} // namespace DedupeEngine
