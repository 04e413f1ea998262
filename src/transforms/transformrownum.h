#pragma once

#include "transforms/framework/transform.h"

// Appends a column that numbers the rows: from a start, by an increment, with several rows
// sharing a number when asked to.
class TransformRowNum : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
