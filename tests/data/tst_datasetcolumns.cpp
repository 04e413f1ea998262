#include "data/dataset.h"
#include "data/valueinterpretation.h"
#include "transforms/framework/comparisonoperator.h"

#include <QtTest>

namespace {

Dataset tableOf(const QStringList &header, const QList<QStringList> &rows)
{
    Dataset dataset;
    dataset.setColumnCount(header.size());
    dataset.setHeader(header);
    for (const QStringList &row : rows)
        dataset.appendRow(row, true);
    return dataset;
}

// One column, no header; the cells top to bottom.
Dataset columnOf(const QStringList &cells)
{
    Dataset dataset;
    dataset.setColumnCount(1);
    for (const QString &cell : cells)
        dataset.appendRow({cell}, true);
    return dataset;
}

QStringList repeated(const QString &text, int count)
{
    QStringList cells;
    for (int i = 0; i < count; ++i)
        cells.append(text);
    return cells;
}

} // namespace

class TestDatasetColumns : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void numericColumn_data();
    void numericColumn();
    void numericColumnLooksAtTheFirstRowsOnly();
    void otherColumnTests_data();
    void otherColumnTests();
    void dateColumn_data();
    void dateColumn();
    void dateColumnSamplesNonEmptyCells();
    void keyLikeColumn_data();
    void keyLikeColumn();
    void columnKind_data();
    void columnKind();
    void numericColumns();
    void outOfRangeColumns();

    void substituteColumnVariables_data();
    void substituteColumnVariables();
    void substitutionFollowsTheNameTableGiven();
};

void TestDatasetColumns::init()
{
    QLocale::setDefault(QLocale::c());
}

void TestDatasetColumns::numericColumn_data()
{
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<bool>("stripCurrency");
    QTest::addColumn<bool>("numeric");

    QTest::newRow("numbers") << QStringList({"1", " 2.5 ", "-3e2"}) << false << true;
    QTest::newRow("blanks skipped") << QStringList({"", "1", "   ", "2"}) << false << true;
    QTest::newRow("nan does not stop it") << QStringList({"1", "NaN", "2"}) << false << true;
    QTest::newRow("nan alone is not enough") << QStringList({"nan", "NAN"}) << false << false;
    QTest::newRow("only empty cells") << QStringList({"", " ", ""}) << false << false;
    QTest::newRow("one word") << QStringList({"1", "2", "many"}) << false << false;
    QTest::newRow("currency kept") << QStringList({"$1", "$2"}) << false << false;
    QTest::newRow("currency stripped")
        << QStringList({"$1", QString::fromUtf8("2 €")}) << true << true;
}

void TestDatasetColumns::numericColumn()
{
    QFETCH(QStringList, cells);
    QFETCH(bool, stripCurrency);
    QFETCH(bool, numeric);
    QCOMPARE(columnOf(cells).isNumericColumn(0, stripCurrency), numeric);
}

void TestDatasetColumns::numericColumnLooksAtTheFirstRowsOnly()
{
    QStringList cells = repeated(QStringLiteral("7"), 100);
    cells.append(QStringLiteral("seven"));
    const Dataset dataset = columnOf(cells);
    QVERIFY(dataset.isNumericColumn(0));
    QVERIFY(!dataset.isNumericColumn(0, false, 101));
    QVERIFY(dataset.isNumericColumn(0, false, 100));

    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    QVERIFY(columnOf({QStringLiteral("1,5"), QStringLiteral("2")}).isNumericColumn(0));
}

void TestDatasetColumns::otherColumnTests_data()
{
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<bool>("boolean");
    QTest::addColumn<bool>("plainNumber");
    QTest::addColumn<bool>("time");

    QTest::newRow("booleans") << QStringList({"true", " FALSE ", ""}) << true << false << false;
    QTest::newRow("numbers are not booleans")
        << QStringList({"true", "1"}) << false << false << false;
    QTest::newRow("plain numbers") << QStringList({"0", "-1.5e3", ""}) << false << true << false;
    QTest::newRow("times") << QStringList({"12:30", " 1:2:3", ""}) << false << false << true;
    QTest::newRow("bad time") << QStringList({"12:30", "25:00"}) << false << false << false;
    QTest::newRow("only empty cells") << QStringList({"", "  "}) << false << false << false;
}

