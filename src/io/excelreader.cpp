#include "io/excelreader.h"

#include "data/dataset.h"
#include "data/valueinterpretation.h"
#include "io/delimitedtext.h"
#include "io/excelbook.h"
#include "io/inputreader.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QLocale>

namespace {

constexpr int PrecisionRows = 1000;
constexpr int PrecisionDates = 20;
constexpr int ProgressCells = 5000;

QString native(const QString &path)
{
    return QDir::toNativeSeparators(path);
}

// A strict date cell (an ISO text) as the parts of a serial date.
bool strictDate(const QString &text, ExcelDateTime *date)
{
    QDateTime when = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!when.isValid()) {
        const QTime time = QTime::fromString(text, Qt::ISODateWithMs);
        if (!time.isValid())
            return false;
        when = QDateTime(QDate(1899, 12, 31), time);
    }
    *date = {when.date().year(),   when.date().month(),  when.date().day(), when.time().hour(),
             when.time().minute(), when.time().second(), when.time().msec()};
    return true;
}

bool unpackCell(const ExcelBook &book, const ExcelSheet &sheet, int row, int col,
                ExcelDateTime *date)
{
    if (sheet.cellType(row, col) == ExcelCellType::StrictDate)
        return strictDate(sheet.readStr(row, col), date);
    return book.dateUnpack(sheet.readNum(row, col), date);
}

QString dateText(const ExcelDateTime &date, int precision)
{
    QString text = QStringLiteral("%1-%2-%3")
                       .arg(date.year, 4)
                       .arg(date.month, 2)
                       .arg(date.day, 2)
                       .replace(QLatin1Char(' '), QLatin1Char('0'));
    QString time;
    switch (precision) {
    case 1:
        return text;
    case 2:
        time = QStringLiteral("%1:%2").arg(date.hour, 2).arg(date.minute, 2);
        break;
    case 3:
        time = QStringLiteral("%1:%2:%3").arg(date.hour, 2).arg(date.minute, 2).arg(date.second, 2);
        break;
    default:
        time = QStringLiteral("%1:%2:%3.%4")
                   .arg(date.hour, 2)
                   .arg(date.minute, 2)
                   .arg(date.second, 2)
                   .arg(date.millisecond, 3);
        break;
    }
    return text + QLatin1Char('T') + time.replace(QLatin1Char(' '), QLatin1Char('0'));
}

QString sheetPart(const QString &path)
{
    const int open = path.indexOf(QLatin1Char('['));
    const int close = path.lastIndexOf(QLatin1Char(']'));
    return open >= 0 && close > open ? path.mid(open + 1, close - open - 1) : QString();
}

void appendLinks(const ExcelSheet &sheet, Dataset &out)
{
    for (const ExcelHyperlink &link : sheet.hyperlinks()) {
        if (link.target.isEmpty())
            continue;
        // The link's own coordinates, not shifted by the data area: a link lands on the
        // dataset row of its sheet row number.
        const ExcelRange &range = link.range;
        if (range.lastRow >= out.rowCount() || range.lastCol >= out.columnCount())
            out.setSize(qMax(out.rowCount(), range.lastRow + 1),
                        qMax(out.columnCount(), range.lastCol + 1));
        for (int r = range.firstRow; r <= range.lastRow; ++r) {
            for (int c = range.firstCol; c <= range.lastCol; ++c)
                out.setCell(r, c, out.cell(r, c) + QLatin1Char('|') + link.target);
        }
    }
}

int removeHiddenRows(const ExcelSheet &sheet, int firstRow, Dataset &out)
{
    int removed = 0;
    for (int r = out.rowCount() - 1; r >= 0; --r) {
        if (sheet.rowHidden(firstRow + r)) {
            out.removeRow(r);
            ++removed;
        }
    }
    return removed;
}

