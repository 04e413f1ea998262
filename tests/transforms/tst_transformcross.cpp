#include "testdata.h"
#include "transforms/transformcross.h"

#include <QCoreApplication>
#include <QtTest>

// Cross: every combination of the rows of its inputs, the last input varying fastest.
class TestTransformCross : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void singleInputIsCopied();
    void cross();
    void crossLastInputVariesFastest();
    void crossWithEmptyInput();
    void crossOverflow_data();
    void crossOverflow();

private:
    DataSource *m_people = nullptr; // id, name: two rows
};

void TestTransformCross::init()
{
    m_people = makeDataSource(makeDataset({{"id", "name"}, {"1", "Ann"}, {"2", "Bob"}}));
}

void TestTransformCross::cleanup()
{
    delete m_people;
}

void TestTransformCross::singleInputIsCopied()
{
    TransformCross cross;
    QCOMPARE(runTransform(cross, {m_people}).rows(), m_people->dataset()->rows());
    QCOMPARE(cross.result(), QString("No changes"));
}

void TestTransformCross::cross()
{
    DataSource *letters = makeDataSource(makeDataset({{"b", "c"}, {"x", "y"}, {"p", "q"}, {"r", "s"}}));
    TransformCross cross;
    const Dataset output = runTransform(cross, {m_people, letters});
    QCOMPARE(output.header(), QStringList({"id", "name", "b", "c"}));
    QCOMPARE(output.rows(),
             (QList<QStringList> {{"1", "Ann", "x", "y"},
                                  {"1", "Ann", "p", "q"},
                                  {"1", "Ann", "r", "s"},
                                  {"2", "Bob", "x", "y"},
                                  {"2", "Bob", "p", "q"},
                                  {"2", "Bob", "r", "s"}}));
    QCOMPARE(output.columnIds(),
             m_people->dataset()->columnIds() + letters->dataset()->columnIds());
    QCOMPARE(cross.result(), QString("Crossed 2 inputs"));
    delete letters;
}

void TestTransformCross::crossLastInputVariesFastest()
{
    DataSource *bits = makeDataSource(makeDataset({{"0"}, {"1"}}, false));
    TransformCross cross;
    const Dataset output = runTransform(cross, {m_people, bits, bits});
    QVERIFY(output.hasHeader());
    QCOMPARE(output.columnValues(0), QStringList({"1", "1", "1", "1", "2", "2", "2", "2"}));
    QCOMPARE(output.columnValues(2), QStringList({"0", "0", "1", "1", "0", "0", "1", "1"}));
    QCOMPARE(output.columnValues(3), QStringList({"0", "1", "0", "1", "0", "1", "0", "1"}));
    QCOMPARE(output.header(), QStringList({"id", "name", "1", "1"}));
    QCOMPARE(cross.result(), QString("Crossed 3 inputs"));

    // Without any header the output has none.
    const Dataset plain = runTransform(cross, {bits, bits});
    QVERIFY(!plain.hasHeader());
    QCOMPARE(plain.rowCount(), 4);
    delete bits;
}

void TestTransformCross::crossWithEmptyInput()
{
    DataSource *empty = makeDataSource(makeDataset({{"e"}}));
    TransformCross cross;
    const Dataset output = runTransform(cross, {m_people, empty});
    QCOMPARE(output.rowCount(), 0);
    QCOMPARE(output.header(), QStringList({"id", "name", "e"}));
    QCOMPARE(cross.result(), QString("Crossed 2 inputs"));
    delete empty;
}

void TestTransformCross::crossOverflow_data()
{
    QTest::addColumn<int>("rows1");
    QTest::addColumn<int>("rows2");
    QTest::addColumn<bool>("tooMany");

    // 2^31 turns negative; 2^32 wraps to exactly zero, which the sign test cannot see.
    QTest::newRow("2^31") << 65536 << 32768 << true;
    QTest::newRow("2^32") << 65536 << 65536 << false;
}

void TestTransformCross::crossOverflow()
{
    QFETCH(int, rows1);
    QFETCH(int, rows2);
    QFETCH(bool, tooMany);

    Dataset first;
    first.setSize(rows1, 1);
    Dataset second;
    second.setSize(rows2, 1);
    DataSource *a = makeDataSource(first);
    DataSource *b = makeDataSource(second);
    TransformCross cross;
    const Dataset output = runTransform(cross, {a, b});
    QCOMPARE(output.rowCount(), 0);
    QCOMPARE(cross.result(), tooMany ? QString("Too many rows") : QString("Crossed 2 inputs"));
    QCOMPARE(cross.warnings(), tooMany ? QStringList("Too many rows") : QStringList());
    delete a;
    delete b;
}

QTEST_GUILESS_MAIN(TestTransformCross)
#include "tst_transformcross.moc"
