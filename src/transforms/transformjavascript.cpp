#include "transforms/transformjavascript.h"

#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"
#include "transforms/scriptengine.h"

#include <QJSEngine>
#include <QSet>

namespace {

enum ScriptType { NumberType, BooleanType, StringType };

const char *scriptTypeName(ScriptType type)
{
    switch (type) {
    case NumberType:
        return "Number";
    case BooleanType:
        return "Boolean";
    default:
        return "String";
    }
}

// The columns that a script names, in the order of the function's parameters, and the
// script with each reference replaced by its parameter.
struct ScriptColumns
{
    QString body;
    QList<int> columns;
    QStringList ambiguous;
};

// References by name come first, each standing for the first column that bears the name; the
// references by number that remain then add their columns. The search stops once the script
// holds no more references.
ScriptColumns rewriteScript(const QString &script, const Dataset &input)
{
    static const QLatin1String marker("$(");
    ScriptColumns result {script, {}, {}};
    QSet<QString> usedNames;
    const int columnCount = input.columnCount();
    for (int c = 0; c < columnCount && result.body.contains(marker); ++c) {
        const QString name = input.headerText(c).trimmed();
        const QString token = ComparisonOperator::columnVariable(name);
        if (result.body.contains(token)) {
            result.body.replace(token, TransformJavascript::columnVariableName(c));
            result.columns.append(c);
            usedNames.insert(name);
        }
    }
    // Looked for in every column, not only while references remain: a repeated name reaches
    // its first column only, which the user ought to know whenever the script uses it.
    QSet<QString> seen;
    for (int c = 0; c < columnCount && !usedNames.isEmpty(); ++c) {
        const QString name = input.headerText(c).trimmed();
        if (seen.contains(name) && usedNames.contains(name) && !result.ambiguous.contains(name))
            result.ambiguous.append(name);
        seen.insert(name);
    }
    for (int c = 0; c < columnCount && result.body.contains(marker); ++c) {
        const QString token = ComparisonOperator::columnVariable(c + 1);
        if (!result.body.contains(token))
            continue;
        result.body.replace(token, TransformJavascript::columnVariableName(c));
        if (!result.columns.contains(c))
            result.columns.append(c);
    }
    return result;
}

// Number when every non-empty cell of the column reads as a number, else Boolean when every
// one reads as a boolean, else String. The whole column is looked at, not a sample, since one
// cell that can't be converted would reach the script as undefined.
ScriptType columnType(const Dataset &data, int c)
{
    const int rowCount = data.rowCount();
    if (data.isNumericColumn(c, false, rowCount))
        return NumberType;
    bool any = false;
    for (int r = 0; r < rowCount; ++r) {
        const QString &cell = data.cell(r, c);
        if (cell.trimmed().isEmpty())
            continue;
        bool ok = false;
        toBool(cell, false, false, &ok);
        if (!ok)
            return StringType;
        any = true;
    }
    return any ? BooleanType : StringType;
}

// The cell as the script gets it; undefined when it doesn't convert to the column's type.
QJSValue scriptValue(const QString &cell, ScriptType type)
{
    switch (type) {
    case NumberType: {
        bool ok = false;
        const double number = cell.toDouble(&ok);
        return ok ? QJSValue(number) : QJSValue();
    }
    case BooleanType: {
        const QString trimmed = cell.trimmed();
        if (trimmed == QLatin1String("true"))
            return QJSValue(true);
        if (trimmed == QLatin1String("false"))
            return QJSValue(false);
        return QJSValue();
    }
    default:
        return QJSValue(cell);
    }
}

// What a run tells the user about values and errors, in the order of the messages.
struct ScriptProblems
{
    qint64 errors = 0;
    QStringList errorLines;
    qint64 typeErrors = 0;
    QStringList typeErrorLines;

    void addError(const QJSValue &error, int r)
    {
        if (++errors <= ListedProblems) {
            errorLines.append(QStringLiteral("Error: %1 at script line %2 for dataset row %3.")
                                  .arg(error.toString(),
                                       QString::number(error.property("lineNumber").toInt()),
                                       QString::number(r + 1)));
        } else if (errors == ListedProblems + 1) {
            errorLines.append(QStringLiteral("..."));
        }
    }
    void addTypeError(const QString &cell, const QString &column, int r, ScriptType type)
    {
        if (++typeErrors > ListedProblems)
            return;
        typeErrorLines.append(
            QStringLiteral("Cannot convert value '%1' in column '%2' row %3 to %4")
                .arg(cell, column, QString::number(r + 1), QLatin1String(scriptTypeName(type))));
    }
    QStringList lines() const
    {
        QStringList result;
        if (errors > 0) {
            result.append(QStringLiteral("%1 Javascript error(s).").arg(formatCount(errors)));
            result += errorLines;
        }
        if (typeErrors > 0) {
            result.append(QStringLiteral("%1 type error(s):").arg(formatCount(typeErrors)));
            result += typeErrorLines;
            if (typeErrors > ListedProblems)
                result.append(furtherProblemsText(typeErrors - ListedProblems));
        }
        return result;
    }
};

} // namespace

TransformJavascript::TransformJavascript() = default;
TransformJavascript::~TransformJavascript() = default;

