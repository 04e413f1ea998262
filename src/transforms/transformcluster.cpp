#include "transforms/transformcluster.h"

const TransformDescriptor &TransformCluster::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 4;
        d.typeName = QStringLiteral("Cluster");
        d.displayName = QStringLiteral("Cluster");
        d.category = CategoryAnalysis;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral("Classify rows with similar text into clusters.");
        d.create = createTransform<TransformCluster>;
        return d;
    }();
    return descriptor;
}

void TransformCluster::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformCluster::process(Dataset &output, const TransformInputs &, const RunContext &,
                                   bool &)
{
    output = Dataset();
    return output;
}
