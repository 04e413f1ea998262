#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformcount.h"

#include <QCoreApplication>
#include <QtTest>

// Count: how texts are grouped (case folding under the first spelling, empty cells), how the
// result is ordered, the name of the count column, and what a run without a column gives.
class TestTransformCount : public QObject
{
    Q_OBJECT

private slots:
    void counts_data();
    void counts();
    void names_data();
    void names();
    void noColumnGivesEmptyTwoColumnTable();
    void drilldownRecordsEveryCountedRow();

private:
    struct Run
    {
        Dataset output;
        QString result;
        QStringList warnings;
    };
    // Counts column 0 of a table headed "fruit"; an empty sort or order keeps the default.
    static Run count(const Dataset &input, bool setColumn, const QString &sort = QString(),
                     const QString &order = QString(), bool caseSensitive = false,
                     bool autoName = true, const QString &newName = QString(),
                     bool drilldown = false);
    static QList<QStringList> rowsOf(const Dataset &dataset);
};

TestTransformCount::Run TestTransformCount::count(const Dataset &input, bool setColumn,
                                                  const QString &sort, const QString &order,
                                                  bool caseSensitive, bool autoName,
                                                  const QString &newName, bool drilldown)
{
    QScopedPointer<DataSource> node(makeDataSource(input));
    TransformCount transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Column")->setColumnId(setColumn ? node->dataset()->columnId(0)
                                                         : ColumnId());
    if (!sort.isEmpty())
        transform.parameter("Sort")->setValue(sort);
    if (!order.isEmpty())
        transform.parameter("Order")->setValue(order);
    transform.parameter("Case_Sensitive")->setValue(caseSensitive);
    transform.parameter("Auto_New_Name")->setValue(autoName);
    if (!newName.isEmpty())
        transform.parameter("New_Name")->setValue(newName);
    transform.parameter("Drilldown")->setValue(drilldown);
    Run run;
    run.output = runTransform(transform, {node.data()});
    run.result = transform.result();
    run.warnings = transform.warnings();
    return run;
}

QList<QStringList> TestTransformCount::rowsOf(const Dataset &dataset)
{
    return dataset.rows();
}

static Dataset fruitTable(const QStringList &values)
{
    QList<QStringList> rows {{"fruit", "price"}};
    for (const QString &value : values)
        rows.append({value, "1"});
    return makeDataset(rows);
}

void TestTransformCount::counts_data()
{
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QString>("sort");
    QTest::addColumn<QString>("order");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QList<QStringList>>("expected");
    QTest::addColumn<QString>("result");

    const QStringList mixed {"Apple", "pear", "APPLE", "", "apple", ""};
    QTest::newRow("defaults: case folded under the first spelling, empties counted, most first")
        << mixed << QString() << QString() << false
        << QList<QStringList> {{"Apple", "3"}, {"", "2"}, {"pear", "1"}} << "3 counted from 6 rows";
    QTest::newRow("case sensitive: ties in text order below the larger count")
        << mixed << "Count"
        << "Descending" << true
        << QList<QStringList> {{"", "2"},
                               {"APPLE", "1"},
                               {"Apple", "1"},
                               {"apple", "1"},
                               {"pear", "1"}}
        << "5 counted from 6 rows";
    QTest::newRow("first spelling kept though another is more frequent")
        << QStringList {"x", "X", "X"} << "Count"
        << "Descending" << false << QList<QStringList> {{"x", "3"}} << "1 counted from 3 rows";
    QTest::newRow("count ascending keeps ties in text order")
        << QStringList {"b", "c", "b", "a"} << "Count"
        << "Ascending" << false << QList<QStringList> {{"a", "1"}, {"c", "1"}, {"b", "2"}}
        << "3 counted from 4 rows";
    QTest::newRow("text ascending compares strings, not numbers")
        << QStringList {"b", "9", "10", "b", "a"} << "Text"
        << "Ascending" << false
        << QList<QStringList> {{"10", "1"}, {"9", "1"}, {"a", "1"}, {"b", "2"}}
        << "4 counted from 5 rows";
    QTest::newRow("text descending")
        << QStringList {"b", "9", "10", "b", "a"} << "Text"
        << "Descending" << false
        << QList<QStringList> {{"b", "2"}, {"a", "1"}, {"9", "1"}, {"10", "1"}}
        << "4 counted from 5 rows";
    QTest::newRow("non-ASCII case folding")
        << QStringList {"Élodie", "ÉLODIE", "élodie"} << "Count"
        << "Descending" << false << QList<QStringList> {{"Élodie", "3"}} << "1 counted from 3 rows";
    QTest::newRow("no rows") << QStringList {} << "Count"
                             << "Descending" << false << QList<QStringList> {}
                             << "0 counted from 0 rows";
}

