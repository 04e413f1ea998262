#include "transforms/framework/verifyruleswidget.h"

#include "data/valueinterpretation.h"

#include <QComboBox>
#include <QDateEdit>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <limits>

using namespace VerifyRules;

namespace {

constexpr int KindRole = Qt::UserRole;
constexpr int RuleRole = Qt::UserRole + 1;
constexpr int ColumnRole = Qt::UserRole + 2;
constexpr int PopulatedRole = Qt::UserRole + 3;

// The rule of a table in a rule list, or null.
const VerifyRule *findRule(const QList<VerifyRule> &rules, int number)
{
    for (const VerifyRule &rule : rules) {
        if (rule.number == number)
            return &rule;
    }
    return nullptr;
}

QString activeSummary(int active)
{
    if (active == 0)
        return QString();
    return QStringLiteral(" [%1 %2 active]")
        .arg(QString::number(active),
             active == 1 ? QStringLiteral("rule") : QStringLiteral("rules"));
}

QPushButton *toolButton(const QString &text, const QString &toolTip, QWidget *parent)
{
    auto *button = new QPushButton(text, parent);
    button->setToolTip(toolTip);
    button->setAutoDefault(false);
    return button;
}

} // namespace

VerifyRulesWidget::VerifyRulesWidget(QWidget *parent)
    : QWidget(parent)
    , m_tree(new QTreeWidget(this))
    , m_count(new QLabel(this))
    , m_filter(new QLineEdit(this))
{
    m_expand
        = toolButton(QStringLiteral("Expand"),
                     QStringLiteral("Expand all.\nCould be slow if there are many columns."), this);
    m_collapse = toolButton(QStringLiteral("Collapse"),
                            QStringLiteral("Collapse so that rules are hidden."), this);
    m_uncheck = toolButton(QStringLiteral("Uncheck"), QStringLiteral("Uncheck all."), this);
    m_count->setToolTip(QStringLiteral("The total number of dataset and column rules active."));
    m_filter->setPlaceholderText(QStringLiteral("Filter columns"));
    m_filter->setClearButtonEnabled(true);
    m_filter->setToolTip(QStringLiteral(
        "Temporarily hide columns whose name do not contains this text.\nSensitive to whitespace, "
        "but not case. Does *not* change the dataset."));

    auto *bar = new QHBoxLayout;
    bar->setContentsMargins(0, 0, 0, 0);
    bar->addWidget(m_expand);
    bar->addWidget(m_collapse);
    bar->addWidget(m_uncheck);
    bar->addWidget(m_count, 1);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(bar);
    layout->addWidget(m_filter);
    layout->addWidget(m_tree, 1);

    m_tree->setColumnCount(3);
    m_tree->setHeaderLabels(
        {QStringLiteral("Rule"), QStringLiteral("Value"), QStringLiteral("Severity")});
    // The value takes the room that is left; a name too long for its column shows whole in
    // its tip, and the column can be widened.
    m_tree->setIndentation(12);
    m_tree->header()->setSectionResizeMode(RuleColumn, QHeaderView::Interactive);
    // Wide enough for the longest rule name of a column, past its indent and check box.
    const int longest = m_tree->fontMetrics().horizontalAdvance(columnRuleName(NoOuterWhitespace)
                                                                + QLatin1Char(':'));
    m_tree->setColumnWidth(RuleColumn, longest + 2 * m_tree->indentation() + 40);
    m_tree->header()->setSectionResizeMode(ValueColumn, QHeaderView::Stretch);
    m_tree->header()->setSectionResizeMode(SeverityColumn, QHeaderView::ResizeToContents);
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setMinimumSectionSize(80);
    m_tree->setSelectionMode(QAbstractItemView::NoSelection);
    m_tree->setMinimumHeight(280);

    connect(m_tree, &QTreeWidget::itemChanged, this, &VerifyRulesWidget::onItemChanged);
    connect(m_tree, &QTreeWidget::itemExpanded, this, &VerifyRulesWidget::onItemExpanded);
    connect(m_filter, &QLineEdit::textChanged, this, &VerifyRulesWidget::onFilterChanged);
    connect(m_expand, &QPushButton::clicked, this, &VerifyRulesWidget::expandAll);
    connect(m_collapse, &QPushButton::clicked, this, &VerifyRulesWidget::collapseAll);
    connect(m_uncheck, &QPushButton::clicked, this, &VerifyRulesWidget::uncheckAll);
    refreshTexts();
}

