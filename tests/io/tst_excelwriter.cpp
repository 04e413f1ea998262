#include "data/dataset.h"
#include "io/excelwriter.h"
#include "io/outputwriters.h"
#include "testdata.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

// Datasets written into workbooks, checked by reading them back with openpyxl and LibreOffice:
// the cell types and formats of each column format, what an existing workbook keeps, the
// style template, and the failures that must leave the user's file as it was.
class TestExcelWriter : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void columnFormats_data();
    void columnFormats();
    void existingBook_data();
    void existingBook();
    void failures_data();
    void failures();
    void readByLibreOffice();
    void styleTemplate();

private:
    QString python(const QString &script, const QStringList &arguments);
    // Each cell of the sheet as "type:value|number format", with ">target" for a link and
    // "!bold" for a bold font; the first sheet for an empty name.
    QList<QStringList> cells(const QString &path, const QString &sheet = QString());
    QString path(const QString &name) const { return m_dir.filePath(name); }

    QTemporaryDir m_dir;
};

namespace {

const char *const DumpScript = R"(
import datetime, json, openpyxl, sys
wb = openpyxl.load_workbook(sys.argv[1])
ws = [w for w in wb.worksheets if w.title.lower() == sys.argv[2].lower() or not sys.argv[2]][0]
rows = []
for row in ws.iter_rows():
    cells = []
    for c in row:
        v = c.value
        if v is None:
            cells.append('')
            continue
        if c.data_type == 'f': t = 'f'
        elif isinstance(v, bool): t = 'b'
        elif isinstance(v, (int, float)): t = 'n'
        elif isinstance(v, datetime.datetime): t = 'd'
        elif isinstance(v, datetime.time): t = 't'
        else: t = 's'
        text = '%s:%s|%s' % (t, v, c.number_format)
        if c.hyperlink: text += '>' + (c.hyperlink.target or '#' + str(c.hyperlink.location))
        if c.font.b: text += '!bold'
        cells.append(text)
    rows.append(cells)
print(json.dumps({'sheets': wb.sheetnames, 'rows': rows}))
)";

WriteReport writeBook(const QString &path, const Dataset &dataset,
                      const std::function<void(OutputFileOptions &)> &adjust = {})
{
    OutputFileOptions options;
    options.fileType = FileTypeXlsx;
    options.sheet = QStringLiteral("Data");
    if (adjust)
        adjust(options);
    WriteReport report;
    writeOutputFile(path, dataset, options, report, {});
    return report;
}

QByteArray fileHash(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

} // namespace

void TestExcelWriter::initTestCase()
{
    QVERIFY(m_dir.isValid());
}

QString TestExcelWriter::python(const QString &script, const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(TABULON_PYTHON),
                  QStringList {QStringLiteral("-c"), script} + arguments);
    if (!process.waitForFinished(120000) || process.exitCode() != 0) {
        qWarning("%s", process.readAllStandardError().constData());
        return QString();
    }
    return QString::fromUtf8(process.readAllStandardOutput());
}

QList<QStringList> TestExcelWriter::cells(const QString &path, const QString &sheet)
{
    const QJsonObject dump
        = QJsonDocument::fromJson(python(QString::fromLatin1(DumpScript), {path, sheet}).toUtf8())
              .object();
    QList<QStringList> rows;
    for (const QJsonValue &row : dump.value(QStringLiteral("rows")).toArray()) {
        QStringList texts;
        for (const QJsonValue &cell : row.toArray())
            texts.append(cell.toString());
        rows.append(texts);
    }
    return rows;
}

