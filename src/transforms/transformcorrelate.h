#pragma once

#include "transforms/framework/transform.h"

#include <QVector>

// The Pearson correlation of every pair of the chosen columns, as a square matrix.
class TransformCorrelate : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    QVector<QVector<double>> readColumns(const Dataset &input, const QList<int> &columns,
                                         const RunContext &context);
};
