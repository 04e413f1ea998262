#include "data/valueinterpretation.h"
#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformcalculate.h"

#include <QCoreApplication>
#include <QtTest>

#include <ctime>

using Rows = QList<QStringList>;

// Calculate: what each operation makes of one row (numbers, integers, booleans, texts, dates,
// times), when a column counts as dates, the messages of failures and the automatic names.
// Values are written "[name]" for the column of that header and as plain text for a constant.
class TestTransformCalculate : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void operations_data();
    void operations();
    void dateColumns_data();
    void dateColumns();
    void messagesAndNames_data();
    void messagesAndNames();
    void failureCounts_data();
    void failureCounts();
    void optionStates_data();
    void optionStates();
    void oldOperationNames_data();
    void oldOperationNames();

private:
    struct Run
    {
        Dataset output;
        QStringList warnings;
        QString result;
        int progressReports = 0;
    };
    static Run calculate(const Rows &table, const QString &operation, const QString &value1,
                         const QString &value2, bool autoName = true);
};

void TestTransformCalculate::initTestCase()
{
    // Group separators, day-first dates and epoch texts must not follow the machine.
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    setDateFormats(defaultDateFormats(false));
    qputenv("TZ", "UTC");
    tzset();
}

TestTransformCalculate::Run TestTransformCalculate::calculate(const Rows &table,
                                                              const QString &operation,
                                                              const QString &value1,
                                                              const QString &value2, bool autoName)
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(table)));
    TransformCalculate transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Operation")->setValue(operation);
    transform.parameter("Auto_New_Name")->setValue(autoName);
    const QStringList values {value1, value2};
    for (int i = 0; i < 2; ++i) {
        const QString &value = values.at(i);
        const QString number = QString::number(i + 1);
        const bool isColumn = value.startsWith('[') && value.endsWith(']');
        transform.parameter("Type" + number)->setValue(isColumn ? "Column" : "Constant");
        const int column = node->dataset()->header().indexOf(value.mid(1, value.size() - 2));
        transform.parameter("Column" + number)
            ->setColumnId(isColumn && column >= 0 ? node->dataset()->columnId(column) : ColumnId());
        transform.parameter("Constant" + number)->setValue(isColumn ? QString() : value);
    }
    Run run;
    connect(&transform, &Transform::processed, [&run] { ++run.progressReports; });
    run.output = runTransform(transform, {node.data()});
    run.warnings = transform.warnings();
    run.result = transform.result();
    return run;
}

