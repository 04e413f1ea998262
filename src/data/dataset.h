#pragma once

#include "data/stringpool.h"

#include <QHash>
#include <QList>
#include <QMultiHash>
#include <QString>
#include <QStringList>
#include <QVector>

#include <utility>

class QMimeData;
class QTextStream;
class QDate;

// Passes that read a table row by row in order fetch ahead with these: rows and cells are
// separate blocks, and pooled cells lie anywhere, so each would otherwise wait for memory in
// turn. Hints only; they change nothing. Lists and texts are each one pointer to their
// block, and Qt 5 gives no public way to read a list's.
static_assert(sizeof(QStringList) == sizeof(void *) && sizeof(QString) == sizeof(void *),
              "QList and QString hold one pointer");
inline void prefetchRow(const QStringList &row)
{
    __builtin_prefetch(*reinterpret_cast<void *const *>(&row));
}
inline void prefetchCells(const QStringList &row)
{
    const int count = row.size();
    for (int c = 0; c < count; ++c) {
        const void *cell = *reinterpret_cast<void *const *>(&row.at(c));
        __builtin_prefetch(cell);
        // GCC drops a loop of nothing but prefetches; this keeps it.
        asm volatile("" : : "r"(cell));
    }
}
// Called before reading row r: fetches the cells of row r + 8 and the list of row r + 16.
inline void prefetchAhead(const QList<QStringList> &rows, int r)
{
    if (r + 16 < rows.size())
        prefetchRow(rows.at(r + 16));
    if (r + 8 < rows.size())
        prefetchCells(rows.at(r + 8));
}

// Positions that cannot be mixed up: a zero-based row, a zero-based column and the
// one-based column number that users see and documents store. Each converts to int only
// on request.
class RowIndex
{
public:
    constexpr RowIndex() = default;
    constexpr explicit RowIndex(int value)
        : m_value(value)
    { }
    constexpr explicit operator int() const { return m_value; }
    constexpr int value() const { return m_value; }
    constexpr bool isValid() const { return m_value >= 0; }
    friend constexpr bool operator==(RowIndex a, RowIndex b) { return a.m_value == b.m_value; }
    friend constexpr bool operator!=(RowIndex a, RowIndex b) { return a.m_value != b.m_value; }
    friend constexpr bool operator<(RowIndex a, RowIndex b) { return a.m_value < b.m_value; }

private:
    int m_value = -1;
};

class ColumnNumber;

class ColumnIndex
{
public:
    constexpr ColumnIndex() = default;
    constexpr explicit ColumnIndex(int value)
        : m_value(value)
    { }
    constexpr explicit operator int() const { return m_value; }
    constexpr int value() const { return m_value; }
    constexpr bool isValid() const { return m_value >= 0; }
    constexpr ColumnNumber toNumber() const;
    friend constexpr bool operator==(ColumnIndex a, ColumnIndex b)
    {
        return a.m_value == b.m_value;
    }
    friend constexpr bool operator!=(ColumnIndex a, ColumnIndex b)
    {
        return a.m_value != b.m_value;
    }
    friend constexpr bool operator<(ColumnIndex a, ColumnIndex b) { return a.m_value < b.m_value; }

private:
    int m_value = -1;
};

class ColumnNumber
{
public:
    constexpr ColumnNumber() = default;
    constexpr explicit ColumnNumber(int value)
        : m_value(value)
    { }
    constexpr explicit operator int() const { return m_value; }
    constexpr int value() const { return m_value; }
    constexpr ColumnIndex toIndex() const { return ColumnIndex(m_value - 1); }
    friend constexpr bool operator==(ColumnNumber a, ColumnNumber b)
    {
        return a.m_value == b.m_value;
    }
    friend constexpr bool operator!=(ColumnNumber a, ColumnNumber b)
    {
        return a.m_value != b.m_value;
    }

private:
    int m_value = 0;
};

constexpr ColumnNumber ColumnIndex::toNumber() const
{
    return ColumnNumber(m_value + 1);
}

inline uint qHash(RowIndex index, uint seed = 0)
{
    return uint(index.value()) ^ seed;
}
inline uint qHash(ColumnIndex index, uint seed = 0)
{
    return uint(index.value()) ^ seed;
}

// Identity of a column: the item on which it first appeared and a counter within that
// item. Options hold these, so that they follow a column through renames and moves.
struct ColumnId
{
    qint32 sourceId = -1;
    qint32 ordinal = 0;

    constexpr ColumnId() = default;
    constexpr ColumnId(qint32 source, qint32 ord)
        : sourceId(source)
        , ordinal(ord)
    { }
    constexpr bool isNull() const { return sourceId == -1 && ordinal == 0; }
    friend constexpr bool operator==(ColumnId a, ColumnId b)
    {
        return a.sourceId == b.sourceId && a.ordinal == b.ordinal;
    }
    friend constexpr bool operator!=(ColumnId a, ColumnId b) { return !(a == b); }
};

