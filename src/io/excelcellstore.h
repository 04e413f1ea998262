#pragma once

#include <algorithm>
#include <vector>

// The bookkeeping that the compact cell stores of the book formats share: cells kept in one
// vector in the order they come, sorted by position when first looked up (the later of two
// cells at one position winning), each row's start noted so that a cell is found by a binary
// search within its row, and the used range grown by the cells that have values. Cell types
// need `row` and `col` members.
namespace ExcelCellStore {

struct UsedRange
{
    int firstRow = 0;
    int lastRow = 0; // one past the end
    int firstCol = 0;
    int lastCol = 0; // one past the end
    bool any = false;

    void add(int row, int col)
    {
        firstRow = any ? std::min(firstRow, row) : row;
        lastRow = any ? std::max(lastRow, row + 1) : row + 1;
        firstCol = any ? std::min(firstCol, col) : col;
        lastCol = any ? std::max(lastCol, col + 1) : col + 1;
        any = true;
    }
};

// Whether cell comes after the last one, keeping the store sorted.
template<class Cell> bool follows(const std::vector<Cell> &cells, const Cell &cell)
{
    if (cells.empty())
        return true;
    const Cell &last = cells.back();
    return cell.row > last.row || (cell.row == last.row && cell.col > last.col);
}

// Sorts unsorted cells and notes the start of each row in rowStarts (one entry past the
// last row).
template<class Cell> void index(std::vector<Cell> &cells, bool sorted, std::vector<int> &rowStarts)
{
    if (!sorted) {
        std::stable_sort(cells.begin(), cells.end(), [](const Cell &a, const Cell &b) {
            return a.row != b.row ? a.row < b.row : a.col < b.col;
        });
        size_t kept = 0;
        for (size_t i = 0; i < cells.size(); ++i) {
            if (kept > 0 && cells[kept - 1].row == cells[i].row
                && cells[kept - 1].col == cells[i].col)
                cells[kept - 1] = cells[i];
            else
                cells[kept++] = cells[i];
        }
        cells.resize(kept);
    }
    const int rows = cells.empty() ? 0 : int(cells.back().row) + 1;
    rowStarts.assign(size_t(rows) + 1, int(cells.size()));
    for (int i = int(cells.size()) - 1; i >= 0; --i)
        rowStarts[size_t(cells[size_t(i)].row)] = i;
    for (int r = rows - 1; r >= 0; --r)
        rowStarts[size_t(r)] = std::min(rowStarts[size_t(r)], rowStarts[size_t(r) + 1]);
}

// The cell at row and col of indexed cells, or null.
template<class Cell>
const Cell *find(const std::vector<Cell> &cells, const std::vector<int> &rowStarts, int row,
                 int col)
{
    if (row < 0 || size_t(row) + 1 >= rowStarts.size())
        return nullptr;
    const auto begin = cells.begin() + rowStarts[size_t(row)];
    const auto end = cells.begin() + rowStarts[size_t(row) + 1];
    const auto it = std::lower_bound(begin, end, col,
                                     [](const Cell &cell, int c) { return int(cell.col) < c; });
    return it != end && int(it->col) == col ? &*it : nullptr;
}

} // namespace ExcelCellStore
