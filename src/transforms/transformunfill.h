#pragma once

#include "transforms/adjacentcells.h"

// Empties each cell of the chosen columns that repeats the value of its neighbour against the
// direction of travel, so that a group's value shows only once: the inverse of Fill.
class TransformUnfill : public AdjacentCellsTransform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
