#pragma once

#include "data/dataset.h"
#include "transforms/framework/parameter.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVector>

#include <limits>

// Conditions on rows, as Filter, If and Slice state them, made ready for one run over one
// dataset. Everything that does not depend on the row is settled once: the columns of each
// term, the date formats of those columns, and a comparison value without column variables
// read once as a number and as a date, so that the row loop only reads the cells.
namespace RowSelection {

// What the terms of one run share: the input, the date formats found for its columns and,
// when some text holds variables, the column names for substituting them.
class Context
{
public:
    explicit Context(const Dataset &input);

    const Dataset &input() const { return m_input; }
    // The format that reads the whole column as dates, or an empty text.
    const QString &dateFormat(int column);
    // Column variables of text replaced by the cells of row r; text without "$(" as it is.
    QString substitute(const QString &text, int r);

private:
    const Dataset &m_input;
    QStringList m_formats;
    QHash<int, QString> m_dateFormats;
    QHash<QString, ColumnIndex> m_columnsByName;
    bool m_columnsByNameBuilt = false;
};

// A term is left out when its value is empty and its operator needs one.
bool isUsable(const FilterTerm &term);

// Whether the operator compares by order (=, <>, <, >, <=, >=), reading dates and numbers
// before falling back to text.
bool isOrdering(int op);

// The days of the texts of one date column, each read once: reading a date by format is
// slow, and a date column holds few distinct texts.
class DayCache
{
public:
    static constexpr qint64 NoDate = std::numeric_limits<qint64>::min();
    // The Julian day of text read with format, or NoDate.
    qint64 day(const QString &text, const QString &format);

private:
    QHash<QString, qint64> m_days;
};

// One term with its columns resolved: a null id stands for every column, an id that no longer
// resolves for none, and a term over no columns never holds.
class ResolvedTerm
{
public:
    ResolvedTerm(Context &context, const FilterTerm &term, Qt::CaseSensitivity caseSensitivity,
                 bool cached);

    // True when the operator holds for the cell of every column of the term in row r.
    bool holds(int r) const;

private:
    bool holdsConstant(const QStringList &row) const;
    qint64 cellDay(int i, const QString &cell) const;

    Context *m_context;
    int m_op;
    QString m_value;
    bool m_hasVariables;
    Qt::CaseSensitivity m_caseSensitivity;
    bool m_cached;
    QVector<int> m_columns;
    QVector<QString> m_formats;
    // The constant value of an ordering operator, read once.
    bool m_ordering = false;
    bool m_valueIsNumber = false;
    double m_valueNumber = 0.0;
    QVector<qint64> m_valueDays;
    bool m_plainDecimals = false;
    mutable QVector<DayCache> m_dayCaches;
};

// The usable terms of a list; an empty list means that no condition applies.
class ResolvedTerms
{
public:
    ResolvedTerms(Context &context, const QList<FilterTerm> &terms,
                  Qt::CaseSensitivity caseSensitivity, bool cached);

    bool isEmpty() const { return m_terms.isEmpty(); }
    bool allHold(int r) const;
    bool anyHolds(int r) const;

private:
    QVector<ResolvedTerm> m_terms;
};

} // namespace RowSelection
