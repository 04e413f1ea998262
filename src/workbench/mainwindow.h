#pragma once

#include "graph/document.h"

#include <QHash>
#include <QList>
#include <QMainWindow>
#include <QMessageBox>
#include <QPointF>
#include <QPointer>
#include <QUrl>

#include <functional>

class ActionPane;
class GraphPane;
class GraphScene;
class ItemPane;
class LogPane;
class Node;
class QAction;
class QActionGroup;
class QIcon;
class QMenu;
class QSplitter;
class QTimer;
class QToolBar;
class StatusBar;
class Transform;
class TransformNode;
class UndoHistory;

// The frame of the workbench: menus, tool bar, the three panes, the log and the status bar,
// the flows that open, save and add files, and the host of the undo list. It follows the live
// scene through undo and redo, connecting its signals anew each time the scene is swapped.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    // The visible start: shows the window and opens the document that the arguments, the
    // recovery file or the preferences name.
    void startUp(const QStringList &arguments);

    bool open(const QString &path);
    GraphScene *graphScene() const;
    GraphPane *graphPane() const;
    ActionPane *actionPane() const;
    ItemPane *itemPane() const;
    UndoHistory *undoHistory() const;
    bool addFiles(const QList<QUrl> &urls, const QPointF &scenePos);

    // Every question and message of the window goes through here, so that tests can answer
    // them without a modal dialog. The hook gets the icon, title, text, buttons and default
    // button and returns the button chosen.
    using MessageHook = std::function<QMessageBox::StandardButton(
        QMessageBox::Icon, const QString &, const QString &, QMessageBox::StandardButtons,
        QMessageBox::StandardButton)>;
    static void setMessageHook(MessageHook hook);
    static QMessageBox::StandardButton
    message(QWidget *parent, QMessageBox::Icon icon, const QString &title, const QString &text,
            QMessageBox::StandardButtons buttons = QMessageBox::Ok,
            QMessageBox::StandardButton defaultButton = QMessageBox::NoButton);

    // File dialogs likewise: the hook gets the title, the start folder, the filter and
    // whether a file is saved, and returns the chosen path, or an empty string for Cancel.
    using FileDialogHook = std::function<QString(const QString &title, const QString &folder,
                                                 const QString &filter, bool save)>;
    static void setFileDialogHook(FileDialogHook hook);

    QString documentPath() const { return m_documentPath; }
    const DocumentData &documentData() const { return m_documentData; }
    LogPane *logPane() const { return m_logPane; }
    StatusBar *windowStatusBar() const { return m_statusBar; }
    bool isCommandLine() const { return m_commandLine; }
    // The actions by their slot's name without "on" ("FileNewAction", "EditUndo", ...).
    QAction *action(const QString &name) const { return m_actions.value(name); }
    // Saves to path (the held document when empty); false with a message on failure.
    bool save(const QString &path = QString());
    // The "Save changes?" question; true when the flow may go on.
    bool askToSave();
    // A new, empty document.
    void newDocument();
    // Adds a clipboard input holding text, in one undo step.
    void addClipboardText(const QString &text, const QPointF &scenePos);

