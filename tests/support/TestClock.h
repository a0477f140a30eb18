#pragma once

// A clock that stands still until the test moves it: advance() walks the armed timers in the order they fall due,
// firing each on the calling thread with now() set to its time, so an hour of timers passes in a moment.
// Install it with Clock::setCurrent before making the objects under test; it puts the system clock back when it goes.

#include "platform/Clock.h"

#include <QList>

class TestClock : public Clock
{
public:
    explicit TestClock(const QDateTime &start = QDateTime(QDate(2026, 11, 25), QTime(12, 0), Qt::UTC));
    ~TestClock() override;

    QDateTime now() const override { return m_now; }
    void arm(ClockTimer &timer, qint64 ms) override;
    void disarm(ClockTimer &timer) override;

    // Moves the time on by ms, firing what falls due on the way.
    void advance(qint64 ms);
    // Timers armed now.
    int armedCount() const { return int(m_armed.size()); }

private:
    struct Armed
    {
        ClockTimer *timer;
        QDateTime due;
    };

    QDateTime m_now;
    QList<Armed> m_armed;
};
