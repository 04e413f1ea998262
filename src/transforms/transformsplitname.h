#pragma once

#include "transforms/framework/transform.h"

// Splits people's names into honorific, first, middle, last and suffix columns.
class TransformSplitName : public Transform
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
