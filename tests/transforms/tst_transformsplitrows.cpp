#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformsplitrows.h"

#include <QCoreApplication>
#include <QtTest>

using Rows = QList<QStringList>;

namespace {

const Rows quarters {{"id", "Q1 Sales", "Q1 Cost", "Q2 Sales", "Q2 Cost", "note"},
                     {"1", "10", "4", "20", "8", "n1"},
                     {"2", "30", "", "40", "9", "n2"}};

} // namespace

// Split Rows: the three ways of finding the repeated columns, and the rows they make.
class TestTransformSplitRows : public QObject
{
    Q_OBJECT

private slots:
    void splitRows_data();
    void splitRows();
    void keptColumnsKeepTheirIds();
    void unsetEveryWarns();
};

void TestTransformSplitRows::splitRows_data()
{
    QTest::addColumn<Rows>("input");
    QTest::addColumn<int>("way"); // 0 by name, 1 automatic, 2 every
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("every");
    QTest::addColumn<int>("times");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QStringList>("header");
    QTest::addColumn<Rows>("expected");
    QTest::addColumn<QString>("result");

    QTest::newRow("automatic, number before the name")
        << quarters << 1 << 0 << 0 << 0 << "Quarter" << false
        << QStringList {"id", "Quarter", "Q Sales", "Q Cost", "note"}
        << Rows {{"1", "1", "10", "4", "n1"},
                 {"1", "2", "20", "8", "n1"},
                 {"2", "1", "30", "", "n2"},
                 {"2", "2", "40", "9", "n2"}}
        << "2 rows split into 4";
    QTest::newRow("automatic, number after the name with any separator")
        << Rows {{"name", "Sales 1", "Sales2", "sales_3"}, {"a", "1", "2", "3"}} << 1 << 0 << 0 << 0
        << "" << false << QStringList {"name", "Sales"} << Rows {{"a", "1"}, {"a", "2"}, {"a", "3"}}
        << "1 row split into 3";
    QTest::newRow("automatic, case sensitive")
        << Rows {{"name", "Sales 1", "sales 2"}, {"a", "1", "2"}} << 1 << 0 << 0 << 0 << "" << true
        << QStringList {"name", "Sales 1", "sales 2"} << Rows {{"a", "1", "2"}} << "No changes";
    QTest::newRow("automatic, a lone numbered column is kept")
        << Rows {{"id", "Address 1", "Phone 1", "Address 2"}, {"x", "a1", "p", "a2"}} << 1 << 0 << 0
        << 0 << "n" << false << QStringList {"id", "n", "Address", "Phone 1"}
        << Rows {{"x", "1", "a1", "p"}, {"x", "2", "a2", "p"}} << "1 row split into 2";
    QTest::newRow("automatic, the varying one of two numbers")
        << Rows {{"2020 Q1", "2020 Q2", "k"}, {"a", "b", "c"}} << 1 << 0 << 0 << 0 << "q" << false
        << QStringList {"q", "2020 Q", "k"} << Rows {{"1", "a", "c"}, {"2", "b", "c"}}
        << "1 row split into 2";
    QTest::newRow("automatic, a group missing a column, leading zeros")
        << Rows {{"A01", "B01", "A02", "B2", "A3"}, {"a1", "b1", "a2", "b2", "a3"}} << 1 << 0 << 0
        << 0 << "n" << false << QStringList {"n", "A", "B"}
        << Rows {{"1", "a1", "b1"}, {"2", "a2", "b2"}, {"3", "a3", ""}} << "1 row split into 3";
    QTest::newRow("automatic, nothing repeats")
        << Rows {{"a", "b"}, {"1", "2"}} << 1 << 0 << 0 << 0 << "" << false
        << QStringList {"a", "b"} << Rows {{"1", "2"}} << "No changes";
    QTest::newRow("by name") << Rows {{"id", "phone", "email", "Phone", "email", " phone "},
                                      {"1", "p1", "e1", "p2", "e2", "p3"}}
                             << 0 << 0 << 0 << 0 << "#" << false
                             << QStringList {"id", "#", "phone", "email"}
                             << Rows {{"1", "1", "p1", "e1"},
                                      {"1", "2", "p2", "e2"},
                                      {"1", "3", "p3", ""}}
                             << "1 row split into 3";
    QTest::newRow("by name, case sensitive")
        << Rows {{"id", "phone", "Phone", "phone"}, {"1", "p1", "p2", "p3"}} << 0 << 0 << 0 << 0
        << "" << true << QStringList {"id", "phone", "Phone"}
        << Rows {{"1", "p1", "p2"}, {"1", "p3", "p2"}} << "1 row split into 2";
    QTest::newRow("every 2 columns, 2 times") << quarters << 2 << 1 << 2 << 2 << "" << false
                                              << QStringList {"id", "Q1 Sales", "Q1 Cost", "note"}
                                              << Rows {{"1", "10", "4", "n1"},
                                                       {"1", "20", "8", "n1"},
                                                       {"2", "30", "", "n2"},
                                                       {"2", "40", "9", "n2"}}
                                              << "2 rows split into 4";
    QTest::newRow("every, times beyond the last column")
        << quarters << 2 << 1 << 2 << 9 << "g" << false
        << QStringList {"id", "g", "Q1 Sales", "Q1 Cost"}
        << Rows {{"1", "1", "10", "4"}, {"1", "2", "20", "8"}, {"1", "3", "n1", ""},
                 {"2", "1", "30", ""},  {"2", "2", "40", "9"}, {"2", "3", "n2", ""}}
        << "2 rows split into 6";
    QTest::newRow("every, once") << quarters << 2 << 1 << 2 << 1 << "" << false << quarters.first()
                                 << quarters.mid(1) << "No changes";
}

