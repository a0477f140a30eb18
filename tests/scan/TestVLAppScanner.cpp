#include "support/TestMain.h"

#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"
#include "scan/BundleWalk.h"
#include "scan/VLAppScanner.h"
#include "support/BundleTree.h"
#include "support/DataTable.h"
#include "support/PlistFiles.h"
#include "support/Utf8.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

struct Posted
{
    QString name;
    std::optional<AppList> apps; // nullopt: posted with no object
};

// Runs one scan the way the driver does and returns what the scanner posted.
Posted scanAndWait(VLAppScanner &scanner)
{
    Posted posted;
    QObject context;
    bool done = false;
    for (const char *name : {kVLAppScannerFinished, kVLAppScannerFinishedBackground}) {
        VLNotificationCenter::defaultCenter().subscribe(QLatin1String(name), &context,
                                                        [&, name](const QVariant &object) {
                                                            posted.name = QLatin1String(name);
                                                            if (object.isValid()) {
                                                                posted.apps = object.value<AppList>();
                                                            }
                                                            done = true;
                                                        });
    }
    scanner.createSearchPredicate();
    if (!QTest::qWaitFor([&] { return done; }, 20000)) {
        qWarning("no notification");
    }
    return posted;
}

// While alive, the calling thread obeys folder permissions even as root: it gives up the capabilities that override
// them, so that a folder with no permissions is unreadable to it (CI runs as root).
class ObeyFolderPermissions
{
public:
    ObeyFolderPermissions()
    {
        if (syscall(SYS_capget, &m_header, m_saved) != 0) {
            return;
        }
        __user_cap_data_struct reduced[2] = {m_saved[0], m_saved[1]};
        reduced[0].effective &= ~((1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH));
        m_dropped = syscall(SYS_capset, &m_header, reduced) == 0;
    }
    ~ObeyFolderPermissions()
    {
        if (m_dropped) {
            syscall(SYS_capset, &m_header, m_saved);
        }
    }
    ObeyFolderPermissions(const ObeyFolderPermissions &) = delete;
    ObeyFolderPermissions &operator=(const ObeyFolderPermissions &) = delete;

private:
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_saved[2] = {};
    bool m_dropped = false;
};

QStringList pathsOf(const AppList &apps)
{
    QStringList paths;
    for (const AppRef &app : apps) {
        paths.append(app->localPath);
    }
    return paths;
}

} // namespace

