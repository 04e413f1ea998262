#include "data/dataset.h"

#include "data/valueinterpretation.h"

#include <QSet>
#include <QTextStream>

#include <algorithm>

int Dataset::s_optimizeFor = Dataset::MinimumMemory;

Dataset::Dataset(Dataset &&other) noexcept
{
    *this = std::move(other);
}

Dataset &Dataset::operator=(Dataset &&other) noexcept
{
    if (this == &other)
        return *this;
    m_columnCount = other.m_columnCount;
    m_rows = std::move(other.m_rows);
    m_hasHeader = other.m_hasHeader;
    m_header = std::move(other.m_header);
    m_columnIds = std::move(other.m_columnIds);
    m_columnIndexById = std::move(other.m_columnIndexById);
    m_columnIndexDirty = other.m_columnIndexDirty;
    m_stringPools = std::move(other.m_stringPools);
    m_sourceRows = std::move(other.m_sourceRows);
    m_issueSeverity = std::move(other.m_issueSeverity);
    m_datasetRowIssues = std::move(other.m_datasetRowIssues);
    m_datasetColumnIssues = std::move(other.m_datasetColumnIssues);
    m_rowIssues = std::move(other.m_rowIssues);
    m_columnIssues = std::move(other.m_columnIssues);
    m_cellIssues = std::move(other.m_cellIssues);
    other.clear();
    return *this;
}

void Dataset::setOptimizeFor(int mode)
{
    s_optimizeFor = mode == MaximumSpeed ? MaximumSpeed : MinimumMemory;
}

int Dataset::optimizeFor()
{
    return s_optimizeFor;
}

void Dataset::clear()
{
    m_stringPools.clear();
    m_columnCount = 0;
    m_rows.clear();
    m_hasHeader = false;
    m_header.clear();
    m_columnIds.clear();
    m_columnIndexById.clear();
    m_columnIndexDirty = false;
    m_sourceRows.clear();
    clearIssues();
}

void Dataset::clearSourceRows()
{
    m_sourceRows.clear();
}

void Dataset::clearIssues()
{
    m_issueSeverity.clear();
    m_datasetRowIssues.clear();
    m_datasetColumnIssues.clear();
    m_rowIssues.clear();
    m_columnIssues.clear();
    m_cellIssues.clear();
}

void Dataset::clearStringPools()
{
    m_stringPools.resize(0);
}

bool Dataset::equals(const Dataset &other) const
{
    return m_columnCount == other.m_columnCount && m_rows == other.m_rows
        && headers() == other.headers();
}

// Pooling

void Dataset::poolText(int c, QString &text)
{
    if (text.isEmpty()) {
        if (!text.isNull())
            text = QString();
        return;
    }
    if (s_optimizeFor != MinimumMemory || c < 0)
        return;
    if (c >= m_stringPools.size())
        m_stringPools.resize(c + 1);
    m_stringPools[c].pool(text);
}

void Dataset::poolList(QStringList &list)
{
    const int n = list.size();
    if (s_optimizeFor != MinimumMemory) {
        for (int c = 0; c < n; ++c) {
            if (list.at(c).isEmpty() && !list.at(c).isNull())
                list[c] = QString();
        }
        return;
    }
    if (n > m_stringPools.size())
        m_stringPools.resize(n);
    StringPool *pools = m_stringPools.data();
    for (int c = 0; c < n; ++c) {
        // Read through the const accessor, so that a shared row whose cells are pooled
        // already stays shared.
        QString pooled;
        if (pools[c].replacement(list.at(c), &pooled))
            list[c] = pooled;
    }
}

// Size and shape

