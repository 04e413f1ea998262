#include "transforms/transformcorrelate.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"
#include "transforms/transformstats.h"

#include <QLocale>

#include <cmath>

namespace {

// Pearson's coefficient over the rows where both columns hold numbers (NaN marks the others).
// Returns NaN without pairs; zeroX or zeroY tells which column does not vary among them.
double pearson(const QVector<double> &x, const QVector<double> &y, int *pairs, bool *zeroX,
               bool *zeroY)
{
    double sumX = 0.0;
    double sumY = 0.0;
    int count = 0;
    for (int r = 0; r < x.size(); ++r) {
        if (std::isnan(x.at(r)) || std::isnan(y.at(r)))
            continue;
        sumX += x.at(r);
        sumY += y.at(r);
        ++count;
    }
    *pairs = count;
    *zeroX = *zeroY = false;
    if (count == 0)
        return qQNaN();
    const double meanX = sumX / count;
    const double meanY = sumY / count;
    double products = 0.0;
    double squaresX = 0.0;
    double squaresY = 0.0;
    for (int r = 0; r < x.size(); ++r) {
        if (std::isnan(x.at(r)) || std::isnan(y.at(r)))
            continue;
        const double dx = x.at(r) - meanX;
        const double dy = y.at(r) - meanY;
        products += dx * dy;
        squaresX += dx * dx;
        squaresY += dy * dy;
    }
    *zeroX = squaresX == 0.0;
    *zeroY = squaresY == 0.0;
    if (*zeroX || *zeroY)
        return qQNaN();
    return products / std::sqrt(squaresX * squaresY);
}

} // namespace

const TransformDescriptor &TransformCorrelate::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 9;
        d.typeName = QStringLiteral("Correlate");
        d.displayName = QStringLiteral("Correlate");
        d.category = CategoryAnalysis;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral("Calculate the correlation of 2 or more pairs of columns.");
        d.keywords = QStringLiteral("pearson coefficients correlations matrix statistics")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformCorrelate>;
        return d;
    }();
    return descriptor;
}

void TransformCorrelate::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);
    auto *columns = new Parameter(ParameterType::MultipleColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Columns"), input);
    columns->setToolTip(QStringLiteral("Select 2 or more numerical columns to correlate."));
    TransformStats::selectNumericColumns(columns, input);
    addParameter(columns);
}

// The numbers of each chosen column, NaN where a cell holds none; non-numbers are reported.
QVector<QVector<double>> TransformCorrelate::readColumns(const Dataset &input,
                                                         const QList<int> &columns,
                                                         const RunContext &context)
{
    const bool decimalIsPoint = QLocale().decimalPoint() == QLatin1Char('.');
    const int rowCount = input.rowCount();
    QVector<QVector<double>> values(columns.size(), QVector<double>(rowCount, qQNaN()));
    qint64 notNumbers = 0;
    for (int r = 0; r < rowCount; ++r) {
        // Reading is the first half of the work, the pairs the second.
        reportRow(r, 2 * rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        const QStringList &row = input.row(r);
        for (int i = 0; i < columns.size(); ++i) {
            const QString &text = row.at(columns.at(i));
            if (text.isEmpty())
                continue;
            bool ok = false;
            const double value = toDoubleFast(text, decimalIsPoint, &ok);
            if (ok)
                values[i][r] = value;
            else if (++notNumbers <= ListedProblems)
                addWarning(QStringLiteral("'%1' is not a numerical value in column '%2' row %3")
                               .arg(text, input.headerText(columns.at(i)), QString::number(r + 1)));
        }
    }
    if (notNumbers > ListedProblems)
        addWarning(furtherProblemsText(notNumbers - ListedProblems));
    return values;
}

Dataset &TransformCorrelate::process(Dataset &output, const TransformInputs &inputs,
                                     const RunContext &context, bool &)
{
    const QList<int> columns = option(QStringLiteral("Columns")).columnIndexes();
    const Dataset &input = *inputs.at(0).dataset;
    if (columns.size() < 2) {
        addWarning(QStringLiteral("Expected at least 2 columns to be selected"));
        return output;
    }
    if (!input.hasRows()) {
        addWarning(QStringLiteral("No data"));
        return output;
    }
    const QVector<QVector<double>> values = readColumns(input, columns, context);

    // A square matrix: the chosen columns across and down, each pair once computed and
    // written on both sides of the diagonal.
    const int n = columns.size();
    QStringList header {QStringLiteral("Correlation")};
    for (const int c : columns)
        header.append(input.headerText(c));
    beginOutput(output, n + 1, true, header);
    output.setRowCount(n);
    for (int i = 0; i < n; ++i)
        output.setCell(i, 0, header.at(i + 1));

    QVector<bool> reportedZero(n, false);
    const qreal pairCount = qreal(n) * qreal(n - 1) / 2.0;
    int pairIndex = 0;
    for (int i = 0; i < n; ++i) {
        for (int j = i; j < n; ++j) {
            if (j > i)
                emit processed(0.5 + qreal(pairIndex++) / pairCount / 2.0);
            int pairs = 0;
            bool zeroX = false;
            bool zeroY = false;
            const double r = pearson(values.at(i), values.at(j), &pairs, &zeroX, &zeroY);
            if (pairs == 0 && j > i)
                addWarning(QStringLiteral("No valid pairs of values for columns '%1' and '%2'")
                               .arg(header.at(i + 1), header.at(j + 1)));
            for (const auto &[zero, k] : {std::pair {zeroX, i}, std::pair {zeroY, j}}) {
                if (zero && !reportedZero.at(k)) {
                    reportedZero[k] = true;
                    addWarning(
                        QStringLiteral("Standard deviation for '%1' is 0, causing divided by 0")
                            .arg(header.at(k + 1)));
                }
            }
            const QString text = std::isnan(r) ? QStringLiteral("N/A") : numberToCellText(r);
            output.setCell(i, j + 1, text);
            output.setCell(j, i + 1, text);
        }
    }
    setResult(QStringLiteral("Correlation table created"));
    return output;
}
