#include "data/numericlist.h"

#include <QtTest>

#include <cmath>

using namespace NumericList;

// The statistics against values worked out by hand. A missing result is written as NaN in the
// table: the helper must then report ok = false.
class TestNumericList : public QObject
{
    Q_OBJECT

private slots:
    void statistics_data();
    void statistics();
    void percentile_data();
    void percentile();
    void fromTexts();
    void medianAgreesWithSorting();
};

namespace {

void compareResult(const char *what, double actual, bool ok, double expected)
{
    if (std::isnan(expected)) {
        QVERIFY2(!ok, what);
        return;
    }
    QVERIFY2(ok, what);
    QVERIFY2(qFuzzyCompare(1.0 + actual, 1.0 + expected),
             qPrintable(QStringLiteral("%1: %2, expected %3")
                            .arg(QLatin1String(what))
                            .arg(actual, 0, 'g', 17)
                            .arg(expected, 0, 'g', 17)));
}

} // namespace

void TestNumericList::statistics_data()
{
    const double none = qQNaN();
    QTest::addColumn<QVector<double>>("values");
    QTest::addColumn<double>("sum");
    QTest::addColumn<double>("average");
    QTest::addColumn<double>("median");
    QTest::addColumn<QString>("modes");
    QTest::addColumn<double>("sampleDeviation");
    QTest::addColumn<double>("populationDeviation");
    QTest::addColumn<double>("q1");
    QTest::addColumn<double>("q3");
    QTest::addColumn<double>("skew");

    QTest::newRow("empty") << QVector<double>() << none << none << none << QString() << none << none
                           << none << none << none;
    // One value: no sample deviation, so no skew; both quartiles are the value.
    QTest::newRow("one") << QVector<double> {5} << 5.0 << 5.0 << 5.0 << "5" << none << 0.0 << 5.0
                         << 5.0 << none;
    // Even count: halves of two, every value a mode.
    QTest::newRow("even") << QVector<double> {4, 1, 3, 2} << 10.0 << 2.5 << 2.5 << "1,2,3,4"
                          << std::sqrt(5.0 / 3.0) << std::sqrt(1.25) << 1.5 << 3.5 << 0.0;
    // Odd count: the middle value 3 belongs to neither half.
    QTest::newRow("odd") << QVector<double> {7, 1, 3, 3, 9} << 23.0 << 4.6 << 3.0 << "3"
                         << std::sqrt(10.8) << std::sqrt(8.64) << 2.0 << 8.0
                         << 3.0 * 1.6 / std::sqrt(10.8);
    QTest::newRow("tied modes") << QVector<double> {5, -2, 1, 5, -2} << 7.0 << 1.4 << 1.0 << "-2,5"
                                << std::sqrt(12.3) << std::sqrt(9.84) << -2.0 << 5.0
                                << 3.0 * 0.4 / std::sqrt(12.3);
    // No spread: the skew would divide by zero.
    QTest::newRow("constant") << QVector<double> {4, 4, 4} << 12.0 << 4.0 << 4.0 << "4" << 0.0
                              << 0.0 << 4.0 << 4.0 << none;
    QTest::newRow("fractions") << QVector<double> {0.1, 0.2} << 0.3 << 0.15 << 0.15 << "0.1,0.2"
                               << std::sqrt(0.005) << 0.05 << 0.1 << 0.2 << 0.0;
}

void TestNumericList::statistics()
{
    QFETCH(QVector<double>, values);
    bool ok = false;
    QFETCH(double, sum);
    const double total = NumericList::sum(values, &ok);
    compareResult("sum", total, ok, sum);
    QFETCH(double, average);
    const double mean = NumericList::average(values, &ok);
    compareResult("average", mean, ok, average);
    QFETCH(double, median);
    const double middle = NumericList::median(values, &ok);
    compareResult("median", middle, ok, median);
    QFETCH(QString, modes);
    QCOMPARE(modeText(values, &ok), modes);
    QCOMPARE(ok, !values.isEmpty());

    QFETCH(double, sampleDeviation);
    const double sample = standardDeviation(values, Deviation::Sample, &ok);
    compareResult("sample deviation", sample, ok, sampleDeviation);
    QFETCH(double, populationDeviation);
    const double population = standardDeviation(values, Deviation::Population, &ok);
    compareResult("population deviation", population, ok, populationDeviation);

    QFETCH(double, q1);
    QFETCH(double, q3);
    double lower = 0.0;
    double upper = 0.0;
    const bool haveQuartiles = quartiles(values, &lower, &upper);
    compareResult("q1", lower, haveQuartiles, q1);
    compareResult("q3", upper, haveQuartiles, q3);

    QFETCH(double, skew);
    const double skewness = NumericList::skew(values, &ok);
    compareResult("skew", skewness, ok, skew);

    if (!values.isEmpty()) {
        QCOMPARE(minimum(values), *std::min_element(values.cbegin(), values.cend()));
        QCOMPARE(maximum(values), *std::max_element(values.cbegin(), values.cend()));
    }
}

