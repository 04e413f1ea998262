#include "verifyfixtures.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QtTest>

using namespace VerifyRules;

namespace {

// One rule on a column "v" of the given cells: "x" for each row the rule marks, "." for the
// others, in row order.
QString failPattern(int type, int rule, const QVariant &value, bool caseSensitive,
                    const QStringList &cells)
{
    QList<QStringList> rows {{"v"}};
    for (const QString &cell : cells)
        rows.append({cell});
    Verifier verifier(makeDataset(rows));
    verifier.columnRule(0, type, rule, value);
    verifier.set("Case_Sensitive", caseSensitive);
    const Dataset output = verifier.run();
    QString pattern;
    for (int r = 0; r < output.rowCount(); ++r)
        pattern += output.cellIssues(r, 0).contains(rule) ? QLatin1Char('x') : QLatin1Char('.');
    return pattern;
}

void cellRuleColumns()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("rule");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<QString>("fails");
}

} // namespace

// Verify's rules: every rule failing and passing, table by family of rules, and the rules
// decided on a whole column and on the dataset, told by the marks they leave and the lines of
// the report.
class TestTransformVerify : public QObject
{
    Q_OBJECT

private slots:
    void presenceAndLength_data();
    void presenceAndLength() { checkCells(); }
    void numbersAndDates_data();
    void numbersAndDates() { checkCells(); }
    void listsAndText_data();
    void listsAndText() { checkCells(); }
    void characters_data();
    void characters() { checkCells(); }
    void identifiers_data();
    void identifiers() { checkCells(); }
    void localPaths();

    void wholeColumnRules_data();
    void wholeColumnRules();
    void datasetRules_data();
    void datasetRules();
    void emptyDataset();

private:
    void checkCells();
};

void TestTransformVerify::checkCells()
{
    QFETCH(int, type);
    QFETCH(int, rule);
    QFETCH(QVariant, value);
    QFETCH(bool, caseSensitive);
    QFETCH(QStringList, cells);
    QFETCH(QString, fails);
    QCOMPARE(failPattern(type, rule, value, caseSensitive, cells), fails);
}

void TestTransformVerify::presenceAndLength_data()
{
    cellRuleColumns();
    QTest::newRow("no empty values: white space is not empty")
        << int(Text) << int(NoEmptyValues) << QVariant() << false << QStringList {"a", "", " "}
        << ".x.";
    QTest::newRow("all empty values") << int(Text) << int(AllEmptyValues) << QVariant() << false
                                      << QStringList {"", " ", "a"} << ".xx";
    QTest::newRow("minimum characters counts white space")
        << int(Text) << int(MinimumCharacters) << QVariant(3) << false
        << QStringList {"abc", "ab", " ab", ""} << ".x.x";
    QTest::newRow("maximum characters") << int(Text) << int(MaximumCharacters) << QVariant(2)
                                        << false << QStringList {"ab", "abc", "é"} << ".x.";
    QTest::newRow("no blank values: only white space fails, empty passes")
        << int(Text) << int(NoBlankValues) << QVariant() << false
        << QStringList {"  ", "", " a ", "\t"} << "x..x";
    QTest::newRow("valid date in format: empty and impossible dates fail")
        << int(Date) << int(ValidDate) << QVariant("d/M/yyyy") << false
        << QStringList {"1/2/2020", "", "31/2/2020", "x", " 5/6/2021 "} << ".xxx.";
}

void TestTransformVerify::numbersAndDates_data()
{
    cellRuleColumns();
    QTest::newRow("numeric except listed, listed matched without case")
        << int(Real) << int(NumericExceptListed) << QVariant("NA,n/a") << false
        << QStringList {"1.5", "NA", "na", "x", "-3", ""} << "...x.x";
    QTest::newRow("numeric except listed, listed matched with case")
        << int(Real) << int(NumericExceptListed) << QVariant("NA,n/a") << true
        << QStringList {"1.5", "NA", "na"} << "..x";
    QTest::newRow("integer except listed: a zero fraction is an integer")
        << int(Integer) << int(IntegerExceptListed) << QVariant("") << false
        << QStringList {"12", "12.00", "12.5", "-7", "x"} << "..x.x";
    QTest::newRow("minimum real ignores what is no number")
        << int(Real) << int(MinimumReal) << QVariant(10.0) << false
        << QStringList {"10", "9.99", "abc", "1e3"} << ".x..";
    QTest::newRow("maximum real") << int(Real) << int(MaximumReal) << QVariant(10.0) << false
                                  << QStringList {"10", "10.01", "", "-5"} << ".x..";
    QTest::newRow("minimum integer ignores what is no integer")
        << int(Integer) << int(MinimumInteger) << QVariant(0) << false
        << QStringList {"-1", "0", "-1.5", "x"} << "x...";
    QTest::newRow("maximum integer") << int(Integer) << int(MaximumInteger) << QVariant(100)
                                     << false << QStringList {"101", "100", "99"} << "x..";
    // The format comes from the inferred date format of the column: all cells read d/M/yyyy.
    QTest::newRow("minimum date ignores empty and unreadable cells")
        << int(Date) << int(MinimumDate) << QVariant(QDate(2020, 1, 1)) << false
        << QStringList {"31/12/2019", "1/1/2020", "", "15/3/2020"} << "x...";
    QTest::newRow("maximum date") << int(Date) << int(MaximumDate) << QVariant(QDate(2020, 1, 1))
                                  << false << QStringList {"2/1/2020", "1/1/2020"} << "x.";
}

