#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/keymatching.h"
#include "transforms/transformjoin.h"

#include <QCoreApplication>
#include <QtTest>

// Join by key and by row number, with the outer-join options, the detailed report, and the
// automatic choice of key columns that the key transforms share.
class TestTransformJoin : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void byKey_data();
    void byKey();
    void headerAndIdsOfBothInputs();
    void detailedReport();
    void byRowNumber_data();
    void byRowNumber();
    void rowNumberIgnoresUnsetKeys();
    void unresolvedKeyCopiesTop();
    void singleInputAsksForSecond();
    void autoConfigure_data();
    void autoConfigure();
    void autoConfigureLeavesChosenKeys();

private:
    void setOptions(bool caseSensitive, bool left, bool right);

    DataSource *m_top = nullptr;
    DataSource *m_bottom = nullptr;
    TransformJoin *m_join = nullptr;
};

void TestTransformJoin::init()
{
    m_top = makeDataSource(makeDataset({{"id", "name"},
                                      {"1", "Ann"},
                                      {"2", "Bob"},
                                      {"2", "Bea"},
                                      {"", "Nil"},
                                      {"A", "Upper"},
                                      {"4 ", "Dan"}}));
    m_bottom = makeDataSource(makeDataset({{"key", "city"},
                                         {"2", "Paris"},
                                         {"2", "Rome"},
                                         {"3", "Oslo"},
                                         {"", "Void"},
                                         {"a", "lower"}}));
    m_join = new TransformJoin;
    m_join->createParameters({m_top, m_bottom}, false);
    m_join->parameter("Column_1")->setColumnId(m_top->dataset()->columnId(0));
    m_join->parameter("Column_2")->setColumnId(m_bottom->dataset()->columnId(0));
}

void TestTransformJoin::cleanup()
{
    delete m_join;
    delete m_top;
    delete m_bottom;
}

void TestTransformJoin::setOptions(bool caseSensitive, bool left, bool right)
{
    m_join->parameter("Case_Sensitive")->setValue(caseSensitive);
    m_join->parameter("Include_Non_Matching_1")->setValue(left);
    m_join->parameter("Include_Non_Matching_2")->setValue(right);
}

void TestTransformJoin::byKey_data()
{
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<bool>("left");
    QTest::addColumn<bool>("right");
    QTest::addColumn<QList<QStringList>>("rows");
    QTest::addColumn<QString>("result");

    // Two top rows of key 2 by two bottom rows give four rows; empty keys join each other.
    const QList<QStringList> inner {{"2", "Bob", "2", "Paris"},
                                    {"2", "Bob", "2", "Rome"},
                                    {"2", "Bea", "2", "Paris"},
                                    {"2", "Bea", "2", "Rome"},
                                    {"", "Nil", "", "Void"}};
    QTest::newRow("inner") << true << false << false << inner << "5 rows joined";

    // Folding is for comparing only: both cells keep their case.
    QList<QStringList> folded = inner;
    folded << QStringList {"A", "Upper", "a", "lower"};
    QTest::newRow("inner, case insensitive")
        << false << false << false << folded << "6 rows joined";

    // The top key reads through into the bottom key column, untrimmed.
    QList<QStringList> left = inner;
    left << QStringList {"1", "Ann", "1", ""} << QStringList {"A", "Upper", "A", ""}
         << QStringList {"4 ", "Dan", "4 ", ""};
    QTest::newRow("left") << true << true << false << left
                          << "5 rows joined, 3 rows used from 6 in top dataset";

    QList<QStringList> right = inner;
    right << QStringList {"3", "", "3", "Oslo"} << QStringList {"a", "", "a", "lower"};
    QTest::newRow("right") << true << false << true << right
                           << "5 rows joined, 2 rows used from 5 in bottom dataset";

    QList<QStringList> full = left;
    full << QStringList {"3", "", "3", "Oslo"} << QStringList {"a", "", "a", "lower"};
    QTest::newRow("full") << true << true << true << full
                          << "5 rows joined, 3 rows used from 6 in top dataset, 2 rows used "
                             "from 5 in bottom dataset";

    QList<QStringList> fullFolded = folded;
    fullFolded << QStringList {"1", "Ann", "1", ""} << QStringList {"4 ", "Dan", "4 ", ""}
               << QStringList {"3", "", "3", "Oslo"};
    QTest::newRow("full, case insensitive")
        << false << true << true << fullFolded
        << "6 rows joined, 2 rows used from 6 in top dataset, 1 row used from 5 in bottom "
           "dataset";
}

