#include "install/UpdateJobs.h"

UpdateJobs::UpdateJobs(JobMaker maker, QObject *parent) : QObject(parent), m_maker(std::move(maker))
{
    if (!m_maker) {
        m_maker = [](const std::shared_ptr<VLApp> &app) { return new UpdateJob(app); };
    }
}

UpdateJobs::~UpdateJobs()
{
    // Running jobs are cancelled and waited for, before the records they work on may go.
    qDeleteAll(m_jobs);
}

UpdateJob *UpdateJobs::add(const std::shared_ptr<VLApp> &app)
{
    if (UpdateJob *existing = jobFor(app.get())) {
        if (!isUpdateEnded(existing->status())) {
            return nullptr;
        }
        remove(existing);
    }
    UpdateJob *job = m_maker(app);
    job->setParent(nullptr);
    m_jobs.append(job);
    emit added(job);
    return job;
}

UpdateJob *UpdateJobs::jobFor(const VLApp *app) const
{
    for (UpdateJob *job : m_jobs) {
        if (job->app().get() == app) {
            return job;
        }
    }
    return nullptr;
}

bool UpdateJobs::isUpdating(const VLApp &app) const
{
    const UpdateJob *job = jobFor(&app);
    return job && !isUpdateEnded(job->status());
}

void UpdateJobs::clearEnded()
{
    const QList<UpdateJob *> jobs = m_jobs;
    for (UpdateJob *job : jobs) {
        if (isUpdateEnded(job->status())) {
            remove(job);
        }
    }
}

void UpdateJobs::remove(UpdateJob *job)
{
    emit removing(job);
    m_jobs.removeOne(job);
    // Its own signals may still be on their way to it.
    job->deleteLater();
}
