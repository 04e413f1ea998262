#include "inspection/datatableview.h"

#include "data/dataset.h"
#include "data/valueinterpretation.h"
#include "flow/flowitem.h"
#include "flow/flowmodel.h"
#include "inspection/datatablemodel.h"
#include "shell/appearancesettings.h"
#include "shell/guards.h"
#include "shell/messageboxes.h"
#include "shell/settings.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLocale>
#include <QMenu>
#include <QMetaMethod>
#include <QMimeData>
#include <QPainter>

#include <limits>

namespace {

// Three decimals at most, group separators, no trailing zeros: "1,234.5", "-0.333", "7".
QString figureText(double value)
{
    QLocale locale;
    locale.setNumberOptions(locale.numberOptions() & ~QLocale::OmitGroupSeparator);
    QString text = locale.toString(value, 'f', 3);
    const QString point = locale.decimalPoint();
    const int pointAt = text.lastIndexOf(point);
    if (pointAt >= 0) {
        int end = text.size();
        while (end > pointAt + 1 && text.at(end - 1) == locale.zeroDigit())
            --end;
        if (end == pointAt + 1)
            end = pointAt;
        text.truncate(end);
    }
    if (text == locale.negativeSign() + locale.zeroDigit())
        text = locale.zeroDigit();
    return text;
}

QString pair(const QString &name, const QString &value)
{
    return name + QLatin1String(": ") + value;
}

constexpr int StatisticsLength = 100;
constexpr int MenuTextLength = 30;
constexpr int SampledRows = 50;
constexpr int SampledColumns = 200;
constexpr int HintMilliseconds = 20000;

} // namespace

DataTableView::DataTableView(QWidget *parent)
    : QTableView(parent)
    , m_model(new DataTableModel(this))
    , m_emptyText(QStringLiteral("No data"))
{
    setModel(m_model);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectItems);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setAlternatingRowColors(true);
    setWordWrap(false);
    setTextElideMode(Qt::ElideRight);
    setToolTip(QStringLiteral(
                   "Data values.\nSelect cell(s) and %1+C to copy to clipboard.\nDouble click "
                   "the header on the left of a row to display the row values in a new "
                   "window.\nDouble click the header on the top of a column to display the most "
                   "frequent column values in a new window.")
                   .arg(QStringLiteral("Ctrl")));

    // Fixed row heights keep a table of millions of rows from measuring every row.
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    horizontalHeader()->setContextMenuPolicy(Qt::CustomContextMenu);
    verticalHeader()->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(horizontalHeader(), &QWidget::customContextMenuRequested, this,
            [this](const QPoint &pos) {
                showMenu(MenuKind::HorizontalHeader, pos, horizontalHeader());
            });
    connect(
        verticalHeader(), &QWidget::customContextMenuRequested, this,
        [this](const QPoint &pos) { showMenu(MenuKind::VerticalHeader, pos, verticalHeader()); });
    connect(horizontalHeader(), &QHeaderView::sectionDoubleClicked, this,
            [this](int section) { requestColumnValues(m_model->datasetColumn(section)); });
    connect(verticalHeader(), &QHeaderView::sectionDoubleClicked, this,
            [this](int section) { requestRowValues(m_model->datasetRow(section)); });

    m_copyWithHeader = new QAction(QStringLiteral("&Copy Selected With Header"), this);
    m_copyWithHeader->setShortcut(QKeySequence(Qt::CTRL + Qt::Key_C));
    connect(m_copyWithHeader, &QAction::triggered, this, &DataTableView::onCopyWithHeader);
    m_copyWithoutHeader = new QAction(QStringLiteral("Copy Selected &Without Header"), this);
    m_copyWithoutHeader->setShortcut(QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_C));
    connect(m_copyWithoutHeader, &QAction::triggered, this, &DataTableView::onCopyWithoutHeader);
    m_copyHeaderOnly = new QAction(QStringLiteral("Copy Selected &Header Only"), this);
    connect(m_copyHeaderOnly, &QAction::triggered, this, &DataTableView::onCopyHeaderOnly);

    connect(m_model, &QAbstractItemModel::modelReset, this, &DataTableView::onModelReset);
    applyPreferences();
}

DataTableView::~DataTableView() = default;

void DataTableView::setItem(FlowItem *item)
{
    applyPreferences();
    m_model->setItem(item);
    if (m_model->hasMarks())
        emit hintRequested(QStringLiteral("Verification"),
                           QStringLiteral("Hover over a cell for details on verification fails."),
                           HintMilliseconds);
    if (m_model->hasDrilldown())
        emit hintRequested(QStringLiteral("Drilldown"),
                           QStringLiteral("Double click on a cell to drilldown to the original "
                                          "data.\nYou may need to check 'allow drilldown' above."),
                           HintMilliseconds);
}

