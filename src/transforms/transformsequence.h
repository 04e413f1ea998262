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

private:
    struct Options;
    struct ColumnKeys;

    // process() reads the options and the column's keys, puts the rows in order and writes
    // them with the new rows between.

    // False when an option is missing.
    bool readOptions(Options *options) const;
    ColumnKeys readKeys(const Dataset &input, const Options &options, const QString &format);
    // Returns how many new rows it wrote.
    qint64 writeRows(Dataset &output, const Dataset &input, const ColumnKeys &keys,
                     const QVector<int> &order, const Options &options, const QString &format);
};
