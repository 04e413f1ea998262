#include "io/commandline.h"

#include "graph/document.h"
#include "graph/graphscene.h"
#include "graph/inputnode.h"
#include "graph/outputnode.h"
#include "graph/transformnode.h"
#include "io/pathvariables.h"
#include "shell/application.h"
#include "shell/settings.h"
#include "transforms/framework/transform.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSysInfo>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <unistd.h>

namespace {

const QString &productName()
{
    static const QString name = QStringLiteral("Tabulon");
    return name;
}

const QString &documentSuffix()
{
    static const QString suffix = QStringLiteral("tabulon");
    return suffix;
}

// "-Verbose", "--verbose" and "verbose" all give "verbose".
QString argumentName(const QString &argument)
{
    int dashes = 0;
    while (dashes < 2 && dashes < argument.size() && argument.at(dashes) == QLatin1Char('-'))
        ++dashes;
    return argument.mid(dashes).toLower();
}

bool isCommandLineRun(const QStringList &arguments)
{
    for (int i = 1; i < arguments.size(); ++i) {
        if (arguments.at(i).startsWith(QLatin1Char('-'))
            && argumentName(arguments.at(i)) == QLatin1String("cli"))
            return true;
    }
    return false;
}

QString resolvePath(const QString &path, const QString &folder)
{
    if (path.isEmpty() || QFileInfo(path).isAbsolute())
        return path;
    return QDir::cleanPath(QDir(folder).absoluteFilePath(path));
}

QList<Node *> nodesById(const GraphScene &scene, int itemType)
{
    QList<Node *> nodes = scene.nodesOfType(itemType);
    std::sort(nodes.begin(), nodes.end(),
              [](const Node *a, const Node *b) { return a->id() < b->id(); });
    return nodes;
}

// An item's own warnings and, for a transform, those of its transform.
QStringList allWarnings(const Node *node)
{
    QStringList warnings = node->warnings();
    if (const auto *transformNode = qobject_cast<const TransformNode *>(node))
        warnings += transformNode->transform()->warnings();
    return warnings;
}

void reportWarnings(CommandLineLog &log, const Node *node, bool asErrors)
{
    const QStringList warnings = allWarnings(node);
    for (const QString &warning : warnings) {
        const QString line = QStringLiteral("  Warning: %1").arg(warning);
        if (asErrors)
            log.error(line);
        else
            log.info(line);
    }
}

void reportInputs(const GraphScene &scene, CommandLineLog &log)
{
    const QList<Node *> inputs = nodesById(scene, Node::InputType);
    for (const Node *node : inputs) {
        const auto *input = static_cast<const InputNode *>(node);
        const bool failed = input->status() == Node::Error;
        if (input->medium() == InputNode::Clipboard) {
            if (failed)
                log.error(QStringLiteral("Input clipboard: Error"));
            else
                log.info(QStringLiteral(" Input clipboard: OK"));
        } else {
            QString location = QDir::toNativeSeparators(input->path());
            if (!input->worksheet().isEmpty())
                location += QLatin1Char('[') + input->worksheet() + QLatin1Char(']');
            if (failed)
                log.error(QStringLiteral("Input file: %1, Error").arg(location));
            else
                log.info(QStringLiteral(" Input file: %1, OK").arg(location));
        }
        reportWarnings(log, input, failed);
    }
}

void reportTransforms(const GraphScene &scene, CommandLineLog &log)
{
    const QList<Node *> transforms = nodesById(scene, Node::TransformType);
    for (const Node *node : transforms) {
        if (node->status() != Node::Error)
            continue;
        log.error(QStringLiteral("Transform: '%1' (Id=%2), Error")
                      .arg(node->displayName(), QString::number(node->id())));
        reportWarnings(log, node, true);
    }
}

void reportOutputs(const GraphScene &scene, CommandLineLog &log)
{
    const QList<Node *> outputs = nodesById(scene, Node::OutputType);
    for (const Node *node : outputs) {
        const auto *output = static_cast<const OutputNode *>(node);
        if (output->writeMode() == OutputNode::Disabled)
            continue;
        const QString path = QDir::toNativeSeparators(output->path());
        const QString mode = OutputNode::writeModeName(output->writeMode());
        // An output that never ran, its input having failed, wrote nothing either.
        const bool failed = output->status() != Node::UpToDate;
        if (failed)
            log.error(QStringLiteral("Output file: %1, %2, Error").arg(path, mode));
        else
            log.info(QStringLiteral(" Output file: %1, %2, OK").arg(path, mode));
        reportWarnings(log, output, failed);
    }
}

} // namespace

// CommandLineLog ----------------------------------------------------------------------------

