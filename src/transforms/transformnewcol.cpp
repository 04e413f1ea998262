#include "transforms/transformnewcol.h"

#include "graph/node.h"
#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"

QSet<QString> TransformNewCol::keywords() const
{
    QSet<QString> words = Transform::keywords();
    words << QStringLiteral("add") << QStringLiteral("insert") << QStringLiteral("constant")
          << QStringLiteral("fill") << QStringLiteral("value") << QStringLiteral("columns");
    return words;
}

void TransformNewCol::createParameters(const QList<Node *> &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    auto *newName = new Parameter(ParameterType::Text, QStringLiteral("New_Name"),
                                  QStringLiteral("New column name"), displayName());
    newName->setToolTip(QStringLiteral("The name for the new column."));
    applyRememberedValue(useRemembered, newName);
    addParameter(newName);

    auto *newValue = new Parameter(ParameterType::Text, QStringLiteral("New_Value"),
                                   QStringLiteral("New column value"), QString());
    newValue->setToolTip(QStringLiteral("The value to put in every row of the new column."));
    newValue->setTextRequired(false);
    applyRememberedValue(useRemembered, newValue);
    addParameter(newValue);
}

Dataset &TransformNewCol::process(Dataset &output, const QList<Node *> &inputs, bool &)
{
    if (inputs.size() != 1)
        return output;
    const Parameter *newNameOption = parameter(QStringLiteral("New_Name"));
    const Parameter *newValueOption = parameter(QStringLiteral("New_Value"));
    if (!newNameOption || !newValueOption) {
        setResult(failureText());
        return output;
    }

    output = inputDataset(inputs, 0);
    const QString value = newValueOption->toString();
    const int c = ColumnNames::appendNamedColumn(output, newNameOption->toString());
    // The new cells are already empty, so an empty value needs no pass over the rows.
    if (!value.isEmpty()) {
        const int rowCount = output.rowCount();
        for (int r = 0; r < rowCount; ++r) {
            reportRow(r, rowCount);
            output.setCell(r, c, value);
        }
    }
    setResult(QStringLiteral("1 col added"));
    return output;
}
