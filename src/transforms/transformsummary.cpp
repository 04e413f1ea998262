#include "transforms/transformsummary.h"

const TransformDescriptor &TransformSummary::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 65;
        d.typeName = QStringLiteral("Summary");
        d.displayName = QStringLiteral("Summary");
        d.category = CategoryAnalysis;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::UsesDateFormats;
        d.description = QStringLiteral("Summarise the values of the selected columns.");
        d.create = createTransform<TransformSummary>;
        return d;
    }();
    return descriptor;
}

void TransformSummary::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformSummary::process(Dataset &output, const TransformInputs &, const RunContext &,
                                   bool &)
{
    output = Dataset();
    return output;
}
