#include "transforms/transformcalculate.h"

#include "data/valueinterpretation.h"
#include "transforms/calculatedates.h"
#include "transforms/calculateoperations.h"
#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/parametermigration.h"
#include "transforms/reshaping.h"

using namespace Calculate;

namespace {

enum ValueType { ColumnType = 0, ConstantType = 1 };

QStringList valueTypeNames()
{
    return {QStringLiteral("Column"), QStringLiteral("Constant")};
}

QString key(const char *stem, int number)
{
    return QLatin1String(stem) + QString::number(number);
}

Operation chosenOperation(const Parameter *option)
{
    const Operation operation = option ? operationFromName(option->toString()) : Operation::Add;
    return operation == Operation::Count ? Operation::Add : operation;
}

} // namespace

// One value of the calculation as the options set it for this run.
struct TransformCalculate::Value
{
    bool isColumn = true;
    int column = -1;
    QString constant;
    // The column's header, or the constant: what stands for the value in automatic names.
    QString name;
    Operand operand;
};

const TransformDescriptor &TransformCalculate::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 0;
        d.typeName = QStringLiteral("Calculate");
        d.displayName = QStringLiteral("Calculate");
        d.category = CategoryColumn;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::UsesDateFormats;
        d.description
            = QStringLiteral("Perform calculations on 1 or 2 columns to create a new column.");
        d.keywords = QStringLiteral(
                         "1970 absolute arithmetic binary bitwise boolean calculate calendar "
                         "ceiling columns compute conversions convert dates datetime days "
                         "decrement difference divide epoch exponent find floor formula hours "
                         "increment indexof julian lastindexof leap length levenshtein logarithm "
                         "maximum milli milliseconds minimum minus minutes modulus months msecs "
                         "multiply plus power product quarter rounding seconds sign substring "
                         "subtract times timestamp unary unix variables weeks words years")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformCalculate>;
        return d;
    }();
    return descriptor;
}

QStringList TransformCalculate::typeToolTips(int value, bool twoValues)
{
    const QString which = !twoValues ? QStringLiteral("the value")
        : value == 1                 ? QStringLiteral("the first value")
                                     : QStringLiteral("the second value");
    return {QStringLiteral("Select whether %1 is a column or a constant.").arg(which),
            QStringLiteral("Set %1 as a column.").arg(which),
            QStringLiteral("Set %1 as a constant.").arg(which)};
}

void TransformCalculate::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    addNewNameParameters(useRemembered);

    const QStringList &operations = operationNames();
    auto *operation = new Parameter(ParameterType::Selection, QStringLiteral("Operation"),
                                    QStringLiteral("Operation"), operations.first(), operations);
    operation->setToolTip(
        QStringLiteral("The operation to perform.\nClick the ? button for details."));
    applyRememberedValue(useRemembered, operation);
    addParameter(operation);

    for (int number = 1; number <= 2; ++number) {
        auto *type = new Parameter(ParameterType::Selection, key("Type", number),
                                   QStringLiteral("Value %1 type").arg(number),
                                   valueTypeNames().first(), valueTypeNames());
        const QStringList tips = typeToolTips(number, true);
        type->setToolTip(tips.first());
        type->setChoiceToolTips(tips.mid(1));
        applyRememberedValue(useRemembered, type);
        addParameter(type);

        auto *column = new Parameter(ParameterType::SingleColumn, key("Column", number),
                                     QStringLiteral("Value %1").arg(number), input);
        if (number == 1)
            column->selectOnlyColumn();
        addParameter(column);

        auto *constant = new Parameter(ParameterType::Text, key("Constant", number),
                                       QStringLiteral("Value %1").arg(number), QString());
        applyRememberedValue(useRemembered, constant);
        addParameter(constant);
    }
}

QList<ParameterState> TransformCalculate::parameterStates() const
{
    const bool twoValues = takesTwoValues(chosenOperation(parameter(QStringLiteral("Operation"))));
    QList<ParameterState> states {newNameState()};
    for (int number = 1; number <= 2; ++number) {
        const bool shown = number == 1 || twoValues;
        Parameter *type = parameter(key("Type", number));
        const bool isColumn = !type || type->toSelectionIndex() == ColumnType;
        // Value 1's type says "first" only while there is a second.
        if (type) {
            const QStringList tips = typeToolTips(number, twoValues || number == 2);
            type->setToolTip(tips.first());
            type->setChoiceToolTips(tips.mid(1));
        }
        if (number == 2)
            states.append({type ? type->key() : key("Type", number), shown});
        states.append({key("Column", number), shown && isColumn});
        states.append({key("Constant", number), shown && !isColumn});
    }
    return states;
}

