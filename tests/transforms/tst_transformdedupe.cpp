#include "testdata.h"
#include "transforms/dedupeengine.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformdedupe.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QtTest>

// Dedupe: the matching engine's rules (key normalising, the shared edit budget, groups that
// aren't transitive) and the transform's three modes and texts.
class TestTransformDedupe : public QObject
{
    Q_OBJECT

private slots:
    void removeAndKeep_data();
    void removeAndKeep();
    void thresholdIsInclusive_data();
    void thresholdIsInclusive();
    void budgetIsSharedAcrossColumns();
    void informationModeColumnsAndOrder();
    void noColumnsCopiesInput();
    void drilldownRecordsEveryMergedRow();
    void stopKeepsWhatWasFound();
    void runStopReachesTheSearch();
    void optionsEnableByMatchTypeAndMode();

private:
    static Dataset dedupe(const Dataset &input, const QList<int> &columns, int mode,
                          const QString &matchType = QStringLiteral("Exact"), int fuzziness = 80,
                          bool caseSensitive = true, bool ignoreSpaces = false,
                          bool ignorePunctuation = false, QString *result = nullptr,
                          QList<ColumnId> *inputIds = nullptr);
    static QStringList column(const Dataset &dataset, int c);
};

Dataset TestTransformDedupe::dedupe(const Dataset &input, const QList<int> &columns, int mode,
                                    const QString &matchType, int fuzziness, bool caseSensitive,
                                    bool ignoreSpaces, bool ignorePunctuation, QString *result,
                                    QList<ColumnId> *inputIds)
{
    QScopedPointer<DataSource> node(makeDataSource(input));
    if (inputIds)
        *inputIds = node->dataset()->columnIds();
    TransformDedupe transform;
    transform.createParameters({node.data()}, false);
    QList<ColumnId> ids;
    for (int c : columns)
        ids.append(node->dataset()->columnId(c));
    transform.parameter("Columns")->setColumns(ids);
    transform.parameter("Match_Type")->setValue(matchType);
    transform.parameter("Fuzziness")->setValue(fuzziness);
    transform.parameter("Case_Sensitive")->setValue(caseSensitive);
    transform.parameter("Ignore_Spaces")->setValue(ignoreSpaces);
    transform.parameter("Ignore_Punctuation")->setValue(ignorePunctuation);
    transform.parameter("Dedupe_Mode")->setValue(TransformDedupe::modeNames().at(mode));
    const Dataset output = runTransform(transform, {node.data()});
    if (result)
        *result = transform.result();
    return output;
}

QStringList TestTransformDedupe::column(const Dataset &dataset, int c)
{
    return dataset.columnValues(c);
}

void TestTransformDedupe::removeAndKeep_data()
{
    QTest::addColumn<QList<QStringList>>("rows");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("matchType");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<bool>("ignoreSpaces");
    QTest::addColumn<bool>("ignorePunctuation");
    QTest::addColumn<QStringList>("expectedIds");
    QTest::addColumn<QString>("result");

    const QList<QStringList> alike {
        {"1", "Ann", "Oslo"}, {"2", "Ann", "Oslo"}, {"3", "Bob", "Rome"}, {"4", "Ann", "Oslo"}};
    QTest::newRow("remove exact") << alike << 0 << "Exact" << true << false << false
                                  << QStringList {"1", "3"} << "2 rows removed";
    QTest::newRow("keep only duplicates: the second and third of three")
        << alike << 1 << "Exact" << true << false << false << QStringList {"2", "4"}
        << "2 rows removed";
    QTest::newRow("no duplicates")
        << QList<QStringList> {{"1", "Ann", "Oslo"}, {"2", "Ann", "Rome"}} << 0 << "Exact" << true
        << false << false << QStringList {"1", "2"} << "No changes";
    QTest::newRow("all selected cells empty match")
        << QList<QStringList> {{"1", "", ""}, {"2", "", ""}} << 0 << "Exact" << true << false
        << false << QStringList {"1"} << "1 row removed";
    QTest::newRow("case folded only when asked, both ways")
        << QList<QStringList> {{"1", "ANN", "oslo"}, {"2", "ann", "Oslo"}} << 0 << "Exact" << false
        << false << false << QStringList {"1"} << "1 row removed";
    QTest::newRow("case kept") << QList<QStringList> {{"1", "ANN", "oslo"}, {"2", "ann", "Oslo"}}
                               << 0 << "Exact" << true << false << false << QStringList {"1", "2"}
                               << "No changes";
    QTest::newRow("blanks only are the empty text")
        << QList<QStringList> {{"1", "  ", "x"},
                               {"2", "", "x"},
                               {"3", "A n n", "x"},
                               {"4", "Ann", "x"}}
        << 0 << "Exact" << true << true << false << QStringList {"1", "3"} << "2 rows removed";
    QTest::newRow("punctuation dropped")
        << QList<QStringList> {{"1", "O'Neil", "x"}, {"2", "ONeil.", "x"}} << 0 << "Exact" << true
        << false << true << QStringList {"1"} << "1 row removed";
    QTest::newRow("cells don't run into each other")
        << QList<QStringList> {{"1", "ab", "c"}, {"2", "a", "bc"}} << 0 << "Exact" << true << false
        << false << QStringList {"1", "2"} << "No changes";
    QTest::newRow("non-ASCII case folding")
        << QList<QStringList> {{"1", "ÉLODIE", "x"}, {"2", "élodie", "x"}} << 0 << "Exact" << false
        << false << false << QStringList {"1"} << "1 row removed";
    // B is within 2 edits of A (80%), C within 2 of B but 4 of A: groups aren't transitive,
    // because a duplicate never becomes a reference.
    QTest::newRow("fuzzy: similar only to a duplicate is kept")
        << QList<QStringList> {{"1", "aaaaaaaaaa", "x"},
                               {"2", "bbaaaaaaaa", "x"},
                               {"3", "bbbbaaaaaa", "x"}}
        << 0 << "Fuzzy" << true << false << false << QStringList {"1", "3"} << "1 row removed";
    QTest::newRow("fuzzy keep only duplicates")
        << QList<QStringList> {{"1", "Jonathan", "Leeds"},
                               {"2", "Jonathon", "Leeds"},
                               {"3", "Mary", "York"}}
        << 1 << "Fuzzy" << true << false << false << QStringList {"2"} << "2 rows removed";
}

