#include "io/excelbook.h"

#include "io/fileformats.h"
#include "io/xlsbook.h"
#include "io/xlsxbook.h"

#include <QDate>

#include <cmath>

std::unique_ptr<ExcelBook> ExcelBook::create(int fileType)
{
    if (fileType == FileTypeXlsx)
        return std::make_unique<XlsxBook>();
    if (fileType == FileTypeXls)
        return createXlsBook();
    return nullptr;
}

QString ExcelBook::sheetName(int index)
{
    const ExcelSheet *found = sheet(index);
    return found ? found->name() : QString();
}

double ExcelBook::datePack(const ExcelDateTime &date) const
{
    return ExcelDates::pack(date, uses1904());
}

bool ExcelBook::dateUnpack(double serial, ExcelDateTime *date) const
{
    return ExcelDates::unpack(serial, uses1904(), date);
}

namespace {

constexpr qint64 MillisecondsPerDay = 86400000;

// The day that serial 0 stands for, apart from the 1900 system's phantom leap day.
QDate epoch(bool uses1904)
{
    return uses1904 ? QDate(1904, 1, 1) : QDate(1899, 12, 31);
}

} // namespace

namespace ExcelDates {

double pack(const ExcelDateTime &date, bool uses1904)
{
    double days = 0;
    if (date.year != 0 || date.month != 0 || date.day != 0) {
        if (!uses1904 && date.year == 1900 && date.month == 2 && date.day == 29) {
            days = 60;
        } else {
            const QDate day(date.year, date.month, date.day);
            if (!day.isValid())
                return 0;
            days = double(epoch(uses1904).daysTo(day));
            if (!uses1904 && day >= QDate(1900, 3, 1))
                days += 1;
        }
    }
    const qint64 ms
        = ((qint64(date.hour) * 60 + date.minute) * 60 + date.second) * 1000 + date.millisecond;
    return days + double(ms) / double(MillisecondsPerDay);
}

bool unpack(double serial, bool uses1904, ExcelDateTime *date)
{
    if (!std::isfinite(serial) || serial < 0 || serial >= 2958466) // past 9999-12-31
        return false;
    qint64 days = qint64(std::floor(serial));
    qint64 ms = qint64(std::llround((serial - double(days)) * double(MillisecondsPerDay)));
    if (ms >= MillisecondsPerDay) {
        ++days;
        ms -= MillisecondsPerDay;
    }
    ExcelDateTime out;
    if (!uses1904 && days == 60) {
        out.year = 1900;
        out.month = 2;
        out.day = 29;
    } else {
        const QDate day = epoch(uses1904).addDays(!uses1904 && days > 60 ? days - 1 : days);
        out.year = day.year();
        out.month = day.month();
        out.day = day.day();
    }
    out.millisecond = int(ms % 1000);
    out.second = int(ms / 1000 % 60);
    out.minute = int(ms / 60000 % 60);
    out.hour = int(ms / 3600000);
    *date = out;
    return true;
}

bool isDateFormat(int numberFormat, const QString &code)
{
    if (code.isEmpty()) {
        return (numberFormat >= 14 && numberFormat <= 22)
            || (numberFormat >= 27 && numberFormat <= 36)
            || (numberFormat >= 45 && numberFormat <= 47)
            || (numberFormat >= 50 && numberFormat <= 58);
    }
    // Only the first section counts (positive numbers); quoted text, escaped characters and
    // bracketed colours or conditions say nothing of dates, but [h], [m] and [s] do.
    bool inQuotes = false;
    for (int i = 0; i < code.size(); ++i) {
        const QChar c = code.at(i);
        if (inQuotes) {
            inQuotes = c != QLatin1Char('"');
            continue;
        }
        switch (c.unicode()) {
        case '"':
            inQuotes = true;
            break;
        case '\\':
        case '_':
        case '*':
            ++i;
            break;
        case ';':
            return false;
        case '[': {
            const int end = code.indexOf(QLatin1Char(']'), i);
            if (end < 0)
                return false;
            const QString inside = code.mid(i + 1, end - i - 1).toLower();
            if (!inside.isEmpty() && inside.count(inside.at(0)) == inside.size()
                && QStringLiteral("hms").contains(inside.at(0)))
                return true;
            i = end;
            break;
        }
        default:
            if (QStringLiteral("dmyhsDMYHS").contains(c))
                return true;
            break;
        }
    }
    return false;
}

} // namespace ExcelDates

namespace ExcelCells {

bool parseReference(QStringView reference, int *row, int *col)
{
    int i = 0;
    int column = 0;
    const int size = int(reference.size());
    while (i < size && i < 4) {
        const char16_t c = reference.at(i).unicode();
        const int letter = c >= 'a' && c <= 'z' ? c - 'a' : c >= 'A' && c <= 'Z' ? c - 'A' : -1;
        if (letter < 0)
            break;
        column = column * 26 + letter + 1;
        ++i;
    }
    if (i == 0 || column > MaxXlsxCols || i == size)
        return false;
    qint64 number = 0;
    for (int j = i; j < size; ++j) {
        const char16_t c = reference.at(j).unicode();
        if (c < '0' || c > '9' || j - i >= 8)
            return false;
        number = number * 10 + (c - '0');
    }
    if (number < 1 || number > MaxXlsxRows)
        return false;
    *row = int(number - 1);
    *col = column - 1;
    return true;
}

bool parseRange(QStringView range, ExcelRange *out)
{
    const int colon = int(range.indexOf(QLatin1Char(':')));
    ExcelRange parsed;
    if (colon < 0) {
        if (!parseReference(range, &parsed.firstRow, &parsed.firstCol))
            return false;
        parsed.lastRow = parsed.firstRow;
        parsed.lastCol = parsed.firstCol;
    } else if (!parseReference(range.left(colon), &parsed.firstRow, &parsed.firstCol)
               || !parseReference(range.mid(colon + 1), &parsed.lastRow, &parsed.lastCol)) {
        return false;
    }
    if (parsed.lastRow < parsed.firstRow)
        std::swap(parsed.lastRow, parsed.firstRow);
    if (parsed.lastCol < parsed.firstCol)
        std::swap(parsed.lastCol, parsed.firstCol);
    *out = parsed;
    return true;
}

QString columnName(int col)
{
    QString name;
    for (int n = col + 1; n > 0; n = (n - 1) / 26)
        name.prepend(QChar('A' + (n - 1) % 26));
    return name;
}

QString reference(int row, int col)
{
    return columnName(col) + QString::number(row + 1);
}

} // namespace ExcelCells

namespace ExcelSheetNames {

QStringList problems(const QString &name)
{
    QStringList problems;
    if (name.isEmpty())
        problems.append(QStringLiteral("\nSheet name cannot be empty."));
    if (name.size() > MaxLength)
        problems.append(QStringLiteral("\nSheet name length is %1 characters. Excel maximum "
                                       "sheet name length is %2 characters.")
                            .arg(name.size())
                            .arg(MaxLength));
    for (const QChar c : QStringLiteral("\\/*?:[]")) {
        if (name.contains(c))
            problems.append(QStringLiteral("\n'%1' is not allowed in Excel sheet names.").arg(c));
    }
    if (name.startsWith(QLatin1Char('\'')) || name.endsWith(QLatin1Char('\'')))
        problems.append(QStringLiteral(
            "\nApostrophes (') are not allowed at the start or end of Excel sheet names."));
    if (name.toLower() == QLatin1String("history"))
        problems.append(QStringLiteral("\n'History' is a reserved Excel sheet name."));
    return problems;
}

} // namespace ExcelSheetNames
