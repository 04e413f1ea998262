#pragma once

#include "transforms/framework/transform.h"

#include <QVector>

// Scores the numbers of a column by their distance from the bulk of the values, and sets,
// clips, keeps or removes those that score beyond a threshold.
class TransformOutliers : public Transform
{
    Q_OBJECT

public:
    enum ScoreBy { StandardDeviation = 0, InterQuartileRange = 1 };
    enum Action { SetValue = 0, KeepRows, RemoveRows, ChangeToThreshold };

    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    struct Fences;
    bool calculateFences(const QVector<double> &values, int scoreBy, double threshold,
                         Fences *fences);
};
