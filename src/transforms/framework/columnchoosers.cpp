#include "transforms/framework/columnchoosers.h"

#include "transforms/framework/comparisonoperator.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QFontDatabase>
#include <QHeaderView>
#include <QLineEdit>
#include <QSignalBlocker>

namespace {

constexpr int IdRole = Qt::UserRole;

} // namespace

// ---------------------------------------------------------------------------------------------

ColumnComboBox::ColumnComboBox(QWidget *parent)
    : QComboBox(parent)
{
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(12);
    completer()->setCompletionMode(QCompleter::PopupCompletion);
    completer()->setFilterMode(Qt::MatchContains);
    completer()->setCaseSensitivity(Qt::CaseInsensitive);
    connect(this, QOverload<int>::of(&QComboBox::activated), this, &ColumnComboBox::onActivated);
    // Typed text that names no column gives way to the chosen name again.
    connect(lineEdit(), &QLineEdit::editingFinished, this, &ColumnComboBox::restoreText);
}

void ColumnComboBox::setNoneText(const QString &text)
{
    m_noneText = text;
}

void ColumnComboBox::setDataset(const Dataset *dataset)
{
    const ColumnId current = currentColumnId();
    const QSignalBlocker blocker(this);
    clear();
    if (dataset && dataset->columnCount() > 0) {
        if (!m_noneText.isEmpty())
            addItem(m_noneText, columnIdToVariant(ColumnId()));
        const QStringList names = dataset->headers();
        for (int c = 0; c < names.size(); ++c)
            addItem(names.at(c), columnIdToVariant(dataset->columnId(c)));
    }
    setCurrentColumnId(current);
}

ColumnId ColumnComboBox::currentColumnId() const
{
    if (!m_heldId.isNull())
        return m_heldId;
    return currentIndex() >= 0 ? columnIdFromVariant(currentData()) : ColumnId();
}

void ColumnComboBox::setCurrentColumnId(ColumnId id)
{
    const QSignalBlocker blocker(this);
    int index = -1;
    for (int i = 0; i < count(); ++i) {
        if (columnIdFromVariant(itemData(i)) == id) {
            index = i;
            break;
        }
    }
    m_heldId = index < 0 ? id : ColumnId();
    if (index < 0 && !m_noneText.isEmpty() && count() > 0)
        index = 0;
    setCurrentIndex(index);
    restoreText();
}

void ColumnComboBox::onActivated(int index)
{
    Q_UNUSED(index)
    m_heldId = ColumnId();
    emit columnChosen();
}

void ColumnComboBox::restoreText()
{
    const QString text = currentIndex() >= 0 ? itemText(currentIndex()) : QString();
    if (lineEdit()->text() != text)
        lineEdit()->setText(text);
}

// ---------------------------------------------------------------------------------------------

ColumnsTableWidget::ColumnsTableWidget(QWidget *parent)
    : QTableWidget(parent)
{
    setColumnCount(1);
    setHorizontalHeaderLabels({QStringLiteral("Column")});
    horizontalHeader()->setStretchLastSection(true);
    horizontalHeader()->setVisible(false);
    verticalHeader()->setVisible(false);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setShowGrid(false);
    setAlternatingRowColors(true);
    connect(this, &QTableWidget::itemChanged, this, [this](QTableWidgetItem *item) {
        if (!m_loading)
            emit columnToggled(columnIdFromVariant(item->data(IdRole)),
                               item->checkState() == Qt::Checked);
    });
}

void ColumnsTableWidget::setDataset(const Dataset *dataset)
{
    const QList<ColumnId> checked = checkedColumns();
    m_loading = true;
    setRowCount(0);
    if (dataset) {
        const QStringList names = dataset->headers();
        setRowCount(names.size());
        for (int c = 0; c < names.size(); ++c) {
            auto *item = new QTableWidgetItem(names.at(c));
            item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
            item->setData(IdRole, columnIdToVariant(dataset->columnId(c)));
            item->setCheckState(checked.contains(dataset->columnId(c)) ? Qt::Checked
                                                                       : Qt::Unchecked);
            setItem(c, 0, item);
        }
    }
    m_loading = false;
}

