#include "transforms/transforminterpolate.h"

#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"
#include "transforms/keymatching.h"
#include "transforms/reshaping.h"

#include <QLocale>
#include <QVector>

#include <algorithm>

namespace {

struct Point
{
    double sample;
    double value;
};

// Cells of one kind of problem: the first few named, the rest counted, under a head line
// that needs the count.
class ProblemList
{
public:
    void add(const QString &cell, int r)
    {
        if (++m_count <= ListedProblems)
            m_lines.append(QStringLiteral("'%1' at row %2").arg(cell, QString::number(r + 1)));
    }
    qint64 count() const { return m_count; }
    QStringList lines(const QString &head) const
    {
        if (m_count == 0)
            return {};
        QStringList lines {head};
        lines += m_lines;
        if (m_count > m_lines.size())
            lines.append(furtherProblemsText(m_count - m_lines.size()));
        return lines;
    }

private:
    qint64 m_count = 0;
    QStringList m_lines;
};

QString valuesWord(qint64 count)
{
    return count == 1 ? QStringLiteral("value") : QStringLiteral("values");
}

// The bottom rows with a number in both columns, ordered by sample. Of points with the same
// sample the first in the table stands and the others are dropped, so that a sample has one
// value whichever way it is looked up.
QVector<Point> readPoints(const Dataset &bottom, int sampleColumn, int valueColumn,
                          ProblemList &notNumbers)
{
    const bool decimalIsPoint = QLocale().decimalPoint() == QLatin1Char('.');
    QVector<Point> points;
    points.reserve(bottom.rowCount());
    for (int r = 0; r < bottom.rowCount(); ++r) {
        bool sampleOk = false;
        bool valueOk = false;
        const double sample = toDoubleFast(bottom.cell(r, sampleColumn), decimalIsPoint, &sampleOk);
        const double value = toDoubleFast(bottom.cell(r, valueColumn), decimalIsPoint, &valueOk);
        if (!sampleOk)
            notNumbers.add(bottom.cell(r, sampleColumn), r);
        else if (!valueOk)
            notNumbers.add(bottom.cell(r, valueColumn), r);
        else
            points.append({sample, value});
    }
    std::stable_sort(points.begin(), points.end(),
                     [](const Point &a, const Point &b) { return a.sample < b.sample; });
    points.erase(std::unique(points.begin(), points.end(),
                             [](const Point &a, const Point &b) { return a.sample == b.sample; }),
                 points.end());
    return points;
}

// Piecewise is a step: the value of the nearest point at or below the sample. Linear is the
// straight line between the points on either side. A sample outside the points has no value.
bool interpolate(const QVector<Point> &points, double sample, int type, double *value)
{
    if (points.isEmpty() || sample < points.first().sample || sample > points.last().sample)
        return false;
    auto above = std::upper_bound(points.cbegin(), points.cend(), sample,
                                  [](double s, const Point &p) { return s < p.sample; });
    const Point &below = *(above - 1);
    if (type == TransformInterpolate::Piecewise || below.sample == sample
        || above == points.cend()) {
        *value = below.value;
        return true;
    }
    const double fraction = (sample - below.sample) / (above->sample - below.sample);
    *value = below.value + fraction * (above->value - below.value);
    return true;
}

} // namespace

const TransformDescriptor &TransformInterpolate::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 26;
        d.typeName = QStringLiteral("Interpolate");
        d.displayName = QStringLiteral("Interpolate");
        d.category = CategoryMerge;
        d.minimumInputs = 2;
        d.maximumInputs = 2;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Create a new column in the top dataset by interpolating "
                                       "numerical values in the bottom dataset.");
        d.keywords = QStringList {QStringLiteral("linear"),  QStringLiteral("piecewise"),
                                  QStringLiteral("step"),    QStringLiteral("lookup"),
                                  QStringLiteral("curve"),   QStringLiteral("table"),
                                  QStringLiteral("estimate")};
        d.create = createTransform<TransformInterpolate>;
        return d;
    }();
    return descriptor;
}

