#include "data/valueinterpretation.h"

#include <QRandomGenerator>
#include <QtTest>

#include <cmath>
#include <vector>

namespace {

// The textbook full-matrix edit distance, the reference for the banded one.
int plainLevenshtein(const QString &a, const QString &b)
{
    std::vector<int> previous(b.size() + 1);
    std::vector<int> current(b.size() + 1);
    for (int j = 0; j <= b.size(); ++j)
        previous[j] = j;
    for (int i = 1; i <= a.size(); ++i) {
        current[0] = i;
        for (int j = 1; j <= b.size(); ++j) {
            const int cost = a.at(i - 1) == b.at(j - 1) ? 0 : 1;
            current[j] = std::min({previous[j - 1] + cost, previous[j] + 1, current[j - 1] + 1});
        }
        std::swap(previous, current);
    }
    return previous[b.size()];
}

QString randomText(QRandomGenerator &random, int maxLength)
{
    // A small alphabet makes common prefixes, suffixes and near matches frequent.
    const int length = random.bounded(maxLength + 1);
    QString text;
    for (int i = 0; i < length; ++i)
        text.append(QChar(QLatin1Char('a' + random.bounded(4))));
    return text;
}

} // namespace

class TestValueInterpretation : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanupTestCase();

    void toDouble_data();
    void toDouble();
    void toDoubleFollowsLocale();
    void toDoubleFastAgreesWithToDouble();
    void toLongLong_data();
    void toLongLong();
    void toBool_data();
    void toBool();
    void isPlainNumber_data();
    void isPlainNumber();
    void doubles();
    void numberToCellText_data();
    void numberToCellText();

    void datesAndTimes();
    void dateFormatsInForce();
    void monthFirstLocales_data();
    void monthFirstLocales();

    void splitLines_data();
    void splitLines();
    void formatCount();
    void elide_data();
    void elide();
    void tidyLineEnds_data();
    void tidyLineEnds();

    void interpretPair_data();
    void interpretPair();
    void pairCacheLastsUntilCleared();
    void uncachedPairTriesNumbersAlways();

    void convertCase_data();
    void convertCase();

    void bandedEqualsFullLevenshtein();
    void similarity_data();
    void similarity();
    void similarityOfRows_data();
    void similarityOfRows();
};

void TestValueInterpretation::init()
{
    QLocale::setDefault(QLocale::c());
    setDateFormats(QStringList());
    clearComparisonCaches();
}

void TestValueInterpretation::cleanupTestCase()
{
    QLocale::setDefault(QLocale::c());
}

void TestValueInterpretation::toDouble_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("emptyIsZero");
    QTest::addColumn<bool>("stripCurrency");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<double>("value");

    QTest::newRow("integer") << "12" << false << false << true << 12.0;
    QTest::newRow("padded") << "  -12.5\t" << false << false << true << -12.5;
    QTest::newRow("word") << "abc" << false << false << false << 0.0;
    QTest::newRow("nan") << "nan" << false << false << false << 0.0;
    QTest::newRow("-INF") << "-INF" << false << false << false << 0.0;
    QTest::newRow("overflow") << "1e999" << false << false << false << 0.0;
    QTest::newRow("empty") << "" << false << false << false << 0.0;
    QTest::newRow("blank is zero") << "   " << true << false << true << 0.0;
    QTest::newRow("dollar kept") << "$12" << false << false << false << 0.0;
    QTest::newRow("dollar stripped") << "$12" << false << true << true << 12.0;
    QTest::newRow("euro and blank")
        << QString::fromUtf8("12.50 €") << false << true << true << 12.5;
    QTest::newRow("only a sign") << "$" << false << true << false << 0.0;
    QTest::newRow("currency nan") << "$nan" << false << true << false << 0.0;
}

void TestValueInterpretation::toDouble()
{
    QFETCH(QString, text);
    QFETCH(bool, emptyIsZero);
    QFETCH(bool, stripCurrency);
    QFETCH(bool, ok);
    QFETCH(double, value);

    bool parsed = !ok;
    const double result = ::toDouble(text, emptyIsZero, stripCurrency, &parsed);
    QCOMPARE(parsed, ok);
    if (ok)
        QCOMPARE(result, value);
}

