#include "transforms/transformwhitespace.h"

#include "transforms/cellrules.h"
#include "transforms/framework/parameter.h"

namespace {

struct StepOption
{
    TransformWhitespace::Step step;
    const char *key;
    const char *label;
    const char *toolTip;
    bool byDefault;
};

// In the order of the Right pane, which is also the order in which the steps apply.
const StepOption kStepOptions[] = {
    {TransformWhitespace::Trim, "Trim", "trim",
     "Remove whitespace from the start and end of each value.", true},
    {TransformWhitespace::LineFeed, "Line_Feed", "line feeds to spaces",
     "Replace each Line Feed with a space.", true},
    {TransformWhitespace::Tab, "Tab", "tabs to spaces", "Replace each Tab with a space.", true},
    {TransformWhitespace::NonStandardSpaces, "Non_Standard_Spaces", "non-standard spaces to spaces",
     "Replace each other whitespace character, such as a non-breaking space, with a space.", true},
    {TransformWhitespace::CarriageReturn, "Carriage_Return", "remove carriage returns",
     "Remove each Carriage Return.", true},
    {TransformWhitespace::ConsecutiveSpaces, "Consecutive_Spaces",
     "consecutive spaces to single space", "Replace each run of 2 or more spaces with 1 space.",
     true},
    {TransformWhitespace::NonPrintable, "Non_Printable", "remove non-printable characters",
     "Remove each character that isn't printable, such as control characters.", false},
};

// The whitespace that no other step handles.
bool isNonStandardSpace(QChar c)
{
    return c.isSpace() && c != QLatin1Char(' ') && c != QLatin1Char('\n') && c != QLatin1Char('\t')
        && c != QLatin1Char('\r');
}

void replaceChar(QString &text, QChar from, QChar to)
{
    if (text.contains(from))
        text.replace(from, to);
}

void replaceNonStandardSpaces(QString &text)
{
    const int length = text.size();
    for (int i = 0; i < length; ++i) {
        if (isNonStandardSpace(text.at(i)))
            text[i] = QLatin1Char(' ');
    }
}

void collapseSpaces(QString &text)
{
    if (!text.contains(QLatin1String("  ")))
        return;
    QString collapsed;
    collapsed.reserve(text.size());
    QChar previous;
    for (const QChar c : qAsConst(text)) {
        if (c == QLatin1Char(' ') && previous == QLatin1Char(' '))
            continue;
        collapsed.append(c);
        previous = c;
    }
    text = collapsed;
}

// Judges a surrogate pair as the one character it encodes, so that printable characters
// outside the basic plane stay.
void removeNonPrintable(QString &text)
{
    const int length = text.size();
    int i = 0;
    while (i < length && text.at(i).isPrint() && !text.at(i).isSurrogate())
        ++i;
    if (i == length)
        return;
    QString kept = text.left(i);
    while (i < length) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < length && text.at(i + 1).isLowSurrogate()) {
            const QChar low = text.at(i + 1);
            if (QChar::isPrint(QChar::surrogateToUcs4(c, low))) {
                kept.append(c);
                kept.append(low);
            }
            i += 2;
            continue;
        }
        if (c.isPrint())
            kept.append(c);
        ++i;
    }
    text = kept;
}

} // namespace

const TransformDescriptor &TransformWhitespace::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 74;
        d.typeName = QStringLiteral("Whitespace");
        d.displayName = QStringLiteral("Whitespace");
        d.category = CategoryFormat;
        d.flags
            = TransformDescriptor::ChangesValuesOnly | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral(
            "Tidy whitespace (Spaces, Tabs, Carriage Returns etc) in the selected column(s).");
        d.keywords = QStringList {
            QStringLiteral("trim"),     QStringLiteral("spaces"),    QStringLiteral("tabs"),
            QStringLiteral("blanks"),   QStringLiteral("tidy"),      QStringLiteral("clean"),
            QStringLiteral("strip"),    QStringLiteral("linefeeds"), QStringLiteral("newlines"),
            QStringLiteral("carriage"), QStringLiteral("returns"),   QStringLiteral("printable"),
            QStringLiteral("nbsp")};
        d.create = createTransform<TransformWhitespace>;
        return d;
    }();
    return descriptor;
}

QString TransformWhitespace::tidy(const QString &text, int steps)
{
    QString result = text;
    if (steps & Trim)
        result = result.trimmed();
    if (steps & LineFeed)
        replaceChar(result, QLatin1Char('\n'), QLatin1Char(' '));
    if (steps & Tab)
        replaceChar(result, QLatin1Char('\t'), QLatin1Char(' '));
    if (steps & NonStandardSpaces)
        replaceNonStandardSpaces(result);
    if ((steps & CarriageReturn) && result.contains(QLatin1Char('\r')))
        result.remove(QLatin1Char('\r'));
    if (steps & ConsecutiveSpaces)
        collapseSpaces(result);
    if (steps & NonPrintable)
        removeNonPrintable(result);
    return result;
}

void TransformWhitespace::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(CellRules::createColumnsParameter(
        inputs.value(0),
        QStringLiteral("Select the column(s) whose whitespace you want to tidy.")));
    for (const StepOption &option : kStepOptions) {
        auto *step = new Parameter(ParameterType::Bool, QString::fromLatin1(option.key),
                                   QString::fromLatin1(option.label), option.byDefault);
        step->setToolTip(QString::fromLatin1(option.toolTip));
        applyRememberedValue(useRemembered, step);
        addParameter(step);
    }
}

Dataset &TransformWhitespace::process(Dataset &output, const TransformInputs &inputs,
                                      const RunContext &, bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));
    int steps = 0;
    for (const StepOption &option : kStepOptions) {
        const Parameter *step = parameter(QString::fromLatin1(option.key));
        if (!step) {
            setResult(failureText());
            return output;
        }
        if (step->toBool())
            steps |= option.step;
    }

    output = inputDataset(inputs, 0);
    const QList<int> columns = CellRules::selectedColumns(*columnsOption);
    const CellRules::Counts counts = CellRules::rewriteCells(
        output, columns, [steps](int, const QString &cell) { return tidy(cell, steps); },
        [this](int r, int rowCount) { reportRow(r, rowCount); });
    setResult(cellsChangedText(counts.changed, counts.unchanged));
    return output;
}
