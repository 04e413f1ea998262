// Reads a BIFF8 workbook stream (Excel 97-2003) into an XlsBook. Every record is checked
// against its own length and the stream's before a byte is read, and nothing is sized from
// what the file declares (its dimensions, its count of texts): a damaged file ends in an
// error, never in a crash or a huge allocation.

#include "io/biff.h"
#include "io/xlsbook.h"

#include <cstring>
#include <utility>
#include <vector>

namespace Biff {

double f64(const uchar *at)
{
    const quint64 bits = qFromLittleEndian<quint64>(at);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

double rk(quint32 value)
{
    double number;
    if (value & 2) {
        number = double(qint32(value) >> 2);
    } else {
        const quint64 bits = quint64(value & 0xFFFFFFFC) << 32;
        std::memcpy(&number, &bits, sizeof number);
    }
    return value & 1 ? number / 100 : number;
}

Records::Records(const QByteArray &stream, int offset)
    : m_data(reinterpret_cast<const uchar *>(stream.constData()))
    , m_size(stream.size())
    , m_offset(offset >= 0 && offset <= stream.size() ? offset : stream.size())
{ }

bool Records::next(Record *record)
{
    if (m_offset + 4 > m_size)
        return false;
    const int size = u16(m_data + m_offset + 2);
    if (m_offset + 4 + size > m_size) {
        m_damaged = true;
        return false;
    }
    record->id = u16(m_data + m_offset);
    record->data = m_data + m_offset + 4;
    record->size = size;
    record->offset = m_offset;
    m_offset += 4 + size;
    return true;
}

bool Records::peek(quint16 id) const
{
    return m_offset + 4 <= m_size && u16(m_data + m_offset) == id;
}

int version(const QByteArray &stream)
{
    Records records(stream, 0);
    Record bof;
    if (!records.next(&bof) || bof.id != Bof || bof.size < 4)
        return 0;
    const int found = u16(bof.data);
    return found == Biff8 || found == Biff5 ? found : 0;
}

} // namespace Biff

namespace {

using namespace Biff;

QString damagedText(const char *detail)
{
    return QStringLiteral("The workbook file is damaged: %1.").arg(QLatin1String(detail));
}

QString characters(const uchar *at, int count, bool wide)
{
    QString text(count, Qt::Uninitialized);
    QChar *to = text.data();
    for (int i = 0; i < count; ++i)
        to[i] = wide ? QChar(u16(at + 2 * i)) : QChar(at[i]);
    return text;
}

// The bytes of one record, read forward with bounds checked; a read past the end leaves
// zeros and clears ok.
struct Cursor
{
    const uchar *data;
    int size;
    int pos = 0;
    bool ok = true;

