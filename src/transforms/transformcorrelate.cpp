#include "transforms/transformcorrelate.h"

const TransformDescriptor &TransformCorrelate::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 9;
        d.typeName = QStringLiteral("Correlate");
        d.displayName = QStringLiteral("Correlate");
        d.category = CategoryAnalysis;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral("Calculate the correlation of 2 or more pairs of columns.");
        d.create = createTransform<TransformCorrelate>;
        return d;
    }();
    return descriptor;
}

void TransformCorrelate::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformCorrelate::process(Dataset &output, const TransformInputs &, const RunContext &,
                                     bool &)
{
    output = Dataset();
    return output;
}
