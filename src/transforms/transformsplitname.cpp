#include "transforms/transformsplitname.h"

const TransformDescriptor &TransformSplitName::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 57;
        d.typeName = QStringLiteral("Split_Name");
        d.displayName = QStringLiteral("Split Name");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral("Split a column containing people's names into separate "
                                       "columns for first name, last name etc.");
        d.create = createTransform<TransformSplitName>;
        return d;
    }();
    return descriptor;
}

void TransformSplitName::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformSplitName::process(Dataset &output, const TransformInputs &, const RunContext &,
                                     bool &)
{
    output = Dataset();
    return output;
}
