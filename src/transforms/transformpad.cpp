#include "transforms/transformpad.h"

#include "transforms/cellrules.h"
#include "transforms/framework/parameter.h"

const TransformDescriptor &TransformPad::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 38;
        d.typeName = QStringLiteral("Pad");
        d.displayName = QStringLiteral("Pad");
        d.category = CategoryFormat;
        d.flags
            = TransformDescriptor::ChangesValuesOnly | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Pad the selected column(s) to a fixed length.");
        d.keywords = QStringList {
            QStringLiteral("padding"), QStringLiteral("fill"),     QStringLiteral("zeros"),
            QStringLiteral("leading"), QStringLiteral("trailing"), QStringLiteral("length"),
            QStringLiteral("justify"), QStringLiteral("align"),    QStringLiteral("width")};
        d.create = createTransform<TransformPad>;
        return d;
    }();
    return descriptor;
}

QString TransformPad::pad(const QString &text, int length, bool left, QChar with)
{
    if (text.size() >= length)
        return text;
    const QString padding(length - text.size(), with);
    return left ? QString(padding + text) : QString(text + padding);
}

void TransformPad::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(CellRules::createColumnsParameter(
        inputs.value(0), QStringLiteral("Select the column(s) you want to pad.")));

    auto *length
        = new Parameter(ParameterType::Int, QStringLiteral("Length"), QStringLiteral("Length"), 10);
    length->setMinimumInt(0);
    length->setToolTip(QStringLiteral("The minimum length after padding.\nValues that are "
                                      "already this long or longer are left unchanged."));
    applyRememberedValue(useRemembered, length);
    addParameter(length);

    const QStringList sides {QStringLiteral("Left"), QStringLiteral("Right")};
    auto *side = new Parameter(ParameterType::Selection, QStringLiteral("Left_Right"),
                               QStringLiteral("Pad on"), sides.first(), sides);
    side->setToolTip(QStringLiteral("Which end of the value to add the padding to."));
    applyRememberedValue(useRemembered, side);
    addParameter(side);

    auto *with = new Parameter(ParameterType::Char, QStringLiteral("Pad_With"),
                               QStringLiteral("Pad with"), '0');
    with->setToolTip(QStringLiteral("The character to pad with."));
    applyRememberedValue(useRemembered, with);
    addParameter(with);
}

Dataset &TransformPad::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                               bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));
    const Parameter *lengthOption = &option(QStringLiteral("Length"));
    const Parameter *sideOption = &option(QStringLiteral("Left_Right"));
    const Parameter *withOption = &option(QStringLiteral("Pad_With"));

    output = inputDataset(inputs, 0);
    const QList<int> columns = CellRules::selectedColumns(*columnsOption);
    const int length = lengthOption->toInt();
    const bool left = sideOption->toSelectionIndex() == 0;
    const QChar with = withOption->toChar();
    // A null character is an unset option, which the run engine reports; padding with it
    // would put invisible characters into the cells.
    const QList<int> padded = with.isNull() ? QList<int>() : columns;
    const CellRules::Counts counts = CellRules::rewriteCells(
        output, padded, [=](int, const QString &cell) { return pad(cell, length, left, with); },
        [this](int r, int rowCount) { reportRow(r, rowCount); });
    setResult(cellsChangedText(counts.changed, counts.unchanged));
    return output;
}
