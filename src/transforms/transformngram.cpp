#include "transforms/transformngram.h"

const TransformDescriptor &TransformNgram::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 33;
        d.typeName = QStringLiteral("Ngram");
        d.displayName = QStringLiteral("Ngram");
        d.category = CategoryAnalysis;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::KeepsSourceRows;
        d.description
            = QStringLiteral("Count sequences of N consecutive words in the selected column.");
        d.create = createTransform<TransformNgram>;
        return d;
    }();
    return descriptor;
}

void TransformNgram::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformNgram::process(Dataset &output, const TransformInputs &, const RunContext &,
                                 bool &)
{
    output = Dataset();
    return output;
}
