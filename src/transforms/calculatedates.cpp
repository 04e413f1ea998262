#include "transforms/calculatedates.h"

#include "data/dataset.h"
#include "data/valueinterpretation.h"
#include "transforms/calculateoperations.h"

#include <QDateTime>

#include <limits>

namespace Calculate {

namespace {

// Enough cells to tell a date column from one with a stray date in it, few enough to be
// quick on any table.
constexpr int DateSamples = 50;
constexpr qlonglong MSecsPerDay = 86400000;
constexpr qlonglong LargestTimeMSecs = 1000000000000000LL;
// More distinct dates than this in one run are no longer worth keeping.
constexpr int RememberedDates = 100000;

const QString DateExpected = QStringLiteral("Error: date expected");
const QString InvalidOperation = QStringLiteral("Error: invalid operation");
const QString IntegerExpected = QStringLiteral("Error: integer expected");

QString twoDigits(qlonglong value)
{
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

} // namespace

QDate DateTexts::read(const QString &text)
{
    const auto found = m_dates.constFind(text);
    if (found != m_dates.constEnd())
        return found.value();
    if (m_dates.size() >= RememberedDates)
        m_dates.clear();
    const QDate date = toDate(text, m_format);
    m_dates.insert(text, date);
    return date;
}

QString DateTexts::write(const QDate &date, const QLocale &locale)
{
    const qint64 day = date.isValid() ? date.toJulianDay() : std::numeric_limits<qint64>::min();
    const auto found = m_texts.constFind(day);
    if (found != m_texts.constEnd())
        return found.value();
    if (m_texts.size() >= RememberedDates)
        m_texts.clear();
    const QString text = locale.toString(date, m_format);
    m_texts.insert(day, text);
    return text;
}

bool isDateColumn(const Dataset &dataset, int column, const QStringList &formats, QString *format)
{
    QStringList samples;
    const int rowCount = dataset.rowCount();
    for (int r = 0; r < rowCount && samples.size() < DateSamples; ++r) {
        const QString &cell = dataset.cell(r, column);
        if (!cell.isEmpty())
            samples.append(cell);
    }
    format->clear();
    if (samples.isEmpty())
        return false;
    // The best format so far is kept, earliest on a tie, so that a column that is no date
    // column still tells which format came nearest.
    int bestCount = 0;
    for (const QString &candidate : formats) {
        int count = 0;
        for (const QString &sample : qAsConst(samples)) {
            if (toDate(sample, candidate).isValid())
                ++count;
        }
        if (count > bestCount) {
            bestCount = count;
            *format = candidate;
        }
        if (count == samples.size())
            break;
    }
    return bestCount == samples.size();
}

bool isDateConstant(const QString &text, const QStringList &formats, QString *format)
{
    return toDate(text, formats, format).isValid();
}

bool timeToMSecs(const QString &text, qlonglong *msecs)
{
    const QStringList parts = text.split(QLatin1Char(':'), Qt::KeepEmptyParts);
    if (parts.size() != 2 && parts.size() != 3)
        return false;
    bool ok = false;
    const qlonglong hours = toLongLong(parts.at(0), false, false, &ok);
    if (!ok || hours < 0)
        return false;
    const qlonglong minutes = toLongLong(parts.at(1), false, false, &ok);
    if (!ok || minutes < 0 || minutes > 59)
        return false;
    qlonglong seconds = 0;
    qlonglong milliseconds = 0;
    if (parts.size() == 3) {
        const QStringList pieces = parts.at(2).split(QLatin1Char('.'), Qt::KeepEmptyParts);
        if (pieces.size() != 1 && pieces.size() != 2)
            return false;
        seconds = toLongLong(pieces.at(0), false, false, &ok);
        if (!ok || seconds < 0 || seconds > 59)
            return false;
        if (pieces.size() == 2) {
            // The fraction is read as a number of the locale, whatever its decimal point.
            const QString fraction = QLatin1Char('0') + QLocale().decimalPoint() + pieces.at(1);
            const double value = toDouble(fraction, false, true, &ok);
            if (!ok)
                return false;
            milliseconds = qlonglong(roundHalfUp(value * 1000.0));
            if (milliseconds < 0 || milliseconds > 999)
                return false;
        }
    }
    *msecs = hours * 3600000 + minutes * 60000 + seconds * 1000 + milliseconds;
    return true;
}

QString msecsToTimeText(qlonglong msecs)
{
    const qlonglong hours = msecs / 3600000;
    const qlonglong minutes = msecs / 60000 % 60;
    const qlonglong seconds = msecs / 1000 % 60;
    const qlonglong milliseconds = msecs % 1000;
    QString text = twoDigits(hours) + QLatin1Char(':') + twoDigits(minutes) + QLatin1Char(':')
        + twoDigits(seconds);
    if (milliseconds > 0)
        text += QStringLiteral(".%1").arg(milliseconds, 3, 10, QLatin1Char('0'));
    return text;
}

QString weekOfYearText(const QDate &date)
{
    int year = 0;
    const int week = date.weekNumber(&year);
    return QStringLiteral("%1,%2")
        .arg(year, 4, 10, QLatin1Char('0'))
        .arg(week, 2, 10, QLatin1Char('0'));
}

bool Calculator::calculateConversion(const QString &a, Outcome *outcome) const
{
    bool ok = false;
    switch (m_operation) {
    case Operation::DateTimeToMSecs: {
        const QDateTime dateTime = QDateTime::fromString(a.trimmed(), Qt::ISODateWithMs);
        if (dateTime.isValid())
            outcome->text = integerText(dateTime.toMSecsSinceEpoch());
        else
            outcome->fail(QStringLiteral("Error: ISO datetime expected"), Failure::IsoDateTime, 1);
        return true;
    }
    case Operation::MSecsToDateTime: {
        const qlonglong msecs = toLongLong(a, false, false, &ok);
        const QDateTime dateTime = ok ? QDateTime::fromMSecsSinceEpoch(msecs) : QDateTime();
        if (!ok)
            outcome->fail(IntegerExpected, Failure::MSecsNotInteger, 1);
        else if (!dateTime.isValid())
            outcome->fail(QStringLiteral("Error: msecs since epoch expected"),
                          Failure::MSecsNotEpoch, 1);
        else
            outcome->text = dateTime.toString(Qt::ISODateWithMs);
        return true;
    }
    case Operation::TimeToMSecs: {
        qlonglong msecs = 0;
        if (timeToMSecs(a, &msecs))
            outcome->text = integerText(msecs);
        else
            outcome->fail(QStringLiteral("Error: h:m:s(.z) time expected"), Failure::Time, 1);
        return true;
    }
    case Operation::MSecsToTime: {
        const qlonglong msecs = toLongLong(a, false, false, &ok);
        if (!ok)
            outcome->fail(IntegerExpected, Failure::TimeMSecsNotInteger, 1);
        else if (msecs < 0 || msecs > LargestTimeMSecs)
            outcome->fail(QStringLiteral("Error: integer out of expected range"),
                          Failure::TimeMSecsRange, 1);
        else
            outcome->text = msecsToTimeText(msecs);
        return true;
    }
    case Operation::JulianDayToDate: {
        const qlonglong day = toLongLong(a, false, false, &ok);
        const QDate date = ok ? QDate::fromJulianDay(day) : QDate();
        // The ISO form shows only the years 0 to 9999.
        const QString text = date.toString(Qt::ISODate);
        if (!ok)
            outcome->fail(IntegerExpected, Failure::JulianNotInteger, 1);
        else if (!date.isValid())
            outcome->fail(QStringLiteral("Error: Julian days expected"), Failure::JulianDay, 1);
        else if (text.isEmpty())
            outcome->fail(QStringLiteral("Error: Date out of range"), Failure::JulianRange, 1);
        else
            outcome->text = text;
        return true;
    }
    default:
        return false;
    }
}

void Calculator::calculateDateOne(const QString &a, Outcome *outcome) const
{
    switch (m_operation) {
    case Operation::Abs:
    case Operation::Ceiling:
    case Operation::Floor:
    case Operation::Round:
    case Operation::Sign:
    case Operation::Log10:
    case Operation::Ln:
    case Operation::Log2:
        outcome->fail(InvalidOperation, Failure::OnDate, 1);
        return;
    default:
        break;
    }
    const QDate date = m_dates1.read(a);
    if (!date.isValid()) {
        outcome->fail(DateExpected, Failure::Date, 1);
        return;
    }
    switch (m_operation) {
    case Operation::Increment:
        outcome->text = m_dates1.write(date.addDays(1), m_locale);
        break;
    case Operation::Decrement:
        outcome->text = m_dates1.write(date.addDays(-1), m_locale);
        break;
    case Operation::DayOfWeek:
        outcome->text = integerText(date.dayOfWeek());
        break;
    case Operation::DayOfMonth:
        outcome->text = integerText(date.day());
        break;
    case Operation::DayOfYear:
        outcome->text = integerText(date.dayOfYear());
        break;
    case Operation::Month:
        outcome->text = integerText(date.month());
        break;
    case Operation::Year:
        outcome->text = integerText(date.year());
        break;
    case Operation::WeekOfYear:
        outcome->text = weekOfYearText(date);
        break;
    case Operation::DateToJulianDay:
        outcome->text = integerText(date.toJulianDay());
        break;
    case Operation::Quarter:
        outcome->text = integerText((date.month() - 1) / 3 + 1);
        break;
    case Operation::DaysInMonth:
        outcome->text = integerText(date.daysInMonth());
        break;
    default:
        outcome->text = integerText(date.daysInYear());
        break;
    }
}

void Calculator::calculateDates(const QString &a, const QString &b, Outcome *outcome) const
{
    const QDate first = m_dates1.read(a);
    const QDate second = m_dates2.read(b);
    if (!first.isValid())
        outcome->fail(DateExpected, Failure::Date, 1);
    if (!second.isValid())
        outcome->fail(DateExpected, Failure::Date, 2);
    if (outcome->failed())
        return;
    if (m_operation == Operation::Subtract)
        outcome->text = integerText(second.daysTo(first));
    else if (m_operation == Operation::Maximum)
        outcome->text = m_dates1.write(qMax(first, second), m_locale);
    else if (m_operation == Operation::Minimum)
        outcome->text = m_dates1.write(qMin(first, second), m_locale);
    else
        outcome->fail(InvalidOperation, Failure::OnTwoDates, 0);
}

void Calculator::calculateDatePlusDays(const QString &a, const QString &b, Outcome *outcome) const
{
    const QDate date = m_dates1.read(a);
    if (!date.isValid()) {
        outcome->fail(DateExpected, Failure::Date, 1);
        return;
    }
    if (m_operation != Operation::Add && m_operation != Operation::Subtract) {
        outcome->fail(InvalidOperation, Failure::OnValue1Date, 1);
        return;
    }
    bool ok = false;
    const qlonglong days = toLongLong(b, false, false, &ok);
    if (!ok) {
        outcome->fail(IntegerExpected, Failure::NotInteger, 2);
        return;
    }
    const QDate result = date.addDays(m_operation == Operation::Add ? days : -days);
    outcome->text = m_dates1.write(result, m_locale);
}

} // namespace Calculate
