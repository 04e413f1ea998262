#include "transforms/transformsample.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"

#include <QRandomGenerator>
#include <QVector>

namespace {

enum Spread { FromStart = 0, FromEnd = 1, Evenly = 2, RandomQuality = 3, RandomSpeed = 4 };

constexpr int RandomProgressStep = 10000;

// Counts of the row numbers still in the draw, as a binary indexed tree, so that taking the
// k-th remaining number costs a logarithm instead of shifting a list of millions.
class RemainingRows
{
public:
    explicit RemainingRows(int count)
        : m_tree(count + 1, 0)
    {
        for (int i = 1; i <= count; ++i) {
            m_tree[i] += 1;
            const int parent = i + (i & -i);
            if (parent <= count)
                m_tree[parent] += m_tree.at(i);
        }
        m_highBit = 1;
        while (m_highBit * 2 <= count)
            m_highBit *= 2;
    }

    // Removes the entry at position index (0-based) of the remaining numbers, in ascending
    // order, and returns it.
    int take(int index)
    {
        int position = 0;
        int remaining = index + 1;
        for (int step = m_highBit; step > 0; step /= 2) {
            const int next = position + step;
            if (next < m_tree.size() && m_tree.at(next) < remaining) {
                position = next;
                remaining -= m_tree.at(next);
            }
        }
        for (int i = position + 1; i < m_tree.size(); i += i & -i)
            m_tree[i] -= 1;
        return position;
    }

private:
    QVector<int> m_tree;
    int m_highBit = 1;
};

} // namespace

const TransformDescriptor &TransformSample::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 50;
        d.typeName = QStringLiteral("Sample");
        d.displayName = QStringLiteral("Sample");
        d.category = CategoryRow;
        d.flags = TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Sample from all rows.");
        d.keywords = QStringList {
            QStringLiteral("random"),  QStringLiteral("randomly"), QStringLiteral("subset"),
            QStringLiteral("head"),    QStringLiteral("tail"),     QStringLiteral("top"),
            QStringLiteral("bottom"),  QStringLiteral("first"),    QStringLiteral("last"),
            QStringLiteral("samples"), QStringLiteral("reduce"),   QStringLiteral("limit")};
        d.create = createTransform<TransformSample>;
        return d;
    }();
    return descriptor;
}

QStringList TransformSample::spreadNames()
{
    return {QStringLiteral("From the start"), QStringLiteral("From the end"),
            QStringLiteral("Evenly"), QStringLiteral("Randomly (for quality)"),
            QStringLiteral("Randomly (for speed)")};
}

void TransformSample::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    auto *rows
        = new Parameter(ParameterType::Int, QStringLiteral("Rows"), QStringLiteral("Rows"), 100);
    rows->setToolTip(QStringLiteral("The number of rows to keep."));
    applyRememberedValue(useRemembered, rows);
    addParameter(rows);

    const QStringList spreads = spreadNames();
    auto *spread = new Parameter(ParameterType::Selection, QStringLiteral("Spread"),
                                 QStringLiteral("Spread"), spreads.at(RandomQuality), spreads);
    spread->setToolTip(
        QStringLiteral(
            "Which rows to keep:\n%1: the first rows.\n%2: the last rows.\n%3: rows at equal "
            "intervals.\n%4: a random choice in which every row has nearly the same chance.\n%5: a "
            "random choice made in one pass, for very large datasets.")
            .arg(spreads.at(0), spreads.at(1), spreads.at(2), spreads.at(3), spreads.at(4)));
    applyRememberedValue(useRemembered, spread);
    addParameter(spread);

    auto *seed = new Parameter(ParameterType::Int, QStringLiteral("Seed"),
                               QStringLiteral("Random seed"), 1);
    seed->setToolTip(QStringLiteral("The seed for the pseudo-random number generator.\n"
                                    "The same seed gives the same sample of the same rows."));
    applyRememberedValue(useRemembered, seed);
    addParameter(seed);

    auto *disable = new Parameter(ParameterType::Bool, QStringLiteral("Disable"),
                                  QStringLiteral("disable sampling"), false);
    disable->setWarnWhenSet(true);
    disable->setToolTip(QStringLiteral("Check to pass all rows through unsampled."));
    addParameter(disable);
}

