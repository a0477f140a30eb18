#include "support/TestMain.h"

#include "StoreGenerations.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

// A writer process is killed at random moments while it rewrites the store, over and over. After every kill the
// store must hold one whole generation of records, its lock must be free for the next process, and nothing may
// have been kept aside as damaged.

namespace {

// Starts the writer on file and returns its process id once it has read the store and begins to save, or -1. The
// writer is a fresh program (posix_spawn), as a child forked from this threaded process may not start threads.
pid_t startWriter(const QString &file)
{
    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0) {
        return -1;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ready[1], STDOUT_FILENO);
    QByteArray program(VELMORA_BINARY_DIR "/tests/store-writer");
    QByteArray path = QFile::encodeName(file);
    char *arguments[] = {program.data(), path.data(), nullptr};
    pid_t writer = -1;
    if (posix_spawn(&writer, program.constData(), &actions, nullptr, arguments, environ) != 0) {
        writer = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    close(ready[1]);
    char line = 0;
    if (writer > 0 && read(ready[0], &line, 1) != 1) {
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
        writer = -1;
    }
    close(ready[0]);
    return writer;
}

} // namespace

class TestScanStoreKill : public QObject
{
    Q_OBJECT

private slots:
    void survivesKillAtAnyMoment()
    {
        const QString folder = QDir::homePath() + QStringLiteral("/store");
        QVERIFY(QDir().mkpath(folder));
        const QString file = folder + QStringLiteral("/vldscan.vld6");
        // Kills are spread over a few saves' time, measured here so that slow builds (sanitizers) are killed as often
        // before, during and between their saves as fast ones.
        QElapsedTimer timer;
        timer.start();
        VLScanData probe(QDir::homePath() + QStringLiteral("/probe.vld6"));
        probe.setApps(StoreGenerations::records(1));
        QVERIFY(probe.saveDataToDisk());
        const int saveUs = int(std::max<qint64>(timer.nsecsElapsed() / 1000, 1000));

        QRandomGenerator random(20261122);
        int lastGeneration = 0;
        for (int round = 0; round < 40; ++round) {
            const pid_t writer = startWriter(file);
            QVERIFY2(writer > 0, "the writer did not start");
            usleep(useconds_t(random.bounded(saveUs / 4, saveUs * 6)));
            kill(writer, SIGKILL);
            int status = 0;
            QCOMPARE(waitpid(writer, &status, 0), writer); // a zombie would still count as the lock's live holder

            VLScanData store(file);
            VLScanData::Change change(store, 5000);
            QVERIFY2(change.isLocked(), "the killed writer's lock was not taken over");
            const int generation = StoreGenerations::stored(store);
            QVERIFY2(generation >= 0, qPrintable(QStringLiteral("round %1: a mixed or cut-short store").arg(round)));
            QVERIFY2(generation >= lastGeneration,
                     qPrintable(QStringLiteral("round %1: saved records lost").arg(round)));
            QVERIFY(!QFile::exists(file + QStringLiteral(".damaged")));
            lastGeneration = generation;
        }
        qInfo("%d generations written", lastGeneration);
        QVERIFY2(lastGeneration > 10, "the writer hardly ever finished a save: the kills proved little");

        // A save killed between creating its temporary file and renaming it leaves that file behind; the next save
        // clears it, and nothing that only looks like it.
        QFile(file + QStringLiteral(".new-Ab12Cd")).open(QIODevice::WriteOnly);
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
};

VELMORA_TEST_MAIN(TestScanStoreKill)
#include "TestScanStoreKill.moc"
