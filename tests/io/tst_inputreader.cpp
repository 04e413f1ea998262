#include "io/fileformats.h"
#include "io/inputreader.h"
#include "shell/settings.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

// Reading inputs from plain options, with no item: the reader each type takes from the table
// of formats, the messages of formats not built yet, the extension rules handed in, and the
// defaults of the table against those of the settings.
class TestInputReader : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void extensionDefaultsMatchSettings();
    void inputDialogFilter();
    void clipboardText();
    void formatsNotBuiltYet_data();
    void formatsNotBuiltYet();
    void rulesComeWithTheOptions();
    void stopBeforeReading();
    void xlsReadsLikeXlsx_data();
    void xlsReadsLikeXlsx();
    void damagedXls();

private:
    QString writeFile(const QString &name, const QByteArray &content);
    InputReadOptions fileOptions(const QString &path, int fileType) const;

    QTemporaryDir m_dir;
};

void TestInputReader::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
}

QString TestInputReader::writeFile(const QString &name, const QByteArray &content)
{
    const QString path = m_dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QString();
    file.write(content);
    return path;
}

InputReadOptions TestInputReader::fileOptions(const QString &path, int fileType) const
{
    InputReadOptions options;
    options.path = path;
    options.fileType = fileType;
    options.extensionTypes = FileFormats::defaultInputExtensionTypes();
    return options;
}

void TestInputReader::extensionDefaultsMatchSettings()
{
    QCOMPARE(FileFormats::defaultInputExtensionTypes(), Settings::defaultInputFileExtensions());
    QCOMPARE(FileFormats::defaultOutputExtensionTypes(), Settings::defaultOutputFileExtensions());
}

void TestInputReader::inputDialogFilter()
{
    QCOMPARE(FileFormats::inputDialogFilter(),
             QString("Input data files (*.csv *.xlsx *.xls *.txt *.json *.xml *.vcf *.log);;"
                     "Delimited text file (*.csv);;Excel XLSX file (*.xlsx);;"
                     "Excel XLS file (*.xls);;Fixed width file (*.txt);;JSON file (*.json);;"
                     "XML file (*.xml);;vCard file (*.vcf);;Plain text file (*.log);;"
                     "All Files (*.*)"));
    QCOMPARE(FileFormats::outputDialogFilter(FileTypeMarkdown),
             QString("Markdown file (*.md);;All Files (*.*)"));
}

void TestInputReader::clipboardText()
{
    InputReadOptions options;
    options.medium = InputReadOptions::Clipboard;
    options.text = "a;b\n1;2\n";
    options.columnOrigin = 7;
    options.metaPlace = 2;
    options.metaText = "$(DataRows) row";
    const InputReadResult result = readInput(options, {});
    QVERIFY(result.ok);
    QVERIFY(!result.fileOpened);
    QCOMPARE(result.header, int(InputReadOptions::HasHeader));
    QCOMPARE(result.dataset.header(), QStringList({"a", "b"}));
    QCOMPARE(result.dataset.row(1), QStringList({"1 row", ""}));
    QCOMPARE(result.dataset.columnId(1), ColumnId(7, 2));
    QVERIFY(result.info.value(0).startsWith("Delimiter=Automatic guesses 'Semi-colon (;)'"));
}

void TestInputReader::formatsNotBuiltYet_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("fileType");
    QTest::addColumn<QStringList>("warnings");
    QTest::addColumn<QStringList>("info");
    QTest::addColumn<bool>("fileOpened");
    const QString encoding
        = "Encoding=Automatic guesses 'UTF-8'. Set 'Encoding' option to change.\n";
    QTest::newRow("fixed width") << "a.txt" << int(FileTypeFixedWidth)
                                 << QStringList {"Reading Fixed width files is not available yet."}
                                 << QStringList {encoding} << true;
    QTest::newRow("json, no encoding option")
        << "a.json" << int(FileTypeJson) << QStringList {"Reading JSON files is not available yet."}
        << QStringList() << true;
    QTest::newRow("vcard with a csv extension")
        << "b.csv" << int(FileTypeVCard)
        << QStringList {"Reading vCard files is not available yet.",
                        "'%1' extension is 'csv' but file type is vCard."}
        << QStringList {encoding} << true;
}

void TestInputReader::formatsNotBuiltYet()
{
    QFETCH(QString, name);
    QFETCH(int, fileType);
    QFETCH(QStringList, warnings);
    const QString path = writeFile(name, "x\n1\n2\n");
    for (QString &warning : warnings) {
        if (warning.contains("%1"))
            warning = warning.arg(QDir::toNativeSeparators(path));
    }
    const InputReadResult result = readInput(fileOptions(path, fileType), {});
    QVERIFY(!result.ok);
    QCOMPARE(result.warnings, warnings);
    QTEST(result.info, "info");
    QTEST(result.fileOpened, "fileOpened");
    QCOMPARE(result.dataset.rowCount(), 0);
    // Nothing was read, so the guess of the header waits.
    QCOMPARE(result.header, int(InputReadOptions::GuessHeader));
}

void TestInputReader::rulesComeWithTheOptions()
{
    const QString path = writeFile("data.dat", "a\n1\n");
    InputReadOptions options = fileOptions(path, FileTypeDelimited);
    options.header = InputReadOptions::HasHeader;
    options.extensionTypes.insert("dat", FileTypePlainText);
    InputReadResult result = readInput(options, {});
    QVERIFY(result.ok);
    QCOMPARE(result.warnings,
             QStringList {QString("'%1' extension is 'dat' but file type is Delimited text.")
                              .arg(QDir::toNativeSeparators(path))});

    options.blockedExtensions.insert("dat");
    result = readInput(options, {});
    QVERIFY(!result.ok);
    QCOMPARE(result.warnings,
             QStringList {"The extension for this file is blocked in 'Preferences>Input "
                          "Extensions':\n"
                          + QDir::toNativeSeparators(path)});
    // The header decided before the read still applies to the empty dataset.
    QCOMPARE(result.header, int(InputReadOptions::HasHeader));
}

