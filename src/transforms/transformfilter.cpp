#include "transforms/transformfilter.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"
#include "transforms/rowselection.h"

const TransformDescriptor &TransformFilter::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 18;
        d.typeName = QStringLiteral("Filter");
        d.displayName = QStringLiteral("Filter");
        d.category = CategoryRow;
        d.flags = TransformDescriptor::UsesDateFormats;
        d.description
            = QStringLiteral("Filter rows by text, date or numeric values in selected columns.");
        d.keywords = QStringList {
            QStringLiteral("select"),  QStringLiteral("where"),     QStringLiteral("query"),
            QStringLiteral("keep"),    QStringLiteral("remove"),    QStringLiteral("delete"),
            QStringLiteral("exclude"), QStringLiteral("include"),   QStringLiteral("search"),
            QStringLiteral("regex"),   QStringLiteral("conditions")};
        d.create = createTransform<TransformFilter>;
        return d;
    }();
    return descriptor;
}

void TransformFilter::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *columns = new Parameter(ParameterType::FilterColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Filtering"), input);
    columns->setToolTip(
        QStringLiteral(
            "The conditions that rows must meet. Column values of the row may be used in a value "
            "as variables, e.g. %1.")
            .arg(ComparisonOperator::columnVariable(1)));
    addParameter(columns);

    auto *caseSensitive = new Parameter(ParameterType::Bool, QStringLiteral("Case_Sensitive"),
                                        QStringLiteral("case sensitive"), false);
    caseSensitive->setToolTip(QStringLiteral("Check for case sensitive comparison of text."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);

    auto *disable = new Parameter(ParameterType::Bool, QStringLiteral("Disable"),
                                  QStringLiteral("disable filtering"), false);
    disable->setWarnWhenSet(true);
    disable->setToolTip(QStringLiteral("Check to pass all rows through unfiltered."));
    addParameter(disable);
}

Dataset &TransformFilter::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &, bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));
    const Parameter *caseOption = &option(QStringLiteral("Case_Sensitive"));
    const Parameter *disableOption = &option(QStringLiteral("Disable"));

    const Dataset &input = *inputs.first().dataset;
    if (disableOption->toBool()) {
        output = input;
        addWarning(QStringLiteral("Filtering is disabled"));
        setResult(rowsRemovedText(0));
        return output;
    }

    const FilterTerms filter = columnsOption->toFilterTerms();
    const Qt::CaseSensitivity caseSensitivity
        = caseOption->toBool() ? Qt::CaseSensitive : Qt::CaseInsensitive;
    RowSelection::Context context(input);
    const RowSelection::ResolvedTerms terms(context, filter.terms, caseSensitivity, true);
    if (terms.isEmpty()) {
        output = input;
        setResult(rowsRemovedText(0));
        return output;
    }

    const bool keep = filter.keep;
    const bool matchAny = filter.matchAny;
    const int rowCount = input.rowCount();
    output.setColumnCount(input.columnCount());
    output.reserveRows(rowCount);
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        prefetchAhead(input.rows(), r);
        const bool matches = matchAny ? terms.anyHolds(r) : terms.allHold(r);
        if (matches == keep)
            output.appendSharedRow(input.row(r));
    }
    clearComparisonCaches();
    output.setColumnIds(input.columnIds());
    if (input.hasHeader())
        output.setHeader(input.header());
    setResult(rowsRemovedText(rowCount - output.rowCount()));
    return output;
}