void TransformInterpolate::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addNewNameParameters(useRemembered);
    ColumnSource *top = inputs.value(0);
    ColumnSource *bottom = inputs.value(1);

    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Top_Sample_Column"), QStringLiteral("Top sample column"), top,
        QStringLiteral("The column of the top dataset whose numbers are looked up among the "
                       "bottom samples.")));
    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Bottom_Sample_Column"), QStringLiteral("Bottom sample column"), bottom,
        QStringLiteral("The column of the bottom dataset that holds the samples of the points.")));
    addParameter(KeyMatching::createKeyParameter(
        QStringLiteral("Bottom_Value_Column"), QStringLiteral("Bottom value column"), bottom,
        QStringLiteral("The column of the bottom dataset that holds the values of the points.")));

    const QStringList types {QStringLiteral("Piecewise"), QStringLiteral("Linear")};
    auto *type = new Parameter(ParameterType::Selection, QStringLiteral("Interpolation_Type"),
                               QStringLiteral("Interpolation"), types.at(Linear), types);
    type->setToolTip(QStringLiteral("%1: the value of the nearest bottom sample at or below the "
                                    "top sample.\n%2: the value on the straight line between "
                                    "the nearest bottom samples below and above.")
                         .arg(types.at(Piecewise), types.at(Linear)));
    applyRememberedValue(useRemembered, type);
    addParameter(type);
}

void TransformInterpolate::connectParameters(ColumnSources inputs)
{
    ColumnSource *top = inputs.value(0);
    ColumnSource *bottom = inputs.value(1);
    for (Parameter *option : parameters()) {
        if (option->isColumnRelated())
            option->setSourceNode(option->key() == QLatin1String("Top_Sample_Column") ? top
                                                                                      : bottom);
    }
}

QList<ParameterState> TransformInterpolate::parameterStates() const
{
    return {newNameState()};
}

Dataset &TransformInterpolate::process(Dataset &output, const TransformInputs &inputs,
                                       const RunContext &context, bool &)
{
    const int type = option(QStringLiteral("Interpolation_Type")).toSelectionIndex() == Piecewise
        ? Piecewise
        : Linear;
    const int topSample = option(QStringLiteral("Top_Sample_Column")).toColumnIndex();
    const int bottomSample = option(QStringLiteral("Bottom_Sample_Column")).toColumnIndex();
    const int bottomValue = option(QStringLiteral("Bottom_Value_Column")).toColumnIndex();

    output = inputDataset(inputs, 0);
    if (inputs.size() == 1) {
        setResult(KeyMatching::connectSecondText());
        return output;
    }
    const Dataset &bottom = *inputs.at(1).dataset;
    if (topSample < 0 || topSample >= output.columnCount() || bottomSample < 0 || bottomValue < 0
        || bottomSample >= bottom.columnCount() || bottomValue >= bottom.columnCount()) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    const QString topName = QStringLiteral("top column '%1'").arg(output.headerText(topSample));
    const QString bottomName
        = QStringLiteral("bottom column '%1'").arg(bottom.headerText(bottomSample));
    ProblemList bottomNotNumbers;
    const QVector<Point> points = readPoints(bottom, bottomSample, bottomValue, bottomNotNumbers);

    const int rowCount = output.rowCount();
    const bool decimalIsPoint = QLocale().decimalPoint() == QLatin1Char('.');
    QStringList values;
    values.reserve(rowCount);
    ProblemList topNotNumbers;
    ProblemList outside;
    qint64 interpolated = 0;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        const QString &cell = output.cell(r, topSample);
        bool ok = false;
        const double sample = toDoubleFast(cell, decimalIsPoint, &ok);
        double value = 0.0;
        if (!ok) {
            topNotNumbers.add(cell, r);
            values.append(QString());
        } else if (!interpolate(points, sample, type, &value)) {
            outside.add(cell, r);
            values.append(QString());
        } else {
            values.append(numberToCellText(value));
            ++interpolated;
        }
    }
    while (values.size() < rowCount)
        values.append(QString());

    const QString name
        = newColumnName(QStringLiteral("Interpolated %1").arg(bottom.headerText(bottomValue)));
    const int column = ColumnNames::appendNamedColumn(output, name);
    output.setColumn(column, values);

    const auto listProblems = [this](const QStringList &lines) {
        if (!lines.isEmpty())
            addWarning(lines.join(QLatin1Char('\n')));
    };
    listProblems(bottomNotNumbers.lines(QStringLiteral("%1 non-numeric %2 in %3:")
                                            .arg(formatCount(bottomNotNumbers.count()),
                                                 valuesWord(bottomNotNumbers.count()),
                                                 QStringLiteral("the bottom dataset"))));
    listProblems(topNotNumbers.lines(
        QStringLiteral("%1 non-numeric %2 in %3:")
            .arg(formatCount(topNotNumbers.count()), valuesWord(topNotNumbers.count()), topName)));
    listProblems(outside.lines(
        QStringLiteral("%1 %2 in %3 outside value range in %4:")
            .arg(formatCount(outside.count()), valuesWord(outside.count()), topName, bottomName)));
    setResult(interpolated == 0
                  ? QStringLiteral("No changes")
                  : QStringLiteral("%1 values interpolated").arg(formatCount(interpolated)));
    return output;
}
