#include "transforms/clustersearch.h"

#include "data/valueinterpretation.h"
#include "transforms/clusterblocking.h"

#include <QElapsedTimer>
#include <QHash>

#include <algorithm>
#include <memory>
#include <queue>

namespace {

// Runs of more words than this are not tried as terms: a term that long rarely clusters more
// than the text it came from, and the runs of long texts would grow with the square of their
// words.
constexpr int MaxRunWords = 6;
// Candidates whose gain is measured before each term is taken.
constexpr int ShortListSize = 256;
// Draws of further terms, for each term missing, before the draw gives up.
constexpr int DrawsPerTerm = 20;
// Random changes in a row that are no change (a term already in the list) before the random
// phase gives up: every remaining text is a term already.
constexpr int MaxIdleChanges = 100;

// The words of a normal form: the runs between white space.
QVector<QStringView> wordsOf(const QString &text)
{
    QVector<QStringView> words;
    const int n = text.size();
    int i = 0;
    while (i < n) {
        while (i < n && text.at(i).isSpace())
            ++i;
        const int start = i;
        while (i < n && !text.at(i).isSpace())
            ++i;
        if (i > start)
            words.append(QStringView(text).mid(start, i - start));
    }
    return words;
}

QString joinWords(const QVector<QStringView> &words, int first, int count)
{
    QString run;
    for (int i = first; i < first + count; ++i) {
        if (i > first)
            run.append(QLatin1Char(' '));
        run.append(words.at(i));
    }
    return run;
}

QVector<qint64> cumulativeWeights(const ClusterValues &values, const QVector<bool> *skip)
{
    QVector<qint64> cumulative(values.texts.size());
    qint64 sum = 0;
    for (int v = 0; v < values.texts.size(); ++v) {
        if (!skip || !skip->at(v))
            sum += values.weights.at(v);
        cumulative[v] = sum;
    }
    return cumulative;
}

} // namespace

ClusterPacer::ClusterPacer(const ClusterOptions &options)
    : m_options(options)
    , m_limitMs(qint64(qMax(1, options.maxSeconds)) * 1000)
{
    if (options.elapsedMs) {
        m_elapsed = options.elapsedMs;
    } else {
        auto timer = std::make_shared<QElapsedTimer>();
        timer->start();
        m_elapsed = [timer] {
            return timer->elapsed();
        };
    }
}

void ClusterPacer::check()
{
    m_now = m_elapsed();
    if (m_options.stopRequested && m_options.stopRequested())
        m_stopped = true;
    if (!m_options.progress)
        return;
    qreal done = qBound<qreal>(0.0, m_done, 1.0);
    if (m_timed)
        done = qMax(done, qMin<qreal>(1.0, qreal(m_now) / qreal(m_limitMs)));
    // A report costs a look at the process's memory, which can cost more than 25 comparisons;
    // one a thousandth of the way is as often as any progress bar can show.
    const qreal fraction = m_from + (m_to - m_from) * done;
    if (qAbs(fraction - m_reported) < 0.001)
        return;
    m_reported = fraction;
    m_options.progress(fraction);
}

bool assignClusters(const ClusterValues &values, const QStringList &terms, int minimum,
                    ClusterPacer &pacer, bool endOnTime, ClusterAssignment *assignment)
{
    const int count = values.texts.size();
    assignment->term.fill(-1, count);
    assignment->closeness.fill(-1, count);
    assignment->score = 0;
    const FuzzyIndex index(terms);
    for (int v = 0; v < count; ++v) {
        if (v % 25 == 0) {
            pacer.setStageDone(qreal(v) / qreal(count));
            pacer.check();
            if (pacer.stopped() || (endOnTime && pacer.pastTime()))
                return false;
        }
        const FuzzyIndex::Match match = index.closest(values.texts.at(v), minimum);
        if (match.index < 0)
            continue;
        assignment->term[v] = match.index;
        assignment->closeness[v] = match.closeness;
        assignment->score += values.weights.at(v) * (match.closeness + 1);
    }
    return true;
}

ClusterSearch::ClusterSearch(const ClusterValues &values, const ClusterOptions &options,
                             ClusterPacer &pacer)
    : m_values(values)
    , m_pacer(pacer)
    , m_generator(options.seed)
    , m_minimum(qBound(0, options.fuzziness, 100))
    , m_maximum(qMax(1, options.maxClusters))
{ }

