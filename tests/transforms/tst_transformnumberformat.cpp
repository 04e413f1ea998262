#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformnumbase.h"
#include "transforms/transformnumberformat.h"

#include <QCoreApplication>
#include <QtTest>

// Num Format and Num Base: numbers read with one decimal separator or base and written with
// another, the expected texts worked out with printf formats and Python's int(text, base);
// the separator and the base guessed from a column; what becomes of values that can't be
// read.
class TestTransformNumberFormat : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void formats_data();
    void formats();
    void guessedDecimalSeparator_data();
    void guessedDecimalSeparator();
    void nonNumbers_data();
    void nonNumbers();
    void bases_data();
    void bases();
    void guessedBases();
    void nonIntegers();
    void sameBases();

private:
    struct Run
    {
        QList<QStringList> rows;
        QString result;
        QStringList warnings;
        QStringList information;
    };
    static Run run(Transform &transform, const QList<QStringList> &rows,
                   const std::function<void(Transform &)> &setUp);
    static Run format(const QStringList &cells, const QString &decimalFrom,
                      const QString &inputLocale, const QString &format, int precision,
                      const QString &outputLocale, bool group, int nonNumeric = 0);
    static Run base(const QList<QStringList> &rows, int from, int to, int nonInteger = 0);
};

void TestTransformNumberFormat::initTestCase()
{
    // "Locale in Preferences" is the default locale.
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
}

TestTransformNumberFormat::Run
TestTransformNumberFormat::run(Transform &transform, const QList<QStringList> &rows,
                               const std::function<void(Transform &)> &setUp)
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(rows)));
    transform.createParameters({node.data()}, false);
    QList<ColumnId> all;
    for (int c = 0; c < node->dataset()->columnCount(); ++c)
        all.append(node->dataset()->columnId(c));
    transform.parameter("Columns")->setColumns(all);
    setUp(transform);
    const Dataset output = runTransform(transform, {node.data()});
    return {output.rows(), transform.result(), transform.warnings(), transform.information()};
}

TestTransformNumberFormat::Run
TestTransformNumberFormat::format(const QStringList &cells, const QString &decimalFrom,
                                  const QString &inputLocale, const QString &format, int precision,
                                  const QString &outputLocale, bool group, int nonNumeric)
{
    QList<QStringList> rows {{"n"}};
    for (const QString &cell : cells)
        rows.append({cell});
    TransformNumberFormat transform;
    return run(transform, rows, [&](Transform &t) {
        t.parameter("Decimal_From")->setValue(decimalFrom);
        t.parameter("Input_Locale")->fromText(inputLocale);
        t.parameter("Format")->setValue(format);
        t.parameter("Precision")->setValue(precision);
        t.parameter("Output_Locale")->fromText(outputLocale);
        t.parameter("Group_Separator")->setValue(group);
        t.parameter("Non_Numeric")
            ->setValue(t.parameter("Non_Numeric")->options().toStringList().at(nonNumeric));
    });
}

TestTransformNumberFormat::Run TestTransformNumberFormat::base(const QList<QStringList> &rows,
                                                               int from, int to, int nonInteger)
{
    TransformNumBase transform;
    return run(transform, rows, [&](Transform &t) {
        t.parameter("From")->setValue(from);
        t.parameter("To")->setValue(to);
        t.parameter("Non_Numeric")
            ->setValue(t.parameter("Non_Numeric")->options().toStringList().at(nonInteger));
    });
}

void TestTransformNumberFormat::formats_data()
{
    QTest::addColumn<QString>("decimalFrom");
    QTest::addColumn<QString>("inputLocale");
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("precision");
    QTest::addColumn<QString>("outputLocale");
    QTest::addColumn<bool>("group");
    QTest::addColumn<QString>("cell");
    QTest::addColumn<QString>("expected");

    const QString dot = "US/UK . (dot)";
    const QString comma = "European , (comma)";
    // printf("%.3e") and friends give the same digits.
    QTest::newRow("e") << dot << ""
                       << "e" << 3 << "C" << false << "1230000"
                       << "1.230e+06";
    QTest::newRow("E") << dot << ""
                       << "E" << 3 << "C" << false << "1230000"
                       << "1.230E+06";
    QTest::newRow("f") << dot << ""
                       << "f" << 3 << "C" << false << "1230000"
                       << "1230000.000";
    QTest::newRow("g") << dot << ""
                       << "g" << 3 << "C" << false << "1230000"
                       << "1.23e+06";
    QTest::newRow("G, small") << dot << ""
                              << "G" << 3 << "C" << false << "0.0000123"
                              << "1.23E-05";
    QTest::newRow("s ignores the precision") << dot << ""
                                             << "s" << 0 << "C" << false << "1230000.25"
                                             << "1230000.25";
    QTest::newRow("grouped for the output locale") << dot << ""
                                                   << "f" << 2 << "de_DE" << true << "1,234,567.891"
                                                   << "1.234.567,89";
    QTest::newRow("grouped in English") << comma << ""
                                        << "f" << 2 << "en_US" << true << "1.234.567,891"
                                        << "1,234,567.89";
    QTest::newRow("blanks group too, currency signs are passed over")
        << comma << ""
        << "f" << 2 << "C" << false << QString::fromUtf8("€ 1 234,5") << "1234.50";
    QTest::newRow("Indian grouping") << dot << ""
                                     << "f" << 0 << "C" << false << "12,34,567"
                                     << "1234567";
    QTest::newRow("a minus sign of typesetting")
        << dot << ""
        << "f" << 1 << "C" << false << QString::fromUtf8("−4.26") << "-4.3";
    QTest::newRow("a fraction alone") << comma << ""
                                      << "f" << 2 << "C" << false << ",5"
                                      << "0.50";
    QTest::newRow("exponent in the input") << dot << ""
                                           << "f" << 0 << "C" << false << "-3e2"
                                           << "-300";
    QTest::newRow("the locale of the preferences reads a comma")
        << "Locale in Preferences"
        << ""
        << "f" << 1 << "C" << false << "2,5"
        << "2.5";
    QTest::newRow("a selected locale with its own digits")
        << "Selected locale"
        << "ar_EG"
        << "f" << 1 << "C" << false << QString::fromUtf8("١٢٫٥") << "12.5";
    QTest::newRow("the output locale's own digits")
        << dot << ""
        << "f" << 1 << "ar_EG" << false << "12.5" << QString::fromUtf8("١٢٫٥");
}

