#include "io/excelbook.h"
#include "io/fileformats.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

// Workbooks made by openpyxl at test time, read back through the book interface; damaged
// and hostile packages made with Python's zipfile.
class TestXlsxBook : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void dates_data();
    void dates();
    void dateFormats_data();
    void dateFormats();
    void references_data();
    void references();
    void readsOpenpyxlBook();
    void readsDates1904();
    void refusesBadPackages_data();
    void refusesBadPackages();
    void writesBookThatOpenpyxlReads();

private:
    QString makeFile(const QString &name, const QString &script);
    QTemporaryDir m_dir;
};

void TestXlsxBook::initTestCase()
{
    QVERIFY(m_dir.isValid());
}

// Runs a Python script with `path` bound to a new file in the temporary folder.
QString TestXlsxBook::makeFile(const QString &name, const QString &script)
{
    const QString path = m_dir.filePath(name);
    QProcess python;
    python.start(
        QStringLiteral(TABULON_PYTHON),
        {QStringLiteral("-c"),
         QStringLiteral("path = %1\n").arg(QLatin1Char('\'') + path + QLatin1Char('\'')) + script});
    if (!python.waitForFinished(60000) || python.exitCode() != 0) {
        qWarning().noquote() << python.readAllStandardError();
        return QString();
    }
    return path;
}

void TestXlsxBook::dates_data()
{
    QTest::addColumn<double>("serial");
    QTest::addColumn<bool>("uses1904");
    QTest::addColumn<QString>("expected");
    QTest::newRow("first day") << 1.0 << false << "1900-01-01 00:00:00.000";
    QTest::newRow("before the phantom day") << 59.0 << false << "1900-02-28 00:00:00.000";
    QTest::newRow("phantom 29 February 1900") << 60.0 << false << "1900-02-29 00:00:00.000";
    QTest::newRow("after the phantom day") << 61.0 << false << "1900-03-01 00:00:00.000";
    QTest::newRow("modern date and noon") << 45000.5 << false << "2023-03-15 12:00:00.000";
    QTest::newRow("milliseconds") << 45000.0 + 1.0 / 86400000.0 * 1234 << false
                                  << "2023-03-15 00:00:01.234";
    QTest::newRow("rounds up into the next day")
        << 45000.99999999999 << false << "2023-03-16 00:00:00.000";
    QTest::newRow("1904 origin") << 0.0 << true << "1904-01-01 00:00:00.000";
    QTest::newRow("1904 has no phantom day") << 59.0 << true << "1904-02-29 00:00:00.000";
}

void TestXlsxBook::dates()
{
    QFETCH(double, serial);
    QFETCH(bool, uses1904);
    QFETCH(QString, expected);
    ExcelDateTime date;
    QVERIFY(ExcelDates::unpack(serial, uses1904, &date));
    const QString text
        = QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d.%03d", date.year, date.month, date.day,
                            date.hour, date.minute, date.second, date.millisecond);
    QCOMPARE(text, expected);
    // Packing gives the serial back, to the millisecond.
    QVERIFY(qAbs(ExcelDates::pack(date, uses1904) - serial) < 1e-8 || serial > 45000.9);
}

void TestXlsxBook::dateFormats_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("code");
    QTest::addColumn<bool>("isDate");
    QTest::newRow("built-in date") << 14 << "" << true;
    QTest::newRow("built-in time") << 21 << "" << true;
    QTest::newRow("built-in text") << 49 << "" << false;
    QTest::newRow("built-in number") << 2 << "" << false;
    QTest::newRow("custom date") << 164 << "yyyy\\-mm\\-dd" << true;
    QTest::newRow("elapsed hours") << 164 << "[h]:mm" << true;
    QTest::newRow("colour and number") << 164 << "[Red]0.00" << false;
    QTest::newRow("quoted letters") << 164 << "0\" days\"" << false;
    QTest::newRow("escaped letter") << 164 << "0\\d" << false;
    QTest::newRow("General") << 164 << "General" << false;
    QTest::newRow("date only in the negative section") << 164 << "0;d" << false;
}

void TestXlsxBook::dateFormats()
{
    QFETCH(int, id);
    QFETCH(QString, code);
    QFETCH(bool, isDate);
    QCOMPARE(ExcelDates::isDateFormat(id, code), isDate);
}

void TestXlsxBook::references_data()
{
    QTest::addColumn<QString>("reference");
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("col");
    QTest::newRow("A1") << "A1" << 0 << 0;
    QTest::newRow("lower case") << "b3" << 2 << 1;
    QTest::newRow("AA10") << "AA10" << 9 << 26;
    QTest::newRow("last cell") << "XFD1048576" << 1048575 << 16383;
    QTest::newRow("column past the end") << "XFE1" << -1 << -1;
    QTest::newRow("row past the end") << "A1048577" << -1 << -1;
    QTest::newRow("row 0") << "A0" << -1 << -1;
    QTest::newRow("no row") << "A" << -1 << -1;
    QTest::newRow("sign") << "A-1" << -1 << -1;
}

