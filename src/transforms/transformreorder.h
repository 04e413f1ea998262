#pragma once

#include "transforms/framework/transform.h"

// Moves columns: those named in the option first, in its order, then the rest in input order,
// so that columns added upstream later arrive at the end. Names and ids move with the cells.
class TransformReorder : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
