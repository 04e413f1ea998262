// Writes an XlsxBook as an Office Open XML package. Sheet XML is put together by hand into a
// buffer that is flushed to the zip entry a megabyte at a time: a million-row sheet is
// hundreds of megabytes of markup, and a general XML writer costs several times as much.

#include "io/xlsxbook.h"
#include "io/xlsxparts.h"

#include <QFileInfo>
#include <QSaveFile>

#include <quazip/quazip.h>

#include <algorithm>
#include <limits>

using namespace XlsxParts;

namespace {

QByteArray contentTypes(int sheetCount)
{
    QByteArray out
        = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
          "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
          "<Default Extension=\"rels\" ContentType=\"application/"
          "vnd.openxmlformats-package.relationships+xml\"/>"
          "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
          "<Override PartName=\"/xl/workbook.xml\" ContentType=\"application/"
          "vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml\"/>"
          "<Override PartName=\"/xl/styles.xml\" ContentType=\"application/"
          "vnd.openxmlformats-officedocument.spreadsheetml.styles+xml\"/>";
    for (int i = 1; i <= sheetCount; ++i)
        out += "<Override PartName=\"/xl/worksheets/sheet" + QByteArray::number(i)
            + ".xml\" ContentType=\"application/"
              "vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml\"/>";
    return out + "</Types>";
}

} // namespace

QByteArray XlsxBook::workbookXml() const
{
    QByteArray out = QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
                                "<workbook xmlns=\"")
        + MainNamespace + "\" xmlns:r=\"" + RelationshipNamespace + "\">";
    if (m_uses1904)
        out += "<workbookPr date1904=\"1\"/>";
    out += "<sheets>";
    for (size_t i = 0; i < m_sheets.size(); ++i) {
        out += "<sheet name=\"";
        appendEscaped(out, m_sheets[i]->name());
        out += "\" sheetId=\"" + QByteArray::number(qulonglong(i + 1)) + "\" r:id=\"rId"
            + QByteArray::number(qulonglong(i + 1)) + "\"/>";
    }
    // Formulas are written without their values: have them computed on opening.
    return out + "</sheets><calcPr fullCalcOnLoad=\"1\"/></workbook>";
}

QByteArray XlsxBook::stylesXml() const
{
    // Fonts: 0 plain, then one per distinct (bold, colour) pair that a format asks for.
    QList<QPair<bool, int>> fonts {{false, 0}};
    QByteArray numFmts;
    int customCount = 0;
    QHash<QString, int> customIds;
    QByteArray xfs;
    for (const ExcelFormat &format : m_formats) {
        const QPair<bool, int> font(format.bold, format.fontColor);
        if (!fonts.contains(font))
            fonts.append(font);
        int numberFormat = format.numberFormat;
        if (!format.numberFormatCode.isEmpty()) {
            if (!customIds.contains(format.numberFormatCode)) {
                const int id = 164 + customCount++;
                customIds.insert(format.numberFormatCode, id);
                numFmts += "<numFmt numFmtId=\"" + QByteArray::number(id) + "\" formatCode=\"";
                appendEscaped(numFmts, format.numberFormatCode);
                numFmts += "\"/>";
            }
            numberFormat = customIds.value(format.numberFormatCode);
        }
        xfs += "<xf numFmtId=\"" + QByteArray::number(numberFormat) + "\" fontId=\""
            + QByteArray::number(fonts.indexOf(font))
            + "\" fillId=\"0\" borderId=\"0\" xfId=\"0\" applyNumberFormat=\"1\" "
              "applyFont=\"1\"/>";
    }
    QByteArray out = QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
                                "<styleSheet xmlns=\"")
        + MainNamespace + "\">";
    if (customCount)
        out += "<numFmts count=\"" + QByteArray::number(customCount) + "\">" + numFmts
            + "</numFmts>";
    out += "<fonts count=\"" + QByteArray::number(fonts.size()) + "\">";
    for (const auto &font : qAsConst(fonts)) {
        out += "<font>";
        if (font.first)
            out += "<b/>";
        out += "<sz val=\"11\"/>";
        if (font.second)
            out += "<color indexed=\"" + QByteArray::number(font.second) + "\"/>";
        out += "<name val=\"Calibri\"/><family val=\"2\"/></font>";
    }
    out += "</fonts><fills count=\"2\"><fill><patternFill patternType=\"none\"/></fill>"
           "<fill><patternFill patternType=\"gray125\"/></fill></fills>"
           "<borders count=\"1\"><border><left/><right/><top/><bottom/><diagonal/></border>"
           "</borders><cellStyleXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" "
           "borderId=\"0\"/></cellStyleXfs>";
    out += "<cellXfs count=\"" + QByteArray::number(m_formats.size()) + "\">" + xfs
        + "</cellXfs><cellStyles count=\"1\"><cellStyle name=\"Normal\" xfId=\"0\" "
          "builtinId=\"0\"/></cellStyles></styleSheet>";
    return out;
}

