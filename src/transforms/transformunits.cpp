#include "transforms/transformunits.h"

#include "data/valueinterpretation.h"
#include "transforms/cellrules.h"
#include "transforms/framework/parameter.h"
#include "transforms/unittables.h"
#include "transforms/valueproblems.h"

#include <QLocale>

const TransformDescriptor &TransformUnits::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 71;
        d.typeName = QStringLiteral("Units");
        d.displayName = QStringLiteral("Units");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly;
        d.description = QStringLiteral("Change units of time, length, temperature etc.");
        d.keywords = QStringLiteral("convert conversion measurements metric imperial angle area "
                                    "energy length distance mass weight power pressure "
                                    "temperature time velocity speed volume")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformUnits>;
        return d;
    }();
    return descriptor;
}

void TransformUnits::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(CellRules::createColumnsParameter(
        inputs.value(0), QStringLiteral("Select the column(s) with values to convert.")));

    const QStringList dimensions = UnitTables::dimensionNames();
    auto *dimension = new Parameter(ParameterType::Selection, QStringLiteral("Dimension"),
                                    QStringLiteral("Dimension"), "Length", dimensions);
    dimension->setToolTip(QStringLiteral("Select the dimension for the units."));
    applyRememberedValue(useRemembered, dimension);
    addParameter(dimension);

    // Every unit is a choice, so that a document's units are read whatever its dimension;
    // the tip of each choice names its dimension.
    const QStringList units = UnitTables::allUnitNames();
    QStringList tips;
    for (const QString &unit : units)
        tips.append(UnitTables::dimensionOf(unit));
    auto *from = new Parameter(ParameterType::Selection, QStringLiteral("UnitsFrom"),
                               QStringLiteral("From"), "Meters", units);
    from->setToolTip(QStringLiteral("Units from."));
    from->setChoiceToolTips(tips);
    applyRememberedValue(useRemembered, from);
    addParameter(from);

    auto *to = new Parameter(ParameterType::Selection, QStringLiteral("UnitsTo"),
                             QStringLiteral("To"), "Feet", units);
    to->setToolTip(QStringLiteral("Units to."));
    to->setChoiceToolTips(tips);
    applyRememberedValue(useRemembered, to);
    addParameter(to);
}

void TransformUnits::migrateParameters(int, QList<StoredParameter> *parameters) const
{
    // Some documents key the units by their captions.
    for (StoredParameter &parameter : *parameters) {
        if (parameter.key == QLatin1String("From"))
            parameter.key = QStringLiteral("UnitsFrom");
        else if (parameter.key == QLatin1String("To"))
            parameter.key = QStringLiteral("UnitsTo");
    }
}

Dataset &TransformUnits::process(Dataset &output, const TransformInputs &inputs,
                                 const RunContext &context, bool &)
{
    const QList<int> columns = CellRules::selectedColumns(option(QStringLiteral("Columns")));
    const Parameter &dimensionOption = option(QStringLiteral("Dimension"));
    const Parameter &fromOption = option(QStringLiteral("UnitsFrom"));
    const Parameter &toOption = option(QStringLiteral("UnitsTo"));
    const QString dimension = dimensionOption.toString();
    const UnitTables::Unit *from = UnitTables::findUnit(dimension, fromOption.toString());
    const UnitTables::Unit *to = UnitTables::findUnit(dimension, toOption.toString());

    output = inputDataset(inputs, 0);
    for (const Parameter *unit : {&fromOption, &toOption}) {
        if (!UnitTables::findUnit(dimension, unit->toString()))
            addWarning(
                QStringLiteral("'%1' is not a unit of %2.").arg(unit->toString(), dimension));
    }
    if (from && from == to)
        addWarning(QStringLiteral("'%1' and '%2' values are the same.")
                       .arg(fromOption.label(), toOption.label()));
    if (!from || !to || from == to || columns.isEmpty()) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    const bool decimalIsPoint = QLocale().decimalPoint() == QLatin1Char('.');
    // A value that isn't a number stays as it is.
    CellConversion conversion(QStringLiteral("%1 non-numeric %2:"));
    convertCells(
        output, columns, conversion,
        [&](int, const QString &cell, QString *text) {
            bool ok = false;
            const double value = toDoubleFast(cell, decimalIsPoint, &ok);
            if (ok)
                *text = numberToCellText(UnitTables::convert(value, *from, *to));
            return ok;
        },
        [this](int r, int rowCount) { reportRow(r, rowCount); },
        [&context] { return context.isStopRequested(); });

    for (const QString &line : conversion.problems.lines())
        addWarning(line);
    setResult(conversion.result(QStringLiteral("non-numeric")));
    return output;
}
