#include "data/valueinterpretation.h"
#include "transforms/framework/comparisonoperator.h"

#include <QSet>
#include <QtTest>

using Op = ComparisonOperator;

class TestComparisonOperator : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void texts_data();
    void texts();
    void displayOrderIsAPermutation();
    void takesNoValue();

    void evaluate_data();
    void evaluate();
    void uncachedFollowsLocaleAtOnce();
    void manyRegexPatternsInTurn();
    void columnVariables();
};

void TestComparisonOperator::init()
{
    QLocale::setDefault(QLocale::c());
    clearComparisonCaches();
}

void TestComparisonOperator::texts_data()
{
    QTest::addColumn<int>("op");
    QTest::addColumn<QString>("display");
    QTest::addColumn<QString>("shortText");

    const QString emptySet(QChar(0x2205));
    QTest::newRow("contains") << 0 << "c   Contains"
                              << "c";
    QTest::newRow("doesn't contain") << 9 << "!c   Doesn't contain"
                                     << "!c";
    QTest::newRow("doesn't match") << 13 << "!rx Doesn't match regex"
                                   << "!rx";
    QTest::newRow("fuzzy") << 16 << QString(QChar(0x2248) + QString("7  70% fuzzy match"))
                           << QString(QChar(0x2248) + QString("7"));
    QTest::newRow("is empty") << 19 << QString(emptySet + "   Is empty") << emptySet;
    QTest::newRow("is not empty") << 20 << QString("!" + emptySet + "  Is not empty")
                                  << QString("!" + emptySet);
    QTest::newRow("past the table") << 21 << "c   Contains"
                                    << "c";
}

void TestComparisonOperator::texts()
{
    QFETCH(int, op);
    QFETCH(QString, display);
    QFETCH(QString, shortText);
    QCOMPARE(Op::displayText(op), display);
    QCOMPARE(Op::shortText(op), shortText);
}

void TestComparisonOperator::displayOrderIsAPermutation()
{
    const QList<int> &order = Op::displayOrder();
    QCOMPARE(order.size(), int(Op::Count));
    QSet<int> seen;
    for (const int op : order) {
        QVERIFY(Op::isValid(op));
        seen.insert(op);
    }
    QCOMPARE(seen.size(), int(Op::Count));
    const QStringList texts = Op::displayTexts();
    QCOMPARE(texts.size(), order.size());
    for (int i = 0; i < order.size(); ++i)
        QCOMPARE(texts.at(i), Op::displayText(order.at(i)));
}

void TestComparisonOperator::takesNoValue()
{
    const QSet<int> expected = {1, 8, 10, 13, 14, 15, 16, 17, 18, 19, 20};
    for (int op = -1; op <= Op::Count; ++op)
        QCOMPARE(Op::takesNoValue(op), expected.contains(op));
}

