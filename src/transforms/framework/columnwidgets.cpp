#include "transforms/framework/columnwidgets.h"

#include "transforms/framework/comparisonoperator.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

constexpr int IdRole = Qt::UserRole;

ColumnId idOfItem(const QListWidgetItem *item)
{
    return item ? columnIdFromVariant(item->data(IdRole)) : ColumnId();
}

bool datasetHolds(const Dataset *dataset, ColumnId id)
{
    return dataset && !id.isNull() && dataset->columnIndex(id) >= 0;
}

QPushButton *smallButton(const QString &text, const QString &toolTip, QWidget *parent)
{
    auto *button = new QPushButton(text, parent);
    button->setToolTip(toolTip);
    button->setAutoDefault(false);
    return button;
}

} // namespace

// ---------------------------------------------------------------------------------------------

SingleColumnFilteredParameterWidget::SingleColumnFilteredParameterWidget(Parameter *parameter,
                                                                         QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_combo(new ColumnComboBox(this))
{
    setToolTip(parameter->toolTip());
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_combo, 1);
    setFocusProxy(m_combo);
    m_combo->setNoneText(parameter->noneText());
    // One pick is the whole edit.
    connect(m_combo, &ColumnComboBox::columnChosen, this, [this] { commitChange(true); });
}

void SingleColumnFilteredParameterWidget::updateValue()
{
    resolvePending();
    m_combo->setDataset(parameter()->sourceDataset());
    m_combo->setCurrentColumnId(parameter()->toColumnId());
}

void SingleColumnFilteredParameterWidget::saveValue()
{
    parameter()->setColumnId(m_combo->currentColumnId());
}

// ---------------------------------------------------------------------------------------------

