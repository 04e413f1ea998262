#include "transforms/rowselection.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/comparisonoperator.h"

#include <QLocale>

#include <limits>

namespace RowSelection {

namespace {

constexpr int MaximumCachedDays = 1 << 20;
constexpr qint64 NoDate = DayCache::NoDate;

} // namespace

bool isOrdering(int op)
{
    switch (op) {
    case ComparisonOperator::EqualTo:
    case ComparisonOperator::NotEqualTo:
    case ComparisonOperator::GreaterThan:
    case ComparisonOperator::LessThan:
    case ComparisonOperator::GreaterThanOrEqual:
    case ComparisonOperator::LessThanOrEqual:
        return true;
    default:
        return false;
    }
}

qint64 DayCache::day(const QString &text, const QString &format)
{
    const auto found = m_days.constFind(text);
    if (found != m_days.constEnd())
        return found.value();
    const QDate date = toDate(text, format);
    const qint64 day = date.isValid() ? date.toJulianDay() : NoDate;
    if (m_days.size() < MaximumCachedDays)
        m_days.insert(text, day);
    return day;
}

Context::Context(const Dataset &input)
    : m_input(input)
    , m_formats(dateFormats())
{ }

const QString &Context::dateFormat(int column)
{
    auto it = m_dateFormats.find(column);
    if (it == m_dateFormats.end()) {
        QString format;
        if (!m_input.isDateColumn(column, m_formats, &format))
            format.clear();
        it = m_dateFormats.insert(column, format);
    }
    return it.value();
}

QString Context::substitute(const QString &text, int r)
{
    if (!text.contains(QLatin1String("$(")))
        return text;
    if (!m_columnsByNameBuilt) {
        m_columnsByName = m_input.columnsByName();
        m_columnsByNameBuilt = true;
    }
    return m_input.substituteColumnVariables(text, m_columnsByName, r);
}

bool isUsable(const FilterTerm &term)
{
    return !term.value.isEmpty() || ComparisonOperator::takesNoValue(term.op);
}

ResolvedTerm::ResolvedTerm(Context &context, const FilterTerm &term,
                           Qt::CaseSensitivity caseSensitivity, bool cached)
    : m_context(&context)
    , m_op(term.op)
    , m_value(term.value)
    , m_hasVariables(term.value.contains(QLatin1String("$(")))
    , m_caseSensitivity(caseSensitivity)
    , m_cached(cached)
{
    const Dataset &input = context.input();
    if (term.column.isNull()) {
        for (int c = 0; c < input.columnCount(); ++c)
            m_columns.append(c);
    } else {
        const int c = input.columnIndex(term.column);
        if (c >= 0)
            m_columns.append(c);
    }
    m_ordering = isOrdering(m_op);
    for (const int c : qAsConst(m_columns))
        m_formats.append(m_ordering ? context.dateFormat(c) : QString());

    if (m_ordering && !m_hasVariables) {
        bool ok = false;
        m_valueNumber = toDouble(m_value, false, true, &ok);
        m_valueIsNumber = ok;
        m_plainDecimals = QLocale().decimalPoint() == QLatin1Char('.');
        m_dayCaches.resize(m_formats.size());
        for (const QString &format : qAsConst(m_formats)) {
            const QDate date = format.isEmpty() ? QDate() : toDate(m_value, format);
            m_valueDays.append(date.isValid() ? date.toJulianDay() : NoDate);
        }
    }
}

qint64 ResolvedTerm::cellDay(int i, const QString &cell) const
{
    return m_dayCaches[i].day(cell, m_formats.at(i));
}

bool ResolvedTerm::holds(int r) const
{
    if (m_columns.isEmpty())
        return false;
    const QStringList &row = m_context->input().row(r);
    if (m_ordering && !m_hasVariables)
        return holdsConstant(row);
    const QString value = m_hasVariables ? m_context->substitute(m_value, r) : m_value;
    for (int i = 0; i < m_columns.size(); ++i) {
        const QString &format = m_formats.at(i);
        const QString &cell = row.at(m_columns.at(i));
        const bool holds = m_cached
            ? ComparisonOperator::evaluate(m_op, cell, value, format, format, m_caseSensitivity)
            : ComparisonOperator::evaluateUncached(m_op, cell, value, format, format,
                                                   m_caseSensitivity);
        if (!holds)
            return false;
    }
    return true;
}

// The pair rules of the comparison operators with the value's side read in advance: dates
// when both read with the column's format, else numbers when both read as numbers, else
// text. Cells are parsed directly, since a cache would only grow with distinct cells here.
bool ResolvedTerm::holdsConstant(const QStringList &row) const
{
    for (int i = 0; i < m_columns.size(); ++i) {
        const QString &cell = row.at(m_columns.at(i));
        bool decided = false;
        bool holds = false;
        if (m_valueDays.at(i) != NoDate) {
            const qint64 day = cellDay(i, cell);
            if (day != NoDate) {
                holds = ComparisonOperator::ordered(m_op, day, m_valueDays.at(i));
                decided = true;
            }
        }
        if (!decided && m_valueIsNumber) {
            bool ok = false;
            const double number = toDoubleFast(cell, m_plainDecimals, &ok);
            if (ok) {
                holds = ComparisonOperator::ordered(m_op, number, m_valueNumber);
                decided = true;
            }
        }
        if (!decided)
            holds = ComparisonOperator::ordered(
                m_op, QString::compare(cell, m_value, m_caseSensitivity), 0);
        if (!holds)
            return false;
    }
    return true;
}

ResolvedTerms::ResolvedTerms(Context &context, const QList<FilterTerm> &terms,
                             Qt::CaseSensitivity caseSensitivity, bool cached)
{
    for (const FilterTerm &term : terms) {
        if (isUsable(term))
            m_terms.append(ResolvedTerm(context, term, caseSensitivity, cached));
    }
}

bool ResolvedTerms::allHold(int r) const
{
    for (const ResolvedTerm &term : m_terms) {
        if (!term.holds(r))
            return false;
    }
    return true;
}

bool ResolvedTerms::anyHolds(int r) const
{
    for (const ResolvedTerm &term : m_terms) {
        if (term.holds(r))
            return true;
    }
    return false;
}

} // namespace RowSelection
