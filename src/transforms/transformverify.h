#pragma once

#include "transforms/framework/transform.h"

// Checks a dataset against a set of rules, for the dataset as a whole and per column, marks
// the columns, rows and cells that fail with the severity of their rule, reports what failed,
// and can keep or remove rows by the severities that failed on them. Only rows can go.
class TransformVerify : public Transform
{
    Q_OBJECT

public:
    // The choices of Keep_Remove_rows, in order.
    enum RowFilter { KeepAllRows = 0, KeepRowsWith = 1, RemoveRowsWith = 2 };
    static QStringList rowFilterNames();

    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;
    // Only while some date rule has no format to read dates with, so that one is inferred.
    bool usesDateFormats() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
