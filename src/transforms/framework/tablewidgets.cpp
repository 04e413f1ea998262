#include "transforms/framework/tablewidgets.h"

#include "transforms/framework/parameterforms.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace {

QPushButton *tableButton(const QString &text, const QString &toolTip, QWidget *parent)
{
    auto *button = new QPushButton(text, parent);
    button->setToolTip(toolTip);
    button->setAutoDefault(false);
    return button;
}

void prepareTable(QTableWidget *table)
{
    table->verticalHeader()->setVisible(false);
    table->horizontalHeader()->setStretchLastSection(true);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setEditTriggers(QAbstractItemView::AllEditTriggers);
}

QTableWidgetItem *fixedItem(const QString &text)
{
    auto *item = new QTableWidgetItem(text);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    return item;
}

} // namespace

// ---------------------------------------------------------------------------------------------

IfTableWidget::IfTableWidget(QWidget *parent)
    : QTableWidget(parent)
{
    setColumnCount(5);
    setHorizontalHeaderLabels({QString(), QStringLiteral("Column"), QStringLiteral("Operator"),
                               QStringLiteral("Value"), QStringLiteral("Then")});
    prepareTable(this);
    for (const int column : {KindColumn, ColumnColumn, OperatorColumn})
        horizontalHeader()->setSectionResizeMode(column, QHeaderView::ResizeToContents);
    horizontalHeader()->setSectionResizeMode(ValueColumn, QHeaderView::Stretch);
    auto *delegate = new InteractionDelegate(this);
    setItemDelegate(delegate);
    connect(delegate, &InteractionDelegate::editing, this, &IfTableWidget::editing);
    connect(this, &QTableWidget::itemChanged, this, &IfTableWidget::onItemChanged);
}

void IfTableWidget::setDataset(const Dataset *dataset)
{
    m_dataset = dataset;
    for (int r = 0; r < rowCount(); ++r) {
        if (ColumnComboBox *box = columnBox(r))
            box->setDataset(dataset);
    }
}

void IfTableWidget::setTerms(const IfTerms &terms)
{
    m_terms = terms;
    rebuild(currentRow());
}

int IfTableWidget::branchOfRow(int row) const
{
    return row >= 0 && row < m_rows.size() ? m_rows.at(row).first : -1;
}

int IfTableWidget::termOfRow(int row) const
{
    return row >= 0 && row < m_rows.size() ? m_rows.at(row).second : -1;
}

int IfTableWidget::rowOf(int branch, int term) const
{
    return m_rows.indexOf(qMakePair(branch, term));
}

void IfTableWidget::rebuild(int currentRowWanted)
{
    m_loading = true;
    setRowCount(0);
    m_rows.clear();
    for (int b = 0; b < m_terms.branches.size(); ++b) {
        const IfBranch &branch = m_terms.branches.at(b);
        // A branch without conditions still needs a row for its result.
        const int termRows = qMax(1, branch.terms.size());
        for (int t = 0; t < termRows; ++t)
            m_rows.append(qMakePair(b, t < branch.terms.size() ? t : -1));
    }
    m_rows.append(qMakePair(-1, -1));
    setRowCount(m_rows.size());

    for (int r = 0; r < m_rows.size(); ++r) {
        const int b = m_rows.at(r).first;
        const int t = m_rows.at(r).second;
        const bool firstOfBranch = b >= 0 && (r == 0 || m_rows.at(r - 1).first != b);
        QString kind = QStringLiteral("and");
        if (b < 0)
            kind = QStringLiteral("Else");
        else if (firstOfBranch)
            kind = b == 0 ? QStringLiteral("If") : QStringLiteral("Else if");
        setItem(r, KindColumn, fixedItem(kind));

        if (b >= 0 && t >= 0) {
            const FilterTerm &term = m_terms.branches.at(b).terms.at(t);
            auto *column = new ColumnComboBox(this);
            column->setNoneText(FilterColumnsTableWidget::anyColumnText());
            column->setDataset(m_dataset);
            column->setCurrentColumnId(term.column);
            connect(column, &ColumnComboBox::columnChosen, this, [this, column] {
                for (int row = 0; row < rowCount(); ++row) {
                    if (columnBox(row) == column) {
                        m_terms.branches[branchOfRow(row)].terms[termOfRow(row)].column
                            = column->currentColumnId();
                        emit termsEdited();
                        return;
                    }
                }
            });
            setCellWidget(r, ColumnColumn, column);

            QComboBox *op = FilterColumnsTableWidget::createOperatorBox(this);
            FilterColumnsTableWidget::setOperator(op, term.op);
            connect(op, QOverload<int>::of(&QComboBox::activated), this, [this, op] {
                for (int row = 0; row < rowCount(); ++row) {
                    if (operatorBox(row) == op) {
                        m_terms.branches[branchOfRow(row)].terms[termOfRow(row)].op
                            = FilterColumnsTableWidget::operatorOf(op);
                        emit termsEdited();
                        return;
                    }
                }
            });
            setCellWidget(r, OperatorColumn, op);
            setItem(r, ValueColumn, new QTableWidgetItem(term.value));
        } else {
            setItem(r, ColumnColumn, fixedItem(QString()));
            setItem(r, OperatorColumn, fixedItem(QString()));
            setItem(r, ValueColumn, fixedItem(QString()));
        }

        if (b < 0)
            setItem(r, ThenColumn, new QTableWidgetItem(m_terms.elseValue));
        else if (firstOfBranch)
            setItem(r, ThenColumn, new QTableWidgetItem(m_terms.branches.at(b).thenValue));
        else
            setItem(r, ThenColumn, fixedItem(QString()));
    }
    if (currentRowWanted >= 0)
        setCurrentCell(qMin(currentRowWanted, rowCount() - 1), ValueColumn);
    m_loading = false;
}

