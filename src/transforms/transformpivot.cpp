#include "transforms/transformpivot.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/pivotsummary.h"
#include "transforms/reshaping.h"

#include <QHash>
#include <QLocale>
#include <QVector>

#include <algorithm>
#include <functional>
#include <numeric>

namespace {

enum NonCalc { NonCalcZero = 0, NonCalcEmpty = 1 };
enum TotalType { TotalRowsAndColumns = 0, TotalRows = 1, TotalColumns = 2 };

QString emptyText()
{
    return QStringLiteral("(Empty)");
}

struct PivotOptions
{
    QList<int> pivotColumns; // P: their keys make the output's columns
    QList<int> pivotRows; // R: their keys make the output's rows
    int values = -1;
    int kind = PivotSummary::Sum;
    bool zeroWhenMissing = true;
    bool totals = true;
    int totalType = TotalRowsAndColumns;
    QString delimiter;
    bool drilldown = false;
};

// The distinct keys of one side of the table, numbered in order of first appearance.
class KeyIndex
{
public:
    int indexOf(const QStringList &key)
    {
        const auto it = m_index.constFind(key);
        if (it != m_index.cend())
            return it.value();
        m_index.insert(key, m_keys.size());
        m_keys.append(key);
        return m_keys.size() - 1;
    }
    const QVector<QStringList> &keys() const { return m_keys; }
    int size() const { return m_keys.size(); }
    // The numbers of the keys in ascending order, element by element, as plain strings: the
    // order users of the table know, "10" before "9".
    QVector<int> sortedOrder() const
    {
        QVector<int> order(m_keys.size());
        std::iota(order.begin(), order.end(), 0);
        std::sort(order.begin(), order.end(),
                  [this](int a, int b) { return m_keys.at(a) < m_keys.at(b); });
        return order;
    }

private:
    QHash<QStringList, int> m_index;
    QVector<QStringList> m_keys;
};

// A cell of the table with the values gathered for it and, for drilldown, their rows.
struct PivotCell
{
    PivotSummary summary;
    QList<int> rows;
};

// Everything one pass over the rows gathers: each value goes to its pair of keys, its row
// key, its column key and the whole.
struct PivotData
{
    KeyIndex rowKeys;
    KeyIndex columnKeys;
    QHash<quint64, PivotCell> pairs;
    QVector<PivotCell> rowTotals;
    QVector<PivotCell> columnTotals;
    PivotCell grand;

    static quint64 pairKey(int row, int column)
    {
        return (quint64(uint(row)) << 32) | uint(column);
    }
};

QStringList keyOf(const QStringList &row, const QList<int> &columns)
{
    QStringList key;
    key.reserve(columns.size());
    for (int c : columns)
        key.append(row.at(c));
    return key;
}

QString keyText(const QStringList &key, const QString &delimiter)
{
    QStringList texts = key;
    for (QString &text : texts) {
        if (text.isEmpty())
            text = emptyText();
    }
    return texts.join(delimiter);
}

void addTo(PivotCell &cell, int kind, const QString &text, bool isNumber, double number, int r,
           bool drilldown)
{
    cell.summary.add(kind, text, isNumber, number);
    if (drilldown)
        cell.rows.append(r);
}

QString cellText(const PivotCell *cell, const PivotOptions &options)
{
    if (!cell || cell->summary.isEmpty())
        return options.zeroWhenMissing ? QStringLiteral("0") : QString();
    return cell->summary.text(options.kind);
}

} // namespace

const TransformDescriptor &TransformPivot::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 39;
        d.typeName = QStringLiteral("Pivot");
        d.displayName = QStringLiteral("Pivot");
        d.category = CategoryAnalysis;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::KeepsSourceRows
            | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Create a pivot table to summarize the selected columns.");
        d.keywords = QStringList {
            QStringLiteral("sumif"),     QStringLiteral("distinct"),  QStringLiteral("counts"),
            QStringLiteral("crosstabs"), QStringLiteral("deviation"), QStringLiteral("standard"),
            QStringLiteral("mode"),      QStringLiteral("median"),    QStringLiteral("mean"),
            QStringLiteral("averages"),  QStringLiteral("maximum"),   QStringLiteral("minimum"),
            QStringLiteral("totals"),    QStringLiteral("tables"),    QStringLiteral("summarises"),
            QStringLiteral("pivots")};
        d.create = createTransform<TransformPivot>;
        return d;
    }();
    return descriptor;
}

