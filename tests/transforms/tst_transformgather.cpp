#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformgather.h"

#include <QCoreApplication>
#include <QtTest>

using Rows = QList<QStringList>;

// Gather: chosen columns become key and value rows; the others repeat on each of them.
class TestTransformGather : public QObject
{
    Q_OBJECT

private slots:
    void gather_data();
    void gather();
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
        << wide << true << QList<int> {1, 2} << QStringList {"id", "quarter", "sales"}
        << Rows {{"a", "q1", "1"}, {"a", "q2", "2"}, {"b", "q1", "3"}, {"b", "q2", ""}}
        << "2 rows added";
    QTest::newRow("none chosen") << wide << true << QList<int> {}
                                 << QStringList {"id", "q1", "q2", "quarter", "sales"}
                                 << Rows {{"a", "1", "2", "", ""}, {"b", "3", "", "", ""}}
                                 << "2 cols added";
    QTest::newRow("all chosen") << wide << true << QList<int> {0, 1, 2}
                                << QStringList {"quarter", "sales"}
                                << Rows {{"id", "a"}, {"q1", "1"}, {"q2", "2"},
                                         {"id", "b"}, {"q1", "3"}, {"q2", ""}}
                                << "1 col removed, 4 rows added";
    // Without a header a column's key is its number, as the table shows it.
    QTest::newRow("no header") << Rows {{"a", "1", "2"}} << false << QList<int> {2}
                               << QStringList {"1", "2", "3", "4"} << Rows {{"a", "1", "3", "2"}}
                               << "1 col added";
    QTest::newRow("one column, no rows")
        << Rows {{"id", "q1"}} << true << QList<int> {1} << QStringList {"id", "quarter", "sales"}
        << Rows {} << "1 col added";
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
    gather.parameter("Key_Column")->setValue(QStringLiteral("quarter"));
    gather.parameter("Value_Column")->setValue(QStringLiteral("sales"));
    const Dataset output = runTransform(gather, {node.data()});
    QCOMPARE(output.headers(), header);
    QCOMPARE(output.rows(), expected);
    QCOMPARE(gather.result(), result);
    // The columns that stay keep their identity, so options below still find them.
    if (!columns.isEmpty() && !columns.contains(0))
        QCOMPARE(output.columnId(0), data.columnId(0));
}

QTEST_GUILESS_MAIN(TestTransformGather)
#include "tst_transformgather.moc"
