#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformsample.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>

// Sample: n rows from the start, the end, evenly, or at random by a seed.
class TestTransformSample : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void sample_data();
    void sample();
    void sampleAtOrAboveRowCountIsUnchanged();
    void sampleDisabled();
    void randomSamples_data();
    void randomSamples();
    void sampleDependsOnRowCount();
    void qualityNeverDrawsTheLastRemainingRow();
    void sampledRowsStayShared();
    void sampleOptionStates();

private:
    DataSource *m_input = nullptr;
};

namespace {

Dataset numberedRows(int count)
{
    QList<QStringList> rows {{"n"}};
    for (int i = 1; i <= count; ++i)
        rows.append({QString::number(i)});
    return makeDataset(rows);
}

// The drawing of "Randomly (for quality)" as plainly as it can be written: a list of row
// numbers from which the drawn entry is removed each time.
QList<int> drawForQuality(int rowCount, int n, quint32 seed)
{
    QList<int> list;
    for (int r = 0; r < rowCount; ++r)
        list.append(r);
    QRandomGenerator generator(seed);
    QList<int> drawn;
    for (int i = 0; i < n; ++i) {
        const quint64 u = generator.generate();
        drawn.append(list.takeAt(int((quint64(list.size() - 1) * u) >> 32)));
    }
    std::sort(drawn.begin(), drawn.end());
    return drawn;
}

QList<int> drawForSpeed(int rowCount, int n, quint32 seed)
{
    QRandomGenerator generator(seed);
    QList<quint32> values;
    for (int r = 0; r < rowCount; ++r)
        values.append(generator.generate());
    QList<int> taken;
    for (int r = 0; r < rowCount && n - taken.size() >= 1; ++r) {
        if (double(n - taken.size()) / (rowCount - r) >= values.at(r) / 4294967295.0)
            taken.append(r);
    }
    return taken;
}

QStringList rowNames(const QList<int> &rows)
{
    QStringList names;
    for (const int r : rows)
        names.append(QString::number(r + 1));
    return names;
}

} // namespace

void TestTransformSample::init()
{
    m_input = makeDataSource(numberedRows(10));
}

void TestTransformSample::cleanup()
{
    delete m_input;
}

void TestTransformSample::sample_data()
{
    QTest::addColumn<int>("spread");
    QTest::addColumn<int>("rows");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("result");

    QTest::newRow("first") << 0 << 3 << QStringList {"1", "2", "3"} << "3 sampled, 7 unsampled";
    QTest::newRow("evenly") << 2 << 3 << QStringList {"3", "6", "8"} << "3 sampled, 7 unsampled";
    QTest::newRow("evenly, nearly all")
        << 2 << 9 << QStringList {"2", "3", "4", "5", "6", "7", "8", "9", "10"}
        << "9 sampled, 1 unsampled";
    QTest::newRow("none") << 1 << 0 << QStringList {} << "0 sampled, 10 unsampled";
}

void TestTransformSample::sample()
{
    QFETCH(int, spread);
    QFETCH(int, rows);
    QFETCH(QStringList, expected);
    QFETCH(QString, result);

    TransformSample transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Rows")->setValue(rows);
    transform.parameter("Spread")->setValue(TransformSample::spreadNames().at(spread));
    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.columnValues(0), expected);
    QCOMPARE(output.header(), m_input->dataset()->header());
    QCOMPARE(output.columnIds(), m_input->dataset()->columnIds());
    QCOMPARE(transform.result(), result);
}

void TestTransformSample::sampleAtOrAboveRowCountIsUnchanged()
{
    for (const int rows : {10, 11}) {
        TransformSample transform;
        transform.createParameters({m_input}, false);
        transform.parameter("Rows")->setValue(rows);
        const Dataset output = runTransform(transform, {m_input});
        QVERIFY(output.equals(*m_input->dataset()));
        QCOMPARE(transform.result(), QString("No changes"));
    }
}

void TestTransformSample::sampleDisabled()
{
    TransformSample transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Rows")->setValue(2);
    transform.parameter("Disable")->setValue(true);
    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.rowCount(), 10);
    QCOMPARE(transform.warnings(), QStringList {"Sampling is disabled"});
}

