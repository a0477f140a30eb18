#include "cli/UpdateRun.h"

#include "cli/CliFeedback.h"
#include "cli/CliProgressBoard.h"
#include "cli/RecordLines.h"
#include "install/UpdateRows.h"
#include "install/VLUpdateAllQueue.h"
#include "platform/TerminationSignals.h"
#include "scan/VLScanData.h"

#include <QEventLoop>
#include <QHash>

#include <unistd.h>

UpdateRun::UpdateRun(CommandContext &ctx, VLScanData &store, bool answerYes)
    : m_ctx(ctx), m_store(store), m_answerYes(answerYes)
{
}

int UpdateRun::run(const AppList &apps, bool asUpdateAll)
{
    CliFeedback feedback(m_ctx.err);
    CliProgressBoard board(m_ctx.err, feedback.outputLock(), isatty(STDERR_FILENO) != 0);
    feedback.setAnswerYes(m_answerYes);
    feedback.setBeforePrinting([&board] { board.finish(); });
    QEventLoop loop;
    QHash<VLApp *, UpdateJob *> jobOf;
    UpdateJobs jobs;
    VLUpdateAllQueue queue(jobs);
    // Done when nothing waits and every job has ended with its thread (a cancelled one turns until it sees the flag).
    const auto quitWhenDone = [&] {
        if (queue.updateAllApps().isEmpty() &&
            std::all_of(jobOf.cbegin(), jobOf.cend(), [](const UpdateJob *job) { return job->isFinished(); })) {
            loop.quit();
        }
    };
    QObject::connect(&jobs, &UpdateJobs::added, &loop, [&](UpdateJob *job) {
        jobOf.insert(job->app().get(), job);
        UpdateRows::follow(*job, *board.add(job->app()->displayName));
        QObject::connect(job, &UpdateJob::finished, &loop, quitWhenDone);
    });
    QObject::connect(&queue, &VLUpdateAllQueue::emptied, &loop, quitWhenDone);
    // Ctrl-C cancels what runs and what waits; the stored scan still learns what was installed before.
    TerminationSignals termination;
    QObject::connect(&termination, &TerminationSignals::received, &queue, &VLUpdateAllQueue::cancelUpdateAll);
    {
        const QMutexLocker lock(&m_store.mutex());
        if (asUpdateAll) {
            queue.updateAll(apps);
        } else {
            queue.addToQueue(apps);
        }
    }
    if (!queue.updateAllApps().isEmpty()) {
        loop.exec();
    }
    board.finish();
    feedback.setBeforePrinting({}); // the board goes first

    QHash<VLApp *, UpdateOutcome> outcomes;
    for (auto job = jobOf.cbegin(); job != jobOf.cend(); ++job) {
        if (job.value()->isFinished()) {
            outcomes.insert(job.key(), job.value()->outcome());
        }
    }
    const bool saved = applyToStore(outcomes, apps);
    bool allInstalled = saved;
    for (const AppRef &app : apps) {
        const UpdateOutcome outcome = outcomes.value(app.get());
        if (!outcome.installedPath.isEmpty()) {
            m_ctx.out << recordLine({app->displayName, app->localVersion, outcome.installedPath}) << '\n';
            continue;
        }
        const UpdateJob *job = jobOf.value(app.get());
        // An app left out on purpose is no failure: the run succeeds when every update that ran did.
        if (VLUpdateAllQueue::leavesOut(*app) || outcome.skipped) {
            const QString reason =
                outcome.skipped && job ? job->failMessage() : Cli::tr("this app is never updated from here");
            m_ctx.err << "skipped: " << app->displayName << ": " << reason << '\n';
            continue;
        }
        allInstalled = false;
        QString reason = job ? job->failMessage() : QString();
        if (!outcomes.contains(app.get()) || !job) {
            reason = Cli::tr("not updated");
        } else if (job->status() == UpdateStatus::Cancelled) {
            reason = Cli::tr("canceled");
        } else if (reason.isEmpty()) {
            reason = Cli::tr("nothing was installed");
        }
        m_ctx.err << "error: " << app->displayName << ": " << reason << '\n';
    }
    return allInstalled ? ExitSuccess : ExitFailure;
}

bool UpdateRun::applyToStore(const QHash<VLApp *, UpdateOutcome> &outcomes, const AppList &apps)
{
    const VLScanData::Change change(m_store);
    const QMutexLocker lock(&m_store.mutex());
    const AppList stored = m_store.apps().value_or(AppList());
    bool changed = false;
    for (const AppRef &app : apps) {
        const auto outcome = outcomes.constFind(app.get());
        if (outcome == outcomes.cend()) {
            continue;
        }
        // The record itself, for the lines printed; the store's own (the same unless it was reloaded), for the file.
        VLAppDownload::applyOutcome(*app, *outcome);
        for (const AppRef &record : stored) {
            if (record != app && record->digestString == app->digestString) {
                VLAppDownload::applyOutcome(*record, *outcome);
            }
        }
        changed = changed || stored.contains(app) ||
                  std::any_of(stored.cbegin(), stored.cend(),
                              [&app](const AppRef &record) { return record->digestString == app->digestString; });
    }
    if (changed && !m_store.saveDataToDisk()) {
        m_ctx.err << "error: " << Cli::tr("the stored scan could not be written") << '\n';
        return false;
    }
    return true;
}