void TestInputReader::stopBeforeReading()
{
    const QString path = writeFile("stop.csv", "a\n1\n");
    InputReadCallbacks callbacks;
    int progressCalls = 0;
    callbacks.progress = [&progressCalls](double) {
        ++progressCalls;
    };
    callbacks.stopRequested = [] {
        return true;
    };
    const InputReadResult result = readInput(fileOptions(path, FileTypeDelimited), callbacks);
    QVERIFY(result.stopped);
    QVERIFY(!result.fileOpened);
    QCOMPARE(result.dataset.columnCount(), 0);
    QCOMPARE(result.info, QStringList());
    QCOMPARE(progressCalls, 0);
}

// One book in both Excel formats: made by openpyxl as .xlsx, turned into .xls by LibreOffice
// (in a profile of its own, so that tests running side by side don't lock each other out).
// Read through the pipeline with the same options, the two give the same dataset.
void TestInputReader::xlsReadsLikeXlsx_data()
{
    QTest::addColumn<int>("ignoredRows");
    QTest::addColumn<bool>("ignoreHidden");
    QTest::addColumn<bool>("ignoreEmpty");
    QTest::addColumn<QString>("sheet");
    QTest::newRow("as it stands") << 0 << false << false << "Values";
    QTest::newRow("hidden and empty rows left out") << 0 << true << true << "values";
    QTest::newRow("two ignored rows") << 2 << false << false << "Values";
    QTest::newRow("second sheet by number") << 0 << false << false << "2";
}

void TestInputReader::xlsReadsLikeXlsx()
{
    QFETCH(int, ignoredRows);
    QFETCH(bool, ignoreHidden);
    QFETCH(bool, ignoreEmpty);
    QFETCH(QString, sheet);
    const QString xlsx = m_dir.filePath("same.xlsx");
    const QString xls = m_dir.filePath("same.xls");
    if (!QFileInfo::exists(xls)) {
        QProcess python;
        python.start(QStringLiteral(TABULON_PYTHON),
                     {"-c", QStringLiteral(R"(
import datetime, openpyxl, sys
wb = openpyxl.Workbook()
ws = wb.active
ws.title = 'Values'
ws['B2'] = 'text'; ws['C2'] = 'number'; ws['D2'] = 'day'; ws['E2'] = 'minute'
ws['F2'] = 'milli'; ws['G2'] = 'hidden'; ws['H2'] = 'flag'
ws.append([None, '  padded  ', 3, datetime.date(2024, 2, 29), datetime.datetime(2024, 1, 2, 3, 4),
           datetime.datetime(2150, 6, 1, 10, 20, 30, 500000), 'x', True])
ws.append([None, 'Ünïcödé ✓ 日本', 0.1, datetime.date(1900, 1, 1), None, None, 'y', False])
ws.append([None, 'hidden row', 1234567.25])
ws.append([])
ws.append([None, 'linked', -5])
ws['B7'].hyperlink = 'https://example.com/?a=1'
ws.row_dimensions[5].hidden = True
ws.column_dimensions['G'].hidden = True
wb.create_sheet('Second')['C3'] = 'second sheet'
wb.save(sys.argv[1])
)"),
                      xlsx});
        QVERIFY(python.waitForFinished(60000));
        QVERIFY2(python.exitCode() == 0, python.readAllStandardError().constData());
        const QString soffice = QStandardPaths::findExecutable("soffice");
        QVERIFY2(!soffice.isEmpty(), "LibreOffice is missing; scripts/install-deps.sh installs it");
        QProcess office;
        office.start(soffice,
                     {"-env:UserInstallation=file://" + m_dir.filePath("profile"), "--headless",
                      "--convert-to", "xls", "--outdir", m_dir.path(), xlsx});
        QVERIFY(office.waitForFinished(180000));
        QVERIFY(QFileInfo::exists(xls));
    }
    auto read = [&](const QString &path, int fileType) {
        InputReadOptions options = fileOptions(path, fileType);
        options.worksheet = sheet;
        options.header = InputReadOptions::NoHeader;
        options.ignoredRows = ignoredRows;
        options.ignoreExcelHiddenRows = ignoreHidden;
        options.ignoreExcelHiddenColumns = ignoreHidden;
        options.ignoreEmptyRows = ignoreEmpty;
        return readInput(options, {});
    };
    const InputReadResult expected = read(xlsx, FileTypeXlsx);
    const InputReadResult result = read(xls, FileTypeXls);
    QVERIFY(expected.ok && result.ok);
    QVERIFY(expected.dataset.rowCount() > 1);
    QCOMPARE(result.dataset.rows(), expected.dataset.rows());
    QCOMPARE(result.info, expected.info);
    QCOMPARE(result.warnings, expected.warnings);
}

void TestInputReader::damagedXls()
{
    const QString path = writeFile("page.xls", "<html><table><tr><td>1</td></tr></table></html>");
    const InputReadResult result = readInput(fileOptions(path, FileTypeXls), {});
    QVERIFY(!result.ok);
    QCOMPARE(result.warnings,
             QStringList({QString("Unable to load Excel workbook '%1' information.")
                              .arg(QDir::toNativeSeparators(path)),
                          "Error=The file is text, not an Excel 97-2003 workbook (.xls); web "
                          "pages and CSV files are sometimes named .xls."}));
    QCOMPARE(result.dataset.rowCount(), 0);
}

QTEST_GUILESS_MAIN(TestInputReader)
#include "tst_inputreader.moc"
