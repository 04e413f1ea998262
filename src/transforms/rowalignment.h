#pragma once

#include "data/dataset.h"

#include <QVector>

#include <functional>

// How the rows of two datasets line up when they are compared side by side: by row number,
// or by the text of a key column on each side. The Difference transform and the Compare Data
// window both align through here, so that they put the same rows against each other.
namespace RowAlignment {

enum class Mode { RowNumbers, KeyColumns };

struct Options
{
    Mode mode = Mode::RowNumbers;
    // The key column of each side, for KeyColumns.
    int leftKey = -1;
    int rightKey = -1;
    // Without it keys match in any case: "abc" pairs with "ABC".
    bool caseSensitive = true;
    // Keys in ascending order: those that read as numbers first, by value, then the others
    // by code point. Otherwise keys come in the order of their first occurrence on the left,
    // then the keys found only on the right in the order of theirs.
    bool sortByKey = false;
};

// One line of the alignment: a row of each side, or -1 where that side has none.
struct RowPair
{
    int left = -1;
    int right = -1;

    friend bool operator==(const RowPair &a, const RowPair &b)
    {
        return a.left == b.left && a.right == b.right;
    }
};

// Told the fraction of the work done, every 1000 rows; returns false to stop the alignment.
using Progress = std::function<bool(double fraction)>;

// Whether options can align these datasets: row numbers always can, keys need a column in
// range on each side.
bool canAlign(const Dataset &left, const Dataset &right, const Options &options);

// The aligned rows, every row of each side exactly once and in ascending order within its
// side.
//
// By row numbers, row i pairs with row i, and the longer side's last rows pair with nothing.
//
// By key, the rows of one key stand together. A key that occurs more than once pairs its
// occurrences in order, the first on the left with the first on the right, the second with
// the second and so on; the occurrences that one side has beyond the other's pair with
// nothing, after the paired ones. A key found on one side only pairs each of its rows with
// nothing. Keys are the cells' text, never trimmed nor read as numbers (but for the order
// of sortByKey); an empty cell is a key like any other.
//
// Empty when the options can't align these datasets or progress asked to stop.
QVector<RowPair> align(const Dataset &left, const Dataset &right, const Options &options,
                       const Progress &progress = {});

} // namespace RowAlignment
