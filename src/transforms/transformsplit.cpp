#include "transforms/transformsplit.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/parametermigration.h"
#include "transforms/reshaping.h"

#include <QRegularExpression>

#include <algorithm>
#include <climits>

namespace {

enum DelimiterType { TextDelimiter = 0, RegexDelimiter = 1, Lengths = 2 };
enum Into { IntoColumns = 0, IntoRows = 1 };
enum Order { Current = 0, Alphabetic = 1, Reverse = 2 };

QString rowsNoun(qint64 count)
{
    return count == 1 ? QStringLiteral("row") : QStringLiteral("rows");
}

} // namespace

const TransformDescriptor &TransformSplit::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 56;
        d.typeName = QStringLiteral("Split");
        d.displayName = QStringLiteral("Split Col");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Split a column into multiple new columns.");
        d.keywords = QStringList {QStringLiteral("delimiter"), QStringLiteral("separate"),
                                  QStringLiteral("explode"),   QStringLiteral("tokenise"),
                                  QStringLiteral("tokenize"),  QStringLiteral("fixed"),
                                  QStringLiteral("width"),     QStringLiteral("lengths"),
                                  QStringLiteral("regex"),     QStringLiteral("text-to-columns"),
                                  QStringLiteral("unnest"),    QStringLiteral("divide")};
        d.create = createTransform<TransformSplit>;
        return d;
    }();
    return descriptor;
}

void TransformSplit::migrateParameters(int version, QList<StoredParameter> *parameters) const
{
    // Before version 59 two choices of the delimiter type ended in a space.
    if (version >= 59)
        return;
    for (StoredParameter &parameter : *parameters) {
        if (parameter.key != QLatin1String("Delimiter_Type"))
            continue;
        ParameterMigration::renameChoice(&parameter, QStringLiteral("Text "),
                                         QStringLiteral("Text delimiter"));
        ParameterMigration::renameChoice(&parameter, QStringLiteral("Regex "),
                                         QStringLiteral("Regex delimiter"));
    }
}

bool TransformSplit::parseLengths(const QString &text, QList<Length> *lengths, QString *error)
{
    static const QRegularExpression token(QStringLiteral("^(-?)(\\d+|\\*)$"));
    lengths->clear();
    bool restSeen = false;
    const QStringList elements = text.split(QLatin1Char(','));
    for (const QString &element : elements) {
        const QString trimmed = element.trimmed();
        if (trimmed.isEmpty())
            continue;
        const QRegularExpressionMatch match = token.match(trimmed);
        Length length;
        bool ok = match.hasMatch();
        if (ok) {
            length.dropped = !match.capturedRef(1).isEmpty();
            length.rest = match.capturedRef(2) == QLatin1String("*");
            if (!length.rest)
                length.width = match.capturedRef(2).toInt(&ok);
        }
        if (!ok) {
            *error = QStringLiteral("unexpected token '%1'").arg(trimmed);
            lengths->clear();
            return false;
        }
        if (length.rest) {
            if (restSeen) {
                *error = QStringLiteral("Only 1 '*' or '-*' allowed");
                lengths->clear();
                return false;
            }
            restSeen = true;
        }
        lengths->append(length);
    }
    return true;
}

QStringList TransformSplit::splitByLengths(const QString &text, const QList<Length> &lengths)
{
    // The '*' element takes what the fixed widths leave, wherever it stands, so that "2,*,3"
    // keeps the last three characters apart from the middle.
    qint64 fixed = 0;
    for (const Length &length : lengths)
        fixed += length.rest ? 0 : length.width;
    const qint64 textLength = text.size();
    const qint64 restWidth = std::max<qint64>(0, textLength - fixed);
    QStringList parts;
    parts.reserve(lengths.size());
    qint64 position = 0;
    for (const Length &length : lengths) {
        const qint64 width = length.rest ? restWidth : length.width;
        if (!length.dropped) {
            if (position >= textLength)
                parts.append(QString());
            else
                parts.append(text.mid(int(position), int(std::min(width, textLength - position))));
        }
        position = std::min(textLength, position + width);
    }
    return parts;
}

