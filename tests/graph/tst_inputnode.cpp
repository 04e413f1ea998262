#include "graph/graphscene.h"
#include "graph/inputnode.h"
#include "graph/xmlattributes.h"
#include "io/filetypes.h"
#include "io/metainfo.h"
#include "shell/memory.h"
#include "shell/settings.h"
#include "testutil.h"

#include <QApplication>
#include <QDomDocument>
#include <QFileSystemWatcher>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

// The input item against real files: header decision, meta information, messages, watching,
// document attributes and the clipboard type guess.
class TestInputNode : public QObject
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
    void importWaitsForARunningScene();
    void tooBigToRead();

private:
    QString writeFile(const QString &name, const QByteArray &content);
    InputNode *addFileInput(GraphScene &scene, const QString &path, int header);

    QScopedPointer<QTemporaryDir> m_dir;
};

void TestInputNode::init()
{
    m_dir.reset(new QTemporaryDir);
    QVERIFY(m_dir->isValid());
}

QString TestInputNode::writeFile(const QString &name, const QByteArray &content)
{
    const QString path = m_dir->filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QString();
    file.write(content);
    return path;
}

InputNode *TestInputNode::addFileInput(GraphScene &scene, const QString &path, int header)
{
    auto *input = new InputNode;
    input->setPath(path);
    input->setInputFileType(
        FileTypes::inputTypeForExtension(QFileInfo(path).suffix(), FileTypeDelimited));
    input->setHeader(header);
    scene.addNode(input);
    return input;
}

void TestInputNode::headerDecision_data()
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

void TestInputNode::headerDecision()
{
    QFETCH(QByteArray, content);
    QFETCH(int, header);
    QFETCH(bool, hasHeader);
    QFETCH(int, rows);
    GraphScene scene;
    InputNode *input = addFileInput(scene, writeFile("data.csv", content), header);
    scene.process(GraphScene::RunAll);
    QCOMPARE(input->status(), int(Node::UpToDate));
    QCOMPARE(input->dataset()->hasHeader(), hasHeader);
    QCOMPARE(input->hasHeader(), hasHeader);
    QCOMPARE(input->dataset()->rowCount(), rows);
    QCOMPARE(input->header(), hasHeader ? int(InputNode::HasHeader) : int(InputNode::NoHeader));
}

void TestInputNode::headerGuessIsMadeOnce()
{
    QCOMPARE(InputNode::defaultHeader(false), int(InputNode::HasHeader));
    QCOMPARE(InputNode::defaultHeader(true), int(InputNode::GuessHeader));
    GraphScene scene;
    const QString path = writeFile("data.csv", "name,city\nAnn,Paris\n");
    InputNode *input = addFileInput(scene, path, InputNode::GuessHeader);
    scene.process(GraphScene::RunAll);
    QCOMPARE(input->header(), int(InputNode::HasHeader));
    // The file now starts with numbers, but the guess has been made and stays.
    writeFile("data.csv", "1,2\n3,4\n");
    scene.process(GraphScene::RunAll);
    QVERIFY(input->dataset()->hasHeader());
    QCOMPARE(input->dataset()->header(), QStringList({"1", "2"}));
}

void TestInputNode::missingFileIsAnError()
{
    GraphScene scene;
    const QString path = m_dir->filePath("absent.csv");
    InputNode *input = addFileInput(scene, path, InputNode::GuessHeader);
    scene.process(GraphScene::RunAll);
    QCOMPARE(input->status(), int(Node::Error));
    QCOMPARE(input->warnings(),
             QStringList({QString("File '%1' not found").arg(QDir::toNativeSeparators(path))}));
    // The guess waits for a file that can be read.
    QCOMPARE(input->header(), int(InputNode::GuessHeader));
}

