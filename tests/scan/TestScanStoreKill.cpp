#include "support/TestMain.h"

#include "scan/VLScanData.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>

#include <algorithm>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

// A writer process is killed at random moments while it rewrites the store, over and over. After every kill the
// store must hold one whole generation of records, its lock must be free for the next process, and nothing may
// have been kept aside as damaged.

namespace {

// The store of generation g holds recordCount(g) records, each carrying g as its catalogue id, so a file mixing
// two generations or cut short shows.
qsizetype recordCount(int generation)
{
    return 300 + generation % 97;
}

AppList generationRecords(int generation)
{
    AppList apps;
    for (qsizetype i = 0; i < recordCount(generation); ++i) {
        auto app = std::make_shared<VLApp>();
        app->localPath = QStringLiteral("/Applications/App %1.app").arg(i);
        app->name = QStringLiteral("App %1.app").arg(i);
        app->vlID = QString::number(generation);
        app->bundleID = app->license = app->minOS = QStringLiteral("");
        apps.append(app);
    }
    return apps;
}

// The generation the store holds (0 when it has none); fails the test when the records are not one whole one.
int storedGeneration(const VLScanData &store)
{
    const std::optional<AppList> apps = store.apps();
    if (!apps) {
        return 0;
    }
    const int generation = apps->value(0) ? apps->value(0)->vlID.toInt() : -1;
    if (generation < 1 || apps->size() != recordCount(generation)) {
        return -1;
    }
    for (const AppRef &app : *apps) {
        if (app->vlID.toInt() != generation) {
            return -1;
        }
    }
    return generation;
}

// Runs in the forked child: continues from what the store holds and writes new generations until killed.
[[noreturn]] void writeForever(const QString &file)
{
    VLScanData store(file);
    for (int generation = storedGeneration(store) + 1;; ++generation) {
        VLScanData::Change change(store);
        store.setApps(generationRecords(generation));
        store.saveDataToDisk();
    }
}

} // namespace

class TestScanStoreKill : public QObject
{
    Q_OBJECT

private slots:
    void survivesKillAtAnyMoment();
};

void TestScanStoreKill::survivesKillAtAnyMoment()
{
    const QString folder = QDir::homePath() + QStringLiteral("/store");
    QVERIFY(QDir().mkpath(folder));
    const QString file = folder + QStringLiteral("/vldscan.vld6");
    // Kills are spread over a few saves' time, measured here so that slow builds (sanitizers) are killed as often
    // before, during and between their saves as fast ones.
    QElapsedTimer timer;
    timer.start();
    VLScanData probe(QDir::homePath() + QStringLiteral("/probe.vld6"));
    probe.setApps(generationRecords(1));
    QVERIFY(probe.saveDataToDisk());
    const int saveUs = int(std::max<qint64>(timer.nsecsElapsed() / 1000, 1000));

    QRandomGenerator random(20261122);
    int lastGeneration = 0;
    for (int round = 0; round < 40; ++round) {
        const pid_t writer = fork();
        QVERIFY(writer >= 0);
        if (writer == 0) {
            writeForever(file);
        }
        usleep(useconds_t(random.bounded(saveUs / 4, saveUs * 6)));
        kill(writer, SIGKILL);
        int status = 0;
        QCOMPARE(waitpid(writer, &status, 0), writer); // a zombie would still count as the lock's live holder

        VLScanData store(file);
        VLScanData::Change change(store, 5000);
        QVERIFY2(change.isLocked(), "the killed writer's lock was not taken over");
        const int generation = storedGeneration(store);
        QVERIFY2(generation >= 0, qPrintable(QStringLiteral("round %1: a mixed or cut-short store").arg(round)));
        QVERIFY2(generation >= lastGeneration, qPrintable(QStringLiteral("round %1: saved records lost").arg(round)));
        QVERIFY(!QFile::exists(file + QStringLiteral(".damaged")));
        lastGeneration = generation;
    }
    qInfo("%d generations written", lastGeneration);
    QVERIFY2(lastGeneration > 10, "the writer hardly ever finished a save: the kills proved little");

    // A save killed between naming its temporary file and renaming it leaves that file behind; the next save clears
    // it, and nothing that only looks like it.
    QFile(file + QStringLiteral(".Ab12Cd")).open(QIODevice::WriteOnly);
    QFile(file + QStringLiteral(".backup")).open(QIODevice::WriteOnly);
    {
        VLScanData store(file);
        VLScanData::Change change(store);
        QVERIFY(store.saveDataToDisk());
    }
    QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden),
             (QStringList{QStringLiteral("vldscan.vld6"), QStringLiteral("vldscan.vld6.backup"),
                          QStringLiteral("vldscan.vld6.lock")}));
}

VELMORA_TEST_MAIN(TestScanStoreKill)
#include "TestScanStoreKill.moc"
