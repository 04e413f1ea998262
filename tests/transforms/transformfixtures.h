#pragma once

#include "data/dataset.h"
#include "testdata.h"
#include "transforms/framework/parameter.h"

#include <QList>
#include <QMetaType>
#include <QVariantList>

// Small inputs and term tables shared by the test programs of transforms that were once
// tested together: Filter and If (conditions on rows), Intersect and Subtract (keys).

// A term of a test table: column -1 for every column, -2 for a column that is gone.
using TermSpec = QList<QVariantList>;
Q_DECLARE_METATYPE(TermSpec)

inline QVariantList term(int column, int op, const QString &value)
{
    return {column, op, value};
}

inline QList<FilterTerm> makeTerms(const TermSpec &spec, const Dataset &dataset)
{
    QList<FilterTerm> terms;
    for (const QVariantList &entry : spec) {
        FilterTerm term;
        const int column = entry.at(0).toInt();
        term.column = column == -2 ? ColumnId(9999, 77)
                                   : (column >= 0 ? dataset.columnId(column) : ColumnId());
        term.op = entry.at(1).toInt();
        term.value = entry.at(2).toString();
        terms.append(term);
    }
    return terms;
}

// Names, numbers with a word among them, day-first dates (only a d/M/yyyy reading makes the
// column a date column) and notes with an empty one.
inline Dataset conditionInput()
{
    return makeDataset({{"name", "amount", "date", "note"},
                        {"Anna", "600", "15/3/2020", "x"},
                        {"bob", "500", "1/2/2020", ""},
                        {"Carl", "1200.5", "31/1/2020", "abc"},
                        {"dave", "abc", "5/12/2019", "Abc"}});
}

// Top keys repeated, in two cases and empty; bottom keys repeated, empty and one of no top.
inline Dataset keyedTop()
{
    return makeDataset({{"k", "v"},
                        {"a", "1"},
                        {"b", "2"},
                        {"a", "3"},
                        {"c", "4"},
                        {"B", "5"},
                        {"", "6"},
                        {"a", "7"}});
}

inline Dataset keyedBottom()
{
    return makeDataset({{"key"}, {"a"}, {"a"}, {"b"}, {""}, {"d"}});
}