void TestTransformSample::randomSamples_data()
{
    QTest::addColumn<int>("spread");
    QTest::addColumn<int>("rowCount");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("seed");

    for (const int spread : {3, 4}) {
        const QString name = spread == 3 ? QStringLiteral("quality") : QStringLiteral("speed");
        QTest::addRow("%s, 5 of 7", qPrintable(name)) << spread << 7 << 5 << 1;
        QTest::addRow("%s, 1 of 2", qPrintable(name)) << spread << 2 << 1 << 42;
        QTest::addRow("%s, 100 of 3000", qPrintable(name)) << spread << 3000 << 100 << 7;
        QTest::addRow("%s, 2900 of 3000", qPrintable(name)) << spread << 3000 << 2900 << 123456;
        QTest::addRow("%s, 1000 of 1025", qPrintable(name)) << spread << 1025 << 1000 << 0;
    }
}

void TestTransformSample::randomSamples()
{
    QFETCH(int, spread);
    QFETCH(int, rowCount);
    QFETCH(int, rows);
    QFETCH(int, seed);

    QScopedPointer<DataSource> input(makeDataSource(numberedRows(rowCount)));
    TransformSample transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Rows")->setValue(rows);
    transform.parameter("Spread")->setValue(TransformSample::spreadNames().at(spread));
    transform.parameter("Seed")->setValue(seed);
    const Dataset output = runTransform(transform, {input.data()});

    const QList<int> expected = spread == 3 ? drawForQuality(rowCount, rows, quint32(seed))
                                            : drawForSpeed(rowCount, rows, quint32(seed));
    QCOMPARE(output.columnValues(0), rowNames(expected));
    if (spread == 3)
        QCOMPARE(output.rowCount(), rows);
    // The same seed draws the same rows again.
    QVERIFY(runTransform(transform, {input.data()}).equals(output));
}

void TestTransformSample::sampleDependsOnRowCount()
{
    for (const int spread : {3, 4}) {
        QScopedPointer<DataSource> shorter(makeDataSource(numberedRows(200)));
        QScopedPointer<DataSource> longer(makeDataSource(numberedRows(300)));
        TransformSample transform;
        transform.createParameters({shorter.data()}, false);
        transform.parameter("Rows")->setValue(20);
        transform.parameter("Spread")->setValue(TransformSample::spreadNames().at(spread));
        const QStringList a = runTransform(transform, {shorter.data()}).columnValues(0);
        const QStringList b = runTransform(transform, {longer.data()}).columnValues(0);
        QVERIFY(a != b);
    }
}

void TestTransformSample::qualityNeverDrawsTheLastRemainingRow()
{
    // The drawn index is ((length - 1) * u) >> 32, below length - 1 for every u: while other
    // rows remain the last one can't be drawn. So 1 row of 2 is always the first, and 9 of 10
    // always leave out the tenth, whatever the seed.
    QScopedPointer<DataSource> two(makeDataSource(numberedRows(2)));
    for (const int seed : {0, 1, 7, 123456, -5}) {
        TransformSample transform;
        transform.createParameters({m_input}, false);
        transform.parameter("Spread")->setValue(TransformSample::spreadNames().at(3));
        transform.parameter("Seed")->setValue(seed);
        transform.parameter("Rows")->setValue(1);
        QCOMPARE(runTransform(transform, {two.data()}).columnValues(0), QStringList {"1"});
        transform.parameter("Rows")->setValue(9);
        QCOMPARE(runTransform(transform, {m_input}).columnValues(0),
                 QStringList({"1", "2", "3", "4", "5", "6", "7", "8", "9"}));
    }
}

void TestTransformSample::sampledRowsStayShared()
{
    for (int spread = 0; spread < 5; ++spread) {
        TransformSample transform;
        transform.createParameters({m_input}, false);
        transform.parameter("Rows")->setValue(4);
        transform.parameter("Spread")->setValue(TransformSample::spreadNames().at(spread));
        const Dataset output = runTransform(transform, {m_input});
        QCOMPARE(output.rowCount(), 4);
        const int first = output.cell(0, 0).toInt() - 1;
        QVERIFY(output.row(0).isSharedWith(m_input->dataset()->row(first)));
    }
}

void TestTransformSample::sampleOptionStates()
{
    TransformSample transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Spread")->setValue(TransformSample::spreadNames().at(2));
    QVERIFY(transform.isParameterEnabled("Rows"));
    QVERIFY(!transform.isParameterEnabled("Seed"));
    transform.parameter("Spread")->setValue(TransformSample::spreadNames().at(4));
    QVERIFY(transform.isParameterEnabled("Seed"));
    transform.parameter("Disable")->setValue(true);
    QVERIFY(!transform.isParameterEnabled("Rows"));
    QVERIFY(!transform.isParameterEnabled("Spread"));
}

QTEST_GUILESS_MAIN(TestTransformSample)
#include "tst_transformsample.moc"
