#include "io/delimitedtext.h"
#include "io/textscan.h"

#include <QTextStream>

using namespace TextScan;

namespace {

// Lines are cut from larger blocks; their size changes nothing but speed.
constexpr int LineBlockLength = 65536;
constexpr qint64 LineProgressStep = 10000;

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

} // namespace

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
