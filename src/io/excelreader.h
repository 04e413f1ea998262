#pragma once

#include "io/fileformats.h"

#include <QStringList>

class ExcelBook;
class QLocale;
class ExcelSheet;

// Turning a sheet of an Excel book into a dataset, written against ExcelBook alone.
namespace ExcelReader {

// The FileReader of both Excel types: the sheet named by options.worksheet, or by a
// "[sheet]" part of the path, else the first sheet.
bool read(const QString &path, const InputReadOptions &options, Dataset &out,
          TextReadReport &report, const ReadProgress &progress);

// The sheet whose name equals `text` without regard to case; failing that, `text` read as a
// sheet number from 1; the first sheet for an empty text. Null when nothing fits.
ExcelSheet *findSheet(ExcelBook &book, const QString &text);

// 1 when the column's dates show only a day, 2 with hours or minutes, 3 with seconds, 4 with
// milliseconds; 0 when none of its first 1000 rows holds a date.
int timePrecision(const ExcelBook &book, const ExcelSheet &sheet, int col, int firstRow);

// The text of one cell as the dataset shows it; precision as timePrecision gives it, numbers
// in the locale given (the default one, read once per sheet rather than once per cell).
QString cellText(const ExcelBook &book, const ExcelSheet &sheet, int row, int col, int precision,
                 const QLocale &locale);

// The sheets of a book that hold data, for choosing among them.
struct SheetListing
{
    QStringList names;
    // "%1 (%2 cols x %3 rows)" for each name.
    QStringList labels;
    // Why nothing could be listed; empty when the book was read.
    QString error;
};
SheetListing listSheets(const QString &path, int fileType);

// What to say when a readable book has no sheet with data.
QString noSheetsMessage();

} // namespace ExcelReader