MultipleColumnsParameterWidget::MultipleColumnsParameterWidget(Parameter *parameter,
                                                               QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_table(new ColumnsTableWidget(this))
    , m_filter(new QLineEdit(this))
    , m_all(
          smallButton(QStringLiteral("All"), QStringLiteral("Check all the columns shown."), this))
    , m_none(smallButton(QStringLiteral("None"), QStringLiteral("Uncheck all the columns shown."),
                         this))
{
    setToolTip(parameter->toolTip());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *row = new QHBoxLayout;
    m_filter->setPlaceholderText(QStringLiteral("Filter columns"));
    m_filter->setClearButtonEnabled(true);
    row->addWidget(m_filter, 1);
    row->addWidget(m_all);
    row->addWidget(m_none);
    layout->addLayout(row);
    layout->addWidget(m_table, 1);

    connect(m_filter, &QLineEdit::textChanged, m_table, &ColumnsTableWidget::setFilterText);
    connect(m_table, &ColumnsTableWidget::columnToggled, this,
            &MultipleColumnsParameterWidget::onToggled);
    connect(m_all, &QPushButton::clicked, this, [this] { checkVisible(true); });
    connect(m_none, &QPushButton::clicked, this, [this] { checkVisible(false); });
}

void MultipleColumnsParameterWidget::updateValue()
{
    resolvePending();
    m_order = parameter()->toColumns();
    m_table->setDataset(parameter()->sourceDataset());
    m_table->setCheckedColumns(m_order);
    m_table->setFilterText(m_filter->text());
}

void MultipleColumnsParameterWidget::saveValue()
{
    if (parameter()->type() == ParameterType::MultipleColumnsOrdered) {
        parameter()->setColumns(m_order);
        return;
    }
    QList<ColumnId> ids = m_table->checkedColumns();
    const QList<ColumnId> listed = m_table->columnIds();
    for (const ColumnId id : qAsConst(m_order)) {
        if (!listed.contains(id))
            ids.append(id);
    }
    parameter()->setColumns(ids);
}

void MultipleColumnsParameterWidget::onToggled(ColumnId id, bool checked)
{
    m_order.removeAll(id);
    if (checked)
        m_order.append(id);
    // A user often checks several columns in a row: let the delay collect them.
    commitChange(false);
}

void MultipleColumnsParameterWidget::checkVisible(bool checked)
{
    const QList<ColumnId> changed = m_table->setVisibleChecked(checked);
    if (changed.isEmpty())
        return;
    for (const ColumnId id : changed) {
        m_order.removeAll(id);
        if (checked)
            m_order.append(id);
    }
    commitChange(false);
}

// ---------------------------------------------------------------------------------------------

SortColumnsParameterWidget::SortColumnsParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_available(new QListWidget(this))
    , m_sorted(new QListWidget(this))
    , m_add(smallButton(QStringLiteral(">"), QStringLiteral("Sort by the selected column."), this))
    , m_remove(smallButton(QStringLiteral("<"),
                           QStringLiteral("Don't sort by the selected column."), this))
    , m_up(smallButton(QStringLiteral("Up"), QStringLiteral("Sort by this column earlier."), this))
    , m_down(
          smallButton(QStringLiteral("Down"), QStringLiteral("Sort by this column later."), this))
    , m_direction(smallButton(QStringLiteral("Asc/Desc"),
                              QStringLiteral("Switch between ascending and descending order."),
                              this))
{
    setToolTip(parameter->toolTip());
    auto *layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new QLabel(QStringLiteral("Columns"), this), 0, 0);
    layout->addWidget(new QLabel(QStringLiteral("Sort by"), this), 0, 2);
    layout->addWidget(m_available, 1, 0);
    auto *middle = new QVBoxLayout;
    middle->addStretch(1);
    middle->addWidget(m_add);
    middle->addWidget(m_remove);
    middle->addStretch(1);
    layout->addLayout(middle, 1, 1);
    layout->addWidget(m_sorted, 1, 2);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_up);
    buttons->addWidget(m_down);
    buttons->addWidget(m_direction);
    buttons->addStretch(1);
    layout->addLayout(buttons, 2, 2);
    for (QPushButton *button : {m_add, m_remove})
        button->setFixedWidth(button->fontMetrics().horizontalAdvance(QStringLiteral("MM")) + 16);

    connect(m_add, &QPushButton::clicked, this, &SortColumnsParameterWidget::addCurrent);
    connect(m_remove, &QPushButton::clicked, this, &SortColumnsParameterWidget::removeCurrent);
    connect(m_up, &QPushButton::clicked, this, [this] { moveCurrent(-1); });
    connect(m_down, &QPushButton::clicked, this, [this] { moveCurrent(1); });
    connect(m_direction, &QPushButton::clicked, this, &SortColumnsParameterWidget::toggleDirection);
    connect(m_available, &QListWidget::itemDoubleClicked, this,
            &SortColumnsParameterWidget::addCurrent);
    connect(m_sorted, &QListWidget::itemDoubleClicked, this,
            &SortColumnsParameterWidget::toggleDirection);
    connect(m_available, &QListWidget::currentRowChanged, this,
            &SortColumnsParameterWidget::updateButtons);
    connect(m_sorted, &QListWidget::currentRowChanged, this,
            &SortColumnsParameterWidget::updateButtons);
}

void SortColumnsParameterWidget::updateValue()
{
    resolvePending();
    m_sort.clear();
    m_missing.clear();
    const Dataset *dataset = parameter()->sourceDataset();
    const QList<SortColumn> columns = parameter()->toSortColumns();
    for (const SortColumn &column : columns)
        (datasetHolds(dataset, column.id) ? m_sort : m_missing).append(column);
    fillLists(m_sorted->currentRow());
}

void SortColumnsParameterWidget::saveValue()
{
    parameter()->setSortColumns(m_sort + m_missing);
}