FlowItem *DataTableView::item() const
{
    return m_model->item();
}

void DataTableView::refresh()
{
    applyPreferences();
    m_model->refresh();
}

void DataTableView::setEmptyText(const QString &text)
{
    m_emptyText = text;
    viewport()->update();
}

void DataTableView::setFilterActionsAllowed(bool allowed)
{
    m_filterActionsAllowed = allowed;
}

void DataTableView::setShowInvisibles(bool on)
{
    m_model->setShowInvisibles(on);
}

bool DataTableView::showInvisibles() const
{
    return m_model->showInvisibles();
}

void DataTableView::applyPreferences()
{
    const Settings *settings = Settings::instance();
    const QFont font = AppearanceSettings(settings).dataFont();
    setFont(font);
    const int height = QFontMetrics(font).height() + settings->dataFontVerticalPadding();
    verticalHeader()->setMinimumSectionSize(qMin(height, verticalHeader()->minimumSectionSize()));
    verticalHeader()->setDefaultSectionSize(height);
}

void DataTableView::onModelReset()
{
    fitColumnWidths();
    if (!m_lastStatistics.isEmpty()) {
        m_lastStatistics.clear();
        emit selectionStatisticsChanged(m_lastStatistics);
    }
    emit selectedDataCellsChanged();
    viewport()->update();
}

void DataTableView::fitColumnWidths()
{
    // Widths come from the header and the first rows of the dataset, not of the filtered
    // view, so that typing a filter doesn't make the columns jump.
    const int columns = qMin(m_model->columnCount(), SampledColumns);
    if (columns == 0)
        return;
    const Dataset *data = m_model->dataset();
    const QFontMetrics cellMetrics(font());
    const QFontMetrics headerMetrics(horizontalHeader()->font());
    const int rows = qMin(data->rowCount(), SampledRows);
    const int padding = 2 * style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 12;
    const int maxWidth = qMax(120, viewport()->width() / 2);
    for (int column = 0; column < columns; ++column) {
        const int c = m_model->datasetColumn(column);
        int width = headerMetrics.horizontalAdvance(
                        m_model->headerData(column, Qt::Horizontal).toString())
            + 8;
        for (int r = 0; r < rows; ++r) {
            const QString &text = data->cell(r, c);
            width
                = qMax(width,
                       cellMetrics.horizontalAdvance(
                           m_model->showInvisibles() ? DataTableModel::mapInvisibles(text) : text));
        }
        setColumnWidth(column, qBound(40, width + padding, maxWidth));
    }
}

QString DataTableView::overlayText() const
{
    if (!m_model->dataset())
        return m_emptyText;
    switch (m_model->state()) {
    case DataTableModel::NotRun: {
        const FlowItem *item = m_model->item();
        const FlowModel *model = item ? item->model() : nullptr;
        return !model || model->autoRun() ? QStringLiteral("Awaiting update")
                                          : QStringLiteral("Run to update");
    }
    case DataTableModel::Processing:
        return QStringLiteral("Processing...");
    default:
        break;
    }
    if (m_model->isTooBig())
        return m_model->tooBigText();
    if (!m_model->hasDatasetColumns())
        return m_emptyText;
    if (!m_model->datasetHasRows())
        return QStringLiteral("No rows");
    if (m_model->columnCount() == 0)
        return QStringLiteral("No columns match the filter");
    if (m_model->rowCount() == 0)
        return QStringLiteral("No rows match the filter");
    return QString();
}

void DataTableView::paintEvent(QPaintEvent *event)
{
    QTableView::paintEvent(event);
    const QString text = overlayText();
    if (text.isEmpty())
        return;
    QPainter painter(viewport());
    QColor colour = palette().color(QPalette::Text);
    colour.setAlphaF(0.6);
    painter.setPen(colour);
    QFont big = font();
    big.setPointSizeF(big.pointSizeF() * 1.25);
    painter.setFont(big);
    painter.drawText(viewport()->rect().adjusted(8, 8, -8, -8), Qt::AlignCenter | Qt::TextWordWrap,
                     text);
}

// Selection statistics

qint64 DataTableView::selectedCellCount() const
{
    qint64 count = 0;
    if (!selectionModel())
        return 0;
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange &range : selection)
        count += qint64(range.width()) * range.height();
    return count;
}

