#include "verifyfixtures.h"

#include <QCoreApplication>
#include <QtTest>

#include <algorithm>

using namespace VerifyRules;

// Verify's runs as a whole: the marks on cells, rows and columns, keeping and removing rows
// by what failed, the report and the result, and the rule set itself: exclusions, types and
// its text in documents.
class TestTransformVerifyRuns : public QObject
{
    Q_OBJECT

private slots:
    void marksFollowKeptRows();
    void rowFilter_data();
    void rowFilter();
    void reportAndResult();
    void onlyRulesOfTheColumnTypeAreChecked();
    void exclusions_data();
    void exclusions();
    void documentRoundTrip();
    void documentShortAndTruncatedTexts_data();
    void documentShortAndTruncatedTexts();
};

void TestTransformVerifyRuns::marksFollowKeptRows()
{
    Verifier verifier(makeDataset(
        {{"name", "age"}, {"ann", "30"}, {"", "x"}, {"bob", "200"}, {"", ""}, {"cy", "40"}}));
    verifier.datasetRule(NoEmptyRows, QVariant(), Information);
    verifier.columnRule(0, Text, NoEmptyValues, QVariant(), Warning);
    verifier.columnRule(1, Integer, IntegerExceptListed, "", Error);
    verifier.columnRule(1, Integer, MaximumInteger, 100, Warning);
    verifier.set("Keep_Remove_rows", "Remove rows with:");
    verifier.set("No_Fail", true);
    const Dataset output = verifier.run();

    // Input rows 2, 3 and 4 fail and stay, now rows 0, 1 and 2; their marks moved with them.
    QCOMPARE(output.columnValues(0), (QStringList {"", "bob", ""}));
    QCOMPARE(output.cellIssues(0, 0), QList<int> {NoEmptyValues});
    QCOMPARE(output.cellIssues(0, 1), QList<int> {IntegerExceptListed});
    QCOMPARE(output.issueSeverityOf(0, 0), int(Warning));
    QCOMPARE(output.issueSeverityOf(0, 1), int(Error));
    QCOMPARE(output.issueSeverityOf(0, -1), int(Error));
    QCOMPARE(output.cellIssues(1, 0), QList<int>());
    QCOMPARE(output.cellIssues(1, 1), QList<int> {MaximumInteger});
    QCOMPARE(output.issueSeverityOf(1, -1), int(Warning));
    QCOMPARE(output.issueSeverityOf(2, 1), int(Error));
    QCOMPARE(output.datasetRowIssues().keys(), QList<RowIndex> {RowIndex(2)});
    QCOMPARE(output.rowIssues().value(RowIndex(2)).value(IntegerExceptListed), 1);
    QCOMPARE(output.issueSeverityOf(-1, 0), int(Warning));
    QCOMPARE(output.issueSeverityOf(-1, 1), int(Error));
    QCOMPARE(output.columnIssues().value(ColumnIndex(1)).value(IntegerExceptListed), 2);
    QVERIFY(verifier.failed);
    QCOMPARE(verifier.transform().result(),
             "6 fails (2 error, 3 warning, 1 information), 2 row(s) removed");
}

void TestTransformVerifyRuns::rowFilter_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("switches");
    QTest::addColumn<QString>("kept");

    // Rows: "ok" fails nothing; "i", "w", "e" fail one rule of that severity; "we" both.
    const QString keep = "Keep rows with:";
    const QString remove = "Remove rows with:";
    QTest::newRow("keep all") << "Keep all rows"
                              << "FIWE"
                              << "ok i w e we";
    QTest::newRow("keep with no box ticked keeps nothing") << keep << ""
                                                           << "";
    QTest::newRow("keep with all four keeps everything") << keep << "FIWE"
                                                         << "ok i w e we";
    QTest::newRow("keep no fails") << keep << "F"
                                   << "ok";
    QTest::newRow("keep information") << keep << "I"
                                      << "i";
    QTest::newRow("keep warning") << keep << "W"
                                  << "w we";
    QTest::newRow("keep error") << keep << "E"
                                << "e we";
    QTest::newRow("keep no fails or warning") << keep << "FW"
                                              << "ok w we";
    QTest::newRow("remove with no box ticked removes nothing") << remove << ""
                                                               << "ok i w e we";
    QTest::newRow("remove with all four removes everything") << remove << "FIWE"
                                                             << "";
    QTest::newRow("remove no fails") << remove << "F"
                                     << "i w e we";
    QTest::newRow("remove information") << remove << "I"
                                        << "ok w e we";
    QTest::newRow("remove warning") << remove << "W"
                                    << "ok i e";
    QTest::newRow("remove error") << remove << "E"
                                  << "ok i w";
}

