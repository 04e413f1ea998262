#include "workbench/mainwindow.h"

#include "graph/graphscene.h"
#include "graph/inputnode.h"
#include "graph/node.h"
#include "graph/outputnode.h"
#include "graph/transformnode.h"
#include "graph/undo.h"
#include "io/filetypes.h"
#include "shell/application.h"
#include "shell/colors.h"
#include "shell/guards.h"
#include "shell/insufficientmemorydialog.h"
#include "shell/memory.h"
#include "shell/preferencesdialog.h"
#include "shell/settings.h"
#include "transforms/framework/transform.h"
#include "workbench/actionpane.h"
#include "workbench/graphpane.h"
#include "workbench/itempane.h"
#include "workbench/logpane.h"
#include "workbench/statusbar.h"
// graphpane.h returns its menu inline, which needs the full type.
#include "workbench/typeablemenu.h"

#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QCursor>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QInputDialog>
#include <QMenuBar>
#include <QMimeData>
#include <QPainter>
#include <QProcess>
#include <QScreen>
#include <QShortcut>
#include <QSplitter>
#include <QTimer>
#include <QToolBar>
#include <QToolTip>

#include <algorithm>
#include <cmath>

// Resources of a static library have to be registered by hand, outside any namespace.
static void initResources()
{
    Q_INIT_RESOURCE(resources);
}

