#include "testdata.h"
#include "transformfixtures.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformintersect.h"

#include <QCoreApplication>
#include <QtTest>

// Intersect: the top rows whose keys are also in the bottom dataset.
class TestTransformIntersect : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void intersect_data();
    void intersect();
    void intersectUnresolvedKeyGivesNoRows();
    void singleInputAsksForSecond();

private:
    DataSource *m_top = nullptr;
    DataSource *m_bottom = nullptr;
};

void TestTransformIntersect::init()
{
    m_top = makeDataSource(keyedTop());
    m_bottom = makeDataSource(keyedBottom());
}

void TestTransformIntersect::cleanup()
{
    delete m_top;
    delete m_bottom;
}

void TestTransformIntersect::intersect_data()
{
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QString>("result");
    QTest::addColumn<QStringList>("information");

    QTest::newRow("case sensitive")
        << true << QStringList {"a", "b", "a", "", "a"} << QStringList {"1", "2", "3", "6", "7"}
        << "5 rows with keys in both, 2 top only, 1 bottom only"
        << QStringList {"9 rows have keys in both datasets",
                        "3 unique keys appear in both datasets"};
    QTest::newRow("case insensitive") << false << QStringList {"a", "b", "a", "B", "", "a"}
                                      << QStringList {"1", "2", "3", "5", "6", "7"}
                                      << "6 rows with keys in both, 1 top only, 1 bottom only"
                                      << QStringList {"10 rows have keys in both datasets",
                                                      "3 unique keys appear in both datasets"};
}

void TestTransformIntersect::intersect()
{
    QFETCH(bool, caseSensitive);
    QFETCH(QStringList, keys);
    QFETCH(QStringList, values);
    QFETCH(QString, result);
    QFETCH(QStringList, information);

    TransformIntersect intersect;
    intersect.createParameters({m_top, m_bottom}, false);
    intersect.parameter("Column_1")->setColumnId(m_top->dataset()->columnId(0));
    QCOMPARE(intersect.parameter("Column_2")->toColumnIndex(), 0); // the only column
    intersect.parameter("Case_Sensitive")->setValue(caseSensitive);
    const Dataset output = runTransform(intersect, {m_top, m_bottom});
    QCOMPARE(output.columnValues(1), values);
    QCOMPARE(output.columnValues(0), keys);
    QCOMPARE(output.header(), m_top->dataset()->header());
    QCOMPARE(output.columnIds(), m_top->dataset()->columnIds());
    QCOMPARE(intersect.result(), result);
    QCOMPARE(intersect.information(), information);
    QVERIFY(intersect.warnings().isEmpty());
    // Kept rows are the top's rows, not copies of them.
    QVERIFY(output.row(0).isSharedWith(m_top->dataset()->row(0)));
}

void TestTransformIntersect::intersectUnresolvedKeyGivesNoRows()
{
    TransformIntersect intersect;
    intersect.createParameters({m_top, m_bottom}, false);
    const Dataset output = runTransform(intersect, {m_top, m_bottom});
    QCOMPARE(output.rowCount(), 0);
    QCOMPARE(output.header(), m_top->dataset()->header());
    QCOMPARE(intersect.result(), QString("0 intersecting rows"));
    QCOMPARE(intersect.warnings(), QStringList("1 option not set ('Top key column')"));
}

void TestTransformIntersect::singleInputAsksForSecond()
{
    TransformIntersect intersect;
    intersect.createParameters({m_top}, false);
    QCOMPARE(runTransform(intersect, {m_top}).rowCount(), 7);
    QCOMPARE(intersect.result(), QString("Connect a second dataset"));
}

QTEST_GUILESS_MAIN(TestTransformIntersect)
#include "tst_transformintersect.moc"
