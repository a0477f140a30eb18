// The driver's member side against the real service and Secret Service: the start-up log-in from the keychain, the
// member in the matching request, the purchases shown again after a scan, a watch-list load queued behind the deals
// (which fail here, and must still let it go on), and log-out.

#include "platform/VLSettings.h"
#include "scan/VLAppDelegate.h"
#include "scan/VLMainWindowController.h"
#include "scan/VLScanData.h"
#include "services/VLAppOnServer.h"
#include "services/VLKeychain.h"
#include "services/VLMemberAccount.h"
#include "support/HostSettings.h"
#include "support/KeyringSession.h"
#include "support/PlistFiles.h"
#include "support/ScriptedHost.h"
#include "support/ServiceProcess.h"

#include <QDir>
#include <QSignalSpy>
#include <QTcpSocket>

class TestDriverMember : public QObject
{
    Q_OBJECT

    ServiceProcess m_service;

private slots:
    void loginWatchListLogout()
    {
        QVERIFY(m_service.start());
        QVERIFY(pointHostsAt(m_service.baseUrl()));
        QVERIFY(pointHostsAt(QStringLiteral("http://127.0.0.1:1"), {SettingKey::dealsHost})); // nothing listens there
        VLSettings settings;
        VLAppDelegate::writeStartupSettings();

        VLMemberAccount member;
        member.signupEmail = QStringLiteral("driver@example.com");
        member.signupPassword = QStringLiteral("pw");
        member.signupFirstName = QStringLiteral("D");
        member.signupLastName = QStringLiteral("R");
        member.createAccount();
        QVERIFY(member.isLoggedIn);
        VLApp watched;
        watched.vlID = QStringLiteral("5003");
        QVERIFY(VLAppOnServer::saveToWatchListOnServer(watched));
        VLScanData stored(VLScanData::pathForDataFile());
        auto installed = std::make_shared<VLApp>(*VLApp::initWithLink(QStringLiteral("velmora://app/5001/Notes/1.0")));
        installed->localPath = QStringLiteral("/Applications/Notes.app");
        stored.setApps(AppList{installed});
        QVERIFY(stored.saveDataToDisk());

        VLMainWindowController driver;
        QSignalSpy checked(&driver, &VLMainWindowController::checkFinished);
        QSignalSpy member_(&driver, &VLMainWindowController::memberChanged);
        QSignalSpy lists(&driver, &VLMainWindowController::watchListsLoaded);
        QSignalSpy purchases(&driver, &VLMainWindowController::purchasesLoaded);
        driver.loadScanDataOrRunScan(true);
        QTRY_COMPARE_WITH_TIMEOUT(checked.count(), 1, 30000);
        driver.checkMemberAndTryLogin();
        QTRY_COMPARE_WITH_TIMEOUT(member_.count(), 1, 30000);
        QVERIFY(member_.first().first().toBool());
        QCOMPARE(driver.memberAccount().fullname, QStringLiteral("D R"));

        // A scan that meets an unreadable property list uploads it, with the member's id.
        const QString volume = QDir::tempPath() + QStringLiteral("/volume");
        QVERIFY(PlistFiles::writeFile(volume + QStringLiteral("/Applications/Broken.app/Contents/Info.plist"),
                                      "<plist><dict><key>CFBundleName"));
        settings.setValue(QString::fromLatin1(SettingKey::volumeRoot), volume);
        driver.checkForUpdates();
        QTRY_COMPARE_WITH_TIMEOUT(checked.count(), 2, 60000);
        QTRY_VERIFY_WITH_TIMEOUT(!purchases.isEmpty(), 30000); // the purchases held are shown again after a scan
        QByteArray reports;
        QTRY_VERIFY_WITH_TIMEOUT((m_service.runCommand({QStringLiteral("reports")}, &reports),
                                  reports.contains("\"plist\":\"<plist><dict><key>CFBundleName\"")),
                                 30000);
        const QByteArray memberID = QByteArray::number(driver.memberAccount().memberID);
        QVERIFY(reports.contains(QByteArray("\"member_id\":" + memberID)));

        // The matching request names the member, the machine and the installation, byte for byte.
        ScriptedHost matcher([](QTcpSocket *socket, const HostRequest &) { ScriptedHost::answer(socket, 404); });
        QVERIFY(pointHostsAt(matcher.url("").toString(), {SettingKey::serviceHost}));
        driver.checkForUpdates();
        QTRY_COMPARE_WITH_TIMEOUT(checked.count(), 3, 60000);
        QVERIFY(pointHostsAt(m_service.baseUrl(), {SettingKey::serviceHost}));
        const auto automatch =
            std::find_if(matcher.requests().cbegin(), matcher.requests().cend(),
                         [](const HostRequest &request) { return request.target.contains("automatch"); });
        QVERIFY(automatch != matcher.requests().cend());
        QCOMPARE(automatch->body.left(automatch->body.indexOf("&app[")),
                 QByteArray("vld=6.0.4&c=" + QUrl::toPercentEncoding(settings.stringValue(SettingKey::serial)) +
                            "&p=1&mid=" + memberID + "&uuid=" + settings.stringValue(SettingKey::penguin).toLatin1() +
                            "&type=manual"));

        driver.loadPromos();
        driver.loadWatchLists();
        QTRY_COMPARE_WITH_TIMEOUT(lists.count(), 1, 60000);
        const AppRef added = driver.scanData().appWithVLID(QStringLiteral("5003"));
        QVERIFY(added && !added->isInstalled() && !added->listname.isEmpty());

        driver.logout();
        QTRY_COMPARE_WITH_TIMEOUT(member_.count(), 2, 30000);
        const AppRef stripped = driver.scanData().appWithVLID(QStringLiteral("5003"));
        QVERIFY(stripped && stripped->listname.isEmpty());
        QVERIFY(VLKeychain::accountsForLabel(QStringLiteral("Velmora Desktop")).isEmpty());
    }
};

VELMORA_KEYRING_TEST_MAIN(TestDriverMember)
#include "TestDriverMember.moc"
