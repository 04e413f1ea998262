#include "data/valueinterpretation.h"
#include "testdata.h"
#include "transformfixtures.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformfilter.h"

#include <QCoreApplication>
#include <QtTest>

// Filter: rows kept or removed by conditions on their cells.
class TestTransformFilter : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void filter_data();
    void filter();
    void filterDisabled();
    void filterEmptyInputKeepsColumns();
    void filterKeepsHeaderAndIds();

private:
    QStringList names(const Dataset &dataset) const { return dataset.columnValues(0); }

    DataSource *m_input = nullptr;
};

void TestTransformFilter::initTestCase()
{
    setDateFormats(defaultDateFormats(true));
}

void TestTransformFilter::init()
{
    m_input = makeDataSource(conditionInput());
}

void TestTransformFilter::cleanup()
{
    delete m_input;
    clearComparisonCaches();
}

void TestTransformFilter::filter_data()
{
    QTest::addColumn<TermSpec>("terms");
    QTest::addColumn<bool>("keep");
    QTest::addColumn<bool>("matchAny");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("result");

    using Op = ComparisonOperator;
    const QStringList all {"Anna", "bob", "Carl", "dave"};

    // "abc" is no number, so that pair compares as text, and "abc" > "500".
    QTest::newRow("greater than, numbers and a text")
        << TermSpec {term(1, Op::GreaterThan, "500")} << true << false << false
        << QStringList {"Anna", "Carl", "dave"} << "1 row removed";
    QTest::newRow("equal as numbers") << TermSpec {term(1, Op::EqualTo, "1200.50")} << true << false
                                      << false << QStringList {"Carl"} << "3 rows removed";
    QTest::newRow("dates compared as dates")
        << TermSpec {term(2, Op::GreaterThan, "1/2/2020")} << true << false << false
        << QStringList {"Anna"} << "3 rows removed";
    QTest::newRow("dates less or equal")
        << TermSpec {term(2, Op::LessThanOrEqual, "1/2/2020")} << true << false << false
        << QStringList {"bob", "Carl", "dave"} << "1 row removed";
    QTest::newRow("contains, case insensitive")
        << TermSpec {term(3, Op::Contains, "abc")} << true << false << false
        << QStringList {"Carl", "dave"} << "2 rows removed";
    QTest::newRow("contains, case sensitive")
        << TermSpec {term(3, Op::Contains, "abc")} << true << false << true << QStringList {"Carl"}
        << "3 rows removed";
    QTest::newRow("empty value dropped")
        << TermSpec {term(3, Op::Contains, "")} << true << false << false << all << "No changes";
    QTest::newRow("equal to empty tests for empty")
        << TermSpec {term(3, Op::EqualTo, "")} << true << false << false << QStringList {"bob"}
        << "3 rows removed";
    QTest::newRow("remove matching") << TermSpec {term(1, Op::GreaterThan, "500")} << false << false
                                     << false << QStringList {"bob"} << "3 rows removed";
    QTest::newRow("remove with no usable term keeps all")
        << TermSpec {term(3, Op::StartsWith, "")} << false << false << false << all << "No changes";
    QTest::newRow("every column must match")
        << TermSpec {term(-1, Op::IsNotEmpty, "")} << true << false << false
        << QStringList {"Anna", "Carl", "dave"} << "1 row removed";
    QTest::newRow("all terms") << TermSpec {term(1, Op::GreaterThan, "500"),
                                            term(0, Op::StartsWith, "c")}
                               << true << false << false << QStringList {"Carl"}
                               << "3 rows removed";
    QTest::newRow("any term") << TermSpec {term(0, Op::EqualTo, "BOB"), term(3, Op::EqualTo, "x")}
                              << true << true << false << QStringList {"Anna", "bob"}
                              << "2 rows removed";
    QTest::newRow("regex, case sensitive")
        << TermSpec {term(0, Op::MatchesRegex, "^[A-Z]")} << true << false << true
        << QStringList {"Anna", "Carl"} << "2 rows removed";
    // The value is judged empty before the row's cells are put in: bob's empty note then
    // makes Contains "" hold.
    QTest::newRow("column variable") << TermSpec {term(0, Op::Contains, "$(note)")} << true << false
                                     << false << QStringList {"bob"} << "3 rows removed";
    QTest::newRow("column variable by number")
        << TermSpec {term(3, Op::EqualTo, "$(1)")} << true << true << false << QStringList {}
        << "4 rows removed";
    QTest::newRow("removed column left out of any")
        << TermSpec {term(-2, Op::IsNotEmpty, ""), term(0, Op::EqualTo, "anna")} << true << true
        << false << QStringList {"Anna"} << "3 rows removed";
    QTest::newRow("term over no column never holds")
        << TermSpec {term(-2, Op::IsNotEmpty, "")} << true << false << false << QStringList {}
        << "4 rows removed";
}

