// The check from end to end: scan, request, reply, apply, save, against the real velmora-service on loopback and
// against small hosts that answer what the service never would.

#include "model/StringUtils.h"
#include "model/VLApp.h"
#include "platform/RAZipper.h"
#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"
#include "scan/AutomatchPost.h"
#include "scan/UpdateNotices.h"
#include "scan/VLMainWindowController.h"
#include "scan/VLScanData.h"
#include "scan/VLSendAllatOnceHelper.h"
#include "support/DataTable.h"
#include "support/HostSettings.h"
#include "support/PlistFiles.h"
#include "support/RecordingFeedback.h"
#include "support/ScriptedHost.h"
#include "support/ServiceProcess.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTcpSocket>

namespace {

void setSetting(const char *key, const QVariant &value)
{
    VLSettings().setValue(QString::fromLatin1(key), value);
}

ScriptedHost::Script fixedReply(const QByteArray &body)
{
    return [body](QTcpSocket *socket, const HostRequest &) { ScriptedHost::answer(socket, 200, {}, body); };
}

// One check to its end; false when the exchange failed.
bool runCheck(bool background = false)
{
    VLMainWindowController driver;
    QSignalSpy finished(&driver, &VLMainWindowController::checkFinished);
    background ? driver.checkForUpdatesBackGround() : driver.checkForUpdates();
    return finished.wait(60000) && finished.first().first().toBool();
}

AppList storedApps()
{
    return VLScanData().apps().value_or(AppList());
}

QStringList outdatedNames()
{
    VLMainWindowController driver;
    QSignalSpy finished(&driver, &VLMainWindowController::checkFinished);
    driver.loadScanDataOrRunScan(true);
    finished.wait(30000);
    QStringList names;
    for (const AppRef &app : driver.outdatedApps()) {
        names << app->displayName;
    }
    return names;
}

} // namespace

class TestCheckDriver : public QObject
{
    Q_OBJECT

    ServiceProcess m_service;
    QString m_volume;

