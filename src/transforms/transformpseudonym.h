#pragma once

#include "transforms/framework/transform.h"

// Adds a column giving each distinct value of a column the same stable pseudonym: the prefix
// and a number, the numbers dealt out in an order shuffled by the seed.
class TransformPseudonym : public Transform
{
    Q_OBJECT

public:
    static constexpr int MaximumSeed = 999999999;

    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
