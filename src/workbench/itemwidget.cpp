#include "workbench/itemwidget.h"

#include "flow/flowmodel.h"
#include "flow/transformitem.h"
#include "graph/node.h"
#include "graph/undo.h"
#include "inspection/datapage.h"
#include "transforms/framework/transform.h"
#include "workbench/widgets.h"

#include <QCloseEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QSplitter>
#include <QStyle>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

QPlainTextEdit *makeMessagesEdit(const QString &toolTip, QWidget *parent)
{
    auto *edit = new QPlainTextEdit(parent);
    edit->setReadOnly(true);
    edit->setToolTip(toolTip);
    return edit;
}

// The status label opens the details when clicked. A long result is elided rather than
// widening the top bar past the pane, which would push the label out of sight.
class ClickableLabel : public QLabel
{
public:
    using QLabel::QLabel;
    std::function<void()> onClick;

    QSize minimumSizeHint() const override { return QSize(0, QLabel::minimumSizeHint().height()); }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        const QRect area = contentsRect();
        const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, area.width());
        style()->drawItemText(&painter, area, int(alignment()), palette(), isEnabled(), shown,
                              foregroundRole());
    }

    void mousePressEvent(QMouseEvent *event) override
    {
        QLabel::mousePressEvent(event);
        if (onClick)
            onClick();
    }
};

} // namespace