class TestVLAppScanner : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_volume;
    QString m_home;

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_volume = m_dir->path() + QStringLiteral("/volume");
        m_home = QDir::homePath();
        QDir(m_home).removeRecursively();
        QDir().mkpath(m_home);
        VLSettings settings;
        settings.setValue(QLatin1String(SettingKey::volumeRoot), m_volume);
        settings.remove(QLatin1String(SettingKey::searchpaths));
    }

    // The kinds reported in a scan are in scopesInOrderAndSorted; these are the names around them.
    void reportedKinds_data()
    {
        columns<QString, bool, bool>("name", "folder", "reported");
        QTest::newRow("extension ignores case") << s("Foo.APP") << true << true;
        QTest::newRow("other bundle") << s("Other.bundle") << true << false;
        QTest::newRow("composition folder") << s("Foo.qtz") << true << false;
        QTest::newRow("file named like an app") << s("Foo.app") << false << false;
        QTest::newRow("no extension") << s("app") << true << false;
        QTest::newRow("extension only") << s(".app") << true << false;
    }

    void reportedKinds()
    {
        auto [name, folder, reported] = fetch<QString, bool, bool>("name", "folder", "reported");
        QCOMPARE(BundleWalk::isReportedBundle(name, folder), reported);
    }

    void scopesInOrderAndSorted()
    {
        BundleTree volume(m_volume);
        BundleTree home(m_home);
        const QString extra = m_dir->path() + QStringLiteral("/extra");
        BundleTree more(extra);
        volume.addBundle(QStringLiteral("Applications/beta.app"));
        volume.addBundle(QStringLiteral("Applications/Same.app"));
        home.addBundle(QStringLiteral("Applications/Alpha.app"));
        home.addBundle(QStringLiteral("Applications/same.app"));
        volume.addBundle(QStringLiteral("Developer/Applications/Gamma.app"));
        home.addBundle(QStringLiteral("Library/Screen Savers/Drift.saver"));
        home.addBundle(QStringLiteral("Library/Widgets/Radar.wdgt"));
        home.addBundle(QStringLiteral("Library/PreferencePanes/Pane.prefPane"));
        home.addBundle(QStringLiteral("Library/Internet Plug-Ins/Flash.plugin"));
        volume.addBundle(QStringLiteral("Library/Screen Savers/Ebb.saver"));
        volume.addBundle(QStringLiteral("Library/Internet Plug-Ins/Safari Cookies.bundle"));
        volume.addFile(QStringLiteral("Library/Application Support/SIMBL/Plugins/Tint.qtz"));
        volume.addBundle(QStringLiteral("Library/Frameworks/Hidden.app")); // not a scope
        more.addBundle(QStringLiteral("Älpha.app"));
        more.addBundle(QStringLiteral("Two\nLines.app"));
        VLSettings().setValue(QLatin1String(SettingKey::searchpaths),
                              QStringList{m_dir->path() + QStringLiteral("/missing"), extra});

        const QStringList scopes = VLAppScanner::searchScopes();
        QCOMPARE(scopes.size(), 14);
        QCOMPARE(scopes.first(), m_volume + QStringLiteral("/Applications"));
        QCOMPARE(scopes.at(1), m_home + QStringLiteral("/Applications"));
        QCOMPARE(scopes.at(11), m_volume + QStringLiteral("/Library/Application Support/SIMBL"));
        QCOMPARE(scopes.last(), extra);

        // By file name ignoring case; equal names keep scope order (the local domain before the user's).
        const QStringList expected = {
            home.path(QStringLiteral("Applications/Alpha.app")),
            volume.path(QStringLiteral("Applications/beta.app")),
            home.path(QStringLiteral("Library/Screen Savers/Drift.saver")),
            volume.path(QStringLiteral("Library/Screen Savers/Ebb.saver")),
            home.path(QStringLiteral("Library/Internet Plug-Ins/Flash.plugin")),
            volume.path(QStringLiteral("Developer/Applications/Gamma.app")),
            home.path(QStringLiteral("Library/PreferencePanes/Pane.prefPane")),
            home.path(QStringLiteral("Library/Widgets/Radar.wdgt")),
            volume.path(QStringLiteral("Library/Internet Plug-Ins/Safari Cookies.bundle")),
            volume.path(QStringLiteral("Applications/Same.app")),
            home.path(QStringLiteral("Applications/same.app")),
            volume.path(QStringLiteral("Library/Application Support/SIMBL/Plugins/Tint.qtz")),
            more.path(QStringLiteral("Two\nLines.app")),
            more.path(QStringLiteral("Älpha.app")), // compared by character code, not by a language's rules
        };
        QCOMPARE(BundleWalk::findBundles(scopes), expected);
    }

    void nestedBundlesAndLinks()
    {
        BundleTree tree(m_volume + QStringLiteral("/Applications"));
        tree.addBundle(QStringLiteral("Outer.app/Contents/Library/LoginItems/Inner.app"));
        tree.addBundle(QStringLiteral("Suite/Tool.app"));
        tree.addBundle(QStringLiteral("Kit.framework/Resources/Kit Helper.app"));
        tree.addSymlink(QStringLiteral("Suite/loop"), QStringLiteral(".."));
        tree.addSymlink(QStringLiteral("Suite/self"), QStringLiteral("."));
        tree.addSymlink(QStringLiteral("Suite/Dangling.app"), m_dir->path() + QStringLiteral("/nowhere"));
        tree.addSymlink(QStringLiteral("Again.app"), tree.path(QStringLiteral("Suite/Tool.app")));
        const QString elsewhere =
            BundleTree(m_dir->path() + QStringLiteral("/elsewhere")).addBundle(QStringLiteral("Far.app"));
        tree.addSymlink(QStringLiteral("Far.app"), elsewhere);
        tree.addSymlink(QStringLiteral("Linked"), m_dir->path() + QStringLiteral("/elsewhere"));
        const QByteArray latin1Name = QFile::encodeName(tree.root()) + QByteArray("/Latin1 \xe9t\xe9.app");
        QCOMPARE(mkdir(latin1Name.constData(), 0755), 0); // not UTF-8: passed over
        QTest::ignoreMessage(
            QtInfoMsg, QRegularExpression(QStringLiteral("^skipping .*/Latin1 .*: its name is not valid UTF-8$")));

        const QStringList found = BundleWalk::findBundles(
            {tree.root(), tree.root() + QStringLiteral("/Suite"), m_dir->path() + QStringLiteral("/elsewhere")});
        rmdir(latin1Name.constData()); // Qt could not remove it with the tree
        // The links "Again.app" and "Far.app" are reached first, yet each bundle is reported where it lies:
        // Suite/Tool.app later in the same scope, Far.app in a later scope that "Linked" had already led into.
        QCOMPARE(found,
                 (QStringList{elsewhere, tree.path(QStringLiteral("Kit.framework/Resources/Kit Helper.app")),
                              tree.path(QStringLiteral("Outer.app")), tree.path(QStringLiteral("Suite/Tool.app"))}));
    }

    void passedOverWithALogLine()
    {
        BundleTree tree(m_volume + QStringLiteral("/Applications"));
        tree.addBundle(QStringLiteral("Open.app"));
        const QString locked = tree.addFolder(QStringLiteral("Locked"));
        tree.addBundle(QStringLiteral("Locked/Secret.app"));
        QFile::setPermissions(locked, QFileDevice::Permissions());
        // A bundle whose path is longer than the system opens, in a folder whose path is not.
        QString deep = tree.addFolder(QString(200, QLatin1Char('d')));
        while (deep.size() < 3890) {
            deep = tree.addFolder(deep.mid(tree.root().size() + 1) + QLatin1Char('/') + QString(200, QLatin1Char('d')));
        }
        const QByteArray tooLong = QByteArray(4100 - deep.size(), 'x') + ".app";
        const int deepFd = open(QFile::encodeName(deep).constData(), O_RDONLY | O_DIRECTORY);
        QCOMPARE(mkdirat(deepFd, tooLong.constData(), 0755), 0);
        QTest::ignoreMessage(QtInfoMsg, qPrintable(QStringLiteral("skipping %1: Permission denied").arg(locked)));
        QTest::ignoreMessage(
            QtInfoMsg,
            qPrintable(QStringLiteral("skipping %1/%2: its path is too long").arg(deep, QString::fromLatin1(tooLong))));
        QStringList found;
        {
            ObeyFolderPermissions obey;
            QVERIFY(QDir(locked).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).isEmpty());
            found = BundleWalk::findBundles({tree.root()});
        }
        QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        unlinkat(deepFd, tooLong.constData(), AT_REMOVEDIR); // Qt could not remove it with the tree
        close(deepFd);
        QCOMPARE(found, QStringList{tree.path(QStringLiteral("Open.app"))});
    }

    void recordsAndBlacklist()
    {
        BundleTree tree(m_volume + QStringLiteral("/Applications"));
        tree.addBundle(QStringLiteral("Editor.app"),
                       {{QStringLiteral("CFBundleIdentifier"), QStringLiteral("com.example.editor")},
                        {QStringLiteral("CFBundleShortVersionString"), QStringLiteral("2.5.1")}});
        tree.addBundle(QStringLiteral("Editor Setup.app"));
        tree.addBundle(QStringLiteral("Chess.app"));
        tree.addBundle(QStringLiteral("Mine.app"));

        VLBlacklist blacklist;
        blacklist.append({QStringLiteral("Mine")});
        VLAppScanner scanner(blacklist);
        const Posted posted = scanAndWait(scanner);
        QVERIFY(posted.apps);
        QCOMPARE(pathsOf(*posted.apps), QStringList{tree.path(QStringLiteral("Editor.app"))});
        QCOMPARE(posted.apps->first()->bundleID, QStringLiteral("com.example.editor"));
        QCOMPARE(posted.apps->first()->localVersion, QStringLiteral("2.5.1"));
    }

    void hostileListsPassedOver()
    {
        // Lists a naive reader would crash on, or take hours and gigabytes over: each bundle is read without them, and
        // the scan goes on with the next.
        BundleTree tree(m_volume + QStringLiteral("/Applications"));
        QStringList expected = {
            tree.addBundle(QStringLiteral("Good.app"), PlistFiles::info({}, QStringLiteral("1.5")))};
        for (const PlistFiles::HostileList &list : PlistFiles::hostileLists()) {
            const QString bundle = tree.path(QStringLiteral("Hostile %1.app").arg(expected.size()));
            tree.addFile(bundle.mid(tree.root().size() + 1) + QStringLiteral("/Contents/Info.plist"), list.bytes);
            expected.append(bundle);
        }
        VLAppScanner scanner{VLBlacklist()};
        const Posted posted = scanAndWait(scanner);
        QVERIFY(posted.apps);
        QCOMPARE(pathsOf(*posted.apps), expected);
        for (const AppRef &app : *posted.apps) {
            QCOMPARE(app->localVersion, app == posted.apps->first() ? QStringLiteral("1.5") : QStringLiteral("-"));
        }
    }

    void notifications()
    {
        // Nothing found at all: the foreground notification with no object, and a log line.
        {
            VLAppScanner scanner{VLBlacklist()};
            QTest::ignoreMessage(QtInfoMsg, "mdQuery resultCount = 0");
            const Posted posted = scanAndWait(scanner);
            QCOMPARE(posted.name, QLatin1String(kVLAppScannerFinished));
            QVERIFY(!posted.apps);
            QVERIFY(scanner.doneScanning());
        }
        BundleTree tree(m_volume + QStringLiteral("/Applications"));
        tree.addBundle(QStringLiteral("Chess.app"));
        // Found, but all blacklisted: an empty list, which is not the same as nothing found.
        {
            VLAppScanner scanner{VLBlacklist()};
            QVERIFY(!scanner.doneScanning());
            const Posted posted = scanAndWait(scanner);
            QCOMPARE(posted.name, QLatin1String(kVLAppScannerFinished));
            QVERIFY(posted.apps && posted.apps->isEmpty());
        }
        tree.addBundle(QStringLiteral("Notes.app"));
        {
            VLAppScanner scanner{VLBlacklist()};
            scanner.setSendResultsToBackgroundCheker(true);
            const Posted posted = scanAndWait(scanner);
            QCOMPARE(posted.name, QLatin1String(kVLAppScannerFinishedBackground));
            QVERIFY(posted.apps);
            QCOMPARE(pathsOf(*posted.apps), QStringList{tree.path(QStringLiteral("Notes.app"))});
            QVERIFY(scanner.doneScanning());
        }
    }

    void manyBundlesOnAllCores()
    {
        // Enough bundles for the records to be read on several threads; they still come back whole and in order, and a
        // scan started again at once replaces the first, which then posts nothing.
        BundleTree tree(m_volume + QStringLiteral("/Applications"));
        QStringList expected;
        for (int i = 0; i < 300; ++i) {
            const QString name = QStringLiteral("Tool %1.app").arg(i, 3, 10, QLatin1Char('0'));
            expected.append(
                tree.addBundle(name, {{QStringLiteral("CFBundleShortVersionString"), QStringLiteral("1.%1").arg(i)}}));
        }
        VLAppScanner scanner{VLBlacklist()};
        int posts = 0;
        QObject context;
        VLNotificationCenter::defaultCenter().subscribe(QLatin1String(kVLAppScannerFinished), &context,
                                                        [&posts](const QVariant &) { ++posts; });
        scanner.createSearchPredicate();
        const Posted posted = scanAndWait(scanner);
        QVERIFY(posted.apps);
        QCOMPARE(pathsOf(*posted.apps), expected);
        for (int i = 0; i < 300; ++i) {
            QCOMPARE(posted.apps->at(i)->localVersion, QStringLiteral("1.%1").arg(i));
        }
        QTest::qWait(50);
        QCOMPARE(posts, 1);
    }
};

VELMORA_TEST_MAIN(TestVLAppScanner)
#include "TestVLAppScanner.moc"