QStringList TransformPivot::nonCalcNames()
{
    return {QStringLiteral("Zero"), QStringLiteral("Empty")};
}

QStringList TransformPivot::totalTypeNames()
{
    return {QStringLiteral("Rows and columns"), QStringLiteral("Rows"), QStringLiteral("Columns")};
}

void TransformPivot::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *rows = new Parameter(ParameterType::SortColumnsOrdered, QStringLiteral("Rows"),
                               QStringLiteral("Pivot columns"), input);
    rows->setToolTip(QStringLiteral("Column(s) in the input dataset that will be used to create "
                                    "columns in the pivot table."));
    // Either side may stay empty, which gives one row or one column; only both empty is
    // reported, by process().
    rows->setColumnRequired(false);
    addParameter(rows);

    auto *columns = new Parameter(ParameterType::SortColumnsOrdered, QStringLiteral("Columns"),
                                  QStringLiteral("Pivot rows"), input);
    columns->setToolTip(QStringLiteral("Column(s) in the input dataset that will be used to "
                                       "create rows in the pivot table."));
    columns->setColumnRequired(false);
    addParameter(columns);

    auto *values = new Parameter(ParameterType::SingleColumn, QStringLiteral("Values"),
                                 QStringLiteral("Values"), input);
    values->setToolTip(QStringLiteral("The column in the input dataset that will be used for "
                                      "values in the pivot table."));
    addParameter(values);

    const QStringList kinds = PivotSummary::kindNames();
    auto *summarize = new Parameter(ParameterType::Selection, QStringLiteral("Summarize_As"),
                                    QStringLiteral("Summarize by"), kinds.first(), kinds);
    summarize->setToolTip(
        QStringLiteral("How to summarize values.\nClick the ? button for more details."));
    applyRememberedValue(useRemembered, summarize);
    addParameter(summarize);

    const QStringList nonCalc = nonCalcNames();
    auto *missing = new Parameter(ParameterType::Selection, QStringLiteral("Non_Calc"),
                                  QStringLiteral("Set non-calculated"), nonCalc.first(), nonCalc);
    missing->setToolTip(QStringLiteral("How to set values not calculated by the pivot."));
    applyRememberedValue(useRemembered, missing);
    addParameter(missing);

    auto *totals = new Parameter(ParameterType::Bool, QStringLiteral("Totals"),
                                 QStringLiteral("add totals"), true);
    totals->setToolTip(QStringLiteral("Check to add row and/or column totals."));
    applyRememberedValue(useRemembered, totals);
    addParameter(totals);

    const QStringList totalTypes = totalTypeNames();
    auto *totalType = new Parameter(ParameterType::Selection, QStringLiteral("Total_Type"),
                                    QStringLiteral("Total by"), totalTypes.first(), totalTypes);
    totalType->setToolTip(QStringLiteral("Whether to total by rows, columns or both."));
    applyRememberedValue(useRemembered, totalType);
    addParameter(totalType);

    auto *delimiter = new Parameter(ParameterType::Text, QStringLiteral("Delimiter"),
                                    QStringLiteral("Delimiter"), "/");
    delimiter->setTextRequired(false);
    delimiter->setToolTip(QStringLiteral("Delimiter to separate column names."));
    applyRememberedValue(useRemembered, delimiter);
    addParameter(delimiter);

    auto *drilldown = new Parameter(ParameterType::Bool, QStringLiteral("Drilldown"),
                                    QStringLiteral("allow drilldown"), false);
    drilldown->setToolTip(QStringLiteral("Allow double click to drilldown in the data table."));
    applyRememberedValue(useRemembered, drilldown);
    addParameter(drilldown);
}

QList<ParameterState> TransformPivot::parameterStates() const
{
    const Parameter *totals = parameter(QStringLiteral("Totals"));
    const Parameter *rows = parameter(QStringLiteral("Rows"));
    const Parameter *columns = parameter(QStringLiteral("Columns"));
    if (!totals || !rows || !columns)
        return {};
    const int pivotColumns = rows->toSortColumns().size();
    const int pivotRows = columns->toSortColumns().size();
    // The choice between totals only means something when there are both kinds of keys, and
    // a delimiter only where some key is made of more than one column.
    const bool on = totals->toBool();
    return {{QStringLiteral("Total_Type"), on && pivotColumns > 0 && pivotRows > 0},
            {QStringLiteral("Delimiter"), on && (pivotColumns > 1 || pivotRows > 1)}};
}

