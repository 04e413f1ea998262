#include "io/commandline.h"

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
