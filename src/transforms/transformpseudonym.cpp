#include "transforms/transformpseudonym.h"

#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"
#include "transforms/seededrandom.h"

#include <QHash>
#include <QVector>

#include <numeric>

const TransformDescriptor &TransformPseudonym::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 40;
        d.typeName = QStringLiteral("Pseudonym");
        d.displayName = QStringLiteral("Pseudonym");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::Advanced;
        d.description
            = QStringLiteral("Add a new column with pseudonymised values for the selected column.");
        d.keywords = QStringLiteral("pseudonymize pseudonymise anonymize anonymise masking "
                                    "privacy aliases identifiers")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformPseudonym>;
        return d;
    }();
    return descriptor;
}

void TransformPseudonym::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addNewNameParameters(useRemembered);

    auto *column = new Parameter(ParameterType::SingleColumn, QStringLiteral("Column"),
                                 QStringLiteral("Column"), inputs.value(0));
    column->setToolTip(QStringLiteral("The column in the input dataset to pseudonymize."));
    column->selectOnlyColumn();
    addParameter(column);

    auto *prefix = new Parameter(ParameterType::Text, QStringLiteral("Prefix"),
                                 QStringLiteral("Prefix"), "ID-");
    prefix->setToolTip(QStringLiteral("Prefix for the pseudonym. Can be empty."));
    prefix->setTextRequired(false);
    applyRememberedValue(useRemembered, prefix);
    addParameter(prefix);

    auto *startAt = new Parameter(ParameterType::Int, QStringLiteral("Start_At"),
                                  QStringLiteral("Start at"), 1);
    startAt->setToolTip(QStringLiteral("Start pseudonym numbering at this value."));
    startAt->setMinimumInt(-999999999);
    applyRememberedValue(useRemembered, startAt);
    addParameter(startAt);

    auto *seed = new Parameter(ParameterType::Int, QStringLiteral("Seed"),
                               QStringLiteral("Random seed"), 1);
    seed->setMaximumInt(MaximumSeed);
    seed->setToolTip(QStringLiteral("The seed for the pseudo-random number generator.\nSet "
                                    "between %1 and %2.\nUsed for randomizing the order "
                                    "pseudonyms are assigned.")
                         .arg(formatCount(seed->minimumInt()), formatCount(MaximumSeed)));
    applyRememberedValue(useRemembered, seed);
    addParameter(seed);
}

QList<ParameterState> TransformPseudonym::parameterStates() const
{
    return {newNameState()};
}

Dataset &TransformPseudonym::process(Dataset &output, const TransformInputs &inputs,
                                     const RunContext &context, bool &)
{
    const Parameter *columnOption = &option(QStringLiteral("Column"));
    const QString prefix = option(QStringLiteral("Prefix")).toString();
    const qint64 startAt = option(QStringLiteral("Start_At")).toInt();
    const quint32 seed = quint32(option(QStringLiteral("Seed")).toInt());

    output = inputDataset(inputs, 0);
    const int column = columnOption->toColumnIndex();
    const bool hasColumn = column >= 0 && column < output.columnCount();
    const int newColumn = ColumnNames::appendNamedColumn(
        output,
        newColumnName(hasColumn ? QStringLiteral("Pseudonym %1").arg(output.headerText(column))
                                : QStringLiteral("Pseudonym")));
    if (!hasColumn) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    // First pass: each distinct value in order of first appearance. An empty cell has no
    // value to hide and stays empty.
    const int rowCount = output.rowCount();
    QHash<QString, int> distinct;
    QVector<int> valueOfRow(rowCount, -1);
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount * 2);
        const QString &cell = output.cell(r, column);
        if (cell.isEmpty())
            continue;
        auto found = distinct.constFind(cell);
        if (found == distinct.constEnd())
            found = distinct.insert(cell, distinct.size());
        valueOfRow[r] = found.value();
    }

    // The numbers from Start_At, dealt to the values in shuffled order; each pseudonym is
    // built once and shared by every cell that bears it.
    QVector<qint64> numbers(distinct.size());
    std::iota(numbers.begin(), numbers.end(), startAt);
    SeededRandom random(seed);
    random.shuffle(numbers);
    QVector<QString> pseudonyms;
    pseudonyms.reserve(numbers.size());
    for (qint64 number : qAsConst(numbers))
        pseudonyms.append(prefix + QString::number(number));

    qint64 written = 0;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount * 2, 0.5);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        if (valueOfRow.at(r) < 0)
            continue;
        output.setCell(r, newColumn, pseudonyms.at(valueOfRow.at(r)));
        ++written;
    }
    const QString done
        = QStringLiteral("%1 pseudonymized")
              .arg(countWithNoun(written, QStringLiteral("value"), QStringLiteral("values")));
    setResult(written == pseudonyms.size()
                  ? done
                  : QStringLiteral("%1 with %2")
                        .arg(done,
                             countWithNoun(pseudonyms.size(), QStringLiteral("pseudonym"),
                                           QStringLiteral("pseudonyms"))));
    return output;
}
