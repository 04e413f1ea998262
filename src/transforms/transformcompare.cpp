#include "transforms/transformcompare.h"

#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"
#include "transforms/rowselection.h"

#include <QLocale>

namespace {

using RowSelection::DayCache;

// The days of one column's texts when it is a date column.
class DayReader
{
public:
    explicit DayReader(const QString &format)
        : m_format(format)
    { }

    bool isDateColumn() const { return !m_format.isEmpty(); }
    qint64 day(const QString &text) { return m_cache.day(text, m_format); }

private:
    QString m_format;
    DayCache m_cache;
};

// One operator applied to two cells of a row, as a condition of Filter applies it to a cell
// and a value: the ordering operators compare dates when both columns are date columns and
// both texts read as dates, else numbers when both read as numbers, else text. Everything
// that doesn't depend on the row is settled before the first.
class PairComparison
{
public:
    PairComparison(int op, Qt::CaseSensitivity caseSensitivity, const QString &firstFormat,
                   const QString &secondFormat)
        : m_op(op)
        , m_caseSensitivity(caseSensitivity)
        , m_ordering(RowSelection::isOrdering(op))
        , m_decimalIsPoint(QLocale().decimalPoint() == QLatin1Char('.'))
        , m_first(firstFormat)
        , m_second(secondFormat)
        , m_dates(m_first.isDateColumn() && m_second.isDateColumn())
    { }

    bool holds(const QString &a, const QString &b)
    {
        if (!m_ordering)
            return ComparisonOperator::evaluate(m_op, a, b, QString(), QString(),
                                                m_caseSensitivity);
        if (m_dates) {
            const qint64 dayA = m_first.day(a);
            if (dayA != DayCache::NoDate) {
                const qint64 dayB = m_second.day(b);
                if (dayB != DayCache::NoDate)
                    return ComparisonOperator::ordered(m_op, dayA, dayB);
            }
        }
        bool ok = false;
        const double numberA = toDoubleFast(a, m_decimalIsPoint, &ok);
        if (ok) {
            const double numberB = toDoubleFast(b, m_decimalIsPoint, &ok);
            if (ok)
                return ComparisonOperator::ordered(m_op, numberA, numberB);
        }
        return ComparisonOperator::ordered(m_op, QString::compare(a, b, m_caseSensitivity), 0);
    }

private:
    int m_op;
    Qt::CaseSensitivity m_caseSensitivity;
    bool m_ordering;
    bool m_decimalIsPoint;
    DayReader m_first;
    DayReader m_second;
    bool m_dates;
};

} // namespace

const TransformDescriptor &TransformCompare::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 5;
        d.typeName = QStringLiteral("Compare_Cols");
        d.displayName = QStringLiteral("Compare Cols");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::UsesDateFormats;
        d.description = QStringLiteral("Compare the values of two columns.");
        d.create = createTransform<TransformCompare>;
        return d;
    }();
    return descriptor;
}

void TransformCompare::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    addNewNameParameters(useRemembered);

    auto *first = new Parameter(ParameterType::SingleColumn, QStringLiteral("Column1"),
                                QStringLiteral("Column 1"), input);
    first->setToolTip(QStringLiteral("Select the first column to compare."));
    addParameter(first);

    auto *comparison = new Parameter(ParameterType::Selection, QStringLiteral("Comparison"),
                                     QStringLiteral("Comparison"),
                                     ComparisonOperator::displayText(ComparisonOperator::EqualTo),
                                     ComparisonOperator::displayTexts());
    comparison->setToolTip(QStringLiteral("The comparison operator."));
    applyRememberedValue(useRemembered, comparison);
    addParameter(comparison);

    auto *second = new Parameter(ParameterType::SingleColumn, QStringLiteral("Column2"),
                                 QStringLiteral("Column 2"), input);
    second->setToolTip(QStringLiteral("Select the second column to compare."));
    addParameter(second);

    auto *caseSensitive = new Parameter(ParameterType::Bool, QStringLiteral("Case_Sensitive"),
                                        QStringLiteral("case sensitive"), false);
    caseSensitive->setToolTip(QStringLiteral("Check for case sensitive comparison of text."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);
}

QList<ParameterState> TransformCompare::parameterStates() const
{
    return {newNameState()};
}

Dataset &TransformCompare::process(Dataset &output, const TransformInputs &inputs,
                                   const RunContext &context, bool &)
{
    const Parameter *firstOption = &option(QStringLiteral("Column1"));
    const Parameter *comparisonOption = &option(QStringLiteral("Comparison"));
    const Parameter *secondOption = &option(QStringLiteral("Column2"));
    const Parameter *caseOption = &option(QStringLiteral("Case_Sensitive"));

    output = inputDataset(inputs, 0);
    const int first = firstOption->toColumnIndex();
    const int second = secondOption->toColumnIndex();
    const int width = output.columnCount();
    const bool hasColumns = first >= 0 && first < width && second >= 0 && second < width;
    const int op = ComparisonOperator::displayOrder().value(comparisonOption->toSelectionIndex(),
                                                            ComparisonOperator::EqualTo);
    const QString name = newColumnName(hasColumns ? QStringLiteral("%1 %2 %3")
                                                        .arg(output.headerText(first),
                                                             ComparisonOperator::shortText(op),
                                                             output.headerText(second))
                                                  : displayName());
    const int c = ColumnNames::appendNamedColumn(output, name);
    if (!hasColumns) {
        setResult(QStringLiteral("No changes"));
        return output;
    }

    const bool ordering = RowSelection::isOrdering(op);
    RowSelection::Context dates(output);
    PairComparison comparison(op, caseOption->toBool() ? Qt::CaseSensitive : Qt::CaseInsensitive,
                              ordering ? dates.dateFormat(first) : QString(),
                              ordering ? dates.dateFormat(second) : QString());
    const QString trueText = QStringLiteral("true");
    const QString falseText = QStringLiteral("false");
    qint64 trueCount = 0;
    const int rowCount = output.rowCount();
    int r = 0;
    for (; r < rowCount; ++r) {
        reportRow(r, rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        const QStringList &row = output.row(r);
        const bool holds = comparison.holds(row.at(first), row.at(second));
        trueCount += holds;
        output.setCell(r, c, holds ? trueText : falseText);
    }
    clearComparisonCaches();
    setResult(QStringLiteral("%1 true, %2 false")
                  .arg(formatCount(trueCount), formatCount(r - trueCount)));
    return output;
}
