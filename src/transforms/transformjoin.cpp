#include "transforms/transformjoin.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/keymatching.h"

#include <QVector>

#include <algorithm>

namespace {

enum ByIndex { ByKey = 0, ByRowNumber = 1 };

QString rowsText(qint64 count)
{
    return KeyMatching::countText(count, QStringLiteral("row"), QStringLiteral("rows"));
}

// The output's shape: top columns then bottom columns, with the ids of both inputs so that
// options downstream can still name them.
void setJoinedShape(Dataset &output, const Dataset &top, const Dataset &bottom)
{
    output.setColumnCount(top.columnCount() + bottom.columnCount());
    if (top.hasHeader() || bottom.hasHeader())
        output.setHeader(top.headers() + bottom.headers());
    output.setColumnIds(top.columnIds() + bottom.columnIds());
}

QStringList joinedRow(const QStringList &topRow, const QStringList &bottomRow, int width)
{
    QStringList row;
    row.reserve(width);
    row.append(topRow);
    row.append(bottomRow);
    return row;
}

} // namespace

const TransformDescriptor &TransformJoin::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 28;
        d.typeName = QStringLiteral("Join");
        d.displayName = QStringLiteral("Join");
        d.category = CategoryMerge;
        d.minimumInputs = 2;
        d.maximumInputs = 2;
        d.flags = TransformDescriptor::HasKeyColumns;
        d.description = QStringLiteral(
            "Merge 2 input datasets side by side using common (key) columns or row numbers. The "
            "bottom dataset (by vertical position) is joined to the right of the top dataset.");
        d.keywords = QStringList {
            QStringLiteral("vlookup"), QStringLiteral("sql"),   QStringLiteral("inner"),
            QStringLiteral("outer"),   QStringLiteral("left"),  QStringLiteral("right"),
            QStringLiteral("full"),    QStringLiteral("keys"),  QStringLiteral("combine"),
            QStringLiteral("side"),    QStringLiteral("match"), QStringLiteral("relational")};
        d.inputImageName = QStringLiteral("join.png");
        d.create = createTransform<TransformJoin>;
        return d;
    }();
    return descriptor;
}

void TransformJoin::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    auto *by = new Parameter(ParameterType::Selection, QStringLiteral("By"),
                             QStringLiteral("Join by"), QStringLiteral("Key"),
                             QStringList {QStringLiteral("Key"), QStringLiteral("Row number")});
    by->setToolTip(QStringLiteral("Pair rows with equal values in the key columns, or pair the "
                                  "first row with the first row, the second with the second "
                                  "and so on."));
    applyRememberedValue(useRemembered, by);
    addParameter(by);

    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Column_1"), QStringLiteral("Top key column"), inputs.value(0),
        QStringLiteral("The key column of the top dataset.")));

    auto *nonMatching1
        = new Parameter(ParameterType::Bool, QStringLiteral("Include_Non_Matching_1"),
                        QStringLiteral("Include top non-matching rows"), false);
    nonMatching1->setToolTip(QStringLiteral(
        "Also output top rows that match no bottom row, with empty bottom cells ('left join')."));
    applyRememberedValue(useRemembered, nonMatching1);
    addParameter(nonMatching1);

    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Column_2"), QStringLiteral("Bottom key column"), inputs.value(1),
        QStringLiteral("The key column of the bottom dataset.")));

    auto *nonMatching2
        = new Parameter(ParameterType::Bool, QStringLiteral("Include_Non_Matching_2"),
                        QStringLiteral("Include bottom non-matching rows"), false);
    nonMatching2->setToolTip(QStringLiteral("Also output bottom rows that match no top row, with "
                                            "empty top cells ('right join')."));
    applyRememberedValue(useRemembered, nonMatching2);
    addParameter(nonMatching2);

    Parameter *caseSensitive = KeyMatching::createCaseSensitiveParameter();
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);

    auto *detailed = new Parameter(ParameterType::Bool, QStringLiteral("Detailed_Report"),
                                   QStringLiteral("Detailed report"), false);
    detailed->setToolTip(QStringLiteral("Report how many rows and keys are shared, and keys that "
                                        "are repeated or have leading or trailing whitespace."));
    applyRememberedValue(useRemembered, detailed);
    addParameter(detailed);
}

QList<ParameterState> TransformJoin::parameterStates() const
{
    const Parameter *by = parameter(QStringLiteral("By"));
    const bool byKey = !by || by->toSelectionIndex() == ByKey;
    return {{QStringLiteral("Column_1"), byKey},
            {QStringLiteral("Column_2"), byKey},
            {QStringLiteral("Case_Sensitive"), byKey},
            {QStringLiteral("Detailed_Report"), byKey}};
}

bool TransformJoin::autoConfigure(const ColumnSources &inputs)
{
    return KeyMatching::autoConfigureKeys(parameter(QStringLiteral("Column_1")),
                                          parameter(QStringLiteral("Column_2")), inputs);
}

