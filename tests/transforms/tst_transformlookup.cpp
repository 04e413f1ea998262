#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformlookup.h"

#include <QCoreApplication>
#include <QtTest>

// Lookup over every family of match types, the choice of values, and what rows without a
// match get.
class TestTransformLookup : public QObject
{
    Q_OBJECT

private slots:
    void matchTypes_data();
    void matchTypes();
    void noMatch_data();
    void noMatch();
    void allUniqueValuesKeepCase();
    void missesAreListed();
    void columnName_data();
    void columnName();
    void unsetOrMissingInputs();
    void optionsBindToTheirInputs();
    void dependentOptions();
};

namespace {

struct Fixture
{
    Fixture(const QStringList &topKeys, const QStringList &bottomKeys,
            const QStringList &bottomValues = {})
    {
        QList<QStringList> topRows {{"code", "qty"}};
        for (int r = 0; r < topKeys.size(); ++r)
            topRows << QStringList {topKeys.at(r), QString::number(r + 1)};
        QList<QStringList> bottomRows {{"key", "price"}};
        for (int r = 0; r < bottomKeys.size(); ++r)
            bottomRows << QStringList {bottomKeys.at(r),
                                       bottomValues.isEmpty() ? QStringLiteral("v%1").arg(r + 1)
                                                              : bottomValues.at(r)};
        top = makeDataSource(makeDataset(topRows));
        bottom = makeDataSource(makeDataset(bottomRows));
        lookup.createParameters({top, bottom}, false);
        lookup.parameter("Top_Lookup_Column")->setColumnId(top->dataset()->columnId(0));
        lookup.parameter("Bottom_Lookup_Column")->setColumnId(bottom->dataset()->columnId(0));
        lookup.parameter("Bottom_Value_Column")->setColumnId(bottom->dataset()->columnId(1));
        lookup.parameter("Delim")->setValue(QStringLiteral(";"));
    }
    ~Fixture()
    {
        delete top;
        delete bottom;
    }
    Dataset run() { return runTransform(lookup, {top, bottom}); }

    DataSource *top;
    DataSource *bottom;
    TransformLookup lookup;
};

} // namespace

