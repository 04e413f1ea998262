#include "transforms/transformstats.h"

const TransformDescriptor &TransformStats::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 62;
        d.typeName = QStringLiteral("Stats");
        d.displayName = QStringLiteral("Stats");
        d.category = CategoryAnalysis;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral("Calculate statistics from the selected column(s).");
        d.create = createTransform<TransformStats>;
        return d;
    }();
    return descriptor;
}

void TransformStats::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformStats::process(Dataset &output, const TransformInputs &, const RunContext &,
                                 bool &)
{
    output = Dataset();
    return output;
}
