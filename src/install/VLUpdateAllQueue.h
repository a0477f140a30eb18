#pragma once

// "Update All": every outdated record queued, at most three updating at once. New updates start one per turn of the
// owner's event loop; while three run, the queue is looked at again every two seconds. Lives on the thread that owns
// the records' list (the desktop program's UI thread, velmora-cli's main thread); the counts may be read from any
// thread.

#include "model/VLApp.h"

#include <QList>
#include <QMutex>
#include <QObject>
#include <QTimer>

#include <functional>
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
    // Starts the update of app on a thread of its own and calls finished on the queue's thread when it has ended
    // (the per-app update runner, or a stand-in).
    using Starter = std::function<void(const std::shared_ptr<VLApp> &app, std::function<void()> finished)>;

    static constexpr int kMaxInProgress = 3;
    static constexpr int kRecheckMs = 2000;
    // This catalogue id is never queued.
    static constexpr char kNeverQueued[] = "8544";

    explicit VLUpdateAllQueue(Starter starter, QObject *parent = nullptr);

    // The queue leaves this record out by rule, whatever it is asked.
    static bool leavesOut(const VLApp &app) { return app.vlID == QLatin1String(kNeverQueued); }

    // Queues the outdated records in the list's sort order (setting "listSort") and starts.
    void updateAll(Apps outdatedApps);
    // Queues records in the order given and starts, as one app's own update does.
    void addToQueue(const Apps &apps);
    void startWaitingUpdates();
    int numberOfUpdatesInProgress() const;
    int numberOfUpdatesWaiting() const;
    void cancelUpdateAll();
    void removeAppFromUpdateAllQueue(const VLApp *app);
    Apps updateAllApps() const;
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
    // The caller holds m_mutex.
    int countInProgress() const;

    Starter m_starter;
    mutable QMutex m_mutex;
    Apps m_updateAllApps;
    QTimer m_checkForUpdateAllTimer;
};