void TestDatasetColumns::otherColumnTests()
{
    QFETCH(QStringList, cells);
    QFETCH(bool, boolean);
    QFETCH(bool, plainNumber);
    QFETCH(bool, time);

    const Dataset dataset = columnOf(cells);
    QCOMPARE(dataset.isBooleanColumn(0), boolean);
    QCOMPARE(dataset.isPlainNumberColumn(0), plainNumber);
    QCOMPARE(dataset.isTimeColumn(0), time);
}

void TestDatasetColumns::dateColumn_data()
{
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<bool>("monthFirst");
    QTest::addColumn<bool>("date");
    QTest::addColumn<QString>("format");

    QTest::newRow("american") << QStringList({"1/2/2024", "12/31/2023"}) << true << true
                              << "M/d/yyyy";
    QTest::newRow("day over twelve")
        << QStringList({"1/2/2024", "13/1/2024"}) << true << true << "d/M/yyyy";
    QTest::newRow("day first list")
        << QStringList({"1/2/2024", "2/3/2024"}) << false << true << "d/M/yyyy";
    QTest::newRow("iso") << QStringList({"2024-1-2", " 2023-12-31 "}) << true << true << "yyyy-M-d";
    QTest::newRow("one stray value")
        << QStringList({"1/2/2024", "2/3/2024", "later"}) << true << false << "M/d/yyyy";
    // Two formats parse one cell each: the earlier one is the best guess.
    QTest::newRow("tie") << QStringList({"13/1/2024", "1/13/2024", "x"}) << true << false
                         << "M/d/yyyy";
    QTest::newRow("nothing parses") << QStringList({"a", "b"}) << true << false << "";
    QTest::newRow("only empty cells") << QStringList({"", " "}) << true << false << "";
}

void TestDatasetColumns::dateColumn()
{
    QFETCH(QStringList, cells);
    QFETCH(bool, monthFirst);
    QFETCH(bool, date);
    QFETCH(QString, format);

    QString found = QStringLiteral("stale");
    QCOMPARE(columnOf(cells).isDateColumn(0, defaultDateFormats(monthFirst), &found), date);
    QCOMPARE(found, format);
}

void TestDatasetColumns::dateColumnSamplesNonEmptyCells()
{
    // 50 dates spread over 100 rows by blanks, then a stray value: the stray is the 51st
    // non-empty cell and is not looked at.
    QStringList cells;
    for (int i = 0; i < 50; ++i)
        cells << QStringLiteral("3/4/2024") << QString();
    cells << QStringLiteral("never");
    const Dataset dataset = columnOf(cells);
    const QStringList formats = defaultDateFormats(true);
    QString format;
    QVERIFY(dataset.isDateColumn(0, formats, &format));
    QCOMPARE(format, QStringLiteral("M/d/yyyy"));
    QVERIFY(!dataset.isDateColumn(0, formats, &format, 51));
}

void TestDatasetColumns::keyLikeColumn_data()
{
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<bool>("keyLike");

    QTest::newRow("codes") << QStringList({"A1", "B2", "C-3"}) << true;
    QTest::newRow("blank inside") << QStringList({"A1", "B 2"}) << false;
    QTest::newRow("point") << QStringList({"A1", "1.5"}) << false;
    QTest::newRow("comma") << QStringList({"A1", "1,5"}) << false;
    QTest::newRow("dates") << QStringList({"1/2/2024", "2/3/2024"}) << false;
}

void TestDatasetColumns::keyLikeColumn()
{
    QFETCH(QStringList, cells);
    QFETCH(bool, keyLike);
    QCOMPARE(columnOf(cells).isKeyLikeColumn(0, defaultDateFormats(true)), keyLike);
}

void TestDatasetColumns::columnKind_data()
{
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("format");

    QTest::newRow("numeric") << QStringList({"1", "2"}) << 1 << "";
    QTest::newRow("boolean") << QStringList({"true", "false"}) << 2 << "";
    QTest::newRow("time") << QStringList({"10:15", "11:00"}) << 4 << "";
    QTest::newRow("date") << QStringList({"2024-1-2", "2024-2-3"}) << 3 << "yyyy-M-d";
    QTest::newRow("text") << QStringList({"1/2/2024", "soon"}) << 0 << "";
    QTest::newRow("empty") << QStringList({"", ""}) << 0 << "";
}

