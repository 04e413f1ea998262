#pragma once

#include "transforms/framework/transform.h"

// Appends a column that holds the same text in every row, such as a constant for a later
// join or a marker of where the rows came from.
class TransformNewCol : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
