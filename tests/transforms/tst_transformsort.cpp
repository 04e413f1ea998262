#include "data/valueinterpretation.h"
#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformsort.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>

// The Sort transform and the row sort of Dataset beneath it.
class TestTransformSort : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void order_data();
    void order();
    void severalKeys();
    void ranks_data();
    void ranks();
    void ranksByGroup();
    void mixedColumnStillSortsEveryRow();
    void matchesReferenceOnManyRows();

    void transformSortsAndInforms();
    void transformAddsRank();
    void vanishedKeyLeavesInputUnchanged();
    void emptyInput();
    void alreadySortedIsNoChange();

private:
    static Dataset column(const QStringList &values);
};

Dataset TestTransformSort::column(const QStringList &values)
{
    QList<QStringList> rows {{"v"}};
    for (const QString &value : values)
        rows.append({value});
    return makeDataset(rows);
}

void TestTransformSort::initTestCase()
{
    setDateFormats(defaultDateFormats(true));
}

void TestTransformSort::order_data()
{
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<bool>("ascending");
    QTest::addColumn<bool>("intelligent");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("info");

    // One text among the first 100 rows makes the whole column text.
    QTest::newRow("text beside numbers")
        << QStringList {"9", "x", "10"} << true << true << true << QStringList {"10", "9", "x"}
        << "Column 'v' sorted ascending as Text";
    QTest::newRow("numeric") << QStringList {"10", "9", "100", "-1.5", ""} << true << true << true
                             << QStringList {"", "-1.5", "9", "10", "100"}
                             << "Column 'v' sorted ascending as Numeric";
    QTest::newRow("numeric descending")
        << QStringList {"10", "9", "$100", "-1.5"} << false << true << true
        << QStringList {"$100", "10", "9", "-1.5"} << "Column 'v' sorted descending as Numeric";
    QTest::newRow("not intelligent") << QStringList {"10", "9", "100", "-1.5"} << true << false
                                     << true << QStringList {"-1.5", "10", "100", "9"} << "";
    QTest::newRow("dates by the found format")
        << QStringList {"15/3/2020", "1/2/2020", "31/1/2020", "5/12/2019"} << true << true << true
        << QStringList {"5/12/2019", "31/1/2020", "1/2/2020", "15/3/2020"}
        << "Column 'v' sorted ascending as Date (d/M/yyyy)";
    QTest::newRow("case sensitive")
        << QStringList {"b", "C", "a"} << true << true << true << QStringList {"C", "a", "b"}
        << "Column 'v' sorted ascending as Text";
    QTest::newRow("case insensitive")
        << QStringList {"b", "C", "a"} << true << true << false << QStringList {"a", "b", "C"}
        << "Column 'v' sorted ascending as Text";
}

void TestTransformSort::order()
{
    QFETCH(QStringList, values);
    QFETCH(bool, ascending);
    QFETCH(bool, intelligent);
    QFETCH(bool, caseSensitive);
    QFETCH(QStringList, expected);
    QFETCH(QString, info);

    Dataset data = column(values);
    QStringList lines;
    data.sortRows({ascending ? 1 : -1}, dateFormats(), false, Dataset::RankMinimum, -1, false,
                  caseSensitive, intelligent, &lines);
    QCOMPARE(data.columnValues(0), expected);
    QCOMPARE(lines, info.isEmpty() ? QStringList() : QStringList {info});
}

void TestTransformSort::severalKeys()
{
    Dataset data = makeDataset(
        {{"group", "amount"}, {"b", "5"}, {"a", "20"}, {"b", "100"}, {"a", "3"}, {"c", "7"}});
    data.sortRows({1, -2}, dateFormats());
    QCOMPARE(data.rows(),
             QList<QStringList>({{"a", "20"}, {"a", "3"}, {"b", "100"}, {"b", "5"}, {"c", "7"}}));
}

