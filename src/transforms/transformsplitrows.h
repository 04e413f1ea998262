#pragma once

#include "transforms/framework/transform.h"

// Turns a wide table into a long one: the columns that repeat a group (such as "Q1 Sales",
// "Q2 Sales") are stacked, so that each input row becomes one row per group, with the other
// columns repeated in each.
class TransformSplitRows : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