void TestTransformJoin::byKey()
{
    QFETCH(bool, caseSensitive);
    QFETCH(bool, left);
    QFETCH(bool, right);
    QFETCH(QList<QStringList>, rows);
    QFETCH(QString, result);

    setOptions(caseSensitive, left, right);
    const Dataset output = runTransform(*m_join, {m_top, m_bottom});
    QCOMPARE(output.rows(), rows);
    QCOMPARE(m_join->result(), result);
    QVERIFY(m_join->warnings().isEmpty());
    QVERIFY(m_join->information().isEmpty());
}

void TestTransformJoin::headerAndIdsOfBothInputs()
{
    const Dataset output = runTransform(*m_join, {m_top, m_bottom});
    QCOMPARE(output.header(), QStringList({"id", "name", "key", "city"}));
    QCOMPARE(output.columnIds(), m_top->dataset()->columnIds() + m_bottom->dataset()->columnIds());
}

void TestTransformJoin::detailedReport()
{
    m_join->parameter("Detailed_Report")->setValue(true);
    runTransform(*m_join, {m_top, m_bottom});
    QCOMPARE(m_join->result(), QString("5 rows joined"));
    QCOMPARE(m_join->information(),
             QStringList({"6 rows have keys in both datasets",
                          "2 unique keys appear in both datasets", "3 top only", "2 bottom only",
                          "1 key occurring more than once in the top dataset",
                          "1 key with leading or trailing whitespace in the top dataset",
                          "1 key occurring more than once in the bottom dataset"}));
}

void TestTransformJoin::byRowNumber_data()
{
    QTest::addColumn<bool>("topIsLonger");
    QTest::addColumn<bool>("left");
    QTest::addColumn<bool>("right");
    QTest::addColumn<int>("rowCount");
    QTest::addColumn<QStringList>("lastRow");
    QTest::addColumn<QString>("result");

    const QStringList paired {"A", "Upper", "a", "lower"};
    QTest::newRow("longer top, inner") << true << false << false << 5 << paired << "5 rows joined";
    QTest::newRow("longer top, left")
        << true << true << false << 6 << QStringList {"4 ", "Dan", "", ""}
        << "5 rows joined, 1 row used from 6 in top dataset";
    QTest::newRow("longer top, right") << true << false << true << 5 << paired
                                       << "5 rows joined, 0 rows used from 5 in bottom dataset";
    QTest::newRow("longer bottom, right")
        << false << false << true << 6 << QStringList {"", "", "4 ", "Dan"}
        << "5 rows joined, 1 row used from 6 in bottom dataset";
    QTest::newRow("longer bottom, inner")
        << false << false << false << 5 << QStringList {"a", "lower", "A", "Upper"}
        << "5 rows joined";
}

void TestTransformJoin::byRowNumber()
{
    QFETCH(bool, topIsLonger);
    QFETCH(bool, left);
    QFETCH(bool, right);
    QFETCH(int, rowCount);
    QFETCH(QStringList, lastRow);
    QFETCH(QString, result);

    ColumnSources inputs {m_top, m_bottom};
    if (!topIsLonger) {
        std::swap(inputs[0], inputs[1]);
        m_join->connectParameters(inputs);
    }
    m_join->parameter("By")->setValue(QStringLiteral("Row number"));
    setOptions(true, left, right);
    const Dataset output = runTransform(*m_join, inputs);
    QCOMPARE(output.rowCount(), rowCount);
    QCOMPARE(output.row(output.lastRow()), lastRow);
    // Row r meets row r whatever the keys say.
    QCOMPARE(output.row(0),
             topIsLonger ? QStringList({"1", "Ann", "2", "Paris"})
                         : QStringList({"2", "Paris", "1", "Ann"}));
    QCOMPARE(m_join->result(), result);
}

