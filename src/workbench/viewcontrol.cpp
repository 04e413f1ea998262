#include "workbench/viewcontrol.h"

#include "graph/graphscene.h"
#include "shell/settings.h"
#include "workbench/graphpane.h"
#include "workbench/itempane.h"
#include "workbench/logpane.h"
#include "workbench/mainwindow.h"
#include "workbench/mainwindowactions.h"
// graphpane.h returns its menu inline, which needs the full type.
#include "workbench/typeablemenu.h"

#include <QAction>
#include <QGuiApplication>
#include <QScreen>
#include <QSplitter>
#include <QToolBar>

using A = MainWindowActions;

ViewControl::ViewControl(MainWindow *window, QSplitter *splitter)
    : QObject(window)
    , m_window(window)
    , m_splitter(splitter)
{
    showSettings();
    connectZoom();
    connectCanvasFlags();
    const A &actions = window->windowActions();
    connect(actions[A::ToolBarVisibility], &QAction::toggled, actions.toolBar(),
            &QToolBar::setVisible);
    connect(actions[A::LogVisibility], &QAction::toggled, this,
            &ViewControl::onLogVisibilityToggled);
    connect(actions[A::TwoScreenMode], &QAction::toggled, this,
            &ViewControl::onTwoScreenModeToggled);
    connect(window->itemPane(), &ItemPane::closeRequested, this, &ViewControl::onItemPaneClosed);
    connect(window->graphPane(), &GraphPane::zoomButtonClicked, this,
            &ViewControl::updateZoomActions);
    connect(qApp, &QGuiApplication::screenAdded, this, &ViewControl::onEnableTwoScreenMode);
    connect(qApp, &QGuiApplication::screenRemoved, this, &ViewControl::onEnableTwoScreenMode);
}

void ViewControl::showSettings()
{
    const A &actions = m_window->windowActions();
    Settings *settings = Settings::instance();
    actions[A::ShowComments]->setChecked(settings->showComments());
    actions[A::ShowChanges]->setChecked(settings->showChanges());
    actions[A::ShowWarnings]->setChecked(settings->showWarnings());
    const A::Id tipLevels[]
        = {A::CenterToolTipsOff, A::CenterToolTipsBrief, A::CenterToolTipsDetailed};
    for (int level = 0; level < 3; ++level)
        actions[tipLevels[level]]->setChecked(settings->showCenterPaneTips() == level);
    actions[A::LogVisibility]->setChecked(settings->logPaneShown());
}

void ViewControl::connectZoom()
{
    const A &actions = m_window->windowActions();
    GraphPane *pane = m_window->graphPane();
    connect(actions[A::ZoomToFit], &QAction::toggled, this, &ViewControl::onZoomToFitToggled);
    connect(actions[A::ZoomIn], &QAction::triggered, this,
            [this]() { zoom(&GraphPane::onZoomIn); });
    connect(actions[A::ZoomOut], &QAction::triggered, this,
            [this]() { zoom(&GraphPane::onZoomOut); });
    connect(actions[A::ZoomSelected], &QAction::triggered, this,
            [this]() { zoom(&GraphPane::onZoomSelected); });
    connect(actions[A::MagnifyUnderCursor], &QAction::toggled, pane,
            &GraphPane::onMagnifyUnderCursor);
}

void ViewControl::connectCanvasFlags()
{
    const A &actions = m_window->windowActions();
    connect(actions[A::SnapToGrid], &QAction::toggled, this, [this](bool on) {
        if (m_window->graphScene()->snapToGrid() != on)
            m_window->graphScene()->setSnapToGrid(on);
    });
    const std::pair<A::Id, void (*)(bool)> flags[]
        = {{A::ShowComments,
            [](bool on) {
                Settings::instance()->setShowComments(on);
            }},
           {A::ShowChanges,
            [](bool on) {
                Settings::instance()->setShowChanges(on);
            }},
           {A::ShowWarnings,
            [](bool on) {
                Settings::instance()->setShowWarnings(on);
            }},
           {A::ViewTimingProfile, nullptr}};
    for (const auto &entry : flags) {
        const auto store = entry.second;
        connect(actions[entry.first], &QAction::toggled, this,
                [this, store](bool on) { onCanvasFlagToggled(store, on); });
    }
    const A::Id tipLevels[]
        = {A::CenterToolTipsOff, A::CenterToolTipsBrief, A::CenterToolTipsDetailed};
    for (int level = 0; level < 3; ++level) {
        connect(actions[tipLevels[level]], &QAction::toggled, this, [level](bool on) {
            if (on)
                Settings::instance()->setShowCenterPaneTips(level);
        });
    }
}

void ViewControl::updateZoomActions()
{
    const A &actions = m_window->windowActions();
    GraphPane *pane = m_window->graphPane();
    actions[A::ZoomIn]->setEnabled(pane->canZoomIn());
    actions[A::ZoomOut]->setEnabled(pane->canZoomOut());
    const QSignalBlocker blocker(actions[A::ZoomToFit]);
    actions[A::ZoomToFit]->setChecked(pane->zoomFit());
}

void ViewControl::onZoomToFitToggled(bool on)
{
    m_window->graphPane()->setZoomFit(on);
    if (on)
        m_window->graphPane()->onZoomToFit();
    updateZoomActions();
}

void ViewControl::zoom(void (GraphPane::*step)())
{
    (m_window->graphPane()->*step)();
    updateZoomActions();
}

void ViewControl::onCanvasFlagToggled(void (*store)(bool), bool on)
{
    GraphScene *scene = m_window->graphScene();
    if (store)
        store(on);
    else // the canvas reads the flag off the scene when it paints the timing bars
        scene->setProperty("timingProfile", on);
    scene->update();
}

void ViewControl::onLogVisibilityToggled(bool on)
{
    m_window->logPane()->setVisible(on);
    Settings::instance()->setLogPaneShown(on);
}

void ViewControl::onTwoScreenModeToggled(bool on)
{
    ItemPane *itemPane = m_window->itemPane();
    const bool floating = !itemPane->parentWidget();
    if (on == floating)
        return;
    if (!on) {
        m_splitter->addWidget(itemPane);
        itemPane->show();
        if (m_dockedWidths.size() == m_splitter->count())
            m_splitter->setSizes(m_dockedWidths);
        return;
    }
    m_dockedWidths = m_splitter->sizes();
    // The other screen is the first that does not show this window; with a single screen
    // (the action is disabled then, but a caller may still set it) the pane stays on it.
    QScreen *own = m_window->screen();
    QScreen *target = own;
    const QList<QScreen *> screens = QGuiApplication::screens();
    for (QScreen *candidate : screens) {
        if (candidate != own) {
            target = candidate;
            break;
        }
    }
    itemPane->setParent(nullptr);
    itemPane->setWindowTitle(m_window->windowTitle());
    itemPane->setWindowIcon(m_window->windowIcon());
    if (target)
        itemPane->setGeometry(target->availableGeometry());
    itemPane->show();
    if (target && target != own)
        itemPane->showMaximized();
}

void ViewControl::onEnableTwoScreenMode()
{
    const bool available = QGuiApplication::screens().size() >= 2;
    QAction *twoScreens = m_window->windowActions()[A::TwoScreenMode];
    twoScreens->setEnabled(available);
    if (!available && twoScreens->isChecked())
        twoScreens->setChecked(false);
}

void ViewControl::onItemPaneClosed()
{
    m_window->windowActions()[A::TwoScreenMode]->setChecked(false);
}
