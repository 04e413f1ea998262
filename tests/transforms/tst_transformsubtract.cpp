#include "testdata.h"
#include "transformfixtures.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformsubtract.h"

#include <QCoreApplication>
#include <QtTest>

// Subtract: the top rows whose keys are not in the bottom dataset, or one top row taken away
// for each bottom occurrence of its key.
class TestTransformSubtract : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void subtract_data();
    void subtract();
    void subtractListsFewRemovedRows();
    void subtractUnresolvedKeyChangesNothing();
    void singleInputAsksForSecond();

private:
    DataSource *m_top = nullptr;
    DataSource *m_bottom = nullptr;
};

void TestTransformSubtract::init()
{
    m_top = makeDataSource(keyedTop());
    m_bottom = makeDataSource(keyedBottom());
}

void TestTransformSubtract::cleanup()
{
    delete m_top;
    delete m_bottom;
}

void TestTransformSubtract::subtract_data()
{
    QTest::addColumn<QString>("match");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QStringList>("kept");
    QTest::addColumn<QString>("result");
    QTest::addColumn<QStringList>("information");

    QTest::newRow("all matches") << "All matches" << true << QStringList {"4", "5"}
                                 << "5 rows removed"
                                 << QStringList {"Subtracted row 1 with key 'a'",
                                                 "Subtracted row 2 with key 'b'",
                                                 "Subtracted row 3 with key 'a'",
                                                 "Subtracted row 6 with key ''",
                                                 "Subtracted row 7 with key 'a'"};
    // Key a is twice below, so it takes away two rows above: the first two, or the last two.
    QTest::newRow("first match") << "First match" << true << QStringList {"4", "5", "7"}
                                 << "4 rows removed"
                                 << QStringList {"Subtracted row 1 with key 'a'",
                                                 "Subtracted row 2 with key 'b'",
                                                 "Subtracted row 3 with key 'a'",
                                                 "Subtracted row 6 with key ''"};
    QTest::newRow("last match") << "Last match" << true << QStringList {"1", "4", "5"}
                                << "4 rows removed"
                                << QStringList {"Subtracted row 2 with key 'b'",
                                                "Subtracted row 3 with key 'a'",
                                                "Subtracted row 6 with key ''",
                                                "Subtracted row 7 with key 'a'"};
    // Case folding lets B take b's one occurrence when it comes first.
    QTest::newRow("last match, case insensitive")
        << "Last match" << false << QStringList {"1", "2", "4"} << "4 rows removed"
        << QStringList {"Subtracted row 3 with key 'a'", "Subtracted row 5 with key 'B'",
                        "Subtracted row 6 with key ''", "Subtracted row 7 with key 'a'"};
}

void TestTransformSubtract::subtract()
{
    QFETCH(QString, match);
    QFETCH(bool, caseSensitive);
    QFETCH(QStringList, kept);
    QFETCH(QString, result);
    QFETCH(QStringList, information);

    TransformSubtract subtract;
    subtract.createParameters({m_top, m_bottom}, false);
    subtract.parameter("Column_1")->setColumnId(m_top->dataset()->columnId(0));
    subtract.parameter("Match")->setValue(match);
    subtract.parameter("Case_Sensitive")->setValue(caseSensitive);
    const Dataset output = runTransform(subtract, {m_top, m_bottom});
    QCOMPARE(output.columnValues(1), kept);
    QCOMPARE(output.columnIds(), m_top->dataset()->columnIds());
    QCOMPARE(subtract.result(), result);
    QCOMPARE(subtract.information(), information);
}

void TestTransformSubtract::subtractListsFewRemovedRows()
{
    QList<QStringList> rows {{"k"}};
    for (int r = 0; r < 12; ++r)
        rows << QStringList {"x"};
    DataSource *top = makeDataSource(makeDataset(rows));
    DataSource *bottom = makeDataSource(makeDataset({{"k"}, {"x"}}));
    TransformSubtract subtract;
    subtract.createParameters({top, bottom}, false);
    const Dataset output = runTransform(subtract, {top, bottom});
    QCOMPARE(output.rowCount(), 0);
    QCOMPARE(output.columnCount(), 1);
    QCOMPARE(subtract.result(), QString("12 rows removed"));
    QCOMPARE(subtract.information().size(), 11);
    QCOMPARE(subtract.information().at(9), QString("Subtracted row 10 with key 'x'"));
    QCOMPARE(subtract.information().last(), QString("+ 2 others"));

    // One occurrence below takes one row, and the rest need no listing.
    subtract.parameter("Match")->setValue(QStringLiteral("First match"));
    runTransform(subtract, {top, bottom});
    QCOMPARE(subtract.result(), QString("1 row removed"));
    QCOMPARE(subtract.information(), QStringList("Subtracted row 1 with key 'x'"));
    delete top;
    delete bottom;
}

void TestTransformSubtract::subtractUnresolvedKeyChangesNothing()
{
    TransformSubtract subtract;
    subtract.createParameters({m_top, m_bottom}, false);
    const Dataset output = runTransform(subtract, {m_top, m_bottom});
    QCOMPARE(output.rows(), m_top->dataset()->rows());
    QCOMPARE(subtract.result(), QString("No changes"));

    // Keys that never match change nothing either, and the rows stay shared.
    subtract.parameter("Column_1")->setColumnId(m_top->dataset()->columnId(1));
    const Dataset unchanged = runTransform(subtract, {m_top, m_bottom});
    QCOMPARE(subtract.result(), QString("No changes"));
    QVERIFY(unchanged.row(0).isSharedWith(m_top->dataset()->row(0)));
}

void TestTransformSubtract::singleInputAsksForSecond()
{
    TransformSubtract subtract;
    subtract.createParameters({m_top}, false);
    QCOMPARE(runTransform(subtract, {m_top}).rowCount(), 7);
    QCOMPARE(subtract.result(), QString("Connect a second dataset"));
}

QTEST_GUILESS_MAIN(TestTransformSubtract)
#include "tst_transformsubtract.moc"
