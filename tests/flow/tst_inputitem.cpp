#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/xmlattributes.h"
#include "io/filetypes.h"
#include "io/metainfo.h"
#include "shell/memory.h"
#include "shell/settings.h"
#include "testdata.h"

#include <QDomDocument>
#include <QFileSystemWatcher>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

// The input item against real files: header decision, meta information, messages, watching,
// document attributes and the clipboard type guess.
class TestInputItem : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void headerDecision_data();
    void headerDecision();
    void headerGuessIsMadeOnce();
    void missingFileIsAnError();
    void blockedExtensionIsAnError();
    void extensionWarning_data();
    void extensionWarning();
    void encodingAutomaticAndLatin1();
    void metaInformation_data();
    void metaInformation();
    void metaVariables();
    void ignoreEmptyColumns();
    void duplicateNamesKept();
    void plainTextReadsLines();
    void clipboardInput();
    void attributesRoundTrip();
    void olderDocumentsMapHiddenExcelFlag();
    void clipboardTypeGuess_data();
    void clipboardTypeGuess();
    void fileChangedTwiceReadsOnce();
    void importWaitsForARunningModel();
    void tooBigToRead();

private:
    QString writeFile(const QString &name, const QByteArray &content);
    InputItem *addFileInput(FlowModel &model, const QString &path, int header);

    QScopedPointer<QTemporaryDir> m_dir;
};

void TestInputItem::init()
{
    m_dir.reset(new QTemporaryDir);
    QVERIFY(m_dir->isValid());
}

QString TestInputItem::writeFile(const QString &name, const QByteArray &content)
{
    const QString path = m_dir->filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QString();
    file.write(content);
    return path;
}

InputItem *TestInputItem::addFileInput(FlowModel &model, const QString &path, int header)
{
    auto *input = new InputItem;
    input->setPath(path);
    input->setInputFileType(
        FileTypes::inputTypeForExtension(QFileInfo(path).suffix(), FileTypeDelimited));
    input->setHeader(header);
    model.addItem(input);
    return input;
}

void TestInputItem::headerDecision_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("header");
    QTest::addColumn<bool>("hasHeader");
    QTest::addColumn<int>("rows");

    QTest::newRow("guess: text first row")
        << QByteArray("name,city\nAnn,Paris\n") << 2 << true << 1;
    QTest::newRow("guess: number in first row")
        << QByteArray("name,12\nAnn,Paris\n") << 2 << false << 2;
    QTest::newRow("guess: ISO date in first row")
        << QByteArray("name,2024-01-31\nAnn,Paris\n") << 2 << false << 2;
    QTest::newRow("guess: one row") << QByteArray("name,city\n") << 2 << false << 1;
    QTest::newRow("guess: empty cells don't count")
        << QByteArray("name,,city\nAnn,1,Paris\n") << 2 << true << 1;
    QTest::newRow("forced header") << QByteArray("1,2\n3,4\n") << 1 << true << 1;
    QTest::newRow("no header") << QByteArray("name,city\nAnn,Paris\n") << 0 << false << 2;
}

void TestInputItem::headerDecision()
{
    QFETCH(QByteArray, content);
    QFETCH(int, header);
    QFETCH(bool, hasHeader);
    QFETCH(int, rows);
    FlowModel model;
    InputItem *input = addFileInput(model, writeFile("data.csv", content), header);
    model.process(FlowModel::RunAll);
    QCOMPARE(input->status(), int(FlowItem::UpToDate));
    QCOMPARE(input->dataset()->hasHeader(), hasHeader);
    QCOMPARE(input->hasHeader(), hasHeader);
    QCOMPARE(input->dataset()->rowCount(), rows);
    QCOMPARE(input->header(), hasHeader ? int(InputItem::HasHeader) : int(InputItem::NoHeader));
}

void TestInputItem::headerGuessIsMadeOnce()
{
    QCOMPARE(InputItem::defaultHeader(false), int(InputItem::HasHeader));
    QCOMPARE(InputItem::defaultHeader(true), int(InputItem::GuessHeader));
    FlowModel model;
    const QString path = writeFile("data.csv", "name,city\nAnn,Paris\n");
    InputItem *input = addFileInput(model, path, InputItem::GuessHeader);
    model.process(FlowModel::RunAll);
    QCOMPARE(input->header(), int(InputItem::HasHeader));
    // The file now starts with numbers, but the guess has been made and stays.
    writeFile("data.csv", "1,2\n3,4\n");
    model.process(FlowModel::RunAll);
    QVERIFY(input->dataset()->hasHeader());
    QCOMPARE(input->dataset()->header(), QStringList({"1", "2"}));
}

