// Copies a killed velmora-place run left beside apps, swept at start: beside a recorded app unless its update runs in
// another process, beside an app no record names only while no update runs at all.

#include "install/StagingLeftovers.h"
#include "install/UpdateLock.h"
#include "model/VLApp.h"
#include "platform/FileLock.h"
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
    void sweep_data()
    {
        // before/after: the application folder's entries ("Foo.app/v=cur": a folder holding "v" with the text after
        // "="); Foo.app is recorded with the digest "foo"; running: the digest whose update another process runs.
        columns<QStringList, QString, QStringList>("before", "running", "after");
        const QString hex = u"0123456789abcdef"_s;
        const QStringList before = {u".Bar.app."_s + hex + u".old/v=old"_s, u".Foo.app."_s + hex + u".new/v=new"_s,
                                    u"Foo.app/v=cur"_s};
        row("none running: cleared, an old copy put back", before, QString(),
            QStringList{u"Bar.app/v=old"_s, u"Foo.app/v=cur"_s});
        row("the app's update running: all kept", before, u"foo"_s, before);
        row("another update running: only the app's cleared", before, u"other"_s,
            QStringList{before.first(), u"Foo.app/v=cur"_s});
    }

    void sweep()
    {
        auto [before, running, after] = fetch<QStringList, QString, QStringList>("before", "running", "after");
        QTemporaryDir root;
        BundleTree tree(root.path());
        for (const QString &entry : before) {
            tree.addFile(entry.section(u'=', 0, 0), entry.section(u'=', 1).toUtf8());
        }
        FileLock elsewhere(UpdateLock::path(running));
        QVERIFY(running.isEmpty() || elsewhere.lock(0));
        auto app = std::make_shared<VLApp>();
        app->localPath = root.filePath(u"Foo.app"_s);
        app->digestString = u"foo"_s;
        StagingLeftovers::sweep({app}, {root.path()});
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
