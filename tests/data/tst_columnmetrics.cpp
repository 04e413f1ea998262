#include "data/columnmetrics.h"

#include <QtTest>

using namespace ColumnMetrics;

// The profile of a column: a mixed column checked metric by metric against values worked out
// by hand, then the edge cases of single metrics, then the rows behind the metrics.
class TestColumnMetrics : public QObject
{
    Q_OBJECT

private slots:
    void mixedColumn();
    void metric_data();
    void metric();
    void rowsBehindMetrics();
    void progressAndStop();
};

namespace {

// Numbers (an exponent, a currency symbol, a repeat), booleans, two dates that only a
// day-first format reads, texts differing by a trailing blank, and an empty cell.
const QStringList mixed {"12",        "-3.5",  "1e3", "0",  "TRUE",   "false", "15/3/2024",
                         "12/3/2024", "apple", "",    "12", "apple ", "$5"};

Options allOn()
{
    Options options;
    options.dates = true;
    options.statistics = true;
    options.dateFormats = QStringList {"M/d/yyyy", "d/M/yyyy"};
    return options;
}

} // namespace

void TestColumnMetrics::mixedColumn()
{
    const QList<QPair<QString, QString>> expected {{"Empty values", "1"},
                                                   {"Non-empty values", "12"},
                                                   {"Numeric values", "6"},
                                                   {"Integer values", "5"},
                                                   {"Real values", "1"},
                                                   {"Boolean values", "2"},
                                                   {"Date values", "2"},
                                                   {"Text values", "2"},
                                                   {"Distinct values", "12"},
                                                   {"Unique values", "11"},
                                                   {"Duplicated values", "1"},
                                                   {"Min length inc empty", "0"},
                                                   {"Min length ex empty", "1"},
                                                   {"Max length", "9"},
                                                   {"Average length inc empty", "4"},
                                                   {"Average length ex empty", "4.333"},
                                                   {"Min numeric", "-3.5"},
                                                   {"Max numeric", "1000"},
                                                   {"Range numeric", "1003.5"},
                                                   {"Negative numeric", "1"},
                                                   {"Zero numeric", "1"},
                                                   {"Positive numeric", "4"},
                                                   {"Sum numeric", "1025.5"},
                                                   {"Average numeric", "170.917"},
                                                   {"Median numeric", "8.5"},
                                                   {"Mode numeric", "12"},
                                                   {"Stddev numeric", "406.214"},
                                                   {"Variance numeric", "165010.042"},
                                                   {"Q1 numeric", "0"},
                                                   {"Q3 numeric", "12"},
                                                   {"IQR numeric", "12"},
                                                   {"Skew numeric", "1.199"},
                                                   {"Format date", "d/M/yyyy"},
                                                   {"Min date", "12/3/2024"},
                                                   {"Max date", "15/3/2024"},
                                                   {"Range date", "4 days"},
                                                   {"Distinct dates", "2"},
                                                   {"Missing dates", "2"},
                                                   {"Most frequent", "12 X 2"}};
    const Options options = allOn();
    const Metrics metrics = compute(mixed, options);
    const auto actual = texts(metrics, options, false);
    for (int i = 0; i < qMin(actual.size(), expected.size()); ++i)
        QCOMPARE(actual.at(i), expected.at(i));
    QCOMPARE(actual.size(), expected.size());
    QCOMPARE(metrics.missingExamples, (QStringList {"13/3/2024", "14/3/2024"}));

    // Without dates the date texts are text, and the date rows go.
    const auto plain = columnMetrics(mixed, false, false, options.dateFormats);
    QCOMPARE(plain.size(), 22);
    QCOMPARE(plain.at(6), qMakePair(QString("Text values"), QString("4")));
    QCOMPARE(plain.last().first, QString("Most frequent"));
}

