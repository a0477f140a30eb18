#include "support/TestClock.h"

#include <algorithm>

TestClock::TestClock(const QDateTime &start) : m_now(start)
{
    Clock::setCurrent(this);
}

TestClock::~TestClock()
{
    Clock::setCurrent(nullptr);
}

void TestClock::arm(ClockTimer &timer, qint64 ms)
{
    disarm(timer);
    m_armed.append({&timer, m_now.addMSecs(ms)});
}

void TestClock::disarm(ClockTimer &timer)
{
    m_armed.removeIf([&timer](const Armed &armed) { return armed.timer == &timer; });
}

void TestClock::advance(qint64 ms)
{
    const QDateTime end = m_now.addMSecs(ms);
    for (;;) {
        const auto next = std::min_element(m_armed.cbegin(), m_armed.cend(),
                                           [](const Armed &a, const Armed &b) { return a.due < b.due; });
        if (next == m_armed.cend() || next->due > end) {
            break;
        }
        m_now = next->due;
        ClockTimer *timer = next->timer;
        m_armed.erase(next);
        timer->fire();
    }
    m_now = end;
}
