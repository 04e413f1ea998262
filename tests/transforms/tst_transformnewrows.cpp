#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformnewrows.h"
#include "transforms/transformsequence.h"

#include <QCoreApplication>
#include <QtTest>

// New Rows and Sequence: the transforms that insert rows among the existing ones.
class TestTransformNewRows : public QObject
{
    Q_OBJECT

private slots:
    void newRows_data();
    void newRows();
    void sequence_data();
    void sequence();
    void sequenceOfDates();
    void sequenceUsesDateFormatsOnlyForDates();

private:
    static QStringList firstCells(const Dataset &data);
};

QStringList TestTransformNewRows::firstCells(const Dataset &data)
{
    QStringList rows;
    for (int r = 0; r < data.rowCount(); ++r)
        rows.append(data.row(r).join('|'));
    return rows;
}

using Options = QList<QPair<QString, QVariant>>;

void TestTransformNewRows::newRows_data()
{
    QTest::addColumn<Options>("options");
    QTest::addColumn<QStringList>("expected"); // rows joined by '|'
    QTest::addColumn<QString>("result");
    QTest::addColumn<QStringList>("warnings");

    QTest::newRow("blank below every row")
        << Options {} << QStringList {"a|2", "|", "b|0", "|", "c|x", "|", "d|1", "|"}
        << "4 rows added" << QStringList {};
    QTest::newRow("user defined above, with variables")
        << Options {{"Location_Name", "Above each row"},
                    {"As_Name", "User defined row(s)"},
                    {"User_Defined_Row_Value", "<$(name)>"},
                    {"For_Name", "Last row"}}
        << QStringList {"a|2", "b|0", "c|x", "<d>|<d>", "d|1"} << "1 row added" << QStringList {};
    QTest::newRow("copied, number from a column")
        << Options {{"Number_How_Name", "Set from a column"}, {"As_Name", "Copied row(s)"}}
        << QStringList {"a|2", "a|2", "a|2", "b|0", "c|x", "d|1", "d|1"} << "3 rows added"
        << QStringList {"1 value in column 'n' not a number of rows: no rows added"};
    QTest::newRow("first row, two")
        << Options {{"For_Name", "First row"}, {"Number_Const_Name", 2}}
        << QStringList {"a|2", "|", "|", "b|0", "c|x", "d|1"} << "2 rows added" << QStringList {};
    QTest::newRow("rows where equal, case insensitive")
        << Options {{"For_Name", "Rows where"},
                    {"Match_Column", 1},
                    {"Match_Type_Name", "=   Equal to"},
                    {"Match_Value_Name", "B"}}
        << QStringList {"a|2", "b|0", "|", "c|x", "d|1"} << "1 row added" << QStringList {};
    QTest::newRow("rows where equal, case sensitive")
        << Options {{"For_Name", "Rows where"},
                    {"Match_Column", 1},
                    {"Match_Type_Name", "=   Equal to"},
                    {"Match_Value_Name", "B"},
                    {"Match_Case_Sensitive", true}}
        << QStringList {"a|2", "b|0", "c|x", "d|1"} << "No changes" << QStringList {};
    // Greater than reads 2 and 1 as numbers, but x against 1 as text.
    QTest::newRow("rows where greater, in column n")
        << Options {{"For_Name", "Rows where"},
                    {"Match_Column", 2},
                    {"Match_Type_Name", ">   Greater than"},
                    {"Match_Value_Name", "1"}}
        << QStringList {"a|2", "|", "b|0", "c|x", "|", "d|1"} << "2 rows added" << QStringList {};
    // A value that names another column of the same row.
    QTest::newRow("rows where with a variable")
        << Options {{"For_Name", "Rows where"},
                    {"Match_Column", 1},
                    {"Match_Type_Name", "=   Equal to"},
                    {"Match_Value_Name", "$(n)"}}
        << QStringList {"a|2", "b|0", "c|x", "d|1"} << "No changes" << QStringList {};
    // Over every column (<Any>) the term must hold in each of them.
    QTest::newRow("rows where in every column")
        << Options {{"For_Name", "Rows where"},
                    {"Match_Type_Name", "=   Equal to"},
                    {"Match_Value_Name", "b"}}
        << QStringList {"a|2", "b|0", "c|x", "d|1"} << "No changes" << QStringList {};
    QTest::newRow("rows where empty in every column")
        << Options {{"For_Name", "Rows where"},
                    {"Match_Type_Name", QString::fromUtf8("\u2205   Is empty")}}
        << QStringList {"a|2", "b|0", "c|x", "d|1"} << "No changes" << QStringList {};
    // Contains with no value is no condition at all.
    QTest::newRow("rows where without a value")
        << Options {{"For_Name", "Rows where"}, {"Number_Const_Name", 1}}
        << QStringList {"a|2", "|", "b|0", "|", "c|x", "|", "d|1", "|"} << "4 rows added"
        << QStringList {};
    QTest::newRow("none") << Options {{"Number_Const_Name", 0}}
                          << QStringList {"a|2", "b|0", "c|x", "d|1"} << "No changes"
                          << QStringList {};
}

