// A newcomer's whole way through velmora-cli against the real service and a real Secret Service: sign up, sign out,
// sign in, watch list, deals, cart, purchases, report, short link. Then no secret may show in any output, log line,
// file under HOME or process listing of the run.

#include "model/StringUtils.h"
#include "platform/VLSettings.h"
#include "support/CliRunner.h"
#include "support/HostSettings.h"
#include "support/KeyringSession.h"
#include "support/ServiceProcess.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

namespace {

const QString email = QStringLiteral("newcomer@example.com");
const QByteArray password = "Velmora-Pw 9!x";

// The words of a command line.
QStringList words(const char *line)
{
    return QString::fromLatin1(line).split(QLatin1Char(' '));
}

QByteArray processListing()
{
    QProcess ps;
    ps.start(QStringLiteral("ps"), {QStringLiteral("-eo"), QStringLiteral("args")});
    ps.waitForFinished();
    return ps.readAllStandardOutput();
}

} // namespace

class TestCliAccount : public QObject
{
    Q_OBJECT

    ServiceProcess m_service;
    QByteArray m_seen; // every output, log line and listing of the run

    CliResult run(const QStringList &arguments, const QByteArray &input = {},
                  const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
    {
        const CliResult result = runCli(
            QStringList{QStringLiteral("--verbose")} + arguments, input + '\n', [this] { m_seen += processListing(); },
            environment);
        m_seen += result.out + result.err;
        return result;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_service.start());
        QVERIFY(pointHostsAt(m_service.baseUrl(), {SettingKey::serviceHost, SettingKey::siteHost, SettingKey::dealsHost,
                                                   SettingKey::analyticsHost, SettingKey::shortenerHost}));
    }

    void newcomer()
    {
        const auto ok = [](const CliResult &result) {
            if (result.exitCode != 0) {
                qWarning("%s", result.err.constData());
            }
            return result.exitCode == 0;
        };
        QVERIFY(ok(run(words("account signup --first New --last Comer --password-stdin --email") << email, password)));
        // Later runs are signed in from the keychain alone.
        QVERIFY(run(words("account status")).out.contains("Signed in as New Comer <newcomer@example.com>"));
        QVERIFY(ok(run(words("account logout"))));
        QVERIFY(run(words("account status")).out.contains("Not signed in"));
        QCOMPARE(run(words("account login --password x --email") << email).exitCode, 2);
        QVERIFY(ok(run(words("account login --password-stdin --email") << email, password)));
        QVERIFY(ok(run(words("account profile --set city=Lyon"))));
        QVERIFY(run(words("--json account profile")).out.contains("\"city\": \"Lyon\""));

        QVERIFY(run(words("watchlist add 5001")).out.contains("Velmora Notes\t5001"));
        const QJsonArray deals = QJsonDocument::fromJson(run(words("deals --json")).out).array();
        QCOMPARE(deals.first().toObject().value(QStringLiteral("deal_id")).toString(), QStringLiteral("801"));
        QVERIFY(ok(run(words("cart 801"))));
        QVERIFY(run(words("purchases")).out.contains("\t5002\t"));
        QVERIFY(ok(run(words("report 5001 --text Wrong-icon"))));
        const QByteArray shortLink =
            run(words("shorten") << m_service.baseUrl() + QStringLiteral("/desktop/discover")).out.trimmed();
        QVERIFY(shortLink.startsWith(QByteArray(m_service.baseUrl().toLatin1() + "/s/")));
        QVERIFY(ok(run(words("account logout"))));
        QVERIFY(!run(words("--json list")).out.contains("\"listname\": \"All\""));

        // Without a Secret Service the sign-in holds for its run only, and the password goes nowhere else.
        QProcessEnvironment noBus = QProcessEnvironment::systemEnvironment();
        noBus.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("unix:path=/nonexistent"));
        const CliResult alone = run(words("account login --password-stdin --email") << email, password, noBus);
        QVERIFY(alone.exitCode == 0 && alone.err.contains("no keychain is available"));
        QVERIFY(run(words("account status"), {}, noBus).out.contains("Not signed in"));

        const QList<QByteArray> secrets = {password, md5HexHash(QString::fromLatin1(password)).toLatin1(),
                                           password.toBase64(), QUrl::toPercentEncoding(QString::fromLatin1(password))};
        QByteArray everything = m_seen + m_service.log();
        QDirIterator files(QDir::homePath(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            everything += file.readAll();
        }
        QVERIFY(everything.contains("jlogincheck2")); // the log-in did reach the logs
        for (const QByteArray &secret : secrets) {
            QVERIFY2(!everything.contains(secret), secret.constData());
        }
    }
};

VELMORA_KEYRING_TEST_MAIN(TestCliAccount)
#include "TestCliAccount.moc"
