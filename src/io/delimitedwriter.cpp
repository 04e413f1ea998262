#include "io/outputwriters.h"

#include "data/dataset.h"
#include "data/valueinterpretation.h"

#include <QTextStream>

namespace {

// Puts one line a row at a time. The room a cell needs is bounded before it is written, so
// its characters go straight into the buffer.
class DelimitedLineWriter
{
public:
    DelimitedLineWriter(QTextStream &stream, const TextWriteOptions &options)
        : m_out(stream)
        , m_delimiter(options.delimiter)
        , m_quoting(options.quoting)
        , m_replacement(options.delimiter == QLatin1Char(' ') ? QLatin1Char('_') : QLatin1Char(' '))
        , m_lineEnding(options.lineEnding)
    {
        // Nearly every character is ASCII: one table look-up tells it apart.
        for (bool &entry : m_needsQuotes)
            entry = false;
        m_needsQuotes[u'"'] = m_needsQuotes[u'\n'] = m_needsQuotes[u'\r'] = true;
        if (m_delimiter.unicode() < 128)
            m_needsQuotes[m_delimiter.unicode()] = true;
    }

    void write(const QStringList &cells)
    {
        const int count = cells.size();
        for (int c = 0; c < count; ++c) {
            const QString &cell = cells.at(c);
            // Every character doubled, two quotes and the delimiter: the most a cell can take.
            m_out.ensure(cell.size() * 2 + 3);
            if (c > 0)
                m_out.put(m_delimiter);
            putCell(cell);
        }
        m_out.append(m_lineEnding);
    }

    int replacedCount() const { return m_replaced; }
    QChar replacement() const { return m_replacement; }

private:
    bool isSpecial(QChar c) const
    {
        return c == m_delimiter || c == QLatin1Char('\n') || c == QLatin1Char('\r');
    }

    void putQuoted(const QChar *data, int length)
    {
        m_out.put(QLatin1Char('"'));
        int start = 0;
        for (int i = 0; i < length; ++i) {
            if (data[i] == QLatin1Char('"')) {
                m_out.put(data + start, i + 1 - start);
                m_out.put(QLatin1Char('"'));
                start = i + 1;
            }
        }
        m_out.put(data + start, length - start);
        m_out.put(QLatin1Char('"'));
    }

    void putCell(const QString &cell)
    {
        const QChar *data = cell.constData();
        const int length = cell.size();
        if (m_quoting == OutputQuotingAlways) {
            putQuoted(data, length);
            return;
        }
        if (m_quoting == OutputQuotingNever) {
            putUnquoted(data, length);
            return;
        }
        const ushort delimiter = m_delimiter.unicode();
        for (int i = 0; i < length; ++i) {
            const ushort u = data[i].unicode();
            if (u < 128 ? m_needsQuotes[u] : u == delimiter) {
                putQuoted(data, length);
                return;
            }
        }
        m_out.put(data, length);
    }

    void putUnquoted(const QChar *data, int length)
    {
        int i = 0;
        while (i < length && !isSpecial(data[i]))
            ++i;
        m_out.put(data, i);
        if (i == length)
            return;
        ++m_replaced;
        for (; i < length; ++i)
            m_out.put(isSpecial(data[i]) ? m_replacement : data[i]);
    }

    ChunkedTextWriter m_out;
    const QChar m_delimiter;
    const int m_quoting;
    const QChar m_replacement;
    const QString m_lineEnding;
    bool m_needsQuotes[128];
    int m_replaced = 0;
};

} // namespace

bool writeDelimitedText(QTextStream &stream, const Dataset &dataset,
                        const TextWriteOptions &options, WriteReport &report,
                        const WriteProgress &progress)
{
    prepareTextStream(stream, options.encoding, options.byteOrderMark);
    int replaced = 0;
    QChar replacement;
    {
        DelimitedLineWriter writer(stream, options);
        if (options.writeHeader && dataset.hasColumns())
            writer.write(dataset.headers());
        const QList<QStringList> &rows = dataset.rows();
        const int rowCount = rows.size();
        for (int r = 0; r < rowCount; ++r) {
            if (progress && r % 1000 == 0)
                progress(double(r) / rowCount);
            prefetchAhead(rows, r);
            writer.write(rows.at(r));
        }
        replaced = writer.replacedCount();
        replacement = writer.replacement();
    }
    stream.flush();

    if (replaced > 0) {
        report.warnings.append(
            QStringLiteral("Delimiter, Line Feed or Carriage Return characters were found within "
                           "%1 unquoted data value(s). These have been replaced with '%2'. You "
                           "may want to use a 'Replace' transform to replace these characters or "
                           "output the file with 'Quoting' set to '%3'.")
                .arg(formatCount(replaced))
                .arg(replacement)
                .arg(outputQuotingName(OutputQuotingAsNeeded)));
    }
    return true;
}
