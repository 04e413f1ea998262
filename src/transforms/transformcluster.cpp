#include "transforms/transformcluster.h"

#include "data/valueinterpretation.h"
#include "transforms/clusterengine.h"
#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"

#include <QRandomGenerator>
#include <QSet>

#include <algorithm>

namespace {

// Texts left without a cluster that the report lists by name; the rest are counted.
constexpr int ListedUnclustered = 10;

const QString &noneText()
{
    static const QString text = QStringLiteral("<None>");
    return text;
}

Parameter *intOption(const char *key, const char *label, int value, int minimum, int maximum,
                     const QString &suffix, const QString &toolTip)
{
    auto *option = new Parameter(ParameterType::Int, QString::fromLatin1(key),
                                 QString::fromLatin1(label), value);
    option->setMinimumInt(minimum);
    option->setMaximumInt(maximum);
    option->setSuffix(suffix);
    option->setToolTip(toolTip);
    return option;
}

} // namespace

const TransformDescriptor &TransformCluster::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 4;
        d.typeName = QStringLiteral("Cluster");
        d.displayName = QStringLiteral("Cluster");
        d.category = CategoryAnalysis;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral("Classify rows with similar text into clusters.");
        d.keywords = QStringLiteral("fuzzy matching categorize classification classify clustering")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformCluster>;
        return d;
    }();
    return descriptor;
}

QStringList TransformCluster::clusteringNames()
{
    return {QStringLiteral("Manual"), QStringLiteral("Guided"), QStringLiteral("Automatic")};
}

void TransformCluster::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    auto *column = new Parameter(ParameterType::SingleColumn, QStringLiteral("Column"),
                                 QStringLiteral("Column"), inputs.value(0));
    column->setToolTip(QStringLiteral("The column with text to cluster."));
    column->selectOnlyColumn();
    addParameter(column);

    const QStringList ways = clusteringNames();
    auto *clustering = new Parameter(ParameterType::Selection, QStringLiteral("Clustering"),
                                     QStringLiteral("Clustering"), ways.first(), ways);
    clustering->setToolTip(QStringLiteral("How to cluster. Automatic and Guided can be slow.\n"
                                          "Click the ? button for details."));
    applyRememberedValue(useRemembered, clustering);
    addParameter(clustering);

    // "Guided" may start from no terms, and "Manual" says so itself when it has none.
    auto *terms = new Parameter(ParameterType::LongText, QStringLiteral("Terms"),
                                QStringLiteral("Terms"), QString());
    terms->setTextRequired(false);
    terms->setToolTip(QStringLiteral("A list of terms to cluster by, one per line.\n"
                                     "Click the ? button for details."));
    addParameter(terms);

    const QList<Parameter *> numbers {
        intOption("Fuzziness", "Closeness", 50, 0, 100, QStringLiteral("%"),
                  QStringLiteral("How minimum closeness to be considered part of a cluster.\n"
                                 "Set to 0% to assign everything to the nearest cluster.\n"
                                 "Click the ? button for details.")),
        intOption("Max_Auto_Clusters", "Max clusters", 10, 1, 1000, QString(),
                  QStringLiteral("The maximum number of clusters to create.")),
        intOption("Max_Auto_Time", "Max time", 60, 10, 10000, QStringLiteral(" seconds"),
                  QStringLiteral("The maximum time to calculate clustering, in seconds."))};
    for (Parameter *number : numbers) {
        applyRememberedValue(useRemembered, number);
        addParameter(number);
    }

    auto *caseSensitive = new Parameter(ParameterType::Bool, QStringLiteral("Case_Sensitive"),
                                        QStringLiteral("case sensitive"), false);
    caseSensitive->setToolTip(QStringLiteral("Ignore case if unchecked."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);
}

QList<ParameterState> TransformCluster::parameterStates() const
{
    const Parameter *clustering = parameter(QStringLiteral("Clustering"));
    const int way = clustering ? clustering->toSelectionIndex() : ClusterOptions::Manual;
    const bool searching = way != ClusterOptions::Manual;
    return {{QStringLiteral("Terms"), way != ClusterOptions::Automatic},
            {QStringLiteral("Max_Auto_Clusters"), searching},
            {QStringLiteral("Max_Auto_Time"), searching}};
}

