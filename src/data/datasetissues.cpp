#include "data/dataset.h"

#include <algorithm>

// Which input rows a cell summarises, and the rule failures that Verify marks on cells, rows
// and columns.

// Provenance

void Dataset::addSourceRow(int r, int c, int sourceRow)
{
    m_sourceRows.insert(SourceRowKey(r, c), RowIndex(sourceRow));
}

void Dataset::addSourceRows(int r, int c, const QList<int> &sourceRows)
{
    const SourceRowKey key(r, c);
    for (int sourceRow : sourceRows)
        m_sourceRows.insert(key, RowIndex(sourceRow));
}

QList<int> Dataset::sourceRowsOf(int r, int c) const
{
    QList<int> result;
    auto collect = [&](const SourceRowKey &key) {
        for (auto it = m_sourceRows.constFind(key); it != m_sourceRows.cend() && it.key() == key;
             ++it)
            result.append(it.value().value());
    };
    collect(SourceRowKey(r, c));
    if (c != -1)
        collect(SourceRowKey(r, -1));
    std::sort(result.begin(), result.end());
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
}

// Rule failures

int Dataset::issueSeverityOf(int r, int c) const
{
    return m_issueSeverity.value(SourceRowKey(r, c), 3);
}

void Dataset::storeSeverity(const SourceRowKey &key, int severity)
{
    auto it = m_issueSeverity.find(key);
    if (it == m_issueSeverity.end())
        m_issueSeverity.insert(key, severity);
    else if (severity > it.value())
        it.value() = severity;
}

void Dataset::markIssue(int r, int c, int severity, int rule)
{
    storeSeverity(SourceRowKey(r, c), severity);
    storeSeverity(SourceRowKey(r, -1), severity);
    storeSeverity(SourceRowKey(-1, c), severity);
    m_cellIssues.insert(SourceRowKey(r, c), rule);
    ++m_rowIssues[RowIndex(r)][rule];
    ++m_columnIssues[ColumnIndex(c)][rule];
}

void Dataset::markDatasetIssue(int r, int c, int severity, int rule)
{
    storeSeverity(SourceRowKey(r, c), severity);
    if (r >= 0) {
        storeSeverity(SourceRowKey(r, -1), severity);
        ++m_datasetRowIssues[RowIndex(r)][rule];
    }
    if (c >= 0) {
        storeSeverity(SourceRowKey(-1, c), severity);
        ++m_datasetColumnIssues[ColumnIndex(c)][rule];
    }
    if (r >= 0 && c >= 0)
        m_cellIssues.insert(SourceRowKey(r, c), rule);
}

void Dataset::markColumnIssue(int c, int severity, int rule)
{
    storeSeverity(SourceRowKey(-1, c), severity);
    ++m_columnIssues[ColumnIndex(c)][rule];
}

QList<int> Dataset::cellIssues(int r, int c) const
{
    return m_cellIssues.values(SourceRowKey(r, c));
}
