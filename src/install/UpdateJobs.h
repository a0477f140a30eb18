#pragma once

// The update jobs of one list's owner, one job per record at a time: what a view lists (a row per job) and what tells
// whether a record is updating. Lives on the thread that owns the records' list, like its jobs; a job stays here,
// ended, until the next update of its record replaces it or clearEnded() drops it.

#include "install/UpdateJob.h"

#include <QList>
#include <QObject>

class UpdateJobs : public QObject
{
    Q_OBJECT

public:
    // Makes the job of one record; the default runs the record's download and installation.
    using JobMaker = std::function<UpdateJob *(const std::shared_ptr<VLApp> &app)>;

    explicit UpdateJobs(JobMaker maker = {}, QObject *parent = nullptr);
    ~UpdateJobs() override;

    // A new queued job for app, replacing its ended one; null when the record's update is queued or running already.
    // Reads the record's catalogue facts: call under the list's lock.
    UpdateJob *add(const std::shared_ptr<VLApp> &app);
    UpdateJob *jobFor(const VLApp *app) const;
    bool isUpdating(const VLApp &app) const;
    QList<UpdateJob *> jobs() const { return m_jobs; }
    void clearEnded();

signals:
    void added(UpdateJob *job);
    // The job is about to be deleted.
    void removing(UpdateJob *job);

private:
    void remove(UpdateJob *job);

    JobMaker m_maker;
    QList<UpdateJob *> m_jobs;
};
