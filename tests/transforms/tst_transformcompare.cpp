#include "data/valueinterpretation.h"
#include "testdata.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformcompare.h"

#include <QCoreApplication>
#include <QtTest>

// Compare Cols: a column of "true" and "false" from an operator applied to two columns of each
// row, with text, numbers and dates each compared as such, the case option, and the name and
// counts it reports.
class TestTransformCompare : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void operators_data();
    void operators();
    void datesFollowTheDateFormats_data();
    void datesFollowTheDateFormats();
    void namesAndCounts();
    void unsetColumnComparesNothing();

private:
    struct Run
    {
        Dataset output;
        QString result;
    };
    // Compares column a with column b of rows (below a header "a", "b").
    static Run compare(const QList<QStringList> &rows, int op, bool caseSensitive,
                       bool autoName = true);
};

void TestTransformCompare::cleanup()
{
    setDateFormats({});
}

TestTransformCompare::Run TestTransformCompare::compare(const QList<QStringList> &rows, int op,
                                                        bool caseSensitive, bool autoName)
{
    QList<QStringList> table {{"a", "b"}};
    table.append(rows);
    QScopedPointer<DataSource> source(makeDataSource(makeDataset(table)));
    TransformCompare transform;
    transform.createParameters({source.data()}, false);
    transform.parameter("Column1")->setColumnId(source->dataset()->columnId(0));
    transform.parameter("Column2")->setColumnId(source->dataset()->columnId(1));
    transform.parameter("Comparison")->setValue(ComparisonOperator::displayText(op));
    transform.parameter("Case_Sensitive")->setValue(caseSensitive);
    transform.parameter("Auto_New_Name")->setValue(autoName);
    transform.parameter("New_Name")->setValue(QStringLiteral("Same"));
    Run run;
    run.output = runTransform(transform, {source.data()});
    run.result = transform.result();
    return run;
}

void TestTransformCompare::operators_data()
{
    QTest::addColumn<int>("op");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QString>("expected");

    // The rows of the table, a against b: abc/ABC, 10/9, 1.0/1, apple pie/pie, (empty)/x.
    QTest::newRow("= ignoring case, 1.0 equal to 1 as numbers")
        << int(ComparisonOperator::EqualTo) << false << "true false true false false";
    QTest::newRow("= with case") << int(ComparisonOperator::EqualTo) << true
                                 << "false false true false false";
    QTest::newRow("!= with case") << int(ComparisonOperator::NotEqualTo) << true
                                  << "true true false true true";
    // 10 > 9 as numbers (as text it is less); abc > ABC only when case counts.
    QTest::newRow("> ignoring case")
        << int(ComparisonOperator::GreaterThan) << false << "false true false false false";
    QTest::newRow("> with case") << int(ComparisonOperator::GreaterThan) << true
                                 << "true true false false false";
    // Contains never reads numbers: 1.0 contains 1 as text.
    QTest::newRow("contains ignoring case")
        << int(ComparisonOperator::Contains) << false << "true false true true false";
    QTest::newRow("contains with case")
        << int(ComparisonOperator::Contains) << true << "false false true true false";
    QTest::newRow("regex: b is the pattern")
        << int(ComparisonOperator::MatchesRegex) << true << "false false true true false";
    QTest::newRow("is empty looks at a only")
        << int(ComparisonOperator::IsEmpty) << true << "false false false false true";
    QTest::newRow("80% fuzzy ignoring case")
        << int(ComparisonOperator::FuzzyMatch80) << false << "true false false false false";
}

void TestTransformCompare::operators()
{
    QFETCH(int, op);
    QFETCH(bool, caseSensitive);
    QFETCH(QString, expected);

    const Run run
        = compare({{"abc", "ABC"}, {"10", "9"}, {"1.0", "1"}, {"apple pie", "pie"}, {"", "x"}}, op,
                  caseSensitive);
    QCOMPARE(run.output.columnCount(), 3);
    QCOMPARE(run.output.columnValues(2).join(' '), expected);
    // The compared cells stay as they were.
    QCOMPARE(run.output.columnValues(0), QStringList({"abc", "10", "1.0", "apple pie", ""}));
}

void TestTransformCompare::datesFollowTheDateFormats_data()
{
    QTest::addColumn<QStringList>("formats");
    QTest::addColumn<QString>("expected");

    // a > b for 1/2/2020 > 3/1/2020, 10/1/2020 > 9/1/2020 (as text it is less), 5/5/2020 >
    // an empty cell (no date: compared as text). 1/2/2020 is the first of February only when
    // days come first.
    QTest::newRow("day first") << QStringList {"d/M/yyyy"} << "true true true";
    QTest::newRow("month first") << QStringList {"M/d/yyyy"} << "false true true";
    QTest::newRow("no format fits: text") << QStringList {"yyyy-M-d"} << "false false true";
}

void TestTransformCompare::datesFollowTheDateFormats()
{
    QFETCH(QStringList, formats);
    QFETCH(QString, expected);

    setDateFormats(formats);
    const Run run = compare({{"1/2/2020", "3/1/2020"}, {"10/1/2020", "9/1/2020"}, {"5/5/2020", ""}},
                            ComparisonOperator::GreaterThan, true);
    QCOMPARE(run.output.columnValues(2).join(' '), expected);
}

void TestTransformCompare::namesAndCounts()
{
    const QList<QStringList> rows {{"1", "1"}, {"2", "3"}, {"x", "x"}};
    Run run = compare(rows, ComparisonOperator::GreaterThanOrEqual, true);
    QCOMPARE(run.output.headers(), QStringList({"a", "b", "a >= b"}));
    QCOMPARE(run.result, QString("2 true, 1 false"));

    run = compare(rows, ComparisonOperator::EqualTo, true, false);
    QCOMPARE(run.output.headers(), QStringList({"a", "b", "Same"}));

    run = compare({}, ComparisonOperator::EqualTo, true);
    QCOMPARE(run.output.columnCount(), 3);
    QCOMPARE(run.result, QString("0 true, 0 false"));
}

void TestTransformCompare::unsetColumnComparesNothing()
{
    QScopedPointer<DataSource> source(makeDataSource(makeDataset({{"a", "b"}, {"1", "1"}})));
    TransformCompare transform;
    transform.createParameters({source.data()}, false);
    transform.parameter("Column1")->setColumnId(source->dataset()->columnId(0));
    const Dataset output = runTransform(transform, {source.data()});
    QCOMPARE(output.headers(), QStringList({"a", "b", "Compare Cols"}));
    QCOMPARE(output.cell(0, 2), QString());
    QCOMPARE(transform.result(), QString("No changes"));
    QCOMPARE(transform.warnings(), QStringList("1 option not set ('Column 2')"));
}

QTEST_GUILESS_MAIN(TestTransformCompare)
#include "tst_transformcompare.moc"
