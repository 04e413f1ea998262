#pragma once

#include "transforms/clusterengine.h"

#include <QRandomGenerator>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

class FuzzyIndex;

// The distinct texts of a column in normal form, empty ones left out, each with the number of
// rows that hold it: clustering works on these, and a row follows its text.
struct ClusterValues
{
    QStringList texts;
    QVector<qint64> weights;
    QVector<int> valueOfRow;
};

// The cluster of each value under a list of terms, and its score: one more than the closeness
// summed over the rows clustered, so that more rows clustered and closer clusters both score
// higher.
struct ClusterAssignment
{
    QVector<int> term;
    QVector<int> closeness;
    qint64 score = 0;
};

// Keeps the clock, the Stop and the progress of a clustering, and tells every 25 comparisons
// whether the work must end.
class ClusterPacer
{
public:
    explicit ClusterPacer(const ClusterOptions &options);

    // One comparison done; false when the work is to end (see ended()).
    bool step()
    {
        if (++m_steps % 25 == 0)
            check();
        return !m_stopped;
    }
    // Looks at the clock and the Stop now, and reports progress.
    void check();
    // What the current stage has done, 0 to 1, shown as progress between from and to.
    void setStage(qreal from, qreal to) { m_from = from, m_to = to; }
    void setStageDone(qreal done) { m_done = done; }

    qint64 nowMs() const { return m_now; }
    bool pastHalfTime() const { return m_now >= m_limitMs / 2; }
    bool pastTime() const { return m_now >= m_limitMs - m_reserveMs; }
    // Time kept back from the limit for the work that follows the search.
    void setReserve(qint64 ms) { m_reserveMs = ms; }
    bool stopped() const { return m_stopped; }
    // The time limit counts only while a search runs.
    void setTimed(bool on) { m_timed = on; }

private:
    const ClusterOptions &m_options;
    std::function<qint64()> m_elapsed;
    qint64 m_limitMs;
    qint64 m_reserveMs = 0;
    qint64 m_now = 0;
    qint64 m_steps = 0;
    bool m_stopped = false;
    bool m_timed = false;
    qreal m_from = 0.0;
    qreal m_to = 1.0;
    qreal m_done = 0.0;
    qreal m_reported = -1.0;
};

// The clusters of all values under terms, in one pass that asks the pacer every 25 values;
// false when it was told to end, leaving the rest without cluster.
bool assignClusters(const ClusterValues &values, const QStringList &terms, int minimum,
                    ClusterPacer &pacer, bool endOnTime, ClusterAssignment *assignment);

// The search for terms of "Guided" and "Automatic": a greedy choice among runs of words of
// the values, topped up with values drawn at random, then improved by random changes scored
// against each other, for as long as they improve and the time allows.
class ClusterSearch
{
public:
    ClusterSearch(const ClusterValues &values, const ClusterOptions &options, ClusterPacer &pacer);
    ~ClusterSearch();

    // The terms found; the user's terms (as many as the maximum allows) first and unchanged.
    QStringList run(const QStringList &userTerms);
    int combinationsTried() const { return m_tried; }
    bool timedOut() const { return m_timedOut; }

private:
    // A run of words of the values: the values it occurs in, and its words as the candidates
    // of one word.
    struct Candidate
    {
        QString text;
        QVector<int> values;
        QVector<int> words;
    };

    void coverByUserTerms();
    void buildCandidates();
    void greedy();
    qint64 potentialOf(const Candidate &candidate) const;
    qint64 gainOf(const Candidate &candidate);
    void take(const QString &term);
    void raiseCloseness(int v, int closeness);
    void draw();
    void improve();
    bool evaluate(int position, const QString &term, const ClusterAssignment &current,
                  ClusterAssignment *next);
    int pickValue(const QVector<qint64> &cumulative);
    void weighDraws(const ClusterAssignment &assignment);
    QString randomCandidate();

    const ClusterValues &m_values;
    ClusterPacer &m_pacer;
    QRandomGenerator m_generator;
    int m_minimum;
    int m_maximum;
    int m_fixed = 0;
    QStringList m_terms;
    QSet<QString> m_termSet;
    // The closeness of each value to its nearest term so far, -1 for none; and the rows of
    // the values that no term matches exactly yet.
    QVector<int> m_closeness;
    qint64 m_improvable = 0;
    QVector<Candidate> m_candidates;
    // Values already measured by the current gainOf(): those marked m_visit.
    QVector<quint32> m_visited;
    quint32 m_visit = 0;
    // The values, for finding those a new term clusters; made when first needed.
    std::unique_ptr<FuzzyIndex> m_valueIndex;
    // Cumulative weights of the values in the draw of rows for random changes.
    QVector<qint64> m_draws;
    int m_tried = 0;
    bool m_timedOut = false;
};