void TestValueInterpretation::toDoubleFollowsLocale()
{
    bool ok = false;
    QCOMPARE(::toDouble(QStringLiteral("1,5"), false, false, &ok), 0.0);
    QVERIFY(!ok);

    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    QCOMPARE(::toDouble(QStringLiteral("1,5"), false, false, &ok), 1.5);
    QVERIFY(ok);
    QCOMPARE(::toDouble(QStringLiteral("1.234,5"), false, false, &ok), 1234.5);
    QVERIFY(ok);

    // The explicit form ignores the default.
    QCOMPARE(::toDouble(QStringLiteral("1.5"), QLocale::c(), false, false, &ok), 1.5);
    QVERIFY(ok);
    ::toDouble(QStringLiteral("1.5"), QLocale(), false, false, &ok);
    QVERIFY(!ok);
}

void TestValueInterpretation::toDoubleFastAgreesWithToDouble()
{
    // Plain decimals and every near miss of the plain form, which must go the slow way.
    QStringList texts {"12",  "-12.50", "0.1", "007",   "-0",  "1.",  ".5",
                       "-.5", "1.2.3",  "--1", "1-",    " 5",  "5 ",  "",
                       "-",   "$12",    "1e3", "1,000", "nan", "abc", "1.0x"};
    texts << "12345678901234567890"
          << "0.30000000000000004"
          << "9007199254740993";
    for (const bool german : {false, true}) {
        if (german)
            QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        const bool decimalIsPoint = QLocale().decimalPoint() == QLatin1Char('.');
        QCOMPARE(decimalIsPoint, !german);
        for (const QString &text : texts) {
            bool slowOk = false;
            bool fastOk = true;
            const double slow = ::toDouble(text, false, true, &slowOk);
            const double fast = toDoubleFast(text, decimalIsPoint, &fastOk);
            QVERIFY2(fastOk == slowOk, qPrintable(text));
            if (slowOk)
                QVERIFY2(fast == slow, qPrintable(text));
        }
    }
}

void TestValueInterpretation::toLongLong_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<qlonglong>("value");

    QTest::newRow("whole") << "C"
                           << "12" << true << 12LL;
    QTest::newRow("zero fraction") << "C"
                                   << "12.00" << true << 12LL;
    QTest::newRow("bare point") << "C"
                                << "12." << true << 12LL;
    QTest::newRow("fraction") << "C"
                              << "12.50" << false << 0LL;
    QTest::newRow("junk after zeros") << "C"
                                      << "12.0x" << false << 0LL;
    QTest::newRow("negative") << "C"
                              << " -7.0 " << true << -7LL;
    QTest::newRow("nan") << "C"
                         << "nan" << false << 0LL;
    QTest::newRow("currency") << "C"
                              << "$5.00" << true << 5LL;
    QTest::newRow("german comma") << "de_DE"
                                  << "12,00" << true << 12LL;
    QTest::newRow("german point is a group") << "de_DE"
                                             << "12.000" << true << 12000LL;
    QTest::newRow("german fraction") << "de_DE"
                                     << "12,5" << false << 0LL;
}

void TestValueInterpretation::toLongLong()
{
    QFETCH(QString, locale);
    QFETCH(QString, text);
    QFETCH(bool, ok);
    QFETCH(qlonglong, value);

    QLocale::setDefault(QLocale(locale));
    bool parsed = !ok;
    const qlonglong result = ::toLongLong(text, false, true, &parsed);
    QCOMPARE(parsed, ok);
    if (ok)
        QCOMPARE(result, value);

    parsed = !ok;
    const int small = ::toInt(text, false, true, &parsed);
    QCOMPARE(parsed, ok);
    if (ok)
        QCOMPARE(qlonglong(small), value);
}

