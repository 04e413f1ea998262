#include "data/dataset.h"
#include "testdata.h"

#include <QMimeData>
#include <QtTest>

// Shape, headers, identity, pooling and sharing of the in-memory table.
class TestDataset : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { Dataset::setOptimizeFor(Dataset::MinimumMemory); }

    void removingOnlyColumnEmptiesDataset();
    void addInputRowWidensAndPads();
    void addInputRowCleansAndSkipsEmpty();
    void appendRowWithoutFitDropsWrongWidth();
    void setColumnCountNamesAddedColumnsByIndex();
    void appendColumnLeavesEmptyName();
    void setSizeTrimsAndGrows();
    void headerToggleRoundTrips();
    void headersReplaceEmptyNames();
    void columnsByName_data();
    void columnsByName();
    void columnIdsFollowMovesAndRemovals();
    void assignColumnIdsSkipsExisting();
    void dropDuplicateIdsKeepsFirst();
    void removeEmptyRowsAndColumns();
    void nextAndPreviousCellWrap();
    void containsTreatsEmptyTextAsMatch();
    void columnSamples();
    void sourceRowsOfIncludesRowEntries();
    void issueSeverityKeepsLargerNumber();
    void equalsIgnoresIds();
    void moveLeavesSourceEmpty();
    void copyDetachesOnlyTouchedRows();
    void poolingSharesEqualCells();
    void speedModeSharesNothing();
    void poolKeepsColumnsThatRepeat_data();
    void poolKeepsColumnsThatRepeat();
    void appendingPooledRowsKeepsThemShared();
    void poolingCopiesOnlyToReleaseSpareRoom();
    void mimeDataQuotesDelimiters();
};

void TestDataset::removingOnlyColumnEmptiesDataset()
{
    Dataset dataset = makeDataset({{"a"}, {"1"}, {"2"}});
    QCOMPARE(dataset.rowCount(), 2);
    dataset.removeColumn(0);
    QCOMPARE(dataset.columnCount(), 0);
    QCOMPARE(dataset.rowCount(), 0);
    QVERIFY(!dataset.hasHeader());
    QVERIFY(dataset.columnIds().isEmpty());
}

void TestDataset::addInputRowWidensAndPads()
{
    Dataset dataset;
    dataset.addInputRow({"a", "b"}, false, false, false);
    dataset.addInputRow({"c", "d", "e", "f"}, false, false, false);
    dataset.addInputRow({"g"}, false, false, false);
    QCOMPARE(dataset.columnCount(), 4);
    QCOMPARE(dataset.row(0), QStringList({"a", "b", "", ""}));
    QCOMPARE(dataset.row(1), QStringList({"c", "d", "e", "f"}));
    QCOMPARE(dataset.row(2), QStringList({"g", "", "", ""}));
    QCOMPARE(dataset.columnIds().size(), 4);
}

void TestDataset::addInputRowCleansAndSkipsEmpty()
{
    Dataset dataset;
    QVERIFY(dataset.addInputRow({" a\tb ", "x\r\ny"}, true, true, true));
    QVERIFY(!dataset.addInputRow({"  ", ""}, true, false, true));
    QVERIFY(dataset.addInputRow({"  ", ""}, true, false, false));
    QCOMPARE(dataset.rowCount(), 2);
    QCOMPARE(dataset.cell(0, 0), QString("a b"));
    QCOMPARE(dataset.cell(0, 1), QString("x y"));
}

void TestDataset::appendRowWithoutFitDropsWrongWidth()
{
    Dataset dataset;
    // With no rows yet the first row is taken whatever its width, and sets no width.
    dataset.appendRow({"a", "b", "c"}, false);
    QCOMPARE(dataset.rowCount(), 1);
    QCOMPARE(dataset.columnCount(), 0);
    dataset.setColumnCount(3);
    dataset.appendRow({"x"}, false);
    QCOMPARE(dataset.rowCount(), 1);
    dataset.appendRow({"x"}, true);
    QCOMPARE(dataset.rowCount(), 2);
    QCOMPARE(dataset.row(1), QStringList({"x", "", ""}));
    dataset.prependRow({"1", "2", "3", "4"}, true);
    QCOMPARE(dataset.row(0), QStringList({"1", "2", "3"}));
}