namespace {

MainWindow::MessageHook s_messageHook;
MainWindow::FileDialogHook s_fileDialogHook;

const QString s_productName = QStringLiteral("Tabulon");
constexpr int MaximumRecentDocuments = 10;
// Dropping a folder can bring in far more files than meant; above this many the user confirms.
constexpr int DroppedFilesLimit = 20;
constexpr int MissingFilesListed = 10;
constexpr qreal DroppedFileSpacing = 239.4;
constexpr int ThemeCheckMs = 5000;
constexpr int MemoryRefreshMs = 2000;

enum UiTheme { ThemeSystem = 0, ThemeLight = 1, ThemeDark = 2 };
enum OpenAutoRun { AutoRunOff = 0, AutoRunAsSaved = 1, AutoRunOn = 2 };

QString notAvailableText(const QString &what)
{
    return QStringLiteral("%1 is not yet available in this version.").arg(what);
}

QString achievementLine(int exponent)
{
    switch (exponent) {
    case 6:
        return QStringLiteral("Take that, Excel!");
    case 7:
        return QStringLiteral("Maybe have a lie down?");
    case 8:
        return QStringLiteral("We're glad to see you're getting value for money.");
    case 9:
        return QStringLiteral("Welcome to the billion rows club.");
    case 10:
        return QStringLiteral("We think your boss should give you a raise!");
    case 11:
        return QStringLiteral("To infinity, and beyond!");
    case 12:
        return QStringLiteral("Post a screenshot of this on the Tabulon forum!");
    default:
        return QStringLiteral("Awesome!!");
    }
}

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
{
    initResources();
    setAcceptDrops(true);
    setWindowIcon(QIcon(QStringLiteral(":/icons/tabulon.svg")));

    m_undoHistory = new UndoHistory(this);
    UndoHistory::setCurrent(m_undoHistory);

    m_undoRedoTimer = new QTimer(this);
    m_undoRedoTimer->setSingleShot(true);
    connect(m_undoRedoTimer, &QTimer::timeout, this, &MainWindow::onProcessUndoRedoChanges);

    m_systemDark = Settings::isSystemDark();
    buildActions();
    buildPanes();
    buildToolBar();

    Settings *settings = Settings::instance();
    if (!settings->totalRowsProcessedStartDate().isValid())
        settings->setTotalRowsProcessedStartDate(QDate::currentDate());
    Dataset::setOptimizeFor(settings->optimizeFor());
    static const int iconSizes[] = {16, 24, 32};
    const int iconSize = iconSizes[qBound(0, settings->toolbarIconSize(), 2)];
    m_toolBar->setIconSize(QSize(iconSize, iconSize));

    m_statusBar = new StatusBar(this);
    setStatusBar(m_statusBar);
    connect(m_statusBar->nodeStatusWidget(), &NodeStatusWidget::selectIconsOfType, this,
            &MainWindow::onSelectIconsOfType);
    if (Application *application = Application::instance())
        connect(application, &Application::heartBeat, m_statusBar, &StatusBar::onHeartBeat);
    auto *memoryTimer = new QTimer(this);
    connect(memoryTimer, &QTimer::timeout, m_statusBar, &StatusBar::refreshMemory);
    memoryTimer->start(MemoryRefreshMs);

    connectUndoHistory();
    replaceScene(new GraphScene(this));

    const int openAutoRun = settings->openAutoRun();
    {
        // Setting up the window is no edit of the document.
        const QSignalBlocker blocker(m_actions.value(QStringLiteral("RunAutoToggled")));
        m_actions.value(QStringLiteral("RunAutoToggled"))->setChecked(openAutoRun != AutoRunOff);
    }
    m_scene->setAutoRun(openAutoRun != AutoRunOff);
    arrangeRunActions(m_scene->autoRun());

    m_themeTimer = new QTimer(this);
    connect(m_themeTimer, &QTimer::timeout, this, &MainWindow::onUpdateUITheme);
    applyTheme();
    updateRecentMenu();
    updateUndoLabels();
    updateZoomActions();
    updateTitle();
    onEnableTwoScreenMode();
    connect(qApp, &QGuiApplication::screenAdded, this, &MainWindow::onEnableTwoScreenMode);
    connect(qApp, &QGuiApplication::screenRemoved, this, &MainWindow::onEnableTwoScreenMode);

    if (Application *application = Application::instance()) {
        application->setEmergencyHandler([this]() {
            if (!m_scene)
                return;
            const QList<Node *> nodes = m_scene->nodes();
            for (Node *node : nodes) {
                node->dataset()->clear();
                node->setStatus(Node::NeedsUpdate, false);
            }
            emergencyRecoverySave(*m_scene, currentData());
        });
    }
}

MainWindow::~MainWindow()
{
    if (Application *application = Application::instance())
        application->setEmergencyHandler({});
    setMemoryLimitHandler({});
    if (UndoHistory::current() == m_undoHistory)
        UndoHistory::setCurrent(nullptr);
    // The scenes are children of the window and die after its panes; clearing them emits
    // selection changes that must not reach the half-destroyed window.
    if (m_scene)
        disconnectScene(m_scene);
    // The item pane may float as a window of its own.
    if (m_itemPane && !m_itemPane->parent())
        delete m_itemPane;
}

// Building -----------------------------------------------------------------------------------

QAction *MainWindow::addAction(QMenu *menu, const QString &name, const QString &text,
                               const QKeySequence &shortcut, const QString &toolTip,
                               const QString &icon, bool checkable)
{
    auto *action = new QAction(text, this);
    action->setObjectName(name);
    if (!shortcut.isEmpty())
        action->setShortcut(shortcut);
    action->setToolTip(toolTip);
    action->setStatusTip(toolTip);
    action->setCheckable(checkable);
    if (!icon.isEmpty())
        action->setProperty("iconName", icon);
    if (menu)
        menu->addAction(action);
    m_actions.insert(name, action);
    return action;
}

void MainWindow::buildActions()
{
    QMenuBar *bar = menuBar();
    QMenu *file = bar->addMenu(QStringLiteral("&File"));
    QMenu *edit = bar->addMenu(QStringLiteral("&Edit"));
    QMenu *view = bar->addMenu(QStringLiteral("&View"));
    m_runMenu = bar->addMenu(QStringLiteral("&Run"));
    QMenu *help = bar->addMenu(QStringLiteral("&Help"));
    m_menus = {file, edit, view, m_runMenu, help};
    for (QMenu *menu : qAsConst(m_menus))
        menu->setToolTipsVisible(true);

    connect(addAction(file, QStringLiteral("FileNewAction"), QStringLiteral("&New"),
                      QKeySequence(QStringLiteral("Ctrl+N")),
                      QStringLiteral("Create a new .tabulon document."), QStringLiteral("new")),
            &QAction::triggered, this, &MainWindow::onFileNewAction);
    connect(addAction(file, QStringLiteral("FileOpenAction"), QStringLiteral("&Open..."),
                      QKeySequence(QStringLiteral("Ctrl+O")),
                      QStringLiteral("Open an existing .tabulon document."),
                      QStringLiteral("open")),
            &QAction::triggered, this, &MainWindow::onFileOpenAction);
    connect(addAction(file, QStringLiteral("FileOpenRecentAction"),
                      QStringLiteral("Open &Recent..."),
                      QKeySequence(QStringLiteral("Ctrl+Shift+O")),
                      QStringLiteral("Open a recent .tabulon document.")),
            &QAction::triggered, this, &MainWindow::onFileOpenRecentAction);
    m_recentMenu = file->addMenu(QStringLiteral("&Recent"));
    m_recentMenu->setToolTipsVisible(true);
    m_recentMenu->menuAction()->setToolTip(QStringLiteral("Open recent .tabulon documents."));
    file->addSeparator();
    connect(addAction(file, QStringLiteral("FileSaveAction"), QStringLiteral("&Save"),
                      QKeySequence(QStringLiteral("Ctrl+S")),
                      QStringLiteral("Save the current .tabulon document."),
                      QStringLiteral("save")),
            &QAction::triggered, this, &MainWindow::onFileSaveAction);
    connect(addAction(file, QStringLiteral("FileSaveAsAction"), QStringLiteral("Save &As..."), {},
                      QStringLiteral("Save the current .tabulon document to a different "
                                     "name/location.")),
            &QAction::triggered, this, &MainWindow::onFileSaveAsAction);
    connect(addAction(file, QStringLiteral("FileNotesAction"), QStringLiteral("No&tes..."), {},
                      QStringLiteral("Notes for this .tabulon document.")),
            &QAction::triggered, this, &MainWindow::onFileNotesAction);
    file->addSeparator();
    connect(addAction(file, QStringLiteral("FileNewWindowAction"), QStringLiteral("New &Window"),
                      QKeySequence(QStringLiteral("Ctrl+Shift+N")),
                      QStringLiteral("Start a new Tabulon instance in a new window.")),
            &QAction::triggered, this, &MainWindow::onFileNewWindowAction);
    connect(addAction(file, QStringLiteral("BatchProcessAction"),
                      QStringLiteral("&Batch Process..."), QKeySequence(QStringLiteral("Ctrl+B")),
                      QStringLiteral("Perform the current .tabulon document in batch mode.")),
            &QAction::triggered, this, &MainWindow::onBatchProcessAction);
    connect(addAction(file, QStringLiteral("CommandLineAction"), QStringLiteral("&Command Line..."),
                      {}, QStringLiteral("Get text to use on the command line.")),
            &QAction::triggered, this, &MainWindow::onCommandLineAction);
    file->addSeparator();
    connect(addAction(file, QStringLiteral("FileExitAction"), QStringLiteral("E&xit"), {},
                      QStringLiteral("Exit.")),
            &QAction::triggered, this, &MainWindow::onFileExitAction);

    connect(addAction(edit, QStringLiteral("EditUndo"), QStringLiteral("&Undo"),
                      QKeySequence(QStringLiteral("Ctrl+Z")), QStringLiteral("Undo change"),
                      QStringLiteral("undo")),
            &QAction::triggered, this, &MainWindow::onEditUndo);
    connect(addAction(edit, QStringLiteral("EditRedo"), QStringLiteral("&Redo"),
                      QKeySequence(QStringLiteral("Ctrl+Y")), QStringLiteral("Redo undone change"),
                      QStringLiteral("redo")),
            &QAction::triggered, this, &MainWindow::onEditRedo);
    edit->addSeparator();
    connect(addAction(edit, QStringLiteral("EditPaste"), QStringLiteral("&Paste"),
                      QKeySequence::Paste,
                      QStringLiteral("Paste files or text from the clipboard as inputs.")),
            &QAction::triggered, this, &MainWindow::onEditPaste);
    connect(addAction(edit, QStringLiteral("EditDeleteAction"), QStringLiteral("&Delete"), {},
                      QStringLiteral("Delete the items selected in the center pane.")),
            &QAction::triggered, this, &MainWindow::onEditDeleteAction);
    connect(addAction(edit, QStringLiteral("DisconnectSelected"), QStringLiteral("Dis&connect"),
                      QKeySequence(QStringLiteral("Alt+D")),
                      QStringLiteral("Remove all connections to and from the selected items.")),
            &QAction::triggered, this, &MainWindow::onDisconnectSelected);
    connect(addAction(edit, QStringLiteral("DisconnectFromSelected"),
                      QStringLiteral("Disconnect &Outputs"), {},
                      QStringLiteral("Remove the connections leaving the selected items.")),
            &QAction::triggered, this, &MainWindow::onDisconnectFromSelected);
    connect(addAction(edit, QStringLiteral("DisconnectToSelected"),
                      QStringLiteral("Disconnect &Inputs"), {},
                      QStringLiteral("Remove the connections entering the selected items.")),
            &QAction::triggered, this, &MainWindow::onDisconnectToSelected);
    connect(addAction(edit, QStringLiteral("DuplicateBranch"), QStringLiteral("Duplicate &Branch"),
                      QKeySequence(QStringLiteral("Ctrl+D")),
                      QStringLiteral("Copy the selected item and everything downstream of it.")),
            &QAction::triggered, this, &MainWindow::onDuplicateBranch);
    connect(addAction(edit, QStringLiteral("AddNote"), QStringLiteral("Add &Note"),
                      QKeySequence(QStringLiteral("Ctrl+H")),
                      QStringLiteral("Add a note beside the selected item, or under the cursor.")),
            &QAction::triggered, this, &MainWindow::onAddNote);
    edit->addSeparator();
    connect(addAction(edit, QStringLiteral("EditSelectAllAction"), QStringLiteral("Select &All"),
                      QKeySequence(QStringLiteral("Ctrl+A")),
                      QStringLiteral("Select All items in the center pane.")),
            &QAction::triggered, this, &MainWindow::onEditSelectAllAction);
    connect(addAction(edit, QStringLiteral("Find"), QStringLiteral("Fin&d Items..."),
                      QKeySequence(QStringLiteral("Ctrl+F")),
                      QStringLiteral("Find items in the center pane that match search terms.")),
            &QAction::triggered, this, &MainWindow::onFind);
    connect(addAction(edit, QStringLiteral("EditLocale"), QStringLiteral("&Locale..."), {},
                      QStringLiteral("Change the locale of the current .tabulon file.")),
            &QAction::triggered, this, &MainWindow::onEditLocale);
    edit->addSeparator();
    connect(addAction(edit, QStringLiteral("EditPreferences"), QStringLiteral("&Preferences..."),
                      QKeySequence(QStringLiteral("Ctrl+,")),
                      QStringLiteral("Show the 'Preferences' window."),
                      QStringLiteral("preferences")),
            &QAction::triggered, this, &MainWindow::onEditPreferences);

    connect(addAction(view, QStringLiteral("ZoomToFitToggled"), QStringLiteral("Zoom &Fit"),
                      QKeySequence(QStringLiteral("Ctrl+=")),
                      QStringLiteral("Toggle on to automatically zoom so all items in the center "
                                     "pane fit on screen."),
                      QStringLiteral("zoom_fit"), true),
            &QAction::toggled, this, &MainWindow::onZoomToFitToggled);
    connect(addAction(view, QStringLiteral("ZoomIn"), QStringLiteral("Zoom &In"),
                      QKeySequence(QStringLiteral("Ctrl++")),
                      QStringLiteral("Zoom In on the center pane."), QStringLiteral("zoom_in")),
            &QAction::triggered, this, &MainWindow::onZoomIn);
    connect(addAction(view, QStringLiteral("ZoomOut"), QStringLiteral("Zoom &Out"),
                      QKeySequence(QStringLiteral("Ctrl+-")),
                      QStringLiteral("Zoom out from the center pane."), QStringLiteral("zoom_out")),
            &QAction::triggered, this, &MainWindow::onZoomOut);
    connect(addAction(view, QStringLiteral("ZoomSelected"), QStringLiteral("Zoom S&elected"),
                      QKeySequence(QStringLiteral("Ctrl+/")),
                      QStringLiteral("Zoom in to selected items on the center pane.")),
            &QAction::triggered, this, &MainWindow::onZoomSelected);
    QAction *magnify = addAction(
        view, QStringLiteral("MagnifyUnderCursor"), QStringLiteral("&Magnify Cursor"), {},
        QStringLiteral("Toggle cursor magnification for the center pane."), {}, true);
    magnify->setShortcuts(
        {QKeySequence(QStringLiteral("Ctrl+M")), QKeySequence(QStringLiteral("Ctrl+Alt+L"))});
    connect(magnify, &QAction::toggled, this, &MainWindow::onMagnifyUnderCursor);
    view->addSeparator();
    connect(addAction(view, QStringLiteral("SnapToGridToggled"), QStringLiteral("Snap To &Grid"),
                      {}, QStringLiteral("Snap items to a grid."), {}, true),
            &QAction::toggled, this, &MainWindow::onSnapToGridToggled);
    Settings *settings = Settings::instance();
    QAction *comments
        = addAction(view, QStringLiteral("ShowCommentsToggled"), QStringLiteral("Show &Comments"),
                    {}, QStringLiteral("Show item comments in the center pane."), {}, true);
    comments->setChecked(settings->showComments());
    connect(comments, &QAction::toggled, this, &MainWindow::onShowCommentsToggled);
    QAction *changes = addAction(view, QStringLiteral("ShowChangesToggled"),
                                 QStringLiteral("Show &Row/Col Changes"), {},
                                 QStringLiteral("Show changes to the number of rows and columns "
                                                "by transforms in the center pane."),
                                 {}, true);
    changes->setChecked(settings->showChanges());
    connect(changes, &QAction::toggled, this, &MainWindow::onShowChangesToggled);
    QAction *warnings
        = addAction(view, QStringLiteral("ShowWarningsToggled"), QStringLiteral("Show &Warnings"),
                    {}, QStringLiteral("Show warnings in the center pane."), {}, true);
    warnings->setChecked(settings->showWarnings());
    connect(warnings, &QAction::toggled, this, &MainWindow::onShowWarningsToggled);

    QMenu *tips = view->addMenu(QStringLiteral("Show Too&l Tips"));
    tips->setToolTipsVisible(true);
    tips->menuAction()->setToolTip(
        QStringLiteral("Level of detail to show in Center pane tool tips."));
    auto *tipGroup = new QActionGroup(this);
    const QStringList tipNames = {QStringLiteral("ShowCenterToolTipsOffToggled"),
                                  QStringLiteral("ShowCenterToolTipsBriefToggled"),
                                  QStringLiteral("ShowCenterToolTipsDetailedToggled")};
    const QStringList tipTexts
        = {QStringLiteral("Off"), QStringLiteral("Brief"), QStringLiteral("Detailed")};
    for (int level = 0; level < tipNames.size(); ++level) {
        QAction *tip = addAction(tips, tipNames.at(level), tipTexts.at(level), {}, {}, {}, true);
        tipGroup->addAction(tip);
        tip->setChecked(settings->showCenterPaneTips() == level);
    }
    connect(m_actions.value(tipNames.at(0)), &QAction::toggled, this,
            &MainWindow::onShowCenterToolTipsOffToggled);
    connect(m_actions.value(tipNames.at(1)), &QAction::toggled, this,
            &MainWindow::onShowCenterToolTipsBriefToggled);
    connect(m_actions.value(tipNames.at(2)), &QAction::toggled, this,
            &MainWindow::onShowCenterToolTipsDetailedToggled);

    connect(addAction(view, QStringLiteral("ViewTimingProfileToggled"),
                      QStringLiteral("Timing &Profile"), QKeySequence(QStringLiteral("Ctrl+.")),
                      QStringLiteral("Show a timing profile in the center pane."), {}, true),
            &QAction::toggled, this, &MainWindow::onViewTimingProfileToggled);
    view->addSeparator();
    connect(addAction(view, QStringLiteral("ViewNodeSummary"), QStringLiteral("Item &Summary..."),
                      QKeySequence(QStringLiteral("Ctrl+;")),
                      QStringLiteral("View a summary of all items.")),
            &QAction::triggered, this, &MainWindow::onViewNodeSummary);
    connect(addAction(view, QStringLiteral("CompareDatasets"), QStringLiteral("Compare &Data..."),
                      {},
                      QStringLiteral("Compare the data of 2 selected items, side-by-side, row by "
                                     "row.")),
            &QAction::triggered, this, &MainWindow::onCompareDatasets);
    connect(addAction(view, QStringLiteral("CompareHeaders"), QStringLiteral("Compare &Headers..."),
                      {}, QStringLiteral("Compare the headers of 2 or more selected items.")),
            &QAction::triggered, this, &MainWindow::onCompareHeaders);
    view->addSeparator();
    QAction *toolBar
        = addAction(view, QStringLiteral("ToolBarVisibilityToggled"), QStringLiteral("&Tool bar"),
                    {}, QStringLiteral("Show/hide the toolbar."), {}, true);
    toolBar->setChecked(true);
    connect(toolBar, &QAction::toggled, this, &MainWindow::onToolBarVisibilityToggled);
    QAction *log
        = addAction(view, QStringLiteral("LogVisibilityToggled"), QStringLiteral("&Log"),
                    QKeySequence(QStringLiteral("Ctrl+L")),
                    QStringLiteral("Show/hide the Log pane."), QStringLiteral("log"), true);
    log->setChecked(settings->logPaneShown());
    connect(log, &QAction::toggled, this, &MainWindow::onLogVisibilityToggled);
    connect(addAction(view, QStringLiteral("TwoScreenModeToggled"),
                      QStringLiteral("Two &Screen Mode"), QKeySequence(QStringLiteral("Ctrl+T")),
                      QStringLiteral("Display the right pane on a second screen, if available."),
                      {}, true),
            &QAction::toggled, this, &MainWindow::onTwoScreenModeToggled);
    connect(addAction(view, QStringLiteral("ToggleUITheme"), QStringLiteral("Toggle &UI Theme"),
                      QKeySequence(QStringLiteral("Ctrl+U")),
                      QStringLiteral("Toggle the user interface between light and dark themes.")),
            &QAction::triggered, this, &MainWindow::onToggleUITheme);

    connect(addAction(nullptr, QStringLiteral("RunAutoToggled"), QStringLiteral("&Auto Run"), {},
                      QStringLiteral("Automatically run changes."), QStringLiteral("auto_run"),
                      true),
            &QAction::toggled, this, &MainWindow::onRunAutoToggled);
    connect(addAction(nullptr, QStringLiteral("RunChangesAction"),
                      QStringLiteral("Run &Unprocessed"), QKeySequence(QStringLiteral("Ctrl+R")),
                      QStringLiteral("Run items that need processing."), QStringLiteral("run")),
            &QAction::triggered, this, &MainWindow::onRunChangesAction);
    connect(addAction(nullptr, QStringLiteral("RunSelectedAction"), QStringLiteral("Run &Selected"),
                      QKeySequence(QStringLiteral("Ctrl+Shift+R")),
                      QStringLiteral("Run selected items (whether changed or not)."),
                      QStringLiteral("run_selected")),
            &QAction::triggered, this, &MainWindow::onRunSelectedAction);
    connect(addAction(nullptr, QStringLiteral("RunEverythingAction"), QStringLiteral("Run &All"),
                      {}, QStringLiteral("Run all items.")),
            &QAction::triggered, this, &MainWindow::onRunEverythingAction);
    QAction *stop = addAction(nullptr, QStringLiteral("RunStopAction"), QStringLiteral("S&top Run"),
                              QKeySequence(QStringLiteral("Ctrl+\\")),
                              QStringLiteral("Stop the current run."), QStringLiteral("stop"));
    stop->setEnabled(false);
    connect(stop, &QAction::triggered, this, &MainWindow::onRunStopAction);

    const QStringList helpTexts = {QStringLiteral("&Quick Start Guide"),
                                   QStringLiteral("Tabulon &Help"),
                                   QStringLiteral("&Keyboard shortcuts"),
                                   QStringLiteral("&Expert Tips"),
                                   QStringLiteral("Short Introduction &Video"),
                                   QStringLiteral("&FAQ Page"),
                                   QStringLiteral("Foru&m"),
                                   QStringLiteral("Technical &Support"),
                                   QStringLiteral("Subscribe to &Newsletter")};
    for (const QString &text : helpTexts)
        connect(help->addAction(text), &QAction::triggered, this, &MainWindow::onHelp);
    help->addSeparator();
    connect(addAction(help, QStringLiteral("AutoCheckForUpdates"),
                      QStringLiteral("Check For &Updates"), {}, {}),
            &QAction::triggered, this, &MainWindow::onAutoCheckForUpdates);
    connect(addAction(help, QStringLiteral("About"), QStringLiteral("&About"), {}, {}),
            &QAction::triggered, this, &MainWindow::onAbout);

    const struct
    {
        Qt::Key key;
        void (MainWindow::*slot)();
    } walks[] = {{Qt::Key_Left, &MainWindow::onCtrlKeyLeft},
                 {Qt::Key_Right, &MainWindow::onCtrlKeyRight},
                 {Qt::Key_Up, &MainWindow::onCtrlKeyUp},
                 {Qt::Key_Down, &MainWindow::onCtrlKeyDown}};
    for (const auto &walk : walks)
        connect(new QShortcut(QKeySequence(Qt::CTRL | walk.key), this), &QShortcut::activated, this,
                walk.slot);

    using Slot = void (MainWindow::*)();
    const Slot inputSlots[] = {&MainWindow::onCtrl1, &MainWindow::onCtrl2, &MainWindow::onCtrl3,
                               &MainWindow::onCtrl4, &MainWindow::onCtrl5, &MainWindow::onCtrl6,
                               &MainWindow::onCtrl7, &MainWindow::onCtrl8, &MainWindow::onCtrl9};
    const Slot outputSlots[]
        = {&MainWindow::onShiftCtrl1, &MainWindow::onShiftCtrl2, &MainWindow::onShiftCtrl3,
           &MainWindow::onShiftCtrl4, &MainWindow::onShiftCtrl5, &MainWindow::onShiftCtrl6,
           &MainWindow::onShiftCtrl7, &MainWindow::onShiftCtrl8, &MainWindow::onShiftCtrl9};
    for (int digit = 0; digit < 9; ++digit) {
        const int key = Qt::Key_1 + digit;
        connect(new QShortcut(QKeySequence(Qt::CTRL | key), this), &QShortcut::activated, this,
                inputSlots[digit]);
        connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | key), this),
                &QShortcut::activated, this, outputSlots[digit]);
    }
}

