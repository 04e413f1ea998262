#include "transforms/transformunits.h"

const TransformDescriptor &TransformUnits::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 71;
        d.typeName = QStringLiteral("Units");
        d.displayName = QStringLiteral("Units");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly;
        d.description = QStringLiteral("Change units of time, length, temperature etc.");
        d.create = createTransform<TransformUnits>;
        return d;
    }();
    return descriptor;
}

void TransformUnits::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformUnits::process(Dataset &output, const TransformInputs &, const RunContext &,
                                 bool &)
{
    output = Dataset();
    return output;
}
