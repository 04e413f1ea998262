#include "transforms/transformoutliers.h"

#include "data/numericlist.h"
#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"

#include <QLocale>
#include <QVector>

// Where outliers begin, and how a value is scored against the centre of the values.
struct TransformOutliers::Fences
{
    int scoreBy = StandardDeviation;
    // The mean and the deviation, or the quartiles and their distance.
    double low = 0.0;
    double high = 0.0;
    double spread = 0.0;
    double lower = 0.0;
    double upper = 0.0;

    double score(double value) const
    {
        if (scoreBy == StandardDeviation)
            return (value - low) / spread;
        if (value < low)
            return (value - low) / spread;
        if (value > high)
            return (value - high) / spread;
        return 0.0;
    }
};

const TransformDescriptor &TransformOutliers::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 37;
        d.typeName = QStringLiteral("Outliers");
        d.displayName = QStringLiteral("Outliers");
        d.category = CategoryOther;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly
            | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Find outlier numerical values.");
        d.keywords = QStringList {QStringLiteral("anomalies"), QStringLiteral("extreme"),
                                  QStringLiteral("deviation"), QStringLiteral("standard"),
                                  QStringLiteral("quartiles"), QStringLiteral("iqr"),
                                  QStringLiteral("winsorize"), QStringLiteral("clip"),
                                  QStringLiteral("fences"),    QStringLiteral("outliers")};
        d.create = createTransform<TransformOutliers>;
        return d;
    }();
    return descriptor;
}

void TransformOutliers::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    auto *column = new Parameter(ParameterType::SingleColumn, QStringLiteral("Column"),
                                 QStringLiteral("Column"), inputs.value(0));
    column->setToolTip(QStringLiteral("The column whose numerical values are scored."));
    column->selectOnlyColumn();
    addParameter(column);

    const QStringList scores {QStringLiteral("Standard Deviation"),
                              QStringLiteral("Inter Quartile Range")};
    auto *scoreBy
        = new Parameter(ParameterType::Selection, QStringLiteral("Score_By"),
                        QStringLiteral("Score by"), scores.at(InterQuartileRange), scores);
    scoreBy->setToolTip(
        QStringLiteral("%1: the number of standard deviations from the mean.\n%2: the number "
                       "of inter quartile ranges below the first or above the third quartile.")
            .arg(scores.at(StandardDeviation), scores.at(InterQuartileRange)));
    applyRememberedValue(useRemembered, scoreBy);
    addParameter(scoreBy);

    auto *threshold = new Parameter(ParameterType::Real, QStringLiteral("Threshold"),
                                    QStringLiteral("Threshold"), 1.5);
    threshold->setToolTip(QStringLiteral("If a value has a score greater than +threshold or "
                                         "less than -threshold, it is considered an outlier."));
    applyRememberedValue(useRemembered, threshold);
    addParameter(threshold);

    const QStringList actions {QStringLiteral("Set value"), QStringLiteral("Keep outlier rows"),
                               QStringLiteral("Remove outlier rows"),
                               QStringLiteral("Change to threshold")};
    auto *action = new Parameter(ParameterType::Selection, QStringLiteral("Action"),
                                 QStringLiteral("Action"), actions.at(KeepRows), actions);
    action->setToolTip(QStringLiteral("What to do with outliers.\n%1: set them to '%5'.\n%2, "
                                      "%3: keep or remove the rows that hold them.\n%4: set "
                                      "numerical outliers to the nearest value that is no "
                                      "outlier.")
                           .arg(actions.at(0), actions.at(1), actions.at(2), actions.at(3),
                                QStringLiteral("New value")));
    applyRememberedValue(useRemembered, action);
    addParameter(action);

    auto *newValue = new Parameter(ParameterType::Text, QStringLiteral("New_Value"),
                                   QStringLiteral("New value"), QString());
    newValue->setTextRequired(false);
    newValue->setToolTip(QStringLiteral("Choose the new value to set for outliers."));
    applyRememberedValue(useRemembered, newValue);
    addParameter(newValue);

    const QStringList treatments {QStringLiteral("Treat as outlier"),
                                  QStringLiteral("Treat as not outlier")};
    auto *nonNumeric
        = new Parameter(ParameterType::Selection, QStringLiteral("Non_Numeric"),
                        QStringLiteral("Non-numeric values"), treatments.at(1), treatments);
    nonNumeric->setToolTip(QStringLiteral(
        "What to do with non-numeric values.\nWhat is interpreted as a number may depend on "
        "your 'Locale' setting in 'Preferences'."));
    applyRememberedValue(useRemembered, nonNumeric);
    addParameter(nonNumeric);

    auto *addScores = new Parameter(ParameterType::Bool, QStringLiteral("Add_Scores"),
                                    QStringLiteral("add score column"), false);
    addScores->setToolTip(
        QStringLiteral("Check to add a new column containing the outlier scoring."));
    applyRememberedValue(useRemembered, addScores);
    addParameter(addScores);
}

QList<ParameterState> TransformOutliers::parameterStates() const
{
    const Parameter *action = parameter(QStringLiteral("Action"));
    return {{QStringLiteral("New_Value"), !action || action->toSelectionIndex() == SetValue}};
}

