#include "workbench/documentflows.h"

#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "graph/graphscene.h"
#include "shell/application.h"
#include "shell/delaytimer.h"
#include "shell/guards.h"
#include "shell/memory.h"
#include "shell/messageboxes.h"
#include "shell/settings.h"
#include "workbench/graphpane.h"
#include "workbench/mainwindow.h"
#include "workbench/mainwindowactions.h"
#include "workbench/runcontrol.h"
#include "workbench/scenehost.h"
#include "workbench/statusbar.h"
// graphpane.h returns its menu inline, which needs the full type.
#include "workbench/typeablemenu.h"

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QInputDialog>
#include <QMenu>

namespace {

const QString s_productName = QStringLiteral("Tabulon");
constexpr int MaximumRecentDocuments = 10;

enum OpenAutoRun { AutoRunOff = 0, AutoRunAsSaved = 1, AutoRunOn = 2 };

QString documentFilter()
{
    return QStringLiteral("%1 (*.%2)").arg(s_productName, QStringLiteral("tabulon"));
}

} // namespace

DocumentFlows::DocumentFlows(MainWindow *window)
    : QObject(window)
    , m_window(window)
{
    const MainWindowActions &actions = window->windowActions();
    using Slot = void (DocumentFlows::*)();
    const std::pair<MainWindowActions::Id, Slot> handlers[]
        = {{MainWindowActions::FileNew, &DocumentFlows::onFileNewAction},
           {MainWindowActions::FileOpen, &DocumentFlows::onFileOpenAction},
           {MainWindowActions::FileOpenRecent, &DocumentFlows::onFileOpenRecentAction},
           {MainWindowActions::FileSave, &DocumentFlows::onFileSaveAction},
           {MainWindowActions::FileSaveAs, &DocumentFlows::onFileSaveAsAction},
           {MainWindowActions::FileNotes, &DocumentFlows::onFileNotesAction}};
    for (const auto &entry : handlers)
        connect(actions[entry.first], &QAction::triggered, this, entry.second);
}

bool DocumentFlows::isBusy() const
{
    return m_window->graphScene()->isProcessing();
}

DocumentData DocumentFlows::currentData() const
{
    DocumentData data = m_documentData;
    data.autoRun = m_window->windowActions()[MainWindowActions::RunAuto]->isChecked();
    data.snapToGrid = m_window->graphScene() && m_window->graphScene()->snapToGrid();
    return data;
}

void DocumentFlows::updateTitle()
{
    const QString name = m_documentPath.isEmpty() ? QStringLiteral("untitled")
                                                  : QDir::toNativeSeparators(m_documentPath);
    m_window->setWindowTitle(QStringLiteral("%1[*] - %2").arg(name, s_productName));
}

bool DocumentFlows::askToSave()
{
    if (!m_window->isWindowModified())
        return true;
    const QMessageBox::StandardButton answer = MessageBoxes::show(
        m_window, QMessageBox::Question, s_productName, QStringLiteral("Save changes?"),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Cancel);
    if (answer == QMessageBox::Save)
        return save();
    return answer == QMessageBox::Discard;
}

void DocumentFlows::newDocument()
{
    m_window->sceneHost()->undoRunDelay()->stop();
    m_lock.release();
    m_window->sceneHost()->replaceScene(new GraphScene(nullptr, m_window));
    m_documentPath.clear();
    m_documentData = DocumentData();
    m_window->runControl()->setAutoRunQuietly(Settings::instance()->openAutoRun() != AutoRunOff);
    removeRecoveryFile();
    m_window->setWindowModified(false);
    updateTitle();
}

bool DocumentFlows::lockForOpening(const QString &path, bool recovery)
{
    m_lock.release();
    if (recovery || m_lock.acquire(path) || !m_window->isVisible())
        return true;
    return MessageBoxes::show(m_window, QMessageBox::Warning, s_productName,
                              DocumentLock::failureMessage(QDir::toNativeSeparators(path)),
                              QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok)
        != QMessageBox::Cancel;
}

