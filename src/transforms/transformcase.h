#pragma once

#include "transforms/framework/transform.h"

// Changes the letter case of the cells of the chosen columns, by one of nine rules.
class TransformCase : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    static QStringList caseNames();
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
