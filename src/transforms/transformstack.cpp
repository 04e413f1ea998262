#include "transforms/transformstack.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/keymatching.h"

#include <QHash>
#include <QVector>

namespace {

enum AlignIndex { ByHeaderName = 0, ByColumnNumber = 1 };

// Lines of one report block before the rest is cut short.
constexpr int MaxReportLines = 20;

QString inputTitle(int number, const Dataset &dataset)
{
    return QStringLiteral("Input %1 (%2, %3)")
        .arg(QString::number(number),
             KeyMatching::countText(dataset.rowCount(), QStringLiteral("row"),
                                    QStringLiteral("rows")),
             KeyMatching::countText(dataset.columnCount(), QStringLiteral("column"),
                                    QStringLiteral("columns")));
}

// Collects report lines and stops listing them after MaxReportLines.
class LineList
{
public:
    void add(const QString &line)
    {
        if (m_lines.size() < MaxReportLines)
            m_lines.append(line);
        else
            m_cut = true;
    }
    bool isEmpty() const { return m_lines.isEmpty(); }
    QString text(const QString &separator) const
    {
        QString joined = m_lines.join(separator);
        if (m_cut)
            joined += QStringLiteral("\n...etc");
        return joined;
    }

private:
    QStringList m_lines;
    bool m_cut = false;
};

// With columns aligned by name, a name repeated within one input pairs up by order only.
void warnRepeatedNames(const Dataset &dataset, int number, LineList &warnings)
{
    const QStringList headers = dataset.headers();
    QHash<QString, int> counts;
    QStringList order;
    for (const QString &name : headers) {
        if (counts[name]++ == 0)
            order.append(name);
    }
    for (const QString &name : qAsConst(order)) {
        if (counts.value(name) > 1)
            warnings.add(
                QStringLiteral("%1 column(s) named '%2' in input datatset %3\n")
                    .arg(QString::number(counts.value(name)), name, QString::number(number)));
    }
}

void warnMissingColumns(const TransformInputs &inputs, const QVector<QVector<int>> &places,
                        int finalWidth, LineList &warnings)
{
    for (int i = 0; i < inputs.size(); ++i) {
        int used = 0;
        for (int target : qAsConst(places.at(i))) {
            if (target >= 0)
                ++used;
        }
        if (used < finalWidth)
            warnings.add(QStringLiteral("%1 has %2 column(s) less than the final dataset\n")
                             .arg(inputTitle(i + 1, *inputs.at(i).dataset),
                                  QString::number(finalWidth - used)));
    }
}

} // namespace

const TransformDescriptor &TransformStack::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 60;
        d.typeName = QStringLiteral("Stack");
        d.displayName = QStringLiteral("Stack");
        d.category = CategoryMerge;
        d.maximumInputs = 0x7fffffff;
        d.description = QStringLiteral("Merge input datasets one on top of another. Orders by the "
                                       "vertical positions of the input datasets.");
        d.keywords = QStringList {QStringLiteral("append"),      QStringLiteral("union"),
                                  QStringLiteral("concatenate"), QStringLiteral("combine"),
                                  QStringLiteral("vertically"),  QStringLiteral("bind"),
                                  QStringLiteral("files"),       QStringLiteral("rows")};
        d.inputImageName = QStringLiteral("stack.png");
        d.create = createTransform<TransformStack>;
        return d;
    }();
    return descriptor;
}

void TransformStack::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    auto *align = new Parameter(
        ParameterType::Selection, QStringLiteral("Align_Cols"), QStringLiteral("Align columns by"),
        QStringLiteral("Header name"),
        QStringList {QStringLiteral("Header name"), QStringLiteral("Column number")});
    align->setToolTip(QStringLiteral("Put columns under columns of the same header name, or "
                                     "under columns in the same position."));
    applyRememberedValue(useRemembered, align);
    addParameter(align);

    auto *onlyFirst = new Parameter(ParameterType::Bool, QStringLiteral("Only_First_Cols"),
                                    QStringLiteral("Only columns of the top dataset"), false);
    onlyFirst->setToolTip(QStringLiteral(
        "Ignore columns of the other datasets that have no place among those of the top "
        "dataset, instead of adding them at the end."));
    applyRememberedValue(useRemembered, onlyFirst);
    addParameter(onlyFirst);

    auto *separators = new Parameter(ParameterType::Bool, QStringLiteral("Add_Separators"),
                                     QStringLiteral("Add separator rows"), false);
    separators->setToolTip(QStringLiteral("Add a row between the rows of consecutive datasets."));
    applyRememberedValue(useRemembered, separators);
    addParameter(separators);

    auto *value = new Parameter(ParameterType::Text, QStringLiteral("User_Defined_Row_Value"),
                                QStringLiteral("Separator value"), QString());
    value->setTextRequired(false);
    value->setToolTip(QStringLiteral("The text of every cell of a separator row."));
    applyRememberedValue(useRemembered, value);
    addParameter(value);
}

QList<ParameterState> TransformStack::parameterStates() const
{
    const Parameter *separators = parameter(QStringLiteral("Add_Separators"));
    return {{QStringLiteral("User_Defined_Row_Value"), separators && separators->toBool()}};
}