void TestXlsxBook::references()
{
    QFETCH(QString, reference);
    QFETCH(int, row);
    QFETCH(int, col);
    int r = -1;
    int c = -1;
    const bool ok = ExcelCells::parseReference(reference, &r, &c);
    QCOMPARE(ok, row >= 0);
    if (ok) {
        QCOMPARE(r, row);
        QCOMPARE(c, col);
        QCOMPARE(ExcelCells::reference(r, c), reference.toUpper());
    }
}

void TestXlsxBook::readsOpenpyxlBook()
{
    const QString path = makeFile(QStringLiteral("mixed.xlsx"), QStringLiteral(R"(
import datetime, openpyxl
wb = openpyxl.Workbook()
ws = wb.active
ws.title = 'Data'
ws.append(['name', 'amount', 'ok', 'when', 'at'])
ws.append(['Ann', 3, True, datetime.date(2024, 2, 29), datetime.time(13, 45, 30)])
ws.append(['Bob\nSmith', 0.1, False, datetime.datetime(1999, 12, 31, 23, 59), None])
ws['B4'] = '=B2+B3'
ws.row_dimensions[3].hidden = True
ws.column_dimensions['E'].hidden = True
ws['A5'] = 'link'
ws['A5'].hyperlink = 'https://example.com/a?b=1'
ws.merge_cells('C5:D6')
other = wb.create_sheet('Second')
other['C7'] = 'far'
wb.create_chartsheet('Chart')
wb.save(path)
)"));
    QVERIFY(!path.isEmpty());
    std::unique_ptr<ExcelBook> book = ExcelBook::create(FileTypeXlsx);
    QVERIFY(book->load(path));
    QCOMPARE(book->sheetCount(), 2); // the chart sheet isn't a worksheet
    QCOMPARE(book->sheetName(0), QStringLiteral("Data"));
    QCOMPARE(book->sheetName(1), QStringLiteral("Second"));

    ExcelSheet *sheet = book->sheet(0);
    QVERIFY(sheet);
    QCOMPARE(sheet->firstRow(), 0);
    QCOMPARE(sheet->lastRow(), 5);
    QCOMPARE(sheet->firstCol(), 0);
    QCOMPARE(sheet->lastCol(), 5);
    QCOMPARE(sheet->cellType(0, 0), ExcelCellType::String);
    QCOMPARE(sheet->readStr(2, 0), QStringLiteral("Bob\nSmith"));
    QCOMPARE(sheet->cellType(1, 1), ExcelCellType::Number);
    QCOMPARE(sheet->readNum(1, 1), 3.0);
    QCOMPARE(sheet->readNum(2, 1), 0.1);
    QCOMPARE(sheet->cellType(1, 2), ExcelCellType::Boolean);
    QVERIFY(sheet->readBool(1, 2));
    QVERIFY(!sheet->readBool(2, 2));
    QVERIFY(sheet->isDate(1, 3));
    QVERIFY(!sheet->isDate(1, 1));
    ExcelDateTime date;
    QVERIFY(book->dateUnpack(sheet->readNum(1, 3), &date));
    QCOMPARE(QDate(date.year, date.month, date.day), QDate(2024, 2, 29));
    QVERIFY(sheet->isDate(1, 4));
    QVERIFY(book->dateUnpack(sheet->readNum(1, 4), &date));
    QCOMPARE(QTime(date.hour, date.minute, date.second), QTime(13, 45, 30));
    QCOMPARE(sheet->cellType(4, 3), ExcelCellType::Empty);
    QVERIFY(sheet->rowHidden(2));
    QVERIFY(!sheet->rowHidden(1));
    QVERIFY(sheet->colHidden(4));
    QVERIFY(!sheet->colHidden(3));

    const QList<ExcelHyperlink> links = sheet->hyperlinks();
    QCOMPARE(links.size(), 1);
    QCOMPARE(links.first().target, QStringLiteral("https://example.com/a?b=1"));
    QCOMPARE(links.first().range, (ExcelRange {4, 4, 0, 0}));
    QCOMPARE(sheet->merges(), QList<ExcelRange>({ExcelRange {4, 5, 2, 3}}));

    ExcelSheet *second = book->sheet(1);
    QVERIFY(second);
    QCOMPARE(second->firstRow(), 6);
    QCOMPARE(second->firstCol(), 2);
    QCOMPARE(second->readStr(6, 2), QStringLiteral("far"));
    QVERIFY(!book->sheet(2));
}

void TestXlsxBook::readsDates1904()
{
    const QString path = makeFile(QStringLiteral("mac.xlsx"), QStringLiteral(R"(
import datetime, openpyxl
from openpyxl.utils.datetime import CALENDAR_MAC_1904
wb = openpyxl.Workbook()
wb.epoch = CALENDAR_MAC_1904
wb.active['A1'] = datetime.date(2001, 5, 6)
wb.save(path)
)"));
    QVERIFY(!path.isEmpty());
    std::unique_ptr<ExcelBook> book = ExcelBook::create(FileTypeXlsx);
    QVERIFY(book->load(path));
    QVERIFY(book->uses1904());
    ExcelSheet *sheet = book->sheet(0);
    QVERIFY(sheet && sheet->isDate(0, 0));
    ExcelDateTime date;
    QVERIFY(book->dateUnpack(sheet->readNum(0, 0), &date));
    QCOMPARE(QDate(date.year, date.month, date.day), QDate(2001, 5, 6));
}

void TestXlsxBook::refusesBadPackages_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<bool>("loads"); // the book opens, and the sheet is what fails
    QTest::addColumn<QString>("message");

    QTest::newRow("not a zip") << "open(path, 'w').write('name,amount\\n')" << false
                               << "is not a zip package";
    QTest::newRow("truncated zip") << R"(
import openpyxl
wb = openpyxl.Workbook(); wb.active['A1'] = 'x'; wb.save(path)
data = open(path, 'rb').read(); open(path, 'wb').write(data[:len(data) // 2])
)" << false << "is not a zip package";
    QTest::newRow("zip that is not a workbook") << R"(
import zipfile
with zipfile.ZipFile(path, 'w') as z: z.writestr('hello.txt', 'hello')
)" << false << "it has no workbook part";

    const QString book = QStringLiteral(R"(
import openpyxl, zipfile
wb = openpyxl.Workbook(); wb.active['A1'] = 'x'; wb.save(path)
with zipfile.ZipFile(path) as z: parts = {n: z.read(n) for n in z.namelist()}
parts['xl/worksheets/sheet1.xml'] = SHEET
with zipfile.ZipFile(path, 'w') as z:
    for n, d in parts.items(): z.writestr(n, d)
)");
    const QString laughs = QStringLiteral(
        "SHEET = b'<?xml version=\"1.0\"?><!DOCTYPE lolz [<!ENTITY lol \"lol\">"
        "<!ENTITY lol2 \"&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;\">"
        "<!ENTITY lol3 \"&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;\">]>"
        "<worksheet><sheetData><row r=\"1\"><c r=\"A1\" t=\"inlineStr\"><is><t>&lol3;</t></is>"
        "</c></row></sheetData></worksheet>'");
    QTest::newRow("entity expansion") << laughs + book << true << "declares a DTD";
    QTest::newRow("cell beyond the last column")
        << "SHEET = b'<worksheet><sheetData><row r=\"1\"><c r=\"XFE1\"><v>1</v></c></row>"
           "</sheetData></worksheet>'"
            + book
        << true << "Cell reference 'XFE1' is beyond the limits of a sheet.";
    QTest::newRow("row beyond the last row")
        << "SHEET = b'<worksheet><sheetData><row r=\"1048577\"><c><v>1</v></c></row>"
           "</sheetData></worksheet>'"
            + book
        << true << "Row number '1048577' is beyond the limits of a sheet.";
    QTest::newRow("cell text without end")
        << "SHEET = b'<worksheet><sheetData><row><c t=\"inlineStr\"><is><t>' + b'abcd' * "
           "(5 << 20) + b'</t></is></c></row></sheetData></worksheet>'"
            + book
        << true << "a cell holds more than 16777216 bytes of text.";
    QTest::newRow("broken XML") << "SHEET = b'<worksheet><sheetData><row><c><v>1</v></row>'" + book
                                << true << "is not well-formed XML";
}

void TestXlsxBook::refusesBadPackages()
{
    QFETCH(QString, script);
    QFETCH(bool, loads);
    QFETCH(QString, message);
    const QString path = makeFile(QString::fromLatin1(QTest::currentDataTag()).replace(' ', '_')
                                      + QStringLiteral(".xlsx"),
                                  script);
    QVERIFY(!path.isEmpty());
    std::unique_ptr<ExcelBook> book = ExcelBook::create(FileTypeXlsx);
    QCOMPARE(book->load(path), loads);
    if (loads) {
        QCOMPARE(book->sheetCount(), 1);
        QVERIFY(!book->sheet(0));
    }
    QVERIFY2(book->errorMessage().contains(message), qPrintable(book->errorMessage()));
}

void TestXlsxBook::writesBookThatOpenpyxlReads()
{
    const QString path = m_dir.filePath(QStringLiteral("written.xlsx"));
    {
        std::unique_ptr<ExcelBook> book = ExcelBook::create(FileTypeXlsx);
        ExcelSheet *sheet = book->addSheet(QStringLiteral("Out & about"));
        QVERIFY(sheet);
        QVERIFY(!book->addSheet(QStringLiteral("OUT & ABOUT")));
        ExcelFormat bold;
        bold.bold = true;
        bold.numberFormat = 49;
        const int header = book->addFormat(bold);
        ExcelFormat day;
        day.numberFormat = 14;
        const int date = book->addFormat(day);
        ExcelFormat link;
        link.fontColor = 12;
        link.numberFormat = 49;
        const int linkFormat = book->addFormat(link);
        QCOMPARE(book->addFormat(day), date);
        sheet->writeStr(0, 0, QStringLiteral("name"), header);
        sheet->writeStr(0, 1, QStringLiteral("when"), header);
        sheet->writeStr(1, 0, QStringLiteral("<a & \"b\">\ttab \u00e9\U0001F600"));
        // Characters XML can't hold, and text that looks like their escapes; openpyxl leaves
        // such escapes undecoded, so only our reader checks this cell.
        sheet->writeStr(9, 0, QStringLiteral("control\x01 _x0041_"));
        sheet->writeNum(1, 1, book->datePack({2024, 2, 29, 0, 0, 0, 0}), date);
        sheet->writeNum(2, 0, 0.1);
        sheet->writeBool(2, 1, true);
        sheet->writeFormula(3, 0, QStringLiteral("A3*2"));
        sheet->writeStr(3, 1, QStringLiteral("https://example.com/?a=1&b=2"), linkFormat);
        sheet->addHyperlink({{3, 3, 1, 1}, QStringLiteral("https://example.com/?a=1&b=2")});
        sheet->setMerge({5, 6, 0, 1});
        sheet->setRow(8, -1, true);
        sheet->setCol(2, 20, true);
        QVERIFY2(book->save(path), qPrintable(book->errorMessage()));
    }
    QProcess python;
    python.start(QStringLiteral(TABULON_PYTHON),
                 {QStringLiteral("-c"), QStringLiteral(R"(
import openpyxl, sys
wb = openpyxl.load_workbook(sys.argv[1])
ws = wb['Out & about']
for row in ws.iter_rows(min_row=1, max_row=4):
    print('|'.join(repr(c.value) for c in row))
print(ws['A1'].font.b, ws['B2'].number_format, ws['B4'].hyperlink.target)
print(ws.merged_cells.ranges[0].coord, ws.row_dimensions[9].hidden, ws.column_dimensions['C'].hidden,
      ws.column_dimensions['C'].width)
)"),
                  path});
    QVERIFY(python.waitForFinished(60000));
    QVERIFY2(python.exitCode() == 0, python.readAllStandardError().constData());
    const QStringList lines = QString::fromUtf8(python.readAllStandardOutput()).split('\n');
    QCOMPARE(lines.value(0), QStringLiteral("'name'|'when'"));
    QCOMPARE(lines.value(1),
             QStringLiteral("'<a & \"b\">\\ttab \u00e9\U0001F600'|"
                            "datetime.datetime(2024, 2, 29, 0, 0)"));
    QCOMPARE(lines.value(2), QStringLiteral("0.1|True"));
    QCOMPARE(lines.value(3), QStringLiteral("'=A3*2'|'https://example.com/?a=1&b=2'"));
    QCOMPARE(lines.value(4), QStringLiteral("True mm-dd-yy https://example.com/?a=1&b=2"));
    QCOMPARE(lines.value(5), QStringLiteral("A6:B7 True True 20.0"));

    // Our own reader gets the same back.
    std::unique_ptr<ExcelBook> book = ExcelBook::create(FileTypeXlsx);
    QVERIFY(book->load(path));
    ExcelSheet *sheet = book->sheet(0);
    QVERIFY(sheet);
    QCOMPARE(sheet->readStr(1, 0), QStringLiteral("<a & \"b\">\ttab \u00e9\U0001F600"));
    QCOMPARE(sheet->readStr(9, 0), QStringLiteral("control\x01 _x0041_"));
    QVERIFY(sheet->isDate(1, 1));
    QVERIFY(sheet->rowHidden(8));
}

QTEST_GUILESS_MAIN(TestXlsxBook)
#include "tst_xlsxbook.moc"
