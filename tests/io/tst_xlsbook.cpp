#include "io/excelbook.h"
#include "io/fileformats.h"
#include "io/xlsbook.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

// Workbooks made at test time by xlwt and by LibreOffice (from an openpyxl book) read through
// both readers; books we write read back by xlrd and LibreOffice; damaged files made from an
// xlwt book.
class TestXlsBook : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void readsBooksOfOtherTools_data();
    void readsBooksOfOtherTools();
    void writesBookOthersRead();
    void resavingKeepsLoadedSheets();
    void sheetNames_data();
    void sheetNames();
    void refusesDamagedFiles_data();
    void refusesDamagedFiles();
    void bigSheetRoundTrip();

private:
    QStringList python(const QString &script, const QStringList &arguments);
    QStringList xlrdDump(const QString &path);
    bool libreOffice(const QString &format, const QString &file);
    QTemporaryDir m_dir;
};

namespace {

QString path(const QTemporaryDir &dir, const QString &name)
{
    return dir.filePath(name);
}

QString cellText(const ExcelBook &book, const ExcelSheet &sheet, int row, int col)
{
    switch (sheet.cellType(row, col)) {
    case ExcelCellType::String:
        return "s:" + sheet.readStr(row, col);
    case ExcelCellType::Error:
        return "e:" + sheet.readStr(row, col);
    case ExcelCellType::Boolean:
        return sheet.readBool(row, col) ? "b:1" : "b:0";
    case ExcelCellType::Number: {
        ExcelDateTime d;
        if (sheet.isDate(row, col) && book.dateUnpack(sheet.readNum(row, col), &d))
            return QString::asprintf("d:%04d-%02d-%02d %02d:%02d:%02d.%03d", d.year, d.month, d.day,
                                     d.hour, d.minute, d.second, d.millisecond);
        return "n:" + QString::number(sheet.readNum(row, col), 'g', QLocale::FloatingPointShortest);
    }
    default:
        return QString();
    }
}

QString rangeText(const ExcelRange &range)
{
    return ExcelCells::reference(range.firstRow, range.firstCol) + ':'
        + ExcelCells::reference(range.lastRow, range.lastCol);
}

// Everything the book interface tells of a sheet, one fact a line.
QStringList describe(const ExcelBook &book, const ExcelSheet &sheet)
{
    QStringList lines;
    if (sheet.lastRow() > sheet.firstRow())
        lines << "range "
                + rangeText({sheet.firstRow(), sheet.lastRow() - 1, sheet.firstCol(),
                             sheet.lastCol() - 1});
    for (int r = sheet.firstRow(); r < sheet.lastRow(); ++r) {
        for (int c = sheet.firstCol(); c < sheet.lastCol(); ++c) {
            const QString text = cellText(book, sheet, r, c);
            if (!text.isEmpty())
                lines << ExcelCells::reference(r, c) + ' ' + text.left(60);
        }
    }
    for (int r = 0; r < sheet.lastRow() + 5; ++r) {
        if (sheet.rowHidden(r))
            lines << QString("hidden row %1").arg(r + 1);
    }
    for (int c = 0; c < sheet.lastCol() + 5; ++c) {
        if (sheet.colHidden(c))
            lines << "hidden col " + ExcelCells::columnName(c);
    }
    for (const ExcelRange &range : sheet.merges())
        lines << "merge " + rangeText(range);
    for (const ExcelHyperlink &link : sheet.hyperlinks())
        lines << "link " + rangeText(link.range) + ' ' + link.target;
    return lines;
}

// A file made by another tool with a few bytes changed, to damage it in one known way.
QByteArray fileBytes(const QString &file)
{
    QFile in(file);
    return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
}

// The offset in the file of the nth record with this id, in a stream that starts at the
// first sector and runs on without gaps, as xlwt writes it.
int recordAt(const QByteArray &file, quint16 id, int nth = 0)
{
    for (int at = 512; at + 4 <= file.size();) {
        const uchar *p = reinterpret_cast<const uchar *>(file.constData()) + at;
        if (qFromLittleEndian<quint16>(p) == id && nth-- == 0)
            return at;
        at += 4 + qFromLittleEndian<quint16>(p + 2);
    }
    return -1;
}

// Writes over bytes of the file; an offset that wasn't found leaves the file as it was, and
// the test then fails on the damage not being seen.
void put(QByteArray &file, int at, quint32 value, int size)
{
    for (int i = 0; i < size && at >= 0 && at + size <= file.size(); ++i)
        file[at + i] = char(value >> (8 * i));
}

void put32(QByteArray &file, int at, quint32 value)
{
    put(file, at, value, 4);
}

void put16(QByteArray &file, int at, quint16 value)
{
    put(file, at, value, 2);
}

} // namespace

