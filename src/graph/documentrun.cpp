#include "graph/documentrun.h"

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

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

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
