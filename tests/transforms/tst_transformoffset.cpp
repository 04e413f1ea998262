#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformoffset.h"

#include <QCoreApplication>
#include <QtTest>

// Offset: values of chosen columns shifted down or up, with or without wraparound.
class TestTransformOffset : public QObject
{
    Q_OBJECT

private slots:
    void offset_data();
    void offset();
    void newValueDisabledByWraparound();
};

void TestTransformOffset::offset_data()
{
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<int>("amount");
    QTest::addColumn<QString>("direction");
    QTest::addColumn<bool>("wraparound");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("result");

    const QStringList five {"1", "2", "3", "4", "5"};
    QTest::newRow("down 1") << five << 1 << "Down" << false << QStringList {"-", "1", "2", "3", "4"}
                            << "5 changed, 0 unchanged";
    QTest::newRow("up 2") << five << 2 << "Up" << false << QStringList {"3", "4", "5", "-", "-"}
                          << "5 changed, 0 unchanged";
    QTest::newRow("down 1 wrapped")
        << five << 1 << "Down" << true << QStringList {"5", "1", "2", "3", "4"}
        << "5 changed, 0 unchanged";
    QTest::newRow("up 7 wrapped") << five << 7 << "Up" << true
                                  << QStringList {"3", "4", "5", "1", "2"}
                                  << "5 changed, 0 unchanged";
    QTest::newRow("beyond the row count")
        << five << 10 << "Down" << false << QStringList {"-", "-", "-", "-", "-"}
        << "5 changed, 0 unchanged";
    QTest::newRow("a whole turn") << five << 5 << "Up" << true << five << "No changes";
    QTest::newRow("amount 0") << five << 0 << "Down" << false << five << "No changes";
    QTest::newRow("equal values unchanged")
        << QStringList {"-", "x", "x", "y"} << 1 << "Down" << false
        << QStringList {"-", "-", "x", "x"} << "2 changed, 2 unchanged";
}

void TestTransformOffset::offset()
{
    QFETCH(QStringList, values);
    QFETCH(int, amount);
    QFETCH(QString, direction);
    QFETCH(bool, wraparound);
    QFETCH(QStringList, expected);
    QFETCH(QString, result);

    QList<QStringList> rows {{"v", "other"}};
    for (int r = 0; r < values.size(); ++r)
        rows.append({values.at(r), QString::number(r)});
    QScopedPointer<DataSource> input(makeDataSource(makeDataset(rows)));
    TransformOffset transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Columns")->setColumns({input->dataset()->columnId(0)});
    transform.parameter("Offset_Amount")->setValue(amount);
    transform.parameter("Offset_Direction")->setValue(direction);
    transform.parameter("Wraparound")->setValue(wraparound);
    transform.parameter("New_Value")->setValue(QString("-"));
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(output.columnValues(0), expected);
    QCOMPARE(output.columnValues(1), input->dataset()->columnValues(1));
    QCOMPARE(transform.result(), result);
    QVERIFY(transform.warnings().isEmpty());
}

void TestTransformOffset::newValueDisabledByWraparound()
{
    QScopedPointer<DataSource> input(makeDataSource(makeDataset({{"v"}, {"1"}})));
    TransformOffset transform;
    transform.createParameters({input.data()}, false);
    // The only column is chosen without asking.
    QCOMPARE(transform.parameter("Columns")->toColumns().size(), 1);
    QCOMPARE(transform.parameterStates().size(), 1);
    QCOMPARE(transform.parameterStates().first().enabled, true);
    transform.parameter("Wraparound")->setValue(true);
    QCOMPARE(transform.parameterStates().first().key, QString("New_Value"));
    QCOMPARE(transform.parameterStates().first().enabled, false);
}

QTEST_GUILESS_MAIN(TestTransformOffset)
#include "tst_transformoffset.moc"
