#pragma once

#include "transforms/framework/transform.h"

// Scores the numbers of a column and acts on those past a threshold.
class TransformOutliers : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
