// Reading the installed version from bundles built on disk, through every reader and override code.

#include "model/PlistBudget.h"
#include "model/VLApp.h"
#include "model/VLMdItem.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"

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
        QTest::addColumn<QVariantMap>("info");         // Contents/Info.plist (absent when empty)
        QTest::addColumn<QVariantMap>("versionPlist"); // Contents/version.plist (absent when empty)
        QTest::addColumn<QString>("strings");          // InfoPlist.strings text (absent when null)
        QTest::addColumn<QString>("versionOverride");
        QTest::addColumn<QString>("expected");

        const QVariantMap none;
        const QString noStrings;
        QTest::newRow("short version wins")
            << dict({{"CFBundleShortVersionString", "2.5"}, {"CFBundleVersion", "300"}}) << none << noStrings << ""
            << "2.5";
        QTest::newRow("short version cut at parenthesis")
            << dict({{"CFBundleShortVersionString", "1.0 (45)"}}) << none << noStrings << ""
            << "1.0";
        QTest::newRow("leading V dropped") << dict({{"CFBundleShortVersionString", "V3.0"}}) << none << noStrings << ""
                                           << "3.0";
        QTest::newRow("numeric bundle version when no short version")
            << dict({{"CFBundleVersion", qint64(412)}}) << none << noStrings << ""
            << "412";
        QTest::newRow("bundle version six longer")
            << dict({{"CFBundleShortVersionString", "2.5"}, {"CFBundleVersion", "2.5.12345"}}) << none << noStrings
            << ""
            << "2.5.12345";
        QTest::newRow("bundle version seven longer")
            << dict({{"CFBundleShortVersionString", "2.5"}, {"CFBundleVersion", "2.5.123456"}}) << none << noStrings
            << ""
            << "2.5";
        QTest::newRow("short version without digits falls to bundle version")
            << dict({{"CFBundleShortVersionString", "Beta"}, {"CFBundleVersion", "77"}}) << none << noStrings << ""
            << "77";
        QTest::newRow("malformed 0xED mended")
            << dict({{"CFBundleShortVersionString", "1.0xED2"}}) << none << noStrings << ""
            << "1.2";
        QTest::newRow("cleaning applied")
            << dict({{"CFBundleShortVersionString", "4.1 Universal"}}) << none << noStrings << ""
            << "4.1";
        QTest::newRow("version.plist only")
            << none << dict({{"CFBundleShortVersionString", "9.1"}, {"CFBundleVersion", "9.1"}}) << noStrings << ""
            << "9.1";
        QTest::newRow("localized strings win")
            << dict({{"CFBundleShortVersionString", "1.0"}}) << none
            << QStringLiteral("/* c */\nCFBundleShortVersionString = \"1.5\";\n") << ""
            << "1.5";
        QTest::newRow("localized dash does not win")
            << dict({{"CFBundleShortVersionString", "1.0"}}) << none << QStringLiteral("CFBundleName = \"Foo\";") << ""
            << "1.0";
        QTest::newRow("nothing anywhere") << none << none << noStrings << ""
                                          << "-";
        QTest::newRow("array where a version belongs")
            << dict({{"CFBundleShortVersionString", QVariantList{1, 2}}}) << none << noStrings << ""
            << "-";

        const QVariantMap all = dict({{"CFBundleShortVersionString", "2.0"},
                                      {"CFBundleVersion", "2000"},
                                      {"CFBundleGetInfoString", "Foo 2.0.1, Copyright 2011"},
                                      {"BuildVersion", "17"}});
        QTest::newRow("override 0 uses the chain") << all << none << noStrings << "0"
                                                   << "2.0";
        QTest::newRow("override 1 bundle version") << all << none << noStrings << "1"
                                                   << "2000";
        QTest::newRow("override 2 short version, from version.plist")
            << dict({{"CFBundleVersion", "5"}}) << dict({{"CFBundleShortVersionString", "6.0"}}) << noStrings << "2"
            << "6.0";
        QTest::newRow("override 3 get-info sentence") << all << none << noStrings << "3"
                                                      << "2.0.1";
        QTest::newRow("override 3 without get-info string has no fallback")
            << dict({{"CFBundleShortVersionString", "2.0"}}) << none << noStrings << "3"
            << "-";
        QTest::newRow("override 4 build version") << all << none << noStrings << "4"
                                                  << "17";
        QTest::newRow("override 4 falls to version.plist")
            << dict({{"CFBundleShortVersionString", "2.0"}}) << dict({{"CFBundleVersion", "88"}}) << noStrings << "4"
            << "88";
        QTest::newRow("unknown override leaves the version") << all << none << noStrings << "7"
                                                             << "kept";
        QTest::newRow("override 1 falls to version.plist")
            << dict({{"CFBundleShortVersionString", "2.0"}}) << dict({{"CFBundleVersion", "99"}}) << noStrings << "1"
            << "99";
    }

    void versionReaders()
    {
        QFETCH(QVariantMap, info);
        QFETCH(QVariantMap, versionPlist);
        QFETCH(QString, strings);
        QFETCH(QString, versionOverride);
        QFETCH(QString, expected);

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
        QTest::addColumn<QByteArray>("info");    // Contents/Info.plist
        QTest::addColumn<QByteArray>("strings"); // InfoPlist.strings (absent when null)
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("logged"); // what the "exception 2 checking" line says, "" when nothing is logged

        const auto xml = [](const QByteArray &value) -> QByteArray {
            return "<plist><dict><key>CFBundleVersion</key>" + value + "</dict></plist>";
        };
        PlistFiles::BinaryPlist wide;
        wide.dict({wide.string("CFBundleVersion")}, {wide.integer128(quint64(1) << 36, 0)}); // 2^100
        PlistFiles::BinaryPlist nul;
        nul.dict({nul.string("CFBundleVersion")}, {nul.string(QByteArray("1.0\0009", 5))});
        const QByteArray copyright =
            "<plist><dict><key>CFBundleShortVersionString</key><string>2.0 \xA9 2011 Foo</string>"
            "</dict></plist>";

        QTest::newRow("integer past 64 bits keeps its digits")
            << xml("<integer>99999999999999999999999999999999</integer>") << QByteArray()
            << "99999999999999999999999999999999"
            << "";
        QTest::newRow("128-bit integer keeps its digits")
            << wide.bytes() << QByteArray() << "1267650600228229401496703205376"
            << "";
        QTest::newRow("negative integer") << xml("<integer>-5</integer>") << QByteArray() << "-"
                                          << "CFBundleVersion is a negative number, not a version";
        QTest::newRow("text holding NUL") << nul.bytes() << QByteArray() << "-"
                                          << "CFBundleVersion holds a NUL character";
        QTest::newRow("old-style Info.plist")
            << QByteArray("{ CFBundleShortVersionString = \"2.0\"; }") << QByteArray() << "2.0"
            << "";
        QTest::newRow("ISO-8859-1 copyright sign cuts")
            << "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + copyright << QByteArray() << "2.0"
            << "";
        QTest::newRow("macintosh copyright sign cuts")
            << "<?xml version=\"1.0\" encoding=\"macintosh\"?>" + copyright << QByteArray() << "2.0"
            << "";
        QTest::newRow("empty old-style strings value replaces the version")
            << xml("<string>1.0</string>") << QByteArray("\"CFBundleShortVersionString\" = \"\";") << ""
            << "";
        QTest::newRow("list past a bound is passed over")
            << PlistFiles::hostileLists().constLast().bytes << QByteArray() << "-" << PlistBudget::tooManyObjects();
    }

    void listsAsWritten()
    {
        QFETCH(QByteArray, info);
        QFETCH(QByteArray, strings);
        QFETCH(QString, expected);
        QFETCH(QString, logged);
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
        QTest::addColumn<QString>("relativePath");
        QTest::addColumn<QString>("plistPlace");
        QTest::addColumn<int>("format");
        QTest::addColumn<bool>("receipt");
        QTest::addColumn<QString>("displayName");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("appStore");

        const QString mark = QStringLiteral(" ") + QChar(0xF8FF);
        QTest::newRow("binary plist") << "Bar Baz 2.app"
                                      << "/Contents/Info.plist" << int(PlistFormat::Binary) << false << "Bar Baz 2"
                                      << "app" << false;
        QTest::newRow("Info.plist at the top") << "Pane.prefPane"
                                               << "/Info.plist" << int(PlistFormat::Xml) << false << "Pane"
                                               << "prefPane" << false;
        QTest::newRow("store copy") << "Store.app"
                                    << "/Contents/Info.plist" << int(PlistFormat::Xml) << true
                                    << QStringLiteral("Store") + mark << "app" << true;
        QTest::newRow("ipswDownloader never a store copy")
            << "ipswDownloader.app"
            << "/Contents/Info.plist" << int(PlistFormat::Xml) << true << "ipswDownloader"
            << "app" << false;
        QTest::newRow("non-ascii name") << "Éditeur ünïcode.app"
                                        << "/Contents/Info.plist" << int(PlistFormat::Xml) << false << "Éditeur ünïcode"
                                        << "app" << false;
    }

    void recordFromBundle()
    {
        QFETCH(QString, relativePath);
        QFETCH(QString, plistPlace);
        QFETCH(int, format);
        QFETCH(bool, receipt);
        QFETCH(QString, displayName);
        QFETCH(QString, kind);
        QFETCH(bool, appStore);

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
        // A fresh installed record: not matched, nothing chosen.
        QCOMPARE(app.vlVersion, QStringLiteral("-"));
        QCOMPARE(app.skippedVersion, QStringLiteral("-"));
        QCOMPARE(app.vlID, QStringLiteral(""));
        QCOMPARE(app.license, QStringLiteral(""));
        QVERIFY(!app.isOutdated);
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

    void unreadableAndMalformedPlists()
    {
        // An Info.plist that cannot be opened (a folder in its place) and one that is not a property list.
        const QString blocked = freshBundlePath();
        QDir().mkpath(blocked + QStringLiteral("/Contents/Info.plist"));
        const QString garbage = freshBundlePath();
        PlistFiles::writeFile(garbage + QStringLiteral("/Contents/Info.plist"),
                              "<?xml version=\"1.0\"?><plist><dict><key>");
        for (const QString &path : {blocked, garbage}) {
            const VLApp app = VLApp::initWithBundleAt(path);
            QCOMPARE(app.localVersion, QStringLiteral("-"));
            QVERIFY(app.bundleID.isNull());
        }
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
        QTest::addColumn<QString>("masVersion");
        QTest::addColumn<QString>("expected");
        QTest::newRow("store version taken") << "5.1"
                                             << "5.1";
        QTest::newRow("unknown store version") << "-"
                                               << "5.0";
        QTest::newRow("empty store version") << ""
                                             << "5.0";
    }

    void appStoreVersion()
    {
        QFETCH(QString, masVersion);
        QFETCH(QString, expected);
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
