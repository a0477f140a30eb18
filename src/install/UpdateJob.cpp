#include "install/UpdateJob.h"

#include "install/QuitAndRelaunchGate.h"
#include "platform/VLNotificationCenter.h"
#include "services/VLGoogleTracking.h"

#include <QThread>

UpdateJob::UpdateJob(std::shared_ptr<VLApp> app, QObject *parent) : UpdateJob(std::move(app), Work(), parent)
{
    auto gate = std::make_shared<QuitAndRelaunchGate>(&m_state, m_app->vlID);
    auto download = std::make_shared<VLAppDownload>(m_app, m_state, gate.get());
    m_work = [gate, download](UpdateState &) {
        download->download();
        UpdateOutcome outcome = download->outcome();
        outcome.skipped = gate->declined();
        return outcome;
    };
}

UpdateJob::UpdateJob(std::shared_ptr<VLApp> app, Work work, QObject *parent)
    : QObject(parent), m_app(std::move(app)), m_work(std::move(work))
{
    // Every status reaches the views; progress only as often as the owner's thread takes it.
    m_state.setListener([this](std::optional<UpdateStatus> status) {
        if (status) {
            QMetaObject::invokeMethod(
                this, [this, status] { publishStatus(*status); }, Qt::QueuedConnection);
        } else if (!m_publishPending.exchange(true)) {
            QMetaObject::invokeMethod(this, &UpdateJob::publishProgress, Qt::QueuedConnection);
        }
    });
}

UpdateJob::~UpdateJob()
{
    if (m_thread && m_thread->isRunning()) {
        m_state.cancel();
        m_thread->wait();
    }
}

bool UpdateJob::start()
{
    if (!m_state.step(UpdateStep::Start)) {
        return false;
    }
    m_thread.reset(QThread::create([this] {
        m_outcome = m_work(m_state);
        m_state.finish();
    }));
    m_thread->setObjectName(QStringLiteral("update ") + m_app->displayName);
    // Queued after every status the worker reported, so finished comes last.
    connect(
        m_thread.get(), &QThread::finished, this,
        [this] {
            publishProgress();
            m_finishedSent = true;
            emit finished();
        },
        Qt::QueuedConnection);
    m_thread->start();
    return true;
}

void UpdateJob::cancel()
{
    VLGoogleTracking::trackProgramEvent(QStringLiteral("CANCEL_UPDATE_APP"));
    if (m_state.cancel()) {
        VLNotificationCenter::defaultCenter().post(QStringLiteral("VLDownloadCanceled"),
                                                   QVariant::fromValue(m_app.get()));
    }
}

double UpdateJob::barValue(double fraction)
{
    return fraction < 0.07 ? fraction + 0.003 : fraction;
}

void UpdateJob::publishProgress()
{
    m_publishPending = false;
    const double progress = m_state.progress();
    if (progress != m_shownProgress) {
        m_shownProgress = progress;
        emit progressChanged(progress);
    }
}

void UpdateJob::publishStatus(UpdateStatus status)
{
    publishProgress();
    emit statusChanged(status);
    // A job cancelled before it started has no thread to wait for.
    if (isUpdateEnded(status) && !m_thread && !m_finishedSent) {
        m_finishedSent = true;
        emit finished();
    }
}