void TestDataset::setColumnCountNamesAddedColumnsByIndex()
{
    Dataset dataset = makeDataset({{"a", "b"}, {"1", "2"}});
    dataset.setColumnCount(4);
    QCOMPARE(dataset.header(), QStringList({"a", "b", "2", "3"}));
    QCOMPARE(dataset.row(0), QStringList({"1", "2", "", ""}));
    dataset.setColumnCount(1);
    QCOMPARE(dataset.header(), QStringList({"a"}));
    QCOMPARE(dataset.row(0), QStringList({"1"}));
    QCOMPARE(dataset.columnIds().size(), 1);
}

void TestDataset::appendColumnLeavesEmptyName()
{
    Dataset dataset = makeDataset({{"a", "b"}, {"1", "2"}});
    dataset.appendColumn();
    QCOMPARE(dataset.header().at(2), QString());
    QCOMPARE(dataset.headerText(2), QString("3"));
    dataset.prependColumn();
    QCOMPARE(dataset.headers(), QStringList({"1", "a", "b", "4"}));
    QCOMPARE(dataset.row(0), QStringList({"", "1", "2", ""}));
}

void TestDataset::setSizeTrimsAndGrows()
{
    Dataset dataset = makeDataset({{"a", "b"}, {"1", "2"}, {"3", "4"}}, false);
    dataset.setSize(2, 3);
    QCOMPARE(dataset.rowCount(), 2);
    QCOMPARE(dataset.columnCount(), 3);
    QCOMPARE(dataset.row(1), QStringList({"1", "2", ""}));
    dataset.setSize(4, 1);
    QCOMPARE(dataset.rowCount(), 4);
    QCOMPARE(dataset.row(3), QStringList({""}));
    dataset.setSize(5, 0);
    QCOMPARE(dataset.rowCount(), 0);
    QCOMPARE(dataset.columnCount(), 0);
    dataset.setRowCount(3);
    QCOMPARE(dataset.rowCount(), 0);
}

void TestDataset::headerToggleRoundTrips()
{
    Dataset dataset = makeDataset({{"a", "b"}, {"1", "2"}});
    dataset.assignColumnIds(7);
    const QList<ColumnId> ids = dataset.columnIds();
    dataset.setHasHeader(false);
    QCOMPARE(dataset.rowCount(), 2);
    QCOMPARE(dataset.row(0), QStringList({"a", "b"}));
    QCOMPARE(dataset.headers(), QStringList({"1", "2"}));
    dataset.setHasHeader(true);
    QCOMPARE(dataset.rowCount(), 1);
    QCOMPARE(dataset.header(), QStringList({"a", "b"}));
    QCOMPARE(dataset.columnIds(), ids);
}

void TestDataset::headersReplaceEmptyNames()
{
    Dataset dataset = makeDataset({{"a", "", "c"}, {"1", "2", "3"}});
    QCOMPARE(dataset.header().at(1), QString());
    QCOMPARE(dataset.headers(), QStringList({"a", "2", "c"}));
    dataset.setColumnName(1, "b");
    QCOMPARE(dataset.headers(), QStringList({"a", "b", "c"}));

    Dataset noHeader = makeDataset({{"1", "2"}}, false);
    noHeader.setColumnName(1, "second");
    QVERIFY(noHeader.hasHeader());
    QCOMPARE(noHeader.header(), QStringList({"1", "second"}));
}

void TestDataset::columnsByName_data()
{
    QTest::addColumn<QStringList>("header");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("column");

    QTest::newRow("plain") << QStringList {"a", "b"} << "b" << 1;
    QTest::newRow("number") << QStringList {"a", "b"} << "2" << 1;
    QTest::newRow("first of twins") << QStringList {"x", "x"} << "x" << 0;
    QTest::newRow("name that is a number wins") << QStringList {"2", "b"} << "2" << 0;
    QTest::newRow("trimmed") << QStringList {" a ", "b"} << "a" << 0;
    QTest::newRow("empty name by number") << QStringList {"a", ""} << "2" << 1;
    QTest::newRow("unknown") << QStringList {"a", "b"} << "c" << -1;
}

void TestDataset::columnsByName()
{
    QFETCH(QStringList, header);
    QFETCH(QString, name);
    QFETCH(int, column);
    Dataset dataset = makeDataset({header, QStringList {"1", "2"}});
    QCOMPARE(dataset.columnsByName().value(name).value(), column);
}