void Dataset::setColumnCount(int count)
{
    if (count <= 0) {
        clear();
        return;
    }
    if (count == m_columnCount)
        return;
    if (count > m_columnCount) {
        const int added = count - m_columnCount;
        for (int i = 0; i < added; ++i)
            m_columnIds.append(ColumnId());
        m_columnIndexDirty = true;
        if (m_hasHeader) {
            // The added names are the header's length at each step: the column at index k is
            // named "k". Kept as it is because documents and users rely on these names.
            while (m_header.size() < count)
                m_header.append(QString::number(m_header.size()));
        }
        for (QStringList &row : m_rows) {
            row.reserve(count);
            for (int i = 0; i < added; ++i)
                row.append(QString());
        }
    } else {
        m_columnIds.erase(m_columnIds.begin() + count, m_columnIds.end());
        m_columnIndexDirty = true;
        if (m_header.size() > count)
            m_header.erase(m_header.begin() + count, m_header.end());
        for (QStringList &row : m_rows)
            row.erase(row.begin() + count, row.end());
        if (m_stringPools.size() > count)
            m_stringPools.resize(count);
    }
    m_columnCount = count;
}

void Dataset::setRowCount(int count)
{
    if (m_columnCount == 0)
        return;
    count = std::max(0, count);
    if (count < m_rows.size()) {
        m_rows.erase(m_rows.begin() + count, m_rows.end());
        return;
    }
    QStringList empty;
    empty.reserve(m_columnCount);
    for (int c = 0; c < m_columnCount; ++c)
        empty.append(QString());
    m_rows.reserve(count);
    while (m_rows.size() < count)
        m_rows.append(empty);
}

void Dataset::setSize(int rows, int columns)
{
    if (columns <= 0) {
        clear();
        return;
    }
    rows = std::max(0, rows);
    if (rows < m_rows.size())
        m_rows.erase(m_rows.begin() + rows, m_rows.end());
    setColumnCount(columns);
    setRowCount(rows);
}

void Dataset::appendColumn()
{
    insertColumn(m_columnCount);
}

void Dataset::prependColumn()
{
    insertColumn(0);
}

void Dataset::insertColumn(int c)
{
    c = std::clamp(c, 0, m_columnCount);
    m_columnIds.insert(c, ColumnId());
    m_columnIndexDirty = true;
    for (QStringList &row : m_rows) {
        // Room for exactly one more cell: an insert alone would round a list's block up to
        // the next power of two, and a row that is this table's alone grows in its block.
        row.reserve(m_columnCount + 1);
        row.insert(c, QString());
    }
    if (m_hasHeader)
        m_header.insert(c, QString());
    if (c < m_stringPools.size())
        m_stringPools.insert(c, StringPool());
    ++m_columnCount;
}

void Dataset::removeColumn(int c)
{
    if (c < 0 || c >= m_columnCount)
        return;
    if (m_columnCount == 1) {
        clear();
        return;
    }
    m_columnIds.removeAt(c);
    for (QStringList &row : m_rows)
        row.removeAt(c);
    if (c < m_stringPools.size())
        m_stringPools.remove(c);
    if (c < m_header.size())
        m_header.removeAt(c);
    m_columnIndexDirty = true;
    --m_columnCount;
}

int Dataset::removeEmptyColumns()
{
    const QList<int> empty = emptyColumns();
    for (int c : empty)
        removeColumn(c);
    return empty.size();
}

QList<int> Dataset::emptyColumns() const
{
    QVector<bool> hasText(m_columnCount, false);
    int remaining = m_columnCount;
    for (const QStringList &row : m_rows) {
        for (int c = 0; c < m_columnCount; ++c) {
            if (!hasText.at(c) && !row.at(c).isEmpty()) {
                hasText[c] = true;
                --remaining;
            }
        }
        if (remaining == 0)
            break;
    }
    QList<int> result;
    for (int c = m_columnCount - 1; c >= 0; --c) {
        if (!hasText.at(c))
            result.append(c);
    }
    return result;
}

void Dataset::removeRow(int r)
{
    if (r < 0 || r >= m_rows.size())
        return;
    m_rows.removeAt(r);
}

