#include "graph/document.h"
#include "graph/graphscene.h"
#include "io/commandline.h"
#include "shell/application.h"

#include <QGraphicsView>
#include <QMainWindow>
#include <QMessageBox>
#include <QStatusBar>
#include <QTimer>

#include <cstdlib>
#include <new>

#include <unistd.h>

namespace {

void onOutOfMemory()
{
    qWarning("Out of memory");
    std::abort();
}

QtMessageHandler s_defaultMessageHandler = nullptr;

// Qt warns on every start of a process without a session (cron, ssh, CI) that it picks a
// runtime folder itself; the choice is right and the line only worries people reading logs.
void filterMessages(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtWarningMsg
        && message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR")))
        return;
    s_defaultMessageHandler(type, context, message);
}

// "-cli", "--CLI" and the like: one or two dashes, any case.
bool isCommandLineRun(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        QString argument = QString::fromLocal8Bit(argv[i]).toLower();
        if (argument.startsWith(QLatin1String("--")))
            argument.remove(0, 1);
        if (argument == QLatin1String("-cli"))
            return true;
    }
    return false;
}

// The first argument that is not a switch names the document to open.
QString documentArgument(const QStringList &arguments)
{
    for (int i = 1; i < arguments.size(); ++i) {
        if (!arguments.at(i).startsWith(QLatin1Char('-')))
            return arguments.at(i);
    }
    return QString();
}

// Until the workbench arrives the window shows the flow graph of a document and runs it.
QMainWindow *createWindow(const QString &documentPath)
{
    auto *window = new QMainWindow;
    auto *scene = new GraphScene(window);
    scene->setBackgroundBrush(QColor(0xFA, 0xFA, 0xFA));
    auto *view = new QGraphicsView(scene, window);
    view->setRenderHint(QPainter::Antialiasing);
    view->setDragMode(QGraphicsView::RubberBandDrag);
    window->setCentralWidget(view);
    window->setWindowTitle(QStringLiteral("Tabulon"));
    window->resize(1400, 900);
    QObject::connect(scene, &GraphScene::showTempMessage, window, [window](const QString &text) {
        window->statusBar()->showMessage(text, 2000);
    });
    if (documentPath.isEmpty())
        return window;

    DocumentData data;
    bool laterVersion = false;
    QStringList messages;
    QString error;
    if (!loadDocument(scene, documentPath, &data, &laterVersion, &messages, &error)) {
        QMessageBox::warning(window, QStringLiteral("Tabulon"),
                             QStringLiteral("Unable to open '%1': %2").arg(documentPath, error));
        return window;
    }
    window->setWindowTitle(QStringLiteral("%1 - Tabulon").arg(QFileInfo(documentPath).fileName()));
    scene->setAutoRun(data.autoRun);
    QTimer::singleShot(0, scene, [scene, view, messages, window]() {
        if (!messages.isEmpty())
            QMessageBox::warning(window, QStringLiteral("Tabulon"),
                                 messages.join(QLatin1Char('\n')));
        if (scene->autoRun())
            scene->process(GraphScene::RunChanges);
        view->fitInView(scene->itemsBoundingRect().adjusted(-60, -60, 60, 60), Qt::KeepAspectRatio);
    });
    return window;
}

// glibc's allocator backs its heap with transparent huge pages only when told so before the
// process starts. Tables of millions of small cells then cost a fraction of the page faults
// and TLB misses, which is a fifth of a large read. The program starts itself again once with
// the setting; a GLIBC_TUNABLES already set (by a user, a debugger or a sanitizer run) is left
// alone, and so is a failed exec.
void restartWithHugePages(char **argv)
{
    if (qEnvironmentVariableIsSet("GLIBC_TUNABLES"))
        return;
    if (setenv("GLIBC_TUNABLES", "glibc.malloc.hugetlb=1", 1) != 0)
        return;
    execv("/proc/self/exe", argv);
    unsetenv("GLIBC_TUNABLES");
}

} // namespace

int main(int argc, char **argv)
{
    restartWithHugePages(argv);
    s_defaultMessageHandler = qInstallMessageHandler(filterMessages);
    std::set_new_handler(onOutOfMemory);
    qSetGlobalQHashSeed(0);

    const bool commandLine = isCommandLineRun(argc, argv);
    // A command-line run must work on a machine with no display: a server, a cron job, CI.
    if (commandLine && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");

    Application app(argc, argv);
    if (commandLine)
        runCommandLineAndExit(QCoreApplication::arguments());

    QMainWindow *window = createWindow(documentArgument(QCoreApplication::arguments()));
    window->show();
    QObject::connect(&app, &QApplication::lastWindowClosed, &app, &QApplication::quit);
    const int result = app.exec();
    delete window;
    return result;
}
