#pragma once

#include "transforms/adjacentcells.h"

// Closes the gaps between the non-empty values of the chosen columns by moving the values in
// the direction of travel, keeping their order: sliding left packs a row's values into its
// first selected columns, sliding down packs a column's values into its last rows.
class TransformSlide : public AdjacentCellsTransform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    qint64 slideRows(const Dataset &input, const Walk &walk, Dataset &output);
    qint64 slideColumns(const Dataset &input, const Walk &walk, Dataset &output);
};
