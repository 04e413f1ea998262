#pragma once

#include <QObject>

class QTimer;

// A single-shot pause before work that should wait for the user to stop: the run after an
// edit or an undo, a filter after typing. Its clock can be switched to a manual one, on which
// pauses never run out by themselves; a test then ends a pause by firing it, instead of
// waiting on the wall clock for it.
class DelayTimer : public QObject
{
    Q_OBJECT

public:
    explicit DelayTimer(QObject *parent = nullptr);
    ~DelayTimer() override;

    // Starts the pause anew, with ms or with the last interval.
    void start(int ms);
    void start();
    void stop();
    bool isActive() const { return m_pending; }
    int interval() const { return m_interval; }
    void setInterval(int ms) { m_interval = ms; }
    // Ends a pending pause now, as if it had run out; does nothing when none is pending.
    void fire();

    // With the manual clock, pauses started from then on wait for fire() alone.
    static void setManualClock(bool manual);
    static bool isManualClock();
    // Fires every pause pending at the call; returns how many there were.
    static int firePending();

signals:
    void timeout();

private:
    void end();

    QTimer *m_timer;
    int m_interval = 0;
    bool m_pending = false;
};
