#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformcorrelate.h"
#include "transforms/transformscale.h"
#include "transforms/transformstats.h"

#include <QtTest>

#include <functional>

using Table = QList<QStringList>;

// The numeric transforms on columns: Stats (a statistic by column, row or both), Correlate (a
// matrix of Pearson coefficients) and Scale (three ways over three scopes), each through whole
// tables with the messages their odd cells raise.
class TestTransformStats : public QObject
{
    Q_OBJECT

private slots:
    void stats_data();
    void stats();
    void correlate_data();
    void correlate();
    void scale_data();
    void scale();
    void startsWithTheNumericColumns();

private:
    struct Run
    {
        Table output;
        QStringList warnings;
        QString result;
    };
    // Runs transform on input (its first row the header) with the columns chosen by number;
    // set fills the other options.
    static Run run(Transform &transform, const Table &input, const QList<int> &columns,
                   const std::function<void(Transform &)> &set);
};

namespace {

// Numbers with a word and an empty cell among them.
const Table numbers {
    {"name", "a", "b"}, {"r1", "1", "4"}, {"r2", "2", "x"}, {"r3", "3", ""}, {"r4", "4", "8"}};

Table withRow(Table table, const QStringList &row)
{
    table.append(row);
    return table;
}

Table withColumn(Table table, const QStringList &column)
{
    for (int r = 0; r < table.size(); ++r)
        table[r].append(column.at(r));
    return table;
}

Table tableOf(const Dataset &dataset)
{
    if (dataset.columnCount() == 0)
        return {};
    Table table {dataset.headers()};
    for (int r = 0; r < dataset.rowCount(); ++r)
        table.append(dataset.row(r));
    return table;
}

const QString notNumber = QStringLiteral("'x' is not a numerical value in column 'b' row 2.");

} // namespace

TestTransformStats::Run TestTransformStats::run(Transform &transform, const Table &input,
                                                const QList<int> &columns,
                                                const std::function<void(Transform &)> &set)
{
    QScopedPointer<DataSource> source(makeDataSource(makeDataset(input)));
    transform.createParameters({source.data()}, false);
    QList<ColumnId> ids;
    for (const int c : columns)
        ids.append(source->dataset()->columnId(c));
    transform.parameter("Columns")->setColumns(ids);
    set(transform);
    Run run;
    run.output = tableOf(runTransform(transform, {source.data()}));
    run.warnings = transform.warnings();
    run.result = transform.result();
    return run;
}

void TestTransformStats::stats_data()
{
    QTest::addColumn<Table>("input");
    QTest::addColumn<QString>("calculation");
    QTest::addColumn<int>("percentile");
    QTest::addColumn<QString>("on");
    QTest::addColumn<Table>("expected");
    QTest::addColumn<QStringList>("warnings");
    QTest::addColumn<QString>("result");

    QTest::newRow("sum of columns; the word reported, the empty cell not")
        << numbers << "Sum" << 0 << "Columns" << withRow(numbers, {"Sum", "10", "12"})
        << QStringList {notNumber} << "1 row added";
    QTest::newRow("inclusive percentile interpolates")
        << numbers << "Percentile (inclusive)" << 90 << "Columns"
        << withRow(numbers, {"Percentile (inclusive)", "3.7", "7.6"}) << QStringList {notNumber}
        << "1 row added";
    QTest::newRow("exclusive 90% of four values has none")
        << numbers << "Percentile (exclusive)" << 90 << "Columns"
        << withRow(numbers, {"Percentile (exclusive)", "N/A", "N/A"})
        << QStringList {notNumber, "Invalid results for 2 cols"} << "1 row added";
    QTest::newRow("deviation of rows; one value has none")
        << numbers << "Standard deviation" << 0 << "Rows"
        << withColumn(numbers,
                      {"Standard deviation", "2.12132034355964", "N/A", "N/A", "2.82842712474619"})
        << QStringList {notNumber, "Invalid results for 2 rows"} << "1 col added";
    QTest::newRow("both: the corner takes every value")
        << numbers << "Average" << 0 << "Columns and rows"
        << withRow(withColumn(numbers, {"Average", "2.5", "2", "3", "6"}),
                   {"Average", "2.5", "6", "3.66666666666667"})
        << QStringList {notNumber} << "1 col and row added";
    QTest::newRow("modes of columns")
        << numbers << "Mode" << 0 << "Columns" << withRow(numbers, {"Mode", "1,2,3,4", "4,8"})
        << QStringList {notNumber} << "1 row added";
    const Table one {{"v"}, {"5"}};
    QTest::newRow("one value: Q1 is the value")
        << one << "Q1" << 0 << "Columns" << withRow(one, {"5"}) << QStringList() << "1 row added";
    QTest::newRow("one value: no variance")
        << one << "Variance" << 0 << "Columns" << withRow(one, {"N/A"})
        << QStringList {"Invalid results for 1 col"} << "1 row added";
    const Table words {{"w"}, {"a"}, {"b"}, {"c"}, {"d"}, {"e"}, {"f"}, {"g"}};
    QTest::newRow("five cells listed, then the rest counted")
        << words << "Maximum" << 0 << "Columns" << withRow(words, {"N/A"})
        << QStringList {"'a' is not a numerical value in column 'w' row 1.",
                        "'b' is not a numerical value in column 'w' row 2.",
                        "'c' is not a numerical value in column 'w' row 3.",
                        "'d' is not a numerical value in column 'w' row 4.",
                        "'e' is not a numerical value in column 'w' row 5.",
                        "+ 2 others",
                        "Invalid results for 1 col"}
        << "1 row added";
}

