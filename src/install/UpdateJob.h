#pragma once

// One update as the views see it: a record, a status, the fraction downloaded and the failure text. The job is
// made, started, cancelled and read on its owner's thread (the thread that owns the record's list), and its signals
// arrive there; the work itself (download, check, installation) runs on a thread of the job's own. When finished
// has come, outcome() holds what the owner applies to the record under its list's lock (VLAppDownload::applyOutcome).

#include "install/UpdateState.h"
#include "install/VLAppDownload.h"

#include <QObject>

#include <functional>
#include <memory>

class QThread;

class UpdateJob : public QObject
{
    Q_OBJECT

public:
    // The work of one update on its thread; it reports through the state and answers what the owner applies.
    using Work = std::function<UpdateOutcome(UpdateState &state)>;

    // The record's download and installation; reads the record's catalogue facts now: make it under the list's lock.
    explicit UpdateJob(std::shared_ptr<VLApp> app, QObject *parent = nullptr);
    UpdateJob(std::shared_ptr<VLApp> app, Work work, QObject *parent = nullptr);
    // Cancels a running update and waits for its thread.
    ~UpdateJob() override;

    // Starts a queued job; false when it has been started or cancelled before.
    bool start();
    // Stops the job if it is queued or downloading; a job that is installing goes on. "VLDownloadCanceled" is posted
    // with the record when the cancel takes effect.
    void cancel();

    const std::shared_ptr<VLApp> &app() const { return m_app; }
    UpdateStatus status() const { return m_state.status(); }
    bool isActive() const { return isUpdateActive(status()); }
    double progress() const { return m_state.progress(); }
    QString failMessage() const { return m_state.failMessage(); }
    // finished has been emitted.
    bool isFinished() const { return m_finishedSent; }
    // Valid once finished has been emitted.
    const UpdateOutcome &outcome() const { return m_outcome; }

    // What a progress bar shows for fraction: a bar that stays empty looks stuck, so the first few percent are
    // nudged forward.
    static double barValue(double fraction);

signals:
    void statusChanged(UpdateStatus status);
    void progressChanged(double fraction);
    // The job has ended (done, failed or cancelled) and its thread, if it had one, is gone.
    void finished();

private:
    void publishProgress();
    void publishStatus(UpdateStatus status);

    std::shared_ptr<VLApp> m_app;
    Work m_work;
    UpdateState m_state;
    std::unique_ptr<QThread> m_thread;
    UpdateOutcome m_outcome;
    std::atomic<bool> m_publishPending{false};
    double m_shownProgress = 0.0;
    bool m_finishedSent = false;
};
