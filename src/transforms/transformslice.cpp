#include "transforms/transformslice.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"
#include "transforms/rowselection.h"

namespace {

enum KeepRemove { Keep = 0, Remove = 1 };
enum FromMode { FromStart = 0, FirstRowWhere = 1 };
enum ToMode { LastRowWhere = 0, NextRowWhere = 1, ToEnd = 2 };

// The condition of one end of the section; a term that needs a value and has none holds
// for every row, as an empty filter keeps every row.
class Boundary
{
public:
    Boundary(RowSelection::Context &context, const Parameter &column, const Parameter &operation,
             const Parameter &value, Qt::CaseSensitivity caseSensitivity)
        : m_terms(context, {term(column, operation, value)}, caseSensitivity, true)
    { }

    bool holds(int r) const { return m_terms.isEmpty() || m_terms.allHold(r); }

private:
    static FilterTerm term(const Parameter &column, const Parameter &operation,
                           const Parameter &value)
    {
        FilterTerm term;
        term.column = column.toColumnId();
        term.op = ComparisonOperator::displayOrder().value(operation.toSelectionIndex(),
                                                           ComparisonOperator::Contains);
        term.value = value.toString();
        return term;
    }

    RowSelection::ResolvedTerms m_terms;
};

} // namespace

const TransformDescriptor &TransformSlice::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 53;
        d.typeName = QStringLiteral("Slice");
        d.displayName = QStringLiteral("Slice");
        d.category = CategoryRow;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Keep or remove a continuous section of rows.");
        d.keywords = QStringList {
            QStringLiteral("section"), QStringLiteral("range"), QStringLiteral("between"),
            QStringLiteral("from"),    QStringLiteral("until"), QStringLiteral("keep"),
            QStringLiteral("remove"),  QStringLiteral("cut"),   QStringLiteral("slices")};
        d.create = createTransform<TransformSlice>;
        return d;
    }();
    return descriptor;
}

void TransformSlice::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);
    const QStringList operators = ComparisonOperator::displayTexts();

    const QStringList keepRemove {QStringLiteral("Keep"), QStringLiteral("Remove")};
    auto *keep = new Parameter(ParameterType::Selection, QStringLiteral("Keep_Remove"),
                               QStringLiteral("Keep or remove"), keepRemove.first(), keepRemove);
    keep->setToolTip(QStringLiteral("Whether to keep only the slice or remove only the slice."));
    applyRememberedValue(useRemembered, keep);
    addParameter(keep);

    const QStringList fromModes {QStringLiteral("Start"), QStringLiteral("First row where")};
    auto *fromMode = new Parameter(ParameterType::Selection, QStringLiteral("From_Mode"),
                                   QStringLiteral("From"), fromModes.first(), fromModes);
    fromMode->setToolTip(QStringLiteral("Where to start the slice."));
    applyRememberedValue(useRemembered, fromMode);
    addParameter(fromMode);

    const auto addCondition = [this, input, &operators, useRemembered](
                                  const QString &prefix, const QString &includeKey,
                                  const QString &includeLabel, const QString &includeTip) {
        auto *column = new Parameter(ParameterType::SingleColumn, prefix + QStringLiteral("Column"),
                                     QStringLiteral("Column"), input);
        column->setNoneText(QStringLiteral("<Any>"));
        column->setColumnRequired(false);
        column->setToolTip(QStringLiteral("The column to test, or <Any> to test every column."));
        addParameter(column);

        auto *operation
            = new Parameter(ParameterType::Selection, prefix + QStringLiteral("Operation"),
                            QStringLiteral("Operation"), operators.first(), operators);
        operation->setToolTip(QStringLiteral("How the column value is compared with the value."));
        applyRememberedValue(useRemembered, operation);
        addParameter(operation);

        auto *value = new Parameter(ParameterType::Text, prefix + QStringLiteral("Value"),
                                    QStringLiteral("Value"), QString());
        value->setTextRequired(false);
        value->setToolTip(QStringLiteral("The value to compare with. Column values of the row may "
                                         "be used as variables, e.g. %1.")
                              .arg(ComparisonOperator::columnVariable(1)));
        addParameter(value);

        auto *include = new Parameter(ParameterType::Bool, includeKey, includeLabel, true);
        include->setToolTip(includeTip);
        applyRememberedValue(useRemembered, include);
        addParameter(include);
    };
    addCondition(QStringLiteral("From_"), QStringLiteral("From_Include_First"),
                 QStringLiteral("include first row"),
                 QStringLiteral("Check to make the matching row the first row of the slice."));

    const QStringList toModes {QStringLiteral("Last row where"), QStringLiteral("Next row where"),
                               QStringLiteral("End")};
    auto *toMode = new Parameter(ParameterType::Selection, QStringLiteral("To_Mode"),
                                 QStringLiteral("To"), toModes.last(), toModes);
    toMode->setToolTip(QStringLiteral("Where to end the slice. Note that the 'From' row and above "
                                      "are ignored for matching."));
    applyRememberedValue(useRemembered, toMode);
    addParameter(toMode);

    addCondition(QStringLiteral("To_"), QStringLiteral("To_Include_Last"),
                 QStringLiteral("include last row"),
                 QStringLiteral("Check to make the matching row the last row of the slice."));

    auto *caseSensitive = new Parameter(ParameterType::Bool, QStringLiteral("Case_Sensitive"),
                                        QStringLiteral("case sensitive"), false);
    caseSensitive->setToolTip(QStringLiteral("Check for case sensitive comparison of text."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);
}