void TestXlsBook::initTestCase()
{
    QVERIFY(m_dir.isValid());
    const QStringList made = python(QStringLiteral(R"(
import datetime, openpyxl, sys, xlwt
from openpyxl.worksheet.hyperlink import Hyperlink
d = sys.argv[1]
day = xlwt.easyxf(num_format_str='yyyy-mm-dd')
stamp = xlwt.easyxf(num_format_str='yyyy-mm-dd hh:mm:ss.000')
clock = xlwt.easyxf(num_format_str='hh:mm:ss')
wb = xlwt.Workbook(encoding='utf-8')
ws = wb.add_sheet('Data')
ws.write(0, 0, 'text', xlwt.easyxf('font: bold on, color blue'))
ws.write(0, 1, 'Ünïcödé ✓ 日本')
ws.write(0, 4, 'hidden col')
ws.write(1, 0, 3); ws.write(1, 1, 0.1); ws.write(1, 2, -1234567.25); ws.write(1, 3, 2 ** 40)
ws.write(2, 0, True); ws.write(2, 1, False); ws.row(2).set_cell_error(2, '#DIV/0!')
ws.write(3, 0, datetime.date(2024, 2, 29), day)
ws.write(3, 1, 45293 + (3 * 3600 + 4 * 60 + 5.678) / 86400, stamp)
ws.write(3, 2, datetime.time(13, 45, 30), clock)
ws.write(3, 3, datetime.date(2150, 6, 1), day)
ws.write_merge(4, 5, 0, 1, 'merged')
ws.write(6, 0, 'hidden row'); ws.row(6).hidden = True
ws.col(4).hidden = True
wb.add_sheet('Second').write(10, 3, 'far')
wb.add_sheet('Empty')
wb.save(d + '/xlwt.xls')
# The tools at hand pad the workbook stream past the small-stream limit; this puts xlwt's
# stream, unpadded, into the small-stream area of a container of its own.
import struct
data = open(d + '/xlwt.xls', 'rb').read()
stream = data[512:512 + 4096]
end = 0
while struct.unpack_from('<HH', stream, end) != (0, 0):
    end += 4 + struct.unpack_from('<H', stream, end + 2)[0]
stream = stream[:end]
minis = (len(stream) + 63) // 64
area = (minis * 64 + 511) // 512
table = (minis * 4 + 511) // 512
fat = [i + 1 for i in range(area - 1)] + [0xFFFFFFFE]
fat += [area + i + 1 for i in range(table - 1)] + [0xFFFFFFFE, 0xFFFFFFFE, 0xFFFFFFFD]
def entry(name, kind, child, start, size):
    raw = name.encode('utf-16-le')
    return (raw + bytes(64 - len(raw)) + struct.pack('<HBB3I', len(raw) + 2, kind, 1,
            0xFFFFFFFF, 0xFFFFFFFF, child) + bytes(36) + struct.pack('<3I', start, size, 0))
header = (bytes.fromhex('d0cf11e0a1b11ae1') + bytes(16) + struct.pack('<5H', 0x3E, 3, 0xFFFE, 9, 6)
          + bytes(10) + struct.pack('<9I', 1, area + table, 0, 4096, area, table, 0xFFFFFFFE, 0,
          area + table + 1) + struct.pack('<108I', *[0xFFFFFFFF] * 108))
minifat = [i + 1 for i in range(minis - 1)] + [0xFFFFFFFE]
out = header + stream.ljust(area * 512, b'\0')
out += struct.pack('<%dI' % (table * 128), *(minifat + [0xFFFFFFFF] * (table * 128 - minis)))
out += entry('Root Entry', 5, 1, 0, minis * 64) + entry('Workbook', 2, 0xFFFFFFFF, 0, end)
out += bytes(256) + struct.pack('<128I', *(fat + [0xFFFFFFFF] * (128 - len(fat))))
open(d + '/small.xls', 'wb').write(out)
wb = xlwt.Workbook()
wb.dates_1904 = True
ws = wb.add_sheet('Early')
ws.write(0, 0, datetime.date(2024, 2, 29), day)
ws.write(1, 0, datetime.datetime(1904, 1, 2, 12, 0), stamp)
wb.save(d + '/xlwt1904.xls')
wb = openpyxl.Workbook()
ws = wb.active
ws.title = 'Calc'
ws.append([1, 2, '=A1+B1', '="ab"&"cd"', '=A1>0', '=1/0', True,
           datetime.datetime(2150, 6, 1, 10, 20, 30, 500000)])
ws['A3'] = 'link'
ws['A3'].hyperlink = 'https://example.com/a?b=1'
ws['B3'] = 'inside'
ws['B3'].hyperlink = Hyperlink(ref='B3', location='Calc!A1')
ws.merge_cells('C3:D4')
ws['A5'] = 'hidden row'
ws.row_dimensions[5].hidden = True
ws.column_dimensions['F'].hidden = True
wb.save(d + '/libreoffice.xlsx')
print('made')
)"),
                                    {m_dir.path()});
    QCOMPARE(made, QStringList {"made"});
    QVERIFY(libreOffice("xls", path(m_dir, "libreoffice.xlsx")));
}

