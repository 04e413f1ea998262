#pragma once

#include "data/dataset.h"
#include "io/delimitedtext.h"

#include <QChar>
#include <QStringList>
#include <QVarLengthArray>
#include <QtAlgorithms>

#include <algorithm>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

// The pieces that the tokenisers of delimited and plain text share: the fast scan over
// ordinary characters, the hints that spare a row its clean-up, progress at fixed steps and
// the hand-over of rows to the dataset with the counts of the report. All inline, since they
// run once a character or once a value.
namespace TextScan {

constexpr ushort Quote = '"';
constexpr ushort LineFeed = '\n';
constexpr ushort CarriageReturn = '\r';

// Whether the clean-up's tidy step would change this character: any white space but the
// plain blank. Printable ASCII, most of any text, is settled by the first comparison.
inline bool mayNeedTidy(ushort u)
{
    return (u < 0x20 || u > 0x7E) && QChar::isSpace(u);
}

// The first character from p on that is `stop`, a control character or not printable
// ASCII: the only ones that the tokenisers need to look at one by one. Eight at a time where
// the processor allows, since most of a file is such ordinary text.
inline const QChar *skipOrdinary(const QChar *p, const QChar *end, ushort stop)
{
#ifdef __SSE2__
    const __m128i stops = _mm_set1_epi16(short(stop));
    const __m128i lowest = _mm_set1_epi16(0x20);
    const __m128i highest = _mm_set1_epi16(0x7E);
    while (end - p >= 8) {
        const __m128i chars = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        // Signed comparisons: characters from U+8000 on count as below the blank.
        const __m128i hits = _mm_or_si128(
            _mm_cmpeq_epi16(chars, stops),
            _mm_or_si128(_mm_cmplt_epi16(chars, lowest), _mm_cmpgt_epi16(chars, highest)));
        const uint mask = uint(_mm_movemask_epi8(hits));
        if (mask != 0)
            return p + qCountTrailingZeroBits(mask) / 2;
        p += 8;
    }
#endif
    for (; p < end; ++p) {
        const ushort u = p->unicode();
        if (u == stop || u < 0x20 || u > 0x7E)
            break;
    }
    return p;
}

// Clean-up is skipped for rows that it would leave unchanged, which are nearly all rows; it
// would otherwise cost as much as cutting the values. These flags tell which steps a row
// needs.
struct CleanUpHints
{
    bool trim = false;
    bool tidy = false;

    void noteValue(const QChar *start, int length)
    {
        if (length > 0 && (start->isSpace() || start[length - 1].isSpace()))
            trim = true;
    }
};

// Reports progress when the count passes a multiple of the step, as that multiple over the
// total; reports nothing for an empty total.
class ProgressSteps
{
public:
    ProgressSteps(qint64 total, qint64 step, const ReadProgress &progress)
        : m_progress(total > 0 ? progress : ReadProgress())
        , m_total(total)
        , m_step(step)
        , m_next(step)
    { }

    void advanceTo(qint64 value)
    {
        if (value < m_next || !m_progress)
            return;
        const qint64 reached = value - value % m_step;
        m_next = reached + m_step;
        m_progress(std::min(1.0, double(reached) / double(m_total)));
    }

private:
    ReadProgress m_progress;
    qint64 m_total;
    qint64 m_step;
    qint64 m_next;
};

// Counts rows per number of values. Files are mostly even, so equal neighbours are counted
// in a run and reach the map only when the number changes.
class ValueCountRecorder
{
public:
    explicit ValueCountRecorder(TextReadReport &report)
        : m_report(report)
    { }

    void record(int values)
    {
        if (values != m_values) {
            flush();
            m_values = values;
            m_runStart = m_report.rowsRecorded;
        }
        ++m_runLength;
        ++m_report.rowsRecorded;
    }

