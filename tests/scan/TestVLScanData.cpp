#include "support/DataTable.h"
#include "support/PlistFiles.h"
#include "support/SmallDisk.h"
#include "support/TestMain.h"

#include "scan/VLScanData.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <thread>

#include <sys/stat.h>
#include <unistd.h>

namespace {

AppRef record(const QString &path, const QString &vlID)
{
    auto app = std::make_shared<VLApp>();
    app->localPath = path;
    app->name = path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
    app->displayName = app->name;
    app->vlID = vlID;
    app->vlVersion = QStringLiteral("-");
    app->skippedVersion = QStringLiteral("-");
    return app;
}

} // namespace

class TestVLScanData : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_file;

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_file = m_dir->path() + QStringLiteral("/vldscan.vld6");
    }

    void noFile()
    {
        VLScanData store(m_file);
        QVERIFY(!store.apps());
        store.updateAppsUsingNewScan({record(QStringLiteral("/a"), QString())});
        QVERIFY(!store.apps()); // the driver installs the first scan itself
        QVERIFY(store.saveDataToDisk());
        QVERIFY(!QFile::exists(m_file)); // nothing to keep, so no empty store either

        // Saving after the whole data folder was deleted (a forced reset) writes it anew.
        store.setApps(AppList{record(QStringLiteral("-"), QStringLiteral("1"))});
        QVERIFY(QDir(m_dir->path()).removeRecursively());
        QVERIFY(store.saveDataToDisk());
        QCOMPARE(VLScanData(m_file).apps()->size(), 1);
        QVERIFY(VLScanData::pathForDataFile().endsWith(QLatin1String("/Velmora/Velmora Desktop 6/vldscan.vld6")));
    }

    void roundTrip()
    {
        const QString bundle = m_dir->path() + QStringLiteral("/Applications/Editor.app");
        QDir().mkpath(bundle);
        {
            VLScanData store(m_file);
            // Every field of a record is kept through its archive form (model/TestVLApp).
            store.setApps(
                AppList{record(bundle, QStringLiteral("501")), record(QStringLiteral("-"), QStringLiteral("502"))});
            QVERIFY(store.saveDataToDisk());
        }
        const QJsonObject root = QJsonDocument::fromJson(PlistFiles::readFile(m_file)).object();
        QCOMPARE(root.keys(), QStringList{QStringLiteral("apps")});
        QCOMPARE(root.value(QStringLiteral("apps")).toArray().size(), 2);

        VLScanData loaded(m_file);
        QVERIFY(loaded.apps());
        const AppList apps = *loaded.apps();
        QCOMPARE(apps.size(), 2);
        QCOMPARE(apps.at(0)->localPath, bundle);
        QCOMPARE(apps.at(0)->vlID, QStringLiteral("501"));
        QCOMPARE(apps.at(1)->vlID, QStringLiteral("502"));
        QCOMPARE(apps.at(1)->localPath, QStringLiteral("-"));
        QVERIFY(loaded.fileModDate().isValid());
        QVERIFY(!QFile::exists(m_file + QStringLiteral(".damaged")));
    }

    void savedInPieces()
    {
        // Far more than one piece of the save's text: no record is lost or doubled where pieces meet.
        AppList many;
        for (int i = 0; i < 1000; ++i) {
            const AppRef app = record(QStringLiteral("-"), QString::number(i));
            app->releaseNotes = QString(300, QLatin1Char('x'));
            app->license = app->minOS = app->bundleID = QStringLiteral("");
            many.append(app);
        }
        VLScanData store(m_file);
        store.setApps(many);
        QVERIFY(store.saveDataToDisk());
        const AppList loaded = VLScanData(m_file).apps().value_or(AppList());
        QCOMPARE(loaded.size(), many.size());
        for (int i = 0; i < loaded.size(); ++i) {
            QCOMPARE(loaded.at(i)->vlID, QString::number(i));
        }
    }

    void damagedFileKeptAside_data()
    {
        // aside: "moved", "copied" or "none"; records -1: absent.
        columns<QByteArray, QString, int>("content", "aside", "records");

        QTest::newRow("not JSON") << QByteArray("\x00\x01garbage", 9) << "moved" << -1;
        QTest::newRow("cut short") << QByteArray("{\"apps\": [{\"localPath\": \"/a\"") << "moved" << -1;
        QTest::newRow("no apps key") << QByteArray("{\"records\": []}") << "moved" << -1;
        QTest::newRow("apps not a list") << QByteArray("{\"apps\": 3}") << "moved" << -1;
        QTest::newRow("a stray entry") << QByteArray("{\"apps\": [7, {\"localPath\": \"-\", \"vlID\": \"4\"}]}")
                                       << "copied" << 1;
        QTest::newRow("empty list") << QByteArray("{\"apps\": []}") << "none" << 0;
        // Records are found in the text before each is parsed; the whole text decides what is damaged.
        QTest::newRow("a broken record after a good one")
            << QByteArray("{\"apps\": [{\"vlID\": \"1\"}, {\"vlID\": }]}") << "moved" << -1;
        QTest::newRow("text after the list") << QByteArray("{\"apps\": [{\"vlID\": \"1\"}]} {}") << "moved" << -1;
        QTest::newRow("brackets and quotes within texts")
            << QByteArray("{\"apps\":[{\"vlID\":\"}]\\\"{[\",\"name\":\"a\\\\\"},\n{\"vlID\":\"2\"}]}") << "none" << 2;
        QTest::newRow("another key beside the list")
            << QByteArray("{\"version\": 6, \"apps\": [{\"vlID\": \"1\"}]}") << "none" << 1;
    }

    void damagedFileKeptAside()
    {
        auto [content, aside, records] = fetch<QByteArray, QString, int>("content", "aside", "records");
        QVERIFY(PlistFiles::writeFile(m_file, content));
        const QString damaged = m_file + QStringLiteral(".damaged");

        VLScanData store(m_file);
        QVERIFY(store.fileModDate().isValid()); // the file's date counts whether or not its records could be read
        QCOMPARE(store.apps().has_value(), records >= 0);
        if (records >= 0) {
            QCOMPARE(store.apps()->size(), records);
        }
        QCOMPARE(QFile::exists(damaged), aside != QLatin1String("none"));
        QCOMPARE(QFile::exists(m_file), aside != QLatin1String("moved"));
        QCOMPARE(store.damage().has_value(), aside != QLatin1String("none")); // for a front end to tell the user
        if (aside != QLatin1String("none")) {
            QCOMPARE(PlistFiles::readFile(damaged), content);
            QCOMPARE(store.damage()->keptAs, damaged);
        }

        // The next save writes a good file and leaves the kept copy alone.
        store.setApps(AppList{record(QStringLiteral("-"), QStringLiteral("8"))});
        QVERIFY(store.saveDataToDisk());
        QCOMPARE(VLScanData(m_file).apps()->size(), 1);
        if (aside != QLatin1String("none")) {
            QCOMPARE(PlistFiles::readFile(damaged), content);
        }
    }

    void refusedWithoutReading_data()
    {
        columns<QString, QString>("kind", "reason");

        // Reading any of these would block for ever, never end, or take gigabytes of memory.
        const QString notPlain = QStringLiteral("not a plain file");
        QTest::newRow("pipe") << QStringLiteral("pipe") << notPlain;
        QTest::newRow("device") << QStringLiteral("device") << notPlain;
        QTest::newRow("past the largest store") << QStringLiteral("sparse") << QStringLiteral("larger than 1 GB");
    }

    void refusedWithoutReading()
    {
        auto [kind, reason] = fetch<QString, QString>("kind", "reason");
        const QByteArray path = QFile::encodeName(m_file);
        if (kind == QLatin1String("pipe")) {
            QCOMPARE(mkfifo(path.constData(), 0600), 0);
        } else if (kind == QLatin1String("device")) {
            QVERIFY(QFile::link(QStringLiteral("/dev/zero"), m_file));
        } else {
            QFile file(m_file);
            QVERIFY(file.open(QIODevice::WriteOnly));
            QVERIFY(file.resize(ScanStoreFile::kLargestStore + 1)); // sparse: no disk space taken
        }

        VLScanData store(m_file);
        QVERIFY(!store.apps());
        QVERIFY(store.damage());
        QCOMPARE(store.damage()->reason, reason);
        // Moved aside as it is (a link stays a link), so the next save writes a real store.
        QCOMPARE(store.damage()->keptAs, m_file + QStringLiteral(".damaged"));
        QVERIFY(!QFileInfo::exists(m_file) && !QFileInfo(m_file).isSymLink());
        store.setApps(AppList{record(QStringLiteral("-"), QStringLiteral("8"))});
        QVERIFY(store.saveDataToDisk());
        QCOMPARE(VLScanData(m_file).apps()->size(), 1);
    }

    void saveOnFullDisk()
    {
        const QString folder = m_dir->path() + QStringLiteral("/small");
        SmallDisk disk(folder);
        if (!disk.isReady()) {
            QSKIP(qPrintable(disk.skipReason()));
        }
        const QString file = folder + QStringLiteral("/vldscan.vld6");
        VLScanData store(file);
        store.setApps(AppList{record(QStringLiteral("-"), QStringLiteral("1"))});
        QVERIFY(store.saveDataToDisk());
        const QByteArray before = PlistFiles::readFile(file);

        // More than the disk holds: the first write is cut short, the next one fails.
        AppList many;
        for (int i = 0; i < 40; ++i) {
            many.append(record(QStringLiteral("/Applications/App %1.app").arg(i), QString::number(i)));
            many.last()->releaseNotes = QString(int(disk.capacity() / 20), QLatin1Char('n'));
        }
        store.setApps(many);
        QVERIFY(!store.saveDataToDisk());
        QCOMPARE(PlistFiles::readFile(file), before);
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden),
                 (QStringList{QStringLiteral("vldscan.vld6"), QStringLiteral("vldscan.vld6.lock")}));
        QCOMPARE(store.apps()->size(), 40); // the records in memory stay, to be saved later
    }

    void lookups_data()
    {
        columns<QString, bool, bool, bool, bool>("vlID", "hasApp", "outdated", "purchase", "purchaseInstalled");

        QTest::newRow("unknown") << "1" << false << false << false << false;
        QTest::newRow("outdated installed") << "10" << true << true << false << false;
        QTest::newRow("outdated but downloading, then one that is not") << "11" << true << true << false << false;
        QTest::newRow("outdated but installing") << "12" << true << false << false << false;
        QTest::newRow("outdated but not installed") << "13" << true << false << false << false;
        QTest::newRow("purchase not installed") << "20" << true << false << true << false;
        QTest::newRow("purchase installed") << "21" << true << false << false << true;
        QTest::newRow("purchase version marked unknown") << "22" << true << false << false << false;
    }

    void lookups()
    {
        auto [vlID, hasApp, outdated, purchase, purchaseInstalled] =
            fetch<QString, bool, bool, bool, bool>("vlID", "hasApp", "outdated", "purchase", "purchaseInstalled");

        const auto make = [](const char *path, const char *id, auto adjust) {
            AppRef app = record(QString::fromUtf8(path), QString::fromUtf8(id));
            adjust(*app);
            return app;
        };
        const AppList apps = {
            make("/a", "10", [](VLApp &a) { a.isOutdated = true; }),
            make("/b", "11", [](VLApp &a) { a.isOutdated = true, a.bundleID = QStringLiteral("updating"); }),
            make("/c", "11", [](VLApp &a) { a.isOutdated = true; }),
            make("/d", "12", [](VLApp &a) { a.isOutdated = true, a.bundleID = QStringLiteral("updating"); }),
            make("-", "13", [](VLApp &a) { a.isOutdated = true; }),
            make("", "20", [](VLApp &a) { a.purchasedVersion = QStringLiteral("2.0"); }),
            make("/e", "21", [](VLApp &a) { a.purchasedVersion = QStringLiteral("2.0"); }),
            make("-", "22", [](VLApp &a) { a.purchasedVersion = QStringLiteral("-"); }),
        };
        VLScanData store(m_file);
        store.setApps(apps);
        QCOMPARE(store.hasAppWithVLID(vlID), hasApp);
        QCOMPARE(store.hasOutdatedAppWithVLID(
                     vlID, [](const VLApp &app) { return app.bundleID == QLatin1String("updating"); }),
                 outdated);
        QCOMPARE(store.hasPurchaseWithVLID(vlID), purchase);
        QCOMPARE(store.hasPurchaseInstalledWithVLID(vlID), purchaseInstalled);
        if (hasApp) {
            QCOMPARE(store.appWithVLID(vlID)->vlID, vlID);
            QVERIFY(apps.contains(store.appWithVLID(vlID)));
        }
        QCOMPARE(store.appWithVLID(QStringLiteral("11"))->localPath, QStringLiteral("/b")); // the first in stored order
    }

    void changesOfTwoProcesses()
    {
        VLScanData desktop(m_file);
        VLScanData cli(m_file);
        {
            VLScanData::Change change(desktop);
            QVERIFY(change.isLocked());
            QVERIFY(!change.reloaded());
            desktop.setApps(AppList{record(QStringLiteral("-"), QStringLiteral("1"))});

            // The other side cannot start a change while this one runs; it runs on its own thread as a second process
            // would.
            bool otherLocked = true;
            std::thread([&] { otherLocked = VLScanData::Change(cli, 200).isLocked(); }).join();
            QVERIFY(!otherLocked);
            QVERIFY(desktop.saveDataToDisk());
        }
        {
            VLScanData::Change change(cli, 1000);
            QVERIFY(change.isLocked());
            QVERIFY(change.reloaded()); // sees the desktop's record before changing anything
            QCOMPARE(cli.apps()->size(), 1);
            AppList apps = *cli.apps();
            apps.append(record(QStringLiteral("-"), QStringLiteral("2")));
            cli.setApps(apps);
            QVERIFY(cli.saveDataToDisk());
        }
        {
            VLScanData::Change change(desktop);
            QVERIFY(change.reloaded());
            QCOMPARE(desktop.apps()->size(), 2);
        }
        QVERIFY(!desktop.reloadIfChangedOnDisk()); // its own view is current

        // Another process found the file damaged and kept it aside: the records in memory are not thrown away.
        QFile::rename(m_file, m_file + QStringLiteral(".damaged"));
        QVERIFY(!desktop.reloadIfChangedOnDisk());
        QCOMPARE(desktop.apps()->size(), 2);
    }
};

VELMORA_TEST_MAIN(TestVLScanData)
#include "TestVLScanData.moc"