void TestInputItem::missingFileIsAnError()
{
    FlowModel model;
    const QString path = m_dir->filePath("absent.csv");
    InputItem *input = addFileInput(model, path, InputItem::GuessHeader);
    model.process(FlowModel::RunAll);
    QCOMPARE(input->status(), int(FlowItem::Error));
    QCOMPARE(input->warnings(),
             QStringList({QString("File '%1' not found").arg(QDir::toNativeSeparators(path))}));
    // The guess waits for a file that can be read.
    QCOMPARE(input->header(), int(InputItem::GuessHeader));
}

void TestInputItem::blockedExtensionIsAnError()
{
    FlowModel model;
    const QString path = writeFile("tool.exe", "a,b\n1,2\n");
    auto *input = new InputItem;
    input->setPath(path);
    model.addItem(input);
    model.process(FlowModel::RunAll);
    QCOMPARE(input->status(), int(FlowItem::Error));
    QCOMPARE(input->warnings(),
             QStringList({QString("The extension for this file is blocked in "
                                  "'Preferences>Input Extensions':\n%1")
                              .arg(QDir::toNativeSeparators(path))}));
    QCOMPARE(input->dataset()->rowCount(), 0);
}

void TestInputItem::extensionWarning_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("fileType");
    QTest::addColumn<QString>("warning");

    QTest::newRow("tsv as delimited") << "data.tsv" << int(FileTypeDelimited) << QString();
    QTest::newRow("unknown extension") << "data.dat" << int(FileTypeDelimited) << QString();
    QTest::newRow("csv as fixed width") << "data.csv" << int(FileTypeFixedWidth)
                                        << "'%1' extension is 'csv' but file type is Fixed width.";
    QTest::newRow("log as delimited") << "data.log" << int(FileTypeDelimited)
                                      << "'%1' extension is 'log' but file type is Delimited text.";
}

void TestInputItem::extensionWarning()
{
    QFETCH(QString, name);
    QFETCH(int, fileType);
    QFETCH(QString, warning);
    FlowModel model;
    const QString path = writeFile(name, "a\tb\n1\t2\n");
    InputItem *input = addFileInput(model, path, InputItem::HasHeader);
    input->setInputFileType(fileType);
    const QString expected
        = warning.isEmpty() ? QString() : warning.arg(QDir::toNativeSeparators(path));
    QCOMPARE(input->extensionWarning(), expected);
    if (fileType == FileTypeDelimited) {
        model.process(FlowModel::RunAll);
        QCOMPARE(input->status(), int(FlowItem::UpToDate));
        QCOMPARE(input->warnings().contains(expected), !expected.isEmpty());
    }
}

void TestInputItem::encodingAutomaticAndLatin1()
{
    FlowModel model;
    InputItem *utf8 = addFileInput(model, writeFile("utf8.csv", "\xEF\xBB\xBFname\ncaf\xC3\xA9\n"),
                                   InputItem::HasHeader);
    InputItem *latin1
        = addFileInput(model, writeFile("latin1.csv", "name\ncaf\xE9\n"), InputItem::HasHeader);
    latin1->setPos(QPointF(0, 200));
    latin1->setEncoding("ISO-8859-1");
    model.process(FlowModel::RunAll);
    QCOMPARE(utf8->dataset()->header(), QStringList({"name"}));
    QCOMPARE(utf8->dataset()->cell(0, 0), QString::fromUtf8("café"));
    QVERIFY(utf8->info().contains(
        "Encoding=Automatic guesses 'UTF-8'. Set 'Encoding' option to change.\n"));
    QCOMPARE(latin1->dataset()->cell(0, 0), QString::fromUtf8("café"));
    QVERIFY(!latin1->infoText().contains("Encoding=Automatic"));
}

