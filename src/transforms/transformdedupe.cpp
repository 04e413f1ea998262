#include "transforms/transformdedupe.h"

#include "transforms/columnnames.h"
#include "transforms/dedupeengine.h"
#include "transforms/framework/parameter.h"
#include "transforms/keymatching.h"

namespace {

const QStringList &matchTypes()
{
    static const QStringList types {QStringLiteral("Exact"), QStringLiteral("Fuzzy")};
    return types;
}

} // namespace

const TransformDescriptor &TransformDedupe::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 14;
        d.typeName = QStringLiteral("Dedupe");
        d.displayName = QStringLiteral("Dedupe");
        d.category = CategoryRow;
        d.flags = TransformDescriptor::KeepsSourceRows | TransformDescriptor::HasDuplicateOptions;
        d.description = QStringLiteral(
            "Remove duplicate rows by matching values in all the selected columns.");
        d.keywords = QStringList {
            QStringLiteral("dupe"),   QStringLiteral("distinct"),      QStringLiteral("fuzzy"),
            QStringLiteral("same"),   QStringLiteral("duplicates"),    QStringLiteral("removes"),
            QStringLiteral("unique"), QStringLiteral("deduplication"), QStringLiteral("dedupes")};
        d.create = createTransform<TransformDedupe>;
        return d;
    }();
    return descriptor;
}

QStringList TransformDedupe::modeNames()
{
    return {QStringLiteral("Remove duplicates"), QStringLiteral("Keep only duplicates"),
            QStringLiteral("Add duplicate information")};
}

void TransformDedupe::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    auto *columns = new Parameter(ParameterType::MultipleColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Columns"), inputs.value(0));
    columns->selectOnlyColumn();
    addParameter(columns);

    auto *matchType = new Parameter(ParameterType::Selection, QStringLiteral("Match_Type"),
                                    QStringLiteral("Matching"), matchTypes().first(), matchTypes());
    matchType->setToolTip(QStringLiteral("Match type. Fuzzy matching allows matching of rows "
                                         "that are close, but not identical.\nFuzzy matching "
                                         "is slower."));
    applyRememberedValue(useRemembered, matchType);
    addParameter(matchType);

    Parameter *fuzziness = KeyMatching::createFuzzinessParameter(QStringLiteral(
        "How close the match has to be as a percentage to be considered a duplicate.\nE.g. "
        "setting it to 80 means text in checked columns must be at least 80% the same."));
    applyRememberedValue(useRemembered, fuzziness);
    addParameter(fuzziness);

    struct Check
    {
        const char *key;
        const char *label;
        bool value;
        const char *toolTip;
    };
    const Check checks[] = {
        {"Case_Sensitive", "case sensitive", true, "Check for case sensitive matching."},
        {"Ignore_Spaces", "ignore whitespace", false, "Check to ignore whitespace when matching."},
        {"Ignore_Punctuation", "ignore punctuation", false,
         "Check to ignore punctuation when matching."},
    };
    for (const Check &check : checks) {
        auto *option = new Parameter(ParameterType::Bool, QString::fromLatin1(check.key),
                                     QString::fromLatin1(check.label), check.value);
        option->setToolTip(QString::fromLatin1(check.toolTip));
        applyRememberedValue(useRemembered, option);
        addParameter(option);
    }

    const QStringList modes = modeNames();
    auto *mode = new Parameter(ParameterType::Selection, QStringLiteral("Dedupe_Mode"),
                               QStringLiteral("Mode"), modes.first(), modes);
    mode->setToolTip(
        QStringLiteral("%1: Removes all duplicate rows.\n%2: Keeps only the duplicate rows (the "
                       "inverse of '%1').\n%3: Adds extra columns with information about "
                       "duplicates. Reorders rows, but does not remove them.")
            .arg(modes.at(0), modes.at(1), modes.at(2)));
    applyRememberedValue(useRemembered, mode);
    addParameter(mode);

    auto *drilldown = new Parameter(ParameterType::Bool, QStringLiteral("Drilldown"),
                                    QStringLiteral("allow drilldown"), false);
    drilldown->setToolTip(QStringLiteral("Allow double click to drilldown in the data table."));
    applyRememberedValue(useRemembered, drilldown);
    addParameter(drilldown);
}

QList<ParameterState> TransformDedupe::parameterStates() const
{
    const Parameter *matchType = parameter(QStringLiteral("Match_Type"));
    const Parameter *mode = parameter(QStringLiteral("Dedupe_Mode"));
    const bool exact = !matchType || matchType->toSelectionIndex() == 0;
    const bool removing = !mode || mode->toSelectionIndex() == DedupeOptions::RemoveDuplicates;
    return {{QStringLiteral("Fuzziness"), !exact},
            {QStringLiteral("Drilldown"), exact && removing}};
}

Dataset &TransformDedupe::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &context, bool &)
{
    const Parameter *columns = &option(QStringLiteral("Columns"));
    const Parameter *matchType = &option(QStringLiteral("Match_Type"));
    const Parameter *fuzziness = &option(QStringLiteral("Fuzziness"));
    const Parameter *caseSensitive = &option(QStringLiteral("Case_Sensitive"));
    const Parameter *ignoreSpaces = &option(QStringLiteral("Ignore_Spaces"));
    const Parameter *ignorePunctuation = &option(QStringLiteral("Ignore_Punctuation"));
    const Parameter *mode = &option(QStringLiteral("Dedupe_Mode"));
    const Parameter *drilldown = &option(QStringLiteral("Drilldown"));
    const Dataset &input = *inputs.first().dataset;

    DedupeOptions options;
    columns->toColumnIndexes(&options.columns, true);
    options.caseSensitive = caseSensitive->toBool();
    options.ignoreSpaces = ignoreSpaces->toBool();
    options.ignorePunctuation = ignorePunctuation->toBool();
    options.threshold
        = matchType->toSelectionIndex() == 0 ? 100 : qBound(40, fuzziness->toInt(), 99);
    options.mode = qBound(0, mode->toSelectionIndex(), 2);
    options.drilldown = drilldown->toBool();
    options.stopRequested = [&context] {
        return context.isStopRequested();
    };

    if (options.columns.isEmpty()) {
        output = input;
        if (options.mode == DedupeOptions::AddInformation) {
            for (const QString &name : DedupeEngine::informationColumns())
                ColumnNames::appendNamedColumn(output, name);
        }
    } else {
        DedupeProgress progress;
        connect(&progress, qOverload<qreal>(&DedupeProgress::processed), this,
                &Transform::processed);
        output = DedupeEngine::findDuplicates(&progress, input, options).output;
    }

    if (options.mode == DedupeOptions::AddInformation)
        setResult(QStringLiteral("Duplicate information added"));
    else
        setResult(rowsRemovedText(input.rowCount() - output.rowCount()));
    return output;
}
