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
        // Lists are written "a|b": in entries, "name/" is a folder, "name -> target" a link, anything else a file.
        // candidates: those of the top folder; localPath "-": not installed.
        columns<QString, QString, QString, QString, QString>("entries", "record", "localPath", "candidates", "best");
        const char *foo = "/Applications/Foo.app";
        row("image: app, read-me, link", "Foo.app/|Read Me.rtf|Applications -> /Applications", "Foo.app", foo,
            "Foo.app", "Foo.app");
        row("vocabulary",
            "__MACOSX/|.Foo.app/|Uninstall Foo.app/|CLI |Icon|License Agreement.pdf|Foo.app/|Foo Updater.app/|"
            "Bar Dyn Updater.app/",
            "Foo.app", foo, "Bar Dyn Updater.app|Foo.app", "Foo.app");
        row("app beats its installer package", "Foo Installer.pkg|Foo.app/", "Foo.app", foo, "Foo.app", "Foo.app");
        row("package pass drops the fall-back app seen before the named one", "Bar.app/|Foo.app/|Zed.pkg", "Foo.app",
            foo, "Foo.app|Zed.pkg", "Foo.app");
        row("named extension drops the unnamed app", "Bar.app/|Foo.safariextz", "Foo", foo, "Foo.safariextz",
            "Foo.safariextz");
        row("any package when nothing matches", "Bar.app/|Foo.pkg", "Foo.app", foo, "Bar.app|Foo.pkg", "Foo.pkg");
        row("one folder is descended", "Foo 2.1/Foo.app/|Foo 2.1/Docs/", "Foo.app", foo, "Foo 2.1", "Foo 2.1/Foo.app");
        row("unrelated entries tried from last to first", "Alpha/Foo.app/|Beta/Foo.app/", "Foo.app", foo, "Alpha|Beta",
            "Beta/Foo.app");
        row("first .app when no name matches", "Bar.prefPane/|Baz.app/|X/", "Foo.app", foo, "Bar.prefPane|Baz.app|X",
            "Baz.app");
        row("a lone preference pane is not entered", "Foo.prefPane/Contents/", "Bar.prefPane", foo, "Foo.prefPane",
            "Foo.prefPane");
        row("not installed: the record's name is the match", "Foo Tools.app/|Foo.app/", "Foo.app", "-",
            "Foo Tools.app|Foo.app", "Foo.app");
        row("the vendor's speaker app is passed over", "Airfoil Speakers.app/|Airfoil.app/", "Airfoil", "-",
            "Airfoil Speakers.app|Airfoil.app", "Airfoil.app");
        row("nothing to install", "Read Me.txt", "Foo.app", foo, "", "");
    }

    void choose()
    {
        auto [entries, record, localPath, candidates, best] =
            fetch<QString, QString, QString, QString, QString>("entries", "record", "localPath", "candidates", "best");
        QTemporaryDir dir;
        BundleTree tree(dir.path());
        for (const QString &entry : entries.split(u'|')) {
            entry.contains(u" -> ") ? tree.addSymlink(entry.section(u" -> "_s, 0, 0), entry.section(u" -> "_s, 1))
            : entry.endsWith(u'/')  ? tree.addFolder(entry.chopped(1))
                                    : tree.addFile(entry, "file");
        }
        VLApp app;
        app.name = record;
        app.localPath = localPath;
        VLInstaller installer;
        installer.setSenderApp(&app);
        const QStringList found = installer.installCandidates(dir.path());
        QCOMPARE(QStringList(found).replaceInStrings(dir.path() + u'/', QString()).join(u'|'), candidates);
        const QString match = localPath == u"-" ? u"Applications"_s : localPath.section(u'/', -1);
        QCOMPARE(installer.findBestMatchFromCandidates(found, match).remove(dir.path() + u'/'), best);
    }
};

VELMORA_TEST_MAIN(TestInstallCandidates)
#include "TestInstallCandidates.moc"
