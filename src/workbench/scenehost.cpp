#include "workbench/scenehost.h"

#include "flow/document.h"
#include "flow/flowmodel.h"
#include "flow/transformitem.h"
#include "graph/graphscene.h"
#include "graph/node.h"
#include "graph/undo.h"
#include "shell/colors.h"
#include "shell/delaytimer.h"
#include "shell/guards.h"
#include "shell/settings.h"
#include "workbench/actionpane.h"
#include "workbench/documentflows.h"
#include "workbench/graphpane.h"
#include "workbench/itempane.h"
#include "workbench/mainwindow.h"
#include "workbench/mainwindowactions.h"
#include "workbench/runcontrol.h"
// graphpane.h returns its menu inline, which needs the full type.
#include "workbench/typeablemenu.h"

#include <QAction>
#include <QPointer>

SceneHost::SceneHost(MainWindow *window)
    : QObject(window)
    , m_window(window)
    , m_undoHistory(new UndoHistory(this))
    , m_undoRunDelay(new DelayTimer(this))
{
    UndoHistory::setCurrent(m_undoHistory);
    connect(m_undoRunDelay, &DelayTimer::timeout, this, &SceneHost::onProcessUndoRedoChanges);
    connect(m_undoHistory, &UndoHistory::aboutToSwapScene, window->itemPane(), &ItemPane::flush);
    connect(m_undoHistory, &UndoHistory::sceneSwapped, this, &SceneHost::onSceneSwapped);
    connect(m_undoHistory, &UndoHistory::changed, this, [this](bool documentEdited) {
        if (documentEdited)
            m_window->setWindowModified(true);
        updateUndoLabels();
    });
    connect(m_undoHistory, &UndoHistory::recoveryDue, this, &SceneHost::onRecoveryDue);
}

SceneHost::~SceneHost()
{
    if (UndoHistory::current() == m_undoHistory)
        UndoHistory::setCurrent(nullptr);
}

void SceneHost::detach()
{
    if (m_scene)
        disconnectScene(m_scene);
}

void SceneHost::onRecoveryDue()
{
    if (!m_scene)
        return;
    periodicRecoverySave(
        *m_scene->model(), m_window->documents()->currentData(), m_window->isWindowModified(),
        [this](const QString &text) { m_window->onShowTempMessage(text); },
        [](bool busy) { busy ? BusyCursor::push() : BusyCursor::pop(); });
}

void SceneHost::connectScene(GraphScene *scene)
{
    MainWindow *window = m_window;
    connect(scene, &QGraphicsScene::selectionChanged, window, &MainWindow::onGraphSelectionChanged);
    connect(scene, &GraphScene::doubleClickNode, window, &MainWindow::onShowNodeFullscreen);
    connect(scene, &GraphScene::nodesAdded, window, [window]() {
        window->graphPane()->onNodesAdded();
        window->onNodesChanged();
    });
    connect(scene, &GraphScene::nodesDeleted, window, [window]() {
        window->graphPane()->onNodesDeleted();
        window->onNodesChanged();
    });
    connect(scene, &GraphScene::nodeDataChanged, window, [window](FlowItem *item) {
        window->itemPane()->refreshAfterDataChange(item);
        window->refreshStatusCounts();
    });
    connect(scene, &GraphScene::nodeParametersChanged, window,
            [window](TransformItem *) { window->setWindowModified(true); });
    connect(scene, &GraphScene::nodesPosChanged, window,
            [window]() { window->graphPane()->onAutoZoom(); });
    connect(scene, &GraphScene::completedTransforms, window, &MainWindow::onCompletedTransforms);
    connect(scene, &GraphScene::fileOpen, window->documents(), &DocumentFlows::onFileOpenRequested);
    connect(scene, &GraphScene::showStatusBarMessage, window, &MainWindow::onShowStatusBarMessage);
    connect(scene, &GraphScene::showWarningMessage, window, &MainWindow::onShowWarningMessage);
    connect(scene, &GraphScene::showCriticalMessage, window, &MainWindow::onShowCriticalMessage);
    connect(scene, &GraphScene::showTempMessage, window, &MainWindow::onShowTempMessage);
    connect(scene, &GraphScene::showLogMessage, window, &MainWindow::onShowLogMessage);
    connect(scene, &GraphScene::showNodeLogMessage, window, &MainWindow::onShowLogMessage);
    connect(scene, &GraphScene::showProgress, window, &MainWindow::onShowProgress);
    connect(scene, &GraphScene::allowUserInteraction, window, &MainWindow::onAllowUserInteraction);
    connect(scene, &GraphScene::transformNodeAddedByUser, window->actionPane(),
            &ActionPane::recordTransformAdded);
    connect(scene, &GraphScene::showTip, window, &MainWindow::onShowTip);
}

