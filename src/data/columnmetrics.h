#pragma once

#include <QDate>
#include <QHash>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

#include <climits>
#include <functional>

// The profile of one column: how many cells are empty, numbers, booleans, dates or text, how
// long and how varied they are, and optionally the statistics of the numbers and the span of
// the dates. Summary writes it as a table; the Column Values window shows it with examples.
// Pure functions of the texts given, computed in one pass over them.
namespace ColumnMetrics {

// The numbers by which the window looks up the rows behind a metric.
enum Metric {
    Empty = 0,
    NonEmpty,
    Numeric,
    Integer,
    Real,
    Boolean,
    Text,
    Date,
    MinLengthInc,
    MinLengthEx,
    MaxLength,
    MinNumeric,
    MaxNumeric,
    RangeNumeric,
    Negative,
    Zero,
    Positive,
    MinDate,
    MaxDate,
    RangeDate,
    FormatDate,
    DistinctDates,
    MissingDates,
    Unique,
    Duplicated,
    MetricCount
};

struct Options
{
    bool dates = false;
    bool statistics = false;
    // The formats to infer the column's date format from, in order of preference.
    QStringList dateFormats;
    // The texts are a sample of the column: missing dates are then not counted.
    bool sampled = false;
    // Keep, for each metric, the rows behind it (for drilldown); costly on long columns.
    bool keepRows = false;
    // Called before every 1,000th text with its position; the pass ends early when it returns
    // false (a stop asked for), leaving the metrics of the texts before.
    std::function<bool(int position)> progress;
};

// A statistic that may have no value.
struct Statistic
{
    double value = 0.0;
    bool valid = false;
};

struct Metrics
{
    bool sampled = false;
    int rows = 0;
    int empty = 0;
    int nonEmpty = 0;
    int numeric = 0;
    int integer = 0;
    int real = 0;
    int boolean = 0;
    int dateCount = 0;
    int text = 0;
    int distinct = 0;
    int unique = 0;
    int duplicated = 0;
    int minLengthInc = INT_MAX;
    int minLengthEx = INT_MAX;
    int maxLength = 0;
    double averageLengthInc = 0.0;
    double averageLengthEx = 0.0;
    double minNumeric = 0.0;
    double maxNumeric = 0.0;
    double range = 0.0;
    int negative = 0;
    int zero = 0;
    int positive = 0;
    QString dateFormat;
    QDate minDate;
    QDate maxDate;
    qint64 dateRange = 0;
    int distinctDates = 0;
    qint64 missingDates = 0;
    QStringList missingExamples;
    Statistic sum, average, median, stddev, variance, q1, q3, iqr, skew;
    QVector<double> modes;
    QString mostFrequent;
    QHash<int, QVector<int>> rowsByMetric;
};

// The date format of the column: of the formats, the one that reads most of the first 50
// non-empty texts that are neither numbers nor booleans (those are never taken for dates),
// the earlier format winning a tie; empty when none reads any.
QString inferDateFormat(const QStringList &texts, const QStringList &formats);

// rowNumbers, when given, holds the row of each text (for a sample); otherwise text i is row i.
Metrics compute(const QStringList &texts, const Options &options,
                const QVector<int> *rowNumbers = nullptr);

// The metrics as (name, value text) pairs in the order Summary lists them, "N/A" where a
// metric does not apply. groupCounts puts the locale's group separators into counts, as the
// window shows them; cells go without.
QList<QPair<QString, QString>> texts(const Metrics &metrics, const Options &options,
                                     bool groupCounts);

// compute() then texts(), for a whole column written into cells.
QList<QPair<QString, QString>> columnMetrics(const QStringList &texts, bool dates, bool statistics,
                                             const QStringList &dateFormats,
                                             const std::function<bool(int)> &progress = {});

// The names alone, in the same order.
QStringList metricNames(bool dates, bool statistics);

// A number as the metric table writes means and sums: at most three decimals, trailing zeros
// removed.
QString threeDecimals(double value);

} // namespace ColumnMetrics
