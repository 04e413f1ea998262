#include "transforms/transformhash.h"

const TransformDescriptor &TransformHash::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 20;
        d.typeName = QStringLiteral("Hash");
        d.displayName = QStringLiteral("Hash");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly;
        d.description = QStringLiteral("Perform a one-way hashing.");
        d.create = createTransform<TransformHash>;
        return d;
    }();
    return descriptor;
}

void TransformHash::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformHash::process(Dataset &output, const TransformInputs &, const RunContext &,
                                bool &)
{
    output = Dataset();
    return output;
}
