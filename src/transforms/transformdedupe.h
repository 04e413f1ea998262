#pragma once

#include "transforms/framework/transform.h"

// Keeps one row of each group of alike rows, or only the others, or marks the groups; the
// matching itself is the dedupe engine, which the duplicate explorer shares.
class TransformDedupe : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;
    static QStringList modeNames();

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
