// Start-up under the test clock: when a launch scans, the periodic timers, the previous agent's removal, the login
// item and the settings every start writes. Hosts point where nothing listens, so a check that starts ends quickly.

#include "model/DateDescription.h"
#include "platform/LoginItem.h"
#include "platform/VLSettings.h"
#include "scan/VLAppDelegate.h"
#include "scan/VLMainWindowController.h"
#include "scan/VLScanData.h"
#include "support/DataTable.h"
#include "support/HostSettings.h"
#include "support/PlistFiles.h"
#include "support/TestClock.h"
#include "support/TestMain.h"

#include <QDir>
#include <QSignalSpy>

namespace {

constexpr int kWaitMs = 30000;

// A store whose first record was matched age seconds before the clock's now; none at all for age < 0.
void storeMatchedAgo(const TestClock &clock, int age)
{
    QFile::remove(VLScanData::pathForDataFile());
    if (age < 0) {
        return;
    }
    VLScanData store;
    VLScanData::Change change(store);
    auto app = std::make_shared<VLApp>();
    app->localPath = QStringLiteral("/Applications/Kept.app");
    app->lastmatched = dateDescription(clock.now().addSecs(-age));
    store.setApps(AppList{app});
    QVERIFY(store.saveDataToDisk());
}

} // namespace

class TestStartUp : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        pointHostsAt(QStringLiteral("http://127.0.0.1:1"),
                     {SettingKey::serviceHost, SettingKey::siteHost, SettingKey::analyticsHost, SettingKey::dealsHost});
        VLSettings().setValue(QString::fromLatin1(SettingKey::volumeRoot),
                              QString(QDir::homePath() + QStringLiteral("/none")));
    }

    void launchScans_data()
    {
        columns<int, bool, bool>("age", "loginItem", "scans");
        QTest::newRow("first start: no store") << -1 << false << true;
        QTest::newRow("matched 14399 s ago") << 14399 << false << false;
        QTest::newRow("matched 14401 s ago") << 14401 << false << true;
        QTest::newRow("14401 s, started by the login item") << 14401 << true << false;
        QTest::newRow("first start by the login item") << -1 << true << false;
    }

    void launchScans()
    {
        auto [age, loginItem, scans] = fetch<int, bool, bool>("age", "loginItem", "scans");
        TestClock clock;
        storeMatchedAgo(clock, age);
        VLMainWindowController driver;
        QSignalSpy started(&driver, &VLMainWindowController::checkStarted);
        QSignalSpy finished(&driver, &VLMainWindowController::checkFinished);
        driver.loadScanDataOrRunScan(loginItem);
        QVERIFY(finished.wait(kWaitMs));
        QCOMPARE(started.count(), int(scans));
        QCOMPARE(driver.donescanning(), true);
    }

    void periodicTimers_data()
    {
        columns<int, int, int, int>("seconds", "fastChecks", "watchLists", "promos");
        row("just before every first tick", 2999, 0, 0, 0);
        row("watch list at 3000 s", 3000, 0, 1, 0);
        row("fast check at 3400 s", 3400, 1, 1, 0);
        row("deals at 3600 s", 3600, 1, 1, 1);
    }

    void periodicTimers()
    {
        auto [seconds, fastChecks, watchLists, promos] =
            fetch<int, int, int, int>("seconds", "fastChecks", "watchLists", "promos");
        TestClock clock;
        storeMatchedAgo(clock, 0);
        VLMainWindowController driver;
        VLAppDelegate delegate(driver, {QStringLiteral("velmora"), QStringLiteral("--login-item")});
        QSignalSpy started(&driver, &VLMainWindowController::checkStarted);
        QSignalSpy finished(&driver, &VLMainWindowController::checkFinished);
        QSignalSpy watchListTicks(&delegate, &VLAppDelegate::updateWatchListBackground);
        QSignalSpy promoTicks(&delegate, &VLAppDelegate::updatePromosBackground);
        delegate.applicationDidFinishLaunching(true);
        QVERIFY(finished.wait(kWaitMs)); // the stored scan is shown, no check
        clock.advance(qint64(seconds) * 1000);
        QCOMPARE(started.count(), fastChecks);
        QCOMPARE(watchListTicks.count(), watchLists);
        QCOMPARE(promoTicks.count(), promos);
        QTRY_VERIFY_WITH_TIMEOUT(driver.donescanning(), kWaitMs);
    }

    void previousAgentAndLoginItem_data()
    {
        columns<bool>("startupItem");
        row("login item wanted", true);
        row("no login item", false);
    }

    void previousAgentAndLoginItem()
    {
        auto [startupItem] = fetch<bool>("startupItem");
        const QString agent =
            QDir::homePath() + QStringLiteral("/Library/LaunchAgents/com.velmora.desktop5.scanner.plist");
        QVERIFY(PlistFiles::writeFile(agent, "<plist/>"));
        VLSettings().setValue(QString::fromLatin1(SettingKey::startupItem), startupItem);
        TestClock clock;
        storeMatchedAgo(clock, 0);
        VLMainWindowController driver;
        VLAppDelegate delegate(driver, {QStringLiteral("velmora"), QStringLiteral("--login-item")});
        QSignalSpy finished(&driver, &VLMainWindowController::checkFinished);
        delegate.applicationDidFinishLaunching(true);
        QCOMPARE(LoginItem::exists(), startupItem);
        clock.advance(24999);
        QVERIFY(QFile::exists(agent));
        clock.advance(1);
        QVERIFY(!QFile::exists(agent));
        QVERIFY(finished.wait(kWaitMs));
    }

    void settingsOfEveryStart()
    {
        VLSettings settings;
        VLAppDelegate::writeStartupSettings();
        const QString penguin = settings.stringValue(SettingKey::penguin);
        const QString serial = settings.stringValue(SettingKey::serial);
        QVERIFY(!penguin.isEmpty() && !serial.isEmpty());
        settings.setValue(QString::fromLatin1(SettingKey::serial), QStringLiteral("old"));
        VLAppDelegate::writeStartupSettings();
        QCOMPARE(settings.stringValue(SettingKey::serial), serial);
        QCOMPARE(settings.stringValue(SettingKey::penguin), penguin);
    }
};

VELMORA_TEST_MAIN(TestStartUp)
#include "TestStartUp.moc"
