#include "transforms/transformconcatrows.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"

#include <algorithm>

namespace {

enum Mode { Fixed = 0, Variable = 1, ByKey = 2 };
enum WhileOrUntil { Until = 0, While = 1 };
enum ConcatValue { Omit = 0, AddToRowEnd = 1, AddToRowStart = 2 };

int operatorOf(const QString &displayText)
{
    for (int op = 0; op < ComparisonOperator::Count; ++op) {
        if (ComparisonOperator::displayText(op) == displayText)
            return op;
    }
    return ComparisonOperator::EqualTo;
}

} // namespace

const TransformDescriptor &TransformConcatRows::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 7;
        d.typeName = QStringLiteral("Concat_Rows");
        d.displayName = QStringLiteral("Concat Rows");
        d.category = CategoryRow;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Concatenate multiple consecutive rows into a single row.");
        d.keywords = QStringList {
            QStringLiteral("join"),        QStringLiteral("merge"),  QStringLiteral("combine"),
            QStringLiteral("consecutive"), QStringLiteral("unwrap"), QStringLiteral("records"),
            QStringLiteral("lines"),       QStringLiteral("key"),    QStringLiteral("widen")};
        d.create = createTransform<TransformConcatRows>;
        return d;
    }();
    return descriptor;
}

void TransformConcatRows::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    const QStringList modes {QStringLiteral("Fixed"), QStringLiteral("Variable"),
                             QStringLiteral("By key")};
    auto *mode = new Parameter(ParameterType::Selection, QStringLiteral("Mode"),
                               QStringLiteral("Mode"), modes.first(), modes);
    mode->setToolTip(QStringLiteral(
        "Concatenate a fixed number of rows, rows up to a row that matches a condition on the "
        "first column, or consecutive rows with the same key value."));
    applyRememberedValue(useRemembered, mode);
    addParameter(mode);

    auto *rows
        = new Parameter(ParameterType::Int, QStringLiteral("Rows"), QStringLiteral("Rows"), 2);
    rows->setMinimumInt(1);
    rows->setToolTip(QStringLiteral("The number of rows to concatenate into each row."));
    applyRememberedValue(useRemembered, rows);
    addParameter(rows);

    const QStringList whileUntil {QStringLiteral("Until"), QStringLiteral("While")};
    auto *whileOrUntil
        = new Parameter(ParameterType::Selection, QStringLiteral("While_Or_Until"),
                        QStringLiteral("Concatenate"), whileUntil.first(), whileUntil);
    whileOrUntil->setToolTip(QStringLiteral(
        "Until: a row whose first column matches starts a new row. While: rows that match are "
        "added to the current row and a row that doesn't starts a new one."));
    applyRememberedValue(useRemembered, whileOrUntil);
    addParameter(whileOrUntil);

    const QStringList operators = ComparisonOperator::displayTexts();
    auto *matches = new Parameter(
        ParameterType::Selection, QStringLiteral("Matches"), QStringLiteral("First column"),
        ComparisonOperator::displayText(ComparisonOperator::EqualTo), operators);
    matches->setToolTip(QStringLiteral("How the first column is compared with the value."));
    applyRememberedValue(useRemembered, matches);
    addParameter(matches);

    auto *value
        = new Parameter(ParameterType::Text, QStringLiteral("Value"), QStringLiteral("Value"), "");
    value->setTextRequired(false);
    value->setToolTip(QStringLiteral("The value that the first column is compared with."));
    applyRememberedValue(useRemembered, value);
    addParameter(value);

    auto *key = new Parameter(ParameterType::SingleColumn, QStringLiteral("Key_Column"),
                              QStringLiteral("Key column"), input);
    key->setToolTip(
        QStringLiteral("Consecutive rows with the same value in this column are concatenated."));
    key->selectOnlyColumn();
    addParameter(key);

    auto *repeatKey = new Parameter(ParameterType::Bool, QStringLiteral("Repeat_Key_Column"),
                                    QStringLiteral("Repeat key column"), false);
    repeatKey->setToolTip(QStringLiteral(
        "Keep the key value of every concatenated row, not only that of the first."));
    applyRememberedValue(useRemembered, repeatKey);
    addParameter(repeatKey);

    auto *caseSensitive = new Parameter(ParameterType::Bool, QStringLiteral("Case_Sensitive"),
                                        QStringLiteral("Case sensitive"), false);
    caseSensitive->setToolTip(QStringLiteral("Tell upper and lower case apart when comparing."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);

    const QStringList concatValues {QStringLiteral("Omit"), QStringLiteral("Add to row end"),
                                    QStringLiteral("Add to row start")};
    auto *concatValue
        = new Parameter(ParameterType::Selection, QStringLiteral("Concat_Value"),
                        QStringLiteral("Matching value"), concatValues.first(), concatValues);
    concatValue->setToolTip(
        QStringLiteral("What becomes of the first column value of the row that starts a new row."));
    applyRememberedValue(useRemembered, concatValue);
    addParameter(concatValue);
}

QList<ParameterState> TransformConcatRows::parameterStates() const
{
    const Parameter *modeOption = parameter(QStringLiteral("Mode"));
    const int mode = modeOption ? modeOption->toSelectionIndex() : Fixed;
    return {{QStringLiteral("Rows"), mode == Fixed},
            {QStringLiteral("While_Or_Until"), mode == Variable},
            {QStringLiteral("Matches"), mode == Variable},
            {QStringLiteral("Value"), mode == Variable},
            {QStringLiteral("Key_Column"), mode == ByKey},
            {QStringLiteral("Repeat_Key_Column"), mode == ByKey},
            {QStringLiteral("Case_Sensitive"), mode != Fixed},
            {QStringLiteral("Concat_Value"), mode == Variable}};
}

