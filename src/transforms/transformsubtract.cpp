#include "transforms/transformsubtract.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/keymatching.h"

#include <QHash>
#include <QVector>

namespace {

enum MatchIndex { AllMatches = 0, FirstMatch = 1, LastMatch = 2 };

// Removed rows named one by one before the rest are counted.
constexpr int ListedRows = 10;

} // namespace

const TransformDescriptor &TransformSubtract::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 64;
        d.typeName = QStringLiteral("Subtract");
        d.displayName = QStringLiteral("Subtract");
        d.category = CategoryMerge;
        d.minimumInputs = 2;
        d.maximumInputs = 2;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::HasKeyColumns;
        d.description = QStringLiteral(
            "Remove rows from the top dataset whose key values are also in the bottom dataset.");
        d.keywords = QStringList {
            QStringLiteral("minus"),   QStringLiteral("difference"), QStringLiteral("except"),
            QStringLiteral("exclude"), QStringLiteral("remove"),     QStringLiteral("anti"),
            QStringLiteral("join"),    QStringLiteral("keys"),       QStringLiteral("match")};
        d.create = createTransform<TransformSubtract>;
        return d;
    }();
    return descriptor;
}

void TransformSubtract::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Column_1"), QStringLiteral("Top key column"), inputs.value(0),
        QStringLiteral("The key column of the top dataset, whose rows are removed.")));
    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Column_2"), QStringLiteral("Bottom key column"), inputs.value(1),
        QStringLiteral("The key column of the bottom dataset.")));

    auto *match
        = new Parameter(ParameterType::Selection, QStringLiteral("Match"), QStringLiteral("Remove"),
                        QStringLiteral("All matches"),
                        QStringList {QStringLiteral("All matches"), QStringLiteral("First match"),
                                     QStringLiteral("Last match")});
    match->setToolTip(QStringLiteral(
        "Remove every top row whose key is in the bottom dataset, or one top row for each "
        "bottom occurrence of the key, taken from the first or from the last top row."));
    applyRememberedValue(useRemembered, match);
    addParameter(match);

    Parameter *caseSensitive = KeyMatching::createCaseSensitiveParameter();
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);
}

bool TransformSubtract::autoConfigure(const ColumnSources &inputs)
{
    return KeyMatching::autoConfigureKeys(parameter(QStringLiteral("Column_1")),
                                          parameter(QStringLiteral("Column_2")), inputs);
}

Dataset &TransformSubtract::process(Dataset &output, const TransformInputs &inputs,
                                    const RunContext &, bool &)
{
    const Parameter *column1Option = &option(QStringLiteral("Column_1"));
    const Parameter *column2Option = &option(QStringLiteral("Column_2"));
    const Parameter *matchOption = &option(QStringLiteral("Match"));
    const Parameter *caseOption = &option(QStringLiteral("Case_Sensitive"));
    const Dataset &top = *inputs.at(0).dataset;
    output = top;
    if (inputs.size() == 1) {
        setResult(KeyMatching::connectSecondText());
        return output;
    }
    const Dataset &bottom = *inputs.at(1).dataset;
    const int topKey = column1Option->toColumnIndex();
    const int bottomKey = column2Option->toColumnIndex();
    if (topKey < 0 || bottomKey < 0) {
        setResult(QStringLiteral("No changes"));
        return output;
    }
    const bool caseSensitive = caseOption->toBool();
    const int match = matchOption->toSelectionIndex();
    const int topRows = top.rowCount();
    const int bottomRows = bottom.rowCount();
    const int total = topRows + bottomRows;

    QVector<char> removed(topRows, 0);
    qint64 removedCount = 0;
    if (match == AllMatches) {
        const KeyMatching::KeyIndex index(bottom, bottomKey, caseSensitive,
                                          [this, total](int r) { reportRow(r, total); });
        for (int r = 0; r < topRows; ++r) {
            if (r % 1000 == 0)
                reportRow(0, total, qreal(bottomRows + r) / total);
            if (index.contains(KeyMatching::keyText(top.cell(r, topKey), caseSensitive))) {
                removed[r] = 1;
                ++removedCount;
            }
        }
    } else {
        // Each bottom occurrence of a key may take away one top row.
        QHash<QString, int> remaining;
        for (int r = 0; r < bottomRows; ++r) {
            reportRow(r, total);
            ++remaining[KeyMatching::keyText(bottom.cell(r, bottomKey), caseSensitive)];
        }
        const bool forward = match == FirstMatch;
        for (int i = 0; i < topRows; ++i) {
            if (i % 1000 == 0)
                reportRow(0, total, qreal(bottomRows + i) / total);
            const int r = forward ? i : topRows - 1 - i;
            auto it = remaining.find(KeyMatching::keyText(top.cell(r, topKey), caseSensitive));
            if (it == remaining.end() || it.value() == 0)
                continue;
            --it.value();
            removed[r] = 1;
            ++removedCount;
        }
    }

    if (removedCount > 0) {
        output.setRowCount(0);
        int listed = 0;
        for (int r = 0; r < topRows; ++r) {
            if (!removed.at(r)) {
                output.appendSharedRow(top.row(r));
                continue;
            }
            if (listed < ListedRows) {
                addInformation(QStringLiteral("Subtracted row %1 with key '%2'")
                                   .arg(QString::number(r + 1), top.cell(r, topKey)));
                ++listed;
            }
        }
        if (removedCount > listed)
            addInformation(QStringLiteral("+ %1").arg(KeyMatching::countText(
                removedCount - listed, QStringLiteral("other"), QStringLiteral("others"))));
    }
    setResult(rowsRemovedText(removedCount));
    return output;
}
