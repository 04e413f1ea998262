#pragma once

#include "transforms/framework/transform.h"

// Appends a statistic of a sliding window of rows.
class TransformMoving : public Transform
{
    Q_OBJECT

public:
    enum Calculation { Average = 0, Median, Sum, Minimum, Maximum, Range };
    enum Incomplete { SetEmpty = 0, FromAvailable = 1 };

    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

    static QStringList calculationNames();

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
