#pragma once

// Where one update stands, shared by its worker (which downloads and installs) and its job (which shows it on the
// owner's thread). Every member may be called from any thread. The failure text is kept apart from the status until
// the worker ends: an installation step may still take a failure back (a tar archive that unpacked is not a failed
// update), so only finish() turns it into the Failed status.

#include <QMutex>
#include <QString>

#include <atomic>
#include <functional>
#include <optional>

enum class UpdateStatus { Queued, Downloading, Installing, Done, Failed, Cancelled };
// What moves an update on: the worker starts, the file is complete, the user cancels, the worker ends.
enum class UpdateStep { Start, Install, Cancel, Fail, Succeed };

// The status after step; a step that does not apply leaves it. A job runs once; cancelling is possible until the
// file is complete.
UpdateStatus updateStatusAfter(UpdateStatus status, UpdateStep step);
bool isUpdateActive(UpdateStatus status);
bool isUpdateEnded(UpdateStatus status);

class UpdateState
{
public:
    // Called after every change, on the thread that made it, with the new status when the status changed, else with
    // none (progress, failure text); set before the worker starts.
    using Listener = std::function<void(std::optional<UpdateStatus> status)>;
    void setListener(Listener listener) { m_listener = std::move(listener); }

    UpdateStatus status() const;
    // false when the step did not apply.
    bool step(UpdateStep step);
    // Fraction 0..1 of the file received; more when the host did not say the size.
    double progress() const { return m_progress.load(); }
    void setProgress(double fraction);

    // Cancelling takes effect at once for the views; the worker sees the flag and stops.
    bool cancel();
    const std::atomic<bool> *cancelFlag() const { return &m_cancelled; }
    bool isCancelled() const { return m_cancelled.load(); }

    void fail(const QString &message);
    void clearFailure();
    bool hasFailed() const;
    QString failMessage() const;
    // The worker's last step: Failed when a failure stands, else Done (an update cancelled meanwhile stays so).
    void finish();

private:
    void changed(std::optional<UpdateStatus> status = std::nullopt) const;

    mutable QMutex m_mutex;
    UpdateStatus m_status = UpdateStatus::Queued;
    bool m_failed = false;
    QString m_failMessage;
    std::atomic<double> m_progress{0.0};
    std::atomic<bool> m_cancelled{false};
    Listener m_listener;
};
