#include "workbench/mainwindow.h"
#include "shell/appearancesettings.h"

#include "flow/flowmodel.h"
#include "flow/outputitem.h"
#include "graph/graphscene.h"
#include "graph/node.h"
#include "shell/application.h"
#include "shell/colors.h"
#include "shell/insufficientmemorydialog.h"
#include "shell/memory.h"
#include "shell/messageboxes.h"
#include "shell/preferencesdialog.h"
#include "shell/settings.h"
#include "transforms/framework/transform.h"
#include "workbench/actionpane.h"
#include "workbench/documentflows.h"
#include "workbench/fileintake.h"
#include "workbench/graphpane.h"
#include "workbench/itempane.h"
#include "workbench/logpane.h"
#include "workbench/mainwindowactions.h"
#include "workbench/runcontrol.h"
#include "workbench/scenehost.h"
#include "workbench/selectionnavigator.h"
#include "workbench/statusbar.h"
#include "workbench/themeswitcher.h"
#include "workbench/viewcontrol.h"
#include "workbench/windowprompts.h"
// graphpane.h returns its menu inline, which needs the full type.
#include "workbench/typeablemenu.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QCursor>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>
#include <QProcess>
#include <QScreen>
#include <QSplitter>
#include <QTimer>
#include <QToolBar>
#include <QToolTip>

// Resources of a static library have to be registered by hand, outside any namespace.
static void initResources()
{
    Q_INIT_RESOURCE(resources);
}

namespace {

MainWindow::FileDialogHook s_fileDialogHook;

const QString s_productName = QStringLiteral("Tabulon");
constexpr int MemoryRefreshMs = 2000;
enum OpenAutoRun { AutoRunOff = 0 };

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
{
    initResources();
    setAcceptDrops(true);
    setWindowIcon(QIcon(QStringLiteral(":/icons/tabulon.svg")));

    m_actions = std::make_unique<MainWindowActions>(this);
    buildPanes();
    Settings *settings = Settings::instance();
    if (!settings->totalRowsProcessedStartDate().isValid())
        settings->setTotalRowsProcessedStartDate(QDate::currentDate());
    Dataset::setOptimizeFor(settings->optimizeFor());
    m_actions->setToolBarIconSize(settings->toolbarIconSize());

    m_statusBar = new StatusBar(this);
    setStatusBar(m_statusBar);
    if (Application *application = Application::instance())
        connect(application, &Application::heartBeat, m_statusBar, &StatusBar::onHeartBeat);
    auto *memoryTimer = new QTimer(this);
    connect(memoryTimer, &QTimer::timeout, m_statusBar, &StatusBar::refreshMemory);
    memoryTimer->start(MemoryRefreshMs);

    m_sceneHost = new SceneHost(this);
    m_documents = new DocumentFlows(this);
    m_fileIntake = new FileIntake(this);
    m_runControl = new RunControl(this);
    m_navigator = new SelectionNavigator(this);
    m_theme = new ThemeSwitcher(this);
    m_view = new ViewControl(this, m_splitter);
    connectPanes();
    connectEditActions();
    connectWindowActions();

    m_sceneHost->replaceScene(new GraphScene(nullptr, this));
    m_runControl->setAutoRunQuietly(settings->openAutoRun() != AutoRunOff);
    m_theme->applyTheme();
    m_documents->updateRecentMenu();
    m_sceneHost->updateUndoLabels();
    m_view->updateZoomActions();
    m_documents->updateTitle();
    m_view->onEnableTwoScreenMode();
    installHandlers();
}

MainWindow::~MainWindow()
{
    removeHandlers();
    // The scenes are children of the window and die after its panes; clearing them emits
    // selection changes that must not reach the half-destroyed window.
    m_sceneHost->detach();
    // The item pane may float as a window of its own.
    if (m_itemPane && !m_itemPane->parent())
        delete m_itemPane;
}

void MainWindow::installHandlers()
{
    // Outputs ask before writing many files; the question comes through the window's boxes.
    OutputItem::setConfirmHandler([this](const QString &title, const QString &text) {
        return MessageBoxes::askOkCancel(this, title, text);
    });
    if (Application *application = Application::instance()) {
        // Runs pump through the application, whose heartbeat keeps the status bar going.
        FlowModel::setEventPump([application] { application->pumpEvents(); });
        application->setEmergencyHandler([this]() {
            GraphScene *scene = graphScene();
            if (!scene)
                return;
            const QList<FlowItem *> items = scene->model()->items();
            for (FlowItem *item : items) {
                item->dataset()->clear();
                item->setStatus(FlowItem::NeedsUpdate, false);
            }
            emergencyRecoverySave(*scene->model(), m_documents->currentData());
        });
    }
}

void MainWindow::removeHandlers()
{
    // Without the window, questions go back to the application's plain boxes.
    if (Application *application = Application::instance()) {
        OutputItem::setConfirmHandler(&Application::confirmWithMessageBox);
        FlowModel::setEventPump(nullptr);
        application->setEmergencyHandler({});
    } else {
        OutputItem::setConfirmHandler(nullptr);
    }
    setMemoryLimitHandler({});
}

// Building -----------------------------------------------------------------------------------

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
}