QList<QStringList> TransformConcatRows::concatenateFixed(const Dataset &input, int rows)
{
    QList<QStringList> result;
    const int rowCount = input.rowCount();
    result.reserve(rowCount / rows + 1);
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        if (r % rows == 0)
            result.append(input.row(r));
        else
            result.last().append(input.row(r));
    }
    return result;
}

QList<QStringList> TransformConcatRows::concatenateByKey(const Dataset &input, int key,
                                                         bool repeatKey, Qt::CaseSensitivity cs)
{
    QList<QStringList> result;
    const int rowCount = input.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        const QStringList &row = input.row(r);
        if (r == 0 || QString::compare(row.at(key), input.cell(r - 1, key), cs) != 0) {
            result.append(row);
            continue;
        }
        QStringList &current = result.last();
        if (repeatKey) {
            current.append(row);
            continue;
        }
        for (int c = 0; c < row.size(); ++c) {
            if (c != key)
                current.append(row.at(c));
        }
    }
    return result;
}

QList<QStringList> TransformConcatRows::concatenateVariable(const Dataset &input, bool whileMode,
                                                            int op, const QString &value,
                                                            int concatValue, Qt::CaseSensitivity cs)
{
    QList<QStringList> result;
    QString endValue;
    bool hasEndValue = false;
    const int rowCount = input.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        const QStringList &row = input.row(r);
        const bool matches
            = ComparisonOperator::evaluate(op, row.at(0), value, QString(), QString(), cs);
        // The row that starts a new output row is the one that matches with Until, and the
        // one that doesn't with While.
        if (matches == whileMode && r > 0) {
            result.last().append(row);
            continue;
        }
        if (r == 0 && matches == whileMode) {
            result.append(row);
            continue;
        }
        if (hasEndValue)
            result.last().append(endValue);
        hasEndValue = concatValue == AddToRowEnd;
        endValue = row.at(0);
        result.append(concatValue == AddToRowStart ? row : QStringList(row.mid(1)));
    }
    if (hasEndValue)
        result.last().append(endValue);
    return result;
}

Dataset &TransformConcatRows::process(Dataset &output, const TransformInputs &inputs,
                                      const RunContext &, bool &)
{
    const Parameter *modeOption = &option(QStringLiteral("Mode"));
    const Parameter *rowsOption = &option(QStringLiteral("Rows"));
    const Parameter *whileOption = &option(QStringLiteral("While_Or_Until"));
    const Parameter *matchesOption = &option(QStringLiteral("Matches"));
    const Parameter *valueOption = &option(QStringLiteral("Value"));
    const Parameter *keyOption = &option(QStringLiteral("Key_Column"));
    const Parameter *repeatKeyOption = &option(QStringLiteral("Repeat_Key_Column"));
    const Parameter *caseOption = &option(QStringLiteral("Case_Sensitive"));
    const Parameter *concatValueOption = &option(QStringLiteral("Concat_Value"));

    const Dataset &input = *inputs.first().dataset;
    const int mode = modeOption->toSelectionIndex();
    const int columnCount = input.columnCount();
    const Qt::CaseSensitivity cs = caseOption->toBool() ? Qt::CaseSensitive : Qt::CaseInsensitive;
    const int key = keyOption->toColumnIndex();
    const int op = operatorOf(matchesOption->toString());
    const QString value = valueOption->toString();
    const bool repeatKey = repeatKeyOption->toBool();
    const bool usable = input.hasRows() && columnCount > 0
        && (mode != ByKey || (key >= 0 && key < columnCount))
        && (mode != Variable || ComparisonOperator::takesNoValue(op) || !value.isEmpty());
    if (!usable) {
        output = input;
        setResult(QStringLiteral("No changes"));
        return output;
    }

    QList<QStringList> rows;
    if (mode == Variable) {
        rows = concatenateVariable(input, whileOption->toSelectionIndex() == While, op, value,
                                   concatValueOption->toSelectionIndex(), cs);
        clearComparisonCaches();
    } else if (mode == ByKey) {
        rows = concatenateByKey(input, key, repeatKey, cs);
    } else {
        rows = concatenateFixed(input, std::max(1, rowsOption->toInt()));
    }

    int width = 0;
    for (const QStringList &row : qAsConst(rows))
        width = std::max(width, int(row.size()));
    QStringList names;
    if (input.hasHeader()) {
        if (mode == Variable) {
            names = namesOrNumbers(input, width);
        } else {
            // Later copies of a column are told apart by their copy number: "Phone 2".
            const QStringList inputNames = input.headers();
            names = input.header();
            const bool skipKey = mode == ByKey && !repeatKey;
            for (int copy = 2; names.size() < width; ++copy) {
                for (int c = 0; c < columnCount && names.size() < width; ++c) {
                    if (!(skipKey && c == key))
                        names.append(QStringLiteral("%1 %2").arg(inputNames.at(c)).arg(copy));
                }
            }
        }
    }
    beginOutput(output, width, input.hasHeader(), names);
    if (mode != Variable)
        keepColumnIds(output, input, columnCount);
    output.reserveRows(rows.size());
    for (const QStringList &row : qAsConst(rows))
        output.appendRow(row, true);
    setResult(QStringLiteral("%1 rows concatenated into %2")
                  .arg(formatCount(input.rowCount(), true), formatCount(rows.size(), true)));
    return output;
}