void TransformJoin::addDetailedReport(const Dataset &top, int topKey, const Dataset &bottom,
                                      int bottomKey, bool caseSensitive)
{
    const KeyMatching::KeyOverlap overlap
        = KeyMatching::keyOverlap(top, topKey, bottom, bottomKey, caseSensitive);
    QStringList lines = KeyMatching::overlapLines(overlap);
    lines << QStringLiteral("%1 top only").arg(formatCount(overlap.topRowsOnly))
          << QStringLiteral("%1 bottom only").arg(formatCount(overlap.bottomRowsOnly));
    lines << KeyMatching::keyQualityLines(top, topKey, caseSensitive, QStringLiteral("top"))
          << KeyMatching::keyQualityLines(bottom, bottomKey, caseSensitive,
                                          QStringLiteral("bottom"));
    for (const QString &line : qAsConst(lines))
        addInformation(line);
}

// What one run reads from the options.
struct TransformJoin::Options
{
    bool byRowNumber = false;
    int topKey = -1;
    int bottomKey = -1;
    bool includeTop = false;
    bool includeBottom = false;
    bool caseSensitive = false;
    bool detailedReport = false;
};

// The rows written, for the result text.
struct TransformJoin::Counts
{
    qint64 joined = 0;
    qint64 topUsed = 0;
    qint64 bottomUsed = 0;
};

Dataset &TransformJoin::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                                bool &)
{
    const Options options = readOptions();
    Dataset topData = inputDataset(inputs, 0);
    if (inputs.size() == 1) {
        output = topData;
        setResult(KeyMatching::connectSecondText());
        return output;
    }
    const Dataset &bottom = *inputs.at(1).dataset;
    // Counted before a join by key may take the top rows over.
    const int topRows = topData.rowCount();
    Counts counts;
    if (options.byRowNumber) {
        counts = joinByRowNumber(output, topData, bottom, options);
    } else if (options.topKey < 0 || options.bottomKey < 0) {
        output = topData;
        setResult(QStringLiteral("No changes"));
        return output;
    } else {
        counts = joinByKey(output, topData, bottom, options);
    }
    setResult(resultText(counts, options, topRows, bottom.rowCount()));
    return output;
}

TransformJoin::Options TransformJoin::readOptions() const
{
    Options options;
    options.byRowNumber = option(QStringLiteral("By")).toSelectionIndex() == ByRowNumber;
    options.topKey = option(QStringLiteral("Column_1")).toColumnIndex();
    options.bottomKey = option(QStringLiteral("Column_2")).toColumnIndex();
    options.includeTop = option(QStringLiteral("Include_Non_Matching_1")).toBool();
    options.includeBottom = option(QStringLiteral("Include_Non_Matching_2")).toBool();
    options.caseSensitive = option(QStringLiteral("Case_Sensitive")).toBool();
    options.detailedReport = option(QStringLiteral("Detailed_Report")).toBool();
    return options;
}

TransformJoin::Counts TransformJoin::joinByRowNumber(Dataset &output, const Dataset &top,
                                                     const Dataset &bottom, const Options &options)
{
    const bool includeTop = options.includeTop;
    const bool includeBottom = options.includeBottom;
    const int topRows = top.rowCount();
    const int bottomRows = bottom.rowCount();
    const int width = top.columnCount() + bottom.columnCount();
    const QStringList emptyTop = KeyMatching::emptyRow(top.columnCount());
    const QStringList emptyBottom = KeyMatching::emptyRow(bottom.columnCount());

    setJoinedShape(output, top, bottom);
    const int paired = std::min(topRows, bottomRows);
    output.reserveRows(std::max(topRows, bottomRows));
    Counts counts;
    for (int r = 0; r < paired; ++r) {
        reportRow(r, paired);
        output.appendSharedRow(joinedRow(top.row(r), bottom.row(r), width));
    }
    counts.joined = paired;
    for (int r = paired; includeTop && r < topRows; ++r) {
        output.appendSharedRow(joinedRow(top.row(r), emptyBottom, width));
        ++counts.topUsed;
    }
    for (int r = paired; includeBottom && r < bottomRows; ++r) {
        output.appendSharedRow(joinedRow(emptyTop, bottom.row(r), width));
        ++counts.bottomUsed;
    }
    return counts;
}

TransformJoin::Counts TransformJoin::joinByKey(Dataset &output, Dataset &topData,
                                               const Dataset &bottom, const Options &options)
{
    const int topWidth = topData.columnCount();
    setJoinedShape(output, topData, bottom);
    // Read before the top rows may be given up below.
    if (options.detailedReport)
        addDetailedReport(topData, options.topKey, bottom, options.bottomKey,
                          options.caseSensitive);

    const KeyMatching::KeyIndex index(bottom, options.bottomKey, options.caseSensitive);
    // Marks, by the first bottom row of each key, which keys found a top partner.
    QVector<char> keyMatched(options.includeBottom ? bottom.rowCount() : 0, 0);
    QList<QStringList> unmatchedTop;
    Counts counts;
    counts.joined
        = appendKeyMatches(output, topData, bottom, index, options, keyMatched, unmatchedTop);
    counts.topUsed = appendUnmatchedTop(output, unmatchedTop, topWidth, bottom, options);
    unmatchedTop.clear();
    if (options.includeBottom)
        counts.bottomUsed
            = appendUnmatchedBottom(output, topWidth, bottom, index, keyMatched, options);
    return counts;
}