int removeHiddenColumns(const ExcelSheet &sheet, int firstCol, Dataset &out)
{
    int removed = 0;
    for (int c = out.columnCount() - 1; c >= 0; --c) {
        if (sheet.colHidden(firstCol + c)) {
            out.removeColumn(c);
            ++removed;
        }
    }
    return removed;
}

} // namespace

namespace ExcelReader {

ExcelSheet *findSheet(ExcelBook &book, const QString &text)
{
    if (text.isEmpty())
        return book.sheet(0);
    for (int i = 0; i < book.sheetCount(); ++i) {
        if (book.sheetName(i).compare(text, Qt::CaseInsensitive) == 0)
            return book.sheet(i);
    }
    bool ok = false;
    const int number = text.toInt(&ok);
    return ok ? book.sheet(number - 1) : nullptr;
}

int timePrecision(const ExcelBook &book, const ExcelSheet &sheet, int col, int firstRow)
{
    int precision = 0;
    int dates = 0;
    const int end = qMin(sheet.lastRow(), firstRow + PrecisionRows);
    for (int r = firstRow; r < end && dates < PrecisionDates; ++r) {
        if (!sheet.isDate(r, col))
            continue;
        ExcelDateTime date;
        if (!unpackCell(book, sheet, r, col, &date))
            continue;
        ++dates;
        if (date.millisecond)
            precision = qMax(precision, 4);
        else if (date.second)
            precision = qMax(precision, 3);
        else if (date.hour || date.minute)
            precision = qMax(precision, 2);
        else if (date.year || date.month || date.day)
            precision = qMax(precision, 1);
    }
    return precision;
}

QString cellText(const ExcelBook &book, const ExcelSheet &sheet, int row, int col, int precision,
                 const QLocale &locale)
{
    switch (sheet.cellType(row, col)) {
    case ExcelCellType::Number:
    case ExcelCellType::StrictDate: {
        if (sheet.isDate(row, col)) {
            ExcelDateTime date;
            return unpackCell(book, sheet, row, col, &date) ? dateText(date, precision) : QString();
        }
        return locale.toString(sheet.readNum(row, col), 'f', QLocale::FloatingPointShortest)
            .remove(locale.groupSeparator());
    }
    case ExcelCellType::String:
        return sheet.readStr(row, col);
    case ExcelCellType::Boolean:
        return sheet.readBool(row, col) ? QStringLiteral("true") : QStringLiteral("false");
    default:
        return QString();
    }
}

bool read(const QString &path, const InputReadOptions &options, Dataset &out,
          TextReadReport &report, const ReadProgress &progress)
{
    out.clear();
    const QString file = inputPathWithoutSheet(path);
    if (file.isEmpty() || !QFileInfo::exists(file))
        return false;
    std::unique_ptr<ExcelBook> book = ExcelBook::create(options.fileType);
    if (!book) {
        report.warnings.append(
            QStringLiteral("Unable to open Excel workbook '%1'.").arg(native(file)));
        return false;
    }
    if (progress)
        progress(0.0);
    if (!book->load(file)) {
        report.warnings.append(
            QStringLiteral("Unable to load Excel workbook '%1' information.").arg(native(file)));
        report.warnings.append(QStringLiteral("Error=%1").arg(book->errorMessage()));
        return false;
    }
    const QString sheetText = options.worksheet.isEmpty() ? sheetPart(path) : options.worksheet;
    ExcelSheet *sheet = findSheet(*book, sheetText);
    if (!sheet) {
        if (!book->errorMessage().isEmpty()) {
            report.warnings.append(QStringLiteral("Unable to load Excel workbook '%1' information.")
                                       .arg(native(file)));
            report.warnings.append(QStringLiteral("Error=%1").arg(book->errorMessage()));
        } else {
            report.warnings.append(QStringLiteral("Sheet '%1' not found.").arg(sheetText));
        }
        return false;
    }
    if (progress)
        progress(0.5);

    const int firstRow = options.ignoredRows;
    const int rows = sheet->lastRow() - firstRow;
    const int firstCol = sheet->firstCol();
    const int cols = sheet->lastCol() - firstCol;
    if (rows >= 1 && cols >= 1) {
        const QLocale locale;
        QVector<int> precision(cols);
        for (int c = 0; c < cols; ++c)
            precision[c] = timePrecision(*book, *sheet, firstCol + c, firstRow);
        const double cells = double(rows) * cols;
        qint64 done = 0;
        out.setColumnCount(cols);
        for (int r = 0; r < rows; ++r) {
            QStringList row;
            row.reserve(cols);
            for (int c = 0; c < cols; ++c) {
                QString text
                    = cellText(*book, *sheet, firstRow + r, firstCol + c, precision[c], locale);
                if (!options.simplify)
                    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
                row.append(text);
                if (progress && ++done % ProgressCells == 0)
                    progress(0.5 + 0.5 * double(done) / cells);
            }
            out.addInputRow(row, options.trim, options.simplify, false, false);
            if (r % 1024 == 1023)
                sheet->discardRowsBefore(firstRow + r + 1);
        }
    }
    appendLinks(*sheet, out);

    report.info += book->readerLimitations();

    int removed = 0;
    if (options.ignoreExcelHiddenRows && (removed = removeHiddenRows(*sheet, firstRow, out)) > 0)
        report.info.append(QStringLiteral("%1 hidden row(s) ignored").arg(removed));
    if (options.ignoreExcelHiddenColumns
        && (removed = removeHiddenColumns(*sheet, firstCol, out)) > 0)
        report.info.append(QStringLiteral("%1 hidden column(s) ignored").arg(removed));
    if (options.ignoreEmptyRows && (removed = out.removeEmptyRows()) > 0) {
        report.emptyRowsIgnored = removed;
        report.info.append(QStringLiteral("%1 empty row(s) ignored").arg(removed));
    }
    return true;
}

SheetListing listSheets(const QString &path, int fileType)
{
    SheetListing listing;
    const QFileInfo info(path);
    if (!info.exists()) {
        listing.error = QStringLiteral("File '%1' not found.").arg(native(path));
        return listing;
    }
    if (info.size() == 0) {
        listing.error
            = QStringLiteral("Unable to open Excel document '%1' as size is 0.").arg(native(path));
        return listing;
    }
    std::unique_ptr<ExcelBook> book = ExcelBook::create(fileType);
    if (!book) {
        listing.error = QStringLiteral("Unable to open Excel document '%1'.").arg(native(path));
        return listing;
    }
    if (!book->load(path)) {
        listing.error = QStringLiteral("Unable to get sheets from '%1'.").arg(native(path));
        if (!book->errorMessage().isEmpty())
            listing.error += QStringLiteral("\nError: %1").arg(book->errorMessage());
        return listing;
    }
    for (int i = 0; i < book->sheetCount(); ++i) {
        const ExcelSheet *sheet = book->sheet(i);
        if (!sheet || sheet->name().isEmpty() || sheet->lastRow() <= 0 || sheet->lastCol() <= 0)
            continue;
        listing.names.append(sheet->name());
        listing.labels.append(QStringLiteral("%1 (%2 cols x %3 rows)")
                                  .arg(sheet->name())
                                  .arg(sheet->lastCol() - sheet->firstCol())
                                  .arg(sheet->lastRow() - sheet->firstRow()));
    }
    // A sheet that failed to parse is not a sheet without data.
    if (listing.names.isEmpty() && !book->errorMessage().isEmpty())
        listing.error = QStringLiteral("Unable to get sheets from '%1'.\nError: %2")
                            .arg(native(path), book->errorMessage());
    return listing;
}

QString noSheetsMessage()
{
    return QStringLiteral("Can't import any sheets. The spreadsheet may be empty or the sheets "
                          "might be too large to import - check you don't have thousands of "
                          "empty rows or columns.");
}

} // namespace ExcelReader
