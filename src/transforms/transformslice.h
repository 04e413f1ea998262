#pragma once

#include "transforms/framework/transform.h"

// Keeps or removes one continuous section of rows, bounded by the start or the end of the
// table or by the first, next or last row that meets a condition.
class TransformSlice : public Transform
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
