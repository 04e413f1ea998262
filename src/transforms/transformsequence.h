#pragma once

#include "transforms/framework/transform.h"

// Completes a sequence of integers or dates in one column: the rows are put in order on that
// column, and each value missing between the minimum and the maximum gets a new row, whose
// other cells are left blank, copied from a neighbouring row or set to a user's value.
class TransformSequence : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void migrateParameters(int version, QList<StoredParameter> *parameters) const override;
    enum How { MissingIntegers = 0, MissingDates = 1 };
    enum Limit { FromData = 0, UserDefined = 1 };
    enum Order { Ascending = 0, Descending = 1 };
    enum NewRowsAs { Blank = 0, CopyFromAbove = 1, CopyFromBelow = 2, UserDefinedValue = 3 };
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    bool usesDateFormats() const override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
