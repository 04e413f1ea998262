#pragma once

#include <QList>
#include <QString>

#include <functional>

class Dataset;

// Naming and counting helpers shared by the transforms that add, copy, remove or rename
// columns: the words of their result texts and the names their new columns get.
namespace ColumnNames {

// "col" or "cols" for a count.
QString colsWord(qint64 count);
// "row" or "rows" for a count.
QString rowsWord(qint64 count);
// "%1 col" or "%1 cols", with the locale's group separators.
QString countedCols(qint64 count);
// "%1 row" or "%1 rows", with the locale's group separators.
QString countedRows(qint64 count);

// The names of the given columns as the user sees them (a column without a name shows its
// number), joined by separator: the automatic name of a column made from several others.
QString joinedNames(const Dataset &dataset, const QList<int> &columns, const QString &separator);

// Names column c when the dataset has a header and name is not empty. A dataset without a
// header keeps none: naming one column would turn every other column's number into a name
// and add a header line to every file written from it.
void nameNewColumn(Dataset &dataset, int c, const QString &name);

// Appends an empty column named as nameNewColumn() does; returns its index.
int appendNamedColumn(Dataset &dataset, const QString &name);

// A dataset of the input's columns listed in order, in that order, with their names and ids:
// a subset drops columns, a permutation moves them. Each row is built once, whatever the
// number of columns moved or dropped; atRow is called before each row for progress. No
// columns at all give the empty dataset.
Dataset arrangedColumns(const Dataset &input, const QList<int> &order,
                        const std::function<void(int row, int rowCount)> &atRow);

} // namespace ColumnNames
