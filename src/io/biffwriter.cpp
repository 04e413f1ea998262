// Writes an XlsBook as a BIFF8 workbook stream: the workbook globals (fonts, number formats,
// cell formats, the sheet list and the shared texts), then one part a sheet.

#include "io/biff.h"
#include "io/xlsbook.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

using namespace Biff;

// Excel's own limit for the text of a cell.
constexpr int MaxCellText = 32767;
// Styles 0 to 14 are the built-in ones every book has; cell formats follow from 15.
constexpr int StyleXfs = 15;
constexpr int FirstExtraFont = 5; // font number 4 does not exist
constexpr int MaxMergesPerRecord = 1026;

class Out
{
public:
    explicit Out(QByteArray &data)
        : m_data(data)
    { }
    void begin(quint16 id)
    {
        m_start = m_data.size();
        u16(id);
        u16(0);
    }
    void end() { qToLittleEndian<quint16>(quint16(size()), m_data.data() + m_start + 2); }
    // Bytes of the open record so far.
    int size() const { return m_data.size() - m_start - 4; }
    int position() const { return m_data.size(); }
    int recordStart() const { return m_start; }
    void u8(int value) { m_data.append(char(value)); }
    void u16(int value)
    {
        char bytes[2];
        qToLittleEndian<quint16>(quint16(value), bytes);
        m_data.append(bytes, 2);
    }
    void u32(quint32 value)
    {
        char bytes[4];
        qToLittleEndian<quint32>(value, bytes);
        m_data.append(bytes, 4);
    }
    void f64(double value)
    {
        quint64 bits;
        std::memcpy(&bits, &value, sizeof bits);
        char bytes[8];
        qToLittleEndian<quint64>(bits, bytes);
        m_data.append(bytes, 8);
    }
    void zeros(int count) { m_data.append(count, '\0'); }
    void characters(QStringView text, bool wide)
    {
        for (const QChar c : text) {
            if (wide)
                u16(c.unicode());
            else
                u8(c.unicode());
        }
    }
    // A text with its length in one byte (sheet names) or two, then the flags byte.
    void text(const QString &text, bool shortLength)
    {
        const bool wide = isWide(text);
        if (shortLength)
            u8(text.size());
        else
            u16(text.size());
        u8(wide ? 1 : 0);
        characters(text, wide);
    }
    void record(quint16 id, std::initializer_list<int> words)
    {
        begin(id);
        for (int word : words)
            u16(word);
        end();
    }
    static bool isWide(QStringView text)
    {
        for (const QChar c : text) {
            if (c.unicode() > 0xFF)
                return true;
        }
        return false;
    }

private:
    QByteArray &m_data;
    int m_start = 0;
};

struct FontLook
{
    bool bold;
    int colour;
    friend bool operator==(const FontLook &a, const FontLook &b)
    {
        return a.bold == b.bold && a.colour == b.colour;
    }
};

class Writer
{
public:
    explicit Writer(const XlsBook &book)
        : m_book(book)
        , m_out(m_data)
    { }
    QByteArray write();

private:
    void collectTexts();
    void writeGlobals(QVector<int> *sheetOffsets);
    void writeFonts(QVector<int> *fontOfFormat);
    void writeFormats(const QVector<int> &fontOfFormat);
    void writeSharedStrings();
    void writeSheet(int index);
    void writeLayout(const XlsSheet &sheet);
    void writeCells(int index);
    void writeLinks(const XlsSheet &sheet);
    int xfOf(const XlsCell &cell) const
    {
        return StyleXfs + (cell.format < m_book.formats().size() ? cell.format : 0);
    }

    const XlsBook &m_book;
    QByteArray m_data;
    Out m_out;
    QStringList m_texts;
    QHash<QString, int> m_textIndex;
    qint64 m_textCells = 0;
    // Per sheet, the shared-text number of each text cell in cell order.
    std::vector<std::vector<int>> m_textNumbers;
};

QByteArray Writer::write()
{
    collectTexts();
    QVector<int> sheetOffsets;
    writeGlobals(&sheetOffsets);
    for (int i = 0; i < m_book.sheetCount(); ++i) {
        qToLittleEndian<quint32>(quint32(m_data.size()), m_data.data() + sheetOffsets.at(i));
        writeSheet(i);
    }
    return m_data;
}

