#include "transforms/transformextract.h"

#include "transforms/cellrules.h"
#include "transforms/framework/parameter.h"

#include <QRegularExpression>

namespace {

enum Using { UsingText = 0, UsingRegex = 1 };

} // namespace

const TransformDescriptor &TransformExtract::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 16;
        d.typeName = QStringLiteral("Extract");
        d.displayName = QStringLiteral("Extract");
        d.category = CategoryFormat;
        d.flags
            = TransformDescriptor::ChangesValuesOnly | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Extract text in the selected column(s).");
        d.keywords = QStringList {
            QStringLiteral("substring"),   QStringLiteral("mid"),      QStringLiteral("left"),
            QStringLiteral("right"),       QStringLiteral("regex"),    QStringLiteral("regular"),
            QStringLiteral("expressions"), QStringLiteral("capture"),  QStringLiteral("characters"),
            QStringLiteral("cut"),         QStringLiteral("truncate"), QStringLiteral("parse")};
        d.create = createTransform<TransformExtract>;
        return d;
    }();
    return descriptor;
}

QString TransformExtract::extractText(const QString &text, int length, bool fromStart, int offset)
{
    if (fromStart)
        return text.mid(offset, length);
    const int end = text.size() - offset;
    if (end <= 0)
        return QString();
    const int start = qMax(0, end - length);
    return text.mid(start, end - start);
}

QString TransformExtract::extractMatch(const QString &text, const QRegularExpression &pattern)
{
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return QString();
    return match.captured(pattern.captureCount() > 0 ? 1 : 0);
}

void TransformExtract::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(CellRules::createColumnsParameter(
        inputs.value(0), QStringLiteral("Select the column(s) you want to extract text from.")));

    const QStringList ways {QStringLiteral("Text"), QStringLiteral("Regex")};
    auto *usingOption = new Parameter(ParameterType::Selection, QStringLiteral("Using"),
                                      QStringLiteral("Using"), ways.first(), ways);
    usingOption->setToolTip(QStringLiteral("%1=extract a number of characters from a position.\n"
                                           "%2=extract what a regular expression matches.")
                                .arg(ways.at(0), ways.at(1)));
    applyRememberedValue(useRemembered, usingOption);
    addParameter(usingOption);

    auto *length
        = new Parameter(ParameterType::Int, QStringLiteral("Length"), QStringLiteral("Length"), 1);
    length->setMinimumInt(0);
    length->setToolTip(QStringLiteral("The number of characters to extract."));
    applyRememberedValue(useRemembered, length);
    addParameter(length);

    const QStringList ends {QStringLiteral("Start"), QStringLiteral("End")};
    auto *from = new Parameter(ParameterType::Selection, QStringLiteral("From"),
                               QStringLiteral("From"), ends.first(), ends);
    from->setToolTip(QStringLiteral("Which end of the value the offset is counted from."));
    applyRememberedValue(useRemembered, from);
    addParameter(from);

    auto *offset
        = new Parameter(ParameterType::Int, QStringLiteral("Offset"), QStringLiteral("Offset"), 0);
    offset->setMinimumInt(0);
    offset->setToolTip(
        QStringLiteral("The number of characters to skip before extracting, counted from "
                       "the chosen end."));
    applyRememberedValue(useRemembered, offset);
    addParameter(offset);

    auto *matching = new Parameter(ParameterType::Text, QStringLiteral("Matching"),
                                   QStringLiteral("Matching"), "^.*$");
    matching->setToolTip(QStringLiteral(
        "The regular expression to match.\nThe text of the first capture group is extracted "
        "if there is one, else the whole match.\nValues that don't match become empty."));
    applyRememberedValue(useRemembered, matching);
    addParameter(matching);

    auto *caseSensitive = new Parameter(ParameterType::Bool, QStringLiteral("Case_Sensitive"),
                                        QStringLiteral("case sensitive"), true);
    caseSensitive->setToolTip(QStringLiteral("Check for case sensitive matching."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);
}

QList<ParameterState> TransformExtract::parameterStates() const
{
    const Parameter *usingOption = parameter(QStringLiteral("Using"));
    const bool byText = !usingOption || usingOption->toSelectionIndex() == UsingText;
    return {{QStringLiteral("Length"), byText},
            {QStringLiteral("From"), byText},
            {QStringLiteral("Offset"), byText},
            {QStringLiteral("Matching"), !byText},
            {QStringLiteral("Case_Sensitive"), !byText}};
}

Dataset &TransformExtract::process(Dataset &output, const TransformInputs &inputs,
                                   const RunContext &, bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));
    const Parameter *usingOption = &option(QStringLiteral("Using"));
    const Parameter *lengthOption = &option(QStringLiteral("Length"));
    const Parameter *fromOption = &option(QStringLiteral("From"));
    const Parameter *offsetOption = &option(QStringLiteral("Offset"));
    const Parameter *matchingOption = &option(QStringLiteral("Matching"));
    const Parameter *caseOption = &option(QStringLiteral("Case_Sensitive"));

    output = inputDataset(inputs, 0);
    const QList<int> columns = CellRules::selectedColumns(*columnsOption);
    const auto progress = [this](int r, int rowCount) {
        reportRow(r, rowCount);
    };
    CellRules::Counts counts;
    if (usingOption->toSelectionIndex() == UsingRegex) {
        QRegularExpression pattern(matchingOption->toString());
        if (!caseOption->toBool())
            pattern.setPatternOptions(QRegularExpression::CaseInsensitiveOption);
        if (!pattern.isValid()) {
            addWarning(QStringLiteral("Invalid regular expression '%1': %2")
                           .arg(pattern.pattern(), pattern.errorString()));
            setResult(cellsChangedText(0, 0));
            return output;
        }
        pattern.optimize();
        counts = CellRules::rewriteCells(
            output, columns,
            [&pattern](int, const QString &cell) { return extractMatch(cell, pattern); }, progress);
    } else {
        const int length = lengthOption->toInt();
        const bool fromStart = fromOption->toSelectionIndex() == 0;
        const int offset = offsetOption->toInt();
        counts = CellRules::rewriteCells(
            output, columns,
            [=](int, const QString &cell) { return extractText(cell, length, fromStart, offset); },
            progress);
    }
    setResult(cellsChangedText(counts.changed, counts.unchanged));
    return output;
}
