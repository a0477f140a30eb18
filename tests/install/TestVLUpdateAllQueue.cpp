// The Update-All queue with stand-in updates that take a moment each: never more than three at once, every record
// updated once, the id that is never queued left out, a running update neither queued again nor reset, and a
// cancelled queue that stays empty.

#include "install/VLUpdateAllQueue.h"
#include "platform/VLSettings.h"
#include "support/DataTable.h"
#include "support/TestMain.h"

#include <QTimer>

class TestVLUpdateAllQueue : public QObject
{
    Q_OBJECT

private slots:
    // The analytics hits these steps send are not what is tested here.
    void initTestCase() { QVERIFY(VLSettings().setValue(QLatin1String(SettingKey::sendAnalytics), false)); }

    void updateAll_data()
    {
        columns<bool>("cancelAfterFirst");
        row("ten run to the end", false);
        row("cancelled after the first start", true);
    }

    void updateAll()
    {
        QFETCH(bool, cancelAfterFirst);
        VLUpdateAllQueue::Apps apps;
        for (int i = 0; i < 12; ++i) {
            auto app = std::make_shared<VLApp>();
            app->vlID = i == 10 ? QStringLiteral("8544") : QString::number(6000 + i);
            app->didFail = true; // left by an earlier try: cleared when queued
            apps.append(app);
        }
        apps.last()->isDownloading = true; // already updating on its own
        apps.last()->didFail = false;
        apps.last()->didCancel = true;

        QList<const VLApp *> started;
        int mostAtOnce = 0;
        VLUpdateAllQueue *queueRef = nullptr;
        VLUpdateAllQueue queue([&](const std::shared_ptr<VLApp> &app, std::function<void()> finished) {
            started.append(app.get());
            mostAtOnce = std::max(mostAtOnce, queueRef->numberOfUpdatesInProgress());
            QTimer::singleShot(100, queueRef, [app, finished] {
                app->isDownloading = false;
                finished();
            });
        });
        queueRef = &queue;
        bool emptied = false;
        connect(&queue, &VLUpdateAllQueue::emptied, this, [&] { emptied = true; });
        queue.updateAll(apps);
        QCOMPARE(queue.updateAllApps().size(), 10);
        QVERIFY(!queue.updateAllApps().contains(apps.at(10)) && !queue.updateAllApps().contains(apps.last()));
        QVERIFY(apps.last()->didCancel && apps.last()->isDownloading);

        if (cancelAfterFirst) {
            QVERIFY(QTest::qWaitFor([&] { return !started.isEmpty(); }, 5000));
            queue.cancelUpdateAll();
            QVERIFY(queue.updateAllApps().isEmpty());
            const qsizetype startedBefore = started.size();
            QTest::qWait(2 * VLUpdateAllQueue::kRecheckMs + 500);
            QCOMPARE(started.size(), startedBefore);
            QVERIFY(
                std::all_of(apps.cbegin(), apps.cbegin() + 10, [](const auto &app) { return app->didCancel.load(); }));
        } else {
            QVERIFY(QTest::qWaitFor([&] { return emptied; }, 60000));
            QCOMPARE(started.size(), 10);
            QCOMPARE(QSet<const VLApp *>(started.cbegin(), started.cend()).size(), 10);
        }
        QVERIFY(emptied);
        QVERIFY(mostAtOnce <= VLUpdateAllQueue::kMaxInProgress);
        QVERIFY(!started.contains(apps.at(10).get()) && !started.contains(apps.last().get()));
        QCOMPARE(queue.buttonState(), UpdateAllButton::Cancel);
    }
};

VELMORA_TEST_MAIN(TestVLUpdateAllQueue)
#include "TestVLUpdateAllQueue.moc"
