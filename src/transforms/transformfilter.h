#pragma once

#include "transforms/framework/transform.h"

// Keeps or removes the rows whose cells meet a list of conditions, each on one column or on
// every column, joined by all or any.
class TransformFilter : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
