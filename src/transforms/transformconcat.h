#pragma once

#include "transforms/framework/transform.h"

// Appends a column whose cells join the cells of the chosen columns with a delimiter, empty
// cells left out unless asked for.
class TransformConcat : public Transform
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
