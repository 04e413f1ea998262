#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformgather.h"
#include "transforms/transformspread.h"

#include <QCoreApplication>
#include <QtTest>

using Rows = QList<QStringList>;

// Gather and Spread: a wide table made long, and a long one made wide.
class TestTransformGather : public QObject
{
    Q_OBJECT

private slots:
    void gather_data();
    void gather();
    void spread_data();
    void spread();
    void spreadUndoesGather();
};

void TestTransformGather::gather_data()
{
    QTest::addColumn<Rows>("input");
    QTest::addColumn<bool>("withHeader");
    QTest::addColumn<QList<int>>("columns");
    QTest::addColumn<QStringList>("header");
    QTest::addColumn<Rows>("expected");
    QTest::addColumn<QString>("result");

    const Rows wide {{"id", "q1", "q2"}, {"a", "1", "2"}, {"b", "3", ""}};
    // An empty cell is gathered like any other: the row says the value is missing.
    QTest::newRow("two of three")
        << wide << true << QList<int> {1, 2} << QStringList {"id", "the quarter", "sales"}
        << Rows {{"a", "q1", "1"}, {"a", "q2", "2"}, {"b", "q1", "3"}, {"b", "q2", ""}}
        << "2 rows added";
    QTest::newRow("none chosen") << wide << true << QList<int> {}
                                 << QStringList {"id", "q1", "q2", "the quarter", "sales"}
                                 << Rows {{"a", "1", "2", "", ""}, {"b", "3", "", "", ""}}
                                 << "2 cols added";
    QTest::newRow("all chosen") << wide << true << QList<int> {0, 1, 2}
                                << QStringList {"the quarter", "sales"}
                                << Rows {{"id", "a"}, {"q1", "1"}, {"q2", "2"},
                                         {"id", "b"}, {"q1", "3"}, {"q2", ""}}
                                << "1 col removed, 4 rows added";
    // Without a header a column's key is its number, as the table shows it.
    QTest::newRow("no header") << Rows {{"a", "1", "2"}} << false << QList<int> {2}
                               << QStringList {"1", "2", "3", "4"} << Rows {{"a", "1", "3", "2"}}
                               << "1 col added";
    QTest::newRow("one column, no rows")
        << Rows {{"id", "q1"}} << true << QList<int> {1}
        << QStringList {"id", "the quarter", "sales"} << Rows {} << "1 col added";
}

void TestTransformGather::gather()
{
    QFETCH(Rows, input);
    QFETCH(bool, withHeader);
    QFETCH(QList<int>, columns);
    QFETCH(QStringList, header);
    QFETCH(Rows, expected);
    QFETCH(QString, result);

    QScopedPointer<DataSource> node(makeDataSource(makeDataset(input, withHeader)));
    const Dataset &data = *node->dataset();
    TransformGather gather;
    gather.createParameters({node.data()}, false);
    QList<ColumnId> ids;
    for (int c : qAsConst(columns))
        ids.append(data.columnId(c));
    gather.parameter("Columns")->setColumns(ids);
    gather.parameter("Key_Column")->setValue(QStringLiteral("the quarter"));
    gather.parameter("Value_Column")->setValue(QStringLiteral("sales"));
    const Dataset output = runTransform(gather, {node.data()});
    QCOMPARE(output.headers(), header);
    QCOMPARE(output.rows(), expected);
    QCOMPARE(gather.result(), result);
    // The columns that stay keep their identity, so options below still find them.
    if (!columns.isEmpty() && !columns.contains(0))
        QCOMPARE(output.columnId(0), data.columnId(0));
}