void SortColumnsParameterWidget::fillLists(int currentSortRow)
{
    const Dataset *dataset = parameter()->sourceDataset();
    const int availableRow = m_available->currentRow();
    const QSignalBlocker blockAvailable(m_available);
    const QSignalBlocker blockSorted(m_sorted);
    m_available->clear();
    m_sorted->clear();
    if (dataset) {
        QList<ColumnId> chosen;
        for (const SortColumn &column : qAsConst(m_sort))
            chosen.append(column.id);
        for (int c = 0; c < dataset->columnCount(); ++c) {
            const ColumnId id = dataset->columnId(c);
            if (chosen.contains(id))
                continue;
            auto *item = new QListWidgetItem(dataset->headerText(c), m_available);
            item->setData(IdRole, columnIdToVariant(id));
        }
        for (const SortColumn &column : qAsConst(m_sort)) {
            const QString arrow
                = column.ascending ? QStringLiteral("\u2191 ") : QStringLiteral("\u2193 ");
            const QString text = arrow + dataset->headerText(dataset->columnIndex(column.id));
            auto *item = new QListWidgetItem(text, m_sorted);
            item->setData(IdRole, columnIdToVariant(column.id));
            item->setToolTip(column.ascending ? QStringLiteral("Ascending")
                                              : QStringLiteral("Descending"));
        }
    }
    m_available->setCurrentRow(qMin(availableRow, m_available->count() - 1));
    m_sorted->setCurrentRow(qMin(currentSortRow, m_sorted->count() - 1));
    updateButtons();
}

void SortColumnsParameterWidget::addCurrent()
{
    const ColumnId id = idOfItem(m_available->currentItem());
    if (id.isNull())
        return;
    SortColumn column;
    column.id = id;
    m_sort.append(column);
    fillLists(m_sort.size() - 1);
    commitChange(false);
}

void SortColumnsParameterWidget::removeCurrent()
{
    const int row = m_sorted->currentRow();
    if (row < 0 || row >= m_sort.size())
        return;
    m_sort.removeAt(row);
    fillLists(qMin(row, m_sort.size() - 1));
    commitChange(false);
}

void SortColumnsParameterWidget::moveCurrent(int by)
{
    const int row = m_sorted->currentRow();
    const int to = row + by;
    if (row < 0 || to < 0 || to >= m_sort.size())
        return;
    m_sort.move(row, to);
    fillLists(to);
    commitChange(false);
}

void SortColumnsParameterWidget::toggleDirection()
{
    const int row = m_sorted->currentRow();
    if (row < 0 || row >= m_sort.size())
        return;
    m_sort[row].ascending = !m_sort.at(row).ascending;
    fillLists(row);
    commitChange(false);
}

void SortColumnsParameterWidget::updateButtons()
{
    const int row = m_sorted->currentRow();
    m_add->setEnabled(m_available->currentRow() >= 0);
    m_remove->setEnabled(row >= 0);
    m_up->setEnabled(row > 0);
    m_down->setEnabled(row >= 0 && row + 1 < m_sorted->count());
    m_direction->setEnabled(row >= 0);
}

// ---------------------------------------------------------------------------------------------

FilterColumnsParameterWidget::FilterColumnsParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_keep(new QComboBox(this))
    , m_match(new QComboBox(this))
    , m_table(new FilterColumnsTableWidget(this))
    , m_add(smallButton(QStringLiteral("Add"), QStringLiteral("Add a condition."), this))
    , m_remove(smallButton(QStringLiteral("Remove"),
                           QStringLiteral("Remove the selected condition."), this))
{
    setToolTip(parameter->toolTip());
    m_keep->addItems({QStringLiteral("Keep"), QStringLiteral("Remove")});
    m_match->addItems({QStringLiteral("all"), QStringLiteral("any")});
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *top = new QHBoxLayout;
    top->addWidget(m_keep);
    top->addWidget(new QLabel(QStringLiteral("rows where"), this));
    top->addWidget(m_match);
    top->addWidget(new QLabel(QStringLiteral("of these are true:"), this));
    top->addStretch(1);
    layout->addLayout(top);
    layout->addWidget(m_table, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_add);
    buttons->addWidget(m_remove);
    buttons->addStretch(1);
    layout->addLayout(buttons);

    const auto commit = [this] {
        commitChange(false);
    };
    connect(m_keep, QOverload<int>::of(&QComboBox::activated), this, commit);
    connect(m_match, QOverload<int>::of(&QComboBox::activated), this, commit);
    connect(m_table, &FilterColumnsTableWidget::termsEdited, this, commit);
    connect(m_table, &FilterColumnsTableWidget::editing, this,
            &FilterColumnsParameterWidget::userInteraction);
    connect(m_add, &QPushButton::clicked, m_table, &FilterColumnsTableWidget::addTerm);
    connect(m_remove, &QPushButton::clicked, m_table, &FilterColumnsTableWidget::removeCurrentTerm);
}

