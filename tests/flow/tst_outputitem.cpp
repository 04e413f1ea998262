#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/outputitem.h"
#include "io/delimitedtext.h"
#include "shell/settings.h"
#include "testdata.h"

#include <QDomDocument>
#include <QTemporaryDir>
#include <QtTest>

using Pairs = QList<QPair<QString, QString>>;

namespace {

const QByteArray Bom("\xEF\xBB\xBF");
const QString LineEndingsInfo = QStringLiteral(
    "Line endings=Automatic sets line endings as Windows (CRLF). Set 'Line endings' option to "
    "change.\n");

QByteArray readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray("<missing>");
    return file.readAll();
}

QMap<QString, QString> attributesOf(const QDomElement &element)
{
    QMap<QString, QString> map;
    const QDomNamedNodeMap attributes = element.attributes();
    for (int i = 0; i < attributes.count(); ++i)
        map.insert(attributes.item(i).nodeName(), attributes.item(i).nodeValue());
    return map;
}

} // namespace

// Outputs in small graphs, run by the engine, with the files they write compared byte for byte.
class TestOutputItem : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void writesOneFile();
    void extensionDefaults_data();
    void extensionDefaults();
    void disabledWritesNothing();
    void blockedExtension();
    void newModeKeepsAnExistingFile();
    void appendWritesTheHeaderOnce();
    void excelOutputSaysNothingOfLineEndings();
    void fileCommentVariables();
    void pathVariablesComeFromInputs();
    void multipleFiles();
    void multipleFilesRelativeWithoutDocument();
    void multipleFilesWithoutColumn();
    void multipleFilesWarningsAreCapped();
    void multipleFilesConfirmation();
    void settersMarkTheItem();
    void labels_data();
    void labels();
    void details();
    void documentRoundTrip();
    void fileCommentOfOlderDocuments_data();
    void fileCommentOfOlderDocuments();
    void cloneKeepsEveryOption();

private:
    QString pathOf(const QString &name) const { return m_dir->filePath(name); }
    // An input over csv and an output to path, connected.
    OutputItem *addOutput(const QString &csv, const QString &path);

    QTemporaryDir *m_dir = nullptr;
    FlowModel *m_model = nullptr;
};

void TestOutputItem::init()
{
    m_dir = new QTemporaryDir;
    QVERIFY(m_dir->isValid());
    m_model = new FlowModel;
    OutputItem::setInteractive(false);
    OutputItem::setConfirmHandler(nullptr);
}

void TestOutputItem::cleanup()
{
    delete m_model;
    delete m_dir;
    OutputItem::setInteractive(true);
    OutputItem::setConfirmHandler(nullptr);
}

OutputItem *TestOutputItem::addOutput(const QString &csv, const QString &path)
{
    InputItem *input = addTextInput(*m_model, csv, {0, 0});
    auto *output = new OutputItem(-1, path);
    output->setPos(QPointF(200, 0));
    m_model->addItem(output);
    m_model->connectItems(input, output);
    return output;
}

void TestOutputItem::writesOneFile()
{
    const QString path = pathOf("people.csv");
    OutputItem *output = addOutput("name,city\nAnn,Oslo\nBo,\"Rome, IT\"\n", path);
    m_model->process(FlowModel::RunAll);

    QCOMPARE(output->status(), int(FlowItem::UpToDate));
    QCOMPARE(readAll(path), Bom + "name,city\r\nAnn,Oslo\r\nBo,\"Rome, IT\"\r\n");
    QCOMPARE(output->warnings(), QStringList());
    QCOMPARE(output->info(), QStringList {LineEndingsInfo});
    QCOMPARE(output->writeStatusText(), QStringLiteral("Written"));
    QCOMPARE(output->pathWithoutSheetVarsReplaced(), path);
    QCOMPARE(output->rowCount(), 2);
    QCOMPARE(output->dataset()->columnId(0), ColumnId(m_model->items().first()->id(), 1));
}

