#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

// The spreadsheet operations that reading and writing Excel files are written against: a
// book of sheets, cells with their types, dates as serial numbers, the used range, hidden
// rows and columns, links, merges and formats. Each file format (xlsx, xls) implements it;
// everything above works through this interface only, so a format is swapped without
// touching the logic that turns sheets into datasets and back.

enum class ExcelCellType {
    Empty = 0,
    Number = 1,
    String = 2,
    Boolean = 3,
    Blank = 4, // a cell with a format and no value
    Error = 5,
    StrictDate = 6 // a date stored as text in ISO form (xlsx t="d")
};

struct ExcelRange
{
    int firstRow = 0;
    int lastRow = 0; // inclusive
    int firstCol = 0;
    int lastCol = 0; // inclusive

    bool contains(int row, int col) const
    {
        return row >= firstRow && row <= lastRow && col >= firstCol && col <= lastCol;
    }
    friend bool operator==(const ExcelRange &a, const ExcelRange &b)
    {
        return a.firstRow == b.firstRow && a.lastRow == b.lastRow && a.firstCol == b.firstCol
            && a.lastCol == b.lastCol;
    }
};

struct ExcelHyperlink
{
    ExcelRange range;
    // An address outside the book, or "#Sheet!A1" for a place inside it.
    QString target;
};

// A cell format as far as reading and writing datasets needs one: a built-in number format
// (14 date, 21 time, 49 text...) or a custom format code, a bold font and a font colour index.
struct ExcelFormat
{
    int numberFormat = 0;
    QString numberFormatCode; // a custom code; overrides numberFormat when not empty
    bool bold = false;
    int fontColor = 0; // 0: automatic; Excel's palette index otherwise (12 is blue)

    friend bool operator==(const ExcelFormat &a, const ExcelFormat &b)
    {
        return a.numberFormat == b.numberFormat && a.numberFormatCode == b.numberFormatCode
            && a.bold == b.bold && a.fontColor == b.fontColor;
    }
};

struct ExcelDateTime
{
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

class ExcelSheet
{
public:
    virtual ~ExcelSheet() = default;

    virtual QString name() const = 0;
    // Zero-based; lastRow() and lastCol() are one past the end, so an empty sheet has
    // firstRow() == lastRow().
    virtual int firstRow() const = 0;
    virtual int lastRow() const = 0;
    virtual int firstCol() const = 0;
    virtual int lastCol() const = 0;

    virtual ExcelCellType cellType(int row, int col) const = 0;
    virtual QString readStr(int row, int col) const = 0;
    virtual double readNum(int row, int col) const = 0;
    virtual bool readBool(int row, int col) const = 0;
    // Whether the number in the cell has a date or time format.
    virtual bool isDate(int row, int col) const = 0;

    virtual bool rowHidden(int row) const = 0;
    virtual bool colHidden(int col) const = 0;
    virtual QList<ExcelHyperlink> hyperlinks() const = 0;
    virtual QList<ExcelRange> merges() const = 0;
    // Widths in characters, heights in points; negative when the sheet gives none.
    virtual double colWidth(int col) const = 0;
    virtual double rowHeight(int row) const = 0;
    // An index into the book's formats; 0 is the default format.
    virtual int cellFormat(int row, int col) const = 0;
    // Says that the cells of the rows before `row` won't be read again, so that a big sheet
    // can give their memory back while it is turned into a dataset. Optional.
    virtual void discardRowsBefore(int row) { Q_UNUSED(row) }

    // Writing. Cells are written in any order; a later write to a cell replaces it.
    virtual void writeStr(int row, int col, const QString &text, int format = 0) = 0;
    virtual void writeNum(int row, int col, double value, int format = 0) = 0;
    virtual void writeBool(int row, int col, bool value, int format = 0) = 0;
    // The formula without its leading "=".
    virtual void writeFormula(int row, int col, const QString &formula, int format = 0) = 0;
    virtual void clear() = 0;
    virtual void addHyperlink(const ExcelHyperlink &link) = 0;
    virtual void setCol(int col, double width, bool hidden) = 0;
    virtual void setRow(int row, double height, bool hidden) = 0;
    virtual void setCellFormat(int row, int col, int format) = 0;
    virtual void setMerge(const ExcelRange &range) = 0;
};

class ExcelBook
{
public:
    virtual ~ExcelBook() = default;

    // A book for the file type (FileTypeXlsx or FileTypeXls); null for any other type.
    static std::unique_ptr<ExcelBook> create(int fileType);

    virtual bool load(const QString &path) = 0;
    // Writes the whole book; false with errorMessage() when it could not be written. The file
    // is replaced through a temporary file, so a failed save leaves what was there.
    virtual bool save(const QString &path) = 0;

    virtual int sheetCount() const = 0;
    // Null past the end. Worksheets only: chart sheets and macro sheets are not listed.
    virtual ExcelSheet *sheet(int index) = 0;
    // Without reading the sheet's cells where the format allows.
    virtual QString sheetName(int index);
    // Null, with errorMessage(), when the name is refused.
    virtual ExcelSheet *addSheet(const QString &name) = 0;

    virtual int addFormat(const ExcelFormat &format) = 0;
    virtual ExcelFormat format(int index) const = 0;

    // Whether serial numbers count from 1904-01-01 rather than 1900-01-00.
    virtual bool uses1904() const = 0;
    double datePack(const ExcelDateTime &date) const;
    bool dateUnpack(double serial, ExcelDateTime *date) const;

    QString errorMessage() const { return m_error; }
    // What this format's reader cannot see (hidden rows, links...), as lines for the item's
    // info after a read; empty when it sees everything the interface offers.
    virtual QStringList readerLimitations() const { return {}; }

protected:
    void setError(const QString &error) { m_error = error; }

private:
    QString m_error;
};

namespace ExcelDates {
// Serial numbers of the 1900 system keep Lotus 1-2-3's 29 February 1900 (serial 60), so
// serials below 61 are one day off; both directions honour it.
double pack(const ExcelDateTime &date, bool uses1904);
bool unpack(double serial, bool uses1904, ExcelDateTime *date);
// Whether a number format, built-in id or custom code, shows a date or a time.
bool isDateFormat(int numberFormat, const QString &code);
} // namespace ExcelDates

namespace ExcelSheetNames {
constexpr int MaxLength = 31;
// Why Excel would refuse the name, one line each starting with a line feed, as the message of
// a refused sheet lists them; empty for a good name.
QStringList problems(const QString &name);
} // namespace ExcelSheetNames

namespace ExcelCells {
// "B3" -> row 2, column 1; false for anything else, or beyond the limits of xlsx.
bool parseReference(QStringView reference, int *row, int *col);
bool parseRange(QStringView range, ExcelRange *out);
QString columnName(int col);
QString reference(int row, int col);
constexpr int MaxXlsxRows = 1048576;
constexpr int MaxXlsxCols = 16384;
constexpr int MaxXlsRows = 65536;
constexpr int MaxXlsCols = 256;
} // namespace ExcelCells