void TestTransformVerify::listsAndText_data()
{
    cellRuleColumns();
    QTest::newRow("only listed, without case")
        << int(Selection) << int(OnlyListed) << QVariant("red,green") << false
        << QStringList {"red", "Green", "blue", ""} << "..xx";
    QTest::newRow("only listed, with case")
        << int(Selection) << int(OnlyListed) << QVariant("red,green") << true
        << QStringList {"red", "Green"} << ".x";
    QTest::newRow("only listed with an empty list allows anything")
        << int(Selection) << int(OnlyListed) << QVariant("") << true << QStringList {"x"} << ".";
    QTest::newRow("not listed, without case")
        << int(Text) << int(NotListed) << QVariant("red") << false
        << QStringList {"red", "RED", "blue"} << "xx.";
    QTest::newRow("regex with case") << int(Text) << int(MatchesRegex) << QVariant("^[A-Z]{2}\\d$")
                                     << true << QStringList {"AB1", "ab1", "AB12"} << ".xx";
    QTest::newRow("regex without case")
        << int(Text) << int(MatchesRegex) << QVariant("^[A-Z]{2}\\d$") << false
        << QStringList {"AB1", "ab1", "AB12"} << "..x";
    QTest::newRow("an invalid regex matches nothing")
        << int(Text) << int(MatchesRegex) << QVariant("(") << false << QStringList {"(", "a"}
        << "xx";
    QTest::newRow("starts with, without case") << int(Text) << int(StartsWith) << QVariant("ab")
                                               << false << QStringList {"Abc", "xab"} << ".x";
    QTest::newRow("ends with") << int(Text) << int(EndsWith) << QVariant("z") << true
                               << QStringList {"az", "za", "aZ"} << ".xx";
    QTest::newRow("contains, with case") << int(Text) << int(Contains) << QVariant("mid") << true
                                         << QStringList {"amidb", "MID"} << ".x";
    QTest::newRow("an empty text to start with never fails")
        << int(Text) << int(StartsWith) << QVariant("") << true << QStringList {"x", ""} << "..";
    QTest::newRow("lower case: digits and empty pass")
        << int(Text) << int(IsLowerCase) << QVariant() << false
        << QStringList {"abc def", "aBc", "123", ""} << ".x..";
    QTest::newRow("upper case") << int(Text) << int(IsUpperCase) << QVariant() << false
                                << QStringList {"ABC", "AbC", "É"} << ".x.";
    QTest::newRow("title case") << int(Text) << int(IsTitleCase) << QVariant() << false
                                << QStringList {"The Quick Fox", "The quick fox", "USA"} << ".xx";
    QTest::newRow("sentence case")
        << int(Text) << int(IsSentenceCase) << QVariant() << false
        << QStringList {"The quick fox", "The Quick fox", "the fox"} << ".xx";
}