void TestOutputItem::extensionDefaults_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("fileType");
    QTest::addColumn<int>("delimiter");
    QTest::addColumn<int>("quoting");
    QTest::addColumn<bool>("bom");
    QTest::newRow("csv") << "a.csv" << int(FileTypeDelimited) << int(DelimiterComma)
                         << int(OutputQuotingAsNeeded) << true;
    QTest::newRow("tsv") << "a.tsv" << int(FileTypeDelimited) << int(DelimiterTab)
                         << int(OutputQuotingNever) << true;
    QTest::newRow("txt") << "a.TXT" << int(FileTypePlainText) << int(DelimiterTab)
                         << int(OutputQuotingNever) << true;
    QTest::newRow("tab, unknown") << "a.tab" << int(FileTypeDelimited) << int(DelimiterTab)
                                  << int(OutputQuotingNever) << true;
    QTest::newRow("json") << "a.json" << int(FileTypeJson) << int(DelimiterComma)
                          << int(OutputQuotingAsNeeded) << false;
    QTest::newRow("markdown") << "a.md" << int(FileTypeMarkdown) << int(DelimiterComma)
                              << int(OutputQuotingAsNeeded) << true;
}

void TestOutputItem::extensionDefaults()
{
    QFETCH(QString, name);
    const OutputItem output(-1, "/out/" + name);
    QTEST(output.fileType(), "fileType");
    QTEST(output.delimiter(), "delimiter");
    QTEST(output.quoting(), "quoting");
    QTEST(output.byteOrderMark(), "bom");
}

void TestOutputItem::disabledWritesNothing()
{
    const QString path = pathOf("off.csv");
    OutputItem *output = addOutput("a\n1\n", path);
    output->setWriteMode(WriteDisabled);
    m_model->process(FlowModel::RunAll);
    QCOMPARE(output->status(), int(FlowItem::UpToDate));
    QCOMPARE(output->info(), QStringList {"Write mode='Disabled'"});
    QVERIFY(!QFile::exists(path));
    QVERIFY(!output->outputEnabled());
}

void TestOutputItem::blockedExtension()
{
    const QString path = pathOf("tool.exe");
    OutputItem *output = addOutput("a\n1\n", path);
    m_model->process(FlowModel::RunAll);
    QCOMPARE(output->status(), int(FlowItem::Error));
    QCOMPARE(output->warnings(),
             QStringList {"The extension for this file is blocked in 'Preferences>Output "
                          "Extensions':\n"
                          + path});
    QVERIFY(!QFile::exists(path));
    QCOMPARE(output->writeStatusText(), QStringLiteral("Error writing"));
}

void TestOutputItem::newModeKeepsAnExistingFile()
{
    const QString path = pathOf("kept.csv");
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("precious");
    }
    OutputItem *output = addOutput("a\n1\n", path);
    output->setWriteMode(WriteNew);
    m_model->process(FlowModel::RunAll);
    QCOMPARE(output->status(), int(FlowItem::UpToDate));
    QCOMPARE(output->warnings(),
             QStringList {"Write mode='New' and '" + path + "' already exists"});
    QCOMPARE(readAll(path), QByteArray("precious"));
}

void TestOutputItem::appendWritesTheHeaderOnce()
{
    const QString path = pathOf("log.csv");
    OutputItem *output = addOutput("a,b\n1,2\n", path);
    output->setWriteMode(WriteAppend);
    output->setLineEndings(LineEndingUnix);
    m_model->process(FlowModel::RunAll);
    m_model->process(FlowModel::RunAll);
    QCOMPARE(readAll(path), Bom + "a,b\n1,2\n1,2\n");
    QCOMPARE(output->info(), QStringList());
}

void TestOutputItem::excelOutputSaysNothingOfLineEndings()
{
    const QString path = pathOf("book.xlsx");
    OutputItem *output = addOutput("a\n1\n", path);
    QCOMPARE(output->fileType(), int(FileTypeXlsx));
    m_model->process(FlowModel::RunAll);
    QCOMPARE(output->status(), int(FlowItem::UpToDate));
    QCOMPARE(output->warnings(), QStringList());
    QCOMPARE(output->info(),
             QStringList({"Formatting=Automatic sets Excel column formats as:", "a: Number",
                          "Set 'Formatting' option to change.\n"}));
    QVERIFY(QFile::exists(path));
}