void IfTableWidget::onItemChanged(QTableWidgetItem *item)
{
    if (m_loading || !(item->flags() & Qt::ItemIsEditable))
        return;
    const int b = branchOfRow(item->row());
    const int t = termOfRow(item->row());
    if (item->column() == ValueColumn && b >= 0 && t >= 0)
        m_terms.branches[b].terms[t].value = item->text();
    else if (item->column() == ThenColumn && b >= 0)
        m_terms.branches[b].thenValue = item->text();
    else if (item->column() == ThenColumn)
        m_terms.elseValue = item->text();
    else
        return;
    emit termsEdited();
}

void IfTableWidget::addCondition()
{
    if (m_terms.branches.isEmpty()) {
        addBranch();
        return;
    }
    int b = branchOfRow(currentRow());
    if (b < 0)
        b = m_terms.branches.size() - 1;
    m_terms.branches[b].terms.append(FilterTerm());
    rebuild(rowOf(b, m_terms.branches.at(b).terms.size() - 1));
    emit termsEdited();
}

void IfTableWidget::addBranch()
{
    IfBranch branch;
    branch.terms.append(FilterTerm());
    m_terms.branches.append(branch);
    rebuild(rowOf(m_terms.branches.size() - 1, 0));
    emit termsEdited();
}

void IfTableWidget::removeCurrent()
{
    const int row = currentRow();
    const int b = branchOfRow(row);
    if (b < 0)
        return;
    const int t = termOfRow(row);
    QList<FilterTerm> &terms = m_terms.branches[b].terms;
    if (t >= 0)
        terms.removeAt(t);
    if (terms.isEmpty())
        m_terms.branches.removeAt(b);
    rebuild(row);
    emit termsEdited();
}

ColumnComboBox *IfTableWidget::columnBox(int row) const
{
    return qobject_cast<ColumnComboBox *>(cellWidget(row, ColumnColumn));
}

QComboBox *IfTableWidget::operatorBox(int row) const
{
    return qobject_cast<QComboBox *>(cellWidget(row, OperatorColumn));
}

// ---------------------------------------------------------------------------------------------

IfParameterWidget::IfParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_table(new IfTableWidget(this))
    , m_addCondition(tableButton(QStringLiteral("And"),
                                 QStringLiteral("Add a condition to the selected branch."), this))
    , m_addBranch(tableButton(QStringLiteral("Else if"), QStringLiteral("Add a branch."), this))
    , m_remove(tableButton(QStringLiteral("Remove"),
                           QStringLiteral("Remove the selected condition."), this))
{
    setToolTip(parameter->toolTip());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_table, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_addBranch);
    buttons->addWidget(m_addCondition);
    buttons->addWidget(m_remove);
    buttons->addStretch(1);
    layout->addLayout(buttons);

    connect(m_table, &IfTableWidget::termsEdited, this, [this] { commitChange(false); });
    connect(m_table, &IfTableWidget::editing, this, &IfParameterWidget::userInteraction);
    connect(m_addCondition, &QPushButton::clicked, m_table, &IfTableWidget::addCondition);
    connect(m_addBranch, &QPushButton::clicked, m_table, &IfTableWidget::addBranch);
    connect(m_remove, &QPushButton::clicked, m_table, &IfTableWidget::removeCurrent);
}

void IfParameterWidget::updateValue()
{
    resolvePending();
    m_table->setDataset(parameter()->sourceDataset());
    m_table->setTerms(parameter()->toIfTerms());
}

void IfParameterWidget::saveValue()
{
    parameter()->setIfTerms(m_table->terms());
}

// ---------------------------------------------------------------------------------------------

