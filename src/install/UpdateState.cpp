#include "install/UpdateState.h"

UpdateStatus updateStatusAfter(UpdateStatus status, UpdateStep step)
{
    using S = UpdateStatus;
    switch (step) {
    case UpdateStep::Start:
        return status == S::Queued ? S::Downloading : status;
    case UpdateStep::Install:
        return status == S::Downloading ? S::Installing : status;
    case UpdateStep::Cancel:
        return status == S::Queued || status == S::Downloading ? S::Cancelled : status;
    case UpdateStep::Fail:
        return isUpdateActive(status) ? S::Failed : status;
    case UpdateStep::Succeed:
        return isUpdateActive(status) ? S::Done : status;
    }
    return status;
}

bool isUpdateActive(UpdateStatus status)
{
    return status == UpdateStatus::Downloading || status == UpdateStatus::Installing;
}

bool isUpdateEnded(UpdateStatus status)
{
    return status == UpdateStatus::Done || status == UpdateStatus::Failed || status == UpdateStatus::Cancelled;
}

UpdateStatus UpdateState::status() const
{
    const QMutexLocker lock(&m_mutex);
    return m_status;
}

bool UpdateState::step(UpdateStep step)
{
    UpdateStatus next;
    {
        const QMutexLocker lock(&m_mutex);
        next = updateStatusAfter(m_status, step);
        if (next == m_status) {
            return false;
        }
        if (step == UpdateStep::Start) {
            m_failed = false;
            m_failMessage.clear();
            m_progress = 0.0;
            m_cancelled = false;
        }
        if (step == UpdateStep::Cancel) {
            m_cancelled = true;
        }
        m_status = next;
    }
    changed(next);
    return true;
}

void UpdateState::setProgress(double fraction)
{
    if (m_progress.exchange(fraction) != fraction) {
        changed();
    }
}

bool UpdateState::cancel()
{
    return step(UpdateStep::Cancel);
}

void UpdateState::fail(const QString &message)
{
    {
        const QMutexLocker lock(&m_mutex);
        m_failed = true;
        m_failMessage = message;
    }
    changed();
}

void UpdateState::clearFailure()
{
    const QMutexLocker lock(&m_mutex);
    m_failed = false;
}

bool UpdateState::hasFailed() const
{
    const QMutexLocker lock(&m_mutex);
    return m_failed;
}

QString UpdateState::failMessage() const
{
    const QMutexLocker lock(&m_mutex);
    return m_failMessage;
}

void UpdateState::finish()
{
    step(hasFailed() ? UpdateStep::Fail : UpdateStep::Succeed);
}

void UpdateState::changed(std::optional<UpdateStatus> status) const
{
    if (m_listener) {
        m_listener(status);
    }
}
