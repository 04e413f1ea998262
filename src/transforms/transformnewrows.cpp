#include "transforms/transformnewrows.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"

const TransformDescriptor &TransformNewRows::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 32;
        d.typeName = QStringLiteral("New_Rows");
        d.displayName = QStringLiteral("New Rows");
        d.category = CategoryRow;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Add new rows.");
        d.keywords = QStringList {
            QStringLiteral("insert"), QStringLiteral("add"),       QStringLiteral("blank"),
            QStringLiteral("empty"),  QStringLiteral("duplicate"), QStringLiteral("copy"),
            QStringLiteral("repeat"), QStringLiteral("separator"), QStringLiteral("spacer")};
        d.create = createTransform<TransformNewRows>;
        return d;
    }();
    return descriptor;
}

void TransformNewRows::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);
    createNumberParameters(input, useRemembered);
    createNewRowParameters(useRemembered);
    createConditionParameters(input, useRemembered);
}

void TransformNewRows::createNumberParameters(ColumnSource *input, bool useRemembered)
{
    const QStringList hows {QStringLiteral("Same for every row"),
                            QStringLiteral("Set from a column")};
    auto *how = new Parameter(ParameterType::Selection, QStringLiteral("Number_How_Name"),
                              QStringLiteral("Number of new rows"), hows.first(), hows);
    how->setToolTip(QStringLiteral("Whether each row gets the same number of new rows, or the "
                                   "number is read from a column of the row."));
    applyRememberedValue(useRemembered, how);
    addParameter(how);

    auto *numberColumn
        = new Parameter(ParameterType::SingleColumn, QStringLiteral("Number_Col_Name"),
                        QStringLiteral("Number column"), input);
    numberColumn->setToolTip(QStringLiteral("The column that holds the number of new rows "
                                            "for each row."));
    addParameter(numberColumn);

    auto *number = new Parameter(ParameterType::Int, QStringLiteral("Number_Const_Name"),
                                 QStringLiteral("Number"), 1);
    number->setMinimumInt(0);
    number->setToolTip(QStringLiteral("The number of new rows for each row."));
    applyRememberedValue(useRemembered, number);
    addParameter(number);
}

void TransformNewRows::createNewRowParameters(bool useRemembered)
{
    const QStringList as {QStringLiteral("Blank row(s)"), QStringLiteral("Copied row(s)"),
                          QStringLiteral("User defined row(s)")};
    auto *asOption = new Parameter(ParameterType::Selection, QStringLiteral("As_Name"),
                                   QStringLiteral("New rows as"), as.first(), as);
    asOption->setToolTip(QStringLiteral("What the new rows hold."));
    applyRememberedValue(useRemembered, asOption);
    addParameter(asOption);

    auto *userValue = new Parameter(ParameterType::Text, QStringLiteral("User_Defined_Row_Value"),
                                    QStringLiteral("User defined value"), QString());
    userValue->setTextRequired(false);
    userValue->setToolTip(
        QStringLiteral(
            "The value for every cell of a new row. Column values of the row may be used as "
            "variables, e.g. %1 or %2.")
            .arg(ComparisonOperator::columnVariable(1),
                 ComparisonOperator::columnVariable(QStringLiteral("Name"))));
    applyRememberedValue(useRemembered, userValue);
    addParameter(userValue);

    const QStringList locations {QStringLiteral("Above each row"),
                                 QStringLiteral("Below each row")};
    auto *location = new Parameter(ParameterType::Selection, QStringLiteral("Location_Name"),
                                   QStringLiteral("Location"), locations.first(), locations);
    location->setToolTip(QStringLiteral("Where the new rows go."));
    applyRememberedValue(useRemembered, location);
    addParameter(location);
}