void TestTransformSort::ranks_data()
{
    QTest::addColumn<int>("rankType");
    QTest::addColumn<QStringList>("expected");

    // Sorted values 10, 20, 20.0, 30, 30, 30, 40: 20 and 20.0 tie as numbers.
    QTest::newRow("minimum") << int(Dataset::RankMinimum)
                             << QStringList {"1", "2", "2", "4", "4", "4", "7"};
    QTest::newRow("average") << int(Dataset::RankAverage)
                             << QStringList {"1", "2.5", "2.5", "5", "5", "5", "7"};
    QTest::newRow("maximum") << int(Dataset::RankMaximum)
                             << QStringList {"1", "3", "3", "6", "6", "6", "7"};
    QTest::newRow("dense") << int(Dataset::RankDense)
                           << QStringList {"1", "2", "2", "3", "3", "3", "4"};
    QTest::newRow("cumulative") << int(Dataset::RankCumulative)
                                << QStringList {"0.142857142857143",
                                                "0.428571428571429",
                                                "0.428571428571429",
                                                "0.857142857142857",
                                                "0.857142857142857",
                                                "0.857142857142857",
                                                "1"};
}

void TestTransformSort::ranks()
{
    QFETCH(int, rankType);
    QFETCH(QStringList, expected);

    Dataset data = makeDataset({{"v", "Rank"},
                                {"30", ""},
                                {"20", ""},
                                {"40", ""},
                                {"30", ""},
                                {"10", ""},
                                {"20.0", ""},
                                {"30", ""}});
    data.sortRows({1}, dateFormats(), true, rankType);
    QCOMPARE(data.columnValues(1), expected);
    QCOMPARE(data.cell(0, 0), QString("10"));
    QCOMPARE(data.cell(6, 0), QString("40"));
}

void TestTransformSort::ranksByGroup()
{
    Dataset data = makeDataset({{"g", "v", "Rank"},
                                {"a", "1", ""},
                                {"b", "1", ""},
                                {"a", "2", ""},
                                {"b", "3", ""},
                                {"a", "2", ""},
                                {"b", "3", ""},
                                {"b", "4", ""}});
    data.sortRows({2}, dateFormats(), true, Dataset::RankDense, 0);
    QStringList ranked;
    for (int r = 0; r < data.rowCount(); ++r)
        ranked.append(data.row(r).join(QLatin1Char(' ')));
    std::sort(ranked.begin(), ranked.end());
    QCOMPARE(ranked, QStringList({"a 1 1", "a 2 2", "a 2 2", "b 1 1", "b 3 2", "b 3 2", "b 4 3"}));

    data.sortRows({2}, dateFormats(), true, Dataset::RankCumulative, 0);
    ranked.clear();
    for (int r = 0; r < data.rowCount(); ++r)
        ranked.append(data.row(r).join(QLatin1Char(' ')));
    std::sort(ranked.begin(), ranked.end());
    QCOMPARE(ranked,
             QStringList({"a 1 0.333333333333333", "a 2 1", "a 2 1", "b 1 0.25", "b 3 0.75",
                          "b 3 0.75", "b 4 1"}));
}

void TestTransformSort::mixedColumnStillSortsEveryRow()
{
    // Numeric by its first 100 rows, with texts further down: pairs of a number and a text
    // compare as text, which orders nothing consistently, yet every row must come out once.
    QStringList values;
    QRandomGenerator generator(5);
    for (int i = 0; i < 3000; ++i)
        values.append(i >= 100 && i % 7 == 0 ? QStringLiteral("t%1").arg(generator.bounded(50))
                                             : QString::number(generator.bounded(1000)));
    Dataset data = column(values);
    data.sortRows({-1}, dateFormats());
    QStringList sortedOut = data.columnValues(0);
    std::sort(sortedOut.begin(), sortedOut.end());
    std::sort(values.begin(), values.end());
    QCOMPARE(sortedOut, values);
}

void TestTransformSort::matchesReferenceOnManyRows()
{
    QStringList values;
    QList<double> reference;
    QRandomGenerator generator(11);
    for (int i = 0; i < 20000; ++i) {
        const double value = generator.bounded(100000) / 100.0 - 300.0;
        values.append(QString::number(value, 'f', 2));
        reference.append(value);
    }
    Dataset data = column(values);
    data.sortRows({1}, dateFormats());
    std::sort(reference.begin(), reference.end());
    QCOMPARE(data.rowCount(), reference.size());
    for (int r = 0; r < data.rowCount(); ++r)
        QCOMPARE(data.cell(r, 0).toDouble(), reference.at(r));
}

