#pragma once

#include "transforms/framework/columnchoosers.h"
#include "transforms/framework/parameterwidget.h"

#include <QList>

class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QPushButton;
class QRadioButton;
class QSpinBox;

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
