#include "transforms/transformdiff.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/keymatching.h"

#include <algorithm>

namespace {

enum ByIndex { ByRowNumbers = 0, ByKeyColumns = 1 };

// The share of the progress that aligning the rows takes; comparing them is the rest.
constexpr double AlignShare = 0.5;

QStringList outputColumns(bool byKey)
{
    QStringList names {QStringLiteral("Change"),    QStringLiteral("Column"),
                       QStringLiteral("Top row"),   QStringLiteral("Bottom row"),
                       QStringLiteral("Top value"), QStringLiteral("Bottom value")};
    if (byKey)
        names.append(QStringLiteral("Key"));
    return names;
}

} // namespace

// The rows of the output, one a difference, up to the most that may be listed; the
// differences past that are counted all the same, so that the result tells how many there
// are. Texts that recur on every row are made once and shared by the cells.
class TransformDiff::Listing
{
public:
    Listing(Dataset &output, bool byKey, qint64 maximum)
        : m_output(output)
        , m_byKey(byKey)
        , m_maximum(maximum)
    { }

    const QString notApplicable = QStringLiteral("N/A");
    const QString valueChange = QStringLiteral("Value change");
    const QString rowInTopOnly = QStringLiteral("Row in top only");
    const QString rowInBottomOnly = QStringLiteral("Row in bottom only");

    qint64 count() const { return m_count; }

    // Change, Column, Top row, Bottom row, Top value, Bottom value, and Key when by key.
    void add(const QString &change, const QString &column, const QString &topRow,
             const QString &bottomRow, const QString &topValue, const QString &bottomValue,
             const QString &key = QString())
    {
        if (m_count++ >= m_maximum)
            return;
        QStringList row;
        row.reserve(7);
        row << change << column << topRow << bottomRow << topValue << bottomValue;
        if (m_byKey)
            row << key;
        m_output.appendSharedRow(row);
    }

private:
    Dataset &m_output;
    bool m_byKey;
    qint64 m_maximum;
    qint64 m_count = 0;
};

const TransformDescriptor &TransformDiff::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 15;
        d.typeName = QStringLiteral("Difference");
        d.displayName = QStringLiteral("Difference");
        d.category = CategoryAnalysis;
        d.minimumInputs = 2;
        d.maximumInputs = 2;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Show the differences between 2 datasets.");
        d.keywords = QStringList {QStringLiteral("updates"),     QStringLiteral("changes"),
                                  QStringLiteral("comparisons"), QStringLiteral("compares"),
                                  QStringLiteral("differences"), QStringLiteral("deltas")};
        d.create = createTransform<TransformDiff>;
        return d;
    }();
    return descriptor;
}

void TransformDiff::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    const QStringList byChoices {QStringLiteral("Row numbers"), QStringLiteral("Key columns")};
    auto *by = new Parameter(ParameterType::Selection, QStringLiteral("By"),
                             QStringLiteral("Compare rows by"), byChoices.first(), byChoices);
    by->setToolTip(QStringLiteral("Choose how to compare rows."));
    applyRememberedValue(useRemembered, by);
    addParameter(by);

    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Top_Key_Column"), QStringLiteral("Top key column"), inputs.value(0),
        QStringLiteral("Select the key column for the top dataset.")));
    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Bottom_Key_Column"), QStringLiteral("Bottom key column"), inputs.value(1),
        QStringLiteral("Select the key column for the bottom dataset.")));

    auto *sortByKey = new Parameter(ParameterType::Bool, QStringLiteral("Sort_by_Key"),
                                    QStringLiteral("sort by key"), false);
    sortByKey->setToolTip(
        QStringLiteral("Check to sort rows in ascending order of key column.\nOtherwise sort by "
                       "first occurrence of key in top dataset and then first occurrence of key "
                       "in bottom dataset."));
    applyRememberedValue(useRemembered, sortByKey);
    addParameter(sortByKey);

    auto *caseSensitive = new Parameter(ParameterType::Bool, QStringLiteral("Case_Sensitive"),
                                        QStringLiteral("case sensitive"), true);
    caseSensitive->setToolTip(QStringLiteral("Check for case sensitive matching of keys."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);

    auto *maxDiffs = new Parameter(ParameterType::Int, QStringLiteral("Max_Diffs"),
                                   QStringLiteral("Maximum differences"), 10000);
    maxDiffs->setMinimumInt(1);
    maxDiffs->setToolTip(QStringLiteral("The maximum number of differences to report."));
    applyRememberedValue(useRemembered, maxDiffs);
    addParameter(maxDiffs);
}

QList<ParameterState> TransformDiff::parameterStates() const
{
    const Parameter *by = parameter(QStringLiteral("By"));
    const bool byKey = by && by->toSelectionIndex() == ByKeyColumns;
    return {{QStringLiteral("Top_Key_Column"), byKey},
            {QStringLiteral("Bottom_Key_Column"), byKey},
            {QStringLiteral("Sort_by_Key"), byKey},
            {QStringLiteral("Case_Sensitive"), byKey}};
}

bool TransformDiff::autoConfigure(const ColumnSources &inputs)
{
    return KeyMatching::autoConfigureKeys(parameter(QStringLiteral("Top_Key_Column")),
                                          parameter(QStringLiteral("Bottom_Key_Column")), inputs);
}

