#include "transforms/transformimpute.h"

#include "data/numericlist.h"
#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"

#include <QHash>

#include <algorithm>

namespace {

// The most frequent of the texts; ties go to the one met first, and are all kept so that the
// user can be told of them.
struct ModeOfTexts
{
    QString text;
    int occurs = 0;
    QStringList tied;
};

ModeOfTexts modeOf(const QStringList &texts)
{
    QHash<QString, int> counts;
    QStringList order;
    for (const QString &text : texts) {
        int &count = counts[text];
        if (count++ == 0)
            order.append(text);
    }
    ModeOfTexts mode;
    for (const QString &text : qAsConst(order)) {
        const int count = counts.value(text);
        if (count > mode.occurs) {
            mode.occurs = count;
            mode.tied = QStringList {text};
        } else if (count == mode.occurs) {
            mode.tied.append(text);
        }
    }
    mode.text = mode.tied.value(0);
    return mode;
}

// The average or median of the numbers among the texts, as cell text; empty when none is one.
QString numericFill(const QStringList &texts, int using_)
{
    const QVector<double> numbers = NumericList::fromTexts(texts);
    if (numbers.isEmpty())
        return QString();
    return numberToCellText(using_ == TransformImpute::Median ? NumericList::median(numbers)
                                                              : NumericList::average(numbers));
}

QString usingWord(int using_)
{
    return using_ == TransformImpute::Median ? QStringLiteral("median") : QStringLiteral("average");
}

} // namespace

struct TransformImpute::Settings
{
    int using_ = Mode;
    bool best = false;
    bool caseSensitive = true;
    QString columnName;
};

// Finds, for the row of an empty cell, the rows whose values in the matching columns agree:
// all of them (exact), or those that agree in the most columns, at least one (best).
class TransformImpute::Matcher
{
public:
    Matcher(const Dataset &dataset, int column, const QList<int> &matching, bool best,
            bool caseSensitive)
        : m_dataset(dataset)
        , m_matching(matching)
        , m_best(best)
        , m_caseSensitive(caseSensitive)
        , m_byValue(matching.size())
    {
        const int rowCount = dataset.rowCount();
        for (int r = 0; r < rowCount; ++r) {
            if (dataset.cell(r, column).isEmpty())
                continue;
            if (m_best) {
                for (int i = 0; i < m_matching.size(); ++i)
                    m_byValue[i][text(r, m_matching.at(i))].append(r);
            } else {
                m_byKey[key(r)].append(r);
            }
        }
        if (m_best)
            m_score.fill(0, rowCount);
    }

    QString key(int r) const
    {
        QStringList parts;
        for (int c : m_matching)
            parts.append(text(r, c));
        return parts.join(QChar(0x1f));
    }

    // The matching rows that hold a value, in row order.
    QVector<int> donors(int r)
    {
        if (!m_best)
            return m_byKey.value(key(r));
        QVector<int> touched;
        int most = 0;
        for (int i = 0; i < m_matching.size(); ++i) {
            const auto found = m_byValue.at(i).constFind(text(r, m_matching.at(i)));
            if (found == m_byValue.at(i).cend())
                continue;
            for (int d : found.value()) {
                if (m_score[d]++ == 0)
                    touched.append(d);
                most = qMax(most, m_score.at(d));
            }
        }
        std::sort(touched.begin(), touched.end());
        QVector<int> result;
        for (int d : qAsConst(touched)) {
            if (m_score.at(d) == most)
                result.append(d);
            m_score[d] = 0;
        }
        return result;
    }

private:
    QString text(int r, int c) const
    {
        const QString &cell = m_dataset.cell(r, c);
        return m_caseSensitive ? cell : cell.toLower();
    }

    const Dataset &m_dataset;
    QList<int> m_matching;
    bool m_best;
    bool m_caseSensitive;
    QHash<QString, QVector<int>> m_byKey;
    QVector<QHash<QString, QVector<int>>> m_byValue;
    QVector<int> m_score;
};

const TransformDescriptor &TransformImpute::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 23;
        d.typeName = QStringLiteral("Impute");
        d.displayName = QStringLiteral("Impute");
        d.category = CategoryOther;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly
            | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Infer values of missing data.");
        d.keywords = QStringList {QStringLiteral("missing"), QStringLiteral("empty"),
                                  QStringLiteral("blanks"),  QStringLiteral("fill"),
                                  QStringLiteral("mean"),    QStringLiteral("averages"),
                                  QStringLiteral("median"),  QStringLiteral("mode"),
                                  QStringLiteral("infer"),   QStringLiteral("imputation")};
        d.create = createTransform<TransformImpute>;
        return d;
    }();
    return descriptor;
}

