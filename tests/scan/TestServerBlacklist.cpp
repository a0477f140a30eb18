#include "support/TestMain.h"

#include "scan/VLAppScanner.h"
#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"
#include "support/BundleTree.h"
#include "support/ScriptedHost.h"
#include "support/ServiceProcess.h"

#include <QTcpSocket>
#include <QTemporaryDir>

// The scanner's blacklist with the names the real service adds, fetched over loopback.
class TestServerBlacklist : public QObject
{
    Q_OBJECT

private slots:
    void fetchedAndApplied();
    void creatingDoesNotWaitForTheList();
    void unreachableHostKeepsBuiltInList();
};

void TestServerBlacklist::fetchedAndApplied()
{
    ServiceProcess service;
    QVERIFY(service.start());
    VLSettings settings;
    settings.setValue(QLatin1String(SettingKey::serviceHost), service.baseUrl());
    QTemporaryDir dir;
    settings.setValue(QLatin1String(SettingKey::volumeRoot), dir.path());
    BundleTree tree(dir.path() + QStringLiteral("/Applications"));
    tree.addBundle(QStringLiteral("Velmora Helper.app"));
    tree.addBundle(QStringLiteral("Velmora Helpers.app"));

    VLAppScanner scanner;
    const QStringList names = scanner.blackListApps();
    QCOMPARE(names.size(), 344);
    QCOMPARE(names.mid(0, 342), VLBlacklist::builtInList());
    QCOMPARE(names.mid(342), (QStringList{QStringLiteral("Velmora Helper"), QStringLiteral("Velmora Uninstaller")}));

    AppList apps;
    bool done = false;
    QObject context;
    VLNotificationCenter::defaultCenter().subscribe(QLatin1String(kVLAppScannerFinished), &context,
                                                    [&](const QVariant &object) {
                                                        apps = object.value<AppList>();
                                                        done = true;
                                                    });
    scanner.createSearchPredicate();
    QVERIFY(QTest::qWaitFor([&] { return done; }, 20000));
    QCOMPARE(apps.size(), 1);
    QCOMPARE(apps.first()->localPath, tree.path(QStringLiteral("Velmora Helpers.app")));
}

// The host answers only from this thread's event loop: a scanner that waited for the list while being made would
// wait out the request's deadline and scan with the built-in list alone.
void TestServerBlacklist::creatingDoesNotWaitForTheList()
{
    ScriptedHost host([](QTcpSocket *socket, const HostRequest &) {
        ScriptedHost::answer(socket, 200, "Content-Type: text/plain\r\n", "Notepad Helper\n");
    });
    VLSettings settings;
    settings.setValue(QLatin1String(SettingKey::serviceHost), host.url("").toString());
    QTemporaryDir dir;
    settings.setValue(QLatin1String(SettingKey::volumeRoot), dir.path());
    BundleTree tree(dir.path() + QStringLiteral("/Applications"));
    tree.addBundle(QStringLiteral("Notepad Helper.app"));
    tree.addBundle(QStringLiteral("Notepad.app"));

    VLAppScanner scanner;
    AppList apps;
    bool done = false;
    QObject context;
    VLNotificationCenter::defaultCenter().subscribe(QLatin1String(kVLAppScannerFinished), &context,
                                                    [&](const QVariant &object) {
                                                        apps = object.value<AppList>();
                                                        done = true;
                                                    });
    scanner.createSearchPredicate();
    QVERIFY(QTest::qWaitFor([&] { return done; }, 30000));
    QCOMPARE(host.requests().size(), 1);
    QCOMPARE(host.requests().first().target, QByteArray("/vld6blacklist"));
    QCOMPARE(apps.size(), 1);
    QCOMPARE(apps.first()->localPath, tree.path(QStringLiteral("Notepad.app")));
}

void TestServerBlacklist::unreachableHostKeepsBuiltInList()
{
    ServiceProcess service;
    QVERIFY(service.start());
    const QString url = service.baseUrl();
    QVERIFY(service.stop()); // a port that was just free and now refuses
    VLSettings().setValue(QLatin1String(SettingKey::serviceHost), url);
    VLAppScanner scanner;
    QCOMPARE(scanner.blackListApps(), VLBlacklist::builtInList());
}

VELMORA_TEST_MAIN(TestServerBlacklist)
#include "TestServerBlacklist.moc"