bool DocumentFlows::open(const QString &path)
{
    if (m_window->graphScene() && isBusy())
        return false;
    m_window->windowStatusBar()->showMessage(
        QStringLiteral("Loading %1").arg(QDir::toNativeSeparators(path)), 2000);
    const bool recovery
        = QFileInfo(path).absoluteFilePath() == QFileInfo(recoveryFilePath()).absoluteFilePath();
    if (!lockForOpening(path, recovery))
        return false;
    m_window->sceneHost()->undoRunDelay()->stop();

    auto *model = new FlowModel;
    DocumentData data;
    bool laterVersion = false;
    QStringList messages;
    QString error;
    bool loaded = false;
    {
        BusyCursor busy;
        loaded = loadDocument(model, path, &data, &laterVersion, &messages, &error);
    }
    if (!loaded) {
        delete model;
        MessageBoxes::warning(
            m_window, s_productName,
            QStringLiteral("Unable to open '%1': %2").arg(QDir::toNativeSeparators(path), error));
        newDocument();
        return false;
    }
    auto *scene = new GraphScene(model, m_window);
    showOpened(scene, data, path, recovery);
    if (!messages.isEmpty())
        MessageBoxes::warning(m_window, s_productName, messages.join(QLatin1Char('\n')));
    const bool inputsChanged = askForMissingInputs();
    if (scene->model()->autoRun()) {
        FlowModel::setStopRequested(false);
        scene->process(FlowModel::RunChanges);
    }
    m_window->refreshStatusCounts();
    m_window->runControl()->updateRunStatus();

    // A newly chosen input file is a change the saved document doesn't hold yet.
    m_window->setWindowModified(recovery || inputsChanged);
    if (!recovery) {
        addRecentDocument(m_documentPath);
        if (Application *application = Application::instance())
            application->setLastDocumentFolder(m_documentPath);
        removeRecoveryFile();
    }
    if (laterVersion)
        MessageBoxes::warning(m_window, s_productName, laterVersionWarning());
    return true;
}

void DocumentFlows::showOpened(GraphScene *scene, const DocumentData &data, const QString &path,
                               bool recovery)
{
    m_window->sceneHost()->replaceScene(scene);
    m_documentData = data;
    m_documentPath = recovery ? QString() : QFileInfo(path).absoluteFilePath();
    scene->model()->setDocumentPath(m_documentPath);
    const int openAutoRun = Settings::instance()->openAutoRun();
    m_window->runControl()->setAutoRunQuietly(
        openAutoRun == AutoRunAsSaved ? data.autoRun : openAutoRun == AutoRunOn);
    QAction *snap = m_window->windowActions()[MainWindowActions::SnapToGrid];
    {
        const QSignalBlocker blocker(snap);
        snap->setChecked(scene->snapToGrid());
    }
    updateTitle();
    m_window->graphPane()->onZoomToFit();
}

bool DocumentFlows::askForMissingInputs()
{
    const QList<InputItem *> missing = inputsWithMissingFiles(*m_window->graphScene()->model());
    if (missing.isEmpty() || !m_window->isVisible())
        return false;
    if (MessageBoxes::show(m_window, QMessageBox::Question, s_productName,
                           missingInputFilesQuestion(missing), QMessageBox::Yes | QMessageBox::No,
                           QMessageBox::Yes)
        != QMessageBox::Yes)
        return false;
    bool changed = false;
    for (InputItem *input : missing) {
        const QString folder = Application::instance() ? Application::instance()->lastDataFolder()
                                                       : QFileInfo(input->path()).absolutePath();
        const QString chosen = m_window->chooseFile(
            QStringLiteral("Choose a new input file for '%1'").arg(input->path()), folder,
            QString(), false);
        if (chosen.isEmpty())
            continue;
        input->setPath(chosen);
        input->setStatus(FlowItem::NeedsUpdate, true);
        changed = true;
    }
    return changed;
}

