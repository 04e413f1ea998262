#include "data/numericlist.h"
#include "data/valueinterpretation.h"
#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformmoving.h"

#include <QCoreApplication>
#include <QtTest>

#include <algorithm>

// Moving: which rows make the interval of each row at both ends of the table, every
// statistic, and the sliding structures checked against a plain recalculation of every
// window.
class TestTransformMoving : public QObject
{
    Q_OBJECT

private slots:
    void windows_data();
    void windows();
    void matchesRecalculatingEveryWindow_data();
    void matchesRecalculatingEveryWindow();
    void namesAndResult_data();
    void namesAndResult();

private:
    struct Run
    {
        Dataset output;
        QString result;
        QStringList warnings;
    };
    static Run moving(const QStringList &cells, int calculation, int interval, int offset,
                      bool fromAvailable, bool setColumn = true);
};

TestTransformMoving::Run TestTransformMoving::moving(const QStringList &cells, int calculation,
                                                     int interval, int offset, bool fromAvailable,
                                                     bool setColumn)
{
    QList<QStringList> table {{"amount"}};
    for (const QString &cell : cells)
        table.append(QStringList {cell});
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(table)));
    TransformMoving transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Column")->setColumnId(setColumn ? node->dataset()->columnId(0)
                                                         : ColumnId());
    transform.parameter("Calculation")
        ->setValue(TransformMoving::calculationNames().at(calculation));
    transform.parameter("Interval")->setValue(interval);
    transform.parameter("Offset")->setValue(offset);
    transform.parameter("Incomplete")
        ->setValue(fromAvailable ? QStringLiteral("Calculate from available")
                                 : QStringLiteral("Set empty"));
    Run run;
    run.output = runTransform(transform, {node.data()});
    run.result = transform.result();
    run.warnings = transform.warnings();
    return run;
}

void TestTransformMoving::windows_data()
{
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<int>("calculation");
    QTest::addColumn<int>("interval");
    QTest::addColumn<int>("offset");
    QTest::addColumn<bool>("fromAvailable");
    QTest::addColumn<QStringList>("expected");

    const QStringList ascending {"1", "2", "3", "4", "5"};
    const QStringList mixed {"5", "1", "4", "2", "3"};
    QTest::newRow("ending at the row: the first rows are incomplete")
        << ascending << int(TransformMoving::Average) << 3 << 0 << false
        << QStringList {"", "", "2", "3", "4"};
    QTest::newRow("ending at the row, from available")
        << ascending << int(TransformMoving::Average) << 3 << 0 << true
        << QStringList {"1", "1.5", "2", "3", "4"};
    QTest::newRow("ending a row below: incomplete at both ends")
        << ascending << int(TransformMoving::Sum) << 3 << 1 << false
        << QStringList {"", "6", "9", "12", ""};
    QTest::newRow("ending a row below, from available at both ends")
        << ascending << int(TransformMoving::Sum) << 3 << 1 << true
        << QStringList {"3", "6", "9", "12", "9"};
    QTest::newRow("ending two rows above: nothing above the first rows")
        << ascending << int(TransformMoving::Maximum) << 2 << -2 << true
        << QStringList {"", "", "1", "2", "3"};
    QTest::newRow("ending two rows above, set empty")
        << ascending << int(TransformMoving::Maximum) << 2 << -2 << false
        << QStringList {"", "", "", "2", "3"};
    QTest::newRow("interval wholly below the table")
        << ascending << int(TransformMoving::Sum) << 2 << 10 << true
        << QStringList {"", "", "", "", ""};
    QTest::newRow("interval longer than the table, from available")
        << ascending << int(TransformMoving::Sum) << 9 << 4 << true
        << QStringList {"15", "15", "15", "15", "15"};
    QTest::newRow("median of odd and even counts")
        << mixed << int(TransformMoving::Median) << 4 << 0 << true
        << QStringList {"5", "3", "4", "3", "2.5"};
    QTest::newRow("non-numbers are left out of complete intervals")
        << QStringList {"1", "x", "3", "", "5"} << int(TransformMoving::Average) << 2 << 0 << false
        << QStringList {"", "1", "3", "3", "5"};
    QTest::newRow("an interval of no numbers stays empty")
        << QStringList {"1", "x", "y", "4"} << int(TransformMoving::Sum) << 2 << 0 << true
        << QStringList {"1", "1", "", "4"};
    QTest::newRow("decimals without binary noise")
        << QStringList {"0.1", "0.2", "0.3", "1e15", "0.1", "0.2"} << int(TransformMoving::Sum) << 2
        << 0 << false
        << QStringList {"", "0.3", "0.5", "1000000000000000", "1000000000000000", "0.3"};
}