void TestTransformDedupe::removeAndKeep()
{
    QFETCH(QList<QStringList>, rows);
    QFETCH(int, mode);
    QFETCH(QString, matchType);
    QFETCH(bool, caseSensitive);
    QFETCH(bool, ignoreSpaces);
    QFETCH(bool, ignorePunctuation);
    QFETCH(QStringList, expectedIds);
    QFETCH(QString, result);

    QList<QStringList> table {{"id", "name", "city"}};
    table.append(rows);
    QString actualResult;
    const Dataset output = dedupe(makeDataset(table), {1, 2}, mode, matchType, 80, caseSensitive,
                                  ignoreSpaces, ignorePunctuation, &actualResult);
    QCOMPARE(column(output, 0), expectedIds);
    QCOMPARE(output.header(), table.first());
    QCOMPARE(actualResult, result);
}

void TestTransformDedupe::thresholdIsInclusive_data()
{
    QTest::addColumn<int>("fuzziness");
    QTest::addColumn<int>("rows");
    QTest::newRow("75 passes") << 75 << 1;
    QTest::newRow("76 refuses") << 76 << 2;
}

void TestTransformDedupe::thresholdIsInclusive()
{
    QFETCH(int, fuzziness);
    QFETCH(int, rows);
    const Dataset input = makeDataset({{"code"}, {"abcd"}, {"abce"}});
    QCOMPARE(dedupe(input, {0}, 0, "Fuzzy", fuzziness).rowCount(), rows);
}

void TestTransformDedupe::budgetIsSharedAcrossColumns()
{
    // Two columns of 10 characters at 80% share 4 edits: one edit in each gives 90, three in
    // one and two in the other (5) is too many though each column alone would pass at 70/80.
    const Dataset input = makeDataset({{"a", "b"},
                                       {"0123456789", "abcdefghij"},
                                       {"0123456780", "abcdefghix"},
                                       {"0120056700", "abcdefgxyj"}});
    const Dataset output = dedupe(input, {0, 1}, 2, "Fuzzy", 80);
    QCOMPARE(column(output, 2), (QStringList {"1", "1", "2"}));
    QCOMPARE(column(output, 4), (QStringList {"", "90", ""}));
}

void TestTransformDedupe::informationModeColumnsAndOrder()
{
    const Dataset input
        = makeDataset({{"name"}, {"Ann"}, {"Bob"}, {"ann"}, {"Cy"}, {"Bob"}, {"ANN"}});
    QString result;
    QList<ColumnId> inputIds;
    const Dataset output
        = dedupe(input, {0}, 2, "Exact", 80, false, false, false, &result, &inputIds);
    QCOMPARE(output.header(),
             (QStringList {"name", "Group", "Row", "Closeness", "Duplicate", "Duplicates"}));
    const QList<QStringList> expected {
        {"Ann", "1", "1", "", "false", "2"},  {"ann", "1", "3", "100", "true", ""},
        {"ANN", "1", "6", "100", "true", ""}, {"Bob", "2", "2", "", "false", "1"},
        {"Bob", "2", "5", "100", "true", ""}, {"Cy", "3", "4", "", "false", "0"}};
    QCOMPARE(output.rows(), expected);
    QCOMPARE(result, QStringLiteral("Duplicate information added"));
    QVERIFY(!inputIds.first().isNull());
    QCOMPARE(output.columnId(0), inputIds.first());
    QVERIFY(output.columnId(1).isNull());

    // Fuzzy: the closer duplicate comes first within its group.
    const Dataset fuzzyInput
        = makeDataset({{"name"}, {"abcdefghij"}, {"abcdefghxx"}, {"abcdefghix"}, {"zzzz"}});
    const Dataset fuzzy = dedupe(fuzzyInput, {0}, 2, "Fuzzy", 80);
    QCOMPARE(column(fuzzy, 0), (QStringList {"abcdefghij", "abcdefghix", "abcdefghxx", "zzzz"}));
    QCOMPARE(column(fuzzy, 3), (QStringList {"", "90", "80", ""}));
    QCOMPARE(column(fuzzy, 5), (QStringList {"2", "", "", "0"}));

    // Without a header the added columns go unnamed, as every new column does.
    const Dataset plain = dedupe(makeDataset({{"x"}, {"x"}}, false), {0}, 2);
    QVERIFY(!plain.hasHeader());
    QCOMPARE(plain.rows(),
             (QList<QStringList> {{"x", "1", "1", "", "false", "1"},
                                  {"x", "1", "2", "100", "true", ""}}));
}