void TestExcelWriter::columnFormats_data()
{
    QTest::addColumn<int>("formatting");
    QTest::addColumn<int>("manual"); // -1: no entry for the column
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QStringList>("expected");

    const int automatic = ExcelFormatting::Automatic;
    const int manual = ExcelFormatting::Manual;
    QTest::newRow("automatic numbers")
        << automatic << -1 << QStringList {"3", "1.5", "-2e3"}
        << QStringList {"n:3|General", "n:1.5|General", "n:-2000|General"};
    QTest::newRow("automatic: leading zeros and long digit runs stay text")
        << automatic << -1 << QStringList {"007", "1234567890123456"}
        << QStringList {"s:007|@", "s:1234567890123456|@"};
    QTest::newRow("automatic booleans") << automatic << -1 << QStringList {"true", "FALSE"}
                                        << QStringList {"b:True|General", "b:False|General"};
    QTest::newRow("automatic dates, before and after the phantom leap day")
        << automatic << -1 << QStringList {"2024-02-29", "1900-03-01", ""}
        << QStringList {"d:2024-02-29 00:00:00|mm-dd-yy", "d:1900-03-01 00:00:00|mm-dd-yy", ""};
    QTest::newRow("automatic times") << automatic << -1 << QStringList {"12:30", "08:05:09"}
                                     << QStringList {"t:12:30:00|h:mm:ss", "t:08:05:09|h:mm:ss"};
    QTest::newRow("automatic: one text makes the column text")
        << automatic << -1 << QStringList {"1", "x"} << QStringList {"s:1|@", "s:x|@"};
    QTest::newRow("general") << int(ExcelFormatting::General) << -1 << QStringList {"3", "true"}
                             << QStringList {"s:3|General", "s:true|General"};
    QTest::newRow("manual number, a text falls back")
        << manual << int(ExcelColumnFormat::Number) << QStringList {"4", "n/a"}
        << QStringList {"n:4|General", "s:n/a|@"};
    QTest::newRow("manual boolean, a text falls back")
        << manual << int(ExcelColumnFormat::Boolean) << QStringList {"true", "yes"}
        << QStringList {"b:True|General", "s:yes|@"};
    QTest::newRow("manual formula")
        << manual << int(ExcelColumnFormat::Formula) << QStringList {"=1+2", "plain"}
        << QStringList {"f:=1+2|General", "s:plain|General"};
    QTest::newRow("manual link, with and without shown text")
        << manual << int(ExcelColumnFormat::Hyperlink)
        << QStringList {"Site|https://example.com/", "https://x.org/"}
        << QStringList {"s:Site|@>https://example.com/", "s:https://x.org/|@>https://x.org/"};
    QTest::newRow("manual without an entry counts as text")
        << manual << -1 << QStringList {"3"} << QStringList {"s:3|@"};
    QTest::newRow("manual automatic entry") << manual << int(ExcelColumnFormat::Automatic)
                                            << QStringList {"3"} << QStringList {"n:3|General"};
}

void TestExcelWriter::columnFormats()
{
    QFETCH(int, formatting);
    QFETCH(int, manual);
    QFETCH(QStringList, values);
    QFETCH(QStringList, expected);
    QList<QStringList> rows {{"v"}};
    for (const QString &value : values)
        rows.append({value});
    const QString file = path(QStringLiteral("formats.xlsx"));
    const WriteReport report = writeBook(file, makeDataset(rows), [&](OutputFileOptions &o) {
        o.excelFormatting = formatting;
        if (manual >= 0)
            o.excelColumnFormats = {manual};
    });
    QVERIFY2(report.warnings.isEmpty(), qPrintable(report.warnings.join('\n')));
    const QList<QStringList> written = cells(file, QStringLiteral("Data"));
    QVERIFY(!written.isEmpty());
    QCOMPARE(written.first(), QStringList {"s:v|@!bold"});
    QStringList actual;
    for (int r = 1; r <= values.size(); ++r)
        actual.append(written.value(r).value(0));
    QCOMPARE(actual, expected);
    if (formatting == ExcelFormatting::Automatic) {
        QCOMPARE(report.info.value(0),
                 QStringLiteral("Formatting=Automatic sets Excel column formats as:"));
        QCOMPARE(report.info.value(2), QStringLiteral("Set 'Formatting' option to change.\n"));
    } else {
        QVERIFY(report.info.isEmpty());
    }
}

