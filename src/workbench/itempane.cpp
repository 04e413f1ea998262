#include "workbench/itempane.h"

#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/noteitem.h"
#include "flow/outputitem.h"
#include "flow/transformitem.h"
#include "inspection/datapage.h"
#include "inspection/datatableview.h"
#include "shell/delaytimer.h"
#include "shell/guards.h"
#include "shell/messageboxes.h"
#include "shell/settings.h"
#include "workbench/inputitemwidget.h"
#include "workbench/itemwidget.h"
#include "workbench/noteitemwidget.h"
#include "workbench/outputitemwidget.h"
#include "workbench/transformitemwidget.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMainWindow>
#include <QPainter>
#include <QStatusBar>
#include <QVBoxLayout>

// The window whose status bar carries the selection sums: the pane's own, or, when the pane
// floats on a second screen, the main window it belongs to.
static QMainWindow *statusWindow(QWidget *pane)
{
    if (auto *window = qobject_cast<QMainWindow *>(pane->window()))
        return window;
    for (QWidget *top : QApplication::topLevelWidgets())
        if (auto *window = qobject_cast<QMainWindow *>(top))
            if (window->isVisible())
                return window;
    return nullptr;
}

ItemPane::ItemPane(QWidget *parent)
    : QWidget(parent)
    , m_timer(new DelayTimer(this))
{
    setObjectName(QStringLiteral("ItemPane"));
    setMinimumWidth(510);
    m_layout = new QVBoxLayout(this);
    m_layout->setContentsMargins(1, 1, 1, 1);
    connect(m_timer, &DelayTimer::timeout, this, &ItemPane::onProcessChanges);
}

ItemPane::~ItemPane()
{
    m_timer->stop();
}

ItemWidget *ItemPane::createWidget(FlowItem *item, QWidget *parent)
{
    switch (item->kind()) {
    case FlowItem::InputKind:
        return new InputItemWidget(static_cast<InputItem *>(item), parent);
    case FlowItem::TransformKind:
        return new TransformItemWidget(static_cast<TransformItem *>(item), parent);
    case FlowItem::OutputKind:
        return new OutputItemWidget(static_cast<OutputItem *>(item), parent);
    case FlowItem::NoteKind:
        return new NoteItemWidget(static_cast<NoteItem *>(item), parent);
    default:
        return new ItemWidget(item, parent);
    }
}

void ItemPane::clearWidget()
{
    flush();
    if (!m_widget)
        return;
    // Edits that need no run (a comment) are not behind the timer; they go now as well.
    m_widget->applyPendingEdits();
    onSelectionStatisticsChanged(QString());
    ItemWidget *old = m_widget;
    // The old table may still change its selection while it goes; its sums are gone with it.
    if (DataPage *data = old->dataPage())
        disconnect(data->view(), nullptr, this, nullptr);
    m_widget = nullptr;
    old->hide();
    m_layout->removeWidget(old);
    // Later, since the old page may be the sender of what brought us here.
    old->deleteLater();
}

void ItemPane::showItems(const QList<FlowItem *> &selected)
{
    clearWidget();
    if (selected.size() != 1 || !selected.first()) {
        update();
        return;
    }
    FlowItem *item = selected.first();
    ItemWidget *widget = nullptr;
    {
        UpdateBlocker blocker(this);
        widget = createWidget(item, this);
        widget->setCurrentTab(m_tab);
        widget->setInteractionAllowed(m_interactionAllowed);
        connect(widget, &ItemWidget::fullScreenReleased, this, &ItemPane::onFullScreenReleased);
        connect(widget, &ItemWidget::nodeStatusChanged, this, &ItemPane::nodeStatusChanged);
        connect(widget, &ItemWidget::nodeCommentChanged, this, &ItemPane::nodeCommentChanged);
        connect(widget, &ItemWidget::warnOverwritingOutputMoreThanOnce, this,
                &ItemPane::onWarnOverwritingOutputMoreThanOnce);
        connect(widget, &ItemWidget::flushTimer, this, &ItemPane::onFlushTimer);
        connect(widget, &ItemWidget::restartTimer, this, &ItemPane::onRestartTimer);
        connect(widget, &ItemWidget::stopTimer, this, &ItemPane::onStopTimer);
        connect(widget, &ItemWidget::restartTimerIfActive, this, &ItemPane::onRestartTimerIfActive);
        connect(widget, &ItemWidget::selectedDataCellsChanged, this,
                &ItemPane::selectedDataCellsChanged);
        connect(widget, &ItemWidget::currentTabChanged, this, &ItemPane::onItemCurrentTabChanged);
        if (DataPage *data = widget->dataPage())
            connect(data->view(), &DataTableView::selectionStatisticsChanged, this,
                    &ItemPane::onSelectionStatisticsChanged);
        connect(widget, &ItemWidget::changeNeedsSave, this, &ItemPane::changeNeedsSave);
        m_layout->addWidget(widget);
        m_widget = widget;
    }
    widget->show();
}

