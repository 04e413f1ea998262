#include "transforms/transformcalculate.h"

const TransformDescriptor &TransformCalculate::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 0;
        d.typeName = QStringLiteral("Calculate");
        d.displayName = QStringLiteral("Calculate");
        d.category = CategoryColumn;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::UsesDateFormats;
        d.description
            = QStringLiteral("Perform calculations on 1 or 2 columns to create a new column.");
        d.create = createTransform<TransformCalculate>;
        return d;
    }();
    return descriptor;
}

void TransformCalculate::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformCalculate::process(Dataset &output, const TransformInputs &, const RunContext &,
                                     bool &)
{
    output = Dataset();
    return output;
}