void TestColumnMetrics::metric_data()
{
    QTest::addColumn<QStringList>("column");
    QTest::addColumn<QString>("metric");
    QTest::addColumn<QString>("value");

    QTest::newRow("all distinct: no most frequent")
        << QStringList {"a", "b", "c"} << "Most frequent"
        << "N/A";
    QTest::newRow("the empty text is never the most frequent")
        << QStringList {"", "", "a"} << "Most frequent"
        << "N/A";
    QTest::newRow("most frequent: sorted, elided, three shown")
        << QStringList {"dd", "bb", "abcdefghijklmnopqrstu", "cc", "aa", "bb",
                        "cc", "dd", "abcdefghijklmnopqrstu", "aa", "zz"}
        << "Most frequent" << QString::fromUtf8("aa,abcdefghijklmno\u2026,bb + 2 more X 2");
    QTest::newRow("one value: no deviation") << QStringList {"7"} << "Stddev numeric"
                                             << "N/A";
    QTest::newRow("one value: no skew") << QStringList {"7"} << "Skew numeric"
                                        << "N/A";
    QTest::newRow("one value: Q1 is the value") << QStringList {"7"} << "Q1 numeric"
                                                << "7";
    QTest::newRow("all equal: deviation 0") << QStringList {"4", "4", "4"} << "Stddev numeric"
                                            << "0";
    QTest::newRow("all equal: no skew") << QStringList {"4", "4", "4"} << "Skew numeric"
                                        << "N/A";
    QTest::newRow("odd count: Q1 by halves")
        << QStringList {"5", "1", "4", "2", "3"} << "Q1 numeric"
        << "1.5";
    QTest::newRow("odd count: Q3 by halves")
        << QStringList {"5", "1", "4", "2", "3"} << "Q3 numeric"
        << "4.5";
    QTest::newRow("modes: five, then the count of the rest")
        << QStringList {"7", "6", "5", "4", "3", "2", "1"} << "Mode numeric"
        << "1,2,3,4,5 + 2 more";
    QTest::newRow("no numbers: no minimum") << QStringList {"a", ""} << "Min numeric"
                                            << "N/A";
    QTest::newRow("no numbers: counts are 0") << QStringList {"a", ""} << "Zero numeric"
                                              << "0";
    QTest::newRow("all empty: no length without empties")
        << QStringList {"", ""} << "Min length ex empty"
        << "N/A";
    QTest::newRow("no rows: no length") << QStringList() << "Min length inc empty"
                                        << "N/A";
    QTest::newRow("one date: a range of one day")
        << QStringList {"3/1/2024", "3/1/2024"} << "Range date"
        << "1 day";
    QTest::newRow("one stray text doesn't stop dates")
        << QStringList {"31/1/2024", "x", "2/2/2024"} << "Date values"
        << "2";
    QTest::newRow("no dates: no format") << QStringList {"x", "1"} << "Format date"
                                         << "N/A";
    QTest::newRow("fractions: three decimals") << QStringList {"1", "2", "2"} << "Average numeric"
                                               << "1.667";
    QTest::newRow("counts without group separators")
        << QStringList(QVector<QString>(1200, QStringLiteral("x")).toList()) << "Non-empty values"
        << "1200";
}

void TestColumnMetrics::metric()
{
    QFETCH(QStringList, column);
    QFETCH(QString, metric);
    QFETCH(QString, value);

    const auto pairs = columnMetrics(column, true, true, {"d/M/yyyy"});
    for (const auto &pair : pairs) {
        if (pair.first == metric) {
            QCOMPARE(pair.second, value);
            return;
        }
    }
    QFAIL("no such metric");
}

void TestColumnMetrics::rowsBehindMetrics()
{
    Options options = allOn();
    options.keepRows = true;
    // The texts are a sample: each stands for the row given, and missing dates are unknown.
    options.sampled = true;
    QVector<int> rows;
    for (int i = 0; i < mixed.size(); ++i)
        rows.append(10 * i);
    const Metrics metrics = compute(mixed, options, &rows);
    QCOMPARE(metrics.rowsByMetric.value(Empty), QVector<int>({90}));
    QCOMPARE(metrics.rowsByMetric.value(Real), QVector<int>({10}));
    QCOMPARE(metrics.rowsByMetric.value(Duplicated), QVector<int>({0, 100}));
    QCOMPARE(metrics.rowsByMetric.value(MinLengthEx), QVector<int>({30}));
    QCOMPARE(metrics.rowsByMetric.value(MaxLength), QVector<int>({60, 70}));
    QCOMPARE(metrics.rowsByMetric.value(MaxNumeric), QVector<int>({20}));
    QCOMPARE(metrics.rowsByMetric.value(MinDate), QVector<int>({70}));
    QCOMPARE(metrics.rowsByMetric.value(Text), QVector<int>({80, 110}));
    QCOMPARE(texts(metrics, options, false).at(37).second, QString("N/A"));
    QVERIFY(metrics.missingExamples.isEmpty());
}

void TestColumnMetrics::progressAndStop()
{
    // Progress comes every 1,000 texts; a stop asked for at the third call ends the pass there.
    const QStringList column = QVector<QString>(2500, QStringLiteral("7")).toList();
    QList<int> calls;
    Options options;
    options.progress = [&calls](int position) {
        calls.append(position);
        return calls.size() < 3;
    };
    const Metrics metrics = compute(column, options);
    QCOMPARE(calls, (QList<int> {0, 1000, 2000}));
    QCOMPARE(metrics.numeric, 2000);
}

QTEST_GUILESS_MAIN(TestColumnMetrics)
#include "tst_columnmetrics.moc"
