#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformpivot.h"

#include <QCoreApplication>
#include <QtTest>

using Rows = QList<QStringList>;

// Pivot: the layout of the cross table (sorted keys, "(Empty)", totals cut by the options),
// what each kind of summary makes of a cell's values, the messages about texts that are no
// number, and the rows a cell drills down to.
class TestTransformPivot : public QObject
{
    Q_OBJECT

private slots:
    void tables_data();
    void tables();
    void summaries_data();
    void summaries();
    void drilldownRecordsEveryCell();
    void nothingWithoutValuesOrKeys();
    void totalOptionsOfferedWhenMeaningful_data();
    void totalOptionsOfferedWhenMeaningful();

private:
    struct Setup
    {
        QList<int> pivotColumns; // the Rows option
        QList<int> pivotRows; // the Columns option
        int values = 2;
        QString kind = "Sum";
        QString nonCalc = "Zero";
        bool totals = true;
        QString totalType = "Rows and columns";
        QString delimiter = "/";
        bool drilldown = false;
    };
    struct Run
    {
        Rows table; // header first
        QStringList warnings;
        QString result;
        Dataset output;
    };
    static Run pivot(const Rows &input, const Setup &setup);
};

Q_DECLARE_METATYPE(QList<int>)

TestTransformPivot::Run TestTransformPivot::pivot(const Rows &input, const Setup &setup)
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(input)));
    const Dataset &dataset = *node->dataset();
    TransformPivot transform;
    transform.createParameters({node.data()}, false);
    const auto sortColumns = [&dataset](const QList<int> &columns) {
        QList<SortColumn> list;
        for (int c : columns)
            list.append(SortColumn {dataset.columnId(c), true});
        return list;
    };
    transform.parameter("Rows")->setSortColumns(sortColumns(setup.pivotColumns));
    transform.parameter("Columns")->setSortColumns(sortColumns(setup.pivotRows));
    transform.parameter("Values")->setColumnId(setup.values >= 0 ? dataset.columnId(setup.values)
                                                                 : ColumnId());
    transform.parameter("Summarize_As")->setValue(setup.kind);
    transform.parameter("Non_Calc")->setValue(setup.nonCalc);
    transform.parameter("Totals")->setValue(setup.totals);
    transform.parameter("Total_Type")->setValue(setup.totalType);
    transform.parameter("Delimiter")->setValue(setup.delimiter);
    transform.parameter("Drilldown")->setValue(setup.drilldown);
    Run run;
    run.output = runTransform(transform, {node.data()});
    if (run.output.hasColumns())
        run.table = Rows {run.output.headers()} + run.output.rows();
    run.warnings = transform.warnings();
    run.result = transform.result();
    return run;
}

// Regions (one empty) by products; a value of text, and an empty value that makes nothing.
static Rows sales()
{
    return {{"region", "product", "amount"},
            {"North", "A", "10"},
            {"South", "A", "5"},
            {"North", "B", "x"},
            {"", "B", "7"},
            {"North", "A", "2"},
            {"South", "C", ""}};
}

void TestTransformPivot::tables_data()
{
    QTest::addColumn<Rows>("input");
    QTest::addColumn<QList<int>>("pivotColumns");
    QTest::addColumn<QList<int>>("pivotRows");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("nonCalc");
    QTest::addColumn<bool>("totals");
    QTest::addColumn<QString>("totalType");
    QTest::addColumn<Rows>("expected");

    QTest::newRow("both keys, both totals, missing cells empty")
        << sales() << QList<int> {1} << QList<int> {0} << "Sum"
        << "Empty" << true << "Rows and columns"
        << Rows {{"region", "A", "B", "Grand Sum"},
                 {"(Empty)", "", "7", "7"},
                 {"North", "12", "0", "12"},
                 {"South", "5", "", "5"},
                 {"Grand Sum", "17", "7", "24"}};
    QTest::newRow("total by rows: the column of row totals stays")
        << sales() << QList<int> {1} << QList<int> {0} << "Sum"
        << "Zero" << true << "Rows"
        << Rows {{"region", "A", "B", "Grand Sum"},
                 {"(Empty)", "0", "7", "7"},
                 {"North", "12", "0", "12"},
                 {"South", "5", "0", "5"}};
    QTest::newRow("total by columns: the row of column totals stays")
        << sales() << QList<int> {1} << QList<int> {0} << "Count"
        << "Zero" << true << "Columns"
        << Rows {{"region", "A", "B"},
                 {"(Empty)", "0", "1"},
                 {"North", "2", "1"},
                 {"South", "1", "0"},
                 {"Grand Count", "3", "2"}};
    QTest::newRow("no totals") << sales() << QList<int> {1} << QList<int> {0} << "Maximum"
                               << "Empty" << false << "Rows and columns"
                               << Rows {{"region", "A", "B"},
                                        {"(Empty)", "", "7"},
                                        {"North", "10", "0"},
                                        {"South", "5", ""}};
    QTest::newRow("no pivot columns: the bottom row stays, the right column goes")
        << sales() << QList<int> {} << QList<int> {0} << "Sum"
        << "Zero" << true << "Rows and columns"
        << Rows {{"region", "Sum"},
                 {"(Empty)", "7"},
                 {"North", "12"},
                 {"South", "5"},
                 {"Grand Sum", "24"}};
    QTest::newRow("keys of two columns joined, each empty one named")
        << sales() << QList<int> {} << QList<int> {1, 0} << "Count"
        << "Zero" << false << "Rows"
        << Rows {{"product/region", "Count"},
                 {"A/North", "2"},
                 {"A/South", "1"},
                 {"B/(Empty)", "1"},
                 {"B/North", "1"}};
    QTest::newRow("keys sort as plain text")
        << Rows {{"k", "v"}, {"2", "1"}, {"10", "1"}, {"9", "1"}, {"10", "1"}} << QList<int> {0}
        << QList<int> {} << "Count"
        << "Zero" << false << "Rows and columns"
        << Rows {{"k", "10", "2", "9"}, {"Count", "2", "1", "1"}};
}