void TestTransformJoin::rowNumberIgnoresUnsetKeys()
{
    m_join->parameter("By")->setValue(QStringLiteral("Row number"));
    m_join->parameter("Column_1")->setColumnId(ColumnId());
    m_join->parameter("Column_2")->setColumnId(ColumnId());
    const Dataset output = runTransform(*m_join, {m_top, m_bottom});
    QCOMPARE(output.rowCount(), 5);
    QVERIFY2(m_join->warnings().isEmpty(), qPrintable(m_join->warnings().join('\n')));

    m_join->parameter("By")->setValue(QStringLiteral("Key"));
    runTransform(*m_join, {m_top, m_bottom});
    QCOMPARE(m_join->warnings(),
             QStringList("2 options not set ('Top key column','Bottom key column')"));
}

void TestTransformJoin::unresolvedKeyCopiesTop()
{
    m_join->parameter("Column_2")->setColumnId(ColumnId(999, 1));
    const Dataset output = runTransform(*m_join, {m_top, m_bottom});
    QCOMPARE(output.rows(), m_top->dataset()->rows());
    QCOMPARE(output.columnCount(), 2);
    QCOMPARE(m_join->result(), QString("No changes"));
}

void TestTransformJoin::singleInputAsksForSecond()
{
    const Dataset output = runTransform(*m_join, {m_top});
    QCOMPARE(output.rows(), m_top->dataset()->rows());
    QCOMPARE(m_join->result(), QString("Connect a second dataset"));
}

void TestTransformJoin::autoConfigure_data()
{
    QTest::addColumn<bool>("withHeader");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("shared");
    QTest::addColumn<bool>("chosen");

    // Without headers the score (shared distinct values) must exceed 5.
    QTest::newRow("no header, 6 shared") << false << 10 << 6 << true;
    QTest::newRow("no header, 5 shared") << false << 10 << 5 << false;
    // With headers on 1000 rows the threshold is 200/1000*150 = 30, and equal names give
    // (shared + 2) * 1.5.
    QTest::newRow("header, 19 shared") << true << 1000 << 19 << true;
    QTest::newRow("header, 18 shared") << true << 1000 << 18 << false;
    // Above 10000 rows nothing is tried.
    QTest::newRow("too many rows") << false << 10001 << 10001 << false;
}

void TestTransformJoin::autoConfigure()
{
    QFETCH(bool, withHeader);
    QFETCH(int, rows);
    QFETCH(int, shared);
    QFETCH(bool, chosen);

    // The first column has blanks and so is no key; the second is the key on both sides.
    QList<QStringList> topRows;
    QList<QStringList> bottomRows;
    if (withHeader) {
        topRows << QStringList {"text", "code"};
        bottomRows << QStringList {"code", "note"};
    }
    for (int r = 0; r < rows; ++r) {
        topRows << QStringList {QStringLiteral("row %1").arg(r), QStringLiteral("C%1").arg(r)};
        bottomRows << QStringList {r < shared ? QStringLiteral("C%1").arg(r)
                                              : QStringLiteral("X%1").arg(r),
                                   QStringLiteral("n %1").arg(r)};
    }
    DataSource *top = makeDataSource(makeDataset(topRows, withHeader));
    DataSource *bottom = makeDataSource(makeDataset(bottomRows, withHeader));
    TransformJoin join;
    join.createParameters({top, bottom}, false);
    QCOMPARE(join.autoConfigure({top, bottom}), chosen);
    QCOMPARE(join.parameter("Column_1")->toColumnIndex(), chosen ? 1 : -1);
    QCOMPARE(join.parameter("Column_2")->toColumnIndex(), chosen ? 0 : -1);
    delete top;
    delete bottom;
}

void TestTransformJoin::autoConfigureLeavesChosenKeys()
{
    QVERIFY(!m_join->autoConfigure({m_top, m_bottom}));
    QCOMPARE(m_join->parameter("Column_1")->toColumnIndex(), 0);
}

QTEST_GUILESS_MAIN(TestTransformJoin)
#include "tst_transformjoin.moc"
