#include "transforms/transformuuid.h"

#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"

#include <QUuid>

const TransformDescriptor &TransformUUID::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 72;
        d.typeName = QStringLiteral("UUID");
        d.displayName = QStringLiteral("UUID");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::Advanced;
        d.description
            = QStringLiteral("Add a new column, filled with Universally Unique Identifiers.");
        d.keywords
            = QStringLiteral("guid identifiers ids keys unique random").split(QLatin1Char(' '));
        d.create = createTransform<TransformUUID>;
        return d;
    }();
    return descriptor;
}

QStringList TransformUUID::formatNames()
{
    return {QStringLiteral("Standard"), QStringLiteral("Without braces"),
            QStringLiteral("Without braces or dashes")};
}

void TransformUUID::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    auto *name = new Parameter(ParameterType::Text, QStringLiteral("New_Name"),
                               QStringLiteral("New column name"), QStringLiteral("UUID"));
    name->setToolTip(QStringLiteral("The name for the new column."));
    applyRememberedValue(useRemembered, name);
    addParameter(name);

    const QStringList formats = formatNames();
    auto *format = new Parameter(ParameterType::Selection, QStringLiteral("Format"),
                                 QStringLiteral("Format"), formats.first(), formats);
    format->setToolTip(QStringLiteral("Format of the UUIDs."));
    applyRememberedValue(useRemembered, format);
    addParameter(format);
}

Dataset &TransformUUID::process(Dataset &output, const TransformInputs &inputs,
                                const RunContext &context, bool &)
{
    static const QUuid::StringFormat formats[]
        = {QUuid::WithBraces, QUuid::WithoutBraces, QUuid::Id128};
    const int formatIndex = option(QStringLiteral("Format")).toSelectionIndex();
    const QUuid::StringFormat format = formats[qBound(0, formatIndex, 2)];

    output = inputDataset(inputs, 0);
    const int c
        = ColumnNames::appendNamedColumn(output, option(QStringLiteral("New_Name")).toString());
    const int rowCount = output.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        output.setCell(r, c, QUuid::createUuid().toString(format));
    }
    setResult(QStringLiteral("1 col added"));
    return output;
}
