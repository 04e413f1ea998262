#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformheader.h"
#include "transforms/transformremovecols.h"
#include "transforms/transformrenamecols.h"
#include "transforms/transformreorder.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QtTest>

// The transforms that remove, rename and move columns, and Header, which renames them from
// the top rows.
class TestTransformRemoveCols : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void removeCols_data();
    void removeCols();
    void removingEveryColumnLeavesNothing();
    void newUpstreamColumnsArriveKept();
    void documentColumnsAreNotTakenForNewOnes();
    void cloneRemembersSeenColumns();
    void removeColsReportsProgress();
    void renameCols_data();
    void renameCols();
    void renameKeepsRowsShared();
    void reorder_data();
    void reorder();
    void reorderPutsNewColumnsLast();
    void header_data();
    void header();
    void headerRowsEqualToTheNamesAreOnlyRemoved();
    void wrongInputCountGivesEmptyResult();

private:
    ColumnId id(int c) const { return m_input->dataset()->columnId(c); }
    // Gives the input a fourth column with an id of its own, as a change upstream would.
    ColumnId addUpstreamColumn();

    DataSource *m_input = nullptr;
};

void TestTransformRemoveCols::init()
{
    m_input = makeDataSource(
        makeDataset({{"a", "b", "c"}, {"1", "2", "3"}, {"4", "5", "6"}, {"7", "8", "9"}}));
}

void TestTransformRemoveCols::cleanup()
{
    delete m_input;
}

ColumnId TestTransformRemoveCols::addUpstreamColumn()
{
    Dataset *dataset = m_input->dataset();
    dataset->appendColumn();
    dataset->setColumnName(3, "d");
    for (int r = 0; r < dataset->rowCount(); ++r)
        dataset->setCell(r, 3, QString("d%1").arg(r));
    const ColumnId added(id(0).sourceId, 99);
    dataset->setColumnId(3, added);
    return added;
}

void TestTransformRemoveCols::removeCols_data()
{
    QTest::addColumn<QList<int>>("kept");
    QTest::addColumn<QStringList>("headers");
    QTest::addColumn<QStringList>("firstRow");
    QTest::addColumn<QString>("result");

    QTest::newRow("all kept") << QList<int> {0, 1, 2} << QStringList {"a", "b", "c"}
                              << QStringList {"1", "2", "3"} << "No changes";
    QTest::newRow("middle removed")
        << QList<int> {2, 0} << QStringList {"a", "c"} << QStringList {"1", "3"} << "1 col removed";
    QTest::newRow("two removed") << QList<int> {1} << QStringList {"b"} << QStringList {"2"}
                                 << "2 cols removed";
}

void TestTransformRemoveCols::removeCols()
{
    QFETCH(QList<int>, kept);
    QFETCH(QStringList, headers);
    QFETCH(QStringList, firstRow);
    QFETCH(QString, result);

    TransformRemoveCols transform;
    transform.createParameters({m_input}, false);
    QCOMPARE(transform.parameter("Columns")->type(), ParameterType::MultipleColumnsOrdered);
    // A new item keeps every column.
    QCOMPARE(transform.parameter("Columns")->toColumns(), QList<ColumnId>({id(0), id(1), id(2)}));
    QList<ColumnId> ids;
    for (int c : kept)
        ids.append(id(c));
    transform.parameter("Columns")->setColumns(ids);
    const Dataset output = runTransform(transform, {m_input});

    QCOMPARE(output.headers(), headers);
    QCOMPARE(output.row(0), firstRow);
    QCOMPARE(output.rowCount(), 3);
    for (int c = 0; c < output.columnCount(); ++c)
        QCOMPARE(output.columnId(c),
                 id(m_input->dataset()->columnsByName().value(headers.at(c)).value()));
    QCOMPARE(transform.result(), result);
    QVERIFY(transform.warnings().isEmpty());
}

void TestTransformRemoveCols::removingEveryColumnLeavesNothing()
{
    TransformRemoveCols transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Columns")->setColumns({});
    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.columnCount(), 0);
    QCOMPARE(output.rowCount(), 0);
    QCOMPARE(transform.result(), QString("3 cols removed"));
}