    bool has(int bytes)
    {
        ok = ok && bytes >= 0 && pos + bytes <= size;
        return ok;
    }
    int u8() { return has(1) ? data[pos++] : 0; }
    int u16() { return has(2) ? (pos += 2, Biff::u16(data + pos - 2)) : 0; }
    quint32 u32() { return has(4) ? (pos += 4, Biff::u32(data + pos - 4)) : 0; }
    void skip(qint64 bytes)
    {
        if (has(int(qBound<qint64>(-1, bytes, size + 1))))
            pos += int(bytes);
    }
    // A string whose length (in one or two bytes) comes first, then the flags.
    QString text(bool shortLength)
    {
        const int count = shortLength ? u8() : u16();
        const int flags = u8();
        const int runs = flags & 0x08 ? u16() : 0;
        const quint32 extra = flags & 0x04 ? u32() : 0;
        const bool wide = flags & 0x01;
        if (!has(count * (wide ? 2 : 1)))
            return QString();
        const QString out = characters(data + pos, count, wide);
        pos += count * (wide ? 2 : 1);
        skip(qint64(runs) * 4 + extra);
        return out;
    }
    // A counted string of UTF-16 characters as links hold them, with its null dropped.
    QString linkText()
    {
        const quint32 count = u32();
        if (count > quint32(size) || !has(int(count) * 2))
            return QString();
        QString out = characters(data + pos, int(count), true);
        pos += int(count) * 2;
        const int end = out.indexOf(QChar(0));
        return end >= 0 ? out.left(end) : out;
    }
};

// A record's data followed by the data of its CONTINUE records, read as one. Where text
// characters run over into the next record, that record starts with a fresh flags byte that
// says whether the rest is one byte or two a character.
class Continued
{
public:
    void add(const uchar *data, int size) { m_parts.emplace_back(data, size); }
    bool atEnd()
    {
        while (m_part < m_parts.size() && m_pos == m_parts[m_part].second)
            ++m_part, m_pos = 0;
        return m_part >= m_parts.size();
    }
    bool raw(uchar *out, int bytes)
    {
        for (int i = 0; i < bytes; ++i) {
            if (atEnd())
                return false;
            out[i] = m_parts[m_part].first[m_pos++];
        }
        return true;
    }
    bool skip(qint64 bytes)
    {
        while (bytes > 0) {
            if (atEnd())
                return false;
            const int step = int(qMin<qint64>(bytes, m_parts[m_part].second - m_pos));
            m_pos += step;
            bytes -= step;
        }
        return true;
    }
    bool text(QString *out)
    {
        uchar header[3];
        uchar field[4];
        if (!raw(header, 3))
            return false;
        const int count = u16(header);
        const int flags = header[2];
        int runs = 0;
        quint32 extra = 0;
        if (flags & 0x08) {
            if (!raw(field, 2))
                return false;
            runs = u16(field);
        }
        if (flags & 0x04) {
            if (!raw(field, 4))
                return false;
            extra = u32(field);
        }
        bool wide = flags & 0x01;
        out->resize(count);
        int filled = 0;
        while (filled < count) {
            if (m_part >= m_parts.size())
                return false;
            if (m_pos == m_parts[m_part].second) {
                if (++m_part >= m_parts.size() || m_parts[m_part].second < 1)
                    return false;
                wide = m_parts[m_part].first[0] & 0x01;
                m_pos = 1;
                continue;
            }
            const int width = wide ? 2 : 1;
            const int n = qMin(count - filled, (m_parts[m_part].second - m_pos) / width);
            if (n == 0)
                return false;
            const uchar *at = m_parts[m_part].first + m_pos;
            QChar *to = out->data() + filled;
            for (int i = 0; i < n; ++i)
                to[i] = wide ? QChar(u16(at + 2 * i)) : QChar(at[i]);
            m_pos += n * width;
            filled += n;
        }
        return skip(qint64(runs) * 4 + extra);
    }

private:
    std::vector<std::pair<const uchar *, int>> m_parts;
    size_t m_part = 0;
    int m_pos = 0;
};

struct SheetEntry
{
    quint32 offset;
    int type;
    QString name;
};

class Reader
{
public:
    Reader(const QByteArray &stream, XlsBook *book)
        : m_stream(stream)
        , m_book(book)
    { }
    bool read(QString *error);

private:
    bool fail(const QString &error)
    {
        m_error = error;
        return false;
    }
    bool readGlobals();
    void readSharedStrings(const Record &sst, Records &records);
    void buildFormats();
    bool readSheet(const SheetEntry &entry);
    bool readCellRecord(const Record &record, Records &records, XlsSheet *sheet);
    void add(XlsSheet *sheet, int row, int col, int xf, ExcelCellType type, double number = 0,
             int value = 0, int flags = 0);
    // A text that isn't one of the shared ones goes to the sheet's own list.
    void addText(XlsSheet *sheet, int row, int col, int xf, const QString &text)
    {
        add(sheet, row, col, xf, ExcelCellType::String, 0, sheet->addText(text), XlsCell::OwnText);
    }
    void addFormula(const Record &record, Records &records, XlsSheet *sheet);
    void readLayout(const Record &record, XlsSheet *sheet);
    static bool readLink(const Record &record, ExcelHyperlink *link);