void TestValueInterpretation::toBool_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("emptyIsFalse");
    QTest::addColumn<bool>("numbersAllowed");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<bool>("value");

    QTest::newRow("true") << " TRUE " << false << false << true << true;
    QTest::newRow("false") << "False" << false << false << true << false;
    QTest::newRow("number refused") << "1" << false << false << false << false;
    QTest::newRow("number allowed") << "2.5" << false << true << true << true;
    QTest::newRow("zero allowed") << "0.0" << false << true << true << false;
    QTest::newRow("nan allowed") << "nan" << false << true << false << false;
    QTest::newRow("empty") << "" << false << true << false << false;
    QTest::newRow("empty is false") << "  " << true << true << false << false;
}

void TestValueInterpretation::toBool()
{
    QFETCH(QString, text);
    QFETCH(bool, emptyIsFalse);
    QFETCH(bool, numbersAllowed);
    QFETCH(bool, ok);
    QFETCH(bool, value);

    bool parsed = !ok;
    QCOMPARE(::toBool(text, emptyIsFalse, numbersAllowed, &parsed), value);
    QCOMPARE(parsed, ok);
}

void TestValueInterpretation::isPlainNumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("plain");

    QTest::newRow("zero") << "0" << true;
    QTest::newRow("exponent") << "6.02E+23" << true;
    QTest::newRow("padded") << " 42 " << true;
    QTest::newRow("leading zero") << "01" << false;
    QTest::newRow("bare point") << "1." << false;
    QTest::newRow("group separator") << "1,000" << false;
}

void TestValueInterpretation::isPlainNumber()
{
    QFETCH(QString, text);
    QFETCH(bool, plain);
    QCOMPARE(::isPlainNumber(text), plain);
}

void TestValueInterpretation::doubles()
{
    const QStringList texts = {QStringLiteral("1.5"), QStringLiteral("x"), QString(),
                               QStringLiteral("$2"), QStringLiteral("nan")};
    QCOMPARE(doublesFromTexts(texts, false, false), QVector<double>({1.5}));
    QCOMPARE(doublesFromTexts(texts, true, true), QVector<double>({1.5, 0.0, 2.0}));
}

void TestValueInterpretation::numberToCellText_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");

    QTest::newRow("rounding noise") << 0.1 + 0.2 << "0.3";
    QTest::newRow("whole") << 3.0 << "3";
    QTest::newRow("trailing zero") << 2.50 << "2.5";
    QTest::newRow("third") << 1.0 / 3.0 << "0.333333333333333";
    QTest::newRow("negative zero") << -0.0 << "0";
    QTest::newRow("negative rounded to nothing") << -1e-16 << "0";
    // Never an exponent: fifteen digits in all from 1 up, fifteen decimals below.
    QTest::newRow("large") << 1e20 << "100000000000000000000";
    QTest::newRow("fifteen digits") << 12345.678901234567 << "12345.6789012346";
    QTest::newRow("small") << 1.5e-10 << "0.00000000015";
    QTest::newRow("below the last decimal") << 4e-16 << "0";
    QTest::newRow("nan") << qQNaN() << "NaN";
    QTest::newRow("infinity") << qInf() << "NaN";
}

void TestValueInterpretation::numberToCellText()
{
    QFETCH(double, value);
    QFETCH(QString, text);
    QCOMPARE(::numberToCellText(value), text);
    // Cells are locale-free.
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    QCOMPARE(::numberToCellText(value), text);
}

void TestValueInterpretation::datesAndTimes()
{
    const QString us = QStringLiteral("M/d/yyyy");
    QCOMPARE(toDate(QStringLiteral(" 2/29/2024 "), us), QDate(2024, 2, 29));
    QVERIFY(toDate(QStringLiteral("2/30/2024"), us).isNull());
    QVERIFY(toDate(QStringLiteral("2024-01-02"), us).isNull());

    const QStringList formats = {us, QStringLiteral("yyyy-M-d")};
    QString used = QStringLiteral("stale");
    QCOMPARE(toDate(QStringLiteral("2024-01-02"), formats, &used), QDate(2024, 1, 2));
    QCOMPARE(used, QStringLiteral("yyyy-M-d"));
    QCOMPARE(toDate(QStringLiteral("1/2/2024"), formats, &used), QDate(2024, 1, 2));
    QCOMPARE(used, us);
    QVERIFY(toDate(QStringLiteral("soon"), formats, &used).isNull());
    QVERIFY(used.isEmpty());

    QCOMPARE(toTime(QStringLiteral("12:30")), QTime(12, 30));
    QCOMPARE(toTime(QStringLiteral(" 7:5:9 ")), QTime(7, 5, 9));
    QVERIFY(!toTime(QStringLiteral("25:00")).isValid());
    QVERIFY(!toTime(QStringLiteral("12.30")).isValid());
}

