// Reading a workbook through FreeXL, the reader of the older Excel 5.0/95 books (BIFF5).
//
// FreeXL trusts the file: a record longer than its kind allows, or cells outside the size a
// sheet declares, can make it read past its buffers or give up with no error; it allocates
// every declared cell of every sheet up front; and it converts a date by counting days one
// at a time. So the stream is walked here first, and FreeXL sees only books it survives.
// What FreeXL gives back also has its limits: formulas come back empty, true and false as the
// numbers 1 and 0, error values as 1; dates as text to the second, in a calendar that makes
// every fourth year a leap year.

#include "io/biff.h"
#include "io/xlsbook.h"

#include <QFile>

#include <freexl.h>

#include <cstdio>

namespace {

using namespace Biff;

// What FreeXL may allocate for the declared sheets (16 bytes a cell), and how many days
// its date conversion may count in all, about a second's work.
constexpr qint64 MaxDeclaredCells = qint64(64) << 20;
constexpr double MaxDateDays = 2e9;

QString damagedText(const char *detail)
{
    return QStringLiteral("The workbook file is damaged: %1.").arg(QLatin1String(detail));
}

QString freexlMessage(int code)
{
    switch (code) {
    case FREEXL_FILE_NOT_FOUND:
        return QStringLiteral("The file cannot be read.");
    case FREEXL_INSUFFICIENT_MEMORY:
        return QStringLiteral("There is not enough memory to read the workbook.");
    case FREEXL_INVALID_CFBF_HEADER:
    case FREEXL_CFBF_INVALID_SIGNATURE:
    case FREEXL_CFBF_INVALID_SECTOR_SIZE:
        return QStringLiteral("The file is not an Excel workbook.");
    case FREEXL_BIFF_INVALID_BOF:
    case FREEXL_BIFF_WORKBOOK_NOT_FOUND:
        return QStringLiteral("The file holds no workbook that can be read.");
    case FREEXL_BIFF_INVALID_SST:
    case FREEXL_BIFF_ILLEGAL_SST_INDEX:
        return damagedText("its table of texts is broken");
    case FREEXL_INVALID_CHARACTER:
    case FREEXL_UNSUPPORTED_CHARSET:
        return QStringLiteral("The workbook's texts are in a character set that cannot be read.");
    case FREEXL_ILLEGAL_CELL_ROW_COL:
    case FREEXL_ILLEGAL_RK_VALUE:
        return damagedText("a cell is broken");
    case FREEXL_CRAFTED_FILE:
        return damagedText("its records contradict each other");
    default:
        if (code <= FREEXL_CFBF_READ_ERROR && code >= FREEXL_CFBF_ILLEGAL_FAT_ENTRY)
            return damagedText("its container is broken");
        return QStringLiteral("The workbook could not be read (error %1).").arg(code);
    }
}

// The checks made before FreeXL opens the book.
class Guard
{
public:
    explicit Guard(const QByteArray &stream)
        : m_stream(stream)
        , m_biff8(version(stream) == Biff8)
    { }
    bool check(QString *error);

private:
    bool fail(const QString &error)
    {
        m_error = error;
        return false;
    }
    bool checkGlobals();
    bool checkSheet(quint32 offset);
    bool checkCell(const Record &record, int rows, int cols);
    void countDate(int xf, double value);

