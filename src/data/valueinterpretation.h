#pragma once

// How the text of a cell is read as a boolean, number, date or time, and the small text
// tools that several transforms share (case conversion, whitespace tidy, eliding, fuzzy
// similarity). Everything here is a pure function of its arguments and of the default
// QLocale, except for the two comparison caches of interpretPair and the date formats in
// force, which the application sets from its settings.

#include <QDate>
#include <QLocale>
#include <QString>
#include <QStringList>
#include <QTime>
#include <QVector>

// Booleans and numbers. Each takes an optional ok flag; failure never throws.
bool toBool(const QString &text, bool emptyIsFalse, bool numbersAllowed, bool *ok = nullptr);
double toDouble(const QString &text, bool emptyIsZero, bool stripCurrency, bool *ok = nullptr);
double toDouble(const QString &text, const QLocale &locale, bool emptyIsZero, bool stripCurrency,
                bool *ok = nullptr);
// toDouble(text, false, true, ok) for loops over a whole column: a plain decimal text
// ("-12.50") is read directly when decimalIsPoint says that the default locale's decimal
// point is '.', which gives the same double at a fraction of the cost; any other text goes
// to toDouble.
double toDoubleFast(const QString &text, bool decimalIsPoint, bool *ok);
qlonglong toLongLong(const QString &text, bool emptyIsZero, bool stripCurrency, bool *ok = nullptr);
int toInt(const QString &text, bool emptyIsZero, bool stripCurrency, bool *ok = nullptr);
// The JSON number grammar, independent of the locale.
bool isPlainNumber(const QString &text);

// Dates and times. An unparsable or out-of-range text gives a null date or invalid time.
QDate toDate(const QString &text, const QString &format);
QDate toDate(const QString &text, const QStringList &formats, QString *usedFormat = nullptr);
QTime toTime(const QString &text);

// The two built-in lists of date formats; they differ in whether a month or a day is
// tried first in an ambiguous text such as 1/2/2024.
QStringList defaultDateFormats(bool monthFirst);
bool isMonthFirstLocale(const QLocale &locale);
// The formats in force for the whole process. Until set they are the default list for the
// default locale; setting an empty list returns to that default.
QStringList dateFormats();
void setDateFormats(const QStringList &formats);
// The stored form of the setting: one format a line.
QStringList parseDateFormats(const QString &settingText);

// Lists of numbers read from texts; texts that are not numbers are left out.
QVector<double> doublesFromTexts(const QStringList &texts, bool emptyIsZero, bool stripCurrency);

// How a computed number is written into a cell: at most 15 significant digits, no group
// separators, '.' as decimal point, "NaN" for anything not finite.
QString numberToCellText(double value);

// Small text tools.
QStringList splitLines(const QString &text, bool keepEmptyParts);
QString formatCount(qlonglong count, bool grouped = true);
QString elide(const QString &text, int length, bool ellipsis = true);
QString tidyLineEnds(const QString &text);

// How two texts compare: as dates when both parse with their columns' formats, else as
// numbers when both read as numbers.
struct PairInterpretation
{
    bool bothDates = false;
    QDate dateA;
    QDate dateB;
    bool bothNumbers = false;
    double numberA = 0.0;
    double numberB = 0.0;
};

// Parses through two process-wide caches, so that sorting and filtering parse each
// distinct text once; whoever starts a comparison run calls clearComparisonCaches at its
// end.
PairInterpretation interpretPair(const QString &a, const QString &b, const QString &formatA,
                                 const QString &formatB, bool numeric);
void clearComparisonCaches();
// Without caches, and numbers are tried whenever the texts are not both dates.
PairInterpretation interpretPairUncached(const QString &a, const QString &b, const QString &formatA,
                                         const QString &formatB);

// Case conversions. keepUpper leaves upper-case letters that would otherwise be lowered.
enum class TextCase {
    Lower = 0,
    Upper,
    Title,
    Sentence,
    LowerCamel,
    UpperCamel,
    Kebab,
    Snake,
    Inverted,
    Count
};

// The option texts of the cases, in TextCase order.
QStringList textCaseNames();
QString toLowerCase(const QString &text);
QString toUpperCase(const QString &text);
QString toTitleCase(const QString &text, bool keepUpper);
QString toSentenceCase(const QString &text, bool keepUpper);
QString toLowerCamelCase(const QString &text);
QString toUpperCamelCase(const QString &text);
QString toKebabCase(const QString &text);
QString toSnakeCase(const QString &text);
QString toInvertedCase(const QString &text);
// caseIndex is a TextCase; any other value returns the text unchanged.
QString convertCase(const QString &text, int caseIndex, bool keepUpper);

// Edit distance (insert, delete, substitute, each 1) on UTF-16 units, capped at bound:
// the result is min(distance, bound). A bound of 0 or less gives 0.
int boundedLevenshtein(const QString &a, const QString &b, int bound);
// 0 to 100 when the texts are at least threshold percent alike, -1 when they are less alike
// than that; two empty texts are 100 alike.
int similarity(const QString &a, const QString &b, int threshold);
// The same over whole rows: distances are summed over positions and measured against the
// summed lengths. Lists of unequal length give 0.
int similarity(const QStringList &a, const QStringList &b, int threshold);
