#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformoutliers.h"

#include <QCoreApplication>
#include <QtTest>

// Outliers: fences by standard deviation and by quartiles on both sides, what each action does
// to cells and rows, both treatments of cells that aren't numbers, the score column, and the
// columns that give no fences.
class TestTransformOutliers : public QObject
{
    Q_OBJECT

private slots:
    void actions_data();
    void actions();
    void standardDeviationFences();
    void noFences_data();
    void noFences();

private:
    struct Run
    {
        Dataset output;
        QString result;
        QStringList warnings;
        QStringList information;
    };
    static Run outliers(const QStringList &values, int scoreBy, double threshold, int action,
                        bool nonNumericOutliers, bool addScores);
};

TestTransformOutliers::Run TestTransformOutliers::outliers(const QStringList &values, int scoreBy,
                                                           double threshold, int action,
                                                           bool nonNumericOutliers, bool addScores)
{
    QList<QStringList> table {{"id", "v"}};
    for (int i = 0; i < values.size(); ++i)
        table.append(QStringList {QString(QChar('a' + i)), values.at(i)});
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(table)));
    TransformOutliers transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Column")->setColumnId(node->dataset()->columnId(1));
    const auto choose = [&transform](const char *key, int index) {
        Parameter *p = transform.parameter(key);
        p->setValue(p->options().toStringList().at(index));
    };
    choose("Score_By", scoreBy);
    choose("Action", action);
    choose("Non_Numeric", nonNumericOutliers ? 0 : 1);
    transform.parameter("Threshold")->setValue(threshold);
    transform.parameter("New_Value")->setValue(QStringLiteral("OUT"));
    transform.parameter("Add_Scores")->setValue(addScores);
    Run run;
    run.output = runTransform(transform, {node.data()});
    run.result = transform.result();
    run.warnings = transform.warnings();
    run.information = transform.information();
    return run;
}

// Quartiles of the ten numbers by halves: Q1 = 2, Q3 = 7, IQR = 5; at 1.5 the fences are -5.5
// and 14.5, so 100 (row j) lies above and -20 (row k) below.
static const QStringList quartileValues {"1", "2", "3", "4", "x", "5", "6", "7", "8", "100", "-20"};

void TestTransformOutliers::actions_data()
{
    QTest::addColumn<int>("action");
    QTest::addColumn<bool>("nonNumericOutliers");
    QTest::addColumn<QString>("ids");
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QString>("result");

    using T = TransformOutliers;
    QTest::newRow("set value") << int(T::SetValue) << false << "abcdefghijk"
                               << QStringList {"1", "2", "3", "4",   "x",  "5",
                                               "6", "7", "8", "OUT", "OUT"}
                               << "2 changed, 9 unchanged";
    QTest::newRow("set value, non-numbers too")
        << int(T::SetValue) << true << "abcdefghijk"
        << QStringList {"1", "2", "3", "4", "OUT", "5", "6", "7", "8", "OUT", "OUT"}
        << "3 changed, 8 unchanged";
    QTest::newRow("keep outlier rows")
        << int(T::KeepRows) << false << "jk" << QStringList {"100", "-20"} << "9 rows removed";
    QTest::newRow("keep outlier rows, non-numbers too")
        << int(T::KeepRows) << true << "ejk" << QStringList {"x", "100", "-20"} << "8 rows removed";
    QTest::newRow("remove outlier rows")
        << int(T::RemoveRows) << false << "abcdefghi"
        << QStringList {"1", "2", "3", "4", "x", "5", "6", "7", "8"} << "2 rows removed";
    QTest::newRow("change to the fence crossed; a non-number has none")
        << int(T::ChangeToThreshold) << true << "abcdefghijk"
        << QStringList {"1", "2", "3", "4", "x", "5", "6", "7", "8", "14.5", "-5.5"}
        << "2 changed, 9 unchanged";
}