    void installApp(const QString &name, const QString &bundleID, const QString &version)
    {
        PlistFiles::makeBundle(m_volume + QStringLiteral("/Applications/") + name + QStringLiteral(".app"),
                               PlistFiles::info(bundleID, version));
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_service.start());
        m_volume = QDir::homePath() + QStringLiteral("/volume");
        setSetting(SettingKey::volumeRoot, m_volume);
        installApp(QStringLiteral("Velmora Notes"), QStringLiteral("com.velmora.sample.notes"), QStringLiteral("1.0"));
        installApp(QStringLiteral("Velmora Paint"), QStringLiteral("com.velmora.sample.paint"), QStringLiteral("1.0"));
        installApp(QStringLiteral("Unknown Tool"), QStringLiteral("com.example.unknown"), QStringLiteral("3.1"));
    }

    void init()
    {
        pointHostsAt(m_service.baseUrl());
        setSetting(SettingKey::sendAnalytics, false);
    }

    void requestText_data()
    {
        columns<QString, QString, QString, QDateTime, QString>("localPath", "name", "version", "opened", "fields");
        const QString path = QStringLiteral("/Applications/A b.app");
        const QDateTime may4 = QDateTime(QDate(2013, 5, 4), QTime(12, 0), Qt::UTC);
        row("encoded and as is", path, "A b.app", "1.0 b&2", may4,
            "&app[3][t]=A%20b.app&app[3][p]=DIGEST&app[3][d]=A%20b&app[3][v]=1.0 b&2&app[3][b]=com.example.a"
            "&app[3][m]=2013-05-04%2012%3A00%3A00%20%2B0000");
        row("outside ASCII as UTF-8", path, "Été.app", "1.0", may4,
            "&app[3][t]=%C3%89t%C3%A9.app&app[3][p]=DIGEST&app[3][d]=A%20b&app[3][v]=1.0&app[3][b]=com.example.a"
            "&app[3][m]=2013-05-04%2012%3A00%3A00%20%2B0000");
        row("absent values", path, QString(), QString(), QDateTime(),
            "&app[3][t]=(null)&app[3][p]=DIGEST&app[3][d]=A%20b&app[3][v]=(null)&app[3][b]=com.example.a"
            "&app[3][m]=(null)");
        row("not installed: nothing, index used", "-", "A b.app", "1", may4, QString());
    }

    void requestText()
    {
        auto [localPath, name, version, opened, fields] =
            fetch<QString, QString, QString, QDateTime, QString>("localPath", "name", "version", "opened", "fields");
        VLApp app;
        app.localPath = localPath;
        app.name = name;
        app.digestString = QStringLiteral("DIGEST");
        app.localizedName = QStringLiteral("A b");
        app.localVersion = version;
        app.bundleID = QStringLiteral("com.example.a");
        app.lastOpened = opened;
        QString post;
        AutomatchPost::appendAppFields(post, 3, app);
        QCOMPARE(post, fields);
    }

    void requestHead()
    {
        setSetting(SettingKey::serial, QStringLiteral("C02 X&Y"));
        setSetting(SettingKey::penguin, QStringLiteral("uuid-1"));
        QCOMPARE(AutomatchPost::createPostBackGroundScan(),
                 QStringLiteral("vld=6.0.4&c=C02%20X%26Y&p=0&mid=0&uuid=uuid-1&type=background"));
        QVERIFY(AutomatchPost::createPostManualScan().endsWith(QLatin1String("&type=manual")));
        QVERIFY(AutomatchPost::createPost().endsWith(QLatin1String("&type=auto")));
    }

    void checksKeepTheUsersChoices()
    {
        QVERIFY(runCheck());
        QCOMPARE(outdatedNames(), (QStringList{QStringLiteral("Velmora Notes"), QStringLiteral("Velmora Paint")}));

        {
            VLScanData store;
            VLScanData::Change change(store);
            store.appWithVLID(QStringLiteral("5001"))->skippedVersion = QStringLiteral("2.0");
            QVERIFY(store.saveDataToDisk());
        }
        QVERIFY(runCheck());
        QCOMPARE(outdatedNames(), QStringList{QStringLiteral("Velmora Paint")});
        QCOMPARE(VLScanData().appWithVLID(QStringLiteral("5001"))->skippedVersion, QStringLiteral("2.0"));
        // Nothing doubled by the second check.
        const AppList apps = storedApps();
        QSet<QString> digests;
        for (const AppRef &app : apps) {
            digests.insert(app->digestString);
        }
        QCOMPARE(digests.size(), apps.size());
    }

    void failedExchanges_data()
    {
        columns<QByteArray, bool, QStringList, bool>("reply", "background", "shown", "diagnosticFile");
        const QStringList receiving{QStringLiteral("alert: There was an error receiving updates.")};
        QTest::newRow("not zlib") << QByteArray("hello") << false << receiving << true;
        QTest::newRow("zlib, not JSON") << *RAZipper::compressedDataForData("[1, 2") << false << receiving << true;
        QTest::newRow("empty") << QByteArray() << false << receiving << true;
        row("refused", QByteArray("closed"), false, QStringList{QStringLiteral("alert: Connection error!")}, false);
        QTest::newRow("background: nothing shown") << QByteArray("hello") << true << QStringList() << false;
    }

    void failedExchanges()
    {
        auto [reply, background, shown, diagnosticFile] =
            fetch<QByteArray, bool, QStringList, bool>("reply", "background", "shown", "diagnosticFile");
        QVERIFY(runCheck());
        const QByteArray before = PlistFiles::readFile(VLScanData::pathForDataFile());
        QFile::remove(VLSendAllatOnceHelper::diagnosticFilePath());

        ScriptedHost host(fixedReply(reply));
        pointHostsAt(host.url("").toString());
        if (reply == "closed") {
            host.close();
        }
        RecordingFeedback feedback;
        QSignalSpy done(&VLNotificationCenter::defaultCenter(), &VLNotificationCenter::posted);
        QVERIFY(!runCheck(background));
        QCOMPARE(feedback.shown(), shown);
        QCOMPARE(QFile::exists(VLSendAllatOnceHelper::diagnosticFilePath()), diagnosticFile);
        QVERIFY(std::any_of(done.cbegin(), done.cend(), [](const QList<QVariant> &event) {
            return event.first().toString() == QLatin1String("VLUpdateDoneScannerFlag");
        }));
        // The records merged before the exchange are all the store holds: nothing of a failed match.
        QCOMPARE(QJsonDocument::fromJson(PlistFiles::readFile(VLScanData::pathForDataFile())),
                 QJsonDocument::fromJson(before));
    }

    void digestFallback()
    {
        // A reply record without "h" is matched by the MD5 of its catalogue id; a second reply updates it.
        const auto reply = [](const char *version) {
            const QJsonObject item{{QStringLiteral("m"), QStringLiteral("7001")},
                                   {QStringLiteral("g"), QStringLiteral("Catalogue Only")},
                                   {QStringLiteral("j"), QString::fromLatin1(version)}};
            return *RAZipper::compressedDataForData(QJsonDocument(QJsonObject{{QStringLiteral("0"), item}}).toJson());
        };
        for (const char *version : {"1.0", "2.0"}) {
            ScriptedHost host(fixedReply(reply(version)));
            pointHostsAt(host.url("").toString());
            QVERIFY(runCheck());
        }
        int copies = 0;
        for (const AppRef &app : storedApps()) {
            if (app->vlID == QLatin1String("7001")) {
                ++copies;
                QCOMPARE(app->vlVersion, QStringLiteral("2.0"));
                QCOMPARE(app->digestString, md5HexHash(QStringLiteral("7001")));
            }
        }
        QCOMPARE(copies, 1);
    }

    void countingSinceLastNotified_data()
    {
        columns<QString, int>("lastNotified", "count");
        QTest::newRow("never notified: every outdated record") << QString() << 3;
        QTest::newRow("dates after it count") << QStringLiteral("2026-11-19 10:00:00 +0000") << 2;
        QTest::newRow("nothing newer: no notification") << QStringLiteral("2026-12-01 00:00:00 +0000") << 0;
    }

    void countingSinceLastNotified()
    {
        auto [lastNotified, count] = fetch<QString, int>("lastNotified", "count");
        VLSettings().remove(QString::fromLatin1(SettingKey::lastNotified));
        if (!lastNotified.isNull()) {
            setSetting(SettingKey::lastNotified, lastNotified);
        }
        AppList outdated;
        for (const char *date : {"Nov 20, 2026", "2026-11-22", "Nov 1, 2026"}) {
            outdated.append(std::make_shared<VLApp>());
            outdated.last()->vlDate = QString::fromLatin1(date);
        }
        QCOMPARE(UpdateNotices::countNumberOfUpdatesFoundSinceLastScan(outdated), count);
    }
};

VELMORA_TEST_MAIN(TestCheckDriver)
#include "TestCheckDriver.moc"
