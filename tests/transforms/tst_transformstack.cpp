#include "graph/node.h"
#include "testutil.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformcross.h"
#include "transforms/transformstack.h"

#include <QApplication>
#include <QtTest>

// Stack and Cross, the two transforms that take any number of inputs.
class TestTransformStack : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void stack_data();
    void stack();
    void stackKeepsTopIds();
    void separatorsTakeVariablesOfNextInput();
    void repeatedNamesWarn();
    void singleInputIsCopied();
    void cross();
    void crossLastInputVariesFastest();
    void crossWithEmptyInput();
    void crossOverflow_data();
    void crossOverflow();

private:
    Node *m_people = nullptr; // id, name: two rows
    Node *m_ages = nullptr; // name, age: one row
    Node *m_other = nullptr; // x: one row
};

void TestTransformStack::init()
{
    m_people = makeDataNode(makeDataset({{"id", "name"}, {"1", "Ann"}, {"2", "Bob"}}));
    m_ages = makeDataNode(makeDataset({{"name", "age"}, {"Cy", "30"}}));
    m_other = makeDataNode(makeDataset({{"x"}, {"z"}}));
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

void TestTransformStack::separatorsTakeVariablesOfNextInput()
{
    TransformStack stack;
    stack.createParameters({m_people, m_ages, m_people}, false);
    stack.parameter("Add_Separators")->setValue(true);
    stack.parameter("User_Defined_Row_Value")->setValue(QStringLiteral("-- $(name) $(2) --"));
    const Dataset output = runTransform(stack, {m_people, m_ages, m_people});
    QCOMPARE(output.rows(),
             (QList<QStringList> {{"1", "Ann", ""},
                                  {"2", "Bob", ""},
                                  {"-- Cy 30 --", "-- Cy 30 --", "-- Cy 30 --"},
                                  {"", "Cy", "30"},
                                  {"-- Ann Ann --", "-- Ann Ann --", "-- Ann Ann --"},
                                  {"1", "Ann", ""},
                                  {"2", "Bob", ""}}));
}

void TestTransformStack::repeatedNamesWarn()
{
    Node *twice = makeDataNode(makeDataset({{"id", "id", "name"}, {"7", "8", "Dee"}}));
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

    TransformCross cross;
    QCOMPARE(runTransform(cross, {m_people}).rows(), m_people->dataset()->rows());
    QCOMPARE(cross.result(), QString("No changes"));
}

void TestTransformStack::cross()
{
    Node *letters = makeDataNode(makeDataset({{"b", "c"}, {"x", "y"}, {"p", "q"}, {"r", "s"}}));
    TransformCross cross;
    const Dataset output = runTransform(cross, {m_people, letters});
    QCOMPARE(output.header(), QStringList({"id", "name", "b", "c"}));
    QCOMPARE(output.rows(),
             (QList<QStringList> {{"1", "Ann", "x", "y"},
                                  {"1", "Ann", "p", "q"},
                                  {"1", "Ann", "r", "s"},
                                  {"2", "Bob", "x", "y"},
                                  {"2", "Bob", "p", "q"},
                                  {"2", "Bob", "r", "s"}}));
    QCOMPARE(output.columnIds(),
             m_people->dataset()->columnIds() + letters->dataset()->columnIds());
    QCOMPARE(cross.result(), QString("Crossed 2 inputs"));
    delete letters;
}

void TestTransformStack::crossLastInputVariesFastest()
{
    Node *bits = makeDataNode(makeDataset({{"0"}, {"1"}}, false));
    TransformCross cross;
    const Dataset output = runTransform(cross, {m_people, bits, bits});
    QVERIFY(output.hasHeader());
    QCOMPARE(output.columnValues(0), QStringList({"1", "1", "1", "1", "2", "2", "2", "2"}));
    QCOMPARE(output.columnValues(2), QStringList({"0", "0", "1", "1", "0", "0", "1", "1"}));
    QCOMPARE(output.columnValues(3), QStringList({"0", "1", "0", "1", "0", "1", "0", "1"}));
    QCOMPARE(output.header(), QStringList({"id", "name", "1", "1"}));
    QCOMPARE(cross.result(), QString("Crossed 3 inputs"));

    // Without any header the output has none.
    const Dataset plain = runTransform(cross, {bits, bits});
    QVERIFY(!plain.hasHeader());
    QCOMPARE(plain.rowCount(), 4);
    delete bits;
}

void TestTransformStack::crossWithEmptyInput()
{
    Node *empty = makeDataNode(makeDataset({{"e"}}));
    TransformCross cross;
    const Dataset output = runTransform(cross, {m_people, empty});
    QCOMPARE(output.rowCount(), 0);
    QCOMPARE(output.header(), QStringList({"id", "name", "e"}));
    QCOMPARE(cross.result(), QString("Crossed 2 inputs"));
    delete empty;
}

void TestTransformStack::crossOverflow_data()
{
    QTest::addColumn<int>("rows1");
    QTest::addColumn<int>("rows2");
    QTest::addColumn<bool>("tooMany");

    // 2^31 turns negative; 2^32 wraps to exactly zero, which the sign test cannot see.
    QTest::newRow("2^31") << 65536 << 32768 << true;
    QTest::newRow("2^32") << 65536 << 65536 << false;
}

void TestTransformStack::crossOverflow()
{
    QFETCH(int, rows1);
    QFETCH(int, rows2);
    QFETCH(bool, tooMany);

    Dataset first;
    first.setSize(rows1, 1);
    Dataset second;
    second.setSize(rows2, 1);
    Node *a = makeDataNode(first);
    Node *b = makeDataNode(second);
    TransformCross cross;
    const Dataset output = runTransform(cross, {a, b});
    QCOMPARE(output.rowCount(), 0);
    QCOMPARE(cross.result(), tooMany ? QString("Too many rows") : QString("Crossed 2 inputs"));
    QCOMPARE(cross.warnings(), tooMany ? QStringList("Too many rows") : QStringList());
    delete a;
    delete b;
}

TABULON_TEST_MAIN(TestTransformStack)
#include "tst_transformstack.moc"