void TestTransformNumberFormat::formats()
{
    QFETCH(QString, decimalFrom);
    QFETCH(QString, inputLocale);
    QFETCH(QString, format);
    QFETCH(int, precision);
    QFETCH(QString, outputLocale);
    QFETCH(bool, group);
    QFETCH(QString, cell);
    QFETCH(QString, expected);
    const Run run = TestTransformNumberFormat::format({cell}, decimalFrom, inputLocale, format,
                                                      precision, outputLocale, group);
    QCOMPARE(run.rows, QList<QStringList>({{expected}}));
    QCOMPARE(run.warnings, QStringList());
}

void TestTransformNumberFormat::guessedDecimalSeparator_data()
{
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("guess");

    // Only some texts tell: "1.000" may be a thousand or one, "2,75" can only be a fraction.
    QTest::newRow("a European column")
        << QStringList {"1.000", "2,75", "1.234.567,5", "-0,126"}
        << QStringList {"1000.00", "2.75", "1234567.50", "-0.13"} << "','";
    QTest::newRow("a US column") << QStringList {"1,000", "2.75", "1,234,567.5", "7"}
                                 << QStringList {"1000.00", "2.75", "1234567.50", "7.00"} << "'.'";
    // Nothing tells; the default locale (German here) decides.
    QTest::newRow("undecided") << QStringList {"1.000", "12"} << QStringList {"1000.00", "12.00"}
                               << "','";
}

void TestTransformNumberFormat::guessedDecimalSeparator()
{
    QFETCH(QStringList, cells);
    QFETCH(QStringList, expected);
    QFETCH(QString, guess);
    const Run run = format(cells, "Automatic", "", "f", 2, "C", false);
    QList<QStringList> rows;
    for (const QString &cell : expected)
        rows.append({cell});
    QCOMPARE(run.rows, rows);
    QCOMPARE(run.information,
             QStringList {QString("Guessing decimal separator %1 for column 1 ('n').").arg(guess)});
}

void TestTransformNumberFormat::nonNumbers_data()
{
    QTest::addColumn<int>("nonNumeric");
    QTest::addColumn<QStringList>("expected");

    // With a dot for decimals "1,5" is no grouping of thousands, nor is "1e" a number.
    QTest::newRow("left unchanged") << 0 << QStringList {"1.50", "1,5", "abc", "1e", "", "inf"};
    QTest::newRow("set empty") << 1 << QStringList {"1.50", "", "", "", "", ""};
    QTest::newRow("set to NaN") << 2 << QStringList {"1.50", "NaN", "NaN", "NaN", "", "NaN"};
}

void TestTransformNumberFormat::nonNumbers()
{
    QFETCH(int, nonNumeric);
    QFETCH(QStringList, expected);
    const Run run = format({"1.5", "1,5", "abc", "1e", "", "inf"}, "US/UK . (dot)", "", "f", 2, "C",
                           false, nonNumeric);
    QList<QStringList> rows;
    for (const QString &cell : expected)
        rows.append({cell});
    QCOMPARE(run.rows, rows);
    QCOMPARE(run.result, QString("1 changed, 1 unchanged, 4 non-numeric"));
    QCOMPARE(run.warnings.first(), QString("4 non-numeric values:"));
    QCOMPARE(run.warnings.at(1), QString("'1,5' at column 'n' row 2"));
}