void TestTransformVerify::characters_data()
{
    cellRuleColumns();
    auto row = [](const char *name, int rule, const QStringList &cells, const char *fails) {
        QTest::newRow(name) << int(Text) << rule << QVariant() << false << cells << fails;
    };
    row("punctuation", NoPunctuation, {"abc", "a,b", "a-b", "a+b"}, ".xx.");
    row("digits, also of other scripts", NoDigits, {"abc", "a1", QString::fromUtf8("٣"), "½"},
        ".xx.");
    row("currency", NoCurrency, {"10", "$10", QString::fromUtf8("10€")}, ".xx");
    row("white space of any kind", NoWhitespace,
        {"ab", "a b", "a\tb", QString::fromUtf8("a\u00a0b")}, ".xxx");
    row("leading or trailing white space", NoOuterWhitespace, {"a b", " a", "a\n", ""}, ".xx.");
    row("tabs", NoTabs, {"a b", "a\tb"}, ".x");
    row("carriage returns", NoCarriageReturns, {"a\nb", "a\rb"}, ".x");
    row("line feeds", NoLineFeeds, {"a\rb", "a\nb"}, ".x");
    row("double spaces", NoDoubleSpaces, {"a b", "a  b", "a\t\tb"}, ".x.");
    row("symbols", NoSymbols, {"a", "a+b", QString::fromUtf8("©"), "a.b"}, ".xx.");
    row("non-ASCII above 255 only", NoNonAscii,
        {"abc", QString::fromUtf8("café"), QString::fromUtf8("€"), QString::fromUtf8("😀")}, "..xx");
    row("non-printable", NoNonPrintable, {"abc", "a\x01", QString::fromUtf8("😀"), "a\tb"}, ".x.x");
}

void TestTransformVerify::identifiers_data()
{
    // Each valid number was checked apart from this program (mod 10, mod 11 and mod 97 sums
    // in Python); each invalid one differs from a valid one by its check digit or its form.
    cellRuleColumns();
    auto row = [](const char *name, int rule, bool caseSensitive, const QStringList &cells,
                  const char *fails) {
        QTest::newRow(name) << int(Text) << rule << QVariant() << caseSensitive << cells << fails;
    };
    row("EAN13", IsEan13, false,
        {"4006381333931", "4006 3813 3393 1", "4006381333932", "400638133393", "4006381333931x"},
        "..xxx");
    row("UPC-A", IsUpcA, false, {"036000291452", "036000291453", "4006381333931"}, ".xx");
    row("GTIN of 8, 12, 13 and 14 digits", IsGtin, false,
        {"96385074", "036000291452", "4006381333931", "10012345678902", "96385075", "123456789"},
        "....xx");
    row("ISBN-10 and ISBN-13", IsIsbn, false,
        {"0-306-40615-2", "0-8044-2957-X", "978-0-306-40615-7", "0-306-40615-3", "4006381333931",
         "X-306-40615-2"},
        "...xxx");
    row("IBAN without case", IsIban, false,
        {"GB82 WEST 1234 5698 7654 32", "DE89 3704 0044 0532 0130 00", "gb82west12345698765432",
         "GB82 WEST 1234 5698 7654 33", "GB82 WEST 1234 5698 7654 3", "XX82WEST12345698765432",
         "GB82-WEST-1234-5698-7654-32"},
        "...xxxx");
    row("IBAN with case", IsIban, true, {"GB82WEST12345698765432", "gb82west12345698765432"}, ".x");
    row("ASIN", IsAsin, false, {"B000JQ0JNS", "b000jq0jns", "B000JQ0JN", "B000-JQ0JN", ""},
        "..xxx");
    row("ASIN with case", IsAsin, true, {"B000JQ0JNS", "b000jq0jns"}, ".x");
    row("email", IsEmail, false,
        {"ann.lee@example.com", "Ann@Example.COM", "user@[192.168.0.1]", "ann@example",
         "ann.example.com", ""},
        "...xxx");
    row("telephone", IsTelephone, false,
        {"(555) 123-4567", "+1 555 123 4567", "555.123.4567", "555-1234", "phone 555 123 4567"},
        "...xx");
}

void TestTransformVerify::localPaths()
{
    QTemporaryDir folder;
    QVERIFY(folder.isValid());
    const QString file = folder.filePath("data.txt");
    QFile touch(file);
    QVERIFY(touch.open(QIODevice::WriteOnly));
    touch.close();
    const QStringList cells {folder.path(), file, folder.filePath("missing"), " "};
    QCOMPARE(failPattern(Text, IsLocalFolder, QVariant(), false, cells), ".xxx");
    QCOMPARE(failPattern(Text, IsLocalFile, QVariant(), false, cells), "x.xx");
}