bool XlsxBook::save(const QString &path)
{
    if (!m_path.isEmpty())
        return saveChanges(path);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        setError(file.errorString());
        return false;
    }
    bool ok = true;
    {
        QuaZip zip(&file);
        zip.setAutoClose(false); // QSaveFile commits only an open file
        if (!zip.open(QuaZip::mdCreate)) {
            setError(QStringLiteral("Unable to start the zip package (error %1).")
                         .arg(zip.getZipError()));
            file.cancelWriting();
            return false;
        }
        const int sheets = int(m_sheets.size());
        ok = writeWhole(zip, QStringLiteral("[Content_Types].xml"), contentTypes(sheets))
            && writeWhole(zip, QStringLiteral("_rels/.rels"),
                          relationships(relationship("rId1", "officeDocument",
                                                     QStringLiteral("xl/workbook.xml"))));
        QByteArray workbookRelationships;
        for (int i = 1; ok && i <= sheets; ++i) {
            const QByteArray id = "rId" + QByteArray::number(i);
            workbookRelationships
                += relationship(id, "worksheet", QStringLiteral("worksheets/sheet%1.xml").arg(i));
            ok = writeSheet(zip, *m_sheets[size_t(i - 1)], i);
        }
        workbookRelationships += relationship("rId" + QByteArray::number(sheets + 1), "styles",
                                              QStringLiteral("styles.xml"));
        ok = ok && writeWhole(zip, QStringLiteral("xl/workbook.xml"), workbookXml())
            && writeWhole(zip, QStringLiteral("xl/_rels/workbook.xml.rels"),
                          relationships(workbookRelationships))
            && writeWhole(zip, QStringLiteral("xl/styles.xml"), stylesXml());
        zip.close();
        ok = ok && zip.getZipError() == ZIP_OK;
    }
    if (!ok) {
        file.cancelWriting();
        if (errorMessage().isEmpty())
            setError(QStringLiteral("Unable to write the workbook."));
        return false;
    }
    if (!file.commit()) {
        setError(file.errorString());
        return false;
    }
    return true;
}

bool XlsxBook::writeSheet(QuaZip &zip, const XlsxSheet &sheet, int number)
{
    const QString part = QStringLiteral("xl/worksheets/sheet%1.xml").arg(number);
    PartWriter writer(zip, part);
    QByteArray &out = writer.buffer();
    out = QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
                     "<worksheet xmlns=\"")
        + MainNamespace + "\" xmlns:r=\"" + RelationshipNamespace + "\">";
    out += sheet.dimensionXml();
    out += sheet.columnsXml();
    out += "<sheetData>";
    sheet.appendRowsXml(writer.buffer(), [&] { writer.maybeFlush(); });
    out += "</sheetData>";
    QByteArray links;
    out += sheet.mergesXml();
    out += sheet.hyperlinksXml(&links, "rId");
    out += "</worksheet>";
    if (!writer.close())
        return false;
    if (links.isEmpty())
        return true;
    return writeWhole(zip, QStringLiteral("xl/worksheets/_rels/sheet%1.xml.rels").arg(number),
                      relationships(links));
}