void TestExcelWriter::existingBook_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("sheetOnly");
    QTest::addColumn<QString>("sheet");
    QTest::addColumn<QStringList>("sheets");
    QTest::addColumn<QStringList>("rows"); // of the sheet written, first cells joined by ","
    QTest::addColumn<QStringList>("changedParts");

    const QStringList both {"Keep", "Data"};
    QTest::newRow("overwrite the sheet")
        << int(WriteOverwrite) << true << "Data" << both << QStringList {"name", "a", "b"}
        << QStringList {"xl/styles.xml", "xl/worksheets/_rels/sheet2.xml.rels",
                        "xl/worksheets/sheet2.xml"};
    // The sheet is found in another case; it has a header, so none is added, and its old
    // link and formula stay.
    QTest::newRow("append to the sheet")
        << int(WriteAppend) << true << "data" << both
        << QStringList {"old>https://old.example/", "x", "a", "b"}
        << QStringList {"xl/styles.xml", "xl/worksheets/_rels/sheet2.xml.rels",
                        "xl/worksheets/sheet2.xml"};
    QTest::newRow("append to a new sheet")
        << int(WriteAppend) << true << "Fresh" << QStringList {"Keep", "Data", "Fresh"}
        << QStringList {"name", "a", "b"}
        << QStringList {"[Content_Types].xml", "xl/_rels/workbook.xml.rels", "xl/styles.xml",
                        "xl/workbook.xml", "+xl/worksheets/sheet3.xml"};
    QTest::newRow("overwrite the whole file")
        << int(WriteOverwrite) << false << "Data" << QStringList {"Data"}
        << QStringList {"name", "a", "b"} << QStringList();
}

void TestExcelWriter::existingBook()
{
    QFETCH(int, mode);
    QFETCH(bool, sheetOnly);
    QFETCH(QString, sheet);
    const QString original = path(QStringLiteral("original.xlsx"));
    const QString file = path(QStringLiteral("kept.xlsx"));
    QVERIFY(!python(QStringLiteral(R"(
import openpyxl, sys
from openpyxl.chart import BarChart, Reference
from openpyxl.workbook.defined_name import DefinedName
wb = openpyxl.Workbook()
ws = wb.active
ws.title = 'Keep'
for i in range(1, 6):
    ws.append([i, i * i])
chart = BarChart()
chart.add_data(Reference(ws, min_col=2, min_row=1, max_row=5))
ws.add_chart(chart, 'D2')
ws['A1'].font = openpyxl.styles.Font(bold=True, color='FF0000')
data = wb.create_sheet('Data')
data.append(['old', 'header'])
data.append(['x', 'y'])
data['C2'] = '=1+1'
data['A1'].hyperlink = 'https://old.example/'
wb.defined_names.append(DefinedName('squares', attr_text='Keep!$A$1:$B$5'))
wb.save(sys.argv[1])
print('ok')
)"),
                    {original})
                 .isEmpty());
    QFile::remove(file);
    QVERIFY(QFile::copy(original, file));
    const WriteReport report = writeBook(file, makeDataset({{"name", "n"}, {"a", "1"}, {"b", "2"}}),
                                         [&](OutputFileOptions &o) {
                                             o.writeMode = mode;
                                             o.overwriteSheetOnly = sheetOnly;
                                             o.sheet = sheet;
                                         });
    QVERIFY2(report.warnings.isEmpty(), qPrintable(report.warnings.join('\n')));

    // Parts that differ from the original (or are new, "+"), and the sheets with the rows.
    const QString compared = python(QStringLiteral(R"(
import sys, zipfile
a = zipfile.ZipFile(sys.argv[1])
b = zipfile.ZipFile(sys.argv[2])
old = {n: a.read(n) for n in a.namelist()}
for n in sorted(b.namelist()):
    if n not in old: print('+' + n)
    elif old[n] != b.read(n): print(n)
)"),
                                    {original, file});
    QStringList changed = compared.split('\n', Qt::SkipEmptyParts);
    if (!sheetOnly)
        changed.clear(); // a new book: nothing of the old one is meant to survive
    QTEST(changed, "changedParts");

    const QJsonObject dump
        = QJsonDocument::fromJson(python(QString::fromLatin1(DumpScript), {file, sheet}).toUtf8())
              .object();
    QStringList sheets;
    for (const QJsonValue &name : dump.value("sheets").toArray())
        sheets.append(name.toString());
    QTEST(sheets, "sheets");
    QStringList firstCells;
    for (const QJsonValue &row : dump.value("rows").toArray()) {
        QString first = row.toArray().first().toString();
        first = first.section(':', 1); // the value and what follows it
        first.remove(QRegularExpression("\\|[^>!]*")); // the number format
        first.remove("!bold");
        firstCells.append(first);
    }
    QTEST(firstCells, "rows");
}

