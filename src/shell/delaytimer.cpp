#include "shell/delaytimer.h"

#include <QList>
#include <QPointer>
#include <QTimer>

namespace {

bool s_manualClock = false;

QList<DelayTimer *> &liveTimers()
{
    static QList<DelayTimer *> timers;
    return timers;
}

} // namespace

DelayTimer::DelayTimer(QObject *parent)
    : QObject(parent)
    , m_timer(new QTimer(this))
{
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &DelayTimer::end);
    liveTimers().append(this);
}

DelayTimer::~DelayTimer()
{
    liveTimers().removeOne(this);
}

void DelayTimer::start(int ms)
{
    m_interval = ms;
    start();
}

void DelayTimer::start()
{
    m_pending = true;
    if (s_manualClock)
        m_timer->stop();
    else
        m_timer->start(qMax(0, m_interval));
}

void DelayTimer::stop()
{
    m_pending = false;
    m_timer->stop();
}

void DelayTimer::fire()
{
    if (!m_pending)
        return;
    m_timer->stop();
    end();
}

void DelayTimer::end()
{
    m_pending = false;
    emit timeout();
}

void DelayTimer::setManualClock(bool manual)
{
    s_manualClock = manual;
}

bool DelayTimer::isManualClock()
{
    return s_manualClock;
}

int DelayTimer::firePending()
{
    QList<QPointer<DelayTimer>> pending;
    for (DelayTimer *timer : qAsConst(liveTimers())) {
        if (timer->isActive())
            pending.append(timer);
    }
    // A fired pause may delete others, or start new ones that wait for the next call.
    int fired = 0;
    for (const QPointer<DelayTimer> &timer : qAsConst(pending)) {
        if (timer && timer->isActive()) {
            timer->fire();
            ++fired;
        }
    }
    return fired;
}