// ---------------------------------------------------------------------------------------------

QByteArray XlsxSheet::columnsXml() const
{
    if (m_columns.isEmpty())
        return QByteArray();
    // Later entries were set first; a column takes the first entry that covers it.
    QMap<int, ColumnInfo> byColumn;
    for (const ColumnInfo &info : m_columns) {
        for (int c = info.first; c <= info.last && c < ExcelCells::MaxXlsxCols; ++c) {
            if (!byColumn.contains(c))
                byColumn.insert(c, {c, c, info.width, info.hidden});
        }
    }
    QByteArray out = "<cols>";
    for (const ColumnInfo &info : qAsConst(byColumn)) {
        out += "<col min=\"" + QByteArray::number(info.first + 1) + "\" max=\""
            + QByteArray::number(info.last + 1) + '"';
        if (info.width >= 0)
            out += " width=\"" + QByteArray::number(info.width, 'g', 10) + "\" customWidth=\"1\"";
        if (info.hidden)
            out += " hidden=\"1\"";
        out += "/>";
    }
    return out + "</cols>";
}

void XlsxSheet::appendRowsXml(QByteArray &out, const std::function<void()> &flush) const
{
    if (!m_indexed)
        index();
    const QStringList &shared = m_book->sharedStrings();
    // Rows that are hidden or have a height need an element even without cells; they are
    // merged in ascending order with the rows that have cells.
    QList<int> rowsWithAttributes
        = (m_hiddenRows + QSet<int>(m_rowHeights.keyBegin(), m_rowHeights.keyEnd())).values();
    std::sort(rowsWithAttributes.begin(), rowsWithAttributes.end());
    int nextAttributeRow = 0;
    auto openRowTag = [&](int row) {
        out += "<row r=\"" + QByteArray::number(row + 1) + '"';
        if (m_rowHeights.contains(row))
            out += " ht=\"" + QByteArray::number(m_rowHeights.value(row), 'g', 10)
                + "\" customHeight=\"1\"";
        if (m_hiddenRows.contains(row))
            out += " hidden=\"1\"";
        out += '>';
    };
    auto emptyRowsUpTo = [&](int row) {
        for (; nextAttributeRow < rowsWithAttributes.size()
             && rowsWithAttributes.at(nextAttributeRow) <= row;
             ++nextAttributeRow) {
            const int attributeRow = rowsWithAttributes.at(nextAttributeRow);
            if (attributeRow == row)
                continue;
            openRowTag(attributeRow);
            out += "</row>";
        }
    };
    int openRow = -1;
    for (const XlsxCell &cell : m_cells) {
        if (cell.row != openRow) {
            if (openRow >= 0)
                out += "</row>";
            emptyRowsUpTo(cell.row);
            openRow = cell.row;
            openRowTag(openRow);
            flush();
        }
        out += "<c r=\"";
        appendReference(out, cell.row, cell.col);
        out += '"';
        if (cell.style > 0)
            out += " s=\"" + QByteArray::number(cell.style) + '"';
        const QString formula = m_formulas.isEmpty() ? QString() : formulaOf(cell.row, cell.col);
        if (!formula.isEmpty()) {
            appendFormulaCell(out, cell, formula);
            continue;
        }
        switch (cell.type) {
        case ExcelCellType::Number:
            out += "><v>";
            out += QByteArray::number(cell.number, 'g', 17);
            out += "</v></c>";
            break;
        case ExcelCellType::Boolean:
            out += cell.boolean ? " t=\"b\"><v>1</v></c>" : " t=\"b\"><v>0</v></c>";
            break;
        case ExcelCellType::String:
            out += " t=\"inlineStr\"><is><t xml:space=\"preserve\">";
            appendEscaped(out, cell.ownText ? m_texts.value(cell.text) : shared.value(cell.text));
            out += "</t></is></c>";
            break;
        case ExcelCellType::Error:
        case ExcelCellType::StrictDate:
            out += cell.type == ExcelCellType::Error ? " t=\"e\"><v>" : " t=\"d\"><v>";
            appendEscaped(out, m_texts.value(cell.text));
            out += "</v></c>";
            break;
        default:
            out += "/>";
            break;
        }
    }
    if (openRow >= 0)
        out += "</row>";
    emptyRowsUpTo(std::numeric_limits<int>::max());
}