void TransformImpute::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *columns = new Parameter(ParameterType::MultipleColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Columns"), input);
    columns->setToolTip(QStringLiteral("The columns whose empty values are to be set."));
    columns->selectOnlyColumn();
    addParameter(columns);

    const QStringList ways {QStringLiteral("Average"), QStringLiteral("Median"),
                            QStringLiteral("Mode")};
    auto *using_ = new Parameter(ParameterType::Selection, QStringLiteral("Using"),
                                 QStringLiteral("Using"), ways.at(Mode), ways);
    using_->setToolTip(QStringLiteral("Whether to use the average (mean), median or mode of "
                                      "other non-empty values in the column.\nAverage and "
                                      "median only work on numerical values."));
    applyRememberedValue(useRemembered, using_);
    addParameter(using_);

    const QStringList rows {QStringLiteral("All rows"),
                            QStringLiteral("Rows with matching values for:")};
    auto *of = new Parameter(ParameterType::Selection, QStringLiteral("Of"), QStringLiteral("Of"),
                             rows.first(), rows);
    of->setToolTip(QStringLiteral("Whether to take the values of all rows, or only of the rows "
                                  "that match the row of the empty value in other columns."));
    applyRememberedValue(useRemembered, of);
    addParameter(of);

    auto *matching
        = new Parameter(ParameterType::MultipleColumns, QStringLiteral("Matching_Columns"),
                        QStringLiteral("Matching columns"), input);
    matching->setToolTip(QStringLiteral("The columns in which rows must match."));
    addParameter(matching);

    const QStringList types {QStringLiteral("Exact match"), QStringLiteral("Best match")};
    auto *matchType = new Parameter(ParameterType::Selection, QStringLiteral("Match_Type"),
                                    QStringLiteral("Match type"), types.first(), types);
    matchType->setToolTip(QStringLiteral("%1: rows that match in all the matching columns.\n%2: "
                                         "rows that match in the most matching columns.")
                              .arg(types.at(0), types.at(1)));
    applyRememberedValue(useRemembered, matchType);
    addParameter(matchType);

    auto *caseSensitive = new Parameter(ParameterType::Bool, QStringLiteral("Case_Sensitive"),
                                        QStringLiteral("case sensitive"), true);
    caseSensitive->setToolTip(QStringLiteral("Check for case sensitive matching."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);
}

QList<ParameterState> TransformImpute::parameterStates() const
{
    const Parameter *of = parameter(QStringLiteral("Of"));
    const bool matching = of && of->toSelectionIndex() == MatchingRows;
    return {{QStringLiteral("Matching_Columns"), matching},
            {QStringLiteral("Match_Type"), matching},
            {QStringLiteral("Case_Sensitive"), matching}};
}

qint64 TransformImpute::imputeFromAllRows(Dataset &output, int column, const QVector<int> &empties,
                                          const Settings &settings)
{
    const QString &name = settings.columnName;
    const int emptyCount = empties.size();
    QStringList values;
    const int rowCount = output.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        if (!output.cell(r, column).isEmpty())
            values.append(output.cell(r, column));
    }
    if (values.isEmpty()) {
        addWarning(settings.using_ == Mode
                       ? QStringLiteral("No non-empty values in column '%1' to set mode of %2 "
                                        "empty values")
                             .arg(name, formatCount(emptyCount))
                       : QStringLiteral("No non-empty values in column '%1' to impute %2 empty "
                                        "values")
                             .arg(name, formatCount(emptyCount)));
        return 0;
    }

    QString fill;
    if (settings.using_ == Mode) {
        const ModeOfTexts mode = modeOf(values);
        fill = mode.text;
        if (mode.tied.size() > 1) {
            QStringList quoted;
            for (int i = 0; i < mode.tied.size() && i < ListedProblems; ++i)
                quoted.append(QStringLiteral("'%1'").arg(mode.tied.at(i)));
            if (mode.tied.size() > ListedProblems)
                quoted.append(furtherProblemsText(mode.tied.size() - ListedProblems));
            addInformation(QStringLiteral("%1 values occur %2 time(s) in column '%3' and could "
                                          "be used as the mode value:\n%4\nJust '%5' was used "
                                          "as the mode value")
                               .arg(formatCount(mode.tied.size()), formatCount(mode.occurs), name,
                                    quoted.join(QStringLiteral(", ")), fill));
        }
        addInformation(QStringLiteral("In column '%1' %2 empty value(s) set to mode of '%3', "
                                      "which occurs %4 time(s) in %5 row(s)")
                           .arg(name, formatCount(emptyCount), fill, formatCount(mode.occurs),
                                formatCount(values.size())));
    } else {
        fill = numericFill(values, settings.using_);
        if (fill.isEmpty()) {
            addWarning(QStringLiteral("No numeric values in column '%1' to set %3 of %2 empty "
                                      "value(s)")
                           .arg(name, formatCount(emptyCount), usingWord(settings.using_)));
            return 0;
        }
        addInformation(QStringLiteral("%2 empty value(s) set to column '%1' %4 of %3")
                           .arg(name, formatCount(emptyCount), fill, usingWord(settings.using_)));
    }
    for (int r : empties)
        output.setCell(r, column, fill);
    return emptyCount;
}

