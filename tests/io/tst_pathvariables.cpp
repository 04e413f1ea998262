#include "io/pathvariables.h"

#include <QtTest>

class TestPathVariables : public QObject
{
    Q_OBJECT

private slots:
    void expands_data();
    void expands();
    void pathAndSheetTogether();
    void firstAliasWins();
    void versionText_data();
    void versionText();
    void splitSheet_data();
    void splitSheet();

private:
    static PathVariables fixture();
};

PathVariables TestPathVariables::fixture()
{
    PathVariables variables;
    variables.setNow(QDateTime(QDate(2024, 3, 7), QTime(9, 5, 4, 21)));
    variables.setVersion(QStringLiteral("v1_4_2"));
    variables.setComputerName(QStringLiteral("box"));
    variables.setUserName(QStringLiteral("ann"));
    variables.setDocumentPath(QStringLiteral("/docs/monthly.report.tabulon"));
    variables.addInput(QStringLiteral("sales"), QStringLiteral("/data/in/sales.2024.csv"));
    variables.addInput(QStringLiteral("book"), QStringLiteral("/data/book.xlsx"),
                       QStringLiteral("Jan"));
    variables.addInput(QStringLiteral("a.b"), QStringLiteral("/x/dotted.csv"));
    variables.addInput(QStringLiteral("odd"), QStringLiteral("/x/{date}.csv"));
    return variables;
}

void TestPathVariables::expands_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("date") << "out_{date}.csv"
                          << "out_2024_03_07.csv";
    QTest::newRow("time") << "{time}"
                          << "09_05_04_021";
    QTest::newRow("datetime") << "{datetime}"
                              << "2024_03_07_09_05_04_021";
    QTest::newRow("parts") << "{year}-{month}-{day} {hour}:{minute}:{second}"
                           << "2024-03-07 09:05:04";
    QTest::newRow("version, machine, user") << "{version}/{computername}/{username}"
                                            << "v1_4_2/box/ann";
    QTest::newRow("document stem") << "{transformfname}.csv"
                                   << "monthly.report.csv";
    QTest::newRow("alias") << "{sales}.out"
                           << "sales.2024.out";
    QTest::newRow("alias with sheet") << "{book}.csv"
                                      << "book_Jan.csv";
    QTest::newRow("fname") << "{sales.fname}"
                           << "sales.2024";
    QTest::newRow("folder") << "{sales.folder}/x.csv"
                            << "/data/in/x.csv";
    QTest::newRow("ext") << "a.{sales.ext}"
                         << "a.csv";
    QTest::newRow("sheet") << "{book.sheet}|{sales.sheet}|"
                           << "Jan||";
    QTest::newRow("alias holding a dot") << "{a.b}"
                                         << "dotted";
    QTest::newRow("unknown stays") << "out_{nothing}_{sales.size}.csv"
                                   << "out_{nothing}_{sales.size}.csv";
    QTest::newRow("case-sensitive") << "{Date}{DATE}{Sales}"
                                    << "{Date}{DATE}{Sales}";
    QTest::newRow("brace before a variable") << "{{date}}"
                                             << "{2024_03_07}";
    QTest::newRow("unclosed") << "x{date"
                              << "x{date";
    QTest::newRow("no variables") << "/plain/path.csv"
                                  << "/plain/path.csv";
    QTest::newRow("replacement is not scanned again") << "{odd.fname}_{date}"
                                                      << "{date}_2024_03_07";
}

void TestPathVariables::expands()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(fixture().expand(text), expected);
}

void TestPathVariables::pathAndSheetTogether()
{
    const PathVariables variables = fixture();
    QString path = QStringLiteral("/out/{sales.fname}.xlsx");
    QString sheet = QStringLiteral("S_{day}");
    variables.expand(path, sheet);
    QCOMPARE(path, QStringLiteral("/out/sales.2024.xlsx"));
    QCOMPARE(sheet, QStringLiteral("S_07"));

    // Text that cannot hold a variable comes back untouched.
    QString plain = QStringLiteral("/out/x.csv");
    QString noSheet;
    variables.expand(plain, noSheet);
    QCOMPARE(plain, QStringLiteral("/out/x.csv"));
    QVERIFY(noSheet.isEmpty());
}

void TestPathVariables::firstAliasWins()
{
    PathVariables variables = fixture();
    variables.addInput(QStringLiteral("sales"), QStringLiteral("/other/later.csv"));
    QCOMPARE(variables.expand(QStringLiteral("{sales.fname}")), QStringLiteral("sales.2024"));
    variables.addInput(QString(), QStringLiteral("/other/unnamed.csv"));
    QVERIFY(!variables.hasInput(QString()));
}

void TestPathVariables::versionText_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("expected");
    QTest::newRow("three parts") << "1.4.2"
                                 << "v1_4_2";
    QTest::newRow("two parts") << "2.10"
                               << "v2_10_0";
    QTest::newRow("empty") << ""
                           << "v0_0_0";
}

void TestPathVariables::versionText()
{
    QFETCH(QString, version);
    QFETCH(QString, expected);
    QCOMPARE(PathVariables::versionText(version), expected);
}

void TestPathVariables::splitSheet_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("sheet");
    QTest::newRow("sheet") << "/a/b.xlsx[Jan]"
                           << "/a/b.xlsx"
                           << "Jan";
    QTest::newRow("none") << "/a/b.csv"
                          << "/a/b.csv"
                          << "";
    QTest::newRow("only one bracket") << "/a/b[1.csv"
                                      << "/a/b[1.csv"
                                      << "";
    QTest::newRow("brackets inside the sheet") << "/a/b.xlsx[x[1]]"
                                               << "/a/b.xlsx"
                                               << "x[1]";
}

void TestPathVariables::splitSheet()
{
    QFETCH(QString, text);
    QString path;
    QString sheet = QStringLiteral("stale");
    PathVariables::splitSheet(text, path, sheet);
    QTEST(path, "path");
    QTEST(sheet, "sheet");
}

QTEST_GUILESS_MAIN(TestPathVariables)
#include "tst_pathvariables.moc"