const TransformDescriptor &TransformJavascript::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 27;
        d.typeName = QStringLiteral("Javascript");
        d.displayName = QStringLiteral("Javascript");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral("Script your own custom transform in Javascript.");
        d.keywords = QStringLiteral("scripting arithmetic calculates maths formulas equations "
                                    "expressions numberic numbers dates text strings program "
                                    "custom coding code ecma javascript")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformJavascript>;
        return d;
    }();
    return descriptor;
}

QStringList TransformJavascript::typeAsNames()
{
    return {QStringLiteral("Number/Boolean/String"), QStringLiteral("String")};
}

QString TransformJavascript::defaultScript()
{
    return QStringLiteral("// see help (? button top right) for details\nreturn \"Hello world!\";");
}

QString TransformJavascript::columnVariableName(int c)
{
    return QStringLiteral("col_%1_var").arg(c + 1);
}

void TransformJavascript::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    auto *name = new Parameter(ParameterType::Text, QStringLiteral("New_Name"),
                               QStringLiteral("New column name"), "Javascript");
    name->setToolTip(QStringLiteral("The name for the new column."));
    applyRememberedValue(useRemembered, name);
    addParameter(name);

    const QStringList types = typeAsNames();
    auto *typeAs = new Parameter(ParameterType::Selection, QStringLiteral("Type_As"),
                                 QStringLiteral("Type columns as"), types.first(), types);
    typeAs->setToolTip(
        QStringLiteral("Whether to type values as Number/Boolean/String (according to column "
                       "contents) or all as String."));
    applyRememberedValue(useRemembered, typeAs);
    addParameter(typeAs);

    auto *script = new Parameter(ParameterType::Script, QStringLiteral("Script"),
                                 QStringLiteral("Script"), inputs.value(0));
    script->setValue(defaultScript());
    // Tells the editor to highlight the text as Javascript rather than as plain text.
    script->setOptions(QStringLiteral("javascript"));
    applyRememberedValue(useRemembered, script);
    addParameter(script);
}

void TransformJavascript::copyFrom(const Transform &other)
{
    Transform::copyFrom(other);
    m_timeLimit = static_cast<const TransformJavascript &>(other).m_timeLimit;
}

QJSEngine *TransformJavascript::engine()
{
    if (!m_engine)
        m_engine = std::make_unique<QJSEngine>();
    return m_engine.get();
}

Dataset &TransformJavascript::process(Dataset &output, const TransformInputs &inputs,
                                      const RunContext &context, bool &)
{
    const QString newName = option(QStringLiteral("New_Name")).toString();
    const bool typed = option(QStringLiteral("Type_As")).toSelectionIndex() == 0;
    const QString script = option(QStringLiteral("Script")).toString();

    output = inputDataset(inputs, 0);
    const ScriptColumns used = rewriteScript(script, output);
    if (!used.ambiguous.isEmpty()) {
        addWarning(QStringLiteral("Ambiguous column name(s): %1, first column with name used")
                       .arg(used.ambiguous.join(QStringLiteral(", "))));
    }
    QList<ScriptType> types;
    QStringList parameterNames;
    for (int c : used.columns) {
        const ScriptType type = typed ? columnType(output, c) : StringType;
        types.append(type);
        parameterNames.append(columnVariableName(c));
        addInformation(QStringLiteral("Column '%1' passed as Javascript %2 type")
                           .arg(output.headerText(c), QLatin1String(scriptTypeName(type))));
    }
    const int newColumn = ColumnNames::appendNamedColumn(output, newName);

    ScriptWatchdog watchdog(engine(), context.stopRequested, m_timeLimit);
    // One function for the run; a syntax error makes it an error, which every row then gets.
    QJSValue function
        = watchdog.evaluate(QStringLiteral("(function( %1 ) { %2 })")
                                .arg(parameterNames.join(QStringLiteral(", ")), used.body));
    const bool compiled
        = watchdog.lastInterruption() == ScriptWatchdog::NotInterrupted && !function.isError();

    ScriptProblems problems;
    QJSValueList arguments;
    arguments.reserve(used.columns.size());
    const int rowCount = output.rowCount();
    int r = 0;
    for (; r < rowCount && watchdog.lastInterruption() == ScriptWatchdog::NotInterrupted; ++r) {
        reportRow(r, rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        arguments.clear();
        const QStringList &row = output.row(r);
        for (int i = 0; i < used.columns.size(); ++i) {
            const QString &cell = row.at(used.columns.at(i));
            arguments.append(scriptValue(cell, types.at(i)));
            if (arguments.last().isUndefined())
                problems.addTypeError(cell, output.headerText(used.columns.at(i)), r, types.at(i));
        }
        const QJSValue value = compiled ? watchdog.call(function, arguments) : function;
        if (watchdog.lastInterruption() != ScriptWatchdog::NotInterrupted)
            break;
        if (value.isError())
            problems.addError(value, r);
        output.setCell(r, newColumn, value.toString());
    }

    for (const QString &line : problems.lines())
        addWarning(line);
    if (r < rowCount) {
        const QString why = watchdog.lastInterruption() == ScriptWatchdog::TimedOut
            ? QStringLiteral("it ran for more than %1 seconds")
                  .arg(numberToCellText(watchdog.timeLimit().count() / 1000.0))
            : QStringLiteral("the run was stopped");
        addWarning(QStringLiteral("Script stopped at dataset row %1: %2. Rows from there on are "
                                  "left empty.")
                       .arg(QString::number(r + 1), why));
    }
    setResult(QStringLiteral("%1 evaluated").arg(formatCount(r)));
    return output;
}