void TestTransformRemoveCols::newUpstreamColumnsArriveKept()
{
    TransformRemoveCols transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Columns")->setColumns({id(0), id(2)});
    Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.headers(), QStringList({"a", "c"}));

    const ColumnId added = addUpstreamColumn();
    output = runTransform(transform, {m_input});
    QCOMPARE(output.headers(), QStringList({"a", "c", "d"}));
    QCOMPARE(output.row(1), QStringList({"4", "6", "d1"}));
    QCOMPARE(transform.result(), QString("1 col removed"));
    // The option shows the new column checked, and unchecking it is then honoured.
    QCOMPARE(transform.parameter("Columns")->toColumns(), QList<ColumnId>({id(0), id(2), added}));
    transform.parameter("Columns")->setColumns({id(0), id(2)});
    output = runTransform(transform, {m_input});
    QCOMPARE(output.headers(), QStringList({"a", "c"}));

    // A column that goes away and comes back keeps the user's choice.
    m_input->dataset()->removeColumn(1);
    output = runTransform(transform, {m_input});
    QCOMPARE(output.headers(), QStringList({"a", "c"}));
    QCOMPARE(transform.result(), QString("1 col removed"));
}

void TestTransformRemoveCols::documentColumnsAreNotTakenForNewOnes()
{
    // As a document is read: options made without inputs, then their text, then connections.
    TransformRemoveCols transform;
    transform.createParameters({}, false);
    transform.parameter("Columns")->setPendingText(Parameter::joinFields({"1", "3"}),
                                                   CurrentDocumentVersion);
    transform.connectParameters({m_input});
    QVERIFY(transform.parameter("Columns")->resolvePendingText());
    Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.headers(), QStringList({"a", "c"}));
    QCOMPARE(transform.result(), QString("1 col removed"));

    addUpstreamColumn();
    output = runTransform(transform, {m_input});
    QCOMPARE(output.headers(), QStringList({"a", "c", "d"}));
    QCOMPARE(transform.parameter("Columns")->toText(), Parameter::joinFields({"1", "3", "4"}));
}

void TestTransformRemoveCols::cloneRemembersSeenColumns()
{
    TransformRemoveCols transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Columns")->setColumns({id(1)});
    runTransform(transform, {m_input});
    QScopedPointer<Transform> copy(transform.clone());
    addUpstreamColumn();
    const Dataset output = runTransform(*copy, {m_input});
    QCOMPARE(output.headers(), QStringList({"b", "d"}));
}

void TestTransformRemoveCols::removeColsReportsProgress()
{
    Dataset data;
    data.setColumnCount(2);
    for (int r = 0; r < 1500; ++r)
        data.appendRow({"x", QString::number(r)}, true);
    QScopedPointer<DataSource> input(makeDataSource(data));
    TransformRemoveCols transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Columns")->setColumns({input->dataset()->columnId(1)});
    QSignalSpy progress(&transform, &Transform::processed);
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(progress.count(), 2);
    QCOMPARE(output.columnCount(), 1);
    QCOMPARE(output.cell(1499, 0), QString("1499"));
    QCOMPARE(output.columnId(0), input->dataset()->columnId(1));
}

void TestTransformRemoveCols::renameCols_data()
{
    QTest::addColumn<bool>("withHeader");
    QTest::addColumn<QList<int>>("columns");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QStringList>("headers");
    QTest::addColumn<QString>("result");
    QTest::addColumn<QStringList>("warnings");

    QTest::newRow("one") << true << QList<int> {1} << QStringList {"Beta"}
                         << QStringList {"a", "Beta", "c"} << "1 col renamed" << QStringList();
    QTest::newRow("two") << true << QList<int> {0, 2} << QStringList {"A", "C"}
                         << QStringList {"A", "b", "C"} << "2 cols renamed" << QStringList();
    QTest::newRow("same name") << true << QList<int> {0} << QStringList {"a"}
                               << QStringList {"a", "b", "c"} << "No changes" << QStringList();
    QTest::newRow("nothing") << true << QList<int> {} << QStringList {}
                             << QStringList {"a", "b", "c"} << "No changes" << QStringList();
    QTest::newRow("missing column") << true << QList<int> {7} << QStringList {"gone"}
                                    << QStringList {"a", "b", "c"} << "No changes" << QStringList();
    QTest::newRow("duplicate made")
        << true << QList<int> {2} << QStringList {"a"} << QStringList {"a", "b", "a"}
        << "1 col renamed" << QStringList {"2 columns named 'a'"};
    QTest::newRow("three alike") << true << QList<int> {1, 2} << QStringList {"a", "a"}
                                 << QStringList {"a", "a", "a"} << "2 cols renamed"
                                 << QStringList {"3 columns named 'a'"};
    QTest::newRow("without header")
        << false << QList<int> {1} << QStringList {"Two"} << QStringList {"1", "Two", "3"}
        << "1 col renamed" << QStringList();
}

