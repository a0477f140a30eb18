// The Update-All queue with stand-in updates that wait until the test lets them end: never more than three at once,
// every record updated once, the id that is never queued left out, a record already updating left alone, and the
// queue always drains (emptied comes, no re-run loop) however its records end: run to the end, all cancelled, or one
// cancelled from its row while it waits.

#include "install/VLUpdateAllQueue.h"
#include "platform/VLSettings.h"
#include "support/DataTable.h"
#include "support/TestMain.h"

#include <QSemaphore>

class TestVLUpdateAllQueue : public QObject
{
    Q_OBJECT

private slots:
    // The analytics hits these steps send are not what is tested here.
    void initTestCase() { QVERIFY(VLSettings().setValue(QLatin1String(SettingKey::sendAnalytics), false)); }

    void updateAll_data()
    {
        columns<QString, int>("ending", "started");
        row("ten run to the end", "run", 10);
        row("all cancelled while the fourth runs", "cancel all", 4);
        row("a waiting one cancelled from its row", "cancel waiting", 9);
    }

    void updateAll()
    {
        auto [ending, expectStarted] = fetch<QString, int>("ending", "started");
        QSemaphore ends; // one token lets one stand-in update end
        QList<const VLApp *> started;
        QMutex startedLock;
        const auto startedSoFar = [&] {
            const QMutexLocker lock(&startedLock);
            return started;
        };
        UpdateJobs jobs([&](const std::shared_ptr<VLApp> &app) {
            return new UpdateJob(app, [&, app](UpdateState &state) {
                {
                    const QMutexLocker lock(&startedLock);
                    started.append(app.get());
                }
                while (!state.isCancelled() && !ends.tryAcquire(1, 5)) {
                }
                return UpdateOutcome();
            });
        });
        VLUpdateAllQueue::Apps apps;
        for (int i = 0; i < 12; ++i) {
            auto app = std::make_shared<VLApp>();
            app->vlID = i == 10 ? QStringLiteral("8544") : QString::number(6000 + i);
            apps.append(app);
        }
        UpdateJob *own = jobs.add(apps.last()); // already updating on its own
        QVERIFY(own->start());

        VLUpdateAllQueue queue(jobs);
        int mostAtOnce = 0;
        int reruns = 0;
        bool emptied = false;
        connect(&queue, &VLUpdateAllQueue::buttonStateChanged, this, [&] {
            ++reruns;
            mostAtOnce = std::max(mostAtOnce, queue.numberOfUpdatesInProgress());
        });
        connect(&queue, &VLUpdateAllQueue::emptied, this, [&] { emptied = true; });
        queue.updateAll(apps);
        QCOMPARE(queue.updateAllApps().size(), 10);
        QVERIFY(!queue.updateAllApps().contains(apps.at(10)) && !queue.updateAllApps().contains(apps.last()));
        QCOMPARE(jobs.jobFor(apps.last().get()), own);
        own->cancel(); // out of the way of the queue's own updates

        QVERIFY(QTest::qWaitFor([&] { return queue.numberOfUpdatesInProgress() == VLUpdateAllQueue::kMaxInProgress; }));
        if (ending == QLatin1String("cancel all")) {
            ends.release(1);
            QVERIFY(
                QTest::qWaitFor([&] { return queue.numberOfUpdatesInProgress() == 3 && startedSoFar().size() == 5; }));
            queue.cancelUpdateAll();
            QVERIFY(queue.updateAllApps().isEmpty() && !queue.isRecheckScheduled());
        } else {
            if (ending == QLatin1String("cancel waiting")) {
                UpdateJob *waiting = jobs.jobFor(apps.at(5).get());
                QCOMPARE(waiting->status(), UpdateStatus::Queued);
                waiting->cancel();
            }
            ends.release(100);
        }
        QVERIFY(QTest::qWaitFor([&] { return emptied; }));
        QVERIFY(QTest::qWaitFor([&] {
            const auto all = jobs.jobs();
            return std::all_of(all.cbegin(), all.cend(), [](const UpdateJob *job) {
                return job->isFinished() || job->status() == UpdateStatus::Queued;
            });
        }));
        const QList<const VLApp *> seen = startedSoFar();
        const qsizetype startedOfQueue = seen.size() - 1; // the record's own update
        QCOMPARE(startedOfQueue, expectStarted);
        for (int i = 0; i < 10; ++i) {
            QVERIFY(isUpdateEnded(jobs.jobFor(apps.at(i).get())->status()));
        }
        QCOMPARE(QSet<const VLApp *>(seen.cbegin(), seen.cend()).size(), seen.size());
        QVERIFY(!seen.contains(apps.at(10).get()));
        QVERIFY(mostAtOnce <= VLUpdateAllQueue::kMaxInProgress);
        QVERIFY2(reruns < 60, qPrintable(QString::number(reruns))); // one look per start and per end, no busy loop
        QCOMPARE(queue.buttonState(), UpdateAllButton::Cancel);
        QVERIFY(!queue.isRecheckScheduled());
    }
};

VELMORA_TEST_MAIN(TestVLUpdateAllQueue)
#include "TestVLUpdateAllQueue.moc"
