#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformunique.h"

#include <QCoreApplication>
#include <QtTest>

using Rows = QList<QStringList>;

// Unique: what each column option makes of a group's cells, how rows are grouped (case,
// several key columns, order of first rows), the count column, drilldown, and a run without
// a key column.
class TestTransformUnique : public QObject
{
    Q_OBJECT

private slots:
    void columnOptions_data();
    void columnOptions();
    void extremes_data();
    void extremes();
    void grouping_data();
    void grouping();
    void noKeyColumnGivesACopy();
    void drilldownRecordsEachGroupsRows();
    void tipsNameTheChoices();

private:
    struct Run
    {
        Rows table; // header first
        QString result;
        Dataset output;
        Dataset input;
        bool usesDateFormats = false;
    };
    // options: one a column of the input, as stored (0 makes a key column).
    static Run unique(const Rows &input, const QList<int> &options, bool count = false,
                      bool caseSensitive = true, bool ignoreEmpty = true,
                      const QString &delimiter = ",", bool drilldown = false);
};

TestTransformUnique::Run TestTransformUnique::unique(const Rows &input, const QList<int> &options,
                                                     bool count, bool caseSensitive,
                                                     bool ignoreEmpty, const QString &delimiter,
                                                     bool drilldown)
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(input)));
    TransformUnique transform;
    transform.createParameters({node.data()}, false);
    UniqueColumns columns;
    for (int c = 0; c < options.size(); ++c)
        columns.insert(node->dataset()->columnId(c), options.at(c));
    transform.parameter("Column_Options")->setUniqueColumns(columns);
    transform.parameter("Count")->setValue(count);
    transform.parameter("Case_Sensitive")->setValue(caseSensitive);
    transform.parameter("Concat_Ignore_Empty")->setValue(ignoreEmpty);
    transform.parameter("Delim")->setValue(delimiter);
    transform.parameter("Drilldown")->setValue(drilldown);
    Run run;
    run.output = runTransform(transform, {node.data()});
    run.table = Rows {run.output.headers()} + run.output.rows();
    run.result = transform.result();
    run.input = *node->dataset();
    run.usesDateFormats = transform.usesDateFormats();
    return run;
}

// Group a opens and closes on empty cells, holds a repeated text and texts of one; b holds
// one text that is no number; c two numbers.
static Rows groups()
{
    return {{"k", "v"}, {"a", ""},  {"b", "x"}, {"a", "3"}, {"c", "1"},
            {"a", "7"}, {"a", "3"}, {"c", "2"}, {"a", "9"}, {"a", ""}};
}

void TestTransformUnique::columnOptions_data()
{
    QTest::addColumn<int>("option");
    QTest::addColumn<bool>("ignoreEmpty");
    QTest::addColumn<QString>("delimiter");
    QTest::addColumn<QStringList>("cells"); // of groups a, b and c

    QTest::newRow("keep first") << 1 << true << "," << QStringList {"", "x", "1"};
    QTest::newRow("keep last") << 2 << true << "," << QStringList {"", "x", "2"};
    QTest::newRow("sum; no numbers sum to 0") << 3 << true << "," << QStringList {"22", "0", "3"};
    QTest::newRow("maximum") << 4 << true << "," << QStringList {"9", "", "2"};
    QTest::newRow("minimum") << 5 << true << "," << QStringList {"3", "", "1"};
    QTest::newRow("average; no numbers have none")
        << 6 << true << "," << QStringList {"5.5", "", "1.5"};
    QTest::newRow("concat without empties")
        << 7 << true << "," << QStringList {"3,7,3,9", "x", "1,2"};
    QTest::newRow("concat with empties and a delimiter of two characters")
        << 7 << false << "; " << QStringList {"; 3; 7; 3; 9; ", "x", "1; 2"};
    QTest::newRow("concat distinct in order of first appearance")
        << 8 << true << "," << QStringList {"3,7,9", "x", "1,2"};
    QTest::newRow("concat distinct with the empty text once")
        << 8 << false << "," << QStringList {",3,7,9", "x", "1,2"};
    QTest::newRow("keep first non-empty") << 9 << true << "," << QStringList {"3", "x", "1"};
    QTest::newRow("keep last non-empty") << 10 << true << "," << QStringList {"9", "x", "2"};
    QTest::newRow("count distinct, the empty text among them")
        << 11 << true << "," << QStringList {"4", "1", "2"};
    QTest::newRow("count unique") << 12 << true << "," << QStringList {"2", "1", "2"};
    QTest::newRow("count duplicate") << 13 << true << "," << QStringList {"2", "0", "0"};
    QTest::newRow("count empty") << 14 << true << "," << QStringList {"2", "0", "0"};
    QTest::newRow("count non-empty") << 15 << true << "," << QStringList {"4", "1", "2"};
    QTest::newRow("set empty") << 16 << true << "," << QStringList {"", "", ""};
}

void TestTransformUnique::columnOptions()
{
    QFETCH(int, option);
    QFETCH(bool, ignoreEmpty);
    QFETCH(QString, delimiter);
    QFETCH(QStringList, cells);

    const Run run = unique(groups(), {0, option}, false, true, ignoreEmpty, delimiter);
    QCOMPARE(run.table,
             (Rows {{"k", "v"}, {"a", cells.at(0)}, {"b", cells.at(1)}, {"c", cells.at(2)}}));
    QCOMPARE(run.result, QString("6 rows removed"));
}

