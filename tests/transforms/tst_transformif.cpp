#include "data/valueinterpretation.h"
#include "testdata.h"
#include "transformfixtures.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformif.h"

#include <QCoreApplication>
#include <QtTest>

// If: a new column whose value comes from the first branch whose conditions hold.
class TestTransformIf : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void branches_data();
    void branches();
    void ifWarnsWhenAllValuesEmpty();
    void ifNamesNewColumnWithoutId();
    void termOverEveryColumn();
    void noBranchesGiveElse();
    void caseOption();
    void withoutHeaderNamesNoColumn();

private:
    ColumnId id(int c) const { return m_input->dataset()->columnId(c); }
    // The values of the new column for the branches given.
    QStringList run(TransformIf &transform, const QList<QList<FilterTerm>> &branches,
                    const QStringList &thenValues, const QString &elseValue);

    DataSource *m_input = nullptr;
};

void TestTransformIf::initTestCase()
{
    setDateFormats(defaultDateFormats(true));
}

void TestTransformIf::init()
{
    m_input = makeDataSource(conditionInput());
}

void TestTransformIf::cleanup()
{
    delete m_input;
    clearComparisonCaches();
}

QStringList TestTransformIf::run(TransformIf &transform, const QList<QList<FilterTerm>> &branches,
                                 const QStringList &thenValues, const QString &elseValue)
{
    IfTerms conditions;
    for (int b = 0; b < branches.size(); ++b)
        conditions.branches.append({branches.at(b), thenValues.at(b)});
    conditions.elseValue = elseValue;
    transform.parameter("If")->setIfTerms(conditions);
    const Dataset output = runTransform(transform, {m_input});
    return output.columnValues(output.lastColumn());
}

void TestTransformIf::branches_data()
{
    QTest::addColumn<QList<TermSpec>>("branchTerms");
    QTest::addColumn<QStringList>("thenValues");
    QTest::addColumn<QString>("elseValue");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("result");

    using Op = ComparisonOperator;
    // As in Filter, "abc" against a number compares as text.
    QTest::newRow("numbers and a text")
        << QList<TermSpec> {{term(1, Op::GreaterThan, "1000")}} << QStringList {"big"} << "small"
        << QStringList {"small", "small", "big", "big"}
        << "2 match(es) IF/ELSE IF, 2 match(es) ELSE";
    QTest::newRow("variables in both values")
        << QList<TermSpec> {{term(0, Op::EqualTo, "BOB")}} << QStringList {"$(name)!"} << "$(4)"
        << QStringList {"x", "bob!", "abc", "Abc"} << "1 match(es) IF/ELSE IF, 3 match(es) ELSE";
    QTest::newRow("dates") << QList<TermSpec> {{term(2, Op::LessThan, "1/2/2020")}}
                           << QStringList {"early"} << "" << QStringList {"", "", "early", "early"}
                           << "2 match(es) IF/ELSE IF, 2 match(es) ELSE";
    QTest::newRow("terms of a branch all hold")
        << QList<TermSpec> {{term(1, Op::GreaterThanOrEqual, "500"), term(3, Op::IsEmpty, "")}}
        << QStringList {"yes"} << "no" << QStringList {"no", "yes", "no", "no"}
        << "1 match(es) IF/ELSE IF, 3 match(es) ELSE";
    QTest::newRow("first branch wins")
        << QList<TermSpec> {{term(0, Op::Contains, "a")}, {term(1, Op::GreaterThan, "0")}}
        << QStringList {"A", "B"} << "C" << QStringList {"A", "B", "A", "A"}
        << "4 match(es) IF/ELSE IF, 0 match(es) ELSE";
    QTest::newRow("removed column never holds")
        << QList<TermSpec> {{term(-2, Op::IsNotEmpty, "")}} << QStringList {"then"} << "else"
        << QStringList {"else", "else", "else", "else"}
        << "0 match(es) IF/ELSE IF, 4 match(es) ELSE";
}

void TestTransformIf::branches()
{
    QFETCH(QList<TermSpec>, branchTerms);
    QFETCH(QStringList, thenValues);
    QFETCH(QString, elseValue);
    QFETCH(QStringList, expected);
    QFETCH(QString, result);

    TransformIf transform;
    transform.createParameters({m_input}, false);
    IfTerms conditions;
    for (int b = 0; b < branchTerms.size(); ++b)
        conditions.branches.append(
            {makeTerms(branchTerms.at(b), *m_input->dataset()), thenValues.at(b)});
    conditions.elseValue = elseValue;
    transform.parameter("If")->setIfTerms(conditions);

    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.columnCount(), 5);
    QCOMPARE(output.columnValues(4), expected);
    QCOMPARE(output.columnValues(0), QStringList({"Anna", "bob", "Carl", "dave"}));
    QCOMPARE(transform.result(), result);
    QVERIFY(transform.warnings().isEmpty());
}

