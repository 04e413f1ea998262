#include "transforms/transforminsert.h"

#include "data/valueinterpretation.h"
#include "transforms/cellrules.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"

const TransformDescriptor &TransformInsert::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 24;
        d.typeName = QStringLiteral("Insert");
        d.displayName = QStringLiteral("Insert");
        d.category = CategoryFormat;
        d.flags
            = TransformDescriptor::ChangesValuesOnly | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Append/prepend text in the selected column(s).");
        d.keywords = QStringList {QStringLiteral("append"),      QStringLiteral("prepend"),
                                  QStringLiteral("prefix"),      QStringLiteral("suffix"),
                                  QStringLiteral("add"),         QStringLiteral("text"),
                                  QStringLiteral("concatenate"), QStringLiteral("variables"),
                                  QStringLiteral("start"),       QStringLiteral("end")};
        d.create = createTransform<TransformInsert>;
        return d;
    }();
    return descriptor;
}

void TransformInsert::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(CellRules::createColumnsParameter(
        inputs.value(0), QStringLiteral("Select the column(s) you want to insert text into.")));

    auto *insert = new Parameter(ParameterType::Text, QStringLiteral("Insert"),
                                 QStringLiteral("Insert"), "");
    insert->setToolTip(QStringLiteral("The text to insert.\nUse %1 or %2 for the value of a "
                                      "column in the same row.")
                           .arg(ComparisonOperator::columnVariable(1),
                                ComparisonOperator::columnVariable(QStringLiteral("name"))));
    applyRememberedValue(useRemembered, insert);
    addParameter(insert);

    const QStringList ends {QStringLiteral("Start"), QStringLiteral("End")};
    auto *with = new Parameter(ParameterType::Selection, QStringLiteral("With"),
                               QStringLiteral("At"), ends.first(), ends);
    with->setToolTip(QStringLiteral("Whether to insert the text at the start or the end."));
    applyRememberedValue(useRemembered, with);
    addParameter(with);
}

Dataset &TransformInsert::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &, bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));
    const Parameter *insertOption = &option(QStringLiteral("Insert"));
    const Parameter *withOption = &option(QStringLiteral("With"));

    const Dataset &input = *inputs.first().dataset;
    output = input;
    const QString insert = insertOption->toString();
    if (insert.isEmpty()) {
        setResult(cellsChangedText(0, 0));
        return output;
    }
    const QList<int> columns = CellRules::selectedColumns(*columnsOption);
    const bool atStart = withOption->toSelectionIndex() == 0;
    const bool perRow = CellRules::hasColumnVariables(insert);
    const CellRules::RowVariables variables(input);
    // The substituted text is the same for every column of a row: worked out once a row.
    int textRow = -1;
    QString text = insert;
    const CellRules::Counts counts = CellRules::rewriteCells(
        output, columns,
        [&](int r, const QString &cell) {
            if (perRow && r != textRow) {
                text = variables.substitute(insert, r);
                textRow = r;
            }
            return atStart ? QString(text + cell) : QString(cell + text);
        },
        [this](int r, int rowCount) { reportRow(r, rowCount); });
    setResult(counts.changed == 0 ? cellsChangedText(0, 0)
                                  : QStringLiteral("%1 changed").arg(formatCount(counts.changed)));
    return output;
}
