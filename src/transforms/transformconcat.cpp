#include "transforms/transformconcat.h"

#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"

const TransformDescriptor &TransformConcat::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 6;
        d.typeName = QStringLiteral("Concat");
        d.displayName = QStringLiteral("Concat Cols");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Concatenate selected columns into a single new column.");
        d.keywords = QStringList {QStringLiteral("join"),   QStringLiteral("combine"),
                                  QStringLiteral("merge"),  QStringLiteral("concatenate"),
                                  QStringLiteral("append"), QStringLiteral("glue")};
        d.create = createTransform<TransformConcat>;
        return d;
    }();
    return descriptor;
}

void TransformConcat::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    addNewNameParameters(useRemembered);

    auto *columns = new Parameter(ParameterType::MultipleColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Columns"), input);
    columns->setToolTip(QStringLiteral("Select the columns to concatenate, in column order."));
    columns->selectOnlyColumn();
    addParameter(columns);

    auto *delimiter = new Parameter(ParameterType::Text, QStringLiteral("Delimiter"),
                                    QStringLiteral("Delimiter"), " ");
    delimiter->setTextRequired(false);
    delimiter->setToolTip(QStringLiteral("The text put between the concatenated values."));
    applyRememberedValue(useRemembered, delimiter);
    addParameter(delimiter);

    auto *keepEmpty = new Parameter(ParameterType::Bool, QStringLiteral("Keep_Empty"),
                                    QStringLiteral("keep empty values"), false);
    keepEmpty->setToolTip(
        QStringLiteral("Check to keep empty values, so that delimiters appear for them too."));
    applyRememberedValue(useRemembered, keepEmpty);
    addParameter(keepEmpty);
}

QList<ParameterState> TransformConcat::parameterStates() const
{
    return {newNameState()};
}

Dataset &TransformConcat::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &, bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));
    const Parameter *delimiterOption = &option(QStringLiteral("Delimiter"));
    const Parameter *keepEmptyOption = &option(QStringLiteral("Keep_Empty"));

    output = inputDataset(inputs, 0);
    QList<int> columns;
    columnsOption->toColumnIndexes(&columns, true);
    if (columns.isEmpty()) {
        setResult(QStringLiteral("No changes"));
        return output;
    }
    const QString delimiter = delimiterOption->toString();
    const bool keepEmpty = keepEmptyOption->toBool();
    const QString name
        = newColumnName(ColumnNames::joinedNames(output, columns, QStringLiteral(" + ")));

    const int c = ColumnNames::appendNamedColumn(output, name);
    const int rowCount = output.rowCount();
    QString joined;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        const QStringList &row = output.row(r);
        joined.clear();
        bool first = true;
        for (int source : qAsConst(columns)) {
            const QString &text = row.at(source);
            if (text.isEmpty() && !keepEmpty)
                continue;
            if (!first)
                joined += delimiter;
            joined += text;
            first = false;
        }
        if (!joined.isEmpty())
            output.setCell(r, c, joined);
    }
    setResult(QStringLiteral("Concatenated %1").arg(ColumnNames::countedCols(columns.size())));
    return output;
}
