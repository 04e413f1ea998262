#include "transforms/transformsplitname.h"

#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"
#include "transforms/nametables.h"

namespace {

enum Part { HonorificPart, FirstPart, MiddlePart, LastPart, SuffixPart, PartCount };

// The option that switches each part on, and the name of its new column.
const char *const PartKeys[PartCount] = {"Title", "First", "Middle", "Last", "Suffix"};
const char *const PartColumns[PartCount] = {"Honorific", "First", "Middle", "Last", "Suffix"};

const QStringList &partWords(const NameTables::NameParts &parts, int part)
{
    switch (part) {
    case HonorificPart:
        return parts.honorifics;
    case FirstPart:
        return parts.first;
    case MiddlePart:
        return parts.middle;
    case LastPart:
        return parts.last;
    default:
        return parts.suffixes;
    }
}

} // namespace

const TransformDescriptor &TransformSplitName::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 57;
        d.typeName = QStringLiteral("Split_Name");
        d.displayName = QStringLiteral("Split Name");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Split a column containing people's names into separate "
                                       "columns for first name, last name etc.");
        d.keywords = QStringLiteral("people persons names forename surname given family "
                                    "honorifics titles suffixes parse")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformSplitName>;
        return d;
    }();
    return descriptor;
}

void TransformSplitName::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    auto *column = new Parameter(ParameterType::SingleColumn, QStringLiteral("Column"),
                                 QStringLiteral("Column"), inputs.value(0));
    column->setToolTip(QStringLiteral("Select the column containing names to split."));
    column->selectOnlyColumn();
    addParameter(column);

    const auto addCheck
        = [this, useRemembered](const char *key, const char *label, const QString &tip) {
              auto *check = new Parameter(ParameterType::Bool, QString::fromLatin1(key),
                                          QString::fromLatin1(label), true);
              check->setToolTip(tip);
              applyRememberedValue(useRemembered, check);
              addParameter(check);
          };
    const auto addWords
        = [this, useRemembered](const char *key, const char *label, const QString &tip) {
              auto *words = new Parameter(ParameterType::Text, QString::fromLatin1(key),
                                          QString::fromLatin1(label), QString());
              words->setTextRequired(false);
              words->setToolTip(tip);
              applyRememberedValue(useRemembered, words);
              addParameter(words);
          };
    addCheck("Title", "honorific(s)",
             QStringLiteral("Check if names may contain honorifics/titles (e.g. 'Mr' or 'Ms.')."));
    addWords("Custom_Title", "Custom honorifics",
             QStringLiteral("Add any custom honorifics, separated by commas. Case is not "
                            "important."));
    addCheck("First", "first name(s)",
             QStringLiteral("Check if names may contain first names (e.g. 'John')."));
    addCheck("Middle", "middle name(s)",
             QStringLiteral("Check if names may contain middle names."));
    addCheck("Last", "last name(s)",
             QStringLiteral("Check if names may contain last names/surnames (e.g. 'Smith'."));

    auto *numLast = new Parameter(ParameterType::Int, QStringLiteral("Num_Last"),
                                  QStringLiteral("Num last names"), 1);
    numLast->setMinimumInt(1);
    numLast->setMaximumInt(10);
    numLast->setToolTip(
        QStringLiteral("The number of last names expected. E.g 2 is common for Spanish names."));
    applyRememberedValue(useRemembered, numLast);
    addParameter(numLast);

    addCheck("Suffix", "suffix(es)",
             QStringLiteral("Check if names may contain suffixes (e.g. 'Jr' or 'PhD')."));
    addWords("Custom_Suffix", "Custom suffixes",
             QStringLiteral("Add any custom suffixes, separated by commas. Case is not "
                            "important."));
}

QList<ParameterState> TransformSplitName::parameterStates() const
{
    const auto isOn = [this](const char *key) {
        const Parameter *check = parameter(QString::fromLatin1(key));
        return check && check->toBool();
    };
    return {{QStringLiteral("Custom_Title"), isOn("Title")},
            {QStringLiteral("Num_Last"), isOn("Last")},
            {QStringLiteral("Custom_Suffix"), isOn("Suffix")}};
}

Dataset &TransformSplitName::process(Dataset &output, const TransformInputs &inputs,
                                     const RunContext &context, bool &)
{
    const int column = option(QStringLiteral("Column")).toColumnIndex();
    NameTables::NameOptions options;
    options.honorific = option(QStringLiteral("Title")).toBool();
    options.first = option(QStringLiteral("First")).toBool();
    options.middle = option(QStringLiteral("Middle")).toBool();
    options.last = option(QStringLiteral("Last")).toBool();
    options.suffix = option(QStringLiteral("Suffix")).toBool();
    options.lastCount = option(QStringLiteral("Num_Last")).toInt();
    options.customHonorifics
        = NameTables::customWords(option(QStringLiteral("Custom_Title")).toString());
    options.customSuffixes
        = NameTables::customWords(option(QStringLiteral("Custom_Suffix")).toString());
    QList<int> parts;
    for (int part = 0; part < PartCount; ++part) {
        if (option(QString::fromLatin1(PartKeys[part])).toBool())
            parts.append(part);
    }

    output = inputDataset(inputs, 0);
    if (column < 0 || column >= output.columnCount() || parts.isEmpty()) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    // The rows are widened one by one as they are split, rather than once for each new column.
    const int firstNew = output.columnCount();
    QList<QStringList> rows = output.takeRows();
    output.setColumnCount(firstNew + parts.size());
    for (int i = 0; i < parts.size(); ++i)
        ColumnNames::nameNewColumn(output, firstNew + i,
                                   QString::fromLatin1(PartColumns[parts.at(i)]));

    const NameTables::NameSplitter splitter(options);
    const QString space = QStringLiteral(" ");
    qint64 empty = 0;
    const int rowCount = rows.size();
    int r = 0;
    for (; r < rowCount; ++r) {
        reportRow(r, rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        QStringList &row = rows[r];
        const QString &name = row.at(column);
        const NameTables::NameParts split = splitter.split(name);
        if (name.trimmed().isEmpty())
            ++empty;
        row.reserve(firstNew + parts.size());
        for (int i = 0; i < parts.size(); ++i)
            row.append(output.pooledCell(firstNew + i, partWords(split, parts.at(i)).join(space)));
    }
    // Rows left by a stop get empty cells, so that the table stays rectangular.
    for (; r < rowCount; ++r) {
        for (int i = 0; i < parts.size(); ++i)
            rows[r].append(QString());
    }
    output.setSharedRows(std::move(rows));

    if (empty > 0)
        addInformation(QStringLiteral("%1 empty %2 value(s)")
                           .arg(formatCount(empty),
                                QLatin1Char('\'') + output.headerText(column) + QLatin1Char('\'')));
    setResult(QStringLiteral("%1 added").arg(ColumnNames::countedCols(parts.size())));
    return output;
}