bool DocumentFlows::save(const QString &path)
{
    QString target = path.isEmpty() ? m_documentPath : path;
    if (target.isEmpty()) {
        const QString folder
            = Application::instance() ? Application::instance()->lastDocumentFolder() : QString();
        target = m_window->chooseFile(QStringLiteral("Save As"), folder, documentFilter(), true);
        if (target.isEmpty())
            return false;
        if (QFileInfo(target).suffix().isEmpty())
            target += QStringLiteral(".tabulon");
    }
    target = QFileInfo(target).absoluteFilePath();
    if (!m_lock.isHeld() || QFileInfo(m_lock.path()).absoluteFilePath() != target) {
        m_lock.release();
        if (!m_lock.acquire(target)) {
            MessageBoxes::warning(m_window, s_productName,
                                  DocumentLock::failureMessage(QDir::toNativeSeparators(target)));
            return false;
        }
    }
    return writeDocument(target);
}

bool DocumentFlows::writeDocument(const QString &target)
{
    const DocumentData data = currentData();
    QString error;
    bool saved = false;
    {
        BusyCursor busy;
        saved = saveDocument(&m_lock, *m_window->graphScene()->model(), data, target, &error);
    }
    if (!saved) {
        MessageBoxes::critical(m_window, s_productName, error);
        return false;
    }
    m_documentData = data;
    m_documentPath = target;
    m_window->graphScene()->model()->setDocumentPath(target);
    m_window->setWindowModified(false);
    removeRecoveryFile();
    addRecentDocument(target);
    if (Application *application = Application::instance())
        application->setLastDocumentFolder(target);
    updateTitle();
    m_window->onShowTempMessage(QStringLiteral("Saved %1").arg(QDir::toNativeSeparators(target)));
    return true;
}

void DocumentFlows::addRecentDocument(const QString &path)
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

void DocumentFlows::updateRecentMenu()
{
    QMenu *menu = m_window->windowActions().recentMenu();
    menu->clear();
    const QStringList recent = Settings::instance()->recentDocs();
    for (const QString &path : recent) {
        QAction *entry = menu->addAction(path);
        entry->setData(path);
        entry->setToolTip(QStringLiteral("Open this .tabulon document."));
        connect(entry, &QAction::triggered, this, &DocumentFlows::onRecentDocSelected);
    }
    menu->addSeparator();
    QAction *clear = menu->addAction(QStringLiteral("&Clear Menu"));
    clear->setToolTip(QStringLiteral("Clear the recent .tabulon documents menu."));
    clear->setEnabled(!recent.isEmpty());
    connect(clear, &QAction::triggered, this, &DocumentFlows::onClearRecentDocSelected);
    menu->setEnabled(!recent.isEmpty());
    m_window->windowActions()[MainWindowActions::FileOpenRecent]->setEnabled(!recent.isEmpty());
}

QString DocumentFlows::startDocumentFromPreferences() const
{
    Settings *settings = Settings::instance();
    const int atStart = settings->openPreviousAtStart();
    if (atStart == 1) {
        const QString previous = settings->previousPath();
        if (previous.isEmpty())
            return QString();
        return QDir::isRelativePath(previous)
            ? QDir(QCoreApplication::applicationDirPath()).absoluteFilePath(previous)
            : previous;
    }
    if (atStart == 2 && !settings->recentDocs().isEmpty()) {
        bool ok = false;
        const QString picked = QInputDialog::getItem(m_window, QStringLiteral("Open Recent"),
                                                     QStringLiteral("Recent .tabulon documents:"),
                                                     settings->recentDocs(), 0, false, &ok);
        if (ok)
            return picked;
    }
    return QString();
}

