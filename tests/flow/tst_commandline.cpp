#include "flow/document.h"
#include "flow/documentrun.h"
#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/outputitem.h"
#include "flow/transformitem.h"
#include "testdata.h"
#include "transforms/framework/transform.h"
#include "transforms/registry.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// A transform that fails as a whole, with a warning, to see how a run reports it.
class FailingTransform : public Transform
{
public:
    const TransformDescriptor &descriptor() const override
    {
        static const TransformDescriptor descriptor = [] {
            TransformDescriptor d;
            d.type = 901;
            d.typeName = QStringLiteral("Failing");
            d.displayName = QStringLiteral("Failing");
            d.description = QStringLiteral("Fails.");
            d.create = createTransform<FailingTransform>;
            return d;
        }();
        return descriptor;
    }

protected:
    Dataset &process(Dataset &output, const TransformInputs &, const RunContext &,
                     bool &failed) override
    {
        addWarning(QStringLiteral("Nothing works"));
        failed = true;
        return output;
    }
};

// Lines written through a log, split at line ends.
struct CapturedLog
{
    CapturedLog()
        : log(&out, &err, false)
    {
        out.open(QIODevice::WriteOnly);
        err.open(QIODevice::WriteOnly);
    }
    QStringList infoLines() const { return lines(out); }
    QStringList errorLines() const { return lines(err); }
    static QStringList lines(const QBuffer &buffer)
    {
        QStringList list = QString::fromUtf8(buffer.data()).split(QLatin1Char('\n'));
        if (!list.isEmpty() && list.last().isEmpty())
            list.removeLast();
        return list;
    }

    QBuffer out;
    QBuffer err;
    CommandLineLog log;
};

QString readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("<cannot read %1>").arg(path);
    return QString::fromUtf8(file.readAll());
}

QStringList program(const QStringList &arguments)
{
    return QStringList {QStringLiteral(TABULON_PROGRAM)} + arguments;
}

} // namespace

// The command line: the arguments and their messages, and documents run from end to end on
// real files, in this process and through the program itself.
class TestCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void parseAborts_data();
    void parseAborts();
    void argumentNamesIgnoreCaseAndDashes();
    void versionAndBuild();
    void logFileThatCannotBeOpened();
    void abortWritesTwoErrorLines();
    void errorLinesAreRedOnlyWhenAsked();
    void verboseLinesAndLogFile();
    void quietRunLogsNothing();
    void fileArguments_data();
    void fileArguments();
    void excelSheetsInFileArguments();
    void fileValueWithTwoEqualsSignsAborts();
    void failuresAreReportedAndStillExitZero();
    void unreadableDocumentAborts();
    void realProgram_data();
    void realProgram();

private:
    QString copyCase();

    QScopedPointer<QTemporaryDir> m_dir;
};

void TestCommandLine::initTestCase()
{
    TransformRegistry::addPrototype(new FailingTransform);
}

void TestCommandLine::init()
{
    m_dir.reset(new QTemporaryDir);
    QVERIFY(m_dir->isValid());
}

// The case folder copied, so that its output lands in a folder of the test's own.
QString TestCommandLine::copyCase()
{
    const QDir source(QStringLiteral(TABULON_TEST_DATA "/documents/cli_case"));
    const QStringList files = source.entryList(QDir::Files);
    for (const QString &file : files) {
        if (!QFile::copy(source.filePath(file), m_dir->filePath(file)))
            return QString();
    }
    return m_dir->filePath(QStringLiteral("document.tabulon"));
}

void TestCommandLine::parseAborts_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    const QString csv = QStringLiteral(TABULON_TEST_DATA "/documents/cli_case/input.csv");
    QTest::newRow("-cli alone") << QStringList {"-cli"}
                                << QStringLiteral("No .tabulon file specified.");
    QTest::newRow("-log without value")
        << QStringList {"-cli", "-log"} << QStringLiteral("No value following -log argument");
    QTest::newRow("--FILE without value")
        << QStringList {"--FILE"} << QStringLiteral("No value following --FILE argument");
    QTest::newRow("unknown name") << QStringList {"-verbose", "-Bogus"}
                                  << QStringLiteral("Unrecognized argument: -Bogus");
    QTest::newRow("three dashes") << QStringList {"---cli"}
                                  << QStringLiteral("Unrecognized argument: ---cli");
    QTest::newRow("missing document") << QStringList {"-cli", "nowhere/doc.tabulon"}
                                      << QStringLiteral("'nowhere/doc.tabulon' not found");
    QTest::newRow("not a document")
        << QStringList {csv} << QStringLiteral("Unrecognized file suffix 'csv' in '%1'").arg(csv);
}

