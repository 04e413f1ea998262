#include "transforms/transformscale.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"
#include "transforms/transformstats.h"
#include "transforms/valueproblems.h"

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

enum Using { BySum = 0, ByMaximum, ByMinimumMaximum };
enum Scope { EachRow = 0, EachColumn, AllValues };

} // namespace

// What a scope's values are scaled against.
struct TransformScale::Extent
{
    double sum = 0.0;
    double minimum = std::numeric_limits<double>::infinity();
    double maximum = -std::numeric_limits<double>::infinity();

    void add(double value)
    {
        sum += value;
        minimum = std::min(minimum, value);
        maximum = std::max(maximum, value);
    }
};

// The options of one run, read once.
struct TransformScale::Settings
{
    QList<int> columns;
    double from = 0.0;
    double to = 0.0;
    int by = ByMinimumMaximum;
    int scope = EachColumn;
    bool decimalIsPoint = true;
};

// What one run counts and lists.
struct TransformScale::Tally
{
    qint64 changed = 0;
    qint64 unchanged = 0;
    ValueProblems nonNumeric {QStringLiteral("%1 non-numeric %2:")};
    ValueProblems divideByZero {QStringLiteral("%1 divide by 0 %2:")};
    ValueProblems negative {QStringLiteral("%1 negative %2:")};
};

const TransformDescriptor &TransformScale::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 51;
        d.typeName = QStringLiteral("Scale");
        d.displayName = QStringLiteral("Scale");
        d.category = CategoryFormat;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly
            | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Scale numeric values, e.g. to a percentage or 0 to 1.");
        d.keywords = QStringLiteral("normalise normalize rescale percentages proportions range "
                                    "minimum maximum sum")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformScale>;
        return d;
    }();
    return descriptor;
}

void TransformScale::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);
    auto *columns = new Parameter(ParameterType::MultipleColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Columns"), input);
    columns->setToolTip(QStringLiteral("Select the column(s) with values to scale."));
    TransformStats::selectNumericColumns(columns, input);
    addParameter(columns);

    auto *from = new Parameter(ParameterType::Int, QStringLiteral("From"),
                               QStringLiteral("Scale from"), 0);
    from->setMinimumInt(-999999999);
    from->setToolTip(QStringLiteral(
        "The value to scale from (e.g. if set to 0 the minimum value will be scaled to 0)."));
    applyRememberedValue(useRemembered, from);
    addParameter(from);

    auto *to
        = new Parameter(ParameterType::Int, QStringLiteral("To"), QStringLiteral("Scale to"), 100);
    to->setMinimumInt(-999999999);
    to->setToolTip(
        QStringLiteral("The value to scale to (e.g. 100 for a percentage, 1 for 0 to 1)."));
    applyRememberedValue(useRemembered, to);
    addParameter(to);

    const QStringList ways {QStringLiteral("Sum"), QStringLiteral("Maximum"),
                            QStringLiteral("Minimum & Maximum")};
    auto *by = new Parameter(ParameterType::Selection, QStringLiteral("By"),
                             QStringLiteral("Using"), ways.at(ByMinimumMaximum), ways);
    by->setToolTip(QStringLiteral("Scale so that:\n%1: all values sum to the '%4' value.\n%2: the "
                                  "maximum value scales to the '%4' value.\n%3: the minimum value "
                                  "scales to the '%5' value")
                       .arg(ways.at(BySum), ways.at(ByMaximum), ways.at(ByMinimumMaximum),
                            to->label(), from->label()));
    applyRememberedValue(useRemembered, by);
    addParameter(by);

    const QStringList scopes {QStringLiteral("Each row"), QStringLiteral("Each column"),
                              QStringLiteral("All values")};
    auto *of = new Parameter(ParameterType::Selection, QStringLiteral("Of"), QStringLiteral("Of"),
                             scopes.at(EachColumn), scopes);
    of->setToolTip(
        QStringLiteral("Whether to scale for all values or separately by column or by row."));
    applyRememberedValue(useRemembered, of);
    addParameter(of);
}

QList<ParameterState> TransformScale::parameterStates() const
{
    // Sum and Maximum scale in proportion, keeping 0 at 0: they have no start value.
    const Parameter *by = parameter(QStringLiteral("By"));
    return {{QStringLiteral("From"), by && by->toSelectionIndex() == ByMinimumMaximum}};
}