void DataTableView::selectionChanged(const QItemSelection &selected,
                                     const QItemSelection &deselected)
{
    QTableView::selectionChanged(selected, deselected);
    const QString text = selectionStatistics();
    if (text != m_lastStatistics) {
        m_lastStatistics = text;
        emit selectionStatisticsChanged(text);
    }
    emit selectedDataCellsChanged();
}

QString DataTableView::selectionStatistics() const
{
    const qint64 count = selectedCellCount();
    if (count <= 1)
        return QString();
    // Reading every cell of a huge selection would stall each click; the count is free.
    if (count > StatisticsCellLimit)
        return elide(pair(QStringLiteral("Selected"), formatCount(count)), StatisticsLength);

    qint64 selected = 0;
    qint64 empty = 0;
    qint64 numeric = 0;
    double total = 0.0;
    double minimum = std::numeric_limits<double>::max();
    double maximum = std::numeric_limits<double>::lowest();
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange &range : selection) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            if (isRowHidden(row))
                continue;
            for (int column = range.left(); column <= range.right(); ++column) {
                if (isColumnHidden(column))
                    continue;
                ++selected;
                const QString text = m_model->cellText(row, column);
                double value = 0.0;
                if (text.isEmpty()) {
                    ++empty;
                } else if (DataTableModel::readsAsNumber(text, &value)) {
                    ++numeric;
                    total += value;
                    minimum = qMin(minimum, value);
                    maximum = qMax(maximum, value);
                }
            }
        }
    }
    if (selected <= 1)
        return QString();

    QStringList pairs;
    pairs << pair(QStringLiteral("Selected"), formatCount(selected))
          << pair(QStringLiteral("Empty"), formatCount(empty))
          << pair(QStringLiteral("Numeric"), formatCount(numeric));
    if (numeric > 0) {
        pairs << pair(QStringLiteral("Sum"), figureText(total));
        if (total != 0.0)
            pairs << pair(QStringLiteral("Average"), figureText(total / double(numeric)));
        pairs << pair(QStringLiteral("Min"), figureText(minimum))
              << pair(QStringLiteral("Max"), figureText(maximum));
    }
    return elide(pairs.join(QLatin1Char(' ')), StatisticsLength);
}

int DataTableView::currentDatasetRow() const
{
    return m_model->datasetRow(currentIndex().row());
}

int DataTableView::currentDatasetColumn() const
{
    return m_model->datasetColumn(currentIndex().column());
}

// Copying