CommandLineLog::CommandLineLog()
    : m_out(&m_standardOut)
    , m_err(&m_standardErr)
{
    m_standardOut.open(stdout, QIODevice::WriteOnly, QFileDevice::DontCloseHandle);
    m_standardErr.open(stderr, QIODevice::WriteOnly, QFileDevice::DontCloseHandle);
    m_colours = ::isatty(::fileno(stderr)) == 1;
}

CommandLineLog::CommandLineLog(QIODevice *out, QIODevice *err, bool colours)
    : m_out(out)
    , m_err(err)
    , m_colours(colours)
{ }

CommandLineLog::~CommandLineLog()
{
    flush();
}

bool CommandLineLog::openLogFile(const QString &path)
{
    m_logFile.close();
    m_logFile.setFileName(path);
    return m_logFile.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text);
}

void CommandLineLog::info(const QString &line)
{
    m_out->write(line.toUtf8() + '\n');
    // Each line leaves at once, so that info and error lines keep their order on a terminal.
    if (auto *file = qobject_cast<QFileDevice *>(m_out))
        file->flush();
    writeToLogFile(line);
}

void CommandLineLog::error(const QString &line)
{
    QByteArray bytes = line.toUtf8();
    if (m_colours)
        bytes = "\x1b[31m" + bytes + "\x1b[0m";
    m_err->write(bytes + '\n');
    if (auto *file = qobject_cast<QFileDevice *>(m_err))
        file->flush();
    writeToLogFile(line);
}

int CommandLineLog::abort(const QString &message)
{
    error(message);
    error(QStringLiteral("Aborted processing"));
    flush();
    return CommandLineAbortCode;
}

void CommandLineLog::flush()
{
    if (auto *file = qobject_cast<QFileDevice *>(m_out))
        file->flush();
    if (auto *file = qobject_cast<QFileDevice *>(m_err))
        file->flush();
    if (m_logFile.isOpen())
        m_logFile.flush();
}

void CommandLineLog::writeToLogFile(const QString &line)
{
    if (m_writesLogFile && m_logFile.isOpen())
        m_logFile.write(line.toUtf8() + '\n');
}

// Parsing ------------------------------------------------------------------------------------

QString versionText()
{
    return QStringLiteral("%1 %2").arg(productName(), QStringLiteral(TABULON_VERSION));
}

QString buildText()
{
    return QStringLiteral("Built %1 %2 with Qt %3 for %4")
        .arg(QStringLiteral(__DATE__), QStringLiteral(__TIME__), QStringLiteral(QT_VERSION_STR),
             QSysInfo::buildAbi());
}

CommandLineOptions parseCommandLine(const QStringList &arguments, CommandLineLog &log)
{
    CommandLineOptions options;
    // Known before the walk, so that the log file gets every line of a command-line run.
    log.setWritesLogFile(isCommandLineRun(arguments));
    for (int i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (!argument.startsWith(QLatin1Char('-'))) {
            if (!options.documentPath.isEmpty())
                continue;
            const QFileInfo info(argument);
            if (!info.exists()) {
                options.abortMessage = QStringLiteral("'%1' not found").arg(argument);
                return options;
            }
            if (info.suffix().toLower() != documentSuffix()) {
                options.abortMessage = QStringLiteral("Unrecognized file suffix '%1' in '%2'")
                                           .arg(info.suffix(), argument);
                return options;
            }
            options.documentPath = argument;
            continue;
        }
        const QString name = argumentName(argument);
        if (name == QLatin1String("log") || name == QLatin1String("file")) {
            if (i + 1 >= arguments.size()) {
                options.abortMessage
                    = QStringLiteral("No value following %1 argument").arg(argument);
                return options;
            }
            const QString &value = arguments.at(++i);
            if (name == QLatin1String("file")) {
                options.fileValues.append(value);
            } else {
                options.logPath = value;
                if (!log.openLogFile(value))
                    log.error(QStringLiteral("Could not open log file at '%1'").arg(value));
            }
        } else if (name == QLatin1String("cli")) {
            options.cli = true;
        } else if (name == QLatin1String("verbose")) {
            options.verbose = true;
        } else if (name == QLatin1String("new_window")) {
            options.newWindow = true;
        } else if (name == QLatin1String("version")) {
            options.version = true;
        } else if (name == QLatin1String("build")) {
            options.build = true;
        } else {
            options.abortMessage = QStringLiteral("Unrecognized argument: %1").arg(argument);
            return options;
        }
    }
    if (options.version)
        log.info(versionText());
    if (options.build)
        log.info(buildText());
    if (options.cli && options.documentPath.isEmpty())
        options.abortMessage = QStringLiteral("No .%1 file specified.").arg(documentSuffix());
    return options;
}

