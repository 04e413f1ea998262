#include "io/delimitedtext.h"

#include "data/dataset.h"
#include "data/valueinterpretation.h"

#include <QTextStream>
#include <QtAlgorithms>

#include <algorithm>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

constexpr int SampleLength = 4096;
constexpr int BlockLength = 2048;
// Lines are cut from larger blocks; their size changes nothing but speed.
constexpr int LineBlockLength = 65536;
constexpr qint64 QuotedProgressStep = 50000;
constexpr qint64 LineProgressStep = 10000;
constexpr int CellReserve = 256;
// A cell buffer that grew beyond this for one huge value is given back after it.
constexpr int CellBufferKeepLimit = 65536;

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

    // Appends a cell made in place from the pool of its column.
    void appendCell(QStringList &row, const QChar *start, int length)
    {
        row.append(m_out.pooledCell(int(row.size()), QStringView(start, length)));
    }

private:
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

// The state machine of quoted text, fed block by block:
//
//   state                        delimiter  quote  line end  other
//   0 start                      5          2      6         1
//   1 in plain value             5          1      6         1
//   2 quote opened               3          4      3         3
//   3 in quoted value            3          4      3         3
//   4 quote met in quoted value  5          3      6         3
//   5 value ended                5          2      6         1
//   6 row ended                  5          2      6         1
//
// States 1 and 3 add the character to the value, 2 clears it, 5 ends the value (unless it
// is empty and repeated delimiters are ignored), 6 ends the value and the row. The delimiter
// is tested first. A CR that an LF follows is skipped outside quotes.
//
// The code follows the table with one path a state rather than a look-up, so that the
// branches of the common plain values predict well; the runs of states 1 and 3 are cut out of
// the block whole. A value that lies within one block is made from the block in one piece;
// only values that a block end, a doubled quote or text after a closing quote break into
// parts go through the reserved cell buffer.
class QuotedTokeniser
{
public:
    QuotedTokeniser(QChar delimiter, const DelimitedReadOptions &options, Dataset &out,
                    TextReadReport &report)
        : m_sink(options, out, report)
        , m_delimiter(delimiter.unicode())
        , m_ignoreRepeated(options.ignoreRepeatedDelimiters)
    {
        m_buffer.reserve(CellReserve);
        m_sink.renew(m_row);
    }

    void scan(const QChar *p, const QChar *end);
    void finish();

private:
    // States 0, 5 and 6 share their transitions and are kept as one.
    enum State { BetweenValues, InPlain, InQuotes, QuoteMet };

    State betweenValues(const QChar *&p, const QChar *end);
    State plainValue(const QChar *&p, const QChar *end);
    State quotedValue(const QChar *&p, const QChar *end);
    State afterQuote(const QChar *&p, const QChar *end);

    // The class of the character at p, with a CR LF pair read as its LF.
    ushort lineChar(const QChar *&p, const QChar *end) const
    {
        const ushort c = p->unicode();
        if (c == CarriageReturn && p + 1 < end && p[1].unicode() == LineFeed) {
            ++p;
            return LineFeed;
        }
        return c;
    }

    bool valueIsEmpty() const { return m_runLength == 0 && m_buffer.isEmpty(); }

    void addRun(const QChar *start, const QChar *stop)
    {
        flushRun();
        m_runStart = start;
        m_runLength = int(stop - start);
    }

    void flushRun()
    {
        if (m_runLength > 0) {
            m_buffer.append(m_runStart, m_runLength);
            m_runLength = 0;
        }
    }

    void clearValue()
    {
        m_runLength = 0;
        m_buffer.resize(0);
    }

    void endValue()
    {
        if (!m_ignoreRepeated || !valueIsEmpty())
            pushValue();
    }

    void pushValue();
    void endRow();

    RowSink m_sink;
    QStringList m_row;
    CleanUpHints m_hints;
    QString m_buffer;
    const QChar *m_runStart = nullptr;
    int m_runLength = 0;
    State m_state = BetweenValues;
    const ushort m_delimiter;
    const bool m_ignoreRepeated;
};