void TestTransformMoving::windows()
{
    QFETCH(QStringList, cells);
    QFETCH(int, calculation);
    QFETCH(int, interval);
    QFETCH(int, offset);
    QFETCH(bool, fromAvailable);
    QFETCH(QStringList, expected);

    const Run run = moving(cells, calculation, interval, offset, fromAvailable);
    QCOMPARE(run.output.columnCount(), 2);
    QCOMPARE(run.output.columnValues(0), cells);
    QCOMPARE(run.output.columnValues(1), expected);
    QCOMPARE(run.warnings.size(),
             int(std::count_if(cells.cbegin(), cells.cend(), [](const QString &cell) {
                 bool ok = false;
                 toDouble(cell, false, true, &ok);
                 return !ok;
             })));
}

void TestTransformMoving::matchesRecalculatingEveryWindow_data()
{
    QTest::addColumn<int>("calculation");
    QTest::addColumn<int>("interval");
    QTest::addColumn<int>("offset");

    for (int calculation = 0; calculation < 6; ++calculation) {
        const QString name = TransformMoving::calculationNames().at(calculation);
        for (const int interval : {1, 4, 17}) {
            for (const int offset : {-6, 0, 3}) {
                QTest::addRow("%s %d rows ending at %+d", qPrintable(name), interval, offset)
                    << calculation << interval << offset;
            }
        }
    }
}

// Quarters keep every sum exact, so the sliding sums must equal fresh ones to the digit;
// repeated values and non-numbers test removal from the median halves and the extremes.
void TestTransformMoving::matchesRecalculatingEveryWindow()
{
    QFETCH(int, calculation);
    QFETCH(int, interval);
    QFETCH(int, offset);

    QStringList cells;
    quint32 state = 12345;
    for (int i = 0; i < 400; ++i) {
        state = state * 1103515245u + 12345u;
        const int k = int((state >> 16) % 61) - 30;
        cells.append(k == 13 ? QStringLiteral("n/a") : QString::number(k / 4.0));
    }
    for (const bool fromAvailable : {false, true}) {
        const Run run = moving(cells, calculation, interval, offset, fromAvailable);
        for (int r = 0; r < cells.size(); ++r) {
            const int end = r + offset;
            const int start = end - interval + 1;
            QString expected;
            if (fromAvailable || (start >= 0 && end < cells.size())) {
                QStringList window;
                for (int w = qMax(0, start); w <= qMin(end, cells.size() - 1); ++w)
                    window.append(cells.at(w));
                const QVector<double> v = NumericList::fromTexts(window);
                if (!v.isEmpty()) {
                    const double values[] = {
                        NumericList::average(v), NumericList::median(v),
                        NumericList::sum(v),     NumericList::minimum(v),
                        NumericList::maximum(v), NumericList::maximum(v) - NumericList::minimum(v)};
                    expected = numberToCellText(values[calculation]);
                }
            }
            QVERIFY2(run.output.cell(r, 1) == expected,
                     qPrintable(QStringLiteral("row %1: %2, expected %3")
                                    .arg(r + 1)
                                    .arg(run.output.cell(r, 1), expected)));
        }
    }
}

void TestTransformMoving::namesAndResult_data()
{
    QTest::addColumn<bool>("setColumn");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("result");

    QTest::newRow("from the statistic and column") << true << "Moving Median amount"
                                                   << "2 median values calculated";
    QTest::newRow("no column") << false << "Moving Median"
                               << "No changes";
}

void TestTransformMoving::namesAndResult()
{
    QFETCH(bool, setColumn);
    QFETCH(QString, name);
    QFETCH(QString, result);

    const Run run = moving({"1", "2", "3"}, TransformMoving::Median, 2, 0, false, setColumn);
    QCOMPARE(run.output.headerText(1), name);
    QCOMPARE(run.result, result);
}

QTEST_GUILESS_MAIN(TestTransformMoving)
#include "tst_transformmoving.moc"