void VerifyRulesWidget::setRules(const VerifyRuleSet &rules, const Dataset *dataset)
{
    // The columns the user had open stay open when the input runs again.
    QSet<ColumnId> expanded;
    for (int c = 0; m_columnsItem && c < m_columnsItem->childCount(); ++c) {
        if (m_columnsItem->child(c)->isExpanded())
            expanded.insert(columnIdOf(m_columnsItem->child(c)));
    }
    const bool firstTime = !m_datasetItem;
    const bool datasetOpen = firstTime || m_datasetItem->isExpanded();

    m_loading = true;
    m_rules = rules;
    m_dataset = dataset;
    m_guessedTypes.clear();
    m_tree->clear();
    m_datasetItem = new QTreeWidgetItem(m_tree, {QStringLiteral("Dataset")});
    m_datasetItem->setData(RuleColumn, KindRole, DatasetItem);
    m_datasetItem->setToolTip(RuleColumn, QStringLiteral("Rules that apply to the whole dataset"));
    m_datasetItem->setFirstColumnSpanned(true);
    for (int rule = 0; rule < DatasetRuleCount; ++rule)
        addRuleLine(m_datasetItem, rule, true, ColumnId());
    m_columnsItem = new QTreeWidgetItem(m_tree);
    m_columnsItem->setData(RuleColumn, KindRole, ColumnsItem);
    m_columnsItem->setToolTip(RuleColumn, QStringLiteral("Rules that apply per column"));
    m_columnsItem->setFirstColumnSpanned(true);
    buildColumns();
    m_datasetItem->setExpanded(datasetOpen);
    m_columnsItem->setExpanded(true);
    for (int c = 0; c < m_columnsItem->childCount(); ++c) {
        const ColumnId id = columnIdOf(m_columnsItem->child(c));
        if (expanded.contains(id) || !m_rules.activeRules(id).isEmpty())
            m_columnsItem->child(c)->setExpanded(true);
    }
    onFilterChanged(m_filter->text());
    refreshTexts();
    m_loading = false;
}

void VerifyRulesWidget::buildColumns()
{
    const int count = m_dataset ? m_dataset->columnCount() : 0;
    for (int c = 0; c < count; ++c) {
        auto *item = new QTreeWidgetItem(m_columnsItem);
        item->setData(RuleColumn, KindRole, ColumnItem);
        item->setData(RuleColumn, ColumnRole, c);
        item->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
        item->setFirstColumnSpanned(true);
    }
}

QTreeWidgetItem *VerifyRulesWidget::columnItem(int column) const
{
    return m_columnsItem ? m_columnsItem->child(column) : nullptr;
}

ColumnId VerifyRulesWidget::columnIdOf(const QTreeWidgetItem *item) const
{
    const int c = item->data(RuleColumn, ColumnRole).toInt();
    return m_dataset ? m_dataset->columnId(c) : ColumnId();
}

int VerifyRulesWidget::guessedType(const Dataset &dataset, int column)
{
    QString format;
    const int kind = dataset.columnKind(column, dateFormats(), &format);
    if (kind == 3)
        return Date;
    if (kind != 1)
        return Text;
    const int rows = qMin(dataset.rowCount(), 100);
    for (int r = 0; r < rows; ++r) {
        const QString &cell = dataset.cell(r, column);
        bool ok = false;
        if (!cell.trimmed().isEmpty() && (toLongLong(cell, false, true, &ok), !ok))
            return Real;
    }
    return Integer;
}

int VerifyRulesWidget::shownType(int column) const
{
    if (const VerifyColumn *entry = m_rules.column(m_dataset->columnId(column)))
        return entry->type;
    auto found = m_guessedTypes.constFind(column);
    if (found == m_guessedTypes.constEnd())
        found = m_guessedTypes.insert(column, guessedType(*m_dataset, column));
    return found.value();
}