void QuotedTokeniser::scan(const QChar *p, const QChar *end)
{
    State state = m_state;
    while (p < end) {
        switch (state) {
        case BetweenValues:
            state = betweenValues(p, end);
            break;
        case InPlain:
            state = plainValue(p, end);
            break;
        case InQuotes:
            state = quotedValue(p, end);
            break;
        case QuoteMet:
            state = afterQuote(p, end);
            break;
        }
    }
    m_state = state;
    // The block is about to be replaced: keep what it holds of the current value.
    flushRun();
}

// States 0, 5 and 6. Stays here through any number of plain values.
QuotedTokeniser::State QuotedTokeniser::betweenValues(const QChar *&p, const QChar *end)
{
    while (p < end) {
        const ushort c = lineChar(p, end);
        if (c == m_delimiter) {
            ++p;
            endValue();
        } else if (c == Quote) {
            ++p;
            clearValue();
            return InQuotes;
        } else if (c == LineFeed || c == CarriageReturn) {
            ++p;
            pushValue();
            endRow();
        } else if (plainValue(p, end) == InPlain) {
            return InPlain;
        }
    }
    return BetweenValues;
}

// State 1: everything up to the next delimiter or line end joins the value.
QuotedTokeniser::State QuotedTokeniser::plainValue(const QChar *&p, const QChar *end)
{
    const ushort delimiter = m_delimiter;
    const QChar *start = p;
    const QChar *q = p;
    ushort c = 0;
    bool tidy = false;
    for (;;) {
        q = skipOrdinary(q, end, delimiter);
        if (q == end)
            break;
        c = q->unicode();
        if (c == delimiter || c == LineFeed || c == CarriageReturn)
            break;
        tidy = tidy || mayNeedTidy(c);
        ++q;
    }
    m_hints.tidy = m_hints.tidy || tidy;
    if (q > start)
        addRun(start, q);
    p = q;
    if (q == end)
        return InPlain;
    if (c == CarriageReturn)
        c = lineChar(p, end);
    ++p;
    if (c == delimiter) {
        endValue();
    } else {
        pushValue();
        endRow();
    }
    return BetweenValues;
}

// States 2 and 3: everything up to the next quote joins the value, line ends included.
// (When the quote is the delimiter these states are never reached.)
QuotedTokeniser::State QuotedTokeniser::quotedValue(const QChar *&p, const QChar *end)
{
    const QChar *start = p;
    const QChar *q = p;
    bool tidy = false;
    for (;;) {
        q = skipOrdinary(q, end, Quote);
        if (q == end || q->unicode() == Quote)
            break;
        tidy = tidy || mayNeedTidy(q->unicode());
        ++q;
    }
    m_hints.tidy = m_hints.tidy || tidy;
    if (q > start)
        addRun(start, q);
    p = q;
    if (q == end)
        return InQuotes;
    ++p;
    return QuoteMet;
}

// State 4: a doubled quote gives one quote, and other text after the closing quote joins the
// value, which goes on as quoted.
QuotedTokeniser::State QuotedTokeniser::afterQuote(const QChar *&p, const QChar *end)
{
    const ushort c = lineChar(p, end);
    if (c == m_delimiter) {
        ++p;
        endValue();
        return BetweenValues;
    }
    if (c == LineFeed || c == CarriageReturn) {
        ++p;
        pushValue();
        endRow();
        return BetweenValues;
    }
    const QChar *start = p++;
    m_hints.tidy = m_hints.tidy || mayNeedTidy(c);
    const State state = quotedValue(p, end);
    // The run of quotedValue starts after the kept character; join them into one.
    if (m_runLength > 0 && m_runStart == start + 1) {
        m_runStart = start;
        ++m_runLength;
    } else {
        flushRun();
        m_buffer.append(*start);
    }
    return state;
}

