#pragma once

#include "transforms/framework/transform.h"

// Puts the rows of two datasets side by side, pairing them by equal key texts or by row
// number; rows without a partner can be kept on either side (left, right or full outer join).
class TransformJoin : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;
    bool autoConfigure(const ColumnSources &inputs) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    void addDetailedReport(const Dataset &top, int topKey, const Dataset &bottom, int bottomKey,
                           bool caseSensitive);
};