void VerifyRulesWidget::populateColumn(QTreeWidgetItem *columnItem)
{
    if (columnItem->data(RuleColumn, PopulatedRole).toBool())
        return;
    const bool wasLoading = m_loading;
    m_loading = true;
    columnItem->setData(RuleColumn, PopulatedRole, true);
    columnItem->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicatorWhenChildless);
    const int c = columnItem->data(RuleColumn, ColumnRole).toInt();
    const ColumnId id = m_dataset->columnId(c);

    // The type's name is longer than a value, so its chooser sits beside its label.
    auto *typeItem = new QTreeWidgetItem(columnItem);
    typeItem->setData(RuleColumn, KindRole, TypeItem);
    typeItem->setData(RuleColumn, ColumnRole, c);
    typeItem->setFirstColumnSpanned(true);
    auto *typeLine = new QWidget;
    auto *typeLayout = new QHBoxLayout(typeLine);
    typeLayout->setContentsMargins(0, 0, 0, 0);
    typeLayout->addWidget(new QLabel(QStringLiteral("Column type:")));
    auto *box = new QComboBox;
    typeLayout->addWidget(box);
    typeLayout->addStretch(1);
    box->addItems(columnTypeNames());
    box->setToolTip(QStringLiteral("Set the column type to change the verification rules "
                                   "available."));
    for (int type = 0; type < ColumnTypeCount; ++type)
        box->setItemData(type, columnTypesToolTip(), Qt::ToolTipRole);
    const int type = shownType(c);
    box->setCurrentIndex(type);
    m_tree->setItemWidget(typeItem, RuleColumn, typeLine);
    connect(box, QOverload<int>::of(&QComboBox::activated), this,
            [this, columnItem](int chosen) { onTypeChosen(columnItem, chosen); });

    for (int rule : rulesOfType(type))
        addRuleLine(columnItem, rule, false, id);
    m_loading = wasLoading;
}

void VerifyRulesWidget::addRuleLine(QTreeWidgetItem *parent, int rule, bool datasetRule,
                                    ColumnId column)
{
    const int kind = datasetRule ? datasetRuleKind(rule) : columnRuleKind(rule);
    const QString name = datasetRule ? datasetRuleName(rule) : columnRuleName(rule);
    const QString tip = datasetRule ? datasetRuleToolTip(rule) : columnRuleToolTip(rule);
    const VerifyColumn *entry = datasetRule ? nullptr : m_rules.column(column);
    const VerifyRule *existing = datasetRule ? findRule(m_rules.datasetRules(), rule)
                                             : (entry ? findRule(entry->rules, rule) : nullptr);

    auto *item = new QTreeWidgetItem(parent);
    item->setText(RuleColumn, kind == NoValue ? name : name + QLatin1Char(':'));
    item->setToolTip(RuleColumn, tip);
    item->setData(RuleColumn, KindRole, datasetRule ? DatasetRuleItem : RuleItem);
    item->setData(RuleColumn, RuleRole, rule);
    item->setData(RuleColumn, ColumnRole, parent->data(RuleColumn, ColumnRole));
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(RuleColumn, existing && existing->active ? Qt::Checked : Qt::Unchecked);

    if (kind != NoValue) {
        QWidget *editor = makeValueEditor(kind, existing ? existing->value : defaultValue(kind));
        editor->setToolTip(tip);
        m_tree->setItemWidget(item, ValueColumn, editor);
        if (auto *line = qobject_cast<QLineEdit *>(editor))
            connect(line, &QLineEdit::textEdited, this,
                    [this, item](const QString &text) { setValue(item, text); });
        else if (auto *real = qobject_cast<QDoubleSpinBox *>(editor))
            connect(real, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                    [this, item](double value) { setValue(item, value); });
        else if (auto *integer = qobject_cast<QSpinBox *>(editor))
            connect(integer, QOverload<int>::of(&QSpinBox::valueChanged), this,
                    [this, item](int value) { setValue(item, value); });
        else if (auto *date = qobject_cast<QDateEdit *>(editor))
            connect(date, &QDateEdit::dateChanged, this,
                    [this, item](const QDate &value) { setValue(item, value); });
    }

    auto *severity = new QComboBox;
    severity->addItems(severityNames());
    severity->setEnabled(item->checkState(RuleColumn) == Qt::Checked);
    if (QWidget *editor = m_tree->itemWidget(item, ValueColumn))
        editor->setEnabled(item->checkState(RuleColumn) == Qt::Checked);
    severity->setCurrentIndex(existing ? existing->severity : Warning);
    severity->setToolTip(QStringLiteral("The severity of a fail for this verification rule."));
    m_tree->setItemWidget(item, SeverityColumn, severity);
    connect(severity, QOverload<int>::of(&QComboBox::activated), this,
            [this, item](int chosen) { setSeverity(item, chosen); });
}

