#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformngram.h"

#include <QCoreApplication>
#include <QtTest>

// Ngram: which runs of words are counted, once a row, in what order; sums of another column
// and what its non-numbers do; the bounds of N; drilldown to the rows of each ngram.
class TestTransformNgram : public QObject
{
    Q_OBJECT

private slots:
    void counts_data();
    void counts();
    void sumsWithNonNumbers();
    void maximumBelowMinimum();
    void drilldownListsRowsOnce();

private:
    struct Run
    {
        Dataset output;
        QStringList warnings;
        QString result;
    };
    // Ngrams of column 0 of a table headed "text", "amount", summing column 1 when sum.
    static Run ngrams(const QList<QStringList> &rows, int minimum, int maximum, bool sum,
                      bool caseSensitive = false, bool drilldown = false);
};

TestTransformNgram::Run TestTransformNgram::ngrams(const QList<QStringList> &rows, int minimum,
                                                   int maximum, bool sum, bool caseSensitive,
                                                   bool drilldown)
{
    QList<QStringList> table {{"text", "amount"}};
    table.append(rows);
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(table)));
    TransformNgram transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Column")->setColumnId(node->dataset()->columnId(0));
    transform.parameter("Min_N")->setValue(minimum);
    transform.parameter("Max_N")->setValue(maximum);
    transform.parameter("Sum")->setColumnId(sum ? node->dataset()->columnId(1) : ColumnId());
    transform.parameter("Case_Sensitive")->setValue(caseSensitive);
    transform.parameter("Drilldown")->setValue(drilldown);
    Run run;
    run.output = runTransform(transform, {node.data()});
    run.warnings = transform.warnings();
    run.result = transform.result();
    return run;
}

void TestTransformNgram::counts_data()
{
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QStringList>("header");
    QTest::addColumn<QList<QStringList>>("expected");
    QTest::addColumn<QString>("result");

    QTest::newRow("a one-word cell makes no ngram of two")
        << QStringList {"hello", "big cat"} << 2 << 2 << false << QStringList {"2 Ngrams", "Rows"}
        << QList<QStringList> {{"big cat", "1"}} << "1 ngrams from 2 rows";
    QTest::newRow("a repeat within a row counts once; largest first, then fewer words, then text")
        << QStringList {"the cat the cat", "The CAT sat.", "a cat"} << 1 << 2 << false
        << QStringList {"Ngrams", "Words", "Rows"}
        << QList<QStringList> {{"cat", "1", "3"},     {"the", "1", "2"},    {"the cat", "2", "2"},
                               {"a", "1", "1"},       {"sat", "1", "1"},    {"a cat", "2", "1"},
                               {"cat sat", "2", "1"}, {"cat the", "2", "1"}}
        << "8 ngrams from 3 rows";
    QTest::newRow("case kept: The and the apart")
        << QStringList {"The end", "the end"} << 2 << 2 << true << QStringList {"2 Ngrams", "Rows"}
        << QList<QStringList> {{"The end", "1"}, {"the end", "1"}} << "2 ngrams from 2 rows";
    QTest::newRow("punctuation at the ends of words goes, inside stays; blanks of any kind split")
        << QStringList {"\"Don't\" stop,  now!", "don't\tstop - now"} << 3 << 3 << false
        << QStringList {"3 Ngrams", "Rows"} << QList<QStringList> {{"don't stop now", "2"}}
        << "1 ngrams from 2 rows";
    QTest::newRow("N above the words of every cell: nothing")
        << QStringList {"one two", ""} << 3 << 5 << false << QStringList {"Ngrams", "Words", "Rows"}
        << QList<QStringList>() << "0 ngrams from 2 rows";
}

void TestTransformNgram::counts()
{
    QFETCH(QStringList, texts);
    QFETCH(int, minimum);
    QFETCH(int, maximum);
    QFETCH(bool, caseSensitive);
    QFETCH(QStringList, header);
    QFETCH(QList<QStringList>, expected);
    QFETCH(QString, result);

    QList<QStringList> rows;
    for (const QString &text : texts)
        rows.append({text, "1"});
    const Run run = ngrams(rows, minimum, maximum, false, caseSensitive);
    QCOMPARE(run.output.header(), header);
    QCOMPARE(run.output.rows(), expected);
    QCOMPARE(run.result, result);
    QCOMPARE(run.warnings, QStringList());
}

void TestTransformNgram::sumsWithNonNumbers()
{
    QList<QStringList> rows {{"red fox", "2.5"}, {"red fox", "x"}, {"red", ""}, {"fox", "-1"}};
    for (int i = 0; i < 6; ++i)
        rows.append({"fox", QStringLiteral("n%1").arg(i)});
    const Run run = ngrams(rows, 1, 2, true);
    QCOMPARE(run.output.header(), (QStringList {"Ngrams", "Words", "Sum amount"}));
    // fox: 2.5 - 1, the texts adding nothing; red: 2.5 and an empty cell, which is no error.
    QCOMPARE(
        run.output.rows(),
        (QList<QStringList> {{"red", "1", "2.5"}, {"red fox", "2", "2.5"}, {"fox", "1", "1.5"}}));
    QCOMPARE(run.warnings,
             (QStringList {"'amount' non-numeric values:",
                           "Invalid numeric value 'x' for column 'amount' row 2",
                           "Invalid numeric value 'n0' for column 'amount' row 5",
                           "Invalid numeric value 'n1' for column 'amount' row 6",
                           "Invalid numeric value 'n2' for column 'amount' row 7",
                           "Invalid numeric value 'n3' for column 'amount' row 8", "+ 2 others"}));
    QCOMPARE(run.result, QString("3 ngrams from 10 rows"));
}

void TestTransformNgram::maximumBelowMinimum()
{
    const Run run = ngrams({{"a b c", "1"}}, 3, 2, false);
    QCOMPARE(run.warnings, QStringList {"Maximum N must be >= Minimum N"});
    QCOMPARE(run.output.rowCount(), 0);
    QCOMPARE(run.output.header(), (QStringList {"Ngrams", "Words", "Rows"}));
}

void TestTransformNgram::drilldownListsRowsOnce()
{
    const Run run = ngrams({{"to be or not to be", "1"}, {"be quick", "1"}, {"not now", "1"}}, 1, 1,
                           false, false, true);
    QCOMPARE(run.output.columnValues(0), (QStringList {"be", "not", "now", "or", "quick", "to"}));
    QCOMPARE(run.output.columnValues(1), (QStringList {"2", "2", "1", "1", "1", "1"}));
    QCOMPARE(run.output.sourceRowsOf(0, -1), (QList<int> {0, 1}));
    QCOMPARE(run.output.sourceRowsOf(1, 0), (QList<int> {0, 2}));
    QCOMPARE(run.output.sourceRowsOf(2, -1), (QList<int> {2}));
    QCOMPARE(run.output.sourceRowsOf(4, -1), (QList<int> {1}));
    QCOMPARE(run.output.sourceRowsOf(5, -1), (QList<int> {0}));

    const Run plain = ngrams({{"to be", "1"}}, 1, 1, false);
    QCOMPARE(plain.output.sourceRowsOf(0, -1), QList<int>());
}

QTEST_GUILESS_MAIN(TestTransformNgram)
#include "tst_transformngram.moc"
