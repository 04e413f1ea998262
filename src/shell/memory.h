#pragma once

#include <QString>

#include <exception>
#include <functional>

// The process's own memory in use, in gigabytes of 2^30 bytes: its private resident pages.
// Cheap enough to call on every progress report.
double processMemoryGiB();

// Thrown when the user chooses to end the program rather than raise the memory limit; it
// carries nothing and leaves through Application::notify.
class MaxMemoryException : public std::exception
{
};

// Asked when the memory in use exceeds the limit. Returns true to carry on, with the new
// limit (in gigabytes) stored through newLimitGiB, or false to end the program.
using MemoryLimitHandler = std::function<bool(double limitGiB, double useGiB, double *newLimitGiB)>;

// Installs the handler that asks the user; an empty function removes it.
void setMemoryLimitHandler(MemoryLimitHandler handler);
bool hasMemoryLimitHandler();

// Compares the memory in use with the "max_memory_usage" setting. Above it, the handler may
// raise the limit (which is then stored in the settings); without a handler, or when the
// handler declines, throws MaxMemoryException.
void checkMemoryLimit();

// How many processes of this user run the program named programName (its file name; the
// kernel keeps at most 15 characters of it). An empty name means this program.
int instanceCount(const QString &programName = QString());

// The age of a file in words, rounded to the nearest whole unit: "%1 second(s)",
// "%1 minute(s)", "%1 hour(s)" or "%1 day(s)".
QString ageText(qint64 seconds);