void TestOutputItem::fileCommentVariables()
{
    const QString path = pathOf("table.md");
    OutputItem *output = addOutput("a\n1\n", path);
    m_model->process(FlowModel::RunAll);
    const QByteArray bytes = readAll(path);
    QVERIFY(bytes.startsWith(Bom));
    const QString text = QString::fromUtf8(bytes.mid(Bom.size()));
    const QRegularExpression expected(
        "^<!-- File created by Tabulon v\\d+_\\d+_\\d+ at \\d{4}_\\d\\d_\\d\\d "
        "\\d\\d_\\d\\d_\\d\\d_\\d{3} -->\r\n\r\n\\| a   \\|\r\n\\|-----\\|\r\n\\| 1   \\|\r\n$");
    QVERIFY2(expected.match(text).hasMatch(), qPrintable(text));

    output->setFileComment("{nothing}");
    m_model->process(FlowModel::RunChanges);
    QVERIFY(readAll(path).startsWith(Bom + "<!--{nothing}-->\r\n"));
}

void TestOutputItem::pathVariablesComeFromInputs()
{
    const QString source = pathOf("sales.csv");
    {
        QFile file(source);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("a\n1\n");
    }
    auto *input = new InputItem;
    input->setPath(source);
    input->setAlias("sales");
    m_model->addItem(input);
    auto *output = new OutputItem(-1, pathOf("{sales.fname}_{unknown}.{sales.ext}"));
    output->setPos(QPointF(200, 0));
    m_model->addItem(output);
    m_model->connectItems(input, output);
    m_model->process(FlowModel::RunAll);

    const QString expected = pathOf("sales_{unknown}.csv");
    QCOMPARE(output->status(), int(FlowItem::UpToDate));
    QCOMPARE(readAll(expected), Bom + "a\r\n1\r\n");
    QCOMPARE(output->pathWithoutSheetVarsReplaced(), expected);
    QCOMPARE(output->expandPathVariables("{sales}", "{sales.sheet}x"),
             qMakePair(QStringLiteral("sales"), QStringLiteral("x")));
}

void TestOutputItem::multipleFiles()
{
    m_model->setDocumentPath(pathOf("doc.tabulon"));
    OutputItem *output = addOutput("v,file\n1,A.csv\n2,B.csv\n3, A.csv \n4,\n5,sub/\n"
                                   "6,missing/x.csv\n7,bad.exe\n8,{transformfname}.csv\n",
                                   QString());
    output->setSingleOrMulti(OutputItem::MultipleFiles);
    output->setMultiFileColumnNumber(2);
    output->setLineEndings(LineEndingUnix);
    m_model->process(FlowModel::RunAll);

    QCOMPARE(output->status(), int(FlowItem::UpToDate));
    QCOMPARE(readAll(pathOf("A.csv")), Bom + "v\n1\n3\n");
    QCOMPARE(readAll(pathOf("B.csv")), Bom + "v\n2\n");
    QCOMPARE(readAll(pathOf("doc.csv")), Bom + "v\n8\n");
    QCOMPARE(
        output->warnings(),
        (QStringList {"Empty value for row 4", "No file name for 'sub/' at row 5",
                      "Folder does not exist for 'missing/x.csv' at row 6",
                      "Extension for 'bad.exe' is blocked in 'Preferences>Output Extensions'."}));
    QCOMPARE(output->info(),
             (QStringList {"Written to '" + pathOf("A.csv") + "'",
                           "Written to '" + pathOf("B.csv") + "'",
                           "Written to '" + pathOf("doc.csv") + "'", "3 file(s) written"}));
    QCOMPARE(output->multiFileColumnNumber(), 2);
}

void TestOutputItem::multipleFilesRelativeWithoutDocument()
{
    OutputItem *output = addOutput("file\nA.csv\n", QString());
    output->setSingleOrMulti(OutputItem::MultipleFiles);
    output->setMultiFileColumnNumber(1);
    m_model->process(FlowModel::RunAll);
    QCOMPARE(output->status(), int(FlowItem::UpToDate));
    QCOMPARE(output->warnings(),
             (QStringList {"Relative file path for 'A.csv' at row 1, but .tabulon not saved for it "
                           "to be relative to.",
                           "0 files written"}));
}