void TestTransformStats::stats()
{
    QFETCH(Table, input);
    QFETCH(QString, calculation);
    QFETCH(int, percentile);
    QFETCH(QString, on);
    QFETCH(Table, expected);
    QFETCH(QStringList, warnings);
    QFETCH(QString, result);

    QList<int> columns;
    for (int c = input.first().size() > 1 ? 1 : 0; c < input.first().size(); ++c)
        columns.append(c);
    TransformStats transform;
    const Run run = this->run(transform, input, columns, [&](Transform &t) {
        t.parameter("Calculation")->setValue(calculation);
        t.parameter("Percentile")->setValue(percentile);
        t.parameter("On")->setValue(on);
    });
    QCOMPARE(run.output, expected);
    QCOMPARE(run.warnings, warnings);
    QCOMPARE(run.result, result);
}

void TestTransformStats::correlate_data()
{
    QTest::addColumn<Table>("input");
    QTest::addColumn<QList<int>>("columns");
    QTest::addColumn<Table>("expected");
    QTest::addColumn<QStringList>("warnings");

    // y holds a word in row 2, so its pairs are rows 1, 3, 4 and 5; c does not vary.
    const Table input {{"x", "y", "z", "c", "t"}, {"1", "2", "5", "7", "a"},
                       {"2", "x", "4", "7", ""},  {"3", "5", "3", "7", ""},
                       {"4", "4", "2", "7", ""},  {"5", "6", "1", "7", ""}};
    QTest::newRow("square matrix; pairs only where both are numbers")
        << input << QList<int> {0, 1, 2}
        << Table {{"Correlation", "x", "y", "z"},
                  {"x", "1", "0.885714285714286", "-1"},
                  {"y", "0.885714285714286", "1", "-0.885714285714286"},
                  {"z", "-1", "-0.885714285714286", "1"}}
        << QStringList {"'x' is not a numerical value in column 'y' row 2"};
    QTest::newRow("a constant column and one with no numbers")
        << input << QList<int> {0, 3, 4}
        << Table {{"Correlation", "x", "c", "t"},
                  {"x", "1", "N/A", "N/A"},
                  {"c", "N/A", "N/A", "N/A"},
                  {"t", "N/A", "N/A", "N/A"}}
        << QStringList {"'a' is not a numerical value in column 't' row 1",
                        "Standard deviation for 'c' is 0, causing divided by 0",
                        "No valid pairs of values for columns 'x' and 't'",
                        "No valid pairs of values for columns 'c' and 't'"};
    QTest::newRow("one column") << input << QList<int> {0} << Table()
                                << QStringList {"Expected at least 2 columns to be selected"};
    QTest::newRow("no rows") << Table {{"p", "q"}} << QList<int> {0, 1} << Table()
                             << QStringList {"No data"};
}

void TestTransformStats::correlate()
{
    QFETCH(Table, input);
    QFETCH(QList<int>, columns);
    QFETCH(Table, expected);
    QFETCH(QStringList, warnings);

    TransformCorrelate transform;
    const Run run = this->run(transform, input, columns, [](Transform &) {});
    QCOMPARE(run.output, expected);
    QCOMPARE(run.warnings, warnings);
    QCOMPARE(run.result, expected.isEmpty() ? QString() : QString("Correlation table created"));
}

