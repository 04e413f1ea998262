#pragma once

#include "transforms/framework/transform.h"

// Appends a column that gives every row a new random identifier (version 4).
class TransformUUID : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

    static QStringList formatNames();

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