void TestOutputItem::multipleFilesWithoutColumn()
{
    OutputItem *output = addOutput("file\nA.csv\n", QString());
    output->setSingleOrMulti(OutputItem::MultipleFiles);
    m_model->process(FlowModel::RunAll);
    QCOMPARE(output->status(), int(FlowItem::Error));
    QCOMPARE(output->warnings(), QStringList {"No column set for 'Files column'.\n"});
    QCOMPARE(output->writeStatusText(), QStringLiteral("Not written"));
    QCOMPARE(output->statusLine(), QStringLiteral("Not written"));
}

void TestOutputItem::multipleFilesWarningsAreCapped()
{
    QString csv = "file,v\n";
    for (int i = 0; i < 1500; ++i)
        csv += ",x\n";
    OutputItem *output = addOutput(csv, QString());
    output->setSingleOrMulti(OutputItem::MultipleFiles);
    output->setMultiFileColumnNumber(1);
    m_model->process(FlowModel::RunAll);
    const QStringList warnings = output->warnings();
    QCOMPARE(warnings.size(), 1002);
    QCOMPARE(warnings.at(999), QStringLiteral("Empty value for row 1000"));
    QCOMPARE(warnings.at(1000), QStringLiteral("\n...etc"));
    QCOMPARE(warnings.at(1001), QStringLiteral("0 files written"));
}