RenameColumnsParameterWidget::RenameColumnsParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_table(new QTableWidget(this))
{
    setToolTip(parameter->toolTip());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_table, 1);
    m_table->setColumnCount(2);
    m_table->setHorizontalHeaderLabels({QStringLiteral("Column"), QStringLiteral("New name")});
    prepareTable(m_table);
    m_table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    auto *delegate = new InteractionDelegate(m_table);
    m_table->setItemDelegate(delegate);
    connect(delegate, &InteractionDelegate::editing, this,
            &RenameColumnsParameterWidget::userInteraction);
    connect(m_table, &QTableWidget::itemChanged, this,
            &RenameColumnsParameterWidget::onItemChanged);
}

void RenameColumnsParameterWidget::updateValue()
{
    resolvePending();
    m_renames = parameter()->toRenameColumns();
    const Dataset *dataset = parameter()->sourceDataset();
    m_loading = true;
    const int count = dataset ? dataset->columnCount() : 0;
    m_table->setRowCount(count);
    for (int c = 0; c < count; ++c) {
        const ColumnId id = dataset->columnId(c);
        m_table->setItem(c, 0, fixedItem(dataset->headerText(c)));
        auto *item = new QTableWidgetItem(m_renames.value(id));
        item->setData(Qt::UserRole, columnIdToVariant(id));
        m_table->setItem(c, 1, item);
    }
    m_loading = false;
}

void RenameColumnsParameterWidget::saveValue()
{
    parameter()->setRenameColumns(m_renames);
}

void RenameColumnsParameterWidget::onItemChanged(QTableWidgetItem *item)
{
    if (m_loading || item->column() != 1)
        return;
    const ColumnId id = columnIdFromVariant(item->data(Qt::UserRole));
    if (item->text().isEmpty())
        m_renames.remove(id);
    else
        m_renames.insert(id, item->text());
    commitChange(false);
}

// ---------------------------------------------------------------------------------------------

UniqueParameterWidget::UniqueParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_table(new QTableWidget(this))
{
    setToolTip(parameter->toolTip());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *header = new QLabel(UniqueForm::keyRuleText(), this);
    header->setWordWrap(true);
    layout->addWidget(header);
    layout->addWidget(m_table, 1);
    m_table->setColumnCount(2);
    m_table->setHorizontalHeaderLabels({QStringLiteral("Column"), QStringLiteral("Option")});
    prepareTable(m_table);
    m_table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_table->horizontalHeader()->setStretchLastSection(false);
    m_table->horizontalHeader()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
}

QComboBox *UniqueParameterWidget::optionBox(int row) const
{
    return qobject_cast<QComboBox *>(m_table->cellWidget(row, 1));
}

void UniqueParameterWidget::updateValue()
{
    resolvePending();
    m_unique = parameter()->toUniqueColumns();
    const Dataset *dataset = parameter()->sourceDataset();
    const int count = dataset ? dataset->columnCount() : 0;
    const QStringList texts = UniqueForm::optionTexts();
    m_table->setRowCount(count);
    for (int c = 0; c < count; ++c) {
        const ColumnId id = dataset->columnId(c);
        m_table->setItem(c, 0, fixedItem(dataset->headerText(c)));
        QComboBox *box = optionBox(c);
        if (!box) {
            box = new QComboBox(m_table);
            box->addItems(texts);
            m_table->setCellWidget(c, 1, box);
            connect(box, QOverload<int>::of(&QComboBox::activated), this, [this, box](int index) {
                m_unique.insert(columnIdFromVariant(box->property("columnId")), index);
                commitChange(false);
            });
        }
        box->setProperty("columnId", columnIdToVariant(id));
        const QSignalBlocker blocker(box);
        box->setCurrentIndex(
            qBound(0, m_unique.value(id, Parameter::UniqueKeepFirst), texts.size() - 1));
    }
}

void UniqueParameterWidget::saveValue()
{
    parameter()->setUniqueColumns(m_unique);
}

// ---------------------------------------------------------------------------------------------

QStringList ReplaceTableWidget::matchTypeTexts()
{
    return {
        QStringLiteral("Text"),        QStringLiteral("Exact text"), QStringLiteral("Regex"),
        QStringLiteral("Empty"),       QStringLiteral("Letters"),    QStringLiteral("Digits"),
        QStringLiteral("Punctuation"), QStringLiteral("Symbols"),    QStringLiteral("Whitespace"),
        QStringLiteral("Currency"),    QStringLiteral("Non-ASCII")};
}

