// Putting the chosen item in place: each kind's route (apps, user folders, vendor installers, disk images, flat
// packages with gzip and pbzx payloads at their install location), the old copy kept until the new one is in place,
// the running-app gate asked around it, and administrator rights through a stand-in escalation command.

#include "install/AuthHelper.h"
#include "install/RunningAppGate.h"
#include "install/VLInstaller.h"
#include "model/VLApp.h"
#include "platform/VLSettings.h"
#include "support/BundleTree.h"
#include "support/DataTable.h"
#include "support/InstallFixtures.h"
#include "support/TestMain.h"

#include <QDir>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

class RecordingGate : public RunningAppGate
{
public:
    bool allow = true;
    QStringList calls;

    bool prepareToReplace(const QString &target) override
    {
        calls.append(u"prepare "_s + QFileInfo(target).fileName());
        return allow;
    }
    void finishedReplacing(const QString &target, bool placed) override
    {
        calls.append(u"finished "_s + QFileInfo(target).fileName() + (placed ? u" placed"_s : u" restored"_s));
    }
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
        // make: folder, file, iso (an image of payload), gzip or pbzx (a flat package of payload at location).
        // expected: %R the volume root, %H the home folder.
        columns<QString, QString, QStringList, QString, QString, QString, QString>(
            "item", "make", "payload", "location", "record", "expected", "failure");
        const QStringList apps = {u"Bar.app/Contents/"_s, u"Foo.app/Contents/MacOS/"_s};
        const QStringList rooted = {u"Applications/Bar.app/Contents/"_s, u"Applications/Foo.app/Contents/"_s};
        QTest::newRow("app into the applications folder") << "Foo.app"
                                                          << "folder" << QStringList() << ""
                                                          << "Foo.app"
                                                          << "%R/Applications/Foo.app"
                                                          << "";
        QTest::newRow("preference pane into the user's folder") << "Foo.prefPane"
                                                                << "folder" << QStringList() << ""
                                                                << "Foo.prefPane"
                                                                << "%H/Library/PreferencePanes/Foo.prefPane"
                                                                << "";
        QTest::newRow("screen saver into the user's folder") << "Foo.saver"
                                                             << "folder" << QStringList() << ""
                                                             << "Foo.saver"
                                                             << "%H/Library/Screen Savers/Foo.saver"
                                                             << "";
        QTest::newRow("vendor installer without a display") << "Install Foo.app"
                                                            << "folder" << QStringList() << ""
                                                            << "Foo.app"
                                                            << ""
                                                            << "Installer did not complete";
        QTest::newRow("anything else") << "Foo.zip"
                                       << "file" << QStringList() << ""
                                       << "Foo.app"
                                       << ""
                                       << "";
        QTest::newRow("disk image inside the download")
            << "Foo.dmg"
            << "iso" << QStringList{u"Foo.app/Contents/"_s, u"Read Me.txt"_s} << ""
            << "Foo.app"
            << "%R/Applications/Foo.app"
            << "";
        QTest::newRow("package, gzip payload") << "Foo.pkg"
                                               << "gzip" << apps << "/Applications"
                                               << "Foo.app"
                                               << "%R/Applications/Foo.app"
                                               << "";
        QTest::newRow("package, pbzx payload") << "Foo.pkg"
                                               << "pbzx" << apps << "/Applications"
                                               << "Foo.app"
                                               << "%R/Applications/Foo.app"
                                               << "";
        QTest::newRow("package without install location: /") << "Foo.mpkg"
                                                             << "gzip" << rooted << ""
                                                             << "Foo.app"
                                                             << "%R/Applications/Foo.app"
                                                             << "";
        QTest::newRow("package: first app when none has the record's name") << "Foo.pkg"
                                                                            << "pbzx" << apps << "/Applications"
                                                                            << "Baz.app"
                                                                            << "%R/Applications/Bar.app"
                                                                            << "";
        QTest::newRow("package installing outside the volume root") << "Foo.pkg"
                                                                    << "gzip" << apps << "/../../outside"
                                                                    << "Foo.app"
                                                                    << ""
                                                                    << "";
        QTest::newRow("package unreadable") << "Foo.pkg"
                                            << "file" << QStringList() << ""
                                            << "Foo.app"
                                            << ""
                                            << "";
    }

    void handleBestMatch()
    {
        auto [item, make, payload, location, record, expected, failure] =
            fetch<QString, QString, QStringList, QString, QString, QString, QString>(
                "item", "make", "payload", "location", "record", "expected", "failure");
        QTemporaryDir dir;
        BundleTree download(dir.filePath(u"dl"_s));
        BundleTree source(dir.filePath(u"payload"_s));
        for (const QString &entry : payload) {
            entry.endsWith(u'/') ? source.addFolder(entry) : source.addFile(entry, "text");
        }
        const QString best = download.path(item);
        if (make == u"folder") {
            download.addBundle(item + u"/Contents"_s);
        } else if (make == u"file") {
            download.addFile(item, "not a package");
        } else if (make == u"iso") {
            QVERIFY(InstallFixtures::run(
                u"xorriso"_s,
                {u"-as"_s, u"mkisofs"_s, u"-hfsplus"_s, u"-R"_s, u"-V"_s, u"Foo"_s, u"-o"_s, best, u"."_s},
                source.root()));
        } else {
            QVERIFY(InstallFixtures::makeFlatPackage(source.root(), best, location, make == u"pbzx"));
        }
        VLApp app;
        app.name = record;
        app.localPath = u"-"_s;
        VLInstaller installer;
        installer.setSenderApp(&app);
        expected.replace(u"%R"_s, m_root).replace(u"%H"_s, QDir::homePath());
        QCOMPARE(installer.handleBestMatch(best, u"-"_s), expected);
        QVERIFY(expected.isEmpty() || QFileInfo(expected).isDir());
        QCOMPARE(app.failMessage.load(), failure);
        QCOMPARE(app.didFail.load(), !failure.isEmpty());
        QVERIFY(!QFile::exists(dir.filePath(u"outside"_s)));
    }

    void replace_data()
    {
        columns<bool, bool, bool, QStringList>("itemExists", "gateAllows", "placed", "calls");
        QTest::newRow("replaced") << true << true << true
                                  << QStringList{u"prepare Foo.app"_s, u"finished Foo.app placed"_s};
        QTest::newRow("copy fails: the old copy is back")
            << false << true << false << QStringList{u"prepare Foo.app"_s, u"finished Foo.app restored"_s};
        QTest::newRow("the running copy was not quit") << true << false << false << QStringList{u"prepare Foo.app"_s};
    }

    void replace()
    {
        auto [itemExists, gateAllows, placed, calls] =
            fetch<bool, bool, bool, QStringList>("itemExists", "gateAllows", "placed", "calls");
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
        QCOMPARE(gate.calls, calls);
        const QStringList oldCopy = {u"Contents/"_s, u"Contents/old"_s};
        QCOMPARE(InstallFixtures::describe(target), placed ? InstallFixtures::describe(item) : oldCopy);
        QCOMPARE(QDir(installed.root()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"Foo.app"_s});
    }

    // The stand-in records what it is asked to run, then runs it; after a refusal the helper never asks again.
    void privileged()
    {
        QTemporaryDir dir;
        BundleTree tree(dir.path());
        const QString standIn = tree.addFile(u"escalate"_s, "#!/bin/sh\nprintf '%s\\n' \"$@\" >> \"$0.argv\"\n"
                                                            "[ -e \"$0.refuse\" ] && exit 126\nshift\nexec \"$@\"\n");
        QFile::setPermissions(standIn, QFile::permissions(standIn) | QFile::ExeOwner);
        QVERIFY(VLSettings().setValue(QString::fromLatin1(SettingKey::escalationCommand),
                                      QString(standIn + u" --stand-in"_s)));
        tree.addFile(u"from/file"_s, "data");
        const QString copy = tree.path(u"to"_s);
        AuthHelper helper(PrivilegedCommand::Escalation::Always);

        QVERIFY(helper.copyPathWithForcedAuthentication(tree.path(u"from"_s), copy));
        QVERIFY(QFile::exists(copy + u"/file"_s));
        tree.addFile(u"escalate.refuse"_s);
        QVERIFY(!helper.removePathWithForcedAuthentication(copy));
        QVERIFY(!helper.movePathWithForcedAuthentication(copy, copy + u"2"_s));
        QFile recorded(standIn + u".argv"_s);
        QVERIFY(recorded.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(recorded.readAll()).split(u'\n', Qt::SkipEmptyParts),
                 (QStringList{u"--stand-in"_s, u"/usr/bin/cp"_s, u"-a"_s, u"-T"_s, u"--"_s, tree.path(u"from"_s), copy,
                              u"--stand-in"_s, u"/usr/bin/rm"_s, u"-rf"_s, u"--"_s, copy}));
        QVERIFY(QFile::exists(copy + u"/file"_s));
    }
};

VELMORA_TEST_MAIN(TestInstalling)
#include "TestInstalling.moc"
