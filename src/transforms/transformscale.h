#pragma once

#include "transforms/framework/transform.h"

#include <QVector>

// Rescales numbers by row, by column or over all chosen cells: in proportion so that they sum
// to a value or their maximum becomes it, or linearly so that the minimum and maximum become
// the two ends of a range.
class TransformScale : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    struct Extent;
    struct Settings;
    struct Tally;

    void measure(const Dataset &data, const Settings &settings, QVector<Extent> &extents,
                 const RunContext &context);
    void write(Dataset &data, const Settings &settings, const QVector<Extent> &extents,
               Tally &tally, const RunContext &context);
    static bool scale(double value, const Extent &extent, const Settings &settings, QString *text);
};
