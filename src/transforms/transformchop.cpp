#include "transforms/transformchop.h"

#include "transforms/cellrules.h"
#include "transforms/framework/parameter.h"

const TransformDescriptor &TransformChop::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 2;
        d.typeName = QStringLiteral("Chop");
        d.displayName = QStringLiteral("Chop");
        d.category = CategoryFormat;
        d.flags
            = TransformDescriptor::ChangesValuesOnly | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral(
            "Remove a number of characters from the start or end of the selected column(s).");
        d.keywords = QStringList {QStringLiteral("remove"), QStringLiteral("characters"),
                                  QStringLiteral("cut"),    QStringLiteral("truncate"),
                                  QStringLiteral("trim"),   QStringLiteral("left"),
                                  QStringLiteral("right"),  QStringLiteral("prefix"),
                                  QStringLiteral("suffix"), QStringLiteral("strip")};
        d.create = createTransform<TransformChop>;
        return d;
    }();
    return descriptor;
}

QString TransformChop::chop(const QString &text, int length, bool fromStart)
{
    if (length <= 0)
        return text;
    const int kept = text.size() - length;
    if (kept <= 0)
        return QString();
    return fromStart ? text.right(kept) : text.left(kept);
}

void TransformChop::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(CellRules::createColumnsParameter(
        inputs.value(0), QStringLiteral("Select the column(s) you want to chop.")));

    auto *length
        = new Parameter(ParameterType::Int, QStringLiteral("Length"), QStringLiteral("Length"), 1);
    length->setMinimumInt(0);
    length->setToolTip(QStringLiteral("The number of characters to remove.\nValues that are "
                                      "not longer than this become empty."));
    applyRememberedValue(useRemembered, length);
    addParameter(length);

    const QStringList ends {QStringLiteral("Start"), QStringLiteral("End")};
    auto *from = new Parameter(ParameterType::Selection, QStringLiteral("From"),
                               QStringLiteral("From"), ends.first(), ends);
    from->setToolTip(QStringLiteral("Which end of the value to remove characters from."));
    applyRememberedValue(useRemembered, from);
    addParameter(from);
}

Dataset &TransformChop::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                                bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));
    const Parameter *lengthOption = &option(QStringLiteral("Length"));
    const Parameter *fromOption = &option(QStringLiteral("From"));

    output = inputDataset(inputs, 0);
    const QList<int> columns = CellRules::selectedColumns(*columnsOption);
    const int length = lengthOption->toInt();
    const bool fromStart = fromOption->toSelectionIndex() == 0;
    const CellRules::Counts counts = CellRules::rewriteCells(
        output, columns, [=](int, const QString &cell) { return chop(cell, length, fromStart); },
        [this](int r, int rowCount) { reportRow(r, rowCount); });
    setResult(cellsChangedText(counts.changed, counts.unchanged));
    return output;
}
