#include "io/outputwriters.h"

#include "data/dataset.h"

#include <QTextStream>
#include <QVector>

#include <algorithm>

namespace {

constexpr int MinimumWidth = 3;

// Column widths: the longest cell, and the longest name when the header is written.
QVector<int> columnWidths(const Dataset &dataset, const QStringList &header, bool withHeader)
{
    QVector<int> widths(dataset.columnCount(), MinimumWidth);
    if (withHeader) {
        for (int c = 0; c < widths.size(); ++c)
            widths[c] = std::max(widths.at(c), int(header.at(c).size()));
    }
    const QList<QStringList> &rows = dataset.rows();
    for (const QStringList &row : rows) {
        for (int c = 0; c < widths.size(); ++c)
            widths[c] = std::max(widths.at(c), int(row.at(c).size()));
    }
    return widths;
}

void buildRow(QString &line, const QStringList &cells, const QVector<int> &widths,
              const QString &lineEnding)
{
    line.resize(0);
    for (int c = 0; c < widths.size(); ++c) {
        line.append(QLatin1String("| "));
        line.append(cells.at(c));
        line.resize(line.size() + widths.at(c) - cells.at(c).size() + 1, QLatin1Char(' '));
    }
    line.append(QLatin1Char('|'));
    line.append(lineEnding);
}

} // namespace

bool writeMarkdown(QTextStream &stream, const Dataset &dataset, const TextWriteOptions &options,
                   WriteReport &, const WriteProgress &progress)
{
    prepareTextStream(stream, options.encoding, options.byteOrderMark);
    if (!options.comment.isEmpty())
        stream << QStringLiteral("<!--%1-->").arg(options.comment) << options.lineEnding
               << options.lineEnding;
    if (!dataset.hasColumns()) {
        stream.flush();
        return true;
    }

    const bool withHeader = options.writeHeader;
    const QStringList header = withHeader ? dataset.headers() : QStringList();
    const QVector<int> widths = columnWidths(dataset, header, withHeader);
    QString line;
    line.reserve(1024);
    if (withHeader) {
        buildRow(line, header, widths, options.lineEnding);
        stream << line;
        line.resize(0);
        for (int width : widths) {
            line.append(QLatin1Char('|'));
            line.resize(line.size() + width + 2, QLatin1Char('-'));
        }
        line.append(QLatin1Char('|'));
        line.append(options.lineEnding);
        stream << line;
    }

    const QList<QStringList> &rows = dataset.rows();
    const int rowCount = rows.size();
    for (int r = 0; r < rowCount; ++r) {
        if (progress && r % 1000 == 0)
            progress(double(r) / rowCount);
        buildRow(line, rows.at(r), widths, options.lineEnding);
        stream << line;
    }
    stream.flush();
    return true;
}
