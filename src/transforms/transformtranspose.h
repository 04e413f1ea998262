#pragma once

#include "transforms/framework/transform.h"

// Swaps rows and columns; the input's header, when it has one, becomes the first column, and
// the first row may become the output's header.
class TransformTranspose : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
