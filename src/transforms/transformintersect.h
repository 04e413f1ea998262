#pragma once

#include "transforms/framework/transform.h"

// Keeps the rows of the top dataset whose key text also occurs in the bottom dataset.
class TransformIntersect : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    bool autoConfigure(const ColumnSources &inputs) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
