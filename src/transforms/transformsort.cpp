#include "transforms/transformsort.h"

#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"

const TransformDescriptor &TransformSort::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 55;
        d.typeName = QStringLiteral("Sort");
        d.displayName = QStringLiteral("Sort");
        d.category = CategoryRow;
        d.flags
            = TransformDescriptor::UsesDateFormats | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral(
            "Sort rows by text, numeric and date values in the selected column(s).");
        d.keywords = QStringList {
            QStringLiteral("order"),      QStringLiteral("orders"),  QStringLiteral("ascending"),
            QStringLiteral("descending"), QStringLiteral("arrange"), QStringLiteral("rank"),
            QStringLiteral("ranks"),      QStringLiteral("ranking"), QStringLiteral("sorts")};
        d.create = createTransform<TransformSort>;
        return d;
    }();
    return descriptor;
}

QStringList TransformSort::rankTypeNames()
{
    return {QStringLiteral("Minimum"), QStringLiteral("Average"), QStringLiteral("Maximum"),
            QStringLiteral("Dense"), QStringLiteral("Cumulative")};
}

void TransformSort::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *columns = new Parameter(ParameterType::SortColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Sorting"), input);
    columns->setToolTip(QStringLiteral(
        "The columns to sort by, most significant first, each ascending or descending."));
    addParameter(columns);

    auto *rankAdd = new Parameter(ParameterType::Bool, QStringLiteral("Rank_Add"),
                                  QStringLiteral("add rank column"), false);
    rankAdd->setToolTip(QStringLiteral("Check to add a column with the rank of each row."));
    applyRememberedValue(useRemembered, rankAdd);
    addParameter(rankAdd);

    const QStringList rankTypes = rankTypeNames();
    auto *rankType = new Parameter(ParameterType::Selection, QStringLiteral("Rank_Types"),
                                   QStringLiteral("Rank type"), rankTypes.first(), rankTypes);
    rankType->setToolTip(
        QStringLiteral("How rows with equal values are ranked:\n%1: Minimum rank of each group.\n"
                       "%2: Average rank of each group.\n%3: Maximum rank of each group\n"
                       "%4: No gaps between groups.\n"
                       "%5: Proportion of rows with the same or lower numbered rank.")
            .arg(rankTypes.at(0), rankTypes.at(1), rankTypes.at(2), rankTypes.at(3),
                 rankTypes.at(4)));
    applyRememberedValue(useRemembered, rankType);
    addParameter(rankType);

    auto *rankBy = new Parameter(ParameterType::SingleColumn, QStringLiteral("Rank_By"),
                                 QStringLiteral("Rank by"), input);
    rankBy->setColumnRequired(false);
    rankBy->setToolTip(QStringLiteral("Rank separately for each value in this column.\n"
                                      "Leave as %1 to rank all rows together.")
                           .arg(rankBy->noneText()));
    addParameter(rankBy);

    auto *intelligent = new Parameter(ParameterType::Bool, QStringLiteral("Intelligent_Sort"),
                                      QStringLiteral("intelligent sort"), true);
    intelligent->setToolTip(QStringLiteral(
        "Check to sort date and numeric columns by their values, not alphabetically."));
    applyRememberedValue(useRemembered, intelligent);
    addParameter(intelligent);

    auto *localeAware = new Parameter(ParameterType::Bool, QStringLiteral("Locale_Aware_Sort"),
                                      QStringLiteral("locale aware sort"), false);
    localeAware->setToolTip(
        QStringLiteral("Check to sort text by the rules of the locale, not by character codes."));
    applyRememberedValue(useRemembered, localeAware);
    addParameter(localeAware);

    auto *caseSensitive = new Parameter(ParameterType::Bool, QStringLiteral("Case_Sensitive"),
                                        QStringLiteral("case sensitive"), true);
    caseSensitive->setToolTip(QStringLiteral("Uncheck to sort text regardless of case."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);
}

QList<ParameterState> TransformSort::parameterStates() const
{
    const Parameter *rankAdd = parameter(QStringLiteral("Rank_Add"));
    const Parameter *localeAware = parameter(QStringLiteral("Locale_Aware_Sort"));
    const bool ranking = rankAdd && rankAdd->toBool();
    // The locale's collation has its own rules for case.
    const bool byLocale = localeAware && localeAware->toBool();
    return {{QStringLiteral("Rank_Types"), ranking},
            {QStringLiteral("Rank_By"), ranking},
            {QStringLiteral("Case_Sensitive"), !byLocale}};
}

Dataset &TransformSort::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                                bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));
    const Parameter *rankAddOption = &option(QStringLiteral("Rank_Add"));
    const Parameter *rankTypeOption = &option(QStringLiteral("Rank_Types"));
    const Parameter *rankByOption = &option(QStringLiteral("Rank_By"));
    const Parameter *intelligentOption = &option(QStringLiteral("Intelligent_Sort"));
    const Parameter *localeOption = &option(QStringLiteral("Locale_Aware_Sort"));
    const Parameter *caseOption = &option(QStringLiteral("Case_Sensitive"));

    const Dataset &input = *inputs.first().dataset;
    output = input;
    QList<int> keys;
    const QList<QPair<int, bool>> columns = columnsOption->toSortIndexes();
    for (const QPair<int, bool> &column : columns)
        keys.append(column.second ? column.first + 1 : -(column.first + 1));

    const bool addRank = rankAddOption->toBool();
    if (addRank && output.hasColumns())
        ColumnNames::appendNamedColumn(output, QStringLiteral("Rank"));
    if (keys.isEmpty()) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    const bool intelligent = intelligentOption->toBool();
    QStringList info;
    output.sortRows(keys, dateFormats(), addRank, rankTypeOption->toSelectionIndex(),
                    rankByOption->toColumnIndex(), localeOption->toBool(), caseOption->toBool(),
                    intelligent, &info);
    if (intelligent) {
        for (const QString &line : qAsConst(info))
            addInformation(line);
    }
    setResult(output.equals(input) ? QStringLiteral("No changes") : QStringLiteral("Sorted"));
    return output;
}