void MainWindow::connectPanes()
{
    connect(m_statusBar->nodeStatusWidget(), &NodeStatusWidget::selectIconsOfType, m_navigator,
            &SelectionNavigator::onSelectIconsOfType);
    connect(m_actionPane, &ActionPane::inputFileClicked, m_fileIntake,
            &FileIntake::onInputFromFile);
    connect(m_actionPane, &ActionPane::inputClipboardClicked, m_fileIntake,
            &FileIntake::onInputFromClipboard);
    connect(m_actionPane, &ActionPane::outputFileClicked, m_fileIntake,
            &FileIntake::onOutputDataToFile);
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

    connect(m_graphPane, &GraphPane::filesDropped, m_fileIntake, &FileIntake::addFiles);
    connect(m_graphPane, &GraphPane::textDropped, m_fileIntake, &FileIntake::addClipboardText);
    connect(m_graphPane, &GraphPane::transformChosen, this, &MainWindow::onTransformClicked);
    connect(m_graphPane, &GraphPane::deleteRequested, this, &MainWindow::onEditDeleteAction);
    connect(m_graphPane, &GraphPane::contextMenuRequested, this, [this](const QPoint &pos) {
        using A = MainWindowActions;
        QMenu menu(this);
        for (const A::Id id : {A::RunSelected, A::ZoomSelected, A::DuplicateBranch, A::AddNote})
            menu.addAction((*m_actions)[id]);
        menu.addSeparator();
        for (const A::Id id : {A::DisconnectSelected, A::DisconnectFromSelected,
                               A::DisconnectToSelected, A::EditDelete})
            menu.addAction((*m_actions)[id]);
        menu.exec(pos);
    });

    connect(m_itemPane, &ItemPane::nodeStatusChanged, this, &MainWindow::refreshStatusCounts);
    // The item's view repaints by itself; the document has changed.
    connect(m_itemPane, &ItemPane::nodeCommentChanged, this,
            [this](FlowItem *) { setWindowModified(true); });
    connect(m_itemPane, &ItemPane::changeNeedsSave, this, [this]() { setWindowModified(true); });
}

