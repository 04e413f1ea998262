#include "transforms/transformimpute.h"

const TransformDescriptor &TransformImpute::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 23;
        d.typeName = QStringLiteral("Impute");
        d.displayName = QStringLiteral("Impute");
        d.category = CategoryOther;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly;
        d.description = QStringLiteral("Infer values of missing data.");
        d.create = createTransform<TransformImpute>;
        return d;
    }();
    return descriptor;
}

void TransformImpute::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformImpute::process(Dataset &output, const TransformInputs &, const RunContext &,
                                  bool &)
{
    output = Dataset();
    return output;
}
