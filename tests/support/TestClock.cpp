#include "support/TestClock.h"

#include <QThread>

#include <algorithm>

TestClock::TestClock(const QDateTime &start) : m_now(start)
{
    Clock::setCurrent(this);
}

TestClock::~TestClock()
{
    Clock::setCurrent(nullptr);
}

QDateTime TestClock::now() const
{
    const QMutexLocker lock(&m_mutex);
    return m_now;
}

int TestClock::armedCount() const
{
    const QMutexLocker lock(&m_mutex);
    return int(m_armed.size());
}

void TestClock::arm(ClockTimer &timer, qint64 ms)
{
    const QMutexLocker lock(&m_mutex);
    m_armed.removeIf([&timer](const Armed &armed) { return armed.timer == &timer; });
    m_armed.append({&timer, m_now.addMSecs(ms)});
}

void TestClock::disarm(ClockTimer &timer)
{
    const QMutexLocker lock(&m_mutex);
    m_armed.removeIf([&timer](const Armed &armed) { return armed.timer == &timer; });
}

void TestClock::advance(qint64 ms)
{
    QMutexLocker lock(&m_mutex);
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
        lock.unlock();
        if (timer->thread() == QThread::currentThread()) {
            timer->fire();
        } else {
            QMetaObject::invokeMethod(timer, &ClockTimer::fire, Qt::QueuedConnection);
        }
        lock.relock();
    }
    m_now = end;
}