qint64 TransformJoin::appendKeyMatches(Dataset &output, Dataset &topData, const Dataset &bottom,
                                       const KeyMatching::KeyIndex &index, const Options &options,
                                       QVector<char> &keyMatched, QList<QStringList> &unmatchedTop)
{
    const Dataset &top = topData;
    const int topRows = top.rowCount();
    const int width = top.columnCount() + bottom.columnCount();
    const int topKey = options.topKey;
    const bool caseSensitive = options.caseSensitive;
    const bool includeTop = options.includeTop;
    const bool includeBottom = options.includeBottom;
    // With one bottom row per key, each top row gives at most one output row, which can
    // take its place among the top rows: output row w is written once top row w has been
    // read. When the top rows are this run's alone, the join then needs no table of its
    // own. Rows left behind move towards the end and are dropped there.
    const bool inPlace = index.hasUniqueKeys();
    QList<QStringList> rows;
    if (inPlace)
        rows = topData.takeRows();
    else
        output.reserveRows(topRows);
    qint64 joined = 0;
    for (int r = 0; r < topRows; ++r) {
        reportRow(r, topRows);
        prefetchAhead(inPlace ? rows : top.rows(), r);
        const QStringList &topRow = inPlace ? rows.at(r) : top.row(r);
        const int first = index.first(KeyMatching::keyText(topRow.at(topKey), caseSensitive));
        if (first < 0) {
            if (includeTop)
                unmatchedTop.append(topRow);
            continue;
        }
        if (includeBottom)
            keyMatched[first] = 1;
        if (inPlace) {
            // A top row of this run's alone grows by the bottom cells; its own cells need
            // not be counted in and out again.
            QStringList &grown = rows[r];
            if (grown.isDetached()) {
                grown.reserve(width);
                grown.append(bottom.row(first));
            } else {
                grown = joinedRow(grown, bottom.row(first), width);
            }
            if (joined != r)
                rows[int(joined)].swap(grown);
            ++joined;
            continue;
        }
        for (int b = first; b >= 0; b = index.next(b)) {
            output.appendSharedRow(joinedRow(topRow, bottom.row(b), width));
            ++joined;
        }
    }
    if (inPlace) {
        rows.erase(rows.begin() + int(joined), rows.end());
        output.setSharedRows(std::move(rows));
    }
    return joined;
}

qint64 TransformJoin::appendUnmatchedTop(Dataset &output, const QList<QStringList> &topRows,
                                         int topWidth, const Dataset &bottom,
                                         const Options &options)
{
    const int width = topWidth + bottom.columnCount();
    const QStringList emptyBottom = KeyMatching::emptyRow(bottom.columnCount());
    const int topKey = options.topKey;
    const int keyColumn = topWidth + options.bottomKey;
    for (const QStringList &topRow : topRows) {
        QStringList row = joinedRow(topRow, emptyBottom, width);
        row[keyColumn] = topRow.at(topKey);
        output.appendSharedRow(row);
    }
    return topRows.size();
}

qint64 TransformJoin::appendUnmatchedBottom(Dataset &output, int topWidth, const Dataset &bottom,
                                            const KeyMatching::KeyIndex &index,
                                            const QVector<char> &keyMatched, const Options &options)
{
    const int width = topWidth + bottom.columnCount();
    const QStringList emptyTop = KeyMatching::emptyRow(topWidth);
    const int topKey = options.topKey;
    const int bottomKey = options.bottomKey;
    const bool caseSensitive = options.caseSensitive;
    const int bottomRows = bottom.rowCount();
    qint64 used = 0;
    for (int r = 0; r < bottomRows; ++r) {
        const QStringList &bottomRow = bottom.row(r);
        const int first = index.first(KeyMatching::keyText(bottomRow.at(bottomKey), caseSensitive));
        if (keyMatched.at(first))
            continue;
        QStringList row = joinedRow(emptyTop, bottomRow, width);
        row[topKey] = bottomRow.at(bottomKey);
        output.appendSharedRow(row);
        ++used;
    }
    return used;
}

QString TransformJoin::resultText(const Counts &counts, const Options &options, int topRows,
                                  int bottomRows)
{
    QString result = QStringLiteral("%1 joined").arg(rowsText(counts.joined));
    if (options.includeTop)
        result += QStringLiteral(", %1 used from %2 in top dataset")
                      .arg(rowsText(counts.topUsed), formatCount(topRows));
    if (options.includeBottom)
        result += QStringLiteral(", %1 used from %2 in bottom dataset")
                      .arg(rowsText(counts.bottomUsed), formatCount(bottomRows));
    return result;
}
