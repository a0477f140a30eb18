#include "platform/Clock.h"

#include <atomic>

namespace {

Clock &systemClock()
{
    static Clock clock;
    return clock;
}

std::atomic<Clock *> installedClock{nullptr};

} // namespace

QDateTime Clock::now() const
{
    return QDateTime::currentDateTimeUtc();
}

void Clock::arm(ClockTimer &timer, qint64 ms)
{
    timer.m_systemTimer.start(std::chrono::milliseconds(ms));
}

void Clock::disarm(ClockTimer &timer)
{
    timer.m_systemTimer.stop();
}

Clock &Clock::current()
{
    Clock *clock = installedClock.load();
    return clock ? *clock : systemClock();
}

void Clock::setCurrent(Clock *clock)
{
    installedClock = clock;
}

void Clock::singleShot(qint64 ms, QObject *context, std::function<void()> then)
{
    auto *timer = new ClockTimer(context);
    timer->setSingleShot(true);
    QObject::connect(timer, &ClockTimer::timeout, timer, [timer, then = std::move(then)] {
        then();
        timer->deleteLater();
    });
    timer->start(ms);
}

ClockTimer::ClockTimer(QObject *parent) : QObject(parent), m_clock(Clock::current())
{
    m_systemTimer.setSingleShot(true);
    connect(&m_systemTimer, &QTimer::timeout, this, &ClockTimer::fire);
}

ClockTimer::~ClockTimer()
{
    stop();
}

void ClockTimer::start()
{
    stop();
    m_active = true;
    m_clock.arm(*this, m_interval);
}

void ClockTimer::start(qint64 ms)
{
    m_interval = ms;
    start();
}

void ClockTimer::stop()
{
    if (m_active) {
        m_active = false;
        m_clock.disarm(*this);
    }
}

void ClockTimer::fire()
{
    if (!m_active) {
        return;
    }
    if (m_singleShot) {
        m_active = false;
    } else {
        m_clock.arm(*this, m_interval);
    }
    emit timeout();
}