ClusterSearch::~ClusterSearch() = default;

QStringList ClusterSearch::run(const QStringList &userTerms)
{
    m_terms = userTerms.mid(0, m_maximum);
    m_fixed = m_terms.size();
    m_termSet = QSet<QString>(m_terms.cbegin(), m_terms.cend());
    m_closeness.fill(-1, m_values.texts.size());
    for (qint64 weight : m_values.weights)
        m_improvable += weight;

    m_pacer.setTimed(true);
    m_pacer.setStage(0.0, 0.5);
    m_pacer.check();
    coverByUserTerms();
    greedy();
    draw();
    m_pacer.setStage(0.5, 0.95);
    improve();
    m_pacer.setTimed(false);
    return m_terms;
}

void ClusterSearch::coverByUserTerms()
{
    if (m_terms.isEmpty())
        return;
    const FuzzyIndex index(m_terms);
    for (int v = 0; v < m_values.texts.size(); ++v) {
        if (!m_pacer.step() || m_pacer.pastHalfTime())
            return;
        raiseCloseness(v, index.closest(m_values.texts.at(v), m_minimum).closeness);
    }
}

void ClusterSearch::raiseCloseness(int v, int closeness)
{
    if (closeness <= m_closeness.at(v))
        return;
    if (closeness == 100)
        m_improvable -= m_values.weights.at(v);
    m_closeness[v] = closeness;
}

void ClusterSearch::buildCandidates()
{
    QHash<QString, int> ids;
    const auto candidateOf = [&](const QString &run) {
        auto it = ids.find(run);
        if (it == ids.end()) {
            it = ids.insert(run, m_candidates.size());
            m_candidates.append(Candidate {run, {}, {}});
        }
        return it.value();
    };
    const auto occurs = [&](int id, int v) {
        QVector<int> &in = m_candidates[id].values;
        if (in.isEmpty() || in.constLast() != v)
            in.append(v);
    };
    QVector<int> wordIds;
    for (int v = 0; v < m_values.texts.size(); ++v) {
        if (!m_pacer.step() || m_pacer.pastHalfTime())
            return;
        if (m_closeness.at(v) == 100)
            continue;
        const QVector<QStringView> words = wordsOf(m_values.texts.at(v));
        wordIds.resize(0);
        for (const QStringView word : words)
            wordIds.append(candidateOf(word.toString()));
        for (int first = 0; first < words.size(); ++first) {
            const int longest = qMin(MaxRunWords, int(words.size()) - first);
            for (int count = 1; count <= longest; ++count) {
                const int id
                    = count == 1 ? wordIds.at(first) : candidateOf(joinWords(words, first, count));
                Candidate &candidate = m_candidates[id];
                if (candidate.words.isEmpty()) {
                    for (int i = first; i < first + count; ++i) {
                        if (!candidate.words.contains(wordIds.at(i)))
                            candidate.words.append(wordIds.at(i));
                    }
                }
                occurs(id, v);
            }
        }
    }
}

// What the texts a candidate occurs in could still gain: the rows weighted by how far each is
// from a term that matches it exactly. Cheap, and never rises as terms are taken.
qint64 ClusterSearch::potentialOf(const Candidate &candidate) const
{
    qint64 potential = 0;
    for (int v : candidate.values)
        potential += m_values.weights.at(v) * (100 - qMax(0, m_closeness.at(v)));
    return potential;
}

// What the candidate as a term would add to the score: for each row of a text that shares a
// word with it, how much closer the text is to it than to its term so far, counting a row
// without one as -1, so that clustering a row at all is worth something even at closeness 0.
// Texts that share a word are where a term's matches lie: a run of words occurs in the texts
// spelt just so, but its matches include the texts with a slip in one of its words.
qint64 ClusterSearch::gainOf(const Candidate &candidate)
{
    if (++m_visit == 0) {
        m_visited.fill(0);
        m_visit = 1;
    }
    qint64 gain = 0;
    const ClosenessPattern pattern(candidate.text);
    for (int word : candidate.words) {
        for (int v : qAsConst(m_candidates.at(word).values)) {
            const int now = m_closeness.at(v);
            if (m_visited.at(v) == m_visit || now == 100)
                continue;
            m_visited[v] = m_visit;
            m_pacer.step();
            const int need = qMax(m_minimum, now + 1);
            const int closeness = pattern.closeness(m_values.texts.at(v), need);
            if (closeness >= need)
                gain += m_values.weights.at(v) * (closeness - now);
        }
    }
    return gain;
}