void TestTransformVerifyRuns::rowFilter()
{
    QFETCH(QString, mode);
    QFETCH(QString, switches);
    QFETCH(QString, kept);

    Verifier verifier(makeDataset({{"row", "i", "w", "e"},
                                   {"ok", "", "", ""},
                                   {"i", "x", "", ""},
                                   {"w", "", "x", ""},
                                   {"e", "", "", "x"},
                                   {"we", "", "x", "x"}}));
    verifier.columnRule(1, Text, AllEmptyValues, QVariant(), Information);
    verifier.columnRule(2, Text, AllEmptyValues, QVariant(), Warning);
    verifier.columnRule(3, Text, AllEmptyValues, QVariant(), Error);
    verifier.set("Keep_Remove_rows", mode);
    verifier.set("No_Fail", switches.contains('F'));
    verifier.set("No_Info", switches.contains('I'));
    verifier.set("No_Warning", switches.contains('W'));
    verifier.set("No_Error", switches.contains('E'));
    const Dataset output = verifier.run();
    QCOMPARE(output.columnValues(0).join(' '), kept);
    // The marks of the rows that stay are theirs.
    for (int r = 0; r < output.rowCount(); ++r) {
        const QString &name = output.cell(r, 0);
        const int worst = name.contains('e') ? Error
            : name.contains('w')             ? Warning
            : name.contains('i')             ? Information
                                             : 3;
        QCOMPARE(output.issueSeverityOf(r, -1), worst);
    }
}

void TestTransformVerifyRuns::reportAndResult()
{
    Verifier verifier(makeDataset({{"code", "qty"},
                                   {"A1", "5"},
                                   {"b2", "1"},
                                   {"C3", "x"},
                                   {"d4", "-2"},
                                   {"E5", "1"},
                                   {"f6", "-3"},
                                   {"g7", "-4"},
                                   {"h8", "-5"},
                                   {"i9", "-6"}}));
    verifier.datasetRule(MinimumRows, 20, Information);
    verifier.columnRule(0, Text, IsUpperCase, QVariant(), Information);
    verifier.columnRule(1, Integer, MinimumInteger, 0, Warning);
    const Dataset output = verifier.run();
    QCOMPARE(output.rowCount(), 9);
    QVERIFY(!verifier.failed);
    const QString summary = "12 verification fail(s) (5 warning, 7 information)\n6 row(s) with "
                            "fails\n2 columns(s) with fails\nDataset rule: Minimum number of rows, "
                            "1 fail(s)\nColumn rule: Minimum value, 5 fail(s)\nColumn rule: Is "
                            "upper case, 6 fail(s)";
    const QStringList expected {
        summary,
        "Dataset [1 rule(s) active]",
        "Dataset rule: Minimum number of rows '20', 1 Information fail(s) (9 row(s))",
        "Column 1: 'code' [1 rule(s) active] 6 fails (0 Error, 0 Warning, 6 Information)",
        QString::fromUtf8("Column rule: Is upper case, 6 Information fail(s) (input row(s)="
                          "2,4,6,7,8…+1 more)"),
        "Column 2: 'qty' [1 rule(s) active] 5 fails (0 Error, 5 Warning, 0 Information)",
        "Column rule: Minimum value '0', 5 Warning fail(s) (input row(s)=4,6,7,8,9)"};
    QCOMPARE(verifier.transform().information(), expected);
    // Only the rules that fail with Warning or Error are warnings.
    QCOMPARE(verifier.transform().warnings(), QStringList {"Column 2 'qty': " + expected.last()});
    QCOMPARE(verifier.transform().result(), "12 fails (5 warning, 7 information)");

    // Nothing failing says so, and nothing is reported at the top but the count.
    Verifier clean(makeDataset({{"a"}, {"A"}}));
    clean.columnRule(0, Text, IsUpperCase);
    clean.run();
    QCOMPARE(clean.transform().result(), "No verifications fails");
    QCOMPARE(clean.transform().information().first(), "0 verification fail(s)");
    QVERIFY(clean.transform().warnings().isEmpty());
}

