// Choosing the item to install in folder trees as vendors make them: the names that never are candidates, the
// pair passes that drop a package, extension or plug-in beside the named app, the fall-backs and the descents.

#include "install/VLInstaller.h"
#include "model/VLApp.h"
#include "support/BundleTree.h"
#include "support/DataTable.h"
#include "support/TestMain.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;

class TestInstallCandidates : public QObject
{
    Q_OBJECT

private slots:
    void choose_data()
    {
        // entries: "name/" a folder, "name -> target" a link, else a file. candidates: the top folder's.
        columns<QStringList, QString, QString, QStringList, QString>("entries", "record", "localPath", "candidates",
                                                                     "best");
        const QString installed = u"/Applications/Foo.app"_s;
        QTest::newRow("image: app, read-me, link")
            << QStringList{u"Foo.app/"_s, u"Read Me.rtf"_s, u"Applications -> /Applications"_s} << "Foo.app"
            << installed << QStringList{u"Foo.app"_s} << "Foo.app";
        QTest::newRow("vocabulary") << QStringList{u"__MACOSX/"_s,
                                                   u".Foo.app/"_s,
                                                   u"Uninstall Foo.app/"_s,
                                                   u"CLI "_s,
                                                   u"Icon"_s,
                                                   u"License Agreement.pdf"_s,
                                                   u"Foo.app/"_s,
                                                   u"Foo Updater.app/"_s,
                                                   u"Bar Dyn Updater.app/"_s}
                                    << "Foo.app" << installed << QStringList{u"Bar Dyn Updater.app"_s, u"Foo.app"_s}
                                    << "Foo.app";
        QTest::newRow("app beats its installer package")
            << QStringList{u"Foo Installer.pkg"_s, u"Foo.app/"_s} << "Foo.app" << installed << QStringList{u"Foo.app"_s}
            << "Foo.app";
        QTest::newRow("package pass drops the fall-back app seen before the named one")
            << QStringList{u"Bar.app/"_s, u"Foo.app/"_s, u"Zed.pkg"_s} << "Foo.app" << installed
            << QStringList{u"Foo.app"_s, u"Zed.pkg"_s} << "Foo.app";
        QTest::newRow("named extension drops the unnamed app")
            << QStringList{u"Bar.app/"_s, u"Foo.safariextz"_s} << "Foo" << installed << QStringList{u"Foo.safariextz"_s}
            << "Foo.safariextz";
        QTest::newRow("named package keeps the unnamed app")
            << QStringList{u"Bar.app/"_s, u"Foo.pkg"_s} << "Foo.app" << installed
            << QStringList{u"Bar.app"_s, u"Foo.pkg"_s} << "Foo.pkg";
        QTest::newRow("any package when nothing matches")
            << QStringList{u"Bar.pkg"_s, u"Notes/"_s} << "Foo.app" << installed << QStringList{u"Bar.pkg"_s, u"Notes"_s}
            << "Bar.pkg";
        QTest::newRow("letter case") << QStringList{u"FOO.APP/"_s, u"Other/"_s} << "Foo.app" << installed
                                     << QStringList{u"FOO.APP"_s, u"Other"_s} << "FOO.APP";
        QTest::newRow("one folder is descended") << QStringList{u"Foo 2.1/Foo.app/"_s, u"Foo 2.1/Docs/"_s} << "Foo.app"
                                                 << installed << QStringList{u"Foo 2.1"_s} << "Foo 2.1/Foo.app";
        QTest::newRow("unrelated entries tried from last to first")
            << QStringList{u"Alpha/Foo.app/"_s, u"Beta/Foo.app/"_s} << "Foo.app" << installed
            << QStringList{u"Alpha"_s, u"Beta"_s} << "Beta/Foo.app";
        QTest::newRow("first .app when no name matches")
            << QStringList{u"Bar.prefPane/"_s, u"Baz.app/"_s, u"X/"_s} << "Foo.app" << installed
            << QStringList{u"Bar.prefPane"_s, u"Baz.app"_s, u"X"_s} << "Baz.app";
        QTest::newRow("a lone preference pane is not entered")
            << QStringList{u"Foo.prefPane/Contents/"_s} << "Bar.prefPane" << installed << QStringList{u"Foo.prefPane"_s}
            << "Foo.prefPane";
        QTest::newRow("not installed: the record's name is the match")
            << QStringList{u"Foo Tools.app/"_s, u"Foo.app/"_s} << "Foo.app"
            << "-" << QStringList{u"Foo Tools.app"_s, u"Foo.app"_s} << "Foo.app";
        QTest::newRow("the vendor's speaker app is passed over")
            << QStringList{u"Airfoil Speakers.app/"_s, u"Airfoil.app/"_s} << "Airfoil"
            << "-" << QStringList{u"Airfoil Speakers.app"_s, u"Airfoil.app"_s} << "Airfoil.app";
        QTest::newRow("nothing to install")
            << QStringList{u"Read Me.txt"_s} << "Foo.app" << installed << QStringList() << "";
    }

    void choose()
    {
        auto [entries, record, localPath, candidates, best] =
            fetch<QStringList, QString, QString, QStringList, QString>("entries", "record", "localPath", "candidates",
                                                                       "best");
        QTemporaryDir dir;
        BundleTree tree(dir.path());
        for (const QString &entry : entries) {
            if (entry.contains(u" -> ")) {
                tree.addSymlink(entry.section(u" -> "_s, 0, 0), entry.section(u" -> "_s, 1));
            } else if (entry.endsWith(u'/')) {
                tree.addFolder(entry.chopped(1));
            } else {
                tree.addFile(entry, "file");
            }
        }
        VLApp app;
        app.name = record;
        app.localPath = localPath;
        VLInstaller installer;
        installer.setSenderApp(&app);
        const QStringList found = installer.installCandidates(dir.path());
        QCOMPARE(QStringList(found).replaceInStrings(dir.path() + u'/', QString()), candidates);
        const QString match = localPath == u"-" ? u"Applications"_s : localPath.section(u'/', -1);
        QCOMPARE(installer.findBestMatchFromCandidates(found, match).remove(dir.path() + u'/'), best);
    }
};

VELMORA_TEST_MAIN(TestInstallCandidates)
#include "TestInstallCandidates.moc"
