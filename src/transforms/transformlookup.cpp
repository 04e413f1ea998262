#include "transforms/transformlookup.h"

#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"
#include "transforms/keymatching.h"

#include <QSet>
#include <QVector>

#include <algorithm>

namespace {

enum MatchType { Exact = 0, Fuzzy = 1, NotExact = 15 };
enum ValuesUsed { FirstValue = 0, AllValues = 1 };
enum NoMatch { UseNoMatchValue = 0, LeaveUnchanged = 1 };

// Misses named one by one before the rest are counted.
constexpr int ListedMisses = 5;
constexpr int FuzzyProgressRows = 10;

// How a match type other than Exact, Fuzzy and Not exact is tested: the operator and whether
// the bottom key stands on its left.
struct OperatorTest
{
    int op;
    bool bottomLeft;
};

OperatorTest operatorTest(int matchType)
{
    using Op = ComparisonOperator;
    static const OperatorTest tests[]
        = {{Op::EqualTo, true},          {Op::EqualTo, true},
           {Op::EqualTo, true},          {Op::Contains, true},
           {Op::StartsWith, true},       {Op::EndsWith, true},
           {Op::GreaterThan, true},      {Op::GreaterThanOrEqual, true},
           {Op::MatchesRegex, true},     {Op::Contains, false},
           {Op::StartsWith, false},      {Op::EndsWith, false},
           {Op::GreaterThan, false},     {Op::GreaterThanOrEqual, false},
           {Op::MatchesRegex, false},    {Op::NotEqualTo, true},
           {Op::NotEqualTo, true},       {Op::DoesNotContain, true},
           {Op::DoesNotStartWith, true}, {Op::DoesNotEndWith, true},
           {Op::DoesNotContain, false},  {Op::DoesNotStartWith, false},
           {Op::DoesNotEndWith, false}};
    return tests[std::clamp(matchType, 0, int(sizeof(tests) / sizeof(tests[0])) - 1)];
}

// The values of the matching bottom rows, each once and in the order met.
class ValueCollector
{
public:
    explicit ValueCollector(bool all)
        : m_all(all)
    { }
    // False once no further value is wanted.
    bool add(const QString &value)
    {
        if (!m_seen.contains(value)) {
            m_seen.insert(value);
            m_values.append(value);
        }
        return m_all;
    }
    bool isEmpty() const { return m_values.isEmpty(); }
    void clear()
    {
        m_seen.clear();
        m_values.clear();
    }
    QString text(const QString &delimiter) const
    {
        return m_values.size() == 1 ? m_values.first() : m_values.join(delimiter);
    }

private:
    bool m_all;
    QSet<QString> m_seen;
    QStringList m_values;
};

// "%1 misses in the <column>:", the listed misses and a count of the rest.
QString missesText(qint64 misses, const QStringList &listed, const QString &column)
{
    QString text
        = QStringLiteral("%1 in the %2:")
              .arg(KeyMatching::countText(misses, QStringLiteral("miss"), QStringLiteral("misses")),
                   column);
    for (const QString &line : listed)
        text += QLatin1Char('\n') + line;
    if (misses > listed.size())
        text += QLatin1Char('\n')
            + QStringLiteral("+ %1").arg(KeyMatching::countText(
                misses - listed.size(), QStringLiteral("miss"), QStringLiteral("misses")));
    return text;
}

} // namespace

const TransformDescriptor &TransformLookup::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 29;
        d.typeName = QStringLiteral("Lookup");
        d.displayName = QStringLiteral("Lookup");
        d.category = CategoryMerge;
        d.minimumInputs = 2;
        d.maximumInputs = 2;
        d.flags = TransformDescriptor::HasKeyColumns;
        d.description = QStringLiteral(
            "Create a new column in the top dataset using values looked up in the bottom dataset.");
        d.keywords = QStringList {
            QStringLiteral("vlookup"),   QStringLiteral("hlookup"), QStringLiteral("xlookup"),
            QStringLiteral("find"),      QStringLiteral("search"),  QStringLiteral("keys"),
            QStringLiteral("fuzzy"),     QStringLiteral("match"),   QStringLiteral("regex"),
            QStringLiteral("reference"), QStringLiteral("map"),     QStringLiteral("join")};
        d.create = createTransform<TransformLookup>;
        return d;
    }();
    return descriptor;
}