void TestInputNode::blockedExtensionIsAnError()
{
    GraphScene scene;
    const QString path = writeFile("tool.exe", "a,b\n1,2\n");
    auto *input = new InputNode;
    input->setPath(path);
    scene.addNode(input);
    scene.process(GraphScene::RunAll);
    QCOMPARE(input->status(), int(Node::Error));
    QCOMPARE(input->warnings(),
             QStringList({QString("The extension for this file is blocked in "
                                  "'Preferences>Input Extensions':\n%1")
                              .arg(QDir::toNativeSeparators(path))}));
    QCOMPARE(input->dataset()->rowCount(), 0);
}

void TestInputNode::extensionWarning_data()
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

void TestInputNode::extensionWarning()
{
    QFETCH(QString, name);
    QFETCH(int, fileType);
    QFETCH(QString, warning);
    GraphScene scene;
    const QString path = writeFile(name, "a\tb\n1\t2\n");
    InputNode *input = addFileInput(scene, path, InputNode::HasHeader);
    input->setInputFileType(fileType);
    const QString expected
        = warning.isEmpty() ? QString() : warning.arg(QDir::toNativeSeparators(path));
    QCOMPARE(input->extensionWarning(), expected);
    if (fileType == FileTypeDelimited) {
        scene.process(GraphScene::RunAll);
        QCOMPARE(input->status(), int(Node::UpToDate));
        QCOMPARE(input->warnings().contains(expected), !expected.isEmpty());
    }
}

void TestInputNode::encodingAutomaticAndLatin1()
{
    GraphScene scene;
    InputNode *utf8 = addFileInput(scene, writeFile("utf8.csv", "\xEF\xBB\xBFname\ncaf\xC3\xA9\n"),
                                   InputNode::HasHeader);
    InputNode *latin1
        = addFileInput(scene, writeFile("latin1.csv", "name\ncaf\xE9\n"), InputNode::HasHeader);
    latin1->setPos(0, 200);
    latin1->setEncoding("ISO-8859-1");
    scene.process(GraphScene::RunAll);
    QCOMPARE(utf8->dataset()->header(), QStringList({"name"}));
    QCOMPARE(utf8->dataset()->cell(0, 0), QString::fromUtf8("café"));
    QVERIFY(utf8->info().contains(
        "Encoding=Automatic guesses 'UTF-8'. Set 'Encoding' option to change.\n"));
    QCOMPARE(latin1->dataset()->cell(0, 0), QString::fromUtf8("café"));
    QVERIFY(!latin1->infoText().contains("Encoding=Automatic"));
}

void TestInputNode::metaInformation_data()
{
    QTest::addColumn<int>("place");
    QTest::addColumn<int>("header");
    QTest::addColumn<QStringList>("firstRow");
    QTest::addColumn<QStringList>("lastRow");
    QTest::addColumn<QStringList>("headers");

    QTest::newRow("at start") << int(MetaInfo::AtStart) << int(InputNode::HasHeader)
                              << QStringList {"2 rows", ""} << QStringList {"3", "4"}
                              << QStringList {"a", "b"};
    QTest::newRow("at end") << int(MetaInfo::AtEnd) << int(InputNode::HasHeader)
                            << QStringList {"1", "2"} << QStringList {"2 rows", ""}
                            << QStringList {"a", "b"};
    QTest::newRow("every row") << int(MetaInfo::EveryRow) << int(InputNode::HasHeader)
                               << QStringList {"1", "2", "2 rows"}
                               << QStringList {"3", "4", "2 rows"}
                               << QStringList {"a", "b", "Source"};
    QTest::newRow("every row, no header")
        << int(MetaInfo::EveryRow) << int(InputNode::NoHeader) << QStringList {"a", "b", "3 rows"}
        << QStringList {"3", "4", "3 rows"} << QStringList {"1", "2", "3"};
}

void TestInputNode::metaInformation()
{
    QFETCH(int, place);
    QFETCH(int, header);
    QFETCH(QStringList, firstRow);
    QFETCH(QStringList, lastRow);
    QFETCH(QStringList, headers);
    GraphScene scene;
    InputNode *input = addFileInput(scene, writeFile("data.csv", "a,b\n1,2\n3,4\n"), header);
    input->setMetaPlace(place);
    input->setMetaText("$(DataRows) rows");
    input->setMetaColumnName("Source");
    scene.process(GraphScene::RunAll);
    const Dataset *data = input->dataset();
    QCOMPARE(data->row(0), firstRow);
    QCOMPARE(data->row(data->lastRow()), lastRow);
    QCOMPARE(data->headers(), headers);
    QCOMPARE(data->hasHeader(), header == InputNode::HasHeader);
}

