#include "transforms/transformnewcol.h"

#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"

const TransformDescriptor &TransformNewCol::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 31;
        d.typeName = QStringLiteral("New_Col");
        d.displayName = QStringLiteral("New Col");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Add a new column filled with a specified value.");
        d.keywords = QStringList {QStringLiteral("add"),      QStringLiteral("insert"),
                                  QStringLiteral("constant"), QStringLiteral("fill"),
                                  QStringLiteral("value"),    QStringLiteral("columns")};
        d.create = createTransform<TransformNewCol>;
        return d;
    }();
    return descriptor;
}

void TransformNewCol::createParameters(const ColumnSources &inputs, bool useRemembered)
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

Dataset &TransformNewCol::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &, bool &)
{
    const Parameter *newNameOption = &option(QStringLiteral("New_Name"));
    const Parameter *newValueOption = &option(QStringLiteral("New_Value"));

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
