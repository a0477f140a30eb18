#pragma once

// A clock that stands still until the test moves it: advance() walks the armed timers in the order they fall due,
// with now() set to each one's time, so an hour of timers passes in a moment. A timer of the calling thread fires
// at once; one of another thread fires from that thread's event loop.
// Install it with Clock::setCurrent before making the objects under test; it puts the system clock back when it goes.

#include "platform/Clock.h"

#include <QList>
#include <QMutex>

class TestClock : public Clock
{
public:
    explicit TestClock(const QDateTime &start = QDateTime(QDate(2026, 11, 25), QTime(12, 0), Qt::UTC));
    ~TestClock() override;

    QDateTime now() const override;
    void arm(ClockTimer &timer, qint64 ms) override;
    void disarm(ClockTimer &timer) override;

    // Moves the time on by ms, firing what falls due on the way.
    void advance(qint64 ms);
    // Timers armed now.
    int armedCount() const;

private:
    struct Armed
    {
        ClockTimer *timer;
        QDateTime due;
    };

    mutable QMutex m_mutex; // timers of other threads arm and disarm too
    QDateTime m_now;
    QList<Armed> m_armed;
};
