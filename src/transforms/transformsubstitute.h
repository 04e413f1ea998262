#pragma once

#include "transforms/framework/transform.h"

// Adds a column whose cell in each row is a text with the row's values put in for its
// column variables: a template filled from every row.
class TransformSubstitute : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