void TransformPivot::migrateParameters(int, QList<StoredParameter> *parameters) const
{
    // Older documents name the values column "Sum", whatever it was summarised by.
    const bool hasValues
        = std::any_of(parameters->cbegin(), parameters->cend(),
                      [](const StoredParameter &p) { return p.key == QLatin1String("Values"); });
    if (hasValues)
        return;
    for (StoredParameter &parameter : *parameters) {
        if (parameter.key == QLatin1String("Sum"))
            parameter.key = QStringLiteral("Values");
    }
}

namespace {

PivotOptions readOptions(const Parameter &rows, const Parameter &columns, const Parameter &values,
                         const Parameter &summarize, const Parameter &nonCalc,
                         const Parameter &totals, const Parameter &totalType,
                         const Parameter &delimiter, const Parameter &drilldown, int columnCount)
{
    PivotOptions options;
    const auto positions = [columnCount](const Parameter &p) {
        QList<int> list;
        for (const auto &entry : p.toSortIndexes()) {
            if (entry.first < columnCount)
                list.append(entry.first);
        }
        return list;
    };
    options.pivotColumns = positions(rows);
    options.pivotRows = positions(columns);
    options.values = values.toColumnIndex();
    if (options.values >= columnCount)
        options.values = -1;
    options.kind = summarize.toSelectionIndex();
    options.zeroWhenMissing = nonCalc.toSelectionIndex() == NonCalcZero;
    options.totals = totals.toBool();
    options.totalType = totalType.toSelectionIndex();
    options.delimiter = delimiter.toString();
    options.drilldown = drilldown.toBool();
    return options;
}

} // namespace

namespace {

// The one pass over the rows. Texts that are no number are listed in messages, the first few
// of them; the return is how many there were.
qint64 gatherValues(PivotData &data, const Dataset &input, const PivotOptions &options,
                    const std::function<bool(int r)> &atRow, QStringList *messages)
{
    const bool numeric = PivotSummary::isNumeric(options.kind);
    const bool decimalIsPoint = QLocale().decimalPoint() == QLatin1Char('.');
    const QString valuesName = input.headerText(options.values);
    const int kind = options.kind;
    const bool drill = options.drilldown;
    qint64 notNumbers = 0;
    const int rowCount = input.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        if (!atRow(r))
            break;
        const QStringList &row = input.row(r);
        const QString &value = row.at(options.values);
        // An empty value is no value: a group of nothing else makes neither row nor column.
        if (value.isEmpty())
            continue;
        bool isNumber = false;
        const double number = numeric ? toDoubleFast(value, decimalIsPoint, &isNumber) : 0.0;
        if (numeric && !isNumber && ++notNumbers <= ListedProblems)
            messages->append(
                QStringLiteral("'%1' is not a numerical value in column '%2' at row %3.")
                    .arg(value, valuesName, QString::number(r + 1)));
        const int rowKey = data.rowKeys.indexOf(keyOf(row, options.pivotRows));
        const int columnKey = data.columnKeys.indexOf(keyOf(row, options.pivotColumns));
        if (rowKey == data.rowTotals.size())
            data.rowTotals.append(PivotCell());
        if (columnKey == data.columnTotals.size())
            data.columnTotals.append(PivotCell());
        addTo(data.pairs[PivotData::pairKey(rowKey, columnKey)], kind, value, isNumber, number, r,
              drill);
        addTo(data.rowTotals[rowKey], kind, value, isNumber, number, r, drill);
        addTo(data.columnTotals[columnKey], kind, value, isNumber, number, r, drill);
        addTo(data.grand, kind, value, isNumber, number, r, drill);
    }
    return notNumbers;
}

