#include "io/fileformats.h"
#include "io/inputreader.h"
#include "shell/settings.h"

#include <QDir>
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

QTEST_GUILESS_MAIN(TestInputReader)
#include "tst_inputreader.moc"