bool TransformOutliers::calculateFences(const QVector<double> &values, int scoreBy,
                                        double threshold, Fences *fences)
{
    fences->scoreBy = scoreBy;
    if (values.size() < 2) {
        addWarning(QStringLiteral("Insufficient numeric values to calculate outliers."));
        return false;
    }
    if (scoreBy == StandardDeviation) {
        bool ok = false;
        const double deviation
            = NumericList::standardDeviation(values, NumericList::Deviation::Sample, &ok);
        if (!ok || !(deviation > 0.0)) {
            addWarning(QStringLiteral("Could not calculate standard deviation."));
            return false;
        }
        fences->low = fences->high = NumericList::average(values);
        fences->spread = deviation;
        addInformation(QStringLiteral("Average (mean)=%1").arg(numberToCellText(fences->low)));
        addInformation(QStringLiteral("Standard deviation=%1").arg(numberToCellText(deviation)));
    } else {
        double q1 = 0.0;
        double q3 = 0.0;
        if (!NumericList::quartiles(values, &q1, &q3) || !(q3 - q1 > 0.0)) {
            addWarning(QStringLiteral("Could not calculate quartile values."));
            return false;
        }
        fences->low = q1;
        fences->high = q3;
        fences->spread = q3 - q1;
        addInformation(QStringLiteral("Quartile 1=%1").arg(numberToCellText(q1)));
        addInformation(QStringLiteral("Quartile 3=%1").arg(numberToCellText(q3)));
        addInformation(
            QStringLiteral("Inter Quartile Range=%1").arg(numberToCellText(fences->spread)));
    }
    fences->lower = fences->low - threshold * fences->spread;
    fences->upper = fences->high + threshold * fences->spread;
    addInformation(QStringLiteral("Lower fence=%1").arg(numberToCellText(fences->lower)));
    addInformation(QStringLiteral("Upper fence=%1").arg(numberToCellText(fences->upper)));
    return true;
}

// Scores come from the numbers of the column alone; a cell that is no number has no score and
// is an outlier or not as Non_Numeric says. Changing to the threshold sets a numerical outlier
// to the fence that it lies beyond; a non-numerical one is left as it is.
Dataset &TransformOutliers::process(Dataset &output, const TransformInputs &inputs,
                                    const RunContext &context, bool &)
{
    const int scoreBy = qBound(0, option(QStringLiteral("Score_By")).toSelectionIndex(), 1);
    const double threshold = option(QStringLiteral("Threshold")).toReal();
    const int action
        = qBound(0, option(QStringLiteral("Action")).toSelectionIndex(), int(ChangeToThreshold));
    const QString newValue = option(QStringLiteral("New_Value")).toString();
    const bool nonNumericOutliers = option(QStringLiteral("Non_Numeric")).toSelectionIndex() == 0;
    const bool addScores = option(QStringLiteral("Add_Scores")).toBool();

    output = inputDataset(inputs, 0);
    const int column = option(QStringLiteral("Column")).toColumnIndex();
    const int scoreColumn
        = addScores ? ColumnNames::appendNamedColumn(output, QStringLiteral("Score")) : -1;
    const int rowCount = output.rowCount();
    if (column < 0 || column >= output.columnCount() || column == scoreColumn) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    const bool decimalIsPoint = QLocale().decimalPoint() == QLatin1Char('.');
    QVector<double> numbers(rowCount);
    QVector<bool> isNumber(rowCount);
    QVector<double> values;
    values.reserve(rowCount);
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, 2 * rowCount);
        bool ok = false;
        numbers[r] = toDoubleFast(output.cell(r, column), decimalIsPoint, &ok);
        isNumber[r] = ok;
        if (ok)
            values.append(numbers.at(r));
    }
    addInformation(QStringLiteral("%1").arg(countWithNoun(
        values.size(), QStringLiteral("numeric value"), QStringLiteral("numeric values"))));
    Fences fences;
    if (!calculateFences(values, scoreBy, threshold, &fences)) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    QVector<bool> outliers(rowCount);
    qint64 changed = 0;
    qint64 outlierCount = 0;
    QStringList listed;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, 2 * rowCount, 0.5);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        const double score = isNumber.at(r) ? fences.score(numbers.at(r)) : 0.0;
        const bool outlier
            = isNumber.at(r) ? score > threshold || score < -threshold : nonNumericOutliers;
        outliers[r] = outlier;
        if (outlier && ++outlierCount <= ListedProblems)
            listed.append(QStringLiteral("'%1' at row %2")
                              .arg(output.cell(r, column), QString::number(r + 1)));
        if (scoreColumn >= 0 && isNumber.at(r))
            output.setCell(r, scoreColumn, numberToCellText(score));
        if (!outlier)
            continue;
        QString text;
        if (action == SetValue)
            text = newValue;
        else if (action == ChangeToThreshold && isNumber.at(r))
            text = numberToCellText(score > 0.0 ? fences.upper : fences.lower);
        else
            continue;
        if (text != output.cell(r, column)) {
            output.setCell(r, column, text);
            ++changed;
        }
    }
    addInformation(QStringLiteral("%1:").arg(
        countWithNoun(outlierCount, QStringLiteral("outlier"), QStringLiteral("outliers"))));
    for (const QString &line : qAsConst(listed))
        addInformation(line);
    if (outlierCount > listed.size())
        addInformation(furtherProblemsText(outlierCount - listed.size()));

    if (action == KeepRows || action == RemoveRows) {
        const bool keepOutliers = action == KeepRows;
        QList<QStringList> rows = output.takeRows();
        QList<QStringList> kept;
        kept.reserve(rows.size());
        for (int r = 0; r < rows.size(); ++r) {
            if (outliers.value(r) == keepOutliers)
                kept.append(rows.at(r));
        }
        output.setSharedRows(std::move(kept));
        setResult(rowsRemovedText(rowCount - output.rowCount()));
    } else {
        setResult(cellsChangedText(changed, rowCount - changed));
    }
    return output;
}