void QuotedTokeniser::pushValue()
{
    if (m_buffer.isEmpty()) {
        m_sink.appendCell(m_row, m_runStart, m_runLength);
        m_hints.noteValue(m_runStart, m_runLength);
    } else {
        flushRun();
        m_sink.appendCell(m_row, m_buffer.constData(), m_buffer.size());
        m_hints.noteValue(m_buffer.constData(), m_buffer.size());
        if (m_buffer.capacity() > CellBufferKeepLimit) {
            m_buffer = QString();
            m_buffer.reserve(CellReserve);
        } else {
            m_buffer.resize(0);
        }
    }
    m_runLength = 0;
}

void QuotedTokeniser::endRow()
{
    if (m_sink.isIgnored()) {
        m_sink.skip();
        m_row.erase(m_row.begin(), m_row.end());
        m_hints = CleanUpHints();
        return;
    }
    m_sink.add(m_row, m_hints, true);
    m_sink.renew(m_row);
    m_hints = CleanUpHints();
}

void QuotedTokeniser::finish()
{
    if (!valueIsEmpty() || !m_row.isEmpty())
        pushValue();
    if (!m_row.isEmpty() && !m_sink.isIgnored())
        m_sink.add(m_row, m_hints, true);
    m_sink.finish();
}

// Drops every delimiter that another one follows, so that a run of them counts as one; the
// same as rebuilding the line from its end and leaving out a delimiter wherever the text
// built so far begins with one. Copies the line into `scratch` only when it has such a run.
void collapseDelimiters(const QChar *&begin, const QChar *&end, ushort delimiter, QString &scratch)
{
    const QChar *run = begin;
    while (run + 1 < end && !(run->unicode() == delimiter && run[1].unicode() == delimiter))
        ++run;
    if (run + 1 >= end)
        return;
    scratch.resize(int(end - begin));
    QChar *kept = scratch.data();
    for (const QChar *p = begin; p < end; ++p) {
        if (p->unicode() == delimiter && p + 1 < end && p[1].unicode() == delimiter)
            continue;
        *kept++ = *p;
    }
    begin = scratch.constData();
    end = kept;
}

const QChar *findChar(const QChar *p, const QChar *end, QChar c)
{
    const qsizetype at = QStringView(p, end).indexOf(c);
    return at < 0 ? end : p + at;
}

// The end of the value that starts at p: the next separator or the end.
const QChar *scanValue(const QChar *p, const QChar *end, ushort separator, CleanUpHints &hints)
{
    bool tidy = false;
    for (;;) {
        p = skipOrdinary(p, end, separator);
        if (p == end || p->unicode() == separator)
            break;
        tidy = tidy || mayNeedTidy(p->unicode());
        ++p;
    }
    hints.tidy = hints.tidy || tidy;
    return p;
}

void appendCell(RowSink &sink, QStringList &row, const QChar *start, const QChar *stop,
                CleanUpHints &hints)
{
    const int length = int(stop - start);
    sink.appendCell(row, start, length);
    hints.noteValue(start, length);
}

// Lines as QTextStream::readLine gives them: a Line Feed ends a line, a Carriage Return just
// before it is dropped, and so is one that ends the text. Reads large blocks and hands out a
// line that lies within a block without copying it.
class LineReader
{
public:
    explicit LineReader(QTextStream &stream)
        : m_stream(stream)
    { }

