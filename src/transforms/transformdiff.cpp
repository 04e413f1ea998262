#include "transforms/transformdiff.h"

const TransformDescriptor &TransformDiff::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 15;
        d.typeName = QStringLiteral("Difference");
        d.displayName = QStringLiteral("Difference");
        d.category = CategoryAnalysis;
        d.minimumInputs = 2;
        d.maximumInputs = 2;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral("Show the differences between 2 datasets.");
        d.create = createTransform<TransformDiff>;
        return d;
    }();
    return descriptor;
}

void TransformDiff::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformDiff::process(Dataset &output, const TransformInputs &, const RunContext &,
                                bool &)
{
    output = Dataset();
    return output;
}