void ItemPane::flush()
{
    onFlushTimer();
}

void ItemPane::refreshAfterRun(FlowItem *item)
{
    if (m_widget && item && m_widget->item() == item)
        m_widget->refreshAfterRun();
}

void ItemPane::refreshAfterDataChange(FlowItem *item)
{
    if (m_widget && item && m_widget->item() == item)
        m_widget->refreshAfterDataChange();
}

ItemWidget *ItemPane::currentWidget() const
{
    return m_widget;
}

void ItemPane::setInteractionAllowed(bool allowed)
{
    m_interactionAllowed = allowed;
    if (m_widget)
        m_widget->setInteractionAllowed(allowed);
}

void ItemPane::setFullScreen(bool on)
{
    if (m_widget)
        m_widget->setFullScreen(on);
}

bool ItemPane::isTimerActive() const
{
    return m_timer->isActive();
}

void ItemPane::onRestartTimer()
{
    m_timer->stop();
    m_runWaiting = true;
    m_timer->start(qMax(0, qRound(Settings::instance()->processingDelay() * 1000.0)));
}

void ItemPane::onRestartTimerIfActive()
{
    if (m_timer->isActive())
        onRestartTimer();
}

void ItemPane::onStopTimer()
{
    m_timer->stop();
}

void ItemPane::onFlushTimer()
{
    if (!m_runWaiting)
        return;
    m_timer->stop();
    onProcessChanges();
}

void ItemPane::onProcessChanges()
{
    m_runWaiting = false;
    m_timer->stop();
    if (!m_widget)
        return;
    const QPointer<ItemWidget> widget = m_widget;
    widget->applyPendingEdits();
    FlowItem *item = widget->item();
    if (!item)
        return;
    item->setStatus(FlowItem::NeedsUpdate, true);
    widget->refreshStatus();
    emit nodeStatusChanged();
    FlowModel *model = item->model();
    // The scene over the model shows the busy cursor during the run.
    if (model && model->autoRun())
        model->process(FlowModel::RunChanges);
    if (widget)
        widget->refreshAfterRun();
}

void ItemPane::onSelectionStatisticsChanged(const QString &text)
{
    const QString previous = m_statistics;
    m_statistics = text;
    if (previous == text)
        return;
    emit selectionStatisticsChanged(text);
    QMainWindow *window = statusWindow(this);
    if (!window)
        return;
    QStatusBar *bar = window->statusBar();
    if (!text.isEmpty())
        bar->showMessage(text);
    else if (bar->currentMessage() == previous) // leave other messages alone
        bar->clearMessage();
}

void ItemPane::onItemCurrentTabChanged(int index)
{
    m_tab = index;
}

void ItemPane::onFullScreenReleased(ItemWidget *widget)
{
    if (!widget)
        return;
    if (widget != m_widget) {
        widget->deleteLater();
        return;
    }
    widget->setParent(this);
    m_layout->addWidget(widget);
    widget->show();
}

void ItemPane::onWarnOverwritingOutputMoreThanOnce()
{
    MessageBoxes::warning(this, QStringLiteral("Output"),
                          QStringLiteral("More than one output writes to this file. Each run "
                                         "overwrites what the others wrote."));
}

void ItemPane::paintEvent(QPaintEvent *event)
{
    QWidget::paintEvent(event);
    if (m_widget && !m_widget->isFullScreenOn())
        return;
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Disabled, QPalette::WindowText));
    painter.drawText(rect(), Qt::AlignCenter,
                     QStringLiteral("Select 1 item in the Center pane to view"));
}

void ItemPane::closeEvent(QCloseEvent *event)
{
    // Floating on a second screen, the pane lives as long as the window does.
    if (!parentWidget()) {
        event->ignore();
        emit closeRequested();
        return;
    }
    QWidget::closeEvent(event);
}

void ItemPane::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && !parentWidget() && isActiveWindow()) {
        for (QWidget *top : QApplication::topLevelWidgets())
            if (top != this && top->inherits("QMainWindow") && top->isVisible())
                top->raise();
    }
}