void MainWindow::buildToolBar()
{
    m_toolBar = addToolBar(QStringLiteral("Tool bar"));
    m_toolBar->setObjectName(QStringLiteral("toolBar"));
    m_toolBar->setMovable(false);
    const QStringList names = {QStringLiteral("FileNewAction"),
                               QStringLiteral("FileOpenAction"),
                               QStringLiteral("FileSaveAction"),
                               QString(),
                               QStringLiteral("EditUndo"),
                               QStringLiteral("EditRedo"),
                               QString(),
                               QStringLiteral("ZoomToFitToggled"),
                               QStringLiteral("ZoomIn"),
                               QStringLiteral("ZoomOut"),
                               QString(),
                               QStringLiteral("RunAutoToggled")};
    for (const QString &name : names) {
        if (name.isEmpty())
            m_toolBar->addSeparator();
        else
            m_toolBar->addAction(m_actions.value(name));
    }
}

void MainWindow::buildPanes()
{
    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setObjectName(QStringLiteral("mainSplitter"));
    m_actionPane = new ActionPane(m_splitter);
    m_centerSplitter = new QSplitter(Qt::Vertical, m_splitter);
    m_graphPane = new GraphPane(m_centerSplitter);
    m_logPane = new LogPane(m_centerSplitter);
    m_centerSplitter->setStretchFactor(0, 4);
    m_centerSplitter->setStretchFactor(1, 1);
    m_logPane->setVisible(Settings::instance()->logPaneShown());
    m_itemPane = new ItemPane(m_splitter);
    m_splitter->addWidget(m_actionPane);
    m_splitter->addWidget(m_centerSplitter);
    m_splitter->addWidget(m_itemPane);
    m_splitter->setStretchFactor(1, 1);
    const QList<int> widths = Settings::instance()->splitterWidths();
    if (widths.size() == 3)
        m_splitter->setSizes(widths);
    setCentralWidget(m_splitter);

    connect(m_actionPane, &ActionPane::inputFileClicked, this, &MainWindow::onInputFromFile);
    connect(m_actionPane, &ActionPane::inputClipboardClicked, this,
            &MainWindow::onInputFromClipboard);
    connect(m_actionPane, &ActionPane::outputFileClicked, this, &MainWindow::onOutputDataToFile);
    connect(m_actionPane, &ActionPane::transformClicked, this, &MainWindow::onTransformClicked);
    connect(m_actionPane, &ActionPane::hoverStatusChanged, this,
            [this](bool hovered, const Transform *prototype) {
                if (prototype)
                    m_graphPane->onHighlightTransformNodes(hovered, prototype);
                if (hovered && prototype)
                    m_statusBar->showMessage(prototype->description());
                else
                    m_statusBar->clearMessage();
            });

    connect(m_graphPane, &GraphPane::filesDropped, this, &MainWindow::addFiles);
    connect(m_graphPane, &GraphPane::textDropped, this, &MainWindow::addClipboardText);
    connect(m_graphPane, &GraphPane::transformChosen, this, &MainWindow::onTransformClicked);
    connect(m_graphPane, &GraphPane::deleteRequested, this, &MainWindow::onEditDeleteAction);
    connect(m_graphPane, &GraphPane::zoomButtonClicked, this, &MainWindow::updateZoomActions);
    connect(m_graphPane, &GraphPane::contextMenuRequested, this, [this](const QPoint &pos) {
        QMenu menu(this);
        menu.addAction(m_actions.value(QStringLiteral("RunSelectedAction")));
        menu.addAction(m_actions.value(QStringLiteral("ZoomSelected")));
        menu.addAction(m_actions.value(QStringLiteral("DuplicateBranch")));
        menu.addAction(m_actions.value(QStringLiteral("AddNote")));
        menu.addSeparator();
        menu.addAction(m_actions.value(QStringLiteral("DisconnectSelected")));
        menu.addAction(m_actions.value(QStringLiteral("DisconnectFromSelected")));
        menu.addAction(m_actions.value(QStringLiteral("DisconnectToSelected")));
        menu.addAction(m_actions.value(QStringLiteral("EditDeleteAction")));
        menu.exec(pos);
    });

    connect(m_itemPane, &ItemPane::nodeStatusChanged, this, &MainWindow::refreshStatusCounts);
    connect(m_itemPane, &ItemPane::nodeCommentChanged, this, [this](Node *node) {
        if (node)
            node->update();
        setWindowModified(true);
    });
    connect(m_itemPane, &ItemPane::changeNeedsSave, this, [this]() { setWindowModified(true); });
    connect(m_itemPane, &ItemPane::closeRequested, this, &MainWindow::onItemPaneClosed);
}

void MainWindow::connectUndoHistory()
{
    connect(m_undoHistory, &UndoHistory::aboutToSwapScene, m_itemPane, &ItemPane::flush);
    connect(m_undoHistory, &UndoHistory::sceneSwapped, this, &MainWindow::onSceneSwapped);
    connect(m_undoHistory, &UndoHistory::changed, this, [this](bool documentEdited) {
        if (documentEdited)
            setWindowModified(true);
        updateUndoLabels();
    });
    connect(m_undoHistory, &UndoHistory::recoveryDue, this, [this]() {
        if (!m_scene)
            return;
        periodicRecoverySave(*m_scene, currentData(), isWindowModified(),
                             [this](const QString &text) { onShowTempMessage(text); });
    });
}

