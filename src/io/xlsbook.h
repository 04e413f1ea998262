#pragma once

#include "io/excelbook.h"
#include "io/excelcellstore.h"

#include <QHash>
#include <QVector>

#include <array>
#include <vector>

class XlsBook;

// One cell, held compactly: a full .xls sheet is 16.7 million of them. Rows and columns fit
// the format's limits of 65536 and 256.
struct XlsCell
{
    union {
        double number;
        int text; // into the book's shared strings, or the sheet's own texts with OwnText
    };
    quint16 row;
    quint8 col;
    quint8 type; // ExcelCellType
    quint16 format;
    quint8 flags;
    quint8 value; // a Boolean, or an error code

    enum Flags { OwnText = 1 };
};

class XlsSheet : public ExcelSheet
{
public:
    XlsSheet(XlsBook *book, const QString &name);

    QString name() const override { return m_name; }
    int firstRow() const override { return m_used.firstRow; }
    int lastRow() const override { return m_used.lastRow; }
    int firstCol() const override { return m_used.firstCol; }
    int lastCol() const override { return m_used.lastCol; }

    ExcelCellType cellType(int row, int col) const override;
    QString readStr(int row, int col) const override;
    double readNum(int row, int col) const override;
    bool readBool(int row, int col) const override;
    bool isDate(int row, int col) const override;

    bool rowHidden(int row) const override { return m_rows.value(row).hidden; }
    bool colHidden(int col) const override;
    QList<ExcelHyperlink> hyperlinks() const override { return m_links; }
    QList<ExcelRange> merges() const override { return m_merges; }
    double colWidth(int col) const override;
    double rowHeight(int row) const override;
    int cellFormat(int row, int col) const override;

    void writeStr(int row, int col, const QString &text, int format = 0) override;
    void writeNum(int row, int col, double value, int format = 0) override;
    void writeBool(int row, int col, bool value, int format = 0) override;
    void writeFormula(int row, int col, const QString &formula, int format = 0) override;
    void clear() override;
    void addHyperlink(const ExcelHyperlink &link) override;
    void setCol(int col, double width, bool hidden) override;
    void setRow(int row, double height, bool hidden) override;
    void setCellFormat(int row, int col, int format) override;
    void setMerge(const ExcelRange &range) override;

    // Reading fills the sheet through these; cells come in any order and the last one at a
    // position counts.
    void appendCell(const XlsCell &cell);
    int addText(const QString &text);
    qint64 cellCount() const { return qint64(m_cells.size()); }
    void writeError(int row, int col, int code, int format = 0);

    // For the writer: the cells sorted by row and column, and their texts.
    const std::vector<XlsCell> &cells() const;
    QString textOf(const XlsCell &cell) const;
    struct RowInfo
    {
        double height = -1; // points; negative for the default height
        bool hidden = false;
    };
    const QHash<int, RowInfo> &rowInfos() const { return m_rows; }

    // The texts Excel shows for its error codes, and back.
    static QString errorText(int code);
    static int errorCode(const QString &text);

private:
    struct ColumnInfo
    {
        double width = -1;
        bool hidden = false;
    };

    const XlsCell *find(int row, int col) const;
    void index() const;
    bool place(XlsCell &cell, int row, int col, int format);

    XlsBook *m_book;
    QString m_name;
    mutable std::vector<XlsCell> m_cells;
    // Start of each row's cells in m_cells, valid while m_indexed.
    mutable std::vector<int> m_rowStarts;
    mutable bool m_indexed = false;
    mutable bool m_sorted = true;
    QStringList m_texts;
    ExcelCellStore::UsedRange m_used;
    std::array<ColumnInfo, ExcelCells::MaxXlsCols> m_columns;
    QHash<int, RowInfo> m_rows;
    QList<ExcelHyperlink> m_links;
    QList<ExcelRange> m_merges;
};

// An Excel 97-2003 workbook (.xls): a BIFF8 record stream in a compound document. Books of
// that format are read by our own record reader, the older Excel 5.0/95 ones (BIFF5) by
// FreeXL; writing is BIFF8 always. All sheets are read at load(), and save() writes every
// sheet, loaded or new, with the values, number formats, bold and colour of fonts, column
// widths, row heights, hidden states, merges and links the book holds.
class XlsBook : public ExcelBook
{
public:
    enum class Reader {
        Automatic, // our reader for BIFF8, FreeXL for older books
        FreeXL // FreeXL for every book
    };

    XlsBook();
    ~XlsBook() override;

    bool load(const QString &path) override;
    bool save(const QString &path) override;

    int sheetCount() const override { return int(m_sheets.size()); }
    ExcelSheet *sheet(int index) override;
    ExcelSheet *addSheet(const QString &name) override;

    int addFormat(const ExcelFormat &format) override;
    ExcelFormat format(int index) const override { return m_formats.value(index); }
    bool uses1904() const override { return m_uses1904; }
    QStringList readerLimitations() const override { return m_limitations; }

    void setReader(Reader reader) { m_reader = reader; }

    // Why Excel would refuse a sheet name in this book, one reason a line; empty when the
    // name is fine.
    QStringList sheetNameProblems(const QString &name) const;

    // For the readers.
    XlsSheet *appendSheet(const QString &name);
    void setUses1904(bool uses1904) { m_uses1904 = uses1904; }
    void setFormats(const QVector<ExcelFormat> &formats);
    QStringList &sharedStrings() { return m_sharedStrings; }
    void setLimitations(const QStringList &lines) { m_limitations = lines; }

    // For the sheets and the writer.
    const QStringList &sharedStrings() const { return m_sharedStrings; }
    bool formatIsDate(int format) const
    {
        return format >= 0 && format < m_dateFormats.size() && m_dateFormats.at(format);
    }
    const QVector<ExcelFormat> &formats() const { return m_formats; }
    const XlsSheet &sheetAt(int index) const { return *m_sheets.at(size_t(index)); }

private:
    void reset();

    Reader m_reader = Reader::Automatic;
    bool m_uses1904 = false;
    std::vector<std::unique_ptr<XlsSheet>> m_sheets;
    QStringList m_sharedStrings;
    QVector<ExcelFormat> m_formats;
    QVector<bool> m_dateFormats;
    QStringList m_limitations;
};

// The book of the .xls file type, for ExcelBook::create().
std::unique_ptr<ExcelBook> createXlsBook();
