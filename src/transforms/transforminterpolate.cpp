#include "transforms/transforminterpolate.h"

const TransformDescriptor &TransformInterpolate::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 26;
        d.typeName = QStringLiteral("Interpolate");
        d.displayName = QStringLiteral("Interpolate");
        d.category = CategoryMerge;
        d.minimumInputs = 2;
        d.maximumInputs = 2;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral("Create a new column in the top dataset by interpolating "
                                       "numerical values in the bottom dataset.");
        d.create = createTransform<TransformInterpolate>;
        return d;
    }();
    return descriptor;
}

void TransformInterpolate::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformInterpolate::process(Dataset &output, const TransformInputs &, const RunContext &,
                                       bool &)
{
    output = Dataset();
    return output;
}
