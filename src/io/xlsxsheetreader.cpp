// Streams a worksheet part into the compact cell store of its XlsxSheet.
//
// Sheet parts are the bulk of a workbook (a million rows are hundreds of megabytes of
// markup) and use a handful of elements, so they are scanned here byte by byte rather than
// through a general XML reader, which spends most of its time building attribute lists and
// converting every name to UTF-16. The scanner still checks what matters for safety: tags
// must nest, a DTD is refused, only the predefined and numeric entities exist, and a part
// that ends early is an error.

#include "io/xlsxbook.h"
#include "io/xlsxpackage.h"

#include <quazip/quazip.h>
#include <quazip/quazipfile.h>

#include <charconv>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Bytes = std::string_view;

constexpr qint64 ChunkBytes = 1 << 20;
// A tag, comment or text longer than these is taken for an attack on memory, not a sheet:
// Excel holds at most 32,767 characters in a cell.
constexpr size_t MaxMarkupBytes = 1 << 20;
constexpr size_t MaxTextBytes = 16 << 20;

Bytes localName(Bytes name)
{
    const size_t colon = name.find(':');
    return colon == Bytes::npos ? name : name.substr(colon + 1);
}

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

Bytes trimmed(Bytes text)
{
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

void appendUtf8(std::string &out, uint code)
{
    if (code < 0x80) {
        out += char(code);
    } else if (code < 0x800) {
        out += char(0xC0 | (code >> 6));
        out += char(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += char(0xE0 | (code >> 12));
        out += char(0x80 | ((code >> 6) & 0x3F));
        out += char(0x80 | (code & 0x3F));
    } else {
        out += char(0xF0 | (code >> 18));
        out += char(0x80 | ((code >> 12) & 0x3F));
        out += char(0x80 | ((code >> 6) & 0x3F));
        out += char(0x80 | (code & 0x3F));
    }
}

// Appends text with its entity references replaced; false for an entity XML doesn't know
// without a DTD.
bool appendDecoded(std::string &out, Bytes text)
{
    size_t amp = text.find('&');
    if (amp == Bytes::npos) {
        out.append(text);
        return true;
    }
    while (amp != Bytes::npos) {
        out.append(text.substr(0, amp));
        const size_t semicolon = text.find(';', amp);
        if (semicolon == Bytes::npos)
            return false;
        const Bytes entity = text.substr(amp + 1, semicolon - amp - 1);
        if (entity == "lt") {
            out += '<';
        } else if (entity == "gt") {
            out += '>';
        } else if (entity == "amp") {
            out += '&';
        } else if (entity == "quot") {
            out += '"';
        } else if (entity == "apos") {
            out += '\'';
        } else if (entity.size() > 1 && entity.front() == '#') {
            const bool hex = entity[1] == 'x';
            uint code = 0;
            const char *begin = entity.data() + (hex ? 2 : 1);
            const auto [end, error]
                = std::from_chars(begin, entity.data() + entity.size(), code, hex ? 16 : 10);
            if (error != std::errc() || end != entity.data() + entity.size() || code == 0
                || code > 0x10FFFF)
                return false;
            appendUtf8(out, code);
        } else {
            return false;
        }
        text.remove_prefix(semicolon + 1);
        amp = text.find('&');
    }
    out.append(text);
    return true;
}

// The attributes of a start tag, read when asked for.
class Attributes
{
public:
    explicit Attributes(Bytes text)
        : m_text(text)
    { }

    // The raw value of the attribute whose local name is `name`; empty when absent.
    Bytes value(Bytes name) const
    {
        Bytes rest = m_text;
        while (true) {
            const size_t equals = rest.find('=');
            if (equals == Bytes::npos)
                return Bytes();
            const Bytes key = localName(trimmed(rest.substr(0, equals)));
            size_t open = equals + 1;
            while (open < rest.size() && isSpace(rest[open]))
                ++open;
            if (open >= rest.size())
                return Bytes();
            const char quote = rest[open];
            const size_t close = rest.find(quote, open + 1);
            if (close == Bytes::npos)
                return Bytes();
            if (key == name)
                return rest.substr(open + 1, close - open - 1);
            rest.remove_prefix(close + 1);
        }
    }
    QString text(Bytes name) const
    {
        std::string decoded;
        appendDecoded(decoded, value(name));
        return QString::fromUtf8(decoded.data(), int(decoded.size()));
    }

private:
    Bytes m_text;
};

bool isTrue(Bytes value)
{
    return value == "1" || value == "true";
}

double toNumber(Bytes text, bool *ok)
{
    text = trimmed(text);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    *ok = error == std::errc() && end == text.data() + text.size() && !text.empty();
    return value;
}

// "B3" as bytes; false beyond the limits of a sheet.
bool parseReference(Bytes reference, int *row, int *col)
{
    return ExcelCells::parseReference(QString::fromLatin1(reference.data(), int(reference.size())),
                                      row, col);
}

class SheetScanner
{
public:
    SheetScanner(XlsxSheet *sheet, QuaZipFile &file,
                 const QHash<QString, XlsxPackage::Relationship> &relationships)
        : m_sheet(sheet)
        , m_file(file)
        , m_relationships(relationships)
    { }

    bool scan(QString *error);

private:
    bool fill();
    // The text from the current position up to `end` into the cell being read, if any.
    bool takeText(size_t end);
    bool startElement(Bytes name, Bytes attributes, bool empty);
    bool endElement(Bytes name);
    bool startRow(const Attributes &attributes);
    bool startCell(const Attributes &attributes, bool empty);
    void finishCell();
    void readColumn(const Attributes &attributes);
    void reserve(const QString &dimension);
    void readHyperlink(const Attributes &attributes);
    bool fail(const QString &text)
    {
        m_error = text;
        return false;
    }
    bool malformed(const QString &text)
    {
        m_malformed = true;
        return fail(text);
    }

public:
    // Whether the failure was one of the XML itself rather than of the sheet's content.
    bool isMalformed() const { return m_malformed; }

private:
    XlsxSheet *m_sheet;
    QuaZipFile &m_file;
    const QHash<QString, XlsxPackage::Relationship> &m_relationships;
    QString m_error;
    bool m_malformed = false;
    std::string m_buffer;
    size_t m_position = 0;
    bool m_atEnd = false;
    std::vector<std::string> m_open; // names of the open elements
    int m_nextRow = 0;
    int m_nextCol = 0;
    int m_row = 0;
    qint64 m_cellCount = 0;

    // The cell being read.
    bool m_inCell = false;
    bool m_inInline = false;
    bool m_inPhonetic = false;
    std::string *m_capture = nullptr;
    XlsxCell m_cell {};
    std::string m_type;
    std::string m_value;
    std::string m_formula;
    std::string m_inlineText;
    bool m_hasValue = false;
    bool m_hasFormula = false;
    bool m_hasInline = false;
};

// Reads the next chunk of the part behind what is left of the buffer.
bool SheetScanner::fill()
{
    if (m_atEnd)
        return false;
    m_buffer.erase(0, m_position);
    m_position = 0;
    const size_t before = m_buffer.size();
    m_buffer.resize(before + size_t(ChunkBytes));
    const qint64 read = m_file.read(&m_buffer[before], ChunkBytes);
    m_buffer.resize(before + size_t(std::max<qint64>(read, 0)));
    if (read <= 0)
        m_atEnd = true;
    return read > 0;
}

bool SheetScanner::takeText(size_t end)
{
    const Bytes text = Bytes(m_buffer).substr(m_position, end - m_position);
    m_position = end;
    if (!m_capture)
        return true;
    if (!appendDecoded(*m_capture, text))
        return malformed(QStringLiteral("an unknown entity in a cell."));
    if (m_capture->size() > MaxTextBytes)
        return malformed(
            QStringLiteral("a cell holds more than %1 bytes of text.").arg(MaxTextBytes));
    return true;
}

bool SheetScanner::scan(QString *error)
{
    auto findFrom = [&](size_t from, Bytes what, size_t *found) {
        while (true) {
            const size_t at = m_buffer.find(what, from);
            if (at != std::string::npos) {
                *found = at;
                return true;
            }
            if (m_buffer.size() - m_position > MaxMarkupBytes)
                return false;
            const size_t keep = m_buffer.size() - m_position;
            const size_t offset = from - m_position;
            if (!fill())
                return false;
            from = std::min(offset, keep > what.size() ? keep - what.size() : 0);
        }
    };
    bool ok = true;
    while (ok) {
        size_t lt = m_buffer.find('<', m_position);
        while (ok && lt == std::string::npos) {
            // No tag in what is read so far: its text is taken, short of an entity that the
            // chunk cuts, so that a long run of text never piles up in the buffer.
            size_t keep = m_buffer.size();
            const size_t amp = m_buffer.rfind('&');
            if (amp != std::string::npos && amp >= m_position
                && m_buffer.find(';', amp) == std::string::npos)
                keep = amp;
            ok = takeText(keep);
            if (ok && !fill())
                break;
            lt = m_buffer.find('<', m_position);
        }
        if (!ok)
            break;
        if (lt == std::string::npos) {
            if (!m_open.empty())
                ok = malformed(QStringLiteral("the part ends inside <%1>.")
                                   .arg(QString::fromStdString(m_open.back())));
            break;
        }
        if (!takeText(lt)) {
            ok = false;
            break;
        }
        m_position = lt;
        if (m_buffer.size() - m_position < 9)
            fill();
        const Bytes head = Bytes(m_buffer).substr(m_position, 9);
        size_t end = 0;
        if (head.substr(0, 4) == "<!--") {
            ok = findFrom(m_position + 4, "-->", &end)
                || malformed(QStringLiteral("an unclosed comment."));
            m_position = end + 3;
        } else if (head == "<![CDATA[") {
            ok = findFrom(m_position + 9, "]]>", &end)
                || malformed(QStringLiteral("an unclosed CDATA section."));
            if (ok && m_capture)
                m_capture->append(Bytes(m_buffer).substr(m_position + 9, end - m_position - 9));
            m_position = end + 3;
        } else if (head.substr(0, 2) == "<!") {
            ok = fail(QStringLiteral("declares a DTD, which workbooks never do."));
        } else if (head.substr(0, 2) == "<?") {
            ok = findFrom(m_position + 2, "?>", &end)
                || malformed(QStringLiteral("an unclosed declaration."));
            m_position = end + 2;
        } else {
            // A start or end tag; a ">" inside a quoted attribute value doesn't end it.
            size_t at = m_position + 1;
            char quote = 0;
            while (true) {
                if (at >= m_buffer.size()) {
                    const size_t offset = at - m_position;
                    if (offset > MaxMarkupBytes || !fill())
                        break;
                    at = m_position + offset;
                    continue;
                }
                const char c = m_buffer[at];
                if (quote) {
                    if (c == quote)
                        quote = 0;
                } else if (c == '"' || c == '\'') {
                    quote = c;
                } else if (c == '>') {
                    break;
                }
                ++at;
            }
            if (at >= m_buffer.size()) {
                ok = malformed(QStringLiteral("the part ends inside a tag."));
                break;
            }
            Bytes tag = Bytes(m_buffer).substr(m_position + 1, at - m_position - 1);
            m_position = at + 1;
            if (!tag.empty() && tag.front() == '/') {
                ok = endElement(trimmed(tag.substr(1)));
                continue;
            }
            const bool empty = !tag.empty() && tag.back() == '/';
            if (empty)
                tag.remove_suffix(1);
            size_t nameEnd = 0;
            while (nameEnd < tag.size() && !isSpace(tag[nameEnd]))
                ++nameEnd;
            if (nameEnd == 0) {
                ok = malformed(QStringLiteral("a tag without a name."));
                break;
            }
            ok = startElement(tag.substr(0, nameEnd), tag.substr(nameEnd), empty);
        }
    }
    if (!ok)
        *error = m_error;
    return ok;
}

bool SheetScanner::startElement(Bytes name, Bytes attributeText, bool empty)
{
    if (!empty)
        m_open.emplace_back(name);
    const Bytes local = localName(name);
    const Attributes attributes(attributeText);
    if (m_inCell) {
        if (local == "v" || local == "f") {
            std::string &target = local == "v" ? m_value : m_formula;
            (local == "v" ? m_hasValue : m_hasFormula) = true;
            target.clear();
            m_capture = empty ? nullptr : &target;
        } else if (local == "is") {
            m_inInline = !empty;
        } else if (local == "rPh") {
            m_inPhonetic = !empty;
        } else if (local == "t" && m_inInline && !m_inPhonetic) {
            m_hasInline = true;
            m_capture = empty ? nullptr : &m_inlineText;
        }
        return true;
    }
    if (local == "row")
        return startRow(attributes);
    if (local == "c")
        return startCell(attributes, empty);
    if (local == "dimension") {
        reserve(attributes.text("ref"));
    } else if (local == "col") {
        readColumn(attributes);
    } else if (local == "mergeCell") {
        ExcelRange range;
        if (ExcelCells::parseRange(attributes.text("ref"), &range))
            m_sheet->setMerge(range);
    } else if (local == "hyperlink") {
        readHyperlink(attributes);
    }
    return true;
}

bool SheetScanner::endElement(Bytes name)
{
    if (m_open.empty() || m_open.back() != name)
        return malformed(
            QStringLiteral("</%1> closes <%2>.")
                .arg(QString::fromUtf8(name.data(), int(name.size())),
                     m_open.empty() ? QString() : QString::fromStdString(m_open.back())));
    m_open.pop_back();
    const Bytes local = localName(name);
    if (local == "v" || local == "f" || local == "t") {
        m_capture = nullptr;
    } else if (local == "is") {
        m_inInline = false;
    } else if (local == "rPh") {
        m_inPhonetic = false;
    } else if (local == "c" && m_inCell) {
        finishCell();
    }
    return true;
}

bool SheetScanner::startRow(const Attributes &attributes)
{
    int row = m_nextRow;
    const Bytes number = attributes.value("r");
    if (!number.empty()) {
        qint64 value = 0;
        const auto [end, error]
            = std::from_chars(number.data(), number.data() + number.size(), value);
        if (error != std::errc() || end != number.data() + number.size() || value < 1
            || value > ExcelCells::MaxXlsxRows)
            return fail(QStringLiteral("Row number '%1' is beyond the limits of a sheet.")
                            .arg(QString::fromUtf8(number.data(), int(number.size()))));
        row = int(value - 1);
    }
    m_row = row;
    m_nextRow = row + 1;
    m_nextCol = 0;
    const bool hidden = isTrue(attributes.value("hidden"));
    const Bytes height = attributes.value("ht");
    if (hidden || !height.empty()) {
        bool ok = false;
        const double value = toNumber(height, &ok);
        m_sheet->setRow(row, ok ? value : -1, hidden);
    }
    return true;
}

bool SheetScanner::startCell(const Attributes &attributes, bool empty)
{
    int col = m_nextCol;
    const Bytes reference = attributes.value("r");
    if (!reference.empty()) {
        int referencedRow = 0;
        if (!parseReference(reference, &referencedRow, &col))
            return fail(QStringLiteral("Cell reference '%1' is beyond the limits of a sheet.")
                            .arg(QString::fromUtf8(reference.data(), int(reference.size()))));
    } else if (col >= ExcelCells::MaxXlsxCols) {
        return fail(QStringLiteral("Row %1 has more cells than a sheet can hold.").arg(m_row + 1));
    }
    m_nextCol = col + 1;
    if (++m_cellCount > XlsxBook::MaxCells)
        return fail(QStringLiteral("The sheet has more than %1 cells.").arg(XlsxBook::MaxCells));
    m_cell = XlsxCell {};
    m_cell.row = m_row;
    m_cell.col = col;
    const Bytes style = attributes.value("s");
    std::from_chars(style.data(), style.data() + style.size(), m_cell.style);
    m_cell.type = ExcelCellType::Blank;
    m_type = attributes.value("t");
    m_hasValue = m_hasFormula = m_hasInline = false;
    m_inlineText.clear();
    m_inCell = true;
    if (empty)
        finishCell();
    return true;
}

void SheetScanner::finishCell()
{
    m_inCell = m_inInline = m_inPhonetic = false;
    m_capture = nullptr;
    auto ownText = [&](const std::string &text) {
        m_cell.ownText = true;
        m_cell.text = m_sheet->addText(
            XlsxPackage::decodeEscapes(QString::fromUtf8(text.data(), int(text.size()))));
    };
    if (m_hasFormula)
        m_sheet->setFormula(m_cell.row, m_cell.col,
                            QString::fromUtf8(m_formula.data(), int(m_formula.size())));
    if (m_type == "inlineStr") {
        if (m_hasInline) {
            m_cell.type = ExcelCellType::String;
            ownText(m_inlineText);
        }
    } else if (!m_hasValue) {
        // A formatted cell with no value.
    } else if (m_type == "s") {
        int index = -1;
        const Bytes value = trimmed(m_value);
        const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), index);
        m_cell.type = ExcelCellType::String;
        if (error != std::errc() || end != value.data() + value.size() || index < 0)
            ownText(std::string());
        else
            m_cell.text = index;
    } else if (m_type == "str" || m_type == "e" || m_type == "d") {
        m_cell.type = m_type == "e" ? ExcelCellType::Error
            : m_type == "d"         ? ExcelCellType::StrictDate
                                    : ExcelCellType::String;
        ownText(m_value);
    } else if (m_type == "b") {
        m_cell.type = ExcelCellType::Boolean;
        const Bytes value = trimmed(m_value);
        m_cell.boolean = value == "1" || value == "true";
    } else {
        bool ok = false;
        m_cell.number = toNumber(m_value, &ok);
        m_cell.type = ok ? ExcelCellType::Number : ExcelCellType::Blank;
    }
    m_sheet->appendCell(m_cell);
}

