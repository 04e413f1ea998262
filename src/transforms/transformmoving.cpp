#include "transforms/transformmoving.h"

#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"

#include <QLocale>
#include <QVector>

#include <cmath>
#include <deque>
#include <set>

namespace {

constexpr int LargestOffset = 1000000;

// The numbers of a window that slides down the table: rows enter at the bottom and leave at
// the top, each once, so that every statistic costs a constant or logarithmic time per row
// however long the window is. Cells that aren't numbers never enter.
class Window
{
public:
    explicit Window(int calculation)
        : m_calculation(calculation)
    { }

    bool isEmpty() const { return m_count == 0; }

    void add(int row, double value)
    {
        ++m_count;
        switch (m_calculation) {
        case TransformMoving::Average:
        case TransformMoving::Sum:
            addToSum(value);
            break;
        case TransformMoving::Median:
            addToMedian(value);
            break;
        default:
            pushExtreme(m_lowest, row, value, [](double a, double b) { return a >= b; });
            pushExtreme(m_highest, row, value, [](double a, double b) { return a <= b; });
        }
    }

    // Row row, whose value is value, leaves; rows leave in the order they entered.
    void remove(int row, double value)
    {
        if (--m_count == 0) {
            // Starting afresh drops whatever rounding the subtractions left behind.
            m_sum = m_compensation = 0.0;
            m_low.clear();
            m_high.clear();
            m_lowest.clear();
            m_highest.clear();
            return;
        }
        switch (m_calculation) {
        case TransformMoving::Average:
        case TransformMoving::Sum:
            addToSum(-value);
            break;
        case TransformMoving::Median:
            removeFromMedian(value);
            break;
        default:
            if (!m_lowest.empty() && m_lowest.front().first == row)
                m_lowest.pop_front();
            if (!m_highest.empty() && m_highest.front().first == row)
                m_highest.pop_front();
        }
    }

    double value() const
    {
        switch (m_calculation) {
        case TransformMoving::Average:
            return (m_sum + m_compensation) / double(m_count);
        case TransformMoving::Sum:
            return m_sum + m_compensation;
        case TransformMoving::Median:
            return m_low.size() > m_high.size() ? *m_low.rbegin()
                                                : (*m_low.rbegin() + *m_high.begin()) / 2.0;
        case TransformMoving::Minimum:
            return m_lowest.front().second;
        case TransformMoving::Maximum:
            return m_highest.front().second;
        default:
            return m_highest.front().second - m_lowest.front().second;
        }
    }

private:
    // Neumaier's compensated sum: a large value that leaves the window must not leave its
    // rounding error in the sums of the small ones after it.
    void addToSum(double value)
    {
        const double total = m_sum + value;
        if (std::fabs(m_sum) >= std::fabs(value))
            m_compensation += (m_sum - total) + value;
        else
            m_compensation += (value - total) + m_sum;
        m_sum = total;
    }

    // The lower half (with the median) and the upper half of the window's values.
    void addToMedian(double value)
    {
        if (m_low.empty() || value <= *m_low.rbegin())
            m_low.insert(value);
        else
            m_high.insert(value);
        balance();
    }

    void removeFromMedian(double value)
    {
        if (!m_low.empty() && value <= *m_low.rbegin())
            m_low.erase(m_low.find(value));
        else
            m_high.erase(m_high.find(value));
        balance();
    }

    void balance()
    {
        if (m_low.size() > m_high.size() + 1) {
            m_high.insert(*m_low.rbegin());
            m_low.erase(std::prev(m_low.end()));
        } else if (m_high.size() > m_low.size()) {
            m_low.insert(*m_high.begin());
            m_high.erase(m_high.begin());
        }
    }

    // Values that a later, more extreme value makes irrelevant are dropped from the back, so
    // the front always holds the extreme of the window.
    template<typename Dominates>
    static void pushExtreme(std::deque<std::pair<int, double>> &deque, int row, double value,
                            Dominates dominates)
    {
        while (!deque.empty() && dominates(deque.back().second, value))
            deque.pop_back();
        deque.emplace_back(row, value);
    }

    int m_calculation;
    int m_count = 0;
    double m_sum = 0.0;
    double m_compensation = 0.0;
    std::multiset<double> m_low;
    std::multiset<double> m_high;
    std::deque<std::pair<int, double>> m_lowest;
    std::deque<std::pair<int, double>> m_highest;
};

} // namespace

const TransformDescriptor &TransformMoving::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 30;
        d.typeName = QStringLiteral("Moving");
        d.displayName = QStringLiteral("Moving");
        d.category = CategoryColumn;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Add a new column with a moving "
                                       "average/median/sum/min/max/range of the selected column.");
        d.keywords = QStringList {
            QStringLiteral("rolling"),  QStringLiteral("sliding"),  QStringLiteral("window"),
            QStringLiteral("averages"), QStringLiteral("mean"),     QStringLiteral("median"),
            QStringLiteral("sums"),     QStringLiteral("minimum"),  QStringLiteral("maximum"),
            QStringLiteral("range"),    QStringLiteral("smoothing")};
        d.create = createTransform<TransformMoving>;
        return d;
    }();
    return descriptor;
}

QStringList TransformMoving::calculationNames()
{
    return {QStringLiteral("Average"), QStringLiteral("Median"),  QStringLiteral("Sum"),
            QStringLiteral("Minimum"), QStringLiteral("Maximum"), QStringLiteral("Range")};
}

