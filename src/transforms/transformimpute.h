#pragma once

#include "transforms/framework/transform.h"

#include <QList>
#include <QVector>

// Fills empty cells from the other values of their column: of all rows, or only of the rows
// that match the empty cell's row in other columns.
class TransformImpute : public Transform
{
    Q_OBJECT

public:
    enum Using { Average = 0, Median, Mode };
    enum Of { AllRows = 0, MatchingRows = 1 };
    enum MatchType { ExactMatch = 0, BestMatch = 1 };

    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    struct Settings;
    class Matcher;

    qint64 imputeFromAllRows(Dataset &output, int column, const QVector<int> &empties,
                             const Settings &settings);
    qint64 imputeFromMatchingRows(Dataset &output, int column, const QVector<int> &empties,
                                  const QList<int> &matching, const Settings &settings);
};
