#include "transforms/columnnames.h"

#include "data/dataset.h"
#include "data/valueinterpretation.h"

#include <QStringList>

namespace ColumnNames {

QString colsWord(qint64 count)
{
    return count == 1 ? QStringLiteral("col") : QStringLiteral("cols");
}

QString rowsWord(qint64 count)
{
    return count == 1 ? QStringLiteral("row") : QStringLiteral("rows");
}

QString countedCols(qint64 count)
{
    return QStringLiteral("%1 %2").arg(formatCount(count, true), colsWord(count));
}

QString countedRows(qint64 count)
{
    return QStringLiteral("%1 %2").arg(formatCount(count, true), rowsWord(count));
}

QString joinedNames(const Dataset &dataset, const QList<int> &columns, const QString &separator)
{
    QStringList names;
    names.reserve(columns.size());
    for (int c : columns)
        names.append(dataset.headerText(c));
    return names.join(separator);
}

void nameNewColumn(Dataset &dataset, int c, const QString &name)
{
    if (dataset.hasHeader() && !name.isEmpty())
        dataset.setColumnName(c, name);
}

int appendNamedColumn(Dataset &dataset, const QString &name)
{
    dataset.appendColumn();
    const int c = dataset.lastColumn();
    nameNewColumn(dataset, c, name);
    return c;
}

Dataset arrangedColumns(const Dataset &input, const QList<int> &order,
                        const std::function<void(int row, int rowCount)> &atRow)
{
    Dataset result;
    if (order.isEmpty())
        return result;
    const int width = order.size();
    result.setColumnCount(width);
    const int rowCount = input.rowCount();
    result.reserveRows(rowCount);
    QStringList cells;
    cells.reserve(width);
    for (int r = 0; r < rowCount; ++r) {
        atRow(r, rowCount);
        const QStringList &row = input.row(r);
        cells.clear();
        for (int c : order)
            cells.append(row.at(c));
        result.appendRow(cells);
    }
    QList<ColumnId> ids;
    ids.reserve(width);
    for (int c : order)
        ids.append(input.columnId(c));
    result.setColumnIds(ids);
    if (input.hasHeader()) {
        const QStringList &header = input.header();
        QStringList names;
        names.reserve(width);
        for (int c : order)
            names.append(header.value(c));
        result.setHeader(names);
    }
    return result;
}

} // namespace ColumnNames
