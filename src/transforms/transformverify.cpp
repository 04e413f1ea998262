#include "transforms/transformverify.h"

const TransformDescriptor &TransformVerify::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 73;
        d.typeName = QStringLiteral("Verify");
        d.displayName = QStringLiteral("Verify");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::KeepsIssues;
        d.description = QStringLiteral("Verify that values in the dataset are as expected.");
        d.create = createTransform<TransformVerify>;
        return d;
    }();
    return descriptor;
}

void TransformVerify::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformVerify::process(Dataset &output, const TransformInputs &, const RunContext &,
                                  bool &)
{
    output = Dataset();
    return output;
}