QWidget *VerifyRulesWidget::makeValueEditor(int kind, const QVariant &value)
{
    switch (kind) {
    case RealValue: {
        auto *box = new QDoubleSpinBox;
        box->setRange(-1e15, 1e15);
        box->setDecimals(6);
        box->setValue(value.toDouble());
        return box;
    }
    case IntValue:
    case CountValue: {
        auto *box = new QSpinBox;
        box->setRange(kind == CountValue ? 0 : std::numeric_limits<int>::min(),
                      std::numeric_limits<int>::max());
        box->setValue(value.toInt());
        return box;
    }
    case DateValue: {
        auto *edit = new QDateEdit;
        edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
        edit->setCalendarPopup(true);
        edit->setDate(value.toDate());
        return edit;
    }
    default: {
        auto *edit = new QLineEdit;
        edit->setText(value.toString());
        if (kind == ListValue)
            edit->setPlaceholderText(QStringLiteral("value1,value2,..."));
        return edit;
    }
    }
}

QTreeWidgetItem *VerifyRulesWidget::ruleItem(int column, int rule)
{
    QTreeWidgetItem *parent = column < 0 ? m_datasetItem : columnItem(column);
    if (!parent)
        return nullptr;
    if (column >= 0)
        populateColumn(parent);
    for (int i = 0; i < parent->childCount(); ++i) {
        QTreeWidgetItem *child = parent->child(i);
        const int kind = child->data(RuleColumn, KindRole).toInt();
        if ((kind == RuleItem || kind == DatasetRuleItem)
            && child->data(RuleColumn, RuleRole).toInt() == rule)
            return child;
    }
    return nullptr;
}

QComboBox *VerifyRulesWidget::typeBox(int column)
{
    QTreeWidgetItem *parent = columnItem(column);
    if (!parent)
        return nullptr;
    populateColumn(parent);
    QWidget *line = m_tree->itemWidget(parent->child(0), RuleColumn);
    return line ? line->findChild<QComboBox *>() : nullptr;
}

QComboBox *VerifyRulesWidget::severityBox(QTreeWidgetItem *item) const
{
    return item ? qobject_cast<QComboBox *>(m_tree->itemWidget(item, SeverityColumn)) : nullptr;
}

QWidget *VerifyRulesWidget::valueEditor(QTreeWidgetItem *item) const
{
    return item ? m_tree->itemWidget(item, ValueColumn) : nullptr;
}

VerifyRule &VerifyRulesWidget::ruleOf(QTreeWidgetItem *item)
{
    const int rule = item->data(RuleColumn, RuleRole).toInt();
    if (item->data(RuleColumn, KindRole).toInt() == DatasetRuleItem)
        return m_rules.datasetRule(rule);
    const ColumnId id = columnIdOf(item);
    // A column edited for the first time keeps the type it was shown with.
    if (!m_rules.column(id))
        m_rules.setColumnType(id, shownType(item->data(RuleColumn, ColumnRole).toInt()));
    return m_rules.columnRule(id, rule);
}

void VerifyRulesWidget::setValue(QTreeWidgetItem *item, const QVariant &value)
{
    if (m_loading)
        return;
    ruleOf(item).value = value;
    edited();
}

void VerifyRulesWidget::setSeverity(QTreeWidgetItem *item, int severity)
{
    if (m_loading)
        return;
    ruleOf(item).severity = severity;
    edited();
}

void VerifyRulesWidget::onItemChanged(QTreeWidgetItem *item, int column)
{
    if (m_loading || column != RuleColumn)
        return;
    const int kind = item->data(RuleColumn, KindRole).toInt();
    if (kind != RuleItem && kind != DatasetRuleItem)
        return;
    const bool checked = item->checkState(RuleColumn) == Qt::Checked;
    VerifyRule &rule = ruleOf(item);
    if (rule.active == checked)
        return;
    if (kind == DatasetRuleItem) {
        rule.active = checked;
        enableEditors(item);
    } else {
        m_rules.setColumnRuleActive(columnIdOf(item), rule.number, checked);
        refreshChecks(item->parent());
    }
    edited();
}

void VerifyRulesWidget::onItemExpanded(QTreeWidgetItem *item)
{
    if (item->data(RuleColumn, KindRole).toInt() != ColumnItem)
        return;
    populateColumn(item);
    if (!m_loading)
        emit editing();
}

void VerifyRulesWidget::onTypeChosen(QTreeWidgetItem *columnItem, int type)
{
    const int c = columnItem->data(RuleColumn, ColumnRole).toInt();
    const ColumnId id = m_dataset->columnId(c);
    if (shownType(c) == type && m_rules.column(id))
        return;
    m_rules.setColumnType(id, type);
    m_loading = true;
    // The first child is the type line, which stays.
    while (columnItem->childCount() > 1)
        delete columnItem->takeChild(1);
    for (int rule : rulesOfType(type))
        addRuleLine(columnItem, rule, false, id);
    m_loading = false;
    edited();
}

