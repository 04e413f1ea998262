#pragma once

#include "transforms/framework/columnwidgets.h"

#include <QTableWidget>

class QLabel;
class QPushButton;

// The branches of an If: each branch a run of rows, one a condition ("If", "Else if", then
// "and" for the further conditions of the branch), its result in the "Then" cell of its first
// row; the last row holds the "Else" result.
class IfTableWidget : public QTableWidget
{
    Q_OBJECT

public:
    enum Column { KindColumn = 0, ColumnColumn, OperatorColumn, ValueColumn, ThenColumn };

    explicit IfTableWidget(QWidget *parent = nullptr);

    void setDataset(const Dataset *dataset);
    void setTerms(const IfTerms &terms);
    const IfTerms &terms() const { return m_terms; }
    // The branch and condition a row shows; condition -1 for the else row.
    int branchOfRow(int row) const;
    int termOfRow(int row) const;
    int rowOf(int branch, int term) const;
    int elseRow() const { return rowCount() - 1; }

    void addCondition();
    void addBranch();
    void removeCurrent();
    ColumnComboBox *columnBox(int row) const;
    QComboBox *operatorBox(int row) const;

signals:
    void termsEdited();
    void editing();

private:
    void rebuild(int currentRow);
    void onItemChanged(QTableWidgetItem *item);

    IfTerms m_terms;
    QList<QPair<int, int>> m_rows; // branch, term
    const Dataset *m_dataset = nullptr;
    bool m_loading = false;
};

class IfParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    IfParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    IfTableWidget *table() const { return m_table; }
    QPushButton *addConditionButton() const { return m_addCondition; }
    QPushButton *addBranchButton() const { return m_addBranch; }
    QPushButton *removeButton() const { return m_remove; }

private:
    IfTableWidget *m_table;
    QPushButton *m_addCondition;
    QPushButton *m_addBranch;
    QPushButton *m_remove;
};

// Old names beside editable new names, one row a column of the input; an empty new name
// leaves the column alone. Renames of columns the input no longer has are kept.
class RenameColumnsParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    RenameColumnsParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    QTableWidget *table() const { return m_table; }

private:
    void onItemChanged(QTableWidgetItem *item);

    QTableWidget *m_table;
    ColumnRenames m_renames;
    bool m_loading = false;
};

// One aggregate choice a column of the input; columns never set show "Keep first".
class UniqueParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    UniqueParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    QTableWidget *table() const { return m_table; }
    QComboBox *optionBox(int row) const;

private:
    QTableWidget *m_table;
    UniqueColumns m_unique;
};

// Replacements in order: what kind of match, the text to find, the text to put in its place.
class ReplaceTableWidget : public QTableWidget
{
    Q_OBJECT

public:
    enum Column { MatchColumn = 0, FromColumn, ToColumn };
    static QStringList matchTypeTexts();

    explicit ReplaceTableWidget(QWidget *parent = nullptr);

    void setTerms(const QList<ReplaceTerm> &terms);
    QList<ReplaceTerm> terms() const;
    void addTerm();
    void removeCurrentTerm();
    void moveCurrentTerm(int by);
    QComboBox *matchBox(int row) const;

signals:
    void termsEdited();
    void editing();

private:
    void insertTerm(int row, const ReplaceTerm &term);

    bool m_loading = false;
};

class ReplaceTermsParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    ReplaceTermsParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    ReplaceTableWidget *table() const { return m_table; }
    QPushButton *addButton() const { return m_add; }
    QPushButton *removeButton() const { return m_remove; }
    QPushButton *upButton() const { return m_up; }
    QPushButton *downButton() const { return m_down; }

private:
    ReplaceTableWidget *m_table;
    QPushButton *m_add;
    QPushButton *m_remove;
    QPushButton *m_up;
    QPushButton *m_down;
};