void TestTransformNewRows::newRows()
{
    QFETCH(Options, options);
    QFETCH(QStringList, expected);
    QFETCH(QString, result);
    QFETCH(QStringList, warnings);

    QScopedPointer<DataSource> input(
        makeDataSource(makeDataset({{"name", "n"}, {"a", "2"}, {"b", "0"}, {"c", "x"}, {"d", "1"}})));
    TransformNewRows transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Number_Col_Name")->setColumnId(input->dataset()->columnId(1));
    transform.parameter("Location_Name")->setValue(QString("Below each row"));
    for (const auto &option : options) {
        if (option.first == "Match_Column")
            transform.parameter("Match_Column_Name")
                ->setColumnId(input->dataset()->columnId(option.second.toInt() - 1));
        else
            transform.parameter(option.first)->setValue(option.second);
    }
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(firstCells(output), expected);
    QCOMPARE(output.header(), QStringList({"name", "n"}));
    QCOMPARE(transform.result(), result);
    QCOMPARE(transform.warnings(), warnings);
}

void TestTransformNewRows::sequence_data()
{
    QTest::addColumn<Options>("options");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("result");

    const QString warning = "2 values in column 'id' not an integer, placed at the end";
    QTest::newRow("ascending, blank")
        << Options {} << QStringList {"1|a", "2|", "3|c", "4|", "5|e", "x|X", "|E"}
        << "2 rows added";
    QTest::newRow("descending") << Options {{"Order", "Descending"}}
                                << QStringList {"5|e", "4|", "3|c", "2|", "1|a", "x|X", "|E"}
                                << "2 rows added";
    QTest::newRow("copy from above")
        << Options {{"As_Name", "Copy from above"}}
        << QStringList {"1|a", "2|a", "3|c", "4|c", "5|e", "x|X", "|E"} << "2 rows added";
    QTest::newRow("copy from below, descending")
        << Options {{"As_Name", "Copy from below"}, {"Order", "Descending"}}
        << QStringList {"5|e", "4|c", "3|c", "2|a", "1|a", "x|X", "|E"} << "2 rows added";
    QTest::newRow("user defined range and value")
        << Options {{"Minimum_Missing_type", "User defined"},
                    {"User_Define_Minimum_Missing_Int", -1},
                    {"Maximum_Missing_type", "User defined"},
                    {"User_Define_Maximum_Missing_Int", 6},
                    {"As_Name", "User defined"},
                    {"User_Defined_Row_Value", "?"}}
        << QStringList {"-1|?", "0|?", "1|a", "2|?", "3|c", "4|?", "5|e", "6|?", "x|X", "|E"}
        << "5 rows added";
    // Rows outside a narrower range stay, in order, around it.
    QTest::newRow("range inside the data, descending")
        << Options {{"Minimum_Missing_type", "User defined"},
                    {"User_Define_Minimum_Missing_Int", 2},
                    {"Maximum_Missing_type", "User defined"},
                    {"User_Define_Maximum_Missing_Int", 3},
                    {"Order", "Descending"}}
        << QStringList {"5|e", "3|c", "2|", "1|a", "x|X", "|E"} << "1 row added";
    QTest::newRow("minimum above maximum only sorts")
        << Options {{"Minimum_Missing_type", "User defined"},
                    {"User_Define_Minimum_Missing_Int", 9}}
        << QStringList {"1|a", "3|c", "5|e", "x|X", "|E"} << "Sorted";
}

