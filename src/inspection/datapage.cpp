#include "inspection/datapage.h"

#include "data/dataset.h"
#include "data/valueinterpretation.h"
#include "flow/flowitem.h"
#include "inspection/datatablemodel.h"
#include "inspection/datatableview.h"
#include "shell/delaytimer.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

enum class Glyph { Copy, Row, Column, Filter, Invisibles, Close, Arrow, ArrowToEnd };

// The tool row's pictures are drawn rather than loaded so that they take the palette's text
// colour and stay legible in light and dark themes alike. Arrows are drawn pointing right and
// turned by angle degrees.
QIcon glyphIcon(Glyph glyph, const QPalette &palette, int angle = 0)
{
    const int size = 32;
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor ink = palette.color(QPalette::ButtonText);
    QColor accent = palette.color(QPalette::Highlight);
    QPen pen(ink, 2.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    painter.setPen(pen);

    switch (glyph) {
    case Glyph::Copy:
        painter.setBrush(palette.color(QPalette::Base));
        painter.drawRoundedRect(QRectF(4, 4, 16, 19), 2, 2);
        painter.drawRoundedRect(QRectF(11, 10, 16, 19), 2, 2);
        break;
    case Glyph::Row:
    case Glyph::Column: {
        painter.setBrush(Qt::NoBrush);
        const QRectF grid(4, 5, 24, 22);
        accent.setAlpha(200);
        if (glyph == Glyph::Row)
            painter.fillRect(QRectF(4, 12.3, 24, 7.3), accent);
        else
            painter.fillRect(QRectF(12, 5, 8, 22), accent);
        painter.drawRect(grid);
        painter.drawLine(QPointF(4, 12.3), QPointF(28, 12.3));
        painter.drawLine(QPointF(4, 19.6), QPointF(28, 19.6));
        painter.drawLine(QPointF(12, 5), QPointF(12, 27));
        painter.drawLine(QPointF(20, 5), QPointF(20, 27));
        break;
    }
    case Glyph::Filter: {
        QPainterPath funnel;
        funnel.moveTo(4, 6);
        funnel.lineTo(28, 6);
        funnel.lineTo(18.5, 17);
        funnel.lineTo(18.5, 27);
        funnel.lineTo(13.5, 24);
        funnel.lineTo(13.5, 17);
        funnel.closeSubpath();
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(funnel);
        break;
    }
    case Glyph::Invisibles: {
        QFont font = painter.font();
        font.setPixelSize(26);
        font.setBold(true);
        painter.setFont(font);
        painter.drawText(QRectF(0, 0, size, size), Qt::AlignCenter, QString(QChar(0x00B6)));
        break;
    }
    case Glyph::Close:
        painter.drawLine(QPointF(9, 9), QPointF(23, 23));
        painter.drawLine(QPointF(23, 9), QPointF(9, 23));
        break;
    case Glyph::Arrow:
    case Glyph::ArrowToEnd: {
        painter.translate(size / 2.0, size / 2.0);
        painter.rotate(angle);
        painter.translate(-size / 2.0, -size / 2.0);
        QPainterPath triangle;
        const qreal shift = glyph == Glyph::ArrowToEnd ? -3 : 0;
        triangle.moveTo(10 + shift, 7);
        triangle.lineTo(23 + shift, 16);
        triangle.lineTo(10 + shift, 25);
        triangle.closeSubpath();
        painter.setBrush(ink);
        painter.drawPath(triangle);
        if (glyph == Glyph::ArrowToEnd)
            painter.drawLine(QPointF(25, 7), QPointF(25, 25));
        break;
    }
    }
    painter.end();
    return QIcon(pixmap);
}

// Invisible characters are a way of looking at data, not at one item: the choice stays as
// the user moves from item to item.
bool s_showInvisibles = false;

} // namespace

DataPage::DataPage(QWidget *parent)
    : QWidget(parent)
    , m_view(new DataTableView(this))
    , m_filterTimer(new DelayTimer(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->setSpacing(4);
    buildToolRow();
    layout->addWidget(m_toolRow);
    buildFilterRow();
    layout->addWidget(m_filterRow);
    layout->addWidget(m_view, 1);
    connectFilters();

    connect(m_view->dataModel(), &DataTableModel::filterChanged, this,
            &DataPage::onModelFilterChanged);
    connect(m_view->dataModel(), &QAbstractItemModel::modelReset, this, &DataPage::onModelReset);
    connect(m_view, &DataTableView::selectedDataCellsChanged, this,
            &DataPage::selectedDataCellsChanged);
    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &DataPage::updateButtons);
    onModelReset();
}