void MainWindow::connectScene(GraphScene *scene)
{
    connect(scene, &QGraphicsScene::selectionChanged, this, &MainWindow::onGraphSelectionChanged);
    connect(scene, &GraphScene::doubleClickNode, this, &MainWindow::onShowNodeFullscreen);
    connect(scene, &GraphScene::nodesAdded, this, [this]() {
        m_graphPane->onNodesAdded();
        onNodesChanged();
    });
    connect(scene, &GraphScene::nodesDeleted, this, [this]() {
        m_graphPane->onNodesDeleted();
        onNodesChanged();
    });
    connect(scene, &GraphScene::nodeDataChanged, this, [this](Node *node) {
        m_itemPane->refreshAfterDataChange(node);
        refreshStatusCounts();
    });
    connect(scene, &GraphScene::nodeParametersChanged, this,
            [this](TransformNode *) { setWindowModified(true); });
    connect(scene, &GraphScene::nodesPosChanged, this, [this]() { m_graphPane->onAutoZoom(); });
    connect(scene, &GraphScene::completedTransforms, this, &MainWindow::onCompletedTransforms);
    connect(scene, &GraphScene::fileOpen, this, &MainWindow::onFileOpenRequested);
    connect(scene, &GraphScene::showStatusBarMessage, this, &MainWindow::onShowStatusBarMessage);
    connect(scene, &GraphScene::showWarningMessage, this, &MainWindow::onShowWarningMessage);
    connect(scene, &GraphScene::showCriticalMessage, this, &MainWindow::onShowCriticalMessage);
    connect(scene, &GraphScene::showTempMessage, this, &MainWindow::onShowTempMessage);
    connect(scene, &GraphScene::showLogMessage, this, &MainWindow::onShowLogMessage);
    connect(scene, &GraphScene::showNodeLogMessage, this, &MainWindow::onShowLogMessage);
    connect(scene, &GraphScene::showProgress, this, &MainWindow::onShowProgress);
    connect(scene, &GraphScene::allowUserInteraction, this, &MainWindow::onAllowUserInteraction);
    connect(scene, &GraphScene::transformNodeAddedByUser, this,
            &MainWindow::onTransformNodeAddedByUser);
    connect(scene, &GraphScene::showTip, this, &MainWindow::onShowTip);
}

void MainWindow::disconnectScene(GraphScene *scene)
{
    disconnect(scene, nullptr, this, nullptr);
}

void MainWindow::replaceScene(GraphScene *scene)
{
    QPointer<GraphScene> old = m_scene;
    if (old)
        disconnectScene(old);
    m_itemPane->showItems({});
    m_scene = scene;
    scene->setBackgroundBrush(Colors::instance()->color(Colors::CenterBackground));
    m_graphPane->setGraphScene(scene);
    connectScene(scene);
    m_undoHistory->setLiveScene(scene);
    // The history may have taken the old scene down with its list; what is left is ours.
    if (old)
        old->deleteLater();
    m_actionPane->setSelection({});
    refreshStatusCounts();
    updateUndoLabels();
    onUpdateRunStatus();
}

void MainWindow::onSceneSwapped(GraphScene *live, GraphScene *old)
{
    if (old)
        disconnectScene(old);
    m_scene = live;
    live->setAutoRun(m_actions.value(QStringLiteral("RunAutoToggled"))->isChecked());
    live->setBackgroundBrush(Colors::instance()->color(Colors::CenterBackground));
    live->clearSelection();
    m_graphPane->setGraphScene(live);
    connectScene(live);
    m_itemPane->showItems({});
    m_actionPane->setSelection({});
    {
        const QSignalBlocker blocker(m_actions.value(QStringLiteral("SnapToGridToggled")));
        m_actions.value(QStringLiteral("SnapToGridToggled"))->setChecked(live->snapToGrid());
    }
    refreshStatusCounts();
    onUpdateRunStatus();
    updateUndoLabels();
    // A quick series of undos runs once, after the last.
    m_undoRedoTimer->start(qRound(Settings::instance()->processingDelay() * 1000.0));
}

// Messages and dialogs -----------------------------------------------------------------------

void MainWindow::setMessageHook(MessageHook hook)
{
    s_messageHook = std::move(hook);
}

QMessageBox::StandardButton MainWindow::message(QWidget *parent, QMessageBox::Icon icon,
                                                const QString &title, const QString &text,
                                                QMessageBox::StandardButtons buttons,
                                                QMessageBox::StandardButton defaultButton)
{
    if (s_messageHook)
        return s_messageHook(icon, title, text, buttons, defaultButton);
    QMessageBox box(icon, title, text, buttons, parent);
    if (defaultButton != QMessageBox::NoButton)
        box.setDefaultButton(defaultButton);
    // A busy cursor of a run must not hide the buttons' arrow.
    QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
    box.exec();
    QGuiApplication::restoreOverrideCursor();
    return box.standardButton(box.clickedButton());
}

void MainWindow::setFileDialogHook(FileDialogHook hook)
{
    s_fileDialogHook = std::move(hook);
}

QString MainWindow::chooseFile(const QString &title, const QString &folder, const QString &filter,
                               bool save)
{
    if (s_fileDialogHook)
        return s_fileDialogHook(title, folder, filter, save);
    QFileDialog::Options options;
    if (!Settings::instance()->useNativeFileDialogs())
        options |= QFileDialog::DontUseNativeDialog;
    return save ? QFileDialog::getSaveFileName(this, title, folder, filter, nullptr, options)
                : QFileDialog::getOpenFileName(this, title, folder, filter, nullptr, options);
}

bool MainWindow::askToSave()
{
    if (!isWindowModified())
        return true;
    const QMessageBox::StandardButton answer = message(
        this, QMessageBox::Question, s_productName, QStringLiteral("Save changes?"),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Cancel);
    if (answer == QMessageBox::Save)
        return save();
    return answer == QMessageBox::Discard;
}

// Accessors ----------------------------------------------------------------------------------

GraphScene *MainWindow::graphScene() const
{
    return m_scene;
}

GraphPane *MainWindow::graphPane() const
{
    return m_graphPane;
}

ActionPane *MainWindow::actionPane() const
{
    return m_actionPane;
}

ItemPane *MainWindow::itemPane() const
{
    return m_itemPane;
}

UndoHistory *MainWindow::undoHistory() const
{
    return m_undoHistory;
}

QList<Node *> MainWindow::selectedNodes() const
{
    QList<Node *> nodes;
    if (!m_scene)
        return nodes;
    const QList<QGraphicsItem *> items = m_scene->selectedItems();
    for (QGraphicsItem *item : items) {
        if (auto *node = dynamic_cast<Node *>(item))
            nodes.append(node);
    }
    return nodes;
}

DocumentData MainWindow::currentData() const
{
    DocumentData data = m_documentData;
    data.autoRun = m_actions.value(QStringLiteral("RunAutoToggled"))->isChecked();
    data.snapToGrid = m_scene && m_scene->snapToGrid();
    return data;
}

// Start-up -----------------------------------------------------------------------------------

void MainWindow::startUp(const QStringList &arguments)
{
    Settings *settings = Settings::instance();
    QLocale::setDefault(settings->locale());
    if (settings->hasUiFont() && settings->uiFont() != QApplication::font())
        QApplication::setFont(settings->uiFont());

    QString documentArgument;
    bool newWindow = false;
    for (int i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (argument.startsWith(QLatin1Char('-'))) {
            if (argument.toLower().endsWith(QLatin1String("new_window")))
                newWindow = true;
        } else if (documentArgument.isEmpty()) {
            documentArgument = argument;
        }
    }

    show();
    restoreState(settings->windowState());
    if (!restoreGeometry(settings->geometry())) {
        const QRect available = screen() ? screen()->availableGeometry() : QRect(0, 0, 1400, 900);
        if (available.width() < 1401 || available.height() < 901) {
            showMaximized();
        } else {
            resize(1400, 900);
            move(available.center() - rect().center());
        }
    }
    pumpEvents();

    QString chosen;
    const qint64 recoveryAge = recoveryFileAge();
    if (recoveryAge >= 0 && instanceCount() == 1) {
        const QString question = QStringLiteral("An automatic recovery file was created %1 ago. "
                                                "Do you wish to open it?")
                                     .arg(ageText(recoveryAge));
        if (message(this, QMessageBox::Question, s_productName, question,
                    QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok)
            == QMessageBox::Ok)
            chosen = recoveryFilePath();
    }
    if (chosen.isEmpty() && !documentArgument.isEmpty()) {
        chosen = documentArgument;
        if (!QFileInfo::exists(chosen))
            message(this, QMessageBox::Warning, s_productName,
                    QStringLiteral("Cannot find '%1'.").arg(chosen));
    }
    if (chosen.isEmpty() && !newWindow) {
        const int atStart = settings->openPreviousAtStart();
        if (atStart == 1) {
            const QString previous = settings->previousPath();
            if (!previous.isEmpty())
                chosen = QDir::isRelativePath(previous)
                    ? QDir(QCoreApplication::applicationDirPath()).absoluteFilePath(previous)
                    : previous;
        } else if (atStart == 2 && !settings->recentDocs().isEmpty()) {
            bool ok = false;
            const QString picked = QInputDialog::getItem(
                this, QStringLiteral("Open Recent"), QStringLiteral("Recent .tabulon documents:"),
                settings->recentDocs(), 0, false, &ok);
            if (ok)
                chosen = picked;
        }
    }
    if (!chosen.isEmpty() && QFileInfo::exists(chosen)
        && QFileInfo(chosen).absoluteFilePath() != QFileInfo(m_documentPath).absoluteFilePath())
        open(chosen);

    updateZoomActions();
    if (settings->showGettingStarted()) {
        settings->setShowGettingStarted(false);
        message(this, QMessageBox::Information, QStringLiteral("Getting Started"),
                QStringLiteral("Welcome to Tabulon.\n\n"
                               "1. Drop a data file on the center pane (or click an input button "
                               "on the left).\n"
                               "2. Click a transform on the left to add it after the selected "
                               "item.\n"
                               "3. Set its options on the right; the table below them shows the "
                               "result.\n"
                               "4. Add an output to write the result to a file.\n\n"
                               "Save the document to repeat the same steps on other files."));
    }
    if (settings->isIniFile() && !settings->isWritable()) {
        message(this, QMessageBox::Warning, s_productName,
                QStringLiteral("Cannot write preferences to '%1'.\nMake sure the file and folder "
                               "have write permission\nor store 'Preferences' in the %2.")
                    .arg(settings->fileName(), Settings::userSettingsName()));
    }
    QTimer::singleShot(2000, this, &MainWindow::onAutoCheckForUpdates);
    installMemoryHandler();
    m_themeTimer->start(ThemeCheckMs);
}

void MainWindow::installMemoryHandler()
{
    // While the window shows, going over the limit asks the user instead of ending the run.
    setMemoryLimitHandler([this](double limitGiB, double useGiB, double *newLimitGiB) {
        if (!isVisible())
            return false;
        QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
        InsufficientMemoryDialog dialog(limitGiB, useGiB, isWindowModified(), this);
        dialog.exec();
        QGuiApplication::restoreOverrideCursor();
        if (!dialog.increaseChosen())
            return false;
        *newLimitGiB = dialog.newLimit();
        Settings::instance()->setMaxMemoryUsage(*newLimitGiB);
        m_statusBar->refreshMemory();
        pumpEvents();
        return true;
    });
}

// Documents ----------------------------------------------------------------------------------

void MainWindow::updateTitle()
{
    const QString name = m_documentPath.isEmpty() ? QStringLiteral("untitled")
                                                  : QDir::toNativeSeparators(m_documentPath);
    setWindowTitle(QStringLiteral("%1[*] - %2").arg(name, s_productName));
}