void TransformNewRows::createConditionParameters(ColumnSource *input, bool useRemembered)
{
    const QStringList fors {QStringLiteral("Every row"), QStringLiteral("Rows where"),
                            QStringLiteral("First row"), QStringLiteral("Last row")};
    auto *forRows = new Parameter(ParameterType::Selection, QStringLiteral("For_Name"),
                                  QStringLiteral("For"), fors.first(), fors);
    forRows->setToolTip(QStringLiteral("The rows that get new rows."));
    applyRememberedValue(useRemembered, forRows);
    addParameter(forRows);

    auto *matchColumn
        = new Parameter(ParameterType::SingleColumn, QStringLiteral("Match_Column_Name"),
                        QStringLiteral("Column"), input);
    matchColumn->setNoneText(QStringLiteral("<Any>"));
    matchColumn->setColumnRequired(false);
    matchColumn->setToolTip(QStringLiteral("The column to test, or <Any> to test every column."));
    addParameter(matchColumn);

    const QStringList operators = ComparisonOperator::displayTexts();
    auto *matchType = new Parameter(ParameterType::Selection, QStringLiteral("Match_Type_Name"),
                                    QStringLiteral("Operation"), operators.first(), operators);
    matchType->setToolTip(QStringLiteral("How the column value is compared with the value."));
    applyRememberedValue(useRemembered, matchType);
    addParameter(matchType);

    auto *matchValue = new Parameter(ParameterType::Text, QStringLiteral("Match_Value_Name"),
                                     QStringLiteral("Value"), QString());
    matchValue->setTextRequired(false);
    matchValue->setToolTip(QStringLiteral("The value to compare with. Column values of the row "
                                          "may be used as variables."));
    applyRememberedValue(useRemembered, matchValue);
    addParameter(matchValue);

    auto *caseSensitive = new Parameter(ParameterType::Bool, QStringLiteral("Match_Case_Sensitive"),
                                        QStringLiteral("Case sensitive"), false);
    caseSensitive->setToolTip(QStringLiteral("Check for case sensitive comparison."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);
}

QList<ParameterState> TransformNewRows::parameterStates() const
{
    const Parameter *how = parameter(QStringLiteral("Number_How_Name"));
    const Parameter *as = parameter(QStringLiteral("As_Name"));
    const Parameter *forRows = parameter(QStringLiteral("For_Name"));
    const bool fromColumn = how && how->toSelectionIndex() == SetFromColumn;
    const bool userDefined = as && as->toSelectionIndex() == UserDefinedRows;
    const bool where = forRows && forRows->toSelectionIndex() == RowsWhere;
    return {{QStringLiteral("Number_Col_Name"), fromColumn},
            {QStringLiteral("Number_Const_Name"), !fromColumn},
            {QStringLiteral("User_Defined_Row_Value"), userDefined},
            {QStringLiteral("Match_Column_Name"), where},
            {QStringLiteral("Match_Type_Name"), where},
            {QStringLiteral("Match_Value_Name"), where},
            {QStringLiteral("Match_Case_Sensitive"), where}};
}

// What one run reads from the options, but for the condition of "Rows where".
struct TransformNewRows::Options
{
    bool fromColumn = false;
    int numberColumn = -1;
    int constantNumber = 0;
    int as = BlankRows;
    QString userValue;
    bool userValueHasVariables = false;
    bool above = false;
    int forRows = EveryRow;

    // How many new rows a selected row gets. A cell that isn't a number of rows gives none
    // and is counted in badNumbers.
    int count(const QStringList &row, qint64 &badNumbers) const
    {
        if (!fromColumn)
            return constantNumber;
        if (numberColumn < 0)
            return 0;
        bool ok = false;
        const int count = toInt(row.at(numberColumn), true, false, &ok);
        if (!ok || count < 0) {
            ++badNumbers;
            return 0;
        }
        return count;
    }
};

// The condition of "Rows where", read once: one Filter term over one column or all of them.
struct TransformNewRows::Condition
{
    bool used = false;
    int op = ComparisonOperator::Contains;
    QString value;
    bool valueHasVariables = false;
    Qt::CaseSensitivity caseSensitivity = Qt::CaseInsensitive;
    QList<int> columns;
    QStringList formats;

    bool holds(const Dataset &input, const QStringList &row, int r,
               const QHash<QString, ColumnIndex> &byName) const
    {
        const QString rowValue
            = valueHasVariables ? input.substituteColumnVariables(value, byName, r) : value;
        bool selected = !columns.isEmpty();
        for (int i = 0; i < columns.size() && selected; ++i) {
            const QString &format = formats.at(i);
            selected = ComparisonOperator::evaluate(op, row.at(columns.at(i)), rowValue, format,
                                                    format, caseSensitivity);
        }
        return selected;
    }
};

Dataset &TransformNewRows::process(Dataset &output, const TransformInputs &inputs,
                                   const RunContext &, bool &)
{
    const Options options = readOptions();
    const Dataset &input = *inputs.first().dataset;
    output = input;
    const Condition condition = readCondition(input, options.forRows);
    const QHash<QString, ColumnIndex> byName
        = options.userValueHasVariables || condition.valueHasVariables
        ? input.columnsByName()
        : QHash<QString, ColumnIndex>();

    qint64 badNumbers = 0;
    const qint64 added = insertRows(output, input, options, condition, byName, badNumbers);
    if (condition.used)
        clearComparisonCaches();
    if (badNumbers > 0)
        addWarning(QStringLiteral("%1 %2 in column '%3' not a number of rows: no rows added")
                       .arg(formatCount(badNumbers),
                            badNumbers == 1 ? QStringLiteral("value") : QStringLiteral("values"),
                            input.headerText(options.numberColumn)));
    if (added == 0) {
        output = input;
        setResult(QStringLiteral("No changes"));
        return output;
    }
    setResult(
        QStringLiteral("%1 %2 added")
            .arg(formatCount(added), added == 1 ? QStringLiteral("row") : QStringLiteral("rows")));
    return output;
}

TransformNewRows::Options TransformNewRows::readOptions() const
{
    Options options;
    options.fromColumn
        = option(QStringLiteral("Number_How_Name")).toSelectionIndex() == SetFromColumn;
    options.numberColumn
        = options.fromColumn ? option(QStringLiteral("Number_Col_Name")).toColumnIndex() : -1;
    options.constantNumber = qMax(0, option(QStringLiteral("Number_Const_Name")).toInt());
    options.as = option(QStringLiteral("As_Name")).toSelectionIndex();
    options.userValue = option(QStringLiteral("User_Defined_Row_Value")).toString();
    options.userValueHasVariables = options.userValue.contains(QStringLiteral("$("));
    options.above = option(QStringLiteral("Location_Name")).toSelectionIndex() == AboveEachRow;
    options.forRows = option(QStringLiteral("For_Name")).toSelectionIndex();
    return options;
}

TransformNewRows::Condition TransformNewRows::readCondition(const Dataset &input, int forRows) const
{
    // A term without a value that needs one holds for every row; a column that no longer
    // resolves leaves it holding for none.
    Condition condition;
    condition.op = ComparisonOperator::displayOrder().value(
        option(QStringLiteral("Match_Type_Name")).toSelectionIndex(), ComparisonOperator::Contains);
    condition.value = option(QStringLiteral("Match_Value_Name")).toString();
    condition.used = forRows == RowsWhere
        && (!condition.value.isEmpty() || ComparisonOperator::takesNoValue(condition.op));
    condition.valueHasVariables = condition.value.contains(QStringLiteral("$("));
    condition.caseSensitivity = option(QStringLiteral("Match_Case_Sensitive")).toBool()
        ? Qt::CaseSensitive
        : Qt::CaseInsensitive;
    if (!condition.used)
        return condition;
    const Parameter &matchColumn = option(QStringLiteral("Match_Column_Name"));
    if (matchColumn.toColumnId().isNull()) {
        for (int c = 0; c < input.columnCount(); ++c)
            condition.columns.append(c);
    } else if (matchColumn.toColumnIndex() >= 0) {
        condition.columns.append(matchColumn.toColumnIndex());
    }
    const QStringList formats = dateFormats();
    for (int c : qAsConst(condition.columns)) {
        QString format;
        condition.formats.append(input.isDateColumn(c, formats, &format) ? format : QString());
    }
    return condition;
}

qint64 TransformNewRows::insertRows(Dataset &output, const Dataset &input, const Options &options,
                                    const Condition &condition,
                                    const QHash<QString, ColumnIndex> &byName, qint64 &badNumbers)
{
    const int rowCount = input.rowCount();
    const int columnCount = input.columnCount();
    const int as = options.as;
    const bool above = options.above;
    const int forRows = options.forRows;
    QStringList blankRow;
    blankRow.reserve(columnCount);
    for (int c = 0; c < columnCount; ++c)
        blankRow.append(QString());
    QStringList userRow;
    if (as == UserDefinedRows && !options.userValueHasVariables) {
        userRow = blankRow;
        for (QString &cell : userRow)
            cell = options.userValue;
    }

    output.setRowCount(0);
    output.reserveRows(rowCount);
    qint64 added = 0;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        const QStringList &row = input.row(r);
        bool selected = true;
        if (forRows == FirstRow)
            selected = r == 0;
        else if (forRows == LastRow)
            selected = r == rowCount - 1;
        else if (condition.used)
            selected = condition.holds(input, row, r, byName);
        const int count = selected ? options.count(row, badNumbers) : 0;
        if (count > 0 && as == UserDefinedRows && options.userValueHasVariables) {
            const QString text = input.substituteColumnVariables(options.userValue, byName, r);
            userRow = blankRow;
            for (QString &cell : userRow)
                cell = text;
        }
        const QStringList &newRow
            = as == CopiedRows ? row : (as == UserDefinedRows ? userRow : blankRow);
        if (!above)
            output.appendRow(row);
        for (int i = 0; i < count; ++i)
            output.appendRow(newRow);
        if (above)
            output.appendRow(row);
        added += count;
    }
    return added;
}
