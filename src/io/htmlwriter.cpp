#include "io/outputwriters.h"

#include "data/dataset.h"

#include <QTextStream>

namespace {

const QLatin1String StyleSheet(
    "table,td,th{border:1px solid black;text-align:left;vertical-align:top;border-spacing:0px;"
    "border-color:gray;font-family:Verdana,sans-serif;}th{background-color:#E0E0E0;}"
    "td,th{padding:5px;}");

// Appends text with the characters that HTML reserves written as entities, a run at a time.
void appendEscaped(QString &out, const QString &text)
{
    const QChar *data = text.constData();
    const int length = text.size();
    int start = 0;
    for (int i = 0; i < length; ++i) {
        QLatin1String entity("");
        switch (data[i].unicode()) {
        case u'<':
            entity = QLatin1String("&lt;");
            break;
        case u'>':
            entity = QLatin1String("&gt;");
            break;
        case u'&':
            entity = QLatin1String("&amp;");
            break;
        case u'"':
            entity = QLatin1String("&quot;");
            break;
        default:
            continue;
        }
        out.append(data + start, i - start);
        out.append(entity);
        start = i + 1;
    }
    out.append(data + start, length - start);
}

class HtmlLineWriter
{
public:
    HtmlLineWriter(QTextStream &stream, const QString &lineEnding)
        : m_stream(stream)
        , m_lineEnding(lineEnding)
    {
        m_line.reserve(1024);
    }

    void line(int depth, const QString &text)
    {
        m_line.resize(0);
        indent(depth);
        m_line.append(text);
        m_line.append(m_lineEnding);
        m_stream << m_line;
    }

    // One row: the opening tag, a line per cell, the closing tag.
    void row(const QStringList &cells, bool header, bool escape)
    {
        const QLatin1String open(header ? "<th>" : "<td>");
        const QLatin1String close(header ? "</th>" : "</td>");
        m_line.resize(0);
        indent(4);
        m_line.append(QLatin1String("<tr>"));
        m_line.append(m_lineEnding);
        for (const QString &cell : cells) {
            indent(5);
            m_line.append(open);
            if (escape)
                appendEscaped(m_line, cell);
            else
                m_line.append(cell);
            m_line.append(close);
            m_line.append(m_lineEnding);
        }
        indent(4);
        m_line.append(QLatin1String("</tr>"));
        m_line.append(m_lineEnding);
        m_stream << m_line;
    }

private:
    void indent(int depth) { m_line.resize(m_line.size() + depth * 2, QLatin1Char(' ')); }

    QTextStream &m_stream;
    const QString m_lineEnding;
    QString m_line;
};

QString escaped(const QString &text)
{
    QString out;
    appendEscaped(out, text);
    return out;
}

} // namespace

bool writeHtml(QTextStream &stream, const Dataset &dataset, const TextWriteOptions &options,
               WriteReport &, const WriteProgress &progress)
{
    prepareTextStream(stream, options.encoding, options.byteOrderMark);
    HtmlLineWriter out(stream, options.lineEnding);
    if (!options.comment.isEmpty())
        out.line(0, QStringLiteral("<!--%1-->").arg(escaped(options.comment)));
    out.line(0, QStringLiteral("<!DOCTYPE html>"));
    out.line(0, QStringLiteral("<html>"));
    out.line(1, QStringLiteral("<head>"));
    out.line(2, QStringLiteral("<meta charset=\"%1\"/>").arg(options.encoding));
    out.line(2, QStringLiteral("<title>%1</title>").arg(escaped(options.path)));
    out.line(2, QStringLiteral("<style>%1</style>").arg(escaped(StyleSheet)));
    out.line(1, QStringLiteral("</head>"));
    out.line(1, QStringLiteral("<body>"));
    out.line(2, QStringLiteral("<table>"));
    out.line(3, QStringLiteral("<tbody>"));

    if (options.writeHeader && dataset.hasColumns())
        out.row(dataset.headers(), true, options.htmlEncode);
    const QList<QStringList> &rows = dataset.rows();
    const int rowCount = rows.size();
    for (int r = 0; r < rowCount; ++r) {
        if (progress && r % 1000 == 0)
            progress(double(r) / rowCount);
        out.row(rows.at(r), false, options.htmlEncode);
    }

    out.line(3, QStringLiteral("</tbody>"));
    out.line(2, QStringLiteral("</table>"));
    out.line(1, QStringLiteral("</body>"));
    out.line(0, QStringLiteral("</html>"));
    stream.flush();
    return true;
}
