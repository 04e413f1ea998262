#pragma once

#include "data/dataset.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

// What a clustering needs to know. The clock and the seed come from outside, so that a run
// can be repeated and its time limit tested without waiting.
struct ClusterOptions
{
    enum Mode { Manual = 0, Guided = 1, Automatic = 2 };

    int mode = Manual;
    // The user's terms, one a line, as typed.
    QString terms;
    // The least closeness, in percent, of a text to the term of its cluster.
    int fuzziness = 50;
    int maxClusters = 10;
    int maxSeconds = 60;
    bool caseSensitive = false;
    // Seeds the choices of the search; the same seed and clock give the same clusters.
    quint32 seed = 0;
    // Milliseconds since the clustering began; unset, a timer started by cluster() tells it.
    std::function<qint64()> elapsedMs;
    std::function<bool()> stopRequested;
    // The fraction of the work done, every 25 texts matched.
    std::function<void(qreal)> progress;
};

struct ClusterOutcome
{
    // The clustering terms in their normal form, in the order of the list that ties follow.
    QStringList terms;
    // For each row, the position of its term and its closeness; -1 for a row without cluster.
    QVector<int> termOfRow;
    QVector<int> closenessOfRow;
    QVector<qint64> rowsOfTerm;
    // Of a search (Guided, Automatic): the combinations of terms scored, and whether the time
    // limit ended it.
    int combinationsTried = 0;
    bool timedOut = false;
};

namespace ClusterEngine {

// Texts and terms are compared in this form: trimmed, and lower-case unless case matters.
QString normalForm(const QString &text, bool caseSensitive);
// The user's terms: one a line, in normal form, without empty lines or repeats.
QStringList userTerms(const QString &text, bool caseSensitive);
// The clusters of the texts of column c of input.
ClusterOutcome cluster(const Dataset &input, int c, const ClusterOptions &options);

} // namespace ClusterEngine
