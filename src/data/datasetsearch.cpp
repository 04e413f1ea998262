#include "data/dataset.h"

#include "data/valueinterpretation.h"

#include <QMimeData>

#include <algorithm>

// Finding text, stepping through cells, samples and comparisons of columns and rows, and the
// clipboard form of the whole table.

bool Dataset::nextCell(int &row, int &column) const
{
    if (m_columnCount == 0 || m_rows.isEmpty())
        return false;
    if (column + 1 < m_columnCount) {
        ++column;
        return true;
    }
    if (row + 1 < m_rows.size()) {
        ++row;
        column = 0;
        return true;
    }
    return false;
}

bool Dataset::previousCell(int &row, int &column) const
{
    if (m_columnCount == 0 || m_rows.isEmpty())
        return false;
    if (column > 0) {
        --column;
        return true;
    }
    if (row > 0) {
        --row;
        column = m_columnCount - 1;
        return true;
    }
    return false;
}

bool Dataset::rowContains(int r, const QString &text, Qt::CaseSensitivity cs) const
{
    if (text.isEmpty())
        return true;
    const QStringList &row = m_rows.at(r);
    return std::any_of(row.cbegin(), row.cend(),
                       [&](const QString &cell) { return cell.indexOf(text, 0, cs) >= 0; });
}

bool Dataset::columnContains(int c, const QString &text, Qt::CaseSensitivity cs) const
{
    if (text.isEmpty())
        return true;
    return std::any_of(m_rows.cbegin(), m_rows.cend(),
                       [&](const QStringList &row) { return row.at(c).indexOf(text, 0, cs) >= 0; });
}

bool Dataset::contains(const QString &text, Qt::CaseSensitivity cs) const
{
    if (text.isEmpty())
        return true;
    for (int r = 0; r < m_rows.size(); ++r) {
        if (rowContains(r, text, cs))
            return true;
    }
    return false;
}

bool Dataset::headerContains(const QString &text, Qt::CaseSensitivity cs) const
{
    if (text.isEmpty())
        return true;
    const QStringList names = headers();
    return std::any_of(names.cbegin(), names.cend(),
                       [&](const QString &name) { return name.indexOf(text, 0, cs) >= 0; });
}

QStringList Dataset::columnSamples(int maxRows, int maxLength) const
{
    QStringList samples;
    samples.reserve(m_columnCount);
    const int rows = std::min(maxRows, int(m_rows.size()));
    for (int c = 0; c < m_columnCount; ++c) {
        QStringList parts;
        if (m_rows.isEmpty()) {
            parts.append(QStringLiteral("No values"));
        } else {
            for (int r = 0; r < rows; ++r)
                parts.append(elide(m_rows.at(r).at(c), maxLength, true));
            if (rows < m_rows.size())
                parts.append(QStringLiteral("…"));
        }
        samples.append(QStringLiteral("( %1 )").arg(parts.join(QStringLiteral(", "))));
    }
    return samples;
}

bool Dataset::columnValuesEqual(int c, const Dataset &other, int c2) const
{
    if (m_rows.size() != other.m_rows.size())
        return false;
    for (int r = 0; r < m_rows.size(); ++r) {
        if (m_rows.at(r).at(c) != other.m_rows.at(r).at(c2))
            return false;
    }
    return true;
}

bool Dataset::rowValuesEqual(int r, const Dataset &other, int r2) const
{
    return m_columnCount == other.m_columnCount && m_rows.at(r) == other.m_rows.at(r2);
}

QMimeData *Dataset::mimeData(QChar delimiter) const
{
    // Cells holding the delimiter, a quote or a line end are quoted so that a spreadsheet
    // pasting the text keeps the cells apart.
    auto quoted = [](const QString &cell, QChar separator) {
        if (!cell.contains(separator) && !cell.contains(QLatin1Char('"'))
            && !cell.contains(QLatin1Char('\n')) && !cell.contains(QLatin1Char('\r')))
            return cell;
        QString escaped = cell;
        escaped.replace(QLatin1String("\""), QLatin1String("\"\""));
        return QString(QLatin1Char('"') + escaped + QLatin1Char('"'));
    };
    auto delimited = [&](QChar separator) {
        QString text;
        auto appendLine = [&](const QStringList &cells) {
            for (int c = 0; c < cells.size(); ++c) {
                if (c > 0)
                    text += separator;
                text += quoted(cells.at(c), separator);
            }
            text += QLatin1String("\r\n");
        };
        if (m_hasHeader)
            appendLine(headers());
        for (const QStringList &row : m_rows)
            appendLine(row);
        return text;
    };

    QString html = QStringLiteral("<table>");
    auto appendHtmlRow = [&html](const QStringList &cells, const QString &tag) {
        html += QLatin1String("<tr>");
        for (const QString &cell : cells)
            html += QLatin1Char('<') + tag + QLatin1Char('>') + cell.toHtmlEscaped()
                + QLatin1String("</") + tag + QLatin1Char('>');
        html += QLatin1String("</tr>");
    };
    if (m_hasHeader)
        appendHtmlRow(headers(), QStringLiteral("th"));
    for (const QStringList &row : m_rows)
        appendHtmlRow(row, QStringLiteral("td"));
    html += QLatin1String("</table>");

    auto *mime = new QMimeData;
    mime->setText(delimited(delimiter));
    mime->setHtml(html);
    mime->setData(QStringLiteral("text/csv"), delimited(QLatin1Char(',')).toUtf8());
    return mime;
}