void TestDataset::columnIdsFollowMovesAndRemovals()
{
    Dataset dataset = makeDataset({{"a", "b", "c"}, {"1", "2", "3"}});
    dataset.assignColumnIds(4);
    const ColumnId idC = dataset.columnId(2);
    QCOMPARE(idC, ColumnId(4, 3));
    QCOMPARE(dataset.columnIndex(idC), 2);
    dataset.removeColumn(0);
    QCOMPARE(dataset.columnIndex(idC), 1);
    dataset.prependColumn();
    QCOMPARE(dataset.columnIndex(idC), 2);
    QCOMPARE(dataset.columnIndex(ColumnId()), -1);
    QCOMPARE(dataset.columnIndex(ColumnId(9, 1)), -1);
    QVERIFY(dataset.columnId(-1).isNull());
    QVERIFY(dataset.columnId(3).isNull());
}

void TestDataset::assignColumnIdsSkipsExisting()
{
    Dataset dataset = makeDataset({{"a", "b", "c"}, {"1", "2", "3"}});
    dataset.setColumnId(1, ColumnId(2, 5));
    dataset.assignColumnIds(8);
    QCOMPARE(dataset.columnIds(),
             (QList<ColumnId> {ColumnId(8, 1), ColumnId(2, 5), ColumnId(8, 2)}));
}

void TestDataset::dropDuplicateIdsKeepsFirst()
{
    Dataset dataset = makeDataset({{"a", "b", "c"}, {"1", "2", "3"}});
    dataset.setColumnIds({ColumnId(1, 1), ColumnId(1, 2), ColumnId(1, 1)});
    QCOMPARE(dataset.columnIndex(ColumnId(1, 1)), 2);
    dataset.dropDuplicateIds();
    QCOMPARE(dataset.columnIds(), (QList<ColumnId> {ColumnId(1, 1), ColumnId(1, 2), ColumnId()}));
    QCOMPARE(dataset.columnIndex(ColumnId(1, 1)), 0);
}

void TestDataset::removeEmptyRowsAndColumns()
{
    Dataset dataset = makeDataset(
        {{"a", "b", "c", "d"}, {"1", "", "", ""}, {"", "", "", ""}, {"3", "", "x", ""}});
    QCOMPARE(dataset.emptyColumns(), QList<int>({3, 1}));
    QCOMPARE(dataset.removeEmptyColumns(), 2);
    QCOMPARE(dataset.header(), QStringList({"a", "c"}));
    QCOMPARE(dataset.removeEmptyRows(), 1);
    QCOMPARE(dataset.rowCount(), 2);
    QCOMPARE(dataset.row(1), QStringList({"3", "x"}));
    dataset.removeRow(5);
    dataset.removeRow(-1);
    QCOMPARE(dataset.rowCount(), 2);
}

void TestDataset::nextAndPreviousCellWrap()
{
    Dataset dataset = makeDataset({{"a", "b"}, {"1", "2"}, {"3", "4"}});
    int row = 0;
    int column = 1;
    QVERIFY(dataset.nextCell(row, column));
    QCOMPARE(row, 1);
    QCOMPARE(column, 0);
    QVERIFY(dataset.nextCell(row, column));
    QVERIFY(!dataset.nextCell(row, column));
    QVERIFY(dataset.previousCell(row, column));
    QVERIFY(dataset.previousCell(row, column));
    QCOMPARE(row, 0);
    QCOMPARE(column, 1);
}

void TestDataset::containsTreatsEmptyTextAsMatch()
{
    Dataset dataset = makeDataset({{"Name", "City"}, {"Ann", "Paris"}});
    QVERIFY(dataset.contains("par", Qt::CaseInsensitive));
    QVERIFY(!dataset.contains("par", Qt::CaseSensitive));
    QVERIFY(dataset.contains(QString(), Qt::CaseSensitive));
    QVERIFY(dataset.columnContains(1, "Par", Qt::CaseSensitive));
    QVERIFY(!dataset.columnContains(0, "Par", Qt::CaseSensitive));
    QVERIFY(dataset.headerContains("cit", Qt::CaseInsensitive));
}

void TestDataset::columnSamples()
{
    Dataset dataset = makeDataset({{"a"}, {"one"}, {"twothree"}, {"four"}});
    QCOMPARE(dataset.columnSamples(2, 4), QStringList({"( one, two…, … )"}));
    QCOMPARE(dataset.columnSamples(5, 20), QStringList({"( one, twothree, four )"}));
    Dataset empty = makeDataset({{"a", "b"}});
    QCOMPARE(empty.columnSamples(2, 4), QStringList({"( No values )", "( No values )"}));
}