void SceneHost::disconnectScene(GraphScene *scene)
{
    disconnect(scene, nullptr, m_window, nullptr);
    disconnect(scene, nullptr, m_window->documents(), nullptr);
    disconnect(scene, nullptr, m_window->actionPane(), nullptr);
}

void SceneHost::adopt(GraphScene *scene)
{
    m_scene = scene;
    scene->setBackgroundBrush(Colors::instance()->color(Colors::CenterBackground));
    m_window->graphPane()->setGraphScene(scene);
    connectScene(scene);
}

void SceneHost::replaceScene(GraphScene *scene)
{
    QPointer<GraphScene> old = m_scene;
    if (old)
        disconnectScene(old);
    m_window->itemPane()->showItems({});
    adopt(scene);
    m_undoHistory->setLiveScene(scene);
    // The history may have taken the old scene down with its list; what is left is ours.
    if (old)
        old->deleteLater();
    m_window->actionPane()->setSelection({});
    m_window->refreshStatusCounts();
    updateUndoLabels();
    m_window->runControl()->updateRunStatus();
}

void SceneHost::onSceneSwapped(GraphScene *live, GraphScene *old)
{
    if (old)
        disconnectScene(old);
    live->model()->setAutoRun(m_window->windowActions()[MainWindowActions::RunAuto]->isChecked());
    live->clearSelection();
    adopt(live);
    m_window->itemPane()->showItems({});
    m_window->actionPane()->setSelection({});
    QAction *snap = m_window->windowActions()[MainWindowActions::SnapToGrid];
    {
        const QSignalBlocker blocker(snap);
        snap->setChecked(live->snapToGrid());
    }
    m_window->refreshStatusCounts();
    m_window->runControl()->updateRunStatus();
    updateUndoLabels();
    // A quick series of undos runs once, after the last.
    m_undoRunDelay->start(qRound(Settings::instance()->processingDelay() * 1000.0));
}

void SceneHost::updateUndoLabels()
{
    QAction *undo = m_window->windowActions()[MainWindowActions::EditUndo];
    QAction *redo = m_window->windowActions()[MainWindowActions::EditRedo];
    const bool canUndo = m_undoHistory->canUndo();
    const bool canRedo = m_undoHistory->canRedo();
    undo->setText(canUndo ? QStringLiteral("&Undo %1").arg(m_undoHistory->undoHint())
                          : QStringLiteral("&Undo"));
    undo->setEnabled(canUndo);
    redo->setText(canRedo ? QStringLiteral("&Redo %1").arg(m_undoHistory->redoHint())
                          : QStringLiteral("&Redo"));
    redo->setEnabled(canRedo);
}

void SceneHost::onEditUndo()
{
    if (m_scene->isProcessing())
        return;
    m_undoHistory->undo();
    updateUndoLabels();
}

void SceneHost::onEditRedo()
{
    if (m_scene->isProcessing())
        return;
    m_undoHistory->redo();
    updateUndoLabels();
}

void SceneHost::onProcessUndoRedoChanges()
{
    if (m_scene->model()->autoRun() && !m_scene->isProcessing()) {
        FlowModel::setStopRequested(false);
        m_scene->process(FlowModel::RunChanges);
    }
}
