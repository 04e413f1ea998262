#pragma once

#include "transforms/framework/transform.h"

// Adds a column to the top dataset holding, for each row, values of the bottom dataset found
// by comparing the row's key with the bottom keys: exactly, fuzzily or by a comparison operator.
class TransformLookup : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    static QStringList matchTypeNames();
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    void connectParameters(ColumnSources inputs) override;
    bool autoConfigure(const ColumnSources &inputs) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
