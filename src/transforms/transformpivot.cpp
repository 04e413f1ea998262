#include "transforms/transformpivot.h"

const TransformDescriptor &TransformPivot::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 39;
        d.typeName = QStringLiteral("Pivot");
        d.displayName = QStringLiteral("Pivot");
        d.category = CategoryAnalysis;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::KeepsSourceRows;
        d.description = QStringLiteral("Create a pivot table to summarize the selected columns.");
        d.create = createTransform<TransformPivot>;
        return d;
    }();
    return descriptor;
}

void TransformPivot::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformPivot::process(Dataset &output, const TransformInputs &, const RunContext &,
                                 bool &)
{
    output = Dataset();
    return output;
}
