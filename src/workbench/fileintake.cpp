#include "workbench/fileintake.h"

#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "graph/graphscene.h"
#include "graph/node.h"
#include "graph/undo.h"
#include "io/filetypes.h"
#include "shell/application.h"
#include "shell/messageboxes.h"
#include "shell/settings.h"
#include "workbench/exceldialogs.h"
#include "workbench/mainwindow.h"
#include "workbench/mainwindowactions.h"

#include <QAction>
#include <QClipboard>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMimeData>

namespace {

const QString s_productName = QStringLiteral("Tabulon");
// Dropping a folder can bring in far more files than meant; above this many the user confirms.
constexpr int DroppedFilesLimit = 20;
constexpr qreal DroppedFileSpacing = 239.4;

} // namespace

FileIntake::FileIntake(MainWindow *window)
    : QObject(window)
    , m_window(window)
{
    connect(window->windowActions()[MainWindowActions::EditPaste], &QAction::triggered, this,
            &FileIntake::onEditPaste);
}

bool FileIntake::isBusy() const
{
    return m_window->graphScene()->isProcessing();
}

QStringList FileIntake::localFiles(const QList<QUrl> &urls, bool *documentFound, bool *opened)
{
    QStringList files;
    for (const QUrl &url : urls) {
        if (!url.isLocalFile()) {
            MessageBoxes::warning(m_window, s_productName,
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
            *documentFound = true;
            *opened = m_window->askToSave() && m_window->open(path);
            return {};
        } else {
            files.append(path);
        }
    }
    return files;
}

QStringList FileIntake::withoutBlocked(const QStringList &files)
{
    QStringList blocked;
    QStringList accepted;
    for (const QString &file : files) {
        if (FileTypes::isInputExtensionBlocked(QFileInfo(file).suffix()))
            blocked.append(QDir::toNativeSeparators(file));
        else
            accepted.append(file);
    }
    if (!blocked.isEmpty()) {
        MessageBoxes::warning(m_window, s_productName,
                              QStringLiteral("The files extensions of the following are blocked "
                                             "in 'Preferences>Input Extensions':\n%1")
                                  .arg(blocked.join(QLatin1Char('\n'))));
    }
    return accepted;
}

bool FileIntake::addFiles(const QList<QUrl> &urls, const QPointF &scenePos)
{
    if (isBusy())
        return false;
    bool documentFound = false;
    bool opened = false;
    const QStringList files = localFiles(urls, &documentFound, &opened);
    if (documentFound)
        return opened;
    if (files.size() > DroppedFilesLimit) {
        const QString question = QStringLiteral("More than %1 files found.\n\nAdd %2 files?")
                                     .arg(DroppedFilesLimit)
                                     .arg(files.size());
        if (MessageBoxes::show(m_window, QMessageBox::Question, s_productName, question,
                               QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
            != QMessageBox::Yes)
            return false;
    }
    const QStringList accepted = withoutBlocked(files);
    if (accepted.isEmpty())
        return false;
    return addInputs(accepted, scenePos);
}

bool FileIntake::addInputs(const QStringList &files, const QPointF &scenePos)
{
    struct Source
    {
        QString path;
        int type;
        QString sheet;
    };
    // Every question is asked before the first item is added, so that the additions stand
    // together in one undo step.
    QList<Source> sources;
    for (const QString &file : files) {
        const int type
            = FileTypes::inputTypeForExtension(QFileInfo(file).suffix(), FileTypeDelimited);
        if (!FileTypes::isExcel(type)) {
            sources.append({file, type, QString()});
            continue;
        }
        const QStringList sheets = ExcelSheetChoice::sheetsToInput(m_window, file, type);
        for (const QString &sheet : sheets)
            sources.append({file, type, sheet});
    }
    if (sources.isEmpty())
        return false;

    GraphScene *scene = m_window->graphScene();
    UndoStep step(QStringLiteral("add file(s)"));
    QPointF pos = scenePos;
    for (const Source &source : qAsConst(sources)) {
        const QString &file = source.path;
        auto *input = new InputItem;
        input->setPath(file);
        input->setInputFileType(source.type);
        input->setWorksheet(source.sheet);
        input->setHeader(InputItem::defaultHeader(scene->model()->autoRun()));
        scene->addInputByUser(input, pos, false);
        // Each next file stands under the last, whether the first was placed or found a place.
        pos = input->centrePos() + QPointF(0.0, DroppedFileSpacing);
        if (Application *application = Application::instance()) {
            application->setLastDataFolder(file);
            application->pumpEvents();
        }
    }
    return true;
}

void FileIntake::addClipboardText(const QString &text, const QPointF &scenePos)
{
    GraphScene *scene = m_window->graphScene();
    if (scene->isProcessing() || text.isEmpty())
        return;
    UndoStep step(QStringLiteral("add clipboard"));
    auto *input = new InputItem;
    input->setMedium(InputItem::Clipboard);
    input->setText(text);
    input->setInputFileType(FileTypes::guessTextFileType(text));
    input->setHeader(InputItem::defaultHeader(scene->model()->autoRun()));
    scene->addInputByUser(input, scenePos, false);
}

void FileIntake::onEditPaste()
{
    if (isBusy())
        return;
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    if (data && data->hasUrls()) {
        addFiles(data->urls(), QPointF());
    } else if (data && data->hasText() && !data->text().isEmpty()) {
        addClipboardText(data->text(), QPointF());
    } else {
        MessageBoxes::warning(m_window, s_productName,
                              QStringLiteral("Data type pasted not recognized."));
    }
}

void FileIntake::onInputFromFile()
{
    if (isBusy())
        return;
    const QString folder
        = Application::instance() ? Application::instance()->lastDataFolder() : QString();
    const QString path = m_window->chooseFile(QStringLiteral("Input"), folder, QString(), false);
    if (!path.isEmpty())
        addFiles({QUrl::fromLocalFile(path)}, QPointF());
}

void FileIntake::onInputFromClipboard()
{
    if (isBusy())
        return;
    const QString text = QGuiApplication::clipboard()->text();
    if (text.isEmpty()) {
        MessageBoxes::warning(m_window, s_productName,
                              QStringLiteral("Data type pasted not recognized."));
        return;
    }
    addClipboardText(text, QPointF());
}

bool FileIntake::confirmOutputOverInput(FlowItem *source, const QString &path)
{
    int sameFile = 0;
    QSet<FlowItem *> inputs = source->allUpstreamOfKind(FlowItem::InputKind);
    if (source->kind() == FlowItem::InputKind)
        inputs.insert(source);
    const QString absolute = QFileInfo(path).absoluteFilePath();
    for (FlowItem *item : qAsConst(inputs)) {
        const auto *input = static_cast<const InputItem *>(item);
        if (input->medium() == InputItem::File
            && QFileInfo(input->path()).absoluteFilePath() == absolute)
            ++sameFile;
    }
    if (sameFile == 0)
        return true;
    const QString question
        = QStringLiteral("Outputting to '%1' (which %2 is also inputting from) could cause a rip "
                         "in the space-time continuum. Are you sure you want to do that?")
              .arg(QDir::toNativeSeparators(path),
                   sameFile == 1 ? QStringLiteral("item") : QStringLiteral("items"));
    return MessageBoxes::show(m_window, QMessageBox::Warning, s_productName, question,
                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
        == QMessageBox::Yes;
}

void FileIntake::onOutputDataToFile()
{
    if (isBusy())
        return;
    const QList<Node *> selected = m_window->selectedNodes();
    Node *source = selected.size() == 1 ? selected.first() : nullptr;
    if (!source || (source->type() != Node::TransformType && source->type() != Node::InputType)) {
        m_window->onShowTip(QStringLiteral("Output"),
                            QStringLiteral("To add an output you need to first select a single "
                                           "transform or input item in the Center pane."),
                            5000);
        return;
    }
    const QString folder
        = Application::instance() ? Application::instance()->lastOutputDataFolder() : QString();
    QString path = m_window->chooseFile(QStringLiteral("Output"), folder, QString(), true);
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += QLatin1Char('.') + Settings::instance()->defaultOutputExtension();
    const QString extension = QFileInfo(path).suffix().toLower();
    if (Settings::instance()->blockedOutputExtensionSet().contains(extension)) {
        MessageBoxes::warning(m_window, s_productName,
                              QStringLiteral("The extension for this file is blocked in "
                                             "'Preferences>Output Extensions':\n%1")
                                  .arg(QDir::toNativeSeparators(path)));
        return;
    }
    if (!confirmOutputOverInput(source->item(), path))
        return;
    if (Application *application = Application::instance())
        application->setLastOutputDataFolder(path);
    m_window->graphScene()->addOutputByUser(source, path);
}
