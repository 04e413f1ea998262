#pragma once

#include "transforms/framework/transform.h"

// Lays the cells of a table out again in reading order over a new number of columns, so that
// the number of rows follows.
class TransformReshape : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