// The value and severity of a rule are edited once it is ticked, and kept when it is not.
void VerifyRulesWidget::enableEditors(QTreeWidgetItem *item)
{
    const bool checked = item->checkState(RuleColumn) == Qt::Checked;
    for (int column : {int(ValueColumn), int(SeverityColumn)}) {
        if (QWidget *editor = m_tree->itemWidget(item, column))
            editor->setEnabled(checked);
    }
}

void VerifyRulesWidget::refreshChecks(QTreeWidgetItem *parent)
{
    const VerifyColumn *entry = m_rules.column(columnIdOf(parent));
    m_loading = true;
    for (int i = 0; i < parent->childCount(); ++i) {
        QTreeWidgetItem *child = parent->child(i);
        if (child->data(RuleColumn, KindRole).toInt() != RuleItem)
            continue;
        const VerifyRule *rule
            = entry ? findRule(entry->rules, child->data(RuleColumn, RuleRole).toInt()) : nullptr;
        child->setCheckState(RuleColumn, rule && rule->active ? Qt::Checked : Qt::Unchecked);
        enableEditors(child);
    }
    m_loading = false;
}

void VerifyRulesWidget::refreshTexts()
{
    const bool wasLoading = m_loading;
    m_loading = true;
    const int datasetRules = m_rules.activeDatasetRuleCount();
    int columnRules = 0;
    const int columns = m_columnsItem ? m_columnsItem->childCount() : 0;
    for (int c = 0; c < columns; ++c) {
        QTreeWidgetItem *item = m_columnsItem->child(c);
        const int active = m_rules.activeRules(columnIdOf(item)).size();
        columnRules += active;
        item->setText(
            RuleColumn,
            QStringLiteral("Column %1: %2%3")
                .arg(QString::number(c + 1), m_dataset->headerText(c), activeSummary(active)));
        QFont font = item->font(RuleColumn);
        font.setBold(active > 0);
        item->setFont(RuleColumn, font);
    }
    if (m_datasetItem)
        m_datasetItem->setText(RuleColumn, QStringLiteral("Dataset") + activeSummary(datasetRules));
    if (m_columnsItem)
        m_columnsItem->setText(RuleColumn, QStringLiteral("Columns [%1]").arg(columns));
    const int total = datasetRules + columnRules;
    m_count->setText(QStringLiteral("%1 %2 checked")
                         .arg(QString::number(total),
                              total == 1 ? QStringLiteral("rule") : QStringLiteral("rules")));
    m_loading = wasLoading;
}

void VerifyRulesWidget::onFilterChanged(const QString &text)
{
    const int columns = m_columnsItem ? m_columnsItem->childCount() : 0;
    for (int c = 0; c < columns; ++c)
        m_columnsItem->child(c)->setHidden(
            !m_dataset->headerText(c).contains(text, Qt::CaseInsensitive));
    if (!m_loading)
        emit editing();
}

void VerifyRulesWidget::expandAll()
{
    m_tree->expandAll();
}

void VerifyRulesWidget::collapseAll()
{
    m_tree->collapseAll();
    if (m_columnsItem)
        m_columnsItem->setExpanded(true);
}

void VerifyRulesWidget::uncheckAll()
{
    m_rules.clearActive();
    m_loading = true;
    for (int i = 0; i < m_datasetItem->childCount(); ++i) {
        m_datasetItem->child(i)->setCheckState(RuleColumn, Qt::Unchecked);
        enableEditors(m_datasetItem->child(i));
    }
    m_loading = false;
    for (int c = 0; m_columnsItem && c < m_columnsItem->childCount(); ++c)
        refreshChecks(m_columnsItem->child(c));
    edited();
}

void VerifyRulesWidget::edited()
{
    refreshTexts();
    emit rulesEdited();
}

// ---------------------------------------------------------------------------------------------

VerifyRulesParameterWidget::VerifyRulesParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_rules(new VerifyRulesWidget(this))
{
    setToolTip(parameter->toolTip());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_rules);
    connect(m_rules, &VerifyRulesWidget::rulesEdited, this, [this] { commitChange(false); });
    connect(m_rules, &VerifyRulesWidget::editing, this, [this] { emitUserInteraction(); });
}

void VerifyRulesParameterWidget::updateValue()
{
    resolvePending();
    m_rules->setRules(VerifyRuleSet::fromVariant(parameter()->value()),
                      parameter()->sourceDataset());
}

void VerifyRulesParameterWidget::saveValue()
{
    parameter()->setValue(m_rules->rules().toVariant());
}
