#include "data/valueinterpretation.h"

#include <QHash>
#include <QPair>
#include <QRegularExpression>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace {

inline void setOk(bool *ok, bool value)
{
    if (ok)
        *ok = value;
}

bool containsCurrency(QStringView text)
{
    for (const QChar ch : text) {
        if (ch.category() == QChar::Symbol_Currency)
            return true;
    }
    return false;
}

QString withoutCurrency(QStringView text)
{
    QString result;
    result.reserve(int(text.size()));
    for (const QChar ch : text) {
        if (ch.category() != QChar::Symbol_Currency)
            result.append(ch);
    }
    return result;
}

// The common preamble of the number readers: trimmed, currency signs removed on request.
// A stripped copy is needed only when a sign is present, so the usual cell costs nothing.
QStringView numberText(const QString &text, bool stripCurrency, QString &buffer)
{
    QStringView view = QStringView(text).trimmed();
    if (stripCurrency && containsCurrency(view)) {
        buffer = withoutCurrency(view);
        view = QStringView(buffer).trimmed();
    }
    return view;
}

// 12.000 is read as the integer 12; 12.50 stays a fraction and fails as an integer.
QStringView withoutZeroFraction(QStringView text, const QLocale &locale)
{
    const qsizetype point = text.indexOf(locale.decimalPoint());
    if (point < 0)
        return text;
    const QChar zero = locale.zeroDigit();
    for (qsizetype i = point + 1; i < text.size(); ++i) {
        if (text.at(i) != zero)
            return text;
    }
    return text.left(point);
}

using DateCacheKey = QPair<QString, QString>;

QHash<DateCacheKey, QDate> &dateCache()
{
    static QHash<DateCacheKey, QDate> cache;
    return cache;
}

QHash<QString, double> &numberCache()
{
    static QHash<QString, double> cache;
    return cache;
}

QDate cachedDate(const QString &text, const QString &format)
{
    QHash<DateCacheKey, QDate> &cache = dateCache();
    const DateCacheKey key(text, format);
    const auto found = cache.constFind(key);
    if (found != cache.constEnd())
        return found.value();
    const QDate date = toDate(text, format);
    cache.insert(key, date);
    return date;
}

// A failed reading is cached as NaN: toDouble never yields NaN for a number.
double cachedNumber(const QString &text, bool *ok)
{
    QHash<QString, double> &cache = numberCache();
    const auto found = cache.constFind(text);
    double value;
    if (found != cache.constEnd()) {
        value = found.value();
    } else {
        bool parsed = false;
        value = toDouble(text, false, true, &parsed);
        if (!parsed)
            value = qQNaN();
        cache.insert(text, value);
    }
    if (std::isnan(value)) {
        *ok = false;
        return 0.0;
    }
    *ok = true;
    return value;
}

struct DateFormatState
{
    QStringList formats;
    bool set = false;
};

DateFormatState &dateFormatState()
{
    static DateFormatState state;
    return state;
}

} // namespace

bool toBool(const QString &text, bool emptyIsFalse, bool numbersAllowed, bool *ok)
{
    const QStringView view = QStringView(text).trimmed();
    if (view.isEmpty() && emptyIsFalse) {
        setOk(ok, false);
        return false;
    }
    if (view.compare(QStringView(u"true"), Qt::CaseInsensitive) == 0) {
        setOk(ok, true);
        return true;
    }
    if (view.compare(QStringView(u"false"), Qt::CaseInsensitive) == 0) {
        setOk(ok, true);
        return false;
    }
    if (numbersAllowed) {
        bool parsed = false;
        const double value = toDouble(text, false, false, &parsed);
        if (parsed) {
            setOk(ok, true);
            return value != 0.0;
        }
    }
    setOk(ok, false);
    return false;
}

double toDouble(const QString &text, bool emptyIsZero, bool stripCurrency, bool *ok)
{
    return toDouble(text, QLocale(), emptyIsZero, stripCurrency, ok);
}

double toDouble(const QString &text, const QLocale &locale, bool emptyIsZero, bool stripCurrency,
                bool *ok)
{
    QString buffer;
    const QStringView view = numberText(text, stripCurrency, buffer);
    if (view.isEmpty()) {
        setOk(ok, emptyIsZero);
        return 0.0;
    }
    bool parsed = false;
    const double value = locale.toDouble(view, &parsed);
    // QLocale accepts "nan" and "inf", which are no numbers to a table.
    if (!parsed || !std::isfinite(value)) {
        setOk(ok, false);
        return 0.0;
    }
    setOk(ok, true);
    return value;
}

