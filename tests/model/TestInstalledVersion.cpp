// Reading the installed version from bundles built on disk, through every reader and override code.

#include "model/PlistBudget.h"
#include "model/VLApp.h"
#include "model/VLMdItem.h"
#include "support/DataTable.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"
#include "support/Utf8.h"

#include <QDir>
#include <QTemporaryDir>

using PlistFormat = PlistFiles::PlistFormat;

class TestInstalledVersion : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_root;
    int m_counter = 0;

    QString freshBundlePath() { return m_root.path() + QStringLiteral("/b%1/Foo.app").arg(++m_counter); }

    // A property-list value written as a literal in the tables below.
    struct Value
    {
        QVariant value;
        Value(const char *text) : value(QString::fromUtf8(text)) {}
        Value(qint64 number) : value(number) {}
        Value(const QVariantList &list) : value(list) {}
    };

    static QVariantMap dict(std::initializer_list<std::pair<const char *, Value>> entries)
    {
        QVariantMap map;
        for (const auto &[key, value] : entries) {
            map.insert(QLatin1String(key), value.value);
        }
        return map;
    }

private slots:
    void versionReaders_data()
    {
        // info: Contents/Info.plist, versionPlist: Contents/version.plist (each absent when empty); strings: the
        // InfoPlist.strings text (absent when null).
        columns<QVariantMap, QVariantMap, QString, QString, QString>("info", "versionPlist", "strings",
                                                                     "versionOverride", "expected");
        const auto row = [](const char *tag, const QVariantMap &info, const char *expected, const char *override = "",
                            const QVariantMap &versionPlist = {}, const QString &strings = {}) {
            QTest::newRow(tag) << info << versionPlist << strings << s(override) << s(expected);
        };
        row("short version wins", dict({{"CFBundleShortVersionString", "2.5"}, {"CFBundleVersion", "300"}}), "2.5");
        row("short version cut at parenthesis", dict({{"CFBundleShortVersionString", "1.0 (45)"}}), "1.0");
        row("leading V dropped", dict({{"CFBundleShortVersionString", "V3.0"}}), "3.0");
        row("numeric bundle version when no short version", dict({{"CFBundleVersion", qint64(412)}}), "412");
        row("bundle version six longer",
            dict({{"CFBundleShortVersionString", "2.5"}, {"CFBundleVersion", "2.5.12345"}}), "2.5.12345");
        row("bundle version seven longer",
            dict({{"CFBundleShortVersionString", "2.5"}, {"CFBundleVersion", "2.5.123456"}}), "2.5");
        row("short version without digits falls to bundle version",
            dict({{"CFBundleShortVersionString", "Beta"}, {"CFBundleVersion", "77"}}), "77");
        row("malformed 0xED mended", dict({{"CFBundleShortVersionString", "1.0xED2"}}), "1.2");
        row("version.plist only", {}, "9.1", "",
            dict({{"CFBundleShortVersionString", "9.1"}, {"CFBundleVersion", "9.1"}}));
        row("localized strings win", dict({{"CFBundleShortVersionString", "1.0"}}), "1.5", "", {},
            s("/* c */\nCFBundleShortVersionString = \"1.5\";\n"));
        row("localized dash does not win", dict({{"CFBundleShortVersionString", "1.0"}}), "1.0", "", {},
            s("CFBundleName = \"Foo\";"));
        row("nothing anywhere", {}, "-");
        row("array where a version belongs", dict({{"CFBundleShortVersionString", QVariantList{1, 2}}}), "-");

        const QVariantMap all = dict({{"CFBundleShortVersionString", "2.0"},
                                      {"CFBundleVersion", "2000"},
                                      {"CFBundleGetInfoString", "Foo 2.0.1, Copyright 2011"},
                                      {"BuildVersion", "17"}});
        const QVariantMap shortOnly = dict({{"CFBundleShortVersionString", "2.0"}});
        row("override 0 uses the chain", all, "2.0", "0");
        row("override 1 bundle version", all, "2000", "1");
        row("override 1 falls to version.plist", shortOnly, "99", "1", dict({{"CFBundleVersion", "99"}}));
        row("override 2 short version, from version.plist", dict({{"CFBundleVersion", "5"}}), "6.0", "2",
            dict({{"CFBundleShortVersionString", "6.0"}}));
        row("override 3 get-info sentence", all, "2.0.1", "3");
        row("override 3 without get-info string has no fallback", shortOnly, "-", "3");
        row("override 4 build version", all, "17", "4");
        row("override 4 falls to version.plist", shortOnly, "88", "4", dict({{"CFBundleVersion", "88"}}));
        row("unknown override leaves the version", all, "kept", "7");
    }

    void versionReaders()
    {
        auto [info, versionPlist, strings, versionOverride, expected] =
            fetch<QVariantMap, QVariantMap, QString, QString, QString>("info", "versionPlist", "strings",
                                                                       "versionOverride", "expected");
        const QString path = freshBundlePath();
        QDir().mkpath(path);
        if (!info.isEmpty()) {
            PlistFiles::writePlist(path + QStringLiteral("/Contents/Info.plist"), info);
        }
        if (!versionPlist.isEmpty()) {
            PlistFiles::writePlist(path + QStringLiteral("/Contents/version.plist"), versionPlist, PlistFormat::Binary);
        }
        if (!strings.isNull()) {
            PlistFiles::writeInfoPlistStrings(path, strings);
        }
        VLApp app;
        app.localPath = path;
        app.version_override = versionOverride;
        app.localVersion = QStringLiteral("kept");
        if (QByteArray(QTest::currentDataTag()).startsWith("array")) {
            // Both readers of the short version meet the array and say so.
            for (int i = 0; i < 2; ++i) {
                QTest::ignoreMessage(QtInfoMsg, QRegularExpression(QStringLiteral("^exception 2 checking ")));
            }
        }
        app.getLocalVersionTakingIntoAccountVersionOverride();
        QCOMPARE(app.localVersion, expected);
    }

    // Lists written by hand, in forms and with values no writer of ours makes.
    void listsAsWritten_data()
    {
        // strings: InfoPlist.strings (absent when null); logged: what the "exception 2 checking" line says, "" when
        // nothing is logged.
        columns<QByteArray, QByteArray, QString, QString>("info", "strings", "expected", "logged");
        const auto row = [](const char *tag, const QByteArray &info, const char *expected, const QString &logged = {},
                            const QByteArray &strings = {}) {
            QTest::newRow(tag) << info << strings << s(expected) << logged;
        };
        const auto xml = [](const QByteArray &value) -> QByteArray {
            return "<plist><dict><key>CFBundleVersion</key>" + value + "</dict></plist>";
        };
        PlistFiles::BinaryPlist wide;
        wide.dict({wide.string("CFBundleVersion")}, {wide.integer128(quint64(1) << 36, 0)}); // 2^100
        PlistFiles::BinaryPlist nul;
        nul.dict({nul.string("CFBundleVersion")}, {nul.string(QByteArray("1.0\0009", 5))});

        row("integer past 64 bits keeps its digits", xml("<integer>99999999999999999999999999999999</integer>"),
            "99999999999999999999999999999999");
        row("128-bit integer keeps its digits", wide.bytes(), "1267650600228229401496703205376");
        row("negative integer", xml("<integer>-5</integer>"), "-",
            s("CFBundleVersion is a negative number, not a version"));
        row("text holding NUL", nul.bytes(), "-", s("CFBundleVersion holds a NUL character"));
        row("old-style Info.plist", "{ CFBundleShortVersionString = \"2.0\"; }", "2.0");
        row("ISO-8859-1 copyright sign cuts",
            "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><plist><dict><key>CFBundleShortVersionString</key>"
            "<string>2.0 \xA9 2011 Foo</string></dict></plist>",
            "2.0");
        row("empty old-style strings value replaces the version", xml("<string>1.0</string>"), "", {},
            "\"CFBundleShortVersionString\" = \"\";");
        row("not a property list", "<?xml version=\"1.0\"?><plist><dict><key>", "-");
        row("list past a bound is passed over", PlistFiles::hostileLists().constLast().bytes, "-",
            PlistBudget::tooManyObjects());
    }

    void listsAsWritten()
    {
        auto [info, strings, expected, logged] =
            fetch<QByteArray, QByteArray, QString, QString>("info", "strings", "expected", "logged");
        const QString path = freshBundlePath();
        PlistFiles::writeFile(path + QStringLiteral("/Contents/Info.plist"), info);
        if (!strings.isNull()) {
            PlistFiles::writeFile(path + QStringLiteral("/Contents/Resources/English.lproj/InfoPlist.strings"),
                                  strings);
        }
        if (!logged.isEmpty()) {
            QTest::ignoreMessage(
                QtInfoMsg,
                QRegularExpression(
                    QStringLiteral("^exception 2 checking %1 .*%2$").arg(QRegularExpression::escape(path), logged)));
        }
        QCOMPARE(VLApp::initWithBundleAt(path).localVersion, expected);
    }

    void recordFromBundle_data()
    {
        columns<QString, QString, int, bool, QString, QString, bool>("relativePath", "plistPlace", "format", "receipt",
                                                                     "displayName", "kind", "appStore");
        const auto row = [](const char *tag, const char *relativePath, const char *plistPlace, PlistFormat format,
                            bool receipt, const QString &displayName, const char *kind, bool appStore) {
            QTest::newRow(tag) << s(relativePath) << s(plistPlace) << int(format) << receipt << displayName << s(kind)
                               << appStore;
        };
        const QString mark = QStringLiteral(" ") + QChar(0xF8FF);
        row("binary plist", "Bar Baz 2.app", "/Contents/Info.plist", PlistFormat::Binary, false, s("Bar Baz 2"), "app",
            false);
        row("Info.plist at the top", "Pane.prefPane", "/Info.plist", PlistFormat::Xml, false, s("Pane"), "prefPane",
            false);
        row("store copy", "Store.app", "/Contents/Info.plist", PlistFormat::Xml, true, s("Store") + mark, "app", true);
        row("ipswDownloader never a store copy", "ipswDownloader.app", "/Contents/Info.plist", PlistFormat::Xml, true,
            s("ipswDownloader"), "app", false);
        row("non-ascii name", "Éditeur ünïcode.app", "/Contents/Info.plist", PlistFormat::Xml, false,
            s("Éditeur ünïcode"), "app", false);
    }

    void recordFromBundle()
    {
        auto [relativePath, plistPlace, format, receipt, displayName, kind, appStore] =
            fetch<QString, QString, int, bool, QString, QString, bool>("relativePath", "plistPlace", "format",
                                                                       "receipt", "displayName", "kind", "appStore");
        const QString path = m_root.path() + QStringLiteral("/r%1/").arg(++m_counter) + relativePath;
        PlistFiles::writePlist(path + plistPlace,
                               PlistFiles::info(QStringLiteral("com.example.x"), QStringLiteral("1.2")),
                               PlistFormat(format));
        if (receipt) {
            PlistFiles::writeFile(path + QStringLiteral("/Contents/_MASReceipt/receipt"), "r");
        }
        const VLApp app = VLApp::initWithBundleAt(path);
        QCOMPARE(app.localPath, path);
        QCOMPARE(app.digestString,
                 QString::fromLatin1(QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Md5).toHex()));
        QCOMPARE(app.name, relativePath);
        QCOMPARE(app.displayName, displayName);
        QCOMPARE(app.bundleID, QStringLiteral("com.example.x"));
        QCOMPARE(app.localVersion, QStringLiteral("1.2"));
        QCOMPARE(app.kind, kind);
        QCOMPARE(app.isAppStore, appStore);
        QVERIFY(app.lastModified.isValid());
        QVERIFY(app.downloadPath.endsWith(QLatin1Char('/') + app.digestString));
    }

    void unreadableAttributesAreMarked()
    {
        VLMdItem item;
        item.contentModificationDate = QDateTime::currentDateTimeUtc();
        for (const char *field : {"localpath", "digestString", "localizedName", "name", "displayName", "kind"}) {
            QTest::ignoreMessage(
                QtInfoMsg, qPrintable(QStringLiteral("Exception %1 attribute not readable").arg(QLatin1String(field))));
        }
        const VLApp app = VLApp::initWithMdItem(item);
        QCOMPARE(app.localPath, QStringLiteral("-"));
        QCOMPARE(app.name, QStringLiteral("-"));
        QCOMPARE(app.localVersion, QStringLiteral("-"));
        QVERIFY(!app.isInstalled());
    }

    void iconFile()
    {
        const QString path = freshBundlePath();
        QVariantMap info = PlistFiles::info(QStringLiteral("com.example.icon"), QStringLiteral("1"));
        info.insert(QStringLiteral("CFBundleIconFile"), QStringLiteral("AppIcon"));
        PlistFiles::makeBundle(path, info);
        PlistFiles::writeFile(path + QStringLiteral("/Contents/Resources/AppIcon.icns"), "icns");
        QCOMPARE(VLApp::initWithBundleAt(path).appIcon, path + QStringLiteral("/Contents/Resources/AppIcon.icns"));
    }

    void appStoreVersion_data()
    {
        columns<QString, QString>("masVersion", "expected");
        QTest::newRow("store version taken") << s("5.1") << s("5.1");
        QTest::newRow("unknown store version") << s("-") << s("5.0");
        QTest::newRow("empty store version") << s("") << s("5.0");
    }

    void appStoreVersion()
    {
        auto [masVersion, expected] = fetch<QString, QString>("masVersion", "expected");
        VLApp app;
        app.isAppStore = true;
        app.vlID = QStringLiteral("42");
        app.vlVersion = QStringLiteral("5.0");
        app.masVersion = masVersion;
        app.setVersiontoMASVersion();
        QCOMPARE(app.vlVersion, expected);
    }
};

VELMORA_TEST_MAIN(TestInstalledVersion)
#include "TestInstalledVersion.moc"