    // False at the end of the text. The line stays valid until the next call.
    bool next(const QChar *&begin, const QChar *&end)
    {
        if (m_carryUsed) {
            m_carry.resize(0);
            m_carryUsed = false;
        }
        for (;;) {
            if (m_pos == m_end && !fill()) {
                if (m_carry.isEmpty())
                    return false;
                m_carryUsed = true;
                begin = m_carry.constData();
                end = dropCarriageReturn(begin, begin + m_carry.size());
                return true;
            }
            const QChar *lineFeed = findChar(m_pos, m_end, QChar(LineFeed));
            if (lineFeed == m_end) {
                m_carry.append(m_pos, int(m_end - m_pos));
                m_pos = m_end;
                continue;
            }
            if (m_carry.isEmpty()) {
                begin = m_pos;
                end = lineFeed;
            } else {
                m_carry.append(m_pos, int(lineFeed - m_pos));
                m_carryUsed = true;
                begin = m_carry.constData();
                end = begin + m_carry.size();
            }
            end = dropCarriageReturn(begin, end);
            m_pos = lineFeed + 1;
            return true;
        }
    }

private:
    static const QChar *dropCarriageReturn(const QChar *begin, const QChar *end)
    {
        return end > begin && end[-1].unicode() == CarriageReturn ? end - 1 : end;
    }

    bool fill()
    {
        m_block = m_stream.read(LineBlockLength);
        m_pos = m_block.constData();
        m_end = m_pos + m_block.size();
        return m_pos != m_end;
    }

    QTextStream &m_stream;
    QString m_block;
    const QChar *m_pos = nullptr;
    const QChar *m_end = nullptr;
    QString m_carry;
    bool m_carryUsed = false;
};

// Reads line by line; a Carriage Return inside a line also ends a row. Each row goes to
// `piece`, which counts its row index.
template<typename PieceHandler>
void readLinePieces(QTextStream &stream, qint64 length, const ReadProgress &progress,
                    PieceHandler &&piece, ushort delimiter, bool collapseRepeated)
{
    ProgressSteps steps(length, LineProgressStep, progress);
    qint64 done = 0;
    LineReader lines(stream);
    QString scratch;
    const QChar *p = nullptr;
    const QChar *end = nullptr;
    while (lines.next(p, end)) {
        if (collapseRepeated)
            collapseDelimiters(p, end, delimiter, scratch);
        for (;;) {
            const QChar *pieceEnd = findChar(p, end, QChar(CarriageReturn));
            piece(p, pieceEnd);
            done = std::min(length, done + (pieceEnd - p) + 2);
            steps.advanceTo(done);
            if (pieceEnd == end)
                break;
            p = pieceEnd + 1;
        }
    }
}

QString countText(qlonglong count)
{
    return formatCount(count, true);
}

} // namespace

QString delimiterName(int delimiter)
{
    switch (delimiter) {
    case DelimiterAutomatic:
        return QStringLiteral("Automatic");
    case DelimiterSemicolon:
        return QStringLiteral("Semi-colon (;)");
    case DelimiterColon:
        return QStringLiteral("Colon (:)");
    case DelimiterTab:
        return QStringLiteral("Tab (\\t)");
    case DelimiterPipe:
        return QStringLiteral("Pipe (|)");
    case DelimiterCaret:
        return QStringLiteral("Caret (^)");
    case DelimiterSpace:
        return QStringLiteral("Space ( )");
    case DelimiterCustom:
        return QStringLiteral("Custom");
    case DelimiterUnitSeparator:
        return QStringLiteral("Unit separator (0x1F)");
    default:
        return QStringLiteral("Comma (,)");
    }
}

QChar delimiterCharacter(int delimiter, QChar custom)
{
    switch (delimiter) {
    case DelimiterSemicolon:
        return QLatin1Char(';');
    case DelimiterColon:
        return QLatin1Char(':');
    case DelimiterTab:
        return QLatin1Char('\t');
    case DelimiterPipe:
        return QLatin1Char('|');
    case DelimiterCaret:
        return QLatin1Char('^');
    case DelimiterSpace:
        return QLatin1Char(' ');
    case DelimiterCustom:
        return custom;
    case DelimiterUnitSeparator:
        return QChar(0x1F);
    default:
        return QLatin1Char(',');
    }
}