void TestTransformUnique::extremes_data()
{
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QString>("maximum");
    QTest::addColumn<QString>("minimum");

    QTest::newRow("numbers keep their text") << QStringList {"4.50", "$5", "x", "-"} << "$5"
                                             << "4.50";
    QTest::newRow("the first of equal numbers") << QStringList {"5.0", "5", "05"} << "5.0"
                                                << "5.0";
    // As texts the order would be 2020-10-1, 2020-2-1, 2020-3-15.
    QTest::newRow("dates compare as dates")
        << QStringList {"2020-2-1", "2020-10-1", "", "2020-3-15"} << "2020-10-1"
        << "2020-2-1";
}

void TestTransformUnique::extremes()
{
    QFETCH(QStringList, values);
    QFETCH(QString, maximum);
    QFETCH(QString, minimum);

    Rows input {{"k", "max", "min"}};
    for (const QString &value : values)
        input.append({"g", value, value});
    const Run run = unique(input, {0, 4, 5});
    QCOMPARE(run.table, (Rows {{"k", "max", "min"}, {"g", maximum, minimum}}));
    QVERIFY(run.usesDateFormats);
    QVERIFY(!unique(input, {0, 3, 6}).usesDateFormats);
}

void TestTransformUnique::grouping_data()
{
    QTest::addColumn<Rows>("input");
    QTest::addColumn<QList<int>>("options");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<Rows>("expected");
    QTest::addColumn<QString>("result");

    const Rows cased {{"k", "v"}, {"a", "1"}, {"A", "2"}, {"b", "4"}, {"a", "3"}};
    QTest::newRow("case sensitive")
        << cased << QList<int> {0, 3} << true
        << Rows {{"k", "v", "Count"}, {"a", "4", "2"}, {"A", "2", "1"}, {"b", "4", "1"}}
        << "1 row removed";
    QTest::newRow("case folded, under the first spelling")
        << cased << QList<int> {0, 3} << false
        << Rows {{"k", "v", "Count"}, {"a", "6", "3"}, {"b", "4", "1"}} << "2 rows removed";
    // The texts of two keys run together alike, yet the keys differ.
    const Rows split {{"k1", "k2", "v"}, {"a", "bc", "1"}, {"ab", "c", "2"}, {"A", "BC", "3"}};
    QTest::newRow("two key columns") << split << QList<int> {0, 0, 2} << true
                                     << Rows {{"k1", "k2", "v", "Count"},
                                              {"a", "bc", "1", "1"},
                                              {"ab", "c", "2", "1"},
                                              {"A", "BC", "3", "1"}}
                                     << "No changes";
    QTest::newRow("two key columns, case folded")
        << split << QList<int> {0, 0, 2} << false
        << Rows {{"k1", "k2", "v", "Count"}, {"a", "bc", "3", "2"}, {"ab", "c", "2", "1"}}
        << "1 row removed";
    QTest::newRow("a column the option doesn't name keeps its first")
        << cased << QList<int> {0} << true
        << Rows {{"k", "v", "Count"}, {"a", "1", "2"}, {"A", "2", "1"}, {"b", "4", "1"}}
        << "1 row removed";
    QTest::newRow("no rows") << Rows {{"k", "v"}} << QList<int> {0, 3} << true
                             << Rows {{"k", "v", "Count"}} << "No changes";
}

void TestTransformUnique::grouping()
{
    QFETCH(Rows, input);
    QFETCH(QList<int>, options);
    QFETCH(bool, caseSensitive);
    QFETCH(Rows, expected);
    QFETCH(QString, result);

    const Run run = unique(input, options, true, caseSensitive);
    QCOMPARE(run.table, expected);
    QCOMPARE(run.result, result);
    // The input's columns keep their identity, so options downstream still find them.
    for (int c = 0; c < run.input.columnCount(); ++c)
        QCOMPARE(run.output.columnId(c), run.input.columnId(c));
}

void TestTransformUnique::noKeyColumnGivesACopy()
{
    const Run run = unique(groups(), {1, 3}, true);
    QCOMPARE(run.table, groups());
    QCOMPARE(run.result, QString("No changes"));
}

void TestTransformUnique::drilldownRecordsEachGroupsRows()
{
    const Run run = unique(groups(), {0, 1}, false, true, true, ",", true);
    QCOMPARE(run.output.sourceRowsOf(0, -1), (QList<int> {0, 2, 4, 5, 7, 8}));
    QCOMPARE(run.output.sourceRowsOf(1, 1), (QList<int> {1}));
    QCOMPARE(run.output.sourceRowsOf(2, 0), (QList<int> {3, 6}));
    QVERIFY(unique(groups(), {0, 1}).output.sourceRows().isEmpty());
}

void TestTransformUnique::tipsNameTheChoices()
{
    TransformUnique transform;
    transform.createParameters({}, false);
    QCOMPARE(transform.parameter("Case_Sensitive")->toolTip(),
             QString("Check for case sensitive 'Keep unique' matching."));
    QCOMPARE(transform.parameter("Delim")->toolTip(),
             QString("The delimiter to use between concatenated terms for 'Concat' or "
                     "'Concat distinct'."));
}

QTEST_GUILESS_MAIN(TestTransformUnique)
#include "tst_transformunique.moc"
