#pragma once

#include "transforms/framework/transform.h"

// Keeps a given number of rows: the first, the last, evenly spaced, or drawn at random in a
// way that the seed makes repeatable.
class TransformSample : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    static QStringList spreadNames();
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    // The random spreads. sampleRandomly draws n distinct row numbers, each remaining one
    // about as likely as any other, and keeps the rows in their order; sampleInOnePass
    // decides row by row, with a chance that keeps the count at n.
    void sampleRandomly(Dataset &output, const Dataset &input, int n, quint32 seed);
    void sampleInOnePass(Dataset &output, const Dataset &input, int n, quint32 seed);
};
