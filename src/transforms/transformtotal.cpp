#include "transforms/transformtotal.h"

#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"

#include <QHash>
#include <QLocale>

const TransformDescriptor &TransformTotal::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 66;
        d.typeName = QStringLiteral("Total");
        d.displayName = QStringLiteral("Total");
        d.category = CategoryAnalysis;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral(
            "Add a new column with a running (cumulative) total of the selected column.");
        d.keywords = QStringList {QStringLiteral("sumif"),   QStringLiteral("columns"),
                                  QStringLiteral("rows"),    QStringLiteral("cumulative"),
                                  QStringLiteral("running"), QStringLiteral("totals")};
        d.create = createTransform<TransformTotal>;
        return d;
    }();
    return descriptor;
}

void TransformTotal::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    addNewNameParameters(useRemembered);

    auto *column = new Parameter(ParameterType::SingleColumn, QStringLiteral("Column"),
                                 QStringLiteral("Column"), input);
    column->setToolTip(QStringLiteral("Create a running total for this column."));
    column->selectOnlyColumn();
    addParameter(column);

    // Optional: without it there is a single running total, so it is never reported unset.
    auto *by = new Parameter(ParameterType::SingleColumn, QStringLiteral("By"),
                             QStringLiteral("By"), input);
    by->setColumnRequired(false);
    by->setToolTip(QStringLiteral("Maintain a separate running total for each value in this "
                                  "column.\nLeave as %1 if you only want a single running "
                                  "total.")
                       .arg(by->noneText()));
    addParameter(by);
}

QList<ParameterState> TransformTotal::parameterStates() const
{
    return {newNameState()};
}

Dataset &TransformTotal::process(Dataset &output, const TransformInputs &inputs,
                                 const RunContext &context, bool &)
{
    const Parameter *columnOption = &option(QStringLiteral("Column"));
    const Parameter *byOption = &option(QStringLiteral("By"));

    output = inputDataset(inputs, 0);
    const int column = columnOption->toColumnIndex();
    const bool hasColumn = column >= 0 && column < output.columnCount();
    const int by = byOption->toColumnIndex();
    const bool hasBy = by >= 0 && by < output.columnCount();
    const QString name
        = newColumnName(hasColumn ? QStringLiteral("Total %1").arg(output.headerText(column))
                                  : QStringLiteral("Total"));
    const int c = ColumnNames::appendNamedColumn(output, name);
    if (!hasColumn) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    const bool decimalIsPoint = QLocale().decimalPoint() == QLatin1Char('.');
    double total = 0.0;
    QHash<QString, double> totals;
    qint64 added = 0;
    qint64 notNumbers = 0;
    const int rowCount = output.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        const QStringList &row = output.row(r);
        double &sum = hasBy ? totals[row.at(by)] : total;
        bool ok = false;
        const double number = toDoubleFast(row.at(column), decimalIsPoint, &ok);
        if (ok) {
            sum += number;
            ++added;
        } else if (++notNumbers <= ListedProblems) {
            addWarning(QStringLiteral("'%1' is not a numerical value in row %2.")
                           .arg(row.at(column), QString::number(r + 1)));
        }
        output.setCell(r, c, numberToCellText(sum));
    }
    if (notNumbers > ListedProblems)
        addWarning(furtherProblemsText(notNumbers - ListedProblems));
    setResult(QStringLiteral("%1 totalled").arg(ColumnNames::countedRows(added)));
    return output;
}
