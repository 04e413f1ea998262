#pragma once

#include "transforms/framework/transform.h"

// Adds a column saying whether two columns' values compare as the chosen operator says:
// "true" or "false" on every row, with dates and numbers compared as such.
class TransformCompare : public Transform
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
