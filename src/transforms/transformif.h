#pragma once

#include "transforms/framework/transform.h"

// Adds a column whose value in each row comes from the first branch of conditions that the
// row meets, or from the else value.
class TransformIf : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
