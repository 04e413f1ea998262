#include "io/xlsxbook.h"

#include "io/xlsxpackage.h"

#include <QFileInfo>
#include <QXmlStreamReader>

#include <quazip/quazip.h>

#include <algorithm>

namespace {

bool isTrue(QStringView value)
{
    return value == QLatin1String("1") || value == QLatin1String("true");
}

// The text of an <si> or <is> element: its <t> children, or the <t> of each run, leaving
// out phonetic guides. Leaves the reader at the element's end.
QString readRichText(QXmlStreamReader &reader)
{
    QString text;
    int depth = 1;
    bool phonetic = false;
    while (depth > 0 && !reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            ++depth;
            if (reader.name() == QLatin1String("rPh"))
                phonetic = true;
            else if (reader.name() == QLatin1String("t") && !phonetic)
                text += reader.readElementText(), --depth;
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            if (reader.name() == QLatin1String("rPh"))
                phonetic = false;
            break;
        default:
            break;
        }
    }
    return XlsxPackage::decodeEscapes(text);
}

} // namespace

XlsxBook::XlsxBook()
{
    m_formats.append(ExcelFormat());
}

XlsxBook::~XlsxBook() = default;

bool XlsxBook::load(const QString &path)
{
    m_sheets.clear();
    m_sharedStrings.clear();
    m_dateStyles.clear();
    m_formats = {ExcelFormat()};
    m_uses1904 = false;
    m_path = path;
    m_workbookPart.clear();
    m_stylesPart.clear();
    m_loadedFontCount = 0;
    m_maxNumberFormatId = 163;

    QuaZip zip(path);
    if (!zip.open(QuaZip::mdUnzip)) {
        setError(QStringLiteral("'%1' is not a zip package (error %2).")
                     .arg(QFileInfo(path).fileName())
                     .arg(zip.getZipError()));
        return false;
    }
    QString error;
    QString workbookPart = QStringLiteral("xl/workbook.xml");
    const auto rootRelationships = XlsxPackage::readRelationships(zip, QString(), &error);
    for (const XlsxPackage::Relationship &relationship : rootRelationships) {
        if (relationship.type == QLatin1String("officeDocument"))
            workbookPart = relationship.target;
    }
    if (!XlsxPackage::hasPart(zip, workbookPart)) {
        setError(QStringLiteral("'%1' is not an Excel workbook: it has no workbook part.")
                     .arg(QFileInfo(path).fileName()));
        return false;
    }
    if (!readWorkbook(zip, workbookPart))
        return false;
    m_workbookPart = workbookPart;
    m_loadedFormatCount = m_formats.size();
    m_loadedSheetCount = sheetCount();
    return true;
}

bool XlsxBook::readWorkbook(QuaZip &zip, const QString &workbookPart)
{
    QString error;
    const auto relationships = XlsxPackage::readRelationships(zip, workbookPart, &error);
    QList<QPair<QString, QString>> sheets; // name, relationship id
    const bool read = XlsxPackage::readPart(
        zip, workbookPart,
        [&](QXmlStreamReader &reader, QString *) {
            while (!reader.atEnd()) {
                if (reader.readNext() != QXmlStreamReader::StartElement)
                    continue;
                const QXmlStreamAttributes attributes = reader.attributes();
                if (reader.name() == QLatin1String("workbookPr")) {
                    m_uses1904 = isTrue(attributes.value(QLatin1String("date1904")));
                } else if (reader.name() == QLatin1String("sheet")) {
                    QString id;
                    for (const QXmlStreamAttribute &attribute : attributes) {
                        if (attribute.name() == QLatin1String("id"))
                            id = attribute.value().toString();
                    }
                    sheets.append({attributes.value(QLatin1String("name")).toString(), id});
                }
            }
            return true;
        },
        &error);
    if (!read) {
        setError(error);
        return false;
    }
    for (const XlsxPackage::Relationship &relationship : relationships) {
        if (relationship.type == QLatin1String("styles") && !readStyles(zip, relationship.target))
            return false;
        if (relationship.type == QLatin1String("sharedStrings")
            && !readSharedStrings(zip, relationship.target))
            return false;
    }
    for (const auto &sheet : qAsConst(sheets)) {
        const XlsxPackage::Relationship relationship = relationships.value(sheet.second);
        if (relationship.type != QLatin1String("worksheet") || relationship.external)
            continue;
        m_sheets.push_back(std::make_unique<XlsxSheet>(this, sheet.first, relationship.target));
    }
    return true;
}

