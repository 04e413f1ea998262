#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformjavascript.h"

#include <QCoreApplication>
#include <QThread>
#include <QtTest>

using namespace std::chrono_literals;

// Javascript: the values a script gets for the columns it names, what it returns into the new
// column, its errors and type errors as the user reads them, and a script that never ends
// stopped without waiting on the clock (a time limit of zero, or a stop flag that only the
// watching thread sees set).
class TestTransformJavascript : public QObject
{
    Q_OBJECT

private slots:
    void runs_data();
    void runs();
    void manyProblemsAreCut();
    void runawayScriptIsStopped_data();
    void runawayScriptIsStopped();

private:
    struct Run
    {
        QStringList column;
        QStringList warnings;
        QStringList information;
        QString result;
        QString header;
    };
    static Run run(TransformJavascript &transform, const QList<QStringList> &rows,
                   const QString &script, const QString &typeAs = QString(),
                   const RunContext &context = RunContext());
};

TestTransformJavascript::Run TestTransformJavascript::run(TransformJavascript &transform,
                                                          const QList<QStringList> &rows,
                                                          const QString &script,
                                                          const QString &typeAs,
                                                          const RunContext &context)
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(rows)));
    transform.createParameters({node.data()}, false);
    if (!script.isNull())
        transform.parameter("Script")->setValue(script);
    if (!typeAs.isEmpty())
        transform.parameter("Type_As")->setValue(typeAs);
    const Dataset output = runTransform(transform, {node.data()}, context);
    Run run;
    for (int r = 0; r < output.rowCount(); ++r)
        run.column.append(output.cell(r, output.lastColumn()));
    run.header = output.headerText(output.lastColumn());
    run.warnings = transform.warnings();
    run.information = transform.information();
    run.result = transform.result();
    return run;
}

void TestTransformJavascript::runs_data()
{
    QTest::addColumn<QList<QStringList>>("rows");
    QTest::addColumn<QString>("typeAs");
    QTest::addColumn<QString>("script");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QStringList>("warnings");
    QTest::addColumn<QStringList>("information");

    const QList<QStringList> numbers {{"amount", "name"}, {"1.5", "Ann"}, {"10", "Bob"}};
    const QString number = "Column 'amount' passed as Javascript Number type";
    const QString string = "Column 'amount' passed as Javascript String type";

    QTest::newRow("the default script fills every row")
        << numbers << QString() << QString() << QStringList {"Hello world!", "Hello world!"}
        << QStringList() << QStringList();
    QTest::newRow("a number column is passed as numbers")
        << numbers << QString() << "return $(amount) * 2;" << QStringList {"3", "20"}
        << QStringList() << QStringList {number};
    QTest::newRow("references by name and by number, each column once")
        << numbers << QString() << "return $(name) + ':' + $(1) + ':' + $(amount) + $(2);"
        << QStringList {"Ann:1.5:1.5Ann", "Bob:10:10Bob"} << QStringList()
        << QStringList {number, "Column 'name' passed as Javascript String type"};
    QTest::newRow("typed all as String, numbers are joined, not added")
        << numbers << "String"
        << "return $(amount) + 1;" << QStringList {"1.51", "101"} << QStringList()
        << QStringList {string};
    QTest::newRow("one text among numbers makes the column String")
        << QList<QStringList> {{"amount"}, {"1"}, {"2"}, {"x"}} << QString()
        << "return $(amount) + 1;" << QStringList {"11", "21", "x1"} << QStringList()
        << QStringList {string};
    QTest::newRow("an empty cell of a Number column is undefined and a type error")
        << QList<QStringList> {{"amount"}, {"1"}, {""}, {"3"}} << QString() << "return $(amount);"
        << QStringList {"1", "undefined", "3"}
        << QStringList {"1 type error(s):",
                        "Cannot convert value '' in column 'amount' row 2 to Number"}
        << QStringList {number};
    QTest::newRow("TRUE is no Boolean: only lower case converts")
        << QList<QStringList> {{"flag"}, {"true"}, {"TRUE"}, {"false"}} << QString()
        << "return $(flag) === undefined ? 'none' : !$(flag);"
        << QStringList {"false", "none", "true"}
        << QStringList {"1 type error(s):",
                        "Cannot convert value 'TRUE' in column 'flag' row 2 to Boolean"}
        << QStringList {"Column 'flag' passed as Javascript Boolean type"};
    QTest::newRow("a script using no column is a function of no parameters")
        << numbers << QString() << "return arguments.length + ' ' + 7 * 6;"
        << QStringList {"0 42", "0 42"} << QStringList() << QStringList();
    QTest::newRow("no return statement gives undefined")
        << numbers << QString() << "var x = $(amount);" << QStringList {"undefined", "undefined"}
        << QStringList() << QStringList {number};
    QTest::newRow("a repeated name stands for its first column")
        << QList<QStringList> {{"a", "b", "a"}, {"1", "2", "3"}} << QString() << "return $(a);"
        << QStringList {"1"}
        << QStringList {"Ambiguous column name(s): a, first column with name used"}
        << QStringList {"Column 'a' passed as Javascript Number type"};
    QTest::newRow("a syntax error fails every row alike")
        << numbers << QString() << "var v = 1;\nreturn v +;"
        << QStringList {"SyntaxError: Expected token `numeric literal'",
                        "SyntaxError: Expected token `numeric literal'"}
        << QStringList {"2 Javascript error(s).",
                        "Error: SyntaxError: Expected token `numeric literal' at script line 2 "
                        "for dataset row 1.",
                        "Error: SyntaxError: Expected token `numeric literal' at script line 2 "
                        "for dataset row 2."}
        << QStringList();
    QTest::newRow("a script that throws on one row fails that row only")
        << QList<QStringList> {{"n"}, {"1"}, {"2"}, {"3"}} << QString()
        << "var v = $(n);\nif (v == 2)\n    throw new Error('bad ' + v);\nreturn v * 10;"
        << QStringList {"10", "Error: bad 2", "30"}
        << QStringList {"1 Javascript error(s).",
                        "Error: Error: bad 2 at script line 3 for dataset row 2."}
        << QStringList {"Column 'n' passed as Javascript Number type"};
    QTest::newRow("a reference to no column is left to fail in the script")
        << numbers << QString() << "return $(nosuch);"
        << QStringList {"ReferenceError: nosuch is not defined",
                        "ReferenceError: nosuch is not defined"}
        << QStringList {"2 Javascript error(s).",
                        "Error: ReferenceError: nosuch is not defined at script line 1 for "
                        "dataset row 1.",
                        "Error: ReferenceError: nosuch is not defined at script line 1 for "
                        "dataset row 2."}
        << QStringList();
}

