#include "transforms/transformngram.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"

#include <QHash>
#include <QLocale>

#include <algorithm>

namespace {

// One ngram: how many words, how many rows hold it (or their sum), and which rows.
struct Tally
{
    QString text;
    int words = 0;
    double amount = 0.0;
    int lastRow = -1;
    QList<int> rows;
};

class Counter
{
public:
    explicit Counter(bool drilldown)
        : m_drilldown(drilldown)
    { }

    // Counts every ngram of words from minimum to maximum words once for row r.
    void addRow(const QVector<QStringView> &words, int minimum, int maximum, int r, double amount)
    {
        const int count = words.size();
        for (int n = minimum; n <= qMin(maximum, count); ++n) {
            for (int first = 0; first + n <= count; ++first) {
                m_key.resize(0);
                for (int i = first; i < first + n; ++i) {
                    if (i > first)
                        m_key.append(QLatin1Char(' '));
                    m_key.append(words.at(i));
                }
                add(n, r, amount);
            }
        }
    }

    QVector<Tally> &tallies() { return m_tallies; }

private:
    void add(int n, int r, double amount)
    {
        auto it = m_index.find(m_key);
        if (it == m_index.end()) {
            it = m_index.insert(m_key, m_tallies.size());
            m_tallies.append(Tally {m_key, n, 0.0, -1, {}});
        }
        Tally &tally = m_tallies[it.value()];
        if (tally.lastRow == r)
            return;
        tally.lastRow = r;
        tally.amount += amount;
        if (m_drilldown)
            tally.rows.append(r);
    }

    bool m_drilldown;
    QString m_key;
    QHash<QString, int> m_index;
    QVector<Tally> m_tallies;
};

// The sum column's cell of row r as a number to add: 0 for an empty cell, and for a text that
// isn't a number, which is also listed.
class Amounts
{
public:
    Amounts(const Dataset &input, int column)
        : m_input(input)
        , m_column(column)
        , m_decimalIsPoint(QLocale().decimalPoint() == QLatin1Char('.'))
    { }

    double of(int r)
    {
        if (m_column < 0)
            return 1.0;
        const QString &text = m_input.cell(r, m_column);
        if (text.trimmed().isEmpty())
            return 0.0;
        bool ok = false;
        const double number = toDoubleFast(text, m_decimalIsPoint, &ok);
        if (ok)
            return number;
        if (++m_invalid <= ListedProblems)
            m_lines.append(QStringLiteral("Invalid numeric value '%1' for column '%2' row %3")
                               .arg(text, m_input.headerText(m_column), QString::number(r + 1)));
        return 0.0;
    }

    // The heading and the listed texts, with a line for those not listed.
    QStringList warnings() const
    {
        if (m_invalid == 0)
            return {};
        QStringList lines {
            QStringLiteral("'%1' non-numeric %2:")
                .arg(m_input.headerText(m_column),
                     m_invalid == 1 ? QStringLiteral("value") : QStringLiteral("values"))};
        lines += m_lines;
        if (m_invalid > ListedProblems)
            lines.append(furtherProblemsText(m_invalid - ListedProblems));
        return lines;
    }

private:
    const Dataset &m_input;
    int m_column;
    bool m_decimalIsPoint;
    qint64 m_invalid = 0;
    QStringList m_lines;
};

// Largest first; equal ones by fewer words, then by text, so that the order is the same on
// every run.
void sortTallies(QVector<Tally> &tallies)
{
    std::sort(tallies.begin(), tallies.end(), [](const Tally &a, const Tally &b) {
        if (a.amount != b.amount)
            return a.amount > b.amount;
        if (a.words != b.words)
            return a.words < b.words;
        return a.text < b.text;
    });
}

bool isWordEdge(QChar ch)
{
    return ch.isPunct();
}

} // namespace

const TransformDescriptor &TransformNgram::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 33;
        d.typeName = QStringLiteral("Ngram");
        d.displayName = QStringLiteral("Ngram");
        d.category = CategoryAnalysis;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::KeepsSourceRows;
        d.description
            = QStringLiteral("Count sequences of N consecutive words in the selected column.");
        d.create = createTransform<TransformNgram>;
        return d;
    }();
    return descriptor;
}