double toDoubleFast(const QString &text, bool decimalIsPoint, bool *ok)
{
    const int length = text.size();
    if (decimalIsPoint && length > 0 && length < 64) {
        char buffer[64];
        const QChar *data = text.constData();
        bool plain = true;
        bool seenPoint = false;
        bool seenDigit = false;
        for (int i = 0; i < length && plain; ++i) {
            const ushort u = data[i].unicode();
            if (u >= '0' && u <= '9') {
                seenDigit = true;
            } else if (u == '.' && !seenPoint && seenDigit && i + 1 < length) {
                seenPoint = true;
            } else if (!(u == '-' && i == 0)) {
                plain = false;
            }
            buffer[i] = char(u);
        }
        if (plain && seenDigit) {
            double value = 0.0;
            const std::from_chars_result parsed = std::from_chars(buffer, buffer + length, value);
            if (parsed.ec == std::errc() && parsed.ptr == buffer + length) {
                setOk(ok, true);
                return value;
            }
        }
    }
    return toDouble(text, false, true, ok);
}

qlonglong toLongLong(const QString &text, bool emptyIsZero, bool stripCurrency, bool *ok)
{
    QString buffer;
    const QStringView view = numberText(text, stripCurrency, buffer);
    if (view.isEmpty()) {
        setOk(ok, emptyIsZero);
        return 0;
    }
    const QLocale locale;
    return locale.toLongLong(withoutZeroFraction(view, locale), ok);
}

int toInt(const QString &text, bool emptyIsZero, bool stripCurrency, bool *ok)
{
    QString buffer;
    const QStringView view = numberText(text, stripCurrency, buffer);
    if (view.isEmpty()) {
        setOk(ok, emptyIsZero);
        return 0;
    }
    const QLocale locale;
    return locale.toInt(withoutZeroFraction(view, locale), ok);
}

bool isPlainNumber(const QString &text)
{
    static const QRegularExpression plainNumber(
        QStringLiteral("^-?(?:0|[1-9]\\d*)(?:\\.\\d+)?(?:[eE][+-]?\\d+)?$"));
    return plainNumber.match(text.trimmed()).hasMatch();
}

QDate toDate(const QString &text, const QString &format)
{
    const QDate date = QDate::fromString(text.trimmed(), format);
    return date.isValid() ? date : QDate();
}

QDate toDate(const QString &text, const QStringList &formats, QString *usedFormat)
{
    const QString trimmed = text.trimmed();
    for (const QString &format : formats) {
        const QDate date = QDate::fromString(trimmed, format);
        if (date.isValid()) {
            if (usedFormat)
                *usedFormat = format;
            return date;
        }
    }
    if (usedFormat)
        usedFormat->clear();
    return QDate();
}

QTime toTime(const QString &text)
{
    const QString trimmed = text.trimmed();
    const QTime time = QTime::fromString(trimmed, QStringLiteral("h:m:s"));
    if (time.isValid())
        return time;
    return QTime::fromString(trimmed, QStringLiteral("h:m"));
}

QStringList defaultDateFormats(bool monthFirst)
{
    static const QStringList monthFirstFormats
        = {QStringLiteral("M/d/yyyy"), QStringLiteral("d/M/yyyy"), QStringLiteral("yyyy/M/d"),
           QStringLiteral("M/d/yy"),   QStringLiteral("d/M/yy"),   QStringLiteral("yy/M/d"),
           QStringLiteral("M-d-yyyy"), QStringLiteral("d-M-yyyy"), QStringLiteral("yyyy-M-d"),
           QStringLiteral("M-d-yy"),   QStringLiteral("d-M-yy"),   QStringLiteral("yy-M-d")};
    // "d/M/yyyy" twice is the list as users have always had it; trying a format twice costs
    // only time.
    static const QStringList dayFirstFormats
        = {QStringLiteral("d/M/yyyy"), QStringLiteral("M/d/yyyy"), QStringLiteral("yyyy/M/d"),
           QStringLiteral("d/M/yyyy"), QStringLiteral("M/d/yy"),   QStringLiteral("yy/M/d"),
           QStringLiteral("d-M-yyyy"), QStringLiteral("M-d-yyyy"), QStringLiteral("yyyy-M-d"),
           QStringLiteral("d-M-yy"),   QStringLiteral("M-d-yy"),   QStringLiteral("yy-M-d")};
    return monthFirst ? monthFirstFormats : dayFirstFormats;
}

bool isMonthFirstLocale(const QLocale &locale)
{
    switch (locale.country()) {
    case QLocale::UnitedStates:
    case QLocale::UnitedStatesMinorOutlyingIslands:
    case QLocale::UnitedStatesVirginIslands:
    case QLocale::AmericanSamoa:
    case QLocale::Guam:
    case QLocale::NorthernMarianaIslands:
    case QLocale::PuertoRico:
    case QLocale::Philippines:
    case QLocale::Belize:
    case QLocale::MarshallIslands:
    case QLocale::Micronesia:
    case QLocale::Palau:
        return true;
    case QLocale::Canada:
        return locale.language() == QLocale::English;
    default:
        // The C locale writes dates the American way.
        return locale.language() == QLocale::C;
    }
}

QStringList dateFormats()
{
    const DateFormatState &state = dateFormatState();
    if (state.set)
        return state.formats;
    return defaultDateFormats(isMonthFirstLocale(QLocale()));
}

void setDateFormats(const QStringList &formats)
{
    DateFormatState &state = dateFormatState();
    state.formats = formats;
    state.set = !formats.isEmpty();
}