QStringList TestXlsBook::python(const QString &script, const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(TABULON_PYTHON), QStringList {"-c", script} + arguments);
    if (!process.waitForFinished(120000) || process.exitCode() != 0) {
        qWarning().noquote() << process.readAllStandardError();
        return {"python failed"};
    }
    return QString::fromUtf8(process.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
}

// Every cell as xlrd sees it, with dates as xlrd converts them, and the sheet's layout.
QStringList TestXlsBook::xlrdDump(const QString &file)
{
    return python(QStringLiteral(R"(
import json, sys, xlrd
book = xlrd.open_workbook(sys.argv[1], formatting_info=True)
for sheet in book.sheets():
    print('sheet', sheet.name)
    for r in range(sheet.nrows):
        for c in range(sheet.ncols):
            cell = sheet.cell(r, c)
            if cell.ctype in (xlrd.XL_CELL_EMPTY, xlrd.XL_CELL_BLANK):
                continue
            value = json.dumps(cell.value, ensure_ascii=False)
            if cell.ctype == xlrd.XL_CELL_TEXT and len(cell.value) > 40:
                value = '%s... (%d)' % (json.dumps(cell.value[:20], ensure_ascii=False),
                                        len(cell.value))
            if cell.ctype == xlrd.XL_CELL_DATE:
                value += ' %s' % (xlrd.xldate_as_tuple(cell.value, book.datemode),)
            if cell.ctype == xlrd.XL_CELL_ERROR:
                value = xlrd.error_text_from_code[cell.value]
            xf = book.xf_list[cell.xf_index]
            font = book.font_list[xf.font_index]
            style = ' bold' if font.weight >= 700 else ''
            style += ' colour %d' % font.colour_index if font.colour_index < 64 else ''
            print(xlrd.cellname(r, c), cell.ctype, value + style)
    for c, info in sorted(sheet.colinfo_map.items()):
        if info.hidden or info.width != 2340:
            print('col', c, info.width, 'hidden' if info.hidden else '')
    for r, info in sorted(sheet.rowinfo_map.items()):
        if info.hidden or info.height_mismatch:
            print('row', r, info.height if info.height_mismatch else '', 'hidden' if info.hidden else '')
    for merge in sheet.merged_cells:
        print('merge', merge)
    for link in sheet.hyperlink_list:
        print('link', link.frowx, link.fcolx, link.type, link.url_or_path, link.textmark)
)"),
                  {file});
}

