#include "transforms/transformrenamecols.h"

#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"

const TransformDescriptor &TransformRenameCols::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 44;
        d.typeName = QStringLiteral("Rename_Cols");
        d.displayName = QStringLiteral("Rename Cols");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Rename column headers.");
        d.keywords = QStringList {QStringLiteral("names"),    QStringLiteral("headers"),
                                  QStringLiteral("headings"), QStringLiteral("titles"),
                                  QStringLiteral("labels"),   QStringLiteral("rename")};
        d.create = createTransform<TransformRenameCols>;
        return d;
    }();
    return descriptor;
}

void TransformRenameCols::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    auto *renames = new Parameter(ParameterType::RenameColumns, QStringLiteral("RenameColumns"),
                                  QStringLiteral("Rename columns"), inputs.value(0));
    renames->setToolTip(QStringLiteral("Type a new name beside each column you want to rename."));
    addParameter(renames);
}

Dataset &TransformRenameCols::process(Dataset &output, const TransformInputs &inputs,
                                      const RunContext &, bool &)
{
    const Parameter *renamesOption = &option(QStringLiteral("RenameColumns"));

    output = inputDataset(inputs, 0);
    const ColumnRenames renames = renamesOption->toRenameColumns();
    QStringList names = output.headers();
    int renamed = 0;
    for (auto it = renames.constBegin(); it != renames.constEnd(); ++it) {
        const int c = output.columnIndex(it.key());
        if (c < 0 || names.at(c) == it.value())
            continue;
        names[c] = it.value();
        ++renamed;
    }
    if (renamed == 0) {
        setResult(QStringLiteral("No changes"));
        return output;
    }
    output.setHeader(names);

    // Names that now repeat, each once, in the order of their first column.
    QHash<QString, int> counts;
    for (const QString &name : qAsConst(names))
        ++counts[name];
    for (const QString &name : qAsConst(names)) {
        const int count = counts.value(name);
        if (count > 1) {
            addWarning(QStringLiteral("%1 columns named '%2'").arg(QString::number(count), name));
            counts.remove(name);
        }
    }
    setResult(QStringLiteral("%1 renamed").arg(ColumnNames::countedCols(renamed)));
    return output;
}