void TestTransformRemoveCols::renameCols()
{
    QFETCH(bool, withHeader);
    QFETCH(QList<int>, columns);
    QFETCH(QStringList, names);
    QFETCH(QStringList, headers);
    QFETCH(QString, result);
    QFETCH(QStringList, warnings);

    if (!withHeader)
        m_input->dataset()->setHasHeader(false);
    TransformRenameCols transform;
    transform.createParameters({m_input}, false);
    ColumnRenames renames;
    for (int i = 0; i < columns.size(); ++i)
        renames.insert(columns.at(i) < 3 ? id(columns.at(i)) : ColumnId(id(0).sourceId, 50),
                       names.at(i));
    transform.parameter("RenameColumns")->setRenameColumns(renames);
    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.headers(), headers);
    QCOMPARE(output.hasHeader(), withHeader || result != "No changes");
    QCOMPARE(output.columnIds(), m_input->dataset()->columnIds());
    QCOMPARE(output.rowCount(), m_input->dataset()->rowCount());
    QCOMPARE(transform.result(), result);
    QCOMPARE(transform.warnings(), warnings);
}

void TestTransformRemoveCols::renameKeepsRowsShared()
{
    TransformRenameCols transform;
    transform.createParameters({m_input}, false);
    transform.parameter("RenameColumns")->setRenameColumns({{id(0), "x"}});
    const Dataset output = runTransform(transform, {m_input});
    for (int r = 0; r < 3; ++r)
        QCOMPARE(&output.row(r).at(0), &m_input->dataset()->row(r).at(0));
}

void TestTransformRemoveCols::reorder_data()
{
    QTest::addColumn<QList<int>>("named");
    QTest::addColumn<QStringList>("headers");
    QTest::addColumn<QString>("result");

    QTest::newRow("as it is") << QList<int> {0, 1, 2} << QStringList {"a", "b", "c"}
                              << "No changes";
    QTest::newRow("nothing named") << QList<int> {} << QStringList {"a", "b", "c"} << "No changes";
    QTest::newRow("reversed") << QList<int> {2, 1, 0} << QStringList {"c", "b", "a"}
                              << "2 cols reordered";
    QTest::newRow("last first") << QList<int> {2} << QStringList {"c", "a", "b"}
                                << "3 cols reordered";
    QTest::newRow("swap first two")
        << QList<int> {1, 0} << QStringList {"b", "a", "c"} << "2 cols reordered";
    // A column removed upstream simply drops out of the order, and a repeat counts once.
    QTest::newRow("missing and repeated")
        << QList<int> {7, 2, 2, 0} << QStringList {"c", "a", "b"} << "3 cols reordered";
}

void TestTransformRemoveCols::reorder()
{
    QFETCH(QList<int>, named);
    QFETCH(QStringList, headers);
    QFETCH(QString, result);

    TransformReorder transform;
    transform.createParameters({m_input}, false);
    QCOMPARE(transform.parameter("Columns")->toColumns(), m_input->dataset()->columnIds());
    QList<ColumnId> ids;
    for (int c : named)
        ids.append(c < 3 ? id(c) : ColumnId(id(0).sourceId, 70));
    transform.parameter("Columns")->setColumns(ids);
    const Dataset output = runTransform(transform, {m_input});

    QCOMPARE(output.headers(), headers);
    QCOMPARE(transform.result(), result);
    const Dataset &input = *m_input->dataset();
    const QHash<QString, ColumnIndex> byName = input.columnsByName();
    for (int c = 0; c < 3; ++c) {
        const int from = byName.value(headers.at(c)).value();
        QCOMPARE(output.columnValues(c), input.columnValues(from));
        QCOMPARE(output.columnId(c), input.columnId(from));
        QCOMPARE(output.columnIndex(input.columnId(from)), c);
    }
}

