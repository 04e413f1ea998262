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

} // namespace NumericList
