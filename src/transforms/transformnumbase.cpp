#include "transforms/transformnumbase.h"

const TransformDescriptor &TransformNumBase::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 34;
        d.typeName = QStringLiteral("Num_Base");
        d.displayName = QStringLiteral("Num Base");
        d.category = CategoryFormat;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly;
        d.description = QStringLiteral(
            "Change the number base of integer values, e.g. decimal to hexadecimal.");
        d.create = createTransform<TransformNumBase>;
        return d;
    }();
    return descriptor;
}

void TransformNumBase::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformNumBase::process(Dataset &output, const TransformInputs &, const RunContext &,
                                   bool &)
{
    output = Dataset();
    return output;
}