void TestTransformLookup::matchTypes_data()
{
    QTest::addColumn<QString>("matchType");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<bool>("all");
    QTest::addColumn<QStringList>("topKeys");
    QTest::addColumn<QStringList>("bottomKeys");
    QTest::addColumn<QStringList>("found");

    const QStringList fruit {"apple", "banana", "apple", "cherries", "Apple"};
    QTest::newRow("exact") << "Exact" << true << false << QStringList {"apple", "Banana", "x"}
                           << fruit << QStringList {"v1", "", ""};
    QTest::newRow("exact, case insensitive")
        << "Exact" << false << false << QStringList {"Banana", "APPLE"} << fruit
        << QStringList {"v2", "v1"};
    QTest::newRow("exact, all unique")
        << "Exact" << false << true << QStringList {"apple"}
        << QStringList {"apple", "x", "APPLE", "apple"} << QStringList {"v1;v3;v4"};
    QTest::newRow("exact, empty keys match") << "Exact" << true << false << QStringList {""}
                                             << QStringList {"a", ""} << QStringList {"v2"};

    // cherry to cherries is 75% alike: below the default 80.
    QTest::newRow("fuzzy, first best")
        << "Fuzzy" << false << false << QStringList {"aple", "cherry", "bananas"} << fruit
        << QStringList {"v1", "", "v2"};
    QTest::newRow("fuzzy, all best")
        << "Fuzzy" << false << true << QStringList {"aple"} << fruit << QStringList {"v1;v3;v5"};
    QTest::newRow("fuzzy, best beats first")
        << "Fuzzy" << true << false << QStringList {"abcdefghij"}
        << QStringList {"abcdefghxx", "abcdefghix"} << QStringList {"v2"};

    // Numbers and dates compare as such with Equal, never with Exact.
    QTest::newRow("equal numbers") << "Equal" << true << false << QStringList {"1.0", "2", "x"}
                                   << QStringList {"3", "02", "1"} << QStringList {"v3", "v2", ""};
    QTest::newRow("exact numbers") << "Exact" << true << false << QStringList {"1.0", "2"}
                                   << QStringList {"3", "02", "1"} << QStringList {"", ""};
    QTest::newRow("equal dates") << "Equal" << true << false << QStringList {"2024-03-01"}
                                 << QStringList {"2024-3-2", "2024-3-1"} << QStringList {"v2"};

    const QStringList words {"pineapple", "grape", "apple"};
    QTest::newRow("bottom contains top")
        << "Bottom contains top" << true << true << QStringList {"app", "APP"} << words
        << QStringList {"v1;v3", ""};
    QTest::newRow("bottom contains top, case insensitive")
        << "Bottom contains top" << false << false << QStringList {"APP"} << words
        << QStringList {"v1"};
    QTest::newRow("bottom starts with top")
        << "Bottom starts with top" << true << false << QStringList {"gr", "pe"} << words
        << QStringList {"v2", ""};
    QTest::newRow("bottom ends with top") << "Bottom ends with top" << true << true
                                          << QStringList {"ple"} << words << QStringList {"v1;v3"};
    const QStringList numbers {"3", "10", "7"};
    QTest::newRow("bottom greater than top")
        << "Bottom greater than top" << true << true << QStringList {"5", "10"} << numbers
        << QStringList {"v2;v3", ""};
    QTest::newRow("bottom greater than equal to top")
        << "Bottom greater than equal to top" << true << false << QStringList {"10"} << numbers
        << QStringList {"v2"};
    QTest::newRow("bottom matches top regex")
        << "Bottom matches top regex" << true << false << QStringList {"^g.*e$", "(", "P"} << words
        << QStringList {"v2", "", ""};
    QTest::newRow("bottom matches top regex, case insensitive")
        << "Bottom matches top regex" << false << false << QStringList {"P"} << words
        << QStringList {"v1"};
    QTest::newRow("top contains bottom")
        << "Top contains bottom" << true << true << QStringList {"pineapple"}
        << QStringList {"x", "apple", "pine", "apple"} << QStringList {"v2;v3;v4"};
    QTest::newRow("top starts with bottom")
        << "Top starts with bottom" << true << false << QStringList {"pineapple"}
        << QStringList {"apple", "pine"} << QStringList {"v2"};
    QTest::newRow("top ends with bottom")
        << "Top ends with bottom" << true << false << QStringList {"pineapple"}
        << QStringList {"pine", "apple"} << QStringList {"v2"};
    QTest::newRow("top greater than bottom") << "Top greater than bottom" << true << true
                                             << QStringList {"7"} << numbers << QStringList {"v1"};
    QTest::newRow("top greater than equal to bottom")
        << "Top greater than equal to bottom" << true << true << QStringList {"7"} << numbers
        << QStringList {"v1;v3"};
    QTest::newRow("top matches bottom regex")
        << "Top matches bottom regex" << true << false << QStringList {"grape"}
        << QStringList {"^p", "e$", "r"} << QStringList {"v2"};
    QTest::newRow("not exact") << "Not exact" << true << true << QStringList {"a"}
                               << QStringList {"a", "b", "A"} << QStringList {"v2;v3"};
    QTest::newRow("not exact, case insensitive")
        << "Not exact" << false << true << QStringList {"a"} << QStringList {"a", "b", "A"}
        << QStringList {"v2"};
    QTest::newRow("not equal") << "Not equal" << true << true << QStringList {"1"}
                               << QStringList {"1.0", "2", "01"} << QStringList {"v2"};
    QTest::newRow("bottom doesn't contain top")
        << "Bottom doesn't contain top" << true << true << QStringList {"apple"} << words
        << QStringList {"v2"};
    QTest::newRow("bottom doesn't start with top")
        << "Bottom doesn't start with top" << true << true << QStringList {"gr"} << words
        << QStringList {"v1;v3"};
    QTest::newRow("bottom doesn't end with top")
        << "Bottom doesn't end with top" << true << false << QStringList {"ple"} << words
        << QStringList {"v2"};
    QTest::newRow("top doesn't contain bottom")
        << "Top doesn't contain bottom" << true << true << QStringList {"apple"} << words
        << QStringList {"v1;v2"};
    QTest::newRow("top doesn't start with bottom")
        << "Top doesn't start with bottom" << true << false << QStringList {"apple"}
        << QStringList {"a", "app", "b"} << QStringList {"v3"};
    QTest::newRow("top doesn't end with bottom")
        << "Top doesn't end with bottom" << false << true << QStringList {"APPLE"}
        << QStringList {"le", "x", "E", "y"} << QStringList {"v2;v4"};
}