void TestComparisonOperator::evaluate_data()
{
    QTest::addColumn<int>("op");
    QTest::addColumn<QString>("cell");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("format");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<bool>("result");

    const QString us = QStringLiteral("M/d/yyyy");

    QTest::newRow("1.0 = 1") << 1 << "1.0"
                             << "1"
                             << "" << true << true;
    QTest::newRow("1 = 1.0") << 1 << "1"
                             << "1.0"
                             << "" << true << true;
    QTest::newRow("1 != 1.0") << 10 << "1"
                              << "1.0"
                              << "" << true << false;
    QTest::newRow("1 contains 1.0") << 0 << "1"
                                    << "1.0"
                                    << "" << true << false;
    QTest::newRow("abc = ABC sensitive") << 1 << "abc"
                                         << "ABC"
                                         << "" << true << false;
    QTest::newRow("abc = ABC insensitive") << 1 << "abc"
                                           << "ABC"
                                           << "" << false << true;
    QTest::newRow("10 > 9") << 4 << "10"
                            << "9"
                            << "" << true << true;
    QTest::newRow("10 < 9") << 5 << "10"
                            << "9"
                            << "" << true << false;
    QTest::newRow("10 > word") << 4 << "10"
                               << "nine"
                               << "" << true << false;
    QTest::newRow("10 < word") << 5 << "10"
                               << "nine"
                               << "" << true << true;
    QTest::newRow("10 <= 9.5") << 7 << "10"
                               << "9.5"
                               << "" << true << false;
    QTest::newRow("text order by code point") << 5 << "Zebra"
                                              << "apple"
                                              << "" << true << true;
    QTest::newRow("dates") << 4 << "10/1/2024"
                           << "9/15/2024" << us << true << true;
    QTest::newRow("dates equal") << 1 << "1/2/2024"
                                 << "01/02/2024" << us << true << true;
    QTest::newRow("same texts without formats") << 4 << "10/1/2024"
                                                << "9/15/2024"
                                                << "" << true << false;
    QTest::newRow("text equals empty") << 1 << "x"
                                       << ""
                                       << "" << true << false;

    QTest::newRow("contains") << 0 << "Hello"
                              << "ELL"
                              << "" << false << true;
    QTest::newRow("doesn't contain") << 9 << "Hello"
                                     << "xyz"
                                     << "" << true << true;
    QTest::newRow("starts with") << 2 << "Hello"
                                 << "he"
                                 << "" << false << true;
    QTest::newRow("ends with") << 3 << "Hello"
                               << "LO"
                               << "" << false << true;
    QTest::newRow("doesn't end with") << 12 << "Hello"
                                      << "lo"
                                      << "" << true << false;

    QTest::newRow("regex anywhere") << 8 << "order 123 done"
                                    << "\\d+"
                                    << "" << true << true;
    QTest::newRow("regex sensitive") << 8 << "ABC"
                                     << "abc"
                                     << "" << true << false;
    QTest::newRow("regex insensitive") << 8 << "ABC"
                                       << "abc"
                                       << "" << false << true;
    QTest::newRow("empty regex") << 8 << "anything"
                                 << ""
                                 << "" << true << true;
    QTest::newRow("invalid regex") << 8 << "("
                                   << "("
                                   << "" << true << false;
    QTest::newRow("invalid regex negated") << 13 << "("
                                           << "("
                                           << "" << true << true;
    QTest::newRow("doesn't match") << 13 << "abc"
                                   << "^b"
                                   << "" << true << true;

    QTest::newRow("90% at one in ten") << 14 << "abcdefghij"
                                       << "abcdefghiX"
                                       << "" << true << true;
    QTest::newRow("90% at two in ten") << 14 << "abcdefghij"
                                       << "abcdefghXY"
                                       << "" << true << false;
    QTest::newRow("80% at two in ten") << 15 << "abcdefghij"
                                       << "abcdefghXY"
                                       << "" << true << true;
    QTest::newRow("50% at half") << 18 << "abcd"
                                 << "abXY"
                                 << "" << true << true;
    QTest::newRow("60% at half") << 17 << "abcd"
                                 << "abXY"
                                 << "" << true << false;
    QTest::newRow("fuzzy insensitive") << 14 << "ABCDEFGHIJ"
                                       << "abcdefghij"
                                       << "" << false << true;
    QTest::newRow("fuzzy sensitive") << 14 << "ABCDEFGHIJ"
                                     << "abcdefghij"
                                     << "" << true << false;

    QTest::newRow("is empty") << 19 << ""
                              << ""
                              << "" << true << true;
    QTest::newRow("blank isn't empty") << 19 << " "
                                       << ""
                                       << "" << true << false;
    QTest::newRow("is not empty") << 20 << " "
                                  << ""
                                  << "" << true << true;

    QTest::newRow("past the table") << 21 << "a"
                                    << "a"
                                    << "" << true << false;
    QTest::newRow("negative") << -1 << "a"
                              << "a"
                              << "" << true << false;
}

void TestComparisonOperator::evaluate()
{
    QFETCH(int, op);
    QFETCH(QString, cell);
    QFETCH(QString, value);
    QFETCH(QString, format);
    QFETCH(bool, caseSensitive);
    QFETCH(bool, result);

    const Qt::CaseSensitivity cs = caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    QCOMPARE(Op::evaluate(op, cell, value, format, format, cs), result);
    // A second time through the caches, and once without them.
    QCOMPARE(Op::evaluate(op, cell, value, format, format, cs), result);
    QCOMPARE(Op::evaluateUncached(op, cell, value, format, format, cs), result);
}

void TestComparisonOperator::uncachedFollowsLocaleAtOnce()
{
    const QString cell = QStringLiteral("2,5");
    const QString value = QStringLiteral("10");
    // As text "2,5" sorts after "10"; as numbers it is less.
    QVERIFY(Op::evaluate(Op::GreaterThan, cell, value, QString(), QString(), Qt::CaseSensitive));

    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    QVERIFY(!Op::evaluateUncached(Op::GreaterThan, cell, value, QString(), QString(),
                                  Qt::CaseSensitive));
    QVERIFY(Op::evaluate(Op::GreaterThan, cell, value, QString(), QString(), Qt::CaseSensitive));
    clearComparisonCaches();
    QVERIFY(!Op::evaluate(Op::GreaterThan, cell, value, QString(), QString(), Qt::CaseSensitive));
}

void TestComparisonOperator::manyRegexPatternsInTurn()
{
    // More patterns than are kept compiled, in turn and in both cases: each answer must
    // still be the pattern's own.
    for (int round = 0; round < 3; ++round) {
        for (int n = 0; n < 20; ++n) {
            const QString pattern = QStringLiteral("^x%1$").arg(n);
            const QString cell = QStringLiteral("X%1").arg(n);
            QVERIFY(Op::evaluate(Op::MatchesRegex, cell, pattern, QString(), QString(),
                                 Qt::CaseInsensitive));
            QVERIFY(!Op::evaluate(Op::MatchesRegex, cell, pattern, QString(), QString(),
                                  Qt::CaseSensitive));
            QVERIFY(!Op::evaluate(Op::MatchesRegex, QStringLiteral("X%1").arg(n + 1), pattern,
                                  QString(), QString(), Qt::CaseInsensitive));
        }
    }
}

void TestComparisonOperator::columnVariables()
{
    QCOMPARE(Op::columnVariable(3), QStringLiteral("$(3)"));
    QCOMPARE(Op::columnVariable(QStringLiteral(" Total Cost ")), QStringLiteral("$(Total Cost)"));
}

QTEST_GUILESS_MAIN(TestComparisonOperator)
#include "tst_comparisonoperator.moc"
