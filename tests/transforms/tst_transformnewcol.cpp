#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformconcat.h"
#include "transforms/transformcopy.h"
#include "transforms/transformnewcol.h"
#include "transforms/transformrownum.h"
#include "transforms/transformstamp.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QtTest>

// The transforms that append columns or rows: New Col, Row Num, Copy Cols, Concat Cols, Stamp.
class TestTransformNewCol : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void newCol_data();
    void newCol();
    void rowNum_data();
    void rowNum();
    void rowNumReportsProgress();
    void copy_data();
    void copy();
    void concat_data();
    void concat();
    void concatNameOptionFollowsAutomaticName();
    void stampText_data();
    void stampText();
    void stampPositions_data();
    void stampPositions();
    void stampOnEmptyDatasetMakesOneCell();
    void stampNamesTheDocumentOfTheRun();
    void wrongInputCountGivesEmptyResult();

private:
    DataSource *m_input = nullptr;
    DataSource *m_plain = nullptr;
};

void TestTransformNewCol::init()
{
    m_input = makeDataSource(
        makeDataset({{"a", "b", "c"}, {"1", "x", ""}, {"2", "", " "}, {"3", "z", "w"}}));
    m_plain = makeDataSource(makeDataset({{"p", "q"}, {"r", "s"}}, false));
}

void TestTransformNewCol::cleanup()
{
    delete m_input;
    delete m_plain;
}

void TestTransformNewCol::newCol_data()
{
    QTest::addColumn<bool>("withHeader");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QStringList>("headers");
    QTest::addColumn<QStringList>("cells");

    QTest::newRow("named, filled") << true << "Source"
                                   << "file A" << QStringList {"a", "b", "c", "Source"}
                                   << QStringList {"file A", "file A", "file A"};
    QTest::newRow("empty value") << true << "Flag"
                                 << "" << QStringList {"a", "b", "c", "Flag"}
                                 << QStringList {"", "", ""};
    QTest::newRow("empty name shows its number")
        << true << ""
        << "v" << QStringList {"a", "b", "c", "4"} << QStringList {"v", "v", "v"};
    QTest::newRow("no header stays without one")
        << false << "Name"
        << "v" << QStringList {"1", "2", "3"} << QStringList {"v", "v"};
}

void TestTransformNewCol::newCol()
{
    QFETCH(bool, withHeader);
    QFETCH(QString, name);
    QFETCH(QString, value);
    QFETCH(QStringList, headers);
    QFETCH(QStringList, cells);

    DataSource *input = withHeader ? m_input : m_plain;
    TransformNewCol transform;
    transform.createParameters({input}, false);
    QCOMPARE(transform.parameter("New_Name")->toString(), QString("New Col"));
    transform.parameter("New_Name")->setValue(name);
    transform.parameter("New_Value")->setValue(value);
    const Dataset output = runTransform(transform, {input});

    QCOMPARE(output.headers(), headers);
    QCOMPARE(output.hasHeader(), withHeader);
    QCOMPARE(output.columnValues(output.lastColumn()), cells);
    QCOMPARE(output.rowCount(), input->dataset()->rowCount());
    QVERIFY(output.columnId(output.lastColumn()).isNull());
    for (int c = 0; c < input->dataset()->columnCount(); ++c) {
        QCOMPARE(output.columnId(c), input->dataset()->columnId(c));
        QCOMPARE(output.columnValues(c), input->dataset()->columnValues(c));
    }
    QCOMPARE(transform.result(), QString("1 col added"));
    // An empty name is an unset option; an empty value is a fine one.
    QCOMPARE(transform.warnings(),
             name.isEmpty() ? QStringList {"1 option not set ('New column name')"} : QStringList());
}

