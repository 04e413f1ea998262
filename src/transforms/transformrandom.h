#pragma once

#include "transforms/framework/transform.h"

// Adds a column of reproducible pseudo-random integers, reals, dates or texts.
class TransformRandom : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
