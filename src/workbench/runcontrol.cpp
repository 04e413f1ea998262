#include "workbench/runcontrol.h"

#include "flow/flowitem.h"
#include "flow/flowmodel.h"
#include "graph/graphscene.h"
#include "shell/settings.h"
#include "workbench/mainwindow.h"
#include "workbench/mainwindowactions.h"
#include "workbench/statusbar.h"

#include <QAction>

#include <algorithm>

RunControl::RunControl(MainWindow *window)
    : QObject(window)
    , m_window(window)
{
    const MainWindowActions &actions = window->windowActions();
    connect(actions[MainWindowActions::RunAuto], &QAction::toggled, this,
            &RunControl::onRunAutoToggled);
    connect(actions[MainWindowActions::RunChanges], &QAction::triggered, this,
            &RunControl::onRunChangesAction);
    connect(actions[MainWindowActions::RunSelected], &QAction::triggered, this,
            &RunControl::onRunSelectedAction);
    connect(actions[MainWindowActions::RunEverything], &QAction::triggered, this,
            &RunControl::onRunEverythingAction);
    connect(actions[MainWindowActions::RunStop], &QAction::triggered, this,
            &RunControl::onRunStopAction);
}

void RunControl::setAutoRunQuietly(bool autoRun)
{
    QAction *action = m_window->windowActions()[MainWindowActions::RunAuto];
    {
        const QSignalBlocker blocker(action);
        action->setChecked(autoRun);
    }
    m_window->graphScene()->model()->setAutoRun(autoRun);
    arrangeRunActions(autoRun);
}

void RunControl::arrangeRunActions(bool autoRun)
{
    m_window->windowActions().arrangeRunActions(autoRun);
    updateRunStatus();
}

void RunControl::onRunAutoToggled(bool on)
{
    GraphScene *scene = m_window->graphScene();
    scene->model()->setAutoRun(on);
    arrangeRunActions(on);
    m_window->setWindowModified(true);
    if (!on)
        return;
    const QList<FlowItem *> items = scene->model()->items();
    const bool pending = std::any_of(items.cbegin(), items.cend(), [](const FlowItem *item) {
        return item->status() == FlowItem::NeedsUpdate;
    });
    if (pending && !scene->isProcessing()) {
        FlowModel::setStopRequested(false);
        scene->process(FlowModel::RunChanges, false);
        FlowModel::setStopRequested(false);
    }
}

void RunControl::onRunChangesAction()
{
    FlowModel::setStopRequested(false);
    m_window->graphScene()->process(FlowModel::RunChanges);
}

void RunControl::onRunSelectedAction()
{
    FlowModel::setStopRequested(false);
    m_window->graphScene()->process(FlowModel::RunSelected);
}

void RunControl::onRunEverythingAction()
{
    FlowModel::setStopRequested(false);
    m_window->graphScene()->process(FlowModel::RunAll);
}

void RunControl::onRunStopAction()
{
    m_window->windowStatusBar()->showMessage(QStringLiteral("Run stopped by user"), 2000);
    FlowModel::setStopRequested(true);
    QAction *autoRun = m_window->windowActions()[MainWindowActions::RunAuto];
    if (!autoRun->isChecked())
        return;
    autoRun->setChecked(false);
    Settings *settings = Settings::instance();
    if (!settings->tipShown(QStringLiteral("tip_restart_auto_run"))) {
        settings->setTipShown(QStringLiteral("tip_restart_auto_run"), true);
        m_window->onShowTip(QStringLiteral("Auto run"),
                            QStringLiteral("Click here to go back to auto running changes."), 4000);
    }
}

void RunControl::updateRunStatus()
{
    GraphScene *scene = m_window->graphScene();
    if (!scene)
        return;
    const MainWindowActions &actions = m_window->windowActions();
    const bool autoRun = actions[MainWindowActions::RunAuto]->isChecked();
    const QList<FlowItem *> items = scene->model()->items();
    const bool unprocessed = std::any_of(items.cbegin(), items.cend(), [](const FlowItem *item) {
        return item->status() == FlowItem::NeedsUpdate || item->status() == FlowItem::Error;
    });
    const bool idle = !autoRun && !scene->isProcessing();
    actions[MainWindowActions::RunEverything]->setEnabled(idle && !items.isEmpty());
    actions[MainWindowActions::RunChanges]->setEnabled(idle && unprocessed);
    actions[MainWindowActions::RunSelected]->setEnabled(
        idle && !scene->QGraphicsScene::selectedItems().isEmpty());
}