// Converts a file with LibreOffice into the folder of the file, in a profile of its own so
// that tests running side by side don't lock each other out.
bool TestXlsBook::libreOffice(const QString &format, const QString &file)
{
    const QString soffice = QStandardPaths::findExecutable(QStringLiteral("soffice"));
    if (soffice.isEmpty()) {
        qWarning("LibreOffice (soffice) is not installed; scripts/install-deps.sh installs it.");
        return false;
    }
    QProcess process;
    process.start(soffice,
                  {"-env:UserInstallation=file://" + m_dir.filePath("profile"), "--headless",
                   "--convert-to", format, "--outdir", QFileInfo(file).absolutePath(), file});
    return process.waitForFinished(180000) && process.exitCode() == 0;
}

void TestXlsBook::readsBooksOfOtherTools_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<bool>("freexl");
    QTest::addColumn<int>("sheet");
    QTest::addColumn<QStringList>("expected");

    // Our reader sees everything the book interface offers.
    const QStringList xlwtLayout {"hidden row 7", "hidden col E", "merge A5:B6"};
    const QStringList xlwtValues {
        "range A1:E7", "A1 s:text", "B1 s:Ünïcödé ✓ 日本", "E1 s:hidden col",
        "A2 n:3",      "B2 n:0.1",  "C2 n:-1234567.25",    "D2 n:1099511627776"};
    const QStringList xlwtDates {"A4 d:2024-02-29 00:00:00.000",
                                 "B4 d:2024-01-02 03:04:05.678",
                                 "C4 d:1899-12-31 13:45:30.000",
                                 "D4 d:2150-06-01 00:00:00.000",
                                 "A5 s:merged",
                                 "A7 s:hidden row"};
    QTest::newRow("xlwt, our reader")
        << "xlwt.xls" << false << 0
        << xlwtValues + QStringList {"A3 b:1", "B3 b:0", "C3 e:#DIV/0!"} + xlwtDates + xlwtLayout;
    // FreeXL reads Booleans and errors as numbers, dates to the second; it has no layout.
    QStringList freexlDates = xlwtDates;
    freexlDates[1] = "B4 d:2024-01-02 03:04:06.000";
    QTest::newRow("xlwt, FreeXL") << "xlwt.xls" << true << 0
                                  << xlwtValues + QStringList {"A3 n:1", "B3 n:0", "C3 n:1"}
            + freexlDates;
    QTest::newRow("xlwt's stream in the small-stream area")
        << "small.xls" << false << 0
        << xlwtValues + QStringList {"A3 b:1", "B3 b:0", "C3 e:#DIV/0!"} + xlwtDates + xlwtLayout;
    QTest::newRow("xlwt, a sheet away from A1")
        << "xlwt.xls" << false << 1 << QStringList {"range D11:D11", "D11 s:far"};
    QTest::newRow("xlwt, an empty sheet") << "xlwt.xls" << true << 2 << QStringList();
    const QStringList early {"range A1:A2", "A1 d:2024-02-29 00:00:00.000",
                             "A2 d:1904-01-02 12:00:00.000"};
    QTest::newRow("1904 dates, our reader") << "xlwt1904.xls" << false << 0 << early;
    QTest::newRow("1904 dates, FreeXL") << "xlwt1904.xls" << true << 0 << early;
    // Formulas read as their last computed values; LibreOffice writes true as a formula.
    QTest::newRow("LibreOffice, our reader") << "libreoffice.xls" << false << 0
                                             << QStringList {"range A1:H5",
                                                             "A1 n:1",
                                                             "B1 n:2",
                                                             "C1 n:3",
                                                             "D1 s:abcd",
                                                             "E1 b:1",
                                                             "F1 e:#DIV/0!",
                                                             "G1 b:1",
                                                             "H1 d:2150-06-01 10:20:30.500",
                                                             "A3 s:link",
                                                             "B3 s:inside",
                                                             "A5 s:hidden row",
                                                             "hidden row 5",
                                                             "hidden col F",
                                                             "merge C3:D4",
                                                             "link A3:A3 https://example.com/a?b=1",
                                                             "link B3:B3 #Calc!A1"};
    QTest::newRow("LibreOffice, FreeXL")
        << "libreoffice.xls" << true << 0
        << QStringList {"range A1:H5", "A1 n:1", "B1 n:2",
                        // The serial number falls a hair short of the half second.
                        "H1 d:2150-06-01 10:20:30.000", "A3 s:link", "B3 s:inside",
                        "A5 s:hidden row"};
}