void TransformSplit::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *column = new Parameter(ParameterType::SingleColumn, QStringLiteral("Columns"),
                                 QStringLiteral("Column"), input);
    column->setToolTip(QStringLiteral("Select the column to split."));
    column->selectOnlyColumn();
    addParameter(column);

    const QStringList types {QStringLiteral("Text delimiter"), QStringLiteral("Regex delimiter"),
                             QStringLiteral("Lengths")};
    auto *type = new Parameter(ParameterType::Selection, QStringLiteral("Delimiter_Type"),
                               QStringLiteral("Split by"), types.first(), types);
    type->setToolTip(QStringLiteral(
        "Split at a text, at matches of a regular expression, or into parts of given lengths."));
    applyRememberedValue(useRemembered, type);
    addParameter(type);

    auto *delimiter = new Parameter(ParameterType::Text, QStringLiteral("Delimiter"),
                                    QStringLiteral("Delimiter"), ",");
    delimiter->setToolTip(
        QStringLiteral("The text or regular expression at which the values are split."));
    applyRememberedValue(useRemembered, delimiter);
    addParameter(delimiter);

    auto *lengths = new Parameter(ParameterType::Text, QStringLiteral("Lengths"),
                                  QStringLiteral("Lengths"), "2,1,*");
    lengths->setToolTip(QStringLiteral(
        "Comma separated lengths of the parts, e.g. '2,1,*'. '*' is the rest of the value. A "
        "'-' before a length or '*' drops those characters, e.g. '3,-1,*'."));
    applyRememberedValue(useRemembered, lengths);
    addParameter(lengths);

    const QStringList intoChoices {QStringLiteral("Columns"), QStringLiteral("Rows")};
    auto *into = new Parameter(ParameterType::Selection, QStringLiteral("Into"),
                               QStringLiteral("Into"), intoChoices.first(), intoChoices);
    into->setToolTip(QStringLiteral("Put the parts in new columns, or in new rows that repeat "
                                    "the other values of the row."));
    applyRememberedValue(useRemembered, into);
    addParameter(into);

    const QStringList orders {QStringLiteral("Current"), QStringLiteral("Alphabetic"),
                              QStringLiteral("Reverse")};
    auto *order = new Parameter(ParameterType::Selection, QStringLiteral("Order"),
                                QStringLiteral("Order"), orders.first(), orders);
    order->setToolTip(QStringLiteral("The order of the parts of each value."));
    applyRememberedValue(useRemembered, order);
    addParameter(order);

    auto *keepEmpty = new Parameter(ParameterType::Bool, QStringLiteral("Keep_Empty"),
                                    QStringLiteral("Keep empty values"), false);
    keepEmpty->setToolTip(QStringLiteral(
        "Keep the empty parts between two delimiters in a row, e.g. 'a,,b' gives 3 parts."));
    applyRememberedValue(useRemembered, keepEmpty);
    addParameter(keepEmpty);

    auto *minimum = new Parameter(ParameterType::Int, QStringLiteral("Min_New_Cols"),
                                  QStringLiteral("Min. values"), 0);
    minimum->setToolTip(QStringLiteral(
        "The minimum number of parts of a value. Fewer are padded with empty parts."));
    applyRememberedValue(useRemembered, minimum);
    addParameter(minimum);

    auto *maximum = new Parameter(ParameterType::Int, QStringLiteral("Max_New_Cols"),
                                  QStringLiteral("Max. values"), 100);
    maximum->setMinimumInt(1);
    maximum->setToolTip(QStringLiteral("The maximum number of parts of a value. Further parts "
                                       "are dropped. Ignored if less than the minimum."));
    applyRememberedValue(useRemembered, maximum);
    addParameter(maximum);
}

QList<ParameterState> TransformSplit::parameterStates() const
{
    const Parameter *type = parameter(QStringLiteral("Delimiter_Type"));
    const bool byLengths = type && type->toSelectionIndex() == Lengths;
    return {{QStringLiteral("Delimiter"), !byLengths},
            {QStringLiteral("Lengths"), byLengths},
            {QStringLiteral("Keep_Empty"), !byLengths},
            {QStringLiteral("Min_New_Cols"), !byLengths},
            {QStringLiteral("Max_New_Cols"), !byLengths}};
}

// Everything that one run needs to cut a cell, read once before the row loop.
struct TransformSplit::Splitter
{
    int type = TextDelimiter;
    QString delimiter;
    QRegularExpression pattern;
    QList<Length> lengths;
    Qt::SplitBehavior behavior = Qt::SkipEmptyParts;
    int minimum = 0;
    int maximum = INT_MAX;
    int order = Current;
    qint64 padded = 0;
    qint64 truncated = 0;

    QStringList split(const QString &cell)
    {
        QStringList parts;
        if (type == Lengths) {
            parts = splitByLengths(cell, lengths);
        } else {
            parts = type == TextDelimiter ? cell.split(delimiter, behavior, Qt::CaseSensitive)
                                          : cell.split(pattern, behavior);
            if (parts.size() < minimum) {
                ++padded;
                parts.reserve(minimum);
                while (parts.size() < minimum)
                    parts.append(QString());
            } else if (parts.size() > maximum) {
                ++truncated;
                parts.erase(parts.begin() + maximum, parts.end());
            }
        }
        if (order == Alphabetic)
            std::sort(parts.begin(), parts.end());
        else if (order == Reverse)
            std::reverse(parts.begin(), parts.end());
        return parts;
    }
};

Dataset &TransformSplit::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                                 bool &)
{
    const Dataset &input = *inputs.first().dataset;
    output = input;
    setResult(QStringLiteral("No changes"));
    const int column = option(QStringLiteral("Columns")).toColumnIndex();
    if (column < 0 || column >= input.columnCount())
        return output;

    Splitter splitter;
    if (!readSplitter(&splitter))
        return output;
    if (option(QStringLiteral("Into")).toSelectionIndex() == IntoRows)
        splitIntoRows(output, input, column, splitter);
    else
        splitIntoColumns(output, input, column, splitter);
    addPartCountNotes(splitter);
    return output;
}