void TestInputNode::metaVariables()
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

void TestInputNode::ignoreEmptyColumns()
{
    GraphScene scene;
    InputNode *input = addFileInput(scene, writeFile("data.csv", "a,b,c,d\n1,,3,\n4,,6,\n"),
                                    InputNode::HasHeader);
    input->setIgnoreEmptyColumns(true);
    scene.process(GraphScene::RunAll);
    QCOMPARE(input->dataset()->header(), QStringList({"a", "c"}));
    QVERIFY(input->info().contains("2 empty column(s) ignored"));
}

void TestInputNode::duplicateNamesKept()
{
    GraphScene scene;
    InputNode *input
        = addFileInput(scene, writeFile("data.csv", "x,x\n1,2\n"), InputNode::HasHeader);
    scene.process(GraphScene::RunAll);
    QCOMPARE(input->dataset()->header(), QStringList({"x", "x"}));
    QCOMPARE(input->dataset()->columnIds(),
             (QList<ColumnId> {ColumnId(input->id(), 1), ColumnId(input->id(), 2)}));
}

void TestInputNode::plainTextReadsLines()
{
    GraphScene scene;
    InputNode *input = addFileInput(scene, writeFile("app.log", "one, two\nthree\n\nfour\n"),
                                    InputNode::NoHeader);
    QCOMPARE(input->fileType(), int(FileTypePlainText));
    scene.process(GraphScene::RunAll);
    QCOMPARE(input->dataset()->columnValues(0), QStringList({"one, two", "three", "four"}));
    QVERIFY(input->info().contains("1 empty row(s) ignored"));
}

void TestInputNode::clipboardInput()
{
    GraphScene scene;
    InputNode *input = addTextInput(scene, "a;b\n1;2\n", {0, 0});
    input->setHeader(InputNode::GuessHeader);
    scene.process(GraphScene::RunAll);
    QCOMPARE(input->displayName(), QString("Clipboard"));
    QCOMPARE(input->dataset()->header(), QStringList({"a", "b"}));
    QCOMPARE(input->dataset()->row(0), QStringList({"1", "2"}));
    QVERIFY(input->infoText().contains("Delimiter=Automatic guesses 'Semi-colon (;)'"));
}

void TestInputNode::attributesRoundTrip()
{
    const QString folder = m_dir->path();
    const QString path = writeFile("sub.csv", "a\n1\n");
    InputNode original(41);
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
    original.setPos(12.5, -40.25);

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
    InputNode restored(41);
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
    QCOMPARE(restored.medium(), int(InputNode::File));
}

void TestInputNode::olderDocumentsMapHiddenExcelFlag()
{
    QDomDocument document;
    QDomElement element = document.createElement("input");
    element.setAttribute("id", "3");
    element.setAttribute("ignore_excel_hidden", "1");
    element.setAttribute("text", "a%2Cb");
    element.setAttribute("pos", "10^20");
    InputNode old(3);
    old.readAttributes(element, 71, QString());
    QVERIFY(old.ignoreExcelHiddenRows());
    QVERIFY(old.ignoreExcelHiddenColumns());
    QCOMPARE(old.medium(), int(InputNode::Clipboard));
    QCOMPARE(old.text(), QString("a,b"));
    QCOMPARE(old.pos(), QPointF(10, 20));
    QCOMPARE(old.metaColumnName(), QString("Meta Info"));
    InputNode current(3);
    current.readAttributes(element, 72, QString());
    QVERIFY(!current.ignoreExcelHiddenRows());
}

void TestInputNode::clipboardTypeGuess_data()
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

