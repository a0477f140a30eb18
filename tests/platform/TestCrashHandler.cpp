// The crash handler under real crashes: a program faults with each fatal signal, on its main thread or another; it
// leaves one private report that names the faulting function and still dies of the signal.

#include "platform/CrashReportFolder.h"
#include "support/TestMain.h"

#include <QDir>
#include <QProcess>

#include <csignal>

#include <sys/stat.h>

namespace {

// Runs the victim; returns the signal that ended it (0 when it exited).
int runVictim(int signalNumber, bool onThread)
{
    QProcess victim;
    victim.start(QStringLiteral(VELMORA_BINARY_DIR "/tests/crash-victim"),
                 QStringList{QString::number(signalNumber)} +
                     (onThread ? QStringList{QStringLiteral("thread")} : QStringList()));
    const bool ended = victim.waitForFinished(60000);
    return ended && victim.exitStatus() == QProcess::CrashExit ? victim.exitCode() : 0;
}

} // namespace

class TestCrashHandler : public QObject
{
    Q_OBJECT

private slots:
    void init() { QDir(CrashReportFolder::folder()).removeRecursively(); }

    void crashLeavesReport_data()
    {
        QTest::addColumn<int>("signalNumber");
        QTest::addColumn<bool>("onThread");
        QTest::addColumn<QString>("signalLine");
        const QList<QPair<int, const char *>> signals_ = {{SIGSEGV, "SIGSEGV (11)"},
                                                          {SIGBUS, "SIGBUS (7)"},
                                                          {SIGILL, "SIGILL (4)"},
                                                          {SIGFPE, "SIGFPE (8)"},
                                                          {SIGABRT, "SIGABRT (6)"}};
        for (const auto &[number, line] : signals_) {
            for (const bool onThread : {false, true}) {
                QTest::addRow("%s%s", line, onThread ? " on a second thread" : "")
                    << number << onThread << QString::fromLatin1(line);
            }
        }
    }

    void crashLeavesReport()
    {
        QFETCH(int, signalNumber);
        QFETCH(bool, onThread);
        QFETCH(QString, signalLine);
        QCOMPARE(runVictim(signalNumber, onThread), signalNumber);

        const QList<CrashReportFile> reports = CrashReportFolder::reports();
        QCOMPARE(reports.size(), 1);
        QVERIFY(!reports.first().sent);
        struct stat info = {};
        QCOMPARE(stat(QFile::encodeName(reports.first().path).constData(), &info), 0);
        QCOMPARE(info.st_mode & 0777, 0600u);

        const QByteArray report = CrashReportFolder::read(reports.first());
        using CrashReportFolder::headField;
        QVERIFY2(headField(report, "Signal").startsWith(signalLine), report.constData());
        QCOMPARE(headField(report, "Program"), QStringLiteral("crash-victim " VELMORA_VERSION));
        QCOMPARE(headField(report, "Thread").endsWith(u"(main)"), !onThread);
        QVERIFY(
            QDateTime::fromString(headField(report, "Time"), QStringLiteral("yyyy-MM-dd HH:mm:ss +0000")).isValid());
        const qsizetype backtrace = report.indexOf("\nBacktrace:\n"), log = report.indexOf("\nLog:\n");
        QVERIFY2(backtrace > 0 && report.mid(backtrace, log - backtrace).contains("crashVictimFaults"),
                 report.constData());
        QVERIFY(log > backtrace && report.mid(log).contains("victim about to crash\n"));
    }

    // A few reports at most: the oldest goes.
    void oldestReportsGo()
    {
        const QString folder = CrashReportFolder::folder();
        QStringList old;
        for (int i = 0; i < CrashReportFolder::kKeptReports; ++i) {
            QFile file(folder + QStringLiteral("/old-%1.sent").arg(i));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write("old report\n") && file.flush());
            file.setFileTime(QDateTime::currentDateTime().addDays(-10 + i), QFileDevice::FileModificationTime);
            old << file.fileName();
        }
        QFile leftOver(folder + QStringLiteral("/ended-20260101-000000-999999999.crash"));
        QVERIFY(leftOver.open(QIODevice::WriteOnly)); // empty: its process ended without a crash
        leftOver.close();

        QCOMPARE(runVictim(SIGSEGV, false), SIGSEGV);
        const QList<CrashReportFile> reports = CrashReportFolder::reports();
        QCOMPARE(reports.size(), CrashReportFolder::kKeptReports);
        QVERIFY(!reports.first().sent); // the new one
        QVERIFY(!QFile::exists(old.first()));
        QVERIFY(QFile::exists(old.last()));
        QVERIFY(!leftOver.exists());
    }
};

VELMORA_TEST_MAIN(TestCrashHandler)
#include "TestCrashHandler.moc"
