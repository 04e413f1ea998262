#pragma once

#include "transforms/framework/transform.h"

// Shifts the values of the chosen columns a number of rows down or up, the other columns
// staying put: a column of previous (or next) values beside the current ones. Values pushed
// out at one end either come back at the other or are lost, the gap taking a fixed value.
class TransformOffset : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