RowAlignment::Options TransformDiff::readAlignment() const
{
    RowAlignment::Options alignment;
    const bool byKey = option(QStringLiteral("By")).toSelectionIndex() == ByKeyColumns;
    alignment.mode = byKey ? RowAlignment::Mode::KeyColumns : RowAlignment::Mode::RowNumbers;
    alignment.leftKey = option(QStringLiteral("Top_Key_Column")).toColumnIndex();
    alignment.rightKey = option(QStringLiteral("Bottom_Key_Column")).toColumnIndex();
    alignment.sortByKey = option(QStringLiteral("Sort_by_Key")).toBool();
    alignment.caseSensitive = option(QStringLiteral("Case_Sensitive")).toBool();
    return alignment;
}

Dataset &TransformDiff::process(Dataset &output, const TransformInputs &inputs,
                                const RunContext &context, bool &)
{
    const RowAlignment::Options alignment = readAlignment();
    const qint64 maxDiffs = std::max(1, option(QStringLiteral("Max_Diffs")).toInt());
    const bool byKey = alignment.mode == RowAlignment::Mode::KeyColumns;

    const QStringList columns = outputColumns(byKey);
    output.setColumnCount(columns.size());
    output.setHeader(columns);
    if (inputs.size() < 2) {
        setResult(KeyMatching::connectSecondText());
        return output;
    }
    const Dataset &top = *inputs.at(0).dataset;
    const Dataset &bottom = *inputs.at(1).dataset;
    // Unset keys are warned about as unset options; there is nothing to compare yet.
    if (!RowAlignment::canAlign(top, bottom, alignment))
        return output;

    Listing listing(output, byKey, maxDiffs);
    listColumns(listing, top, bottom);
    if (!listRows(listing, top, bottom, alignment, context))
        return output;
    if (listing.count() > maxDiffs)
        addWarning(QStringLiteral("Stopped after %1 difference(s)").arg(formatCount(maxDiffs)));
    if (listing.count() == 0)
        setResult(QStringLiteral("No differences"));
    else
        setResult(QStringLiteral("%1 differences").arg(formatCount(listing.count())));
    return output;
}

// Columns are compared by position: names that differ within the common width, then the
// columns past the narrower side.
void TransformDiff::listColumns(Listing &listing, const Dataset &top, const Dataset &bottom)
{
    const QStringList topNames = top.headers();
    const QStringList bottomNames = bottom.headers();
    const int common = std::min(topNames.size(), bottomNames.size());
    const QString &na = listing.notApplicable;
    for (int c = 0; c < common; ++c) {
        if (topNames.at(c) != bottomNames.at(c))
            listing.add(QStringLiteral("Column renamed"), topNames.at(c), QString(), QString(),
                        topNames.at(c), bottomNames.at(c));
    }
    for (int c = common; c < topNames.size(); ++c)
        listing.add(QStringLiteral("Column in top only"), topNames.at(c), QString(), QString(),
                    topNames.at(c), na);
    for (int c = common; c < bottomNames.size(); ++c)
        listing.add(QStringLiteral("Column in bottom only"), bottomNames.at(c), QString(),
                    QString(), na, bottomNames.at(c));
}

bool TransformDiff::listRows(Listing &listing, const Dataset &top, const Dataset &bottom,
                             const RowAlignment::Options &alignment, const RunContext &context)
{
    const QVector<RowAlignment::RowPair> pairs
        = RowAlignment::align(top, bottom, alignment, [&](double fraction) {
              emit processed(AlignShare * fraction);
              return !context.isStopRequested();
          });
    if (context.isStopRequested())
        return false;

    const bool byKey = alignment.mode == RowAlignment::Mode::KeyColumns;
    const int topKey = alignment.leftKey;
    const int bottomKey = alignment.rightKey;
    // Cells are compared within the common width; the columns past it are listed already.
    const int common = std::min(top.columnCount(), bottom.columnCount());
    const QStringList names = top.headers();
    const QString &na = listing.notApplicable;
    const QString none;
    const int count = pairs.size();
    for (int i = 0; i < count; ++i) {
        reportRow(i, count * 2, AlignShare);
        if (i % 1000 == 0 && context.isStopRequested())
            return false;
        const int t = pairs.at(i).left;
        const int b = pairs.at(i).right;
        const QString &key
            = !byKey ? none : (t >= 0 ? top.cell(t, topKey) : bottom.cell(b, bottomKey));
        if (t < 0) {
            listing.add(listing.rowInBottomOnly, none, na, QString::number(b + 1), na, none, key);
            continue;
        }
        if (b < 0) {
            listing.add(listing.rowInTopOnly, none, QString::number(t + 1), na, none, na, key);
            continue;
        }
        const QStringList &topCells = top.row(t);
        const QStringList &bottomCells = bottom.row(b);
        // Made at the row's first difference: most rows have none.
        QString topRow;
        QString bottomRow;
        for (int c = 0; c < common; ++c) {
            if (topCells.at(c) == bottomCells.at(c))
                continue;
            if (topRow.isEmpty()) {
                topRow = QString::number(t + 1);
                bottomRow = QString::number(b + 1);
            }
            listing.add(listing.valueChange, names.at(c), topRow, bottomRow, topCells.at(c),
                        bottomCells.at(c), key);
        }
    }
    return true;
}