void TestExcelWriter::failures_data()
{
    QTest::addColumn<QString>("sheet");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("existing"); // "book", "text" or "" for no file
    QTest::addColumn<QStringList>("warnings");

    const QString cannotAdd = QStringLiteral("Unable to add sheet to '%1'.");
    QTest::newRow("characters not allowed")
        << "a/b:c" << int(WriteOverwrite) << ""
        << QStringList {cannotAdd + "\n'/' is not allowed in Excel sheet names."
                        + "\n':' is not allowed in Excel sheet names."};
    QTest::newRow("apostrophes and length")
        << "'" + QString(31, 'x') << int(WriteOverwrite) << ""
        << QStringList {cannotAdd
                        + "\nSheet name length is 32 characters. Excel maximum sheet name "
                          "length is 31 characters."
                        + "\nApostrophes (') are not allowed at the start or end of Excel "
                          "sheet names."};
    QTest::newRow("reserved name")
        << "HISTORY" << int(WriteOverwrite) << ""
        << QStringList {cannotAdd + "\n'History' is a reserved Excel sheet name."};
    QTest::newRow("a name refused while appending to a workbook")
        << "[x]" << int(WriteAppend) << "book"
        << QStringList {cannotAdd + "\n'[' is not allowed in Excel sheet names."
                        + "\n']' is not allowed in Excel sheet names."};
    QTest::newRow("appending to a file that is not a workbook")
        << "Data" << int(WriteAppend) << "text"
        << QStringList {"Unable to load Excel workbook '%1' information.", "Error="};
    QTest::newRow("new mode onto an existing book")
        << "Data" << int(WriteNew) << "book"
        << QStringList {"Write mode='New' and '%1' already exists"};
}

void TestExcelWriter::failures()
{
    QFETCH(QString, sheet);
    QFETCH(int, mode);
    QFETCH(QString, existing);
    QFETCH(QStringList, warnings);
    const QString file = path(QStringLiteral("failure.xlsx"));
    QFile::remove(file);
    if (existing == "book")
        writeBook(file, makeDataset({{"kept"}, {"1"}}));
    if (existing == "text") {
        QFile text(file);
        QVERIFY(text.open(QIODevice::WriteOnly));
        text.write("not,a,workbook\n");
    }
    const QByteArray before = fileHash(file);
    const WriteReport report = writeBook(file, makeDataset({{"h"}, {"1"}}), [&](auto &o) {
        o.sheet = sheet;
        o.writeMode = mode;
    });
    QCOMPARE(report.warnings.size(), warnings.size());
    for (int i = 0; i < warnings.size(); ++i) {
        QString expected = warnings.at(i);
        if (expected.contains("%1"))
            expected = expected.arg(QDir::toNativeSeparators(file));
        QVERIFY2(report.warnings.at(i).startsWith(expected), qPrintable(report.warnings.at(i)));
    }
    QVERIFY(!report.written);
    QCOMPARE(fileHash(file), before);
}

