#include "transforms/transformrownum.h"

#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"

const TransformDescriptor &TransformRowNum::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 49;
        d.typeName = QStringLiteral("Row_Num");
        d.displayName = QStringLiteral("Row Num");
        d.category = CategoryRow;
        d.flags = TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Add a new column with the row number.");
        d.keywords = QStringList {QStringLiteral("number"),   QStringLiteral("numbering"),
                                  QStringLiteral("index"),    QStringLiteral("counter"),
                                  QStringLiteral("sequence"), QStringLiteral("columns"),
                                  QStringLiteral("id")};
        d.create = createTransform<TransformRowNum>;
        return d;
    }();
    return descriptor;
}

void TransformRowNum::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    auto *newName = new Parameter(ParameterType::Text, QStringLiteral("New_Name"),
                                  QStringLiteral("New column name"), displayName());
    newName->setToolTip(QStringLiteral("The name for the new column."));
    applyRememberedValue(useRemembered, newName);
    addParameter(newName);

    auto *startAt = new Parameter(ParameterType::Int, QStringLiteral("Start_At"),
                                  QStringLiteral("Start at"), 1);
    startAt->setMinimumInt(-999999999);
    startAt->setToolTip(QStringLiteral("The number of the first row."));
    applyRememberedValue(useRemembered, startAt);
    addParameter(startAt);

    auto *increment = new Parameter(ParameterType::Int, QStringLiteral("Increment"),
                                    QStringLiteral("Increment"), 1);
    increment->setMinimumInt(-999999999);
    increment->setToolTip(QStringLiteral("The amount added to the number at each step."));
    applyRememberedValue(useRemembered, increment);
    addParameter(increment);

    auto *every
        = new Parameter(ParameterType::Int, QStringLiteral("Every"), QStringLiteral("Every"), 1);
    every->setMinimumInt(1);
    every->setSuffix(QStringLiteral(" row(s)"));
    every->setToolTip(QStringLiteral("The number of rows that share a number."));
    applyRememberedValue(useRemembered, every);
    addParameter(every);
}

Dataset &TransformRowNum::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &, bool &)
{
    const Parameter *newNameOption = &option(QStringLiteral("New_Name"));
    const Parameter *startAtOption = &option(QStringLiteral("Start_At"));
    const Parameter *incrementOption = &option(QStringLiteral("Increment"));
    const Parameter *everyOption = &option(QStringLiteral("Every"));

    output = inputDataset(inputs, 0);
    const qint64 startAt = startAtOption->toInt();
    const qint64 increment = incrementOption->toInt();
    // A document may hold 0 although the option's minimum is 1.
    const int every = qMax(1, everyOption->toInt());
    const int c = ColumnNames::appendNamedColumn(output, newNameOption->toString());
    const int rowCount = output.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        output.setCell(r, c, QString::number(startAt + qint64(r / every) * increment));
    }
    setResult(QStringLiteral("%1 numbered").arg(ColumnNames::countedRows(rowCount)));
    return output;
}
