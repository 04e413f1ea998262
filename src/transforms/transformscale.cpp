#include "transforms/transformscale.h"

const TransformDescriptor &TransformScale::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 51;
        d.typeName = QStringLiteral("Scale");
        d.displayName = QStringLiteral("Scale");
        d.category = CategoryFormat;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly;
        d.description = QStringLiteral("Scale numeric values, e.g. to a percentage or 0 to 1.");
        d.create = createTransform<TransformScale>;
        return d;
    }();
    return descriptor;
}

void TransformScale::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformScale::process(Dataset &output, const TransformInputs &, const RunContext &,
                                 bool &)
{
    output = Dataset();
    return output;
}