void MainWindow::newDocument()
{
    m_undoRedoTimer->stop();
    m_lock.release();
    replaceScene(new GraphScene(this));
    m_documentPath.clear();
    m_documentData = DocumentData();
    const bool autoRun = Settings::instance()->openAutoRun() != AutoRunOff;
    {
        const QSignalBlocker blocker(m_actions.value(QStringLiteral("RunAutoToggled")));
        m_actions.value(QStringLiteral("RunAutoToggled"))->setChecked(autoRun);
    }
    m_scene->setAutoRun(autoRun);
    arrangeRunActions(autoRun);
    removeRecoveryFile();
    setWindowModified(false);
    updateTitle();
}

bool MainWindow::open(const QString &path)
{
    if (m_scene && m_scene->isProcessing())
        return false;
    m_statusBar->showMessage(QStringLiteral("Loading %1").arg(QDir::toNativeSeparators(path)),
                             2000);
    const bool recovery
        = QFileInfo(path).absoluteFilePath() == QFileInfo(recoveryFilePath()).absoluteFilePath();
    m_lock.release();
    if (!recovery && !m_lock.acquire(path) && isVisible()) {
        if (message(this, QMessageBox::Warning, s_productName,
                    DocumentLock::failureMessage(QDir::toNativeSeparators(path)),
                    QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok)
            == QMessageBox::Cancel)
            return false;
    }
    m_undoRedoTimer->stop();

    auto *scene = new GraphScene(this);
    DocumentData data;
    bool laterVersion = false;
    QStringList messages;
    QString error;
    bool loaded = false;
    {
        BusyCursor busy;
        loaded = loadDocument(scene, path, &data, &laterVersion, &messages, &error);
    }
    if (!loaded) {
        delete scene;
        message(
            this, QMessageBox::Warning, s_productName,
            QStringLiteral("Unable to open '%1': %2").arg(QDir::toNativeSeparators(path), error));
        newDocument();
        return false;
    }

    replaceScene(scene);
    m_documentData = data;
    m_documentPath = recovery ? QString() : QFileInfo(path).absoluteFilePath();
    scene->setDocumentPath(m_documentPath);
    const int openAutoRun = Settings::instance()->openAutoRun();
    const bool autoRun = openAutoRun == AutoRunAsSaved ? data.autoRun : openAutoRun == AutoRunOn;
    {
        const QSignalBlocker blocker(m_actions.value(QStringLiteral("RunAutoToggled")));
        m_actions.value(QStringLiteral("RunAutoToggled"))->setChecked(autoRun);
    }
    scene->setAutoRun(autoRun);
    arrangeRunActions(autoRun);
    {
        const QSignalBlocker blocker(m_actions.value(QStringLiteral("SnapToGridToggled")));
        m_actions.value(QStringLiteral("SnapToGridToggled"))->setChecked(scene->snapToGrid());
    }
    updateTitle();
    m_graphPane->onZoomToFit();

    if (!messages.isEmpty())
        message(this, QMessageBox::Warning, s_productName, messages.join(QLatin1Char('\n')));
    const bool inputsChanged = askForMissingInputs();
    if (autoRun) {
        GraphScene::setStopRequested(false);
        m_scene->process(GraphScene::RunChanges);
    }
    refreshStatusCounts();
    onUpdateRunStatus();

    // A newly chosen input file is a change the saved document doesn't hold yet.
    setWindowModified(recovery || inputsChanged);
    if (!recovery) {
        addRecentDocument(m_documentPath);
        if (Application *application = Application::instance())
            application->setLastDocumentFolder(m_documentPath);
        removeRecoveryFile();
    }
    if (laterVersion)
        message(this, QMessageBox::Warning, s_productName, laterVersionWarning());
    return true;
}

bool MainWindow::askForMissingInputs()
{
    const QList<InputNode *> missing = inputsWithMissingFiles(*m_scene);
    if (missing.isEmpty() || !isVisible())
        return false;
    if (message(this, QMessageBox::Question, s_productName, missingInputFilesQuestion(missing),
                QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes)
        != QMessageBox::Yes)
        return false;
    bool changed = false;
    for (InputNode *input : missing) {
        const QString folder = Application::instance() ? Application::instance()->lastDataFolder()
                                                       : QFileInfo(input->path()).absolutePath();
        const QString chosen
            = chooseFile(QStringLiteral("Choose a new input file for '%1'").arg(input->path()),
                         folder, QString(), false);
        if (chosen.isEmpty())
            continue;
        input->setPath(chosen);
        input->setStatus(Node::NeedsUpdate, true);
        changed = true;
    }
    return changed;
}

bool MainWindow::save(const QString &path)
{
    QString target = path.isEmpty() ? m_documentPath : path;
    if (target.isEmpty()) {
        const QString folder
            = Application::instance() ? Application::instance()->lastDocumentFolder() : QString();
        target = chooseFile(
            QStringLiteral("Save As"), folder,
            QStringLiteral("%1 (*.%2)").arg(s_productName, QStringLiteral("tabulon")), true);
        if (target.isEmpty())
            return false;
        if (QFileInfo(target).suffix().isEmpty())
            target += QStringLiteral(".tabulon");
    }
    target = QFileInfo(target).absoluteFilePath();
    if (!m_lock.isHeld() || QFileInfo(m_lock.path()).absoluteFilePath() != target) {
        m_lock.release();
        if (!m_lock.acquire(target)) {
            message(this, QMessageBox::Warning, s_productName,
                    DocumentLock::failureMessage(QDir::toNativeSeparators(target)));
            return false;
        }
    }
    const DocumentData data = currentData();
    QString error;
    bool saved = false;
    {
        BusyCursor busy;
        saved = saveDocument(&m_lock, *m_scene, data, target, &error);
    }
    if (!saved) {
        message(this, QMessageBox::Critical, s_productName, error);
        return false;
    }
    m_documentData = data;
    m_documentPath = target;
    m_scene->setDocumentPath(target);
    setWindowModified(false);
    removeRecoveryFile();
    addRecentDocument(target);
    if (Application *application = Application::instance())
        application->setLastDocumentFolder(target);
    updateTitle();
    onShowTempMessage(QStringLiteral("Saved %1").arg(QDir::toNativeSeparators(target)));
    return true;
}

void MainWindow::addRecentDocument(const QString &path)
{
    Settings *settings = Settings::instance();
    QStringList recent = settings->recentDocs();
    const QString native = QDir::toNativeSeparators(path);
    recent.removeAll(native);
    recent.prepend(native);
    while (recent.size() > MaximumRecentDocuments)
        recent.removeLast();
    settings->setRecentDocs(recent);
    updateRecentMenu();
}

void MainWindow::updateRecentMenu()
{
    m_recentMenu->clear();
    const QStringList recent = Settings::instance()->recentDocs();
    for (const QString &path : recent) {
        QAction *entry = m_recentMenu->addAction(path);
        entry->setData(path);
        entry->setToolTip(QStringLiteral("Open this .tabulon document."));
        connect(entry, &QAction::triggered, this, &MainWindow::onRecentDocSelected);
    }
    m_recentMenu->addSeparator();
    QAction *clear = m_recentMenu->addAction(QStringLiteral("&Clear Menu"));
    clear->setToolTip(QStringLiteral("Clear the recent .tabulon documents menu."));
    clear->setEnabled(!recent.isEmpty());
    connect(clear, &QAction::triggered, this, &MainWindow::onClearRecentDocSelected);
    m_recentMenu->setEnabled(!recent.isEmpty());
    m_actions.value(QStringLiteral("FileOpenRecentAction"))->setEnabled(!recent.isEmpty());
}

// File menu ----------------------------------------------------------------------------------

void MainWindow::onFileNewAction()
{
    if (m_scene->isProcessing() || !askToSave())
        return;
    newDocument();
}

void MainWindow::onFileOpenAction()
{
    if (m_scene->isProcessing() || !askToSave())
        return;
    const QString folder
        = Application::instance() ? Application::instance()->lastDocumentFolder() : QString();
    const QString path = chooseFile(
        QStringLiteral("Open"), folder,
        QStringLiteral("%1 (*.%2)").arg(s_productName, QStringLiteral("tabulon")), false);
    if (!path.isEmpty())
        open(path);
}

void MainWindow::onFileOpenRecentAction()
{
    if (m_scene->isProcessing())
        return;
    const QStringList recent = Settings::instance()->recentDocs();
    if (recent.isEmpty())
        return;
    bool ok = false;
    const QString path = QInputDialog::getItem(this, QStringLiteral("Open Recent"),
                                               QStringLiteral("Recent .tabulon documents:"), recent,
                                               0, false, &ok);
    if (ok && askToSave())
        open(path);
}

void MainWindow::onRecentDocSelected()
{
    auto *entry = qobject_cast<QAction *>(sender());
    if (!entry || m_scene->isProcessing())
        return;
    const QString path = entry->data().toString();
    if (!QFileInfo::exists(path)) {
        message(this, QMessageBox::Warning, s_productName,
                QStringLiteral("Cannot find '%1'.").arg(path));
        QStringList recent = Settings::instance()->recentDocs();
        recent.removeAll(path);
        Settings::instance()->setRecentDocs(recent);
        updateRecentMenu();
        return;
    }
    if (askToSave())
        open(path);
}

void MainWindow::onClearRecentDocSelected()
{
    Settings::instance()->setRecentDocs({});
    updateRecentMenu();
}

void MainWindow::onFileSaveAction()
{
    if (!m_scene->isProcessing())
        save();
}

void MainWindow::onFileSaveAsAction()
{
    if (m_scene->isProcessing())
        return;
    const QString folder = m_documentPath.isEmpty() && Application::instance()
        ? Application::instance()->lastDocumentFolder()
        : m_documentPath;
    QString path = chooseFile(
        QStringLiteral("Save As"), folder,
        QStringLiteral("%1 (*.%2)").arg(s_productName, QStringLiteral("tabulon")), true);
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += QStringLiteral(".tabulon");
    save(path);
}

void MainWindow::onFileNotesAction()
{
    if (m_scene->isProcessing())
        return;
    bool ok = false;
    const QString notes = QInputDialog::getMultiLineText(
        this, QStringLiteral("Notes"), QStringLiteral("Notes for this .tabulon document:"),
        m_documentData.notes, &ok);
    if (ok && notes != m_documentData.notes) {
        m_documentData.notes = notes;
        setWindowModified(true);
    }
}

void MainWindow::onFileNewWindowAction()
{
    QProcess::startDetached(QCoreApplication::applicationFilePath(),
                            {QStringLiteral("-new_window")});
}

void MainWindow::onBatchProcessAction()
{
    message(this, QMessageBox::Information, QStringLiteral("Batch Process"),
            notAvailableText(QStringLiteral("Batch processing")));
}

void MainWindow::onCommandLineAction()
{
    message(this, QMessageBox::Information, QStringLiteral("Command Line"),
            notAvailableText(QStringLiteral("The command line window")));
}

void MainWindow::onFileExitAction()
{
    close();
}

// Edit menu ----------------------------------------------------------------------------------

void MainWindow::onEditUndo()
{
    if (m_scene->isProcessing())
        return;
    m_undoHistory->undo();
    updateUndoLabels();
}

void MainWindow::onEditRedo()
{
    if (m_scene->isProcessing())
        return;
    m_undoHistory->redo();
    updateUndoLabels();
}

