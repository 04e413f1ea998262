#include "transforms/transformcompare.h"

const TransformDescriptor &TransformCompare::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 5;
        d.typeName = QStringLiteral("Compare_Cols");
        d.displayName = QStringLiteral("Compare Cols");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::UsesDateFormats;
        d.description = QStringLiteral("Compare the values of two columns.");
        d.create = createTransform<TransformCompare>;
        return d;
    }();
    return descriptor;
}

void TransformCompare::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformCompare::process(Dataset &output, const TransformInputs &, const RunContext &,
                                   bool &)
{
    output = Dataset();
    return output;
}
