#include "graph/node.h"
#include "testutil.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformsample.h"
#include "transforms/transformslice.h"

#include <QApplication>
#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>

// Slice and Sample: the transforms that keep a part of the rows by position.
class TestTransformSlice : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void slice_data();
    void slice();

    void sample_data();
    void sample();
    void sampleAtOrAboveRowCountIsUnchanged();
    void sampleDisabled();
    void randomSamples_data();
    void randomSamples();
    void sampleDependsOnRowCount();
    void sampleOptionStates();

private:
    Node *m_input = nullptr;
};

namespace {

QStringList numbers(int from, int to)
{
    QStringList list;
    for (int i = from; i <= to; ++i)
        list.append(QString::number(i));
    return list;
}

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

void TestTransformSlice::init()
{
    m_input = makeDataNode(makeDataset({{"n", "tag"},
                                        {"1", "a"},
                                        {"2", "start"},
                                        {"3", "b"},
                                        {"4", "end"},
                                        {"5", "c"},
                                        {"6", "START"},
                                        {"7", "d"},
                                        {"8", "end"},
                                        {"9", "e"},
                                        {"10", "f"}}));
}

void TestTransformSlice::cleanup()
{
    delete m_input;
}

void TestTransformSlice::slice_data()
{
    QTest::addColumn<QString>("keepRemove");
    QTest::addColumn<QString>("fromMode");
    QTest::addColumn<int>("fromColumn");
    QTest::addColumn<int>("fromOp");
    QTest::addColumn<QString>("fromValue");
    QTest::addColumn<bool>("includeFirst");
    QTest::addColumn<QString>("toMode");
    QTest::addColumn<int>("toColumn");
    QTest::addColumn<int>("toOp");
    QTest::addColumn<QString>("toValue");
    QTest::addColumn<bool>("includeLast");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("result");

    using Op = ComparisonOperator;
    const int eq = Op::EqualTo;
    QTest::newRow("start to end") << "Keep"
                                  << "Start" << 1 << eq << "" << true << "End" << 1 << eq << ""
                                  << true << numbers(1, 10) << "No changes";
    QTest::newRow("first where to end")
        << "Keep"
        << "First row where" << 1 << eq << "start" << true << "End" << 1 << eq << "" << true
        << numbers(2, 10) << "1 row removed";
    QTest::newRow("first where to next where")
        << "Keep"
        << "First row where" << 1 << eq << "start" << true << "Next row where" << 1 << eq << "end"
        << true << numbers(2, 4) << "7 rows removed";
    QTest::newRow("boundary rows excluded")
        << "Keep"
        << "First row where" << 1 << eq << "start" << false << "Next row where" << 1 << eq << "end"
        << false << numbers(3, 3) << "9 rows removed";
    QTest::newRow("first where to last where")
        << "Keep"
        << "First row where" << 1 << eq << "start" << true << "Last row where" << 1 << eq << "end"
        << true << numbers(2, 8) << "3 rows removed";
    QTest::newRow("remove the section")
        << "Remove"
        << "First row where" << 1 << eq << "start" << true << "Next row where" << 1 << eq << "end"
        << true << (QStringList {"1"} + numbers(5, 10)) << "3 rows removed";
    // The 'From' row itself is not a candidate for the end, so the next "start" ends it.
    QTest::newRow("next where ignores the from row")
        << "Keep"
        << "First row where" << 1 << eq << "start" << true << "Next row where" << 1 << eq << "start"
        << true << numbers(2, 6) << "5 rows removed";
    QTest::newRow("last where may be the from row")
        << "Keep"
        << "First row where" << 1 << eq << "f" << true << "Last row where" << 1 << eq << "f" << true
        << numbers(10, 10) << "9 rows removed";
    QTest::newRow("last where above the from row")
        << "Keep"
        << "First row where" << 1 << eq << "e" << true << "Last row where" << 1 << eq << "c" << true
        << QStringList {} << "10 rows removed";
    QTest::newRow("no first row") << "Keep"
                                  << "First row where" << 1 << eq << "zzz" << true << "End" << 1
                                  << eq << "" << true << QStringList {} << "10 rows removed";
    QTest::newRow("no next row, nothing removed")
        << "Remove"
        << "Start" << 1 << eq << "" << true << "Next row where" << 1 << eq << "zzz" << true
        << numbers(1, 10) << "No changes";
    // As numbers 10 > 8; as text it would not be.
    QTest::newRow("numbers compared as numbers")
        << "Keep"
        << "First row where" << 0 << int(Op::GreaterThan) << "8" << true << "End" << 0 << eq << ""
        << true << numbers(9, 10) << "8 rows removed";
    QTest::newRow("start, excluded first ignored")
        << "Keep"
        << "Start" << 1 << eq << "" << false << "Last row where" << 1 << eq << "b" << false
        << numbers(1, 2) << "8 rows removed";
}

void TestTransformSlice::slice()
{
    QFETCH(QString, keepRemove);
    QFETCH(QString, fromMode);
    QFETCH(int, fromColumn);
    QFETCH(int, fromOp);
    QFETCH(QString, fromValue);
    QFETCH(bool, includeFirst);
    QFETCH(QString, toMode);
    QFETCH(int, toColumn);
    QFETCH(int, toOp);
    QFETCH(QString, toValue);
    QFETCH(bool, includeLast);
    QFETCH(QStringList, expected);
    QFETCH(QString, result);

    const Dataset &data = *m_input->dataset();
    const QList<int> &order = ComparisonOperator::displayOrder();
    TransformSlice transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Keep_Remove")->setValue(keepRemove);
    transform.parameter("From_Mode")->setValue(fromMode);
    transform.parameter("From_Column")
        ->setColumnId(fromColumn >= 0 ? data.columnId(fromColumn) : ColumnId());
    transform.parameter("From_Operation")
        ->setValue(ComparisonOperator::displayTexts().at(order.indexOf(fromOp)));
    transform.parameter("From_Value")->setValue(fromValue);
    transform.parameter("From_Include_First")->setValue(includeFirst);
    transform.parameter("To_Mode")->setValue(toMode);
    transform.parameter("To_Column")->setColumnId(data.columnId(toColumn));
    transform.parameter("To_Operation")
        ->setValue(ComparisonOperator::displayTexts().at(order.indexOf(toOp)));
    transform.parameter("To_Value")->setValue(toValue);
    transform.parameter("To_Include_Last")->setValue(includeLast);

    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.columnValues(0), expected);
    QCOMPARE(output.columnCount(), 2);
    QCOMPARE(output.header(), data.header());
    QCOMPARE(transform.result(), result);
}