void TestTransformNumberFormat::bases_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<QString>("cell");
    QTest::addColumn<QString>("expected");

    // Python: format(255, 'X'), int('1011', 2), int('zz', 36), (-1) & (2**64 - 1) ...
    QTest::newRow("decimal to hexadecimal") << 10 << 16 << "255"
                                            << "FF";
    QTest::newRow("binary to decimal") << 2 << 10 << "1011"
                                       << "11";
    QTest::newRow("octal to binary") << 8 << 2 << "17"
                                     << "1111";
    QTest::newRow("base 36, either case") << 36 << 10 << "zZ"
                                          << "1295";
    QTest::newRow("leading zeros and a plus sign") << 10 << 16 << "+000255"
                                                   << "FF";
    QTest::newRow("negative to decimal keeps its sign") << 16 << 10 << "-ff"
                                                        << "-255";
    QTest::newRow("negative to hexadecimal is two's complement") << 10 << 16 << "-1"
                                                                 << "FFFFFFFFFFFFFFFF";
    QTest::newRow("the most negative") << 10 << 2 << "-9223372036854775808"
                                       << "1" + QString(63, '0');
    QTest::newRow("the largest unsigned") << 10 << 16 << "18446744073709551615"
                                          << "FFFFFFFFFFFFFFFF";
    QTest::newRow("minus zero") << 10 << 16 << "-0"
                                << "0";
    QTest::newRow("0x where the base is 16") << 16 << 10 << "0x10"
                                             << "16";
    QTest::newRow("0x where it isn't") << 10 << 16 << "0x10"
                                       << "0x10";
}

void TestTransformNumberFormat::bases()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(QString, cell);
    QFETCH(QString, expected);
    const Run run = base({{"n"}, {cell}}, from, to);
    QCOMPARE(run.rows, QList<QStringList>({{expected}}));
}

void TestTransformNumberFormat::guessedBases()
{
    // Decimal digits only, hexadecimal digits, letters past f, and a column of 0x values; in
    // every column a value starting 0x is hexadecimal whatever the guess.
    const Run run = base({{"dec", "hex", "b36", "prefixed"},
                          {"10", "ff", "z", "0x1f"},
                          {"0x10", "10", "10", "-0X0A"},
                          {"", "", "", ""}},
                         TransformNumBase::Guess, 10);
    QCOMPARE(run.rows,
             QList<QStringList>(
                 {{"10", "255", "35", "31"}, {"16", "16", "36", "-10"}, {"", "", "", ""}}));
    QCOMPARE(run.information,
             QStringList({"Guessing base 10 for column 1 ('dec').",
                          "Guessing base 16 for column 2 ('hex').",
                          "Guessing base 36 for column 3 ('b36').",
                          "Guessing base 16 for column 4 ('prefixed')."}));
    QCOMPARE(run.result, QString("7 changed, 5 unchanged, 0 non-integer"));
}

void TestTransformNumberFormat::nonIntegers()
{
    // In octal: a fraction, a grouped number, a digit beyond the base, 2^64 (too large for 64
    // bits), and a negative.
    const QList<QStringList> rows {{"n"}, {"12.5"}, {"1,000"}, {"19"}, {"2000000000000000000000"},
                                   {"-2"}};
    const Run kept = base(rows, 8, 16, 0);
    QCOMPARE(kept.rows,
             QList<QStringList>(
                 {{"12.5"}, {"1,000"}, {"19"}, {"2000000000000000000000"}, {"FFFFFFFFFFFFFFFE"}}));
    QCOMPARE(kept.result, QString("1 changed, 0 unchanged, 4 non-integer"));
    QCOMPARE(kept.warnings,
             QStringList({"Negative input values are shown as unsigned when converted to base 16.",
                          "4 non-integer values:", "'12.5' at column 'n' row 1",
                          "'1,000' at column 'n' row 2", "'19' at column 'n' row 3",
                          "'2000000000000000000000' at column 'n' row 4",
                          "Input values should not contain ',' or '.' characters."}));
    const Run marked = base(rows, 8, 16, 2);
    QCOMPARE(marked.rows,
             QList<QStringList>({{"NaN"}, {"NaN"}, {"NaN"}, {"NaN"}, {"FFFFFFFFFFFFFFFE"}}));
    const Run emptied = base(rows, 8, 16, 1);
    QCOMPARE(emptied.rows.at(0), QStringList {""});
}

void TestTransformNumberFormat::sameBases()
{
    // Guess is the lowest base, shown as a word.
    TransformNumBase prototype;
    prototype.createParameters({}, false);
    QCOMPARE(prototype.parameter("From")->summary(), QString("Guess"));
    prototype.parameter("From")->setValue(2);
    QCOMPARE(prototype.parameter("From")->summary(), QString("2"));

    const Run run = base({{"n"}, {"12"}}, 10, 10);
    QCOMPARE(run.rows, QList<QStringList>({{"12"}}));
    QCOMPARE(run.warnings, QStringList {"'Base from' and 'Base to' values are the same."});
    QCOMPARE(run.result, QString("No changes"));
}

QTEST_GUILESS_MAIN(TestTransformNumberFormat)
#include "tst_transformnumberformat.moc"