void MainWindow::updateUndoLabels()
{
    QAction *undo = m_actions.value(QStringLiteral("EditUndo"));
    QAction *redo = m_actions.value(QStringLiteral("EditRedo"));
    const bool canUndo = m_undoHistory->canUndo();
    const bool canRedo = m_undoHistory->canRedo();
    undo->setText(canUndo ? QStringLiteral("&Undo %1").arg(m_undoHistory->undoHint())
                          : QStringLiteral("&Undo"));
    undo->setEnabled(canUndo);
    redo->setText(canRedo ? QStringLiteral("&Redo %1").arg(m_undoHistory->redoHint())
                          : QStringLiteral("&Redo"));
    redo->setEnabled(canRedo);
}

void MainWindow::onEditDeleteAction()
{
    if (m_scene->isProcessing() || m_scene->selectedItems().isEmpty())
        return;
    m_itemPane->flush();
    m_scene->deleteSelectedByUser();
}

void MainWindow::disconnectSelected(int direction)
{
    if (m_scene->isProcessing() || selectedNodes().isEmpty())
        return;
    const auto which = static_cast<GraphScene::Disconnect>(direction);
    const int atRisk = m_scene->columnOptionsAtRisk(which);
    if (atRisk > 0) {
        const QString question
            = QStringLiteral("This disconnection may reset %1 column related option(s) "
                             "downstream. Are you sure you want to do that?\n\nNote that you "
                             "can insert a transform by selecting an exiting connection then "
                             "adding a transform.")
                  .arg(atRisk);
        if (message(this, QMessageBox::Question, s_productName, question,
                    QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok)
            != QMessageBox::Ok)
            return;
    }
    m_itemPane->flush();
    m_scene->disconnectSelectedByUser(which);
}

void MainWindow::onDisconnectSelected()
{
    disconnectSelected(static_cast<int>(GraphScene::Disconnect::Both));
}

void MainWindow::onDisconnectFromSelected()
{
    disconnectSelected(static_cast<int>(GraphScene::Disconnect::Out));
}

void MainWindow::onDisconnectToSelected()
{
    disconnectSelected(static_cast<int>(GraphScene::Disconnect::In));
}

void MainWindow::onDuplicateBranch()
{
    if (m_scene->isProcessing() || selectedNodes().size() != 1)
        return;
    m_itemPane->flush();
    m_scene->duplicateBranchByUser();
}

void MainWindow::onAddNote()
{
    if (m_scene->isProcessing())
        return;
    // Over the selected item the note finds a free side of it; else it goes under the cursor.
    const QList<Node *> selected = selectedNodes();
    QPointF at;
    if (selected.size() == 1) {
        at = selected.first()->centrePos();
    } else {
        const QPoint cursor = m_graphPane->viewport()->mapFromGlobal(QCursor::pos());
        at = m_graphPane->viewport()->rect().contains(cursor)
            ? m_graphPane->mapToScene(cursor)
            : m_graphPane->mapToScene(m_graphPane->viewport()->rect().center());
    }
    m_scene->addNoteByUser(at);
}

void MainWindow::selectAndShow(Node *node)
{
    if (!node)
        return;
    m_scene->clearSelection();
    node->setSelected(true);
    m_graphPane->ensureVisible(node);
}

void MainWindow::walkSelection(int step)
{
    const QList<Node *> selected = selectedNodes();
    if (selected.size() != 1)
        return;
    Node *from = selected.first();
    Node *to = nullptr;
    if (step == 0 || step == 1) {
        const QList<Node *> next = step == 0 ? from->upstream(true) : from->downstream(true);
        to = next.isEmpty() ? nullptr : next.first();
    } else {
        to = step == 2 ? from->previousSibling() : from->nextSibling();
    }
    selectAndShow(to);
}

void MainWindow::onCtrlKeyLeft()
{
    walkSelection(0);
}

void MainWindow::onCtrlKeyRight()
{
    walkSelection(1);
}

void MainWindow::onCtrlKeyUp()
{
    walkSelection(2);
}

void MainWindow::onCtrlKeyDown()
{
    walkSelection(3);
}

void MainWindow::selectNthOfType(int itemType, int n)
{
    // Counted as the user reads the canvas: columns left to right, each top to bottom.
    QList<Node *> nodes = m_scene->nodesOfType(itemType);
    GraphScene::sortLeftToRight(nodes);
    if (n >= 1 && n <= nodes.size())
        selectAndShow(nodes.at(n - 1));
}

void MainWindow::onCtrl1()
{
    selectNthOfType(Node::InputType, 1);
}
void MainWindow::onCtrl2()
{
    selectNthOfType(Node::InputType, 2);
}
void MainWindow::onCtrl3()
{
    selectNthOfType(Node::InputType, 3);
}
void MainWindow::onCtrl4()
{
    selectNthOfType(Node::InputType, 4);
}
void MainWindow::onCtrl5()
{
    selectNthOfType(Node::InputType, 5);
}
void MainWindow::onCtrl6()
{
    selectNthOfType(Node::InputType, 6);
}
void MainWindow::onCtrl7()
{
    selectNthOfType(Node::InputType, 7);
}
void MainWindow::onCtrl8()
{
    selectNthOfType(Node::InputType, 8);
}
void MainWindow::onCtrl9()
{
    selectNthOfType(Node::InputType, 9);
}
void MainWindow::onShiftCtrl1()
{
    selectNthOfType(Node::OutputType, 1);
}
void MainWindow::onShiftCtrl2()
{
    selectNthOfType(Node::OutputType, 2);
}
void MainWindow::onShiftCtrl3()
{
    selectNthOfType(Node::OutputType, 3);
}
void MainWindow::onShiftCtrl4()
{
    selectNthOfType(Node::OutputType, 4);
}
void MainWindow::onShiftCtrl5()
{
    selectNthOfType(Node::OutputType, 5);
}
void MainWindow::onShiftCtrl6()
{
    selectNthOfType(Node::OutputType, 6);
}
void MainWindow::onShiftCtrl7()
{
    selectNthOfType(Node::OutputType, 7);
}
void MainWindow::onShiftCtrl8()
{
    selectNthOfType(Node::OutputType, 8);
}
void MainWindow::onShiftCtrl9()
{
    selectNthOfType(Node::OutputType, 9);
}

void MainWindow::onEditSelectAllAction()
{
    if (m_scene->isProcessing())
        return;
    const QList<QGraphicsItem *> items = m_scene->items();
    for (QGraphicsItem *item : items) {
        if (item->flags() & QGraphicsItem::ItemIsSelectable)
            item->setSelected(true);
    }
}

void MainWindow::onEditPaste()
{
    if (m_scene->isProcessing())
        return;
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    if (data && data->hasUrls()) {
        addFiles(data->urls(), QPointF());
    } else if (data && data->hasText() && !data->text().isEmpty()) {
        addClipboardText(data->text(), QPointF());
    } else {
        message(this, QMessageBox::Warning, s_productName,
                QStringLiteral("Data type pasted not recognized."));
    }
}

void MainWindow::onFind()
{
    message(this, QMessageBox::Information, QStringLiteral("Find Items"),
            notAvailableText(QStringLiteral("Finding items")));
}

void MainWindow::onEditLocale()
{
    message(this, QMessageBox::Information, QStringLiteral("Locale"),
            notAvailableText(QStringLiteral("Changing the document's locale")));
}

