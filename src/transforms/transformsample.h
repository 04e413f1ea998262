#pragma once

#include "transforms/framework/transform.h"

// Keeps a given number of rows: the first, the last, evenly spaced, or drawn at random in a
// way that the seed makes repeatable.
class TransformSample : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    static QStringList spreadNames();
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