void TestTransformVerifyRuns::onlyRulesOfTheColumnTypeAreChecked()
{
    Verifier verifier(makeDataset({{"v"}, {"a1"}}));
    verifier.columnRule(0, Text, NoDigits);
    // The rule stays in the set, unchecked while the type doesn't offer it.
    verifier.rules.setColumnType(verifier.id(0), Selection);
    const Dataset output = verifier.run();
    QVERIFY(!output.hasIssues());
    QCOMPARE(verifier.transform().parameter("Rules")->summary(),
             "0 dataset rule(s) and 0 column rule(s).");
    verifier.rules.setColumnType(verifier.id(0), Text);
    verifier.run();
    QCOMPARE(verifier.transform().parameter("Rules")->summary(),
             "0 dataset rule(s) and 1 column rule(s).");
}

void TestTransformVerifyRuns::exclusions_data()
{
    QTest::addColumn<QList<int>>("ticked");
    QTest::addColumn<QList<int>>("active");

    QTest::newRow("all empty unticks all but the column name")
        << QList<int> {MatchColumnName, NoEmptyValues, NoDigits, AllEmptyValues}
        << QList<int> {MatchColumnName, AllEmptyValues};
    QTest::newRow("any rule unticks all empty")
        << QList<int> {AllEmptyValues, MatchColumnName, NoDigits}
        << QList<int> {MatchColumnName, NoDigits};
    QTest::newRow("no empty values and minimum characters exclude each other")
        << QList<int> {NoEmptyValues, AtLeastOneNonEmpty, MinimumCharacters}
        << QList<int> {MinimumCharacters};
    QTest::newRow("regex against starts, ends and contains")
        << QList<int> {StartsWith, EndsWith, MatchesRegex} << QList<int> {MatchesRegex};
    QTest::newRow("starts, ends and contains together")
        << QList<int> {MatchesRegex, StartsWith, EndsWith, Contains}
        << QList<int> {StartsWith, EndsWith, Contains};
    QTest::newRow("sentence case unticks the other cases")
        << QList<int> {IsLowerCase, IsTitleCase, IsSentenceCase} << QList<int> {IsSentenceCase};
    QTest::newRow("no whitespace against its six kinds")
        << QList<int> {NoTabs, NoDoubleSpaces, NoWhitespace, NoLineFeeds}
        << QList<int> {NoLineFeeds};
    QTest::newRow("one format rule at a time")
        << QList<int> {IsEmail, NoDigits, IsIban} << QList<int> {NoDigits, IsIban};
}

void TestTransformVerifyRuns::exclusions()
{
    QFETCH(QList<int>, ticked);
    QFETCH(QList<int>, active);

    VerifyRuleSet set;
    const ColumnId id(1, 1);
    for (int rule : ticked)
        set.setColumnRuleActive(id, rule, true);
    QList<int> found;
    for (const VerifyRule &rule : set.activeRules(id))
        found.append(rule.number);
    std::sort(found.begin(), found.end());
    std::sort(active.begin(), active.end());
    QCOMPARE(found, active);
}

