#pragma once

#include "transforms/framework/transform.h"

#include <QVector>

namespace KeyMatching {
class KeyIndex;
}

// Puts the rows of two datasets side by side, pairing them by equal key texts or by row
// number; rows without a partner can be kept on either side (left, right or full outer join).
class TransformJoin : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;
    bool autoConfigure(const ColumnSources &inputs) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    struct Options;
    struct Counts;

    // process() reads the options, then joins by row number or by key.
    Options readOptions() const;
    Counts joinByRowNumber(Dataset &output, const Dataset &top, const Dataset &bottom,
                           const Options &options);
    // May take the rows of topData over; its columns stay.
    Counts joinByKey(Dataset &output, Dataset &topData, const Dataset &bottom,
                     const Options &options);
    // The steps of joinByKey: the pairs of rows with equal keys, which also collects the top
    // rows without a partner and marks the bottom keys that found one; then the rows without
    // a partner on either side, each with the key copied to the other side's key column.
    qint64 appendKeyMatches(Dataset &output, Dataset &topData, const Dataset &bottom,
                            const KeyMatching::KeyIndex &index, const Options &options,
                            QVector<char> &keyMatched, QList<QStringList> &unmatchedTop);
    static qint64 appendUnmatchedTop(Dataset &output, const QList<QStringList> &topRows,
                                     int topWidth, const Dataset &bottom, const Options &options);
    static qint64 appendUnmatchedBottom(Dataset &output, int topWidth, const Dataset &bottom,
                                        const KeyMatching::KeyIndex &index,
                                        const QVector<char> &keyMatched, const Options &options);
    static QString resultText(const Counts &counts, const Options &options, int topRows,
                              int bottomRows);
    void addDetailedReport(const Dataset &top, int topKey, const Dataset &bottom, int bottomKey,
                           bool caseSensitive);
};