void TestCommandLine::parseAborts()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    CapturedLog captured;
    const CommandLineOptions options = parseCommandLine(program(arguments), captured.log);
    QCOMPARE(options.abortMessage, message);

    CapturedLog run;
    QCOMPARE(runCommandLine(program(arguments), run.log), -1);
    QCOMPARE(run.errorLines(), QStringList({message, "Aborted processing"}));
    QVERIFY(run.infoLines().isEmpty());
}

void TestCommandLine::argumentNamesIgnoreCaseAndDashes()
{
    const QString document = copyCase();
    QVERIFY(!document.isEmpty());
    CapturedLog captured;
    const CommandLineOptions options
        = parseCommandLine(program({"--CLI", "-Verbose", "-FILE", "in=a.csv", "--file", "out=b.csv",
                                    "--New_Window", "-LOG", m_dir->filePath("run.log"), document}),
                           captured.log);
    QVERIFY(options.abortMessage.isEmpty());
    QVERIFY(options.cli);
    QVERIFY(options.verbose);
    QVERIFY(options.newWindow);
    QVERIFY(!options.version);
    QCOMPARE(options.fileValues, QStringList({"in=a.csv", "out=b.csv"}));
    QCOMPARE(options.logPath, m_dir->filePath("run.log"));
    QCOMPARE(options.documentPath, document);
    // Upper case takes nothing away: a suffix in capitals is a document too.
    const QString upper = m_dir->filePath("UPPER.TABULON");
    QVERIFY(QFile::copy(document, upper));
    QCOMPARE(parseCommandLine(program({upper}), captured.log).documentPath, upper);
    // A second document is ignored, even one that doesn't exist.
    const CommandLineOptions two
        = parseCommandLine(program({document, "nowhere/other.txt"}), captured.log);
    QVERIFY(two.abortMessage.isEmpty());
    QCOMPARE(two.documentPath, document);
    QVERIFY(!two.cli);
}

void TestCommandLine::versionAndBuild()
{
    CapturedLog captured;
    const CommandLineOptions options
        = parseCommandLine(program({"-build", "-version"}), captured.log);
    QVERIFY(options.abortMessage.isEmpty());
    // The version first, whatever the order of the arguments.
    QCOMPARE(captured.infoLines(),
             QStringList({QStringLiteral("Tabulon " TABULON_VERSION), buildText()}));
    QVERIFY(buildText().contains(QStringLiteral(QT_VERSION_STR)));

    CapturedLog aborted;
    QCOMPARE(runCommandLine(program({"-version", "-cli"}), aborted.log), -1);
    QCOMPARE(aborted.infoLines(), QStringList({versionText()}));
}

void TestCommandLine::logFileThatCannotBeOpened()
{
    const QString document = copyCase();
    const QString logPath = m_dir->filePath("no/such/folder/run.log");
    CapturedLog captured;
    QCOMPARE(runCommandLine(program({"-cli", "-log", logPath, document}), captured.log), 0);
    QCOMPARE(captured.errorLines(),
             QStringList({QStringLiteral("Could not open log file at '%1'").arg(logPath)}));
    // The run went on.
    QCOMPARE(readAll(m_dir->filePath("output.csv")), readAll(m_dir->filePath("expected.csv")));
}

void TestCommandLine::abortWritesTwoErrorLines()
{
    const QString logPath = m_dir->filePath("abort.log");
    CapturedLog captured;
    QCOMPARE(runCommandLine(program({"-log", logPath, "-cli", "-bogus"}), captured.log), -1);
    QCOMPARE(captured.errorLines(),
             QStringList({"Unrecognized argument: -bogus", "Aborted processing"}));
    // A command-line run logs its abort to the file too, plainly.
    QCOMPARE(readAll(logPath),
             QStringLiteral("Unrecognized argument: -bogus\nAborted processing\n"));
}