void TestTransformLookup::matchTypes()
{
    QFETCH(QString, matchType);
    QFETCH(bool, caseSensitive);
    QFETCH(bool, all);
    QFETCH(QStringList, topKeys);
    QFETCH(QStringList, bottomKeys);
    QFETCH(QStringList, found);

    Fixture fixture(topKeys, bottomKeys);
    TransformLookup &lookup = fixture.lookup;
    QVERIFY(TransformLookup::matchTypeNames().contains(matchType));
    lookup.parameter("Match_Type")->setValue(matchType);
    lookup.parameter("Case_Sensitive")->setValue(caseSensitive);
    lookup.parameter("Bottom_Values_Used")
        ->setValue(all ? QStringLiteral("All unique") : QStringLiteral("First"));
    lookup.parameter("Fuzzy_Bottom_Values_Used")
        ->setValue(all ? QStringLiteral("All best") : QStringLiteral("First best"));
    const Dataset output = fixture.run();
    QCOMPARE(output.columnCount(), 3);
    QCOMPARE(output.columnValues(2), found);
    // The top's own cells are untouched.
    QCOMPARE(output.columnValues(0), topKeys);
    const int matched = int(
        std::count_if(found.cbegin(), found.cend(), [](const QString &v) { return !v.isEmpty(); }));
    QCOMPARE(lookup.result(),
             QStringLiteral("%1 matched, %2 unmatched").arg(matched).arg(topKeys.size() - matched));
}

void TestTransformLookup::noMatch_data()
{
    QTest::addColumn<QString>("ifNoMatch");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("leave unchanged") << "Leave unchanged"
                                     << "ignored" << QStringList {"Kiwi", "v1", ""};
    QTest::newRow("value") << "Use no match value"
                           << "none" << QStringList {"none", "v1", "none"};
    QTest::newRow("value with variables")
        << "Use no match value"
        << "$(code) x$(2) $(nope)" << QStringList {"Kiwi x1 $(nope)", "v1", " x3 $(nope)"};
}

void TestTransformLookup::noMatch()
{
    QFETCH(QString, ifNoMatch);
    QFETCH(QString, value);
    QFETCH(QStringList, expected);

    Fixture fixture({"Kiwi", "apple", ""}, {"apple", "kiwi"});
    fixture.lookup.parameter("If_No_Match")->setValue(ifNoMatch);
    fixture.lookup.parameter("Non_Matching_Value")->setValue(value);
    QCOMPARE(fixture.run().columnValues(2), expected);
    QCOMPARE(fixture.lookup.result(), QString("1 matched, 2 unmatched"));
}

void TestTransformLookup::allUniqueValuesKeepCase()
{
    // Values are told apart case-sensitively even when keys are not.
    Fixture fixture({"k", "K"}, {"k", "K", "k", "k", "j"}, {"b", "a", "b", "B", "z"});
    fixture.lookup.parameter("Bottom_Values_Used")->setValue(QStringLiteral("All unique"));
    fixture.lookup.parameter("Case_Sensitive")->setValue(false);
    QCOMPARE(fixture.run().columnValues(2), QStringList({"b;a;B", "b;a;B"}));
    fixture.lookup.parameter("Case_Sensitive")->setValue(true);
    QCOMPARE(fixture.run().columnValues(2), QStringList({"b;B", "a"}));
}

void TestTransformLookup::missesAreListed()
{
    Fixture fixture({"a", "b", "c", "d", "e", "f", "g", "x"}, {"x"});
    fixture.run();
    QCOMPARE(fixture.lookup.result(), QString("1 matched, 7 unmatched"));
    QCOMPARE(fixture.lookup.information(),
             QStringList("7 misses in the code:\n'a' at row 1\n'b' at row 2\n'c' at row 3\n"
                         "'d' at row 4\n'e' at row 5\n+ 2 misses"));

    Fixture single({"a", "x"}, {"x"});
    single.run();
    QCOMPARE(single.lookup.information(), QStringList("1 miss in the code:\n'a' at row 1"));
    Fixture none({"x"}, {"x"});
    none.run();
    QVERIFY(none.lookup.information().isEmpty());
}

void TestTransformLookup::columnName_data()
{
    QTest::addColumn<bool>("autoName");
    QTest::addColumn<QString>("name");

    QTest::newRow("automatic") << true << "Lookup price";
    QTest::newRow("given") << false << "Cost";
}