void Writer::collectTexts()
{
    m_textNumbers.resize(size_t(m_book.sheetCount()));
    for (int i = 0; i < m_book.sheetCount(); ++i) {
        const XlsSheet &sheet = m_book.sheetAt(i);
        for (const XlsCell &cell : sheet.cells()) {
            if (cell.type != quint8(ExcelCellType::String))
                continue;
            const QString text = sheet.textOf(cell).left(MaxCellText);
            auto found = m_textIndex.find(text);
            if (found == m_textIndex.end()) {
                found = m_textIndex.insert(text, m_texts.size());
                m_texts.append(text);
            }
            m_textNumbers[size_t(i)].push_back(found.value());
            ++m_textCells;
        }
    }
}

void Writer::writeGlobals(QVector<int> *sheetOffsets)
{
    m_out.record(Bof, {Biff8, BofGlobals, 0x0DBB, 0x07CC, 0, 0, 0x0006, 0});
    m_out.record(CodePage, {1200});
    m_out.record(Window1, {0x01E0, 0x005A, 0x3FCF, 0x2A4E, 0x0038, 0, 0, 1, 0x0258});
    m_out.record(DateMode, {m_book.uses1904() ? 1 : 0});
    QVector<int> fontOfFormat;
    writeFonts(&fontOfFormat);
    writeFormats(fontOfFormat);
    m_out.record(Style, {0x8000, 0xFF00});
    for (int i = 0; i < m_book.sheetCount(); ++i) {
        m_out.begin(BoundSheet);
        sheetOffsets->append(m_out.position());
        m_out.u32(0); // the offset of the sheet's part, known once it is written
        m_out.u16(0); // visible worksheet
        m_out.text(m_book.sheetAt(i).name(), true);
        m_out.end();
    }
    writeSharedStrings();
    m_out.record(Eof, {});
}

// The four fonts every book starts with, then one for each bold or coloured look the
// formats ask for.
void Writer::writeFonts(QVector<int> *fontOfFormat)
{
    QVector<FontLook> fonts {{false, 0}, {false, 0}, {false, 0}, {false, 0}};
    for (const ExcelFormat &format : m_book.formats()) {
        const FontLook font {format.bold, format.fontColor};
        int index = fonts.indexOf(font);
        if (index < 0) {
            index = fonts.size();
            fonts.append(font);
        }
        fontOfFormat->append(index < 4 ? 0 : index + 1);
    }
    for (const FontLook &font : qAsConst(fonts)) {
        m_out.begin(Font);
        m_out.u16(200); // 10 points, in twentieths
        m_out.u16(font.bold ? 1 : 0); // older readers look here for bold
        m_out.u16(font.colour > 0 && font.colour < 64 ? font.colour : 0x7FFF);
        m_out.u16(font.bold ? 700 : 400);
        m_out.u16(0);
        m_out.u8(0);
        m_out.u8(0);
        m_out.u8(1);
        m_out.u8(0);
        m_out.text(QStringLiteral("Arial"), true);
        m_out.end();
    }
}

void Writer::writeFormats(const QVector<int> &fontOfFormat)
{
    QHash<QString, int> codes;
    QVector<int> numberFormats;
    for (const ExcelFormat &format : m_book.formats()) {
        if (format.numberFormatCode.isEmpty()) {
            numberFormats.append(format.numberFormat);
            continue;
        }
        auto found = codes.constFind(format.numberFormatCode);
        if (found == codes.constEnd()) {
            found = codes.insert(format.numberFormatCode, 164 + codes.size());
            m_out.begin(Format);
            m_out.u16(found.value());
            m_out.text(format.numberFormatCode, false);
            m_out.end();
        }
        numberFormats.append(found.value());
    }
    auto xf = [&](int font, int numberFormat, int kind, int usedAttributes) {
        m_out.begin(Xf);
        m_out.u16(font);
        m_out.u16(numberFormat);
        m_out.u16(kind);
        m_out.u8(0x20); // bottom-aligned
        m_out.u8(0);
        m_out.u8(0);
        m_out.u8(usedAttributes);
        m_out.zeros(8);
        m_out.u16(0x20C0); // pattern colours: the system's
        m_out.end();
    };
    for (int i = 0; i < StyleXfs; ++i)
        xf(0, 0, 0xFFF5, i == 0 ? 0 : 0xF4);
    for (int i = 0; i < numberFormats.size(); ++i)
        xf(fontOfFormat.at(i), numberFormats.at(i), 0x0001, 0xFC);
}