// Running ------------------------------------------------------------------------------------

QString applyFileArguments(GraphScene &scene, const QStringList &values,
                           const QString &documentFolder)
{
    const QList<Node *> inputs = nodesById(scene, Node::InputType);
    const QList<Node *> outputs = nodesById(scene, Node::OutputType);
    for (const QString &value : values) {
        const QStringList parts = value.split(QLatin1Char('='));
        if (parts.size() != 2)
            return QStringLiteral("Expected <alias>=<value> for %1 argument").arg(value);
        const QString alias = parts.at(0).trimmed();
        const QString location = parts.at(1).trimmed();
        for (Node *node : inputs) {
            if (node->alias() != alias)
                continue;
            QString path;
            QString sheet;
            PathVariables::splitSheet(location, path, sheet);
            path = resolvePath(path, documentFolder);
            if (!QFileInfo::exists(path))
                continue;
            auto *input = static_cast<InputNode *>(node);
            input->setPath(path);
            input->setWorksheet(sheet);
        }
        for (Node *node : outputs) {
            if (node->alias() == alias)
                static_cast<OutputNode *>(node)->setPath(resolvePath(location, documentFolder));
        }
    }
    return QString();
}

int runDocument(const CommandLineOptions &options, CommandLineLog &log, bool keepData)
{
    const QString path = QFileInfo(options.documentPath).absoluteFilePath();
    auto *ownedScene = new GraphScene;
    std::unique_ptr<GraphScene> sceneOwner(ownedScene);
    GraphScene &scene = *ownedScene;
    DocumentData data;
    bool laterVersion = false;
    QStringList messages;
    QString error;
    if (!loadDocument(&scene, path, &data, &laterVersion, &messages, &error))
        return log.abort(
            QStringLiteral("Unable to open '%1': %2").arg(options.documentPath, error));
    for (const QString &message : qAsConst(messages))
        log.error(message);

    const QString abortMessage
        = applyFileArguments(scene, options.fileValues, QFileInfo(path).absolutePath());
    if (!abortMessage.isEmpty())
        return log.abort(abortMessage);

    const QString shownPath = QDir::toNativeSeparators(path);
    if (options.verbose)
        log.info(QStringLiteral("Start processing '%1' on %2")
                     .arg(shownPath, QDateTime::currentDateTime().toString()));

    // Nobody is there to answer: every question takes its default.
    const bool wasInteractive = OutputNode::isInteractive();
    OutputNode::setInteractive(false);

    // What the engine would show in a message box is told as an error line.
    QStringList runMessages;
    auto collect = [&runMessages](const QString &title, const QString &text) {
        runMessages.append(title.isEmpty() ? text : title + QStringLiteral(": ") + text);
    };
    QObject::connect(&scene, &GraphScene::showWarningMessage, collect);
    QObject::connect(&scene, &GraphScene::showCriticalMessage, collect);

    GraphScene::setStopRequested(false);
    // Nobody looks at the items' tables either, so the last reader of a table may change its
    // rows in place. Nothing is freed on the way: the process ends right after the run.
    scene.setRowsHandedOver(true);
    scene.process(GraphScene::RunAll, true);
    OutputNode::setInteractive(wasInteractive);

    for (const QString &message : qAsConst(runMessages))
        log.error(message);
    if (options.verbose) {
        reportInputs(scene, log);
        reportTransforms(scene, log);
        reportOutputs(scene, log);
        log.info(QStringLiteral("Finished processing '%1' on %2")
                     .arg(shownPath, QDateTime::currentDateTime().toString()));
    }
    log.flush();
    if (keepData)
        sceneOwner.release();
    return 0;
}

int runCommandLine(const QStringList &arguments, CommandLineLog &log)
{
    const CommandLineOptions options = parseCommandLine(arguments, log);
    if (!options.abortMessage.isEmpty())
        return log.abort(options.abortMessage);
    if (!options.cli)
        return 0;
    return runDocument(options, log);
}

void runCommandLineAndExit(const QStringList &arguments)
{
    CommandLineLog log;
    const CommandLineOptions options = parseCommandLine(arguments, log);
    int code = 0;
    if (!options.abortMessage.isEmpty())
        code = log.abort(options.abortMessage);
    else if (options.cli)
        code = runDocument(options, log, true);
    log.flush();
    Settings::instance()->sync();
    if (Application *app = Application::instance()) {
        for (const QString &temporary : qAsConst(app->temporaryFiles()))
            QFile::remove(temporary);
    }
    std::fflush(nullptr);
    std::_Exit(code);
}

int runCommandLine(const QStringList &arguments)
{
    CommandLineLog log;
    return runCommandLine(arguments, log);
}