void TestTransformLookup::columnName()
{
    QFETCH(bool, autoName);
    QFETCH(QString, name);

    Fixture fixture({"a"}, {"a"});
    fixture.lookup.parameter("Auto_New_Name")->setValue(autoName);
    fixture.lookup.parameter("New_Name")->setValue(QStringLiteral("Cost"));
    const Dataset output = fixture.run();
    QCOMPARE(output.header(), QStringList({"code", "qty", name}));
    QCOMPARE(output.columnId(2), ColumnId());
    QCOMPARE(output.columnIds().mid(0, 2), fixture.top->dataset()->columnIds());

    // A top dataset without a header gets none for the new column.
    QScopedPointer<DataSource> plain(makeDataSource(makeDataset({{"a", "1"}, {"b", "2"}}, false)));
    TransformLookup lookup;
    lookup.createParameters({plain.data(), fixture.bottom}, false);
    lookup.parameter("Top_Lookup_Column")->setColumnId(plain->dataset()->columnId(0));
    lookup.parameter("Bottom_Lookup_Column")->setColumnId(fixture.bottom->dataset()->columnId(0));
    lookup.parameter("Bottom_Value_Column")->setColumnId(fixture.bottom->dataset()->columnId(1));
    lookup.parameter("Auto_New_Name")->setValue(autoName);
    const Dataset unnamed = runTransform(lookup, {plain.data(), fixture.bottom});
    QVERIFY(!unnamed.hasHeader());
    QCOMPARE(unnamed.rows(), QList<QStringList>({{"a", "1", "v1"}, {"b", "2", ""}}));
}

void TestTransformLookup::unsetOrMissingInputs()
{
    Fixture fixture({"a"}, {"a"});
    fixture.lookup.parameter("Bottom_Value_Column")->setColumnId(ColumnId());
    Dataset output = fixture.run();
    QCOMPARE(output.columnCount(), 2);
    QCOMPARE(fixture.lookup.result(), QString("No changes"));
    QCOMPARE(fixture.lookup.warnings(), QStringList("1 option not set ('Bottom value column')"));

    output = runTransform(fixture.lookup, {fixture.top});
    QCOMPARE(output.columnCount(), 2);
    QCOMPARE(fixture.lookup.result(), QString("Connect a second dataset"));
}

void TestTransformLookup::optionsBindToTheirInputs()
{
    Fixture fixture({"a"}, {"a"});
    TransformLookup &lookup = fixture.lookup;
    lookup.connectParameters({fixture.top, fixture.bottom});
    QCOMPARE(lookup.parameter("Top_Lookup_Column")->sourceNode(), fixture.top);
    QCOMPARE(lookup.parameter("Bottom_Lookup_Column")->sourceNode(), fixture.bottom);
    QCOMPARE(lookup.parameter("Bottom_Value_Column")->sourceNode(), fixture.bottom);
    QCOMPARE(lookup.parameter("Bottom_Value_Column")->toColumnIndex(), 1);
    lookup.connectParameters({fixture.top});
    QCOMPARE(lookup.parameter("Bottom_Value_Column")->sourceNode(), static_cast<DataSource *>(nullptr));
}

void TestTransformLookup::dependentOptions()
{
    Fixture fixture({"a"}, {"a"});
    TransformLookup &lookup = fixture.lookup;
    auto enabled = [&lookup](const char *key) {
        return lookup.isParameterEnabled(key);
    };
    QVERIFY(!enabled("New_Name"));
    QVERIFY(!enabled("Fuzziness"));
    QVERIFY(!enabled("Delim"));
    QVERIFY(enabled("Non_Matching_Value"));
    lookup.parameter("Match_Type")->setValue(QStringLiteral("Fuzzy"));
    lookup.parameter("Fuzzy_Bottom_Values_Used")->setValue(QStringLiteral("All best"));
    lookup.parameter("If_No_Match")->setValue(QStringLiteral("Leave unchanged"));
    QVERIFY(enabled("Fuzziness"));
    QVERIFY(enabled("Delim"));
    QVERIFY(!enabled("Bottom_Values_Used"));
    QVERIFY(!enabled("Non_Matching_Value"));
    // An empty new name is not missing while the name is automatic.
    fixture.run();
    QVERIFY(lookup.warnings().isEmpty());
}

QTEST_GUILESS_MAIN(TestTransformLookup)
#include "tst_transformlookup.moc"
