#pragma once

#include "transforms/framework/transform.h"

// Turns the chosen columns into rows of a key column (the column's name) and a value column
// (its cell): a wide table made long, one row per input row and chosen column.
class TransformGather : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
