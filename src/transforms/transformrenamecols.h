#pragma once

#include "transforms/framework/transform.h"

// Gives chosen columns new header names. The option holds the new names by column id, so a
// rename follows its column wherever it moves upstream.
class TransformRenameCols : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