ReplaceTableWidget::ReplaceTableWidget(QWidget *parent)
    : QTableWidget(parent)
{
    setColumnCount(3);
    setHorizontalHeaderLabels(
        {QStringLiteral("Match"), QStringLiteral("Replace"), QStringLiteral("With")});
    prepareTable(this);
    horizontalHeader()->setSectionResizeMode(MatchColumn, QHeaderView::ResizeToContents);
    horizontalHeader()->setSectionResizeMode(FromColumn, QHeaderView::Stretch);
    auto *delegate = new InteractionDelegate(this);
    setItemDelegate(delegate);
    connect(delegate, &InteractionDelegate::editing, this, &ReplaceTableWidget::editing);
    connect(this, &QTableWidget::itemChanged, this, [this] {
        if (!m_loading)
            emit termsEdited();
    });
}

void ReplaceTableWidget::insertTerm(int row, const ReplaceTerm &term)
{
    const bool wasLoading = m_loading;
    m_loading = true;
    insertRow(row);
    auto *box = new QComboBox(this);
    box->addItems(matchTypeTexts());
    // Any other number reads as plain text.
    box->setCurrentIndex(term.matchType >= 0 && term.matchType < box->count() ? term.matchType : 0);
    connect(box, QOverload<int>::of(&QComboBox::activated), this, &ReplaceTableWidget::termsEdited);
    setCellWidget(row, MatchColumn, box);
    setItem(row, FromColumn, new QTableWidgetItem(term.from));
    setItem(row, ToColumn, new QTableWidgetItem(term.to));
    m_loading = wasLoading;
}

void ReplaceTableWidget::setTerms(const QList<ReplaceTerm> &terms)
{
    m_loading = true;
    setRowCount(0);
    for (int i = 0; i < terms.size(); ++i)
        insertTerm(i, terms.at(i));
    m_loading = false;
}

QList<ReplaceTerm> ReplaceTableWidget::terms() const
{
    QList<ReplaceTerm> list;
    list.reserve(rowCount());
    for (int r = 0; r < rowCount(); ++r) {
        ReplaceTerm term;
        term.matchType = matchBox(r)->currentIndex();
        term.from = item(r, FromColumn)->text();
        term.to = item(r, ToColumn)->text();
        list.append(term);
    }
    return list;
}

void ReplaceTableWidget::addTerm()
{
    const int row = rowCount();
    insertTerm(row, ReplaceTerm());
    setCurrentCell(row, FromColumn);
    emit termsEdited();
}

void ReplaceTableWidget::removeCurrentTerm()
{
    const int row = currentRow();
    if (row < 0)
        return;
    removeRow(row);
    emit termsEdited();
}

void ReplaceTableWidget::moveCurrentTerm(int by)
{
    const int row = currentRow();
    const int to = row + by;
    if (row < 0 || to < 0 || to >= rowCount())
        return;
    QList<ReplaceTerm> list = terms();
    list.move(row, to);
    setTerms(list);
    setCurrentCell(to, currentColumn() < 0 ? FromColumn : currentColumn());
    emit termsEdited();
}

QComboBox *ReplaceTableWidget::matchBox(int row) const
{
    return qobject_cast<QComboBox *>(cellWidget(row, MatchColumn));
}

// ---------------------------------------------------------------------------------------------

ReplaceTermsParameterWidget::ReplaceTermsParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_table(new ReplaceTableWidget(this))
    , m_add(tableButton(QStringLiteral("Add"), QStringLiteral("Add a replacement."), this))
    , m_remove(tableButton(QStringLiteral("Remove"),
                           QStringLiteral("Remove the selected replacement."), this))
    , m_up(tableButton(QStringLiteral("Up"), QStringLiteral("Apply the selected one earlier."),
                       this))
    , m_down(tableButton(QStringLiteral("Down"), QStringLiteral("Apply the selected one later."),
                         this))
{
    setToolTip(parameter->toolTip());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_table, 1);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *button : {m_add, m_remove, m_up, m_down})
        buttons->addWidget(button);
    buttons->addStretch(1);
    layout->addLayout(buttons);

    connect(m_table, &ReplaceTableWidget::termsEdited, this, [this] { commitChange(false); });
    connect(m_table, &ReplaceTableWidget::editing, this,
            &ReplaceTermsParameterWidget::userInteraction);
    connect(m_add, &QPushButton::clicked, m_table, &ReplaceTableWidget::addTerm);
    connect(m_remove, &QPushButton::clicked, m_table, &ReplaceTableWidget::removeCurrentTerm);
    connect(m_up, &QPushButton::clicked, m_table, [this] { m_table->moveCurrentTerm(-1); });
    connect(m_down, &QPushButton::clicked, m_table, [this] { m_table->moveCurrentTerm(1); });
}

void ReplaceTermsParameterWidget::updateValue()
{
    resolvePending();
    m_table->setTerms(parameter()->toReplaceTerms());
}

void ReplaceTermsParameterWidget::saveValue()
{
    parameter()->setReplaceTerms(m_table->terms());
}
