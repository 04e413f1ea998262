#pragma once

#include "transforms/framework/transform.h"

// Turns the top rows into the header names, replacing or extending the names there, for files
// whose header spans several lines or comes after a preamble.
class TransformHeader : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