bool XlsxBook::readStyles(QuaZip &zip, const QString &part)
{
    QHash<int, QString> codes;
    QVector<bool> fontBold;
    QString error;
    const bool read = XlsxPackage::readPart(
        zip, part,
        [&](QXmlStreamReader &reader, QString *) {
            bool inCellXfs = false;
            bool inFonts = false;
            while (!reader.atEnd()) {
                const QXmlStreamReader::TokenType token = reader.readNext();
                if (token == QXmlStreamReader::EndElement) {
                    if (reader.name() == QLatin1String("cellXfs"))
                        inCellXfs = false;
                    else if (reader.name() == QLatin1String("fonts"))
                        inFonts = false;
                    continue;
                }
                if (token != QXmlStreamReader::StartElement)
                    continue;
                const auto name = reader.name();
                const QXmlStreamAttributes attributes = reader.attributes();
                if (name == QLatin1String("numFmt")) {
                    const int id = attributes.value(QLatin1String("numFmtId")).toInt();
                    codes.insert(id, attributes.value(QLatin1String("formatCode")).toString());
                    m_maxNumberFormatId = std::max(m_maxNumberFormatId, id);
                } else if (name == QLatin1String("fonts")) {
                    inFonts = true;
                } else if (inFonts && name == QLatin1String("font")) {
                    fontBold.append(false);
                } else if (inFonts && name == QLatin1String("b") && !fontBold.isEmpty()) {
                    fontBold.last() = !attributes.hasAttribute(QLatin1String("val"))
                        || isTrue(attributes.value(QLatin1String("val")));
                } else if (name == QLatin1String("cellXfs")) {
                    inCellXfs = true;
                    m_formats.clear();
                } else if (inCellXfs && name == QLatin1String("xf")) {
                    ExcelFormat format;
                    format.numberFormat = attributes.value(QLatin1String("numFmtId")).toInt();
                    format.numberFormatCode = codes.value(format.numberFormat);
                    const int font = attributes.value(QLatin1String("fontId")).toInt();
                    format.bold = font >= 0 && font < fontBold.size() && fontBold.at(font);
                    m_formats.append(format);
                }
            }
            return true;
        },
        &error);
    if (!read) {
        setError(error);
        return false;
    }
    if (m_formats.isEmpty())
        m_formats.append(ExcelFormat());
    m_stylesPart = part;
    m_loadedFontCount = fontBold.size();
    m_dateStyles.resize(m_formats.size());
    for (int i = 0; i < m_formats.size(); ++i) {
        const ExcelFormat &format = m_formats.at(i);
        m_dateStyles[i] = ExcelDates::isDateFormat(format.numberFormat, format.numberFormatCode);
    }
    return true;
}

bool XlsxBook::readSharedStrings(QuaZip &zip, const QString &part)
{
    QString error;
    const bool read = XlsxPackage::readPart(
        zip, part,
        [&](QXmlStreamReader &reader, QString *) {
            const int count = reader.attributes().value(QLatin1String("uniqueCount")).toInt();
            // A declared count is only a hint: a lying one must not reserve gigabytes.
            m_sharedStrings.reserve(qBound(0, count, 1 << 20));
            while (!reader.atEnd()) {
                if (reader.readNext() == QXmlStreamReader::StartElement
                    && reader.name() == QLatin1String("si"))
                    m_sharedStrings.append(readRichText(reader));
            }
            return true;
        },
        &error);
    if (!read)
        setError(error);
    return read;
}

ExcelSheet *XlsxBook::sheet(int index)
{
    if (index < 0 || index >= sheetCount())
        return nullptr;
    XlsxSheet *found = m_sheets.at(size_t(index)).get();
    if (!found->isLoaded() && !loadSheet(found))
        return nullptr;
    return found;
}

