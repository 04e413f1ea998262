#pragma once

#include "transforms/framework/transform.h"

#include <QVector>

// Counts runs of N consecutive words across the cells of a column: one output row per ngram
// with the rows that hold it, or the sum of another column over those rows.
class TransformNgram : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

    // The words of a cell: the runs between white space, without the punctuation at either
    // end, so that "end." and "end" are one word.
    static QVector<QStringView> wordsOf(const QString &text);

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
