#include "transforms/transformunique.h"

const TransformDescriptor &TransformUnique::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 70;
        d.typeName = QStringLiteral("Unique");
        d.displayName = QStringLiteral("Unique");
        d.category = CategoryRow;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::KeepsSourceRows;
        d.description
            = QStringLiteral("Aggregate rows that have matching values in selected column(s).");
        d.create = createTransform<TransformUnique>;
        return d;
    }();
    return descriptor;
}

void TransformUnique::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformUnique::process(Dataset &output, const TransformInputs &, const RunContext &,
                                  bool &)
{
    output = Dataset();
    return output;
}
