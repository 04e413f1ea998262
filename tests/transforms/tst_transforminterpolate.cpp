#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transforminterpolate.h"

#include <QCoreApplication>
#include <QtTest>

// Interpolate: the step and the straight line between bottom points, samples at and between
// points, outside their range and not numbers, bottom rows that give no point, and a
// transform that has only its top input.
class TestTransformInterpolate : public QObject
{
    Q_OBJECT

private slots:
    void types_data();
    void types();
    void needsTheBottomInput();
};

void TestTransformInterpolate::types_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("linear") << "Linear"
                            << QStringList {"", "10", "15", "0", "", "", "", "10", "10"};
    QTest::newRow("piecewise: the point at or below")
        << "Piecewise" << QStringList {"", "10", "20", "0", "", "", "", "20", "10"};
}

// Points (1, 10), (2, 20), (4, 0); the second row of sample 2 is dropped, and rows 4 and 5
// give no point. The top sample 1e0 is the number 1 in another spelling.
void TestTransformInterpolate::types()
{
    QFETCH(QString, type);
    QFETCH(QStringList, expected);

    const QStringList samples {"0.5", "1", "2.5", "4", "-1", "abc", "", "3", "1e0"};
    QList<QStringList> topRows {{"x"}};
    for (const QString &sample : samples)
        topRows.append(QStringList {sample});
    QScopedPointer<DataSource> top(makeDataSource(makeDataset(topRows)));
    QScopedPointer<DataSource> bottom(makeDataSource(makeDataset({{"s", "val"},
                                                                  {"4", "0"},
                                                                  {"1", "10"},
                                                                  {"2", "20"},
                                                                  {"z", "5"},
                                                                  {"3", "w"},
                                                                  {"2", "99"}})));
    // The bottom rows are out of order: points are found by sample, not by position.
    TransformInterpolate transform;
    transform.createParameters({top.data(), bottom.data()}, false);
    transform.parameter("Top_Sample_Column")->setColumnId(top->dataset()->columnId(0));
    transform.parameter("Bottom_Sample_Column")->setColumnId(bottom->dataset()->columnId(0));
    transform.parameter("Bottom_Value_Column")->setColumnId(bottom->dataset()->columnId(1));
    transform.parameter("Interpolation_Type")->setValue(type);

    const Dataset output = runTransform(transform, {top.data(), bottom.data()});
    QCOMPARE(output.header(), (QStringList {"x", "Interpolated val"}));
    QCOMPARE(output.columnValues(0), samples);
    QCOMPARE(output.columnValues(1), expected);
    QCOMPARE(
        transform.warnings(),
        (QStringList {"2 non-numeric values in the bottom dataset:\n'z' at row 4\n'w' at row 5",
                      "2 non-numeric values in top column 'x':\n'abc' at row 6\n'' at row 7",
                      "2 values in top column 'x' outside value range in bottom column "
                      "'s':\n'0.5' at row 1\n'-1' at row 5"}));
    QCOMPARE(transform.result(), QStringLiteral("5 values interpolated"));
}

void TestTransformInterpolate::needsTheBottomInput()
{
    const Dataset table = makeDataset({{"x"}, {"1"}});
    QScopedPointer<DataSource> top(makeDataSource(table));
    TransformInterpolate transform;
    transform.createParameters({top.data()}, false);
    transform.parameter("Top_Sample_Column")->setColumnId(top->dataset()->columnId(0));
    const Dataset output = runTransform(transform, {top.data()});
    QVERIFY(output.equals(table));
    QCOMPARE(transform.result(), QStringLiteral("Connect a second dataset"));
}

QTEST_GUILESS_MAIN(TestTransformInterpolate)
#include "tst_transforminterpolate.moc"
