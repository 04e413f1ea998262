#include "transforms/transformoutliers.h"

const TransformDescriptor &TransformOutliers::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 37;
        d.typeName = QStringLiteral("Outliers");
        d.displayName = QStringLiteral("Outliers");
        d.category = CategoryOther;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly;
        d.description = QStringLiteral("Find outlier numerical values.");
        d.create = createTransform<TransformOutliers>;
        return d;
    }();
    return descriptor;
}

void TransformOutliers::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformOutliers::process(Dataset &output, const TransformInputs &, const RunContext &,
                                    bool &)
{
    output = Dataset();
    return output;
}
