#include "cli/UpdateRun.h"

#include "cli/CliFeedback.h"
#include "cli/CliProgressBoard.h"
#include "cli/RecordLines.h"
#include "install/VLUpdateAllQueue.h"
#include "install/VLUpdateRunner.h"
#include "platform/TerminationSignals.h"
#include "platform/VLNotificationCenter.h"
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
    QObject context;
    VLNotificationCenter::defaultCenter().subscribe(
        QStringLiteral("VLShowSystemNotification"), &context, [&feedback](const QVariant &object) {
            const QStringList notice = object.toStringList();
            feedback.showSystemNotification(notice.value(0), notice.value(1), notice.value(2));
        });
    QEventLoop loop;
    std::vector<std::unique_ptr<VLUpdateRunner>> runners;
    QHash<VLApp *, UpdateOutcome> outcomes;
    int running = 0;
    VLUpdateAllQueue queue([&](const AppRef &app, std::function<void()> finished) {
        VLUpdateRunner *runner = nullptr;
        {
            const QMutexLocker lock(&m_store.mutex());
            runner = new VLUpdateRunner(app, board.add(app->displayName));
        }
        runners.emplace_back(runner);
        ++running;
        QObject::connect(runner, &VLUpdateRunner::finished, &loop, [&, runner, app, finished] {
            outcomes.insert(app.get(), runner->outcome());
            --running;
            finished();
            if (running == 0 && queue.updateAllApps().isEmpty()) {
                loop.quit();
            }
        });
        runner->start();
    });
    QObject::connect(&queue, &VLUpdateAllQueue::emptied, &loop, [&] {
        if (running == 0) {
            loop.quit();
        }
    });
    // Ctrl-C cancels what runs and what waits; the stored scan still learns what was installed before.
    TerminationSignals termination;
    QObject::connect(&termination, &TerminationSignals::received, &queue, &VLUpdateAllQueue::cancelUpdateAll);

    if (asUpdateAll) {
        queue.updateAll(apps);
    } else {
        queue.addToQueue(apps);
    }
    if (running > 0 || !queue.updateAllApps().isEmpty()) {
        loop.exec();
    }
    board.finish();
    feedback.setBeforePrinting({}); // the board goes first

    const bool saved = applyToStore(outcomes, apps);
    bool allInstalled = saved;
    for (const AppRef &app : apps) {
        const UpdateOutcome outcome = outcomes.value(app.get());
        if (!outcome.installedPath.isEmpty()) {
            m_ctx.out << recordLine({app->displayName, app->localVersion, outcome.installedPath}) << '\n';
            continue;
        }
        // An app left out on purpose is no failure: the run succeeds when every update that ran did.
        if (VLUpdateAllQueue::leavesOut(*app) || outcome.skipped) {
            const QString reason =
                outcome.skipped ? app->failMessage.load() : Cli::tr("this app is never updated from here");
            m_ctx.err << "skipped: " << app->displayName << ": " << reason << '\n';
            continue;
        }
        allInstalled = false;
        QString reason = app->failMessage;
        if (!outcomes.contains(app.get())) {
            reason = Cli::tr("not updated");
        } else if (app->didCancel) {
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
