#include "transforms/transformcase.h"

#include "data/valueinterpretation.h"
#include "graph/node.h"
#include "transforms/cellrules.h"
#include "transforms/framework/parameter.h"

namespace {

enum CaseIndex { Title = 2, Sentence = 3 };

} // namespace

QStringList TransformCase::caseNames()
{
    return {QStringLiteral("Lower case"),       QStringLiteral("Upper case"),
            QStringLiteral("Title case"),       QStringLiteral("Sentence case"),
            QStringLiteral("Lower camel case"), QStringLiteral("Upper camel case"),
            QStringLiteral("Kebab case"),       QStringLiteral("Snake case"),
            QStringLiteral("Inverted case")};
}

QSet<QString> TransformCase::keywords() const
{
    QSet<QString> words = Transform::keywords();
    words << QStringLiteral("upper") << QStringLiteral("lower") << QStringLiteral("title")
          << QStringLiteral("sentence") << QStringLiteral("capitalise")
          << QStringLiteral("capitalize") << QStringLiteral("camel") << QStringLiteral("kebab")
          << QStringLiteral("snake") << QStringLiteral("invert") << QStringLiteral("letters");
    return words;
}

void TransformCase::createParameters(const QList<Node *> &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    Node *input = inputs.value(0);

    addParameter(CellRules::createColumnsParameter(
        input, QStringLiteral("Select the column(s) whose case you want to change.")));

    const QStringList names = caseNames();
    QStringList examples{QStringLiteral("E.g:")};
    for (int i = 0; i < names.size(); ++i)
        examples.append(
            QStringLiteral("%1 -> %2").arg(names.at(i), convertCase(names.at(i), i, false)));
    auto *caseOption = new Parameter(ParameterType::Selection, QStringLiteral("Case"), QStringLiteral("Case"),
                                     names.first(), names);
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

Dataset &TransformCase::process(Dataset &output, const QList<Node *> &inputs, bool &)
{
    if (inputs.size() != 1)
        return output;
    const Parameter *columnsOption = parameter(QStringLiteral("Columns"));
    const Parameter *caseOption = parameter(QStringLiteral("Case"));
    const Parameter *keepUpperOption = parameter(QStringLiteral("Keep_Upper"));
    if (!columnsOption || !caseOption || !keepUpperOption) {
        setResult(failureText());
        return output;
    }

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