void TestXlsBook::readsBooksOfOtherTools()
{
    QFETCH(QString, file);
    QFETCH(bool, freexl);
    QFETCH(int, sheet);
    XlsBook book;
    book.setReader(freexl ? XlsBook::Reader::FreeXL : XlsBook::Reader::Automatic);
    QVERIFY2(book.load(m_dir.filePath(file)), qPrintable(book.errorMessage()));
    QVERIFY(book.sheet(sheet));
    QTEST(describe(book, *book.sheet(sheet)), "expected");
    QCOMPARE(book.readerLimitations().isEmpty(), !freexl);
    if (file == "xlwt.xls") {
        QCOMPARE(book.sheetCount(), 3);
        QCOMPARE(book.sheetName(1), QStringLiteral("Second"));
    }
    if (file == "xlwt.xls" && !freexl) {
        const ExcelFormat title = book.format(book.sheet(0)->cellFormat(0, 0));
        QVERIFY(title.bold);
        QCOMPARE(title.fontColor, 12);
        QCOMPARE(book.format(book.sheet(0)->cellFormat(3, 1)).numberFormatCode,
                 QStringLiteral("yyyy-mm-dd hh:mm:ss.000"));
    }
}

void TestXlsBook::writesBookOthersRead()
{
    XlsBook book;
    ExcelSheet *data = book.addSheet(QStringLiteral("Données"));
    QVERIFY(data);
    const int title = book.addFormat({49, QString(), true, 12});
    const int day = book.addFormat({14, QString(), false, 0});
    const int stamp = book.addFormat({0, "yyyy-mm-dd hh:mm:ss.000", false, 0});
    const int clock = book.addFormat({21, QString(), false, 0});
    data->writeStr(0, 0, "name", title);
    data->writeStr(0, 1, "Ünïcödé ✓ 日本");
    data->writeStr(0, 2, "two\nlines");
    data->writeNum(1, 0, 3);
    data->writeNum(1, 1, 0.1);
    data->writeNum(1, 2, -1234567.25);
    data->writeNum(1, 3, 536870912); // one past the short form's range
    data->writeNum(1, 4, -536870911);
    data->writeBool(2, 0, true);
    data->writeBool(2, 1, false);
    data->writeFormula(2, 2, "A2*2");
    static_cast<XlsSheet *>(data)->writeError(2, 3, 0x2A);
    data->writeNum(3, 0, book.datePack({2024, 2, 29}), day);
    data->writeNum(3, 1, book.datePack({2150, 6, 1, 10, 20, 30, 500}), stamp);
    data->writeNum(3, 2, book.datePack({0, 0, 0, 13, 45, 30}), clock);
    data->writeStr(4, 0, QString(40000, 'x')); // Excel's cells hold 32767 characters
    data->setCol(1, 20, false);
    data->setCol(5, -1, true);
    data->setRow(5, 30, false);
    data->setRow(6, -1, true);
    data->writeStr(8, 0, "merged");
    data->setMerge({8, 9, 0, 1});
    data->writeStr(10, 0, "link");
    data->addHyperlink({{10, 10, 0, 0}, "https://example.com/a?b=1"});
    data->addHyperlink({{11, 11, 0, 1}, "#Second!A1"});
    // Beyond the format's limits: dropped.
    data->writeStr(ExcelCells::MaxXlsRows, 0, "dropped");
    data->writeNum(0, ExcelCells::MaxXlsCols, 1);
    ExcelSheet *second = book.addSheet(QStringLiteral("Second"));
    // Enough texts to run the shared table over many records, and texts of one and two bytes
    // a character long enough to be cut across them.
    for (int i = 0; i < 3000; ++i)
        second->writeStr(i, 0, QString("text %1 ü").arg(i));
    second->writeStr(0, 1, QString("日本").repeated(5000));
    second->writeStr(1, 1, QString(10000, 'y'));
    const QString file = path(m_dir, "ours.xls");
    QVERIFY2(book.save(file), qPrintable(book.errorMessage()));

    const QStringList dump = xlrdDump(file);
    const QStringList expected {
        "sheet Données",
        "A1 1 \"name\" bold colour 12",
        "B1 1 \"Ünïcödé ✓ 日本\"",
        "C1 1 \"two\\nlines\"",
        "A2 2 3.0",
        "B2 2 0.1",
        "C2 2 -1234567.25",
        "D2 2 536870912.0",
        "E2 2 -536870911.0",
        "A3 4 1",
        "B3 4 0",
        "C3 1 \"=A2*2\"",
        "D3 5 #N/A",
        "A4 3 45351.0 (2024, 2, 29, 0, 0, 0)",
        "B4 3 91464.43090856481 (2150, 6, 1, 10, 20, 30)",
        "C4 3 0.5732638888888889 (0, 0, 0, 13, 45, 30)",
        "A5 1 \"xxxxxxxxxxxxxxxxxxxx\"... (32767)",
        "A9 1 \"merged\"",
        "A11 1 \"link\"",
        "col 1 5120 ",
        "col 5 2158 hidden",
        "row 5 600 ",
        "row 6  hidden",
        "merge (8, 10, 0, 2)",
        "link 10 0 url https://example.com/a?b=1 None",
        "link 11 0 workbook None Second!A1",
        "sheet Second",
        "A1 1 \"text 0 ü\"",
        "B1 1 \"日本日本日本日本日本日本日本日本日本日本\"... (10000)",
        "A2 1 \"text 1 ü\"",
        "B2 1 \"yyyyyyyyyyyyyyyyyyyy\"... (10000)",
    };
    QCOMPARE(dump.mid(0, expected.size()), expected);
    QCOMPARE(dump.size(), expected.size() + 2998);
    QCOMPARE(dump.last(), QStringLiteral("A3000 1 \"text 2999 ü\""));

    // LibreOffice reads it as well: its text export, one file a sheet.
    QVERIFY(libreOffice("csv:Text - txt - csv (StarCalc):44,34,76,1,,0,false,true,false,false,"
                        "false,-1",
                        file));
    QFile csv(path(m_dir, "ours-Données.csv"));
    QVERIFY(csv.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(csv.readAll()).split('\n').mid(0, 5);
    // LibreOffice shows Booleans in the General format as numbers, and the built-in date and
    // time formats in its own locale's way.
    QCOMPARE(lines,
             QStringList({"name,Ünïcödé ✓ 日本,\"two", "lines\",,",
                          "3,0.1,-1234567.25,536870912,-536870911", "1,0,=A2*2,#N/A,",
                          "02/29/2024,2150-06-01 10:20:30.500,01:45:30 PM,,"}));
}

// Writing a sheet into a book that was read keeps the other sheets' values and looks, as an
// independent reader sees them.
void TestXlsBook::resavingKeepsLoadedSheets()
{
    XlsBook book;
    QVERIFY(book.load(path(m_dir, "xlwt.xls")));
    book.addSheet(QStringLiteral("Added"))->writeStr(0, 0, "new");
    const QString file = path(m_dir, "resaved.xls");
    QVERIFY2(book.save(file), qPrintable(book.errorMessage()));
    const QStringList before = xlrdDump(path(m_dir, "xlwt.xls"));
    QVERIFY(before.size() > 20);
    const QStringList added {"sheet Added", "A1 1 \"new\""};
    QCOMPARE(xlrdDump(file), before + added);
}

void TestXlsBook::sheetNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("problems");
    QTest::newRow("plain") << "Sheet 1"
                           << "";
    QTest::newRow("non-ASCII") << "Ünïcödé ✓"
                               << "";
    QTest::newRow("31 characters") << QString(31, 'a') << "";
    QTest::newRow("empty") << ""
                           << "Sheet name cannot be empty.";
    QTest::newRow("32 characters") << QString(32, 'a')
                                   << "Sheet name length is 32 characters. Excel maximum sheet "
                                      "name length is 31 characters.";
    QTest::newRow("slash") << "a/b"
                           << "'/' is not allowed in Excel sheet names.";
    QTest::newRow("brackets") << "[x]"
                              << "'[' is not allowed in Excel sheet names.\n"
                                 "']' is not allowed in Excel sheet names.";
    QTest::newRow("apostrophes") << "'quoted'"
                                 << "Apostrophes (') are not allowed at the start or end of "
                                    "Excel sheet names.";
    QTest::newRow("reserved in any case") << "HISTORY"
                                          << "'History' is a reserved Excel sheet name.";
    QTest::newRow("taken in another case") << "data"
                                           << "A sheet named 'data' already exists.";
}