inline uint qHash(ColumnId id, uint seed = 0)
{
    return uint(id.ordinal) ^ seed;
}

// Key of the provenance and mark tables; -1 in either part means "all".
struct SourceRowKey
{
    RowIndex row;
    ColumnIndex column;

    SourceRowKey() = default;
    SourceRowKey(RowIndex r, ColumnIndex c)
        : row(r)
        , column(c)
    { }
    SourceRowKey(int r, int c)
        : row(r)
        , column(c)
    { }
    friend bool operator==(const SourceRowKey &a, const SourceRowKey &b)
    {
        return a.row == b.row && a.column == b.column;
    }
};

inline uint qHash(const SourceRowKey &key, uint seed = 0)
{
    const uint mixed = uint(key.row.value()) ^ seed;
    return uint(key.column.value()) ^ ((mixed << 16) | (mixed >> 16));
}

using IssueCounts = QHash<int, int>;

// The in-memory table that every item holds and every transform takes and gives. Cells
// are text; rows are shared implicitly between copies, so a transform copies its input
// whole and detaches only the rows it writes. Always rectangular: every row has exactly
// columnCount() cells.
class Dataset
{
public:
    enum OptimizeFor { MinimumMemory = 0, MaximumSpeed = 1 };

    Dataset() = default;
    Dataset(QTextStream &stream, QChar delimiter, int skipRows, bool trim, bool tidy,
            bool skipEmpty);
    Dataset(const Dataset &) = default;
    Dataset &operator=(const Dataset &) = default;
    Dataset(Dataset &&other) noexcept;
    Dataset &operator=(Dataset &&other) noexcept;

    // The process-wide choice of the "Optimize processing for" preference.
    static void setOptimizeFor(int mode);
    static int optimizeFor();
    static bool poolingEnabled() { return s_optimizeFor == MinimumMemory; }

    void clear();
    void clearSourceRows();
    void clearIssues();
    void clearStringPools();
    bool equals(const Dataset &other) const;

    // Size and shape
    int columnCount() const { return m_columnCount; }
    int rowCount() const { return m_rows.size(); }
    bool hasColumns() const { return m_columnCount > 0; }
    bool isEmpty() const { return m_rows.isEmpty(); }
    bool hasRows() const { return !m_rows.isEmpty(); }
    int lastColumn() const { return m_columnCount - 1; }
    int lastRow() const { return m_rows.size() - 1; }
    void setColumnCount(int count);
    void setRowCount(int count);
    void setSize(int rows, int columns);
    void reserveRows(int rows) { m_rows.reserve(rows); }
    void appendColumn();
    void prependColumn();
    void insertColumn(int c);
    void removeColumn(int c);
    int removeEmptyColumns();
    QList<int> emptyColumns() const;
    void removeRow(int r);
    int removeEmptyRows();

    // Cells and rows
    const QString &cell(int r, int c) const { return m_rows.at(r).at(c); }
    void setCell(int r, int c, const QString &text);
    const QStringList &row(int r) const { return m_rows.at(r); }
    const QList<QStringList> &rows() const { return m_rows; }
    void setRow(int r, const QStringList &list);
    void setColumn(int c, const QStringList &list);
    void appendRow(const QStringList &list, bool fit = false);
    // Appends a row whose cells other datasets hold already, such as a row of an input or one
    // put together from rows of several inputs: their texts were pooled there, so they are
    // not looked up again, and the row stays shared. The row must have columnCount() cells.
    void appendSharedRow(const QStringList &list) { m_rows.append(list); }
    // Hands the rows over, leaving the columns, the header and the ids in place.
    QList<QStringList> takeRows() { return std::exchange(m_rows, {}); }
    // Replaces the rows by rows put together as for appendSharedRow.
    void setSharedRows(QList<QStringList> rows) { m_rows = std::move(rows); }
    void prependRow(const QStringList &list, bool fit = false);
    void insertRow(int r, const QStringList &list);
    // Returns false when the row was dropped as empty. cellsPooled says that every cell came
    // from pooledCell(), so that a row needing no clean-up is not looked up twice.
    bool addInputRow(QStringList list, bool trim, bool tidy, bool skipEmpty,
                     bool cellsPooled = false);
    // A cell's text for column c: the pool's equal when pooling is on, so that readers never
    // allocate a text the column already holds.
    QString pooledCell(int c, QStringView text);
    // The pool of column c while pooling is on, else null.
    StringPool *cellPool(int c);
    QStringList columnValues(int c) const;
    QStringList rowValues(int r, const QList<int> &columns) const;

    // Headers
    bool hasHeader() const { return m_hasHeader; }
    const QStringList &header() const { return m_header; }
    QString headerText(int c) const;
    QStringList headers() const;
    void setHeader(const QStringList &list);
    void setColumnName(int c, const QString &name);
    void setHasHeader(bool on);
    QHash<QString, ColumnIndex> columnsByName() const;

