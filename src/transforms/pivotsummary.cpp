#include "transforms/pivotsummary.h"

#include "data/numericlist.h"
#include "data/valueinterpretation.h"

QStringList PivotSummary::kindNames()
{
    return {QStringLiteral("Sum"),
            QStringLiteral("Minimum"),
            QStringLiteral("Maximum"),
            QStringLiteral("Average"),
            QStringLiteral("Median"),
            QStringLiteral("Mode"),
            QStringLiteral("Standard deviation"),
            QStringLiteral("Count"),
            QStringLiteral("Count distinct")};
}

void PivotSummary::add(int kind, const QString &text, bool isNumber, double number)
{
    ++m_texts;
    if (kind == CountDistinct) {
        m_distinct.insert(text);
        return;
    }
    if (!isNumber)
        return;
    if (m_numbers == 0) {
        m_minimum = number;
        m_maximum = number;
    } else {
        m_minimum = qMin(m_minimum, number);
        m_maximum = qMax(m_maximum, number);
    }
    ++m_numbers;
    // Added in row order, as the numeric list's own sum adds, so the figures agree to the bit.
    m_sum += number;
    if (kind == Median || kind == Mode || kind == StandardDeviation)
        m_values.append(number);
}

QString PivotSummary::text(int kind) const
{
    switch (kind) {
    case Count:
        return QString::number(m_texts);
    case CountDistinct:
        return QString::number(m_distinct.size());
    case Mode:
        return NumericList::modeText(m_values);
    default:
        break;
    }
    if (m_numbers == 0)
        return QStringLiteral("0");
    switch (kind) {
    case Minimum:
        return numberToCellText(m_minimum);
    case Maximum:
        return numberToCellText(m_maximum);
    case Average:
        return numberToCellText(m_sum / double(m_numbers));
    case Median:
        return numberToCellText(NumericList::median(m_values));
    case StandardDeviation:
        // One value has no sample deviation, and shows 0 like a cell of no numbers.
        return numberToCellText(
            NumericList::standardDeviation(m_values, NumericList::Deviation::Sample));
    default:
        return numberToCellText(m_sum);
    }
}