void DocumentFlows::openAtStart(const QString &documentArgument, bool newWindow)
{
    QString chosen;
    const qint64 recoveryAge = recoveryFileAge();
    if (recoveryAge >= 0 && instanceCount() == 1) {
        const QString question = QStringLiteral("An automatic recovery file was created %1 ago. "
                                                "Do you wish to open it?")
                                     .arg(ageText(recoveryAge));
        if (MessageBoxes::show(m_window, QMessageBox::Question, s_productName, question,
                               QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok)
            == QMessageBox::Ok)
            chosen = recoveryFilePath();
    }
    if (chosen.isEmpty() && !documentArgument.isEmpty()) {
        chosen = documentArgument;
        if (!QFileInfo::exists(chosen))
            MessageBoxes::warning(m_window, s_productName,
                                  QStringLiteral("Cannot find '%1'.").arg(chosen));
    }
    if (chosen.isEmpty() && !newWindow)
        chosen = startDocumentFromPreferences();
    if (!chosen.isEmpty() && QFileInfo::exists(chosen)
        && QFileInfo(chosen).absoluteFilePath() != QFileInfo(m_documentPath).absoluteFilePath())
        open(chosen);
}

void DocumentFlows::closeDocument()
{
    if (m_window->isVisible()) {
        Settings *settings = Settings::instance();
        QString previous = m_documentPath;
        if (settings->isIniFile() && !previous.isEmpty())
            previous = QDir(QCoreApplication::applicationDirPath()).relativeFilePath(previous);
        settings->setPreviousPath(QDir::toNativeSeparators(previous));
    }
    removeRecoveryFile();
    m_lock.release();
}

void DocumentFlows::onFileNewAction()
{
    if (isBusy() || !askToSave())
        return;
    newDocument();
}

void DocumentFlows::onFileOpenAction()
{
    if (isBusy() || !askToSave())
        return;
    const QString folder
        = Application::instance() ? Application::instance()->lastDocumentFolder() : QString();
    const QString path
        = m_window->chooseFile(QStringLiteral("Open"), folder, documentFilter(), false);
    if (!path.isEmpty())
        open(path);
}

void DocumentFlows::onFileOpenRecentAction()
{
    if (isBusy())
        return;
    const QStringList recent = Settings::instance()->recentDocs();
    if (recent.isEmpty())
        return;
    bool ok = false;
    const QString path = QInputDialog::getItem(m_window, QStringLiteral("Open Recent"),
                                               QStringLiteral("Recent .tabulon documents:"), recent,
                                               0, false, &ok);
    if (ok && askToSave())
        open(path);
}

void DocumentFlows::onRecentDocSelected()
{
    auto *entry = qobject_cast<QAction *>(sender());
    if (!entry || isBusy())
        return;
    const QString path = entry->data().toString();
    if (!QFileInfo::exists(path)) {
        MessageBoxes::warning(m_window, s_productName,
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

void DocumentFlows::onClearRecentDocSelected()
{
    Settings::instance()->setRecentDocs({});
    updateRecentMenu();
}

void DocumentFlows::onFileSaveAction()
{
    if (!isBusy())
        save();
}

void DocumentFlows::onFileSaveAsAction()
{
    if (isBusy())
        return;
    const QString folder = m_documentPath.isEmpty() && Application::instance()
        ? Application::instance()->lastDocumentFolder()
        : m_documentPath;
    QString path = m_window->chooseFile(QStringLiteral("Save As"), folder, documentFilter(), true);
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += QStringLiteral(".tabulon");
    save(path);
}

void DocumentFlows::onFileNotesAction()
{
    if (isBusy())
        return;
    bool ok = false;
    const QString notes = QInputDialog::getMultiLineText(
        m_window, QStringLiteral("Notes"), QStringLiteral("Notes for this .tabulon document:"),
        m_documentData.notes, &ok);
    if (ok && notes != m_documentData.notes) {
        m_documentData.notes = notes;
        m_window->setWindowModified(true);
    }
}

void DocumentFlows::onFileOpenRequested(const QString &path)
{
    if (askToSave())
        open(path);
}