QRect DataTableView::copyBlock() const
{
    const QModelIndex current = currentIndex();
    const QItemSelectionModel *selection = selectionModel();
    if (!current.isValid() || !selection || !selection->isSelected(current))
        return QRect();
    const int row = current.row();
    const int column = current.column();
    auto selected = [&](int r, int c) {
        return selection->isSelected(m_model->index(r, c));
    };
    int left = column;
    while (left > 0 && selected(row, left - 1))
        --left;
    int right = column;
    while (right < m_model->columnCount() - 1 && selected(row, right + 1))
        ++right;
    int top = row;
    while (top > 0 && selected(top - 1, column))
        --top;
    int bottom = row;
    while (bottom < m_model->rowCount() - 1 && selected(bottom + 1, column))
        ++bottom;
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

bool DataTableView::copySelection(CopyMode mode)
{
    const QRect block = copyBlock();
    if (block.isNull())
        return false;
    QVector<int> rows;
    QVector<int> columns;
    if (mode != CopyMode::HeaderOnly) {
        rows.reserve(block.height());
        for (int r = block.top(); r <= block.bottom(); ++r) {
            if (!isRowHidden(r))
                rows.append(r);
        }
    }
    for (int c = block.left(); c <= block.right(); ++c) {
        if (!isColumnHidden(c))
            columns.append(c);
    }
    if (columns.isEmpty())
        return false;
    const qint64 cells = qint64(qMax(1, rows.size())) * columns.size();
    if (cells >= CopyQuestionCells
        && !ask(this,
                QStringLiteral("Are you sure you want to copy %1 rows x %2 cols into the "
                               "clipboard?")
                    .arg(formatCount(rows.size()), formatCount(columns.size()))))
        return false;

    BusyCursor busy;
    Dataset copied;
    copied.setColumnCount(columns.size());
    copied.reserveRows(rows.size());
    QStringList cellsOfRow;
    for (int r : qAsConst(rows)) {
        cellsOfRow.clear();
        cellsOfRow.reserve(columns.size());
        for (int c : qAsConst(columns))
            cellsOfRow.append(m_model->cellText(r, c));
        copied.appendRow(cellsOfRow);
    }
    if (mode != CopyMode::WithoutHeader) {
        QStringList header;
        header.reserve(columns.size());
        for (int c : qAsConst(columns))
            header.append(m_model->headerText(c));
        copied.setHeader(header);
    }
    QGuiApplication::clipboard()->setMimeData(copied.mimeData(copyDelimiter()));
    return true;
}

bool DataTableView::copyDataset(const Dataset &dataset, QWidget *parent)
{
    if (!dataset.hasColumns())
        return false;
    const qint64 cells = qint64(qMax(1, dataset.rowCount())) * dataset.columnCount();
    if (cells >= CopyQuestionCells
        && !ask(parent,
                QStringLiteral("Are you sure you want to copy %1 rows x %2 cols into the "
                               "clipboard?")
                    .arg(formatCount(dataset.rowCount()), formatCount(dataset.columnCount()))))
        return false;
    BusyCursor busy;
    QGuiApplication::clipboard()->setMimeData(dataset.mimeData(copyDelimiter()));
    return true;
}

QChar DataTableView::copyDelimiter()
{
    return copyDelimiter(Settings::instance()->copyDataAs());
}

QChar DataTableView::copyDelimiter(int copyDataAs)
{
    switch (copyDataAs) {
    case 1:
        return QLatin1Char(',');
    case 2:
        return QLatin1Char(';');
    case 3:
        return QLatin1Char('|');
    default:
        return QLatin1Char('\t');
    }
}

QStringList DataTableView::copyDataAsNames()
{
    return {QStringLiteral("Tab separated"), QStringLiteral("Comma separated"),
            QStringLiteral("Semi-colon separated"), QStringLiteral("Pipe separated")};
}

void DataTableView::onCopyWithHeader()
{
    copySelection(CopyMode::WithHeader);
}

void DataTableView::onCopyWithoutHeader()
{
    copySelection(CopyMode::WithoutHeader);
}

void DataTableView::onCopyHeaderOnly()
{
    copySelection(CopyMode::HeaderOnly);
}

// Keys, mouse and menus

void DataTableView::keyPressEvent(QKeyEvent *event)
{
    // Handled here rather than by shortcuts, so that the item view's own copy of one cell
    // never wins.
    const Qt::KeyboardModifiers modifiers
        = event->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier | Qt::AltModifier);
    if (event->key() == Qt::Key_C && modifiers == (Qt::ControlModifier | Qt::ShiftModifier)) {
        onCopyWithoutHeader();
        event->accept();
        return;
    }
    if (event->matches(QKeySequence::Copy)) {
        onCopyWithHeader();
        event->accept();
        return;
    }
    QTableView::keyPressEvent(event);
}

void DataTableView::mouseReleaseEvent(QMouseEvent *event)
{
    QTableView::mouseReleaseEvent(event);
    if (event->button() == Qt::RightButton && indexAt(event->pos()).isValid())
        showMenu(MenuKind::Cell, event->pos(), viewport());
}

void DataTableView::mouseDoubleClickEvent(QMouseEvent *event)
{
    QTableView::mouseDoubleClickEvent(event);
    const QModelIndex index = indexAt(event->pos());
    if (event->button() == Qt::LeftButton && index.isValid() && m_model->hasDrilldown())
        requestDrilldown(m_model->datasetRow(index.row()), m_model->datasetColumn(index.column()));
}

void DataTableView::showMenu(MenuKind kind, const QPoint &pos, QWidget *on)
{
    QMenu *menu = createContextMenu(kind, pos);
    if (!menu)
        return;
    menu->exec(on->mapToGlobal(pos));
    delete menu;
}

