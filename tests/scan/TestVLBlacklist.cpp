#include "support/DataTable.h"
#include "support/TestMain.h"
#include "support/Utf8.h"

#include "scan/VLBlacklist.h"
#include "support/PlistFiles.h"

#include <QTemporaryDir>

class TestVLBlacklist : public QObject
{
    Q_OBJECT

private slots:
    void appIsOnBlackList_data()
    {
        columns<QString, bool>("path", "listed");

        QTest::newRow("plain app") << "/Applications/Foo.app" << false;
        QTest::newRow("exact name on the list") << "/Applications/Chess.app" << true;
        QTest::newRow("list is case-sensitive") << "/Applications/velmora.app" << false;
        QTest::newRow("list entry with its extension") << "/Applications/FlowSupport.app.app" << true;
        QTest::newRow("escaped dots never match") << "/Applications/Java 1.3.1 Plugin Settings.app" << false;
        QTest::newRow("Firmware in the name") << "/Applications/Mac Pro EFI Firmware 2.app" << true;
        QTest::newRow("Flash Player pane") << "/Library/PreferencePanes/Flash Player.prefPane" << true;
        QTest::newRow("Install") << "/Applications/Adobe Installer.app" << true;
        QTest::newRow("install inside Uninstall") << "/Applications/Uninstall Foo.app" << true;
        QTest::newRow("substring tests are case-sensitive") << "/Applications/SETUP Assistant.app" << false;
        QTest::newRow("system widget") << "/Library/Widgets/Weather.wdgt" << true;
        QTest::newRow("third-party widget") << "/Library/Widgets/Radar.wdgt" << false;
        QTest::newRow("widget rule replaces the name tests") << "/Library/Widgets/MySetupWidget.wdgt" << false;
        QTest::newRow("widget rule replaces the list") << "/Library/Widgets/Chess.wdgt" << false;
        QTest::newRow("widget extension is exact") << "/Library/Widgets/Weather.WDGT" << false;
        QTest::newRow("Xcode plug-in") << "/Applications/Foo.xcplugin" << true;
        QTest::newRow("inside Toast 11 Titanium")
            << "/Applications/Toast 11 Titanium/Toast Audio Assistant.app" << true;
        QTest::newRow("Toast Titanium itself") << "/Applications/Toast 11 Titanium/Toast Titanium.app" << false;
        QTest::newRow("plug-in outside Internet Plug-Ins") << "/Library/Foo/Foo.plugin" << true;
        QTest::newRow("plug-in in Internet Plug-Ins") << "/Library/Internet Plug-Ins/Foo.plugin" << false;
        QTest::newRow("earlier outcome survives the plug-in test") << "/Library/Internet Plug-Ins/Setup.plugin" << true;
        QTest::newRow("path is standardised") << "/Library/Internet Plug-Ins/../Foo/Foo.plugin" << true;
        QTest::newRow("name with a line break") << "/Applications/Chess\n.app" << false;
    }

    void appIsOnBlackList()
    {
        auto [path, listed] = fetch<QString, bool>("path", "listed");
        const VLBlacklist blacklist;
        QCOMPARE(blacklist.appIsOnBlackList(path.mid(path.lastIndexOf(QLatin1Char('/')) + 1), path), listed);
    }

    void virtualMachineApps_data()
    {
        columns<QString, bool, bool>("identifier", "binary", "listed");

        QTest::newRow("ordinary app") << "com.example.foo" << false << false;
        QTest::newRow("Parallels Windows app") << "com.parallels.winapp.notepad" << false << true;
        QTest::newRow("VMware proxy app") << "com.vmware.proxyApp.123" << false << true;
        QTest::newRow("binary list") << "com.parallels.winapp.paint" << true << true;
        QTest::newRow("binary list with non-ASCII text") << "com.parallels.winapp.bücher" << true << true;
        QTest::newRow("match is case-sensitive") << "com.VMware.proxyapp" << false << false;
        QTest::newRow("Adobe is no reason") << "com.adobe.Photoshop" << false << false;
    }

    void virtualMachineApps()
    {
        auto [identifier, binary, listed] = fetch<QString, bool, bool>("identifier", "binary", "listed");
        QTemporaryDir dir;
        const QString bundle = PlistFiles::makeBundle(
            dir.path() + QStringLiteral("/Notepad.app"), {{QStringLiteral("CFBundleIdentifier"), identifier}},
            binary ? PlistFiles::PlistFormat::Binary : PlistFiles::PlistFormat::Xml);
        QCOMPARE(VLBlacklist().appIsOnBlackList(QStringLiteral("Notepad.app"), bundle), listed);
    }

    void serverList_data()
    {
        columns<QString, QStringList>("text", "names");

        QTest::newRow("lines") << "Foo\nBar\n" << L({"Foo", "Bar"});
        QTest::newRow("empty lines left out") << "\n\nFoo\n\n" << L({"Foo"});
        QTest::newRow("carriage returns kept") << "Foo\r\nBar\r\n" << L({"Foo\r", "Bar\r"});
        QTest::newRow("duplicates kept") << "Foo\nFoo" << L({"Foo", "Foo"});
        QTest::newRow("nothing") << "" << QStringList{};
    }

    void serverList()
    {
        auto [text, names] = fetch<QString, QStringList>("text", "names");
        QCOMPARE(VLBlacklist::splitServerList(text), names);

        VLBlacklist blacklist;
        blacklist.append(names);
        QCOMPARE(blacklist.names().size(), 342 + names.size());
        // A name that kept its carriage return matches no real bundle.
        const bool anyPlain = names.contains(QStringLiteral("Foo"));
        QCOMPARE(blacklist.appIsOnBlackList(QStringLiteral("Foo.app"), QStringLiteral("/Applications/Foo.app")),
                 anyPlain);
    }
};

VELMORA_TEST_MAIN(TestVLBlacklist)
#include "TestVLBlacklist.moc"
