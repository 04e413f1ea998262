#pragma once

#include "transforms/framework/transform.h"

// Groups rows whose texts are alike, by terms the user gives or terms searched from the data.
class TransformCluster : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
