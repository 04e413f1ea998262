#pragma once

#include "transforms/framework/transform.h"

// Looks up each sample of the top dataset among the points of the bottom one.
class TransformInterpolate : public Transform
{
    Q_OBJECT

public:
    enum Type { Piecewise = 0, Linear = 1 };

    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    void connectParameters(ColumnSources inputs) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