void TestTransformCalculate::operations_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<QString>("expected");

    // A result of "!..." stands for the error text "Error: ...".
    struct Case
    {
        const char *name, *operation, *a, *b, *expected;
    };
    // clang-format off
    static const Case cases[] = {
        // Arithmetic: currency and group separators are read, 15 significant digits written.
        {"add", "+ Add", "$1,000.50", "1", "1001.5"},
        {"an empty cell is no zero", "+ Add", "", "2", "!number expected"},
        {"no binary noise", "- Subtract", "0.3", "0.1", "0.2"},
        {"divide to 15 digits", "/ Divide", "1", "3", "0.333333333333333"},
        {"divide by 0", "/ Divide", "1", "0", "!divide by 0"},
        {"trailing zero dropped", "^ Power", "2", "0.5", "1.4142135623731"},
        {"power overflow", "^ Power", "10", "400", "NaN"},
        {"multiply overflow", "* Multiply", "1e300", "-1e300", "NaN"},
        {"maximum as numbers", "Maximum", "10", "9.5", "10"},
        {"modulus takes a's sign", "% Modulus", "-7", "3", "-1"},
        {"modulus of 7.00", "% Modulus", "7.00", "2", "1"},
        {"modulus by 0", "% Modulus", "7", "0", "!invalid operation"},
        {"modulus of a fraction", "% Modulus", "7.5", "2", "!invalid operation"},
        {"modulus of INT_MIN by -1", "% Modulus", "-2147483648", "-1", "0"},
        {"and bitwise", "AndBitwise", "12", "10", "8"},
        {"xor bitwise", "XorBitwise", "12", "10", "6"},
        {"bitwise past 32 bits", "OrBitwise", "4294967296", "1", "!invalid operation"},
        // Booleans: words in any case, or numbers.
        {"and", "And", " TRUE ", "2", "true"},
        {"xor", "Xor", "true", "1", "false"},
        {"boolean of a word", "Or", "yes", "true", "!boolean expected"},
        {"boolean of empty", "And", "", "true", "!boolean expected"},
        // Texts, case sensitive and untrimmed; they never fail.
        {"levenshtein", "LevDistance", "kitten", "sitting", "3"},
        {"index of", "IndexOf", "b", "abcb", "2"},
        {"index of, case matters", "IndexOf", "B", "abc", ""},
        {"index of empty", "IndexOf", "", "abc", "1"},
        {"last index of", "LastIndexOf", "b", "abcb", "4"},
        {"last index of empty", "LastIndexOf", "", "abc", "4"},
        {"occurrences", "Occurrences", "a", "banana", "3"},
        {"occurrences of empty", "Occurrences", "", "x", ""},
        {"length untrimmed", "Length", " ab ", "", "4"},
        {"length of empty", "Length", "", "", "0"},
        {"words", "WordCount", "Hello, world!  42x", "", "3"},
        {"words of empty", "WordCount", "", "", "0"},
        // One number: an integer, 2.0 included, keeps the integer branch.
        {"abs fraction", "Abs", "-2.5", "", "2.5"},
        {"abs of text", "Abs", "abc", "", "!number expected"},
        {"ceiling", "Ceiling", "2.1", "", "3"},
        {"floor negative", "Floor", "-2.1", "", "-3"},
        {"round half up", "Round", "2.5", "", "3"},
        {"round negative half up", "Round", "-2.5", "", "-2"},
        {"round just below a half", "Round", "0.49999999999999994", "", "0"},
        {"sign", "Sign", "-0.5", "", "-1"},
        {"increment 2.0", "Increment", "2.0", "", "3"},
        {"increment fraction", "Increment", "2.25", "", "3.25"},
        {"log2", "Log2", "0.125", "", "-3"},
        {"ln of 0", "Ln", "0", "", "!>0 expected"},
        {"date operation on no date", "Year", "2024", "", "!date expected"},
        // Dates of a column, in the format that reads them.
        {"year iso", "Year", "2024-05-17", "", "2024"},
        {"day of week of a leap day", "DayOfWeek", "29/02/2024", "", "4"},
        {"day of year", "DayOfYear", "31/12/2024", "", "366"},
        {"quarter", "Quarter", "1/10/2023", "", "4"},
        {"February 2023", "DaysInMonth", "15/2/2023", "", "28"},
        {"February 2024", "DaysInMonth", "15/2/2024", "", "29"},
        {"days in a leap year", "DaysInYear", "1/6/2024", "", "366"},
        {"week of year", "WeekOfYear", "1/2/2024", "", "2024,05"},
        {"week of the year before", "WeekOfYear", "1/1/2021", "", "2020,53"},
        {"julian day", "DateToJulianDay", "1/1/2000", "", "2451545"},
        {"increment at a month end", "Increment", "31/01/2023", "", "1/2/2023"},
        {"decrement over February", "Decrement", "1/3/2023", "", "28/2/2023"},
        {"abs of a date", "Abs", "1/1/2024", "", "!invalid operation"},
        {"two dates subtract", "- Subtract", "31/12/2023", "01/01/2023", "364"},
        {"two dates maximum", "Maximum", "1/1/2024", "31/12/2023", "1/1/2024"},
        {"two dates add", "+ Add", "1/1/2024", "31/12/2023", "!invalid operation"},
        {"leap day plus 1", "+ Add", "29/02/2024", "1", "1/3/2024"},
        {"date minus days", "- Subtract", "1/1/2024", "1", "31/12/2023"},
        {"date plus a fraction", "+ Add", "1/1/2024", "1.5", "!integer expected"},
        {"date times days", "* Multiply", "1/1/2024", "2", "!invalid operation"},
        {"number plus date", "+ Add", "1", "1/1/2024", "!invalid operation"},
        // Times and epochs.
        {"time h:m", "TimeToMSecs", "1:2", "", "3720000"},
        {"time with fraction", "TimeToMSecs", "1:02:03.5", "", "3723500"},
        {"time past a day", "TimeToMSecs", "100:0:0", "", "360000000"},
        {"time minute 60", "TimeToMSecs", "1:60", "", "!h:m:s(.z) time expected"},
        {"time negative", "TimeToMSecs", "-1:00", "", "!h:m:s(.z) time expected"},
        {"time of four parts", "TimeToMSecs", "1:2:3:4", "", "!h:m:s(.z) time expected"},
        {"time fraction rounds to 1000", "TimeToMSecs", "1:2:3.9996", "", "!h:m:s(.z) time expected"},
        {"msecs of a day", "MSecsToTime", "86400000", "", "24:00:00"},
        {"msecs with millis", "MSecsToTime", "1500", "", "00:00:01.500"},
        {"msecs of two days", "MSecsToTime", "176400000", "", "49:00:00"},
        {"msecs negative", "MSecsToTime", "-1", "", "!integer out of expected range"},
        {"msecs fraction", "MSecsToTime", "1.5", "", "!integer expected"},
        {"julian to date", "JulianDayToDate", "2451545", "", "2000-01-01"},
        {"julian past QDate", "JulianDayToDate", "784354017365", "", "!Julian days expected"},
        {"julian past year 9999", "JulianDayToDate", "5373485", "", "!Date out of range"},
        {"iso to msecs", "DateTimeToMSecs", " 1970-01-01T00:00:01.500Z", "", "1500"},
        {"iso of a word", "DateTimeToMSecs", "soon", "", "!ISO datetime expected"},
        {"msecs to iso", "MSecsToDateTime", "1500", "", "1970-01-01T00:00:01.500"},
        {"msecs to iso of text", "MSecsToDateTime", "x", "", "!integer expected"},
    };
    // clang-format on
    for (const Case &c : cases) {
        QString expected = c.expected;
        if (expected.startsWith('!'))
            expected.replace(0, 1, "Error: ");
        QTest::newRow(c.name) << c.operation << c.a << c.b << expected;
    }
}