void TestDataset::sourceRowsOfIncludesRowEntries()
{
    Dataset dataset = makeDataset({{"a", "b"}, {"1", "2"}});
    dataset.addSourceRows(0, -1, {5, 2});
    dataset.addSourceRow(0, 1, 9);
    QCOMPARE(dataset.sourceRowsOf(0, 0), QList<int>({2, 5}));
    QCOMPARE(dataset.sourceRowsOf(0, 1), QList<int>({2, 5, 9}));
    QCOMPARE(dataset.sourceRowsOf(0, -1), QList<int>({2, 5}));
    QVERIFY(dataset.sourceRowsOf(1, -1).isEmpty());
}

void TestDataset::issueSeverityKeepsLargerNumber()
{
    Dataset dataset = makeDataset({{"a", "b"}, {"1", "2"}});
    QCOMPARE(dataset.issueSeverityOf(0, 0), 3);
    dataset.markIssue(0, 1, 0, 4);
    dataset.markIssue(0, 1, 1, 5);
    dataset.markIssue(0, 1, 0, 6);
    QVERIFY(dataset.hasIssues());
    QCOMPARE(dataset.issueSeverityOf(0, 1), 1);
    QCOMPARE(dataset.issueSeverityOf(0, -1), 1);
    QCOMPARE(dataset.issueSeverityOf(-1, 1), 1);
    QCOMPARE(dataset.cellIssues(0, 1).size(), 3);
    QCOMPARE(dataset.rowIssues().value(RowIndex(0)).value(4), 1);
    dataset.clearIssues();
    QVERIFY(!dataset.hasIssues());
}

void TestDataset::equalsIgnoresIds()
{
    Dataset a = makeDataset({{"a", ""}, {"1", "2"}});
    Dataset b = makeDataset({{"a", "2"}, {"1", "2"}});
    b.assignColumnIds(3);
    // An empty name and the column's number read the same.
    QVERIFY(a.equals(b));
    b.setCell(0, 1, "x");
    QVERIFY(!a.equals(b));
}

void TestDataset::moveLeavesSourceEmpty()
{
    Dataset source = makeDataset({{"a"}, {"1"}});
    Dataset target;
    target = std::move(source);
    QCOMPARE(target.rowCount(), 1);
    QCOMPARE(source.rowCount(), 0);
    QCOMPARE(source.columnCount(), 0);
}

void TestDataset::copyDetachesOnlyTouchedRows()
{
    Dataset original = makeDataset({{"a", "b"}, {"1", "2"}, {"3", "4"}});
    Dataset copy = original;
    QCOMPARE(&copy.row(0).at(0), &original.row(0).at(0));
    copy.setCell(0, 1, "changed");
    QCOMPARE(original.cell(0, 1), QString("2"));
    QVERIFY(&copy.row(0).at(0) != &original.row(0).at(0));
    // The untouched row still lives in one block shared by both.
    QCOMPARE(&copy.row(1).at(0), &original.row(1).at(0));
}

void TestDataset::poolingSharesEqualCells()
{
    Dataset::setOptimizeFor(Dataset::MinimumMemory);
    Dataset dataset;
    for (int r = 0; r < 50; ++r)
        dataset.addInputRow(
            {QString::number(r % 3), QString(""), QStringLiteral("x").repeated(r % 2 + 1)}, false,
            false, false);
    QCOMPARE(dataset.cell(0, 0), dataset.cell(3, 0));
    QCOMPARE(dataset.cell(0, 0).constData(), dataset.cell(3, 0).constData());
    QCOMPARE(dataset.cell(1, 2).constData(), dataset.cell(49, 2).constData());
    QCOMPARE(dataset.cell(0, 1).constData(), QString().constData());
    dataset.setCell(4, 0, QString::number(0));
    QCOMPARE(dataset.cell(4, 0).constData(), dataset.cell(0, 0).constData());
}

void TestDataset::speedModeSharesNothing()
{
    Dataset::setOptimizeFor(Dataset::MaximumSpeed);
    Dataset dataset;
    for (int r = 0; r < 10; ++r)
        dataset.addInputRow({QString::number(r % 2)}, false, false, false);
    QCOMPARE(dataset.cell(0, 0), dataset.cell(2, 0));
    QVERIFY(dataset.cell(0, 0).constData() != dataset.cell(2, 0).constData());
    QCOMPARE(dataset.stringPoolCount(), 0);
}