void TestTransformPivot::tables()
{
    QFETCH(Rows, input);
    QFETCH(QList<int>, pivotColumns);
    QFETCH(QList<int>, pivotRows);
    QFETCH(QString, kind);
    QFETCH(QString, nonCalc);
    QFETCH(bool, totals);
    QFETCH(QString, totalType);
    QFETCH(Rows, expected);

    Setup setup;
    setup.pivotColumns = pivotColumns;
    setup.pivotRows = pivotRows;
    setup.values = input.first().size() - 1;
    setup.kind = kind;
    setup.nonCalc = nonCalc;
    setup.totals = totals;
    setup.totalType = totalType;
    const Run run = pivot(input, setup);
    QCOMPARE(run.table, expected);
    QCOMPARE(run.result, QString("Pivot table created"));
    // Either side may be left empty on purpose.
    QVERIFY2(run.warnings.filter("not set").isEmpty(), qPrintable(run.warnings.join('\n')));
}

void TestTransformPivot::summaries_data()
{
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("cell");
    QTest::addColumn<QStringList>("warnings");

    const auto notNumber = [](const QString &text, int row) {
        return QString("'%1' is not a numerical value in column 'v' at row %2.").arg(text).arg(row);
    };
    QTest::newRow("sum of only a text is 0, with one message")
        << QStringList {"x"} << "Sum"
        << "0" << QStringList {notNumber("x", 1)};
    QTest::newRow("sum leaves texts out, reads currency")
        << QStringList {"1.5", "x", "$2"} << "Sum"
        << "3.5" << QStringList {notNumber("x", 2)};
    QTest::newRow("average of no numbers is 0")
        << QStringList {"n/a", "-"} << "Average"
        << "0" << QStringList {notNumber("n/a", 1), notNumber("-", 2)};
    QTest::newRow("standard deviation of one value is 0")
        << QStringList {"5"} << "Standard deviation"
        << "0" << QStringList {};
    QTest::newRow("standard deviation is the sample form")
        << QStringList {"2", "4", "4", "4", "5", "5", "7", "9"} << "Standard deviation"
        << "2.1380899352994" << QStringList {};
    QTest::newRow("median of an even count") << QStringList {"3", "1", "10", "2"} << "Median"
                                             << "2.5" << QStringList {};
    QTest::newRow("every mode, ascending") << QStringList {"3", "1", "3", "2", "2"} << "Mode"
                                           << "2,3" << QStringList {};
    QTest::newRow("minimum") << QStringList {"4", "-1.25", "7"} << "Minimum"
                             << "-1.25" << QStringList {};
    QTest::newRow("maximum") << QStringList {"4", "-1.25", "7"} << "Maximum"
                             << "7" << QStringList {};
    QTest::newRow("count takes texts without a word") << QStringList {"a", "a", "x", "1"} << "Count"
                                                      << "4" << QStringList {};
    QTest::newRow("count distinct tells case apart")
        << QStringList {"a", "a", "A", "1"} << "Count distinct"
        << "3" << QStringList {};
    QTest::newRow("five texts listed, then the others counted")
        << QStringList {"a", "b", "c", "d", "e", "f", "g"} << "Sum"
        << "0" << QStringList {notNumber("a", 1), notNumber("b", 2), notNumber("c", 3),
                               notNumber("d", 4), notNumber("e", 5), "+ 2 others"};
}