QStringList parseDateFormats(const QString &settingText)
{
    QStringList formats;
    for (const QString &line : settingText.split(QLatin1Char('\n'))) {
        const QString format = line.trimmed();
        if (!format.isEmpty())
            formats.append(format);
    }
    return formats;
}

QVector<double> doublesFromTexts(const QStringList &texts, bool emptyIsZero, bool stripCurrency)
{
    QVector<double> values;
    values.reserve(texts.size());
    const QLocale locale;
    for (const QString &text : texts) {
        bool ok = false;
        const double value = toDouble(text, locale, emptyIsZero, stripCurrency, &ok);
        if (ok)
            values.append(value);
    }
    return values;
}

QString numberToCellText(double value)
{
    if (!std::isfinite(value))
        return QStringLiteral("NaN");
    // Fifteen digits in all for numbers of 1 and more, fifteen decimals below: the fixed
    // form never switches to an exponent, which a spreadsheet would read back as text.
    const double magnitude = std::abs(value);
    const int integerDigits
        = magnitude > 0.0 ? std::max(int(std::ceil(std::log10(magnitude))), 0) : 0;
    const int decimals = std::max(15 - integerDigits, 0);
    QString text = QString::number(value, 'f', decimals);
    if (text.contains(QLatin1Char('.'))) {
        int end = text.size();
        while (text.at(end - 1) == QLatin1Char('0'))
            --end;
        if (text.at(end - 1) == QLatin1Char('.'))
            --end;
        text.truncate(end);
    }
    // A value rounded to nothing keeps no sign.
    if (text == QLatin1String("-0"))
        return QStringLiteral("0");
    return text;
}

QStringList splitLines(const QString &text, bool keepEmptyParts)
{
    QStringList lines;
    const QChar *data = text.constData();
    const int size = text.size();
    int start = 0;
    for (int i = 0; i < size; ++i) {
        const QChar ch = data[i];
        if (ch != QLatin1Char('\n') && ch != QLatin1Char('\r'))
            continue;
        lines.append(text.mid(start, i - start));
        if (ch == QLatin1Char('\r') && i + 1 < size && data[i + 1] == QLatin1Char('\n'))
            ++i;
        start = i + 1;
    }
    lines.append(text.mid(start));
    if (!keepEmptyParts && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

QString formatCount(qlonglong count, bool grouped)
{
    QLocale locale;
    // The C locale omits group separators by default; counts for people always carry them.
    QLocale::NumberOptions options = locale.numberOptions();
    if (grouped)
        options &= ~QLocale::NumberOptions(QLocale::OmitGroupSeparator);
    else
        options |= QLocale::OmitGroupSeparator;
    locale.setNumberOptions(options);
    return locale.toString(count);
}

QString elide(const QString &text, int length, bool ellipsis)
{
    if (length < 0 || text.size() <= length)
        return text;
    if (ellipsis && length > 1)
        return text.left(length - 1) + QChar(0x2026);
    return text.left(length);
}

QString tidyLineEnds(const QString &text)
{
    bool changes = false;
    for (const QChar ch : text) {
        if (ch != QLatin1Char(' ') && ch.isSpace()) {
            changes = true;
            break;
        }
    }
    if (!changes)
        return text;
    QString result;
    result.reserve(text.size());
    for (const QChar ch : text) {
        if (ch == QLatin1Char('\r'))
            continue;
        result.append(ch.isSpace() ? QChar(QLatin1Char(' ')) : ch);
    }
    return result;
}

PairInterpretation interpretPair(const QString &a, const QString &b, const QString &formatA,
                                 const QString &formatB, bool numeric)
{
    PairInterpretation pair;
    if (!formatA.isEmpty() && !formatB.isEmpty()) {
        pair.dateA = cachedDate(a, formatA);
        if (pair.dateA.isValid()) {
            pair.dateB = cachedDate(b, formatB);
            pair.bothDates = pair.dateB.isValid();
        }
    }
    if (numeric && !pair.bothDates) {
        bool ok = false;
        pair.numberA = cachedNumber(a, &ok);
        if (ok)
            pair.numberB = cachedNumber(b, &ok);
        pair.bothNumbers = ok;
    }
    return pair;
}

void clearComparisonCaches()
{
    // Assigning empty tables releases their memory, which clear() would keep.
    dateCache() = QHash<DateCacheKey, QDate>();
    numberCache() = QHash<QString, double>();
}

PairInterpretation interpretPairUncached(const QString &a, const QString &b, const QString &formatA,
                                         const QString &formatB)
{
    PairInterpretation pair;
    if (!formatA.isEmpty() && !formatB.isEmpty()) {
        pair.dateA = toDate(a, formatA);
        if (pair.dateA.isValid()) {
            pair.dateB = toDate(b, formatB);
            pair.bothDates = pair.dateB.isValid();
        }
    }
    if (!pair.bothDates) {
        bool ok = false;
        pair.numberA = toDouble(a, false, true, &ok);
        if (ok)
            pair.numberB = toDouble(b, false, true, &ok);
        pair.bothNumbers = ok;
    }
    return pair;
}