// The shared texts. A record holds at most 8224 bytes; the rest goes on in CONTINUE
// records, and a text whose characters are cut starts its continuation with a flags byte.
// The index record that follows lets a reader find every eighth text or so without reading
// all before it.
void Writer::writeSharedStrings()
{
    const int count = m_texts.size();
    const int perBucket = qMax(8, (count + 127) / 128);
    QVector<QPair<int, int>> bucketStarts; // stream offset, offset in its record
    m_out.begin(Sst);
    m_out.u32(quint32(qMin<qint64>(m_textCells, 0xFFFFFFFF)));
    m_out.u32(quint32(count));
    auto startContinue = [&] {
        m_out.end();
        m_out.begin(Continue);
    };
    for (int i = 0; i < count; ++i) {
        const QString &text = m_texts.at(i);
        const bool wide = Out::isWide(text);
        const int width = wide ? 2 : 1;
        if (m_out.size() + 3 + (text.isEmpty() ? 0 : width) > MaxRecordData)
            startContinue();
        if (i % perBucket == 0)
            bucketStarts.append({m_out.position(), m_out.position() - m_out.recordStart()});
        m_out.u16(text.size());
        m_out.u8(wide ? 1 : 0);
        int done = 0;
        while (done < text.size()) {
            const int room = (MaxRecordData - m_out.size()) / width;
            if (room == 0) {
                startContinue();
                m_out.u8(wide ? 1 : 0);
                continue;
            }
            const int take = qMin(room, text.size() - done);
            m_out.characters(QStringView(text).mid(done, take), wide);
            done += take;
        }
    }
    m_out.end();
    m_out.begin(ExtSst);
    m_out.u16(perBucket);
    for (const auto &start : qAsConst(bucketStarts)) {
        m_out.u32(quint32(start.first));
        m_out.u16(start.second);
        m_out.u16(0);
    }
    m_out.end();
}

void Writer::writeSheet(int index)
{
    const XlsSheet &sheet = m_book.sheetAt(index);
    m_out.record(Bof, {Biff8, BofWorksheet, 0x0DBB, 0x07CC, 0, 0, 0x0006, 0});
    writeLayout(sheet);
    writeCells(index);
    // The first sheet is the one shown and selected.
    m_out.record(Window2, {index == 0 ? 0x06B6 : 0x00B6, 0, 0, 0x40, 0, 0, 0, 0, 0});
    const QList<ExcelRange> merges = sheet.merges();
    for (int start = 0; start < merges.size(); start += MaxMergesPerRecord) {
        const int count = qMin(MaxMergesPerRecord, merges.size() - start);
        m_out.begin(MergedCells);
        m_out.u16(count);
        for (int i = start; i < start + count; ++i) {
            const ExcelRange &range = merges.at(i);
            m_out.u16(range.firstRow);
            m_out.u16(range.lastRow);
            m_out.u16(range.firstCol);
            m_out.u16(range.lastCol);
        }
        m_out.end();
    }
    writeLinks(sheet);
    m_out.record(Eof, {});
}

// Column widths and hidden columns, the sheet's size, and rows with a height of their own
// or hidden.
void Writer::writeLayout(const XlsSheet &sheet)
{
    for (int c = 0; c < ExcelCells::MaxXlsCols; ++c) {
        const double width = sheet.colWidth(c);
        const bool hidden = sheet.colHidden(c);
        if (width < 0 && !hidden)
            continue;
        m_out.record(ColInfo,
                     {c, c, int(qBound(0.0, std::round((width < 0 ? 8.43 : width) * 256), 65535.0)),
                      StyleXfs, (hidden ? 1 : 0) | (width >= 0 ? 2 : 0), 0});
    }
    const std::vector<XlsCell> &cells = sheet.cells();
    int firstCol = 0;
    int lastCol = 0;
    for (size_t i = 0; i < cells.size(); ++i) {
        firstCol = i == 0 ? cells[i].col : qMin<int>(firstCol, cells[i].col);
        lastCol = qMax(lastCol, cells[i].col + 1);
    }
    m_out.begin(Dimensions);
    m_out.u32(cells.empty() ? 0 : cells.front().row);
    m_out.u32(cells.empty() ? 0 : cells.back().row + 1);
    m_out.u16(firstCol);
    m_out.u16(lastCol);
    m_out.u16(0);
    m_out.end();
    QList<int> rows = sheet.rowInfos().keys();
    std::sort(rows.begin(), rows.end());
    for (int row : qAsConst(rows)) {
        const XlsSheet::RowInfo info = sheet.rowInfos().value(row);
        const bool ownHeight = info.height >= 0;
        const int twips = ownHeight ? int(qBound(0.0, std::round(info.height * 20), 8191.0)) : 255;
        m_out.record(Row,
                     {row, 0, 0, twips, 0, 0,
                      0x0100 | (info.hidden ? 0x20 : 0) | (ownHeight ? 0x40 : 0), StyleXfs});
    }
}