ItemWidget::ItemWidget(FlowItem *item, QWidget *parent)
    : QFrame(parent)
    , m_item(item)
{
    setObjectName(QStringLiteral("ItemWidget"));
    m_layout = new QVBoxLayout(this);
    m_layout->setContentsMargins(1, 1, 1, 1);
    m_layout->setSpacing(4);

    auto *topBar = new QHBoxLayout;
    topBar->setSpacing(2);
    const struct
    {
        const char *text;
        const char *tip;
        Qt::Key key;
    } shows[3] = {{"Options and data", "Show options and data. (%1)", Qt::Key_F8},
                  {"Options", "Show only options. (%1)", Qt::Key_F9},
                  {"Data", "Show only data. (%1)", Qt::Key_F10}};
    for (int mode = 0; mode < 3; ++mode) {
        auto *button = new QToolButton(this);
        button->setText(QString::fromLatin1(shows[mode].text));
        button->setCheckable(true);
        button->setAutoExclusive(true);
        button->setShortcut(QKeySequence(shows[mode].key));
        button->setToolTip(
            QString::fromLatin1(shows[mode].tip)
                .arg(QKeySequence(shows[mode].key).toString(QKeySequence::NativeText)));
        connect(button, &QToolButton::clicked, this, [this, mode] { setShowMode(mode); });
        m_showButtons[mode] = button;
        topBar->addWidget(button);
    }
    m_showButtons[OptionsAndData]->setChecked(true);
    m_fullScreenButton = new QToolButton(this);
    m_fullScreenButton->setText(QStringLiteral("Fullscreen"));
    m_fullScreenButton->setCheckable(true);
    m_fullScreenButton->setShortcut(QKeySequence(Qt::Key_F11));
    m_fullScreenButton->setToolTip(
        QStringLiteral("Toggle fullscreen on/off. (%1)\n'Esc' key also cancels fullscreen.")
            .arg(QKeySequence(Qt::Key_F11).toString(QKeySequence::NativeText)));
    connect(m_fullScreenButton, &QToolButton::clicked, this,
            [this] { setFullScreen(!m_fullScreen); });
    topBar->addWidget(m_fullScreenButton);
    topBar->addSpacing(8);
    m_statusIcon = new QLabel(this);
    topBar->addWidget(m_statusIcon);
    auto *statusLabel = new ClickableLabel(this);
    statusLabel->setToolTip(QStringLiteral("Click for more details."));
    statusLabel->setTextInteractionFlags(Qt::NoTextInteraction);
    statusLabel->onClick = [this] {
        setCurrentTab(DetailsTab);
    };
    m_statusLabel = statusLabel;
    topBar->addWidget(m_statusLabel, 1);
    m_layout->addLayout(topBar);

    // Options and tabs share the height through a splitter, and long option lists scroll,
    // so that a transform with many options still leaves room for its table.
    m_splitter = new QSplitter(Qt::Vertical, this);
    m_splitter->setChildrenCollapsible(false);
    m_optionsScroll = new QScrollArea(m_splitter);
    m_optionsScroll->setWidgetResizable(true);
    m_optionsScroll->setFrameShape(QFrame::NoFrame);
    m_optionsArea = new QWidget;
    m_optionsLayout = new QVBoxLayout(m_optionsArea);
    m_optionsLayout->setContentsMargins(1, 1, 1, 1);
    m_optionsLayout->setSpacing(4);
    m_form = new QFormLayout;
    m_form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    m_form->setSpacing(4);
    m_optionsLayout->addLayout(m_form);
    m_optionsScroll->setWidget(m_optionsArea);
    m_splitter->addWidget(m_optionsScroll);
    m_layout->addWidget(m_splitter, 1);

    m_tabs = new QTabWidget(m_splitter);
    m_dataPage = new DataPage(m_tabs);
    m_tabs->addTab(m_dataPage, QStringLiteral("Data"));
    auto *characters = new QWidget(m_tabs);
    m_tabs->addTab(characters, QStringLiteral("Characters"));
    m_warnings
        = makeMessagesEdit(QStringLiteral("Warnings from the most recent processing."), m_tabs);
    m_tabs->addTab(m_warnings, QStringLiteral("Warnings"));
    m_tabs->setTabToolTip(WarningsTab, m_warnings->toolTip());
    m_info
        = makeMessagesEdit(QStringLiteral("Information from the most recent processing."), m_tabs);
    m_tabs->addTab(m_info, QStringLiteral("Info"));
    m_tabs->setTabToolTip(InfoTab, m_info->toolTip());
    m_comment = new DelayedPlainTextEdit(m_tabs);
    m_comment->setToolTip(
        QStringLiteral("Add a useful comment for a colleague or your future self."));
    m_tabs->addTab(m_comment, QStringLiteral("Comment"));
    m_tabs->setTabToolTip(CommentTab, m_comment->toolTip());
    m_details = makeMessagesEdit(QStringLiteral("Details of the most recent processing."), m_tabs);
    m_tabs->addTab(m_details, QStringLiteral("Details"));
    m_tabs->setTabToolTip(DetailsTab, m_details->toolTip());
    m_splitter->addWidget(m_tabs);
    m_splitter->setStretchFactor(0, 0);
    m_splitter->setStretchFactor(1, 1);
    connect(m_splitter, &QSplitter::splitterMoved, this, [this] { m_splitterMoved = true; });

    connect(m_tabs, &QTabWidget::currentChanged, this, &ItemWidget::onTabChanged);
    connect(m_comment, &DelayedPlainTextEdit::delayedTextChanged, this,
            &ItemWidget::onCommentChanged);
    connect(m_dataPage, &DataPage::selectedDataCellsChanged, this,
            &ItemWidget::selectedDataCellsChanged);

    if (m_item) {
        m_comment->setTextQuietly(m_item->comment());
        m_dataPage->setItem(m_item);
        connect(m_item, &FlowItem::processingStart, this, [this] { refreshStatus(); });
        connect(m_item, &FlowItem::processingEnd, this, [this] { refreshAfterRun(); });
    }
    refreshAfterRun();
}

ItemWidget::~ItemWidget() = default;

FlowModel *ItemWidget::model() const
{
    return m_item ? m_item->model() : nullptr;
}

void ItemWidget::applyPendingEdits()
{
    m_comment->flush();
}

QString ItemWidget::messagesText(bool has, const QString &text)
{
    return has ? text : QStringLiteral("No messages");
}