    // Column identity
    ColumnId columnId(int c) const;
    QList<ColumnId> columnIds() const { return m_columnIds; }
    void setColumnIds(const QList<ColumnId> &ids);
    void setColumnId(int c, ColumnId id);
    int columnIndex(ColumnId id) const;
    void assignColumnIds(int sourceId);
    void dropDuplicateIds();

    // Searching and sampling
    bool nextCell(int &row, int &column) const;
    bool previousCell(int &row, int &column) const;
    bool rowContains(int r, const QString &text, Qt::CaseSensitivity cs) const;
    bool columnContains(int c, const QString &text, Qt::CaseSensitivity cs) const;
    bool contains(const QString &text, Qt::CaseSensitivity cs) const;
    bool headerContains(const QString &text, Qt::CaseSensitivity cs) const;
    QStringList columnSamples(int maxRows, int maxLength) const;
    bool columnValuesEqual(int c, const Dataset &other, int c2) const;
    bool rowValuesEqual(int r, const Dataset &other, int r2) const;
    QString substituteColumnVariables(const QString &text,
                                      const QHash<QString, ColumnIndex> &byName, int r) const;
    QMimeData *mimeData(QChar delimiter) const;

    // Interpretation of whole columns; the rules per cell are those of valueinterpretation.h.
    bool isNumericColumn(int c, bool stripCurrency = false, int limit = 100) const;
    bool isBooleanColumn(int c) const;
    bool isPlainNumberColumn(int c) const;
    bool isTimeColumn(int c) const;
    bool isDateColumn(int c, const QStringList &formats, QString *format = nullptr,
                      int limit = 50) const;
    bool isKeyLikeColumn(int c, const QStringList &formats) const;
    int columnKind(int c, const QStringList &formats, QString *format = nullptr,
                   bool stripCurrency = false) const;
    QList<int> numericColumns(bool stripCurrency = false) const;

    // How ties are ranked by sortRows; the order is that of the Sort transform's choices.
    enum RankType { RankMinimum, RankAverage, RankMaximum, RankDense, RankCumulative };

    // Sorts the rows in place by the signed 1-based column numbers in keys (negative means
    // descending). With addRank the ranks are written to the last column. info, when given,
    // receives one line per key describing how the column was compared.
    void sortRows(const QList<int> &keys, const QStringList &dateFormats, bool addRank = false,
                  int rankType = RankMinimum, int rankBy = -1, bool localeAware = false,
                  bool caseSensitive = true, bool intelligent = true, QStringList *info = nullptr);

    // Provenance for drilldown
    void addSourceRow(int r, int c, int sourceRow);
    void addSourceRows(int r, int c, const QList<int> &sourceRows);
    QList<int> sourceRowsOf(int r, int c) const;
    const QMultiHash<SourceRowKey, RowIndex> &sourceRows() const { return m_sourceRows; }

    // Rule failures, written by the Verify transform
    bool hasIssues() const { return !m_issueSeverity.isEmpty(); }
    int issueSeverityOf(int r, int c) const;
    void markIssue(int r, int c, int severity, int rule);
    void markDatasetIssue(int r, int c, int severity, int rule);
    // A fail of a column rule on the column as a whole, not on one of its cells.
    void markColumnIssue(int c, int severity, int rule);
    const QHash<RowIndex, IssueCounts> &rowIssues() const { return m_rowIssues; }
    const QHash<ColumnIndex, IssueCounts> &columnIssues() const { return m_columnIssues; }
    const QHash<RowIndex, IssueCounts> &datasetRowIssues() const { return m_datasetRowIssues; }
    const QHash<ColumnIndex, IssueCounts> &datasetColumnIssues() const
    {
        return m_datasetColumnIssues;
    }
    QList<int> cellIssues(int r, int c) const;

    // Storage sharing, for tests and measurements
    int stringPoolCount() const { return m_stringPools.size(); }

private:
    void poolText(int c, QString &text);
    void poolList(QStringList &list);
    void storeSeverity(const SourceRowKey &key, int severity);
    void fitRow(QStringList &list) const;

    static int s_optimizeFor;

    int m_columnCount = 0;
    QList<QStringList> m_rows;
    bool m_hasHeader = false;
    QStringList m_header;
    QList<ColumnId> m_columnIds;
    mutable QHash<ColumnId, int> m_columnIndexById;
    mutable bool m_columnIndexDirty = false;
    QVector<StringPool> m_stringPools;
    QMultiHash<SourceRowKey, RowIndex> m_sourceRows;
    QHash<SourceRowKey, int> m_issueSeverity;
    QHash<RowIndex, IssueCounts> m_datasetRowIssues;
    QHash<ColumnIndex, IssueCounts> m_datasetColumnIssues;
    QHash<RowIndex, IssueCounts> m_rowIssues;
    QHash<ColumnIndex, IssueCounts> m_columnIssues;
    QMultiHash<SourceRowKey, int> m_cellIssues;
};