void MainWindow::connectEditActions()
{
    using A = MainWindowActions;
    const A &actions = *m_actions;
    connect(actions[A::EditUndo], &QAction::triggered, m_sceneHost, &SceneHost::onEditUndo);
    connect(actions[A::EditRedo], &QAction::triggered, m_sceneHost, &SceneHost::onEditRedo);
    connect(actions[A::EditDelete], &QAction::triggered, this, &MainWindow::onEditDeleteAction);
    const std::pair<A::Id, GraphScene::Disconnect> disconnects[]
        = {{A::DisconnectSelected, GraphScene::Disconnect::Both},
           {A::DisconnectFromSelected, GraphScene::Disconnect::Out},
           {A::DisconnectToSelected, GraphScene::Disconnect::In}};
    for (const auto &entry : disconnects) {
        const int direction = static_cast<int>(entry.second);
        connect(actions[entry.first], &QAction::triggered, this,
                [this, direction]() { onDisconnect(direction); });
    }
    connect(actions[A::DuplicateBranch], &QAction::triggered, this, &MainWindow::onDuplicateBranch);
    connect(actions[A::AddNote], &QAction::triggered, this, &MainWindow::onAddNote);
    connect(actions[A::Find], &QAction::triggered, this, [this]() {
        showNotAvailable(QStringLiteral("Find Items"), QStringLiteral("Finding items"));
    });
    connect(actions[A::EditLocale], &QAction::triggered, this, [this]() {
        showNotAvailable(QStringLiteral("Locale"),
                         QStringLiteral("Changing the document's locale"));
    });
    connect(actions[A::EditPreferences], &QAction::triggered, this, &MainWindow::onEditPreferences);
}

void MainWindow::connectWindowActions()
{
    using A = MainWindowActions;
    const A &actions = *m_actions;
    connect(actions[A::FileNewWindow], &QAction::triggered, this, []() {
        QProcess::startDetached(QCoreApplication::applicationFilePath(),
                                {QStringLiteral("-new_window")});
    });
    connect(actions[A::BatchProcess], &QAction::triggered, this, [this]() {
        showNotAvailable(QStringLiteral("Batch Process"), QStringLiteral("Batch processing"));
    });
    connect(actions[A::CommandLine], &QAction::triggered, this, [this]() {
        showNotAvailable(QStringLiteral("Command Line"), QStringLiteral("The command line window"));
    });
    connect(actions[A::FileExit], &QAction::triggered, this, &QWidget::close);
    connect(actions[A::ViewNodeSummary], &QAction::triggered, this, [this]() {
        showNotAvailable(QStringLiteral("Item Summary"), QStringLiteral("The item summary"));
    });
    connect(actions[A::CompareDatasets], &QAction::triggered, this, [this]() {
        showNotAvailable(QStringLiteral("Compare Data"), QStringLiteral("Comparing data"));
    });
    connect(actions[A::CompareHeaders], &QAction::triggered, this, [this]() {
        showNotAvailable(QStringLiteral("Compare Headers"), QStringLiteral("Comparing headers"));
    });
    // The help pages are not written yet; each leads to About for now.
    for (QAction *page : actions.helpPages())
        connect(page, &QAction::triggered, this, &MainWindow::onAbout);
    connect(actions[A::About], &QAction::triggered, this, &MainWindow::onAbout);
}

// Accessors and delegation -------------------------------------------------------------------

GraphScene *MainWindow::graphScene() const
{
    return m_sceneHost ? m_sceneHost->scene() : nullptr;
}

UndoHistory *MainWindow::undoHistory() const
{
    return m_sceneHost->undoHistory();
}

bool MainWindow::open(const QString &path)
{
    return m_documents->open(path);
}

bool MainWindow::save(const QString &path)
{
    return m_documents->save(path);
}

bool MainWindow::askToSave()
{
    return m_documents->askToSave();
}

void MainWindow::newDocument()
{
    m_documents->newDocument();
}

QString MainWindow::documentPath() const
{
    return m_documents->documentPath();
}

const DocumentData &MainWindow::documentData() const
{
    return m_documents->documentData();
}

bool MainWindow::addFiles(const QList<QUrl> &urls, const QPointF &scenePos)
{
    return m_fileIntake->addFiles(urls, scenePos);
}