void TestTransformCalculate::operations()
{
    QFETCH(QString, operation);
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(QString, expected);

    const Run run = calculate({{"a", "b"}, {a, b}}, operation, "[a]", "[b]");
    QCOMPARE(run.output.columnCount(), 3);
    QCOMPARE(run.output.cell(0, 2), expected);
    QCOMPARE(run.output.row(0).mid(0, 2), (QStringList {a, b}));
    const bool failed = expected.startsWith("Error: ");
    QCOMPARE(run.result, QString("%1 calculations succeeded, %2 failed").arg(!failed).arg(failed));
}

void TestTransformCalculate::dateColumns_data()
{
    QTest::addColumn<bool>("monthFirst");
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("value2");
    QTest::addColumn<QStringList>("expected");

    Rows fiftyDates;
    QStringList fiftyYears;
    for (int i = 1; i <= 50; ++i) {
        fiftyDates.append({QString("%1/1/2024").arg(i % 28 + 1)});
        fiftyYears.append("2024");
    }
    Rows laterStray = fiftyDates;
    laterStray.append({"not a date"});
    QTest::newRow("a stray value past the first 50 fails alone")
        << false << laterStray << "Year" << QString()
        << (fiftyYears + QStringList {"Error: date expected"});
    QTest::newRow("a stray value in the first 50: no date column")
        << false << Rows {{"1/1/2024"}, {"x"}, {"2/1/2024"}} << "Year" << QString()
        << QStringList {"Error: date expected", "Error: date expected", "Error: date expected"};
    QTest::newRow("empty cells are skipped by the probe, not by the row")
        << false << Rows {{""}, {"2/1/2024"}, {""}} << "Increment" << QString()
        << QStringList {"Error: date expected", "3/1/2024", "Error: date expected"};
    QTest::newRow("an empty column is no date column")
        << false << Rows {{""}, {""}} << "DayOfMonth" << QString()
        << QStringList {"Error: date expected", "Error: date expected"};
    QTest::newRow("the column's format wins over the list's order")
        << true << Rows {{"13/1/2024"}, {"1/2/2024"}} << "Increment" << QString()
        << QStringList {"14/1/2024", "2/2/2024"};
    // Read month first, 1/2/2024 would be 2 January and give 11.
    QTest::newRow("a constant prefers the format of Value 1")
        << true << Rows {{"13/1/2024"}} << "- Subtract"
        << "1/2/2024" << QStringList {"-19"};
    QTest::newRow("date plus a constant 7 in the column's format")
        << false << Rows {{"2024-12-28"}} << "+ Add"
        << " 7 " << QStringList {"2025-1-4"};
}

void TestTransformCalculate::dateColumns()
{
    QFETCH(bool, monthFirst);
    QFETCH(Rows, rows);
    QFETCH(QString, operation);
    QFETCH(QString, value2);
    QFETCH(QStringList, expected);

    setDateFormats(defaultDateFormats(monthFirst));
    Rows table {{"d"}};
    table.append(rows);
    const Run run = calculate(table, operation, "[d]", value2);
    setDateFormats(defaultDateFormats(false));
    QCOMPARE(run.output.columnValues(1), expected);
}