void TestTransformIf::ifWarnsWhenAllValuesEmpty()
{
    TransformIf transform;
    transform.createParameters({m_input}, false);
    IfTerms conditions;
    conditions.branches.append(
        {makeTerms({term(0, ComparisonOperator::EqualTo, "bob")}, *m_input->dataset()), ""});
    transform.parameter("If")->setIfTerms(conditions);

    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(transform.warnings(), QStringList {"THEN and ELSE empty"});
    QCOMPARE(output.columnValues(4), QStringList({"", "", "", ""}));
    QCOMPARE(transform.result(), QString("1 match(es) IF/ELSE IF, 3 match(es) ELSE"));
}

void TestTransformIf::ifNamesNewColumnWithoutId()
{
    TransformIf transform;
    transform.createParameters({m_input}, false);
    transform.parameter("New_Name")->setValue(QString("Size"));
    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.header(), QStringList({"name", "amount", "date", "note", "Size"}));
    QVERIFY(output.columnId(4).isNull());
    QCOMPARE(output.columnId(0), id(0));
    // Untouched rows keep their cells shared with the input.
    QCOMPARE(output.cell(2, 0).constData(), m_input->dataset()->cell(2, 0).constData());
}

void TestTransformIf::termOverEveryColumn()
{
    TransformIf transform;
    transform.createParameters({m_input}, false);
    const Dataset &data = *m_input->dataset();
    // The term holds only when it holds for every cell of the row: one cell equal to "abc"
    // (in any case) is enough to fail it.
    QCOMPARE(run(transform, {makeTerms({term(-1, ComparisonOperator::NotEqualTo, "ABC")}, data)},
                 {"all"}, "some"),
             QStringList({"all", "all", "some", "some"}));
    QCOMPARE(run(transform, {makeTerms({term(-1, ComparisonOperator::IsNotEmpty, "")}, data)},
                 {"full"}, "gap"),
             QStringList({"full", "gap", "full", "full"}));
}

void TestTransformIf::noBranchesGiveElse()
{
    TransformIf transform;
    transform.createParameters({m_input}, false);
    QCOMPARE(run(transform, {}, {}, "$(name)-$(2)"),
             QStringList({"Anna-600", "bob-500", "Carl-1200.5", "dave-abc"}));
    QCOMPARE(transform.result(), QString("0 match(es) IF/ELSE IF, 4 match(es) ELSE"));
    QCOMPARE(transform.warnings(), QStringList("1 option not set ('If')"));
}

void TestTransformIf::caseOption()
{
    TransformIf transform;
    transform.createParameters({m_input}, false);
    const QList<FilterTerm> terms
        = makeTerms({term(3, ComparisonOperator::EqualTo, "abc")}, *m_input->dataset());
    QCOMPARE(run(transform, {terms}, {"yes"}, "no"), QStringList({"no", "no", "yes", "yes"}));
    transform.parameter("Case_Sensitive")->setValue(true);
    QCOMPARE(run(transform, {terms}, {"yes"}, "no"), QStringList({"no", "no", "yes", "no"}));
}

void TestTransformIf::withoutHeaderNamesNoColumn()
{
    QScopedPointer<DataSource> plain(makeDataSource(makeDataset({{"1", "a"}, {"2", "b"}}, false)));
    TransformIf transform;
    transform.createParameters({plain.data()}, false);
    transform.parameter("New_Name")->setValue(QString("Size"));
    IfTerms conditions;
    conditions.branches.append(
        {makeTerms({term(1, ComparisonOperator::EqualTo, "b")}, *plain->dataset()), "yes"});
    transform.parameter("If")->setIfTerms(conditions);
    const Dataset output = runTransform(transform, {plain.data()});
    // Naming the new column would turn the other columns' numbers into names.
    QVERIFY(!output.hasHeader());
    QCOMPARE(output.rows(), (QList<QStringList> {{"1", "a", ""}, {"2", "b", "yes"}}));
}

QTEST_GUILESS_MAIN(TestTransformIf)
#include "tst_transformif.moc"