void TestValueInterpretation::dateFormatsInForce()
{
    QCOMPARE(dateFormats(), defaultDateFormats(true));
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    QCOMPARE(dateFormats(), defaultDateFormats(false));
    QCOMPARE(dateFormats().first(), QStringLiteral("d/M/yyyy"));

    const QStringList parsed = parseDateFormats(QStringLiteral("yyyy-MM-dd\n\n d.M.yyyy\r\n"));
    QCOMPARE(parsed, QStringList({QStringLiteral("yyyy-MM-dd"), QStringLiteral("d.M.yyyy")}));
    setDateFormats(parsed);
    QCOMPARE(dateFormats(), parsed);
    setDateFormats(QStringList());
    QCOMPARE(dateFormats(), defaultDateFormats(false));
}

void TestValueInterpretation::monthFirstLocales_data()
{
    QTest::addColumn<QLocale>("locale");
    QTest::addColumn<bool>("monthFirst");

    QTest::newRow("C") << QLocale::c() << true;
    QTest::newRow("en_US") << QLocale(QLocale::English, QLocale::UnitedStates) << true;
    QTest::newRow("en_PH") << QLocale(QLocale::English, QLocale::Philippines) << true;
    QTest::newRow("en_CA") << QLocale(QLocale::English, QLocale::Canada) << true;
    QTest::newRow("fr_CA") << QLocale(QLocale::French, QLocale::Canada) << false;
    QTest::newRow("en_GB") << QLocale(QLocale::English, QLocale::UnitedKingdom) << false;
}

void TestValueInterpretation::monthFirstLocales()
{
    QFETCH(QLocale, locale);
    QFETCH(bool, monthFirst);
    QCOMPARE(isMonthFirstLocale(locale), monthFirst);
}

void TestValueInterpretation::splitLines_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("keepEmptyParts");
    QTest::addColumn<QStringList>("lines");

    QTest::newRow("mixed ends") << "a\r\nb\nc\rd" << false << QStringList({"a", "b", "c", "d"});
    QTest::newRow("CR then LF is one end") << "a\r\n\nb" << true << QStringList({"a", "", "b"});
    QTest::newRow("trailing end dropped") << "a\n" << false << QStringList({"a"});
    QTest::newRow("trailing end kept") << "a\n" << true << QStringList({"a", ""});
    QTest::newRow("only the last empty part goes") << "a\n\n" << false << QStringList({"a", ""});
    QTest::newRow("empty") << "" << false << QStringList();
    QTest::newRow("empty kept") << "" << true << QStringList({""});
}

void TestValueInterpretation::splitLines()
{
    QFETCH(QString, text);
    QFETCH(bool, keepEmptyParts);
    QFETCH(QStringList, lines);
    QCOMPARE(::splitLines(text, keepEmptyParts), lines);
}

void TestValueInterpretation::formatCount()
{
    QCOMPARE(::formatCount(1234567), QStringLiteral("1,234,567"));
    QCOMPARE(::formatCount(1234567, false), QStringLiteral("1234567"));
    QCOMPARE(::formatCount(-1000), QStringLiteral("-1,000"));
    QCOMPARE(::formatCount(999), QStringLiteral("999"));
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    QCOMPARE(::formatCount(1234567), QStringLiteral("1.234.567"));
    QCOMPARE(::formatCount(1234567, false), QStringLiteral("1234567"));
}

void TestValueInterpretation::elide_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("ellipsis");
    QTest::addColumn<QString>("result");

    const QString dots(QChar(0x2026));
    QTest::newRow("negative length") << "abcdef" << -1 << true << "abcdef";
    QTest::newRow("fits") << "abc" << 3 << true << "abc";
    QTest::newRow("cut with ellipsis") << "abcdef" << 4 << true << QString("abc" + dots);
    QTest::newRow("cut without") << "abcdef" << 4 << false << "abcd";
    QTest::newRow("too short for ellipsis") << "abcdef" << 1 << true << "a";
}