void TestTransformCalculate::messagesAndNames_data()
{
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("value1");
    QTest::addColumn<QString>("value2");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("warnings");

    // Messages are joined by "|"; a failure ends them with an empty line.
    struct Case
    {
        const char *name, *operation, *value1, *value2, *newName, *messages;
    };
    // clang-format off
    static const Case cases[] = {
        {"column and trimmed constant", "+ Add", "[n]", " 7 ", "n+7",
         "'x' is not a valid value for this operation in column 'n' at row 1"},
        {"both values bad: two messages, one row", "* Multiply", "[n]", "y", "n*y",
         "'x' is not a valid value for this operation in column 'n' at row 1|"
         "'y' is not a valid value for this operation at row 1"},
        {"one constant keeps its blanks; its %3 takes the row", "Abs", " x", "[t]", "Abs( x)",
         "' x' is not a number at row 1"},
        {"one column", "Log10", "[t]", "", "Log10(t)", "'0' <= 0 in column 't' at row 1"},
        {"divide names the divisor", "/ Divide", "5", "[t]", "5/t",
         "Divide by 0 in column 't' at row 1"},
        {"modulus by a constant 0", "% Modulus", "5", "0", "5%0", "Modulus by 0 at row 1"},
        {"modulus of a fraction", "% Modulus", "[s]", "2", "s%2",
         "'2.5' is not an integer in column 's' at row 1"},
        {"days that are no integer", "+ Add", "[d]", "x", "d+x", "'x' is not an integer at row 1"},
        {"two dates", "Maximum", "[d]", "[d]", "Maximum(d,d)", ""},
        {"not for two dates", "/ Divide", "[d]", "[d]", "d/d",
         "Operation not valid on 2 dates at row 1"},
        {"not for a date and a number", "Maximum", "[d]", "[t]", "Maximum(d,t)",
         "Operation not valid on a date in column 'd' at row 1"},
        {"a number and a date", "^ Power", "[t]", "[d]", "t^d",
         "Operation not valid on date '1/1/2024' in column 'd' at row 1"},
        {"a date constant", "Floor", "2/1/2024", "", "Floor(2/1/2024)",
         "Operation not valid on date '2/1/2024' at row 1"},
        {"a %1 in a header is replaced later", "+ Add", "[p%1]", "7", "p+7%3", ""},
        {"a message keeps a %2 of the value", "Year", "%2", "", "Year(%2)",
         "'%2' is not a valid date at row 1"},
        {"time", "TimeToMSecs", "[s]", "", "TimeToMSecs(s)",
         "'2.5' is not a valid time in column 's' at row 1"},
        {"julian day of a fraction", "JulianDayToDate", "[s]", "", "JulianDayToDate(s)",
         "'2.5' is not a valid integer expected for msecs in column 's' at row 1"},
        {"msecs out of range", "MSecsToTime", "-5", "", "MSecsToTime(-5)",
         "'-5' msecs out of range at row 1"},
    };
    // clang-format on
    const Rows table {{"n", "d", "t", "s", "p%1"}, {"x", "1/1/2024", "0", "2.5", "1"}};
    for (const Case &c : cases) {
        QStringList warnings;
        if (*c.messages)
            warnings = QString(c.messages).split('|') + QStringList {QString()};
        QTest::newRow(c.name) << table << c.operation << c.value1 << c.value2 << c.newName
                              << warnings;
    }
    QTest::newRow("no column: nothing calculated, the option reported")
        << table << "+ Add"
        << "[gone]"
        << "1"
        << "6" << QStringList {"1 option not set ('Value 1')"};
}

void TestTransformCalculate::messagesAndNames()
{
    QFETCH(Rows, rows);
    QFETCH(QString, operation);
    QFETCH(QString, value1);
    QFETCH(QString, value2);
    QFETCH(QString, name);
    QFETCH(QStringList, warnings);

    const Run run = calculate(rows, operation, value1, value2);
    QCOMPARE(run.output.headerText(run.output.lastColumn()), name);
    QCOMPARE(run.warnings, warnings);
    // Two messages for one row still count one failed row.
    const int failedRows = warnings.isEmpty() ? 0 : 1;
    QCOMPARE(run.result,
             QString("%1 calculations succeeded, %2 failed").arg(1 - failedRows).arg(failedRows));

    // A name given by hand replaces the automatic one, but only once there is a calculation.
    const bool calculated = !warnings.value(0).endsWith("not set ('Value 1')");
    const Run named = calculate(rows, operation, value1, value2, false);
    QCOMPARE(named.output.headerText(named.output.lastColumn()),
             calculated ? QString("Calculate") : name);
}

