#pragma once

#include "transforms/framework/transform.h"

// How often each text occurs in one column: one output row per distinct text with its count,
// most frequent first unless the user orders otherwise.
class TransformCount : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;
    static QStringList sortNames();
    static QStringList orderNames();

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
