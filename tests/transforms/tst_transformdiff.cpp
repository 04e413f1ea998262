#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformdiff.h"

#include <QCoreApplication>
#include <QtTest>

// Difference: the listing of columns and rows that differ between a top and a bottom
// dataset, by row number or by key, its limit and its messages.
class TestTransformDiff : public QObject
{
    Q_OBJECT

private slots:
    void differences_data();
    void differences();
    void maxDiffsStopsTheListing();
    void equalDatasetsHaveNoDifferences();
    void unsetKeysListNothing();
    void singleInputAsksForSecond();

private:
    struct Run
    {
        QStringList header;
        QStringList rows;
        QString result;
        QStringList warnings;
    };
    // Difference of top and bottom; keys are the first columns when byKey.
    static Run diff(const QList<QStringList> &top, const QList<QStringList> &bottom, bool byKey,
                    bool caseSensitive = true, bool sortByKey = false, int maxDiffs = 1000);
};

TestTransformDiff::Run TestTransformDiff::diff(const QList<QStringList> &top,
                                               const QList<QStringList> &bottom, bool byKey,
                                               bool caseSensitive, bool sortByKey, int maxDiffs)
{
    QScopedPointer<DataSource> topSource(makeDataSource(makeDataset(top)));
    QScopedPointer<DataSource> bottomSource(makeDataSource(makeDataset(bottom)));
    TransformDiff transform;
    transform.createParameters({topSource.data(), bottomSource.data()}, false);
    transform.parameter("By")->setValue(byKey ? "Key columns" : "Row numbers");
    transform.parameter("Top_Key_Column")->setColumnId(topSource->dataset()->columnId(0));
    transform.parameter("Bottom_Key_Column")->setColumnId(bottomSource->dataset()->columnId(0));
    transform.parameter("Case_Sensitive")->setValue(caseSensitive);
    transform.parameter("Sort_by_Key")->setValue(sortByKey);
    transform.parameter("Max_Diffs")->setValue(maxDiffs);
    const Dataset output = runTransform(transform, {topSource.data(), bottomSource.data()});
    Run run;
    run.header = output.headers();
    for (const QStringList &row : output.rows())
        run.rows.append(row.join(QLatin1Char('|')));
    run.result = transform.result();
    run.warnings = transform.warnings();
    return run;
}

void TestTransformDiff::differences_data()
{
    QTest::addColumn<QList<QStringList>>("top");
    QTest::addColumn<QList<QStringList>>("bottom");
    QTest::addColumn<bool>("byKey");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<bool>("sortByKey");
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<QString>("result");

    const QList<QStringList> top {
        {"id", "name", "city"}, {"1", "Ann", "Oslo"}, {"2", "Bob", "Rome"}, {"3", "Cy", "Bern"}};

    QTest::newRow("row numbers, longer bottom")
        << top
        << QList<QStringList> {{"id", "name", "city"}, {"1", "Ann", "Oslo"}, {"2", "Bob", "Roma"},
                               {"3", "Cy", "Bern"},    {"4", "Di", "Nice"},  {"5", "Ed", "Linz"}}
        << false << true << false
        << QStringList {"Value change|city|2|2|Rome|Roma", "Row in bottom only||N/A|4|N/A|",
                        "Row in bottom only||N/A|5|N/A|"}
        << "3 differences";
    QTest::newRow("row numbers, longer top")
        << top << QList<QStringList> {{"id", "name", "city"}, {"1", "Ann", "Oslo"}} << false << true
        << false << QStringList {"Row in top only||2|N/A||N/A", "Row in top only||3|N/A||N/A"}
        << "2 differences";
    // Key 2 is gone, 4 is new and 3 moved up: rows pair by key, whatever their numbers.
    QTest::newRow("by key with rows only on one side")
        << top
        << QList<QStringList> {{"id", "name", "city"},
                               {"3", "Cy", "Bern"},
                               {"4", "Di", "Nice"},
                               {"1", "Anne", "Oslo"}}
        << true << true << false
        << QStringList {"Value change|name|1|3|Ann|Anne|1", "Row in top only||2|N/A||N/A|2",
                        "Row in bottom only||N/A|2|N/A||4"}
        << "3 differences";
    QTest::newRow("by key, sorted by key")
        << QList<QStringList> {{"id", "v"}, {"10", "a"}, {"9", "b"}}
        << QList<QStringList> {{"id", "v"}, {"2", "c"}, {"10", "x"}} << true << true << true
        << QStringList {"Row in bottom only||N/A|1|N/A||2", "Row in top only||2|N/A||N/A|9",
                        "Value change|v|1|2|a|x|10"}
        << "3 differences";
    // The second a above pairs with the second a below, the third has no partner.
    QTest::newRow("repeated keys pair in order")
        << QList<QStringList> {{"k", "v"}, {"a", "1"}, {"b", "2"}, {"a", "3"}, {"a", "4"}}
        << QList<QStringList> {{"k", "v"}, {"a", "1"}, {"a", "5"}, {"b", "2"}} << true << true
        << false << QStringList {"Value change|v|3|2|3|5|a", "Row in top only||4|N/A||N/A|a"}
        << "2 differences";
    // Keys that match in any case pair, and the key cells still differ as values.
    QTest::newRow("case insensitive keys")
        << QList<QStringList> {{"k", "v"}, {"Ab", "1"}}
        << QList<QStringList> {{"k", "v"}, {"aB", "1"}} << true << false << false
        << QStringList {"Value change|k|1|1|Ab|aB|Ab"} << "1 differences";
    QTest::newRow("case sensitive keys")
        << QList<QStringList> {{"k", "v"}, {"Ab", "1"}}
        << QList<QStringList> {{"k", "v"}, {"aB", "1"}} << true << true << false
        << QStringList {"Row in top only||1|N/A||N/A|Ab", "Row in bottom only||N/A|1|N/A||aB"}
        << "2 differences";
    // Columns compare by position: a name that differs is a rename, columns past the
    // narrower side are on one side only, and only the common columns' cells are compared.
    QTest::newRow("renamed and extra columns")
        << QList<QStringList> {{"id", "name", "city"}, {"1", "Ann", "Oslo"}}
        << QList<QStringList> {{"id", "full name", "city", "zip", "phone"},
                               {"1", "Ann", "Bergen", "5003", "555"}}
        << false << true << false
        << QStringList {"Column renamed|name|||name|full name",
                        "Column in bottom only|zip|||N/A|zip",
                        "Column in bottom only|phone|||N/A|phone",
                        "Value change|city|1|1|Oslo|Bergen"}
        << "4 differences";
    QTest::newRow("column in top only")
        << QList<QStringList> {{"id", "x"}, {"1", "2"}} << QList<QStringList> {{"id"}, {"1"}}
        << false << true << false << QStringList {"Column in top only|x|||x|N/A"} << "1 differences";
    // Cells compare exactly: case, blanks and number forms all count.
    QTest::newRow("cells compare as text")
        << QList<QStringList> {{"a", "b", "c"}, {"x", "1.0", " y"}}
        << QList<QStringList> {{"a", "b", "c"}, {"X", "1", "y"}} << false << true << false
        << QStringList {"Value change|a|1|1|x|X", "Value change|b|1|1|1.0|1",
                        "Value change|c|1|1| y|y"}
        << "3 differences";
}