Dataset &TransformStack::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                                 bool &)
{
    const Dataset &first = *inputs.first().dataset;
    output = first;
    if (inputs.size() == 1)
        return output;

    const bool byName = option(QStringLiteral("Align_Cols")).toSelectionIndex() == ByHeaderName;
    const bool onlyFirst = option(QStringLiteral("Only_First_Cols")).toBool();
    const bool addSeparators = option(QStringLiteral("Add_Separators")).toBool();
    const QString separatorValue = option(QStringLiteral("User_Defined_Row_Value")).toString();
    const int count = inputs.size();

    // Where each column of each input goes in the output; -1 for ignored columns.
    QVector<QVector<int>> places(count);
    QStringList names = first.headers();
    bool anyHeader = first.hasHeader();
    LineList warnings;
    places[0].resize(first.columnCount());
    for (int c = 0; c < first.columnCount(); ++c)
        places[0][c] = c;
    if (byName)
        warnRepeatedNames(first, 1, warnings);
    for (int i = 1; i < count; ++i) {
        const Dataset &dataset = *inputs.at(i).dataset;
        if (byName)
            warnRepeatedNames(dataset, i + 1, warnings);
        anyHeader = anyHeader || dataset.hasHeader();
        places[i] = placeColumns(dataset, i + 1, byName, onlyFirst, names);
    }

    const int finalWidth = names.size();
    warnMissingColumns(inputs, places, finalWidth, warnings);
    if (!warnings.isEmpty())
        addWarning(warnings.text(QString()));

    output.setColumnCount(finalWidth);
    if (anyHeader)
        output.setHeader(names);
    appendRows(output, inputs, places, finalWidth, addSeparators, separatorValue);
    setResult(QStringLiteral("%1 stacked from %2 inputs")
                  .arg(KeyMatching::countText(output.rowCount(), QStringLiteral("row"),
                                              QStringLiteral("rows")),
                       QString::number(count)));
    return output;
}

QVector<int> TransformStack::placeColumns(const Dataset &dataset, int number, bool byName,
                                          bool onlyFirst, QStringList &names)
{
    const QStringList headers = dataset.headers();
    const int width = dataset.columnCount();
    const int widthBefore = names.size();
    QVector<int> place(width, -1);
    QVector<char> taken(widthBefore, 0);
    LineList lines;
    int ignoredAtEnd = 0;
    for (int c = 0; c < width; ++c) {
        const QString &name = headers.at(c);
        int target = -1;
        if (byName) {
            // The n-th column of a repeated name goes under the n-th column of that name.
            for (int o = 0; o < widthBefore && target < 0; ++o) {
                if (!taken.at(o) && names.at(o) == name)
                    target = o;
            }
        } else if (c < widthBefore) {
            target = c;
        }
        if (target >= 0) {
            taken[target] = 1;
            place[c] = target;
            lines.add(QStringLiteral("Aligned '%1' (column %2) under '%3' (column %4)")
                          .arg(name, QString::number(c + 1), names.at(target),
                               QString::number(target + 1)));
        } else if (onlyFirst) {
            if (byName)
                lines.add(QStringLiteral("Ignored '%1' (column %2) from dataset %3")
                              .arg(name, QString::number(c + 1), QString::number(number)));
            else
                ++ignoredAtEnd;
        } else {
            place[c] = names.size();
            names.append(name);
            lines.add(QStringLiteral("Added '%1' (column %2) from dataset %3")
                          .arg(name, QString::number(c + 1), QString::number(number)));
        }
    }
    if (ignoredAtEnd > 0)
        lines.add(QStringLiteral("Ignore last %1 columns in dataset %2")
                      .arg(QString::number(ignoredAtEnd), QString::number(number)));
    for (int o = 0; o < widthBefore; ++o) {
        if (taken.at(o))
            continue;
        lines.add((byName ? QStringLiteral("No match for '%1' (column %2)")
                          : QStringLiteral("Not enough columns for '%1' (column %2)"))
                      .arg(names.at(o), QString::number(o + 1)));
    }
    addInformation(inputTitle(number, dataset) + QStringLiteral(":\n")
                   + lines.text(QStringLiteral("\n")));
    return place;
}

void TransformStack::appendRows(Dataset &output, const TransformInputs &inputs,
                                const QVector<QVector<int>> &places, int finalWidth,
                                bool addSeparators, const QString &separatorValue)
{
    QStringList separator;
    if (addSeparators) {
        separator.reserve(finalWidth);
        for (int c = 0; c < finalWidth; ++c)
            separator.append(separatorValue);
    }
    for (int i = 1; i < inputs.size(); ++i) {
        const Dataset &dataset = *inputs.at(i).dataset;
        const QVector<int> &place = places.at(i);
        if (addSeparators)
            output.appendRow(separator);
        bool identity = dataset.columnCount() == finalWidth;
        for (int c = 0; identity && c < place.size(); ++c)
            identity = place.at(c) == c;
        const int rows = dataset.rowCount();
        for (int r = 0; r < rows; ++r) {
            reportRow(r, rows);
            const QStringList &source = dataset.row(r);
            if (identity) {
                output.appendSharedRow(source);
                continue;
            }
            QStringList row = KeyMatching::emptyRow(finalWidth);
            for (int c = 0; c < place.size(); ++c) {
                if (place.at(c) >= 0)
                    row[place.at(c)] = source.at(c);
            }
            output.appendSharedRow(row);
        }
    }
}