void TestXlsBook::sheetNames()
{
    QFETCH(QString, name);
    QFETCH(QString, problems);
    XlsBook book;
    QVERIFY(book.addSheet(QStringLiteral("Data")));
    const ExcelSheet *sheet = book.addSheet(name);
    QCOMPARE(sheet == nullptr, !problems.isEmpty());
    if (sheet)
        QCOMPARE(book.sheetName(1), name);
    else
        QCOMPARE(book.errorMessage(), problems);
}

void TestXlsBook::refusesDamagedFiles_data()
{
    QTest::addColumn<QString>("damage");
    QTest::addColumn<bool>("freexl");
    QTest::addColumn<QString>("error");
    const QString damaged = "The workbook file is damaged: ";
    QTest::newRow("text") << "text" << false
                          << "The file is text, not an Excel 97-2003 workbook (.xls); web pages "
                             "and CSV files are sometimes named .xls.";
    QTest::newRow("xlsx") << "xlsx" << false
                          << "The file is an .xlsx workbook (a zip package), not an Excel "
                             "97-2003 workbook (.xls).";
    QTest::newRow("empty") << "empty" << false << "The file is empty.";
    QTest::newRow("cut short") << "cut" << true << damaged + "it is cut short.";
    QTest::newRow("no workbook stream")
        << "no workbook" << false
        << "The file holds no Excel workbook: it is a compound document of another kind (Word "
           "and PowerPoint files are too).";
    QTest::newRow("allocation loop")
        << "fat loop" << true << damaged + "the chain of its workbook stream runs in a loop.";
    QTest::newRow("allocation past the end")
        << "fat past end" << false
        << damaged + "the chain of its workbook stream points past the end of the file.";
    QTest::newRow("directory loop")
        << "directory loop" << false << damaged + "the chain of its directory runs in a loop.";
    QTest::newRow("stream larger than the file")
        << "stream size" << false << damaged + "a stream is larger than the file.";
    QTest::newRow("record past the end")
        << "record length" << true << damaged + "a record runs past the end of the workbook.";
    QTest::newRow("sheet past the end")
        << "sheet offset" << false << damaged + "a sheet's records are missing.";
    QTest::newRow("broken text table")
        << "text table" << true << damaged + "its table of texts is broken.";
    QTest::newRow("password") << "password" << true
                              << "The workbook is protected with a password. Save it without one "
                                 "in Excel to read it.";
    QTest::newRow("older than Excel 5") << "version" << false
                                        << damaged
            + "its workbook stream does not start like one, or comes from a version of Excel "
              "older than 5.0.";
    // Our reader takes the cells as they come; FreeXL sizes its sheets by what they declare.
    QTest::newRow("absurd size, our reader") << "size" << false << "";
    QTest::newRow("absurd size, FreeXL")
        << "size" << true
        << damaged + "a sheet declares more rows or columns than an .xls sheet can have.";
    QTest::newRow("cells outside the size, our reader") << "small size" << false << "";
    QTest::newRow("cells outside the size, FreeXL")
        << "small size" << true << damaged + "cells lie outside the size their sheet declares.";
}

