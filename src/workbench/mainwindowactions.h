#pragma once

#include <QList>

#include <array>
#include <functional>

class QAction;
class QIcon;
class QMainWindow;
class QMenu;
class QString;
class QToolBar;

// The menus, the tool bar and the actions of the main window, each action found by what it
// does. This builds texts, shortcuts, tool tips and the order of the menus; what an action
// does is connected by the window and its helpers.
class MainWindowActions
{
public:
    enum Id {
        FileNew,
        FileOpen,
        FileOpenRecent,
        FileSave,
        FileSaveAs,
        FileNotes,
        FileNewWindow,
        BatchProcess,
        CommandLine,
        FileExit,
        EditUndo,
        EditRedo,
        EditPaste,
        EditDelete,
        DisconnectSelected,
        DisconnectFromSelected,
        DisconnectToSelected,
        DuplicateBranch,
        AddNote,
        EditSelectAll,
        Find,
        EditLocale,
        EditPreferences,
        ZoomToFit,
        ZoomIn,
        ZoomOut,
        ZoomSelected,
        MagnifyUnderCursor,
        SnapToGrid,
        ShowComments,
        ShowChanges,
        ShowWarnings,
        CenterToolTipsOff,
        CenterToolTipsBrief,
        CenterToolTipsDetailed,
        ViewTimingProfile,
        ViewNodeSummary,
        CompareDatasets,
        CompareHeaders,
        ToolBarVisibility,
        LogVisibility,
        TwoScreenMode,
        ToggleUITheme,
        RunAuto,
        RunChanges,
        RunSelected,
        RunEverything,
        RunStop,
        CheckForUpdates,
        About,
        Count
    };

    explicit MainWindowActions(QMainWindow *window);

    QAction *operator[](Id id) const { return m_actions[id]; }
    // The entries of the help menu that lead to a help page.
    const QList<QAction *> &helpPages() const { return m_helpPages; }
    QMenu *recentMenu() const { return m_recentMenu; }
    QMenu *runMenu() const { return m_runMenu; }
    const QList<QMenu *> &menus() const { return m_menus; }
    QToolBar *toolBar() const { return m_toolBar; }

    // Without Auto Run the run actions join the Run menu and the tool bar; Stop is always there.
    void arrangeRunActions(bool autoRun) const;
    // Sizes of the tool bar's icons by the toolbar_icon_size choice: 16, 24 or 32 pixels.
    void setToolBarIconSize(int choice) const;
    // Gives every action that has a drawing the icon of that name.
    void applyIcons(const std::function<QIcon(const QString &name)> &iconNamed) const;
    // The actions bound to a run's end: everything in File and Edit, the tool bar, the menus.
    void setInteractionAllowed(bool allow) const;

private:
    void buildMenus(QMainWindow *window);
    void buildToolBar(QMainWindow *window);
    void addToMenu(QMenu *menu, const QList<int> &layout);

    std::array<QAction *, Count> m_actions {};
    QList<QAction *> m_helpPages;
    QList<QMenu *> m_menus;
    QMenu *m_recentMenu = nullptr;
    QMenu *m_toolTipsMenu = nullptr;
    QMenu *m_runMenu = nullptr;
    QToolBar *m_toolBar = nullptr;
};
