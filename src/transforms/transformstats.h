#pragma once

#include "transforms/framework/transform.h"

// Adds a statistic of the chosen columns as a row, a column or both.
class TransformStats : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