void DataPage::buildToolRow()
{
    m_toolRow = new QWidget(this);
    auto *tools = new QHBoxLayout(m_toolRow);
    tools->setContentsMargins(0, 0, 0, 0);
    tools->setSpacing(1);
    buildActionButtons();
    tools->addSpacing(8);
    buildScrollButtons(tools);
    tools->addStretch(1);
}

void DataPage::buildActionButtons()
{
    const QPalette &colours = palette();
    m_copyButton = addToolButton(
        QStringLiteral("Copy the dataset to the clipboard (Ctrl+C in the table copies only the "
                       "selected cells).\nNot affected by filtering of the data table."),
        glyphIcon(Glyph::Copy, colours));
    connect(m_copyButton, &QToolButton::clicked, this, &DataPage::onCopyDataset);
    m_rowValuesButton
        = addToolButton(QStringLiteral("Show the values of the current row in a new window."),
                        glyphIcon(Glyph::Row, colours));
    connect(m_rowValuesButton, &QToolButton::clicked, this, &DataPage::onRowValues);
    m_columnValuesButton = addToolButton(
        QStringLiteral("Show the most frequent values of the current column in a new window."),
        glyphIcon(Glyph::Column, colours));
    connect(m_columnValuesButton, &QToolButton::clicked, this, &DataPage::onColumnValues);
    m_filterButton = addToolButton(
        QStringLiteral("Show or hide the filter row.\nFiltering changes only what the table "
                       "shows, not the dataset."),
        glyphIcon(Glyph::Filter, colours));
    m_filterButton->setCheckable(true);
    connect(m_filterButton, &QToolButton::toggled, this, &DataPage::setFilterRowShown);
    m_invisiblesButton = addToolButton(
        QStringLiteral("Show spaces, tabs, line ends and other invisible characters as "
                       "visible signs.\nCopying still copies the original text."),
        glyphIcon(Glyph::Invisibles, colours));
    m_invisiblesButton->setCheckable(true);
    m_invisiblesButton->setChecked(s_showInvisibles);
    m_view->setShowInvisibles(s_showInvisibles);
    connect(m_invisiblesButton, &QToolButton::toggled, this, [this](bool on) {
        s_showInvisibles = on;
        m_view->setShowInvisibles(on);
    });
}

void DataPage::buildScrollButtons(QHBoxLayout *tools)
{
    const QPalette &colours = palette();
    struct ScrollSpec
    {
        Scroll scroll;
        Glyph glyph;
        int angle;
        const char *toolTip;
    };
    static const ScrollSpec scrolls[] = {
        {Scroll::FirstColumn, Glyph::ArrowToEnd, 180, "Scroll to the first column."},
        {Scroll::Left, Glyph::Arrow, 180, "Scroll left one page."},
        {Scroll::Right, Glyph::Arrow, 0, "Scroll right one page."},
        {Scroll::LastColumn, Glyph::ArrowToEnd, 0, "Scroll to the last column."},
        {Scroll::FirstRow, Glyph::ArrowToEnd, 270, "Scroll to the first row."},
        {Scroll::Up, Glyph::Arrow, 270, "Scroll up one page."},
        {Scroll::Down, Glyph::Arrow, 90, "Scroll down one page."},
        {Scroll::LastRow, Glyph::ArrowToEnd, 90, "Scroll to the last row."},
    };
    for (const ScrollSpec &spec : scrolls) {
        if (spec.scroll == Scroll::FirstRow)
            tools->addSpacing(8);
        QToolButton *button = addToolButton(QString::fromLatin1(spec.toolTip),
                                            glyphIcon(spec.glyph, colours, spec.angle));
        button->setAutoRepeat(spec.glyph == Glyph::Arrow);
        m_scrollButtons[int(spec.scroll)] = button;
        const Scroll how = spec.scroll;
        connect(button, &QToolButton::clicked, this, [this, how]() { scroll(how); });
    }
}