void FilterColumnsParameterWidget::updateValue()
{
    resolvePending();
    const FilterTerms terms = parameter()->toFilterTerms();
    const QSignalBlocker blockKeep(m_keep);
    const QSignalBlocker blockMatch(m_match);
    m_keep->setCurrentIndex(terms.keep ? 0 : 1);
    m_match->setCurrentIndex(terms.matchAny ? 1 : 0);
    m_table->setDataset(parameter()->sourceDataset());
    m_table->setTerms(terms.terms);
}

void FilterColumnsParameterWidget::saveValue()
{
    FilterTerms terms;
    terms.keep = m_keep->currentIndex() == 0;
    terms.matchAny = m_match->currentIndex() == 1;
    terms.terms = m_table->terms();
    parameter()->setFilterTerms(terms);
}

// ---------------------------------------------------------------------------------------------

ReorderColumnsParameterWidget::ReorderColumnsParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_list(new QListWidget(this))
    , m_top(smallButton(QStringLiteral("Top"), QStringLiteral("Move to the top."), this))
    , m_up(smallButton(QStringLiteral("Up"), QStringLiteral("Move up one place."), this))
    , m_down(smallButton(QStringLiteral("Down"), QStringLiteral("Move down one place."), this))
    , m_bottom(smallButton(QStringLiteral("Bottom"), QStringLiteral("Move to the bottom."), this))
{
    setToolTip(parameter->toolTip());
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_list, 1);
    auto *buttons = new QVBoxLayout;
    for (QPushButton *button : {m_top, m_up, m_down, m_bottom})
        buttons->addWidget(button);
    buttons->addStretch(1);
    layout->addLayout(buttons);

    m_list->setDragDropMode(QAbstractItemView::InternalMove);
    m_list->setDefaultDropAction(Qt::MoveAction);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    connect(m_list->model(), &QAbstractItemModel::rowsMoved, this, [this] {
        if (!m_loading)
            commitChange(false);
    });
    connect(m_top, &QPushButton::clicked, this, [this] { moveCurrent(0); });
    connect(m_up, &QPushButton::clicked, this,
            [this] { moveCurrent(qMax(0, m_list->currentRow() - 1)); });
    connect(m_down, &QPushButton::clicked, this, [this] { moveCurrent(m_list->currentRow() + 1); });
    connect(m_bottom, &QPushButton::clicked, this, [this] { moveCurrent(m_list->count() - 1); });
}

void ReorderColumnsParameterWidget::updateValue()
{
    resolvePending();
    const Dataset *dataset = parameter()->sourceDataset();
    const QList<ColumnId> value = parameter()->toColumns();
    m_wasEmpty = value.isEmpty();
    m_missing.clear();
    QList<ColumnId> order;
    for (const ColumnId id : value)
        (datasetHolds(dataset, id) ? order : m_missing).append(id);
    // Columns that arrived after the order was made go at the end, in the dataset's order.
    if (dataset) {
        for (int c = 0; c < dataset->columnCount(); ++c) {
            if (!order.contains(dataset->columnId(c)))
                order.append(dataset->columnId(c));
        }
    }
    const int row = m_list->currentRow();
    m_loading = true;
    m_list->clear();
    for (const ColumnId id : qAsConst(order)) {
        auto *item = new QListWidgetItem(dataset->headerText(dataset->columnIndex(id)), m_list);
        item->setData(IdRole, columnIdToVariant(id));
    }
    m_list->setCurrentRow(qMin(row, m_list->count() - 1));
    m_loading = false;
}

QList<ColumnId> ReorderColumnsParameterWidget::listedIds() const
{
    QList<ColumnId> ids;
    for (int r = 0; r < m_list->count(); ++r)
        ids.append(idOfItem(m_list->item(r)));
    return ids;
}

void ReorderColumnsParameterWidget::saveValue()
{
    const QList<ColumnId> ids = listedIds();
    // An option never ordered stays empty until the user moves something.
    if (m_wasEmpty && m_missing.isEmpty()) {
        const Dataset *dataset = parameter()->sourceDataset();
        if (!dataset || ids == dataset->columnIds())
            return;
    }
    m_wasEmpty = false;
    parameter()->setColumns(ids + m_missing);
}

