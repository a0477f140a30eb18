// A click on one of our notices: the notices about updates (from a check or an update) open the panel, the others
// are only counted; either way the delivered notices are taken away, so a second click on the same one is not ours.

#include "platform/VLSettings.h"
#include "scan/NotificationClicks.h"
#include "support/DataTable.h"
#include "support/RecordingFeedback.h"
#include "support/TestMain.h"

class TestNotificationClicks : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(VLSettings().setValue(QLatin1String(SettingKey::sendAnalytics), false)); }

    void click_data()
    {
        columns<QString, QString, bool>("title", "text", "opensPanel");
        row("foreground check", "3 new updates are available", "Scanning Complete", true);
        row("background check, one", "1 new update is available", "Update your app now", true);
        row("an update", "Update Complete", "Foo has been updated", true);
        row("a package installed", "Install Complete", "Foo has been installed", false);
    }

    void click()
    {
        auto [title, text, opensPanel] = fetch<QString, QString, bool>("title", "text", "opensPanel");
        RecordingFeedback front;
        NotificationClicks clicks;
        int panels = 0;
        connect(&clicks, &NotificationClicks::showUpdatesPanel, this, [&panels] { ++panels; });
        const quint32 id = front.showSystemNotification(title, text, QStringLiteral("View"));
        QVERIFY(UserFeedback::noticeClicked(id));
        QCoreApplication::processEvents();
        QCOMPARE(panels, opensPanel ? 1 : 0);
        QVERIFY(!UserFeedback::noticeClicked(id));
    }
};

VELMORA_TEST_MAIN(TestNotificationClicks)
#include "TestNotificationClicks.moc"