QStringList TransformLookup::matchTypeNames()
{
    return {QStringLiteral("Exact"),
            QStringLiteral("Fuzzy"),
            QStringLiteral("Equal"),
            QStringLiteral("Bottom contains top"),
            QStringLiteral("Bottom starts with top"),
            QStringLiteral("Bottom ends with top"),
            QStringLiteral("Bottom greater than top"),
            QStringLiteral("Bottom greater than equal to top"),
            QStringLiteral("Bottom matches top regex"),
            QStringLiteral("Top contains bottom"),
            QStringLiteral("Top starts with bottom"),
            QStringLiteral("Top ends with bottom"),
            QStringLiteral("Top greater than bottom"),
            QStringLiteral("Top greater than equal to bottom"),
            QStringLiteral("Top matches bottom regex"),
            QStringLiteral("Not exact"),
            QStringLiteral("Not equal"),
            QStringLiteral("Bottom doesn't contain top"),
            QStringLiteral("Bottom doesn't start with top"),
            QStringLiteral("Bottom doesn't end with top"),
            QStringLiteral("Top doesn't contain bottom"),
            QStringLiteral("Top doesn't start with bottom"),
            QStringLiteral("Top doesn't end with bottom")};
}

void TransformLookup::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    createNameParameters(useRemembered);
    createColumnParameters(inputs.value(0), inputs.value(1));
    createMatchParameters(useRemembered);
    createValueParameters(useRemembered);
    createNoMatchParameters(useRemembered);

    Parameter *caseSensitive = KeyMatching::createCaseSensitiveParameter();
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);
}

void TransformLookup::createNameParameters(bool useRemembered)
{
    auto *autoName = new Parameter(ParameterType::Bool, QStringLiteral("Auto_New_Name"),
                                   QStringLiteral("Auto name"), true);
    autoName->setToolTip(QStringLiteral("Name the new column after the bottom value column."));
    applyRememberedValue(useRemembered, autoName);
    addParameter(autoName);

    auto *newName = new Parameter(ParameterType::Text, QStringLiteral("New_Name"),
                                  QStringLiteral("New column name"), QString());
    newName->setToolTip(QStringLiteral("The name of the new column."));
    addParameter(newName);
}

void TransformLookup::createColumnParameters(ColumnSource *top, ColumnSource *bottom)
{
    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Top_Lookup_Column"), QStringLiteral("Top lookup column"), top,
        QStringLiteral("The column of the top dataset whose values are looked up.")));
    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Bottom_Lookup_Column"), QStringLiteral("Bottom lookup column"), bottom,
        QStringLiteral("The column of the bottom dataset in which the values are sought.")));
    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Bottom_Value_Column"), QStringLiteral("Bottom value column"), bottom,
        QStringLiteral("The column of the bottom dataset whose values are copied into the new "
                       "column.")));
}

void TransformLookup::createMatchParameters(bool useRemembered)
{
    const QStringList types = matchTypeNames();
    auto *matchType = new Parameter(ParameterType::Selection, QStringLiteral("Match_Type"),
                                    QStringLiteral("Match type"), types.first(), types);
    matchType->setToolTip(QStringLiteral(
        "How a top value is compared with the bottom values. Exact is fastest; all but Exact "
        "and Fuzzy compare with every bottom row in turn, numbers and dates as such."));
    applyRememberedValue(useRemembered, matchType);
    addParameter(matchType);

    Parameter *fuzziness = KeyMatching::createFuzzinessParameter(
        QStringLiteral("How close the values have to be as a percentage to be considered a "
                       "match.\nE.g. setting it to 80 means they must be at least 80% the same."));
    applyRememberedValue(useRemembered, fuzziness);
    addParameter(fuzziness);
}

void TransformLookup::createValueParameters(bool useRemembered)
{
    auto *valuesUsed
        = new Parameter(ParameterType::Selection, QStringLiteral("Bottom_Values_Used"),
                        QStringLiteral("Use"), QStringLiteral("First"),
                        QStringList {QStringLiteral("First"), QStringLiteral("All unique")});
    valuesUsed->setToolTip(QStringLiteral("With several matching bottom rows, use the value of "
                                          "the first, or every different value joined."));
    applyRememberedValue(useRemembered, valuesUsed);
    addParameter(valuesUsed);

    auto *fuzzyUsed
        = new Parameter(ParameterType::Selection, QStringLiteral("Fuzzy_Bottom_Values_Used"),
                        QStringLiteral("Use"), QStringLiteral("First best"),
                        QStringList {QStringLiteral("First best"), QStringLiteral("All best")});
    fuzzyUsed->setToolTip(QStringLiteral("Use the value of the first of the closest bottom rows, "
                                         "or every different value of the closest rows joined."));
    applyRememberedValue(useRemembered, fuzzyUsed);
    addParameter(fuzzyUsed);

    auto *delimiter = new Parameter(ParameterType::Text, QStringLiteral("Delim"),
                                    QStringLiteral("Delimiter"), QStringLiteral(","));
    delimiter->setTextRequired(false);
    delimiter->setToolTip(QStringLiteral("The text between values when several are used."));
    applyRememberedValue(useRemembered, delimiter);
    addParameter(delimiter);
}