void TestTransformSplitRows::splitRows()
{
    QFETCH(Rows, input);
    QFETCH(int, way);
    QFETCH(int, start);
    QFETCH(int, every);
    QFETCH(int, times);
    QFETCH(QString, text);
    QFETCH(bool, caseSensitive);
    QFETCH(QStringList, header);
    QFETCH(Rows, expected);
    QFETCH(QString, result);

    QScopedPointer<DataSource> node(makeDataSource(makeDataset(input)));
    TransformSplitRows split;
    split.createParameters({node.data()}, false);
    SplitRowsTerms terms;
    terms.splitByName = way == 0;
    terms.automatic = way == 1;
    terms.every = every;
    terms.nameColumn = node->dataset()->columnId(start);
    terms.times = times;
    terms.text = text;
    split.parameter("Split_Rows")->setSplitRowsTerms(terms);
    split.parameter("Case_Sensitive")->setValue(caseSensitive);
    const Dataset output = runTransform(split, {node.data()});
    QCOMPARE(output.headers(), header);
    QCOMPARE(output.rows(), expected);
    QCOMPARE(split.result(), result);
    QVERIFY(split.warnings().isEmpty());
}

void TestTransformSplitRows::keptColumnsKeepTheirIds()
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(quarters)));
    const Dataset &input = *node->dataset();
    TransformSplitRows split;
    split.createParameters({node.data()}, false);
    QVERIFY(split.parameter("Split_Rows")->toSplitRowsTerms().automatic);
    const Dataset output = runTransform(split, {node.data()});
    QCOMPARE(output.columnCount(), 4);
    QCOMPARE(output.columnId(0), input.columnId(0));
    QVERIFY(output.columnId(1).isNull());
    QVERIFY(output.columnId(2).isNull());
    QCOMPARE(output.columnId(3), input.columnId(5));
}

void TestTransformSplitRows::unsetEveryWarns()
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(quarters)));
    TransformSplitRows split;
    split.createParameters({node.data()}, false);
    split.parameter("Split_Rows")->setSplitRowsTerms(SplitRowsTerms());
    const Dataset output = runTransform(split, {node.data()});
    QVERIFY(output.equals(*node->dataset()));
    QCOMPARE(split.result(), QString("No changes"));
    QCOMPARE(split.warnings(), QStringList({"1 option not set ('Split')"}));
}

QTEST_GUILESS_MAIN(TestTransformSplitRows)
#include "tst_transformsplitrows.moc"
