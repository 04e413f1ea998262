#pragma once

#include "data/dataset.h"

#include <QString>
#include <QStringList>

// Helpers of the transforms that lay cells out anew over rows and columns (Split Col,
// Transpose, Reshape, Split Rows, Concat Rows): they build their output from scratch rather
// than editing a copy, and word their counts alike.

// "1 row", "2,500 rows": a count with grouped digits and the noun that agrees with it.
QString countWithNoun(qint64 count, const QString &singular, const QString &plural);

// Problems with single cells are listed one by one for the first ListedProblems only;
// furtherProblemsText() stands for the rest: "+ 1 other", "+ 12 others".
constexpr int ListedProblems = 5;
QString furtherProblemsText(qint64 further);

// What a reshaping did to the size of its input: "%1 removed" or "%1 added" for the columns,
// then the same for the rows, joined by ", "; "No changes" when neither count moved.
QString shapeChangeText(const Dataset &before, const Dataset &after);

// Names for count columns: the input's names for as far as they go, then column numbers.
QStringList namesOrNumbers(const Dataset &input, int count);

// Makes output an empty table of columns columns and no rows, with names as its header when
// withHeader (missing names become column numbers). Rows then go in with appendRow.
void beginOutput(Dataset &output, int columns, bool withHeader, const QStringList &names);

// Gives the first count columns of output the ids of the input's columns at the same places:
// those columns stay where they were, so options downstream may keep naming them.
void keepColumnIds(Dataset &output, const Dataset &input, int count);
