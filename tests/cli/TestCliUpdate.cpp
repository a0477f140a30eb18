// velmora-cli check, then update-all, against the real service: the sample apps' old versions are installed on a
// volume of the test's own, and each update file kind the service serves (zip, tar.gz, tar.bz2, tbz, disk image,
// flat package) is downloaded, checked against its hash, unpacked and put in place, leaving nothing behind; and two
// update-all runs at once never share an update's folder; an app the queue leaves out by rule is skipped, not
// failed; an app named outside ASCII is matched to its record.

#include "platform/AppPaths.h"
#include "platform/VLSettings.h"
#include "support/CliRunner.h"
#include "support/PlistFiles.h"
#include "support/ServiceProcess.h"
#include "support/TestMain.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <thread>

namespace {

// Files left in our private temporary folder, lock files aside (they are kept on purpose: see FileLock).
QStringList leftInTemporaryFolder()
{
    QStringList left;
    for (QDirIterator it(AppPaths::privateTempFolderName(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
         it.hasNext();) {
        left.append(it.next());
    }
    left.removeIf([](const QString &path) { return path.endsWith(QLatin1String(".lock")); });
    return left;
}

} // namespace

class TestCliUpdate : public QObject
{
    Q_OBJECT

    ServiceProcess m_service;
    QTemporaryDir m_root;

private slots:
    void initTestCase()
    {
        // Beside the sample catalogue: an app that Update All never updates, and one named outside ASCII.
        const QString extra = m_root.filePath(QStringLiteral("extra-catalogue.json"));
        QFile file(extra);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(
            QJsonDocument(QJsonObject{{QStringLiteral("apps"),
                                       QJsonArray{extraRecord("8544", QStringLiteral("Rule Tool"), "com.example.rule"),
                                                  extraRecord("5901", QStringLiteral("Été"), "com.example.ete")}}})
                .toJson());
        file.close();
        QVERIFY(m_service.start({ServiceProcess::sampleCataloguePath(), extra}));
        QVERIFY(useFreshVolume(QStringLiteral("volume")));
    }

    static QJsonObject extraRecord(const char *id, const QString &name, const char *bundleID)
    {
        return {{QStringLiteral("vl_id"), QLatin1String(id)},
                {QStringLiteral("name"), name},
                {QStringLiteral("current_version"), QStringLiteral("2.0")},
                {QStringLiteral("link"), QStringLiteral("/files/VelmoraNotes-2.0.zip")},
                {QStringLiteral("sort_date"), QStringLiteral("1795132800")},
                {QStringLiteral("bundle_ids"), QJsonArray{QLatin1String(bundleID)}},
                {QStringLiteral("bundle_names"), QJsonArray{QString(name + QStringLiteral(".app"))}}};
    }

    // The sample apps' old versions (or, with samples false, none) on a volume of their own, which the settings
    // then name.
    bool useFreshVolume(const QString &name, bool samples = true)
    {
        const QString volume = m_root.path() + QLatin1Char('/') + name;
        if (!QDir().mkpath(volume + QStringLiteral("/Applications"))) {
            return false;
        }
        if (samples) {
            QProcess copy;
            copy.start(QStringLiteral("cp"),
                       {QStringLiteral("-a"), QStringLiteral(VELMORA_BINARY_DIR "/service/installed/Applications"),
                        volume + QStringLiteral("/")});
            if (!copy.waitForFinished() || copy.exitCode() != 0) {
                return false;
            }
        }
        VLSettings settings;
        for (const char *key : {SettingKey::serviceHost, SettingKey::siteHost, SettingKey::analyticsHost}) {
            settings.setValue(QLatin1String(key), m_service.baseUrl());
        }
        settings.setValue(QLatin1String(SettingKey::sendAnalytics), false);
        return settings.setValue(QLatin1String(SettingKey::volumeRoot), volume);
    }

    void everyKindInstalledOrSkipped()
    {
        const CliResult check = runCli({QStringLiteral("check")});
        QCOMPARE(check.exitCode, 0);
        QCOMPARE(check.out.count('\n'), 6);

        // An app the user keeps running is skipped, which is no failure; the others are updated.
        const QString running =
            m_root.path() + QStringLiteral("/volume/Applications/Velmora Clock.app/Contents/MacOS/running");
        QVERIFY(QFile::copy(QStringLiteral("/bin/sleep"), running));
        QProcess clock;
        clock.start(running, {QStringLiteral("600")});
        QVERIFY(clock.waitForStarted());
        const CliResult skipping = runCli({QStringLiteral("update-all")});
        clock.kill();
        clock.waitForFinished();
        QVERIFY(QFile::remove(running));
        QVERIFY2(skipping.exitCode == 0, skipping.err.constData());
        QCOMPARE(skipping.out.count('\n'), 5);
        QVERIFY2(skipping.err.contains("skipped: Velmora Clock: "), skipping.err.constData());

        const CliResult update = runCli({QStringLiteral("update-all"), QStringLiteral("--yes")});
        QVERIFY2(update.exitCode == 0, update.err.constData());
        QCOMPARE(update.out.count('\n'), 1);

        const CliResult listed =
            runCli({QStringLiteral("list"), QStringLiteral("--installed"), QStringLiteral("--json")});
        const QJsonArray records = QJsonDocument::fromJson(listed.out).array();
        QCOMPARE(records.size(), 6);
        for (const QJsonValue &value : records) {
            const QJsonObject record = value.toObject();
            const QString path = record.value(QStringLiteral("localPath")).toString();
            QVERIFY2(record.value(QStringLiteral("localVersion")).toString() == QStringLiteral("2.0"),
                     qPrintable(path));
            QVERIFY2(path.startsWith(m_root.path() + QStringLiteral("/volume/Applications/")), qPrintable(path));
            QVERIFY(!record.value(QStringLiteral("isOutdated")).toBool());
        }
        QVERIFY(runCli({QStringLiteral("list"), QStringLiteral("--outdated")}).out.isEmpty());
        // Nothing is left over beside the apps: no old copies, no work folders.
        QCOMPARE(QDir(m_root.path() + QStringLiteral("/volume/Applications"))
                     .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden)
                     .size(),
                 6);
        QCOMPARE(leftInTemporaryFolder(), QStringList());
    }

    // Matched by its bundle's name alone (its bundle id is unknown to the catalogue), which goes out as UTF-8.
    void ruleSkipAndNameOutsideAscii()
    {
        QVERIFY(useFreshVolume(QStringLiteral("volume3"), false));
        const QString applications = m_root.path() + QStringLiteral("/volume3/Applications/");
        PlistFiles::makeBundle(applications + QStringLiteral("Rule Tool.app"),
                               PlistFiles::info(QStringLiteral("com.example.rule"), QStringLiteral("1.0")));
        PlistFiles::makeBundle(applications + QStringLiteral("Été.app"),
                               PlistFiles::info(QStringLiteral("com.example.other"), QStringLiteral("2.0")));
        const CliResult check = runCli({QStringLiteral("check")});
        QVERIFY2(check.exitCode == 0, check.err.constData());
        QCOMPARE(check.out.count('\n'), 1);

        const QJsonArray records =
            QJsonDocument::fromJson(
                runCli({QStringLiteral("list"), QStringLiteral("--installed"), QStringLiteral("--json")}).out)
                .array();
        QStringList matched;
        for (const QJsonValue &value : records) {
            matched << value[QStringLiteral("displayName")].toString() + u'=' +
                           value[QStringLiteral("vlID")].toString();
        }
        matched.sort();
        QCOMPARE(matched, (QStringList{QStringLiteral("Rule Tool=8544"), QStringLiteral("Été=5901")}));

        const CliResult update = runCli({QStringLiteral("update-all"), QStringLiteral("--yes")});
        QVERIFY2(update.exitCode == 0, update.err.constData());
        QVERIFY2(update.err.contains("skipped: Rule Tool: "), update.err.constData());
        QVERIFY(update.out.isEmpty());
    }

    // The second run finds each app's update running or already done: it never takes the first one's folder.
    void twoUpdateAllAtOnce()
    {
        QVERIFY(useFreshVolume(QStringLiteral("volume2")));
        QCOMPARE(runCli({QStringLiteral("check")}).exitCode, 0);
        CliResult first;
        CliResult second;
        std::thread other([&second] { second = runCli({QStringLiteral("update-all"), QStringLiteral("--yes")}); });
        first = runCli({QStringLiteral("update-all"), QStringLiteral("--yes")});
        other.join();
        for (const CliResult &run : {first, second}) {
            for (const QByteArray &line : run.err.split('\n')) {
                QVERIFY2(!line.startsWith("error") || line.contains("is already running"), line.constData());
            }
        }
        const CliResult listed =
            runCli({QStringLiteral("list"), QStringLiteral("--installed"), QStringLiteral("--json")});
        const QJsonArray records = QJsonDocument::fromJson(listed.out).array();
        QCOMPARE(records.size(), 6);
        for (const QJsonValue &value : records) {
            QCOMPARE(value.toObject().value(QStringLiteral("localVersion")).toString(), QStringLiteral("2.0"));
        }
        QCOMPARE(leftInTemporaryFolder(), QStringList());
    }
};

VELMORA_TEST_MAIN(TestCliUpdate)
#include "TestCliUpdate.moc"