void TestXlsBook::refusesDamagedFiles()
{
    QFETCH(QString, damage);
    QFETCH(bool, freexl);
    QFETCH(QString, error);
    QByteArray bytes = fileBytes(path(m_dir, "xlwt.xls"));
    QVERIFY(bytes.size() > 4096);
    const uchar *header = reinterpret_cast<const uchar *>(bytes.constData());
    const int fat = 512 * (int(qFromLittleEndian<quint32>(header + 76)) + 1);
    const int directory = int(qFromLittleEndian<quint32>(header + 48));
    const int workbookEntry = 512 * (directory + 1) + 128;
    if (damage == "text")
        bytes = "a,b\n1,2\n";
    else if (damage == "xlsx")
        bytes = fileBytes(path(m_dir, "libreoffice.xlsx"));
    else if (damage == "empty")
        bytes.clear();
    else if (damage == "cut")
        bytes.truncate(3000);
    else if (damage == "no workbook")
        bytes[workbookEntry + 2] = 'x';
    else if (damage == "fat loop")
        put32(bytes, fat + 4, 0);
    else if (damage == "fat past end")
        put32(bytes, fat + 4, 100000);
    else if (damage == "directory loop")
        put32(bytes, fat + 4 * directory, quint32(directory));
    else if (damage == "stream size")
        put32(bytes, workbookEntry + 120, 0x7FFFFFFF);
    else if (damage == "record length")
        put16(bytes, recordAt(bytes, 0x00FC) + 2, 0xFFFF);
    else if (damage == "sheet offset")
        put32(bytes, recordAt(bytes, 0x0085) + 4, 0xFFFFFF);
    else if (damage == "text table")
        put16(bytes, recordAt(bytes, 0x00FC) + 12, 0xFFFF);
    else if (damage == "password")
        put16(bytes, recordAt(bytes, 0x0042), 0x002F);
    else if (damage == "version")
        put16(bytes, 512 + 4, 0x0400);
    else if (damage == "size")
        put32(bytes, recordAt(bytes, 0x0200) + 8, 0xFFFFFFF0);
    else if (damage == "small size")
        put32(bytes, recordAt(bytes, 0x0200) + 8, 2);
    const QString file = m_dir.filePath("damaged-" + damage + ".xls");
    QFile out(file);
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write(bytes);
    out.close();

    XlsBook book;
    book.setReader(freexl ? XlsBook::Reader::FreeXL : XlsBook::Reader::Automatic);
    QCOMPARE(book.load(file), error.isEmpty());
    QCOMPARE(book.errorMessage(), error);
    if (!error.isEmpty())
        QCOMPARE(book.sheetCount(), 0);
    else
        QCOMPARE(cellText(book, *book.sheet(0), 1, 0), QStringLiteral("n:3"));
}