void TestTransformNewCol::rowNum_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("startAt");
    QTest::addColumn<int>("increment");
    QTest::addColumn<int>("every");
    QTest::addColumn<QStringList>("numbers");
    QTest::addColumn<QString>("result");

    QTest::newRow("defaults") << 3 << 1 << 1 << 1 << QStringList {"1", "2", "3"}
                              << "3 rows numbered";
    QTest::newRow("from zero by ten")
        << 3 << 0 << 10 << 1 << QStringList {"0", "10", "20"} << "3 rows numbered";
    QTest::newRow("every two rows")
        << 5 << 1 << 1 << 2 << QStringList {"1", "1", "2", "2", "3"} << "5 rows numbered";
    QTest::newRow("counting down")
        << 4 << 3 << -2 << 1 << QStringList {"3", "1", "-1", "-3"} << "4 rows numbered";
    QTest::newRow("every zero from a document reads as one")
        << 3 << 5 << 1 << 0 << QStringList {"5", "6", "7"} << "3 rows numbered";
    QTest::newRow("one row") << 1 << 7 << 1 << 1 << QStringList {"7"} << "1 row numbered";
    QTest::newRow("no rows") << 0 << 1 << 1 << 1 << QStringList() << "0 rows numbered";
    QTest::newRow("past the int range")
        << 2 << 2000000000 << 2000000000 << 1 << QStringList {"2000000000", "4000000000"}
        << "2 rows numbered";
}

void TestTransformNewCol::rowNum()
{
    QFETCH(int, rows);
    QFETCH(int, startAt);
    QFETCH(int, increment);
    QFETCH(int, every);
    QFETCH(QStringList, numbers);
    QFETCH(QString, result);

    QList<QStringList> literal {{"name"}};
    for (int r = 0; r < rows; ++r)
        literal.append({QString("row %1").arg(r)});
    QScopedPointer<DataSource> input(makeDataSource(makeDataset(literal)));
    TransformRowNum transform;
    transform.createParameters({input.data()}, false);
    QCOMPARE(transform.parameter("Every")->minimumInt(), 1);
    transform.parameter("New_Name")->setValue(QString("No."));
    transform.parameter("Start_At")->setValue(startAt);
    transform.parameter("Increment")->setValue(increment);
    transform.parameter("Every")->setValue(every);
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(output.headers(), QStringList({"name", "No."}));
    QCOMPARE(output.columnValues(1), numbers);
    QCOMPARE(transform.result(), result);
}

void TestTransformNewCol::rowNumReportsProgress()
{
    Dataset data;
    data.setColumnCount(1);
    for (int r = 0; r < 2001; ++r)
        data.appendRow({"x"}, true);
    QScopedPointer<DataSource> input(makeDataSource(data));
    TransformRowNum transform;
    transform.createParameters({input.data()}, false);
    QSignalSpy progress(&transform, &Transform::processed);
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(progress.count(), 3);
    QCOMPARE(output.cell(2000, 1), QString("2001"));
    QCOMPARE(transform.result(), QString("2,001 rows numbered"));
}

void TestTransformNewCol::copy_data()
{
    QTest::addColumn<QList<int>>("columns");
    QTest::addColumn<int>("copies");
    QTest::addColumn<QStringList>("headers");
    QTest::addColumn<QStringList>("firstRow");
    QTest::addColumn<QString>("result");

    QTest::newRow("one column once") << QList<int> {1} << 1 << QStringList {"a", "b", "c", "b"}
                                     << QStringList {"1", "x", "", "x"} << "1 col added";
    // Selected out of order, copied in column order, each column's copies together.
    QTest::newRow("two columns twice")
        << QList<int> {2, 0} << 2 << QStringList {"a", "b", "c", "a", "a", "c", "c"}
        << QStringList {"1", "x", "", "1", "1", "", ""} << "4 cols added";
    QTest::newRow("nothing selected") << QList<int> {} << 1 << QStringList {"a", "b", "c"}
                                      << QStringList {"1", "x", ""} << "No changes";
    QTest::newRow("no copies") << QList<int> {0} << 0 << QStringList {"a", "b", "c"}
                               << QStringList {"1", "x", ""} << "No changes";
}

void TestTransformNewCol::copy()
{
    QFETCH(QList<int>, columns);
    QFETCH(int, copies);
    QFETCH(QStringList, headers);
    QFETCH(QStringList, firstRow);
    QFETCH(QString, result);

    TransformCopy transform;
    transform.createParameters({m_input}, false);
    QList<ColumnId> ids;
    for (int c : columns)
        ids.append(m_input->dataset()->columnId(c));
    transform.parameter("Columns")->setColumns(ids);
    transform.parameter("Copies")->setValue(copies);
    const Dataset output = runTransform(transform, {m_input});

    QCOMPARE(output.headers(), headers);
    QCOMPARE(output.row(0), firstRow);
    QCOMPARE(output.columnIds().size(), headers.size());
    for (int c = 3; c < output.columnCount(); ++c) {
        QVERIFY(output.columnId(c).isNull());
        QCOMPARE(output.columnValues(c),
                 m_input->dataset()->columnValues(
                     m_input->dataset()->columnsByName().value(headers.at(c)).value()));
    }
    QCOMPARE(transform.result(), result);
}