QList<ColumnId> ColumnsTableWidget::columnIds() const
{
    QList<ColumnId> ids;
    ids.reserve(rowCount());
    for (int r = 0; r < rowCount(); ++r)
        ids.append(columnIdFromVariant(item(r, 0)->data(IdRole)));
    return ids;
}

QList<ColumnId> ColumnsTableWidget::checkedColumns() const
{
    QList<ColumnId> ids;
    for (int r = 0; r < rowCount(); ++r) {
        if (item(r, 0)->checkState() == Qt::Checked)
            ids.append(columnIdFromVariant(item(r, 0)->data(IdRole)));
    }
    return ids;
}

void ColumnsTableWidget::setCheckedColumns(const QList<ColumnId> &ids)
{
    m_loading = true;
    for (int r = 0; r < rowCount(); ++r) {
        QTableWidgetItem *cell = item(r, 0);
        const bool on = ids.contains(columnIdFromVariant(cell->data(IdRole)));
        cell->setCheckState(on ? Qt::Checked : Qt::Unchecked);
    }
    m_loading = false;
}

bool ColumnsTableWidget::isChecked(ColumnId id) const
{
    const int row = rowOf(id);
    return row >= 0 && item(row, 0)->checkState() == Qt::Checked;
}

int ColumnsTableWidget::rowOf(ColumnId id) const
{
    for (int r = 0; r < rowCount(); ++r) {
        if (columnIdFromVariant(item(r, 0)->data(IdRole)) == id)
            return r;
    }
    return -1;
}

void ColumnsTableWidget::setFilterText(const QString &text)
{
    const QString wanted = text.trimmed();
    for (int r = 0; r < rowCount(); ++r)
        setRowHidden(r, !item(r, 0)->text().contains(wanted, Qt::CaseInsensitive));
}

QList<ColumnId> ColumnsTableWidget::setVisibleChecked(bool checked)
{
    QList<ColumnId> changed;
    const Qt::CheckState state = checked ? Qt::Checked : Qt::Unchecked;
    m_loading = true;
    for (int r = 0; r < rowCount(); ++r) {
        QTableWidgetItem *cell = item(r, 0);
        if (isRowHidden(r) || cell->checkState() == state)
            continue;
        cell->setCheckState(state);
        changed.append(columnIdFromVariant(cell->data(IdRole)));
    }
    m_loading = false;
    return changed;
}

// ---------------------------------------------------------------------------------------------

QWidget *InteractionDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                           const QModelIndex &index) const
{
    QWidget *editor = QStyledItemDelegate::createEditor(parent, option, index);
    emit editing();
    if (auto *line = qobject_cast<QLineEdit *>(editor))
        connect(line, &QLineEdit::textEdited, this, &InteractionDelegate::editing);
    return editor;
}

// ---------------------------------------------------------------------------------------------

namespace {
enum FilterColumn { FilterColumnColumn = 0, FilterOperatorColumn = 1, FilterValueColumn = 2 };
}

QString FilterColumnsTableWidget::anyColumnText()
{
    return QStringLiteral("<Any column>");
}

FilterColumnsTableWidget::FilterColumnsTableWidget(QWidget *parent)
    : QTableWidget(parent)
{
    setColumnCount(3);
    setHorizontalHeaderLabels(
        {QStringLiteral("Column"), QStringLiteral("Operator"), QStringLiteral("Value")});
    horizontalHeader()->setStretchLastSection(true);
    horizontalHeader()->setSectionResizeMode(FilterColumnColumn, QHeaderView::ResizeToContents);
    horizontalHeader()->setSectionResizeMode(FilterOperatorColumn, QHeaderView::ResizeToContents);
    verticalHeader()->setVisible(false);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::AllEditTriggers);
    auto *delegate = new InteractionDelegate(this);
    setItemDelegate(delegate);
    connect(delegate, &InteractionDelegate::editing, this, &FilterColumnsTableWidget::editing);
    connect(this, &QTableWidget::itemChanged, this, [this] {
        if (!m_loading)
            emit termsEdited();
    });
}