ExcelSheet *XlsxBook::addSheet(const QString &name)
{
    const QStringList problems = ExcelSheetNames::problems(name);
    if (!problems.isEmpty()) {
        setError(problems.join(QString()).trimmed());
        return nullptr;
    }
    for (const auto &existing : m_sheets) {
        if (existing->name().compare(name, Qt::CaseInsensitive) == 0) {
            setError(QStringLiteral("A sheet named '%1' already exists.").arg(name));
            return nullptr;
        }
    }
    const QString part = QStringLiteral("xl/worksheets/sheet%1.xml").arg(m_sheets.size() + 1);
    m_sheets.push_back(std::make_unique<XlsxSheet>(this, name, part));
    m_sheets.back()->setLoaded();
    return m_sheets.back().get();
}

int XlsxBook::addFormat(const ExcelFormat &format)
{
    // A loaded format may have fills and borders that ExcelFormat doesn't describe, so only
    // the formats added since are shared.
    const int found = m_formats.indexOf(format, m_loadedFormatCount);
    if (found >= 0)
        return found;
    m_formats.append(format);
    m_dateStyles.resize(m_formats.size());
    m_dateStyles.last() = ExcelDates::isDateFormat(format.numberFormat, format.numberFormatCode);
    return m_formats.size() - 1;
}

ExcelFormat XlsxBook::format(int index) const
{
    return m_formats.value(index);
}

// ---------------------------------------------------------------------------------------------

XlsxSheet::XlsxSheet(XlsxBook *book, const QString &name, const QString &partName)
    : m_book(book)
    , m_name(name)
    , m_partName(partName)
{ }

void XlsxSheet::appendCell(const XlsxCell &cell)
{
    m_sorted = m_sorted && ExcelCellStore::follows(m_cells, cell);
    // A formatted cell without a value doesn't make the used range larger.
    if (cell.type != ExcelCellType::Blank && cell.type != ExcelCellType::Empty)
        m_used.add(cell.row, cell.col);
    m_cells.push_back(cell);
    m_indexed = false;
}

int XlsxSheet::addText(const QString &text)
{
    m_texts.append(text);
    return m_texts.size() - 1;
}

void XlsxSheet::addColumnInfo(int firstCol, int lastCol, double width, bool hidden)
{
    m_columns.append({firstCol, lastCol, width, hidden});
}

void XlsxSheet::setFormula(int row, int col, const QString &formula)
{
    m_formulas.insert(qMakePair(row, col), formula);
}

void XlsxSheet::finishLoading()
{
    m_loaded = true;
    m_changed = false;
    m_columnsChanged = false;
    index();
}

void XlsxSheet::index() const
{
    ExcelCellStore::index(const_cast<std::vector<XlsxCell> &>(m_cells), m_sorted, m_rowStarts);
    m_sorted = true;
    m_indexed = true;
}

const XlsxCell *XlsxSheet::find(int row, int col) const
{
    if (!m_indexed)
        index();
    return ExcelCellStore::find(m_cells, m_rowStarts, row, col);
}

int XlsxSheet::firstRow() const
{
    return m_used.firstRow;
}

int XlsxSheet::lastRow() const
{
    return m_used.lastRow;
}

int XlsxSheet::firstCol() const
{
    return m_used.firstCol;
}

int XlsxSheet::lastCol() const
{
    return m_used.lastCol;
}

ExcelCellType XlsxSheet::cellType(int row, int col) const
{
    const XlsxCell *cell = find(row, col);
    return cell ? cell->type : ExcelCellType::Empty;
}

QString XlsxSheet::readStr(int row, int col) const
{
    const XlsxCell *cell = find(row, col);
    if (!cell
        || (cell->type != ExcelCellType::String && cell->type != ExcelCellType::Error
            && cell->type != ExcelCellType::StrictDate))
        return QString();
    if (cell->ownText)
        return m_texts.value(cell->text);
    return m_book->sharedStrings().value(cell->text);
}

double XlsxSheet::readNum(int row, int col) const
{
    const XlsxCell *cell = find(row, col);
    return cell && cell->type == ExcelCellType::Number ? cell->number : 0.0;
}