void TestDataset::poolKeepsColumnsThatRepeat_data()
{
    QTest::addColumn<QString>("column");
    QTest::addColumn<bool>("pooling");
    QTest::addColumn<int>("pooled");

    // ids, and free text that hardly ever repeats
    QTest::newRow("unique") << "unique" << false << 0;
    // a code of 100 values repeats at once
    QTest::newRow("100 codes") << "codes" << true << 100;
    // ten years of dates repeat only a tenth of the time at first, but the repeats tell that
    // the column has few values
    QTest::newRow("3,650 dates") << "dates" << true << 3650;
    // drawn from 400,000 values, the sample barely repeats
    QTest::newRow("400,000 values") << "wide" << false << 0;
    // repeats at first, then never again: let go when the table is full
    QTest::newRow("repeats then unique") << "turns" << false << 0;
}

void TestDataset::poolKeepsColumnsThatRepeat()
{
    QFETCH(QString, column);
    QFETCH(bool, pooling);
    QFETCH(int, pooled);

    StringPool pool;
    QRandomGenerator random(7);
    const int count = column == "turns" ? StringPool::MaxValues + StringPool::SampleSize
                                        : StringPool::SampleSize * 3;
    for (int i = 0; i < count; ++i) {
        int value = i;
        if (column == "codes")
            value = i % 100;
        else if (column == "dates")
            value = i % 3650;
        else if (column == "wide")
            value = int(random.bounded(400000));
        else if (column == "turns" && i < StringPool::SampleSize)
            value = i % 10;
        QString text = QString::number(value);
        pool.pool(text);
    }
    QCOMPARE(pool.isActive(), pooling);
    QCOMPARE(pool.size(), pooled);
}

void TestDataset::appendingPooledRowsKeepsThemShared()
{
    Dataset::setOptimizeFor(Dataset::MinimumMemory);
    Dataset input;
    for (int r = 0; r < 4; ++r)
        input.addInputRow({QString::number(r % 2), QStringLiteral("same")}, false, false, false);

    // The input's equal cells share one text already, so a copy of its rows pooled anew needs
    // no cell of its own, and the rows stay shared with the input.
    Dataset output;
    output.setColumnCount(2);
    for (int r = 0; r < input.rowCount(); ++r)
        output.appendRow(input.row(r));
    for (int r = 0; r < input.rowCount(); ++r)
        QVERIFY(output.row(r).isSharedWith(input.row(r)));
    QCOMPARE(output.cell(3, 1).constData(), input.cell(0, 1).constData());

    // A row whose text equals a pooled one but is stored apart takes the pooled text.
    output.appendRow({QString::number(1), QStringLiteral("same")});
    QCOMPARE(output.cell(4, 0).constData(), input.cell(1, 0).constData());

    Dataset shared;
    shared.setColumnCount(2);
    shared.appendSharedRow(input.row(2));
    QVERIFY(shared.row(0).isSharedWith(input.row(2)));
    QCOMPARE(shared.stringPoolCount(), 0);
}

void TestDataset::poolingCopiesOnlyToReleaseSpareRoom()
{
    StringPool pool;
    // A text without spare room is kept as it is, even while others hold it too.
    const QString exact = QStringLiteral("abc").repeated(3);
    QString held = exact;
    pool.pool(held);
    QVERIFY(held.isSharedWith(exact));

    // A text with spare room is stored without it.
    QString roomy = QStringLiteral("xyz");
    roomy.reserve(100);
    pool.pool(roomy);
    QCOMPARE(roomy, QStringLiteral("xyz"));
    QCOMPARE(roomy.capacity(), roomy.size());

    QString pooled;
    QVERIFY(!pool.replacement(exact, &pooled));
    QVERIFY(pool.replacement(QStringLiteral("abc").repeated(3), &pooled));
    QVERIFY(pooled.isSharedWith(exact));
}

void TestDataset::mimeDataQuotesDelimiters()
{
    Dataset dataset = makeDataset({{"name", "note"}, {"Ann", "a,b"}, {"Bob", "say \"hi\""}});
    QScopedPointer<QMimeData> mime(dataset.mimeData(QLatin1Char('\t')));
    QCOMPARE(mime->text(), QString("name\tnote\r\nAnn\ta,b\r\nBob\t\"say \"\"hi\"\"\"\r\n"));
    QCOMPARE(QString::fromUtf8(mime->data("text/csv")),
             QString("name,note\r\nAnn,\"a,b\"\r\nBob,\"say \"\"hi\"\"\"\r\n"));
    QVERIFY(mime->html().contains("<td>a,b</td>"));
}

QTEST_GUILESS_MAIN(TestDataset)
#include "tst_dataset.moc"