// Room for the cells the sheet declares, so that the store doesn't grow by copying itself
// (twice its size, for a moment) as a million rows come in. A declaration can lie: no more
// is reserved than the part's size could hold, at the fewest bytes a cell takes.
void SheetScanner::reserve(const QString &dimension)
{
    ExcelRange range;
    if (!ExcelCells::parseRange(dimension, &range) || range.lastRow < range.firstRow
        || range.lastCol < range.firstCol)
        return;
    const qint64 declared
        = qint64(range.lastRow - range.firstRow + 1) * (range.lastCol - range.firstCol + 1);
    constexpr qint64 FewestBytesPerCell = 12; // <c><v>1</v></c>
    const qint64 room = m_file.usize() / FewestBytesPerCell;
    // Past this the store grows as cells come: room reserved up front is never given back.
    constexpr qint64 MaxReserved = qint64(32) << 20;
    m_sheet->reserveCells(std::min({declared, room, MaxReserved}));
}

void SheetScanner::readColumn(const Attributes &attributes)
{
    bool ok = false;
    const int first = int(toNumber(attributes.value("min"), &ok)) - 1;
    const int last = int(toNumber(attributes.value("max"), &ok)) - 1;
    if (first < 0 || last < first || first >= ExcelCells::MaxXlsxCols)
        return;
    const double width = toNumber(attributes.value("width"), &ok);
    m_sheet->addColumnInfo(first, qMin(last, ExcelCells::MaxXlsxCols - 1), ok ? width : -1,
                           isTrue(attributes.value("hidden")));
}

