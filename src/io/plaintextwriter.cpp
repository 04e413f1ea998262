#include "io/outputwriters.h"

#include "data/dataset.h"

#include <QTextStream>

namespace {

void buildLine(QString &line, const QStringList &cells, const QString &lineEnding)
{
    line.resize(0);
    for (const QString &cell : cells)
        line.append(cell);
    line.append(lineEnding);
}

} // namespace

bool writePlainText(QTextStream &stream, const Dataset &dataset, const TextWriteOptions &options,
                    WriteReport &, const WriteProgress &progress)
{
    prepareTextStream(stream, options.encoding, options.byteOrderMark);
    QString line;
    line.reserve(256);
    if (options.writeHeader && dataset.hasColumns()) {
        buildLine(line, dataset.headers(), options.lineEnding);
        stream << line;
    }
    const QList<QStringList> &rows = dataset.rows();
    const int rowCount = rows.size();
    for (int r = 0; r < rowCount; ++r) {
        if (progress && r % 1000 == 0)
            progress(double(r) / rowCount);
        buildLine(line, rows.at(r), options.lineEnding);
        stream << line;
    }
    stream.flush();
    return true;
}