void TestCommandLine::errorLinesAreRedOnlyWhenAsked()
{
    QBuffer out;
    QBuffer err;
    out.open(QIODevice::WriteOnly);
    err.open(QIODevice::WriteOnly);
    CommandLineLog log(&out, &err, true);
    log.info(QStringLiteral("fine"));
    log.error(QStringLiteral("bad"));
    QCOMPARE(out.data(), QByteArray("fine\n"));
    QCOMPARE(err.data(), QByteArray("\x1b[31mbad\x1b[0m\n"));
}

void TestCommandLine::verboseLinesAndLogFile()
{
    const QString document = copyCase();
    const QString logPath = m_dir->filePath("run.log");
    {
        QFile earlier(logPath);
        QVERIFY(earlier.open(QIODevice::WriteOnly));
        earlier.write("earlier line\n");
    }
    CapturedLog captured;
    QCOMPARE(runCommandLine(program({"-cli", "-verbose", "-log", logPath, document}), captured.log),
             0);
    const QStringList lines = captured.infoLines();
    QCOMPARE(lines.size(), 4);
    const QString shown = QDir::toNativeSeparators(document);
    QVERIFY2(lines.at(0).startsWith(QStringLiteral("Start processing '%1' on ").arg(shown)),
             qPrintable(lines.at(0)));
    QCOMPARE(lines.at(1),
             QStringLiteral(" Input file: %1, OK")
                 .arg(QDir::toNativeSeparators(m_dir->filePath("input.csv"))));
    QCOMPARE(lines.at(2),
             QStringLiteral(" Output file: %1, Overwrite, OK")
                 .arg(QDir::toNativeSeparators(m_dir->filePath("output.csv"))));
    QVERIFY2(lines.at(3).startsWith(QStringLiteral("Finished processing '%1' on ").arg(shown)),
             qPrintable(lines.at(3)));
    QVERIFY(captured.errorLines().isEmpty());
    // Appended after what the file held, the same lines.
    QCOMPARE(readAll(logPath), QStringLiteral("earlier line\n") + lines.join('\n') + '\n');
}

void TestCommandLine::quietRunLogsNothing()
{
    const QString document = copyCase();
    QVERIFY(QFile::remove(m_dir->filePath("input.csv")));
    CapturedLog captured;
    QCOMPARE(runCommandLine(program({"-CLI", document}), captured.log), 0);
    QVERIFY(captured.infoLines().isEmpty());
    QVERIFY(captured.errorLines().isEmpty());
    QVERIFY(!QFile::exists(m_dir->filePath("output.csv")));
}

void TestCommandLine::fileArguments_data()
{
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QString>("output");
    QTest::addColumn<QString>("expected");
    QTest::newRow("no values") << QStringList() << "output.csv"
                               << "expected.csv";
    QTest::newRow("input by relative path") << QStringList {"in=other.csv"} << "output.csv"
                                            << "expected_other.csv";
    QTest::newRow("aliases trimmed") << QStringList {" in =other.csv"} << "output.csv"
                                     << "expected_other.csv";
    QTest::newRow("missing input keeps its path") << QStringList {"in=missing.csv"} << "output.csv"
                                                  << "expected.csv";
    QTest::newRow("output elsewhere") << QStringList {"out=elsewhere.csv"} << "elsewhere.csv"
                                      << "expected.csv";
    QTest::newRow("both, in order")
        << QStringList {"out=first.csv", "in=other.csv", "out=second.csv"} << "second.csv"
        << "expected_other.csv";
    QTest::newRow("unknown alias skipped") << QStringList {"nobody=other.csv"} << "output.csv"
                                           << "expected.csv";
    QTest::newRow("alias case matters") << QStringList {"IN=other.csv"} << "output.csv"
                                        << "expected.csv";
}

void TestCommandLine::fileArguments()
{
    QFETCH(QStringList, values);
    QFETCH(QString, output);
    QFETCH(QString, expected);
    const QString document = copyCase();
    QStringList arguments {"-cli", document};
    for (const QString &value : qAsConst(values))
        arguments << "-file" << value;
    CapturedLog captured;
    QCOMPARE(runCommandLine(program(arguments), captured.log), 0);
    QVERIFY(captured.errorLines().isEmpty());
    QCOMPARE(readAll(m_dir->filePath(output)), readAll(m_dir->filePath(expected)));

    // An absolute input path works from anywhere.
    FlowModel model;
    DocumentData data;
    bool later = false;
    QString error;
    QVERIFY(loadDocument(&model, document, &data, &later, nullptr, &error));
    QVERIFY(applyFileArguments(model, {"in=" + m_dir->filePath("other.csv") + "[Sheet 1]"},
                               QStringLiteral("/elsewhere"))
                .isEmpty());
    auto *input = qobject_cast<InputItem *>(model.itemById(1));
    QCOMPARE(input->path(), m_dir->filePath("other.csv"));
    QCOMPARE(input->worksheet(), QStringLiteral("Sheet 1"));
}

