#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

// The numbers of a list of cells, and the statistics that aggregation, the statistics
// transforms and the Column Values window compute on them. Pure functions: each takes the
// numbers by value where it reorders them, and reports through ok whether the list allowed
// a result (false on an empty list, and where a form needs more values).
namespace NumericList {

// The cells that read as numbers, in order, currency symbols removed; empty cells and other
// texts are left out.
QVector<double> fromTexts(const QStringList &texts);

double sum(const QVector<double> &values, bool *ok = nullptr);
double average(const QVector<double> &values, bool *ok = nullptr);
double minimum(const QVector<double> &values, bool *ok = nullptr);
double maximum(const QVector<double> &values, bool *ok = nullptr);
// The middle value, or the mean of the two middle values of an even count.
double median(QVector<double> values, bool *ok = nullptr);
// Every value that shares the highest frequency, ascending.
QVector<double> modes(QVector<double> values, bool *ok = nullptr);
// The modes as cell texts joined by ",".
QString modeText(const QVector<double> &values, bool *ok = nullptr);

// Sample: divisor n - 1, needs two values. Population: divisor n, needs one.
enum class Deviation { Sample = 0, Population = 1 };
double standardDeviation(const QVector<double> &values, Deviation form, bool *ok = nullptr);
double variance(const QVector<double> &values, Deviation form, bool *ok = nullptr);

// Tukey's exclusive rule: Q1 and Q3 are the medians of the lower and upper halves, the middle
// value of an odd count belonging to neither; one value is both quartiles.
bool quartiles(QVector<double> values, double *q1, double *q3);
// Pearson's second skewness, 3 * (mean - median) / sample standard deviation; no value when
// the deviation is missing or 0.
double skew(const QVector<double> &values, bool *ok = nullptr);
// Q3 - Q1 by the quartiles above.
double interquartileRange(const QVector<double> &values, bool *ok = nullptr);
// Maximum - minimum.
double range(const QVector<double> &values, bool *ok = nullptr);

// The interpolated value below which percent % of the values lie, as spreadsheets compute it:
// Inclusive ranks the sorted values at (n - 1) * p (PERCENTILE.INC), Exclusive at
// (n + 1) * p - 1 (PERCENTILE.EXC), with p = percent / 100. A rank that falls outside the
// values has no result, so the exclusive form has none for the extreme percentages of short
// lists (90% of four values).
enum class Percentile { Inclusive = 0, Exclusive = 1 };
double percentile(QVector<double> values, double percent, Percentile form, bool *ok = nullptr);

} // namespace NumericList