void TestInputItem::metaInformation_data()
{
    QTest::addColumn<int>("place");
    QTest::addColumn<int>("header");
    QTest::addColumn<QStringList>("firstRow");
    QTest::addColumn<QStringList>("lastRow");
    QTest::addColumn<QStringList>("headers");

    QTest::newRow("at start") << int(MetaInfo::AtStart) << int(InputItem::HasHeader)
                              << QStringList {"2 rows", ""} << QStringList {"3", "4"}
                              << QStringList {"a", "b"};
    QTest::newRow("at end") << int(MetaInfo::AtEnd) << int(InputItem::HasHeader)
                            << QStringList {"1", "2"} << QStringList {"2 rows", ""}
                            << QStringList {"a", "b"};
    QTest::newRow("every row") << int(MetaInfo::EveryRow) << int(InputItem::HasHeader)
                               << QStringList {"1", "2", "2 rows"}
                               << QStringList {"3", "4", "2 rows"}
                               << QStringList {"a", "b", "Source"};
    QTest::newRow("every row, no header")
        << int(MetaInfo::EveryRow) << int(InputItem::NoHeader) << QStringList {"a", "b", "3 rows"}
        << QStringList {"3", "4", "3 rows"} << QStringList {"1", "2", "3"};
}

void TestInputItem::metaInformation()
{
    QFETCH(int, place);
    QFETCH(int, header);
    QFETCH(QStringList, firstRow);
    QFETCH(QStringList, lastRow);
    QFETCH(QStringList, headers);
    FlowModel model;
    InputItem *input = addFileInput(model, writeFile("data.csv", "a,b\n1,2\n3,4\n"), header);
    input->setMetaPlace(place);
    input->setMetaText("$(DataRows) rows");
    input->setMetaColumnName("Source");
    model.process(FlowModel::RunAll);
    const Dataset *data = input->dataset();
    QCOMPARE(data->row(0), firstRow);
    QCOMPARE(data->row(data->lastRow()), lastRow);
    QCOMPARE(data->headers(), headers);
    QCOMPARE(data->hasHeader(), header == InputItem::HasHeader);
}

void TestInputItem::metaVariables()
{
    const QString path = writeFile("sales.csv", "a\n1\n");
    MetaInfo::Context context;
    context.path = path;
    context.rows = 12345;
    context.columns = 2;
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    QCOMPARE(MetaInfo::expand("$(FileName): $(DataRows) x $(DataColumns) = $(DataValues)", context),
             QString("sales.csv: 12,345 x 2 = 24,690"));
    QCOMPARE(MetaInfo::expand("$(FilePath)", context), QDir::toNativeSeparators(path));
    QCOMPARE(MetaInfo::expand("$(CurrentDate)", context),
             QDate::currentDate().toString(Qt::ISODate));
    QCOMPARE(MetaInfo::expand("$(Unknown) stays", context), QString("$(Unknown) stays"));
    context.path = m_dir->filePath("gone.csv");
    QCOMPARE(MetaInfo::expand("$(FileName)", context), QString("(file not found)"));
    context.path.clear();
    QCOMPARE(MetaInfo::expand("[$(FileName)]", context), QString("[]"));
    QLocale::setDefault(QLocale::c());
}

void TestInputItem::ignoreEmptyColumns()
{
    FlowModel model;
    InputItem *input = addFileInput(model, writeFile("data.csv", "a,b,c,d\n1,,3,\n4,,6,\n"),
                                    InputItem::HasHeader);
    input->setIgnoreEmptyColumns(true);
    model.process(FlowModel::RunAll);
    QCOMPARE(input->dataset()->header(), QStringList({"a", "c"}));
    QVERIFY(input->info().contains("2 empty column(s) ignored"));
}

void TestInputItem::duplicateNamesKept()
{
    FlowModel model;
    InputItem *input
        = addFileInput(model, writeFile("data.csv", "x,x\n1,2\n"), InputItem::HasHeader);
    model.process(FlowModel::RunAll);
    QCOMPARE(input->dataset()->header(), QStringList({"x", "x"}));
    QCOMPARE(input->dataset()->columnIds(),
             (QList<ColumnId> {ColumnId(input->id(), 1), ColumnId(input->id(), 2)}));
}

void TestInputItem::plainTextReadsLines()
{
    FlowModel model;
    InputItem *input = addFileInput(model, writeFile("app.log", "one, two\nthree\n\nfour\n"),
                                    InputItem::NoHeader);
    QCOMPARE(input->fileType(), int(FileTypePlainText));
    model.process(FlowModel::RunAll);
    QCOMPARE(input->dataset()->columnValues(0), QStringList({"one, two", "three", "four"}));
    QVERIFY(input->info().contains("1 empty row(s) ignored"));
}

