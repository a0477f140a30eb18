// velmora-cli scan and list against a tree of bundles the test builds, with the store on disk in between. What the
// scan keeps or leaves out is the scanner's (scan/TestVLAppScanner, scan/TestVLBlacklist); here one bundle of each
// sort shows the command goes through it.

#include "platform/VLSettings.h"
#include "scan/VLAppScanner.h"
#include "scan/VLScanData.h"
#include "support/BundleTree.h"
#include "support/CliRunner.h"
#include "support/DataTable.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"
#include "support/Utf8.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

namespace {

QVariantMap info(const char *identifier, const char *version)
{
    return {{s("CFBundleIdentifier"), s(identifier)}, {s("CFBundleShortVersionString"), s(version)}};
}

QStringList field(const QByteArray &json, const char *name)
{
    QStringList values;
    for (const QJsonValue &record : QJsonDocument::fromJson(json).array()) {
        values.append(record.toObject().value(QLatin1String(name)).toString());
    }
    return values;
}

} // namespace

class TestCliScan : public QObject
{
    Q_OBJECT

    QTemporaryDir m_root;
    QString m_volume;
    QStringList m_expected;

private slots:
    void initTestCase()
    {
        m_volume = m_root.path() + s("/volume");
        VLSettings settings;
        // Written untidily, as a user might: the paths reported are tidy all the same, so the store knows them again.
        settings.setValue(QLatin1String(SettingKey::volumeRoot), QString(m_volume + s("//")));
        // Nothing listens there: the scan goes on with the built-in blacklist.
        settings.setValue(QLatin1String(SettingKey::serviceHost), s("http://127.0.0.1:1"));
        const QString extra = m_root.path() + s("/extra");
        settings.setValue(QLatin1String(SettingKey::searchpaths), QStringList{QString(extra + s("/."))});

        BundleTree volume(m_volume);
        BundleTree home(QDir::homePath());
        BundleTree more(extra);
        volume.addBundle(s("Applications/Editor.app"), info("com.example.editor", "2.5.1"));
        volume.addBundle(s("Applications/Editor Setup.app"), info("com.example.setup", "1"));
        volume.addBundle(s("Applications/Utilities/calc.app"), info("com.example.calc", "0.9b"));
        volume.addBundle(s("Library/Internet Plug-Ins/Viewer.plugin"), info("com.example.viewer", "11.2"));
        home.addBundle(s("Applications/Notes.app"), info("com.example.notes", "3.0"));
        more.addBundle(s("Ünïcode.app"), info("com.example.unicode", "1.0"));
        m_expected = {
            volume.path(s("Applications/Utilities/calc.app")),
            volume.path(s("Applications/Editor.app")),
            home.path(s("Applications/Notes.app")),
            volume.path(s("Library/Internet Plug-Ins/Viewer.plugin")),
            more.path(s("Ünïcode.app")),
        };
    }

    void scanReportsWhatTheRulesKeep()
    {
        const CliResult json = runCli({s("scan"), s("--json")});
        QCOMPARE(json.exitCode, 0);
        QCOMPARE(field(json.out, "localPath"), m_expected);
        QCOMPARE(field(json.out, "localVersion"), L({"0.9b", "2.5.1", "3.0", "11.2", "1.0"}));
        QCOMPARE(field(json.out, "kind"), L({"app", "app", "app", "plugin", "app"}));

        const CliResult text = runCli({s("--json"), s("scan")});
        QCOMPARE(text.out, json.out);

        const CliResult lines = runCli({s("scan")});
        QCOMPARE(lines.exitCode, 0);
        const QStringList printed = QString::fromUtf8(lines.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(printed.size(), m_expected.size());
        QCOMPARE(printed.at(1), s("Editor\t2.5.1\t") + m_expected.at(1));

        QVERIFY(!QFile::exists(VLScanData::pathForDataFile())); // a scan alone does not touch the store
    }

    void listRoundTrip_data()
    {
        columns<QStringList, QStringList>("arguments", "names");

        const QStringList all = {s("Notes"), s("Editor"), s("Gone"), s("Bought")};
        QTest::newRow("default") << QStringList{s("list")} << all;
        QTest::newRow("the same filter twice") << QStringList{s("list"), s("--all"), s("--all")} << all;
        QTest::newRow("installed") << QStringList{s("list"), s("--installed")} << QStringList{s("Notes"), s("Editor")};
        QTest::newRow("outdated") << QStringList{s("list"), s("--outdated")} << QStringList{s("Editor")};
    }

    void listRoundTrip()
    {
        auto [arguments, names] = fetch<QStringList, QStringList>("arguments", "names");
        {
            // Stored order is not scan order; the records carry what a match gave them.
            VLScanData store;
            AppList apps;
            const AppList scanned = VLAppScanner::collectApps(VLAppScanner::searchScopes(), VLBlacklist());
            for (const AppRef &app : scanned) {
                if (app->displayName == QLatin1String("Notes") || app->displayName == QLatin1String("Editor")) {
                    app->vlID = app->displayName == QLatin1String("Editor") ? s("501") : s("502");
                    app->vlVersion = app->displayName == QLatin1String("Editor") ? s("9.0") : s("3.0");
                    apps.prepend(app);
                }
            }
            auto gone = std::make_shared<VLApp>();
            gone->localPath = m_root.path() + s("/Applications/Gone.app");
            gone->name = s("Gone.app");
            gone->vlVersion = s("5.0");
            auto bought = std::make_shared<VLApp>();
            bought->localPath = s("-");
            bought->name = s("Bought.app");
            bought->orderid = s("77");
            apps << gone << bought;
            store.setApps(apps);
            QVERIFY(store.saveDataToDisk());
        }

        arguments.append(s("--json"));
        const CliResult result = runCli(arguments);
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(field(result.out, "displayName"), names);
        if (names.contains(s("Gone"))) {
            // Its file is missing: shown as not installed, not dropped.
            QCOMPARE(field(result.out, "localPath").at(2), s("-"));
            QCOMPARE(field(result.out, "orderid").at(3), s("77"));
        }
        QFile::remove(VLScanData::pathForDataFile());
    }

    void listKeepsDamagedStoreAside()
    {
        const QString path = VLScanData::pathForDataFile();
        QVERIFY(PlistFiles::writeFile(path, "{\"apps\": [{\"localPath\": "));

        const CliResult result = runCli({s("list")});
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.out.isEmpty());
        QVERIFY2(result.err.startsWith("warning: the stored scan ") && result.err.contains(".damaged"), result.err);
        QVERIFY(!QFile::exists(path) && QFile::exists(path + s(".damaged"))); // its bytes: scan/TestVLScanData
    }
};

VELMORA_TEST_MAIN(TestCliScan)
#include "TestCliScan.moc"
