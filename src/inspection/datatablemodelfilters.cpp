// The row and column filters of DataTableModel, and the mapping between the positions of the
// model and those of the dataset that they make.

#include "inspection/datatablemodel.h"

#include "data/dataset.h"
#include "shell/guards.h"

#include <algorithm>

void DataTableModel::setRowFilter(const QString &text, int column, Qt::CaseSensitivity cs)
{
    setFilters(text, column, cs, m_columnFilterText, m_columnFilterCase);
}

void DataTableModel::setColumnFilter(const QString &text, Qt::CaseSensitivity cs)
{
    setFilters(m_rowFilterText, m_rowFilterColumn, m_rowFilterCase, text, cs);
}

void DataTableModel::setFilters(const QString &rowText, int rowColumn, Qt::CaseSensitivity rowCase,
                                const QString &columnText, Qt::CaseSensitivity columnCase)
{
    if (rowText == m_rowFilterText && rowColumn == m_rowFilterColumn && rowCase == m_rowFilterCase
        && columnText == m_columnFilterText && columnCase == m_columnFilterCase)
        return;
    BusyCursor busy;
    beginResetModel();
    m_rowFilterText = rowText;
    m_rowFilterColumn = rowColumn;
    m_rowFilterCase = rowCase;
    m_columnFilterText = columnText;
    m_columnFilterCase = columnCase;
    applyFilters();
    endResetModel();
    emit filterChanged();
}

void DataTableModel::clearFilters()
{
    if (m_rowFilterText.isEmpty() && m_columnFilterText.isEmpty())
        return;
    beginResetModel();
    m_rowFilterText.clear();
    m_columnFilterText.clear();
    applyFilters();
    endResetModel();
    emit filterChanged();
}

void DataTableModel::applyFilters()
{
    m_rowMap.clear();
    m_columnMap.clear();
    m_rowFiltered = false;
    m_columnFiltered = false;
    if (!showsCells())
        return;
    const Dataset &data = *m_dataset;

    if (!m_columnFilterText.isEmpty()) {
        m_columnFiltered = true;
        for (int c = 0; c < data.columnCount(); ++c) {
            if (data.headerText(c).contains(m_columnFilterText, m_columnFilterCase)
                || data.columnContains(c, m_columnFilterText, m_columnFilterCase))
                m_columnMap.append(c);
        }
    }

    if (!m_rowFilterText.isEmpty()) {
        m_rowFiltered = true;
        const int column = m_rowFilterColumn < data.columnCount() ? m_rowFilterColumn : -1;
        const int rows = data.rowCount();
        for (int r = 0; r < rows; ++r) {
            const bool keep = column >= 0
                ? data.cell(r, column).contains(m_rowFilterText, m_rowFilterCase)
                : data.rowContains(r, m_rowFilterText, m_rowFilterCase);
            if (keep)
                m_rowMap.append(r);
        }
        m_rowMap.squeeze();
    }
}

int DataTableModel::datasetRow(int row) const
{
    if (row < 0 || row >= rowCount())
        return -1;
    return m_rowFiltered ? m_rowMap.at(row) : row;
}

int DataTableModel::datasetColumn(int column) const
{
    if (column < 0 || column >= columnCount())
        return -1;
    return m_columnFiltered ? m_columnMap.at(column) : column;
}

int DataTableModel::modelRow(int datasetRow) const
{
    if (!m_rowFiltered)
        return datasetRow >= 0 && datasetRow < rowCount() ? datasetRow : -1;
    const auto it = std::lower_bound(m_rowMap.cbegin(), m_rowMap.cend(), datasetRow);
    return it != m_rowMap.cend() && *it == datasetRow ? int(it - m_rowMap.cbegin()) : -1;
}

int DataTableModel::modelColumn(int datasetColumn) const
{
    if (!m_columnFiltered)
        return datasetColumn >= 0 && datasetColumn < columnCount() ? datasetColumn : -1;
    const auto it = std::lower_bound(m_columnMap.cbegin(), m_columnMap.cend(), datasetColumn);
    return it != m_columnMap.cend() && *it == datasetColumn ? int(it - m_columnMap.cbegin()) : -1;
}