void TestInputItem::clipboardInput()
{
    FlowModel model;
    InputItem *input = addTextInput(model, "a;b\n1;2\n", {0, 0});
    input->setHeader(InputItem::GuessHeader);
    model.process(FlowModel::RunAll);
    QCOMPARE(input->displayName(), QString("Clipboard"));
    QCOMPARE(input->dataset()->header(), QStringList({"a", "b"}));
    QCOMPARE(input->dataset()->row(0), QStringList({"1", "2"}));
    QVERIFY(input->infoText().contains("Delimiter=Automatic guesses 'Semi-colon (;)'"));
}

void TestInputItem::attributesRoundTrip()
{
    const QString folder = m_dir->path();
    const QString path = writeFile("sub.csv", "a\n1\n");
    InputItem original(41);
    original.setPath(path);
    original.setAlias("sales");
    original.setComment("Ünïcode \"quoted\"\nsecond line");
    original.setDelimiter(8);
    original.setCustomDelimiter(QLatin1Char('#'));
    original.setIgnoredRows(3);
    original.setTrim(false);
    original.setFixedWidths({3, 5});
    original.setEncoding("ISO-8859-1");
    original.setMetaPlace(MetaInfo::EveryRow);
    original.setPos(QPointF(12.5, -40.25));

    QDomDocument document;
    QDomElement element = document.createElement("input");
    original.writeAttributes(element, folder);
    QCOMPARE(element.attribute("path"), QString("sub.csv"));
    QCOMPARE(element.attribute("id"), QString("41"));
    QVERIFY(!element.hasAttribute("text"));
    QVERIFY(!element.hasAttribute("worksheet"));
    // Pure ASCII: every text is percent-encoded.
    QVERIFY(!element.attribute("comment").contains('\n'));

    // The document moved: the path follows its folder.
    QTemporaryDir elsewhere;
    InputItem restored(41);
    restored.readAttributes(element, 81, elsewhere.path());
    QCOMPARE(restored.path(), QDir(elsewhere.path()).absoluteFilePath("sub.csv"));
    QCOMPARE(restored.alias(), QString("sales"));
    QCOMPARE(restored.comment(), original.comment());
    QCOMPARE(restored.customDelimiter(), QChar('#'));
    QCOMPARE(restored.delimiter(), 8);
    QCOMPARE(restored.ignoredRows(), 3);
    QCOMPARE(restored.trim(), false);
    QCOMPARE(restored.simplify(), true);
    QCOMPARE(restored.fixedWidths(), QList<int>({3, 5}));
    QCOMPARE(restored.encoding(), QString("ISO-8859-1"));
    QCOMPARE(restored.metaPlace(), int(MetaInfo::EveryRow));
    QCOMPARE(restored.pos(), QPointF(12.5, -40.25));
    QCOMPARE(restored.medium(), int(InputItem::File));
}

void TestInputItem::olderDocumentsMapHiddenExcelFlag()
{
    QDomDocument document;
    QDomElement element = document.createElement("input");
    element.setAttribute("id", "3");
    element.setAttribute("ignore_excel_hidden", "1");
    element.setAttribute("text", "a%2Cb");
    element.setAttribute("pos", "10^20");
    InputItem old(3);
    old.readAttributes(element, 71, QString());
    QVERIFY(old.ignoreExcelHiddenRows());
    QVERIFY(old.ignoreExcelHiddenColumns());
    QCOMPARE(old.medium(), int(InputItem::Clipboard));
    QCOMPARE(old.text(), QString("a,b"));
    QCOMPARE(old.pos(), QPointF(10, 20));
    QCOMPARE(old.metaColumnName(), QString("Meta Info"));
    InputItem current(3);
    current.readAttributes(element, 72, QString());
    QVERIFY(!current.ignoreExcelHiddenRows());
}

void TestInputItem::clipboardTypeGuess_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("fileType");

    QTest::newRow("empty") << QString("   ") << int(FileTypeDelimited);
    QTest::newRow("json array") << QString(" [1, 2] ") << int(FileTypeJson);
    QTest::newRow("json object") << QString("{\"a\": 1}") << int(FileTypeJson);
    QTest::newRow("xml") << QString("<a><b/></a>") << int(FileTypeXml);
    QTest::newRow("vcard") << QString("BEGIN:VCARD\nFN:Ann\nEND:VCARD\n") << int(FileTypeVCard);
    QTest::newRow("100 plain characters") << QString(100, 'x') << int(FileTypeDelimited);
    QTest::newRow("101 plain characters") << QString(101, 'x') << int(FileTypePlainText);
    QString csv;
    for (int i = 0; i < 30; ++i)
        csv += "ab,cd,ef\n";
    QTest::newRow("comma separated") << csv << int(FileTypeDelimited);
    QString fixed;
    for (int i = 0; i < 10; ++i)
        fixed += "Ann      Paris     12\n";
    QTest::newRow("fixed width") << fixed << int(FileTypeFixedWidth);
}

