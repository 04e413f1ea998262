#pragma once

#include "transforms/framework/parameterwidget.h"

#include <QComboBox>
#include <QList>
#include <QStyledItemDelegate>
#include <QTableWidget>

class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QPushButton;
class QRadioButton;
class QSpinBox;

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

class SingleColumnFilteredParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    SingleColumnFilteredParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    ColumnComboBox *comboBox() const { return m_combo; }

private:
    ColumnComboBox *m_combo;
};

// Columns to check, with a filter over the names and buttons for all and none of those
// shown. The ordered kind keeps the order in which the user checked them; the plain kind
// keeps the dataset's order. Checked columns missing from the dataset stay in the value.
class MultipleColumnsParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    MultipleColumnsParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    ColumnsTableWidget *table() const { return m_table; }
    QLineEdit *filterEdit() const { return m_filter; }
    QPushButton *allButton() const { return m_all; }
    QPushButton *noneButton() const { return m_none; }

private:
    void onToggled(ColumnId id, bool checked);
    void checkVisible(bool checked);

    ColumnsTableWidget *m_table;
    QLineEdit *m_filter;
    QPushButton *m_all;
    QPushButton *m_none;
    QList<ColumnId> m_order;
};

// Columns to sort by, in priority order, each ascending or descending: the available columns
// on the left, the chosen ones on the right.
class SortColumnsParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    SortColumnsParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    QListWidget *availableList() const { return m_available; }
    QListWidget *sortList() const { return m_sorted; }
    QPushButton *addButton() const { return m_add; }
    QPushButton *removeButton() const { return m_remove; }
    QPushButton *upButton() const { return m_up; }
    QPushButton *downButton() const { return m_down; }
    QPushButton *directionButton() const { return m_direction; }

private:
    void fillLists(int currentSortRow);
    void addCurrent();
    void removeCurrent();
    void moveCurrent(int by);
    void toggleDirection();
    void updateButtons();

    QListWidget *m_available;
    QListWidget *m_sorted;
    QPushButton *m_add;
    QPushButton *m_remove;
    QPushButton *m_up;
    QPushButton *m_down;
    QPushButton *m_direction;
    QList<SortColumn> m_sort; // shown on the right, in order
    QList<SortColumn> m_missing; // not in the dataset: kept, not shown
};

// Keep or remove the rows where all or any of the terms hold.
class FilterColumnsParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    FilterColumnsParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    QComboBox *keepBox() const { return m_keep; }
    QComboBox *matchBox() const { return m_match; }
    FilterColumnsTableWidget *table() const { return m_table; }
    QPushButton *addButton() const { return m_add; }
    QPushButton *removeButton() const { return m_remove; }

private:
    QComboBox *m_keep;
    QComboBox *m_match;
    FilterColumnsTableWidget *m_table;
    QPushButton *m_add;
    QPushButton *m_remove;
};

// The order of the columns: drag the names, or move the selected one with the buttons.
class ReorderColumnsParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    ReorderColumnsParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    QListWidget *list() const { return m_list; }
    QPushButton *upButton() const { return m_up; }
    QPushButton *downButton() const { return m_down; }

private:
    QList<ColumnId> listedIds() const;
    void moveCurrent(int to);

    QListWidget *m_list;
    QPushButton *m_top;
    QPushButton *m_up;
    QPushButton *m_down;
    QPushButton *m_bottom;
    QList<ColumnId> m_missing;
    bool m_wasEmpty = false;
    bool m_loading = false;
};

// The three ways to split rows: by matching names, automatically, or every n columns from a
// column, n times; and the name of the column that tells each row's group.
class SplitRowsParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    SplitRowsParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    void updateEnabled(bool enabled) override;
    QRadioButton *byNameButton() const { return m_byName; }
    QRadioButton *automaticButton() const { return m_automatic; }
    QRadioButton *everyButton() const { return m_every; }
    QSpinBox *everyBox() const { return m_everyBox; }
    QSpinBox *timesBox() const { return m_timesBox; }
    ColumnComboBox *columnBox() const { return m_column; }
    QLineEdit *textEdit() const { return m_text; }

private:
    void updateEveryControls();

    QRadioButton *m_byName;
    QRadioButton *m_automatic;
    QRadioButton *m_every;
    QSpinBox *m_everyBox;
    ColumnComboBox *m_column;
    QSpinBox *m_timesBox;
    QLineEdit *m_text;
    bool m_loading = false;
};