// Each term is chosen in two steps: the candidates of most potential make a short list (kept
// in a queue whose keys are brought up to date only when they reach the top, as potentials
// only fall), and of those the one of most gain is taken. Candidates that gain nothing now
// never will, and leave.
void ClusterSearch::greedy()
{
    if (m_terms.size() >= m_maximum || m_improvable == 0)
        return;
    buildCandidates();
    m_visited.fill(0, m_values.texts.size());
    struct Entry
    {
        qint64 potential;
        int id;
        int measuredAt;
        bool operator<(const Entry &other) const
        {
            return potential != other.potential ? potential < other.potential : id > other.id;
        }
    };
    std::priority_queue<Entry> queue;
    for (int id = 0; id < m_candidates.size(); ++id)
        queue.push(Entry {potentialOf(m_candidates.at(id)), id, 0});
    int taken = 0;
    QVector<Entry> shortList;
    while (m_terms.size() < m_maximum && m_improvable > 0) {
        m_pacer.setStageDone(qreal(m_terms.size()) / qreal(m_maximum));
        shortList.resize(0);
        while (!queue.empty() && shortList.size() < ShortListSize) {
            Entry top = queue.top();
            queue.pop();
            if (m_termSet.contains(m_candidates.at(top.id).text))
                continue;
            if (top.measuredAt < taken) {
                top.potential = potentialOf(m_candidates.at(top.id));
                top.measuredAt = taken;
                if (top.potential > 0)
                    queue.push(top);
                continue;
            }
            shortList.append(top);
        }
        if (shortList.isEmpty())
            return;
        int best = -1;
        qint64 bestGain = 0;
        for (const Entry &entry : qAsConst(shortList)) {
            if (m_pacer.stopped() || m_pacer.pastHalfTime())
                return;
            const qint64 gain = gainOf(m_candidates.at(entry.id));
            if (gain > bestGain) {
                best = entry.id;
                bestGain = gain;
            }
            if (gain > 0)
                queue.push(Entry {entry.potential, entry.id, taken});
        }
        if (best >= 0) {
            take(m_candidates.at(best).text);
            ++taken;
        }
    }
}

void ClusterSearch::take(const QString &term)
{
    m_terms.append(term);
    m_termSet.insert(term);
    // Every text the new term comes closer to, whether or not it holds it as words.
    if (!m_valueIndex)
        m_valueIndex.reset(new FuzzyIndex(m_values.texts));
    m_valueIndex->forEachWithin(term, m_minimum, [this](int v, int closeness) {
        m_pacer.step();
        raiseCloseness(v, closeness);
    });
}

void ClusterSearch::draw()
{
    const int missing = m_maximum - m_terms.size();
    if (missing <= 0 || m_values.texts.isEmpty() || m_pacer.stopped())
        return;
    // Rows without a cluster first; when every row has one, any row.
    QVector<bool> clustered(m_values.texts.size());
    bool all = true;
    for (int v = 0; v < clustered.size(); ++v) {
        clustered[v] = m_closeness.at(v) >= 0;
        all = all && clustered.at(v);
    }
    const QVector<qint64> cumulative = cumulativeWeights(m_values, all ? nullptr : &clustered);
    for (int attempt = 0; attempt < missing * DrawsPerTerm && m_terms.size() < m_maximum;
         ++attempt) {
        const QString &text = m_values.texts.at(pickValue(cumulative));
        if (m_termSet.contains(text))
            continue;
        m_terms.append(text);
        m_termSet.insert(text);
    }
}

int ClusterSearch::pickValue(const QVector<qint64> &cumulative)
{
    const qint64 total = cumulative.constLast();
    // A remainder of 64 random bits: the bias is far below anything a row count could show.
    const qint64 row = qint64(m_generator.generate64() % quint64(total));
    return int(std::upper_bound(cumulative.cbegin(), cumulative.cend(), row) - cumulative.cbegin());
}

// Rows are drawn by how far they are from their term: a row without one most often, a row
// that a term matches exactly never, since it can't gain.
void ClusterSearch::weighDraws(const ClusterAssignment &assignment)
{
    m_draws.resize(m_values.texts.size());
    qint64 sum = 0;
    for (int v = 0; v < m_values.texts.size(); ++v) {
        sum += m_values.weights.at(v) * (100 - assignment.closeness.at(v));
        m_draws[v] = sum;
    }
}