void TransformMoving::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addNewNameParameters(useRemembered);

    auto *column = new Parameter(ParameterType::SingleColumn, QStringLiteral("Column"),
                                 QStringLiteral("Column"), inputs.value(0));
    column->setToolTip(
        QStringLiteral("Calculate a moving average/median/sum/min/max for this column."));
    column->selectOnlyColumn();
    addParameter(column);

    const QStringList calculations = calculationNames();
    auto *calculation
        = new Parameter(ParameterType::Selection, QStringLiteral("Calculation"),
                        QStringLiteral("Calculation"), calculations.first(), calculations);
    calculation->setToolTip(QStringLiteral("The statistic to calculate over each interval."));
    applyRememberedValue(useRemembered, calculation);
    addParameter(calculation);

    auto *interval = new Parameter(ParameterType::Int, QStringLiteral("Interval"),
                                   QStringLiteral("Interval"), 3);
    interval->setMinimumInt(1);
    interval->setMaximumInt(LargestOffset);
    interval->setSuffix(QStringLiteral(" rows"));
    interval->setToolTip(QStringLiteral("The number of rows to calculate the moving "
                                        "average/median/sum/min/max/range over.\nClick the ? "
                                        "button for more details."));
    applyRememberedValue(useRemembered, interval);
    addParameter(interval);

    auto *offset
        = new Parameter(ParameterType::Int, QStringLiteral("Offset"), QStringLiteral("Offset"), 0);
    offset->setMinimumInt(-LargestOffset);
    offset->setMaximumInt(LargestOffset);
    offset->setSuffix(QStringLiteral(" rows"));
    offset->setToolTip(QStringLiteral("The number of rows above (if negative) or below (if "
                                      "positive) the current row to end the interval at."));
    applyRememberedValue(useRemembered, offset);
    addParameter(offset);

    const QStringList ways {QStringLiteral("Set empty"),
                            QStringLiteral("Calculate from available")};
    auto *incomplete = new Parameter(ParameterType::Selection, QStringLiteral("Incomplete"),
                                     QStringLiteral("Incomplete values"), ways.first(), ways);
    incomplete->setToolTip(
        QStringLiteral("Choose what to do for rows that do not have a full interval of data."));
    applyRememberedValue(useRemembered, incomplete);
    addParameter(incomplete);
}

QList<ParameterState> TransformMoving::parameterStates() const
{
    return {newNameState()};
}

// The interval of row r is the Interval rows that end at row r + Offset. One that runs past
// either end of the table is incomplete: it stays empty, or is calculated from the rows that
// it has inside the table. Cells that aren't numbers are left out of every interval, so an
// interval of no numbers gives an empty cell.
Dataset &TransformMoving::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &context, bool &)
{
    const int calculation
        = qBound(0, option(QStringLiteral("Calculation")).toSelectionIndex(), int(Range));
    const int length = qMax(1, option(QStringLiteral("Interval")).toInt());
    const int offset = option(QStringLiteral("Offset")).toInt();
    const bool fromAvailable
        = option(QStringLiteral("Incomplete")).toSelectionIndex() == FromAvailable;

    output = inputDataset(inputs, 0);
    const int column = option(QStringLiteral("Column")).toColumnIndex();
    const bool hasColumn = column >= 0 && column < output.columnCount();
    const QString statistic = calculationNames().at(calculation);
    const QString name = newColumnName(
        hasColumn ? QStringLiteral("Moving %1 %2").arg(statistic, output.headerText(column))
                  : QStringLiteral("Moving %1").arg(statistic));
    const int c = ColumnNames::appendNamedColumn(output, name);
    if (!hasColumn) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    // Read each cell once: the window needs a row's number again when the row leaves.
    const int rowCount = output.rowCount();
    const bool decimalIsPoint = QLocale().decimalPoint() == QLatin1Char('.');
    QVector<double> numbers(rowCount);
    QVector<bool> isNumber(rowCount);
    qint64 notNumbers = 0;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, 2 * rowCount);
        bool ok = false;
        numbers[r] = toDoubleFast(output.cell(r, column), decimalIsPoint, &ok);
        isNumber[r] = ok;
        if (!ok && ++notNumbers <= ListedProblems)
            addWarning(QStringLiteral("'%1' is not a numerical value in row %2.")
                           .arg(output.cell(r, column), QString::number(r + 1)));
    }
    if (notNumbers > ListedProblems)
        addWarning(furtherProblemsText(notNumbers - ListedProblems));

    Window window(calculation);
    // Rows [first, last] of the table are in the window; both bounds only ever grow.
    qint64 first = 0;
    qint64 last = -1;
    qint64 calculated = 0;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, 2 * rowCount, 0.5);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        const qint64 end = qint64(r) + offset;
        const qint64 start = end - length + 1;
        const qint64 wantedLast = qMin<qint64>(end, rowCount - 1);
        while (last < wantedLast) {
            ++last;
            if (last >= first && isNumber.at(int(last)))
                window.add(int(last), numbers.at(int(last)));
        }
        for (; first < start; ++first) {
            if (first <= last && isNumber.at(int(first)))
                window.remove(int(first), numbers.at(int(first)));
        }
        const bool complete = start >= 0 && end < rowCount;
        if ((complete || fromAvailable) && !window.isEmpty()) {
            output.setCell(r, c, numberToCellText(window.value()));
            ++calculated;
        }
    }
    setResult(QStringLiteral("%1 %2 values calculated")
                  .arg(formatCount(calculated), statistic.toLower()));
    return output;
}