void Writer::writeCells(int index)
{
    const XlsSheet &sheet = m_book.sheetAt(index);
    const std::vector<int> &textNumbers = m_textNumbers[size_t(index)];
    size_t nextText = 0;
    for (const XlsCell &cell : sheet.cells()) {
        const int xf = xfOf(cell);
        switch (ExcelCellType(cell.type)) {
        case ExcelCellType::String:
            m_out.begin(LabelSst);
            m_out.u16(cell.row);
            m_out.u16(cell.col);
            m_out.u16(xf);
            m_out.u32(quint32(textNumbers[nextText++]));
            break;
        case ExcelCellType::Number: {
            // Whole numbers of 30 bits go in the shorter RK form.
            const double value = cell.number;
            const bool small = value == std::floor(value) && std::abs(value) < (1 << 29)
                && !(value == 0 && std::signbit(value));
            m_out.begin(small ? Rk : Number);
            m_out.u16(cell.row);
            m_out.u16(cell.col);
            m_out.u16(xf);
            if (small)
                m_out.u32((quint32(qint32(value)) << 2) | 2);
            else
                m_out.f64(value);
            break;
        }
        case ExcelCellType::Boolean:
        case ExcelCellType::Error:
            m_out.begin(BoolErr);
            m_out.u16(cell.row);
            m_out.u16(cell.col);
            m_out.u16(xf);
            m_out.u8(cell.value);
            m_out.u8(cell.type == quint8(ExcelCellType::Error) ? 1 : 0);
            break;
        case ExcelCellType::Blank:
            m_out.begin(Blank);
            m_out.u16(cell.row);
            m_out.u16(cell.col);
            m_out.u16(xf);
            break;
        default:
            continue;
        }
        m_out.end();
    }
}

// Links to outside the book as URL monikers, links to a place in it ("#Sheet!A1") as a
// location. A link too long for one record is left out.
void Writer::writeLinks(const XlsSheet &sheet)
{
    static const uchar StdLink[16] = {0xD0, 0xC9, 0xEA, 0x79, 0xF9, 0xBA, 0xCE, 0x11,
                                      0x8C, 0x82, 0x00, 0xAA, 0x00, 0x4B, 0xA9, 0x0B};
    static const uchar UrlMoniker[16] = {0xE0, 0xC9, 0xEA, 0x79, 0xF9, 0xBA, 0xCE, 0x11,
                                         0x8C, 0x82, 0x00, 0xAA, 0x00, 0x4B, 0xA9, 0x0B};
    for (const ExcelHyperlink &link : sheet.hyperlinks()) {
        const bool inside = link.target.startsWith(QLatin1Char('#'));
        const QString target = inside ? link.target.mid(1) : link.target;
        if (target.isEmpty() || target.size() > 2000)
            continue;
        m_out.begin(HLink);
        m_out.u16(link.range.firstRow);
        m_out.u16(link.range.lastRow);
        m_out.u16(link.range.firstCol);
        m_out.u16(link.range.lastCol);
        for (uchar byte : StdLink)
            m_out.u8(byte);
        m_out.u32(2);
        m_out.u32(inside ? 0x08 : 0x03);
        if (!inside) {
            for (uchar byte : UrlMoniker)
                m_out.u8(byte);
            m_out.u32(quint32((target.size() + 1) * 2));
        } else {
            m_out.u32(quint32(target.size() + 1));
        }
        m_out.characters(target, true);
        m_out.u16(0);
        m_out.end();
    }
}

} // namespace

namespace Biff {

QByteArray write(const XlsBook &book)
{
    return Writer(book).write();
}

} // namespace Biff