void TestExcelWriter::readByLibreOffice()
{
    const QString file = path(QStringLiteral("calc.xlsx"));
    const WriteReport report
        = writeBook(file,
                    makeDataset({{"text", "number", "day", "flag"},
                                 {"Zoë & \"friends\"", "1.25", "2024-02-29", "true"},
                                 {"line\nbreak", "-3", "1999-12-31", "false"}}));
    QVERIFY2(report.warnings.isEmpty(), qPrintable(report.warnings.join('\n')));
    QProcess soffice;
    soffice.start(QStringLiteral("soffice"),
                  {QStringLiteral("-env:UserInstallation=file://") + path(QStringLiteral("lo")),
                   QStringLiteral("--headless"), QStringLiteral("--convert-to"),
                   QStringLiteral("csv:Text - txt - csv (StarCalc):44,34,76,1,,1033"),
                   QStringLiteral("--outdir"), path(QStringLiteral("calc")), file});
    QVERIFY(soffice.waitForFinished(180000));
    QFile csv(path(QStringLiteral("calc/calc.csv")));
    QVERIFY2(csv.open(QIODevice::ReadOnly), soffice.readAllStandardError().constData());
    const QString text = QString::fromUtf8(csv.readAll());
    QCOMPARE(text.split('\n', Qt::SkipEmptyParts),
             QStringList({"text,number,day,flag", "\"Zoë & \"\"friends\"\"\",1.25,2/29/2024,TRUE",
                          "\"line", "break\",-3,12/31/1999,FALSE"}));
}

void TestExcelWriter::styleTemplate()
{
    const QString look = path(QStringLiteral("look.xlsx"));
    QVERIFY(!python(QStringLiteral(R"(
import openpyxl, sys
wb = openpyxl.Workbook()
ws = wb.active
ws.title = 'Look'
ws['A1'] = 'title'
ws['A1'].font = openpyxl.styles.Font(bold=True)
ws['B4'] = 'far corner'
ws.column_dimensions['A'].width = 30
ws.column_dimensions['B'].hidden = True
ws.row_dimensions[2].height = 40
ws.merge_cells('A3:B3')
wb.save(sys.argv[1])
print('ok')
)"),
                    {look})
                 .isEmpty());
    const QString file = path(QStringLiteral("styled.xlsx"));
    const Dataset dataset = makeDataset({{"a", "b"}, {"1", "2"}, {"3", "4"}});
    WriteReport report = writeBook(file, dataset, [&](OutputFileOptions &o) {
        o.excelUseStyleTemplate = true;
        o.excelStyleTemplatePath = look + "[look]";
        o.excelFormatting = ExcelFormatting::General;
    });
    QVERIFY2(report.warnings.isEmpty(), qPrintable(report.warnings.join('\n')));
    QCOMPARE(
        report.info,
        QStringList {
            QStringLiteral("Copied styling from '%1[look]'.").arg(QDir::toNativeSeparators(look))});
    const QString styling = python(QStringLiteral(R"(
import openpyxl, sys
ws = openpyxl.load_workbook(sys.argv[1])['Data']
print(ws.column_dimensions['A'].width, ws.column_dimensions['B'].hidden,
      ws.row_dimensions[2].height, ws['A1'].font.b, ws['A2'].font.b,
      [str(r) for r in ws.merged_cells.ranges], ws['A1'].value, ws['B2'].value)
)"),
                                   {file});
    QCOMPARE(styling.trimmed(), QStringLiteral("30.0 True 40.0 True False ['A3:B3'] a 2"));

    // Run again over the sheet it styled: the merge is not added a second time.
    report = writeBook(file, dataset, [&](OutputFileOptions &o) {
        o.excelUseStyleTemplate = true;
        o.excelStyleTemplatePath = look + "[look]";
    });
    QVERIFY2(report.warnings.isEmpty(), qPrintable(report.warnings.join('\n')));
    QCOMPARE(python(QStringLiteral("import sys, zipfile\n"
                                   "print(zipfile.ZipFile(sys.argv[1]).read("
                                   "'xl/worksheets/sheet1.xml').count(b'<mergeCell '))"),
                    {file})
                 .trimmed(),
             QStringLiteral("1"));

    report = writeBook(file, dataset, [&](OutputFileOptions &o) {
        o.excelUseStyleTemplate = true;
        o.excelStyleTemplatePath = file + "[DATA]";
    });
    QCOMPARE(report.warnings,
             QStringList {QStringLiteral("Unable to copy styling from '%1[DATA].\n"
                                         "Cannot use a sheet as it's own style template.")
                              .arg(QDir::toNativeSeparators(file))});
}

QTEST_GUILESS_MAIN(TestExcelWriter)
#include "tst_excelwriter.moc"