QList<ParameterState> TransformSample::parameterStates() const
{
    const Parameter *disable = parameter(QStringLiteral("Disable"));
    const Parameter *spread = parameter(QStringLiteral("Spread"));
    const bool enabled = !(disable && disable->toBool());
    const int spreadIndex = spread ? spread->toSelectionIndex() : 0;
    const bool random = spreadIndex == RandomQuality || spreadIndex == RandomSpeed;
    return {{QStringLiteral("Rows"), enabled},
            {QStringLiteral("Spread"), enabled},
            {QStringLiteral("Seed"), enabled && random}};
}

Dataset &TransformSample::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &, bool &)
{
    const Parameter *rowsOption = &option(QStringLiteral("Rows"));
    const Parameter *spreadOption = &option(QStringLiteral("Spread"));
    const Parameter *seedOption = &option(QStringLiteral("Seed"));
    const Parameter *disableOption = &option(QStringLiteral("Disable"));

    const Dataset &input = *inputs.first().dataset;
    const int rowCount = input.rowCount();
    if (disableOption->toBool()) {
        output = input;
        addWarning(QStringLiteral("Sampling is disabled"));
        setResult(QStringLiteral("No changes"));
        return output;
    }
    const int n = qMax(0, rowsOption->toInt());
    if (n >= rowCount) {
        output = input;
        setResult(QStringLiteral("No changes"));
        return output;
    }

    output.setColumnCount(input.columnCount());
    output.reserveRows(n);
    const quint32 seed = quint32(seedOption->toInt());
    switch (spreadOption->toSelectionIndex()) {
    case FromStart:
        for (int r = 0; r < n; ++r) {
            reportRow(r, n);
            output.appendSharedRow(input.row(r));
        }
        break;
    case FromEnd:
        for (int r = rowCount - n; r < rowCount; ++r) {
            reportRow(r - (rowCount - n), n);
            output.appendSharedRow(input.row(r));
        }
        break;
    case Evenly:
        for (int i = 1; i <= n; ++i) {
            reportRow(i - 1, n);
            output.appendSharedRow(input.row(int(qint64(rowCount) * i / (n + 1))));
        }
        break;
    case RandomQuality:
        sampleRandomly(output, input, n, seed);
        break;
    case RandomSpeed:
        sampleInOnePass(output, input, n, seed);
        break;
    default:
        break;
    }
    output.setColumnIds(input.columnIds());
    if (input.hasHeader())
        output.setHeader(input.header());
    setResult(QStringLiteral("%1 sampled, %2 unsampled")
                  .arg(formatCount(output.rowCount()), formatCount(rowCount - output.rowCount())));
    return output;
}

void TransformSample::sampleRandomly(Dataset &output, const Dataset &input, int n, quint32 seed)
{
    const int rowCount = input.rowCount();
    QRandomGenerator generator(seed);
    RemainingRows remaining(rowCount);
    QVector<int> drawn;
    drawn.reserve(n);
    for (int i = 0; i < n; ++i) {
        if (i % RandomProgressStep == 0)
            emit processed(0.9 * i / n);
        // The last remaining entry can't be drawn while others remain; kept so that a
        // seed goes on giving the samples it always gave.
        const quint64 length = quint64(rowCount - i);
        const int index = int(((length - 1) * quint64(generator.generate())) >> 32);
        drawn.append(remaining.take(index));
    }
    std::sort(drawn.begin(), drawn.end());
    for (int i = 0; i < n; ++i) {
        if (i % RandomProgressStep == 0)
            emit processed(0.9 + 0.1 * i / n);
        output.appendSharedRow(input.row(drawn.at(i)));
    }
}

void TransformSample::sampleInOnePass(Dataset &output, const Dataset &input, int n, quint32 seed)
{
    const int rowCount = input.rowCount();
    QVector<quint32> numbers(rowCount);
    QRandomGenerator generator(seed);
    generator.fillRange(numbers.data(), rowCount);
    int taken = 0;
    for (int r = 0; r < rowCount; ++r) {
        if (r % RandomProgressStep == 0)
            emit processed(qreal(r) / rowCount);
        const int needed = n - taken;
        if (needed < 1)
            break;
        const double u = numbers.at(r) / 4294967295.0;
        if (double(needed) / double(rowCount - r) >= u) {
            output.appendSharedRow(input.row(r));
            ++taken;
        }
    }
}
