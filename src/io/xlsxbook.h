#pragma once

#include "io/excelbook.h"
#include "io/excelcellstore.h"

#include <QHash>
#include <QSet>
#include <QVector>

#include <functional>
#include <vector>

class QuaZip;
class XlsxBook;

// The cells of one sheet, held compactly: tens of millions of cells are read from big
// workbooks, so a cell is a fixed record and its text lives in the book's or sheet's tables.
struct XlsxCell
{
    int row;
    int col;
    int style;
    ExcelCellType type;
    bool ownText; // the text index is into the sheet's texts, not the shared strings
    union {
        double number;
        int text;
        bool boolean;
    };
};

class XlsxSheet : public ExcelSheet
{
public:
    XlsxSheet(XlsxBook *book, const QString &name, const QString &partName);

    QString name() const override { return m_name; }
    QString partName() const { return m_partName; }
    void setPartName(const QString &part) { m_partName = part; }
    // Whether anything was written since the sheet was read, and whether its columns were.
    bool isChanged() const { return m_changed; }
    bool columnsChanged() const { return m_columnsChanged; }
    int firstRow() const override;
    int lastRow() const override;
    int firstCol() const override;
    int lastCol() const override;

    ExcelCellType cellType(int row, int col) const override;
    QString readStr(int row, int col) const override;
    double readNum(int row, int col) const override;
    bool readBool(int row, int col) const override;
    bool isDate(int row, int col) const override;

    bool rowHidden(int row) const override { return m_hiddenRows.contains(row); }
    bool colHidden(int col) const override;
    QList<ExcelHyperlink> hyperlinks() const override { return m_links; }
    QList<ExcelRange> merges() const override { return m_merges; }
    double colWidth(int col) const override;
    double rowHeight(int row) const override { return m_rowHeights.value(row, -1); }
    int cellFormat(int row, int col) const override;
    void discardRowsBefore(int row) override;

    void writeStr(int row, int col, const QString &text, int format = 0) override;
    void writeNum(int row, int col, double value, int format = 0) override;
    void writeBool(int row, int col, bool value, int format = 0) override;
    void writeFormula(int row, int col, const QString &formula, int format = 0) override;
    void clear() override;
    void addHyperlink(const ExcelHyperlink &link) override
    {
        m_links.append(link);
        m_changed = true;
    }
    void setCol(int col, double width, bool hidden) override;
    void setRow(int row, double height, bool hidden) override;
    void setCellFormat(int row, int col, int format) override;
    void setMerge(const ExcelRange &range) override
    {
        m_merges.append(range);
        m_changed = true;
    }

    // Reading fills the sheet through these.
    void appendCell(const XlsxCell &cell);
    void reserveCells(qint64 count) { m_cells.reserve(size_t(count)); }
    int addText(const QString &text);
    void addColumnInfo(int firstCol, int lastCol, double width, bool hidden);
    void finishLoading();
    bool isLoaded() const { return m_loaded; }
    void setLoaded() { m_loaded = true; }
    const std::vector<XlsxCell> &cells() const { return m_cells; }
    QString formulaOf(int row, int col) const { return m_formulas.value(qMakePair(row, col)); }
    void setFormula(int row, int col, const QString &formula);

    // Writing the sheet part: the <cols> element, the rows of <sheetData> (calling flush
    // between rows so the caller can empty the buffer), and what follows the rows; links to
    // outside the book add their relationships.
    QByteArray dimensionXml() const;
    QByteArray columnsXml() const;
    void appendRowsXml(QByteArray &out, const std::function<void()> &flush) const;
    QByteArray mergesXml() const;
    // Relationship ids of links are idPrefix and a number.
    QByteArray hyperlinksXml(QByteArray *linkRelationships, const QByteArray &idPrefix) const;
    static QByteArray rangeText(const ExcelRange &range);

private:
    struct ColumnInfo
    {
        int first;
        int last;
        double width;
        bool hidden;
    };

    const XlsxCell *find(int row, int col) const;
    void appendFormulaCell(QByteArray &out, const XlsxCell &cell, const QString &formula) const;
    void write(XlsxCell cell, int row, int col, int format);
    void index() const;

    XlsxBook *m_book;
    QString m_name;
    QString m_partName;
    bool m_loaded = false;
    bool m_changed = false;
    bool m_columnsChanged = false;
    std::vector<XlsxCell> m_cells;
    QStringList m_texts;
    QHash<QPair<int, int>, QString> m_formulas;
    // Start of each row's cells in m_cells, rebuilt after writes; size lastRow + 1.
    mutable std::vector<int> m_rowStarts;
    mutable bool m_indexed = false;
    mutable bool m_sorted = true;
    int m_discardedRows = 0;
    ExcelCellStore::UsedRange m_used;
    QSet<int> m_hiddenRows;
    QHash<int, double> m_rowHeights;
    QVector<ColumnInfo> m_columns;
    QList<ExcelHyperlink> m_links;
    QList<ExcelRange> m_merges;
};

// An Office Open XML workbook (.xlsx), read from its zip package by streaming each part.
// Sheets are parsed when first asked for, so listing the sheets of a big book is cheap.
class XlsxBook : public ExcelBook
{
public:
    XlsxBook();
    ~XlsxBook() override;

    bool load(const QString &path) override;
    bool save(const QString &path) override;

    int sheetCount() const override { return int(m_sheets.size()); }
    ExcelSheet *sheet(int index) override;
    QString sheetName(int index) override
    {
        return index >= 0 && index < sheetCount() ? m_sheets.at(size_t(index))->name() : QString();
    }
    ExcelSheet *addSheet(const QString &name) override;

    int addFormat(const ExcelFormat &format) override;
    ExcelFormat format(int index) const override;
    bool uses1904() const override { return m_uses1904; }

    // For the sheet reader: the shared strings, and whether a style shows dates.
    const QStringList &sharedStrings() const { return m_sharedStrings; }
    bool styleIsDate(int style) const
    {
        return style >= 0 && style < m_dateStyles.size() && m_dateStyles.at(style);
    }
    // Dimensions larger than this are refused when a sheet is read, whatever it declares.
    static constexpr qint64 MaxCells = qint64(200) * 1000 * 1000;

private:
    friend class XlsxBookUpdate;

    bool loadSheet(XlsxSheet *sheet);
    // Saving a book that was loaded: the parts it changed are rewritten, the others copied.
    bool saveChanges(const QString &path);
    bool writeSheet(QuaZip &zip, const XlsxSheet &sheet, int number);
    QByteArray workbookXml() const;
    QByteArray stylesXml() const;
    bool readWorkbook(QuaZip &zip, const QString &workbookPart);
    bool readStyles(QuaZip &zip, const QString &part);
    bool readSharedStrings(QuaZip &zip, const QString &part);

    QString m_path;
    // What the loaded package holds, for changing it: the parts of the workbook and the
    // styles, how many formats, fonts and sheets it had, and its highest number format id.
    QString m_workbookPart;
    QString m_stylesPart;
    int m_loadedFormatCount = 0;
    int m_loadedFontCount = 0;
    int m_loadedSheetCount = 0;
    int m_maxNumberFormatId = 163;
    bool m_uses1904 = false;
    std::vector<std::unique_ptr<XlsxSheet>> m_sheets;
    QStringList m_sharedStrings;
    QVector<bool> m_dateStyles;
    QVector<ExcelFormat> m_formats;
};
