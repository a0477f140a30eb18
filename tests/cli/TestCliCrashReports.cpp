// Crash reports as a user meets them: velmora-cli daemon killed with SIGSEGV leaves a report; at the next start it is
// sent by itself, waits for "crash-reports send" or "discard", or stays put when crash reporting is off. The desktop
// program's asker decides through the same seam. The real service keeps what arrived byte for byte.

#include "platform/CrashReportFolder.h"
#include "platform/VLSettings.h"
#include "services/CrashReportAsker.h"
#include "services/VLCrashReporter.h"
#include "support/CliRunner.h"
#include "support/HostSettings.h"
#include "support/ServiceProcess.h"
#include "support/TestMain.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>

#include <csignal>

namespace {

enum class Answer { None, Send, Discard };

struct ScriptedAsker : CrashReportAsker
{
    std::optional<QString> answer;
    QByteArray shown;
    void askToSendCrashReport(const CrashReportQuestion &question,
                              std::function<void(std::optional<QString>)> reply) override
    {
        shown = question.informativeText.contains(u"Velmora") ? question.report : QByteArray();
        reply(answer);
    }
};

void setSetting(const char *key, const QVariant &value)
{
    VLSettings settings;
    value.isValid() ? settings.setValue(QString::fromLatin1(key), value) : settings.remove(QString::fromLatin1(key));
}

bool hasOpenReport(const QProcess &daemon)
{
    return !QDir(CrashReportFolder::folder())
                .entryList({QStringLiteral("*-%1.crash").arg(daemon.processId())})
                .isEmpty();
}

} // namespace

class TestCliCrashReports : public QObject
{
    Q_OBJECT

    ServiceProcess m_service;
    QTemporaryDir m_volume; // an empty volume keeps the daemon's scans short

    QList<QJsonObject> received()
    {
        QByteArray output;
        m_service.runCommand({QStringLiteral("crashes")}, &output);
        QList<QJsonObject> crashes;
        for (const QByteArray &line : output.split('\n')) {
            if (!line.isEmpty()) {
                crashes.append(QJsonDocument::fromJson(line).object());
            }
        }
        return crashes;
    }

    // Starts velmora-cli daemon and waits until its start-up has reached the service.
    bool startDaemon(QProcess &daemon)
    {
        const QByteArray mark = "GET /vld6blacklist";
        const qsizetype seen = m_service.log().count(mark);
        daemon.start(QStringLiteral(VELMORA_BINARY_DIR "/src/velmora-cli"), {QStringLiteral("daemon")});
        return daemon.waitForStarted() && QTest::qWaitFor([&] { return m_service.log().count(mark) > seen; }, 60000);
    }

