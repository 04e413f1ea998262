#pragma once

#include "io/fileformats.h"

#include <QList>
#include <QString>
#include <QStringList>

class Dataset;
struct WriteReport;

// Writing a dataset into a sheet of an Excel book, written against ExcelBook alone: the
// column formats, the header, keeping the rest of an existing book, and copying the styling
// of a template sheet.

// How one column's values are written; stored by number in `excel_manual_col_formats`.
namespace ExcelColumnFormat {
enum Format {
    Automatic = 0,
    Boolean = 1,
    Date = 2,
    General = 3,
    Number = 4,
    Text = 5,
    Formula = 6,
    Time = 7,
    Hyperlink = 8
};
constexpr int Count = 9;
QString name(int format);
// The names in the order of their numbers, for choosing one.
QStringList names();
} // namespace ExcelColumnFormat

// The `excel_output` option, labelled "Formatting".
namespace ExcelFormatting {
enum Mode { Automatic = 0, General = 1, Manual = 2 };
QString name(int mode);
QStringList names();
} // namespace ExcelFormatting

struct ExcelWriteOptions
{
    int fileType = FileTypeXlsx;
    QString sheet;
    // Keep the rest of an existing file: Overwrite with only the sheet replaced, or Append.
    bool keepExisting = false;
    bool append = false;
    bool writeHeader = true;
    // In Append, a header only when the sheet is new or empty.
    bool writeHeaderOnlyIfEmpty = true;
    int formatting = ExcelFormatting::Automatic;
    // Per column by position, for Manual; a column past the end counts as Text.
    QList<int> manualFormats;
    // Dates of the Date columns: the format each column's values are read with, by position
    // (empty for the automatic guess from the column's values).
    QStringList dateFormats;
};

namespace ExcelWriter {

// Writes the dataset into path as the options say; false with the reasons in report.warnings.
// A file that exists is only ever replaced whole, through a temporary file.
bool write(const QString &path, const Dataset &dataset, const ExcelWriteOptions &options,
           WriteReport &report, const WriteProgress &progress);

// The warning for a dataset (rows counting the header) beyond the sheets of the type; empty
// when it fits.
QString sizeWarning(int fileType, int rows, int columns);

// Copies column widths, row heights, hidden states, merges and cell formats from one sheet to
// another (no content); false with the reason in *error.
bool copyStyle(const QString &templatePath, const QString &templateSheet, const QString &path,
               const QString &sheet, int fileType, QString *error);

} // namespace ExcelWriter
