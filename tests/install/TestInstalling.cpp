// Putting the chosen item in place: each kind's route (apps, user folders, vendor installers, disk images, flat
// packages with gzip and pbzx payloads at their install location), the old copy kept until the new one is in place,
// the running-app gate asked around it, room kept free on the target's volume, and administrator rights through a
// stand-in escalation command.

#include "install/AuthHelper.h"
#include "install/BLAuthentication.h"
#include "install/PlaceTool.h"
#include "install/PlacingRoom.h"
#include "install/RunningAppGate.h"
#include "install/UpdateState.h"
#include "install/VLInstaller.h"
#include "model/VLApp.h"
#include "platform/VLSettings.h"
#include "support/BundleTree.h"
#include "support/DataTable.h"
#include "support/InstallFixtures.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

struct RecordingGate : RunningAppGate
{
    bool allow = true;
    QStringList calls;

    bool prepareToReplace(const QString &target) override { return calls.append(target), allow; }
    void finishedReplacing(const QString &, bool placed) override { calls.append(placed ? u"placed"_s : u"back"_s); }
};

} // namespace

class TestInstalling : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root = m_dir.filePath(u"volume"_s);

private slots:
    void initTestCase()
    {
        qunsetenv("DISPLAY");
        qunsetenv("WAYLAND_DISPLAY");
        QVERIFY(VLSettings().setValue(QString::fromLatin1(SettingKey::volumeRoot), m_root));
    }

    void init() { QDir(m_root).removeRecursively(); }

    void handleBestMatch_data()
    {
        // make: folder, file, iso (an image of payload), gzip:LOCATION or pbzx:LOCATION (a flat package of payload
        // installing at LOCATION, none when empty). payload: "a|b", folders ending in "/". expected: %R the volume
        // root, %H the home folder.
        columns<QString, QString, QString, QString, QString, QString>("item", "make", "payload", "record", "expected",
                                                                      "failure");
        const QString apps = u"Bar.app/Contents/|Foo.app/Contents/MacOS/"_s;
        const QString fooApp = u"%R/Applications/Foo.app"_s;
        const auto row = [](const char *name, const QString &item, const QString &make, const QString &payload,
                            const QString &record, const QString &expected, const QString &failure = {}) {
            QTest::newRow(name) << item << make << payload << record << expected << failure;
        };
        row("app into the applications folder", u"Foo.app"_s, u"folder"_s, {}, u"Foo.app"_s, fooApp);
        row("preference pane into the user's folder", u"Foo.prefPane"_s, u"folder"_s, {}, u"Foo.prefPane"_s,
            u"%H/Library/PreferencePanes/Foo.prefPane"_s);
        row("screen saver into the user's folder", u"Foo.saver"_s, u"folder"_s, {}, u"Foo.saver"_s,
            u"%H/Library/Screen Savers/Foo.saver"_s);
        row("vendor installer without a display", u"Install Foo.app"_s, u"folder"_s, {}, u"Foo.app"_s, {},
            u"Installer did not complete"_s);
        row("anything else", u"Foo.zip"_s, u"file"_s, {}, u"Foo.app"_s, {});
        row("disk image inside the download", u"Foo.dmg"_s, u"iso"_s, u"Foo.app/Contents/|Read Me.txt"_s, u"Foo.app"_s,
            fooApp);
        row("package, gzip payload", u"Foo.pkg"_s, u"gzip:/Applications"_s, apps, u"Foo.app"_s, fooApp);
        row("package, pbzx payload", u"Foo.pkg"_s, u"pbzx:/Applications"_s, apps, u"Foo.app"_s, fooApp);
        row("package without install location: /", u"Foo.mpkg"_s, u"gzip:"_s,
            u"Applications/Bar.app/Contents/|Applications/Foo.app/Contents/"_s, u"Foo.app"_s, fooApp);
        row("package: first app when none has the record's name", u"Foo.pkg"_s, u"pbzx:/Applications"_s, apps,
            u"Baz.app"_s, u"%R/Applications/Bar.app"_s);
        row("package installing outside the volume root", u"Foo.pkg"_s, u"gzip:/../../outside"_s, apps, u"Foo.app"_s,
            {});
        row("package unreadable", u"Foo.pkg"_s, u"file"_s, {}, u"Foo.app"_s, {});
        // A package places nothing outside the volume's application folders, and is refused whole.
        row("package installing into a system folder", u"Foo.pkg"_s, u"gzip:/etc"_s, apps, u"Foo.app"_s, {});
        row("package with a file beside the applications folder", u"Foo.pkg"_s, u"gzip:"_s,
            u"Applications/Foo.app/Contents/|etc/cron.d/job"_s, u"Foo.app"_s, {});
    }

    void handleBestMatch()
    {
        auto [item, make, payload, record, expected, failure] =
            fetch<QString, QString, QString, QString, QString, QString>("item", "make", "payload", "record", "expected",
                                                                        "failure");
        QTemporaryDir dir;
        BundleTree download(dir.filePath(u"dl"_s));
        BundleTree source(dir.filePath(u"payload"_s));
        for (const QString &entry : payload.split(u'|', Qt::SkipEmptyParts)) {
            entry.endsWith(u'/') ? source.addFolder(entry) : source.addFile(entry, "text");
        }
        const QString best = download.path(item);
        if (make == u"folder") {
            download.addBundle(item + u"/Contents"_s);
        } else if (make == u"file") {
            download.addFile(item, "not a package");
        } else if (make == u"iso") {
            QVERIFY(InstallFixtures::run(
                u"xorriso"_s, u"-as mkisofs -hfsplus -R -V Foo -o %1 ."_s.arg(best).split(u' '), source.root()));
        } else {
            QVERIFY(
                InstallFixtures::makeFlatPackage(source.root(), best, make.section(u':', 1), make.startsWith(u"pbzx")));
        }
        VLApp app;
        app.name = record;
        VLInstaller installer;
        installer.setSenderApp(&app);
        UpdateState state;
        installer.setUpdateState(&state);
        expected.replace(u"%R"_s, m_root).replace(u"%H"_s, QDir::homePath());
        QCOMPARE(installer.handleBestMatch(best, u"-"_s), expected);
        QVERIFY(expected.isEmpty() || QFileInfo(expected).isDir());
        QCOMPARE(state.failMessage(), failure);
        QCOMPARE(state.hasFailed(), !failure.isEmpty());
        QVERIFY(!QFile::exists(m_root + u"/../../outside"));
        QVERIFY(!QFile::exists(m_root + u"/etc"_s));
        QVERIFY(!expected.isEmpty() || !QFile::exists(m_root + u"/Applications/Foo.app"_s));
    }

    void replace_data()
    {
        columns<bool, bool, bool, QString>("itemExists", "gateAllows", "placed", "calls");
        QTest::newRow("replaced") << true << true << true << u"%T|placed"_s;
        QTest::newRow("copy fails: the old copy is back") << false << true << false << u"%T|back"_s;
        QTest::newRow("the running copy was not quit") << true << false << false << u"%T"_s;
    }

    void replace()
    {
        auto [itemExists, gateAllows, placed, calls] =
            fetch<bool, bool, bool, QString>("itemExists", "gateAllows", "placed", "calls");
        QTemporaryDir dir;
        InstallFixtures::makeAppTree(dir.filePath(u"new"_s));
        BundleTree installed(dir.filePath(u"Applications"_s));
        installed.addFile(u"Foo.app/Contents/old"_s, "old");
        const QString item = itemExists ? dir.filePath(u"new/Foo.app"_s) : dir.filePath(u"missing.app"_s);
        const QString target = installed.path(u"Foo.app"_s);
        RecordingGate gate;
        gate.allow = gateAllows;
        VLInstaller installer;
        installer.setRunningAppGate(&gate);

        QCOMPARE(installer.checkIfAppIsRunningAndInstall(item, target), placed);
        QCOMPARE(gate.calls.join(u'|'), calls.replace(u"%T"_s, target));
        const QStringList oldCopy = {u"Contents/"_s, u"Contents/old"_s};
        QCOMPARE(InstallFixtures::describe(target), placed ? InstallFixtures::describe(item) : oldCopy);
        QCOMPARE(QDir(installed.root()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"Foo.app"_s});
    }

    // The stand-in records what it is asked to run, then runs it: a replacement is one escalation, a package one per
    // payload; after a refusal the helper never asks again.
    void privileged()
    {
        QTemporaryDir dir;
        BundleTree tree(dir.path());
        const QString standIn = tree.addFile(u"escalate"_s, "#!/bin/sh\nprintf '%s\\n' \"$@\" >> \"$0.argv\"\n"
                                                            "[ -e \"$0.refuse\" ] && exit 126\nshift\nexec \"$@\"\n");
        QFile::setPermissions(standIn, QFile::permissions(standIn) | QFile::ExeOwner);
        QVERIFY(VLSettings().setValue(QString::fromLatin1(SettingKey::escalationCommand),
                                      QString(standIn + u" --stand-in"_s)));
        InstallFixtures::makeAppTree(tree.path(u"new"_s));
        tree.addFile(u"Applications/Foo.app/Contents/old"_s, "old");
        const QString item = tree.path(u"new/Foo.app"_s);
        const QString target = tree.path(u"Applications/Foo.app"_s);
        // A quote in the path is only a character: no shell ever sees it.
        const QString package = tree.path(u"Foo's Tools.pkg"_s);
        QVERIFY(InstallFixtures::makeFlatPackage(tree.path(u"new"_s), package, u"/Applications"_s, true));
        AuthHelper helper(PrivilegedCommand::Escalation::Always);

        QVERIFY(helper.replacePathWithForcedAuthentication(item, target));
        QCOMPARE(InstallFixtures::describe(target), InstallFixtures::describe(item));
        QCOMPARE(QDir(tree.path(u"Applications"_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"Foo.app"_s});
        QVERIFY(!helper.runPKGInstallerWithForcedAuthentication(package));
        QCOMPARE(InstallFixtures::describe(m_root + u"/Applications/Foo.app"_s), InstallFixtures::describe(item));
        QCOMPARE(AuthHelper::queryInstallerWithPath(package), u"Foo Tools"_s);
        QCOMPARE(AuthHelper::queryInstallerWithPath(target), u"Foo.app"_s);
        tree.addFile(u"escalate.refuse"_s);
        QVERIFY(!helper.removePathWithForcedAuthentication(target));
        QVERIFY(!helper.copyPathWithForcedAuthentication(item, target));
        QFile recorded(standIn + u".argv"_s);
        QVERIFY(recorded.open(QIODevice::ReadOnly));
        const QString place = PlaceTool::path();
        QCOMPARE(QString::fromUtf8(recorded.readAll())
                     .split(u'\n', Qt::SkipEmptyParts)
                     .replaceInStrings(QRegularExpression(u"/[^/]+/payload-0$"_s), u"/W/payload-0"_s),
                 (QStringList{u"--stand-in"_s, place, u"replace"_s, item, target, u"--stand-in"_s, place, u"merge"_s,
                              dir.path() + u"/W/payload-0"_s, m_root + u"/Applications"_s, u"--stand-in"_s, place,
                              u"remove"_s, target}));
        QVERIFY(QFile::exists(target + u"/Contents/Info.plist"_s));

        QFile::remove(standIn + u".refuse"_s);
        BLAuthentication shared(PrivilegedCommand::Escalation::Always);
        const QStringList numbers = u"0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20"_s.split(u' ');
        QCOMPARE(shared.executeCommandSynced(u"/bin/echo"_s, numbers), numbers.mid(0, 19).join(u' ').toUtf8() + '\n');
    }

    // What velmora-place merges in: a link standing at a destination is replaced, not written through, and one
    // standing for a folder is never replaced by a folder; a folder that exists keeps its mode, except a bundle,
    // which is replaced whole like every other update; no set-id bit and no write bit for others arrives; what the
    // payload does not name stays.
    void placeKeepsWhatStands()
    {
        QTemporaryDir dir;
        BundleTree tree(dir.path());
        tree.addFile(u"victim"_s, "mine");
        tree.addFile(u"target/Support/Foo/old"_s, "old");
        tree.addFile(u"target/Foo.app/Contents/old"_s, "old");
        QVERIFY(QFile::link(tree.path(u"victim"_s), tree.path(u"target/Support/Foo/Info.plist"_s)));
        const auto setMode = [&tree](const char *path, mode_t mode) {
            return chmod(QFile::encodeName(tree.path(QString::fromLatin1(path))).constData(), mode) == 0;
        };
        const auto mode = [&tree](const char *path) {
            struct stat info = {};
            return lstat(QFile::encodeName(tree.path(QString::fromLatin1(path))).constData(), &info) == 0
                       ? info.st_mode & 07777
                       : 0;
        };
        tree.addFile(u"payload/Support/Foo/Info.plist"_s, "new");
        tree.addFile(u"payload/Support/Foo/tool"_s, "#!/bin/sh\n");
        tree.addFolder(u"payload/Support/Foo/Shared"_s);
        tree.addFile(u"payload/Foo.app/Contents/new"_s, "new");
        QVERIFY(setMode("target/Support/Foo", 0750) && setMode("payload/Support/Foo/tool", 06775) &&
                setMode("payload/Support/Foo/Shared", 0777));

        QVERIFY(PlaceTool::run(u"merge"_s, {tree.path(u"payload"_s), tree.path(u"target"_s)}));
        QCOMPARE(PlistFiles::readFile(tree.path(u"victim"_s)), "mine");
        QCOMPARE(PlistFiles::readFile(tree.path(u"target/Support/Foo/Info.plist"_s)), "new");
        QCOMPARE(mode("target/Support/Foo"), 0750u);
        QCOMPARE(mode("target/Support/Foo/tool"), 0755u);
        QCOMPARE(mode("target/Support/Foo/Shared"), 0755u);
        QVERIFY(QFile::exists(tree.path(u"target/Support/Foo/old"_s)));
        QCOMPARE(QDir(tree.path(u"target/Foo.app/Contents"_s)).entryList(QDir::Files), QStringList{u"new"_s});

        QVERIFY(QFile::link(tree.path(u"target/Support"_s), tree.path(u"target/lib"_s)));
        tree.addFile(u"payload2/lib/x"_s, "x");
        QVERIFY(!PlaceTool::run(u"merge"_s, {tree.path(u"payload2"_s), tree.path(u"target"_s)}));
        QVERIFY(QFileInfo(tree.path(u"target/lib"_s)).isSymLink());

        // As root it never works through a folder that others may change (they could swap a step for a link); as
        // the user, that is the user's own business.
        QVERIFY(setMode("target", 0777));
        QCOMPARE(PlaceTool::run(u"merge"_s, {tree.path(u"payload2"_s), tree.path(u"target/Support/Foo"_s)}),
                 geteuid() != 0);
    }

    void placingRoom_data()
    {
        // A 1 MiB app with a link to a 64 MiB file; free: the target volume's free MiB; reserve: in MiB.
        columns<qint64, qint64, bool>("free", "reserve", "fits");
        row("room for the copy and the reserve", qint64(4), qint64(2), true);
        row("the copy would eat into the reserve", qint64(3), qint64(2), false);
        row("free space unknown", qint64(-1), qint64(2), true);
    }

    void placingRoom()
    {
        auto [free, reserve, fits] = fetch<qint64, qint64, bool>("free", "reserve", "fits");
        BundleTree tree(m_root);
        QVERIFY(QFile::resize(tree.addFile(u"big"_s), 64 << 20));
        tree.addFile(u"new/Foo.app/Contents/MacOS/Foo"_s, QByteArray(1 << 20, 'x'));
        QVERIFY(QFile::link(tree.path(u"big"_s), tree.path(u"new/Foo.app/Contents/big"_s)));
        QString asked;
        const QString noRoom = PlacingRoom::check(tree.path(u"new/Foo.app"_s), tree.path(u"Applications/Foo.app"_s),
                                                  reserve << 20, [&](const QString &folder) {
                                                      asked = folder;
                                                      return free < 0 ? free : free << 20;
                                                  });
        QCOMPARE(noRoom.isEmpty(), fits);
        QCOMPARE(asked, m_root); // the nearest folder that exists
    }

    // What velmora-place refuses before touching anything: as root it must not be steered outside its verbs.
    void placeRefuses_data()
    {
        columns<QString>("words");
        QTest::newRow("unknown verb") << u"chmod /tmp/x/y"_s;
        QTest::newRow("too few paths") << u"replace /tmp/x/y"_s;
        QTest::newRow("relative path") << u"remove tmp/x/y"_s;
        QTest::newRow("\"..\" step") << u"remove /tmp/x/../y"_s;
        QTest::newRow("empty step") << u"copy /tmp/x //tmp/y"_s;
        QTest::newRow("the top itself") << u"remove /"_s;
        QTest::newRow("a folder under the top") << u"replace /tmp/x/y /usr"_s;
    }

    void placeRefuses()
    {
        auto [words] = fetch<QString>("words");
        QProcess tool;
        tool.start(PlaceTool::path(), words.split(u' '));
        QVERIFY(tool.waitForFinished());
        QCOMPARE(tool.exitCode(), 2);
    }
};

VELMORA_TEST_MAIN(TestInstalling)
#include "TestInstalling.moc"
