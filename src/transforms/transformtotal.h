#pragma once

#include "transforms/framework/transform.h"

// Appends a running total of one column, either over all rows or kept apart for each value
// of a second column.
class TransformTotal : public Transform
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