int Dataset::removeEmptyRows()
{
    // Filling a new list keeps the operation linear even when many rows go.
    QList<QStringList> kept;
    kept.reserve(m_rows.size());
    int removed = 0;
    for (const QStringList &row : qAsConst(m_rows)) {
        const bool empty
            = std::all_of(row.cbegin(), row.cend(), [](const QString &s) { return s.isEmpty(); });
        if (empty)
            ++removed;
        else
            kept.append(row);
    }
    if (removed > 0)
        m_rows.swap(kept);
    return removed;
}

// Cells and rows

void Dataset::setCell(int r, int c, const QString &text)
{
    QString pooled = text;
    poolText(c, pooled);
    m_rows[r][c] = pooled;
}

void Dataset::setRow(int r, const QStringList &list)
{
    QStringList pooled = list;
    fitRow(pooled);
    poolList(pooled);
    m_rows[r] = pooled;
}

void Dataset::setColumn(int c, const QStringList &list)
{
    const int n = m_rows.size();
    for (int r = 0; r < n; ++r) {
        QString text = list.at(r);
        poolText(c, text);
        m_rows[r][c] = text;
    }
}

void Dataset::fitRow(QStringList &list) const
{
    if (list.size() > m_columnCount)
        list.erase(list.begin() + m_columnCount, list.end());
    while (list.size() < m_columnCount)
        list.append(QString());
}

void Dataset::appendRow(const QStringList &list, bool fit)
{
    QStringList row = list;
    if (fit)
        fitRow(row);
    else if (!m_rows.isEmpty() && row.size() != m_columnCount)
        return;
    poolList(row);
    m_rows.append(row);
}

void Dataset::prependRow(const QStringList &list, bool fit)
{
    QStringList row = list;
    if (fit)
        fitRow(row);
    else if (row.size() != m_columnCount)
        return;
    poolList(row);
    m_rows.prepend(row);
}

void Dataset::insertRow(int r, const QStringList &list)
{
    QStringList row = list;
    fitRow(row);
    poolList(row);
    m_rows.insert(std::clamp(r, 0, int(m_rows.size())), row);
}

QString Dataset::pooledCell(int c, QStringView text)
{
    if (s_optimizeFor != MinimumMemory || c < 0)
        return text.isEmpty() ? QString() : text.toString();
    if (c >= m_stringPools.size())
        m_stringPools.resize(c + 1);
    return m_stringPools[c].pooled(text);
}

StringPool *Dataset::cellPool(int c)
{
    if (s_optimizeFor != MinimumMemory || c < 0)
        return nullptr;
    if (c >= m_stringPools.size())
        m_stringPools.resize(c + 1);
    return &m_stringPools[c];
}

bool Dataset::addInputRow(QStringList list, bool trim, bool tidy, bool skipEmpty, bool cellsPooled)
{
    if (trim || tidy) {
        for (QString &cell : list) {
            if (trim)
                cell = cell.trimmed();
            if (tidy)
                cell = tidyLineEnds(cell);
        }
    }
    if (skipEmpty
        && std::all_of(list.cbegin(), list.cend(), [](const QString &s) { return s.isEmpty(); }))
        return false;
    if (list.size() > m_columnCount)
        setColumnCount(list.size());
    fitRow(list);
    if (!cellsPooled || trim || tidy)
        poolList(list);
    m_rows.append(list);
    return true;
}

QStringList Dataset::columnValues(int c) const
{
    QStringList values;
    values.reserve(m_rows.size());
    for (const QStringList &row : m_rows)
        values.append(row.at(c));
    return values;
}

QStringList Dataset::rowValues(int r, const QList<int> &columns) const
{
    QStringList values;
    values.reserve(columns.size());
    const QStringList &row = m_rows.at(r);
    for (int c : columns)
        values.append(row.at(c));
    return values;
}

// Headers

QString Dataset::headerText(int c) const
{
    if (m_hasHeader && c >= 0 && c < m_header.size() && !m_header.at(c).isEmpty())
        return m_header.at(c);
    return QString::number(c + 1);
}

QStringList Dataset::headers() const
{
    QStringList names;
    names.reserve(m_columnCount);
    for (int c = 0; c < m_columnCount; ++c)
        names.append(headerText(c));
    return names;
}