void TestTransformDiff::differences()
{
    QFETCH(QList<QStringList>, top);
    QFETCH(QList<QStringList>, bottom);
    QFETCH(bool, byKey);
    QFETCH(bool, caseSensitive);
    QFETCH(bool, sortByKey);
    QFETCH(QStringList, rows);
    QFETCH(QString, result);

    const Run run = diff(top, bottom, byKey, caseSensitive, sortByKey);
    QStringList header {"Change", "Column", "Top row", "Bottom row", "Top value", "Bottom value"};
    if (byKey)
        header.append("Key");
    QCOMPARE(run.header, header);
    QCOMPARE(run.rows, rows);
    QCOMPARE(run.result, result);
    QCOMPARE(run.warnings, QStringList());
}

void TestTransformDiff::maxDiffsStopsTheListing()
{
    const QList<QStringList> top {{"a", "b"}, {"1", "2"}, {"3", "4"}, {"5", "6"}};
    const QList<QStringList> bottom {{"a", "c"}, {"1", "x"}, {"y", "4"}};
    // A rename, two changed cells and a row in top only: four differences.
    Run run = diff(top, bottom, false, true, false, 2);
    QCOMPARE(run.rows, QStringList({"Column renamed|b|||b|c", "Value change|b|1|1|2|x"}));
    QCOMPARE(run.warnings, QStringList("Stopped after 2 difference(s)"));
    QCOMPARE(run.result, QString("4 differences"));

    // Exactly as many as allowed is no stop.
    run = diff(top, bottom, false, true, false, 4);
    QCOMPARE(run.rows.size(), 4);
    QCOMPARE(run.warnings, QStringList());
}

void TestTransformDiff::equalDatasetsHaveNoDifferences()
{
    const QList<QStringList> rows {{"id", "v"}, {"1", "a"}, {"2", ""}, {"2", "b"}};
    for (const bool byKey : {false, true}) {
        const Run run = diff(rows, rows, byKey);
        QCOMPARE(run.rows, QStringList());
        QCOMPARE(run.result, QString("No differences"));
    }
}

void TestTransformDiff::unsetKeysListNothing()
{
    QScopedPointer<DataSource> top(makeDataSource(makeDataset({{"a", "b"}, {"1", "2"}})));
    QScopedPointer<DataSource> bottom(makeDataSource(makeDataset({{"a", "b"}, {"3", "4"}})));
    TransformDiff transform;
    transform.createParameters({top.data(), bottom.data()}, false);
    transform.parameter("By")->setValue("Key columns");
    const Dataset output = runTransform(transform, {top.data(), bottom.data()});
    QCOMPARE(output.rowCount(), 0);
    QCOMPARE(output.columnCount(), 7);
    QCOMPARE(transform.warnings(),
             QStringList("2 options not set ('Top key column','Bottom key column')"));

    // By row numbers the keys are neither used nor asked for.
    transform.parameter("By")->setValue("Row numbers");
    QCOMPARE(runTransform(transform, {top.data(), bottom.data()}).rowCount(), 2);
    QCOMPARE(transform.warnings(), QStringList());
}

void TestTransformDiff::singleInputAsksForSecond()
{
    QScopedPointer<DataSource> top(makeDataSource(makeDataset({{"a"}, {"1"}})));
    TransformDiff transform;
    transform.createParameters({top.data()}, false);
    const Dataset output = runTransform(transform, {top.data()});
    QCOMPARE(output.rowCount(), 0);
    QCOMPARE(output.columnCount(), 6);
    QCOMPARE(transform.result(), QString("Connect a second dataset"));
}

QTEST_GUILESS_MAIN(TestTransformDiff)
#include "tst_transformdiff.moc"
