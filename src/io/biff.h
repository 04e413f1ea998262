#pragma once

#include <QByteArray>
#include <QString>
#include <QtEndian>

class XlsBook;

// The record stream of an .xls workbook (BIFF): the parts that reading and writing share.
namespace Biff {

enum RecordId : quint16 {
    Formula = 0x0006,
    Eof = 0x000A,
    FilePass = 0x002F,
    DateMode = 0x0022,
    Font = 0x0031,
    Continue = 0x003C,
    Window1 = 0x003D,
    CodePage = 0x0042,
    ColInfo = 0x007D,
    BoundSheet = 0x0085,
    MulRk = 0x00BD,
    MulBlank = 0x00BE,
    RString = 0x00D6,
    Xf = 0x00E0,
    MergedCells = 0x00E5,
    Sst = 0x00FC,
    LabelSst = 0x00FD,
    ExtSst = 0x00FF,
    Dimensions = 0x0200,
    Blank = 0x0201,
    Number = 0x0203,
    Label = 0x0204,
    BoolErr = 0x0205,
    String = 0x0207,
    Row = 0x0208,
    Window2 = 0x023E,
    Rk = 0x027E,
    Style = 0x0293,
    Format = 0x041E,
    HLink = 0x01B8,
    Bof = 0x0809,
};

// The most a record holds after its four-byte header; longer data goes on in CONTINUE records.
constexpr int MaxRecordData = 8224;
constexpr int Biff8 = 0x0600;
constexpr int Biff5 = 0x0500;
constexpr int BofGlobals = 0x0005;
constexpr int BofWorksheet = 0x0010;

inline quint16 u16(const uchar *at)
{
    return qFromLittleEndian<quint16>(at);
}
inline quint32 u32(const uchar *at)
{
    return qFromLittleEndian<quint32>(at);
}
double f64(const uchar *at);
// An RK number: a 30-bit integer or the top of a double, perhaps divided by 100.
double rk(quint32 value);

struct Record
{
    quint16 id = 0;
    const uchar *data = nullptr;
    int size = 0;
    int offset = 0; // of the header in the stream
};

// Walks the records from an offset; never reads past the stream.
class Records
{
public:
    Records(const QByteArray &stream, int offset);
    // False at the end of the stream, and when a record claims more bytes than remain
    // (damaged() then tells).
    bool next(Record *record);
    bool damaged() const { return m_damaged; }
    // Whether the next record has this id, without moving.
    bool peek(quint16 id) const;

private:
    const uchar *m_data;
    int m_size;
    int m_offset;
    bool m_damaged = false;
};

// The BIFF version of the stream's first BOF record: Biff8, Biff5, or 0 when the stream does
// not start with one.
int version(const QByteArray &stream);

// Reads a BIFF8 workbook stream into the empty book; false with a reason for a user when the
// stream is damaged.
bool read(const QByteArray &stream, XlsBook *book, QString *error);

// Reads the workbook through FreeXL, after checking that the stream holds nothing that FreeXL
// would not survive: records running past their end, cells outside the declared size of
// their sheet, sizes beyond the format's limits, or more dates than it can convert in
// reasonable time.
bool readWithFreeXL(const QString &path, const QByteArray &stream, XlsBook *book, QString *error);

// The book as a BIFF8 workbook stream.
QByteArray write(const XlsBook &book);

} // namespace Biff
