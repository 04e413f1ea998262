#include "transforms/transformstats.h"

#include "data/numericlist.h"
#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"

#include <QLocale>

namespace {

enum Calculation {
    Sum = 0,
    Minimum,
    Maximum,
    Average,
    Median,
    Mode,
    StandardDeviation,
    Variance,
    Q1,
    Q3,
    Iqr,
    Skew,
    PercentileInclusive,
    PercentileExclusive
};

enum On { OnColumns = 0, OnRows, OnBoth };

const QStringList &calculationNames()
{
    static const QStringList names {QStringLiteral("Sum"),
                                    QStringLiteral("Minimum"),
                                    QStringLiteral("Maximum"),
                                    QStringLiteral("Average"),
                                    QStringLiteral("Median"),
                                    QStringLiteral("Mode"),
                                    QStringLiteral("Standard deviation"),
                                    QStringLiteral("Variance"),
                                    QStringLiteral("Q1"),
                                    QStringLiteral("Q3"),
                                    QStringLiteral("IQR"),
                                    QStringLiteral("Skew"),
                                    QStringLiteral("Percentile (inclusive)"),
                                    QStringLiteral("Percentile (exclusive)")};
    return names;
}

double numericStatistic(int calculation, const QVector<double> &values, int percent, bool *ok)
{
    using namespace NumericList;
    switch (calculation) {
    case Sum:
        return sum(values, ok);
    case Minimum:
        return minimum(values, ok);
    case Maximum:
        return maximum(values, ok);
    case Average:
        return average(values, ok);
    case Median:
        return median(values, ok);
    case StandardDeviation:
        return standardDeviation(values, Deviation::Sample, ok);
    case Variance:
        return variance(values, Deviation::Sample, ok);
    case Q1:
    case Q3: {
        double q1 = 0.0;
        double q3 = 0.0;
        *ok = quartiles(values, &q1, &q3);
        return calculation == Q1 ? q1 : q3;
    }
    case Iqr:
        return interquartileRange(values, ok);
    case Skew:
        return skew(values, ok);
    case PercentileInclusive:
        return percentile(values, percent, Percentile::Inclusive, ok);
    case PercentileExclusive:
        return percentile(values, percent, Percentile::Exclusive, ok);
    default:
        *ok = false;
        return 0.0;
    }
}

// The statistic as a cell; "N/A" and ok false when the values allow none.
QString statisticText(int calculation, const QVector<double> &values, int percent, bool *ok)
{
    if (calculation == Mode) {
        const QString text = NumericList::modeText(values, ok);
        return *ok ? text : QStringLiteral("N/A");
    }
    const double value = numericStatistic(calculation, values, percent, ok);
    return *ok ? numberToCellText(value) : QStringLiteral("N/A");
}

} // namespace

const TransformDescriptor &TransformStats::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 62;
        d.typeName = QStringLiteral("Stats");
        d.displayName = QStringLiteral("Stats");
        d.category = CategoryAnalysis;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Calculate statistics from the selected column(s).");
        d.keywords = QStringLiteral("sums minimum maximum averages mean median mode standard "
                                    "deviation variance quartiles iqr skew percentiles "
                                    "statistics totals")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformStats>;
        return d;
    }();
    return descriptor;
}

void TransformStats::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *columns = new Parameter(ParameterType::MultipleColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Columns"), input);
    columns->setToolTip(QStringLiteral("Select the column(s) to calculate statistics for."));
    selectNumericColumns(columns, input);
    addParameter(columns);

    auto *calculation = new Parameter(ParameterType::Selection, QStringLiteral("Calculation"),
                                      QStringLiteral("Calculation"), calculationNames().first(),
                                      calculationNames());
    calculation->setToolTip(QStringLiteral("Choose the statistic to be calculated."));
    applyRememberedValue(useRemembered, calculation);
    addParameter(calculation);

    auto *percentile = new Parameter(ParameterType::Int, QStringLiteral("Percentile"),
                                     QStringLiteral("Percentile"), 90);
    percentile->setMaximumInt(100);
    percentile->setSuffix(QStringLiteral("%"));
    percentile->setToolTip(
        QStringLiteral("Interpolated percentile value. E.g. if the 'Percentile' value is 90% "
                       "then:\n%1: show the interpolated value that 90% of values are less than "
                       "or equal to.\n%2: show the interpolated value that 90% of values are "
                       "less than.")
            .arg(calculationNames().at(PercentileInclusive),
                 calculationNames().at(PercentileExclusive)));
    applyRememberedValue(useRemembered, percentile);
    addParameter(percentile);

    const QStringList scopes {QStringLiteral("Columns"), QStringLiteral("Rows"),
                              QStringLiteral("Columns and rows")};
    auto *on = new Parameter(ParameterType::Selection, QStringLiteral("On"), QStringLiteral("On"),
                             scopes.first(), scopes);
    on->setToolTip(QStringLiteral("Choose to calculate for columns, rows or both."));
    applyRememberedValue(useRemembered, on);
    addParameter(on);
}

