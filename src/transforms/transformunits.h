#pragma once

#include "transforms/framework/transform.h"

// Converts numbers between units of one dimension.
class TransformUnits : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    void migrateParameters(int version, QList<StoredParameter> *parameters) const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