void TestTransformCount::counts()
{
    QFETCH(QStringList, values);
    QFETCH(QString, sort);
    QFETCH(QString, order);
    QFETCH(bool, caseSensitive);
    QFETCH(QList<QStringList>, expected);
    QFETCH(QString, result);

    const Run run = count(fruitTable(values), true, sort, order, caseSensitive);
    QCOMPARE(rowsOf(run.output), expected);
    QCOMPARE(run.output.header(), (QStringList {"fruit", "Count fruit"}));
    QCOMPARE(run.result, result);
    QCOMPARE(run.warnings, QStringList());
}

void TestTransformCount::names_data()
{
    QTest::addColumn<bool>("withHeader");
    QTest::addColumn<bool>("autoName");
    QTest::addColumn<QString>("newName");
    QTest::addColumn<QStringList>("header");

    QTest::newRow("automatic from the header")
        << true << true << "ignored" << QStringList {"fruit", "Count fruit"};
    QTest::newRow("given name") << true << false << "Tally" << QStringList {"fruit", "Tally"};
    QTest::newRow("no header: the column's number")
        << false << true << QString() << QStringList {"1", "Count 1"};
}

void TestTransformCount::names()
{
    QFETCH(bool, withHeader);
    QFETCH(bool, autoName);
    QFETCH(QString, newName);
    QFETCH(QStringList, header);

    const Dataset input = makeDataset({{"fruit", "price"}, {"fig", "2"}}, withHeader);
    const Run run = count(input, true, "Count", "Descending", false, autoName, newName);
    QCOMPARE(run.output.header(), header);
    QVERIFY(run.output.hasHeader());
}

void TestTransformCount::noColumnGivesEmptyTwoColumnTable()
{
    const Run automatic = count(fruitTable({"a", "b"}), false);
    QCOMPARE(automatic.output.columnCount(), 2);
    QCOMPARE(automatic.output.rowCount(), 0);
    QCOMPARE(automatic.output.header(), (QStringList {"<None selected>", "Count"}));
    QCOMPARE(automatic.warnings, QStringList {"1 option not set ('Column')"});

    const Run named = count(fruitTable({"a"}), false, "Count", "Descending", false, false, "N");
    QCOMPARE(named.output.header(), (QStringList {"<None selected>", "N"}));
}

void TestTransformCount::drilldownRecordsEveryCountedRow()
{
    const Run run = count(fruitTable({"Apple", "pear", "apple", "", "APPLE"}), true, "Count",
                          "Descending", false, true, QString(), true);
    QCOMPARE(rowsOf(run.output), (QList<QStringList> {{"Apple", "3"}, {"", "1"}, {"pear", "1"}}));
    QCOMPARE(run.output.sourceRowsOf(0, 0), (QList<int> {0, 2, 4}));
    QCOMPARE(run.output.sourceRowsOf(0, 1), (QList<int> {0, 2, 4}));
    QCOMPARE(run.output.sourceRowsOf(1, 1), (QList<int> {3}));
    QCOMPARE(run.output.sourceRowsOf(2, 0), (QList<int> {1}));

    const Run plain = count(fruitTable({"a", "a"}), true);
    QVERIFY(plain.output.sourceRows().isEmpty());
}

QTEST_GUILESS_MAIN(TestTransformCount)
#include "tst_transformcount.moc"