void TransformLookup::createNoMatchParameters(bool useRemembered)
{
    auto *ifNoMatch = new Parameter(
        ParameterType::Selection, QStringLiteral("If_No_Match"), QStringLiteral("If no match"),
        QStringLiteral("Use no match value"),
        QStringList {QStringLiteral("Use no match value"), QStringLiteral("Leave unchanged")});
    ifNoMatch->setToolTip(QStringLiteral("What a row whose value has no match gets: the no match "
                                         "value, or its own lookup value unchanged."));
    applyRememberedValue(useRemembered, ifNoMatch);
    addParameter(ifNoMatch);

    auto *noMatchValue = new Parameter(ParameterType::Text, QStringLiteral("Non_Matching_Value"),
                                       QStringLiteral("No match value"), QString());
    noMatchValue->setTextRequired(false);
    noMatchValue->setToolTip(QStringLiteral("The value for rows without a match. Column "
                                            "variables such as $(1) or $(name) take the values "
                                            "of the row."));
    applyRememberedValue(useRemembered, noMatchValue);
    addParameter(noMatchValue);
}

void TransformLookup::connectParameters(ColumnSources inputs)
{
    ColumnSource *top = inputs.value(0);
    ColumnSource *bottom = inputs.value(1);
    for (Parameter *option : parameters()) {
        if (!option->isColumnRelated())
            continue;
        option->setSourceNode(option->key() == QLatin1String("Top_Lookup_Column") ? top : bottom);
    }
}

bool TransformLookup::autoConfigure(const ColumnSources &inputs)
{
    return KeyMatching::autoConfigureKeys(parameter(QStringLiteral("Top_Lookup_Column")),
                                          parameter(QStringLiteral("Bottom_Lookup_Column")),
                                          inputs);
}

QList<ParameterState> TransformLookup::parameterStates() const
{
    const Parameter *autoName = parameter(QStringLiteral("Auto_New_Name"));
    const Parameter *matchType = parameter(QStringLiteral("Match_Type"));
    const Parameter *valuesUsed = parameter(QStringLiteral("Bottom_Values_Used"));
    const Parameter *fuzzyUsed = parameter(QStringLiteral("Fuzzy_Bottom_Values_Used"));
    const Parameter *ifNoMatch = parameter(QStringLiteral("If_No_Match"));
    const bool fuzzy = matchType && matchType->toSelectionIndex() == Fuzzy;
    const bool all = fuzzy ? fuzzyUsed && fuzzyUsed->toSelectionIndex() == AllValues
                           : valuesUsed && valuesUsed->toSelectionIndex() == AllValues;
    return {{QStringLiteral("New_Name"), !autoName || !autoName->toBool()},
            {QStringLiteral("Fuzziness"), fuzzy},
            {QStringLiteral("Bottom_Values_Used"), !fuzzy},
            {QStringLiteral("Fuzzy_Bottom_Values_Used"), fuzzy},
            {QStringLiteral("Delim"), all},
            {QStringLiteral("Non_Matching_Value"),
             !ifNoMatch || ifNoMatch->toSelectionIndex() == UseNoMatchValue}};
}

// What one run reads from the options.
struct TransformLookup::Options
{
    bool autoName = false;
    QString newName;
    int topKey = -1;
    int bottomKey = -1;
    int bottomValue = -1;
    int matchType = Exact;
    int threshold = 0;
    bool useAll = false;
    QString delimiter;
    bool leaveUnchanged = false;
    QString noMatchValue;
    bool caseSensitive = false;
};

// The new column's values and what the lookup met on the way.
struct TransformLookup::LookedUp
{
    QStringList values;
    qint64 matched = 0;
    qint64 misses = 0;
    // The first misses, named one by one.
    QStringList missLines;
};