// A workbook's sheet named with the path, for an input and an output: the sheet is found
// without regard to case, and the output's sheet is added beside the book's own.
void TestCommandLine::excelSheetsInFileArguments()
{
    const QString book = m_dir->filePath("book.xlsx");
    QProcess python;
    python.start(QStringLiteral(TABULON_PYTHON),
                 {"-c",
                  "import openpyxl, sys\n"
                  "wb = openpyxl.Workbook(); wb.active.title = 'First'; wb.active.append(['a'])\n"
                  "ws = wb.create_sheet('Second'); ws.append(['name', 'n']); ws.append(['x', 2])\n"
                  "wb.save(sys.argv[1])\n",
                  book});
    QVERIFY(python.waitForFinished(60000));
    QCOMPARE(python.exitCode(), 0);
    const QString document = m_dir->filePath("sheets.tabulon");
    QFile file(document);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(R"(<!DOCTYPE Tabulon>
<root><meta><version value="81"/><auto_run_on value="1"/></meta>
<inputs><input medium="0" id="1" alias="in" header="1" path="none.xlsx" file_type="1" pos_v12="00"/></inputs>
<outputs><output id="2" alias="out" path="none.xlsx" file_type="1" enable_output="1" write_header="1" pos_v12="3000"/></outputs>
<connections><connection start_id="1" end_id="2"/></connections></root>
)");
    file.close();
    CapturedLog captured;
    QCOMPARE(runCommandLine(program({"-cli", document, "-file", "in=book.xlsx[second]", "-file",
                                     "out=book.xlsx[Copied]"}),
                            captured.log),
             0);
    QVERIFY2(captured.errorLines().isEmpty(), qPrintable(captured.errorLines().join('\n')));
    python.start(QStringLiteral(TABULON_PYTHON),
                 {"-c",
                  "import openpyxl, sys\nwb = openpyxl.load_workbook(sys.argv[1])\n"
                  "print(wb.sheetnames, list(wb['Copied'].values))\n",
                  book});
    QVERIFY(python.waitForFinished(60000));
    QCOMPARE(QString::fromUtf8(python.readAllStandardOutput()).trimmed(),
             QStringLiteral("['First', 'Second', 'Copied'] [('name', 'n'), ('x', 2)]"));
}

void TestCommandLine::fileValueWithTwoEqualsSignsAborts()
{
    const QString document = copyCase();
    CapturedLog captured;
    QCOMPARE(runCommandLine(program({"-cli", document, "-file", "in=a=b.csv"}), captured.log), -1);
    QCOMPARE(
        captured.errorLines(),
        QStringList({"Expected <alias>=<value> for in=a=b.csv argument", "Aborted processing"}));
    QVERIFY(!QFile::exists(m_dir->filePath("output.csv")));

    CapturedLog noEquals;
    QCOMPARE(runCommandLine(program({"-cli", document, "-file", "in"}), noEquals.log), -1);
    QCOMPARE(noEquals.errorLines().value(0),
             QStringLiteral("Expected <alias>=<value> for in argument"));
}