void TestTransformVerify::wholeColumnRules_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("rule");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("marked");

    QTest::newRow("match column name, without case")
        << int(Text) << int(MatchColumnName) << QVariant("V") << false << QStringList {"a"}
        << "Column rule: Match column name 'V', 0 Warning fail(s)"
        << ".";
    QTest::newRow("match column name, with case fails on the column")
        << int(Text) << int(MatchColumnName) << QVariant("V") << true << QStringList {"a"}
        << "Column rule: Match column name 'V', 1 Warning fail(s)"
        << ".";
    QTest::newRow("duplicate texts: one fail a value, every row of it marked")
        << int(Text) << int(NoDuplicateTexts) << QVariant() << false
        << QStringList {"b", "a", "B", "a", "c", "a"}
        << "Column rule: No duplicate values, 2 Warning fail(s) (input row(s)=2,4,6,1,3)"
        << "xxxx.x";
    QTest::newRow("duplicate texts with case")
        << int(Text) << int(NoDuplicateTexts) << QVariant() << true << QStringList {"b", "B", "b"}
        << "Column rule: No duplicate values, 1 Warning fail(s) (input row(s)=1,3)"
        << "x.x";
    QTest::newRow("duplicate integers read as numbers")
        << int(Integer) << int(NoDuplicateIntegers) << QVariant() << false
        << QStringList {"1", "+1", "01", "x", "x", "2"}
        << "Column rule: No duplicate values, 1 Warning fail(s) (input row(s)=1,2,3)"
        << "xxx...";
    QTest::newRow("duplicate dates read in the column's format")
        << int(Date) << int(NoDuplicateDates) << QVariant() << false
        << QStringList {"1/1/2000", "01/01/2000", "2/1/2000", ""}
        << "Column rule: No duplicate values, 1 Warning fail(s) (input row(s)=1,2)"
        << "xx..";
    QTest::newRow("integer gaps: each missing value a fail, five listed")
        << int(Integer) << int(NoIntegerGaps) << QVariant() << false
        << QStringList {"1", "9", "x", "3", "3"}
        << QString::fromUtf8(
               "Column rule: No gaps in values, 6 Warning fail(s) (missing value(s)=2,4,5,6,7…)")
        << ".....";
    QTest::newRow("no integers, no gaps")
        << int(Integer) << int(NoIntegerGaps) << QVariant() << false << QStringList {"x", ""}
        << "Column rule: No gaps in values, 0 Warning fail(s)"
        << "..";
    QTest::newRow("date gaps written in the column's format")
        << int(Date) << int(NoDateGaps) << QVariant() << false
        << QStringList {"30/12/2019", "2/1/2020", "31/12/2019"}
        << "Column rule: No gaps in values, 1 Warning fail(s) (missing value(s)=1/1/2020)"
        << "...";
    QTest::newRow("at least 1 non-empty")
        << int(Text) << int(AtLeastOneNonEmpty) << QVariant() << false << QStringList {"", ""}
        << "Column rule: At least 1 non-empty, 1 Warning "
           "fail(s)"
        << "..";
    QTest::newRow("require listed values: what no cell holds, in list order")
        << int(Selection) << int(RequireListed) << QVariant("c,a,B,d") << false
        << QStringList {"a", "b", "x"}
        << "Column rule: Require listed values 'c,a,B,d', 1 Warning fail(s) (required value(s) "
           "not found=c,d)"
        << "...";
}

void TestTransformVerify::wholeColumnRules()
{
    QFETCH(int, type);
    QFETCH(int, rule);
    QFETCH(QVariant, value);
    QFETCH(bool, caseSensitive);
    QFETCH(QStringList, cells);
    QFETCH(QString, line);
    QFETCH(QString, marked);

    QList<QStringList> rows {{"v"}};
    for (const QString &cell : cells)
        rows.append({cell});
    Verifier verifier(makeDataset(rows));
    verifier.columnRule(0, type, rule, value);
    verifier.set("Case_Sensitive", caseSensitive);
    const Dataset output = verifier.run();
    QVERIFY2(verifier.transform().information().contains(line),
             qPrintable(verifier.transform().information().join('\n')));
    QString pattern;
    for (int r = 0; r < output.rowCount(); ++r)
        pattern += output.cellIssues(r, 0).contains(rule) ? QLatin1Char('x') : QLatin1Char('.');
    QCOMPARE(pattern, marked);
    // A rule on the whole column marks the column even when no cell is to blame.
    const bool fails = !line.contains(QLatin1String(", 0 Warning"));
    QCOMPARE(output.issueSeverityOf(-1, 0) == Warning, fails);
    QCOMPARE(output.columnIssues().value(ColumnIndex(0)).contains(rule), fails);
}