void TestTransformNewCol::concat_data()
{
    QTest::addColumn<QList<int>>("columns");
    QTest::addColumn<QString>("delimiter");
    QTest::addColumn<bool>("keepEmpty");
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("result");

    // Row 2 holds an empty cell and a cell of one blank, which is not empty.
    QTest::newRow("all, empties dropped") << QList<int> {0, 1, 2} << "-" << false
                                          << QStringList {"1-x", "2- ", "3-z-w"} << "a + b + c"
                                          << "Concatenated 3 cols";
    QTest::newRow("all, empties kept") << QList<int> {2, 1, 0} << "-" << true
                                       << QStringList {"1-x-", "2-- ", "3-z-w"} << "a + b + c"
                                       << "Concatenated 3 cols";
    QTest::newRow("longer delimiter")
        << QList<int> {0, 1} << ", " << false << QStringList {"1, x", "2", "3, z"} << "a + b"
        << "Concatenated 2 cols";
    QTest::newRow("no delimiter") << QList<int> {1, 2} << "" << false
                                  << QStringList {"x", " ", "zw"} << "b + c"
                                  << "Concatenated 2 cols";
    QTest::newRow("one column") << QList<int> {1} << "+" << false << QStringList {"x", "", "z"}
                                << "b"
                                << "Concatenated 1 col";
}

void TestTransformNewCol::concat()
{
    QFETCH(QList<int>, columns);
    QFETCH(QString, delimiter);
    QFETCH(bool, keepEmpty);
    QFETCH(QStringList, cells);
    QFETCH(QString, name);
    QFETCH(QString, result);

    TransformConcat transform;
    transform.createParameters({m_input}, false);
    QCOMPARE(transform.parameter("Auto_New_Name")->toBool(), true);
    QList<ColumnId> ids;
    for (int c : columns)
        ids.append(m_input->dataset()->columnId(c));
    transform.parameter("Columns")->setColumns(ids);
    transform.parameter("Delimiter")->setValue(delimiter);
    transform.parameter("Keep_Empty")->setValue(keepEmpty);
    Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.columnCount(), 4);
    QCOMPARE(output.columnValues(3), cells);
    QCOMPARE(output.headerText(3), name);
    QCOMPARE(transform.result(), result);
    QVERIFY(transform.warnings().isEmpty());

    transform.parameter("Auto_New_Name")->setValue(false);
    transform.parameter("New_Name")->setValue(QString("Joined"));
    output = runTransform(transform, {m_input});
    QCOMPARE(output.headerText(3), QString("Joined"));
    QCOMPARE(output.columnValues(3), cells);
}

void TestTransformNewCol::concatNameOptionFollowsAutomaticName()
{
    TransformConcat transform;
    transform.createParameters({m_input}, false);
    // With the automatic name on, an empty manual name is no unset option.
    transform.parameter("New_Name")->setValue(QString());
    transform.parameter("Columns")->setColumns({m_input->dataset()->columnId(0)});
    runTransform(transform, {m_input});
    QVERIFY(transform.warnings().isEmpty());
    transform.parameter("Auto_New_Name")->setValue(false);
    QCOMPARE(transform.parameterStates().first().enabled, true);
    runTransform(transform, {m_input});
    QCOMPARE(transform.warnings(), QStringList {"1 option not set ('New column name')"});

    transform.parameter("Columns")->setColumns({});
    transform.parameter("New_Name")->setValue(QString("x"));
    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.columnCount(), 3);
    QCOMPARE(transform.result(), QString("No changes"));
    QCOMPARE(transform.warnings(), QStringList {"1 option not set ('Columns')"});
}

void TestTransformNewCol::stampText_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("expected");

    QTest::newRow("default") << "-- d/M/yyyy HH:mm:ss --"
                             << "-- 7/3/2024 09:05:02 --";
    QTest::newRow("variables") << "$(f) on $(c) by $(u)"
                               << "sales.tabulon on box_lan by ann";
    QTest::newRow("text after the bang is kept as it is") << "yyyy-MM-dd!made by $(u) at dawn"
                                                          << "2024-03-07made by $(u) at dawn";
    QTest::newRow("only text") << "!Processed"
                               << "Processed";
    QTest::newRow("only the first bang counts") << "yy!a!b"
                                                << "24a!b";
    QTest::newRow("empty") << ""
                           << "";
}