void TestInputItem::clipboardTypeGuess()
{
    QFETCH(QString, text);
    QFETCH(int, fileType);
    QCOMPARE(FileTypes::guessTextFileType(text), fileType);
}

void TestInputItem::fileChangedTwiceReadsOnce()
{
    FlowModel model;
    const QString path = writeFile("watched.csv", "a\n1\n");
    InputItem *input = addFileInput(model, path, InputItem::HasHeader);
    input->setWatching(true);
    model.process(FlowModel::RunAll);
    QCOMPARE(input->dataset()->rowCount(), 1);
    auto *watcher = input->findChild<QFileSystemWatcher *>();
    QVERIFY(watcher);
    QCOMPARE(watcher->files(), QStringList {path});

    // The watcher's signals and the timer's end are fired by hand: no waiting on the clock,
    // and no real notice of the writes below that an event loop could deliver.
    watcher->removePath(path);
    QSignalSpy changes(input, &InputItem::sourceChanged);
    writeFile("watched.csv", "a\n1\n2\n");
    QVERIFY(QMetaObject::invokeMethod(watcher, "fileChanged", Q_ARG(QString, path)));
    writeFile("watched.csv", "a\n1\n2\n3\n");
    QVERIFY(QMetaObject::invokeMethod(watcher, "fileChanged", Q_ARG(QString, path)));
    QTimer *timer = input->importTimer();
    QVERIFY(timer->isActive());
    QVERIFY(timer->isSingleShot());
    QCOMPARE(timer->interval(), int(InputItem::ImportDelayMs));
    QCOMPARE(changes.count(), 0);

    timer->stop();
    QVERIFY(QMetaObject::invokeMethod(timer, "timeout"));
    QCOMPARE(changes.count(), 1);
    QCOMPARE(input->dataset()->rowCount(), 3);
    QVERIFY(!timer->isActive());
}

void TestInputItem::importWaitsForARunningModel()
{
    FlowModel model;
    InputItem *input = addFileInput(model, writeFile("busy.csv", "a\n1\n"), InputItem::HasHeader);
    QSignalSpy changes(input, &InputItem::sourceChanged);
    // A transform's run that lasts while the timer ends: the re-read waits for it.
    connect(input, &FlowItem::processingEnd, input, [input] {
        if (input->importTimer()->isActive())
            return;
        input->onFileChanged();
        input->importTimer()->stop();
        input->onDelayedImport();
    });
    model.process(FlowModel::RunAll);
    QCOMPARE(changes.count(), 0);
    QVERIFY(input->importTimer()->isActive());
    QCOMPARE(input->importTimer()->interval(), int(InputItem::BusyRetryDelayMs));
}

void TestInputItem::tooBigToRead()
{
    QByteArray content = "a,b\n";
    for (int i = 0; i < 20000; ++i)
        content += "some text,more text\n";
    const QString path = writeFile("big.csv", content);
    FlowModel model;
    InputItem *input = addFileInput(model, path, InputItem::HasHeader);
    InputItem *small = addTextInput(model, "a\n1\n", {0, 300});
    // The first check finds the limit exceeded and the user chooses to exit; later checks,
    // once the reader has let its data go, find room again.
    int asked = 0;
    setMemoryLimitHandler([&asked](double, double, double *newLimit) {
        *newLimit = 64.0;
        return ++asked > 1;
    });
    Settings::instance()->setMaxMemoryUsage(0.000001);
    model.process(FlowModel::RunAll);
    setMemoryLimitHandler(nullptr);
    Settings::instance()->setMaxMemoryUsage(4.0);
    QVERIFY(asked >= 2);
    // The reader stops, the item fails with the reason, and the run goes on.
    QCOMPARE(input->status(), int(FlowItem::Error));
    QCOMPARE(input->dataset()->rowCount(), 0);
    QVERIFY(input->warnings().contains(
        QString("'%1' is too big for Tabulon to read.").arg(QDir::toNativeSeparators(path))));
    QCOMPARE(small->status(), int(FlowItem::UpToDate));
}

QTEST_GUILESS_MAIN(TestInputItem)
#include "tst_inputitem.moc"
