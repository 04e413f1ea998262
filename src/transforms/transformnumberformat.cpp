#include "transforms/transformnumberformat.h"

const TransformDescriptor &TransformNumberFormat::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 35;
        d.typeName = QStringLiteral("Num_Format");
        d.displayName = QStringLiteral("Num Format");
        d.category = CategoryFormat;
        d.flags = TransformDescriptor::ChangesValuesOnly;
        d.description = QStringLiteral("Change the number format in the selected column(s).");
        d.create = createTransform<TransformNumberFormat>;
        return d;
    }();
    return descriptor;
}

void TransformNumberFormat::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformNumberFormat::process(Dataset &output, const TransformInputs &,
                                        const RunContext &, bool &)
{
    output = Dataset();
    return output;
}
