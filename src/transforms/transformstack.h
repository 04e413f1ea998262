#pragma once

#include "transforms/framework/transform.h"

#include <QVector>

// Puts the rows of all inputs one under another, matching their columns by header name or
// by position.
class TransformStack : public Transform
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
    // For each column of dataset, the input numbered number, the output column it goes
    // under, or -1 when it is ignored. Columns that find no place are added to names unless
    // onlyFirst. How the columns were aligned becomes an information line.
    QVector<int> placeColumns(const Dataset &dataset, int number, bool byName, bool onlyFirst,
                              QStringList &names);
    // Appends the rows of the inputs after the first, whose rows the output holds already,
    // each cell under its column's place.
    void appendRows(Dataset &output, const TransformInputs &inputs,
                    const QVector<QVector<int>> &places, int finalWidth, bool addSeparators,
                    const QString &separatorValue);
};