void TestTransformGather::spread_data()
{
    QTest::addColumn<Rows>("input");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<QStringList>("header");
    QTest::addColumn<Rows>("expected");
    QTest::addColumn<QString>("result");
    QTest::addColumn<QStringList>("warnings");

    const Rows tall {{"region", "the quarter", "sales"},
                     {"North", "q1", "10"},
                     {"North", "q2", "12"},
                     {"South", "q1", "7"}};
    QTest::newRow("keys become columns")
        << tall << 1 << 2 << 0 << 1000 << QStringList {"region", "q1", "q2"}
        << Rows {{"North", "10", "12"}, {"South", "7", "n/a"}} << "1 row removed" << QStringList();
    QTest::newRow("minimum pads at the right")
        << tall << 1 << 2 << 3 << 1000 << QStringList {"region", "q1", "q2", "4"}
        << Rows {{"North", "10", "12", ""}, {"South", "7", "n/a", ""}}
        << "1 col added, 1 row removed" << QStringList();
    QTest::newRow("maximum cuts the last")
        << tall << 1 << 2 << 0 << 1 << QStringList {"region", "q1"}
        << Rows {{"North", "10"}, {"South", "7"}} << "1 col removed, 1 row removed"
        << QStringList();
    QTest::newRow("maximum below minimum is ignored")
        << tall << 1 << 2 << 2 << 1 << QStringList {"region", "q1", "q2"}
        << Rows {{"North", "10", "12"}, {"South", "7", "n/a"}} << "1 row removed"
        << QStringList {"'1' < '2'."};
    QTest::newRow("two values at one place")
        << Rows {{"r", "k", "v"}, {"a", "x", "1"}, {"a", "x", "2"}, {"b", "x", "3"}} << 1 << 2 << 0
        << 1000 << QStringList {"r", "x"} << Rows {{"a", "Error: multiple values"}, {"b", "3"}}
        << "1 col removed, 1 row removed" << QStringList();
    // The key column is copied to serve as the value column too.
    QTest::newRow("one column for both")
        << Rows {{"id", "k", "n"}, {"1", "x", "a"}, {"2", "y", "b"}} << 1 << 1 << 0 << 1000
        << QStringList {"id", "n", "x", "y"}
        << Rows {{"1", "a", "x", "n/a"}, {"2", "b", "n/a", "y"}} << "1 col added" << QStringList();
    QTest::newRow("same size, other cells")
        << Rows {{"g", "k", "v"}, {"a", "x", "1"}, {"b", "y", "2"}} << 1 << 2 << 0 << 1000
        << QStringList {"g", "x", "y"} << Rows {{"a", "1", "n/a"}, {"b", "n/a", "2"}} << "Changed"
        << QStringList();
    QTest::newRow("two columns are left alone")
        << Rows {{"k", "v"}, {"x", "1"}} << 0 << 1 << 0 << 1000 << QStringList {"k", "v"}
        << Rows {{"x", "1"}} << "No changes" << QStringList();
}

void TestTransformGather::spread()
{
    QFETCH(Rows, input);
    QFETCH(int, key);
    QFETCH(int, value);
    QFETCH(int, minimum);
    QFETCH(int, maximum);
    QFETCH(QStringList, header);
    QFETCH(Rows, expected);
    QFETCH(QString, result);
    QFETCH(QStringList, warnings);

    QScopedPointer<DataSource> node(makeDataSource(makeDataset(input, true)));
    TransformSpread spread;
    spread.createParameters({node.data()}, false);
    spread.parameter("Key_Column")->setColumnId(node->dataset()->columnId(key));
    spread.parameter("Value_Column")->setColumnId(node->dataset()->columnId(value));
    spread.parameter("Missing_Value")->setValue(QStringLiteral("n/a"));
    spread.parameter("Min_New_Cols")->setValue(minimum);
    spread.parameter("Max_New_Cols")->setValue(maximum);
    const Dataset output = runTransform(spread, {node.data()});
    QCOMPARE(output.headers(), header);
    QCOMPARE(output.rows(), expected);
    QCOMPARE(spread.result(), result);
    QCOMPARE(spread.warnings(), warnings);
}

void TestTransformGather::spreadUndoesGather()
{
    Dataset wide;
    wide.setColumnCount(4);
    wide.setHeader({"id", "a", "b", "c"});
    for (int r = 0; r < 2500; ++r)
        wide.appendRow({QString::number(r), QString::number(r % 7), "", QString::number(r % 3)},
                       true);
    QScopedPointer<DataSource> first(makeDataSource(wide));
    TransformGather gather;
    gather.createParameters({first.data()}, false);
    const Dataset &data = *first->dataset();
    gather.parameter("Columns")->setColumns({data.columnId(1), data.columnId(2), data.columnId(3)});
    const Dataset tall = runTransform(gather, {first.data()});
    QCOMPARE(tall.rowCount(), 7500);

    QScopedPointer<DataSource> second(makeDataSource(tall));
    TransformSpread spread;
    spread.createParameters({second.data()}, false);
    spread.parameter("Key_Column")->setColumnId(second->dataset()->columnId(1));
    spread.parameter("Value_Column")->setColumnId(second->dataset()->columnId(2));
    const Dataset back = runTransform(spread, {second.data()});
    QCOMPARE(back.headers(), wide.headers());
    QCOMPARE(back.rows(), wide.rows());
}

QTEST_GUILESS_MAIN(TestTransformGather)
#include "tst_transformgather.moc"
