#include "io/excelwriter.h"

#include "data/columnmetrics.h"
#include "data/dataset.h"
#include "data/valueinterpretation.h"
#include "io/excelbook.h"
#include "io/excelreader.h"
#include "io/outputwriters.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QLocale>

#include <memory>

namespace ExcelColumnFormat {

QStringList names()
{
    return {QStringLiteral("Automatic"), QStringLiteral("Boolean"), QStringLiteral("Date"),
            QStringLiteral("General"),   QStringLiteral("Number"),  QStringLiteral("Text"),
            QStringLiteral("Formula"),   QStringLiteral("Time"),    QStringLiteral("Hyperlink")};
}

QString name(int format)
{
    return names().value(format);
}

} // namespace ExcelColumnFormat

namespace ExcelFormatting {

QStringList names()
{
    return {QStringLiteral("Automatic"), QStringLiteral("General"), QStringLiteral("Manual")};
}

QString name(int mode)
{
    return names().value(mode);
}

} // namespace ExcelFormatting

namespace {

constexpr int DateSample = 50;
constexpr int ProgressRows = 1000;
// More significant digits than a double keeps: such "numbers" are identifiers (card and
// account numbers) and are kept as text rather than rounded.
constexpr int MaxNumberDigits = 15;

QString native(const QString &path)
{
    return QDir::toNativeSeparators(path);
}

// The plain number grammar with the locale's decimal sign: no group separators, no leading
// zeros (a code such as 007 stays text), no spaces, at most 15 significant digits.
bool isWritableNumber(const QString &text, QChar decimal)
{
    const QChar *c = text.constData();
    const QChar *end = c + text.size();
    if (c < end && *c == QLatin1Char('-'))
        ++c;
    if (c == end || !c->isDigit())
        return false;
    int digits = 0;
    bool significant = false;
    auto digit = [&](QChar d) {
        significant = significant || d != QLatin1Char('0');
        if (significant)
            ++digits;
    };
    if (*c == QLatin1Char('0') && c + 1 < end && (c + 1)->isDigit())
        return false;
    for (; c < end && c->unicode() >= '0' && c->unicode() <= '9'; ++c)
        digit(*c);
    if (c < end && *c == decimal) {
        ++c;
        if (c == end || !(c->unicode() >= '0' && c->unicode() <= '9'))
            return false;
        for (; c < end && c->unicode() >= '0' && c->unicode() <= '9'; ++c)
            digit(*c);
    }
    if (c < end && (*c == QLatin1Char('e') || *c == QLatin1Char('E'))) {
        ++c;
        if (c < end && (*c == QLatin1Char('+') || *c == QLatin1Char('-')))
            ++c;
        if (c == end)
            return false;
        for (; c < end && c->unicode() >= '0' && c->unicode() <= '9'; ++c) { }
    }
    return c == end && digits <= MaxNumberDigits;
}

QTime readTime(const QString &text)
{
    const QTime time = toTime(text);
    if (time.isValid())
        return time;
    return QTime::fromString(text.trimmed(), QStringLiteral("h:m:s.z"));
}

// Dates and times of one column, each text read once: reading by format costs tens of
// microseconds, and a column of dates repeats few texts.
class TemporalCache
{
public:
    QDate date(const QString &text, const QString &format)
    {
        auto found = m_dates.constFind(text);
        if (found == m_dates.constEnd())
            found = m_dates.insert(
                text, format.isEmpty() ? toDate(text, dateFormats()) : toDate(text, format));
        return found.value();
    }
    QTime time(const QString &text)
    {
        auto found = m_times.constFind(text);
        if (found == m_times.constEnd())
            found = m_times.insert(text, readTime(text));
        return found.value();
    }

private:
    QHash<QString, QDate> m_dates;
    QHash<QString, QTime> m_times;
};

// What the column holds, for Automatic: the first kind that every non-empty value is.
int automaticFormat(const Dataset &dataset, int col, QChar decimal, QString *dateFormat,
                    TemporalCache &cache)
{
    const int rows = dataset.rowCount();
    bool number = true;
    bool boolean = true;
    bool time = true;
    bool any = false;
    QStringList sample;
    for (int r = 0; r < rows && (number || boolean || time || sample.size() < DateSample); ++r) {
        const QString &text = dataset.cell(r, col);
        if (text.isEmpty())
            continue;
        any = true;
        number = number && isWritableNumber(text, decimal);
        if (boolean)
            toBool(text, false, false, &boolean);
        time = time && cache.time(text).isValid();
        if (sample.size() < DateSample)
            sample.append(text);
    }
    if (!any)
        return ExcelColumnFormat::Text;
    if (number)
        return ExcelColumnFormat::Number;
    if (boolean)
        return ExcelColumnFormat::Boolean;
    if (time)
        return ExcelColumnFormat::Time;
    *dateFormat = ColumnMetrics::inferDateFormat(sample, dateFormats());
    if (dateFormat->isEmpty())
        return ExcelColumnFormat::Text;
    for (int r = 0; r < rows; ++r) {
        const QString &text = dataset.cell(r, col);
        if (!text.isEmpty() && !cache.date(text, *dateFormat).isValid())
            return ExcelColumnFormat::Text;
    }
    return ExcelColumnFormat::Date;
}

struct Formats
{
    int plain = 0;
    int text = 0;
    int date = 0;
    int time = 0;
    int link = 0;
    int header = 0;
};

Formats makeFormats(ExcelBook &book, bool header)
{
    Formats formats;
    // The book's own default format, so that General cells look like the rest of the book.
    formats.plain = 0;
    formats.text = book.addFormat({49, QString(), false, 0});
    formats.date = book.addFormat({14, QString(), false, 0});
    formats.time = book.addFormat({21, QString(), false, 0});
    formats.link = book.addFormat({49, QString(), false, 12});
    if (header)
        formats.header = book.addFormat({49, QString(), true, 0});
    return formats;
}

// One column's way of writing, decided before the rows.
struct ColumnPlan
{
    int format = ExcelColumnFormat::Text;
    QString dateFormat;
    std::shared_ptr<TemporalCache> cache = std::make_shared<TemporalCache>();
};

void writeCell(ExcelBook &book, ExcelSheet &sheet, int row, int col, const QString &text,
               const ColumnPlan &plan, const Formats &formats)
{
    bool ok = false;
    switch (plan.format) {
    case ExcelColumnFormat::Boolean: {
        const bool value = toBool(text, false, false, &ok);
        if (ok)
            sheet.writeBool(row, col, value, formats.plain);
        break;
    }
    case ExcelColumnFormat::Date: {
        const QDate date = plan.cache->date(text, plan.dateFormat);
        ok = date.isValid();
        if (ok)
            sheet.writeNum(row, col, book.datePack({date.year(), date.month(), date.day()}),
                           formats.date);
        break;
    }
    case ExcelColumnFormat::Number: {
        const double value = toDouble(text, false, false, &ok);
        if (ok)
            sheet.writeNum(row, col, value, formats.plain);
        break;
    }
    case ExcelColumnFormat::General:
        sheet.writeStr(row, col, text, formats.plain);
        return;
    case ExcelColumnFormat::Formula:
        if (text.startsWith(QLatin1Char('=')))
            sheet.writeFormula(row, col, text.mid(1), formats.plain);
        else
            sheet.writeStr(row, col, text, formats.plain);
        return;
    case ExcelColumnFormat::Time: {
        const QTime time = plan.cache->time(text);
        ok = time.isValid();
        if (ok)
            sheet.writeNum(
                row, col,
                book.datePack({0, 0, 0, time.hour(), time.minute(), time.second(), time.msec()}),
                formats.time);
        break;
    }
    case ExcelColumnFormat::Hyperlink: {
        // A cell read from a link is its text, "|" and the target; that splits back.
        const int bar = text.lastIndexOf(QLatin1Char('|'));
        const QString shown = bar > 0 ? text.left(bar) : text;
        const QString target = bar > 0 ? text.mid(bar + 1) : text;
        sheet.writeStr(row, col, shown, formats.link);
        if (!target.isEmpty())
            sheet.addHyperlink({{row, row, col, col}, target});
        return;
    }
    default:
        break;
    }
    if (!ok)
        sheet.writeStr(row, col, text, formats.text);
}

ExcelSheet *findExactSheet(ExcelBook &book, const QString &name)
{
    // Excel itself tells sheet names apart without regard to case.
    for (int i = 0; i < book.sheetCount(); ++i) {
        if (book.sheetName(i).compare(name, Qt::CaseInsensitive) == 0)
            return book.sheet(i);
    }
    return nullptr;
}

QList<ColumnPlan> planColumns(const Dataset &dataset, const ExcelWriteOptions &options,
                              QStringList *automaticLines)
{
    const QChar decimal = QLocale().decimalPoint();
    QList<ColumnPlan> plans;
    for (int c = 0; c < dataset.columnCount(); ++c) {
        ColumnPlan plan;
        if (options.formatting == ExcelFormatting::General)
            plan.format = ExcelColumnFormat::General;
        else if (options.formatting == ExcelFormatting::Manual)
            plan.format = options.manualFormats.value(c, ExcelColumnFormat::Text);
        else
            plan.format = ExcelColumnFormat::Automatic;
        if (plan.format == ExcelColumnFormat::Automatic) {
            plan.format = automaticFormat(dataset, c, decimal, &plan.dateFormat, *plan.cache);
            if (options.formatting == ExcelFormatting::Automatic)
                automaticLines->append(QStringLiteral("%1: %2").arg(
                    dataset.headerText(c), ExcelColumnFormat::name(plan.format)));
        }
        if (plan.format == ExcelColumnFormat::Date && plan.dateFormat.isEmpty()) {
            plan.dateFormat = options.dateFormats.value(c);
            if (plan.dateFormat.isEmpty()) {
                QStringList sample;
                for (int r = 0; r < dataset.rowCount() && sample.size() < DateSample; ++r) {
                    if (!dataset.cell(r, c).isEmpty())
                        sample.append(dataset.cell(r, c));
                }
                plan.dateFormat = ColumnMetrics::inferDateFormat(sample, dateFormats());
            }
        }
        plans.append(plan);
    }
    return plans;
}

// The sheet to write into, found in an existing book or added; null with the warning made.
ExcelSheet *targetSheet(ExcelBook &book, const QString &path, const QString &name,
                        const ExcelWriteOptions &options, WriteReport &report, bool *empty,
                        int *startRow)
{
    *empty = true;
    *startRow = 0;
    if (options.keepExisting && QFileInfo::exists(path)) {
        if (!book.load(path)) {
            // Adding a sheet to a book that could not be read would write over the others.
            report.warnings.append(QStringLiteral("Unable to load Excel workbook '%1' information.")
                                       .arg(native(path)));
            report.warnings.append(QStringLiteral("Error=%1").arg(book.errorMessage()));
            return nullptr;
        }
        if (ExcelSheet *sheet = findExactSheet(book, name)) {
            *empty = sheet->lastCol() <= sheet->firstCol();
            if (options.append)
                *startRow = sheet->lastRow();
            else
                sheet->clear();
            return sheet;
        }
    }
    const QStringList problems = ExcelSheetNames::problems(name);
    ExcelSheet *sheet = problems.isEmpty() ? book.addSheet(name) : nullptr;
    if (!sheet) {
        QString message = QStringLiteral("Unable to add sheet to '%1'.").arg(native(path));
        message += problems.join(QString());
        if (problems.isEmpty() && !book.errorMessage().isEmpty())
            message += QLatin1Char('\n') + book.errorMessage();
        report.warnings.append(message);
    }
    return sheet;
}

// Widths, heights, hidden states, merges and cell formats over the union of both used
// ranges; a source format becomes one target format however many cells have it.
void copySheetStyle(const ExcelBook &fromBook, const ExcelSheet &from, ExcelBook &toBook,
                    ExcelSheet &to)
{
    const int firstCol = std::min(from.firstCol(), to.firstCol());
    const int lastCol = std::max(from.lastCol(), to.lastCol());
    const int firstRow = std::min(from.firstRow(), to.firstRow());
    const int lastRow = std::max(from.lastRow(), to.lastRow());
    for (int c = firstCol; c < lastCol; ++c)
        to.setCol(c, from.colWidth(c), from.colHidden(c));
    // A template applied on every run finds its merges there from the last one; Excel
    // refuses a book with a range merged twice.
    const QList<ExcelRange> merged = to.merges();
    for (const ExcelRange &range : from.merges()) {
        if (!merged.contains(range))
            to.setMerge(range);
    }
    QHash<int, int> formats {{0, 0}};
    for (int r = firstRow; r < lastRow; ++r) {
        to.setRow(r, from.rowHeight(r), from.rowHidden(r));
        for (int c = firstCol; c < lastCol; ++c) {
            const int format = from.cellFormat(r, c);
            auto found = formats.constFind(format);
            if (found == formats.constEnd())
                found = formats.insert(format, toBook.addFormat(fromBook.format(format)));
            if (found.value() != 0 || to.cellFormat(r, c) != 0)
                to.setCellFormat(r, c, found.value());
        }
    }
}

} // namespace