void TestDatasetColumns::columnKind()
{
    QFETCH(QStringList, cells);
    QFETCH(int, kind);
    QFETCH(QString, format);

    QString found = QStringLiteral("stale");
    QCOMPARE(columnOf(cells).columnKind(0, defaultDateFormats(true), &found), kind);
    QCOMPARE(found, format);
}

void TestDatasetColumns::numericColumns()
{
    const Dataset dataset
        = tableOf({"id", "name", "amount", "price"},
                  {{"1", "Ann", "10.5", "$3"}, {"2", "Bob", "", "$4"}, {"3", "Cy", "NaN", "$5"}});
    QCOMPARE(dataset.numericColumns(), QList<int>({0, 2}));
    QCOMPARE(dataset.numericColumns(true), QList<int>({0, 2, 3}));
}

void TestDatasetColumns::outOfRangeColumns()
{
    const Dataset dataset = columnOf({QStringLiteral("1")});
    const QStringList formats = defaultDateFormats(true);
    for (const int c : {-1, 1}) {
        QVERIFY(!dataset.isNumericColumn(c));
        QVERIFY(!dataset.isBooleanColumn(c));
        QVERIFY(!dataset.isPlainNumberColumn(c));
        QVERIFY(!dataset.isTimeColumn(c));
        QVERIFY(!dataset.isDateColumn(c, formats));
        QVERIFY(!dataset.isKeyLikeColumn(c, formats));
        QCOMPARE(dataset.columnKind(c, formats), 0);
    }
}

void TestDatasetColumns::substituteColumnVariables_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("result");

    QTest::newRow("no variable") << "plain $ (text)" << 0 << "plain $ (text)";
    QTest::newRow("longer name first") << "$(Total Cost) of $(Total)" << 0 << "99 of 10";
    QTest::newRow("repeated") << "$(Total)+$(Total)" << 1 << "20+20";
    QTest::newRow("by number") << "$(4) and $(1)" << 0 << "Ann and 10";
    QTest::newRow("trimmed name") << "$(Owner)" << 0 << "Ann";
    QTest::newRow("unknown name stays") << "$(Missing) $(9)" << 0 << "$(Missing) $(9)";
    QTest::newRow("case sensitive") << "$(total)" << 0 << "$(total)";
    QTest::newRow("row out of range") << "$(Total)" << 5 << "$(Total)";
    // One pass over the names, longest first: a cell that holds a token of a shorter name
    // is expanded again, one of a longer name is not.
    QTest::newRow("cell with shorter token") << "$(Note)" << 0 << "10";
    QTest::newRow("cell with longer token") << "[$(3)]" << 1 << "[$(Total Cost)]";
}

void TestDatasetColumns::substituteColumnVariables()
{
    QFETCH(QString, text);
    QFETCH(int, row);
    QFETCH(QString, result);

    const Dataset dataset
        = tableOf({"Total", "Total Cost", "Note", " Owner "},
                  {{"10", "99", "$(1)", "Ann"}, {"20", "7", "$(Total Cost)", "Bob"}});
    QCOMPARE(dataset.substituteColumnVariables(text, dataset.columnsByName(), row), result);
}

void TestDatasetColumns::substitutionFollowsTheNameTableGiven()
{
    const Dataset first = tableOf({"A", "B"}, {{"a1", "b1"}});
    const Dataset second = tableOf({"B", "A"}, {{"x1", "y1"}});
    const QString text = ComparisonOperator::columnVariable(QStringLiteral(" A "))
        + QLatin1Char('/') + ComparisonOperator::columnVariable(2);
    QCOMPARE(text, QStringLiteral("$(A)/$(2)"));
    const QHash<QString, ColumnIndex> firstNames = first.columnsByName();
    QCOMPARE(first.substituteColumnVariables(text, firstNames, 0), QStringLiteral("a1/b1"));
    QCOMPARE(second.substituteColumnVariables(text, second.columnsByName(), 0),
             QStringLiteral("y1/y1"));
    QCOMPARE(first.substituteColumnVariables(text, firstNames, 0), QStringLiteral("a1/b1"));
}

QTEST_GUILESS_MAIN(TestDatasetColumns)
#include "tst_datasetcolumns.moc"