void TestTransformDedupe::noColumnsCopiesInput()
{
    const Dataset input = makeDataset({{"a", "b"}, {"1", "2"}, {"1", "2"}});
    QString result;
    const Dataset removed = dedupe(input, {}, 0, "Exact", 80, true, false, false, &result);
    QCOMPARE(removed.rows(), input.rows());
    QCOMPARE(result, QStringLiteral("No changes"));

    const Dataset information = dedupe(input, {}, 2);
    QCOMPARE(information.columnCount(), 7);
    QCOMPARE(information.header().mid(2), DedupeEngine::informationColumns());
    QCOMPARE(information.row(0), (QStringList {"1", "2", "", "", "", "", ""}));
}

void TestTransformDedupe::drilldownRecordsEveryMergedRow()
{
    const Dataset input = makeDataset({{"k"}, {"x"}, {"y"}, {"x"}, {"x"}});
    DedupeOptions options;
    options.columns = {0};
    options.drilldown = true;
    const DedupeResult result = DedupeEngine::findDuplicates(nullptr, input, options);
    QCOMPARE(result.output.rowCount(), 2);
    QCOMPARE(result.groups, 2);
    QCOMPARE(result.duplicates, 2);
    QCOMPARE(result.output.sourceRowsOf(0, 0), (QList<int> {0, 2, 3}));
    QCOMPARE(result.output.sourceRowsOf(1, 0), (QList<int> {1}));

    options.threshold = 90; // fuzzy matching records no provenance
    QVERIFY(DedupeEngine::findDuplicates(nullptr, input, options).output.sourceRows().isEmpty());
}

void TestTransformDedupe::stopKeepsWhatWasFound()
{
    QList<QStringList> rows {{"k"}};
    for (int i = 0; i < 3000; ++i)
        rows.append({QString::number(i % 10)});
    const Dataset input = makeDataset(rows);
    bool stop = false;
    DedupeOptions options;
    options.columns = {0};
    options.stopRequested = [&stop] {
        return stop;
    };
    DedupeProgress progress;
    QSignalSpy fractions(&progress, qOverload<qreal>(&DedupeProgress::processed));
    connect(&progress, qOverload<qreal, int, int>(&DedupeProgress::processed), this,
            [&stop](qreal fraction, int, int) {
                if (fraction > 0.5)
                    stop = true;
            });
    const DedupeResult result = DedupeEngine::findDuplicates(&progress, input, options);
    QCOMPARE(result.output.rowCount(), 10);
    QCOMPARE(result.groups + result.duplicates, 2000);
    QCOMPARE(fractions.first().first().toReal(), 0.0);
    QCOMPARE(fractions.last().first().toReal(), 1.0);
}

void TestTransformDedupe::runStopReachesTheSearch()
{
    // The Stop of the run in progress is the one the search looks at before each row.
    QScopedPointer<DataSource> node(makeDataSource(makeDataset({{"k"}, {"a"}, {"a"}, {"b"}})));
    TransformDedupe transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Columns")->setColumns({node->dataset()->columnId(0)});
    RunContext context;
    context.stopRequested = [] {
        return true;
    };
    QCOMPARE(runTransform(transform, {node.data()}, context).rowCount(), 0);
    QCOMPARE(runTransform(transform, {node.data()}).rowCount(), 2);
}

void TestTransformDedupe::optionsEnableByMatchTypeAndMode()
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset({{"a"}, {"1"}})));
    TransformDedupe transform;
    transform.createParameters({node.data()}, false);
    QVERIFY(!transform.isParameterEnabled("Fuzziness"));
    QVERIFY(transform.isParameterEnabled("Drilldown"));
    transform.parameter("Match_Type")->setValue(QStringLiteral("Fuzzy"));
    QVERIFY(transform.isParameterEnabled("Fuzziness"));
    QVERIFY(!transform.isParameterEnabled("Drilldown"));
    transform.parameter("Match_Type")->setValue(QStringLiteral("Exact"));
    transform.parameter("Dedupe_Mode")->setValue(TransformDedupe::modeNames().at(2));
    QVERIFY(!transform.isParameterEnabled("Drilldown"));
    QCOMPARE(transform.parameter("Columns")->toColumns().size(), 1); // the only column
}

QTEST_GUILESS_MAIN(TestTransformDedupe)
#include "tst_transformdedupe.moc"