void TransformCalculate::migrateParameters(int version, QList<StoredParameter> *parameters) const
{
    // Before version 68 the Julian day of a date was the operation "JulianDay".
    if (version >= 68)
        return;
    for (StoredParameter &parameter : *parameters) {
        if (parameter.key == QLatin1String("Operation"))
            ParameterMigration::renameChoice(&parameter, QStringLiteral("JulianDay"),
                                             QStringLiteral("DateToJulianDay"));
    }
}

bool TransformCalculate::readValue(int number, const Dataset &input, Value *value) const
{
    value->isColumn = option(key("Type", number)).toSelectionIndex() == ColumnType;
    if (!value->isColumn) {
        value->constant = option(key("Constant", number)).toString();
        value->name = value->constant;
        return true;
    }
    value->column = option(key("Column", number)).toColumnIndex();
    if (value->column < 0 || value->column >= input.columnCount())
        return false;
    value->name = input.headerText(value->column);
    return true;
}

void TransformCalculate::recogniseDates(const Dataset &input, bool twoValues, Value *value1,
                                        Value *value2) const
{
    QStringList formats = dateFormats();
    const auto recognise = [&](Value *value) {
        value->operand.isDate = value->isColumn
            ? isDateColumn(input, value->column, formats, &value->operand.format)
            : isDateConstant(value->constant, formats, &value->operand.format);
    };
    recognise(value1);
    if (!twoValues)
        return;
    // Value 2 prefers the format of Value 1, so that 1/2/2024 reads alike in both.
    if (value1->operand.isDate) {
        formats.removeAll(value1->operand.format);
        formats.prepend(value1->operand.format);
    }
    recognise(value2);
}

void TransformCalculate::reportFailures(const QStringList &messages, qint64 failures)
{
    if (failures == 0)
        return;
    for (const QString &message : messages)
        addWarning(message);
    if (failures > ListedProblems)
        addWarning(furtherProblemsText(failures - ListedProblems));
    addWarning(QString());
}

Dataset &TransformCalculate::process(Dataset &output, const TransformInputs &inputs,
                                     const RunContext &context, bool &)
{
    const Operation operation = chosenOperation(&option(QStringLiteral("Operation")));
    const bool twoValues = takesTwoValues(operation);
    output = inputDataset(inputs, 0);
    const int rowCount = output.rowCount();

    Value value1;
    Value value2;
    if (!readValue(1, output, &value1) || (twoValues && !readValue(2, output, &value2))) {
        ColumnNames::appendNamedColumn(output, QString());
        setResult(QStringLiteral("%1 calculations succeeded, %2 failed")
                      .arg(formatCount(0), formatCount(rowCount)));
        return output;
    }
    if (usesDates(operation))
        recogniseDates(output, twoValues, &value1, &value2);

    // The texts go in one after the other, as names always have: a header holding "%2" is
    // not safe from the next.
    const QString symbol = shortName(operation);
    QString name;
    if (!twoValues) {
        name = QStringLiteral("%1(%2)").arg(symbol).arg(value1.name);
    } else {
        const QString first = value1.isColumn ? value1.name : value1.name.trimmed();
        const QString second = value2.isColumn ? value2.name : value2.name.trimmed();
        name = symbol.size() == 1 ? QStringLiteral("%1%2%3").arg(first).arg(symbol).arg(second)
                                  : QStringLiteral("%1(%2,%3)").arg(symbol).arg(first).arg(second);
    }
    const int newColumn = ColumnNames::appendNamedColumn(output, newColumnName(name));

    const Calculator calculator(operation, value1.operand, value2.operand);
    const QString noValue;
    Outcome outcome;
    qint64 successes = 0;
    qint64 failures = 0;
    QStringList messages;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        const QStringList &row = output.row(r);
        const QString &a = value1.isColumn ? row.at(value1.column) : value1.constant;
        const QString &b = !twoValues ? noValue
            : value2.isColumn         ? row.at(value2.column)
                                      : value2.constant;
        calculator.calculate(a, b, &outcome);
        if (!outcome.failed())
            ++successes;
        for (int i = 0; i < outcome.problemCount; ++i) {
            if (++failures > ListedProblems)
                continue;
            const Problem &problem = outcome.problems[i];
            const Value &value = problem.value == 2 ? value2 : value1;
            const bool named = problem.value != 0 && value.isColumn;
            messages.append(failureMessage(problem.failure, problem.value == 2 ? b : a,
                                           named ? &value.name : nullptr, r));
        }
        output.setCell(r, newColumn, outcome.text);
    }
    reportFailures(messages, failures);
    setResult(QStringLiteral("%1 calculations succeeded, %2 failed")
                  .arg(formatCount(successes), formatCount(rowCount - successes)));
    return output;
}
