#include "transforms/reshaping.h"

#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"

#include <algorithm>
#include <cstdlib>

QString countWithNoun(qint64 count, const QString &singular, const QString &plural)
{
    return QStringLiteral("%1 %2").arg(formatCount(count, true), count == 1 ? singular : plural);
}

QString furtherProblemsText(qint64 further)
{
    return QStringLiteral("+ %1").arg(
        countWithNoun(further, QStringLiteral("other"), QStringLiteral("others")));
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

QString shapeChangeText(const Dataset &before, const Dataset &after)
{
    QStringList parts;
    const auto describe = [&parts](qint64 change, const QString &counted) {
        if (change != 0)
            parts.append((change > 0 ? QStringLiteral("%1 added") : QStringLiteral("%1 removed"))
                             .arg(counted));
    };
    const qint64 columns = qint64(after.columnCount()) - before.columnCount();
    const qint64 rows = qint64(after.rowCount()) - before.rowCount();
    describe(columns, ColumnNames::countedCols(std::abs(columns)));
    describe(rows, ColumnNames::countedRows(std::abs(rows)));
    return parts.isEmpty() ? QStringLiteral("No changes") : parts.join(QStringLiteral(", "));
}
