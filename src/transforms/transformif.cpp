#include "transforms/transformif.h"

#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"
#include "transforms/rowselection.h"

const TransformDescriptor &TransformIf::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 22;
        d.typeName = QStringLiteral("If");
        d.displayName = QStringLiteral("If");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::UsesDateFormats;
        d.description
            = QStringLiteral("Create a new column with values conditional on other columns.");
        d.keywords = QStringList {
            QStringLiteral("then"),        QStringLiteral("else"),       QStringLiteral("elseif"),
            QStringLiteral("conditional"), QStringLiteral("conditions"), QStringLiteral("case"),
            QStringLiteral("when"),        QStringLiteral("switch"),     QStringLiteral("ifelse")};
        d.create = createTransform<TransformIf>;
        return d;
    }();
    return descriptor;
}

void TransformIf::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *newName = new Parameter(ParameterType::Text, QStringLiteral("New_Name"),
                                  QStringLiteral("New column name"), QStringLiteral("If"));
    newName->setToolTip(QStringLiteral("The name for the new column."));
    applyRememberedValue(useRemembered, newName);
    addParameter(newName);

    auto *conditions
        = new Parameter(ParameterType::If, QStringLiteral("If"), QStringLiteral("If"), input);
    conditions->setToolTip(
        QStringLiteral("Each row takes the THEN value of the first IF or ELSE IF whose conditions "
                       "all hold, otherwise the ELSE value. Values may use column variables, "
                       "e.g. %1.")
            .arg(ComparisonOperator::columnVariable(1)));
    addParameter(conditions);

    auto *caseSensitive = new Parameter(ParameterType::Bool, QStringLiteral("Case_Sensitive"),
                                        QStringLiteral("case sensitive"), false);
    caseSensitive->setToolTip(QStringLiteral("Check for case sensitive comparison of text."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);
}

Dataset &TransformIf::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                              bool &)
{
    const Parameter *newNameOption = &option(QStringLiteral("New_Name"));
    const Parameter *ifOption = &option(QStringLiteral("If"));
    const Parameter *caseOption = &option(QStringLiteral("Case_Sensitive"));

    const Dataset &input = *inputs.first().dataset;
    output = input;
    const int newColumn = ColumnNames::appendNamedColumn(output, newNameOption->toString());

    const IfTerms conditions = ifOption->toIfTerms();
    const Qt::CaseSensitivity caseSensitivity
        = caseOption->toBool() ? Qt::CaseSensitive : Qt::CaseInsensitive;
    RowSelection::Context context(input);
    QVector<RowSelection::ResolvedTerms> branches;
    QStringList thenValues;
    bool allEmpty = conditions.elseValue.isEmpty();
    for (const IfBranch &branch : conditions.branches) {
        branches.append(RowSelection::ResolvedTerms(context, branch.terms, caseSensitivity, false));
        thenValues.append(branch.thenValue);
        allEmpty = allEmpty && branch.thenValue.isEmpty();
    }
    const QString elseValue = conditions.elseValue;

    const int rowCount = input.rowCount();
    qint64 branchMatches = 0;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        int chosen = -1;
        for (int b = 0; b < branches.size() && chosen < 0; ++b) {
            if (branches.at(b).allHold(r))
                chosen = b;
        }
        if (chosen >= 0)
            ++branchMatches;
        const QString text = context.substitute(chosen >= 0 ? thenValues.at(chosen) : elseValue, r);
        if (!text.isEmpty())
            output.setCell(r, newColumn, text);
    }
    if (allEmpty)
        addWarning(QStringLiteral("THEN and ELSE empty"));
    setResult(QStringLiteral("%1 match(es) IF/ELSE IF, %2 match(es) ELSE")
                  .arg(formatCount(branchMatches), formatCount(rowCount - branchMatches)));
    return output;
}