void TestCommandLine::failuresAreReportedAndStillExitZero()
{
    // A missing input file, and a transform that fails, on two branches of one document.
    const QString inputPath = m_dir->filePath("absent.csv");
    const QString documentPath = m_dir->filePath("failing.tabulon");
    {
        FlowModel model;
        auto *missing = new InputItem(1);
        missing->setPath(inputPath);
        missing->setAlias(QStringLiteral("absent"));
        model.addItem(missing);
        FlowItem *text = addTextInput(model, QStringLiteral("a\n1\n"), QPointF(0, 200));
        text->setId(2);
        auto *failing = new FailingTransform;
        failing->createParameters({}, false);
        auto *transform = new TransformItem(failing, 3);
        transform->setPos(QPointF(200, 200));
        model.addItem(transform);
        model.connectItems(text, transform);
        auto *output = new OutputItem(4, m_dir->filePath("never.csv"));
        model.addItem(output);
        model.connectItems(missing, output);
        auto *disabled = new OutputItem(5, m_dir->filePath("disabled.csv"));
        disabled->setWriteMode(OutputItem::Disabled);
        model.addItem(disabled);
        model.connectItems(text, disabled);
        QString error;
        QVERIFY2(saveDocument(nullptr, model, DocumentData(), documentPath, &error),
                 qPrintable(error));
    }
    CapturedLog captured;
    QCOMPARE(runCommandLine(program({"-cli", "-verbose", documentPath}), captured.log), 0);
    QCOMPARE(captured.errorLines(),
             QStringList(
                 {QStringLiteral("Input file: %1, Error").arg(QDir::toNativeSeparators(inputPath)),
                  QStringLiteral("  Warning: File '%1' not found").arg(inputPath),
                  "Transform: 'Failing' (Id=3), Error", "  Warning: Nothing works",
                  QStringLiteral("Output file: %1, Overwrite, Error")
                      .arg(QDir::toNativeSeparators(m_dir->filePath("never.csv")))}));
    // The disabled output isn't listed.
    const QStringList info = captured.infoLines();
    QCOMPARE(info.size(), 3);
    QCOMPARE(info.at(1), QStringLiteral(" Input clipboard: OK"));
    QVERIFY(!QFile::exists(m_dir->filePath("never.csv")));
    QVERIFY(!QFile::exists(m_dir->filePath("disabled.csv")));
}

void TestCommandLine::unreadableDocumentAborts()
{
    const QString path = m_dir->filePath("broken.tabulon");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    CapturedLog captured;
    QCOMPARE(runCommandLine(program({"-cli", path}), captured.log), -1);
    QCOMPARE(
        captured.errorLines(),
        QStringList({QStringLiteral("Unable to open '%1': File '%1' is empty (size=0).").arg(path),
                     "Aborted processing"}));
}

void TestCommandLine::realProgram_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("memoryLimit");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("errors");
    QTest::newRow("no document") << QStringList {"-cli"} << QString() << 255
                                 << "No .tabulon file specified.\nAborted processing\n";
    QTest::newRow("two equals signs")
        << QStringList {"--CLI", "document.tabulon", "-file", "in=a=b.csv"} << QString() << 255
        << "Expected <alias>=<value> for in=a=b.csv argument\nAborted processing\n";
    QTest::newRow("run") << QStringList {"-Cli", "document.tabulon", "-FILE", "in=other.csv"}
                         << QString() << 0 << "";
    // No window can offer to raise the limit: the run ends with the window's exit code.
    QTest::newRow("memory limit") << QStringList {"-cli", "document.tabulon"} << "0.001" << 1
                                  << "Maximum memory exceeded";
}

void TestCommandLine::realProgram()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, memoryLimit);
    QFETCH(int, exitCode);
    QFETCH(QString, errors);
    QVERIFY(!copyCase().isEmpty());
    QProcess process;
    process.setWorkingDirectory(m_dir->path());
    // The program's own settings store, so that the user's preferences play no part.
    QTemporaryDir config;
    QVERIFY(config.isValid());
    QVERIFY(QDir(config.path()).mkpath(QStringLiteral("Velmora")));
    QFile store(config.filePath(QStringLiteral("Velmora/Tabulon.conf")));
    QVERIFY(store.open(QIODevice::WriteOnly));
    if (!memoryLimit.isEmpty())
        store.write("[General]\nmax_memory_usage=" + memoryLimit.toLatin1() + "\n");
    store.close();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TABULON_PROGRAM), arguments);
    QVERIFY(process.waitForFinished(60000));
    const QString standardError = QString::fromUtf8(process.readAllStandardError());
    if (standardError.contains(QLatin1String("not available in this build")))
        QSKIP("The program does not run documents from the command line yet.");
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), exitCode);
    // Qt may add its own notes (a missing runtime folder, for one); ours must all be there.
    QVERIFY2(standardError.contains(errors), qPrintable(standardError));
    if (exitCode == 0)
        QCOMPARE(readAll(m_dir->filePath("output.csv")),
                 readAll(m_dir->filePath("expected_other.csv")));
}

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