void MainWindow::addClipboardText(const QString &text, const QPointF &scenePos)
{
    m_fileIntake->addClipboardText(text, scenePos);
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

QList<Node *> MainWindow::selectedNodes() const
{
    return graphScene() ? graphScene()->selectedNodes() : QList<Node *>();
}

QList<FlowItem *> MainWindow::selectedItems() const
{
    QList<FlowItem *> items;
    const QList<Node *> nodes = selectedNodes();
    for (const Node *node : nodes)
        items.append(node->item());
    return items;
}

void MainWindow::refreshStatusCounts()
{
    if (graphScene() && m_statusBar)
        m_statusBar->nodeStatusWidget()->setItems(graphScene()->model()->items());
}

// Start-up -----------------------------------------------------------------------------------

void MainWindow::startUp(const QStringList &arguments)
{
    Settings *settings = Settings::instance();
    QLocale::setDefault(settings->locale());
    if (settings->hasUiFont() && AppearanceSettings(settings).uiFont() != QApplication::font())
        QApplication::setFont(AppearanceSettings(settings).uiFont());

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
    m_documents->openAtStart(documentArgument, newWindow);
    m_view->updateZoomActions();
    WindowPrompts::showStartMessages(this);
    installMemoryHandler();
    m_theme->startWatching();
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

void MainWindow::showInformation(const QString &title, const QString &text)
{
    MessageBoxes::information(this, title, text);
}

void MainWindow::showNotAvailable(const QString &title, const QString &what)
{
    showInformation(title, WindowPrompts::notAvailableText(what));
}

// Edit menu ----------------------------------------------------------------------------------

void MainWindow::onEditDeleteAction()
{
    if (graphScene()->isProcessing() || graphScene()->QGraphicsScene::selectedItems().isEmpty())
        return;
    m_itemPane->flush();
    graphScene()->deleteSelectedByUser();
}

void MainWindow::onDisconnect(int direction)
{
    GraphScene *scene = graphScene();
    if (scene->isProcessing() || selectedNodes().isEmpty())
        return;
    const auto which = static_cast<GraphScene::Disconnect>(direction);
    const int atRisk = scene->columnOptionsAtRisk(which);
    if (atRisk > 0) {
        const QString question
            = QStringLiteral("This disconnection may reset %1 column related option(s) "
                             "downstream. Are you sure you want to do that?\n\nNote that you "
                             "can insert a transform by selecting an exiting connection then "
                             "adding a transform.")
                  .arg(atRisk);
        if (!MessageBoxes::askOkCancel(this, s_productName, question))
            return;
    }
    m_itemPane->flush();
    scene->disconnectSelectedByUser(which);
}

void MainWindow::onDuplicateBranch()
{
    if (graphScene()->isProcessing() || selectedNodes().size() != 1)
        return;
    m_itemPane->flush();
    graphScene()->duplicateBranchByUser();
}

void MainWindow::onAddNote()
{
    if (graphScene()->isProcessing())
        return;
    // Over the selected item the note finds a free side of it; else it goes under the cursor.
    const QList<Node *> selected = selectedNodes();
    QPointF at;
    if (selected.size() == 1) {
        at = selected.first()->item()->centrePos();
    } else {
        const QPoint cursor = m_graphPane->viewport()->mapFromGlobal(QCursor::pos());
        at = m_graphPane->viewport()->rect().contains(cursor)
            ? m_graphPane->mapToScene(cursor)
            : m_graphPane->mapToScene(m_graphPane->viewport()->rect().center());
    }
    graphScene()->addNoteByUser(at);
}

void MainWindow::onEditPreferences()
{
    if (graphScene()->isProcessing())
        return;
    PreferencesDialog dialog(this);
    connect(&dialog, &PreferencesDialog::warningRaised, this,
            [&dialog](const QString &title, const QString &text) {
                MessageBoxes::warning(&dialog, title, text);
            });
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_theme->applyTheme();
    m_actions->setToolBarIconSize(Settings::instance()->toolbarIconSize());
    m_statusBar->refreshMemory();
    graphScene()->update();
}

void MainWindow::onTransformClicked(const Transform *prototype)
{
    GraphScene *scene = graphScene();
    if (!prototype || scene->isProcessing())
        return;
    if (!GraphScene::canAddTransform(prototype, scene->QGraphicsScene::selectedItems())) {
        onShowTempMessage(QStringLiteral("'%1' can't be added to the selected items.")
                              .arg(prototype->displayName()));
        return;
    }
    const bool ctrl = QGuiApplication::keyboardModifiers() & Qt::ControlModifier;
    const QPoint cursor = m_graphPane->viewport()->mapFromGlobal(QCursor::pos());
    const QPointF scenePos = m_graphPane->viewport()->rect().contains(cursor)
        ? m_graphPane->mapToScene(cursor)
        : m_graphPane->mapToScene(QPoint(60, 60));
    scene->addTransformByUser(prototype, ctrl, scenePos);
}

// Scene signals ------------------------------------------------------------------------------

void MainWindow::onGraphSelectionChanged()
{
    using A = MainWindowActions;
    const QList<QGraphicsItem *> selected = graphScene()->QGraphicsScene::selectedItems();
    const QList<Node *> nodes = selectedNodes();
    m_actionPane->setSelection(selected);
    m_itemPane->showItems(selectedItems());
    (*m_actions)[A::EditDelete]->setEnabled(!selected.isEmpty());
    for (const A::Id id :
         {A::DisconnectSelected, A::DisconnectFromSelected, A::DisconnectToSelected})
        (*m_actions)[id]->setEnabled(!nodes.isEmpty());
    (*m_actions)[A::DuplicateBranch]->setEnabled(nodes.size() == 1);
    (*m_actions)[A::ZoomSelected]->setEnabled(!selected.isEmpty());
    m_runControl->updateRunStatus();
}

void MainWindow::onShowNodeFullscreen(Node *node)
{
    if (!node)
        return;
    m_itemPane->showItems({node->item()});
    m_itemPane->setFullScreen(true);
}

void MainWindow::onNodesChanged()
{
    refreshStatusCounts();
    m_runControl->updateRunStatus();
}

void MainWindow::onCompletedTransforms()
{
    onShowTempMessage(QStringLiteral("Processing completed"));
    onNodesChanged();
    m_graphPane->onAutoZoom();
    m_view->updateZoomActions();
    const QList<Node *> selected = selectedNodes();
    if (selected.size() == 1)
        m_itemPane->refreshAfterRun(selected.first()->item());

    const QString achievement = WindowPrompts::takeAchievement();
    if (!achievement.isEmpty())
        onShowTip(QStringLiteral("Achievement"), achievement, 20000);
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
    MessageBoxes::warning(this, title.isEmpty() ? s_productName : title, text);
}

void MainWindow::onShowCriticalMessage(const QString &title, const QString &text)
{
    MessageBoxes::critical(this, title.isEmpty() ? s_productName : title, text);
}

void MainWindow::onShowProgress(int percent)
{
    m_statusBar->setProgress(percent);
}

void MainWindow::onAllowUserInteraction(bool allow)
{
    m_actions->setInteractionAllowed(allow);
    m_actionPane->setInteractionAllowed(allow);
    m_itemPane->setInteractionAllowed(allow);
    m_graphPane->setInteractive(allow);
    if (allow) {
        m_sceneHost->updateUndoLabels();
        m_view->updateZoomActions();
        m_runControl->updateRunStatus();
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

// Help ---------------------------------------------------------------------------------------

void MainWindow::onAbout()
{
    showInformation(QStringLiteral("About %1").arg(s_productName), WindowPrompts::aboutText());
}

// Window events ------------------------------------------------------------------------------

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (!askToSave()) {
        event->ignore();
        return;
    }
    // Docked again, the pane closes with the window and its width is remembered with the
    // others.
    (*m_actions)[MainWindowActions::TwoScreenMode]->setChecked(false);
    if (isVisible()) {
        Settings *settings = Settings::instance();
        settings->setGeometry(saveGeometry());
        settings->setWindowState(saveState());
        settings->setSplitterWidths(m_splitter->sizes());
    }
    m_documents->closeDocument();
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
