#pragma once

#include "transforms/framework/parameterwidgets.h"
#include "transforms/verifyrules.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

// The rule tree of Verify: the dataset's rules under "Dataset", and under "Columns" an entry
// a column of the input with its type and the rules that type offers. Each rule line has a
// check box, an editor for its value when it takes one, and its severity. A column's rules are
// made when the column is first expanded, so that a wide input stays quick to show.
class VerifyRulesWidget : public QWidget
{
    Q_OBJECT

public:
    // The tree's columns.
    enum Column { RuleColumn = 0, ValueColumn, SeverityColumn };
    // What an item of the tree stands for, in its Qt::UserRole.
    enum ItemKind { DatasetItem = 1, ColumnsItem, ColumnItem, TypeItem, DatasetRuleItem, RuleItem };

    explicit VerifyRulesWidget(QWidget *parent = nullptr);

    // The columns offered are those of dataset (none without one); the rules are shown anew.
    void setRules(const VerifyRuleSet &rules, const Dataset *dataset);
    const VerifyRuleSet &rules() const { return m_rules; }

    QTreeWidget *tree() const { return m_tree; }
    QTreeWidgetItem *datasetItem() const { return m_datasetItem; }
    QTreeWidgetItem *columnItem(int column) const;
    // The line of a rule: of the dataset with column -1, else of the column (made if needed).
    QTreeWidgetItem *ruleItem(int column, int rule);
    QComboBox *typeBox(int column);
    QComboBox *severityBox(QTreeWidgetItem *item) const;
    QWidget *valueEditor(QTreeWidgetItem *item) const;
    QLabel *countLabel() const { return m_count; }
    QLineEdit *filterEdit() const { return m_filter; }
    QPushButton *expandButton() const { return m_expand; }
    QPushButton *collapseButton() const { return m_collapse; }
    QPushButton *uncheckButton() const { return m_uncheck; }

    // A column's type before the user chose one: the kind of value its first cells hold.
    static int guessedType(const Dataset &dataset, int column);

signals:
    // The rule set changed through the user.
    void rulesEdited();
    // The user is typing a value that isn't final yet.
    void editing();

private:
    void buildColumns();
    void populateColumn(QTreeWidgetItem *columnItem);
    void addRuleLine(QTreeWidgetItem *parent, int rule, bool datasetRule, ColumnId column);
    QWidget *makeValueEditor(int kind, const QVariant &value);
    void onItemChanged(QTreeWidgetItem *item, int column);
    void onItemExpanded(QTreeWidgetItem *item);
    void onTypeChosen(QTreeWidgetItem *columnItem, int type);
    void onFilterChanged(const QString &text);
    void expandAll();
    void collapseAll();
    void uncheckAll();
    // The rule an item edits, the column entry made with the type shown when it is new.
    VerifyRule &ruleOf(QTreeWidgetItem *item);
    void setValue(QTreeWidgetItem *item, const QVariant &value);
    void setSeverity(QTreeWidgetItem *item, int severity);
    ColumnId columnIdOf(const QTreeWidgetItem *item) const;
    int shownType(int column) const;
    void enableEditors(QTreeWidgetItem *item);
    void refreshChecks(QTreeWidgetItem *parent);
    void refreshTexts();
    void edited();

    QTreeWidget *m_tree;
    QLabel *m_count;
    QLineEdit *m_filter;
    QPushButton *m_expand;
    QPushButton *m_collapse;
    QPushButton *m_uncheck;
    QTreeWidgetItem *m_datasetItem = nullptr;
    QTreeWidgetItem *m_columnsItem = nullptr;
    VerifyRuleSet m_rules;
    const Dataset *m_dataset = nullptr;
    mutable QHash<int, int> m_guessedTypes;
    bool m_loading = false;
};

// The option of kind VerifyRules: a VerifyRulesWidget over the columns of the option's input.
class VerifyRulesParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    VerifyRulesParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    VerifyRulesWidget *rulesWidget() const { return m_rules; }

private:
    VerifyRulesWidget *m_rules;
};