Dataset &TransformCluster::process(Dataset &output, const TransformInputs &inputs,
                                   const RunContext &context, bool &)
{
    const Parameter *columnOption = &option(QStringLiteral("Column"));
    ClusterOptions options;
    options.mode = qBound(0, option(QStringLiteral("Clustering")).toSelectionIndex(), 2);
    options.terms = option(QStringLiteral("Terms")).toString();
    options.fuzziness = qBound(0, option(QStringLiteral("Fuzziness")).toInt(), 100);
    options.maxClusters = qBound(1, option(QStringLiteral("Max_Auto_Clusters")).toInt(), 1000);
    options.maxSeconds = qBound(10, option(QStringLiteral("Max_Auto_Time")).toInt(), 10000);
    options.caseSensitive = option(QStringLiteral("Case_Sensitive")).toBool();
    // A search starts from a new seed each run, so that another run may find better terms.
    options.seed = QRandomGenerator::global()->generate();
    options.stopRequested = [&context] {
        return context.isStopRequested();
    };
    options.progress = [this](qreal fraction) {
        emit processed(fraction);
    };

    output = inputDataset(inputs, 0);
    const int c = columnOption->toColumnIndex();
    const bool hasColumn = c >= 0 && c < output.columnCount();
    const int clusterColumn = ColumnNames::appendNamedColumn(output, QStringLiteral("Cluster"));
    const int closenessColumn = ColumnNames::appendNamedColumn(output, QStringLiteral("Closeness"));
    if (!hasColumn) {
        setResult(QStringLiteral("No changes"));
        return output;
    }
    if (options.mode == ClusterOptions::Manual
        && ClusterEngine::userTerms(options.terms, options.caseSensitive).isEmpty())
        addWarning(QStringLiteral("No terms to cluster on"));

    const ClusterOutcome outcome = ClusterEngine::cluster(output, c, options);
    if (options.mode != ClusterOptions::Manual && outcome.terms.isEmpty())
        addWarning(QStringLiteral("Insufficient data for clustering"));
    const int rowCount = output.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        const int term = outcome.termOfRow.at(r);
        if (term < 0) {
            output.setCell(r, clusterColumn, noneText());
            continue;
        }
        output.setCell(r, clusterColumn, outcome.terms.at(term));
        output.setCell(r, closenessColumn, QString::number(outcome.closenessOfRow.at(r)));
    }
    report(output, c, outcome, options);
    return output;
}

void TransformCluster::report(const Dataset &output, int c, const ClusterOutcome &outcome,
                              const ClusterOptions &options)
{
    if (options.mode != ClusterOptions::Manual) {
        addInformation(QStringLiteral("Tried %1 different combinations of clustering terms\n")
                           .arg(formatCount(outcome.combinationsTried)));
        if (outcome.timedOut) {
            addInformation(QStringLiteral("Exited when max time reached"));
            addInformation(QStringLiteral("Set '%1' longer for better results")
                               .arg(QStringLiteral("Max_Auto_Time")));
        }
    }

    const QStringList &terms = outcome.terms;
    addInformation(QStringLiteral("%1 clustering term(s)").arg(formatCount(terms.size())));
    QVector<int> order(terms.size());
    for (int t = 0; t < order.size(); ++t)
        order[t] = t;
    const auto termLine = [&](int t) {
        return QStringLiteral("%1  - %2").arg(terms.at(t), formatCount(outcome.rowsOfTerm.at(t)));
    };
    std::sort(order.begin(), order.end(), [&](int a, int b) { return terms.at(a) < terms.at(b); });
    addInformation(QStringLiteral("\nClustering term(s) alphabetically:"));
    for (int t : qAsConst(order))
        addInformation(termLine(t));
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
        return outcome.rowsOfTerm.at(a) > outcome.rowsOfTerm.at(b);
    });
    addInformation(QStringLiteral("\nClustering term(s) by count:"));
    for (int t : qAsConst(order))
        addInformation(termLine(t));

    // Each text left out once, as first spelt; a text of only blanks is no value to list.
    const int rowCount = output.rowCount();
    qint64 unassigned = 0;
    QSet<QString> spellings;
    QSet<QString> forms;
    QStringList lines;
    qint64 further = 0;
    for (int r = 0; r < rowCount; ++r) {
        if (outcome.termOfRow.at(r) >= 0)
            continue;
        ++unassigned;
        const QString &cell = output.cell(r, c);
        if (spellings.contains(cell))
            continue;
        spellings.insert(cell);
        const QString form = ClusterEngine::normalForm(cell, options.caseSensitive);
        if (form.isEmpty() || forms.contains(form))
            continue;
        forms.insert(form);
        if (lines.size() < ListedUnclustered)
            lines.append(QStringLiteral("'%1'").arg(cell));
        else
            ++further;
    }
    if (!lines.isEmpty()) {
        addInformation(QStringLiteral("\nValues not clustered:"));
        for (const QString &line : qAsConst(lines))
            addInformation(line);
        if (further > 0)
            addInformation(QStringLiteral("+ %1 more").arg(formatCount(further)));
    }
    if (unassigned > 0)
        addWarning(QStringLiteral("%1 row(s) not assigned a cluster").arg(formatCount(unassigned)));
    setResult(QStringLiteral("%1 clustered from %2 row(s)")
                  .arg(formatCount(rowCount - unassigned), formatCount(rowCount)));
}