void TestTransformVerifyRuns::documentRoundTrip()
{
    QScopedPointer<DataSource> node(
        makeDataSource(makeDataset({{"id", "when", "note"}, {"1", "1/1/2020", "x"}})));
    const Dataset &data = *node->dataset();
    VerifyRuleSet set;
    VerifyRule &rows = set.datasetRule(MinimumRows);
    rows.value = 3;
    rows.active = true;
    set.datasetRule(NoEmptyRows).severity = Error;
    set.setColumnType(data.columnId(2), Text);
    set.columnRule(data.columnId(2), MatchesRegex).value = QStringLiteral("^a,b^\x1f%c$");
    set.setColumnRuleActive(data.columnId(2), MatchesRegex, true);
    set.columnRule(data.columnId(2), OnlyListed).value = QStringLiteral("a,b c");
    set.setColumnType(data.columnId(1), Date);
    VerifyRule &minimum = set.columnRule(data.columnId(1), MinimumDate);
    minimum.value = QDate(2021, 2, 28);
    minimum.severity = Information;
    minimum.active = true;
    set.setColumnType(data.columnId(0), Real);
    set.columnRule(data.columnId(0), MaximumReal).value = 0.1;
    set.setColumnRuleActive(data.columnId(0), MaximumReal, true);

    Parameter written(ParameterType::VerifyRules, "Rules", "Verify rules", node.data());
    written.setValue(set.toVariant());
    const QString text = written.toText();
    QCOMPARE(written.summary(), "1 dataset rule(s) and 3 column rule(s).");

    Parameter read(ParameterType::VerifyRules, "Rules", "Verify rules", node.data());
    read.fromText(text);
    QCOMPARE(VerifyRuleSet::fromVariant(read.value()), set);
    QCOMPARE(read.toText(), text);
    // Columns are written by number: the third column comes first, as the set holds it.
    const QStringList fields = Parameter::splitFields(text);
    QCOMPARE(fields.mid(0, 6), (QStringList {"2", "4", "3", "3", "1", "1"}));
    QVERIFY(fields.contains("%5Ea%2Cb%5E%1F%25c%24"));
    QVERIFY(fields.contains("2021-02-28"));
    QVERIFY(fields.contains("0.1"));

    // A column the input no longer has is written as 0 and dropped on reading.
    Parameter elsewhere(ParameterType::VerifyRules, "Rules", "Verify rules", nullptr);
    elsewhere.setValue(set.toVariant());
    Parameter dropped(ParameterType::VerifyRules, "Rules", "Verify rules", node.data());
    dropped.fromText(elsewhere.toText());
    QCOMPARE(VerifyRuleSet::fromVariant(dropped.value()).columns().size(), 0);
    QCOMPARE(VerifyRuleSet::fromVariant(dropped.value()).datasetRules(), set.datasetRules());

    // Duplicating a branch gives the columns new ids, which the rules follow.
    QVERIFY(written.remapColumnIds({{data.columnId(1), ColumnId(99, 2)}}));
    QCOMPARE(VerifyRuleSet::fromVariant(written.value()).activeRules(ColumnId(99, 2)).size(), 1);
}

void TestTransformVerifyRuns::documentShortAndTruncatedTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("datasetRules");
    QTest::addColumn<QString>("columnRules");

    // Each rule reads as "number:active:severity"; the column rules are those of column 1.
    QTest::newRow("a short rule is the inactive rule past the table")
        << "2^2^4^3^4^3^^0^1^1^1^0^1^1^7"
        << "6:0:1 3:1:0"
        << "54:0:1";
    QTest::newRow("a long rule keeps its first four fields") << "1^6^3^5^1^1^extra^more^0"
                                                             << "3:1:1"
                                                             << "";
    QTest::newRow("text that ends early keeps what was read") << "2^4^3^2^0^1^4^5"
                                                              << "3:1:0"
                                                              << "";
    QTest::newRow("a rule number out of range reads but checks nothing")
        << "1^4^9^^2^1^1^1^3^1^4^60^^2^1"
        << "9:1:2"
        << "60:1:2";
    QTest::newRow("empty text") << ""
                                << ""
                                << "";
}

void TestTransformVerifyRuns::documentShortAndTruncatedTexts()
{
    QFETCH(QString, text);
    QFETCH(QString, datasetRules);
    QFETCH(QString, columnRules);

    QScopedPointer<DataSource> node(makeDataSource(makeDataset({{"a"}, {"1"}})));
    Parameter p(ParameterType::VerifyRules, "Rules", "Verify rules", node.data());
    p.fromText(text);
    const VerifyRuleSet set = VerifyRuleSet::fromVariant(p.value());
    auto describe = [](const QList<VerifyRule> &rules) {
        QStringList parts;
        for (const VerifyRule &rule : rules)
            parts.append(QStringLiteral("%1:%2:%3")
                             .arg(rule.number)
                             .arg(rule.active ? "1" : "0")
                             .arg(rule.severity));
        return parts.join(' ');
    };
    QCOMPARE(describe(set.datasetRules()), datasetRules);
    const VerifyColumn *column = set.column(node->dataset()->columnId(0));
    QCOMPARE(column ? describe(column->rules) : QString(), columnRules);
    QVERIFY(set.activeRules(node->dataset()->columnId(0)).isEmpty());
}

QTEST_GUILESS_MAIN(TestTransformVerifyRuns)
#include "tst_transformverifyruns.moc"
