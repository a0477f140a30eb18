#pragma once

// What time it is and when timers fire, behind one seam: the system clock in the programs, a test clock in the tests
// (tests/support/TestClock), so that rules about hours and timers of an hour run in milliseconds under test.
//
// Clock::current() is the system clock unless a test installed its own before starting any thread that reads it.
// A ClockTimer lives on the thread that made it, like a QTimer, and takes the clock current when it was made.

#include <QDateTime>
#include <QObject>
#include <QTimer>

#include <functional>

class ClockTimer;

class Clock
{
public:
    virtual ~Clock() = default;

    virtual QDateTime now() const;
    // timer is due in ms from now; a repeating timer is armed again by its own firing.
    virtual void arm(ClockTimer &timer, qint64 ms);
    virtual void disarm(ClockTimer &timer);

    static Clock &current();
    // nullptr puts the system clock back. Not owned.
    static void setCurrent(Clock *clock);
    // Runs then once, ms from now, on context's thread, unless context is gone by then.
    static void singleShot(qint64 ms, QObject *context, std::function<void()> then);
};

class ClockTimer : public QObject
{
    Q_OBJECT

public:
    explicit ClockTimer(QObject *parent = nullptr);
    ~ClockTimer() override;

    void setSingleShot(bool singleShot) { m_singleShot = singleShot; }
    bool isSingleShot() const { return m_singleShot; }
    void setInterval(qint64 ms) { m_interval = ms; }
    qint64 interval() const { return m_interval; }
    bool isActive() const { return m_active; }

    void start();
    void start(qint64 ms);
    void stop();

    // The clock's own way to fire it; a repeating timer is armed again first.
    void fire();

signals:
    void timeout();

private:
    friend class Clock;

    Clock &m_clock;
    QTimer m_systemTimer{this}; // used by the system clock only; a child, so it moves threads with the timer
    qint64 m_interval = 0;
    bool m_singleShot = false;
    bool m_active = false;
};