void TestTransformFilter::filter()
{
    QFETCH(TermSpec, terms);
    QFETCH(bool, keep);
    QFETCH(bool, matchAny);
    QFETCH(bool, caseSensitive);
    QFETCH(QStringList, expected);
    QFETCH(QString, result);

    TransformFilter transform;
    transform.createParameters({m_input}, false);
    FilterTerms filter;
    filter.keep = keep;
    filter.matchAny = matchAny;
    filter.terms = makeTerms(terms, *m_input->dataset());
    transform.parameter("Columns")->setFilterTerms(filter);
    transform.parameter("Case_Sensitive")->setValue(caseSensitive);

    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(names(output), expected);
    QCOMPARE(output.columnCount(), 4);
    QCOMPARE(transform.result(), result);
    QVERIFY(transform.warnings().isEmpty());
}

void TestTransformFilter::filterDisabled()
{
    TransformFilter transform;
    transform.createParameters({m_input}, false);
    FilterTerms filter;
    filter.terms = makeTerms({term(0, ComparisonOperator::EqualTo, "bob")}, *m_input->dataset());
    transform.parameter("Columns")->setFilterTerms(filter);
    transform.parameter("Disable")->setValue(true);

    const Dataset output = runTransform(transform, {m_input});
    QVERIFY(output.equals(*m_input->dataset()));
    QCOMPARE(transform.warnings(), QStringList {"Filtering is disabled"});
}

void TestTransformFilter::filterEmptyInputKeepsColumns()
{
    QScopedPointer<DataSource> empty(makeDataSource(makeDataset({{"a", "b"}})));
    TransformFilter transform;
    transform.createParameters({empty.data()}, false);
    FilterTerms filter;
    filter.terms = makeTerms({term(0, ComparisonOperator::EqualTo, "x")}, *empty->dataset());
    transform.parameter("Columns")->setFilterTerms(filter);

    const Dataset output = runTransform(transform, {empty.data()});
    QCOMPARE(output.columnCount(), 2);
    QCOMPARE(output.rowCount(), 0);
    QCOMPARE(output.header(), QStringList({"a", "b"}));
    QCOMPARE(transform.result(), QString("No changes"));
}

void TestTransformFilter::filterKeepsHeaderAndIds()
{
    TransformFilter transform;
    transform.createParameters({m_input}, false);
    FilterTerms filter;
    filter.terms = makeTerms({term(0, ComparisonOperator::EqualTo, "dave")}, *m_input->dataset());
    transform.parameter("Columns")->setFilterTerms(filter);

    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.header(), m_input->dataset()->header());
    QCOMPARE(output.columnIds(), m_input->dataset()->columnIds());
    QCOMPARE(output.row(0), QStringList({"dave", "abc", "5/12/2019", "Abc"}));
    // Kept rows are the input's rows, not copies of them.
    QCOMPARE(output.cell(0, 3).constData(), m_input->dataset()->cell(3, 3).constData());
    QVERIFY(output.row(0).isSharedWith(m_input->dataset()->row(3)));
}

QTEST_GUILESS_MAIN(TestTransformFilter)
#include "tst_transformfilter.moc"