void DataPage::buildFilterRow()
{
    m_filterRow = new QWidget(this);
    auto *filters = new QHBoxLayout(m_filterRow);
    filters->setContentsMargins(0, 0, 0, 0);
    filters->setSpacing(4);
    // Placeholders instead of labels keep the row narrow enough for a side pane.
    m_rowFilterEdit = new QLineEdit(m_filterRow);
    m_rowFilterEdit->setClearButtonEnabled(true);
    m_rowFilterEdit->setPlaceholderText(QStringLiteral("Filter rows"));
    m_rowFilterEdit->setToolTip(
        QStringLiteral("Show only the rows that contain this text.\nDoes *not* change the "
                       "dataset."));
    filters->addWidget(m_rowFilterEdit, 3);
    m_rowFilterColumn = new QComboBox(m_filterRow);
    m_rowFilterColumn->setToolTip(QStringLiteral("The column in which to look for the text."));
    m_rowFilterColumn->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_rowFilterColumn->setMinimumContentsLength(8);
    filters->addWidget(m_rowFilterColumn, 2);
    m_columnFilterEdit = new QLineEdit(m_filterRow);
    m_columnFilterEdit->setClearButtonEnabled(true);
    m_columnFilterEdit->setPlaceholderText(QStringLiteral("Filter columns"));
    m_columnFilterEdit->setToolTip(
        QStringLiteral("Show only the columns whose name or values contain this text.\nDoes "
                       "*not* change the dataset."));
    filters->addWidget(m_columnFilterEdit, 2);
    m_matchCase = new QCheckBox(QStringLiteral("match case"), m_filterRow);
    m_matchCase->setToolTip(QStringLiteral("Check to match upper and lower case exactly."));
    filters->addWidget(m_matchCase);
    m_filterCount = new QLabel(m_filterRow);
    filters->addWidget(m_filterCount);
    m_closeFilterButton = new QToolButton(m_filterRow);
    m_closeFilterButton->setAutoRaise(true);
    m_closeFilterButton->setIcon(glyphIcon(Glyph::Close, palette()));
    m_closeFilterButton->setToolTip(QStringLiteral("Clear the filters and hide this row."));
    connect(m_closeFilterButton, &QToolButton::clicked, this,
            [this]() { setFilterRowShown(false); });
    filters->addWidget(m_closeFilterButton);
    m_filterRow->hide();
}

void DataPage::connectFilters()
{
    m_filterTimer->setInterval(FilterDelayMs);
    connect(m_filterTimer, &DelayTimer::timeout, this, &DataPage::applyFilters);
    connect(m_rowFilterEdit, &QLineEdit::textEdited, m_filterTimer,
            QOverload<>::of(&DelayTimer::start));
    connect(m_columnFilterEdit, &QLineEdit::textEdited, m_filterTimer,
            QOverload<>::of(&DelayTimer::start));
    // The clear button changes the text without an edit signal.
    connect(m_rowFilterEdit, &QLineEdit::textChanged, this, [this](const QString &text) {
        if (text.isEmpty())
            m_filterTimer->start();
    });
    connect(m_columnFilterEdit, &QLineEdit::textChanged, this, [this](const QString &text) {
        if (text.isEmpty())
            m_filterTimer->start();
    });
    connect(m_rowFilterColumn, QOverload<int>::of(&QComboBox::activated), this,
            &DataPage::applyFilters);
    connect(m_matchCase, &QCheckBox::toggled, this, &DataPage::applyFilters);
}

DataPage::~DataPage() = default;

QToolButton *DataPage::addToolButton(const QString &toolTip, const QIcon &icon)
{
    auto *button = new QToolButton(m_toolRow);
    button->setAutoRaise(true);
    button->setIcon(icon);
    button->setIconSize(QSize(16, 16));
    button->setToolTip(toolTip);
    button->setFocusPolicy(Qt::NoFocus);
    m_toolRow->layout()->addWidget(button);
    return button;
}

QToolButton *DataPage::scrollButton(Scroll scroll) const
{
    return m_scrollButtons[int(scroll)];
}

void DataPage::setItem(FlowItem *item)
{
    m_filterTimer->stop();
    m_view->setItem(item);
}

FlowItem *DataPage::item() const
{
    return m_view->item();
}

void DataPage::refresh()
{
    m_view->refresh();
}

void DataPage::onModelReset()
{
    // Resets come from runs of the item as well as from the filters; the column box is
    // rebuilt only when the columns changed, since a wide dataset makes that costly.
    const Dataset *data = m_view->dataModel()->dataset();
    const QStringList names
        = data && !m_view->dataModel()->isTooBig() ? data->headers() : QStringList();
    if (names != m_columnNames) {
        m_columnNames = names;
        fillColumnBox();
    }
    updateFilterCount();
    updateButtons();
}

void DataPage::onCopyDataset()
{
    if (const FlowItem *shown = item())
        DataTableView::copyDataset(*shown->dataset(), this);
}

void DataPage::onRowValues()
{
    m_view->requestRowValues(m_view->currentDatasetRow());
}

void DataPage::onColumnValues()
{
    m_view->requestColumnValues(m_view->currentDatasetColumn());
}

