#include "support/TestMain.h"

#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"
#include "scan/VLAppScanner.h"
#include "support/BundleTree.h"
#include "support/ScriptedHost.h"
#include "support/ServiceProcess.h"

#include <QFileInfo>
#include <QTcpSocket>
#include <QTemporaryDir>

namespace {

// Scans, as the driver does, a tree holding "<name> Helper.app" and "<name> Helpers.app" with the service host at
// url; the file names of the bundles reported.
QStringList scannedWithHost(const QString &url, const QString &name)
{
    VLSettings settings;
    settings.setValue(QLatin1String(SettingKey::serviceHost), url);
    QTemporaryDir dir;
    settings.setValue(QLatin1String(SettingKey::volumeRoot), dir.path());
    BundleTree tree(dir.path() + QStringLiteral("/Applications"));
    tree.addBundle(name + QStringLiteral(" Helper.app"));
    tree.addBundle(name + QStringLiteral(" Helpers.app"));

    VLAppScanner scanner;
    std::optional<AppList> apps;
    QObject context;
    VLNotificationCenter::defaultCenter().subscribe(QLatin1String(kVLAppScannerFinished), &context,
                                                    [&](const QVariant &object) { apps = object.value<AppList>(); });
    scanner.createSearchPredicate();
    if (!QTest::qWaitFor([&] { return apps.has_value(); }, 30000)) {
        return {QStringLiteral("(no outcome)")};
    }
    QStringList names;
    for (const AppRef &app : std::as_const(*apps)) {
        names.append(QFileInfo(app->localPath).fileName());
    }
    return names;
}

} // namespace

// The scanner's blacklist with the names the service adds, fetched over loopback.
class TestServerBlacklist : public QObject
{
    Q_OBJECT

private slots:
    void fetchedAndApplied()
    {
        ServiceProcess service;
        QVERIFY(service.start());
        VLSettings().setValue(QLatin1String(SettingKey::serviceHost), service.baseUrl());
        VLAppScanner scanner;
        const QStringList names = scanner.blackListApps();
        QCOMPARE(names.size(), 344);
        QCOMPARE(names.mid(0, 342), VLBlacklist::builtInList());
        QCOMPARE(names.mid(342),
                 (QStringList{QStringLiteral("Velmora Helper"), QStringLiteral("Velmora Uninstaller")}));
        QCOMPARE(scannedWithHost(service.baseUrl(), QStringLiteral("Velmora")),
                 QStringList{QStringLiteral("Velmora Helpers.app")});
    }

    // This host answers only from this thread's event loop: a scanner that waited for the list while being made
    // would wait out the request's deadline and scan with the built-in list alone.
    void creatingDoesNotWaitForTheList()
    {
        ScriptedHost host([](QTcpSocket *socket, const HostRequest &) {
            ScriptedHost::answer(socket, 200, "Content-Type: text/plain\r\n", "Notepad Helper\n");
        });
        QCOMPARE(scannedWithHost(host.url("").toString(), QStringLiteral("Notepad")),
                 QStringList{QStringLiteral("Notepad Helpers.app")});
        QCOMPARE(host.requests().size(), 1);
        QCOMPARE(host.requests().constFirst().target, QByteArray("/vld6blacklist"));
    }

    void unreachableHostKeepsBuiltInList()
    {
        ServiceProcess service;
        QVERIFY(service.start());
        const QString url = service.baseUrl();
        QVERIFY(service.stop()); // a port that was just free and now refuses
        VLSettings().setValue(QLatin1String(SettingKey::serviceHost), url);
        VLAppScanner scanner;
        QCOMPARE(scanner.blackListApps(), VLBlacklist::builtInList());
    }
};

VELMORA_TEST_MAIN(TestServerBlacklist)
#include "TestServerBlacklist.moc"
