#include "data/columnmetrics.h"

#include "data/numericlist.h"
#include "data/valueinterpretation.h"

#include <QLocale>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace ColumnMetrics {

namespace {

// How many texts the date format is inferred from; more rarely changes the answer.
constexpr int DateSampleSize = 50;
constexpr int MostFrequentShown = 3;
constexpr int MostFrequentLength = 16;
constexpr int ModesShown = 5;
constexpr int MissingExamples = 3;

const QString &notApplicable()
{
    static const QString text = QStringLiteral("N/A");
    return text;
}

// The rows behind each metric, kept only when asked for.
class RowNotes
{
public:
    RowNotes(QHash<int, QVector<int>> *rows, bool on)
        : m_rows(on ? rows : nullptr)
    { }
    void add(int metric, int row)
    {
        if (m_rows)
            (*m_rows)[metric].append(row);
    }
    // For a minimum or maximum: a new best replaces the rows, a tie joins them.
    void best(int metric, int row, bool better, bool tie)
    {
        if (!m_rows || !(better || tie))
            return;
        QVector<int> &rows = (*m_rows)[metric];
        if (better)
            rows.clear();
        rows.append(row);
    }

private:
    QHash<int, QVector<int>> *m_rows;
};

void countNumber(Metrics &m, double value, int row, RowNotes &notes)
{
    const bool first = m.numeric == 0;
    ++m.numeric;
    notes.add(Numeric, row);
    if (std::floor(value) == std::ceil(value)) {
        ++m.integer;
        notes.add(Integer, row);
    } else {
        ++m.real;
        notes.add(Real, row);
    }
    if (value < 0.0) {
        ++m.negative;
        notes.add(Negative, row);
    } else if (value == 0.0) {
        ++m.zero;
        notes.add(Zero, row);
    } else {
        ++m.positive;
        notes.add(Positive, row);
    }
    notes.best(MinNumeric, row, first || value < m.minNumeric, !first && value == m.minNumeric);
    notes.best(MaxNumeric, row, first || value > m.maxNumeric, !first && value == m.maxNumeric);
    if (first || value < m.minNumeric)
        m.minNumeric = value;
    if (first || value > m.maxNumeric)
        m.maxNumeric = value;
}

void countDate(Metrics &m, const QDate &date, int row, RowNotes &notes, QSet<qint64> &days)
{
    const bool first = m.dateCount == 0;
    ++m.dateCount;
    notes.add(Date, row);
    notes.best(MinDate, row, first || date < m.minDate, !first && date == m.minDate);
    notes.best(MaxDate, row, first || date > m.maxDate, !first && date == m.maxDate);
    if (first || date < m.minDate)
        m.minDate = date;
    if (first || date > m.maxDate)
        m.maxDate = date;
    days.insert(date.toJulianDay());
}

void finishDates(Metrics &m, const QSet<qint64> &days)
{
    if (m.dateCount == 0)
        return;
    m.distinctDates = days.size();
    m.dateRange = m.maxDate.toJulianDay() - m.minDate.toJulianDay() + 1;
    if (m.sampled)
        return;
    m.missingDates = m.dateRange - m.distinctDates;
    for (qint64 day = m.minDate.toJulianDay(); m.missingExamples.size() < MissingExamples
         && qint64(m.missingExamples.size()) < m.missingDates;
         ++day) {
        if (!days.contains(day))
            m.missingExamples.append(QLocale().toString(QDate::fromJulianDay(day), m.dateFormat));
    }
}

void finishStatistics(Metrics &m, const QVector<double> &numbers)
{
    using namespace NumericList;
    m.sum.value = NumericList::sum(numbers, &m.sum.valid);
    m.average.value = NumericList::average(numbers, &m.average.valid);
    m.median.value = NumericList::median(numbers, &m.median.valid);
    m.modes = NumericList::modes(numbers);
    m.stddev.value = standardDeviation(numbers, Deviation::Sample, &m.stddev.valid);
    m.variance.value = NumericList::variance(numbers, Deviation::Sample, &m.variance.valid);
    m.q1.valid = m.q3.valid = quartiles(numbers, &m.q1.value, &m.q3.value);
    m.iqr.valid = m.q1.valid;
    m.iqr.value = m.q3.value - m.q1.value;
    m.skew.value = NumericList::skew(numbers, &m.skew.valid);
}

// The texts sharing the highest count, when some text occurs more than once.
QString mostFrequentText(const QHash<QString, int> &counts)
{
    int highest = 0;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        highest = std::max(highest, it.value());
    if (highest < 2)
        return notApplicable();
    QStringList top;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        if (it.value() == highest && !it.key().isEmpty())
            top.append(it.key());
    }
    if (top.isEmpty())
        return notApplicable();
    std::sort(top.begin(), top.end());
    QStringList shown;
    for (int i = 0; i < std::min(int(top.size()), MostFrequentShown); ++i)
        shown.append(elide(top.at(i), MostFrequentLength, true));
    QString text = shown.join(QLatin1Char(','));
    if (top.size() > MostFrequentShown)
        text += QStringLiteral(" + %1 more").arg(top.size() - MostFrequentShown);
    return text + QStringLiteral(" X %1").arg(highest);
}

