#include "install/VLUpdateAllQueue.h"

#include "install/VLAppDownload.h"
#include "model/AppJson.h"
#include "platform/Log.h"
#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"
#include "services/VLGoogleTracking.h"

#include <QJsonObject>

#include <algorithm>

namespace {

bool isInProgress(const VLApp &app)
{
    return app.isDownloading || app.isInstalling;
}

// The records in the order the list shows them: by the field the list is sorted by, newest first for dates.
void sortByListOrder(VLUpdateAllQueue::Apps &apps)
{
    const QString key = VLSettings().stringValue(SettingKey::listSort);
    const bool descending = key == QLatin1String("sortDate");
    QList<std::pair<QString, std::shared_ptr<VLApp>>> keyed;
    for (const auto &app : std::as_const(apps)) {
        keyed.append({appToJson(*app).value(key).toVariant().toString(), app});
    }
    std::stable_sort(keyed.begin(), keyed.end(), [descending](const auto &a, const auto &b) {
        const int order = QString::localeAwareCompare(a.first, b.first);
        return descending ? order > 0 : order < 0;
    });
    apps.clear();
    for (const auto &entry : std::as_const(keyed)) {
        apps.append(entry.second);
    }
}

} // namespace

UpdateAllButton updateAllButtonState(int inProgress, int waiting)
{
    return inProgress == 0 && waiting > 0 ? UpdateAllButton::UpdateAll : UpdateAllButton::Cancel;
}

VLUpdateAllQueue::VLUpdateAllQueue(Starter starter, QObject *parent) : QObject(parent), m_starter(std::move(starter))
{
    m_checkForUpdateAllTimer.setSingleShot(true);
    m_checkForUpdateAllTimer.setInterval(kRecheckMs);
    connect(&m_checkForUpdateAllTimer, &QTimer::timeout, this, &VLUpdateAllQueue::startWaitingBlock);
}

void VLUpdateAllQueue::updateAll(Apps outdatedApps)
{
    VLGoogleTracking::trackProgramEvent(QStringLiteral("UPDATE_ALL"), QStringLiteral("UPDATE_ALL"),
                                        QStringLiteral("AUTO"));
    sortByListOrder(outdatedApps);
    addToQueue(outdatedApps);
}

void VLUpdateAllQueue::addToQueue(const Apps &apps)
{
    {
        const QMutexLocker lock(&m_mutex);
        for (const auto &app : apps) {
            if (isInProgress(*app)) {
                continue; // already updating: neither reset nor queued twice
            }
            app->didCancel = false;
            app->didFail = false;
            app->isInstalling = false;
            app->isDownloading = false;
            if (!m_updateAllApps.contains(app) && !leavesOut(*app)) {
                m_updateAllApps.append(app);
            }
        }
    }
    startWaitingUpdates();
}

void VLUpdateAllQueue::startWaitingUpdates()
{
    if (numberOfUpdatesInProgress() < kMaxInProgress) {
        std::shared_ptr<VLApp> next;
        {
            const QMutexLocker lock(&m_mutex);
            const auto found = std::find_if(m_updateAllApps.cbegin(), m_updateAllApps.cend(), [](const auto &app) {
                return !isInProgress(*app) && !app->didCancel && !app->didFail;
            });
            if (found != m_updateAllApps.cend()) {
                next = *found;
                // Counted as in progress at once, so the next turn does not start a fourth.
                next->isDownloading = true;
            }
        }
        if (next) {
            m_starter(next, [this, next] { removeAppFromUpdateAllQueue(next.get()); });
        }
    }
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
    const QMutexLocker lock(&m_mutex);
    return countInProgress();
}

int VLUpdateAllQueue::numberOfUpdatesWaiting() const
{
    const QMutexLocker lock(&m_mutex);
    return int(m_updateAllApps.size()) - countInProgress();
}

int VLUpdateAllQueue::countInProgress() const
{
    return int(std::count_if(m_updateAllApps.cbegin(), m_updateAllApps.cend(),
                             [](const auto &app) { return isInProgress(*app); }));
}

void VLUpdateAllQueue::cancelUpdateAll()
{
    VLGoogleTracking::trackProgramEvent(QStringLiteral("UPDATE_ALL_CANCELED"), QStringLiteral("UPDATE_ALL_CANCELED"),
                                        QStringLiteral("AUTO"));
    m_checkForUpdateAllTimer.stop();
    {
        const QMutexLocker lock(&m_mutex);
        for (const auto &app : std::as_const(m_updateAllApps)) {
            VLAppDownload::cancelUpdate(*app);
        }
        m_updateAllApps.clear();
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
        removed = m_updateAllApps.removeIf([app](const auto &queued) { return queued.get() == app; }) > 0;
        empty = m_updateAllApps.isEmpty();
    }
    VLNotificationCenter::defaultCenter().post(QStringLiteral("VLAppInstallCompletedReload"));
    if (removed && empty) {
        m_checkForUpdateAllTimer.stop();
        emit emptied();
    }
}

VLUpdateAllQueue::Apps VLUpdateAllQueue::updateAllApps() const
{
    const QMutexLocker lock(&m_mutex);
    return m_updateAllApps;
}
