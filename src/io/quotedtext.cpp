#include "io/delimitedtext.h"
#include "io/textscan.h"

#include <QTextStream>

using namespace TextScan;

namespace {

constexpr int BlockLength = 2048;
constexpr qint64 QuotedProgressStep = 50000;
constexpr int CellReserve = 256;
// A cell buffer that grew beyond this for one huge value is given back after it.
constexpr int CellBufferKeepLimit = 65536;

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
    // The block is about to be replaced: keep what it holds of the current value and row.
    flushRun();
    m_sink.flushPending(m_row);
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
        m_sink.appendCellNow(m_row, m_buffer.constData(), m_buffer.size());
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
        m_sink.dropPending();
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

} // namespace

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
