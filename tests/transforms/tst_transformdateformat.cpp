#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformdateformat.h"

#include <QCoreApplication>
#include <QtTest>

#include <ctime>

// DateTime Format: dates and times read in one locale and format and written in another,
// checked against calendars and the locales' month and day names; values that don't match,
// each way Non-date can treat them.
class TestTransformDateFormat : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void conversions_data();
    void conversions();
    void nonDates_data();
    void nonDates();
    void emptyFormatChangesNothing();

private:
    struct Run
    {
        QStringList cells;
        QString result;
        QStringList warnings;
    };
    static Run convert(const QStringList &cells, const QString &inputLocale,
                       const QString &inputFormat, const QString &outputLocale,
                       const QString &outputFormat, int nonDate = 0,
                       const QString &withValue = QString());
};

void TestTransformDateFormat::initTestCase()
{
    // Clocks in Berlin skip from 02:00 to 03:00 on 2021-03-28: a time in that hour has to be
    // read as written, not as a local time that doesn't exist.
    qputenv("TZ", "Europe/Berlin");
    tzset();
}

TestTransformDateFormat::Run
TestTransformDateFormat::convert(const QStringList &cells, const QString &inputLocale,
                                 const QString &inputFormat, const QString &outputLocale,
                                 const QString &outputFormat, int nonDate, const QString &withValue)
{
    QList<QStringList> rows {{"when"}};
    for (const QString &cell : cells)
        rows.append({cell});
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(rows)));
    TransformDateFormat transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Input_Locale")->fromText(inputLocale);
    transform.parameter("Input")->setValue(inputFormat);
    transform.parameter("Output_Locale")->fromText(outputLocale);
    transform.parameter("Output")->setValue(outputFormat);
    transform.parameter("Non_Date")->setValue(TransformDateFormat::nonDateChoices().at(nonDate));
    transform.parameter("User_Defined")->setValue(withValue);
    const Dataset output = runTransform(transform, {node.data()});
    return {output.columnValues(0), transform.result(), transform.warnings()};
}

void TestTransformDateFormat::conversions_data()
{
    QTest::addColumn<QString>("inputLocale");
    QTest::addColumn<QString>("inputFormat");
    QTest::addColumn<QString>("outputLocale");
    QTest::addColumn<QString>("outputFormat");
    QTest::addColumn<QString>("cell");
    QTest::addColumn<QString>("expected");

    QTest::newRow("the default formats") << "en_GB"
                                         << "d/MM/yyyy"
                                         << "en_GB"
                                         << "yy/MM/dd"
                                         << "3/04/2021"
                                         << "21/04/03";
    QTest::newRow("a one-digit month where two are asked, blanks around") << "en_GB"
                                                                          << "d/MM/yyyy"
                                                                          << "en_GB"
                                                                          << "yyyy-MM-dd"
                                                                          << " 3/4/2021 "
                                                                          << "2021-04-03";
    QTest::newRow("ISO to a French long date") << "C"
                                               << "yyyy-MM-dd"
                                               << "fr_FR"
                                               << "d MMMM yyyy"
                                               << "2020-03-03"
                                               << "3 mars 2020";
    QTest::newRow("a German month name, any case, to English") << "de_DE"
                                                               << "d. MMMM yyyy"
                                                               << "en_US"
                                                               << "MMMM d, yyyy"
                                                               << "24. dezember 2019"
                                                               << "December 24, 2019";
    QTest::newRow("Russian months are inflected within a date") << "C"
                                                                << "yyyy-MM-dd"
                                                                << "ru_RU"
                                                                << "d MMMM yyyy"
                                                                << "2020-03-03"
                                                                << "3 марта 2020";
    QTest::newRow("and not alone") << "C"
                                   << "yyyy-MM-dd"
                                   << "ru_RU"
                                   << "MMMM yyyy"
                                   << "2020-03-03"
                                   << "март 2020";
    QTest::newRow("the day of the week is worked out") << "C"
                                                       << "yyyy-MM-dd"
                                                       << "de_DE"
                                                       << "dddd, d. MMM"
                                                       << "2024-02-29"
                                                       << "Donnerstag, 29. Feb.";
    QTest::newRow("a short name read, whatever day it claims") << "en_US"
                                                               << "ddd d MMM yyyy"
                                                               << "C"
                                                               << "yyyy-MM-dd"
                                                               << "Sun 3 Sep 2023"
                                                               << "2023-09-03";
    QTest::newRow("PM of a 12-hour clock") << "en_US"
                                           << "M/d/yy h:mm AP"
                                           << "C"
                                           << "yyyy-MM-dd HH:mm"
                                           << "12/31/99 11:45 pm"
                                           << "1999-12-31 23:45";
    QTest::newRow("12 AM is midnight") << "en_US"
                                       << "M/d/yy h:mm AP"
                                       << "C"
                                       << "yyyy-MM-dd HH:mm"
                                       << "1/2/05 12:05 AM"
                                       << "2005-01-02 00:05";
    QTest::newRow("a time alone, to a 12-hour clock") << "C"
                                                      << "HH:mm:ss.zzz"
                                                      << "en_US"
                                                      << "h:mm:ss ap"
                                                      << "00:30:15.250"
                                                      << "12:30:15 am";
    QTest::newRow("a time that summer time skips") << "C"
                                                   << "yyyy-MM-dd hh:mm"
                                                   << "C"
                                                   << "dd/MM/yyyy hh:mm"
                                                   << "2021-03-28 02:30"
                                                   << "28/03/2021 02:30";
    QTest::newRow("a date written with no separators") << "C"
                                                       << "yyyyMMdd"
                                                       << "C"
                                                       << "d/M/yyyy"
                                                       << "20200102"
                                                       << "2/1/2020";
    QTest::newRow("two-digit years up to 29 are this century") << "C"
                                                               << "d/M/yy"
                                                               << "C"
                                                               << "yyyy"
                                                               << "1/1/29"
                                                               << "2029";
    QTest::newRow("and from 30 the last") << "C"
                                          << "d/M/yy"
                                          << "C"
                                          << "yyyy"
                                          << "1/1/30"
                                          << "1930";
    QTest::newRow("quoted text, and a quote") << "C"
                                              << "yyyy-MM-dd'T'HH"
                                              << "C"
                                              << "'day' d 'of' M, ''yy"
                                              << "2020-01-02T03"
                                              << "day 2 of 1, '20";
    QTest::newRow("the digits of the locale") << "C"
                                              << "yyyy-MM-dd"
                                              << "ar_EG"
                                              << "d/M/yyyy"
                                              << "2020-03-04" << QString::fromUtf8("٤/٣/٢٠٢٠");
    QTest::newRow("the 29th of February of a leap year") << "C"
                                                         << "d/M/yyyy"
                                                         << "C"
                                                         << "yyyy-MM-dd"
                                                         << "29/2/2000"
                                                         << "2000-02-29";
}

