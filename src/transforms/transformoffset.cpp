#include "transforms/transformoffset.h"

#include "transforms/framework/parameter.h"

namespace {

enum OffsetDirection { OffsetDown = 0, OffsetUp = 1 };

} // namespace

const TransformDescriptor &TransformOffset::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 36;
        d.typeName = QStringLiteral("Offset");
        d.displayName = QStringLiteral("Offset");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly
            | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Offset values up or down in the selected column(s).");
        d.keywords = QStringList {
            QStringLiteral("shift"),    QStringLiteral("lag"),  QStringLiteral("lead"),
            QStringLiteral("previous"), QStringLiteral("next"), QStringLiteral("rotate"),
            QStringLiteral("wrap"),     QStringLiteral("move"), QStringLiteral("rows")};
        d.create = createTransform<TransformOffset>;
        return d;
    }();
    return descriptor;
}

void TransformOffset::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *columns = new Parameter(ParameterType::MultipleColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Columns"), input);
    columns->setToolTip(QStringLiteral("Select the column(s) whose values you want to offset."));
    columns->selectOnlyColumn();
    addParameter(columns);

    auto *amount = new Parameter(ParameterType::Int, QStringLiteral("Offset_Amount"),
                                 QStringLiteral("Offset by"), 1);
    amount->setMinimumInt(0);
    amount->setSuffix(QStringLiteral(" rows"));
    amount->setToolTip(QStringLiteral("The number of rows to move the values by."));
    applyRememberedValue(useRemembered, amount);
    addParameter(amount);

    const QStringList directions {QStringLiteral("Down"), QStringLiteral("Up")};
    auto *direction = new Parameter(ParameterType::Selection, QStringLiteral("Offset_Direction"),
                                    QStringLiteral("Direction"), directions.first(), directions);
    direction->setToolTip(QStringLiteral("The direction to move the values in."));
    applyRememberedValue(useRemembered, direction);
    addParameter(direction);

    auto *wraparound = new Parameter(ParameterType::Bool, QStringLiteral("Wraparound"),
                                     QStringLiteral("Wraparound"), false);
    wraparound->setToolTip(QStringLiteral(
        "Check to move values pushed off one end of the column back in at the other end."));
    applyRememberedValue(useRemembered, wraparound);
    addParameter(wraparound);

    auto *newValue = new Parameter(ParameterType::Text, QStringLiteral("New_Value"),
                                   QStringLiteral("New value"), QString());
    newValue->setTextRequired(false);
    newValue->setToolTip(QStringLiteral("The value for cells left without a value by the offset."));
    applyRememberedValue(useRemembered, newValue);
    addParameter(newValue);
}

QList<ParameterState> TransformOffset::parameterStates() const
{
    const Parameter *wraparound = parameter(QStringLiteral("Wraparound"));
    return {{QStringLiteral("New_Value"), !(wraparound && wraparound->toBool())}};
}

Dataset &TransformOffset::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &, bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));
    const Parameter *amountOption = &option(QStringLiteral("Offset_Amount"));
    const Parameter *directionOption = &option(QStringLiteral("Offset_Direction"));
    const Parameter *wraparoundOption = &option(QStringLiteral("Wraparound"));
    const Parameter *newValueOption = &option(QStringLiteral("New_Value"));

    const Dataset &input = *inputs.first().dataset;
    output = input;
    QList<int> columns;
    columnsOption->toColumnIndexes(&columns, true);
    const qint64 rowCount = input.rowCount();
    qint64 offset = amountOption->toInt();
    if (directionOption->toSelectionIndex() == OffsetUp)
        offset = -offset;
    const bool wraparound = wraparoundOption->toBool();
    const QString newValue = newValueOption->toString();
    if (columns.isEmpty() || offset == 0 || rowCount == 0) {
        setResult(QStringLiteral("No changes"));
        return output;
    }
    if (wraparound)
        offset %= rowCount;

    // The input stays the source throughout, so cells written earlier never feed later ones.
    qint64 changed = 0;
    qint64 unchanged = 0;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, int(rowCount));
        qint64 source = r - offset;
        if (wraparound)
            source = (source % rowCount + rowCount) % rowCount;
        const bool inside = source >= 0 && source < rowCount;
        for (int c : qAsConst(columns)) {
            const QString &value = inside ? input.cell(int(source), c) : newValue;
            if (value == input.cell(r, c)) {
                ++unchanged;
                continue;
            }
            output.setCell(r, c, value);
            ++changed;
        }
    }
    setResult(cellsChangedText(changed, unchanged));
    return output;
}