// A full-height sheet: its allocation table outgrows the header's list, and its texts run
// over hundreds of records. FreeXL, an independent reader, reads it back too.
void TestXlsBook::bigSheetRoundTrip()
{
    constexpr int Rows = ExcelCells::MaxXlsRows;
    constexpr int Cols = 20;
    XlsBook book;
    ExcelSheet *sheet = book.addSheet(QStringLiteral("Big"));
    for (int r = 0; r < Rows; ++r) {
        for (int c = 0; c < Cols; ++c) {
            if (c % 2)
                sheet->writeStr(r, c, QString("r%1c%2").arg(r).arg(c));
            else
                sheet->writeNum(r, c, r * 20.0 + c + 0.5);
        }
    }
    const QString file = path(m_dir, "big.xls");
    QVERIFY2(book.save(file), qPrintable(book.errorMessage()));
    const QByteArray header = fileBytes(file).left(512);
    QVERIFY(qFromLittleEndian<quint32>(header.constData() + 72) > 0); // extra allocation lists

    for (bool freexl : {false, true}) {
        XlsBook back;
        back.setReader(freexl ? XlsBook::Reader::FreeXL : XlsBook::Reader::Automatic);
        QVERIFY2(back.load(file), qPrintable(back.errorMessage()));
        const ExcelSheet *read = back.sheet(0);
        QCOMPARE(read->lastRow(), Rows);
        QCOMPARE(read->lastCol(), Cols);
        int wrong = 0;
        for (int r = 0; r < Rows; ++r) {
            for (int c = 0; c < Cols; ++c) {
                const bool same = c % 2 ? read->readStr(r, c) == QString("r%1c%2").arg(r).arg(c)
                                        : read->readNum(r, c) == r * 20.0 + c + 0.5;
                wrong += same ? 0 : 1;
            }
        }
        QCOMPARE(wrong, 0);
    }
}

QTEST_GUILESS_MAIN(TestXlsBook)
#include "tst_xlsbook.moc"