// Lays the gathered cells out: keys sorted, the totals that are wanted at the end of each row
// and in a last row. Totals are cut by leaving them out.
void writeTable(Dataset &output, const PivotData &data, const Dataset &input,
                const PivotOptions &options)
{
    const bool noRows = options.pivotRows.isEmpty();
    const bool noColumns = options.pivotColumns.isEmpty();
    const bool both = !noRows && !noColumns;
    const bool totalRow = options.totals && !noRows && !(both && options.totalType == TotalRows);
    const bool totalColumn
        = options.totals && !noColumns && !(both && options.totalType == TotalColumns);

    // Without keys on one side, that side's only row or column is named by the summary.
    const QString kindName = PivotSummary::kindNames().value(options.kind);
    const QString grandName = QStringLiteral("Grand %1").arg(kindName);
    const QVector<int> rowOrder = data.rowKeys.sortedOrder();
    const QVector<int> columnOrder = data.columnKeys.sortedOrder();

    QStringList leftNames;
    for (int c : (noRows ? options.pivotColumns : options.pivotRows))
        leftNames.append(input.headerText(c));
    QStringList header {leftNames.join(options.delimiter)};
    for (int k : columnOrder)
        header.append(noColumns ? kindName
                                : keyText(data.columnKeys.keys().at(k), options.delimiter));
    if (totalColumn)
        header.append(grandName);
    const int width = header.size();
    beginOutput(output, width, true, header);

    const auto record = [&output, &options](int r, int c, const PivotCell &cell) {
        if (options.drilldown)
            output.addSourceRows(r, c, cell.rows);
    };
    for (int k : rowOrder) {
        const int r = output.rowCount();
        QStringList cells;
        cells.reserve(width);
        cells.append(noRows ? kindName : keyText(data.rowKeys.keys().at(k), options.delimiter));
        record(r, 0, data.rowTotals.at(k));
        for (int j : columnOrder) {
            const auto it = data.pairs.constFind(PivotData::pairKey(k, j));
            const PivotCell *cell = it == data.pairs.cend() ? nullptr : &it.value();
            cells.append(cellText(cell, options));
            if (cell)
                record(r, cells.size() - 1, *cell);
        }
        if (totalColumn) {
            cells.append(cellText(&data.rowTotals.at(k), options));
            record(r, width - 1, data.rowTotals.at(k));
        }
        output.appendRow(cells);
    }
    if (!totalRow)
        return;
    const int r = output.rowCount();
    QStringList cells {grandName};
    record(r, 0, data.grand);
    for (int j : columnOrder) {
        cells.append(cellText(&data.columnTotals.at(j), options));
        record(r, cells.size() - 1, data.columnTotals.at(j));
    }
    if (totalColumn) {
        cells.append(cellText(&data.grand, options));
        record(r, width - 1, data.grand);
    }
    output.appendRow(cells);
}

} // namespace

Dataset &TransformPivot::process(Dataset &output, const TransformInputs &inputs,
                                 const RunContext &context, bool &)
{
    const Dataset &input = *inputs.first().dataset;
    const PivotOptions options
        = readOptions(option(QStringLiteral("Rows")), option(QStringLiteral("Columns")),
                      option(QStringLiteral("Values")), option(QStringLiteral("Summarize_As")),
                      option(QStringLiteral("Non_Calc")), option(QStringLiteral("Totals")),
                      option(QStringLiteral("Total_Type")), option(QStringLiteral("Delimiter")),
                      option(QStringLiteral("Drilldown")), input.columnCount());
    if (options.pivotColumns.isEmpty() && options.pivotRows.isEmpty())
        addWarning(QStringLiteral("1 option not set ('%1' or '%2')")
                       .arg(option(QStringLiteral("Rows")).label(),
                            option(QStringLiteral("Columns")).label()));
    if (options.values < 0 || (options.pivotColumns.isEmpty() && options.pivotRows.isEmpty()))
        return output;

    PivotData data;
    QStringList messages;
    const int rowCount = input.rowCount();
    const qint64 notNumbers = gatherValues(
        data, input, options,
        [this, rowCount, &context](int r) {
            reportRow(r, rowCount);
            return r % 1000 != 0 || !context.isStopRequested();
        },
        &messages);
    for (const QString &message : qAsConst(messages))
        addWarning(message);
    if (notNumbers > ListedProblems)
        addWarning(furtherProblemsText(notNumbers - ListedProblems));
    writeTable(output, data, input, options);
    setResult(QStringLiteral("Pivot table created"));
    return output;
}