public slots:
    void onFileNewAction();
    void onFileOpenAction();
    void onFileOpenRecentAction();
    void onRecentDocSelected();
    void onClearRecentDocSelected();
    void onFileSaveAction();
    void onFileSaveAsAction();
    void onFileNotesAction();
    void onFileNewWindowAction();
    void onBatchProcessAction();
    void onCommandLineAction();
    void onFileExitAction();
    void onEditUndo();
    void onEditRedo();
    void onEditDeleteAction();
    void onEditSelectAllAction();
    void onDisconnectSelected();
    void onDisconnectFromSelected();
    void onDisconnectToSelected();
    void onDuplicateBranch();
    void onAddNote();
    void onCtrlKeyLeft();
    void onCtrlKeyRight();
    void onCtrlKeyUp();
    void onCtrlKeyDown();
    // Ctrl+digit selects the n-th input, Ctrl+Shift+digit the n-th output.
    void onCtrl1();
    void onCtrl2();
    void onCtrl3();
    void onCtrl4();
    void onCtrl5();
    void onCtrl6();
    void onCtrl7();
    void onCtrl8();
    void onCtrl9();
    void onShiftCtrl1();
    void onShiftCtrl2();
    void onShiftCtrl3();
    void onShiftCtrl4();
    void onShiftCtrl5();
    void onShiftCtrl6();
    void onShiftCtrl7();
    void onShiftCtrl8();
    void onShiftCtrl9();
    void onEditPaste();
    void onFind();
    void onEditLocale();
    void onEditPreferences();
    void onZoomToFitToggled(bool on);
    void onZoomIn();
    void onZoomOut();
    void onZoomSelected();
    void onMagnifyUnderCursor(bool on);
    void onSnapToGridToggled(bool on);
    void onShowCommentsToggled(bool on);
    void onShowChangesToggled(bool on);
    void onShowWarningsToggled(bool on);
    void onShowCenterToolTipsOffToggled(bool on);
    void onShowCenterToolTipsBriefToggled(bool on);
    void onShowCenterToolTipsDetailedToggled(bool on);
    void onViewTimingProfileToggled(bool on);
    void onViewNodeSummary();
    void onCompareDatasets();
    void onCompareHeaders();
    void onToolBarVisibilityToggled(bool on);
    void onLogVisibilityToggled(bool on);
    void onTwoScreenModeToggled(bool on);
    void onToggleUITheme();
    void onUpdateUITheme();
    void onRunAutoToggled(bool on);
    void onRunChangesAction();
    void onRunSelectedAction();
    void onRunEverythingAction();
    void onRunStopAction();
    void onUpdateRunStatus();
    void onHelp();
    void onAbout();
    void onAutoCheckForUpdates();
    void onInputFromFile();
    void onInputFromClipboard();
    void onOutputDataToFile();
    void onTransformClicked(const Transform *prototype);
    void onGraphSelectionChanged();
    void onShowNodeFullscreen(Node *node);
    void onNodesChanged();
    void onCompletedTransforms();
    void onFileOpenRequested(const QString &path);
    void onShowStatusBarMessage(const QString &text);
    void onShowTempMessage(const QString &text);
    void onShowLogMessage(const QString &text);
    void onShowWarningMessage(const QString &title, const QString &text);
    void onShowCriticalMessage(const QString &title, const QString &text);
    void onShowProgress(int percent);
    void onAllowUserInteraction(bool allow);
    void onTransformNodeAddedByUser(const QString &typeName);
    void onShowTip(const QString &title, const QString &text, int ms);
    void onSelectIconsOfType(int icon);
    void onProcessUndoRedoChanges();
    void onEnableTwoScreenMode();
    void onItemPaneClosed();

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    QAction *addAction(QMenu *menu, const QString &name, const QString &text,
                       const QKeySequence &shortcut, const QString &toolTip,
                       const QString &icon = QString(), bool checkable = false);
    void buildActions();
    void buildToolBar();
    void buildPanes();
    void connectUndoHistory();
    void connectScene(GraphScene *scene);
    void disconnectScene(GraphScene *scene);
    void replaceScene(GraphScene *scene);
    void onSceneSwapped(GraphScene *live, GraphScene *old);
    void updateUndoLabels();
    void updateRecentMenu();
    void addRecentDocument(const QString &path);
    void updateTitle();
    void updateZoomActions();
    void arrangeRunActions(bool autoRun);
    void applyTheme();
    // True when the user chose a new file for any input.
    bool askForMissingInputs();
    QString chooseFile(const QString &title, const QString &folder, const QString &filter,
                       bool save);
    void addInputFile(const QString &path, const QPointF &scenePos, bool first);
    DocumentData currentData() const;
    QList<Node *> selectedNodes() const;
    void refreshStatusCounts();
    void disconnectSelected(int direction);
    void selectAndShow(Node *node);
    void walkSelection(int step);
    void selectNthOfType(int itemType, int n);
    void installMemoryHandler();
    QIcon themedIcon(const QString &name) const;

    QString m_documentPath;
    DocumentData m_documentData;
    DocumentLock m_lock;
    GraphScene *m_scene = nullptr;
    UndoHistory *m_undoHistory = nullptr;
    GraphPane *m_graphPane = nullptr;
    ActionPane *m_actionPane = nullptr;
    ItemPane *m_itemPane = nullptr;
    LogPane *m_logPane = nullptr;
    StatusBar *m_statusBar = nullptr;
    QSplitter *m_splitter = nullptr;
    QSplitter *m_centerSplitter = nullptr;
    // The three pane widths from before the item pane left for a screen of its own.
    QList<int> m_dockedWidths;
    QToolBar *m_toolBar = nullptr;
    QMenu *m_recentMenu = nullptr;
    QMenu *m_runMenu = nullptr;
    QTimer *m_undoRedoTimer = nullptr;
    QTimer *m_themeTimer = nullptr;
    QHash<QString, QAction *> m_actions;
    QList<QMenu *> m_menus;
    bool m_commandLine = false;
    bool m_darkTheme = false;
    bool m_systemDark = false;
};
