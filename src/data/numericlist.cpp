#include "data/numericlist.h"

#include "data/valueinterpretation.h"

#include <algorithm>
#include <cmath>

namespace NumericList {

namespace {

bool report(bool *ok, bool value)
{
    if (ok)
        *ok = value;
    return value;
}

// The median of the sorted range [first, last), which must not be empty.
double sortedMedian(const double *first, const double *last)
{
    const auto count = last - first;
    const auto middle = count / 2;
    return count % 2 == 1 ? first[middle] : (first[middle - 1] + first[middle]) / 2.0;
}

} // namespace

QVector<double> fromTexts(const QStringList &texts)
{
    return doublesFromTexts(texts, false, true);
}

double sum(const QVector<double> &values, bool *ok)
{
    report(ok, !values.isEmpty());
    double total = 0.0;
    for (const double value : values)
        total += value;
    return total;
}

double average(const QVector<double> &values, bool *ok)
{
    if (!report(ok, !values.isEmpty()))
        return 0.0;
    return sum(values) / double(values.size());
}

double minimum(const QVector<double> &values, bool *ok)
{
    if (!report(ok, !values.isEmpty()))
        return 0.0;
    return *std::min_element(values.cbegin(), values.cend());
}

double maximum(const QVector<double> &values, bool *ok)
{
    if (!report(ok, !values.isEmpty()))
        return 0.0;
    return *std::max_element(values.cbegin(), values.cend());
}

double median(QVector<double> values, bool *ok)
{
    if (!report(ok, !values.isEmpty()))
        return 0.0;
    // Selection, not a sort: the upper middle value, then the largest below it.
    const int middle = values.size() / 2;
    std::nth_element(values.begin(), values.begin() + middle, values.end());
    const double upper = values.at(middle);
    if (values.size() % 2 == 1)
        return upper;
    const double lower = *std::max_element(values.cbegin(), values.cbegin() + middle);
    return (lower + upper) / 2.0;
}

QVector<double> modes(QVector<double> values, bool *ok)
{
    QVector<double> result;
    if (!report(ok, !values.isEmpty()))
        return result;
    std::sort(values.begin(), values.end());
    int best = 0;
    for (int start = 0; start < values.size();) {
        int end = start + 1;
        while (end < values.size() && values.at(end) == values.at(start))
            ++end;
        if (end - start > best) {
            best = end - start;
            result.clear();
        }
        if (end - start == best)
            result.append(values.at(start));
        start = end;
    }
    return result;
}

QString modeText(const QVector<double> &values, bool *ok)
{
    QStringList texts;
    const QVector<double> found = modes(values, ok);
    for (const double value : found)
        texts.append(numberToCellText(value));
    return texts.join(QLatin1Char(','));
}

double variance(const QVector<double> &values, Deviation form, bool *ok)
{
    const int divisor = form == Deviation::Sample ? values.size() - 1 : values.size();
    if (!report(ok, divisor >= 1))
        return 0.0;
    const double mean = average(values);
    double squares = 0.0;
    for (const double value : values)
        squares += (value - mean) * (value - mean);
    return squares / double(divisor);
}

double standardDeviation(const QVector<double> &values, Deviation form, bool *ok)
{
    return std::sqrt(variance(values, form, ok));
}

bool quartiles(QVector<double> values, double *q1, double *q3)
{
    if (values.isEmpty())
        return false;
    if (values.size() == 1) {
        *q1 = *q3 = values.first();
        return true;
    }
    std::sort(values.begin(), values.end());
    const double *data = values.constData();
    const int half = values.size() / 2;
    *q1 = sortedMedian(data, data + half);
    *q3 = sortedMedian(data + values.size() - half, data + values.size());
    return true;
}

double skew(const QVector<double> &values, bool *ok)
{
    bool haveDeviation = false;
    const double deviation = standardDeviation(values, Deviation::Sample, &haveDeviation);
    if (!report(ok, haveDeviation && deviation != 0.0))
        return 0.0;
    return 3.0 * (average(values) - median(values)) / deviation;
}

double interquartileRange(const QVector<double> &values, bool *ok)
{
    double q1 = 0.0;
    double q3 = 0.0;
    if (!report(ok, quartiles(values, &q1, &q3)))
        return 0.0;
    return q3 - q1;
}

double range(const QVector<double> &values, bool *ok)
{
    if (!report(ok, !values.isEmpty()))
        return 0.0;
    const auto bounds = std::minmax_element(values.cbegin(), values.cend());
    return *bounds.second - *bounds.first;
}

double percentile(QVector<double> values, double percent, Percentile form, bool *ok)
{
    const int count = values.size();
    // Dividing by 100 last keeps a whole rank exact, so that a rank that lands on the last
    // value is not pushed past it by rounding.
    const double rank = form == Percentile::Inclusive ? double(count - 1) * percent / 100.0
                                                      : double(count + 1) * percent / 100.0 - 1.0;
    const double lo = std::floor(rank);
    const double hi = std::ceil(rank);
    if (!report(ok, count > 0 && std::isfinite(rank) && lo >= 0.0 && hi < double(count)))
        return 0.0;
    // Selection, not a sort: the value at lo, then the smallest above it.
    const int low = int(lo);
    std::nth_element(values.begin(), values.begin() + low, values.end());
    const double lower = values.at(low);
    if (lo == hi)
        return lower;
    const double upper = *std::min_element(values.cbegin() + low + 1, values.cend());
    return lower + (rank - lo) * (upper - lower);
}

} // namespace NumericList
