#include "data/dataset.h"
#include "io/inputreader.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

// Sheets of workbooks made by openpyxl at test time, read through the whole input pipeline.
class TestExcelReader : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cellTexts();
    void options_data();
    void options();
    void sheetChoice_data();
    void sheetChoice();
    void notAWorkbook();
    void otherMakers_data();
    void otherMakers();

private:
    InputReadResult read(const QString &path, const QString &sheet,
                         const std::function<void(InputReadOptions &)> &adjust = {});
    QTemporaryDir m_dir;
    QString m_book;
};

void TestExcelReader::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_book = m_dir.filePath(QStringLiteral("book.xlsx"));
    // Sheet "Values": every kind of cell. Sheet "1" is found by its name before sheet 1.
    // Sheet "Layout": a blank first column and row, hidden parts, links and empty rows.
    const QString script = QStringLiteral(R"(
import datetime, openpyxl, sys
wb = openpyxl.Workbook()
ws = wb.active
ws.title = 'Values'
ws.append(['text', 'number', 'bool', 'day', 'minute', 'second', 'milli', 'late'])
ws.append(['  padded  ', 3, True, datetime.date(2024, 2, 29), datetime.datetime(2024, 1, 2, 3, 4),
           datetime.datetime(2024, 1, 2, 3, 4, 5), datetime.datetime(2024, 1, 2, 3, 4, 5, 678000), 1])
ws.append(['two\r\nlines', 0.1, False, datetime.date(1900, 1, 1), None, None, None, None])
ws.append(['', 1234567.25, None, None, None, None, None, None])
for r in range(5, 1006):
    ws.cell(r, 4, datetime.date(2000, 1, 1))
ws.cell(1006, 4, datetime.datetime(2000, 1, 1, 12, 30))
ws.cell(1006, 8, datetime.datetime(2000, 1, 1))
wb.create_sheet('1')['A1'] = 'named one'
ly = wb.create_sheet('Layout')
ly['B2'] = 'a'; ly['C2'] = 'hidden col'; ly['D2'] = 'b'
ly['B3'] = 'hidden row'
ly['B5'] = 'c'; ly['D5'] = 'linked'
ly['D5'].hyperlink = 'https://example.com/'
ly.row_dimensions[3].hidden = True
ly.column_dimensions['C'].hidden = True
wb.save(sys.argv[1])
)");
    QProcess python;
    python.start(QStringLiteral(TABULON_PYTHON), {QStringLiteral("-c"), script, m_book});
    QVERIFY(python.waitForFinished(60000));
    QVERIFY2(python.exitCode() == 0, python.readAllStandardError().constData());
}

InputReadResult TestExcelReader::read(const QString &path, const QString &sheet,
                                      const std::function<void(InputReadOptions &)> &adjust)
{
    InputReadOptions options;
    options.path = path;
    options.fileType = FileTypeXlsx;
    options.worksheet = sheet;
    options.header = InputReadOptions::NoHeader;
    if (adjust)
        adjust(options);
    return readInput(options, {});
}

void TestExcelReader::cellTexts()
{
    const InputReadResult result
        = read(m_book, QStringLiteral("Values"), [](InputReadOptions &o) { o.simplify = false; });
    QVERIFY(result.ok);
    const Dataset &d = result.dataset;
    QCOMPARE(d.columnCount(), 8);
    QCOMPARE(d.row(1),
             QStringList({"padded", "3", "true", "2024-02-29", "2024-01-02T03:04",
                          "2024-01-02T03:04:05", "2024-01-02T03:04:05.678", "1"}));
    // Line ends inside a cell become LF; 0.1 stays 0.1; no group separators.
    QCOMPARE(d.row(2).mid(0, 4), QStringList({"two\nlines", "0.1", "false", "1900-01-01"}));
    QCOMPARE(d.cell(3, 1), QStringLiteral("1234567.25"));
    // Only the first 1000 rows set a column's precision: the time in row 1006 isn't shown,
    // and a column whose first date comes later shows everything.
    QCOMPARE(d.cell(1005, 3), QStringLiteral("2000-01-01"));
    QCOMPARE(d.cell(1005, 7), QStringLiteral("2000-01-01T00:00:00.000"));
}

void TestExcelReader::options_data()
{
    QTest::addColumn<int>("ignoredRows");
    QTest::addColumn<bool>("ignoreHidden");
    QTest::addColumn<bool>("ignoreEmpty");
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<QStringList>("info");

    // The blank column A is skipped and the blank row 1 stays. The link on D5 lands by its own
    // coordinates, row 4 and column 3 of the dataset, not shifted by the skipped column or the
    // ignored rows, and the dataset grows to hold it.
    const QString link = QStringLiteral("|https://example.com/");
    QTest::newRow("as it stands") << 0 << false << false
                                  << QStringList {"|||", "a|hidden col|b|", "hidden row|||", "|||",
                                                  "c||linked|" + link}
                                  << QStringList();
    QTest::newRow("hidden and empty rows left out")
        << 0 << true << true << QStringList {"a|b|", "c|linked|" + link}
        << QStringList {"1 hidden row(s) ignored", "1 hidden column(s) ignored",
                        "2 empty row(s) ignored"};
    QTest::newRow("two ignored rows")
        << 2 << false << false
        << QStringList {"hidden row|||", "|||", "c||linked|", "|||", "|||" + link} << QStringList();
}