bool XlsxSheet::readBool(int row, int col) const
{
    const XlsxCell *cell = find(row, col);
    return cell && cell->type == ExcelCellType::Boolean && cell->boolean;
}

bool XlsxSheet::isDate(int row, int col) const
{
    const XlsxCell *cell = find(row, col);
    return cell
        && (cell->type == ExcelCellType::StrictDate
            || (cell->type == ExcelCellType::Number && m_book->styleIsDate(cell->style)));
}

void XlsxSheet::discardRowsBefore(int row)
{
    if (!m_indexed)
        index();
    const int last = std::min<int>(row, int(m_rowStarts.size()) - 1);
    if (last <= m_discardedRows)
        return;
    const int end = m_rowStarts[size_t(last)];
    for (int i = m_rowStarts[size_t(m_discardedRows)]; i < end; ++i) {
        const XlsxCell &cell = m_cells[size_t(i)];
        if (cell.ownText
            && (cell.type == ExcelCellType::String || cell.type == ExcelCellType::Error
                || cell.type == ExcelCellType::StrictDate))
            m_texts[cell.text] = QString();
    }
    m_discardedRows = last;
}

int XlsxSheet::cellFormat(int row, int col) const
{
    const XlsxCell *cell = find(row, col);
    return cell ? cell->style : 0;
}

bool XlsxSheet::colHidden(int col) const
{
    for (const ColumnInfo &info : m_columns) {
        if (col >= info.first && col <= info.last)
            return info.hidden;
    }
    return false;
}

double XlsxSheet::colWidth(int col) const
{
    for (const ColumnInfo &info : m_columns) {
        if (col >= info.first && col <= info.last)
            return info.width;
    }
    return -1;
}

void XlsxSheet::write(XlsxCell cell, int row, int col, int format)
{
    cell.row = row;
    cell.col = col;
    cell.style = format;
    m_loaded = true;
    m_changed = true;
    appendCell(cell);
}

void XlsxSheet::writeStr(int row, int col, const QString &text, int format)
{
    XlsxCell cell {};
    cell.type = ExcelCellType::String;
    cell.ownText = true;
    cell.text = addText(text);
    write(cell, row, col, format);
}

void XlsxSheet::writeNum(int row, int col, double value, int format)
{
    XlsxCell cell {};
    cell.type = ExcelCellType::Number;
    cell.number = value;
    write(cell, row, col, format);
}

void XlsxSheet::writeBool(int row, int col, bool value, int format)
{
    XlsxCell cell {};
    cell.type = ExcelCellType::Boolean;
    cell.boolean = value;
    write(cell, row, col, format);
}

// A formula's value is unknown until a spreadsheet computes it; until then the cell reads
// as a string holding nothing.
void XlsxSheet::writeFormula(int row, int col, const QString &formula, int format)
{
    XlsxCell cell {};
    cell.type = ExcelCellType::String;
    cell.ownText = true;
    cell.text = addText(QString());
    write(cell, row, col, format);
    setFormula(row, col, formula);
}

void XlsxSheet::clear()
{
    m_cells.clear();
    m_texts.clear();
    m_discardedRows = 0;
    m_formulas.clear();
    m_links.clear();
    m_changed = true;
    m_used = {};
    m_sorted = true;
    m_indexed = false;
}

void XlsxSheet::setCol(int col, double width, bool hidden)
{
    m_columns.prepend({col, col, width, hidden});
    m_changed = true;
    m_columnsChanged = true;
}

void XlsxSheet::setRow(int row, double height, bool hidden)
{
    m_changed = true;
    if (height >= 0)
        m_rowHeights.insert(row, height);
    if (hidden)
        m_hiddenRows.insert(row);
    else
        m_hiddenRows.remove(row);
}

void XlsxSheet::setCellFormat(int row, int col, int format)
{
    const XlsxCell *cell = find(row, col);
    if (cell) {
        const_cast<XlsxCell *>(cell)->style = format;
        m_changed = true;
        return;
    }
    XlsxCell blank {};
    blank.type = ExcelCellType::Blank;
    write(blank, row, col, format);
}
