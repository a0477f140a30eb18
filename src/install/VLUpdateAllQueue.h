#pragma once

// "Update All": every outdated record queued, at most three updating at once. New updates start one per turn of the
// owner's event loop; while three run, the queue is looked at again every two seconds. A record leaves the queue
// when its job ends, however it ends (done, failed, or cancelled from its row before or after it started), so what
// waits can always start and the queue empties. Lives on the thread that owns the records' list and their jobs (the
// desktop program's UI thread, velmora-cli's main thread); the counts may be read from any thread.

#include "install/UpdateJobs.h"
#include "platform/Clock.h"

#include <QList>
#include <QMutex>
#include <QObject>

#include <memory>

// What the "Update All" button offers: start the queue, or cancel it. Nothing running and something waiting starts;
// everything else (an update running, or nothing queued at all) cancels.
enum class UpdateAllButton { UpdateAll, Cancel };
UpdateAllButton updateAllButtonState(int inProgress, int waiting);

class VLUpdateAllQueue : public QObject
{
    Q_OBJECT

public:
    using Apps = QList<std::shared_ptr<VLApp>>;

    static constexpr int kMaxInProgress = 3;
    static constexpr int kRecheckMs = 2000;
    // This catalogue id is never queued.
    static constexpr char kNeverQueued[] = "8544";

    // The queue makes its updates' jobs in jobs, which must outlive it.
    explicit VLUpdateAllQueue(UpdateJobs &jobs, QObject *parent = nullptr);

    // The queue leaves this record out by rule, whatever it is asked.
    static bool leavesOut(const VLApp &app) { return app.vlID == QLatin1String(kNeverQueued); }

    // Queues the outdated records in the list's sort order (setting "listSort") and starts.
    void updateAll(const Apps &outdatedApps);
    // Queues records in the order given and starts, as one app's own update does. A record whose update is queued or
    // running already is left as it is. Call under the list's lock: the jobs read the records' catalogue facts.
    void addToQueue(const Apps &apps);
    void startWaitingUpdates();
    int numberOfUpdatesInProgress() const;
    int numberOfUpdatesWaiting() const;
    void cancelUpdateAll();
    void removeAppFromUpdateAllQueue(const VLApp *app);
    // The listener of "VLDownloadCanceled": the cancelled record (the notification's object) leaves the queue.
    void removeAppFromUpdateAllQueueNotifiationHandler(const QVariant &object);
    Apps updateAllApps() const;
    bool isRecheckScheduled() const { return m_checkForUpdateAllTimer.isActive(); }
    UpdateAllButton buttonState() const
    {
        return updateAllButtonState(numberOfUpdatesInProgress(), numberOfUpdatesWaiting());
    }

signals:
    void buttonStateChanged(UpdateAllButton state);
    // The last queued update has ended, or the queue was cancelled.
    void emptied();

private:
    void startWaitingBlock();
    int count(bool (*test)(UpdateStatus)) const;

    UpdateJobs &m_jobs;
    mutable QMutex m_mutex;
    QList<UpdateJob *> m_updateAllApps;
    ClockTimer m_checkForUpdateAllTimer;
};
