#include "transforms/transformpseudonym.h"

const TransformDescriptor &TransformPseudonym::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 40;
        d.typeName = QStringLiteral("Pseudonym");
        d.displayName = QStringLiteral("Pseudonym");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::Advanced;
        d.description
            = QStringLiteral("Add a new column with pseudonymised values for the selected column.");
        d.create = createTransform<TransformPseudonym>;
        return d;
    }();
    return descriptor;
}

void TransformPseudonym::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformPseudonym::process(Dataset &output, const TransformInputs &, const RunContext &,
                                     bool &)
{
    output = Dataset();
    return output;
}
