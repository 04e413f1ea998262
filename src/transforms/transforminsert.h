#pragma once

#include "transforms/framework/transform.h"

// Puts a text before or after each cell of the chosen columns. The text may hold column
// variables, filled in from each row.
class TransformInsert : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