void TestValueInterpretation::elide()
{
    QFETCH(QString, text);
    QFETCH(int, length);
    QFETCH(bool, ellipsis);
    QFETCH(QString, result);
    QCOMPARE(::elide(text, length, ellipsis), result);
}

void TestValueInterpretation::tidyLineEnds_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("result");

    QTest::newRow("untouched") << "a b  c"
                               << "a b  c";
    QTest::newRow("windows end") << "a\r\nb"
                                 << "a b";
    QTest::newRow("tab") << "a\tb"
                         << "a b";
    QTest::newRow("lone CR removed") << "a\rb"
                                     << "ab";
    QTest::newRow("no-break space") << QString("a" + QString(QChar(0xA0)) + "b") << "a b";
}

void TestValueInterpretation::tidyLineEnds()
{
    QFETCH(QString, text);
    QFETCH(QString, result);
    QCOMPARE(::tidyLineEnds(text), result);
}

void TestValueInterpretation::interpretPair_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<QString>("formatA");
    QTest::addColumn<QString>("formatB");
    QTest::addColumn<bool>("numeric");
    QTest::addColumn<bool>("bothDates");
    QTest::addColumn<bool>("bothNumbers");

    const QString us = QStringLiteral("M/d/yyyy");
    const QString iso = QStringLiteral("yyyy-M-d");
    QTest::newRow("dates") << "1/2/2024"
                           << "2024-3-4" << us << iso << true << true << false;
    QTest::newRow("one format missing") << "1/2/2024"
                                        << "1/3/2024" << us << "" << true << false << false;
    QTest::newRow("second not a date") << "1/2/2024"
                                       << "7" << us << us << true << false << false;
    QTest::newRow("numbers") << "1.0"
                             << "$1"
                             << ""
                             << "" << true << false << true;
    QTest::newRow("first not a number") << "x"
                                        << "1"
                                        << ""
                                        << "" << true << false << false;
    QTest::newRow("second not a number") << "1"
                                         << "x"
                                         << ""
                                         << "" << true << false << false;
    QTest::newRow("numbers with formats") << "5"
                                          << "6" << us << us << true << false << true;
}

void TestValueInterpretation::interpretPair()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(QString, formatA);
    QFETCH(QString, formatB);
    QFETCH(bool, numeric);
    QFETCH(bool, bothDates);
    QFETCH(bool, bothNumbers);

    // Twice: the second answer comes from the caches and must be the same.
    for (int pass = 0; pass < 2; ++pass) {
        const PairInterpretation pair = ::interpretPair(a, b, formatA, formatB, numeric);
        QCOMPARE(pair.bothDates, bothDates);
        QCOMPARE(pair.bothNumbers, bothNumbers);
        if (bothDates) {
            QCOMPARE(pair.dateA, toDate(a, formatA));
            QCOMPARE(pair.dateB, toDate(b, formatB));
        }
        if (bothNumbers) {
            QCOMPARE(pair.numberA, ::toDouble(a, false, true));
            QCOMPARE(pair.numberB, ::toDouble(b, false, true));
        }
    }
}

void TestValueInterpretation::pairCacheLastsUntilCleared()
{
    const QString a = QStringLiteral("1,5");
    const QString b = QStringLiteral("2");
    QVERIFY(!::interpretPair(a, b, QString(), QString(), true).bothNumbers);

    // A changed locale re-runs the document, which clears the caches; until then a run
    // keeps reading a text the way it first did.
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    QVERIFY(!::interpretPair(a, b, QString(), QString(), true).bothNumbers);
    QVERIFY(interpretPairUncached(a, b, QString(), QString()).bothNumbers);

    clearComparisonCaches();
    const PairInterpretation pair = ::interpretPair(a, b, QString(), QString(), true);
    QVERIFY(pair.bothNumbers);
    QCOMPARE(pair.numberA, 1.5);
    QCOMPARE(pair.numberB, 2.0);
}

