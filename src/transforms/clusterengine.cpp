#include "transforms/clusterengine.h"

#include "data/valueinterpretation.h"
#include "transforms/clustersearch.h"

#include <QHash>
#include <QSet>

namespace {

// The values of column c. A row is looked up by its exact spelling first, so that the normal
// form is made once for each spelling met, not once a row.
ClusterValues collectValues(const Dataset &input, int c, bool caseSensitive, ClusterPacer &pacer)
{
    ClusterValues values;
    const int rowCount = input.rowCount();
    values.valueOfRow.fill(-1, rowCount);
    QHash<QString, int> bySpelling;
    QHash<QString, int> byForm;
    for (int r = 0; r < rowCount; ++r) {
        if (r % 1000 == 0) {
            pacer.setStageDone(qreal(r) / qreal(rowCount));
            pacer.check();
            if (pacer.stopped())
                break;
        }
        const QString &cell = input.cell(r, c);
        auto spelling = bySpelling.constFind(cell);
        if (spelling == bySpelling.cend()) {
            const QString form = ClusterEngine::normalForm(cell, caseSensitive);
            int value = -1;
            if (!form.isEmpty()) {
                auto known = byForm.constFind(form);
                if (known == byForm.cend()) {
                    known = byForm.insert(form, values.texts.size());
                    values.texts.append(form);
                    values.weights.append(0);
                }
                value = known.value();
            }
            spelling = bySpelling.insert(cell, value);
        }
        const int value = spelling.value();
        values.valueOfRow[r] = value;
        if (value >= 0)
            ++values.weights[value];
    }
    return values;
}

// Leaves out the terms after the first kept ones that no text came nearest to: they change no
// cluster, and would only stand in the report with no rows.
void dropUnusedTerms(QStringList &terms, int kept, ClusterAssignment &assignment)
{
    QVector<int> newPosition(terms.size(), -1);
    for (int t : qAsConst(assignment.term)) {
        if (t >= 0)
            newPosition[t] = 0;
    }
    QStringList remaining;
    for (int t = 0; t < terms.size(); ++t) {
        if (t < kept || newPosition.at(t) == 0) {
            newPosition[t] = remaining.size();
            remaining.append(terms.at(t));
        }
    }
    for (int &t : assignment.term) {
        if (t >= 0)
            t = newPosition.at(t);
    }
    terms = remaining;
}

} // namespace

namespace ClusterEngine {

QString normalForm(const QString &text, bool caseSensitive)
{
    const QString trimmed = text.trimmed();
    return caseSensitive ? trimmed : trimmed.toLower();
}

QStringList userTerms(const QString &text, bool caseSensitive)
{
    QStringList terms;
    QSet<QString> seen;
    const QStringList lines = splitLines(text, false);
    for (const QString &line : lines) {
        const QString term = normalForm(line, caseSensitive);
        if (term.isEmpty() || seen.contains(term))
            continue;
        seen.insert(term);
        terms.append(term);
    }
    return terms;
}

ClusterOutcome cluster(const Dataset &input, int c, const ClusterOptions &options)
{
    ClusterPacer pacer(options);
    const bool searching = options.mode != ClusterOptions::Manual;
    const int minimum = qBound(0, options.fuzziness, 100);
    pacer.setStage(0.0, 0.05);
    const ClusterValues values = collectValues(input, c, options.caseSensitive, pacer);

    ClusterOutcome outcome;
    QStringList terms;
    if (options.mode != ClusterOptions::Automatic)
        terms = userTerms(options.terms, options.caseSensitive);
    int kept = terms.size();
    if (searching && !pacer.stopped()) {
        ClusterSearch search(values, options, pacer);
        pacer.setStage(0.05, 0.95);
        terms = search.run(terms);
        kept = qMin(kept, qMax(1, options.maxClusters));
        outcome.combinationsTried = search.combinationsTried();
        outcome.timedOut = search.timedOut();
    }

    pacer.setStage(searching ? 0.95 : 0.05, 1.0);
    ClusterAssignment assignment;
    assignClusters(values, terms, minimum, pacer, false, &assignment);
    if (searching)
        dropUnusedTerms(terms, kept, assignment);

    const int rowCount = input.rowCount();
    outcome.terms = terms;
    outcome.rowsOfTerm.fill(0, terms.size());
    outcome.termOfRow.fill(-1, rowCount);
    outcome.closenessOfRow.fill(-1, rowCount);
    for (int r = 0; r < rowCount; ++r) {
        const int value = values.valueOfRow.at(r);
        if (value < 0 || assignment.term.at(value) < 0)
            continue;
        const int term = assignment.term.at(value);
        outcome.termOfRow[r] = term;
        outcome.closenessOfRow[r] = assignment.closeness.at(value);
        ++outcome.rowsOfTerm[term];
    }
    return outcome;
}

} // namespace ClusterEngine
