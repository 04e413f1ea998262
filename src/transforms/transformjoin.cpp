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

Dataset &TransformJoin::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                                bool &)
{
    const Parameter *byOption = &option(QStringLiteral("By"));
    const Parameter *column1Option = &option(QStringLiteral("Column_1"));
    const Parameter *column2Option = &option(QStringLiteral("Column_2"));
    const Parameter *nonMatching1Option = &option(QStringLiteral("Include_Non_Matching_1"));
    const Parameter *nonMatching2Option = &option(QStringLiteral("Include_Non_Matching_2"));
    const Parameter *caseOption = &option(QStringLiteral("Case_Sensitive"));
    const Parameter *detailedOption = &option(QStringLiteral("Detailed_Report"));
    Dataset topData = inputDataset(inputs, 0);
    const Dataset &top = topData;
    if (inputs.size() == 1) {
        output = top;
        setResult(KeyMatching::connectSecondText());
        return output;
    }
    const Dataset &bottom = *inputs.at(1).dataset;
    const bool includeTop = nonMatching1Option->toBool();
    const bool includeBottom = nonMatching2Option->toBool();
    const int topRows = top.rowCount();
    const int bottomRows = bottom.rowCount();
    const int topWidth = top.columnCount();
    const int width = topWidth + bottom.columnCount();
    const QStringList emptyTop = KeyMatching::emptyRow(topWidth);
    const QStringList emptyBottom = KeyMatching::emptyRow(bottom.columnCount());

    qint64 joined = 0;
    qint64 topUsed = 0;
    qint64 bottomUsed = 0;

    if (byOption->toSelectionIndex() == ByRowNumber) {
        setJoinedShape(output, top, bottom);
        const int paired = std::min(topRows, bottomRows);
        output.reserveRows(std::max(topRows, bottomRows));
        for (int r = 0; r < paired; ++r) {
            reportRow(r, paired);
            output.appendSharedRow(joinedRow(top.row(r), bottom.row(r), width));
        }
        joined = paired;
        for (int r = paired; includeTop && r < topRows; ++r) {
            output.appendSharedRow(joinedRow(top.row(r), emptyBottom, width));
            ++topUsed;
        }
        for (int r = paired; includeBottom && r < bottomRows; ++r) {
            output.appendSharedRow(joinedRow(emptyTop, bottom.row(r), width));
            ++bottomUsed;
        }
    } else {
        const int topKey = column1Option->toColumnIndex();
        const int bottomKey = column2Option->toColumnIndex();
        if (topKey < 0 || bottomKey < 0) {
            output = top;
            setResult(QStringLiteral("No changes"));
            return output;
        }
        const bool caseSensitive = caseOption->toBool();
        setJoinedShape(output, top, bottom);
        // Read before the top rows may be given up below.
        if (detailedOption->toBool())
            addDetailedReport(top, topKey, bottom, bottomKey, caseSensitive);

        const KeyMatching::KeyIndex index(bottom, bottomKey, caseSensitive);
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
        // Marks, by the first bottom row of each key, which keys found a top partner.
        QVector<char> keyMatched(includeBottom ? bottomRows : 0, 0);
        QList<QStringList> unmatchedTop;
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
        for (const QStringList &topRow : qAsConst(unmatchedTop)) {
            QStringList row = joinedRow(topRow, emptyBottom, width);
            row[topWidth + bottomKey] = topRow.at(topKey);
            output.appendSharedRow(row);
            ++topUsed;
        }
        unmatchedTop.clear();
        for (int r = 0; includeBottom && r < bottomRows; ++r) {
            const QStringList &bottomRow = bottom.row(r);
            const int first
                = index.first(KeyMatching::keyText(bottomRow.at(bottomKey), caseSensitive));
            if (keyMatched.at(first))
                continue;
            QStringList row = joinedRow(emptyTop, bottomRow, width);
            row[topKey] = bottomRow.at(bottomKey);
            output.appendSharedRow(row);
            ++bottomUsed;
        }
    }

    QString result = QStringLiteral("%1 joined").arg(rowsText(joined));
    if (includeTop)
        result += QStringLiteral(", %1 used from %2 in top dataset")
                      .arg(rowsText(topUsed), formatCount(topRows));
    if (includeBottom)
        result += QStringLiteral(", %1 used from %2 in bottom dataset")
                      .arg(rowsText(bottomUsed), formatCount(bottomRows));
    setResult(result);
    return output;
}