// A whole text of a drawn row, or a random run of its words, as often the one as the other.
QString ClusterSearch::randomCandidate()
{
    const QString &text = m_values.texts.at(pickValue(m_draws));
    if (m_generator.bounded(2) == 0)
        return text;
    const QVector<QStringView> words = wordsOf(text);
    const int first = int(m_generator.bounded(quint32(words.size())));
    const int longest = qMin(MaxRunWords, int(words.size()) - first);
    return joinWords(words, first, 1 + int(m_generator.bounded(quint32(longest))));
}

// Random changes: one term, not one of the user's, is replaced by a text or run of words of a
// drawn row, and the change is kept when it scores higher. The phase ends when the time is
// over, or when as many changes in a row as twice the terms (at least 10) have brought nothing.
void ClusterSearch::improve()
{
    m_tried = 0;
    if (m_terms.isEmpty())
        return;
    ClusterAssignment current;
    m_pacer.check();
    const qint64 start = m_pacer.nowMs();
    if (!assignClusters(m_values, m_terms, m_minimum, m_pacer, true, &current)) {
        m_timedOut = m_pacer.pastTime() && !m_pacer.stopped();
        return;
    }
    m_tried = 1;
    // The clusters of the rows are assigned once more after the search, with terms that match
    // more texts and so take longer than this first assignment: twice its time is kept back,
    // so that the whole stays about in the limit.
    m_pacer.check();
    m_pacer.setReserve(2 * (m_pacer.nowMs() - start));
    if (m_terms.size() <= m_fixed)
        return;
    weighDraws(current);
    const int patience = qMax(2 * m_maximum, 10);
    int fruitless = 0;
    int idle = 0;
    ClusterAssignment next;
    while (fruitless < patience && idle < MaxIdleChanges && m_draws.constLast() > 0) {
        m_pacer.setStageDone(qreal(fruitless) / qreal(patience));
        m_pacer.check();
        if (m_pacer.stopped())
            return;
        if (m_pacer.pastTime()) {
            m_timedOut = true;
            return;
        }
        const int position = m_fixed + int(m_generator.bounded(quint32(m_terms.size() - m_fixed)));
        const QString term = randomCandidate();
        if (term.isEmpty() || m_termSet.contains(term)) {
            ++idle;
            continue;
        }
        idle = 0;
        if (!evaluate(position, term, current, &next)) {
            m_timedOut = m_pacer.pastTime() && !m_pacer.stopped();
            return;
        }
        ++m_tried;
        if (next.score > current.score) {
            m_termSet.remove(m_terms.at(position));
            m_terms[position] = term;
            m_termSet.insert(term);
            std::swap(current, next);
            weighDraws(current);
            fruitless = 0;
        } else {
            ++fruitless;
        }
    }
}

// Scores the terms with term at position, from the clusters under the current terms: a text
// whose term is replaced looks for its closest term anew; any other keeps its term unless the
// new one is closer, or as close and earlier in the list. So only the new term is measured
// against most texts.
bool ClusterSearch::evaluate(int position, const QString &term, const ClusterAssignment &current,
                             ClusterAssignment *next)
{
    QStringList terms = m_terms;
    terms[position] = term;
    std::unique_ptr<FuzzyIndex> index;
    next->term = current.term;
    next->closeness = current.closeness;
    next->score = 0;
    const ClosenessPattern pattern(term);
    for (int v = 0; v < m_values.texts.size(); ++v) {
        if (!m_pacer.step() || m_pacer.pastTime())
            return false;
        const QString &text = m_values.texts.at(v);
        const int was = current.term.at(v);
        if (was == position) {
            if (!index)
                index.reset(new FuzzyIndex(terms));
            const FuzzyIndex::Match match = index->closest(text, m_minimum);
            next->term[v] = match.index;
            next->closeness[v] = match.closeness;
        } else {
            const int closeness = current.closeness.at(v);
            const int need
                = was < 0 ? m_minimum : qMax(m_minimum, position < was ? closeness : closeness + 1);
            if (need <= 100) {
                const int alike = pattern.closeness(text, need);
                if (alike >= need) {
                    next->term[v] = position;
                    next->closeness[v] = alike;
                }
            }
        }
        next->score += m_values.weights.at(v) * (next->closeness.at(v) + 1);
    }
    return true;
}
