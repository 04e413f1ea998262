#include "shell/memory.h"

#include "shell/settings.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

MemoryLimitHandler &memoryLimitHandler()
{
    static MemoryLimitHandler handler;
    return handler;
}

// Reads a small /proc file whole; false when it can't be read.
bool readProcFile(const char *path, char *buffer, size_t size)
{
    const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const ssize_t length = ::read(fd, buffer, size - 1);
    ::close(fd);
    if (length <= 0)
        return false;
    buffer[length] = '\0';
    return true;
}

// The command name the kernel keeps for a process, without the line end.
QByteArray processCommand(const char *commPath)
{
    char buffer[64];
    if (!readProcFile(commPath, buffer, sizeof(buffer)))
        return QByteArray();
    QByteArray name(buffer);
    if (name.endsWith('\n'))
        name.chop(1);
    return name;
}

// Our own command name is the program's file name as it was started, which is also what a
// second instance started the same way (even through a link) has.
QByteArray ownCommand()
{
    QByteArray name = processCommand("/proc/self/comm");
    if (name.isEmpty() && QCoreApplication::instance())
        name = QFileInfo(QCoreApplication::applicationFilePath()).fileName().toLocal8Bit();
    return name;
}

bool isProcessId(const char *name)
{
    if (*name == '\0')
        return false;
    for (; *name != '\0'; ++name) {
        if (*name < '0' || *name > '9')
            return false;
    }
    return true;
}

// Lets the question of the handler pass without a second question from a progress report
// that arrives while it is open.
class AskingGuard
{
public:
    explicit AskingGuard(bool &flag)
        : m_flag(flag)
    {
        m_flag = true;
    }
    ~AskingGuard() { m_flag = false; }
    AskingGuard(const AskingGuard &) = delete;
    AskingGuard &operator=(const AskingGuard &) = delete;

private:
    bool &m_flag;
};

} // namespace

double processMemoryGiB()
{
    static const double pageSize = double(::sysconf(_SC_PAGESIZE));
    char buffer[128];
    if (!readProcFile("/proc/self/statm", buffer, sizeof(buffer)))
        return 0.0;
    unsigned long long size = 0;
    unsigned long long resident = 0;
    unsigned long long shared = 0;
    if (std::sscanf(buffer, "%llu %llu %llu", &size, &resident, &shared) != 3 || resident < shared)
        return 0.0;
    return double(resident - shared) * pageSize / 1073741824.0;
}

void setMemoryLimitHandler(MemoryLimitHandler handler)
{
    memoryLimitHandler() = std::move(handler);
}

bool hasMemoryLimitHandler()
{
    return bool(memoryLimitHandler());
}

void checkMemoryLimit()
{
    static bool asking = false;
    if (asking)
        return;
    const double limit = Settings::instance()->maxMemoryUsage();
    const double use = processMemoryGiB();
    if (use <= limit)
        return;
    const MemoryLimitHandler handler = memoryLimitHandler();
    if (!handler)
        throw MaxMemoryException();
    double newLimit = limit;
    bool carryOn = false;
    {
        AskingGuard guard(asking);
        carryOn = handler(limit, use, &newLimit);
    }
    if (!carryOn)
        throw MaxMemoryException();
    Settings::instance()->setMaxMemoryUsage(newLimit);
}

int instanceCount(const QString &programName)
{
    QByteArray name = programName.isEmpty() ? ownCommand() : programName.toLocal8Bit();
    name.truncate(15);
    if (name.isEmpty())
        return 0;
    DIR *proc = ::opendir("/proc");
    if (!proc)
        return 0;
    const uid_t user = ::geteuid();
    int count = 0;
    char path[64];
    while (const dirent *entry = ::readdir(proc)) {
        if (!isProcessId(entry->d_name) || std::strlen(entry->d_name) > 20)
            continue;
        std::snprintf(path, sizeof(path), "/proc/%s", entry->d_name);
        struct stat info;
        if (::stat(path, &info) != 0 || info.st_uid != user)
            continue;
        std::snprintf(path, sizeof(path), "/proc/%s/comm", entry->d_name);
        if (processCommand(path) == name)
            ++count;
    }
    ::closedir(proc);
    return count;
}

QString ageText(qint64 seconds)
{
    seconds = qMax<qint64>(seconds, 0);
    if (seconds < 60)
        return QStringLiteral("%1 second(s)").arg(seconds);
    const double minutes = double(seconds) / 60.0;
    if (minutes < 60.0)
        return QStringLiteral("%1 minute(s)").arg(qRound64(minutes));
    const double hours = minutes / 60.0;
    if (hours < 24.0)
        return QStringLiteral("%1 hour(s)").arg(qRound64(hours));
    return QStringLiteral("%1 day(s)").arg(qRound64(hours / 24.0));
}