void MainWindow::onEditPreferences()
{
    if (m_scene->isProcessing())
        return;
    PreferencesDialog dialog(this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    applyTheme();
    static const int iconSizes[] = {16, 24, 32};
    const int iconSize = iconSizes[qBound(0, Settings::instance()->toolbarIconSize(), 2)];
    m_toolBar->setIconSize(QSize(iconSize, iconSize));
    m_statusBar->refreshMemory();
    m_scene->update();
}

// Adding items -------------------------------------------------------------------------------

bool MainWindow::addFiles(const QList<QUrl> &urls, const QPointF &scenePos)
{
    if (m_scene->isProcessing())
        return false;
    QStringList files;
    for (const QUrl &url : urls) {
        if (!url.isLocalFile()) {
            message(this, QMessageBox::Warning, s_productName,
                    QStringLiteral("'%1' is not a local file").arg(url.toString()));
            continue;
        }
        const QString path = url.toLocalFile();
        const QFileInfo info(path);
        if (info.isDir()) {
            QStringList found;
            QDirIterator it(path, QDir::Files, QDirIterator::Subdirectories);
            while (it.hasNext())
                found.append(it.next());
            found.sort();
            files += found;
        } else if (info.suffix().compare(QLatin1String("tabulon"), Qt::CaseInsensitive) == 0) {
            // A document among the drop replaces the graph instead of becoming an input.
            if (askToSave())
                return open(path);
            return false;
        } else {
            files.append(path);
        }
    }
    if (files.size() > DroppedFilesLimit) {
        const QString question = QStringLiteral("More than %1 files found.\n\nAdd %2 files?")
                                     .arg(DroppedFilesLimit)
                                     .arg(files.size());
        if (message(this, QMessageBox::Question, s_productName, question,
                    QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
            != QMessageBox::Yes)
            return false;
    }
    QStringList blocked;
    QStringList accepted;
    for (const QString &file : qAsConst(files)) {
        if (FileTypes::isInputExtensionBlocked(QFileInfo(file).suffix()))
            blocked.append(QDir::toNativeSeparators(file));
        else
            accepted.append(file);
    }
    if (!blocked.isEmpty()) {
        message(this, QMessageBox::Warning, s_productName,
                QStringLiteral("The files extensions of the following are blocked in "
                               "'Preferences>Input Extensions':\n%1")
                    .arg(blocked.join(QLatin1Char('\n'))));
    }
    if (accepted.isEmpty())
        return false;

    UndoStep step(QStringLiteral("add file(s)"));
    QPointF pos = scenePos;
    for (int i = 0; i < accepted.size(); ++i) {
        auto *input = new InputNode;
        input->setPath(accepted.at(i));
        input->setInputFileType(FileTypes::inputTypeForExtension(QFileInfo(accepted.at(i)).suffix(),
                                                                 FileTypeDelimited));
        input->setHeader(InputNode::defaultHeader(m_scene->autoRun()));
        m_scene->addInputNodeByUser(input, pos, false);
        // Each next file stands under the last, whether the first was placed or found a place.
        pos = input->centrePos() + QPointF(0.0, DroppedFileSpacing);
        if (Application *application = Application::instance()) {
            application->setLastDataFolder(accepted.at(i));
            application->pumpEvents();
        }
    }
    return true;
}

void MainWindow::addClipboardText(const QString &text, const QPointF &scenePos)
{
    if (m_scene->isProcessing() || text.isEmpty())
        return;
    UndoStep step(QStringLiteral("add clipboard"));
    auto *input = new InputNode;
    input->setMedium(InputNode::Clipboard);
    input->setText(text);
    input->setInputFileType(FileTypes::guessTextFileType(text));
    input->setHeader(InputNode::defaultHeader(m_scene->autoRun()));
    m_scene->addInputNodeByUser(input, scenePos, false);
}

void MainWindow::onInputFromFile()
{
    if (m_scene->isProcessing())
        return;
    const QString folder
        = Application::instance() ? Application::instance()->lastDataFolder() : QString();
    const QString path = chooseFile(QStringLiteral("Input"), folder, QString(), false);
    if (!path.isEmpty())
        addFiles({QUrl::fromLocalFile(path)}, QPointF());
}

void MainWindow::onInputFromClipboard()
{
    if (m_scene->isProcessing())
        return;
    const QString text = QGuiApplication::clipboard()->text();
    if (text.isEmpty()) {
        message(this, QMessageBox::Warning, s_productName,
                QStringLiteral("Data type pasted not recognized."));
        return;
    }
    addClipboardText(text, QPointF());
}

void MainWindow::onOutputDataToFile()
{
    if (m_scene->isProcessing())
        return;
    const QList<Node *> selected = selectedNodes();
    Node *source = selected.size() == 1 ? selected.first() : nullptr;
    if (!source || (source->type() != Node::TransformType && source->type() != Node::InputType)) {
        onShowTip(QStringLiteral("Output"),
                  QStringLiteral("To add an output you need to first select a single transform "
                                 "or input item in the Center pane."),
                  5000);
        return;
    }
    const QString folder
        = Application::instance() ? Application::instance()->lastOutputDataFolder() : QString();
    QString path = chooseFile(QStringLiteral("Output"), folder, QString(), true);
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += QLatin1Char('.') + Settings::instance()->defaultOutputExtension();
    const QString extension = QFileInfo(path).suffix().toLower();
    if (Settings::instance()->blockedOutputExtensionSet().contains(extension)) {
        message(this, QMessageBox::Warning, s_productName,
                QStringLiteral("The extension for this file is blocked in "
                               "'Preferences>Output Extensions':\n%1")
                    .arg(QDir::toNativeSeparators(path)));
        return;
    }
    int sameFile = 0;
    QSet<Node *> inputs = source->allUpstreamOfType(Node::InputType);
    if (source->type() == Node::InputType)
        inputs.insert(source);
    const QString absolute = QFileInfo(path).absoluteFilePath();
    for (Node *node : qAsConst(inputs)) {
        auto *input = static_cast<InputNode *>(node);
        if (input->medium() == InputNode::File
            && QFileInfo(input->path()).absoluteFilePath() == absolute)
            ++sameFile;
    }
    if (sameFile > 0) {
        const QString question
            = QStringLiteral(
                  "Outputting to '%1' (which %2 is also inputting from) could cause a rip "
                  "in the space-time continuum. Are you sure you want to do that?")
                  .arg(QDir::toNativeSeparators(path),
                       sameFile == 1 ? QStringLiteral("item") : QStringLiteral("items"));
        if (message(this, QMessageBox::Warning, s_productName, question,
                    QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
            != QMessageBox::Yes)
            return;
    }
    if (Application *application = Application::instance())
        application->setLastOutputDataFolder(path);
    m_scene->addOutputByUser(source, path);
}

void MainWindow::onTransformClicked(const Transform *prototype)
{
    if (!prototype || m_scene->isProcessing())
        return;
    if (!GraphScene::canAddTransform(prototype, m_scene->selectedItems())) {
        onShowTempMessage(QStringLiteral("'%1' can't be added to the selected items.")
                              .arg(prototype->displayName()));
        return;
    }
    const bool ctrl = QGuiApplication::keyboardModifiers() & Qt::ControlModifier;
    const QPoint cursor = m_graphPane->viewport()->mapFromGlobal(QCursor::pos());
    const QPointF scenePos = m_graphPane->viewport()->rect().contains(cursor)
        ? m_graphPane->mapToScene(cursor)
        : m_graphPane->mapToScene(QPoint(60, 60));
    m_scene->addTransformByUser(prototype, ctrl, scenePos);
}

void MainWindow::onTransformNodeAddedByUser(const QString &typeName)
{
    m_actionPane->recordTransformAdded(typeName);
}

// View menu ----------------------------------------------------------------------------------

void MainWindow::updateZoomActions()
{
    m_actions.value(QStringLiteral("ZoomIn"))->setEnabled(m_graphPane->canZoomIn());
    m_actions.value(QStringLiteral("ZoomOut"))->setEnabled(m_graphPane->canZoomOut());
    const QSignalBlocker blocker(m_actions.value(QStringLiteral("ZoomToFitToggled")));
    m_actions.value(QStringLiteral("ZoomToFitToggled"))->setChecked(m_graphPane->zoomFit());
}

void MainWindow::onZoomToFitToggled(bool on)
{
    m_graphPane->setZoomFit(on);
    if (on)
        m_graphPane->onZoomToFit();
    updateZoomActions();
}

void MainWindow::onZoomIn()
{
    m_graphPane->onZoomIn();
    updateZoomActions();
}

void MainWindow::onZoomOut()
{
    m_graphPane->onZoomOut();
    updateZoomActions();
}

void MainWindow::onZoomSelected()
{
    m_graphPane->onZoomSelected();
    updateZoomActions();
}

void MainWindow::onMagnifyUnderCursor(bool on)
{
    m_graphPane->onMagnifyUnderCursor(on);
}

void MainWindow::onSnapToGridToggled(bool on)
{
    if (m_scene->snapToGrid() != on)
        m_scene->setSnapToGrid(on);
}

void MainWindow::onShowCommentsToggled(bool on)
{
    Settings::instance()->setShowComments(on);
    m_scene->update();
}

void MainWindow::onShowChangesToggled(bool on)
{
    Settings::instance()->setShowChanges(on);
    m_scene->update();
}

void MainWindow::onShowWarningsToggled(bool on)
{
    Settings::instance()->setShowWarnings(on);
    m_scene->update();
}

void MainWindow::onShowCenterToolTipsOffToggled(bool on)
{
    if (on)
        Settings::instance()->setShowCenterPaneTips(0);
}

void MainWindow::onShowCenterToolTipsBriefToggled(bool on)
{
    if (on)
        Settings::instance()->setShowCenterPaneTips(1);
}

void MainWindow::onShowCenterToolTipsDetailedToggled(bool on)
{
    if (on)
        Settings::instance()->setShowCenterPaneTips(2);
}

void MainWindow::onViewTimingProfileToggled(bool on)
{
    // The canvas reads the flag off the scene when it paints the timing bars.
    m_scene->setProperty("timingProfile", on);
    m_scene->update();
}

void MainWindow::onViewNodeSummary()
{
    message(this, QMessageBox::Information, QStringLiteral("Item Summary"),
            notAvailableText(QStringLiteral("The item summary")));
}

void MainWindow::onCompareDatasets()
{
    message(this, QMessageBox::Information, QStringLiteral("Compare Data"),
            notAvailableText(QStringLiteral("Comparing data")));
}

void MainWindow::onCompareHeaders()
{
    message(this, QMessageBox::Information, QStringLiteral("Compare Headers"),
            notAvailableText(QStringLiteral("Comparing headers")));
}

void MainWindow::onToolBarVisibilityToggled(bool on)
{
    m_toolBar->setVisible(on);
}

void MainWindow::onLogVisibilityToggled(bool on)
{
    m_logPane->setVisible(on);
    Settings::instance()->setLogPaneShown(on);
}

void MainWindow::onTwoScreenModeToggled(bool on)
{
    const bool floating = !m_itemPane->parentWidget();
    if (on == floating)
        return;
    if (on) {
        m_dockedWidths = m_splitter->sizes();
        // The other screen is the first that does not show this window; with a single screen
        // (the action is disabled then, but a caller may still set it) the pane stays on it.
        QScreen *own = screen();
        QScreen *target = own;
        const QList<QScreen *> screens = QGuiApplication::screens();
        for (QScreen *candidate : screens) {
            if (candidate != own) {
                target = candidate;
                break;
            }
        }
        m_itemPane->setParent(nullptr);
        m_itemPane->setWindowTitle(windowTitle());
        m_itemPane->setWindowIcon(windowIcon());
        if (target)
            m_itemPane->setGeometry(target->availableGeometry());
        m_itemPane->show();
        if (target && target != own)
            m_itemPane->showMaximized();
    } else {
        m_splitter->addWidget(m_itemPane);
        m_itemPane->show();
        if (m_dockedWidths.size() == m_splitter->count())
            m_splitter->setSizes(m_dockedWidths);
    }
}

void MainWindow::onEnableTwoScreenMode()
{
    const bool available = QGuiApplication::screens().size() >= 2;
    QAction *twoScreens = m_actions.value(QStringLiteral("TwoScreenModeToggled"));
    twoScreens->setEnabled(available);
    if (!available && twoScreens->isChecked())
        twoScreens->setChecked(false);
}

void MainWindow::onItemPaneClosed()
{
    m_actions.value(QStringLiteral("TwoScreenModeToggled"))->setChecked(false);
}

// Theme --------------------------------------------------------------------------------------

QIcon MainWindow::themedIcon(const QString &name) const
{
    const QIcon drawing(
        QStringLiteral(":/icons/%1/%2.svg")
            .arg(m_darkTheme ? QStringLiteral("dark") : QStringLiteral("light"), name));
    if (!m_darkTheme)
        return drawing;
    // The style greys a disabled icon towards the light palette, which on a dark bar looks
    // as bright as an enabled one; fade it instead, at every size the tool bar offers.
    QIcon icon;
    for (const int side : {16, 24, 32, 48}) {
        const QPixmap normal = drawing.pixmap(side, side);
        icon.addPixmap(normal, QIcon::Normal);
        QPixmap faded(normal.size());
        faded.setDevicePixelRatio(normal.devicePixelRatio());
        faded.fill(Qt::transparent);
        QPainter painter(&faded);
        painter.setOpacity(0.3);
        painter.drawPixmap(0, 0, normal);
        painter.end();
        icon.addPixmap(faded, QIcon::Disabled);
    }
    return icon;
}

void MainWindow::applyTheme()
{
    const int theme = Settings::instance()->uiTheme();
    const bool dark = theme == ThemeDark || (theme == ThemeSystem && m_systemDark);
    m_darkTheme = dark;
    for (QAction *action : qAsConst(m_actions)) {
        const QString icon = action->property("iconName").toString();
        if (!icon.isEmpty())
            action->setIcon(themedIcon(icon));
    }
    QString styleSheet;
    if (dark) {
        QFile file(QStringLiteral(":/styles/dark.qss"));
        if (file.open(QIODevice::ReadOnly))
            styleSheet = QString::fromUtf8(file.readAll());
    }
    if (qApp->styleSheet() != styleSheet)
        qApp->setStyleSheet(styleSheet);
    // Only the two default schemes follow the theme; a scheme the user picked stays.
    Colors *colors = Colors::instance();
    if (dark && colors->scheme() == Colors::Light)
        colors->setScheme(Colors::Dark);
    else if (!dark && colors->scheme() == Colors::Dark)
        colors->setScheme(Colors::Light);
    if (m_scene) {
        m_scene->setBackgroundBrush(colors->color(Colors::CenterBackground));
        m_scene->update();
    }
}

void MainWindow::onToggleUITheme()
{
    Settings::instance()->setUiTheme(m_darkTheme ? ThemeLight : ThemeDark);
    applyTheme();
}

void MainWindow::onUpdateUITheme()
{
    const bool systemDark = Settings::isSystemDark();
    if (systemDark == m_systemDark)
        return;
    m_systemDark = systemDark;
    if (Settings::instance()->uiTheme() == ThemeSystem)
        applyTheme();
}

// Run menu -----------------------------------------------------------------------------------

void MainWindow::arrangeRunActions(bool autoRun)
{
    QAction *runAll = m_actions.value(QStringLiteral("RunEverythingAction"));
    QAction *runChanges = m_actions.value(QStringLiteral("RunChangesAction"));
    QAction *runSelected = m_actions.value(QStringLiteral("RunSelectedAction"));
    QAction *stop = m_actions.value(QStringLiteral("RunStopAction"));
    m_runMenu->clear();
    m_runMenu->addAction(m_actions.value(QStringLiteral("RunAutoToggled")));
    m_runMenu->addSeparator();
    if (!autoRun) {
        m_runMenu->addAction(runAll);
        m_runMenu->addAction(runChanges);
        m_runMenu->addAction(runSelected);
        m_runMenu->addSeparator();
    }
    m_runMenu->addAction(stop);

    m_toolBar->removeAction(runChanges);
    m_toolBar->removeAction(runSelected);
    m_toolBar->removeAction(stop);
    if (!autoRun) {
        m_toolBar->addAction(runChanges);
        m_toolBar->addAction(runSelected);
    }
    m_toolBar->addAction(stop);
    onUpdateRunStatus();
}

void MainWindow::onRunAutoToggled(bool on)
{
    m_scene->setAutoRun(on);
    arrangeRunActions(on);
    setWindowModified(true);
    if (!on)
        return;
    const QList<Node *> nodes = m_scene->nodes();
    const bool pending = std::any_of(nodes.cbegin(), nodes.cend(), [](const Node *node) {
        return node->status() == Node::NeedsUpdate;
    });
    if (pending && !m_scene->isProcessing()) {
        GraphScene::setStopRequested(false);
        m_scene->process(GraphScene::RunChanges, false);
        GraphScene::setStopRequested(false);
    }
}

void MainWindow::onRunChangesAction()
{
    GraphScene::setStopRequested(false);
    m_scene->process(GraphScene::RunChanges);
}

void MainWindow::onRunSelectedAction()
{
    GraphScene::setStopRequested(false);
    m_scene->process(GraphScene::RunSelected);
}

void MainWindow::onRunEverythingAction()
{
    GraphScene::setStopRequested(false);
    m_scene->process(GraphScene::RunAll);
}

void MainWindow::onRunStopAction()
{
    m_statusBar->showMessage(QStringLiteral("Run stopped by user"), 2000);
    GraphScene::setStopRequested(true);
    QAction *autoRun = m_actions.value(QStringLiteral("RunAutoToggled"));
    if (autoRun->isChecked()) {
        autoRun->setChecked(false);
        Settings *settings = Settings::instance();
        if (!settings->tipShown(QStringLiteral("tip_restart_auto_run"))) {
            settings->setTipShown(QStringLiteral("tip_restart_auto_run"), true);
            onShowTip(QStringLiteral("Auto run"),
                      QStringLiteral("Click here to go back to auto running changes."), 4000);
        }
    }
}

void MainWindow::onUpdateRunStatus()
{
    if (!m_scene)
        return;
    const bool autoRun = m_actions.value(QStringLiteral("RunAutoToggled"))->isChecked();
    const QList<Node *> nodes = m_scene->nodes();
    const bool unprocessed = std::any_of(nodes.cbegin(), nodes.cend(), [](const Node *node) {
        return node->status() == Node::NeedsUpdate || node->status() == Node::Error;
    });
    const bool running = m_scene->isProcessing();
    m_actions.value(QStringLiteral("RunEverythingAction"))
        ->setEnabled(!autoRun && !running && !nodes.isEmpty());
    m_actions.value(QStringLiteral("RunChangesAction"))
        ->setEnabled(!autoRun && !running && unprocessed);
    m_actions.value(QStringLiteral("RunSelectedAction"))
        ->setEnabled(!autoRun && !running && !m_scene->selectedItems().isEmpty());
}

void MainWindow::onProcessUndoRedoChanges()
{
    if (m_scene->autoRun() && !m_scene->isProcessing()) {
        GraphScene::setStopRequested(false);
        m_scene->process(GraphScene::RunChanges);
    }
}

// Scene signals ------------------------------------------------------------------------------

void MainWindow::onGraphSelectionChanged()
{
    const QList<QGraphicsItem *> selected = m_scene->selectedItems();
    m_actionPane->setSelection(selected);
    m_itemPane->showItems(selectedNodes());
    m_actions.value(QStringLiteral("EditDeleteAction"))->setEnabled(!selected.isEmpty());
    const QList<Node *> nodes = selectedNodes();
    for (const char *name :
         {"DisconnectSelected", "DisconnectFromSelected", "DisconnectToSelected"})
        m_actions.value(QLatin1String(name))->setEnabled(!nodes.isEmpty());
    m_actions.value(QStringLiteral("DuplicateBranch"))->setEnabled(nodes.size() == 1);
    m_actions.value(QStringLiteral("ZoomSelected"))->setEnabled(!selected.isEmpty());
    onUpdateRunStatus();
}

void MainWindow::onShowNodeFullscreen(Node *node)
{
    if (!node)
        return;
    m_itemPane->showItems({node});
    m_itemPane->setFullScreen(true);
}

void MainWindow::onNodesChanged()
{
    refreshStatusCounts();
    onUpdateRunStatus();
}

void MainWindow::refreshStatusCounts()
{
    if (m_scene && m_statusBar)
        m_statusBar->nodeStatusWidget()->setNodes(m_scene->nodes());
}

void MainWindow::onCompletedTransforms()
{
    onShowTempMessage(QStringLiteral("Processing completed"));
    refreshStatusCounts();
    onUpdateRunStatus();
    m_graphPane->onAutoZoom();
    updateZoomActions();
    const QList<Node *> selected = selectedNodes();
    if (selected.size() == 1)
        m_itemPane->refreshAfterRun(selected.first());

    Settings *settings = Settings::instance();
    const qint64 total = settings->totalRowsProcessed();
    if (total < 1000000)
        return;
    const int exponent = int(std::floor(std::log10(double(total))));
    if (settings->totalNextExpRowsToNotify() > exponent)
        return;
    settings->setTotalNextExpRowsToNotify(exponent + 1);
    onShowTip(
        QStringLiteral("Achievement"),
        QStringLiteral("You have now transformed more than %1 rows of data in Tabulon.\n%2")
            .arg(QLocale().toString(qint64(std::pow(10.0, exponent))), achievementLine(exponent)),
        20000);
}

void MainWindow::onFileOpenRequested(const QString &path)
{
    if (askToSave())
        open(path);
}

void MainWindow::onShowStatusBarMessage(const QString &text)
{
    m_statusBar->showMessage(text);
}

void MainWindow::onShowTempMessage(const QString &text)
{
    m_statusBar->showMessage(text, 2000);
}

void MainWindow::onShowLogMessage(const QString &text)
{
    m_logPane->appendLine(text);
}

void MainWindow::onShowWarningMessage(const QString &title, const QString &text)
{
    message(this, QMessageBox::Warning, title.isEmpty() ? s_productName : title, text);
}

void MainWindow::onShowCriticalMessage(const QString &title, const QString &text)
{
    message(this, QMessageBox::Critical, title.isEmpty() ? s_productName : title, text);
}

void MainWindow::onShowProgress(int percent)
{
    m_statusBar->setProgress(percent);
}

void MainWindow::onAllowUserInteraction(bool allow)
{
    const QList<QAction *> toolActions = m_toolBar->actions();
    for (QAction *action : toolActions)
        action->setEnabled(allow);
    for (QMenu *menu : qAsConst(m_menus)) {
        if (menu != m_runMenu)
            menu->menuAction()->setEnabled(allow);
    }
    const QList<QAction *> runActions = m_runMenu->actions();
    for (QAction *action : runActions)
        action->setEnabled(allow);
    m_actions.value(QStringLiteral("RunStopAction"))->setEnabled(!allow);
    m_actionPane->setInteractionAllowed(allow);
    m_itemPane->setInteractionAllowed(allow);
    m_graphPane->setInteractive(allow);
    if (allow) {
        updateUndoLabels();
        updateZoomActions();
        onUpdateRunStatus();
    }
}

void MainWindow::onShowTip(const QString &title, const QString &text, int ms)
{
    QString html = text.toHtmlEscaped();
    html.replace(QLatin1Char('\n'), QLatin1String("<br>"));
    const QPoint at = m_graphPane->mapToGlobal(m_graphPane->rect().center());
    QToolTip::showText(at, QStringLiteral("<b>%1</b><br>%2").arg(title.toHtmlEscaped(), html),
                       m_graphPane, QRect(), ms);
    m_statusBar->showMessage(title + QStringLiteral(": ") + text, ms);
}

void MainWindow::onSelectIconsOfType(int icon)
{
    QSignalBlocker blocker(m_scene);
    m_scene->clearSelection();
    const QList<Node *> nodes = m_scene->nodes();
    for (Node *node : nodes) {
        if (static_cast<int>(node->statusIcon()) == icon)
            node->setSelected(true);
    }
    blocker.unblock();
    onGraphSelectionChanged();
}

// Help ---------------------------------------------------------------------------------------

void MainWindow::onHelp()
{
    onAbout();
}

void MainWindow::onAbout()
{
    message(
        this, QMessageBox::Information, QStringLiteral("About %1").arg(s_productName),
        QStringLiteral("%1 %2\n\nA workbench for transforming tabular data without "
                       "programming.\n\nSupport: %3")
            .arg(s_productName, QStringLiteral(TABULON_VERSION), Application::supportAddress()));
}

void MainWindow::onAutoCheckForUpdates() { }

// Window events ------------------------------------------------------------------------------

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (!askToSave()) {
        event->ignore();
        return;
    }
    // Docked again, the pane closes with the window and its width is remembered with the
    // others.
    m_actions.value(QStringLiteral("TwoScreenModeToggled"))->setChecked(false);
    if (isVisible()) {
        Settings *settings = Settings::instance();
        settings->setGeometry(saveGeometry());
        settings->setWindowState(saveState());
        settings->setSplitterWidths(m_splitter->sizes());
        QString previous = m_documentPath;
        if (settings->isIniFile() && !previous.isEmpty())
            previous = QDir(QCoreApplication::applicationDirPath()).relativeFilePath(previous);
        settings->setPreviousPath(QDir::toNativeSeparators(previous));
    }
    removeRecoveryFile();
    m_lock.release();
    event->accept();
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent *event)
{
    if (!event->mimeData()->hasUrls())
        return;
    event->acceptProposedAction();
    addFiles(event->mimeData()->urls(), QPointF());
}