void TestTransformCalculate::failureCounts_data()
{
    QTest::addColumn<int>("bad");
    QTest::addColumn<int>("good");
    QTest::addColumn<QStringList>("tail");
    QTest::addColumn<QString>("result");

    const QString fifth = "'x5' is not a valid value for this operation in column 'n' at row 5";
    QTest::newRow("five: all listed")
        << 5 << 0 << QStringList {fifth, ""} << "0 calculations succeeded, 5 failed";
    QTest::newRow("six: one other")
        << 6 << 0 << QStringList {fifth, "+ 1 other", ""} << "0 calculations succeeded, 6 failed";
    QTest::newRow("seven among many: counts grouped")
        << 7 << 2500 << QStringList {fifth, "+ 2 others", ""}
        << "2,500 calculations succeeded, 7 failed";
}

void TestTransformCalculate::failureCounts()
{
    QFETCH(int, bad);
    QFETCH(int, good);
    QFETCH(QStringList, tail);
    QFETCH(QString, result);

    Rows table {{"n"}};
    for (int i = 1; i <= bad; ++i)
        table.append({QString("x%1").arg(i)});
    for (int i = 0; i < good; ++i)
        table.append({QString::number(i)});
    const Run run = calculate(table, "+ Add", "[n]", "1");
    QCOMPARE(run.warnings.size(), 5 + tail.size() - 1);
    QCOMPARE(run.warnings.mid(4), tail);
    QCOMPARE(run.result, result);
    QCOMPARE(run.output.cell(bad - 1, 1), QString("Error: number expected"));
    if (good > 0)
        QCOMPARE(run.output.cell(bad + good - 1, 1), QString::number(good));
    // Progress before rows 0, 1000, 2000 ... only.
    QCOMPARE(run.progressReports, (bad + good + 999) / 1000);
}

void TestTransformCalculate::optionStates_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("type1");
    QTest::addColumn<QString>("type2");
    QTest::addColumn<QStringList>("enabled");
    QTest::addColumn<QString>("type1ToolTip");

    QTest::newRow("two values: columns")
        << "+ Add"
        << "Column"
        << "Column" << QStringList {"Column1", "Type2", "Column2"}
        << "Select whether the first value is a column or a constant.";
    QTest::newRow("two values: constants")
        << "LevDistance"
        << "Constant"
        << "Constant" << QStringList {"Constant1", "Type2", "Constant2"}
        << "Select whether the first value is a column or a constant.";
    QTest::newRow("one value hides the second")
        << "Year"
        << "Constant"
        << "Column" << QStringList {"Constant1"}
        << "Select whether the value is a column or a constant.";
}

void TestTransformCalculate::optionStates()
{
    QFETCH(QString, operation);
    QFETCH(QString, type1);
    QFETCH(QString, type2);
    QFETCH(QStringList, enabled);
    QFETCH(QString, type1ToolTip);

    TransformCalculate transform;
    transform.createParameters({}, false);
    transform.parameter("Operation")->setValue(operation);
    transform.parameter("Type1")->setValue(type1);
    transform.parameter("Type2")->setValue(type2);
    QStringList shown;
    for (const ParameterState &state : transform.parameterStates())
        if (state.enabled)
            shown.append(state.key);
    QCOMPARE(shown, enabled);
    QCOMPARE(transform.parameter("Type1")->toolTip(), type1ToolTip);
    const QString which = type1ToolTip.contains("first") ? "the first value" : "the value";
    QCOMPARE(transform.parameter("Type1")->choiceToolTips(),
             QStringList({"Set " + which + " as a column.", "Set " + which + " as a constant."}));
    QCOMPARE(transform.parameter("Type2")->toolTip(),
             QString("Select whether the second value is a column or a constant."));
}

void TestTransformCalculate::oldOperationNames_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("migrated");

    QTest::newRow("before 68") << 67 << "JulianDay"
                               << "DateToJulianDay";
    QTest::newRow("at 68") << 68 << "JulianDay"
                           << "JulianDay";
    QTest::newRow("other operations stay") << 50 << "%2B%20Add"
                                           << "%2B%20Add";
}

void TestTransformCalculate::oldOperationNames()
{
    QFETCH(int, version);
    QFETCH(QString, text);
    QFETCH(QString, migrated);

    QList<StoredParameter> stored {{"New_Name", 7, "JulianDay"}, {"Operation", 6, text}};
    TransformCalculate().migrateParameters(version, &stored);
    QCOMPARE(stored.at(0).text, QString("JulianDay"));
    QCOMPARE(stored.at(1).text, migrated);
}

QTEST_GUILESS_MAIN(TestTransformCalculate)
#include "tst_transformcalculate.moc"