    const QByteArray &m_stream;
    bool m_biff8;
    QString m_error;
    QVector<int> m_xfFormats;
    QHash<int, QString> m_codes;
    QVector<quint32> m_sheetOffsets;
    qint64 m_declaredCells = 0;
    double m_dateDays = 0;
    int m_sharedStrings = 0;
};

bool Guard::check(QString *error)
{
    // A BIFF8 stream must first pass our own reader, whose checks of the shared texts FreeXL
    // needs and lacks.
    if (m_biff8) {
        XlsBook scratch;
        if (!read(m_stream, &scratch, error))
            return false;
        m_sharedStrings = scratch.sharedStrings().size();
    }
    bool ok = checkGlobals();
    for (int i = 0; ok && i < m_sheetOffsets.size(); ++i)
        ok = checkSheet(m_sheetOffsets.at(i));
    if (ok && m_dateDays > MaxDateDays)
        ok = fail(QStringLiteral("The workbook holds more dates than its older format can be "
                                 "read with in reasonable time."));
    if (!ok)
        *error = m_error;
    return ok;
}

bool Guard::checkGlobals()
{
    Records records(m_stream, 0);
    Record record;
    records.next(&record);
    while (records.next(&record)) {
        const uchar *d = record.data;
        if (record.id == FilePass)
            return fail(QStringLiteral("The workbook is protected with a password. Save it "
                                       "without one in Excel to read it."));
        if (record.id == Xf && record.size >= 4)
            m_xfFormats.append(u16(d + 2));
        if (record.id == BoundSheet && record.size >= 6)
            m_sheetOffsets.append(u32(d));
        // Only the codes of custom formats matter for telling dates; they are plain enough
        // to read as Latin-1 in either version.
        if ((record.id == Format || record.id == 0x001E) && record.size >= 3) {
            const int length = m_biff8 ? u16(d + 2) : d[2];
            const int start = m_biff8 ? 5 : 3;
            const bool wide = m_biff8 && record.size > 4 && (d[4] & 1);
            const int bytes = length * (wide ? 2 : 1);
            if (start + bytes <= record.size && !wide)
                m_codes.insert(
                    u16(d), QString::fromLatin1(reinterpret_cast<const char *>(d + start), length));
        }
        if (record.id == Eof)
            return true;
    }
    return fail(damagedText("the workbook part ends early"));
}

bool Guard::checkSheet(quint32 offset)
{
    Records records(m_stream, int(qMin<quint32>(offset, quint32(m_stream.size()))));
    Record record;
    if (!records.next(&record) || record.id != Bof)
        return fail(damagedText("a sheet's records are missing"));
    int rows = ExcelCells::MaxXlsRows;
    int cols = ExcelCells::MaxXlsCols;
    int depth = 1;
    while (depth > 0 && records.next(&record)) {
        if (record.id == Bof) {
            ++depth;
        } else if (record.id == Eof) {
            --depth;
        } else if (depth == 1 && record.id == Dimensions) {
            const int size = m_biff8 ? 14 : 10;
            if (record.size < size)
                return fail(damagedText("a sheet's size record is too short"));
            const qint64 lastRow = m_biff8 ? u32(record.data + 4) : u16(record.data + 2);
            const int lastCol = u16(record.data + (m_biff8 ? 10 : 6));
            if (lastRow > ExcelCells::MaxXlsRows || lastCol > ExcelCells::MaxXlsCols)
                return fail(damagedText("a sheet declares more rows or columns than an .xls "
                                        "sheet can have"));
            rows = int(lastRow);
            cols = lastCol;
            m_declaredCells += qint64(rows) * cols;
            if (m_declaredCells > MaxDeclaredCells)
                return fail(QStringLiteral("The workbook's sheets declare more cells than "
                                           "can be read in memory."));
        } else if (depth == 1 && !checkCell(record, rows, cols)) {
            return false;
        }
    }
    if (depth > 0)
        return fail(damagedText("a sheet ends early"));
    return true;
}

// Cell records of the sizes their kind has, inside the sheet's declared size.
bool Guard::checkCell(const Record &record, int rows, int cols)
{
    int fixed = 0;
    switch (record.id) {
    case Number:
        fixed = 14;
        break;
    case Rk:
    case LabelSst:
        fixed = 10;
        break;
    case BoolErr:
        fixed = 8;
        break;
    case Blank:
        fixed = 6;
        break;
    case MulRk:
    case MulBlank:
    case Label:
    case RString:
    case Formula:
        break;
    default:
        return true;
    }
    const uchar *d = record.data;
    const int size = record.size;
    const int unit = record.id == MulRk ? 6 : 2;
    const bool multiple = record.id == MulRk || record.id == MulBlank;
    bool sound = fixed ? size == fixed : size >= (record.id == Formula ? 20 : 8);
    if (multiple)
        sound = size >= 6 + unit && (size - 6) % unit == 0;
    if (record.id == Label && sound && m_biff8)
        sound = size >= 9 && 9 + u16(d + 6) * (d[8] & 1 ? 2 : 1) <= size;
    else if (record.id == Label && sound)
        sound = 8 + u16(d + 6) <= size;
    if (!sound)
        return fail(damagedText("a cell record has the wrong length"));
    const int lastCol = u16(d + 2) + (multiple ? (size - 6) / unit - 1 : 0);
    if (u16(d) >= rows || lastCol >= cols)
        return fail(damagedText("cells lie outside the size their sheet declares"));
    if (record.id == LabelSst && u32(d + 6) >= quint32(m_sharedStrings))
        return fail(damagedText("a cell refers to a text that is missing"));
    if (record.id == Number)
        countDate(u16(d + 4), f64(d + 6));
    else if (record.id == Rk)
        countDate(u16(d + 4), rk(u32(d + 6)));
    else if (record.id == MulRk)
        for (int i = 0; 6 + 6 * i + 6 <= size; ++i)
            countDate(u16(d + 4 + 6 * i), rk(u32(d + 6 + 6 * i)));
    return true;
}

void Guard::countDate(int xf, double value)
{
    if (value < 1 || xf >= m_xfFormats.size())
        return;
    const int format = m_xfFormats.at(xf);
    if (ExcelDates::isDateFormat(format, format >= 50 ? m_codes.value(format) : QString()))
        m_dateDays += qMin(value, 1e12);
}

// FreeXL writes dates by counting days from its start in a calendar where every fourth year
// is a leap year. Counting back in the same calendar gives the serial number it started
// from, and so the true date even where its calendar has drifted from the real one.
double freexlSerial(const char *text, int type, bool uses1904)
{
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    if (type == FREEXL_CELL_TIME)
        std::sscanf(text, "%d:%d:%d", &hour, &minute, &second);
    else
        std::sscanf(text, "%d-%d-%d %d:%d:%d", &year, &month, &day, &hour, &minute, &second);
    double days = 0;
    if (type != FREEXL_CELL_TIME) {
        auto dayNumber = [](int y, int m, int d) {
            static const int before[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
            const int monthIndex = qBound(1, m, 12) - 1;
            return qint64(y) * 365 + (y + 3) / 4 + before[monthIndex]
                + (y % 4 == 0 && monthIndex >= 2 ? 1 : 0) + d;
        };
        const qint64 start = uses1904 ? dayNumber(1904, 1, 2) : dayNumber(1900, 1, 1);
        days = double(dayNumber(year, month, day) - start + 1);
    }
    return days + (hour * 3600.0 + minute * 60.0 + second) / 86400.0;
}

bool readCells(const void *handle, XlsSheet *sheet, XlsBook *book, const int dateFormats[3])
{
    unsigned int rows = 0;
    unsigned short cols = 0;
    if (freexl_worksheet_dimensions(handle, &rows, &cols) != FREEXL_OK)
        return false;
    for (unsigned int r = 0; r < rows; ++r) {
        for (unsigned short c = 0; c < cols; ++c) {
            FreeXL_CellValue value;
            if (freexl_get_cell_value(handle, r, c, &value) != FREEXL_OK)
                return false;
            switch (value.type) {
            case FREEXL_CELL_INT:
                sheet->writeNum(int(r), c, value.value.int_value);
                break;
            case FREEXL_CELL_DOUBLE:
                sheet->writeNum(int(r), c, value.value.double_value);
                break;
            case FREEXL_CELL_TEXT:
            case FREEXL_CELL_SST_TEXT:
                sheet->writeStr(int(r), c, QString::fromUtf8(value.value.text_value));
                break;
            case FREEXL_CELL_DATE:
            case FREEXL_CELL_DATETIME:
            case FREEXL_CELL_TIME:
                sheet->writeNum(int(r), c,
                                freexlSerial(value.value.text_value, value.type, book->uses1904()),
                                dateFormats[value.type - FREEXL_CELL_DATE]);
                break;
            default:
                break;
            }
        }
    }
    return true;
}

} // namespace

namespace Biff {

bool readWithFreeXL(const QString &path, const QByteArray &stream, XlsBook *book, QString *error)
{
    if (!Guard(stream).check(error))
        return false;
    const void *handle = nullptr;
    const int opened = freexl_open(QFile::encodeName(path).constData(), &handle);
    // FreeXL asks to be closed even when opening failed.
    struct Closer
    {
        const void *handle;
        ~Closer()
        {
            if (handle)
                freexl_close(handle);
        }
    } closer {handle};
    // On some damage FreeXL reports success and gives no handle.
    if (opened != FREEXL_OK || !handle) {
        *error = opened != FREEXL_OK ? freexlMessage(opened)
                                     : damagedText("its records could not be read");
        return false;
    }
    unsigned int info = 0;
    if (freexl_get_info(handle, FREEXL_BIFF_PASSWORD, &info) == FREEXL_OK
        && info == FREEXL_BIFF_OBFUSCATED) {
        *error = QStringLiteral("The workbook is protected with a password. Save it without one "
                                "in Excel to read it.");
        return false;
    }
    book->setUses1904(freexl_get_info(handle, FREEXL_BIFF_DATEMODE, &info) == FREEXL_OK
                      && info == FREEXL_BIFF_DATEMODE_1904);
    unsigned int sheets = 0;
    freexl_get_info(handle, FREEXL_BIFF_SHEET_COUNT, &sheets);
    // Built-in formats for FreeXL's date, date-and-time and time cells.
    const int dateFormats[3]
        = {book->addFormat({14, QString(), false, 0}), book->addFormat({22, QString(), false, 0}),
           book->addFormat({21, QString(), false, 0})};
    for (unsigned int s = 0; s < sheets && s < 0xFFFF; ++s) {
        const char *name = nullptr;
        if (freexl_get_worksheet_name(handle, quint16(s), &name) != FREEXL_OK
            || freexl_select_active_worksheet(handle, quint16(s)) != FREEXL_OK) {
            *error = damagedText("a sheet cannot be found");
            return false;
        }
        XlsSheet *sheet = book->appendSheet(QString::fromUtf8(name));
        if (!readCells(handle, sheet, book, dateFormats)) {
            *error = damagedText("a cell is broken");
            return false;
        }
    }
    book->setLimitations({QStringLiteral(
        "This older .xls format is read without formulas, hidden rows and columns, links and "
        "merged cells, and true and false read as 1 and 0.")});
    return true;
}

} // namespace Biff