QList<ParameterState> TransformStats::parameterStates() const
{
    const Parameter *calculation = parameter(QStringLiteral("Calculation"));
    const int index = calculation ? calculation->toSelectionIndex() : 0;
    return {{QStringLiteral("Percentile"),
             index == PercentileInclusive || index == PercentileExclusive}};
}

void TransformStats::selectNumericColumns(Parameter *columns, ColumnSource *input)
{
    const Dataset *dataset = input ? input->columnDataset() : nullptr;
    if (!dataset)
        return;
    QList<ColumnId> ids;
    for (const int c : dataset->numericColumns(true))
        ids.append(dataset->columnId(c));
    if (!ids.isEmpty())
        columns->setColumns(ids);
}

Dataset &TransformStats::process(Dataset &output, const TransformInputs &inputs,
                                 const RunContext &context, bool &)
{
    const QList<int> columns = option(QStringLiteral("Columns")).columnIndexes();
    const int calculation = option(QStringLiteral("Calculation")).toSelectionIndex();
    const int percent = option(QStringLiteral("Percentile")).toInt();
    const int on = option(QStringLiteral("On")).toSelectionIndex();
    output = inputDataset(inputs, 0);
    if (columns.isEmpty()) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    const QString name = calculationNames().value(calculation);
    const bool forRows = on != OnColumns;
    const bool forColumns = on != OnRows;
    const int statisticColumn = forRows ? ColumnNames::appendNamedColumn(output, name) : -1;
    const bool decimalIsPoint = QLocale().decimalPoint() == QLatin1Char('.');
    QVector<QVector<double>> columnValues(forColumns ? columns.size() : 0);
    QVector<double> allValues;
    QVector<double> rowValues;
    qint64 notNumbers = 0;
    qint64 invalidRows = 0;
    const int rowCount = output.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        const QStringList &row = output.row(r);
        rowValues.clear();
        for (int i = 0; i < columns.size(); ++i) {
            const QString &text = row.at(columns.at(i));
            // Empty cells are missing values, not mistakes: they are left out silently.
            if (text.isEmpty())
                continue;
            bool ok = false;
            const double value = toDoubleFast(text, decimalIsPoint, &ok);
            if (!ok) {
                if (++notNumbers <= ListedProblems)
                    addWarning(
                        QStringLiteral("'%1' is not a numerical value in column '%2' row %3.")
                            .arg(text, output.headerText(columns.at(i)), QString::number(r + 1)));
                continue;
            }
            rowValues.append(value);
            if (forColumns)
                columnValues[i].append(value);
        }
        if (!forRows)
            continue;
        bool ok = false;
        output.setCell(r, statisticColumn, statisticText(calculation, rowValues, percent, &ok));
        invalidRows += ok ? 0 : 1;
        if (forColumns)
            allValues += rowValues;
    }
    if (notNumbers > ListedProblems)
        addWarning(furtherProblemsText(notNumbers - ListedProblems));

    qint64 invalidColumns = 0;
    if (forColumns) {
        QStringList cells;
        for (int c = 0; c < output.columnCount(); ++c)
            cells.append(QString());
        // The name goes into the first cell when that column holds no statistic of its own.
        if (!columns.contains(0) && statisticColumn != 0)
            cells[0] = name;
        for (int i = 0; i < columns.size(); ++i) {
            bool ok = false;
            cells[columns.at(i)] = statisticText(calculation, columnValues.at(i), percent, &ok);
            invalidColumns += ok ? 0 : 1;
        }
        // Where the new row meets the new column: the statistic of every value taken.
        if (forRows) {
            bool ok = false;
            cells[statisticColumn] = statisticText(calculation, allValues, percent, &ok);
        }
        output.appendRow(cells);
    }
    if (invalidColumns > 0)
        addWarning(
            QStringLiteral("Invalid results for %1").arg(ColumnNames::countedCols(invalidColumns)));
    if (invalidRows > 0)
        addWarning(
            QStringLiteral("Invalid results for %1").arg(ColumnNames::countedRows(invalidRows)));
    setResult(on == OnBoth
                  ? QStringLiteral("1 col and row added")
                  : (on == OnRows ? QStringLiteral("1 col added") : QStringLiteral("1 row added")));
    return output;
}
