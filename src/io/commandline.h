#pragma once

#include <QFile>
#include <QString>
#include <QStringList>

class QIODevice;

// Where the lines of a command-line run go: info lines to one stream, error lines to another
// (in red when that one is a terminal), and both, plain, to the file of -log during a
// command-line run. It owns the log file.
class CommandLineLog
{
public:
    // The process's standard output and standard error.
    CommandLineLog();
    // Lines go to the given devices, which the caller owns, with colours only when asked for.
    CommandLineLog(QIODevice *out, QIODevice *err, bool colours = false);
    ~CommandLineLog();
    CommandLineLog(const CommandLineLog &) = delete;
    CommandLineLog &operator=(const CommandLineLog &) = delete;

    // Opens path for appending; false when it can't be opened.
    bool openLogFile(const QString &path);
    // Only a command-line run writes to the log file.
    void setWritesLogFile(bool on) { m_writesLogFile = on; }

    void info(const QString &line);
    void error(const QString &line);
    // Writes message and "Aborted processing" as error lines; returns the exit code that the
    // process must end with.
    int abort(const QString &message);
    void flush();

private:
    void writeToLogFile(const QString &line);

    QFile m_standardOut;
    QFile m_standardErr;
    QIODevice *m_out;
    QIODevice *m_err;
    bool m_colours;
    QFile m_logFile;
    bool m_writesLogFile = false;
};

// The arguments of the program as read.
struct CommandLineOptions
{
    bool cli = false;
    bool verbose = false;
    bool newWindow = false;
    bool version = false;
    bool build = false;
    QString logPath;
    // The values of -file ("<alias>=<value>"), in the order given.
    QStringList fileValues;
    QString documentPath;
    // Not empty when the arguments can't be used: the process aborts with this message.
    QString abortMessage;
};

// The exit code after an abort (255 to a shell).
constexpr int CommandLineAbortCode = -1;

// "Tabulon 1.2.3", and the text that says how the program was built.
QString versionText();
QString buildText();

// Reads arguments from position 1 on. The log file of -log is opened on the way, and the texts
// of -version and -build are written once all arguments are read.
CommandLineOptions parseCommandLine(const QStringList &arguments, CommandLineLog &log);