namespace ExcelWriter {

QString sizeWarning(int fileType, int rows, int columns)
{
    const bool xls = fileType == FileTypeXls;
    const int maxRows = xls ? ExcelCells::MaxXlsRows : ExcelCells::MaxXlsxRows;
    const int maxColumns = xls ? ExcelCells::MaxXlsCols : ExcelCells::MaxXlsxCols;
    if (rows <= maxRows && columns <= maxColumns)
        return QString();
    if (xls)
        return QStringLiteral("The output dataset exceeds the maximum size for an Excel .xls "
                              "file of %1 rows x %2 columns. It may be truncated by Excel. The "
                              "Excel .xlsx format supports larger files.")
            .arg(maxRows)
            .arg(maxColumns);
    return QStringLiteral("The output dataset exceeds the maximum size for an Excel .xlsx file "
                          "of %1 rows x %2 columns. It may be truncated by Excel.")
        .arg(maxRows)
        .arg(maxColumns);
}

bool write(const QString &path, const Dataset &dataset, const ExcelWriteOptions &options,
           WriteReport &report, const WriteProgress &progress)
{
    const bool xls = options.fileType == FileTypeXls;
    const int maxRows = xls ? ExcelCells::MaxXlsRows : ExcelCells::MaxXlsxRows;
    const int maxColumns = xls ? ExcelCells::MaxXlsCols : ExcelCells::MaxXlsxCols;
    const QString warning
        = sizeWarning(options.fileType, dataset.rowCount() + (options.writeHeader ? 1 : 0),
                      dataset.columnCount());
    if (!warning.isEmpty())
        report.warnings.append(warning);
    const QString name = options.sheet.isEmpty() ? QStringLiteral("Tabulon") : options.sheet;

    std::unique_ptr<ExcelBook> book = ExcelBook::create(options.fileType);
    if (!book) {
        report.warnings.append(
            QStringLiteral("Unable to open/create Excel workbook '%1'.").arg(native(path)));
        return false;
    }
    bool empty = true;
    int row = 0;
    ExcelSheet *sheet = targetSheet(*book, path, name, options, report, &empty, &row);
    if (!sheet)
        return false;

    const bool header
        = options.writeHeader && (!options.append || !options.writeHeaderOnlyIfEmpty || empty);
    const Formats formats = makeFormats(*book, header);
    QStringList automaticLines;
    const QList<ColumnPlan> plans = planColumns(dataset, options, &automaticLines);
    const int columns = std::min(dataset.columnCount(), maxColumns);
    if (header && row < maxRows) {
        for (int c = 0; c < columns; ++c)
            sheet->writeStr(row, c, dataset.headerText(c), formats.header);
        ++row;
    }
    const int rows = std::min(dataset.rowCount(), maxRows - row);
    for (int r = 0; r < rows; ++r, ++row) {
        for (int c = 0; c < columns; ++c) {
            const QString &text = dataset.cell(r, c);
            if (!text.isEmpty())
                writeCell(*book, *sheet, row, c, text, plans.at(c), formats);
        }
        if (progress && r % ProgressRows == 0)
            progress(0.9 * r / std::max(1, rows));
    }

    if (!book->save(path)) {
        report.warnings.append(QStringLiteral("Unable to save to '%1'. If this file is already "
                                              "open, close it and click the refresh button in "
                                              "the 'Data' tab.")
                                   .arg(native(path)));
        report.warnings.append(QStringLiteral("Error=%1").arg(book->errorMessage()));
        return false;
    }
    if (!automaticLines.isEmpty()) {
        report.info.append(QStringLiteral("Formatting=Automatic sets Excel column formats as:"));
        report.info += automaticLines;
        report.info.append(QStringLiteral("Set 'Formatting' option to change.\n"));
    }
    return true;
}

bool copyStyle(const QString &templatePath, const QString &templateSheet, const QString &path,
               const QString &sheet, int fileType, QString *error)
{
    if (QFileInfo(templatePath).absoluteFilePath() == QFileInfo(path).absoluteFilePath()
        && templateSheet.compare(sheet, Qt::CaseInsensitive) == 0) {
        *error = QStringLiteral("Cannot use a sheet as it's own style template.");
        return false;
    }
    const int templateType
        = QFileInfo(templatePath).suffix().compare(QLatin1String("xls"), Qt::CaseInsensitive) == 0
        ? FileTypeXls
        : FileTypeXlsx;
    std::unique_ptr<ExcelBook> from = ExcelBook::create(templateType);
    std::unique_ptr<ExcelBook> to = ExcelBook::create(fileType);
    for (const auto &[book, file] :
         {std::make_pair(from.get(), templatePath), std::make_pair(to.get(), path)}) {
        if (!book || !book->load(file)) {
            *error = QStringLiteral("Unable to read '%1'.").arg(native(file));
            return false;
        }
    }
    ExcelSheet *source = ExcelReader::findSheet(*from, templateSheet);
    if (!source) {
        *error = QStringLiteral("Unable to read sheet '%1' from '%2'.")
                     .arg(templateSheet, native(templatePath));
        return false;
    }
    ExcelSheet *target = ExcelReader::findSheet(*to, sheet);
    if (!target) {
        *error = QStringLiteral("Unable to read sheet '%1' from '%2'.").arg(sheet, native(path));
        return false;
    }
    copySheetStyle(*from, *source, *to, *target);
    if (!to->save(path)) {
        *error = QStringLiteral("Unable to save changes to '%1'.").arg(native(path));
        return false;
    }
    return true;
}

} // namespace ExcelWriter