void ReorderColumnsParameterWidget::moveCurrent(int to)
{
    const int row = m_list->currentRow();
    if (row < 0 || to < 0 || to >= m_list->count() || to == row)
        return;
    m_loading = true;
    QListWidgetItem *item = m_list->takeItem(row);
    m_list->insertItem(to, item);
    m_list->setCurrentRow(to);
    m_loading = false;
    commitChange(false);
}

// ---------------------------------------------------------------------------------------------

SplitRowsParameterWidget::SplitRowsParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_byName(new QRadioButton(QStringLiteral("By matching column names"), this))
    , m_automatic(new QRadioButton(QStringLiteral("Automatically by column names"), this))
    , m_every(new QRadioButton(QStringLiteral("Every"), this))
    , m_everyBox(new QSpinBox(this))
    , m_column(new ColumnComboBox(this))
    , m_timesBox(new QSpinBox(this))
    , m_text(new QLineEdit(this))
{
    setToolTip(parameter->toolTip());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_byName);
    layout->addWidget(m_automatic);
    auto *every = new QHBoxLayout;
    every->addWidget(m_every);
    every->addWidget(m_everyBox);
    every->addWidget(new QLabel(QStringLiteral("column(s) from"), this));
    every->addWidget(m_column, 1);
    every->addWidget(m_timesBox);
    every->addWidget(new QLabel(QStringLiteral("times"), this));
    layout->addLayout(every);
    auto *name = new QHBoxLayout;
    name->addWidget(new QLabel(QStringLiteral("Group column name:"), this));
    name->addWidget(m_text, 1);
    layout->addLayout(name);

    m_everyBox->setRange(1, 9999);
    m_timesBox->setRange(0, 9999);
    m_column->setNoneText(parameter->noneText());
    m_text->setPlaceholderText(QStringLiteral("No group column"));

    for (QRadioButton *radio : {m_byName, m_automatic, m_every}) {
        connect(radio, &QRadioButton::clicked, this, [this] {
            updateEveryControls();
            commitChange(true);
        });
    }
    const auto typed = [this] {
        if (!m_loading)
            commitChange(false);
    };
    connect(m_everyBox, QOverload<int>::of(&QSpinBox::valueChanged), this, typed);
    connect(m_timesBox, QOverload<int>::of(&QSpinBox::valueChanged), this, typed);
    connect(m_text, &QLineEdit::textEdited, this, typed);
    connect(m_text, &QLineEdit::returnPressed, this, &SplitRowsParameterWidget::processNow);
    connect(m_column, &ColumnComboBox::columnChosen, this, [this] { commitChange(true); });
}

void SplitRowsParameterWidget::updateValue()
{
    resolvePending();
    const SplitRowsTerms terms = parameter()->toSplitRowsTerms();
    m_loading = true;
    (terms.splitByName ? m_byName : terms.automatic ? m_automatic : m_every)->setChecked(true);
    m_everyBox->setValue(terms.every);
    m_timesBox->setValue(terms.times);
    m_column->setDataset(parameter()->sourceDataset());
    m_column->setCurrentColumnId(terms.nameColumn);
    if (m_text->text() != terms.text)
        m_text->setText(terms.text);
    m_loading = false;
    updateEveryControls();
}

void SplitRowsParameterWidget::saveValue()
{
    SplitRowsTerms terms;
    terms.splitByName = m_byName->isChecked();
    terms.automatic = m_automatic->isChecked();
    terms.every = m_everyBox->value();
    terms.times = m_timesBox->value();
    terms.nameColumn = m_column->currentColumnId();
    terms.text = m_text->text();
    parameter()->setSplitRowsTerms(terms);
}

void SplitRowsParameterWidget::updateEnabled(bool enabled)
{
    setEnabled(enabled);
    updateEveryControls();
}

void SplitRowsParameterWidget::updateEveryControls()
{
    const bool on = m_every->isChecked();
    m_everyBox->setEnabled(on);
    m_column->setEnabled(on);
    m_timesBox->setEnabled(on);
}
