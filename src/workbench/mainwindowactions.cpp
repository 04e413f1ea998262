#include "workbench/mainwindowactions.h"

#include <QAction>
#include <QActionGroup>
#include <QIcon>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

namespace {

struct ActionEntry
{
    // The name of the slot the action calls, without "on"; kept as the object name.
    const char *name;
    const char *text;
    const char *shortcut;
    const char *toolTip;
    const char *icon;
    bool checkable;
};

// In the order of MainWindowActions::Id.
const ActionEntry s_entries[MainWindowActions::Count] = {
    {"FileNewAction", "&New", "Ctrl+N", "Create a new .tabulon document.", "new", false},
    {"FileOpenAction", "&Open...", "Ctrl+O", "Open an existing .tabulon document.", "open", false},
    {"FileOpenRecentAction", "Open &Recent...", "Ctrl+Shift+O", "Open a recent .tabulon document.",
     nullptr, false},
    {"FileSaveAction", "&Save", "Ctrl+S", "Save the current .tabulon document.", "save", false},
    {"FileSaveAsAction", "Save &As...", nullptr,
     "Save the current .tabulon document to a different name/location.", nullptr, false},
    {"FileNotesAction", "No&tes...", nullptr, "Notes for this .tabulon document.", nullptr, false},
    {"FileNewWindowAction", "New &Window", "Ctrl+Shift+N",
     "Start a new Tabulon instance in a new window.", nullptr, false},
    {"BatchProcessAction", "&Batch Process...", "Ctrl+B",
     "Perform the current .tabulon document in batch mode.", nullptr, false},
    {"CommandLineAction", "&Command Line...", nullptr, "Get text to use on the command line.",
     nullptr, false},
    {"FileExitAction", "E&xit", nullptr, "Exit.", nullptr, false},
    {"EditUndo", "&Undo", "Ctrl+Z", "Undo change", "undo", false},
    {"EditRedo", "&Redo", "Ctrl+Y", "Redo undone change", "redo", false},
    // Paste takes the platform's key, set when the action is built.
    {"EditPaste", "&Paste", nullptr, "Paste files or text from the clipboard as inputs.", nullptr,
     false},
    {"EditDeleteAction", "&Delete", nullptr, "Delete the items selected in the center pane.",
     nullptr, false},
    {"DisconnectSelected", "Dis&connect", "Alt+D",
     "Remove all connections to and from the selected items.", nullptr, false},
    {"DisconnectFromSelected", "Disconnect &Outputs", nullptr,
     "Remove the connections leaving the selected items.", nullptr, false},
    {"DisconnectToSelected", "Disconnect &Inputs", nullptr,
     "Remove the connections entering the selected items.", nullptr, false},
    {"DuplicateBranch", "Duplicate &Branch", "Ctrl+D",
     "Copy the selected item and everything downstream of it.", nullptr, false},
    {"AddNote", "Add &Note", "Ctrl+H", "Add a note beside the selected item, or under the cursor.",
     nullptr, false},
    {"EditSelectAllAction", "Select &All", "Ctrl+A", "Select All items in the center pane.",
     nullptr, false},
    {"Find", "Fin&d Items...", "Ctrl+F", "Find items in the center pane that match search terms.",
     nullptr, false},
    {"EditLocale", "&Locale...", nullptr, "Change the locale of the current .tabulon file.",
     nullptr, false},
    {"EditPreferences", "&Preferences...", "Ctrl+,", "Show the 'Preferences' window.",
     "preferences", false},
    {"ZoomToFitToggled", "Zoom &Fit",
     "Ctrl+=", "Toggle on to automatically zoom so all items in the center pane fit on screen.",
     "zoom_fit", true},
    {"ZoomIn", "Zoom &In", "Ctrl++", "Zoom In on the center pane.", "zoom_in", false},
    {"ZoomOut", "Zoom &Out", "Ctrl+-", "Zoom out from the center pane.", "zoom_out", false},
    {"ZoomSelected", "Zoom S&elected", "Ctrl+/", "Zoom in to selected items on the center pane.",
     nullptr, false},
    // Magnify has two keys, set when the action is built.
    {"MagnifyUnderCursor", "&Magnify Cursor", nullptr,
     "Toggle cursor magnification for the center pane.", nullptr, true},
    {"SnapToGridToggled", "Snap To &Grid", nullptr, "Snap items to a grid.", nullptr, true},
    {"ShowCommentsToggled", "Show &Comments", nullptr, "Show item comments in the center pane.",
     nullptr, true},
    {"ShowChangesToggled", "Show &Row/Col Changes", nullptr,
     "Show changes to the number of rows and columns by transforms in the center pane.", nullptr,
     true},
    {"ShowWarningsToggled", "Show &Warnings", nullptr, "Show warnings in the center pane.", nullptr,
     true},
    {"ShowCenterToolTipsOffToggled", "Off", nullptr, nullptr, nullptr, true},
    {"ShowCenterToolTipsBriefToggled", "Brief", nullptr, nullptr, nullptr, true},
    {"ShowCenterToolTipsDetailedToggled", "Detailed", nullptr, nullptr, nullptr, true},
    {"ViewTimingProfileToggled", "Timing &Profile", "Ctrl+.",
     "Show a timing profile in the center pane.", nullptr, true},
    {"ViewNodeSummary", "Item &Summary...", "Ctrl+;", "View a summary of all items.", nullptr,
     false},
    {"CompareDatasets", "Compare &Data...", nullptr,
     "Compare the data of 2 selected items, side-by-side, row by row.", nullptr, false},
    {"CompareHeaders", "Compare &Headers...", nullptr,
     "Compare the headers of 2 or more selected items.", nullptr, false},
    {"ToolBarVisibilityToggled", "&Tool bar", nullptr, "Show/hide the toolbar.", nullptr, true},
    {"LogVisibilityToggled", "&Log", "Ctrl+L", "Show/hide the Log pane.", "log", true},
    {"TwoScreenModeToggled", "Two &Screen Mode", "Ctrl+T",
     "Display the right pane on a second screen, if available.", nullptr, true},
    {"ToggleUITheme", "Toggle &UI Theme", "Ctrl+U",
     "Toggle the user interface between light and dark themes.", nullptr, false},
    {"RunAutoToggled", "&Auto Run", nullptr, "Automatically run changes.", "auto_run", true},
    {"RunChangesAction", "Run &Unprocessed", "Ctrl+R", "Run items that need processing.", "run",
     false},
    {"RunSelectedAction", "Run &Selected", "Ctrl+Shift+R",
     "Run selected items (whether changed or not).", "run_selected", false},
    {"RunEverythingAction", "Run &All", nullptr, "Run all items.", nullptr, false},
    {"RunStopAction", "S&top Run", "Ctrl+\\", "Stop the current run.", "stop", false},
    {"AutoCheckForUpdates", "Check For &Updates", nullptr, nullptr, nullptr, false},
    {"About", "&About", nullptr, nullptr, nullptr, false},
};

// Markers among the ids of a menu's layout.
constexpr int Separator = -1;
constexpr int RecentSubmenu = -2;
constexpr int ToolTipsSubmenu = -3;

QString latin(const char *text)
{
    return text ? QString::fromLatin1(text) : QString();
}

} // namespace