void TestInputNode::clipboardTypeGuess()
{
    QFETCH(QString, text);
    QFETCH(int, fileType);
    QCOMPARE(FileTypes::guessTextFileType(text), fileType);
}

void TestInputNode::fileChangedTwiceReadsOnce()
{
    GraphScene scene;
    const QString path = writeFile("watched.csv", "a\n1\n");
    InputNode *input = addFileInput(scene, path, InputNode::HasHeader);
    input->setWatching(true);
    scene.process(GraphScene::RunAll);
    QCOMPARE(input->dataset()->rowCount(), 1);
    auto *watcher = input->findChild<QFileSystemWatcher *>();
    QVERIFY(watcher);
    QCOMPARE(watcher->files(), QStringList {path});

    // The watcher's signals and the timer's end are fired by hand: no waiting on the clock,
    // and no real notice of the writes below that an event loop could deliver.
    watcher->removePath(path);
    QSignalSpy changes(input, &InputNode::sourceChanged);
    writeFile("watched.csv", "a\n1\n2\n");
    QVERIFY(QMetaObject::invokeMethod(watcher, "fileChanged", Q_ARG(QString, path)));
    writeFile("watched.csv", "a\n1\n2\n3\n");
    QVERIFY(QMetaObject::invokeMethod(watcher, "fileChanged", Q_ARG(QString, path)));
    QTimer *timer = input->importTimer();
    QVERIFY(timer->isActive());
    QVERIFY(timer->isSingleShot());
    QCOMPARE(timer->interval(), int(InputNode::ImportDelayMs));
    QCOMPARE(changes.count(), 0);

    timer->stop();
    QVERIFY(QMetaObject::invokeMethod(timer, "timeout"));
    QCOMPARE(changes.count(), 1);
    QCOMPARE(input->dataset()->rowCount(), 3);
    QVERIFY(!timer->isActive());
}

void TestInputNode::importWaitsForARunningScene()
{
    GraphScene scene;
    InputNode *input = addFileInput(scene, writeFile("busy.csv", "a\n1\n"), InputNode::HasHeader);
    QSignalSpy changes(input, &InputNode::sourceChanged);
    // A transform's run that lasts while the timer ends: the re-read waits for it.
    connect(input, &Node::processingEnd, input, [input] {
        if (input->importTimer()->isActive())
            return;
        input->onFileChanged();
        input->importTimer()->stop();
        input->onDelayedImport();
    });
    scene.process(GraphScene::RunAll);
    QCOMPARE(changes.count(), 0);
    QVERIFY(input->importTimer()->isActive());
    QCOMPARE(input->importTimer()->interval(), int(InputNode::BusyRetryDelayMs));
}

void TestInputNode::tooBigToRead()
{
    QByteArray content = "a,b\n";
    for (int i = 0; i < 20000; ++i)
        content += "some text,more text\n";
    const QString path = writeFile("big.csv", content);
    GraphScene scene;
    InputNode *input = addFileInput(scene, path, InputNode::HasHeader);
    InputNode *small = addTextInput(scene, "a\n1\n", {0, 300});
    // The first check finds the limit exceeded and the user chooses to exit; later checks,
    // once the reader has let its data go, find room again.
    int asked = 0;
    setMemoryLimitHandler([&asked](double, double, double *newLimit) {
        *newLimit = 64.0;
        return ++asked > 1;
    });
    Settings::instance()->setMaxMemoryUsage(0.000001);
    scene.process(GraphScene::RunAll);
    setMemoryLimitHandler(nullptr);
    Settings::instance()->setMaxMemoryUsage(4.0);
    QVERIFY(asked >= 2);
    // The reader stops, the item fails with the reason, and the run goes on.
    QCOMPARE(input->status(), int(Node::Error));
    QCOMPARE(input->dataset()->rowCount(), 0);
    QVERIFY(input->warnings().contains(
        QString("'%1' is too big for Tabulon to read.").arg(QDir::toNativeSeparators(path))));
    QCOMPARE(small->status(), int(Node::UpToDate));
}

TABULON_TEST_MAIN(TestInputNode)
#include "tst_inputnode.moc"