void TestTransformVerify::datasetRules_data()
{
    QTest::addColumn<int>("rule");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("markedColumns");
    QTest::addColumn<QString>("markedRows");

    // The input: columns "id", "Name", "name", "id"; rows 2 and 4 empty throughout.
    QTest::newRow("duplicate names without case: every column of a repeated name")
        << int(NoDuplicateColumnNames) << QVariant() << false
        << "Dataset rule: No duplicate col names, 4 Warning fail(s) ('id'x2,'Name'x2)"
        << "xxxx"
        << "....";
    QTest::newRow("duplicate names with case")
        << int(NoDuplicateColumnNames) << QVariant() << true
        << "Dataset rule: No duplicate col names, 2 Warning fail(s) ('id'x2)"
        << "x..x"
        << "....";
    QTest::newRow("minimum columns") << int(MinimumColumns) << QVariant(5) << false
                                     << "Dataset rule: Minimum number of cols '5', 1 Warning "
                                        "fail(s) (4 column(s))"
                                     << "...."
                                     << "....";
    QTest::newRow("maximum columns passes at the limit")
        << int(MaximumColumns) << QVariant(4) << false
        << "Dataset rule: Maximum number of cols '4', 0 Warning fail(s)"
        << "...."
        << "....";
    QTest::newRow("minimum rows passes at the limit")
        << int(MinimumRows) << QVariant(4) << false
        << "Dataset rule: Minimum number of rows '4', 0 Warning fail(s)"
        << "...."
        << "....";
    QTest::newRow("maximum rows") << int(MaximumRows) << QVariant(3) << false
                                  << "Dataset rule: Maximum number of rows '3', 1 Warning fail(s) "
                                     "(4 row(s))"
                                  << "...."
                                  << "....";
    QTest::newRow("empty rows: white space is not empty")
        << int(NoEmptyRows) << QVariant() << false
        << "Dataset rule: No empty rows, 2 Warning fail(s) (input row(s)=2,4)"
        << "...."
        << ".x.x";
}

void TestTransformVerify::datasetRules()
{
    QFETCH(int, rule);
    QFETCH(QVariant, value);
    QFETCH(bool, caseSensitive);
    QFETCH(QString, line);
    QFETCH(QString, markedColumns);
    QFETCH(QString, markedRows);

    Verifier verifier(makeDataset({{"id", "Name", "name", "id"},
                                   {"1", "a", "", ""},
                                   {"", "", "", ""},
                                   {" ", "", "", ""},
                                   {"", "", "", ""}}));
    verifier.datasetRule(rule, value);
    verifier.set("Case_Sensitive", caseSensitive);
    const Dataset output = verifier.run();
    const QStringList information = verifier.transform().information();
    QVERIFY2(information.contains(line), qPrintable(information.join('\n')));
    // Dataset rules are marked apart from column rules of the same number.
    const int mark = VerifyRules::DatasetRuleMark + rule;
    QCOMPARE(VerifyRules::markedRuleName(mark), VerifyRules::datasetRuleName(rule));
    QString columns;
    for (int c = 0; c < output.columnCount(); ++c)
        columns += output.datasetColumnIssues().value(ColumnIndex(c)).contains(mark) ? 'x' : '.';
    QCOMPARE(columns, markedColumns);
    QString rows;
    for (int r = 0; r < output.rowCount(); ++r)
        rows += output.datasetRowIssues().value(RowIndex(r)).contains(mark) ? 'x' : '.';
    QCOMPARE(rows, markedRows);
    // Dataset rules never mark single cells.
    for (int r = 0; r < output.rowCount(); ++r) {
        for (int c = 0; c < output.columnCount(); ++c)
            QVERIFY(output.cellIssues(r, c).isEmpty());
    }
}

void TestTransformVerify::emptyDataset()
{
    Verifier verifier(makeDataset({{"a"}}));
    verifier.datasetRule(MinimumRows, 1, Error);
    verifier.columnRule(0, Text, NoEmptyValues);
    verifier.columnRule(0, Text, NoDuplicateTexts);
    verifier.columnRule(0, Text, MatchColumnName, "a");
    VerifyRule &nonEmpty = verifier.rules.columnRule(verifier.id(0), AtLeastOneNonEmpty);
    nonEmpty.active = true;
    nonEmpty.severity = Information;
    // Ticked by hand past the exclusion, to see both decided on no rows.
    const Dataset output = verifier.run();
    QCOMPARE(output.rowCount(), 0);
    QCOMPARE(verifier.transform().result(), "2 fails (1 error, 1 information)");
    QVERIFY(verifier.failed);
    const QStringList information = verifier.transform().information();
    QVERIFY(information.contains("Column rule: No empty values, 0 Warning fail(s)"));
    QVERIFY(information.contains("Column rule: At least 1 non-empty, 1 Information fail(s)"));
}

QTEST_GUILESS_MAIN(TestTransformVerify)
#include "tst_transformverify.moc"
