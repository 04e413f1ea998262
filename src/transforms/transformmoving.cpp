#include "transforms/transformmoving.h"

const TransformDescriptor &TransformMoving::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 30;
        d.typeName = QStringLiteral("Moving");
        d.displayName = QStringLiteral("Moving");
        d.category = CategoryColumn;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral("Add a new column with a moving "
                                       "average/median/sum/min/max/range of the selected column.");
        d.create = createTransform<TransformMoving>;
        return d;
    }();
    return descriptor;
}

void TransformMoving::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformMoving::process(Dataset &output, const TransformInputs &, const RunContext &,
                                  bool &)
{
    output = Dataset();
    return output;
}