void TestTransformNewRows::sequence()
{
    QFETCH(Options, options);
    QFETCH(QStringList, expected);
    QFETCH(QString, result);

    QScopedPointer<DataSource> input(makeDataSource(
        makeDataset({{"id", "v"}, {"3", "c"}, {"x", "X"}, {"1", "a"}, {"", "E"}, {"5", "e"}})));
    TransformSequence transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Col_Name")->setColumnId(input->dataset()->columnId(0));
    for (const auto &option : options)
        transform.parameter(option.first)->setValue(option.second);
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(firstCells(output), expected);
    QCOMPARE(transform.result(), result);
    QCOMPARE(transform.warnings(),
             QStringList({"2 values in column 'id' not an integer, placed at the end"}));
}

void TestTransformNewRows::sequenceOfDates()
{
    // Duplicates stay; new dates are written as the column writes them, zeros included.
    QScopedPointer<DataSource> input(makeDataSource(makeDataset(
        {{"day", "v"}, {"2024-02-02", "b"}, {"2024-01-30", "a"}, {"2024-02-02", "c"}})));
    TransformSequence transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("How_Name")->setValue(QString("Missing dates"));
    transform.parameter("Col_Name")->setColumnId(input->dataset()->columnId(0));
    transform.parameter("Maximum_Missing_type")->setValue(QString("User defined"));
    transform.parameter("User_Define_Maximum_Missing_Date")->setValue(QDate(2024, 2, 3));
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(firstCells(output),
             QStringList({"2024-01-30|a", "2024-01-31|", "2024-02-01|", "2024-02-02|b",
                          "2024-02-02|c", "2024-02-03|"}));
    QCOMPARE(transform.result(), QString("3 rows added"));
    QVERIFY(transform.warnings().isEmpty());

    // A column without dates is left alone.
    QScopedPointer<DataSource> words(makeDataSource(makeDataset({{"w"}, {"x"}, {"y"}})));
    transform.createParameters({words.data()}, false);
    transform.parameter("How_Name")->setValue(QString("Missing dates"));
    const Dataset same = runTransform(transform, {words.data()});
    QVERIFY(same.equals(*words->dataset()));
    QCOMPARE(transform.warnings(), QStringList({"No dates found in column 'w'"}));
    QCOMPARE(transform.result(), QString("No changes"));
}

void TestTransformNewRows::sequenceUsesDateFormatsOnlyForDates()
{
    TransformSequence transform;
    transform.createParameters({}, false);
    QVERIFY(!transform.usesDateFormats());
    transform.parameter("How_Name")->setValue(QString("Missing dates"));
    QVERIFY(transform.usesDateFormats());
    transform.parameter("Minimum_Missing_type")->setValue(QString("User defined"));
    QStringList enabled;
    for (const ParameterState &state : transform.parameterStates()) {
        if (state.enabled)
            enabled.append(state.key);
    }
    QCOMPARE(enabled, QStringList({"User_Define_Minimum_Missing_Date"}));
}

QTEST_GUILESS_MAIN(TestTransformNewRows)
#include "tst_transformnewrows.moc"
