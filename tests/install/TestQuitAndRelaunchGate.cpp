// Replacing a running app: a process whose executable lies inside a bundle is quit when the user agrees and started
// again afterwards from the same place; when the user declines, it keeps running and the update says why. A copy
// another user runs is never quit: the update is skipped, saying so, without a question.

#include "install/QuitAndRelaunchGate.h"
#include "install/UpdateState.h"
#include "model/VLApp.h"
#include "platform/RunningProcesses.h"
#include "platform/VLSettings.h"
#include "support/DataTable.h"
#include "support/PlistFiles.h"
#include "support/RecordingFeedback.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <unistd.h>

namespace {

QList<qint64> pidsInside(const QString &folder)
{
    QList<qint64> pids;
    for (const RunningProcess &process : RunningProcesses::inside(folder)) {
        pids.append(process.pid);
    }
    return pids;
}

// Starts executable as the user nobody, as another user's copy of the app would run.
qint64 startAsAnotherUser(const QString &executable)
{
    const QByteArray path = QFile::encodeName(executable);
    const pid_t child = fork();
    if (child == 0) {
        if (setgid(65534) == 0 && setuid(65534) == 0) {
            execl(path.constData(), path.constData(), "300", nullptr);
        }
        _exit(127);
    }
    return child;
}

} // namespace

class TestQuitAndRelaunchGate : public QObject
{
    Q_OBJECT

private slots:
    // The analytics hits these steps send are not what is tested here.
    void initTestCase() { QVERIFY(VLSettings().setValue(QLatin1String(SettingKey::sendAnalytics), false)); }

    void runningApp_data()
    {
        columns<bool, bool, QString, QString, bool>("answer", "proceeds", "failure", "newName", "another");
        row("quit and relaunched", true, true, "", "", false);
        row("relaunched as the new copy's executable", true, true, "", "Sleeper 2", false);
        row("skipped: left running", false, false, "Installation skipped: Sleeper is running", "", false);
        row("another user's copy: skipped, not asked", true, false,
            "Installation skipped: Sleeper is running for another user", "", true);
    }

    void runningApp()
    {
        auto [answer, proceeds, failure, newName, another] =
            fetch<bool, bool, QString, QString, bool>("answer", "proceeds", "failure", "newName", "another");
        if (another && geteuid() != 0) {
            QSKIP("not run: starting another user's copy needs root");
        }
        // Where another user may run what it holds.
        QTemporaryDir root(QStringLiteral("/tmp/velmora-gate-XXXXXX"));
        QVERIFY(QFile::setPermissions(root.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                                       QFile::ReadOther | QFile::ExeOther));
        const QString bundle = root.filePath(QStringLiteral("Sleeper.app"));
        const QString executable = bundle + QStringLiteral("/Contents/MacOS/Sleeper");
        const QString sleep = QStandardPaths::findExecutable(QStringLiteral("sleep"));
        QVERIFY2(!sleep.isEmpty(), "sleep is needed to stand for a running app");
        QVERIFY(QDir().mkpath(QFileInfo(executable).path()) && QFile::copy(sleep, executable));
        qint64 pid = 0;
        if (another) {
            pid = startAsAnotherUser(executable);
        } else {
            QVERIFY(QProcess::startDetached(executable, {QStringLiteral("300")}, root.path(), &pid));
        }
        const auto stopAll = qScopeGuard([&bundle] {
            for (const qint64 running : pidsInside(bundle)) {
                RunningProcesses::terminate(running, 5000);
            }
        });
        QVERIFY(QTest::qWaitFor([&] { return pidsInside(bundle) == QList<qint64>{pid}; }, 5000));

        RecordingFeedback feedback(answer);
        UpdateState state;
        QuitAndRelaunchGate gate(&state);
        QCOMPARE(gate.prepareToReplace(bundle), proceeds);
        QCOMPARE(feedback.shown(),
                 another ? QStringList()
                         : QStringList{QStringLiteral("question: Please quit the application before continuing "
                                                      "installation. / Quit App and Proceed / Skip Installation")});
        QCOMPARE(state.failMessage(), failure);
        QCOMPARE(pidsInside(bundle), proceeds ? QList<qint64>() : QList<qint64>{pid});
        if (proceeds) {
            if (!newName.isEmpty()) { // the new version's executable has another name
                const QString renamed = QFileInfo(executable).dir().filePath(newName);
                QVERIFY(QFile::rename(executable, renamed));
                QVariantMap info = PlistFiles::info(QStringLiteral("com.example.sleeper"), QStringLiteral("2.0"));
                info.insert(QStringLiteral("CFBundleExecutable"), newName);
                QVERIFY(PlistFiles::writePlist(bundle + QStringLiteral("/Contents/Info.plist"), info));
            }
            gate.finishedReplacing(bundle, true);
            QVERIFY(QTest::qWaitFor([&] { return pidsInside(bundle).size() == 1; }, 5000));
            const RunningProcess relaunched = RunningProcesses::inside(bundle).constFirst();
            QVERIFY(relaunched.pid != pid);
            QCOMPARE(QFileInfo(relaunched.executable).fileName(),
                     newName.isEmpty() ? QStringLiteral("Sleeper") : newName);
            QCOMPARE(relaunched.arguments.mid(1), QStringList{QStringLiteral("300")});
        }
    }
};

VELMORA_TEST_MAIN(TestQuitAndRelaunchGate)
#include "TestQuitAndRelaunchGate.moc"