QString ItemWidget::statusText(const FlowItem *item, bool autoRun)
{
    if (!item)
        return QString();
    switch (item->status()) {
    case FlowItem::NeedsUpdate:
        return autoRun ? QStringLiteral("Awaiting update") : QStringLiteral("Run to update");
    case FlowItem::Updating:
        return QStringLiteral("Processing...");
    default:
        break;
    }
    if (item->kind() == FlowItem::TransformKind) {
        const auto *transformItem = static_cast<const TransformItem *>(item);
        if (transformItem->transform() && item->status() == FlowItem::UpToDate)
            return transformItem->transform()->result();
    }
    return item->statusLine();
}

void ItemWidget::refreshStatus()
{
    const FlowModel *flow = model();
    const QString text = statusText(m_item, flow ? flow->autoRun() : true);
    m_statusLabel->setText(text);
    m_statusLabel->setVisible(!text.isEmpty());
    const int side = qMax(8, qRound(m_statusLabel->fontMetrics().height() * 0.9));
    QPixmap icon(side * devicePixelRatio(), side * devicePixelRatio());
    icon.setDevicePixelRatio(devicePixelRatio());
    icon.fill(Qt::transparent);
    if (m_item) {
        QPainter painter(&icon);
        painter.setRenderHint(QPainter::Antialiasing);
        Node::drawStatusIcon(&painter, QRectF(0, 0, side, side), int(m_item->statusIcon()));
    }
    m_statusIcon->setPixmap(icon);
    m_statusIcon->setVisible(m_item && m_item->statusIcon() != NodeStatusIcon::Empty);
}

void ItemWidget::refreshAfterRun()
{
    refreshStatus();
    if (m_item) {
        m_warnings->setPlainText(messagesText(m_item->hasWarnings(), m_item->warningsText()));
        m_info->setPlainText(messagesText(m_item->hasInfo(), m_item->infoText()));
    } else {
        m_warnings->setPlainText(messagesText(false, QString()));
        m_info->setPlainText(messagesText(false, QString()));
    }
    updateDetails();
    m_dataPage->refresh();
}

void ItemWidget::refreshAfterDataChange()
{
    m_dataPage->refresh();
    refreshStatus();
}

void ItemWidget::updateDetails()
{
    if (!m_item) {
        m_details->clear();
        return;
    }
    QStringList lines;
    const QList<QList<QPair<QString, QString>>> groups
        = {m_item->identitySummary(), m_item->fileSummary(), m_item->parameterSummary(),
           m_item->runSummary()};
    for (const auto &group : groups) {
        if (group.isEmpty())
            continue;
        if (!lines.isEmpty())
            lines.append(QString());
        for (const auto &entry : group)
            lines.append(entry.first + QStringLiteral(": ") + entry.second);
    }
    m_details->setPlainText(lines.join(QLatin1Char('\n')));
}

void ItemWidget::setInteractionAllowed(bool allowed)
{
    m_optionsArea->setEnabled(allowed);
    m_comment->setReadOnly(!allowed);
}

int ItemWidget::currentTab() const
{
    return m_tabs->currentIndex();
}

void ItemWidget::setCurrentTab(int index)
{
    if (index >= 0 && index < m_tabs->count())
        m_tabs->setCurrentIndex(index);
}

void ItemWidget::onTabChanged(int index)
{
    if (index == DetailsTab)
        updateDetails();
    emit currentTabChanged(index);
}

void ItemWidget::onCommentChanged()
{
    if (!m_item)
        return;
    const QString text = m_comment->toPlainText();
    if (text == m_item->comment())
        return;
    {
        UndoStep step(QStringLiteral("comment changed"));
        m_item->setComment(text);
    }
    emit nodeCommentChanged(m_item);
    emit changeNeedsSave();
}

QToolButton *ItemWidget::showButton(int mode) const
{
    return mode >= 0 && mode < 3 ? m_showButtons[mode] : nullptr;
}

void ItemWidget::setShowMode(int mode)
{
    if (mode < OptionsAndData || mode > DataOnly)
        return;
    m_showMode = mode;
    m_showButtons[mode]->setChecked(true);
    m_optionsScroll->setVisible(mode != DataOnly);
    m_tabs->setVisible(mode != OptionsOnly);
    placeSplitter();
}