void TestTransformPivot::summaries()
{
    QFETCH(QStringList, values);
    QFETCH(QString, kind);
    QFETCH(QString, cell);
    QFETCH(QStringList, warnings);

    Rows input {{"g", "v"}};
    for (const QString &value : values)
        input.append({"all", value});
    Setup setup;
    setup.pivotRows = {0};
    setup.values = 1;
    setup.kind = kind;
    setup.totals = false;
    const Run run = pivot(input, setup);
    QCOMPARE(run.table, (Rows {{"g", kind}, {"all", cell}}));
    QCOMPARE(run.warnings, warnings);
}

void TestTransformPivot::drilldownRecordsEveryCell()
{
    Setup setup;
    setup.pivotColumns = {1};
    setup.pivotRows = {0};
    setup.drilldown = true;
    const Run run = pivot(sales(), setup);
    const Dataset &out = run.output;
    // Rows: (Empty), North, South, Grand Sum; columns: region, A, B, Grand Sum.
    QCOMPARE(out.sourceRowsOf(1, 1), (QList<int> {0, 4}));
    QCOMPARE(out.sourceRowsOf(1, 2), (QList<int> {2}));
    QCOMPARE(out.sourceRowsOf(1, 0), (QList<int> {0, 2, 4}));
    QCOMPARE(out.sourceRowsOf(1, 3), (QList<int> {0, 2, 4}));
    QCOMPARE(out.sourceRowsOf(0, 1), QList<int>());
    QCOMPARE(out.sourceRowsOf(3, 1), (QList<int> {0, 1, 4}));
    // The empty value of row 6 is in no cell.
    QCOMPARE(out.sourceRowsOf(3, 3), (QList<int> {0, 1, 2, 3, 4}));

    setup.drilldown = false;
    QVERIFY(pivot(sales(), setup).output.sourceRows().isEmpty());
}

void TestTransformPivot::nothingWithoutValuesOrKeys()
{
    Setup noValues;
    noValues.pivotRows = {0};
    noValues.values = -1;
    const Run withoutValues = pivot(sales(), noValues);
    QVERIFY(!withoutValues.output.hasColumns());
    QVERIFY(withoutValues.result.isEmpty());

    Setup noKeys;
    const Run withoutKeys = pivot(sales(), noKeys);
    QVERIFY(!withoutKeys.output.hasColumns());
    QCOMPARE(withoutKeys.warnings.filter("not set"),
             QStringList {"1 option not set ('Pivot columns' or 'Pivot rows')"});
}

void TestTransformPivot::totalOptionsOfferedWhenMeaningful_data()
{
    QTest::addColumn<QList<int>>("pivotColumns");
    QTest::addColumn<QList<int>>("pivotRows");
    QTest::addColumn<bool>("totals");
    QTest::addColumn<bool>("totalType");
    QTest::addColumn<bool>("delimiter");

    QTest::newRow("both sides, one column each")
        << QList<int> {1} << QList<int> {0} << true << true << false;
    QTest::newRow("totals off") << QList<int> {1} << QList<int> {0, 2} << false << false << false;
    QTest::newRow("one side of two columns")
        << QList<int> {} << QList<int> {0, 1} << true << false << true;
    QTest::newRow("one side of one column")
        << QList<int> {1} << QList<int> {} << true << false << false;
}

void TestTransformPivot::totalOptionsOfferedWhenMeaningful()
{
    QFETCH(QList<int>, pivotColumns);
    QFETCH(QList<int>, pivotRows);
    QFETCH(bool, totals);
    QFETCH(bool, totalType);
    QFETCH(bool, delimiter);

    QScopedPointer<DataSource> node(makeDataSource(makeDataset(sales())));
    TransformPivot transform;
    transform.createParameters({node.data()}, false);
    const auto sortColumns = [&node](const QList<int> &columns) {
        QList<SortColumn> list;
        for (int c : columns)
            list.append(SortColumn {node->dataset()->columnId(c), true});
        return list;
    };
    transform.parameter("Rows")->setSortColumns(sortColumns(pivotColumns));
    transform.parameter("Columns")->setSortColumns(sortColumns(pivotRows));
    transform.parameter("Totals")->setValue(totals);
    QCOMPARE(transform.isParameterEnabled("Total_Type"), totalType);
    QCOMPARE(transform.isParameterEnabled("Delimiter"), delimiter);
    QVERIFY(transform.isParameterEnabled("Summarize_As"));
}

QTEST_GUILESS_MAIN(TestTransformPivot)
#include "tst_transformpivot.moc"