QList<int> delimiterList(bool automatic, bool colonAndSpace, bool custom)
{
    QList<int> list;
    if (automatic)
        list << DelimiterAutomatic;
    list << DelimiterComma << DelimiterSemicolon;
    if (colonAndSpace)
        list << DelimiterColon;
    list << DelimiterPipe << DelimiterCaret << DelimiterTab << DelimiterUnitSeparator;
    if (colonAndSpace)
        list << DelimiterSpace;
    if (custom)
        list << DelimiterCustom;
    return list;
}

QString quotingName(int quoting)
{
    switch (quoting) {
    case QuotingQuoted:
        return QStringLiteral("Quoted");
    case QuotingUnquoted:
        return QStringLiteral("Unquoted");
    default:
        return QStringLiteral("Automatic");
    }
}

QStringList quotingNames()
{
    return {quotingName(QuotingAutomatic), quotingName(QuotingQuoted),
            quotingName(QuotingUnquoted)};
}

QString quotingToolTip()
{
    return QStringLiteral("Set to '%1' if values can contain delimiters and Carriage Returns "
                          "enclosed within quotes (\").\nSet to '%2' if quoting is not used.\n"
                          "Set to '%3' to make an intelligent guess based on the delimiter.")
        .arg(quotingName(QuotingQuoted), quotingName(QuotingUnquoted),
             quotingName(QuotingAutomatic));
}

void TextReadReport::resetCounts()
{
    emptyRowsIgnored = 0;
    rowsRecorded = 0;
    rowsPerValueCount.clear();
    firstRowPerValueCount.clear();
}

QChar guessDelimiter(QTextStream &stream, QString *infoEntry)
{
    stream.seek(0);
    const QString sample = stream.read(SampleLength);
    const QList<int> candidates = delimiterList(false, false, false);
    int best = DelimiterComma;
    int bestCount = -1;
    QStringList counts;
    for (int candidate : candidates) {
        const int count = sample.count(delimiterCharacter(candidate));
        counts << QStringLiteral("%1 %2").arg(countText(count), delimiterName(candidate));
        if (count > bestCount) {
            best = candidate;
            bestCount = count;
        }
    }
    if (infoEntry) {
        *infoEntry = QStringLiteral(
                         "Delimiter=Automatic guesses '%1'. Set 'Delimiter' option to change.\n")
                         .arg(delimiterName(best))
            + QStringLiteral("First %1 characters contain: %2\n")
                  .arg(countText(sample.size()), counts.join(QStringLiteral(", ")));
    }
    return delimiterCharacter(best);
}

bool useQuotedTokeniser(int quoting, QChar delimiter)
{
    if (quoting == QuotingQuoted)
        return true;
    if (quoting == QuotingUnquoted)
        return false;
    return delimiter != QLatin1Char('\t');
}

void readQuotedText(QTextStream &stream, qint64 length, QChar delimiter,
                    const DelimitedReadOptions &options, Dataset &out, TextReadReport &report,
                    const ReadProgress &progress)
{
    out.clear();
    report.resetCounts();
    stream.seek(0);
    QuotedTokeniser tokeniser(delimiter, options, out, report);
    ProgressSteps steps(length, QuotedProgressStep, progress);
    qint64 done = 0;
    for (;;) {
        QString block = stream.read(BlockLength);
        if (block.isEmpty())
            break;
        // A CR LF pair must not be cut, or the CR would end a row of its own.
        while (block.endsWith(QLatin1Char('\r')) && !stream.atEnd())
            block += stream.read(1);
        tokeniser.scan(block.constData(), block.constData() + block.size());
        done += block.size();
        steps.advanceTo(done);
    }
    tokeniser.finish();
}