void TestExcelReader::options()
{
    QFETCH(int, ignoredRows);
    QFETCH(bool, ignoreHidden);
    QFETCH(bool, ignoreEmpty);
    QFETCH(QStringList, rows);
    const InputReadResult result = read(m_book, QStringLiteral("layout"), [&](InputReadOptions &o) {
        o.ignoredRows = ignoredRows;
        o.ignoreExcelHiddenRows = ignoreHidden;
        o.ignoreExcelHiddenColumns = ignoreHidden;
        o.ignoreEmptyRows = ignoreEmpty;
    });
    QVERIFY(result.ok);
    QStringList actual;
    for (const QStringList &row : result.dataset.rows())
        actual.append(row.join('|'));
    QCOMPARE(actual, rows);
    QTEST(result.info, "info");
}

void TestExcelReader::sheetChoice_data()
{
    QTest::addColumn<QString>("sheet");
    QTest::addColumn<QString>("firstCell");
    QTest::newRow("empty: the first sheet") << ""
                                            << "text";
    QTest::newRow("name in another case") << "VALUES"
                                          << "text";
    QTest::newRow("a name before a number") << "1"
                                            << "named one";
    // The third sheet, whose blank first row is dropped as empty.
    QTest::newRow("a number") << "3"
                              << "a";
    QTest::newRow("no such sheet") << "Missing"
                                   << "Sheet 'Missing' not found.";
    QTest::newRow("number past the end") << "4"
                                         << "Sheet '4' not found.";
}

void TestExcelReader::sheetChoice()
{
    QFETCH(QString, sheet);
    QFETCH(QString, firstCell);
    const InputReadResult result = read(m_book, sheet);
    if (firstCell.startsWith("Sheet '")) {
        QVERIFY(!result.ok);
        QCOMPARE(result.warnings, QStringList {firstCell});
        return;
    }
    QVERIFY(result.ok);
    QCOMPARE(result.dataset.cell(0, 0), firstCell);
}

void TestExcelReader::notAWorkbook()
{
    const QString path = m_dir.filePath(QStringLiteral("text.xlsx"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("a,b\n1,2\n");
    file.close();
    const InputReadResult result = read(path, QString());
    QVERIFY(!result.ok);
    QCOMPARE(result.warnings.value(0),
             QStringLiteral("Unable to load Excel workbook '%1' information.")
                 .arg(QDir::toNativeSeparators(path)));
    QVERIFY(result.warnings.value(1).startsWith("Error="));
    QCOMPARE(result.dataset.rowCount(), 0);
}

// The same rows as written by other programs: xlsxwriter with a shared string table and with
// inline strings, and LibreOffice Calc saving an openpyxl book again.
void TestExcelReader::otherMakers_data()
{
    QTest::addColumn<QString>("maker");
    QTest::newRow("xlsxwriter, shared strings") << "shared";
    QTest::newRow("xlsxwriter, inline strings") << "inline";
    QTest::newRow("LibreOffice Calc") << "calc";
}

void TestExcelReader::otherMakers()
{
    QFETCH(QString, maker);
    const QString made = m_dir.filePath(maker + QStringLiteral(".xlsx"));
    const QString script = QStringLiteral(R"(
import datetime, sys
rows = [['text', 'number', 'day', 'flag'], ['Zoë & co', 1.25, datetime.date(2024, 2, 29), True],
        ['<tag>', -3, datetime.date(1900, 3, 1), False]]
path = sys.argv[1]
if sys.argv[2] == 'calc':
    import openpyxl
    wb = openpyxl.Workbook()
    for row in rows: wb.active.append(row)
    wb.save(path.replace('calc.xlsx', 'source.xlsx'))
else:
    import xlsxwriter
    wb = xlsxwriter.Workbook(path, {'constant_memory': sys.argv[2] == 'inline'})
    ws = wb.add_worksheet()
    day = wb.add_format({'num_format': 'yyyy-mm-dd'})
    for r, row in enumerate(rows):
        for c, value in enumerate(row):
            if isinstance(value, datetime.date): ws.write_datetime(r, c, value, day)
            else: ws.write(r, c, value)
    wb.close()
)");
    QProcess python;
    python.start(QStringLiteral(TABULON_PYTHON), {QStringLiteral("-c"), script, made, maker});
    QVERIFY(python.waitForFinished(60000));
    QVERIFY2(python.exitCode() == 0, python.readAllStandardError().constData());
    if (maker == QLatin1String("calc")) {
        QProcess soffice;
        soffice.start(QStringLiteral("soffice"),
                      {QStringLiteral("-env:UserInstallation=file://")
                           + m_dir.filePath(QStringLiteral("profile")),
                       QStringLiteral("--headless"), QStringLiteral("--convert-to"),
                       QStringLiteral("xlsx"), QStringLiteral("--outdir"),
                       m_dir.filePath(QStringLiteral("calc")),
                       m_dir.filePath(QStringLiteral("source.xlsx"))});
        QVERIFY(soffice.waitForFinished(180000));
        QVERIFY(QFile::rename(m_dir.filePath(QStringLiteral("calc/source.xlsx")), made));
    }
    const InputReadResult result = read(made, QString());
    QVERIFY2(result.ok, qPrintable(result.warnings.join('\n')));
    QStringList rows;
    for (const QStringList &row : result.dataset.rows())
        rows.append(row.join('|'));
    QCOMPARE(rows, QStringList({"text|number|day|flag", "Zoë & co|1.25|2024-02-29|true",
                                "<tag>|-3|1900-03-01|false"}));
}

QTEST_GUILESS_MAIN(TestExcelReader)
#include "tst_excelreader.moc"
