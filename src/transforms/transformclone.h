#pragma once

#include "transforms/framework/transform.h"

// An identical copy of its input; useful to tidy the layout of a graph.
class TransformClone : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
