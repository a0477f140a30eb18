// Copies a killed velmora-place run left beside an app: cleared before its next update, an old copy put back when it
// is the only one, and nothing else beside the app touched.

#include "install/StagingLeftovers.h"
#include "support/BundleTree.h"
#include "support/DataTable.h"
#include "support/TestMain.h"

#include <QDir>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

class TestStagingLeftovers : public QObject
{
    Q_OBJECT

private slots:
    void clearBeside_data()
    {
        // before: the folder's entries ("Foo.app/" a folder holding "v" with the text after "="); after: the same
        // once cleared.
        columns<QStringList, QStringList>("before", "after");
        const QString hex = u"0123456789abcdef"_s;
        const QString staged = u".Foo.app."_s + hex + u".new/v=new"_s;
        const QString aside = u".Foo.app."_s + hex + u".old/v=old"_s;
        row("staged new copy removed", QStringList{u"Foo.app/v=cur"_s, staged}, QStringList{u"Foo.app/v=cur"_s});
        row("old copy put back when the app is gone", QStringList{aside, staged}, QStringList{u"Foo.app/v=old"_s});
        row("others' names kept",
            QStringList{u"Foo.app/v=cur"_s, u".Foo.app.0123.new/v=x"_s, u".Bar.app."_s + hex + u".new/v=x"_s,
                        u".Foo.app."_s + hex + u".tmp/v=x"_s},
            QStringList{u".Bar.app."_s + hex + u".new/v=x"_s, u".Foo.app.0123.new/v=x"_s,
                        u".Foo.app."_s + hex + u".tmp/v=x"_s, u"Foo.app/v=cur"_s});
    }

    void clearBeside()
    {
        auto [before, after] = fetch<QStringList, QStringList>("before", "after");
        QTemporaryDir root;
        BundleTree tree(root.path());
        for (const QString &entry : before) {
            tree.addFile(entry.section(u'=', 0, 0), entry.section(u'=', 1).toUtf8());
        }
        StagingLeftovers::clearBeside(root.filePath(u"Foo.app"_s));
        QStringList found;
        for (const QString &name :
             QDir(root.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name)) {
            QFile file(root.filePath(name + u"/v"_s));
            found.append(name + u"/v="_s + QString::fromUtf8(file.open(QIODevice::ReadOnly) ? file.readAll() : ""));
        }
        QCOMPARE(found, after);
    }
};

VELMORA_TEST_MAIN(TestStagingLeftovers)
#include "TestStagingLeftovers.moc"