void readUnquotedText(QTextStream &stream, qint64 length, QChar delimiter,
                      const DelimitedReadOptions &options, Dataset &out, TextReadReport &report,
                      const ReadProgress &progress)
{
    out.clear();
    report.resetCounts();
    stream.seek(0);
    RowSink sink(options, out, report);
    const ushort separator = delimiter.unicode();
    QStringList row;
    sink.renew(row);
    auto piece = [&](const QChar *p, const QChar *end) {
        if (sink.isIgnored()) {
            sink.skip();
            return;
        }
        CleanUpHints hints;
        for (;;) {
            const QChar *valueEnd = scanValue(p, end, separator, hints);
            appendCell(sink, row, p, valueEnd, hints);
            if (valueEnd == end)
                break;
            p = valueEnd + 1;
        }
        sink.add(row, hints, true);
        sink.renew(row);
    };
    readLinePieces(stream, length, progress, piece, separator, options.ignoreRepeatedDelimiters);
    sink.finish();
}

bool readDelimitedText(QTextStream &stream, qint64 length, const DelimitedReadOptions &options,
                       Dataset &out, TextReadReport &report, const ReadProgress &progress)
{
    out.clear();
    if (!stream.device() && !stream.string())
        return false;

    QChar delimiter;
    if (options.delimiter == DelimiterAutomatic) {
        QString entry;
        delimiter = guessDelimiter(stream, &entry);
        report.info << entry;
    } else {
        delimiter = delimiterCharacter(options.delimiter, options.customDelimiter);
    }

    const bool quoted = useQuotedTokeniser(options.quoting, delimiter);
    if (options.quoting != QuotingQuoted && options.quoting != QuotingUnquoted) {
        report.info << QStringLiteral(
                           "Quoting=Automatic guesses '%1'. Set 'Quoting' option to change.\n")
                           .arg(quotingName(quoted ? QuotingQuoted : QuotingUnquoted));
    }
    report.delimiter = delimiter;
    report.quoted = quoted;

    if (quoted)
        readQuotedText(stream, length, delimiter, options, out, report, progress);
    else
        readUnquotedText(stream, length, delimiter, options, out, report, progress);
    addReadReport(report, options.ignoredRows, true);
    return true;
}

bool readPlainText(QTextStream &stream, qint64 length, const DelimitedReadOptions &options,
                   Dataset &out, TextReadReport &report, const ReadProgress &progress)
{
    out.clear();
    report.resetCounts();
    if (!stream.device() && !stream.string())
        return false;
    stream.seek(0);
    RowSink sink(options, out, report);
    QStringList row;
    auto piece = [&](const QChar *p, const QChar *end) {
        if (sink.isIgnored()) {
            sink.skip();
            return;
        }
        // A piece holds no Carriage Return, so it is one value.
        CleanUpHints hints;
        row = QStringList();
        appendCell(sink, row, p, scanValue(p, end, CarriageReturn, hints), hints);
        sink.add(row, hints, false);
    };
    readLinePieces(stream, length, progress, piece, 0, false);
    sink.finish();
    addReadReport(report, options.ignoredRows, false);
    return true;
}

void addReadReport(TextReadReport &report, int ignoredRows, bool valuesPerRow)
{
    if (report.emptyRowsIgnored > 0) {
        report.info
            << QStringLiteral("%1 empty row(s) ignored").arg(countText(report.emptyRowsIgnored));
    }
    if (!valuesPerRow || report.rowsPerValueCount.size() < 2)
        return;
    report.warnings << QStringLiteral("Number of values per row vary:");
    for (auto it = report.rowsPerValueCount.cbegin(); it != report.rowsPerValueCount.cend(); ++it) {
        const int values = it.key();
        const int rows = it.value();
        const qint64 example
            = qint64(report.firstRowPerValueCount.value(values)) + 1 + qint64(ignoredRows);
        const QString entry
            = QStringLiteral("%1 input %2 %3 %4")
                  .arg(countText(rows),
                       rows == 1 ? QStringLiteral("row has") : QStringLiteral("rows have"),
                       countText(values),
                       values == 1 ? QStringLiteral("value") : QStringLiteral("values"))
            + QStringLiteral(": E.g. input row %1").arg(example);
        report.warnings << entry;
    }
}
