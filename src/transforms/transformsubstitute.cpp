#include "transforms/transformsubstitute.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"

#include <QSet>

#include <algorithm>

namespace {

struct Token
{
    QString text;
    int column = -1;
};

void sortLongestFirst(QList<Token> &tokens)
{
    std::stable_sort(tokens.begin(), tokens.end(),
                     [](const Token &a, const Token &b) { return a.text.size() > b.text.size(); });
}

} // namespace

const TransformDescriptor &TransformSubstitute::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 63;
        d.typeName = QStringLiteral("Substitute");
        d.displayName = QStringLiteral("Substitute");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Substitute column values into text.");
        d.keywords = QStringList {QStringLiteral("template"),    QStringLiteral("templates"),
                                  QStringLiteral("variables"),   QStringLiteral("mail"),
                                  QStringLiteral("merge"),       QStringLiteral("text"),
                                  QStringLiteral("format"),      QStringLiteral("combine"),
                                  QStringLiteral("concatenate"), QStringLiteral("insert")};
        d.create = createTransform<TransformSubstitute>;
        return d;
    }();
    return descriptor;
}

void TransformSubstitute::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    auto *newName = new Parameter(ParameterType::Text, QStringLiteral("New_Name"),
                                  QStringLiteral("New column name"), "Substituted");
    newName->setToolTip(QStringLiteral("The name of the new column."));
    addParameter(newName);

    auto *script = new Parameter(ParameterType::Script, QStringLiteral("Script"),
                                 QStringLiteral("Text"), inputs.value(0));
    script->setValue(QString());
    script->setToolTip(
        QStringLiteral("The text of the new column.\n%1 or %2 is replaced by the value of that "
                       "column in the same row.")
            .arg(ComparisonOperator::columnVariable(QStringLiteral("name")),
                 ComparisonOperator::columnVariable(1)));
    applyRememberedValue(useRemembered, script);
    addParameter(script);
}

Dataset &TransformSubstitute::process(Dataset &output, const TransformInputs &inputs,
                                      const RunContext &, bool &)
{
    const Parameter *newNameOption = &option(QStringLiteral("New_Name"));
    const Parameter *scriptOption = &option(QStringLiteral("Script"));

    const Dataset &input = *inputs.first().dataset;
    const QString script = scriptOption->toString();
    const int columnCount = input.columnCount();

    // Names first, each standing for the first column that bears it, then numbers; longer
    // tokens go before shorter ones within each group. Only the tokens that the text holds
    // are kept, so that a row costs one replacement per variable used.
    QList<Token> byName;
    QHash<QString, int> firstWithName;
    QSet<QString> repeated;
    for (int c = 0; c < columnCount; ++c) {
        const QString name = input.headerText(c).trimmed();
        if (firstWithName.contains(name)) {
            repeated.insert(name);
            continue;
        }
        firstWithName.insert(name, c);
        byName.append({ComparisonOperator::columnVariable(name), c});
    }
    QList<Token> byNumber;
    for (int c = 0; c < columnCount; ++c)
        byNumber.append({ComparisonOperator::columnVariable(c + 1), c});
    sortLongestFirst(byName);
    sortLongestFirst(byNumber);

    QList<Token> tokens;
    QStringList ambiguous;
    for (const Token &token : qAsConst(byName)) {
        if (!script.contains(token.text))
            continue;
        tokens.append(token);
        const QString name = input.headerText(token.column).trimmed();
        if (repeated.contains(name))
            ambiguous.append(name);
    }
    for (const Token &token : qAsConst(byNumber)) {
        if (script.contains(token.text))
            tokens.append(token);
    }
    if (!ambiguous.isEmpty()) {
        std::sort(ambiguous.begin(), ambiguous.end());
        addWarning(QStringLiteral("Ambiguous column name(s): %1, first column with name used")
                       .arg(ambiguous.join(QStringLiteral(", "))));
    }

    output = input;
    output.appendColumn();
    const int newColumn = output.lastColumn();
    const QString newName = newNameOption->toString();
    if (!newName.isEmpty())
        output.setColumnName(newColumn, newName);

    const int rowCount = output.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        QString text = script;
        for (const Token &token : qAsConst(tokens))
            text.replace(token.text, input.cell(r, token.column));
        output.setCell(r, newColumn, text);
    }
    setResult(QStringLiteral("%1 evaluated").arg(formatCount(rowCount)));
    return output;
}
