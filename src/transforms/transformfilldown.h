#pragma once

#include "transforms/adjacentcells.h"

// Fills the empty cells of the chosen columns from their neighbour against the direction of
// travel, so that a value runs on through a stretch of empty cells: the usual repair of
// reports that print a group's value only on its first row.
class TransformFillDown : public AdjacentCellsTransform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