void TestOutputItem::multipleFilesConfirmation()
{
    m_model->setDocumentPath(pathOf("doc.tabulon"));
    {
        QFile file(pathOf("A.csv"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("old");
    }
    OutputItem *output = addOutput("file,v\nA.csv,1\nB.csv,2\n", QString());
    output->setSingleOrMulti(OutputItem::MultipleFiles);
    output->setMultiFileColumnNumber(1);
    QStringList asked;
    OutputItem::setConfirmHandler([&asked](const QString &title, const QString &text) {
        asked << title << text;
        return false;
    });

    // On the command line nobody is asked and the files are written.
    m_model->process(FlowModel::RunAll);
    QCOMPARE(asked, QStringList());
    QCOMPARE(readAll(pathOf("B.csv")), Bom + "v\r\n2\r\n");
    QVERIFY(QFile::remove(pathOf("B.csv")));

    OutputItem::setInteractive(true);
    m_model->process(FlowModel::RunAll);
    QCOMPARE(asked,
             (QStringList {"Multi file output",
                           "1 existing file(s) to be overwritten:\n" + pathOf("A.csv") + "\n"
                               + "1 new file(s) to be created:\n" + pathOf("B.csv") + "\n"
                               + "2 file(s) will be written"}));
    QCOMPARE(output->status(), int(FlowItem::UpToDate));
    QCOMPARE(output->warnings(), QStringList {"Output cancelled by user"});
    QVERIFY(!QFile::exists(pathOf("B.csv")));

    asked.clear();
    output->setWriteMode(WriteNew);
    m_model->process(FlowModel::RunAll);
    QCOMPARE(asked.value(1),
             "1 existing file(s) will not be overwritten:\n" + pathOf("A.csv")
                 + "\n1 new file(s) to be created:\n" + pathOf("B.csv") + "\n"
                 + "1 file(s) will be written");

    // Asked with nobody to answer, the question takes its default: go ahead.
    OutputItem::setConfirmHandler(nullptr);
    output->setWriteMode(WriteOverwrite);
    m_model->process(FlowModel::RunAll);
    QCOMPARE(output->warnings(), QStringList());
    QCOMPARE(readAll(pathOf("A.csv")), Bom + "v\r\n1\r\n");
    QCOMPARE(readAll(pathOf("B.csv")), Bom + "v\r\n2\r\n");
}

void TestOutputItem::settersMarkTheItem()
{
    OutputItem *output = addOutput("a\n1\n", pathOf("m.csv"));
    m_model->process(FlowModel::RunAll);
    QCOMPARE(output->status(), int(FlowItem::UpToDate));
    output->setQuoting(output->quoting());
    QCOMPARE(output->status(), int(FlowItem::UpToDate));
    output->setQuoting(OutputQuotingAlways);
    QCOMPARE(output->status(), int(FlowItem::NeedsUpdate));
    m_model->process(FlowModel::RunChanges);
    QCOMPARE(readAll(pathOf("m.csv")), Bom + "\"a\"\r\n\"1\"\r\n");
    output->setPath(pathOf("n.csv"));
    QCOMPARE(output->status(), int(FlowItem::NeedsUpdate));
}

void TestOutputItem::labels_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("sheet");
    QTest::addColumn<bool>("preview");
    QTest::addColumn<QString>("label");
    QTest::newRow("file") << "/data/out.csv"
                          << "" << false << "out.csv";
    QTest::newRow("no file") << ""
                             << "" << false << "<no file name>";
    QTest::newRow("sheet") << "/data/book.xlsx"
                           << "Jan" << false << "book.xlsx[Jan]";
    QTest::newRow("sheet ignored for text") << "/data/out.csv"
                                            << "Jan" << false << "out.csv";
    QTest::newRow("preview") << "/data/out.md"
                             << "" << true << "Output.csv";
}

void TestOutputItem::labels()
{
    QFETCH(QString, path);
    QFETCH(QString, sheet);
    QFETCH(bool, preview);
    OutputItem output(-1, path);
    output.setWorksheet(sheet);
    output.setPreview(preview);
    QTEST(output.label(), "label");
    QCOMPARE(output.displayName(), output.label());
}

void TestOutputItem::details()
{
    OutputItem output(-1, "/data/out.csv");
    output.setAlias("result");
    QCOMPARE(output.optionsList(),
             (Pairs {{"File", "/data/out.csv"},
                     {"Type", "Delimited text"},
                     {"Alias", "result"},
                     {"Delimiter", "Comma (,)"},
                     {"Quoting", "As needed"},
                     {"Line endings", "Automatic"},
                     {"Encoding", "UTF-8"},
                     {"Byte Order Mark", "Yes"},
                     {"Write header", "Yes"},
                     {"Write mode", "Overwrite"}}));

    OutputItem html(-1, "/data/out.html");
    html.setWriteMode(WriteAppend);
    html.setEncoding("ISO-8859-1");
    QCOMPARE(html.optionsList(),
             (Pairs {{"File", "/data/out.html"},
                     {"Type", "HTML"},
                     {"Line endings", "Automatic"},
                     {"Encoding", "ISO-8859-1"},
                     {"Escape special", "Yes"},
                     {"Write header (if empty)", "Yes"},
                     {"Write mode", "Append"}}));
}

void TestOutputItem::documentRoundTrip()
{
    const QString folder = m_dir->path();
    OutputItem original(7, pathOf("sub/out.tsv"));
    original.setAlias("  result ");
    original.setComment("line one\nline \"two\" \u00E9");
    original.setPos(QPointF(12.5, -3));
    original.setSingleOrMulti(OutputItem::MultipleFiles);
    original.setMultiFileColumnNumber(3);
    original.setMultiFileConfirm(false);
    original.setWorksheet("S{day}");
    original.setCustomDelimiter('#');
    original.setDelimiter(DelimiterCustom);
    original.setQuoting(OutputQuotingAlways);
    original.setLineEndings(LineEndingRecordSeparator);
    original.setEncoding("UTF-16LE");
    original.setByteOrderMark(false);
    original.setExcelOutput(2);
    original.setExcelManualColFormats({1, 0, 3});
    original.setExcelUseStyleTemplate(true);
    original.setExcelStyleTemplatePath("/elsewhere/style.xlsx");
    original.setOverwriteSheet(OutputItem::OverwriteWholeFile);
    original.setJsonTypes(1);
    original.setJsonManualColTypes({2, 2});
    original.setXmlAboveRoot("<?pi?>");
    original.setXmlRoot("rows");
    original.setXmlBelowRoot("below");
    original.setXmlRow("r");
    original.setHtmlEncode(false);
    original.setRemoveEmpty(false);
    original.setWriteHeader(false);
    original.setWriteHeaderFirstAppendOnly(false);
    original.setWriteMode(WriteAppend);
    original.setFileComment("");

    QDomDocument document;
    QDomElement element = document.createElement("output");
    original.writeAttributes(element, folder);
    const QMap<QString, QString> attributes = attributesOf(element);
    QCOMPARE(attributes.value("path"), QStringLiteral("sub%2Fout.tsv"));
    QCOMPARE(attributes.value("excel_style_template_path"),
             QStringLiteral("%2Felsewhere%2Fstyle.xlsx"));
    QCOMPARE(attributes.value("multi_file_column"), QStringLiteral("3"));
    QCOMPARE(attributes.value("enable_output"), QStringLiteral("2"));
    QVERIFY(!attributes.contains("file_comment"));

    OutputItem copy(7);
    copy.readAttributes(element, 81, folder);
    QCOMPARE(copy.path(), pathOf("sub/out.tsv"));
    QCOMPARE(copy.alias(), QStringLiteral("result"));
    QCOMPARE(copy.pos(), QPointF(12.5, -3));
    QCOMPARE(copy.fileComment(), QString());
    QCOMPARE(copy.stateList(), original.stateList());

    // Saved from another folder the path stays absolute; a path led by a variable stays as
    // it was written.
    QDomElement elsewhere = document.createElement("output");
    original.writeAttributes(elsewhere, "/somewhere/else");
    OutputItem moved(7);
    moved.readAttributes(elsewhere, 81, "/somewhere/else");
    QCOMPARE(moved.path(), pathOf("sub/out.tsv"));
    QDomElement variable = document.createElement("output");
    OutputItem led(8, "{in.folder}/x.csv");
    led.writeAttributes(variable, folder);
    OutputItem readBack(8);
    readBack.readAttributes(variable, 81, folder);
    QCOMPARE(readBack.path(), QStringLiteral("{in.folder}/x.csv"));
}

void TestOutputItem::fileCommentOfOlderDocuments_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("expected");
    const QString byDefault = " File created by Tabulon {version} at {date} {time} ";
    QTest::newRow("60, left out") << 60 << QString() << byDefault;
    QTest::newRow("61, left out") << 61 << QString() << QString();
    QTest::newRow("60, stored") << 60 << "mine"
                                << "mine";
}