    static bool endsBy(QProcess &daemon, int signalNumber)
    {
        if (daemon.processId() <= 0 || ::kill(pid_t(daemon.processId()), signalNumber) != 0) {
            return false;
        }
        return daemon.waitForFinished(60000) && daemon.exitCode() == (signalNumber == SIGTERM ? 0 : signalNumber);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_service.start());
        QVERIFY(pointHostsAt(m_service.baseUrl(), {SettingKey::serviceHost, SettingKey::siteHost, SettingKey::dealsHost,
                                                   SettingKey::analyticsHost}));
        setSetting(SettingKey::volumeRoot, m_volume.path());
    }

    void init()
    {
        QDir(CrashReportFolder::folder()).removeRecursively();
        setSetting(SettingKey::QuincyActivated, {});
        setSetting(SettingKey::QuincyAutomaticallySendCrashReports, {});
    }

    void nextStart_data()
    {
        QTest::addColumn<QVariant>("activated");
        QTest::addColumn<bool>("automatic");
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<int>("sent"); // crash reports the service received
        QTest::newRow("automatic") << QVariant() << true << Answer::None << 1;
        QTest::newRow("ask and agree") << QVariant(true) << false << Answer::Send << 1;
        QTest::newRow("ask and refuse") << QVariant() << false << Answer::Discard << 0;
        QTest::newRow("deactivated") << QVariant(false) << true << Answer::Send << 0;
    }

    void nextStart()
    {
        QFETCH(QVariant, activated);
        QFETCH(bool, automatic);
        QFETCH(Answer, answer);
        QFETCH(int, sent);
        const qsizetype before = received().size();

        QProcess crashing;
        QVERIFY(startDaemon(crashing) && hasOpenReport(crashing));
        QVERIFY(endsBy(crashing, SIGSEGV));
        const CliResult listed = runCli({QStringLiteral("crash-reports"), QStringLiteral("list")});
        QVERIFY2(listed.out.startsWith("1  ") &&
                     listed.out.contains("  velmora-cli " VELMORA_VERSION "  SIGSEGV (11)") &&
                     listed.out.endsWith("  not sent\n"),
                 listed.out.constData());
        const QByteArray report = CrashReportFolder::read(CrashReportFolder::reports().value(0));

        setSetting(SettingKey::QuincyActivated, activated);
        setSetting(SettingKey::QuincyAutomaticallySendCrashReports, automatic);
        const bool active = activated != QVariant(false);
        QProcess next;
        QVERIFY(startDaemon(next));
        if (automatic && active) {
            QTRY_COMPARE_WITH_TIMEOUT(received().size(), before + 1, 30000);
        }
        QCOMPARE(hasOpenReport(next), active);
        QVERIFY(endsBy(next, active ? SIGTERM : SIGSEGV)); // with reporting off, no handler and no report
        QCOMPARE(next.readAllStandardError().contains("notice: Crash report waiting"), active && !automatic);

        if (answer != Answer::None) {
            const QString verb = answer == Answer::Send ? QStringLiteral("send") : QStringLiteral("discard");
            const QStringList details{QStringLiteral("--details"), QStringLiteral("was updating & 100%")};
            const CliResult result = runCli(QStringList{QStringLiteral("crash-reports"), verb, QStringLiteral("1")} +
                                            (answer == Answer::Send ? details : QStringList()));
            QCOMPARE(result.exitCode, active ? 0 : 1);
        }
        const QList<QJsonObject> crashes = received();
        QCOMPARE(crashes.size(), before + sent);
        const QList<CrashReportFile> left = CrashReportFolder::reports();
        QCOMPARE(left.size(), answer == Answer::Discard ? 0 : 1);
        QCOMPARE(left.value(0).sent, sent > 0);
        if (sent > 0) {
            const QJsonObject crash = crashes.last();
            QCOMPARE(crash[QStringLiteral("report")].toString().toUtf8(), report);
            QCOMPARE(crash[QStringLiteral("details")].toString(),
                     automatic ? QString() : QStringLiteral("was updating & 100%"));
            QCOMPARE(crash[QStringLiteral("version")].toString(), QStringLiteral(VELMORA_VERSION));
            QCOMPARE(crash[QStringLiteral("penguin")].toString(), VLSettings().stringValue(SettingKey::penguin));
        }
    }

    void askerDecides_data()
    {
        QTest::addColumn<std::optional<QString>>("answer");
        QTest::addColumn<int>("size"); // of the report
        QTest::newRow("agree") << std::optional<QString>(QStringLiteral("opening the panel")) << 0;
        QTest::newRow("refuse") << std::optional<QString>() << 0;
        QTest::newRow("agree, but too large for the service") << std::optional<QString>(QString()) << 600000;
    }

    void askerDecides()
    {
        QFETCH(std::optional<QString>, answer);
        QFETCH(int, size);
        const QByteArray report =
            "Program: velmora 6.0.4\r\n a+b=c&d %41 \xc3\xbc\xe2\x82\xac\n" + QByteArray(size, 'x');
        QFile file(CrashReportFolder::folder() + QStringLiteral("/velmora-20260101-000000-999999999.crash"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(report) == report.size());
        file.close();
        const qsizetype before = received().size();
        ScriptedAsker asker;
        asker.answer = answer;
        VLCrashReporter reporter(QStringLiteral("velmora"), &asker);
        QSignalSpy finished(&reporter, &VLCrashReporter::finished);
        reporter.startCrashReporting();
        QVERIFY(finished.wait(30000));
        QCOMPARE(asker.shown, report);
        const bool taken = answer && size == 0; // the service refuses a body past its limit
        QCOMPARE(received().size(), before + (taken ? 1 : 0));
        QCOMPARE(received().value(before)[QStringLiteral("report")].toString().toUtf8(), taken ? report : QByteArray());
        QCOMPARE(received().value(before)[QStringLiteral("details")].toString(), taken ? *answer : QString());
        QCOMPARE(CrashReportFolder::reports().size(), answer ? 1 : 0);
        QCOMPARE(CrashReportFolder::reports().value(0).sent, taken);
    }
};

VELMORA_TEST_MAIN(TestCliCrashReports)
#include "TestCliCrashReports.moc"
