#pragma once

#include "transforms/framework/transform.h"

// Removes rows of the top dataset whose key text occurs in the bottom dataset: every such row,
// or one row per bottom occurrence counted from the first or the last row.
class TransformSubtract : public Transform
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
