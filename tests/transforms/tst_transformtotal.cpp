#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformtotal.h"

#include <QCoreApplication>
#include <QtTest>

// Total: the running sums, alone or one per value of a "By" column, what cells that aren't
// numbers do to them and to the messages, and the name of the new column.
class TestTransformTotal : public QObject
{
    Q_OBJECT

private slots:
    void totals_data();
    void totals();
    void messagesListFiveThenTheRest_data();
    void messagesListFiveThenTheRest();
    void names_data();
    void names();

private:
    struct Run
    {
        Dataset output;
        QString result;
        QStringList warnings;
    };
    // Totals column 0 of a table headed "amount", "group", by column 1 when byGroup.
    static Run total(const QList<QStringList> &rows, bool setColumn, bool byGroup,
                     bool autoName = true, const QString &newName = QString());
};

TestTransformTotal::Run TestTransformTotal::total(const QList<QStringList> &rows, bool setColumn,
                                                  bool byGroup, bool autoName,
                                                  const QString &newName)
{
    QList<QStringList> table {{"amount", "group"}};
    table.append(rows);
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(table)));
    TransformTotal transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Column")->setColumnId(setColumn ? node->dataset()->columnId(0)
                                                         : ColumnId());
    transform.parameter("By")->setColumnId(byGroup ? node->dataset()->columnId(1) : ColumnId());
    transform.parameter("Auto_New_Name")->setValue(autoName);
    if (!newName.isEmpty())
        transform.parameter("New_Name")->setValue(newName);
    Run run;
    run.output = runTransform(transform, {node.data()});
    run.result = transform.result();
    run.warnings = transform.warnings();
    return run;
}

void TestTransformTotal::totals_data()
{
    QTest::addColumn<QList<QStringList>>("rows");
    QTest::addColumn<bool>("byGroup");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QStringList>("warnings");
    QTest::addColumn<QString>("result");

    QTest::newRow("one sum; a non-number and an empty cell keep it and are reported")
        << QList<QStringList> {{"1", "a"}, {"2.5", "b"}, {"x", "a"}, {"", "b"}, {"-1", "a"}}
        << false << QStringList {"1", "3.5", "3.5", "3.5", "2.5"}
        << QStringList {"'x' is not a numerical value in row 3.",
                        "'' is not a numerical value in row 4."}
        << "3 rows totalled";
    QTest::newRow("a sum per value of By, its texts compared exactly")
        << QList<QStringList> {{"1", "a"}, {"2", "b"}, {"3", "a"}, {"4", "A"}, {"x", "b"}} << true
        << QStringList {"1", "2", "4", "4", "2"}
        << QStringList {"'x' is not a numerical value in row 5."} << "4 rows totalled";
    QTest::newRow("an empty By value is a group of its own")
        << QList<QStringList> {{"5", ""}, {"1", "a"}, {"5", ""}} << true
        << QStringList {"5", "1", "10"} << QStringList() << "3 rows totalled";
    QTest::newRow("sums written without binary noise")
        << QList<QStringList> {{"0.1", "a"}, {"0.2", "a"}, {"0.3", "a"}} << false
        << QStringList {"0.1", "0.3", "0.6"} << QStringList() << "3 rows totalled";
    QTest::newRow("a first row that is no number shows 0")
        << QList<QStringList> {{"n/a", "a"}, {"7", "a"}} << false << QStringList {"0", "7"}
        << QStringList {"'n/a' is not a numerical value in row 1."} << "1 row totalled";
}

void TestTransformTotal::totals()
{
    QFETCH(QList<QStringList>, rows);
    QFETCH(bool, byGroup);
    QFETCH(QStringList, expected);
    QFETCH(QStringList, warnings);
    QFETCH(QString, result);

    const Run run = total(rows, true, byGroup);
    QCOMPARE(run.output.header(), (QStringList {"amount", "group", "Total amount"}));
    QCOMPARE(run.output.columnValues(2), expected);
    QStringList amounts;
    for (const QStringList &row : qAsConst(rows))
        amounts.append(row.first());
    QCOMPARE(run.output.columnValues(0), amounts);
    // An unset By means one total, so it never counts as a missing option.
    QCOMPARE(run.warnings, warnings);
    QCOMPARE(run.result, result);
}

void TestTransformTotal::messagesListFiveThenTheRest_data()
{
    QTest::addColumn<int>("bad");
    QTest::addColumn<QString>("last");

    QTest::newRow("five: no summary line") << 5 << "'x5' is not a numerical value in row 5.";
    QTest::newRow("six: one other") << 6 << "+ 1 other";
    QTest::newRow("seven: others") << 7 << "+ 2 others";
}

void TestTransformTotal::messagesListFiveThenTheRest()
{
    QFETCH(int, bad);
    QFETCH(QString, last);

    QList<QStringList> rows;
    for (int i = 1; i <= bad; ++i)
        rows.append(QStringList {QStringLiteral("x%1").arg(i), "a"});
    rows.append(QStringList {"4", "a"});
    const Run run = total(rows, true, false);
    QCOMPARE(run.warnings.size(), qMin(bad, 5) + (bad > 5 ? 1 : 0));
    QCOMPARE(run.warnings.first(), QStringLiteral("'x1' is not a numerical value in row 1."));
    QCOMPARE(run.warnings.last(), last);
    QCOMPARE(run.output.columnValues(2).last(), QStringLiteral("4"));
}

void TestTransformTotal::names_data()
{
    QTest::addColumn<bool>("setColumn");
    QTest::addColumn<bool>("autoName");
    QTest::addColumn<QString>("newName");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<QStringList>("warnings");

    QTest::newRow("automatic from the column")
        << true << true << "ignored"
        << "Total amount" << QStringList {"2", "5"} << QStringList();
    QTest::newRow("given name") << true << false << "Running"
                                << "Running" << QStringList {"2", "5"} << QStringList();
    QTest::newRow("no column: an empty column named Total")
        << false << true << QString() << "Total" << QStringList {"", ""}
        << QStringList {"1 option not set ('Column')"};
}

void TestTransformTotal::names()
{
    QFETCH(bool, setColumn);
    QFETCH(bool, autoName);
    QFETCH(QString, newName);
    QFETCH(QString, name);
    QFETCH(QStringList, cells);
    QFETCH(QStringList, warnings);

    const Run run = total({{"2", "a"}, {"3", "b"}}, setColumn, false, autoName, newName);
    QCOMPARE(run.output.columnCount(), 3);
    QCOMPARE(run.output.headerText(2), name);
    QCOMPARE(run.output.columnValues(2), cells);
    QCOMPARE(run.warnings, warnings);
}

QTEST_GUILESS_MAIN(TestTransformTotal)
#include "tst_transformtotal.moc"
