#pragma once

#include "transforms/framework/transform.h"

// Makes every combination of one row from each input (the Cartesian product).
class TransformCross : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