QMenu *DataTableView::createContextMenu(MenuKind kind, const QPoint &pos)
{
    if (m_model->rowCount() == 0 || m_model->columnCount() == 0)
        return nullptr;
    auto *menu = new QMenu(this);
    const bool hasSelection = selectionModel() && selectionModel()->hasSelection();
    m_copyWithHeader->setEnabled(hasSelection);
    m_copyWithoutHeader->setEnabled(hasSelection);
    m_copyHeaderOnly->setEnabled(hasSelection);

    if (kind == MenuKind::HorizontalHeader) {
        const int column = m_model->datasetColumn(horizontalHeader()->logicalIndexAt(pos));
        QAction *values = menu->addAction(QStringLiteral("Show &Column Values"));
        values->setEnabled(column >= 0);
        connect(values, &QAction::triggered, this,
                [this, column]() { requestColumnValues(column); });
        menu->addAction(m_copyWithHeader);
        menu->addAction(m_copyWithoutHeader);
        menu->addAction(m_copyHeaderOnly);
        return menu;
    }
    if (kind == MenuKind::VerticalHeader) {
        const int row = m_model->datasetRow(verticalHeader()->logicalIndexAt(pos));
        QAction *values = menu->addAction(QStringLiteral("Show &Row Data"));
        values->setEnabled(row >= 0);
        connect(values, &QAction::triggered, this, [this, row]() { requestRowValues(row); });
        menu->addAction(m_copyWithHeader);
        menu->addAction(m_copyWithoutHeader);
        menu->addAction(m_copyHeaderOnly);
        return menu;
    }

    const QModelIndex current = currentIndex();
    const int row = m_model->datasetRow(current.row());
    const int column = m_model->datasetColumn(current.column());
    if (m_model->hasDrilldown()) {
        QAction *drilldown = menu->addAction(QStringLiteral("&Drilldown..."));
        drilldown->setEnabled(m_model->hasDrilldown(current.row(), current.column()));
        connect(drilldown, &QAction::triggered, this,
                [this, row, column]() { requestDrilldown(row, column); });
    }
    menu->addAction(m_copyWithHeader);
    menu->addAction(m_copyWithoutHeader);

    const bool oneCell = selectedCellCount() == 1 && current.isValid();
    const QString text = m_model->cellText(current.row(), current.column());
    if (oneCell && !text.isEmpty() && m_filterActionsAllowed) {
        const QString shown = elide(text, MenuTextLength);
        QAction *rows = menu->addAction(QStringLiteral("Filter on &row contains '%1'").arg(shown));
        connect(rows, &QAction::triggered, this, [this]() { filterOnCurrentCell(true); });
        QAction *columns
            = menu->addAction(QStringLiteral("&Filter on column contains '%1'").arg(shown));
        connect(columns, &QAction::triggered, this, [this]() { filterOnCurrentCell(false); });
    }
    QAction *value = menu->addAction(QStringLiteral("Show &Value..."));
    value->setEnabled(oneCell);
    connect(value, &QAction::triggered, this, [this, row, column]() { requestValue(row, column); });
    return menu;
}

void DataTableView::filterOnCurrentCell(bool rows)
{
    const QModelIndex current = currentIndex();
    const QString text = m_model->cellText(current.row(), current.column());
    if (text.isEmpty())
        return;
    if (rows)
        m_model->setRowFilter(text, -1, m_model->rowFilterCase());
    else
        m_model->setColumnFilter(text, m_model->columnFilterCase());
}

// Requests for other windows

template<typename Signal> bool DataTableView::answered(Signal signal) const
{
    return isSignalConnected(QMetaMethod::fromSignal(signal));
}

QString DataTableView::notAvailableText(const QString &window)
{
    return QStringLiteral("The %1 window is not yet available.").arg(window);
}

void DataTableView::requestRowValues(int datasetRow)
{
    if (datasetRow < 0)
        return;
    if (answered(&DataTableView::rowValuesRequested))
        emit rowValuesRequested(datasetRow);
    else
        tell(this, notAvailableText(QStringLiteral("Row Values")));
}

void DataTableView::requestColumnValues(int datasetColumn)
{
    if (datasetColumn < 0)
        return;
    if (answered(&DataTableView::columnValuesRequested))
        emit columnValuesRequested(datasetColumn);
    else
        tell(this, notAvailableText(QStringLiteral("Column Values")));
}

void DataTableView::requestDrilldown(int datasetRow, int datasetColumn)
{
    if (datasetRow < 0 || datasetColumn < 0)
        return;
    if (answered(&DataTableView::drilldownRequested))
        emit drilldownRequested(datasetRow, datasetColumn);
    else
        tell(this, notAvailableText(QStringLiteral("Drilldown")));
}

void DataTableView::requestValue(int datasetRow, int datasetColumn)
{
    if (datasetRow < 0 || datasetColumn < 0)
        return;
    if (answered(&DataTableView::valueRequested))
        emit valueRequested(datasetRow, datasetColumn);
    else
        tell(this, notAvailableText(QStringLiteral("Value")));
}

// Questions and messages

bool DataTableView::ask(QWidget *parent, const QString &question)
{
    return MessageBoxes::show(parent, QMessageBox::Question,
                              QGuiApplication::applicationDisplayName(), question,
                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
        == QMessageBox::Yes;
}

void DataTableView::tell(QWidget *parent, const QString &message)
{
    MessageBoxes::information(parent, QGuiApplication::applicationDisplayName(), message);
}