MainWindowActions::MainWindowActions(QMainWindow *window)
{
    for (int id = 0; id < Count; ++id) {
        const ActionEntry &entry = s_entries[id];
        auto *action = new QAction(latin(entry.text), window);
        action->setObjectName(latin(entry.name));
        if (entry.shortcut)
            action->setShortcut(QKeySequence(latin(entry.shortcut)));
        action->setToolTip(latin(entry.toolTip));
        action->setStatusTip(latin(entry.toolTip));
        action->setCheckable(entry.checkable);
        if (entry.icon)
            action->setProperty("iconName", latin(entry.icon));
        m_actions[id] = action;
    }
    m_actions[EditPaste]->setShortcut(QKeySequence::Paste);
    m_actions[MagnifyUnderCursor]->setShortcuts(
        {QKeySequence(QStringLiteral("Ctrl+M")), QKeySequence(QStringLiteral("Ctrl+Alt+L"))});
    m_actions[ToolBarVisibility]->setChecked(true);
    m_actions[RunStop]->setEnabled(false);
    auto *tipGroup = new QActionGroup(window);
    for (const Id level : {CenterToolTipsOff, CenterToolTipsBrief, CenterToolTipsDetailed})
        tipGroup->addAction(m_actions[level]);

    buildMenus(window);
    buildToolBar(window);
}