bool TransformSplit::readSplitter(Splitter *splitter)
{
    const Parameter &lengthsOption = option(QStringLiteral("Lengths"));
    const Parameter &minimumOption = option(QStringLiteral("Min_New_Cols"));
    const Parameter &maximumOption = option(QStringLiteral("Max_New_Cols"));
    splitter->type = option(QStringLiteral("Delimiter_Type")).toSelectionIndex();
    splitter->order = option(QStringLiteral("Order")).toSelectionIndex();
    if (splitter->type == Lengths) {
        QString error;
        if (!parseLengths(lengthsOption.toString(), &splitter->lengths, &error)) {
            addWarning(
                QStringLiteral("Badly formed '%1' string: %2").arg(lengthsOption.label(), error));
            return false;
        }
        return std::any_of(splitter->lengths.cbegin(), splitter->lengths.cend(),
                           [](const Length &length) { return !length.dropped; });
    }
    splitter->delimiter = option(QStringLiteral("Delimiter")).toString();
    if (splitter->delimiter.isEmpty())
        return false;
    if (splitter->type == RegexDelimiter) {
        splitter->pattern.setPattern(splitter->delimiter);
        if (!splitter->pattern.isValid()) {
            addWarning(QStringLiteral("Invalid regular expression '%1': %2")
                           .arg(splitter->delimiter, splitter->pattern.errorString()));
            return false;
        }
    }
    splitter->behavior
        = option(QStringLiteral("Keep_Empty")).toBool() ? Qt::KeepEmptyParts : Qt::SkipEmptyParts;
    splitter->minimum = std::max(0, minimumOption.toInt());
    splitter->maximum = maximumOption.toInt();
    if (splitter->maximum < splitter->minimum) {
        addWarning(QStringLiteral("'%1' is less than '%2'.")
                       .arg(maximumOption.label(), minimumOption.label()));
        splitter->maximum = INT_MAX;
    }
    return true;
}

void TransformSplit::splitIntoRows(Dataset &output, const Dataset &input, int column,
                                   Splitter &splitter)
{
    const int rowCount = input.rowCount();
    const int columnCount = input.columnCount();
    beginOutput(output, columnCount, input.hasHeader(), input.header());
    keepColumnIds(output, input, columnCount);
    output.reserveRows(rowCount);
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        const QStringList &row = input.row(r);
        const QStringList parts = splitter.split(row.at(column));
        // A cell that stays whole leaves its row as it was.
        if (parts.isEmpty() || (parts.size() == 1 && parts.first() == row.at(column))) {
            output.appendRow(row, false);
            continue;
        }
        QStringList newRow = row;
        for (const QString &part : parts) {
            newRow[column] = part;
            output.appendRow(newRow, false);
        }
    }
    const qint64 added = qint64(output.rowCount()) - rowCount;
    if (added > 0)
        setResult(QStringLiteral("%1 added")
                      .arg(countWithNoun(added, QStringLiteral("row"), QStringLiteral("rows"))));
}

void TransformSplit::splitIntoColumns(Dataset &output, const Dataset &input, int column,
                                      Splitter &splitter)
{
    const int rowCount = input.rowCount();
    const int columnCount = input.columnCount();
    QVector<QStringList> allParts;
    allParts.reserve(rowCount);
    int added = 0;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        allParts.append(splitter.split(input.cell(r, column)));
        added = std::max(added, int(allParts.constLast().size()));
    }
    if (added == 0)
        return;
    QStringList names = input.header();
    const QString stem = input.headerText(column);
    for (int i = 1; i <= added; ++i)
        names.append(QStringLiteral("%1%2").arg(stem).arg(i));
    beginOutput(output, columnCount + added, input.hasHeader(), names);
    keepColumnIds(output, input, columnCount);
    output.reserveRows(rowCount);
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount, 1.0);
        QStringList row = input.row(r);
        row.reserve(columnCount + added);
        row.append(allParts.at(r));
        output.appendRow(row, true);
    }
    setResult(QStringLiteral("%1 added")
                  .arg(countWithNoun(added, QStringLiteral("col"), QStringLiteral("cols"))));
}

void TransformSplit::addPartCountNotes(const Splitter &splitter)
{
    if (splitter.padded > 0)
        addInformation(QStringLiteral("%1 %2 split into less than '%3'=%4 value(s), so padded to "
                                      "%4 value(s).")
                           .arg(formatCount(splitter.padded, true), rowsNoun(splitter.padded),
                                option(QStringLiteral("Min_New_Cols")).label())
                           .arg(splitter.minimum));
    if (splitter.truncated > 0)
        addWarning(QStringLiteral("%1 %2 split into more than '%3'=%4 value(s), so truncated to "
                                  "%4 value(s).")
                       .arg(formatCount(splitter.truncated, true), rowsNoun(splitter.truncated),
                            option(QStringLiteral("Max_New_Cols")).label())
                       .arg(splitter.maximum));
}