void TransformNgram::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *column = new Parameter(ParameterType::SingleColumn, QStringLiteral("Column"),
                                 QStringLiteral("Column"), input);
    column->setToolTip(QStringLiteral("The column in the input dataset to count ngrams in."));
    column->selectOnlyColumn();
    addParameter(column);

    auto *minimum = new Parameter(ParameterType::Int, QStringLiteral("Min_N"),
                                  QStringLiteral("Minimum N"), 1);
    minimum->setMinimumInt(1);
    minimum->setMaximumInt(100);
    minimum->setToolTip(QStringLiteral("The minimum number of words in the ngram.\nE.g. set to 2 "
                                       "if you want to count sequences of 2 words or longer."));
    applyRememberedValue(useRemembered, minimum);
    addParameter(minimum);

    auto *maximum = new Parameter(ParameterType::Int, QStringLiteral("Max_N"),
                                  QStringLiteral("Maximum N"), 3);
    maximum->setMinimumInt(1);
    maximum->setMaximumInt(100);
    maximum->setToolTip(QStringLiteral("The maximum number of words in the ngram.\nE.g. set to 5 "
                                       "if you want to count sequences of 5 words or less."));
    applyRememberedValue(useRemembered, maximum);
    addParameter(maximum);

    // Counting rows is the choice of no column, so the option is never unset.
    auto *sum = new Parameter(ParameterType::SingleColumn, QStringLiteral("Sum"),
                              QStringLiteral("Count"), input);
    sum->setNoneText(QStringLiteral("Rows"));
    sum->setColumnRequired(false);
    sum->setToolTip(QStringLiteral("Select '%1' to count the number of rows that contain each "
                                   "ngram.\nSelect a column to sum numeric values in that column "
                                   "for all rows containing the ngram.")
                        .arg(sum->noneText()));
    addParameter(sum);

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

QVector<QStringView> TransformNgram::wordsOf(const QString &text)
{
    QVector<QStringView> words;
    const int n = text.size();
    int i = 0;
    while (i < n) {
        while (i < n && text.at(i).isSpace())
            ++i;
        int start = i;
        while (i < n && !text.at(i).isSpace())
            ++i;
        int end = i;
        while (start < end && isWordEdge(text.at(start)))
            ++start;
        while (end > start && isWordEdge(text.at(end - 1)))
            --end;
        if (end > start)
            words.append(QStringView(text).mid(start, end - start));
    }
    return words;
}

Dataset &TransformNgram::process(Dataset &output, const TransformInputs &inputs,
                                 const RunContext &context, bool &)
{
    const Parameter *columnOption = &option(QStringLiteral("Column"));
    const Parameter *minimumOption = &option(QStringLiteral("Min_N"));
    const Parameter *maximumOption = &option(QStringLiteral("Max_N"));
    const Parameter *sumOption = &option(QStringLiteral("Sum"));
    const bool caseSensitive = option(QStringLiteral("Case_Sensitive")).toBool();
    const bool drilldown = option(QStringLiteral("Drilldown")).toBool();
    const Dataset &input = *inputs.first().dataset;

    const int minimum = qMax(1, minimumOption->toInt());
    const int maximum = qMax(1, maximumOption->toInt());
    const int c = columnOption->toColumnIndex();
    int sum = sumOption->toColumnIndex();
    if (sum >= input.columnCount())
        sum = -1;
    // One length of ngram needs no column to tell it.
    const bool oneLength = minimum == maximum;
    QStringList names;
    if (oneLength)
        names << QStringLiteral("%1 Ngrams").arg(minimum);
    else
        names << QStringLiteral("Ngrams") << QStringLiteral("Words");
    names << (sum < 0 ? sumOption->noneText()
                      : QStringLiteral("Sum %1").arg(input.headerText(sum)));
    beginOutput(output, names.size(), true, names);

    const QString nothing = QStringLiteral("%1 ngrams from %2 rows").arg(0).arg(0);
    if (maximum < minimum) {
        addWarning(
            QStringLiteral("%1 must be >= %2").arg(maximumOption->label(), minimumOption->label()));
        setResult(nothing);
        return output;
    }
    if (c < 0 || c >= input.columnCount()) {
        setResult(nothing);
        return output;
    }

    Counter counter(drilldown);
    Amounts amounts(input, sum);
    const int rowCount = input.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        const QString &cell = input.cell(r, c);
        if (cell.isEmpty())
            continue;
        const QString text = caseSensitive ? cell : cell.toLower();
        const QVector<QStringView> words = wordsOf(text);
        if (words.size() < minimum)
            continue;
        counter.addRow(words, minimum, maximum, r, amounts.of(r));
    }
    for (const QString &line : amounts.warnings())
        addWarning(line);

    QVector<Tally> &tallies = counter.tallies();
    sortTallies(tallies);
    output.reserveRows(tallies.size());
    for (const Tally &tally : qAsConst(tallies)) {
        if (drilldown)
            output.addSourceRows(output.rowCount(), -1, tally.rows);
        QStringList row {tally.text};
        if (!oneLength)
            row.append(QString::number(tally.words));
        row.append(numberToCellText(tally.amount));
        output.appendRow(row);
    }
    setResult(QStringLiteral("%1 ngrams from %2 rows")
                  .arg(formatCount(tallies.size()), formatCount(rowCount)));
    return output;
}