void TestTransformJavascript::runs()
{
    QFETCH(QList<QStringList>, rows);
    QFETCH(QString, typeAs);
    QFETCH(QString, script);
    QFETCH(QStringList, expected);
    QFETCH(QStringList, warnings);
    QFETCH(QStringList, information);

    TransformJavascript transform;
    const Run run = TestTransformJavascript::run(transform, rows, script, typeAs);
    QCOMPARE(run.column, expected);
    QCOMPARE(run.warnings, warnings);
    QCOMPARE(run.information, information);
    QCOMPARE(run.header, QString("Javascript"));
    QCOMPARE(run.result, QString("%1 evaluated").arg(expected.size()));
}

void TestTransformJavascript::manyProblemsAreCut()
{
    QList<QStringList> rows {{"n"}};
    for (int i = 1; i <= 8; ++i)
        rows.append({i % 2 ? QString::number(i) : QString()});
    rows.append({"x"}); // so that the column is String and the empty cells convert
    TransformJavascript transform;
    Run run = TestTransformJavascript::run(transform, rows, "throw new Error('e' + $(n));");
    QCOMPARE(run.warnings.size(), 1 + 5 + 1);
    QCOMPARE(run.warnings.first(), QString("9 Javascript error(s)."));
    QCOMPARE(run.warnings.at(5), QString("Error: Error: e5 at script line 1 for dataset row 5."));
    QCOMPARE(run.warnings.last(), QString("..."));

    rows.removeLast(); // a Number column now, whose four empty cells can't convert
    rows.append({""});
    rows.append({""});
    run = TestTransformJavascript::run(transform, rows, "return $(n);");
    QCOMPARE(run.warnings.size(), 1 + 5 + 1);
    QCOMPARE(run.warnings.first(), QString("6 type error(s):"));
    QCOMPARE(run.warnings.at(5), QString("Cannot convert value '' in column 'n' row 9 to Number"));
    QCOMPARE(run.warnings.last(), QString("+ 1 other"));
}

void TestTransformJavascript::runawayScriptIsStopped_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<bool>("byStopFlag");
    QTest::addColumn<QString>("why");

    const QString loop = "if ($(n) > 0) while (true) {}\nreturn $(n) + 1;";
    QTest::newRow("past the time limit") << loop << false << "it ran for more than 0 seconds";
    QTest::newRow("by the stop flag") << loop << true << "the run was stopped";
    // The script closes its function and loops while the function is being made.
    QTest::newRow("outside its function")
        << "}); while (true) {} (function() {" << false << "it ran for more than 0 seconds";
}

void TestTransformJavascript::runawayScriptIsStopped()
{
    QFETCH(QString, script);
    QFETCH(bool, byStopFlag);
    QFETCH(QString, why);

    // The first row never ends, so that whenever the watch looks it finds that call running.
    const QList<QStringList> rows {{"n"}, {"1"}, {"0"}};
    TransformJavascript transform;
    RunContext context;
    if (byStopFlag) {
        // Set for the watching thread only: the run itself doesn't see it between rows.
        context.stopRequested = [] {
            return QThread::currentThread() != qApp->thread();
        };
    } else {
        transform.setTimeLimit(0ms);
    }
    Run run = TestTransformJavascript::run(transform, rows, script, QString(), context);
    QCOMPARE(run.column, QStringList({"", ""}));
    QCOMPARE(run.result, QString("0 evaluated"));
    QCOMPARE(run.warnings,
             QStringList {QString("Script stopped at dataset row 1: %1. Rows from there on are "
                                  "left empty.")
                              .arg(why)});

    // The engine is kept, and isn't left interrupted.
    transform.setTimeLimit(TransformJavascript::DefaultTimeLimit);
    run = TestTransformJavascript::run(transform, {{"n"}, {"0"}, {"2"}}, "return $(n) + 1;");
    QCOMPARE(run.column, QStringList({"1", "3"}));
    QVERIFY(run.warnings.isEmpty());
}

QTEST_GUILESS_MAIN(TestTransformJavascript)
#include "tst_transformjavascript.moc"
