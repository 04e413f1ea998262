#pragma once

#include "transforms/framework/transform.h"

// Removes a number of characters from the start or the end of the cells of the chosen
// columns.
class TransformChop : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    static QString chop(const QString &text, int length, bool fromStart);
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