void finishDistinct(Metrics &m, const QHash<QString, int> &counts, const QStringList &texts,
                    const QVector<int> *rowNumbers, RowNotes &notes, bool keepRows)
{
    m.distinct = counts.size();
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        ++(it.value() == 1 ? m.unique : m.duplicated);
    m.mostFrequent = mostFrequentText(counts);
    if (!keepRows)
        return;
    for (int i = 0; i < texts.size(); ++i) {
        const int row = rowNumbers ? rowNumbers->at(i) : i;
        notes.add(counts.value(texts.at(i)) == 1 ? Unique : Duplicated, row);
    }
}

QString statisticText(const Statistic &statistic)
{
    return statistic.valid ? threeDecimals(statistic.value) : notApplicable();
}

QString modesText(const QVector<double> &modes)
{
    if (modes.isEmpty())
        return notApplicable();
    QStringList shown;
    for (int i = 0; i < std::min(int(modes.size()), ModesShown); ++i)
        shown.append(numberToCellText(modes.at(i)));
    QString text = shown.join(QLatin1Char(','));
    if (modes.size() > ModesShown)
        text += QStringLiteral(" + %1 more").arg(modes.size() - ModesShown);
    return text;
}

} // namespace

QString threeDecimals(double value)
{
    if (!std::isfinite(value))
        return QStringLiteral("NaN");
    QString text = QString::number(value, 'f', 3);
    while (text.endsWith(QLatin1Char('0')))
        text.chop(1);
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

QString inferDateFormat(const QStringList &texts, const QStringList &formats)
{
    QStringList sample;
    for (int i = 0; i < texts.size() && sample.size() < DateSampleSize; ++i) {
        const QString trimmed = texts.at(i).trimmed();
        bool ok = trimmed.isEmpty();
        if (!ok)
            toDouble(trimmed, false, true, &ok);
        if (!ok)
            toBool(trimmed, false, false, &ok);
        if (!ok)
            sample.append(trimmed);
    }
    QString best;
    int bestCount = 0;
    for (const QString &format : formats) {
        int count = 0;
        for (const QString &text : qAsConst(sample)) {
            if (QDate::fromString(text, format).isValid())
                ++count;
        }
        if (count > bestCount) {
            bestCount = count;
            best = format;
        }
        if (count == sample.size())
            break;
    }
    return best;
}

Metrics compute(const QStringList &texts, const Options &options, const QVector<int> *rowNumbers)
{
    Metrics m;
    m.sampled = options.sampled;
    m.rows = texts.size();
    RowNotes notes(&m.rowsByMetric, options.keepRows);
    if (options.dates)
        m.dateFormat = inferDateFormat(texts, options.dateFormats);
    const bool checkDates = !m.dateFormat.isEmpty();
    const bool decimalIsPoint = QLocale().decimalPoint() == QLatin1Char('.');

    QHash<QString, int> counts;
    QSet<qint64> days;
    QVector<double> numbers;
    qint64 totalLength = 0;
    for (int i = 0; i < texts.size(); ++i) {
        if (i % 1000 == 0 && options.progress && !options.progress(i))
            break;
        const QString &text = texts.at(i);
        const int row = rowNumbers ? rowNumbers->at(i) : i;
        const int length = text.size();
        notes.best(MinLengthInc, row, length < m.minLengthInc, length == m.minLengthInc);
        m.minLengthInc = std::min(m.minLengthInc, length);
        ++counts[text];
        if (text.isEmpty()) {
            ++m.empty;
            notes.add(Empty, row);
            continue;
        }
        ++m.nonEmpty;
        notes.add(NonEmpty, row);
        notes.best(MinLengthEx, row, length < m.minLengthEx, length == m.minLengthEx);
        notes.best(MaxLength, row, length > m.maxLength, length == m.maxLength);
        m.minLengthEx = std::min(m.minLengthEx, length);
        m.maxLength = std::max(m.maxLength, length);
        totalLength += length;

        bool ok = false;
        const double number = toDoubleFast(text, decimalIsPoint, &ok);
        if (ok) {
            countNumber(m, number, row, notes);
            if (options.statistics)
                numbers.append(number);
            continue;
        }
        toBool(text, false, false, &ok);
        if (ok) {
            ++m.boolean;
            notes.add(Boolean, row);
            continue;
        }
        if (checkDates) {
            const QDate date = toDate(text, m.dateFormat);
            if (date.isValid()) {
                countDate(m, date, row, notes, days);
                continue;
            }
        }
        ++m.text;
        notes.add(Text, row);
    }

    if (m.rows > 0)
        m.averageLengthInc = double(totalLength) / double(m.rows);
    if (m.nonEmpty > 0)
        m.averageLengthEx = double(totalLength) / double(m.nonEmpty);
    m.range = m.maxNumeric - m.minNumeric;
    finishDates(m, days);
    if (options.statistics)
        finishStatistics(m, numbers);
    finishDistinct(m, counts, texts, rowNumbers, notes, options.keepRows);
    return m;
}

QStringList metricNames(bool dates, bool statistics)
{
    QStringList names {QStringLiteral("Empty values"),   QStringLiteral("Non-empty values"),
                       QStringLiteral("Numeric values"), QStringLiteral("Integer values"),
                       QStringLiteral("Real values"),    QStringLiteral("Boolean values")};
    if (dates)
        names << QStringLiteral("Date values");
    names << QStringLiteral("Text values") << QStringLiteral("Distinct values")
          << QStringLiteral("Unique values") << QStringLiteral("Duplicated values")
          << QStringLiteral("Min length inc empty") << QStringLiteral("Min length ex empty")
          << QStringLiteral("Max length") << QStringLiteral("Average length inc empty")
          << QStringLiteral("Average length ex empty") << QStringLiteral("Min numeric")
          << QStringLiteral("Max numeric") << QStringLiteral("Range numeric")
          << QStringLiteral("Negative numeric") << QStringLiteral("Zero numeric")
          << QStringLiteral("Positive numeric");
    if (statistics)
        names << QStringLiteral("Sum numeric") << QStringLiteral("Average numeric")
              << QStringLiteral("Median numeric") << QStringLiteral("Mode numeric")
              << QStringLiteral("Stddev numeric") << QStringLiteral("Variance numeric")
              << QStringLiteral("Q1 numeric") << QStringLiteral("Q3 numeric")
              << QStringLiteral("IQR numeric") << QStringLiteral("Skew numeric");
    if (dates)
        names << QStringLiteral("Format date") << QStringLiteral("Min date")
              << QStringLiteral("Max date") << QStringLiteral("Range date")
              << QStringLiteral("Distinct dates") << QStringLiteral("Missing dates");
    names << QStringLiteral("Most frequent");
    return names;
}

QList<QPair<QString, QString>> texts(const Metrics &m, const Options &options, bool groupCounts)
{
    const auto count = [groupCounts](qint64 n) {
        return formatCount(n, groupCounts);
    };
    const auto ifAny = [](bool any, const QString &text) {
        return any ? text : notApplicable();
    };
    const bool numbers = m.numeric > 0;
    const bool dates = m.dateCount > 0;
    const QLocale locale;

    QStringList values {count(m.empty),   count(m.nonEmpty), count(m.numeric),
                        count(m.integer), count(m.real),     count(m.boolean)};
    if (options.dates)
        values << count(m.dateCount);
    values << count(m.text) << count(m.distinct) << count(m.unique) << count(m.duplicated)
           << ifAny(m.rows > 0, count(m.minLengthInc))
           << ifAny(m.nonEmpty > 0, count(m.minLengthEx)) << ifAny(m.rows > 0, count(m.maxLength))
           << ifAny(m.rows > 0, threeDecimals(m.averageLengthInc))
           << ifAny(m.nonEmpty > 0, threeDecimals(m.averageLengthEx))
           << ifAny(numbers, numberToCellText(m.minNumeric))
           << ifAny(numbers, numberToCellText(m.maxNumeric))
           << ifAny(numbers, numberToCellText(m.range)) << count(m.negative) << count(m.zero)
           << count(m.positive);
    if (options.statistics)
        values << statisticText(m.sum) << statisticText(m.average) << statisticText(m.median)
               << modesText(m.modes) << statisticText(m.stddev) << statisticText(m.variance)
               << statisticText(m.q1) << statisticText(m.q3) << statisticText(m.iqr)
               << statisticText(m.skew);
    if (options.dates) {
        const QString days = QStringLiteral("%1 %2").arg(
            count(m.dateRange), m.dateRange == 1 ? QStringLiteral("day") : QStringLiteral("days"));
        values << ifAny(dates, m.dateFormat)
               << ifAny(dates, locale.toString(m.minDate, m.dateFormat))
               << ifAny(dates, locale.toString(m.maxDate, m.dateFormat)) << ifAny(dates, days)
               << ifAny(dates, count(m.distinctDates))
               << ifAny(dates && !m.sampled, count(m.missingDates));
    }
    values << m.mostFrequent;

    const QStringList names = metricNames(options.dates, options.statistics);
    QList<QPair<QString, QString>> pairs;
    pairs.reserve(names.size());
    for (int i = 0; i < names.size(); ++i)
        pairs.append({names.at(i), values.at(i)});
    return pairs;
}

QList<QPair<QString, QString>> columnMetrics(const QStringList &columnTexts, bool dates,
                                             bool statistics, const QStringList &dateFormats,
                                             const std::function<bool(int)> &progress)
{
    Options options;
    options.progress = progress;
    options.dates = dates;
    options.statistics = statistics;
    options.dateFormats = dateFormats;
    return texts(compute(columnTexts, options), options, false);
}

} // namespace ColumnMetrics