void TestOutputItem::fileCommentOfOlderDocuments()
{
    QFETCH(int, version);
    QFETCH(QString, stored);
    QDomDocument document;
    QDomElement element = document.createElement("output");
    element.setAttribute("path", "%2Fx%2Fout.md");
    if (!stored.isEmpty())
        element.setAttribute("file_comment", stored);
    OutputItem output(1);
    output.readAttributes(element, version, "/x");
    QTEST(output.fileComment(), "expected");
    // Options left out take what the extension suggests.
    QCOMPARE(output.fileType(), int(FileTypeMarkdown));
    QCOMPARE(output.writeMode(), int(WriteOverwrite));
    QCOMPARE(output.xmlRoot(), QStringLiteral("root"));
}

void TestOutputItem::cloneKeepsEveryOption()
{
    OutputItem original(4, "/data/out.txt");
    original.setAlias("a");
    original.setWorksheet("w");
    original.setEncoding("ISO-8859-1");
    original.setXmlRow("item");
    original.setWriteMode(WriteNew);
    original.setMultiFileColumnNumber(2);
    original.setLineEndings(LineEndingOldMac);
    original.setExcelManualColFormats({5});
    original.setFileComment("c");
    QScopedPointer<FlowItem> copy(original.clone());
    auto *output = qobject_cast<OutputItem *>(copy.data());
    QVERIFY(output);
    QCOMPARE(output->id(), 4);
    QCOMPARE(output->stateList(), original.stateList());

    QDomDocument document;
    QDomElement a = document.createElement("output");
    QDomElement b = document.createElement("output");
    original.writeAttributes(a, QString());
    output->writeAttributes(b, QString());
    QCOMPARE(attributesOf(b), attributesOf(a));
}

QTEST_GUILESS_MAIN(TestOutputItem)
#include "tst_outputitem.moc"
