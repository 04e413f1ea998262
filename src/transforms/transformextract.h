#pragma once

#include "transforms/framework/transform.h"

class QRegularExpression;

// Keeps part of each cell of the chosen columns: a stretch of characters counted from
// either end, or what a regular expression matches (its first capture group if it has one).
class TransformExtract : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    static QString extractText(const QString &text, int length, bool fromStart, int offset);
    static QString extractMatch(const QString &text, const QRegularExpression &pattern);
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
