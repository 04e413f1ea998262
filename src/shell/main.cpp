#include "flow/documentrun.h"
#include "shell/application.h"
#include "shell/programsettings.h"
#include "workbench/mainwindow.h"

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

    // A command-line run shows no window, so it builds no GUI application and loads no
    // platform plugin: it works on a machine with no display (a server, a cron job, CI),
    // whatever platform the environment names.
    if (isCommandLineRun(argc, argv)) {
        QCoreApplication app(argc, argv);
        // Freed by the process's end, like the run's data.
        openProgramSettings(QCoreApplication::applicationDirPath());
        runCommandLineAndExit(QCoreApplication::arguments());
    }

    Application app(argc, argv);

    auto *window = new MainWindow;
    QObject::connect(&app, &QApplication::lastWindowClosed, &app, &QApplication::quit);
    window->startUp(QCoreApplication::arguments());
    const int result = app.exec();
    delete window;
    return result;
}
