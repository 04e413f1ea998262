#pragma once

#include "transforms/framework/transform.h"

// Summarises one column by the values of others, as a cross table. The keys of the options
// that choose the columns stand crosswise to their labels, as documents have always stored
// them: Rows makes the output's columns and Columns its rows.
class TransformPivot : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;
    void migrateParameters(int version, QList<StoredParameter> *parameters) const override;
    static QStringList nonCalcNames();
    static QStringList totalTypeNames();

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
