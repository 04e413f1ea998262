#include "transforms/scriptengine.h"

#include <QJSEngine>

#include <algorithm>

namespace {

// How often the watching thread looks at a running call: often enough that a stop is felt at
// once, seldom enough to cost nothing.
constexpr std::chrono::milliseconds LongestPoll(50);

} // namespace

ScriptWatchdog::ScriptWatchdog(QJSEngine *engine, std::function<bool()> stopRequested,
                               std::chrono::milliseconds timeLimit)
    : m_engine(engine)
    , m_stopRequested(std::move(stopRequested))
    , m_limit(std::max(timeLimit, std::chrono::milliseconds(0)))
    , m_pollInterval(std::clamp(m_limit, std::chrono::milliseconds(1), LongestPoll))
    , m_thread([this] { watch(); })
{ }

ScriptWatchdog::~ScriptWatchdog()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_quit = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

void ScriptWatchdog::watch()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_quit) {
        m_wake.wait_for(lock, m_pollInterval);
        if (m_quit || !m_running || m_reason != NotInterrupted)
            continue;
        if (m_stopRequested && m_stopRequested())
            m_reason = Stopped;
        else if (Clock::now() - m_started >= m_limit)
            m_reason = TimedOut;
        else
            continue;
        m_engine->setInterrupted(true);
    }
}

template<typename Work> QJSValue ScriptWatchdog::watched(Work &&work)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_running = true;
        m_started = Clock::now();
    }
    QJSValue result = work();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_running = false;
    m_last = m_reason;
    if (m_reason != NotInterrupted) {
        m_engine->setInterrupted(false);
        m_reason = NotInterrupted;
    }
    return result;
}

QJSValue ScriptWatchdog::evaluate(const QString &program)
{
    // A script can close the function it is wrapped in and run code of its own here.
    return watched([&] { return m_engine->evaluate(program, QString(), 1); });
}

QJSValue ScriptWatchdog::call(QJSValue &function, const QJSValueList &arguments)
{
    return watched([&] { return function.call(arguments); });
}
