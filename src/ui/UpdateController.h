#pragma once

// The desktop program's updates: one job per record (UpdateJobs) and one queue for the panel's rows, the window's
// rows and Update All, at most three running at once. Lives on the UI thread, which owns the jobs and gets their
// signals; a finished update's outcome goes into the stored scan, which is saved.

#include "install/UpdateJobs.h"
#include "install/VLUpdateAllQueue.h"
#include "scan/AppList.h"

#include <QObject>

class UpdateJob;
class VLMainWindowController;

class UpdateController : public QObject
{
    Q_OBJECT

public:
    explicit UpdateController(VLMainWindowController &driver, QObject *parent = nullptr);
    ~UpdateController() override;

    void updateApp(const AppRef &app);
    void updateAll();
    void cancelUpdate(const AppRef &app);
    void cancelUpdateAll();
    const VLUpdateAllQueue &queue() const { return m_queue; }
    // The record's running or last update; null when it had none in this run.
    const UpdateJob *jobFor(const VLApp *app) const { return m_jobs.jobFor(app); }
    bool isUpdating(const VLApp *app) const { return app && m_jobs.isUpdating(*app); }

signals:
    void progressChanged(const AppRef &app, double fraction);
    // Queued, started, became uncancellable, or ended: the rows show the job's state again.
    void stateChanged(const AppRef &app);
    void updateFinished(const AppRef &app);
    void buttonStateChanged(UpdateAllButton state);

private:
    void follow(UpdateJob *job);
    void finish(UpdateJob *job);

    VLMainWindowController &m_driver;
    UpdateJobs m_jobs;
    VLUpdateAllQueue m_queue;
};