void TestTransformSort::transformSortsAndInforms()
{
    QScopedPointer<DataSource> input(
        makeDataSource(makeDataset({{"name", "amount"}, {"x", "10"}, {"y", "9"}, {"z", "100"}})));
    TransformSort transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Columns")->setSortColumns({{input->dataset()->columnId(1), false}});

    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(output.columnValues(0), QStringList({"z", "x", "y"}));
    QCOMPARE(output.columnIds(), input->dataset()->columnIds());
    QCOMPARE(transform.result(), QString("Sorted"));
    QCOMPARE(transform.information(), QStringList {"Column 'amount' sorted descending as Numeric"});

    transform.parameter("Intelligent_Sort")->setValue(false);
    const Dataset plain = runTransform(transform, {input.data()});
    QCOMPARE(plain.columnValues(0), QStringList({"y", "z", "x"}));
    QVERIFY(transform.information().isEmpty());
}

void TestTransformSort::transformAddsRank()
{
    QScopedPointer<DataSource> input(
        makeDataSource(makeDataset({{"v"}, {"b"}, {"a"}, {"b"}, {"c"}}, true)));
    TransformSort transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Columns")->setSortColumns({{input->dataset()->columnId(0), true}});
    transform.parameter("Rank_Add")->setValue(true);
    transform.parameter("Rank_Types")->setValue(QString("Maximum"));

    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(output.header(), QStringList({"v", "Rank"}));
    QCOMPARE(output.rows(), QList<QStringList>({{"a", "1"}, {"b", "3"}, {"b", "3"}, {"c", "4"}}));
    QVERIFY(output.columnId(1).isNull());
    QVERIFY(transform.isParameterEnabled("Rank_By"));

    // Without a header the rank column goes unnamed, as every new column does: a name would
    // turn the numbers of the other columns into names.
    QScopedPointer<DataSource> plain(makeDataSource(makeDataset({{"b"}, {"a"}}, false)));
    transform.createParameters({plain.data()}, false);
    transform.parameter("Columns")->setSortColumns({{plain->dataset()->columnId(0), true}});
    transform.parameter("Rank_Add")->setValue(true);
    const Dataset unnamed = runTransform(transform, {plain.data()});
    QVERIFY(!unnamed.hasHeader());
    QCOMPARE(unnamed.rows(), QList<QStringList>({{"a", "1"}, {"b", "2"}}));
}

void TestTransformSort::vanishedKeyLeavesInputUnchanged()
{
    QScopedPointer<DataSource> input(makeDataSource(makeDataset({{"v"}, {"b"}, {"a"}})));
    TransformSort transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Columns")->setSortColumns({{ColumnId(9999, 3), true}});
    const Dataset output = runTransform(transform, {input.data()});
    QVERIFY(output.equals(*input->dataset()));
    QCOMPARE(transform.result(), QString("No changes"));
}

void TestTransformSort::emptyInput()
{
    QScopedPointer<DataSource> input(makeDataSource(makeDataset({{"a", "b"}})));
    TransformSort transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Columns")->setSortColumns({{input->dataset()->columnId(1), true}});
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(output.columnCount(), 2);
    QCOMPARE(output.rowCount(), 0);
    QCOMPARE(transform.result(), QString("No changes"));
}

void TestTransformSort::alreadySortedIsNoChange()
{
    QScopedPointer<DataSource> input(makeDataSource(makeDataset({{"v"}, {"1"}, {"2"}, {"10"}})));
    TransformSort transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Columns")->setSortColumns({{input->dataset()->columnId(0), true}});
    runTransform(transform, {input.data()});
    QCOMPARE(transform.result(), QString("No changes"));
}

QTEST_GUILESS_MAIN(TestTransformSort)
#include "tst_transformsort.moc"
