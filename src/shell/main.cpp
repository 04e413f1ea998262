#include "graph/graphscene.h"
#include "io/commandline.h"
#include "shell/application.h"

#include <QGraphicsView>
#include <QMainWindow>

#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

void onOutOfMemory()
{
    qWarning("Out of memory");
    std::abort();
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

} // namespace

int main(int argc, char **argv)
{
    std::set_new_handler(onOutOfMemory);
    qSetGlobalQHashSeed(0);

    const bool commandLine = isCommandLineRun(argc, argv);
    // A command-line run must work on a machine with no display: a server, a cron job, CI.
    if (commandLine && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");

    Application app(argc, argv);
    if (commandLine)
        return runCommandLine(QCoreApplication::arguments());

    auto *window = new QMainWindow;
    auto *scene = new GraphScene(window);
    auto *view = new QGraphicsView(scene, window);
    view->setRenderHint(QPainter::Antialiasing);
    window->setCentralWidget(view);
    window->setWindowTitle(QStringLiteral("Tabulon"));
    window->resize(1400, 900);
    window->show();

    QObject::connect(&app, &QApplication::lastWindowClosed, &app, &QApplication::quit);
    const int result = app.exec();
    delete window;
    return result;
}
