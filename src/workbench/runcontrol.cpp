#include "workbench/runcontrol.h"

#include "graph/graphscene.h"
#include "graph/node.h"
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
    m_window->graphScene()->setAutoRun(autoRun);
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
    scene->setAutoRun(on);
    arrangeRunActions(on);
    m_window->setWindowModified(true);
    if (!on)
        return;
    const QList<Node *> nodes = scene->nodes();
    const bool pending = std::any_of(nodes.cbegin(), nodes.cend(), [](const Node *node) {
        return node->status() == Node::NeedsUpdate;
    });
    if (pending && !scene->isProcessing()) {
        GraphScene::setStopRequested(false);
        scene->process(GraphScene::RunChanges, false);
        GraphScene::setStopRequested(false);
    }
}

void RunControl::onRunChangesAction()
{
    GraphScene::setStopRequested(false);
    m_window->graphScene()->process(GraphScene::RunChanges);
}

void RunControl::onRunSelectedAction()
{
    GraphScene::setStopRequested(false);
    m_window->graphScene()->process(GraphScene::RunSelected);
}

void RunControl::onRunEverythingAction()
{
    GraphScene::setStopRequested(false);
    m_window->graphScene()->process(GraphScene::RunAll);
}

void RunControl::onRunStopAction()
{
    m_window->windowStatusBar()->showMessage(QStringLiteral("Run stopped by user"), 2000);
    GraphScene::setStopRequested(true);
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
    const QList<Node *> nodes = scene->nodes();
    const bool unprocessed = std::any_of(nodes.cbegin(), nodes.cend(), [](const Node *node) {
        return node->status() == Node::NeedsUpdate || node->status() == Node::Error;
    });
    const bool idle = !autoRun && !scene->isProcessing();
    actions[MainWindowActions::RunEverything]->setEnabled(idle && !nodes.isEmpty());
    actions[MainWindowActions::RunChanges]->setEnabled(idle && unprocessed);
    actions[MainWindowActions::RunSelected]->setEnabled(idle && !scene->selectedItems().isEmpty());
}