// A formula with the value it had when the book was read, so that a reader that doesn't
// compute still sees it; a formula written here has none yet.
void XlsxSheet::appendFormulaCell(QByteArray &out, const XlsxCell &cell,
                                  const QString &formula) const
{
    const QString text = cell.type == ExcelCellType::String || cell.type == ExcelCellType::Error
        ? (cell.ownText ? m_texts.value(cell.text) : m_book->sharedStrings().value(cell.text))
        : QString();
    switch (cell.type) {
    case ExcelCellType::String:
        out += text.isEmpty() ? ">" : " t=\"str\">";
        break;
    case ExcelCellType::Boolean:
        out += " t=\"b\">";
        break;
    case ExcelCellType::Error:
        out += " t=\"e\">";
        break;
    default:
        out += '>';
        break;
    }
    out += "<f>";
    appendEscaped(out, formula);
    out += "</f>";
    if (cell.type == ExcelCellType::Number) {
        out += "<v>" + QByteArray::number(cell.number, 'g', 17) + "</v>";
    } else if (cell.type == ExcelCellType::Boolean) {
        out += cell.boolean ? "<v>1</v>" : "<v>0</v>";
    } else if (!text.isEmpty()) {
        out += "<v>";
        appendEscaped(out, text);
        out += "</v>";
    }
    out += "</c>";
}

QByteArray XlsxSheet::mergesXml() const
{
    if (m_merges.isEmpty())
        return QByteArray();
    QByteArray out = "<mergeCells count=\"" + QByteArray::number(m_merges.size()) + "\">";
    for (const ExcelRange &range : m_merges)
        out += "<mergeCell ref=\"" + rangeText(range) + "\"/>";
    return out + "</mergeCells>";
}

QByteArray XlsxSheet::hyperlinksXml(QByteArray *linkRelationships, const QByteArray &idPrefix) const
{
    if (m_links.isEmpty())
        return QByteArray();
    // The prefix is declared here as well: the root of a sheet written by another program
    // need not declare it.
    QByteArray out = QByteArray("<hyperlinks xmlns:r=\"") + RelationshipNamespace + "\">";
    int id = 0;
    for (const ExcelHyperlink &link : m_links) {
        out += "<hyperlink ref=\"" + rangeText(link.range) + '"';
        if (link.target.startsWith(QLatin1Char('#'))) {
            out += " location=\"";
            appendEscaped(out, link.target.mid(1));
            out += '"';
        } else {
            const QByteArray rid = idPrefix + QByteArray::number(++id);
            *linkRelationships += relationship(rid, "hyperlink", link.target, true);
            out += " r:id=\"" + rid + '"';
        }
        out += "/>";
    }
    return out + "</hyperlinks>";
}

QByteArray XlsxSheet::dimensionXml() const
{
    if (lastRow() <= firstRow())
        return QByteArray();
    return "<dimension ref=\"" + rangeText({firstRow(), lastRow() - 1, firstCol(), lastCol() - 1})
        + "\"/>";
}

QByteArray XlsxSheet::rangeText(const ExcelRange &range)
{
    QByteArray out = ExcelCells::reference(range.firstRow, range.firstCol).toLatin1();
    if (range.lastRow != range.firstRow || range.lastCol != range.firstCol)
        out += ':' + ExcelCells::reference(range.lastRow, range.lastCol).toLatin1();
    return out;
}