Dataset &TransformScale::process(Dataset &output, const TransformInputs &inputs,
                                 const RunContext &context, bool &)
{
    Settings settings;
    settings.columns = option(QStringLiteral("Columns")).columnIndexes();
    settings.from = option(QStringLiteral("From")).toInt();
    settings.to = option(QStringLiteral("To")).toInt();
    settings.by = option(QStringLiteral("By")).toSelectionIndex();
    settings.scope = option(QStringLiteral("Of")).toSelectionIndex();
    settings.decimalIsPoint = QLocale().decimalPoint() == QLatin1Char('.');
    output = inputDataset(inputs, 0);
    if (settings.columns.isEmpty()) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    // By row the extent comes from the row itself; otherwise a first pass measures it.
    QVector<Extent> extents(settings.scope == EachColumn ? settings.columns.size() : 1);
    if (settings.scope != EachRow)
        measure(output, settings, extents, context);
    Tally tally;
    write(output, settings, extents, tally, context);

    for (const ValueProblems *listing : {&tally.nonNumeric, &tally.divideByZero, &tally.negative}) {
        for (const QString &line : listing->lines())
            addWarning(line);
    }
    setResult(conversionResult(tally.changed, tally.unchanged, tally.nonNumeric,
                               QStringLiteral("non-numeric")));
    return output;
}

void TransformScale::measure(const Dataset &data, const Settings &settings,
                             QVector<Extent> &extents, const RunContext &context)
{
    const int rowCount = data.rowCount();
    const bool twoPasses = settings.scope != EachRow;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, twoPasses ? 2 * rowCount : rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            return;
        const QStringList &row = data.row(r);
        for (int i = 0; i < settings.columns.size(); ++i) {
            bool ok = false;
            const double value
                = toDoubleFast(row.at(settings.columns.at(i)), settings.decimalIsPoint, &ok);
            if (ok)
                extents[settings.scope == EachColumn ? i : 0].add(value);
        }
    }
}

void TransformScale::write(Dataset &data, const Settings &settings, const QVector<Extent> &extents,
                           Tally &tally, const RunContext &context)
{
    const int rowCount = data.rowCount();
    const bool twoPasses = settings.scope != EachRow;
    QVector<double> values(settings.columns.size());
    QVector<bool> numeric(settings.columns.size());
    for (int r = 0; r < rowCount; ++r) {
        if (twoPasses)
            reportRow(r, 2 * rowCount, 0.5);
        else
            reportRow(r, rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            return;
        Extent rowExtent;
        for (int i = 0; i < settings.columns.size(); ++i) {
            bool ok = false;
            values[i]
                = toDoubleFast(data.cell(r, settings.columns.at(i)), settings.decimalIsPoint, &ok);
            numeric[i] = ok;
            if (ok)
                rowExtent.add(values[i]);
        }
        for (int i = 0; i < settings.columns.size(); ++i) {
            const int c = settings.columns.at(i);
            const QString &text = data.cell(r, c);
            const auto where = [&data, c, r] {
                return QStringLiteral("at column '%1' row %2")
                    .arg(data.headerText(c), QString::number(r + 1));
            };
            if (!numeric.at(i)) {
                // An empty cell is a missing value: left as it is.
                if (text.isEmpty()) {
                    ++tally.unchanged;
                    continue;
                }
                tally.nonNumeric.add([&] { return QStringLiteral("'%1' %2").arg(text, where()); });
                data.setCell(r, c, QStringLiteral("Error: number expected"));
                continue;
            }
            const Extent &extent = settings.scope == EachRow
                ? rowExtent
                : extents.at(settings.scope == EachColumn ? i : 0);
            QString scaled;
            if (!scale(values.at(i), extent, settings, &scaled)) {
                tally.divideByZero.add(
                    [&] { return QStringLiteral("'%1' divided by 0 %2").arg(text, where()); });
                scaled = QStringLiteral("Error: divide by 0");
            } else if (values.at(i) < 0.0 && settings.by != ByMinimumMaximum) {
                tally.negative.add([&] { return QStringLiteral("'%1' %2").arg(text, where()); });
            }
            if (scaled == text) {
                ++tally.unchanged;
            } else {
                ++tally.changed;
                data.setCell(r, c, scaled);
            }
        }
    }
}

bool TransformScale::scale(double value, const Extent &extent, const Settings &settings,
                           QString *text)
{
    double scaled = 0.0;
    switch (settings.by) {
    case BySum:
        if (extent.sum == 0.0)
            return false;
        scaled = value * settings.to / extent.sum;
        break;
    case ByMaximum:
        if (extent.maximum == 0.0)
            return false;
        scaled = value * settings.to / extent.maximum;
        break;
    default: {
        const double span = extent.maximum - extent.minimum;
        if (span == 0.0)
            return false;
        scaled = settings.from + (value - extent.minimum) * (settings.to - settings.from) / span;
        break;
    }
    }
    *text = numberToCellText(scaled);
    return true;
}