// How the bottom rows are searched for the key of one top row: through the index of the
// bottom keys for Exact, else by a walk over every bottom row with keys prepared once for
// all the walks.
class TransformLookup::BottomSearch
{
public:
    BottomSearch(const Dataset &top, const Dataset &bottom, const KeyMatching::KeyIndex &index,
                 const Options &options)
        : m_bottom(bottom)
        , m_index(index)
        , m_matchType(options.matchType)
        , m_bottomValue(options.bottomValue)
        , m_threshold(options.threshold)
        , m_useAll(options.useAll)
        , m_caseSensitive(options.caseSensitive)
    {
        if (m_matchType == Exact)
            return;
        const int bottomRows = bottom.rowCount();
        const bool lowered = m_matchType == Fuzzy || m_matchType == NotExact;
        m_bottomKeys.reserve(bottomRows);
        for (int b = 0; b < bottomRows; ++b) {
            const QString &cell = bottom.cell(b, options.bottomKey);
            m_bottomKeys.append(lowered ? KeyMatching::keyText(cell, m_caseSensitive) : cell);
        }
        if (lowered)
            return;
        m_test = operatorTest(m_matchType);
        const QStringList formats = dateFormats();
        if (!top.isDateColumn(options.topKey, formats, &m_topFormat))
            m_topFormat.clear();
        if (!bottom.isDateColumn(options.bottomKey, formats, &m_bottomFormat))
            m_bottomFormat.clear();
    }

    // Adds the values of the bottom rows that match cell to found, which starts empty.
    void find(const QString &cell, ValueCollector &found) const
    {
        if (m_matchType == Exact)
            findExact(cell, found);
        else if (m_matchType == Fuzzy)
            findFuzzy(cell, found);
        else if (m_matchType == NotExact)
            findNotExact(cell, found);
        else
            findByOperator(cell, found);
    }

private:
    void findExact(const QString &cell, ValueCollector &found) const
    {
        for (int b = m_index.first(KeyMatching::keyText(cell, m_caseSensitive)); b >= 0;
             b = m_index.next(b)) {
            if (!found.add(m_bottom.cell(b, m_bottomValue)))
                break;
        }
    }

    // Only the bottom rows of the best score count.
    void findFuzzy(const QString &cell, ValueCollector &found) const
    {
        const QString key = KeyMatching::keyText(cell, m_caseSensitive);
        const int bottomRows = m_bottom.rowCount();
        int best = -1;
        for (int b = 0; b < bottomRows; ++b) {
            // Raising the threshold to the best so far lets the banded distance give up
            // early on every row that cannot win.
            const int needed = std::max(m_threshold, m_useAll ? best : best + 1);
            if (needed > 100)
                break;
            const int score = similarity(key, m_bottomKeys.at(b), needed);
            if (score < needed)
                continue;
            if (score > best) {
                best = score;
                found.clear();
            }
            found.add(m_bottom.cell(b, m_bottomValue));
        }
    }

    void findNotExact(const QString &cell, ValueCollector &found) const
    {
        const QString key = KeyMatching::keyText(cell, m_caseSensitive);
        const int bottomRows = m_bottom.rowCount();
        for (int b = 0; b < bottomRows; ++b) {
            if (m_bottomKeys.at(b) != key && !found.add(m_bottom.cell(b, m_bottomValue)))
                break;
        }
    }

    void findByOperator(const QString &cell, ValueCollector &found) const
    {
        const Qt::CaseSensitivity sensitivity
            = m_caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
        const int bottomRows = m_bottom.rowCount();
        for (int b = 0; b < bottomRows; ++b) {
            const bool hit = m_test.bottomLeft
                ? ComparisonOperator::evaluate(m_test.op, m_bottomKeys.at(b), cell, m_bottomFormat,
                                               m_topFormat, sensitivity)
                : ComparisonOperator::evaluate(m_test.op, cell, m_bottomKeys.at(b), m_topFormat,
                                               m_bottomFormat, sensitivity);
            if (hit && !found.add(m_bottom.cell(b, m_bottomValue)))
                break;
        }
    }

    const Dataset &m_bottom;
    const KeyMatching::KeyIndex &m_index;
    const int m_matchType;
    const int m_bottomValue;
    const int m_threshold;
    const bool m_useAll;
    const bool m_caseSensitive;
    QStringList m_bottomKeys;
    QString m_topFormat;
    QString m_bottomFormat;
    OperatorTest m_test {0, true};
};