    void flush()
    {
        if (m_runLength == 0)
            return;
        m_report.rowsPerValueCount[m_values] += m_runLength;
        if (!m_report.firstRowPerValueCount.contains(m_values))
            m_report.firstRowPerValueCount.insert(m_values, m_runStart);
        m_runLength = 0;
    }

private:
    TextReadReport &m_report;
    int m_values = -1;
    int m_runStart = 0;
    int m_runLength = 0;
};

// Hands finished rows to the dataset with clean-up, and keeps the counts of the report.
class RowSink
{
public:
    RowSink(const DelimitedReadOptions &options, Dataset &out, TextReadReport &report)
        : m_out(out)
        , m_report(report)
        , m_recorder(report)
        , m_ignoredRows(options.ignoredRows)
        , m_trim(options.trim)
        , m_simplify(options.simplify)
        , m_ignoreEmpty(options.ignoreEmpty)
    { }

    bool isIgnored() const { return m_rowIndex < m_ignoredRows; }

    // The row index counts ignored rows too.
    void skip() { ++m_rowIndex; }

    void add(QStringList &row, CleanUpHints hints, bool recordValues)
    {
        flushPending(row);
        const int values = row.size();
        m_width = std::max(m_width, values);
        if (!m_out.addInputRow(std::move(row), m_trim && hints.trim, m_simplify && hints.tidy,
                               m_ignoreEmpty, true))
            ++m_report.emptyRowsIgnored;
        if (recordValues)
            m_recorder.record(values);
        ++m_rowIndex;
    }

    // A fresh row with room for the widest row so far.
    void renew(QStringList &row) const
    {
        row = QStringList();
        row.reserve(m_width);
    }

    void finish() { m_recorder.flush(); }

    // Appends a cell made from the pool of its column. The text must stay where it is until
    // flushPending() or add(): the cells of a row are looked up together, since each look-up
    // would otherwise wait for memory on its own.
    void appendCell(QStringList &row, const QChar *start, int length)
    {
        if (!Dataset::poolingEnabled() || length == 0) {
            row.append(m_out.pooledCell(int(row.size()), QStringView(start, length)));
            return;
        }
        m_pending.append({start, length, int(row.size())});
        row.append(QString());
    }
    // The same for a text about to be overwritten: made at once.
    void appendCellNow(QStringList &row, const QChar *start, int length)
    {
        row.append(m_out.pooledCell(int(row.size()), QStringView(start, length)));
    }

    // Fills in the cells that appendCell() left pending; before the texts they come from
    // go away, and before the row is added.
    void flushPending(QStringList &row)
    {
        const int count = int(m_pending.size());
        if (count == 0)
            return;
        // Pools are made for every column first: making one may move the others.
        m_out.cellPool(m_pending.last().column);
        for (PendingCell &cell : m_pending) {
            cell.pool = m_out.cellPool(cell.column);
            if (cell.pool->isActive()) {
                cell.hash = StringPool::hashOf(QStringView(cell.start, cell.length));
                cell.pool->prefetchSlot(cell.hash);
            }
        }
        for (const PendingCell &cell : qAsConst(m_pending)) {
            if (cell.pool->isActive())
                cell.pool->prefetchText(cell.hash);
        }
        for (const PendingCell &cell : qAsConst(m_pending)) {
            const QStringView text(cell.start, cell.length);
            row[cell.column]
                = cell.pool->isActive() ? cell.pool->pooled(text, cell.hash) : text.toString();
        }
        m_pending.clear();
    }
    // Forgets the pending cells of a row that is dropped.
    void dropPending() { m_pending.clear(); }

private:
    struct PendingCell
    {
        const QChar *start;
        int length;
        int column;
        StringPool *pool = nullptr;
        uint hash = 0;
    };

    QVarLengthArray<PendingCell, 64> m_pending;
    Dataset &m_out;
    TextReadReport &m_report;
    ValueCountRecorder m_recorder;
    qint64 m_rowIndex = 0;
    qint64 m_ignoredRows;
    int m_width = 1;
    bool m_trim;
    bool m_simplify;
    bool m_ignoreEmpty;
};

} // namespace TextScan
