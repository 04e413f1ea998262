#pragma once

#include "transforms/framework/transform.h"
#include "transforms/rowalignment.h"

// Lists what differs between two datasets, aligned by row number or by a key: columns that
// only one side has or that are named differently, rows that only one side has, and every
// cell that differs between aligned rows. One row of output a difference.
class TransformDiff : public Transform
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
    class Listing;

    RowAlignment::Options readAlignment() const;
    static void listColumns(Listing &listing, const Dataset &top, const Dataset &bottom);
    // False when the run was stopped.
    bool listRows(Listing &listing, const Dataset &top, const Dataset &bottom,
                  const RowAlignment::Options &alignment, const RunContext &context);
};
