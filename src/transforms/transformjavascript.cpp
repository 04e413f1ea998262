#include "transforms/transformjavascript.h"

const TransformDescriptor &TransformJavascript::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 27;
        d.typeName = QStringLiteral("Javascript");
        d.displayName = QStringLiteral("Javascript");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral("Script your own custom transform in Javascript.");
        d.create = createTransform<TransformJavascript>;
        return d;
    }();
    return descriptor;
}

void TransformJavascript::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformJavascript::process(Dataset &output, const TransformInputs &, const RunContext &,
                                      bool &)
{
    output = Dataset();
    return output;
}
