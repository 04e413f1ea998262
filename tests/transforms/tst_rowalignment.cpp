#include "testdata.h"
#include "transforms/rowalignment.h"

#include <QCoreApplication>
#include <QtTest>

#include <algorithm>

// The alignment of two datasets' rows that Difference and the Compare Data window share: by
// row number, and by key in the order of first occurrence or sorted, with repeated keys,
// case and rows on one side only.
class TestRowAlignment : public QObject
{
    Q_OBJECT

private slots:
    void alignment_data();
    void alignment();
    void unusableKeysAlignNothing();
    void stopEndsTheAlignment();

private:
    // A dataset of one key column, "k", and a second column of row numbers.
    static Dataset keys(const QStringList &values);
    // Pairs written "left:right", "-" for no row, separated by blanks.
    static QString pairsText(const QVector<RowAlignment::RowPair> &pairs);
};

Dataset TestRowAlignment::keys(const QStringList &values)
{
    QList<QStringList> rows {{"k", "n"}};
    for (int r = 0; r < values.size(); ++r)
        rows.append({values.at(r), QString::number(r)});
    return makeDataset(rows);
}

QString TestRowAlignment::pairsText(const QVector<RowAlignment::RowPair> &pairs)
{
    QStringList parts;
    for (const RowAlignment::RowPair &pair : pairs)
        parts.append(QStringLiteral("%1:%2").arg(
            pair.left >= 0 ? QString::number(pair.left) : QStringLiteral("-"),
            pair.right >= 0 ? QString::number(pair.right) : QStringLiteral("-")));
    return parts.join(QLatin1Char(' '));
}

void TestRowAlignment::alignment_data()
{
    QTest::addColumn<QStringList>("left");
    QTest::addColumn<QStringList>("right");
    QTest::addColumn<bool>("byKey");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<bool>("sortByKey");
    QTest::addColumn<QString>("pairs");

    QTest::newRow("row numbers, longer right")
        << QStringList {"a", "b"} << QStringList {"x", "y", "z"} << false << true << false
        << "0:0 1:1 -:2";
    QTest::newRow("row numbers, empty right")
        << QStringList {"a"} << QStringList {} << false << true << false << "0:-";
    // Keys in left order, then d, found only on the right.
    QTest::newRow("key, first occurrence, one-sided rows")
        << QStringList {"b", "a", "c"} << QStringList {"a", "d", "b"} << true << true << false
        << "0:2 1:0 2:- -:1";
    // Numbers first by value (text order would put 10 before 2), then texts.
    QTest::newRow("key, sorted") << QStringList {"10", "9", "b"} << QStringList {"a", "9", "2"}
                                 << true << true << true << "-:2 1:1 0:- -:0 2:-";
    QTest::newRow("key, sorted, decimals and negatives")
        << QStringList {"1.5", "-3", "1.25"} << QStringList {} << true << true << true
        << "1:- 2:- 0:-";
    // A key's rows stand together; the n-th occurrence on the left pairs with the n-th on
    // the right, and the side with more keeps its extra ones after the pairs.
    QTest::newRow("repeated keys pair in order of occurrence")
        << QStringList {"a", "b", "a", "a"} << QStringList {"a", "a", "b", "b"} << true << true
        << false << "0:0 2:1 3:- 1:2 -:3";
    QTest::newRow("case insensitive keys pair")
        << QStringList {"A", "b"} << QStringList {"a", "B"} << true << false << false << "0:0 1:1";
    QTest::newRow("case sensitive keys don't") << QStringList {"A", "b"} << QStringList {"a", "B"}
                                               << true << true << false << "0:- 1:- -:0 -:1";
    QTest::newRow("case insensitive, sorted by the folded key")
        << QStringList {"b", "A"} << QStringList {"B", "a"} << true << false << true << "1:1 0:0";
    // Keys are the text as it stands: blanks count, and empty cells are a key of their own.
    QTest::newRow("empty and padded keys") << QStringList {"", "x ", "x"} << QStringList {"x", ""}
                                           << true << true << false << "0:1 1:- 2:0";
}

void TestRowAlignment::alignment()
{
    QFETCH(QStringList, left);
    QFETCH(QStringList, right);
    QFETCH(bool, byKey);
    QFETCH(bool, caseSensitive);
    QFETCH(bool, sortByKey);
    QFETCH(QString, pairs);

    RowAlignment::Options options;
    options.mode = byKey ? RowAlignment::Mode::KeyColumns : RowAlignment::Mode::RowNumbers;
    options.leftKey = 0;
    options.rightKey = 0;
    options.caseSensitive = caseSensitive;
    options.sortByKey = sortByKey;
    const Dataset leftData = keys(left);
    const Dataset rightData = keys(right);
    QVERIFY(RowAlignment::canAlign(leftData, rightData, options));
    QCOMPARE(pairsText(RowAlignment::align(leftData, rightData, options)), pairs);
}

void TestRowAlignment::unusableKeysAlignNothing()
{
    const Dataset left = keys({"a"});
    const Dataset right = keys({"a"});
    RowAlignment::Options options;
    options.mode = RowAlignment::Mode::KeyColumns;
    options.leftKey = 0;
    options.rightKey = 2;
    QVERIFY(!RowAlignment::canAlign(left, right, options));
    QVERIFY(RowAlignment::align(left, right, options).isEmpty());
    options.rightKey = -1;
    QVERIFY(!RowAlignment::canAlign(left, right, options));

    // Row numbers need no key.
    options.mode = RowAlignment::Mode::RowNumbers;
    QCOMPARE(RowAlignment::align(left, right, options).size(), 1);
}

void TestRowAlignment::stopEndsTheAlignment()
{
    QStringList many;
    for (int r = 0; r < 2500; ++r)
        many.append(QString::number(r % 700));
    const Dataset left = keys(many);
    const Dataset right = keys(many);
    for (const bool byKey : {false, true}) {
        RowAlignment::Options options;
        options.mode = byKey ? RowAlignment::Mode::KeyColumns : RowAlignment::Mode::RowNumbers;
        options.leftKey = 0;
        options.rightKey = 0;
        QList<double> fractions;
        const QVector<RowAlignment::RowPair> whole
            = RowAlignment::align(left, right, options, [&](double fraction) {
                  fractions.append(fraction);
                  return true;
              });
        QCOMPARE(whole.size(), 2500);
        QVERIFY(fractions.size() >= 3);
        QVERIFY(std::is_sorted(fractions.cbegin(), fractions.cend()));
        QVERIFY(fractions.last() < 1.0);

        int calls = 0;
        const QVector<RowAlignment::RowPair> stopped
            = RowAlignment::align(left, right, options, [&](double) { return ++calls < 2; });
        QVERIFY(stopped.isEmpty());
        QCOMPARE(calls, 2);
    }
}

QTEST_GUILESS_MAIN(TestRowAlignment)
#include "tst_rowalignment.moc"
