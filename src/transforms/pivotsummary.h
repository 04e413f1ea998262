#pragma once

#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

// The values gathered for one cell of a pivot table, and the text the cell shows for a kind of
// summary. Only what the kind needs is kept: running figures for sums, counts, extremes and
// averages, every number for the median, the mode and the deviation, the distinct texts for
// the distinct count, so that a table over a million rows holds no list per cell when none
// is needed.
class PivotSummary
{
public:
    // In the order of the choices of the Summarize_As option.
    enum Kind {
        Sum = 0,
        Minimum,
        Maximum,
        Average,
        Median,
        Mode,
        StandardDeviation,
        Count,
        CountDistinct
    };

    static QStringList kindNames();
    // Whether values of the kind are meant to be numbers, so that a text is worth a message.
    static bool isNumeric(int kind) { return kind != Count && kind != CountDistinct; }

    // A non-empty cell text; number is its reading when isNumber.
    void add(int kind, const QString &text, bool isNumber, double number);
    bool isEmpty() const { return m_texts == 0; }
    // The cell's text. The numeric kinds give 0 where no value was a number, but for the mode,
    // which lists no value.
    QString text(int kind) const;

private:
    qint64 m_texts = 0;
    qint64 m_numbers = 0;
    double m_sum = 0.0;
    double m_minimum = 0.0;
    double m_maximum = 0.0;
    QVector<double> m_values;
    QSet<QString> m_distinct;
};
