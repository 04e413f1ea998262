#pragma once

#include "transforms/framework/transform.h"

// One statistic of the chosen columns: a row of it under the table, a column of it for each
// row, or both.
class TransformStats : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

    // Chooses the columns of input that read as numbers; Correlate and Scale start alike.
    static void selectNumericColumns(Parameter *columns, ColumnSource *input);

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
