#pragma once

#include "transforms/framework/transform.h"

// Adds a column saying whether two columns' values compare as the chosen operator says.
class TransformCompare : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
