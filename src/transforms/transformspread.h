#pragma once

#include "transforms/framework/transform.h"

// The reverse of Gather: the texts of a key column become columns, filled from a value column,
// one row for each combination of the other columns.
class TransformSpread : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    struct Layout;
    // Groups the rows and finds the new columns; false when the options don't apply.
    bool layOut(const Dataset &input, Layout &layout);
    void fill(const Dataset &input, const Layout &layout, Dataset &output);
    // Pads to the minimum and cuts to the maximum number of new columns.
    void fitNewColumns(Dataset &output, int firstNew);
};