qint64 TransformImpute::imputeFromMatchingRows(Dataset &output, int column,
                                               const QVector<int> &empties,
                                               const QList<int> &matching, const Settings &settings)
{
    Matcher matcher(output, column, matching, settings.best, settings.caseSensitive);
    // Rows of one key find the same rows, so each key is looked up once.
    QHash<QString, QString> fills;
    QStringList fillsToSet;
    qint64 noMatches = 0;
    qint64 imputed = 0;
    for (int r : empties) {
        const QString key = matcher.key(r);
        auto found = fills.constFind(key);
        if (found == fills.cend()) {
            const QVector<int> donors = matcher.donors(r);
            QStringList values;
            for (int d : donors)
                values.append(output.cell(d, column));
            QString fill;
            if (!values.isEmpty())
                fill = settings.using_ == Mode ? modeOf(values).text
                                               : numericFill(values, settings.using_);
            found = fills.insert(key, fill);
            if (donors.isEmpty() && ++noMatches <= ListedProblems) {
                QStringList shown;
                for (int c : matching)
                    shown.append(QStringLiteral("'%1'").arg(output.cell(r, c)));
                addWarning(QStringLiteral("No matches for row %1, value(s)=%2")
                               .arg(QString::number(r + 1), shown.join(QStringLiteral(", "))));
            }
        }
        fillsToSet.append(found.value());
    }
    if (noMatches > ListedProblems)
        addWarning(furtherProblemsText(noMatches - ListedProblems));
    // Set only now, so that an imputed value never serves as a donor for a later row.
    for (int i = 0; i < empties.size(); ++i) {
        if (!fillsToSet.at(i).isEmpty()) {
            output.setCell(empties.at(i), column, fillsToSet.at(i));
            ++imputed;
        }
    }
    if (imputed < empties.size())
        addWarning(QStringLiteral("%1 empty value(s) not imputed in column '%2'")
                       .arg(formatCount(empties.size() - imputed), settings.columnName));
    return imputed;
}

// An empty cell is an empty text: a cell of blanks is a value. The mode is of texts, as they
// stand, so that it works on any column; the average and median are of the numbers among the
// values. A cell filled here never serves to fill another.
Dataset &TransformImpute::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &context, bool &)
{
    Settings settings;
    settings.using_ = qBound(0, option(QStringLiteral("Using")).toSelectionIndex(), int(Mode));
    const bool byMatching = option(QStringLiteral("Of")).toSelectionIndex() == MatchingRows;
    settings.best = option(QStringLiteral("Match_Type")).toSelectionIndex() == BestMatch;
    settings.caseSensitive = option(QStringLiteral("Case_Sensitive")).toBool();
    QList<int> columns;
    option(QStringLiteral("Columns")).toColumnIndexes(&columns, true);
    QList<int> matchingColumns;
    if (byMatching)
        option(QStringLiteral("Matching_Columns")).toColumnIndexes(&matchingColumns, true);

    output = inputDataset(inputs, 0);
    const int rowCount = output.rowCount();
    qint64 changed = 0;
    for (int i = 0; i < columns.size(); ++i) {
        if (context.isStopRequested())
            break;
        const int column = columns.at(i);
        settings.columnName = output.headerText(column);
        QVector<int> empties;
        for (int r = 0; r < rowCount; ++r) {
            reportRow(r, rowCount * columns.size(), qreal(i) / qreal(columns.size()));
            if (output.cell(r, column).isEmpty())
                empties.append(r);
        }
        if (empties.isEmpty()) {
            addInformation(QStringLiteral("Column '%1' has no empty values to impute")
                               .arg(settings.columnName));
            continue;
        }
        // A column can't be matched against itself: its empty cells match only empty cells.
        QList<int> matching = matchingColumns;
        matching.removeAll(column);
        changed += matching.isEmpty()
            ? imputeFromAllRows(output, column, empties, settings)
            : imputeFromMatchingRows(output, column, empties, matching, settings);
    }
    setResult(cellsChangedText(changed, qint64(rowCount) * columns.size() - changed));
    return output;
}
