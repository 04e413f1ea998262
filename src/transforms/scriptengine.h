#pragma once

#include <QJSValue>
#include <QString>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

class QJSEngine;

// Runs a user's script under watch for the length of one run of a transform. A thread of its
// own interrupts the engine when the run's stop flag is set, or when one evaluation or one call
// lasts longer than the time limit; the script then returns an error and the engine is made
// usable again. The limit is per call, so that a long table takes as long as it needs while a
// single runaway row can't freeze the program: the engine runs on the thread of the window.
class ScriptWatchdog
{
public:
    enum Interruption { NotInterrupted, Stopped, TimedOut };

    // stopRequested may be empty; it is also called from the watching thread. A limit of zero
    // interrupts every evaluation and call at the first look.
    ScriptWatchdog(QJSEngine *engine, std::function<bool()> stopRequested,
                   std::chrono::milliseconds timeLimit);
    ~ScriptWatchdog();
    ScriptWatchdog(const ScriptWatchdog &) = delete;
    ScriptWatchdog &operator=(const ScriptWatchdog &) = delete;

    // The program's value, its line numbers counted from 1.
    QJSValue evaluate(const QString &program);
    QJSValue call(QJSValue &function, const QJSValueList &arguments);
    // Why the last evaluation or call was cut short.
    Interruption lastInterruption() const { return m_last; }
    std::chrono::milliseconds timeLimit() const { return m_limit; }

private:
    using Clock = std::chrono::steady_clock;

    template<typename Work> QJSValue watched(Work &&work);
    void watch();

    QJSEngine *m_engine;
    std::function<bool()> m_stopRequested;
    std::chrono::milliseconds m_limit;
    std::chrono::milliseconds m_pollInterval;

    // Shared with the watching thread, under m_mutex. The engine is interrupted only while the
    // mutex is held and a call is running, so that an interruption can't reach the next call.
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_quit = false;
    bool m_running = false;
    Clock::time_point m_started;
    Interruption m_reason = NotInterrupted;

    Interruption m_last = NotInterrupted;
    std::thread m_thread;
};
