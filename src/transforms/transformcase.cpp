#include "transforms/transformcase.h"

#include "data/valueinterpretation.h"
#include "transforms/cellrules.h"
#include "transforms/framework/parameter.h"

namespace {

enum CaseIndex { Title = 2, Sentence = 3 };

} // namespace

const TransformDescriptor &TransformCase::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 1;
        d.typeName = QStringLiteral("Case");
        d.displayName = QStringLiteral("Case");
        d.category = CategoryFormat;
        d.flags
            = TransformDescriptor::ChangesValuesOnly | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Change the case in the selected column(s).");
        d.keywords = QStringList {
            QStringLiteral("upper"),    QStringLiteral("lower"),      QStringLiteral("title"),
            QStringLiteral("sentence"), QStringLiteral("capitalise"), QStringLiteral("capitalize"),
            QStringLiteral("camel"),    QStringLiteral("kebab"),      QStringLiteral("snake"),
            QStringLiteral("invert"),   QStringLiteral("letters")};
        d.create = createTransform<TransformCase>;
        return d;
    }();
    return descriptor;
}

QStringList TransformCase::caseNames()
{
    return {QStringLiteral("Lower case"),       QStringLiteral("Upper case"),
            QStringLiteral("Title case"),       QStringLiteral("Sentence case"),
            QStringLiteral("Lower camel case"), QStringLiteral("Upper camel case"),
            QStringLiteral("Kebab case"),       QStringLiteral("Snake case"),
            QStringLiteral("Inverted case")};
}

void TransformCase::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    addParameter(CellRules::createColumnsParameter(
        input, QStringLiteral("Select the column(s) whose case you want to change.")));

    const QStringList names = caseNames();
    QStringList examples {QStringLiteral("E.g:")};
    for (int i = 0; i < names.size(); ++i)
        examples.append(
            QStringLiteral("%1 -> %2").arg(names.at(i), convertCase(names.at(i), i, false)));
    auto *caseOption = new Parameter(ParameterType::Selection, QStringLiteral("Case"),
                                     QStringLiteral("Case"), names.first(), names);
    caseOption->setToolTip(examples.join(QLatin1Char('\n')));
    applyRememberedValue(useRemembered, caseOption);
    addParameter(caseOption);

    auto *keepUpper = new Parameter(ParameterType::Bool, QStringLiteral("Keep_Upper"),
                                    QStringLiteral("Keep upper case"), false);
    keepUpper->setToolTip(QStringLiteral(
        "Leave letters that are already upper case as they are, e.g. to keep acronyms."));
    applyRememberedValue(useRemembered, keepUpper);
    addParameter(keepUpper);
}

QList<ParameterState> TransformCase::parameterStates() const
{
    const Parameter *caseOption = parameter(QStringLiteral("Case"));
    const int index = caseOption ? caseOption->toSelectionIndex() : 0;
    return {{QStringLiteral("Keep_Upper"), index == Title || index == Sentence}};
}

Dataset &TransformCase::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                                bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));
    const Parameter *caseOption = &option(QStringLiteral("Case"));
    const Parameter *keepUpperOption = &option(QStringLiteral("Keep_Upper"));

    output = inputDataset(inputs, 0);
    const int caseIndex = caseOption->toSelectionIndex();
    const bool keepUpper
        = (caseIndex == Title || caseIndex == Sentence) && keepUpperOption->toBool();
    const CellRules::Counts counts = CellRules::rewriteCells(
        output, CellRules::selectedColumns(*columnsOption),
        [caseIndex, keepUpper](int, const QString &cell) {
            return convertCase(cell, caseIndex, keepUpper);
        },
        [this](int r, int rowCount) { reportRow(r, rowCount); });
    setResult(cellsChangedText(counts.changed, counts.unchanged));
    return output;
}
