#include "transforms/transformcount.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"

#include <QHash>
#include <QVector>

#include <algorithm>

namespace {

enum SortBy { SortByCount = 0, SortByText = 1 };

// One distinct text: the spelling shown, how often it occurred and, for drilldown, where.
struct Tally
{
    QString text;
    qint64 count = 0;
    QList<int> rows;
};

// Counts the texts of column c. Rows are looked up by their exact spelling first, so that the
// lower-case form is made only once for each spelling met, not once a row.
class Counter
{
public:
    Counter(bool caseSensitive, bool drilldown)
        : m_caseSensitive(caseSensitive)
        , m_drilldown(drilldown)
    { }

    void add(const QString &text, int r)
    {
        int index = m_bySpelling.value(text, -1);
        if (index < 0) {
            if (m_caseSensitive) {
                index = newTally(text);
            } else {
                const QString folded = text.toLower();
                index = m_byFolded.value(folded, -1);
                if (index < 0) {
                    index = newTally(text);
                    m_byFolded.insert(folded, index);
                }
            }
            m_bySpelling.insert(text, index);
        }
        Tally &tally = m_tallies[index];
        ++tally.count;
        if (m_drilldown)
            tally.rows.append(r);
    }

    QVector<Tally> &tallies() { return m_tallies; }

private:
    int newTally(const QString &text)
    {
        m_tallies.append(Tally {text, 0, {}});
        return m_tallies.size() - 1;
    }

    bool m_caseSensitive;
    bool m_drilldown;
    QHash<QString, int> m_bySpelling;
    QHash<QString, int> m_byFolded;
    QVector<Tally> m_tallies;
};

// Texts compare as plain strings. Counts compare as numbers, and equal counts fall back to
// the texts in ascending order whatever the chosen order, so that a tie reads A to Z.
void sortTallies(QVector<Tally> &tallies, int sortBy, bool descending)
{
    if (sortBy == SortByText) {
        std::sort(tallies.begin(), tallies.end(), [descending](const Tally &a, const Tally &b) {
            return descending ? b.text < a.text : a.text < b.text;
        });
        return;
    }
    std::sort(tallies.begin(), tallies.end(), [descending](const Tally &a, const Tally &b) {
        if (a.count != b.count)
            return descending ? a.count > b.count : a.count < b.count;
        return a.text < b.text;
    });
}

} // namespace

const TransformDescriptor &TransformCount::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 10;
        d.typeName = QStringLiteral("Count");
        d.displayName = QStringLiteral("Count");
        d.category = CategoryAnalysis;
        d.flags
            = TransformDescriptor::KeepsSourceRows | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Count the occurrences of text in the selected column.");
        d.keywords = QStringList {QStringLiteral("countif"),   QStringLiteral("frequencies"),
                                  QStringLiteral("frequency"), QStringLiteral("totals"),
                                  QStringLiteral("sums"),      QStringLiteral("occurrences"),
                                  QStringLiteral("counts")};
        d.create = createTransform<TransformCount>;
        return d;
    }();
    return descriptor;
}

QStringList TransformCount::sortNames()
{
    return {QStringLiteral("Count"), QStringLiteral("Text")};
}

QStringList TransformCount::orderNames()
{
    return {QStringLiteral("Ascending"), QStringLiteral("Descending")};
}

void TransformCount::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    addNewNameParameters(useRemembered);

    auto *column = new Parameter(ParameterType::SingleColumn, QStringLiteral("Column"),
                                 QStringLiteral("Column"), input);
    column->setToolTip(QStringLiteral("The column in the input dataset to count occurrences in."));
    column->selectOnlyColumn();
    addParameter(column);

    const QStringList sorts = sortNames();
    auto *sort = new Parameter(ParameterType::Selection, QStringLiteral("Sort"),
                               QStringLiteral("Sort by"), sorts.at(SortByCount), sorts);
    sort->setToolTip(QStringLiteral("How to sort results.\n%1=sort by the alphabetic value of the "
                                    "left column.\n%2=sort by the numeric value of the right "
                                    "column.")
                         .arg(sorts.at(SortByText), sorts.at(SortByCount)));
    applyRememberedValue(useRemembered, sort);
    addParameter(sort);

    const QStringList orders = orderNames();
    auto *order = new Parameter(ParameterType::Selection, QStringLiteral("Order"),
                                QStringLiteral("Order"), orders.at(1), orders);
    order->setToolTip(QStringLiteral("The order to sort results."));
    applyRememberedValue(useRemembered, order);
    addParameter(order);

    auto *caseSensitive = new Parameter(ParameterType::Bool, QStringLiteral("Case_Sensitive"),
                                        QStringLiteral("case sensitive"), false);
    caseSensitive->setToolTip(QStringLiteral("Converts all to lower case if unchecked."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);

    auto *drilldown = new Parameter(ParameterType::Bool, QStringLiteral("Drilldown"),
                                    QStringLiteral("allow drilldown"), false);
    drilldown->setToolTip(QStringLiteral("Allow double click to drilldown in the data table."));
    applyRememberedValue(useRemembered, drilldown);
    addParameter(drilldown);
}

QList<ParameterState> TransformCount::parameterStates() const
{
    return {newNameState()};
}

Dataset &TransformCount::process(Dataset &output, const TransformInputs &inputs,
                                 const RunContext &context, bool &)
{
    const Parameter *columnOption = &option(QStringLiteral("Column"));
    const Parameter *sortOption = &option(QStringLiteral("Sort"));
    const Parameter *orderOption = &option(QStringLiteral("Order"));
    const Parameter *caseSensitiveOption = &option(QStringLiteral("Case_Sensitive"));
    const Parameter *drilldownOption = &option(QStringLiteral("Drilldown"));
    const Dataset &input = *inputs.first().dataset;

    const int c = columnOption->toColumnIndex();
    if (c < 0 || c >= input.columnCount()) {
        beginOutput(output, 2, true,
                    {columnOption->noneText(), newColumnName(QStringLiteral("Count"))});
        setResult(QStringLiteral("No changes"));
        return output;
    }

    const QString header = input.headerText(c);
    const bool drilldown = drilldownOption->toBool();
    Counter counter(caseSensitiveOption->toBool(), drilldown);
    const int rowCount = input.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        counter.add(input.cell(r, c), r);
    }

    QVector<Tally> &tallies = counter.tallies();
    sortTallies(tallies, sortOption->toSelectionIndex(), orderOption->toSelectionIndex() == 1);
    beginOutput(output, 2, true,
                {header, newColumnName(QStringLiteral("Count %1").arg(header).trimmed())});
    output.reserveRows(tallies.size());
    for (const Tally &tally : qAsConst(tallies)) {
        if (drilldown)
            output.addSourceRows(output.rowCount(), -1, tally.rows);
        output.appendRow({tally.text, QString::number(tally.count)});
    }
    setResult(QStringLiteral("%1 counted from %2 rows")
                  .arg(formatCount(tallies.size()), formatCount(rowCount)));
    return output;
}
