#include "install/VLUpdateAllQueue.h"

#include "model/ListSort.h"
#include "platform/Log.h"
#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"
#include "services/VLGoogleTracking.h"

#include <algorithm>

namespace {

bool isQueued(UpdateStatus status)
{
    return status == UpdateStatus::Queued;
}

} // namespace

UpdateAllButton updateAllButtonState(int inProgress, int waiting)
{
    return inProgress == 0 && waiting > 0 ? UpdateAllButton::UpdateAll : UpdateAllButton::Cancel;
}

VLUpdateAllQueue::VLUpdateAllQueue(UpdateJobs &jobs, QObject *parent) : QObject(parent), m_jobs(jobs)
{
    m_checkForUpdateAllTimer.setSingleShot(true);
    m_checkForUpdateAllTimer.setInterval(kRecheckMs);
    connect(&m_checkForUpdateAllTimer, &ClockTimer::timeout, this, &VLUpdateAllQueue::startWaitingBlock);
    connect(&m_jobs, &UpdateJobs::removing, this,
            [this](UpdateJob *job) { removeAppFromUpdateAllQueue(job->app().get()); });
    VLNotificationCenter::defaultCenter().subscribe(
        QStringLiteral("VLDownloadCanceled"), this,
        [this](const QVariant &object) { removeAppFromUpdateAllQueueNotifiationHandler(object); });
}

void VLUpdateAllQueue::updateAll(const Apps &outdatedApps)
{
    VLGoogleTracking::trackProgramEvent(QStringLiteral("UPDATE_ALL"), QStringLiteral("UPDATE_ALL"),
                                        QStringLiteral("AUTO"));
    addToQueue(sortedByListSort(outdatedApps, VLSettings().stringValue(SettingKey::listSort)));
}

void VLUpdateAllQueue::addToQueue(const Apps &apps)
{
    for (const auto &app : apps) {
        if (leavesOut(*app)) {
            continue;
        }
        UpdateJob *job = m_jobs.add(app); // null: already queued or updating, and left so
        if (!job) {
            continue;
        }
        connect(job, &UpdateJob::statusChanged, this, [this, job](UpdateStatus status) {
            if (isUpdateEnded(status)) {
                removeAppFromUpdateAllQueue(job->app().get());
            }
        });
        const QMutexLocker lock(&m_mutex);
        m_updateAllApps.append(job);
    }
    startWaitingUpdates();
}

void VLUpdateAllQueue::startWaitingUpdates()
{
    if (numberOfUpdatesInProgress() < kMaxInProgress) {
        UpdateJob *next = nullptr;
        {
            const QMutexLocker lock(&m_mutex);
            const auto found = std::find_if(m_updateAllApps.cbegin(), m_updateAllApps.cend(),
                                            [](const UpdateJob *job) { return isQueued(job->status()); });
            next = found != m_updateAllApps.cend() ? *found : nullptr;
        }
        if (next) {
            next->start();
        }
    }
    // Every job counted as waiting is queued and can start, so this ends once the queue has drained.
    const int inProgress = numberOfUpdatesInProgress();
    const int waiting = numberOfUpdatesWaiting();
    emit buttonStateChanged(updateAllButtonState(inProgress, waiting));
    if (inProgress < kMaxInProgress && waiting > 0) {
        startWaitingBlock();
    } else if (waiting > 0) {
        m_checkForUpdateAllTimer.start();
    }
}

void VLUpdateAllQueue::startWaitingBlock()
{
    QMetaObject::invokeMethod(this, &VLUpdateAllQueue::startWaitingUpdates, Qt::QueuedConnection);
}

int VLUpdateAllQueue::numberOfUpdatesInProgress() const
{
    return count(isUpdateActive);
}

int VLUpdateAllQueue::numberOfUpdatesWaiting() const
{
    return count(isQueued);
}

int VLUpdateAllQueue::count(bool (*test)(UpdateStatus)) const
{
    const QMutexLocker lock(&m_mutex);
    return int(std::count_if(m_updateAllApps.cbegin(), m_updateAllApps.cend(),
                             [test](const UpdateJob *job) { return test(job->status()); }));
}

void VLUpdateAllQueue::cancelUpdateAll()
{
    VLGoogleTracking::trackProgramEvent(QStringLiteral("UPDATE_ALL_CANCELED"), QStringLiteral("UPDATE_ALL_CANCELED"),
                                        QStringLiteral("AUTO"));
    m_checkForUpdateAllTimer.stop();
    QList<UpdateJob *> queued;
    {
        const QMutexLocker lock(&m_mutex);
        queued.swap(m_updateAllApps);
    }
    for (UpdateJob *job : std::as_const(queued)) {
        job->cancel();
    }
    vlLog(QStringLiteral("canceled ()"));
    emit buttonStateChanged(updateAllButtonState(0, 0));
    emit emptied();
}

void VLUpdateAllQueue::removeAppFromUpdateAllQueue(const VLApp *app)
{
    bool empty = false;
    bool removed = false;
    {
        const QMutexLocker lock(&m_mutex);
        removed = m_updateAllApps.removeIf([app](const UpdateJob *job) { return job->app().get() == app; }) > 0;
        empty = m_updateAllApps.isEmpty();
    }
    if (!removed) {
        return;
    }
    VLNotificationCenter::defaultCenter().post(QStringLiteral("VLAppInstallCompletedReload"));
    if (empty) {
        m_checkForUpdateAllTimer.stop();
        emit emptied();
    } else {
        startWaitingBlock(); // a place may have come free
    }
}

void VLUpdateAllQueue::removeAppFromUpdateAllQueueNotifiationHandler(const QVariant &object)
{
    if (const auto *app = object.value<VLApp *>()) {
        removeAppFromUpdateAllQueue(app);
    }
}

VLUpdateAllQueue::Apps VLUpdateAllQueue::updateAllApps() const
{
    const QMutexLocker lock(&m_mutex);
    Apps apps;
    for (const UpdateJob *job : m_updateAllApps) {
        apps.append(job->app());
    }
    return apps;
}