QComboBox *FilterColumnsTableWidget::createOperatorBox(QWidget *parent)
{
    auto *box = new QComboBox(parent);
    // The display texts line up their symbols with blanks.
    box->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const QList<int> &order = ComparisonOperator::displayOrder();
    for (const int op : order)
        box->addItem(ComparisonOperator::displayText(op), op);
    return box;
}

int FilterColumnsTableWidget::operatorOf(const QComboBox *box)
{
    return box->currentData().toInt();
}

void FilterColumnsTableWidget::setOperator(QComboBox *box, int op)
{
    const QSignalBlocker blocker(box);
    // Operators outside the table display as Contains.
    const int index
        = box->findData(ComparisonOperator::isValid(op) ? op : ComparisonOperator::Contains);
    box->setCurrentIndex(qMax(0, index));
}

void FilterColumnsTableWidget::setDataset(const Dataset *dataset)
{
    m_dataset = dataset;
    for (int r = 0; r < rowCount(); ++r)
        columnBox(r)->setDataset(dataset);
}

void FilterColumnsTableWidget::insertRow(int row, const FilterTerm &term)
{
    m_loading = true;
    QTableWidget::insertRow(row);
    auto *column = new ColumnComboBox(this);
    column->setNoneText(anyColumnText());
    column->setDataset(m_dataset);
    column->setCurrentColumnId(term.column);
    connect(column, &ColumnComboBox::columnChosen, this, &FilterColumnsTableWidget::termsEdited);
    setCellWidget(row, FilterColumnColumn, column);

    QComboBox *op = createOperatorBox(this);
    setOperator(op, term.op);
    connect(op, QOverload<int>::of(&QComboBox::activated), this,
            &FilterColumnsTableWidget::termsEdited);
    setCellWidget(row, FilterOperatorColumn, op);

    setItem(row, FilterValueColumn, new QTableWidgetItem(term.value));
    m_loading = false;
}

void FilterColumnsTableWidget::setTerms(const QList<FilterTerm> &terms)
{
    m_loading = true;
    setRowCount(0);
    for (int i = 0; i < terms.size(); ++i)
        insertRow(i, terms.at(i));
    m_loading = false;
}

QList<FilterTerm> FilterColumnsTableWidget::terms() const
{
    QList<FilterTerm> list;
    list.reserve(rowCount());
    for (int r = 0; r < rowCount(); ++r) {
        FilterTerm term;
        term.column = columnBox(r)->currentColumnId();
        // An operator kept from a document that the table doesn't know stays as it was.
        term.op = operatorOf(operatorBox(r));
        term.value = item(r, FilterValueColumn) ? item(r, FilterValueColumn)->text() : QString();
        list.append(term);
    }
    return list;
}

void FilterColumnsTableWidget::addTerm()
{
    const int row = rowCount();
    insertRow(row, FilterTerm());
    setCurrentCell(row, FilterValueColumn);
    emit termsEdited();
}

void FilterColumnsTableWidget::removeCurrentTerm()
{
    const int row = currentRow();
    if (row < 0 || row >= rowCount())
        return;
    removeRow(row);
    emit termsEdited();
}

ColumnComboBox *FilterColumnsTableWidget::columnBox(int row) const
{
    return qobject_cast<ColumnComboBox *>(cellWidget(row, FilterColumnColumn));
}

QComboBox *FilterColumnsTableWidget::operatorBox(int row) const
{
    return qobject_cast<QComboBox *>(cellWidget(row, FilterOperatorColumn));
}
