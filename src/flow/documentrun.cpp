#include "flow/documentrun.h"

#include "flow/document.h"
#include "flow/documentsupport.h"
#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/outputitem.h"
#include "flow/transformitem.h"
#include "io/pathvariables.h"
#include "shell/memory.h"
#include "shell/settings.h"
#include "transforms/framework/transform.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>

namespace {

using DocumentSupport::nodesById;

QString resolvePath(const QString &path, const QString &folder)
{
    if (path.isEmpty() || QFileInfo(path).isAbsolute())
        return path;
    return QDir::cleanPath(QDir(folder).absoluteFilePath(path));
}

// An item's own warnings and, for a transform, those of its transform.
QStringList allWarnings(const FlowItem *node)
{
    QStringList warnings = node->warnings();
    if (const auto *transformNode = qobject_cast<const TransformItem *>(node))
        warnings += transformNode->transform()->warnings();
    return warnings;
}

void reportWarnings(CommandLineLog &log, const FlowItem *node, bool asErrors)
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

void reportInputs(const FlowModel &model, CommandLineLog &log)
{
    const QList<FlowItem *> inputs = nodesById(model, FlowItem::InputKind);
    for (const FlowItem *node : inputs) {
        const auto *input = static_cast<const InputItem *>(node);
        const bool failed = input->status() == FlowItem::Error;
        if (input->medium() == InputItem::Clipboard) {
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

void reportTransforms(const FlowModel &model, CommandLineLog &log)
{
    const QList<FlowItem *> transforms = nodesById(model, FlowItem::TransformKind);
    for (const FlowItem *node : transforms) {
        if (node->status() != FlowItem::Error)
            continue;
        log.error(QStringLiteral("Transform: '%1' (Id=%2), Error")
                      .arg(node->displayName(), QString::number(node->id())));
        reportWarnings(log, node, true);
    }
}

void reportOutputs(const FlowModel &model, CommandLineLog &log)
{
    const QList<FlowItem *> outputs = nodesById(model, FlowItem::OutputKind);
    for (const FlowItem *node : outputs) {
        const auto *output = static_cast<const OutputItem *>(node);
        if (output->writeMode() == OutputItem::Disabled)
            continue;
        const QString path = QDir::toNativeSeparators(output->path());
        const QString mode = OutputItem::writeModeName(output->writeMode());
        // An output that never ran, its input having failed, wrote nothing either.
        const bool failed = output->status() != FlowItem::UpToDate;
        if (failed)
            log.error(QStringLiteral("Output file: %1, %2, Error").arg(path, mode));
        else
            log.info(QStringLiteral(" Output file: %1, %2, OK").arg(path, mode));
        reportWarnings(log, output, failed);
    }
}

} // namespace

// Running ------------------------------------------------------------------------------------

QString applyFileArguments(FlowModel &model, const QStringList &values,
                           const QString &documentFolder)
{
    const QList<FlowItem *> inputs = nodesById(model, FlowItem::InputKind);
    const QList<FlowItem *> outputs = nodesById(model, FlowItem::OutputKind);
    for (const QString &value : values) {
        const QStringList parts = value.split(QLatin1Char('='));
        if (parts.size() != 2)
            return QStringLiteral("Expected <alias>=<value> for %1 argument").arg(value);
        const QString alias = parts.at(0).trimmed();
        const QString location = parts.at(1).trimmed();
        for (FlowItem *node : inputs) {
            if (node->alias() != alias)
                continue;
            QString path;
            QString sheet;
            PathVariables::splitSheet(location, path, sheet);
            path = resolvePath(path, documentFolder);
            if (!QFileInfo::exists(path))
                continue;
            auto *input = static_cast<InputItem *>(node);
            input->setPath(path);
            input->setWorksheet(sheet);
        }
        for (FlowItem *node : outputs) {
            if (node->alias() != alias)
                continue;
            // A workbook's sheet may come with the path, as "book.xlsx[Sheet]".
            auto *output = static_cast<OutputItem *>(node);
            QString path;
            QString sheet;
            PathVariables::splitSheet(location, path, sheet);
            if (sheet.isEmpty() || !output->isExcel()) {
                output->setPath(resolvePath(location, documentFolder));
                continue;
            }
            output->setPath(resolvePath(path, documentFolder));
            output->setWorksheet(sheet);
        }
    }
    return QString();
}

int runDocument(const CommandLineOptions &options, CommandLineLog &log, bool keepData)
{
    const QString path = QFileInfo(options.documentPath).absoluteFilePath();
    auto *ownedModel = new FlowModel;
    std::unique_ptr<FlowModel> modelOwner(ownedModel);
    FlowModel &model = *ownedModel;
    DocumentData data;
    bool laterVersion = false;
    QStringList messages;
    QString error;
    if (!loadDocument(&model, path, &data, &laterVersion, &messages, &error))
        return log.abort(
            QStringLiteral("Unable to open '%1': %2").arg(options.documentPath, error));
    for (const QString &message : qAsConst(messages))
        log.error(message);

    const QString abortMessage
        = applyFileArguments(model, options.fileValues, QFileInfo(path).absolutePath());
    if (!abortMessage.isEmpty())
        return log.abort(abortMessage);

    const QString shownPath = QDir::toNativeSeparators(path);
    if (options.verbose)
        log.info(QStringLiteral("Start processing '%1' on %2")
                     .arg(shownPath, QDateTime::currentDateTime().toString()));

    // Nobody is there to answer: every question takes its default.
    const bool wasInteractive = OutputItem::isInteractive();
    OutputItem::setInteractive(false);

    // What the engine would show in a message box is told as an error line.
    QStringList runMessages;
    auto collect = [&runMessages](const QString &title, const QString &text) {
        runMessages.append(title.isEmpty() ? text : title + QStringLiteral(": ") + text);
    };
    QObject::connect(&model, &FlowModel::showWarningMessage, collect);
    QObject::connect(&model, &FlowModel::showCriticalMessage, collect);

    FlowModel::setStopRequested(false);
    // Nobody looks at the items' tables either, so the last reader of a table may change its
    // rows in place. Nothing is freed on the way: the process ends right after the run.
    model.setRowsHandedOver(true);
    model.process(FlowModel::RunAll, true);
    OutputItem::setInteractive(wasInteractive);

    for (const QString &message : qAsConst(runMessages))
        log.error(message);
    if (options.verbose) {
        reportInputs(model, log);
        reportTransforms(model, log);
        reportOutputs(model, log);
        log.info(QStringLiteral("Finished processing '%1' on %2")
                     .arg(shownPath, QDateTime::currentDateTime().toString()));
    }
    log.flush();
    if (keepData)
        modelOwner.release();
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

namespace {

// The window's failure handling, without the window: what ends a run early is logged and
// becomes the exit code, instead of a crash report.
int runFailSafe(const CommandLineOptions &options, CommandLineLog &log)
{
    try {
        return runDocument(options, log, true);
    } catch (const MaxMemoryException &) {
        log.error(QStringLiteral("Maximum memory exceeded"));
        return 1;
    } catch (const std::bad_alloc &) {
        std::abort();
    } catch (const std::exception &exception) {
        log.error(QStringLiteral("exception: ") + QString::fromLocal8Bit(exception.what()));
        return 2;
    }
}

} // namespace

void runCommandLineAndExit(const QStringList &arguments)
{
    CommandLineLog log;
    const CommandLineOptions options = parseCommandLine(arguments, log);
    int code = 0;
    if (!options.abortMessage.isEmpty())
        code = log.abort(options.abortMessage);
    else if (options.cli)
        code = runFailSafe(options, log);
    log.flush();
    Settings::instance()->sync();
    std::fflush(nullptr);
    std::_Exit(code);
}

int runCommandLine(const QStringList &arguments)
{
    CommandLineLog log;
    return runCommandLine(arguments, log);
}
