#pragma once

#include "transforms/framework/transform.h"

// Lists what differs between two datasets, aligned by row number or by a key.
class TransformDiff : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