void DataPage::scroll(Scroll how)
{
    QScrollBar *horizontal = m_view->horizontalScrollBar();
    QScrollBar *vertical = m_view->verticalScrollBar();
    switch (how) {
    case Scroll::Left:
        horizontal->triggerAction(QAbstractSlider::SliderPageStepSub);
        break;
    case Scroll::Right:
        horizontal->triggerAction(QAbstractSlider::SliderPageStepAdd);
        break;
    case Scroll::Up:
        vertical->triggerAction(QAbstractSlider::SliderPageStepSub);
        break;
    case Scroll::Down:
        vertical->triggerAction(QAbstractSlider::SliderPageStepAdd);
        break;
    case Scroll::FirstColumn:
        horizontal->triggerAction(QAbstractSlider::SliderToMinimum);
        break;
    case Scroll::LastColumn:
        horizontal->triggerAction(QAbstractSlider::SliderToMaximum);
        break;
    case Scroll::FirstRow:
        vertical->triggerAction(QAbstractSlider::SliderToMinimum);
        break;
    case Scroll::LastRow:
        vertical->triggerAction(QAbstractSlider::SliderToMaximum);
        break;
    }
}

bool DataPage::isFilterRowShown() const
{
    return !m_filterRow->isHidden();
}

void DataPage::setFilterRowShown(bool shown)
{
    {
        const QSignalBlocker blocker(m_filterButton);
        m_filterButton->setChecked(shown);
    }
    if (shown == isFilterRowShown())
        return;
    m_filterRow->setVisible(shown);
    if (shown) {
        m_rowFilterEdit->setFocus();
        return;
    }
    // A filter nobody can see would only make rows seem lost.
    m_filterTimer->stop();
    m_view->dataModel()->clearFilters();
}

void DataPage::applyFilters()
{
    m_filterTimer->stop();
    DataTableModel *model = m_view->dataModel();
    const Qt::CaseSensitivity cs
        = m_matchCase->isChecked() ? Qt::CaseSensitive : Qt::CaseInsensitive;
    const int column = m_rowFilterColumn->currentData().isValid()
        ? m_rowFilterColumn->currentData().toInt()
        : -1;
    model->setFilters(m_rowFilterEdit->text(), column, cs, m_columnFilterEdit->text(), cs);
    updateFilterCount();
}

void DataPage::onModelFilterChanged()
{
    // Filters also come from the table's menu; the editors follow them.
    const DataTableModel *model = m_view->dataModel();
    if (m_rowFilterEdit->text() != model->rowFilterText()) {
        const QSignalBlocker blocker(m_rowFilterEdit);
        m_rowFilterEdit->setText(model->rowFilterText());
    }
    if (m_columnFilterEdit->text() != model->columnFilterText()) {
        const QSignalBlocker blocker(m_columnFilterEdit);
        m_columnFilterEdit->setText(model->columnFilterText());
    }
    const int index = m_rowFilterColumn->findData(model->rowFilterColumn());
    if (index >= 0)
        m_rowFilterColumn->setCurrentIndex(index);
    if (model->isRowFiltered() || model->isColumnFiltered())
        setFilterRowShown(true);
    updateFilterCount();
}

void DataPage::fillColumnBox()
{
    const DataTableModel *model = m_view->dataModel();
    const QVariant chosen = m_rowFilterColumn->currentData();
    const QSignalBlocker blocker(m_rowFilterColumn);
    m_rowFilterColumn->clear();
    m_rowFilterColumn->addItem(QStringLiteral("any column"), -1);
    for (int c = 0; c < m_columnNames.size(); ++c)
        m_rowFilterColumn->addItem(m_columnNames.at(c), c);
    const int index = m_rowFilterColumn->findData(
        model->isRowFiltered() ? QVariant(model->rowFilterColumn()) : chosen);
    m_rowFilterColumn->setCurrentIndex(qMax(0, index));
}

void DataPage::updateFilterCount()
{
    const DataTableModel *model = m_view->dataModel();
    QStringList parts;
    if (model->isRowFiltered())
        parts << QStringLiteral("%1 of %2 rows")
                     .arg(formatCount(model->rowCount()), formatCount(model->datasetRowCount()));
    if (model->isColumnFiltered())
        parts << QStringLiteral("%1 of %2 cols")
                     .arg(formatCount(model->columnCount()),
                          formatCount(model->datasetColumnCount()));
    m_filterCount->setText(parts.join(QLatin1String(", ")));
}

void DataPage::updateButtons()
{
    const DataTableModel *model = m_view->dataModel();
    const bool cells = model->rowCount() > 0 && model->columnCount() > 0;
    m_copyButton->setEnabled(item() && item()->dataset()->hasColumns());
    const bool current = cells && m_view->currentIndex().isValid();
    m_rowValuesButton->setEnabled(current);
    m_columnValuesButton->setEnabled(current);
    for (QToolButton *button : m_scrollButtons)
        button->setEnabled(cells);
}