void TestTransformSlice::sample_data()
{
    QTest::addColumn<int>("spread");
    QTest::addColumn<int>("rows");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("result");

    QTest::newRow("first") << 0 << 3 << QStringList {"1", "2", "3"} << "3 sampled, 7 unsampled";
    QTest::newRow("last") << 1 << 3 << QStringList {"8", "9", "10"} << "3 sampled, 7 unsampled";
    QTest::newRow("evenly") << 2 << 3 << QStringList {"3", "6", "8"} << "3 sampled, 7 unsampled";
    QTest::newRow("evenly, nearly all")
        << 2 << 9 << QStringList {"2", "3", "4", "5", "6", "7", "8", "9", "10"}
        << "9 sampled, 1 unsampled";
    QTest::newRow("none") << 1 << 0 << QStringList {} << "0 sampled, 10 unsampled";
}

void TestTransformSlice::sample()
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

void TestTransformSlice::sampleAtOrAboveRowCountIsUnchanged()
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

void TestTransformSlice::sampleDisabled()
{
    TransformSample transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Rows")->setValue(2);
    transform.parameter("Disable")->setValue(true);
    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.rowCount(), 10);
    QCOMPARE(transform.warnings(), QStringList {"Sampling is disabled"});
}

void TestTransformSlice::randomSamples_data()
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

void TestTransformSlice::randomSamples()
{
    QFETCH(int, spread);
    QFETCH(int, rowCount);
    QFETCH(int, rows);
    QFETCH(int, seed);

    QScopedPointer<Node> input(makeDataNode(numberedRows(rowCount)));
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

void TestTransformSlice::sampleDependsOnRowCount()
{
    for (const int spread : {3, 4}) {
        QScopedPointer<Node> shorter(makeDataNode(numberedRows(200)));
        QScopedPointer<Node> longer(makeDataNode(numberedRows(300)));
        TransformSample transform;
        transform.createParameters({shorter.data()}, false);
        transform.parameter("Rows")->setValue(20);
        transform.parameter("Spread")->setValue(TransformSample::spreadNames().at(spread));
        const QStringList a = runTransform(transform, {shorter.data()}).columnValues(0);
        const QStringList b = runTransform(transform, {longer.data()}).columnValues(0);
        QVERIFY(a != b);
    }
}

void TestTransformSlice::sampleOptionStates()
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

TABULON_TEST_MAIN(TestTransformSlice)
#include "tst_transformslice.moc"
