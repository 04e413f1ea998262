#pragma once

#include "transforms/framework/transform.h"

// Rewrites dates and times from one format and locale to another.
class TransformDateFormat : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

    // The choices of Non_Date, in order.
    static QStringList nonDateChoices();

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