void TestNumericList::percentile_data()
{
    const double none = qQNaN();
    QTest::addColumn<QVector<double>>("values");
    QTest::addColumn<double>("percent");
    QTest::addColumn<double>("inclusive");
    QTest::addColumn<double>("exclusive");

    const QVector<double> four {4, 1, 3, 2};
    // Exclusive rank 3.5 lies past the last of four values; inclusive rank 2.7 interpolates.
    QTest::newRow("90% of four") << four << 90.0 << 3.7 << none;
    QTest::newRow("50% of four") << four << 50.0 << 2.5 << 2.5;
    QTest::newRow("20% of four") << four << 20.0 << 1.6 << 1.0;
    QTest::newRow("10% of four") << four << 10.0 << 1.3 << none;
    QTest::newRow("0%") << four << 0.0 << 1.0 << none;
    QTest::newRow("100%") << four << 100.0 << 4.0 << none;
    QTest::newRow("past 100%") << four << 101.0 << none << none;
    QTest::newRow("one value") << QVector<double> {7} << 90.0 << 7.0 << none;
    QTest::newRow("one value, median") << QVector<double> {7} << 50.0 << 7.0 << 7.0;
    QTest::newRow("empty") << QVector<double>() << 50.0 << none << none;
    // Spreadsheets: PERCENTILE.INC(.., 0.25) = 20, PERCENTILE.EXC(.., 0.25) = 15.
    QTest::newRow("quarter of five")
        << QVector<double> {50, 10, 40, 20, 30} << 25.0 << 20.0 << 15.0;
    // A rank that lands exactly on the last value must not be rounded past it.
    QTest::newRow("exact last rank")
        << QVector<double> {1, 2, 3, 4, 5, 6, 7, 8, 9} << 90.0 << 8.2 << 9.0;
}

void TestNumericList::percentile()
{
    QFETCH(QVector<double>, values);
    QFETCH(double, percent);
    QFETCH(double, inclusive);
    QFETCH(double, exclusive);
    bool ok = false;
    double value = NumericList::percentile(values, percent, Percentile::Inclusive, &ok);
    compareResult("inclusive", value, ok, inclusive);
    value = NumericList::percentile(values, percent, Percentile::Exclusive, &ok);
    compareResult("exclusive", value, ok, exclusive);
}

void TestNumericList::fromTexts()
{
    // Currency symbols go; empty cells and other texts are left out, not read as 0.
    const QStringList texts = {QStringLiteral("1.5"), QStringLiteral("x"), QString(),
                               QStringLiteral("$2"), QStringLiteral("-3")};
    QCOMPARE(NumericList::fromTexts(texts), QVector<double>({1.5, 2.0, -3.0}));
}

void TestNumericList::medianAgreesWithSorting()
{
    // Selection must give what a full sort gives, on lists long enough to be partitioned.
    for (int size = 1; size <= 40; ++size) {
        QVector<double> values;
        for (int i = 0; i < size; ++i)
            values.append(double((i * 7919) % 23) - 11.0);
        QVector<double> sorted = values;
        std::sort(sorted.begin(), sorted.end());
        const double expected = size % 2 == 1
            ? sorted.at(size / 2)
            : (sorted.at(size / 2 - 1) + sorted.at(size / 2)) / 2.0;
        QCOMPARE(median(values), expected);
    }
}

QTEST_GUILESS_MAIN(TestNumericList)
#include "tst_numericlist.moc"
