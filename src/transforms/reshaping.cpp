#include "transforms/reshaping.h"

#include "data/valueinterpretation.h"

#include <algorithm>

QString countWithNoun(qint64 count, const QString &singular, const QString &plural)
{
    return QStringLiteral("%1 %2").arg(formatCount(count, true), count == 1 ? singular : plural);
}

QStringList namesOrNumbers(const Dataset &input, int count)
{
    QStringList names;
    names.reserve(count);
    const int known = input.hasHeader() ? std::min(count, input.columnCount()) : 0;
    for (int c = 0; c < known; ++c)
        names.append(input.header().value(c));
    for (int c = known; c < count; ++c)
        names.append(QString::number(c + 1));
    return names;
}

void beginOutput(Dataset &output, int columns, bool withHeader, const QStringList &names)
{
    output.clear();
    if (columns <= 0)
        return;
    output.setColumnCount(columns);
    if (!withHeader)
        return;
    QStringList header = names.mid(0, columns);
    for (int c = header.size(); c < columns; ++c)
        header.append(QString::number(c + 1));
    output.setHeader(header);
}

void keepColumnIds(Dataset &output, const Dataset &input, int count)
{
    const int kept = std::min({count, input.columnCount(), output.columnCount()});
    for (int c = 0; c < kept; ++c)
        output.setColumnId(c, input.columnId(c));
}