void TestTransformRemoveCols::reorderPutsNewColumnsLast()
{
    TransformReorder transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Columns")->setColumns({id(2), id(0), id(1)});
    addUpstreamColumn();
    m_input->dataset()->setHasHeader(false);
    const Dataset output = runTransform(transform, {m_input});
    QVERIFY(!output.hasHeader());
    QCOMPARE(output.row(1), QStringList({"3", "1", "2", "d0"}));
    QCOMPARE(transform.result(), QString("3 cols reordered"));
}

void TestTransformRemoveCols::header_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("delimiter");
    QTest::addColumn<QStringList>("headers");
    QTest::addColumn<int>("rowsLeft");
    QTest::addColumn<QString>("result");

    QTest::newRow("none") << 0 << "Overwrite"
                          << " " << QStringList {"a", "b", "c"} << 3 << "No changes";
    QTest::newRow("one row") << 1 << "Overwrite"
                             << " " << QStringList {"1", "2", "3"} << 2 << "Header names updated";
    QTest::newRow("two rows") << 2 << "Overwrite"
                              << "_" << QStringList {"1_4", "2_5", "3_6"} << 1
                              << "Header names updated";
    QTest::newRow("append") << 1 << "Append"
                            << "/" << QStringList {"a/1", "b/2", "c/3"} << 2
                            << "Header names updated";
    QTest::newRow("more than there are")
        << 9 << "Append"
        << "" << QStringList {"a147", "b258", "c369"} << 0 << "Header names updated";
}

void TestTransformRemoveCols::header()
{
    QFETCH(int, rows);
    QFETCH(QString, mode);
    QFETCH(QString, delimiter);
    QFETCH(QStringList, headers);
    QFETCH(int, rowsLeft);
    QFETCH(QString, result);

    TransformHeader transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Num_Rows")->setValue(rows);
    transform.parameter("Mode")->setValue(mode);
    transform.parameter("Delimiter")->setValue(delimiter);
    const Dataset output = runTransform(transform, {m_input});
    QCOMPARE(output.headers(), headers);
    QCOMPARE(output.rowCount(), rowsLeft);
    if (rowsLeft > 0)
        QCOMPARE(output.row(rowsLeft - 1), QStringList({"7", "8", "9"}));
    QCOMPARE(output.columnIds(), m_input->dataset()->columnIds());
    QCOMPARE(transform.result(), result);
}

void TestTransformRemoveCols::headerRowsEqualToTheNamesAreOnlyRemoved()
{
    // A header line repeated as the first data line, as concatenated exports often have.
    QScopedPointer<DataSource> input(makeDataSource(makeDataset({{"a", "b"}, {"a", "b"}, {"1", "2"}})));
    TransformHeader transform;
    transform.createParameters({input.data()}, false);
    QCOMPARE(transform.parameter("Mode")->toString(), QString("Overwrite"));
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(output.headers(), QStringList({"a", "b"}));
    QCOMPARE(output.rowCount(), 1);
    QCOMPARE(transform.result(), QString("1 row removed"));
}

void TestTransformRemoveCols::wrongInputCountGivesEmptyResult()
{
    QScopedPointer<DataSource> second(makeDataSource(makeDataset({{"x"}, {"y"}})));
    QList<Transform *> transforms {new TransformRemoveCols, new TransformRenameCols,
                                   new TransformReorder, new TransformHeader};
    for (Transform *transform : transforms) {
        transform->createParameters({m_input}, false);
        QCOMPARE(runTransform(*transform, {m_input, second.data()}).columnCount(), 0);
        QCOMPARE(runTransform(*transform, {}).columnCount(), 0);
        QCOMPARE(runTransform(*transform, {m_input}).columnCount(), 3);
        QVERIFY(!transform->result().isEmpty());
    }
    qDeleteAll(transforms);
}

QTEST_GUILESS_MAIN(TestTransformRemoveCols)
#include "tst_transformremovecols.moc"
