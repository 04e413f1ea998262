#include "transforms/transformsummary.h"

#include "data/columnmetrics.h"
#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"

const TransformDescriptor &TransformSummary::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 65;
        d.typeName = QStringLiteral("Summary");
        d.displayName = QStringLiteral("Summary");
        d.category = CategoryAnalysis;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::UsesDateFormats;
        d.description = QStringLiteral("Summarise the values of the selected columns.");
        d.keywords = QStringLiteral(
                         "skewness skew pearson inter quartiles variance range frequencies "
                         "frequency frequent deviation standard mode median mean averages maximum "
                         "minimum duplicates duplicated unique disinct dates integers counts text "
                         "numeric empty statistics summarizes summarises summary")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformSummary>;
        return d;
    }();
    return descriptor;
}

void TransformSummary::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    auto *columns = new Parameter(ParameterType::MultipleColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Columns"), inputs.value(0));
    columns->setToolTip(QStringLiteral("Select the column(s) you want to summarise."));
    // A profile of the whole table is what the transform is first added for.
    columns->selectAllColumns();
    addParameter(columns);

    // Both off by default: they are the costly parts on long columns.
    auto *dates = new Parameter(ParameterType::Bool, QStringLiteral("Check_For_Dates"),
                                QStringLiteral("include dates"), false);
    dates->setToolTip(QStringLiteral("Check for date values against all the allowed date formats "
                                     "in 'Preferences' (slow for large datasets)."));
    applyRememberedValue(useRemembered, dates);
    addParameter(dates);

    auto *stats = new Parameter(ParameterType::Bool, QStringLiteral("Check_Stats"),
                                QStringLiteral("include statistics"), false);
    stats->setToolTip(QStringLiteral("Include sum, average, median, mode, standard deviation, "
                                     "variance, Q1, Q2, IQR and skew for numerical values."));
    applyRememberedValue(useRemembered, stats);
    addParameter(stats);
}

Dataset &TransformSummary::process(Dataset &output, const TransformInputs &inputs,
                                   const RunContext &context, bool &)
{
    const QList<int> columns = option(QStringLiteral("Columns")).columnIndexes();
    const bool dates = option(QStringLiteral("Check_For_Dates")).toBool();
    const bool statistics = option(QStringLiteral("Check_Stats")).toBool();
    const Dataset &input = *inputs.at(0).dataset;

    const QStringList names = ColumnMetrics::metricNames(dates, statistics);
    QStringList header {QStringLiteral("Metric")};
    for (const int c : columns)
        header.append(input.headerText(c));
    beginOutput(output, header.size(), true, header);
    output.setRowCount(names.size());
    output.setColumn(0, names);

    const QStringList formats = dates ? dateFormats() : QStringList();
    const int rowCount = input.rowCount();
    bool stopped = false;
    for (int i = 0; i < columns.size() && !stopped; ++i) {
        const auto progress = [&](int r) {
            emit processed((qreal(i) + qreal(r) / qreal(rowCount)) / qreal(columns.size()));
            stopped = context.isStopRequested();
            return !stopped;
        };
        const auto metrics = ColumnMetrics::columnMetrics(input.columnValues(columns.at(i)), dates,
                                                          statistics, formats, progress);
        QStringList values;
        values.reserve(metrics.size());
        for (const auto &metric : metrics)
            values.append(metric.second);
        output.setColumn(i + 1, values);
    }
    setResult(QStringLiteral("Summary created"));
    return output;
}
