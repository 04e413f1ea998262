#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformstack.h"

#include <QCoreApplication>
#include <QtTest>

// Stack: inputs one on top of another, their columns aligned by name or by number.
class TestTransformStack : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void stack_data();
    void stack();
    void stackKeepsTopIds();
    void separatorsAreTheValueInEveryCell();
    void rowsInPlaceStayShared();
    void longReportsAreCut();
    void repeatedNamesWarn();
    void singleInputIsCopied();

private:
    DataSource *m_people = nullptr; // id, name: two rows
    DataSource *m_ages = nullptr; // name, age: one row
    DataSource *m_other = nullptr; // x: one row
};

void TestTransformStack::init()
{
    m_people = makeDataSource(makeDataset({{"id", "name"}, {"1", "Ann"}, {"2", "Bob"}}));
    m_ages = makeDataSource(makeDataset({{"name", "age"}, {"Cy", "30"}}));
    m_other = makeDataSource(makeDataset({{"x"}, {"z"}}));
}

void TestTransformStack::cleanup()
{
    delete m_people;
    delete m_ages;
    delete m_other;
}

void TestTransformStack::stack_data()
{
    QTest::addColumn<QString>("align");
    QTest::addColumn<bool>("onlyFirst");
    QTest::addColumn<QStringList>("header");
    QTest::addColumn<QList<QStringList>>("rows");
    QTest::addColumn<QString>("information");
    QTest::addColumn<QString>("warning");

    const QList<QStringList> people {{"1", "Ann"}, {"2", "Bob"}};
    QTest::newRow("by name, union of columns")
        << "Header name" << false << QStringList {"id", "name", "age"}
        << QList<QStringList> {{"1", "Ann", ""}, {"2", "Bob", ""}, {"", "Cy", "30"}}
        << "Input 2 (1 row, 2 columns):\n"
           "Aligned 'name' (column 1) under 'name' (column 2)\n"
           "Added 'age' (column 2) from dataset 2\n"
           "No match for 'id' (column 1)"
        << "Input 1 (2 rows, 2 columns) has 1 column(s) less than the final dataset\n"
           "Input 2 (1 row, 2 columns) has 1 column(s) less than the final dataset\n";
    QTest::newRow("by name, only first columns")
        << "Header name" << true << QStringList {"id", "name"}
        << QList<QStringList> {{"1", "Ann"}, {"2", "Bob"}, {"", "Cy"}}
        << "Input 2 (1 row, 2 columns):\n"
           "Aligned 'name' (column 1) under 'name' (column 2)\n"
           "Ignored 'age' (column 2) from dataset 2\n"
           "No match for 'id' (column 1)"
        << "Input 2 (1 row, 2 columns) has 1 column(s) less than the final dataset\n";
    QTest::newRow("by number") << "Column number" << false << QStringList {"id", "name"}
                               << (people + QList<QStringList> {{"Cy", "30"}})
                               << "Input 2 (1 row, 2 columns):\n"
                                  "Aligned 'name' (column 1) under 'id' (column 1)\n"
                                  "Aligned 'age' (column 2) under 'name' (column 2)"
                               << "";
}

void TestTransformStack::stack()
{
    QFETCH(QString, align);
    QFETCH(bool, onlyFirst);
    QFETCH(QStringList, header);
    QFETCH(QList<QStringList>, rows);
    QFETCH(QString, information);
    QFETCH(QString, warning);

    TransformStack stack;
    stack.createParameters({m_people, m_ages}, false);
    stack.parameter("Align_Cols")->setValue(align);
    stack.parameter("Only_First_Cols")->setValue(onlyFirst);
    const Dataset output = runTransform(stack, {m_people, m_ages});
    QCOMPARE(output.header(), header);
    QCOMPARE(output.rows(), rows);
    QCOMPARE(stack.information(), QStringList(information));
    QCOMPARE(stack.warnings(), warning.isEmpty() ? QStringList() : QStringList(warning));
}