Dataset &TransformLookup::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &, bool &)
{
    const Options options = readOptions();
    // The output is read as the top dataset until the new column is added at the end.
    output = inputDataset(inputs, 0);
    const Dataset &top = output;
    if (inputs.size() == 1) {
        setResult(KeyMatching::connectSecondText());
        return output;
    }
    const Dataset &bottom = *inputs.at(1).dataset;
    if (options.topKey < 0 || options.bottomKey < 0 || options.bottomValue < 0) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    const LookedUp found = lookUpValues(top, bottom, options);
    const QString name = options.autoName
        ? QStringLiteral("%1 %2").arg(displayName(), bottom.headerText(options.bottomValue))
        : options.newName;
    const int column = ColumnNames::appendNamedColumn(output, name);
    output.setColumn(column, found.values);

    if (found.misses > 0)
        addInformation(missesText(found.misses, found.missLines, top.headerText(options.topKey)));
    setResult(QStringLiteral("%1 matched, %2 unmatched")
                  .arg(formatCount(found.matched), formatCount(found.misses)));
    return output;
}

TransformLookup::Options TransformLookup::readOptions() const
{
    Options options;
    options.autoName = option(QStringLiteral("Auto_New_Name")).toBool();
    options.newName = option(QStringLiteral("New_Name")).toString();
    options.topKey = option(QStringLiteral("Top_Lookup_Column")).toColumnIndex();
    options.bottomKey = option(QStringLiteral("Bottom_Lookup_Column")).toColumnIndex();
    options.bottomValue = option(QStringLiteral("Bottom_Value_Column")).toColumnIndex();
    options.matchType = option(QStringLiteral("Match_Type")).toSelectionIndex();
    options.threshold = option(QStringLiteral("Fuzziness")).toInt();
    const QString usedKey = options.matchType == Fuzzy ? QStringLiteral("Fuzzy_Bottom_Values_Used")
                                                       : QStringLiteral("Bottom_Values_Used");
    options.useAll = option(usedKey).toSelectionIndex() == AllValues;
    options.delimiter = option(QStringLiteral("Delim")).toString();
    options.leaveUnchanged
        = option(QStringLiteral("If_No_Match")).toSelectionIndex() == LeaveUnchanged;
    options.noMatchValue = option(QStringLiteral("Non_Matching_Value")).toString();
    options.caseSensitive = option(QStringLiteral("Case_Sensitive")).toBool();
    return options;
}

TransformLookup::LookedUp TransformLookup::lookUpValues(const Dataset &top, const Dataset &bottom,
                                                        const Options &options)
{
    const int matchType = options.matchType;
    const int topKey = options.topKey;
    const int topRows = top.rowCount();
    const int total = topRows + (matchType == Exact ? bottom.rowCount() : 0);
    const KeyMatching::KeyIndex index = matchType == Exact
        ? KeyMatching::KeyIndex(bottom, options.bottomKey, options.caseSensitive,
                                [this, total](int r) { reportRow(r, total); })
        : KeyMatching::KeyIndex(Dataset(), 0, true);
    const BottomSearch search(top, bottom, index, options);
    const qreal base = qreal(total - topRows) / qMax(1, total);
    const int progressStep = matchType == Fuzzy ? FuzzyProgressRows : 1000;
    const QHash<QString, ColumnIndex> topColumns = top.columnsByName();

    LookedUp result;
    result.values.reserve(topRows);
    ValueCollector found(options.useAll);
    for (int r = 0; r < topRows; ++r) {
        if (r % progressStep == 0)
            emit processed(base + qreal(r) / qMax(1, total));
        const QString &cell = top.cell(r, topKey);
        found.clear();
        search.find(cell, found);
        if (!found.isEmpty()) {
            ++result.matched;
            result.values.append(found.text(options.delimiter));
            continue;
        }
        ++result.misses;
        if (result.missLines.size() < ListedMisses)
            result.missLines.append(
                QStringLiteral("'%1' at row %2").arg(cell, QString::number(r + 1)));
        result.values.append(options.leaveUnchanged ? cell
                                                    : top.substituteColumnVariables(
                                                        options.noMatchValue, topColumns, r));
    }
    if (matchType != Exact && matchType != Fuzzy)
        clearComparisonCaches();
    return result;
}
