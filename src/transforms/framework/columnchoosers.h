#pragma once

// The column choosers that the column option widgets are built from.

#include "data/dataset.h"
#include "transforms/framework/parameter.h"

#include <QComboBox>
#include <QList>
#include <QStyledItemDelegate>
#include <QTableWidget>

// The columns of a dataset to choose one from. Entries hold ColumnIds, so a choice survives
// moves of the column, and names are re-read from the dataset's headers whenever it is set
// again. Typing filters the list to names containing the text. A chosen id that the dataset
// doesn't hold (a column gone upstream, or no dataset yet) is kept and given back until the
// user picks another, so that showing an option never rewrites it.
class ColumnComboBox : public QComboBox
{
    Q_OBJECT

public:
    explicit ColumnComboBox(QWidget *parent = nullptr);

    // The text of the "no column" entry; empty: no such entry.
    void setNoneText(const QString &text);
    // Null or a dataset without columns: the list is empty.
    void setDataset(const Dataset *dataset);
    ColumnId currentColumnId() const;
    void setCurrentColumnId(ColumnId id);

signals:
    // The user chose an entry (a click in the list, or a name typed and confirmed).
    void columnChosen();

private:
    void onActivated(int index);
    void restoreText();

    QString m_noneText;
    ColumnId m_heldId;
};

// Check boxes for the columns of a dataset, one row a column, in the dataset's order. Checks
// are kept by ColumnId across setDataset, so a refresh of the upstream data moves nothing.
class ColumnsTableWidget : public QTableWidget
{
    Q_OBJECT

public:
    explicit ColumnsTableWidget(QWidget *parent = nullptr);

    void setDataset(const Dataset *dataset);
    QList<ColumnId> columnIds() const;
    QList<ColumnId> checkedColumns() const;
    void setCheckedColumns(const QList<ColumnId> &ids);
    bool isChecked(ColumnId id) const;
    int rowOf(ColumnId id) const;
    // Hides the rows whose names don't contain text (any case).
    void setFilterText(const QString &text);
    // Checks or unchecks the rows the filter shows; the ids that changed, in row order.
    QList<ColumnId> setVisibleChecked(bool checked);

signals:
    void columnToggled(ColumnId id, bool checked);

private:
    bool m_loading = false;
};

// Tells of the editing of a cell as it happens, so that a waiting run is put off while the
// user types into a table; the finished edit arrives through the table's itemChanged.
class InteractionDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;

signals:
    void editing() const;
};

// The conditions of a filter: one row a term with its column ("<Any column>" for every
// column), its operator in display order, and its value.
class FilterColumnsTableWidget : public QTableWidget
{
    Q_OBJECT

public:
    static QString anyColumnText();

    explicit FilterColumnsTableWidget(QWidget *parent = nullptr);

    void setDataset(const Dataset *dataset);
    void setTerms(const QList<FilterTerm> &terms);
    QList<FilterTerm> terms() const;
    void addTerm();
    void removeCurrentTerm();
    ColumnComboBox *columnBox(int row) const;
    QComboBox *operatorBox(int row) const;

    // Shared with the If table: an operator combo over the display order.
    static QComboBox *createOperatorBox(QWidget *parent);
    static int operatorOf(const QComboBox *box);
    static void setOperator(QComboBox *box, int op);

signals:
    void termsEdited();
    void editing();

private:
    void insertRow(int row, const FilterTerm &term);

    const Dataset *m_dataset = nullptr;
    bool m_loading = false;
};
