#pragma once

#include "flow/document.h"

#include <QList>
#include <QMainWindow>
#include <QPointF>
#include <QUrl>

#include <functional>
#include <memory>

class ActionPane;
class DocumentFlows;
class FileIntake;
class FlowItem;
class GraphPane;
class GraphScene;
class ItemPane;
class LogPane;
class MainWindowActions;
class Node;
class QSplitter;
class RunControl;
class SceneHost;
class SelectionNavigator;
class StatusBar;
class ThemeSwitcher;
class Transform;
class UndoHistory;
class ViewControl;

// The frame of the workbench: menus, tool bar, the three panes, the log and the status bar.
// It hands its flows to helpers of its own: the actions and menus, the document flows, the
// intake of files, the live scene with its undo list, the run actions, the keyboard walk of
// the selection and the theme. What is left here is the panes, the View and Edit menus, and
// the messages of the live scene.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    // The visible start: shows the window and opens the document that the arguments, the
    // recovery file or the preferences name.
    void startUp(const QStringList &arguments);

    GraphScene *graphScene() const;
    GraphPane *graphPane() const { return m_graphPane; }
    ActionPane *actionPane() const { return m_actionPane; }
    ItemPane *itemPane() const { return m_itemPane; }
    LogPane *logPane() const { return m_logPane; }
    StatusBar *windowStatusBar() const { return m_statusBar; }
    UndoHistory *undoHistory() const;
    const MainWindowActions &windowActions() const { return *m_actions; }
    DocumentFlows *documents() const { return m_documents; }
    FileIntake *fileIntake() const { return m_fileIntake; }
    SceneHost *sceneHost() const { return m_sceneHost; }
    RunControl *runControl() const { return m_runControl; }
    SelectionNavigator *navigator() const { return m_navigator; }
    ViewControl *viewControl() const { return m_view; }

    // The document flows, as the command line and the tests drive them.
    bool open(const QString &path);
    bool save(const QString &path = QString());
    bool askToSave();
    void newDocument();
    QString documentPath() const;
    const DocumentData &documentData() const;
    bool addFiles(const QList<QUrl> &urls, const QPointF &scenePos);
    void addClipboardText(const QString &text, const QPointF &scenePos);

    // File dialogs of the window; a hook answers them instead of the user. The hook gets the
    // title, the start folder, the filter and whether a file is saved, and returns the chosen
    // path, or an empty string for Cancel.
    using FileDialogHook = std::function<QString(const QString &title, const QString &folder,
                                                 const QString &filter, bool save)>;
    static void setFileDialogHook(FileDialogHook hook);
    QString chooseFile(const QString &title, const QString &folder, const QString &filter,
                       bool save);

    // The selection of the canvas: its nodes, and the items they show, in the same order.
    QList<Node *> selectedNodes() const;
    QList<FlowItem *> selectedItems() const;
    void refreshStatusCounts();

public slots:
    void onTransformClicked(const Transform *prototype);
    void onGraphSelectionChanged();
    void onShowNodeFullscreen(Node *node);
    void onNodesChanged();
    void onCompletedTransforms();
    void onShowStatusBarMessage(const QString &text);
    void onShowTempMessage(const QString &text);
    void onShowLogMessage(const QString &text);
    void onShowWarningMessage(const QString &title, const QString &text);
    void onShowCriticalMessage(const QString &title, const QString &text);
    void onShowProgress(int percent);
    void onAllowUserInteraction(bool allow);
    void onShowTip(const QString &title, const QString &text, int ms);

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void buildPanes();
    void connectPanes();
    void connectEditActions();
    void connectWindowActions();
    void installHandlers();
    void removeHandlers();
    void installMemoryHandler();
    void showInformation(const QString &title, const QString &text);
    void showNotAvailable(const QString &title, const QString &what);

    void onEditDeleteAction();
    void onDisconnect(int direction);
    void onDuplicateBranch();
    void onAddNote();
    void onEditPreferences();
    void onAbout();

    std::unique_ptr<MainWindowActions> m_actions;
    GraphPane *m_graphPane = nullptr;
    ActionPane *m_actionPane = nullptr;
    ItemPane *m_itemPane = nullptr;
    LogPane *m_logPane = nullptr;
    StatusBar *m_statusBar = nullptr;
    QSplitter *m_splitter = nullptr;
    QSplitter *m_centerSplitter = nullptr;
    SceneHost *m_sceneHost = nullptr;
    DocumentFlows *m_documents = nullptr;
    FileIntake *m_fileIntake = nullptr;
    RunControl *m_runControl = nullptr;
    SelectionNavigator *m_navigator = nullptr;
    ThemeSwitcher *m_theme = nullptr;
    ViewControl *m_view = nullptr;
};
