#pragma once

#include "data/dataset.h"
#include "transforms/framework/columnsource.h"

#include <QHash>
#include <QList>
#include <QString>

class Parameter;

// What the cell transforms share: the walk over the selected columns of every row that
// applies a per-cell rule and writes only the cells whose text changes, so that a row with
// no change stays shared with the input; the common "Columns" option; and the column
// variables that a rule may take from the row being rewritten.
namespace CellRules {

struct Counts
{
    qint64 changed = 0;
    qint64 unchanged = 0;
};

// The "Columns" option of the family, bound to input and preset when it has one column.
Parameter *createColumnsParameter(ColumnSource *input, const QString &toolTip);

// The selected columns of option, ascending, leaving out those that no longer exist.
QList<int> selectedColumns(const Parameter &option);

// Whether text holds a column variable and needs substituting row by row.
inline bool hasColumnVariables(const QString &text)
{
    return text.contains(QLatin1String("$("));
}

// Substitutes column variables of one row. The values come from the dataset the transform
// was given, never from its output, so that a column rewritten earlier in the row does not
// feed a later one.
class RowVariables
{
public:
    explicit RowVariables(const Dataset &source)
        : m_source(source)
        , m_byName(source.columnsByName())
    { }

    QString substitute(const QString &text, int r) const
    {
        if (!hasColumnVariables(text))
            return text;
        return m_source.substituteColumnVariables(text, m_byName, r);
    }

private:
    const Dataset &m_source;
    QHash<QString, ColumnIndex> m_byName;
};

// Calls rule(r, cell) for each selected column of each row and writes what it returns
// when that differs from the cell. progress(r, rowCount) is called before each row.
// columns must be valid positions of data.
template<typename Rule, typename Progress>
Counts rewriteCells(Dataset &data, const QList<int> &columns, Rule &&rule, Progress &&progress)
{
    Counts counts;
    const int rowCount = data.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        progress(r, rowCount);
        for (int c : columns) {
            const QString &cell = data.cell(r, c);
            QString text = rule(r, cell);
            if (text == cell) {
                ++counts.unchanged;
                continue;
            }
            data.setCell(r, c, text);
            ++counts.changed;
        }
    }
    return counts;
}

} // namespace CellRules
