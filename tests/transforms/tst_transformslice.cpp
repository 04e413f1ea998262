#include "testdata.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformslice.h"

#include <QCoreApplication>
#include <QtTest>

// Slice: the rows of a section found by conditions, kept or removed.
class TestTransformSlice : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void slice_data();
    void slice();

private:
    DataSource *m_input = nullptr;
};

namespace {

QStringList numbers(int from, int to)
{
    QStringList list;
    for (int i = from; i <= to; ++i)
        list.append(QString::number(i));
    return list;
}

} // namespace

void TestTransformSlice::init()
{
    m_input = makeDataSource(makeDataset({{"n", "tag"},
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

QTEST_GUILESS_MAIN(TestTransformSlice)
#include "tst_transformslice.moc"
