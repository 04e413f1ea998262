#include "transforms/transformintersect.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/keymatching.h"

const TransformDescriptor &TransformIntersect::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 25;
        d.typeName = QStringLiteral("Intersect");
        d.displayName = QStringLiteral("Intersect");
        d.category = CategoryMerge;
        d.minimumInputs = 2;
        d.maximumInputs = 2;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::HasKeyColumns;
        d.description = QStringLiteral(
            "Keep only rows from the top dataset whose key values are also in the bottom dataset.");
        d.keywords = QStringList {QStringLiteral("common"), QStringLiteral("shared"),
                                  QStringLiteral("both"),   QStringLiteral("keys"),
                                  QStringLiteral("semi"),   QStringLiteral("join"),
                                  QStringLiteral("match"),  QStringLiteral("keep")};
        d.create = createTransform<TransformIntersect>;
        return d;
    }();
    return descriptor;
}

void TransformIntersect::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Column_1"), QStringLiteral("Top key column"), inputs.value(0),
        QStringLiteral("The key column of the top dataset, whose rows are kept or dropped.")));
    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Column_2"), QStringLiteral("Bottom key column"), inputs.value(1),
        QStringLiteral("The key column of the bottom dataset.")));
    Parameter *caseSensitive = KeyMatching::createCaseSensitiveParameter();
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);
}

bool TransformIntersect::autoConfigure(const ColumnSources &inputs)
{
    return KeyMatching::autoConfigureKeys(parameter(QStringLiteral("Column_1")),
                                          parameter(QStringLiteral("Column_2")), inputs);
}

Dataset &TransformIntersect::process(Dataset &output, const TransformInputs &inputs,
                                     const RunContext &, bool &)
{
    const Parameter *column1Option = &option(QStringLiteral("Column_1"));
    const Parameter *column2Option = &option(QStringLiteral("Column_2"));
    const Parameter *caseOption = &option(QStringLiteral("Case_Sensitive"));
    const Dataset &top = *inputs.at(0).dataset;
    if (inputs.size() == 1) {
        output = top;
        setResult(KeyMatching::connectSecondText());
        return output;
    }
    const Dataset &bottom = *inputs.at(1).dataset;
    // The top's shape and ids, without its rows.
    output = top;
    output.setRowCount(0);
    const int topKey = column1Option->toColumnIndex();
    const int bottomKey = column2Option->toColumnIndex();
    if (topKey < 0 || bottomKey < 0) {
        setResult(QStringLiteral("0 intersecting rows"));
        return output;
    }
    const bool caseSensitive = caseOption->toBool();
    const int topRows = top.rowCount();
    const int bottomRows = bottom.rowCount();
    const int total = topRows + bottomRows;

    const KeyMatching::KeyIndex index(bottom, bottomKey, caseSensitive,
                                      [this, total](int r) { reportRow(r, total); });
    for (int r = 0; r < topRows; ++r) {
        if (r % 1000 == 0)
            reportRow(0, total, qreal(bottomRows + r) / total);
        const QStringList &row = top.row(r);
        if (index.contains(KeyMatching::keyText(row.at(topKey), caseSensitive)))
            output.appendSharedRow(row);
    }

    const KeyMatching::KeyOverlap overlap
        = KeyMatching::keyOverlap(top, topKey, bottom, bottomKey, caseSensitive);
    setResult(QStringLiteral("%1 with keys in both, %2 top only, %3 bottom only")
                  .arg(KeyMatching::countText(output.rowCount(), QStringLiteral("row"),
                                              QStringLiteral("rows")),
                       formatCount(overlap.topRowsOnly), formatCount(overlap.bottomRowsOnly)));
    const QStringList lines = KeyMatching::overlapLines(overlap);
    for (const QString &line : lines)
        addInformation(line);
    return output;
}
