#include "transforms/transformdateformat.h"

#include "transforms/cellrules.h"
#include "transforms/datetimepattern.h"
#include "transforms/framework/parameter.h"
#include "transforms/valueproblems.h"

const TransformDescriptor &TransformDateFormat::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 12;
        d.typeName = QStringLiteral("Date_Format");
        d.displayName = QStringLiteral("DateTime Format");
        d.category = CategoryFormat;
        d.flags
            = TransformDescriptor::ChangesValuesOnly | TransformDescriptor::OmitDisabledFromDetails;
        d.description
            = QStringLiteral("Change the date and/or time format in the selected column(s).");
        d.keywords = QStringLiteral("dates times datetime timestamps locales convert conversion "
                                    "reformat iso months days years hours minutes")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformDateFormat>;
        return d;
    }();
    return descriptor;
}

QStringList TransformDateFormat::nonDateChoices()
{
    return {QStringLiteral("Leave unchanged"), QStringLiteral("Set to empty"),
            QStringLiteral("Set to value")};
}

void TransformDateFormat::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(CellRules::createColumnsParameter(
        inputs.value(0),
        QStringLiteral("Select the column(s) with dates and/or times to change.")));

    // No value stands for the default locale, that of the document.
    auto *inputLocale = new Parameter(ParameterType::Locale, QStringLiteral("Input_Locale"),
                                      QStringLiteral("Locale from"), QVariant());
    inputLocale->setToolTip(QStringLiteral(
        "Choose the locale to convert from. The locale affects the format expected."));
    applyRememberedValue(useRemembered, inputLocale);
    addParameter(inputLocale);

    auto *input = new Parameter(ParameterType::Text, QStringLiteral("Input"),
                                QStringLiteral("Format from"), "d/MM/yyyy");
    input->setToolTip(QStringLiteral("The current date and/or time format, e.g. d/M/yyyy.\n\n"
                                     "Click the ? button for more details."));
    applyRememberedValue(useRemembered, input);
    addParameter(input);

    auto *outputLocale = new Parameter(ParameterType::Locale, QStringLiteral("Output_Locale"),
                                       QStringLiteral("Locale to"), QVariant());
    outputLocale->setToolTip(QStringLiteral(
        "Choose the locale to convert to. The locale affects how dates are displayed."));
    applyRememberedValue(useRemembered, outputLocale);
    addParameter(outputLocale);

    auto *output = new Parameter(ParameterType::Text, QStringLiteral("Output"),
                                 QStringLiteral("Format to"), "yy/MM/dd");
    output->setToolTip(QStringLiteral("The new date and/or time format, e.g. yyyy-M-d.\n\n"
                                      "Click the ? button for more details."));
    applyRememberedValue(useRemembered, output);
    addParameter(output);

    const QStringList choices = nonDateChoices();
    auto *nonDate = new Parameter(ParameterType::Selection, QStringLiteral("Non_Date"),
                                  QStringLiteral("Non-date"), choices.first(), choices);
    nonDate->setToolTip(
        QStringLiteral("What to do with values that don't match '%1'.").arg(input->label()));
    nonDate->setChoiceToolTips({QStringLiteral("Keep the value as it is."),
                                QStringLiteral("Make the value empty."),
                                QStringLiteral("Replace the value with the '%1' value.")
                                    .arg(QStringLiteral("With value"))});
    applyRememberedValue(useRemembered, nonDate);
    addParameter(nonDate);

    auto *userDefined = new Parameter(ParameterType::Text, QStringLiteral("User_Defined"),
                                      QStringLiteral("With value"), QString());
    userDefined->setTextRequired(false);
    userDefined->setToolTip(
        QStringLiteral("The value to set for values that don't match '%1'.").arg(input->label()));
    applyRememberedValue(useRemembered, userDefined);
    addParameter(userDefined);
}

QList<ParameterState> TransformDateFormat::parameterStates() const
{
    const Parameter *nonDate = parameter(QStringLiteral("Non_Date"));
    return {{QStringLiteral("User_Defined"),
             nonDate && nonDate->toSelectionIndex() == int(UnreadValue::Replace)}};
}

Dataset &TransformDateFormat::process(Dataset &output, const TransformInputs &inputs,
                                      const RunContext &context, bool &)
{
    const QList<int> columns = CellRules::selectedColumns(option(QStringLiteral("Columns")));
    const QString inputFormat = option(QStringLiteral("Input")).toString();
    const QString outputFormat = option(QStringLiteral("Output")).toString();
    const DateTimePattern reader(inputFormat, option(QStringLiteral("Input_Locale")).toLocale());
    const DateTimePattern writer(outputFormat, option(QStringLiteral("Output_Locale")).toLocale());
    const auto nonDate = UnreadValue(option(QStringLiteral("Non_Date")).toSelectionIndex());
    const QString replacement = nonDate == UnreadValue::Replace
        ? option(QStringLiteral("User_Defined")).toString()
        : QString();

    output = inputDataset(inputs, 0);
    // Without both formats there is nothing to convert; the unset option is reported.
    if (columns.isEmpty() || inputFormat.isEmpty() || outputFormat.isEmpty()) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    CellConversion conversion(QStringLiteral("%1 non-date %2:"));
    conversion.unread = nonDate;
    conversion.replacement = replacement;
    convertCells(
        output, columns, conversion,
        [&](int, const QString &cell, QString *text) {
            DateTimePattern::Value value;
            if (!reader.read(cell, &value))
                return false;
            *text = writer.write(value);
            return true;
        },
        [this](int r, int rowCount) { reportRow(r, rowCount); },
        [&context] { return context.isStopRequested(); });

    for (const QString &line : conversion.problems.lines())
        addWarning(line);
    setResult(conversion.result(QStringLiteral("non-date")));
    return output;
}
