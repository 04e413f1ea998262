#include "transforms/transformclone.h"

const TransformDescriptor &TransformClone::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 3;
        d.typeName = QStringLiteral("Clone");
        d.displayName = QStringLiteral("Clone");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral(
            "Make an identical copy. Can be useful to improve the Center pane layout.");
        d.keywords = QStringList {QStringLiteral("copy"), QStringLiteral("duplicate"),
                                  QStringLiteral("layout")};
        d.create = createTransform<TransformClone>;
        return d;
    }();
    return descriptor;
}

Dataset &TransformClone::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                                 bool &)
{
    output = inputDataset(inputs, 0);
    return output;
}