void TestValueInterpretation::uncachedPairTriesNumbersAlways()
{
    const QString us = QStringLiteral("M/d/yyyy");
    PairInterpretation pair
        = interpretPairUncached(QStringLiteral("3"), QStringLiteral("4"), us, us);
    QVERIFY(!pair.bothDates);
    QVERIFY(pair.bothNumbers);
    QCOMPARE(pair.numberB, 4.0);

    pair = interpretPairUncached(QStringLiteral("3/4/2024"), QStringLiteral("3/5/2024"), us, us);
    QVERIFY(pair.bothDates);
    QVERIFY(!pair.bothNumbers);
    QCOMPARE(pair.dateB, QDate(2024, 3, 5));
}

void TestValueInterpretation::convertCase_data()
{
    QTest::addColumn<int>("caseIndex");
    QTest::addColumn<bool>("keepUpper");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("result");

    const int title = int(TextCase::Title);
    const int sentence = int(TextCase::Sentence);
    QTest::newRow("lower") << int(TextCase::Lower) << false << "MiXed"
                           << "mixed";
    QTest::newRow("upper") << int(TextCase::Upper) << false << "MiXed"
                           << "MIXED";
    QTest::newRow("title") << title << false << "hello wORLD"
                           << "Hello World";
    QTest::newRow("title keeps upper") << title << true << "hello wORLD"
                                       << "Hello WORLD";
    QTest::newRow("title hyphen") << title << false << "jean-luc"
                                  << "Jean-Luc";
    QTest::newRow("title apostrophe") << title << false << "o'NEIL's"
                                      << "O'Neil's";
    QTest::newRow("title typographic apostrophe")
        << title << false << QString("don" + QString(QChar(0x2019)) + "t")
        << QString("Don" + QString(QChar(0x2019)) + "t");
    QTest::newRow("title after digit") << title << false << "3rd AVE"
                                       << "3rd Ave";
    QTest::newRow("title non-start after digit stays") << title << false << "4X4"
                                                       << "4X4";
    QTest::newRow("title accents")
        << title << false << QString::fromUtf8("élan ÉTÉ") << QString::fromUtf8("Élan Été");
    QTest::newRow("title empty") << title << false << ""
                                 << "";
    QTest::newRow("sentence") << sentence << false << "  the END. Again"
                              << "  The end. again";
    QTest::newRow("sentence keeps upper") << sentence << true << "the END"
                                          << "The END";
    QTest::newRow("sentence past digits") << sentence << false << "42 IS it"
                                          << "42 Is it";
    QTest::newRow("lower camel") << int(TextCase::LowerCamel) << false << "  Big BAD\twolf "
                                 << "bigBadWolf";
    QTest::newRow("upper camel") << int(TextCase::UpperCamel) << false << "big bad wolf"
                                 << "BigBadWolf";
    QTest::newRow("kebab") << int(TextCase::Kebab) << false << "Big  Bad\tWolf"
                           << "Big-Bad-Wolf";
    QTest::newRow("snake") << int(TextCase::Snake) << false << " big bad "
                           << "_big_bad_";
    QTest::newRow("inverted") << int(TextCase::Inverted) << false << "Hello, World 1"
                              << "hELLO, wORLD 1";
    QTest::newRow("unknown case") << 9 << false << "Hello"
                                  << "Hello";
}

void TestValueInterpretation::convertCase()
{
    QFETCH(int, caseIndex);
    QFETCH(bool, keepUpper);
    QFETCH(QString, text);
    QFETCH(QString, result);

    const QString original = text;
    QCOMPARE(::convertCase(text, caseIndex, keepUpper), result);
    QCOMPARE(text, original);
}

