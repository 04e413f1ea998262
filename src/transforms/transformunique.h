#pragma once

#include "transforms/framework/transform.h"

// Groups rows on key columns and aggregates the others: one output row per group, in the
// order of the groups' first rows.
class TransformUnique : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    // Maximum and Minimum compare dates in a column of dates.
    bool usesDateFormats() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
