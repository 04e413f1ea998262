#include "io/outputwriters.h"

#include "data/dataset.h"
#include "data/valueinterpretation.h"

#include <QTextStream>

namespace {

// Appends the characters with every double quote doubled, a run at a time.
void appendDoubledQuotes(QString &line, const QChar *data, int length)
{
    int start = 0;
    for (int i = 0; i < length; ++i) {
        if (data[i].unicode() == u'"') {
            line.append(data + start, i + 1 - start);
            line.append(QLatin1Char('"'));
            start = i + 1;
        }
    }
    line.append(data + start, length - start);
}

// One row at a time into a line buffer that keeps its capacity, so that a file of millions of
// rows costs no allocation per cell.
class DelimitedLineBuilder
{
public:
    explicit DelimitedLineBuilder(const TextWriteOptions &options)
        : m_delimiter(options.delimiter.unicode())
        , m_quoting(options.quoting)
        , m_replacement(options.delimiter == QLatin1Char(' ') ? QLatin1Char('_')
                                                               : QLatin1Char(' '))
        , m_lineEnding(options.lineEnding)
    {
        m_line.reserve(1024);
    }

    const QString &build(const QStringList &cells)
    {
        m_line.resize(0);
        const int count = cells.size();
        for (int c = 0; c < count; ++c) {
            if (c > 0)
                m_line.append(QChar(m_delimiter));
            appendCell(cells.at(c));
        }
        m_line.append(m_lineEnding);
        return m_line;
    }

    int replacedCount() const { return m_replaced; }
    QChar replacement() const { return m_replacement; }

private:
    bool isSpecial(ushort u) const
    {
        return u == m_delimiter || u == u'\n' || u == u'\r';
    }

    void appendCell(const QString &cell)
    {
        const QChar *data = cell.constData();
        const int length = cell.size();
        switch (m_quoting) {
        case OutputQuotingAlways:
            m_line.append(QLatin1Char('"'));
            appendDoubledQuotes(m_line, data, length);
            m_line.append(QLatin1Char('"'));
            return;
        case OutputQuotingNever:
            appendUnquoted(cell, data, length);
            return;
        default:
            break;
        }
        for (int i = 0; i < length; ++i) {
            const ushort u = data[i].unicode();
            if (u == u'"' || isSpecial(u)) {
                m_line.append(QLatin1Char('"'));
                appendDoubledQuotes(m_line, data, length);
                m_line.append(QLatin1Char('"'));
                return;
            }
        }
        m_line.append(cell);
    }

    void appendUnquoted(const QString &cell, const QChar *data, int length)
    {
        int i = 0;
        while (i < length && !isSpecial(data[i].unicode()))
            ++i;
        if (i == length) {
            m_line.append(cell);
            return;
        }
        ++m_replaced;
        m_line.append(data, i);
        for (; i < length; ++i)
            m_line.append(isSpecial(data[i].unicode()) ? m_replacement : data[i]);
    }

    const ushort m_delimiter;
    const int m_quoting;
    const QChar m_replacement;
    const QString m_lineEnding;
    QString m_line;
    int m_replaced = 0;
};

} // namespace

bool writeDelimitedText(QTextStream &stream, const Dataset &dataset,
                        const TextWriteOptions &options, WriteReport &report,
                        const WriteProgress &progress)
{
    prepareTextStream(stream, options.encoding, options.byteOrderMark);
    DelimitedLineBuilder builder(options);
    if (options.writeHeader && dataset.hasColumns())
        stream << builder.build(dataset.headers());

    const QList<QStringList> &rows = dataset.rows();
    const int rowCount = rows.size();
    for (int r = 0; r < rowCount; ++r) {
        if (progress && r % 1000 == 0)
            progress(double(r) / rowCount);
        stream << builder.build(rows.at(r));
    }
    stream.flush();

    if (builder.replacedCount() > 0) {
        report.warnings.append(
            QStringLiteral("Delimiter, Line Feed or Carriage Return characters were found within "
                           "%1 unquoted data value(s). These have been replaced with '%2'. You "
                           "may want to use a 'Replace' transform to replace these characters or "
                           "output the file with 'Quoting' set to '%3'.")
                .arg(formatCount(builder.replacedCount()))
                .arg(builder.replacement())
                .arg(outputQuotingName(OutputQuotingAsNeeded)));
    }
    return true;
}