void TestTransformNewCol::stampText()
{
    QFETCH(QString, format);
    QFETCH(QString, expected);
    const QDateTime when(QDate(2024, 3, 7), QTime(9, 5, 2));
    QCOMPARE(TransformStamp::stampText(format, when, "sales.tabulon", "box_lan", "ann"), expected);
}

void TestTransformNewCol::stampPositions_data()
{
    QTest::addColumn<QString>("position");
    QTest::addColumn<int>("stampRow");

    QTest::newRow("at start") << "At start" << 0;
    QTest::newRow("at end") << "At end" << 3;
    QTest::newRow("every row") << "Every row" << -1;
}

void TestTransformNewCol::stampPositions()
{
    QFETCH(QString, position);
    QFETCH(int, stampRow);

    TransformStamp transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Format")->setValue(QString("!fixed"));
    transform.parameter("Position")->setValue(position);
    transform.parameter("New_Name")->setValue(QString("When"));
    QCOMPARE(transform.parameterStates().first().enabled, stampRow < 0);
    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(transform.result(), QString("Stamp added"));
    const Dataset &input = *m_input->dataset();
    if (stampRow < 0) {
        QCOMPARE(output.headers(), QStringList({"a", "b", "c", "When"}));
        QCOMPARE(output.columnValues(3), QStringList({"fixed", "fixed", "fixed"}));
        return;
    }
    QCOMPARE(output.headers(), input.headers());
    QCOMPARE(output.rowCount(), 4);
    QCOMPARE(output.row(stampRow), QStringList({"fixed", "", ""}));
    const int firstInputRow = stampRow == 0 ? 1 : 0;
    for (int r = 0; r < 3; ++r)
        QCOMPARE(output.row(firstInputRow + r), input.row(r));
}

void TestTransformNewCol::stampOnEmptyDatasetMakesOneCell()
{
    QScopedPointer<DataSource> empty(makeDataSource(Dataset()));
    TransformStamp transform;
    transform.createParameters({empty.data()}, false);
    transform.parameter("Format")->setValue(QString("!x"));
    const Dataset output = runTransform(transform, {empty.data()});
    QCOMPARE(output.columnCount(), 1);
    QCOMPARE(output.rowCount(), 1);
    QCOMPARE(output.cell(0, 0), QString("x"));
}

void TestTransformNewCol::stampNamesTheDocumentOfTheRun()
{
    TransformStamp transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Format")->setValue(QString("[$(f)]!"));
    transform.parameter("Position")->setValue(QString("At end"));
    Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.cell(3, 0), QString("[]"));

    RunContext context;
    context.documentPath = "/some/folder/monthly report.tabulon";
    output = runTransform(transform, {m_input}, context);
    QCOMPARE(output.cell(3, 0), QString("[monthly report.tabulon]"));

    transform.parameter("Format")->setValue(QString("$(c)|$(u)"));
    output = runTransform(transform, {m_input});
    QCOMPARE(output.cell(3, 0), TransformStamp::hostName() + "|" + TransformStamp::userName());
    QVERIFY(!TransformStamp::hostName().contains('.'));
}

void TestTransformNewCol::wrongInputCountGivesEmptyResult()
{
    QList<Transform *> transforms {new TransformNewCol, new TransformRowNum, new TransformCopy,
                                   new TransformConcat, new TransformStamp};
    for (Transform *transform : transforms) {
        transform->createParameters({m_input}, false);
        QCOMPARE(runTransform(*transform, {m_input, m_plain}).columnCount(), 0);
        QCOMPARE(runTransform(*transform, {}).columnCount(), 0);
        runTransform(*transform, {m_input});
        QVERIFY(!transform->result().isEmpty());
        QScopedPointer<Transform> copy(transform->clone());
        QVERIFY(copy->result().isEmpty());
        const QList<Parameter *> options = transform->parameters();
        QCOMPARE(copy->parameters().size(), options.size());
        for (int i = 0; i < options.size(); ++i) {
            QCOMPARE(copy->parameters().at(i)->key(), options.at(i)->key());
            QCOMPARE(copy->parameters().at(i)->toText(), options.at(i)->toText());
        }
    }
    qDeleteAll(transforms);
}

QTEST_GUILESS_MAIN(TestTransformNewCol)
#include "tst_transformnewcol.moc"