void TestTransformStats::scale_data()
{
    QTest::addColumn<Table>("input");
    QTest::addColumn<QString>("by");
    QTest::addColumn<QString>("of");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<Table>("expected");
    QTest::addColumn<QStringList>("warnings");
    QTest::addColumn<QString>("result");

    const Table input {{"a", "b"}, {"1", "4"}, {"2", "x"}, {"3", ""}, {"5", "-2"}};
    const QStringList wordListed {"1 non-numeric value:", "'x' at column 'b' row 2"};
    const QStringList negativeListed {"1 negative value:", "'-2' at column 'b' row 4"};
    QTest::newRow("minimum and maximum to a range, by column; empty cells stay")
        << input << "Minimum & Maximum"
        << "Each column" << 0 << 100
        << Table {{"a", "b"},
                  {"0", "100"},
                  {"25", "Error: number expected"},
                  {"50", ""},
                  {"100", "0"}}
        << wordListed << "6 changed, 1 unchanged, 1 non-numeric";
    QTest::newRow("a range that does not start at 0")
        << Table {{"a"}, {"1"}, {"2"}, {"5"}} << "Minimum & Maximum"
        << "All values" << 10 << 20 << Table {{"a"}, {"10"}, {"12.5"}, {"20"}} << QStringList()
        << "3 changed, 0 unchanged, 0 non-numeric";
    QTest::newRow("sum to 100, by row; negatives scaled and listed")
        << input << "Sum"
        << "Each row" << 0 << 100
        << Table {{"a", "b"},
                  {"20", "80"},
                  {"100", "Error: number expected"},
                  {"100", ""},
                  {"166.666666666667", "-66.6666666666667"}}
        << wordListed + negativeListed << "6 changed, 1 unchanged, 1 non-numeric";
    QTest::newRow("maximum to 1 over all values")
        << input << "Maximum"
        << "All values" << 0 << 1
        << Table {{"a", "b"},
                  {"0.2", "0.8"},
                  {"0.4", "Error: number expected"},
                  {"0.6", ""},
                  {"1", "-0.4"}}
        << wordListed + negativeListed << "6 changed, 1 unchanged, 1 non-numeric";
    QTest::newRow("no spread: divide by 0")
        << Table {{"n"}, {"5"}, {"5"}} << "Minimum & Maximum"
        << "Each column" << 0 << 100
        << Table {{"n"}, {"Error: divide by 0"}, {"Error: divide by 0"}}
        << QStringList {"2 divide by 0 values:", "'5' divided by 0 at column 'n' row 1",
                        "'5' divided by 0 at column 'n' row 2"}
        << "2 changed, 0 unchanged, 0 non-numeric";
    QTest::newRow("values already in place")
        << Table {{"a"}, {"1"}, {"2"}, {"5"}} << "Minimum & Maximum"
        << "Each column" << 1 << 5 << Table {{"a"}, {"1"}, {"2"}, {"5"}} << QStringList()
        << "No changes";
}

void TestTransformStats::scale()
{
    QFETCH(Table, input);
    QFETCH(QString, by);
    QFETCH(QString, of);
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(Table, expected);
    QFETCH(QStringList, warnings);
    QFETCH(QString, result);

    QList<int> columns;
    for (int c = 0; c < input.first().size(); ++c)
        columns.append(c);
    TransformScale transform;
    const Run run = this->run(transform, input, columns, [&](Transform &t) {
        t.parameter("By")->setValue(by);
        t.parameter("Of")->setValue(of);
        t.parameter("From")->setValue(from);
        t.parameter("To")->setValue(to);
    });
    QCOMPARE(run.output, expected);
    QCOMPARE(run.warnings, warnings);
    QCOMPARE(run.result, result);
}

void TestTransformStats::startsWithTheNumericColumns()
{
    // Currency and empty cells still make a numeric column; one word among numbers doesn't.
    QScopedPointer<DataSource> source(makeDataSource(makeDataset(
        {{"name", "price", "count", "mixed"}, {"a", "$3", "1", "2"}, {"b", "", "4", "x"}})));
    const Dataset &dataset = *source->dataset();
    const QList<ColumnId> numeric {dataset.columnId(1), dataset.columnId(2)};
    TransformStats stats;
    TransformCorrelate correlate;
    TransformScale scale;
    for (Transform *transform :
         {static_cast<Transform *>(&stats), static_cast<Transform *>(&correlate),
          static_cast<Transform *>(&scale)}) {
        transform->createParameters({source.data()}, false);
        QCOMPARE(transform->parameter("Columns")->toColumns(), numeric);
    }
}

QTEST_GUILESS_MAIN(TestTransformStats)
#include "tst_transformstats.moc"
