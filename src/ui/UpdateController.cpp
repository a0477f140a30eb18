#include "ui/UpdateController.h"

#include "install/UpdateJob.h"
#include "install/VLAppDownload.h"
#include "scan/VLMainWindowController.h"
#include "scan/VLScanData.h"

UpdateController::UpdateController(VLMainWindowController &driver, QObject *parent)
    : QObject(parent), m_driver(driver), m_queue(m_jobs)
{
    connect(&m_queue, &VLUpdateAllQueue::buttonStateChanged, this, &UpdateController::buttonStateChanged);
    connect(&m_jobs, &UpdateJobs::added, this, &UpdateController::follow);
}

UpdateController::~UpdateController()
{
    m_queue.cancelUpdateAll();
}

void UpdateController::updateApp(const AppRef &app)
{
    // A job reads the record's catalogue facts when it is made: under the list's lock.
    const QMutexLocker lock(&m_driver.scanData().mutex());
    m_queue.addToQueue({app});
}

void UpdateController::updateAll()
{
    const QMutexLocker lock(&m_driver.scanData().mutex());
    m_queue.updateAll(m_driver.outdatedApps());
}

void UpdateController::cancelUpdate(const AppRef &app)
{
    // The queue lets go of a job that ends, however it ends.
    if (UpdateJob *job = m_jobs.jobFor(app.get())) {
        job->cancel();
    }
}

void UpdateController::cancelUpdateAll()
{
    m_queue.cancelUpdateAll();
}

void UpdateController::follow(UpdateJob *job)
{
    const AppRef app = job->app();
    connect(job, &UpdateJob::statusChanged, this, [this, app] { emit stateChanged(app); });
    connect(job, &UpdateJob::progressChanged, this,
            [this, app](double fraction) { emit progressChanged(app, fraction); });
    connect(job, &UpdateJob::finished, this, [this, job] { finish(job); });
    emit stateChanged(app);
}

void UpdateController::finish(UpdateJob *job)
{
    const AppRef app = job->app();
    const UpdateOutcome outcome = job->outcome();
    VLScanData &store = m_driver.scanData();
    {
        const VLScanData::Change change(store);
        const QMutexLocker lock(&store.mutex());
        VLAppDownload::applyOutcome(*app, outcome);
        // The panel keeps an updated row with its done mark for a while, counted from here.
        if (!outcome.installedPath.isEmpty()) {
            app->lastupdated = QDateTime::currentDateTimeUtc();
        }
        store.saveDataToDisk();
    }
    emit stateChanged(app);
    emit updateFinished(app);
}