void TestTransformDateFormat::conversions()
{
    QFETCH(QString, inputLocale);
    QFETCH(QString, inputFormat);
    QFETCH(QString, outputLocale);
    QFETCH(QString, outputFormat);
    QFETCH(QString, cell);
    QFETCH(QString, expected);
    const Run run = convert({cell}, inputLocale, inputFormat, outputLocale, outputFormat);
    QCOMPARE(run.cells, QStringList {expected});
    QCOMPARE(run.warnings, QStringList());
    QCOMPARE(run.result, QString("1 changed, 0 unchanged, 0 non-date"));
}

void TestTransformDateFormat::nonDates_data()
{
    QTest::addColumn<int>("nonDate");
    QTest::addColumn<QStringList>("expected");

    // The 29th of February of a year that isn't leap, a day that no month has, a date with
    // more after it, a two-digit year where four are asked, and a word.
    QTest::newRow("left unchanged")
        << 0 << QStringList {"2020-02-01", "29/2/2100", "32/1/2020", "1/1/2020x",
                             "1/1/20",     "soon",      "",          "2020-12-31"};
    QTest::newRow("set empty") << 1
                               << QStringList {"2020-02-01", "", "", "", "", "", "", "2020-12-31"};
    QTest::newRow("set to the value")
        << 2 << QStringList {"2020-02-01", "?", "?", "?", "?", "?", "", "2020-12-31"};
}

void TestTransformDateFormat::nonDates()
{
    QFETCH(int, nonDate);
    QFETCH(QStringList, expected);
    const Run run = convert(
        {"1/2/2020", "29/2/2100", "32/1/2020", "1/1/2020x", "1/1/20", "soon", "", "31/12/2020"},
        "C", "d/M/yyyy", "C", "yyyy-MM-dd", nonDate, "?");
    QCOMPARE(run.cells, expected);
    // An empty cell is a missing value and no date that went wrong.
    QCOMPARE(run.result, QString("2 changed, 1 unchanged, 5 non-date"));
    QCOMPARE(
        run.warnings,
        QStringList({"5 non-date values:", "'29/2/2100' at column 'when' row 2",
                     "'32/1/2020' at column 'when' row 3", "'1/1/2020x' at column 'when' row 4",
                     "'1/1/20' at column 'when' row 5", "'soon' at column 'when' row 6"}));
}

void TestTransformDateFormat::emptyFormatChangesNothing()
{
    const Run run = convert({"1/2/2020"}, "C", "d/M/yyyy", "C", "");
    QCOMPARE(run.cells, QStringList {"1/2/2020"});
    QCOMPARE(run.result, QString("No changes"));
}

QTEST_GUILESS_MAIN(TestTransformDateFormat)
#include "tst_transformdateformat.moc"