void TestTransformStack::stackKeepsTopIds()
{
    TransformStack stack;
    stack.createParameters({m_people, m_other}, false);
    const Dataset output = runTransform(stack, {m_people, m_other});
    QCOMPARE(output.columnCount(), 3);
    QCOMPARE(output.columnIds().mid(0, 2), m_people->dataset()->columnIds());
    QCOMPARE(output.columnId(2), ColumnId());
    QCOMPARE(output.row(2), QStringList({"", "", "z"}));

    // With only the top's columns and no shared name, the other input's rows are empty.
    stack.parameter("Only_First_Cols")->setValue(true);
    const Dataset narrow = runTransform(stack, {m_people, m_other});
    QCOMPARE(narrow.rows(), (QList<QStringList> {{"1", "Ann"}, {"2", "Bob"}, {"", ""}}));

    // By number, a narrower input leaves cells empty, a wider one is cut or widens.
    stack.parameter("Align_Cols")->setValue(QStringLiteral("Column number"));
    stack.parameter("Only_First_Cols")->setValue(false);
    const Dataset shortRows = runTransform(stack, {m_people, m_other});
    QCOMPARE(shortRows.row(2), QStringList({"z", ""}));
    QCOMPARE(stack.information(),
             QStringList("Input 2 (1 row, 1 column):\n"
                         "Aligned 'x' (column 1) under 'id' (column 1)\n"
                         "Not enough columns for 'name' (column 2)"));
    const Dataset wider = runTransform(stack, {m_other, m_people});
    QCOMPARE(wider.header(), QStringList({"x", "name"}));
    QCOMPARE(wider.rows(), (QList<QStringList> {{"z", ""}, {"1", "Ann"}, {"2", "Bob"}}));
    stack.parameter("Only_First_Cols")->setValue(true);
    const Dataset cut = runTransform(stack, {m_other, m_people});
    QCOMPARE(cut.rows(), (QList<QStringList> {{"z"}, {"1"}, {"2"}}));
    QCOMPARE(stack.information(),
             QStringList("Input 2 (2 rows, 2 columns):\n"
                         "Aligned 'id' (column 1) under 'x' (column 1)\n"
                         "Ignore last 1 columns in dataset 2"));
}

void TestTransformStack::separatorsAreTheValueInEveryCell()
{
    TransformStack stack;
    stack.createParameters({m_people, m_ages, m_people}, false);
    stack.parameter("Add_Separators")->setValue(true);
    stack.parameter("User_Defined_Row_Value")->setValue(QStringLiteral("-- $(name) --"));
    const Dataset output = runTransform(stack, {m_people, m_ages, m_people});
    // One separator before each input but the first, the value taken as it stands.
    QCOMPARE(output.rows(),
             (QList<QStringList> {{"1", "Ann", ""},
                                  {"2", "Bob", ""},
                                  {"-- $(name) --", "-- $(name) --", "-- $(name) --"},
                                  {"", "Cy", "30"},
                                  {"-- $(name) --", "-- $(name) --", "-- $(name) --"},
                                  {"1", "Ann", ""},
                                  {"2", "Bob", ""}}));
}

void TestTransformStack::rowsInPlaceStayShared()
{
    TransformStack stack;
    stack.createParameters({m_people, m_people}, false);
    const Dataset output = runTransform(stack, {m_people, m_people});
    QCOMPARE(output.rowCount(), 4);
    // An input whose columns all keep their places gives its rows as they are, not copies.
    QVERIFY(output.row(0).isSharedWith(m_people->dataset()->row(0)));
    QVERIFY(output.row(3).isSharedWith(m_people->dataset()->row(1)));
}

void TestTransformStack::longReportsAreCut()
{
    QList<QStringList> rows {{}, {}};
    for (int c = 0; c < 25; ++c) {
        rows[0].append(QStringLiteral("c%1").arg(c + 1));
        rows[1].append(QString::number(c));
    }
    QScopedPointer<DataSource> wide(makeDataSource(makeDataset(rows)));
    TransformStack stack;
    stack.createParameters({m_people, wide.data()}, false);
    const Dataset output = runTransform(stack, {m_people, wide.data()});
    QCOMPARE(output.columnCount(), 27);
    // 25 added columns and 2 without a match: the first 20 lines are listed.
    const QStringList lines = stack.information().value(0).split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 22);
    QCOMPARE(lines.at(0), QString("Input 2 (1 row, 25 columns):"));
    QCOMPARE(lines.at(20), QString("Added 'c20' (column 20) from dataset 2"));
    QCOMPARE(lines.at(21), QString("...etc"));
}

void TestTransformStack::repeatedNamesWarn()
{
    DataSource *twice = makeDataSource(makeDataset({{"id", "id", "name"}, {"7", "8", "Dee"}}));
    TransformStack stack;
    stack.createParameters({m_people, twice}, false);
    const Dataset output = runTransform(stack, {m_people, twice});
    // The second id has no partner left above, so it is added.
    QCOMPARE(output.header(), QStringList({"id", "name", "id"}));
    QCOMPARE(output.row(2), QStringList({"7", "Dee", "8"}));
    QCOMPARE(stack.warnings(),
             QStringList("2 column(s) named 'id' in input datatset 2\n"
                         "Input 1 (2 rows, 2 columns) has 1 column(s) less than the final "
                         "dataset\n"));
    delete twice;
}

void TestTransformStack::singleInputIsCopied()
{
    TransformStack stack;
    stack.createParameters({m_people}, false);
    const Dataset output = runTransform(stack, {m_people});
    QCOMPARE(output.rows(), m_people->dataset()->rows());
    QVERIFY(stack.warnings().isEmpty());
}

QTEST_GUILESS_MAIN(TestTransformStack)
#include "tst_transformstack.moc"
