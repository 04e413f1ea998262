// Streams a worksheet part into the compact cell store of its XlsxSheet.

#include "io/xlsxbook.h"
#include "io/xlsxpackage.h"

#include <QXmlStreamReader>

#include <quazip/quazip.h>

namespace {

class SheetReader
{
public:
    SheetReader(XlsxSheet *sheet, QXmlStreamReader &reader,
                const QHash<QString, XlsxPackage::Relationship> &relationships)
        : m_sheet(sheet)
        , m_reader(reader)
        , m_relationships(relationships)
    { }

    bool read(QString *error);

private:
    bool readRow();
    bool readCell(int row);
    void readColumn();
    void readHyperlink();
    bool fail(const QString &text)
    {
        m_error = text;
        return false;
    }

    XlsxSheet *m_sheet;
    QXmlStreamReader &m_reader;
    const QHash<QString, XlsxPackage::Relationship> &m_relationships;
    QString m_error;
    int m_nextRow = 0;
    int m_nextCol = 0;
    qint64 m_cellCount = 0;
};

bool SheetReader::read(QString *error)
{
    while (!m_reader.atEnd()) {
        if (m_reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const auto name = m_reader.name();
        bool ok = true;
        if (name == QLatin1String("row")) {
            ok = readRow();
        } else if (name == QLatin1String("col")) {
            readColumn();
        } else if (name == QLatin1String("mergeCell")) {
            ExcelRange range;
            if (ExcelCells::parseRange(m_reader.attributes().value(QLatin1String("ref")), &range))
                m_sheet->setMerge(range);
        } else if (name == QLatin1String("hyperlink")) {
            readHyperlink();
        }
        if (!ok) {
            *error = m_error;
            return false;
        }
    }
    return true;
}

bool SheetReader::readRow()
{
    const QXmlStreamAttributes attributes = m_reader.attributes();
    int row = m_nextRow;
    const auto number = attributes.value(QLatin1String("r"));
    if (!number.isEmpty()) {
        bool ok = false;
        const qint64 value = number.toLongLong(&ok);
        if (!ok || value < 1 || value > ExcelCells::MaxXlsxRows)
            return fail(QStringLiteral("Row number '%1' is beyond the limits of a sheet.")
                            .arg(number.toString()));
        row = int(value - 1);
    }
    m_nextRow = row + 1;
    m_nextCol = 0;
    const bool hidden = attributes.value(QLatin1String("hidden")) == QLatin1String("1")
        || attributes.value(QLatin1String("hidden")) == QLatin1String("true");
    const auto height = attributes.value(QLatin1String("ht"));
    if (hidden || !height.isEmpty())
        m_sheet->setRow(row, height.isEmpty() ? -1 : height.toDouble(), hidden);

    while (!m_reader.atEnd()) {
        const QXmlStreamReader::TokenType token = m_reader.readNext();
        if (token == QXmlStreamReader::EndElement && m_reader.name() == QLatin1String("row"))
            return true;
        if (token == QXmlStreamReader::StartElement && m_reader.name() == QLatin1String("c")
            && !readCell(row))
            return false;
    }
    return true;
}

bool SheetReader::readCell(int row)
{
    const QXmlStreamAttributes attributes = m_reader.attributes();
    int col = m_nextCol;
    const auto reference = attributes.value(QLatin1String("r"));
    if (!reference.isEmpty()) {
        int referencedRow = 0;
        if (!ExcelCells::parseReference(reference, &referencedRow, &col))
            return fail(QStringLiteral("Cell reference '%1' is beyond the limits of a sheet.")
                            .arg(reference.toString()));
    } else if (col >= ExcelCells::MaxXlsxCols) {
        return fail(QStringLiteral("Row %1 has more cells than a sheet can hold.").arg(row + 1));
    }
    m_nextCol = col + 1;
    if (++m_cellCount > XlsxBook::MaxCells)
        return fail(QStringLiteral("The sheet has more than %1 cells.").arg(XlsxBook::MaxCells));

    const QStringRef type = attributes.value(QLatin1String("t"));
    XlsxCell cell {};
    cell.row = row;
    cell.col = col;
    cell.style = attributes.value(QLatin1String("s")).toInt();
    cell.type = ExcelCellType::Blank;
    QString value;
    QString inlineText;
    bool hasValue = false;
    bool hasInline = false;
    while (!m_reader.atEnd()) {
        const QXmlStreamReader::TokenType token = m_reader.readNext();
        if (token == QXmlStreamReader::EndElement && m_reader.name() == QLatin1String("c"))
            break;
        if (token != QXmlStreamReader::StartElement)
            continue;
        const auto name = m_reader.name();
        if (name == QLatin1String("v")) {
            value = m_reader.readElementText();
            hasValue = true;
        } else if (name == QLatin1String("f")) {
            m_sheet->setFormula(row, col, m_reader.readElementText());
        } else if (name == QLatin1String("t")) { // inside <is>
            inlineText += m_reader.readElementText();
            hasInline = true;
        }
    }

    if (type == QLatin1String("inlineStr")) {
        if (hasInline) {
            cell.type = ExcelCellType::String;
            cell.ownText = true;
            cell.text = m_sheet->addText(XlsxPackage::decodeEscapes(inlineText));
        }
    } else if (!hasValue) {
        // A formatted cell with no value.
    } else if (type == QLatin1String("s")) {
        bool ok = false;
        cell.text = value.toInt(&ok);
        cell.type = ExcelCellType::String;
        if (!ok || cell.text < 0) {
            cell.ownText = true;
            cell.text = m_sheet->addText(QString());
        }
    } else if (type == QLatin1String("str") || type == QLatin1String("e")
               || type == QLatin1String("d")) {
        cell.type = type == QLatin1String("e") ? ExcelCellType::Error
            : type == QLatin1String("d")       ? ExcelCellType::StrictDate
                                               : ExcelCellType::String;
        cell.ownText = true;
        cell.text = m_sheet->addText(XlsxPackage::decodeEscapes(value));
    } else if (type == QLatin1String("b")) {
        cell.type = ExcelCellType::Boolean;
        cell.boolean
            = value.trimmed() == QLatin1String("1") || value.trimmed() == QLatin1String("true");
    } else {
        bool ok = false;
        cell.number = value.toDouble(&ok);
        cell.type = ok ? ExcelCellType::Number : ExcelCellType::Blank;
    }
    m_sheet->appendCell(cell);
    return true;
}

void SheetReader::readColumn()
{
    const QXmlStreamAttributes attributes = m_reader.attributes();
    const int first = attributes.value(QLatin1String("min")).toInt() - 1;
    const int last = attributes.value(QLatin1String("max")).toInt() - 1;
    if (first < 0 || last < first || first >= ExcelCells::MaxXlsxCols)
        return;
    const auto width = attributes.value(QLatin1String("width"));
    const auto hidden = attributes.value(QLatin1String("hidden"));
    m_sheet->addColumnInfo(first, qMin(last, ExcelCells::MaxXlsxCols - 1),
                           width.isEmpty() ? -1 : width.toDouble(),
                           hidden == QLatin1String("1") || hidden == QLatin1String("true"));
}

void SheetReader::readHyperlink()
{
    const QXmlStreamAttributes attributes = m_reader.attributes();
    ExcelHyperlink link;
    if (!ExcelCells::parseRange(attributes.value(QLatin1String("ref")), &link.range))
        return;
    for (const QXmlStreamAttribute &attribute : attributes) {
        if (attribute.name() == QLatin1String("id"))
            link.target = m_relationships.value(attribute.value().toString()).target;
    }
    const QString location = attributes.value(QLatin1String("location")).toString();
    if (link.target.isEmpty() && !location.isEmpty())
        link.target = QLatin1Char('#') + location;
    else if (!location.isEmpty())
        link.target += QLatin1Char('#') + location;
    if (!link.target.isEmpty())
        m_sheet->addHyperlink(link);
}

} // namespace

bool XlsxBook::loadSheet(XlsxSheet *sheet)
{
    QuaZip zip(m_path);
    if (!zip.open(QuaZip::mdUnzip)) {
        setError(QStringLiteral("The workbook can no longer be opened (error %1).")
                     .arg(zip.getZipError()));
        return false;
    }
    QString error;
    const auto relationships = XlsxPackage::readRelationships(zip, sheet->partName(), &error);
    const bool read = XlsxPackage::readPart(
        zip, sheet->partName(),
        [&](QXmlStreamReader &reader, QString *readError) {
            return SheetReader(sheet, reader, relationships).read(readError);
        },
        &error);
    if (!read) {
        sheet->clear();
        setError(QStringLiteral("Sheet '%1': %2").arg(sheet->name(), error));
        return false;
    }
    sheet->finishLoading();
    return true;
}
