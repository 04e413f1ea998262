#include "transforms/transformrandom.h"

const TransformDescriptor &TransformRandom::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 41;
        d.typeName = QStringLiteral("Random");
        d.displayName = QStringLiteral("Random");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral("Add a new column filled with pseudo-random values.");
        d.create = createTransform<TransformRandom>;
        return d;
    }();
    return descriptor;
}

void TransformRandom::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformRandom::process(Dataset &output, const TransformInputs &, const RunContext &,
                                  bool &)
{
    output = Dataset();
    return output;
}
