#pragma once

#include "transforms/framework/transform.h"

// Pads the cells of the chosen columns with a character, at the left or the right, up to a
// minimum length. Longer cells are left alone; cutting them is Extract's job.
class TransformPad : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    static QString pad(const QString &text, int length, bool left, QChar with);
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