void MainWindowActions::buildMenus(QMainWindow *window)
{
    QMenuBar *bar = window->menuBar();
    QMenu *file = bar->addMenu(QStringLiteral("&File"));
    QMenu *edit = bar->addMenu(QStringLiteral("&Edit"));
    QMenu *view = bar->addMenu(QStringLiteral("&View"));
    m_runMenu = bar->addMenu(QStringLiteral("&Run"));
    QMenu *help = bar->addMenu(QStringLiteral("&Help"));
    m_menus = {file, edit, view, m_runMenu, help};
    for (QMenu *menu : qAsConst(m_menus))
        menu->setToolTipsVisible(true);

    addToMenu(file,
              {FileNew, FileOpen, FileOpenRecent, RecentSubmenu, Separator, FileSave, FileSaveAs,
               FileNotes, Separator, FileNewWindow, BatchProcess, CommandLine, Separator,
               FileExit});
    addToMenu(edit,
              {EditUndo, EditRedo, Separator, EditPaste, EditDelete, DisconnectSelected,
               DisconnectFromSelected, DisconnectToSelected, DuplicateBranch, AddNote, Separator,
               EditSelectAll, Find, EditLocale, Separator, EditPreferences});
    addToMenu(view,
              {ZoomToFit,
               ZoomIn,
               ZoomOut,
               ZoomSelected,
               MagnifyUnderCursor,
               Separator,
               SnapToGrid,
               ShowComments,
               ShowChanges,
               ShowWarnings,
               ToolTipsSubmenu,
               ViewTimingProfile,
               Separator,
               ViewNodeSummary,
               CompareDatasets,
               CompareHeaders,
               Separator,
               ToolBarVisibility,
               LogVisibility,
               TwoScreenMode,
               ToggleUITheme});

    const char *const helpTexts[] = {"&Quick Start Guide",
                                     "Tabulon &Help",
                                     "&Keyboard shortcuts",
                                     "&Expert Tips",
                                     "Short Introduction &Video",
                                     "&FAQ Page",
                                     "Foru&m",
                                     "Technical &Support",
                                     "Subscribe to &Newsletter"};
    for (const char *text : helpTexts)
        m_helpPages.append(help->addAction(latin(text)));
    addToMenu(help, {Separator, CheckForUpdates, About});
}

void MainWindowActions::addToMenu(QMenu *menu, const QList<int> &layout)
{
    for (const int entry : layout) {
        if (entry == Separator) {
            menu->addSeparator();
        } else if (entry == RecentSubmenu) {
            m_recentMenu = menu->addMenu(QStringLiteral("&Recent"));
            m_recentMenu->setToolTipsVisible(true);
            m_recentMenu->menuAction()->setToolTip(
                QStringLiteral("Open recent .tabulon documents."));
        } else if (entry == ToolTipsSubmenu) {
            m_toolTipsMenu = menu->addMenu(QStringLiteral("Show Too&l Tips"));
            m_toolTipsMenu->setToolTipsVisible(true);
            m_toolTipsMenu->menuAction()->setToolTip(
                QStringLiteral("Level of detail to show in Center pane tool tips."));
            addToMenu(m_toolTipsMenu,
                      {CenterToolTipsOff, CenterToolTipsBrief, CenterToolTipsDetailed});
        } else {
            menu->addAction(m_actions[entry]);
        }
    }
}

void MainWindowActions::buildToolBar(QMainWindow *window)
{
    m_toolBar = window->addToolBar(QStringLiteral("Tool bar"));
    m_toolBar->setObjectName(QStringLiteral("toolBar"));
    m_toolBar->setMovable(false);
    const QList<int> layout = {FileNew,   FileOpen,  FileSave, Separator, EditUndo,  EditRedo,
                               Separator, ZoomToFit, ZoomIn,   ZoomOut,   Separator, RunAuto};
    for (const int entry : layout) {
        if (entry == Separator)
            m_toolBar->addSeparator();
        else
            m_toolBar->addAction(m_actions[entry]);
    }
}

void MainWindowActions::arrangeRunActions(bool autoRun) const
{
    m_runMenu->clear();
    m_runMenu->addAction(m_actions[RunAuto]);
    m_runMenu->addSeparator();
    if (!autoRun) {
        m_runMenu->addAction(m_actions[RunEverything]);
        m_runMenu->addAction(m_actions[RunChanges]);
        m_runMenu->addAction(m_actions[RunSelected]);
        m_runMenu->addSeparator();
    }
    m_runMenu->addAction(m_actions[RunStop]);

    m_toolBar->removeAction(m_actions[RunChanges]);
    m_toolBar->removeAction(m_actions[RunSelected]);
    m_toolBar->removeAction(m_actions[RunStop]);
    if (!autoRun) {
        m_toolBar->addAction(m_actions[RunChanges]);
        m_toolBar->addAction(m_actions[RunSelected]);
    }
    m_toolBar->addAction(m_actions[RunStop]);
}

void MainWindowActions::setToolBarIconSize(int choice) const
{
    static const int iconSizes[] = {16, 24, 32};
    const int side = iconSizes[qBound(0, choice, 2)];
    m_toolBar->setIconSize(QSize(side, side));
}

void MainWindowActions::applyIcons(const std::function<QIcon(const QString &)> &iconNamed) const
{
    for (QAction *action : m_actions) {
        const QString icon = action->property("iconName").toString();
        if (!icon.isEmpty())
            action->setIcon(iconNamed(icon));
    }
}

void MainWindowActions::setInteractionAllowed(bool allow) const
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
    m_actions[RunStop]->setEnabled(!allow);
}