// The banded distance against the full matrix on random texts of a small alphabet, which
// covers empty texts, shared prefixes and suffixes, and distances beyond the bound.
void TestValueInterpretation::bandedEqualsFullLevenshtein()
{
    QCOMPARE(::boundedLevenshtein(QStringLiteral("kitten"), QStringLiteral("sitting"), 10), 3);
    QCOMPARE(::boundedLevenshtein(QStringLiteral("abc"), QStringLiteral("xyz"), 0), 0);
    QCOMPARE(::boundedLevenshtein(QStringLiteral("flaw"), QStringLiteral("lawn"), 1000000000), 2);
    QRandomGenerator random(20240601);
    for (int i = 0; i < 5000; ++i) {
        const QString a = randomText(random, 14);
        const QString b = randomText(random, 14);
        const int bound = 1 + random.bounded(16);
        const int expected = qMin(plainLevenshtein(a, b), bound);
        const int actual = ::boundedLevenshtein(a, b, bound);
        if (actual != expected)
            QFAIL(qPrintable(QStringLiteral("%1 / %2 bound %3: %4 instead of %5")
                                 .arg(a, b)
                                 .arg(bound)
                                 .arg(actual)
                                 .arg(expected)));
    }
}

void TestValueInterpretation::similarity_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<int>("threshold");
    QTest::addColumn<int>("result");

    for (const int threshold : {0, 50, 90, 100, 150})
        QTest::addRow("empty pair at %d", threshold) << ""
                                                     << "" << threshold << 100;
    QTest::newRow("equal") << "abc"
                           << "abc" << 100 << 100;
    // Ten characters, one edit: 90 % alike, allowed exactly one edit at 90.
    QTest::newRow("one in ten at 90") << "abcdefghij"
                                      << "abcdefghiX" << 90 << 90;
    QTest::newRow("one in ten at 91") << "abcdefghij"
                                      << "abcdefghiX" << 91 << -1;
    QTest::newRow("two in ten at 80") << "abcdefghij"
                                      << "abcdefghXY" << 80 << 80;
    QTest::newRow("two in ten at 90") << "abcdefghij"
                                      << "abcdefghXY" << 90 << -1;
    // Nine characters, one edit: 88 % (rounded down), so below 90.
    QTest::newRow("one in nine at 90") << "abcdefghi"
                                       << "abcdefghX" << 90 << -1;
    QTest::newRow("one in nine at 88") << "abcdefghi"
                                       << "abcdefghX" << 88 << 88;
    QTest::newRow("empty against text") << ""
                                        << "abcd" << 0 << 0;
    QTest::newRow("case is the caller's") << "ABC"
                                          << "abc" << 50 << -1;
}

void TestValueInterpretation::similarity()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(int, threshold);
    QFETCH(int, result);
    QCOMPARE(::similarity(a, b, threshold), result);
    QCOMPARE(::similarity(b, a, threshold), result);
}

void TestValueInterpretation::similarityOfRows_data()
{
    QTest::addColumn<QStringList>("a");
    QTest::addColumn<QStringList>("b");
    QTest::addColumn<int>("threshold");
    QTest::addColumn<int>("result");

    QTest::newRow("unequal lengths") << QStringList({"a"}) << QStringList({"a", "b"}) << 0 << 0;
    QTest::newRow("no columns") << QStringList() << QStringList() << 90 << 100;
    QTest::newRow("all empty") << QStringList({"", ""}) << QStringList({"", ""}) << 90 << 100;
    // Five characters in all, one edit: 80 % alike.
    QTest::newRow("one in five at 80")
        << QStringList({"abc", "de"}) << QStringList({"abd", "de"}) << 80 << 80;
    QTest::newRow("one in five at 81")
        << QStringList({"abc", "de"}) << QStringList({"abd", "de"}) << 81 << -1;
    // Each position is within its own share, the sum is not.
    QTest::newRow("edits add up") << QStringList({"abcde", "fghij"})
                                  << QStringList({"abcdX", "fghiX"}) << 90 << -1;
    QTest::newRow("edits add up at 80")
        << QStringList({"abcde", "fghij"}) << QStringList({"abcdX", "fghiX"}) << 80 << 80;
}

void TestValueInterpretation::similarityOfRows()
{
    QFETCH(QStringList, a);
    QFETCH(QStringList, b);
    QFETCH(int, threshold);
    QFETCH(int, result);
    QCOMPARE(::similarity(a, b, threshold), result);
}

QTEST_GUILESS_MAIN(TestValueInterpretation)
#include "tst_valueinterpretation.moc"
