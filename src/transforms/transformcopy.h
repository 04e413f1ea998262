#pragma once

#include "transforms/framework/transform.h"

// Appends copies of the chosen columns at the end, names and all, so that a column can be
// changed downstream while its original is kept.
class TransformCopy : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