void SheetScanner::readHyperlink(const Attributes &attributes)
{
    ExcelHyperlink link;
    if (!ExcelCells::parseRange(attributes.text("ref"), &link.range))
        return;
    link.target = m_relationships.value(attributes.text("id")).target;
    const QString location = attributes.text("location");
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
    const QString part = sheet->partName();
    bool read = false;
    if (!zip.setCurrentFile(part, QuaZip::csInsensitive)) {
        error = QStringLiteral("Part '%1' is missing.").arg(part);
    } else {
        QuaZipFile file(&zip);
        if (!file.open(QIODevice::ReadOnly)) {
            error = QStringLiteral("Part '%1' can't be unpacked.").arg(part);
        } else {
            SheetScanner scanner(sheet, file, relationships);
            QString scanError;
            read = scanner.scan(&scanError);
            if (!read && scanner.isMalformed())
                error = QStringLiteral("Part '%1' is not well-formed XML: %2").arg(part, scanError);
            else if (!read && scanError.startsWith(QLatin1String("declares a DTD")))
                error = QStringLiteral("Part '%1' %2").arg(part, scanError);
            else if (!read)
                error = scanError;
            file.close();
            if (read && file.getZipError() != UNZ_OK) {
                read = false;
                error = QStringLiteral("Part '%1' is damaged.").arg(part);
            }
        }
    }
    if (!read) {
        sheet->clear();
        setError(QStringLiteral("Sheet '%1': %2").arg(sheet->name(), error));
        return false;
    }
    sheet->finishLoading();
    return true;
}
