#pragma once

#include "transforms/framework/transform.h"

// Joins runs of consecutive rows into single wider rows: a fixed number at a time, runs that
// start at rows marked by a condition on the first column, or runs that share a key value.
class TransformConcatRows : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    QList<QStringList> concatenateFixed(const Dataset &input, int rows);
    QList<QStringList> concatenateByKey(const Dataset &input, int key, bool repeatKey,
                                        Qt::CaseSensitivity cs);
    QList<QStringList> concatenateVariable(const Dataset &input, bool whileMode, int op,
                                           const QString &value, int concatValue,
                                           Qt::CaseSensitivity cs);
};
