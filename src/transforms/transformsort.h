#pragma once

#include "transforms/framework/transform.h"

// Puts the rows in order by one or more columns, each compared as dates, numbers or text as
// its values suggest, and can add a column that ranks them.
class TransformSort : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    static QStringList rankTypeNames();
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
