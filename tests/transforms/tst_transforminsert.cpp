#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transforminsert.h"
#include "transforms/transformsubstitute.h"

#include <QCoreApplication>
#include <QtTest>

// The transforms that write column variables into cells: Insert and Substitute.
class TestTransformInsert : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void insert_data();
    void insert();
    void emptyInsertChangesNothing();
    void substitute_data();
    void substitute();
    void substituteAmbiguousNames();
    void substituteWithoutHeaderAndRows();
    void optionKeysInOrder();

private:
    DataSource *m_input = nullptr;
};

void TestTransformInsert::init()
{
    m_input = makeDataSource(makeDataset(
        {{"id", "name", "Total", "Total Cost"}, {"1", "ann", "10", "99"}, {"2", "", "20", "88"}}));
}

void TestTransformInsert::cleanup()
{
    delete m_input;
}

void TestTransformInsert::insert_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("with");
    QTest::addColumn<QList<QStringList>>("expected");
    QTest::addColumn<QString>("result");

    QTest::newRow("start") << "x-"
                           << "Start" << QList<QStringList> {{"x-1", "x-ann"}, {"x-2", "x-"}}
                           << "4 changed";
    QTest::newRow("end") << "-x"
                         << "End" << QList<QStringList> {{"1-x", "ann-x"}, {"2-x", "-x"}}
                         << "4 changed";
    // Column 1 is rewritten first; column 2 still sees its input value through $(1).
    QTest::newRow("variables") << "$(1)/$(Total Cost)/$(Total):"
                               << "Start"
                               << QList<QStringList> {{"1/99/10:1", "1/99/10:ann"},
                                                      {"2/88/20:2", "2/88/20:"}}
                               << "4 changed";
    QTest::newRow("missing column stays literal")
        << "$(nope)$(9)"
        << "End"
        << QList<QStringList> {{"1$(nope)$(9)", "ann$(nope)$(9)"}, {"2$(nope)$(9)", "$(nope)$(9)"}}
        << "4 changed";
    QTest::newRow("variable of an empty cell")
        << "$(name)"
        << "End" << QList<QStringList> {{"1ann", "annann"}, {"2", ""}} << "2 changed";
}

void TestTransformInsert::insert()
{
    QFETCH(QString, text);
    QFETCH(QString, with);
    QFETCH(QList<QStringList>, expected);
    QFETCH(QString, result);

    TransformInsert transform;
    transform.createParameters({m_input}, false);
    const Dataset *source = m_input->dataset();
    transform.parameter("Columns")->setColumns({source->columnId(1), source->columnId(0)});
    transform.parameter("Insert")->setValue(text);
    transform.parameter("With")->setValue(with);
    const Dataset output = runTransform(transform, {m_input});
    for (int r = 0; r < 2; ++r) {
        QCOMPARE(output.rowValues(r, {0, 1}), expected.at(r));
        QCOMPARE(output.rowValues(r, {2, 3}), source->rowValues(r, {2, 3}));
    }
    QCOMPARE(transform.result(), result);
    QVERIFY(transform.warnings().isEmpty());
}

void TestTransformInsert::emptyInsertChangesNothing()
{
    TransformInsert transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Columns")->setColumns({m_input->dataset()->columnId(0)});
    const Dataset output = runTransform(transform, {m_input});
    QVERIFY(output.equals(*m_input->dataset()));
    QCOMPARE(transform.result(), QString("No changes"));
    QCOMPARE(transform.warnings(), QStringList({"1 option not set ('Insert')"}));
}

void TestTransformInsert::substitute_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("names and numbers") << "#$(1) $(name): $(Total Cost) of $(Total) $(3)"
                                       << QStringList {"#1 ann: 99 of 10 10", "#2 : 88 of 20 20"};
    QTest::newRow("trimmed name") << "$( name )$(name )"
                                  << QStringList {"$( name )$(name )", "$( name )$(name )"};
    QTest::newRow("unknown stays")
        << "$(x) $(5) $(0)" << QStringList {"$(x) $(5) $(0)", "$(x) $(5) $(0)"};
    QTest::newRow("plain text") << "fixed" << QStringList {"fixed", "fixed"};
}

void TestTransformInsert::substitute()
{
    QFETCH(QString, script);
    QFETCH(QStringList, expected);

    TransformSubstitute transform;
    transform.createParameters({m_input}, false);
    transform.parameter("New_Name")->setValue(QString("Label"));
    transform.parameter("Script")->setValue(script);
    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.columnCount(), 5);
    QCOMPARE(output.header().last(), QString("Label"));
    QVERIFY(output.columnId(4).isNull());
    QCOMPARE(output.columnValues(4), expected);
    QCOMPARE(output.columnValues(1), m_input->dataset()->columnValues(1));
    QCOMPARE(transform.result(), QString("2 evaluated"));
    QVERIFY(transform.warnings().isEmpty());
}

void TestTransformInsert::substituteAmbiguousNames()
{
    // Names first: the column named "2" wins over column number 2 for $(2).
    QScopedPointer<DataSource> input(
        makeDataSource(makeDataset({{"a", "b", "a", "2", "b"}, {"1", "2", "3", "4", "5"}})));
    TransformSubstitute transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Script")->setValue(QString("$(b)$(a)$(2)$(3)"));
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(output.cell(0, 5), QString("2143"));
    QCOMPARE(transform.warnings(),
             QStringList({"Ambiguous column name(s): a, b, first column with name used"}));

    transform.parameter("Script")->setValue(QString("$(2)"));
    runTransform(transform, {input.data()});
    QVERIFY(transform.warnings().isEmpty());
}

void TestTransformInsert::substituteWithoutHeaderAndRows()
{
    QScopedPointer<DataSource> noHeader(makeDataSource(makeDataset({{"x", "y"}, {"z", "w"}}, false)));
    TransformSubstitute transform;
    transform.createParameters({noHeader.data()}, false);
    transform.parameter("Script")->setValue(QString("$(2)$(1)"));
    Dataset output = runTransform(transform, {noHeader.data()});
    QCOMPARE(output.columnValues(2), QStringList({"yx", "wz"}));
    QCOMPARE(transform.result(), QString("2 evaluated"));

    QScopedPointer<DataSource> empty(makeDataSource(makeDataset({{"a"}})));
    TransformSubstitute onEmpty;
    onEmpty.createParameters({empty.data()}, false);
    onEmpty.parameter("Script")->setValue(QString("$(a)"));
    output = runTransform(onEmpty, {empty.data()});
    QCOMPARE(output.columnCount(), 2);
    QCOMPARE(output.rowCount(), 0);
    QCOMPARE(onEmpty.result(), QString("0 evaluated"));
}

void TestTransformInsert::optionKeysInOrder()
{
    TransformInsert insert;
    insert.createParameters({}, false);
    TransformSubstitute substitute;
    substitute.createParameters({}, false);
    QStringList keys;
    for (const Parameter *p : insert.parameters() + substitute.parameters())
        keys.append(p->key());
    QCOMPARE(keys, QStringList({"Columns", "Insert", "With", "New_Name", "Script"}));
    QCOMPARE(substitute.parameter("Script")->type(), ParameterType::Script);
}

QTEST_GUILESS_MAIN(TestTransformInsert)
#include "tst_transforminsert.moc"