void ItemWidget::resizeEvent(QResizeEvent *event)
{
    QFrame::resizeEvent(event);
    placeSplitter();
}

// The splitter left alone would give the options only their minimum, a sliver: they get
// what they ask for, up to most of the height, and the table the rest, until the user moves
// the handle.
void ItemWidget::placeSplitter()
{
    if (m_splitterMoved || !m_optionsScroll->isVisibleTo(this) || !m_tabs->isVisibleTo(this))
        return;
    const int total = m_splitter->height() - m_splitter->handleWidth();
    if (total <= 0)
        return;
    int wanted = m_optionsArea->sizeHint().height() + 2 * m_optionsScroll->frameWidth();
    // Options wider than the pane scroll sideways, and that bar takes height too.
    if (m_optionsArea->minimumSizeHint().width() > m_splitter->width())
        wanted += m_optionsScroll->horizontalScrollBar()->sizeHint().height();
    const int options = qMin(wanted, total * 3 / 5);
    m_splitter->setSizes({options, total - options});
}

void ItemWidget::setFullScreen(bool on)
{
    m_fullScreenButton->setChecked(on);
    if (on == m_fullScreen)
        return;
    m_fullScreen = on;
    if (on) {
        setParent(nullptr, Qt::Window);
        showFullScreen();
        activateWindow();
    } else {
        hide();
        setWindowState(windowState() & ~Qt::WindowFullScreen);
        emit fullScreenReleased(this);
    }
}

// A form keeps the spacing of a row whose widgets are merely hidden, so rows that don't apply
// are taken out of the form and put back at their place among the rows still in it.
void ItemWidget::setRowVisible(QWidget *field, bool visible)
{
    if (m_hiddenRows.isEmpty()) {
        // Every row is in the form: its order is the order to restore.
        m_rows.clear();
        for (int row = 0; row < m_form->rowCount(); ++row) {
            QLayoutItem *item = m_form->itemAt(row, QFormLayout::FieldRole);
            if (!item)
                item = m_form->itemAt(row, QFormLayout::SpanningRole);
            QLayoutItem *label = m_form->itemAt(row, QFormLayout::LabelRole);
            m_rows.append(
                FormRow {item ? item->widget() : nullptr, label ? label->widget() : nullptr});
        }
    }
    int index = -1;
    for (int i = 0; i < m_rows.size() && index < 0; ++i)
        if (m_rows.at(i).field == field)
            index = i;
    if (index < 0) {
        field->setVisible(visible);
        return;
    }
    QWidget *label = m_rows.at(index).label;
    const bool hidden = m_hiddenRows.contains(field);
    if (!visible && !hidden) {
        const QFormLayout::TakeRowResult taken = m_form->takeRow(field);
        delete taken.labelItem;
        delete taken.fieldItem;
        m_hiddenRows.insert(field);
    } else if (visible && hidden) {
        int row = 0;
        for (int i = 0; i < index; ++i)
            if (!m_hiddenRows.contains(m_rows.at(i).field))
                ++row;
        if (label)
            m_form->insertRow(row, label, field);
        else
            m_form->insertRow(row, field);
        m_hiddenRows.remove(field);
    }
    if (label)
        label->setVisible(visible);
    field->setVisible(visible);
}

void ItemWidget::requestRun(bool viaTimer)
{
    emit nodeStatusChanged();
    emit changeNeedsSave();
    emit restartTimer();
    if (!viaTimer)
        emit flushTimer();
}

void ItemWidget::keyPressEvent(QKeyEvent *event)
{
    if (m_fullScreen && event->key() == Qt::Key_Escape) {
        setFullScreen(false);
        return;
    }
    QFrame::keyPressEvent(event);
}

void ItemWidget::closeEvent(QCloseEvent *event)
{
    // Closing the full-screen window gives the page back instead of losing it.
    if (m_fullScreen) {
        event->ignore();
        setFullScreen(false);
        return;
    }
    QFrame::closeEvent(event);
}