void TestTransformOutliers::actions()
{
    QFETCH(int, action);
    QFETCH(bool, nonNumericOutliers);
    QFETCH(QString, ids);
    QFETCH(QStringList, values);
    QFETCH(QString, result);

    const Run run = outliers(quartileValues, TransformOutliers::InterQuartileRange, 1.5, action,
                             nonNumericOutliers, true);
    QCOMPARE(run.output.columnValues(0).join(QString()), ids);
    QCOMPARE(run.output.columnValues(1), values);
    QCOMPARE(run.result, result);
    QCOMPARE(run.warnings, QStringList());
    // Scores are of the original numbers, and travel with their rows.
    const QHash<QString, QString> scores {{"a", "-0.2"}, {"b", "0"},    {"c", "0"},   {"d", "0"},
                                          {"e", ""},     {"f", "0"},    {"g", "0"},   {"h", "0"},
                                          {"i", "0.2"},  {"j", "18.6"}, {"k", "-4.4"}};
    QCOMPARE(run.output.headerText(2), QStringLiteral("Score"));
    for (int r = 0; r < run.output.rowCount(); ++r)
        QCOMPARE(run.output.cell(r, 2), scores.value(run.output.cell(r, 0)));
    QStringList information {"10 numeric values",      "Quartile 1=2",     "Quartile 3=7",
                             "Inter Quartile Range=5", "Lower fence=-5.5", "Upper fence=14.5"};
    information.append(nonNumericOutliers ? "3 outliers:" : "2 outliers:");
    if (nonNumericOutliers)
        information.append("'x' at row 5");
    information << "'100' at row 10"
                << "'-20' at row 11";
    QCOMPARE(run.information, information);
}

// Mean 5 and sample deviation 2.138...: at threshold 1 the lowest value falls below the lower
// fence and the highest above the upper one; 7 scores 0.94 and stays.
void TestTransformOutliers::standardDeviationFences()
{
    const Run run
        = outliers({"2", "4", "4", "4", "5", "5", "7", "9"}, TransformOutliers::StandardDeviation,
                   1.0, TransformOutliers::ChangeToThreshold, false, true);
    QCOMPARE(run.output.columnValues(1),
             (QStringList {"2.8619100647006", "4", "4", "4", "5", "5", "7", "7.1380899352994"}));
    QCOMPARE(run.output.cell(0, 2), QStringLiteral("-1.40312152004023"));
    QCOMPARE(run.output.cell(7, 2), QStringLiteral("1.87082869338697"));
    QVERIFY(run.information.contains("Average (mean)=5"));
    QVERIFY(run.information.contains("Standard deviation=2.1380899352994"));
    QVERIFY(run.information.contains("'9' at row 8"));
}

void TestTransformOutliers::noFences_data()
{
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<int>("scoreBy");
    QTest::addColumn<QString>("warning");

    QTest::newRow("all equal by quartiles")
        << QStringList {"5", "5", "x", "5", "5"} << int(TransformOutliers::InterQuartileRange)
        << "Could not calculate quartile values.";
    QTest::newRow("all equal by deviation")
        << QStringList {"5", "5", "5"} << int(TransformOutliers::StandardDeviation)
        << "Could not calculate standard deviation.";
    QTest::newRow("one number") << QStringList {"5", "x", ""}
                                << int(TransformOutliers::StandardDeviation)
                                << "Insufficient numeric values to calculate outliers.";
}

// Without fences nothing is an outlier, not even a non-number treated as one.
void TestTransformOutliers::noFences()
{
    QFETCH(QStringList, values);
    QFETCH(int, scoreBy);
    QFETCH(QString, warning);

    const Run run = outliers(values, scoreBy, 1.5, TransformOutliers::RemoveRows, true, true);
    QCOMPARE(run.output.columnValues(1), values);
    QCOMPARE(run.output.columnCount(), 3);
    QCOMPARE(run.warnings, QStringList {warning});
    QCOMPARE(run.result, QStringLiteral("No changes"));
}

QTEST_GUILESS_MAIN(TestTransformOutliers)
#include "tst_transformoutliers.moc"