    const QByteArray &m_stream;
    XlsBook *m_book;
    QString m_error;
    QVector<QPair<int, int>> m_fonts; // weight, colour
    QHash<int, QString> m_numberFormats;
    QVector<QPair<int, int>> m_xfs; // font, number format
    QVector<SheetEntry> m_sheets;
    bool m_tooManyCells = false;
};

bool Reader::read(QString *error)
{
    bool ok = readGlobals();
    for (int i = 0; ok && i < m_sheets.size(); ++i) {
        if (m_sheets.at(i).type == 0) // worksheets; charts and macro sheets are left out
            ok = readSheet(m_sheets.at(i));
    }
    if (!ok)
        *error = m_error;
    return ok;
}

bool Reader::readGlobals()
{
    Records records(m_stream, 0);
    Record record;
    records.next(&record); // the BOF, checked by the caller
    bool ended = false;
    while (!ended && records.next(&record)) {
        Cursor in {record.data, record.size};
        switch (record.id) {
        case FilePass:
            return fail(QStringLiteral("The workbook is protected with a password. Save it "
                                       "without one in Excel to read it."));
        case DateMode:
            m_book->setUses1904(in.u16() == 1);
            break;
        case Font: {
            in.skip(4);
            const int colour = in.u16();
            const int weight = in.u16();
            m_fonts.append({weight, colour});
            break;
        }
        case Format: {
            const int id = in.u16();
            const QString code = in.text(false);
            if (in.ok)
                m_numberFormats.insert(id, code);
            break;
        }
        case Xf: {
            const int font = in.u16();
            m_xfs.append({font, in.u16()});
            break;
        }
        case BoundSheet: {
            SheetEntry entry;
            entry.offset = in.u32();
            in.skip(1);
            entry.type = in.u8();
            entry.name = in.text(true);
            if (in.ok)
                m_sheets.append(entry);
            break;
        }
        case Sst:
            readSharedStrings(record, records);
            break;
        case Eof:
            ended = true;
            break;
        default:
            break;
        }
    }
    if (!ended)
        return fail(damagedText(records.damaged() ? "a record runs past the end of the workbook"
                                                  : "the workbook part ends early"));
    if (!m_error.isEmpty())
        return false;
    buildFormats();
    return true;
}

void Reader::readSharedStrings(const Record &sst, Records &records)
{
    Continued data;
    if (sst.size > 8)
        data.add(sst.data + 8, sst.size - 8);
    Record part;
    while (records.peek(Continue) && records.next(&part))
        data.add(part.data, part.size);
    const quint32 unique = sst.size >= 8 ? u32(sst.data + 4) : 0;
    QStringList &strings = m_book->sharedStrings();
    // The declared count is only a hint: a lying one must not reserve gigabytes.
    strings.reserve(int(qMin<quint32>(unique, 1 << 20)));
    QString text;
    for (quint32 i = 0; i < unique && !data.atEnd(); ++i) {
        if (!data.text(&text)) {
            m_error = damagedText("its table of texts is broken");
            return;
        }
        strings.append(text);
    }
}

// A format of the book for each XF record, by the same number that cells give.
void Reader::buildFormats()
{
    QVector<ExcelFormat> formats;
    formats.reserve(m_xfs.size());
    for (const auto &xf : qAsConst(m_xfs)) {
        ExcelFormat format;
        format.numberFormat = xf.second;
        // Codes of the built-in formats depend on the locale that wrote the file; the number
        // says what they are.
        if (xf.second >= 50)
            format.numberFormatCode = m_numberFormats.value(xf.second);
        // Font 4 does not exist: the numbers skip it.
        const int font = xf.first < 4 ? xf.first : xf.first - 1;
        if (xf.first != 4 && font < m_fonts.size()) {
            format.bold = m_fonts.at(font).first >= 700;
            const int colour = m_fonts.at(font).second;
            format.fontColor = colour >= 8 && colour < 64 ? colour : 0;
        }
        formats.append(format);
    }
    m_book->setFormats(formats);
}

bool Reader::readSheet(const SheetEntry &entry)
{
    Records records(m_stream, int(qMin<quint32>(entry.offset, quint32(m_stream.size()))));
    Record record;
    if (!records.next(&record) || record.id != Bof)
        return fail(damagedText("a sheet's records are missing"));
    XlsSheet *sheet = m_book->appendSheet(entry.name);
    int depth = 1; // charts inside the sheet come as substreams of their own
    while (depth > 0 && records.next(&record)) {
        if (record.id == Bof)
            ++depth;
        else if (record.id == Eof)
            --depth;
        else if (depth == 1 && !readCellRecord(record, records, sheet))
            return fail(damagedText("a cell record is too short"));
        if (m_tooManyCells)
            return fail(damagedText("a sheet holds more cells than an .xls sheet can"));
    }
    if (depth > 0)
        return fail(damagedText(records.damaged() ? "a record runs past the end of the workbook"
                                                  : "a sheet ends early"));
    return true;
}

void Reader::add(XlsSheet *sheet, int row, int col, int xf, ExcelCellType type, double number,
                 int value, int flags)
{
    if (col >= ExcelCells::MaxXlsCols)
        return;
    if (sheet->cellCount() >= qint64(ExcelCells::MaxXlsRows) * ExcelCells::MaxXlsCols) {
        m_tooManyCells = true;
        return;
    }
    XlsCell cell {};
    cell.row = quint16(row);
    cell.col = quint8(col);
    cell.format = quint16(xf < m_xfs.size() ? xf : 0);
    cell.type = quint8(type);
    cell.flags = quint8(flags);
    if (type == ExcelCellType::String)
        cell.text = value;
    else
        cell.number = number;
    if (type == ExcelCellType::Boolean || type == ExcelCellType::Error)
        cell.value = quint8(value);
    sheet->appendCell(cell);
}

bool Reader::readCellRecord(const Record &record, Records &records, XlsSheet *sheet)
{
    const uchar *d = record.data;
    const int size = record.size;
    auto needs = [&](int bytes) {
        return size >= bytes;
    };
    switch (record.id) {
    case Number:
        if (!needs(14))
            return false;
        add(sheet, u16(d), u16(d + 2), u16(d + 4), ExcelCellType::Number, f64(d + 6));
        break;
    case Rk:
        if (!needs(10))
            return false;
        add(sheet, u16(d), u16(d + 2), u16(d + 4), ExcelCellType::Number, rk(u32(d + 6)));
        break;
    case MulRk:
        if (!needs(6))
            return false;
        for (int i = 0; 6 + 6 * i + 6 <= size; ++i)
            add(sheet, u16(d), u16(d + 2) + i, u16(d + 4 + 6 * i), ExcelCellType::Number,
                rk(u32(d + 6 + 6 * i)));
        break;
    case LabelSst:
        if (!needs(10))
            return false;
        add(sheet, u16(d), u16(d + 2), u16(d + 4), ExcelCellType::String, 0, int(u32(d + 6)));
        break;
    case Label:
    case RString: {
        Cursor in {d, size, 6};
        const QString text = in.text(false);
        if (!needs(6) || !in.ok)
            return false;
        addText(sheet, u16(d), u16(d + 2), u16(d + 4), text);
        break;
    }
    case BoolErr:
        if (!needs(8))
            return false;
        add(sheet, u16(d), u16(d + 2), u16(d + 4),
            d[7] ? ExcelCellType::Error : ExcelCellType::Boolean, 0, d[6]);
        break;
    case Formula:
        if (!needs(20))
            return false;
        addFormula(record, records, sheet);
        break;
    case Blank:
        if (!needs(6))
            return false;
        add(sheet, u16(d), u16(d + 2), u16(d + 4), ExcelCellType::Blank);
        break;
    case MulBlank:
        if (!needs(6))
            return false;
        for (int i = 0; 4 + 2 * i + 4 <= size; ++i)
            add(sheet, u16(d), u16(d + 2) + i, u16(d + 4 + 2 * i), ExcelCellType::Blank);
        break;
    default:
        readLayout(record, sheet);
        break;
    }
    return true;
}

// A formula's last computed value: a number, or a text in the STRING record that follows,
// a Boolean, an error or an empty text.
void Reader::addFormula(const Record &record, Records &records, XlsSheet *sheet)
{
    const uchar *d = record.data;
    const int row = u16(d);
    const int col = u16(d + 2);
    const int xf = u16(d + 4);
    if (u16(d + 12) != 0xFFFF) {
        add(sheet, row, col, xf, ExcelCellType::Number, f64(d + 6));
        return;
    }
    switch (d[6]) {
    case 0: {
        Record next;
        // Shared and array formulas put their definition in between.
        while ((records.peek(0x04BC) || records.peek(0x0221) || records.peek(0x0236))
               && records.next(&next)) { }
        Continued data;
        if (records.peek(String) && records.next(&next)) {
            data.add(next.data, next.size);
            while (records.peek(Continue) && records.next(&next))
                data.add(next.data, next.size);
        }
        QString text;
        if (!data.text(&text))
            text.clear();
        addText(sheet, row, col, xf, text);
        break;
    }
    case 1:
        add(sheet, row, col, xf, ExcelCellType::Boolean, 0, d[8]);
        break;
    case 2:
        add(sheet, row, col, xf, ExcelCellType::Error, 0, d[8]);
        break;
    case 3:
        addText(sheet, row, col, xf, QString());
        break;
    default:
        break;
    }
}

void Reader::readLayout(const Record &record, XlsSheet *sheet)
{
    Cursor in {record.data, record.size};
    switch (record.id) {
    case Row: {
        if (record.size < 16)
            break;
        const int row = in.u16();
        in.skip(4);
        const int height = in.u16() & 0x7FFF;
        in.skip(4);
        const int flags = in.u16();
        // Hidden: bit 5; a height of its own: bit 6.
        if (flags & 0x60)
            sheet->setRow(row, flags & 0x40 ? height / 20.0 : -1, flags & 0x20);
        break;
    }
    case ColInfo: {
        if (record.size < 10)
            break;
        const int first = in.u16();
        const int last = qMin(in.u16(), ExcelCells::MaxXlsCols - 1);
        const double width = in.u16() / 256.0;
        in.skip(2);
        const bool hidden = in.u16() & 0x01;
        for (int c = first; c <= last; ++c)
            sheet->setCol(c, width, hidden);
        break;
    }
    case MergedCells: {
        const int count = in.u16();
        for (int i = 0; i < count && in.has(8); ++i) {
            ExcelRange range;
            range.firstRow = in.u16();
            range.lastRow = in.u16();
            range.firstCol = in.u16();
            range.lastCol = in.u16();
            sheet->setMerge(range);
        }
        break;
    }
    case HLink: {
        ExcelHyperlink link;
        if (readLink(record, &link))
            sheet->addHyperlink(link);
        break;
    }
    default:
        break;
    }
}

// A link: its cells, then a hyperlink object whose flags say which parts follow: a display
// name, a frame, the target as a URL or file moniker, and a place in the book.
bool Reader::readLink(const Record &record, ExcelHyperlink *link)
{
    static const uchar UrlMoniker[16] = {0xE0, 0xC9, 0xEA, 0x79, 0xF9, 0xBA, 0xCE, 0x11,
                                         0x8C, 0x82, 0x00, 0xAA, 0x00, 0x4B, 0xA9, 0x0B};
    static const uchar FileMoniker[16]
        = {0x03, 0x03, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
    Cursor in {record.data, record.size};
    link->range.firstRow = in.u16();
    link->range.lastRow = in.u16();
    link->range.firstCol = in.u16();
    link->range.lastCol = in.u16();
    in.skip(16 + 4); // the hyperlink class and the stream version
    const quint32 flags = in.u32();
    if (flags & 0x10)
        in.linkText(); // the display name: the cell's own text
    if (flags & 0x80)
        in.linkText(); // the frame
    QString target;
    if ((flags & 0x01) && (flags & 0x100)) {
        target = in.linkText();
    } else if (flags & 0x01 && in.has(16)) {
        const uchar *moniker = in.data + in.pos;
        in.skip(16);
        if (std::memcmp(moniker, UrlMoniker, 16) == 0) {
            const quint32 bytes = in.u32();
            if (bytes > quint32(in.size) || !in.has(int(bytes)))
                return false;
            target = characters(in.data + in.pos, int(bytes / 2), true);
            target.truncate(target.indexOf(QChar(0)) >= 0 ? target.indexOf(QChar(0))
                                                          : target.size());
            in.skip(bytes);
        } else if (std::memcmp(moniker, FileMoniker, 16) == 0) {
            const int parents = in.u16();
            const quint32 ansiBytes = in.u32();
            if (ansiBytes > quint32(in.size) || !in.has(int(ansiBytes)))
                return false;
            target = QString::fromLatin1(reinterpret_cast<const char *>(in.data + in.pos),
                                         int(qMax<quint32>(ansiBytes, 1) - 1));
            in.skip(ansiBytes + 2 + 2 + 16 + 4);
            const quint32 unicodeSize = in.u32();
            if (unicodeSize > 0) {
                const quint32 pathBytes = in.u32();
                in.skip(2);
                if (pathBytes <= quint32(in.size) && in.has(int(pathBytes))) {
                    target = characters(in.data + in.pos, int(pathBytes / 2), true);
                    in.skip(pathBytes);
                }
            }
            for (int i = 0; i < parents; ++i)
                target.prepend(QStringLiteral("../"));
        } else {
            return false;
        }
    }
    if (flags & 0x08) {
        const QString location = in.linkText();
        if (!location.isEmpty())
            target += QLatin1Char('#') + location;
    }
    link->target = target;
    return in.ok && !target.isEmpty();
}

} // namespace

namespace Biff {

bool read(const QByteArray &stream, XlsBook *book, QString *error)
{
    return Reader(stream, book).read(error);
}

} // namespace Biff