QList<ParameterState> TransformSlice::parameterStates() const
{
    const Parameter *fromMode = parameter(QStringLiteral("From_Mode"));
    const Parameter *toMode = parameter(QStringLiteral("To_Mode"));
    const bool fromWhere = fromMode && fromMode->toSelectionIndex() == FirstRowWhere;
    const bool toWhere = toMode && toMode->toSelectionIndex() != ToEnd;
    return {{QStringLiteral("From_Column"), fromWhere},
            {QStringLiteral("From_Operation"), fromWhere},
            {QStringLiteral("From_Value"), fromWhere},
            {QStringLiteral("From_Include_First"), fromWhere},
            {QStringLiteral("To_Column"), toWhere},
            {QStringLiteral("To_Operation"), toWhere},
            {QStringLiteral("To_Value"), toWhere},
            {QStringLiteral("To_Include_Last"), toWhere}};
}

Dataset &TransformSlice::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                                 bool &)
{
    QList<const Parameter *> options;
    for (const char *key : {"Keep_Remove", "From_Mode", "From_Column", "From_Operation",
                            "From_Value", "From_Include_First", "To_Mode", "To_Column",
                            "To_Operation", "To_Value", "To_Include_Last", "Case_Sensitive"}) {
        const Parameter *option = parameter(QLatin1String(key));
        if (!option) {
            setResult(failureText());
            return output;
        }
        options.append(option);
    }
    const bool keep = options.at(0)->toSelectionIndex() == Keep;
    const int fromMode = options.at(1)->toSelectionIndex();
    const bool includeFirst = options.at(5)->toBool();
    const int toMode = options.at(6)->toSelectionIndex();
    const bool includeLast = options.at(10)->toBool();
    const Qt::CaseSensitivity caseSensitivity
        = options.at(11)->toBool() ? Qt::CaseSensitive : Qt::CaseInsensitive;

    const Dataset &input = *inputs.first().dataset;
    const int rowCount = input.rowCount();
    RowSelection::Context context(input);

    // The section runs from first to last, both boundary rows before the include options;
    // -1 for a boundary that no row meets.
    int first = fromMode == FirstRowWhere ? -1 : 0;
    if (fromMode == FirstRowWhere) {
        const Boundary from(context, *options.at(2), *options.at(3), *options.at(4),
                            caseSensitivity);
        for (int r = 0; r < rowCount && first < 0; ++r) {
            reportRow(r, rowCount);
            if (from.holds(r))
                first = r;
        }
    }
    int last = toMode == ToEnd ? rowCount - 1 : -1;
    if (first >= 0 && toMode != ToEnd) {
        const Boundary to(context, *options.at(7), *options.at(8), *options.at(9), caseSensitivity);
        if (toMode == NextRowWhere) {
            for (int r = first + 1; r < rowCount && last < 0; ++r) {
                reportRow(r, rowCount);
                if (to.holds(r))
                    last = r;
            }
        } else {
            for (int r = rowCount - 1; r >= 0 && last < 0; --r) {
                reportRow(r, rowCount);
                if (to.holds(r))
                    last = r;
            }
        }
    }
    clearComparisonCaches();

    int start = rowCount;
    int end = -1;
    if (first >= 0 && last >= 0) {
        start = fromMode == FirstRowWhere && !includeFirst ? first + 1 : first;
        end = toMode != ToEnd && !includeLast ? last - 1 : last;
    }

    output.setColumnCount(input.columnCount());
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        const bool inSection = r >= start && r <= end;
        if (inSection == keep)
            output.appendSharedRow(input.row(r));
    }
    output.setColumnIds(input.columnIds());
    if (input.hasHeader())
        output.setHeader(input.header());
    setResult(rowsRemovedText(rowCount - output.rowCount()));
    return output;
}