void Dataset::setHeader(const QStringList &list)
{
    QStringList header = list;
    if (s_optimizeFor == MinimumMemory) {
        for (int c = 0; c < header.size(); ++c)
            poolText(c, header[c]);
    }
    m_header = header;
    m_hasHeader = !m_header.isEmpty();
}

void Dataset::setColumnName(int c, const QString &name)
{
    if (m_header.isEmpty()) {
        QStringList names = headers();
        if (c >= 0 && c < names.size())
            names[c] = name;
        m_header = names;
    } else if (c >= 0 && c < m_header.size()) {
        QString pooled = name;
        poolText(c, pooled);
        m_header[c] = pooled;
    }
    m_hasHeader = true;
}

void Dataset::setHasHeader(bool on)
{
    if (on == m_hasHeader)
        return;
    if (!on) {
        if (!m_header.isEmpty())
            prependRow(m_header, true);
        m_header.clear();
        m_hasHeader = false;
        return;
    }
    if (m_rows.isEmpty())
        return;
    m_header = m_rows.takeFirst();
    m_hasHeader = true;
}

QHash<QString, ColumnIndex> Dataset::columnsByName() const
{
    QHash<QString, ColumnIndex> byName;
    byName.reserve(m_columnCount * 2);
    for (int c = 0; c < m_columnCount; ++c) {
        const QString name = headerText(c).trimmed();
        if (!byName.contains(name))
            byName.insert(name, ColumnIndex(c));
    }
    for (int c = 0; c < m_columnCount; ++c) {
        const QString number = QString::number(c + 1);
        if (!byName.contains(number))
            byName.insert(number, ColumnIndex(c));
    }
    return byName;
}

// Column identity

ColumnId Dataset::columnId(int c) const
{
    if (c < 0 || c >= m_columnIds.size())
        return ColumnId();
    return m_columnIds.at(c);
}

void Dataset::setColumnIds(const QList<ColumnId> &ids)
{
    m_columnIds = ids;
    m_columnIndexDirty = true;
}

void Dataset::setColumnId(int c, ColumnId id)
{
    if (c >= 0 && c < m_columnIds.size())
        m_columnIds[c] = id;
    m_columnIndexDirty = true;
}

int Dataset::columnIndex(ColumnId id) const
{
    if (id.isNull())
        return -1;
    if (m_columnIndexDirty || (m_columnIndexById.isEmpty() && !m_columnIds.isEmpty())) {
        m_columnIndexById.clear();
        m_columnIndexById.reserve(m_columnIds.size());
        for (int c = 0; c < m_columnIds.size(); ++c)
            m_columnIndexById.insert(m_columnIds.at(c), c);
        m_columnIndexDirty = false;
    }
    return m_columnIndexById.value(id, -1);
}

void Dataset::assignColumnIds(int sourceId)
{
    // A fresh ordinal never collides with an id this source already gave out.
    int ordinal = 0;
    for (const ColumnId &id : qAsConst(m_columnIds)) {
        if (id.sourceId == sourceId)
            ordinal = std::max(ordinal, int(id.ordinal));
    }
    for (ColumnId &id : m_columnIds) {
        if (id.isNull())
            id = ColumnId(sourceId, ++ordinal);
    }
    m_columnIndexDirty = true;
}

void Dataset::dropDuplicateIds()
{
    QSet<ColumnId> seen;
    bool duplicates = false;
    for (const ColumnId &id : qAsConst(m_columnIds)) {
        if (id.isNull())
            continue;
        if (seen.contains(id)) {
            duplicates = true;
            break;
        }
        seen.insert(id);
    }
    if (!duplicates)
        return;
    seen.clear();
    for (ColumnId &id : m_columnIds) {
        if (id.isNull())
            continue;
        if (seen.contains(id))
            id = ColumnId();
        else
            seen.insert(id);
    }
    m_columnIndexDirty = true;
}
