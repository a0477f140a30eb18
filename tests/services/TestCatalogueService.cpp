// The record's calls to the service (app information, icons, watch-list changes), against the real velmora-service
// on loopback.

#include "model/PropertyList.h"
#include "model/StringUtils.h"
#include "model/VLApp.h"
#include "platform/VLSettings.h"
#include "platform/WebRequest.h"
#include "services/VLAppOnServer.h"
#include "support/HostSettings.h"
#include "support/ServiceProcess.h"
#include "support/TestMain.h"
#include "support/Utf8.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <memory>

namespace {

VLApp linkRecord(const char *id)
{
    return *VLApp::initWithLink(QStringLiteral("velmora://app/%1/Linked/1.0").arg(QLatin1String(id)));
}

QVariantList watchListEntries(const QString &baseUrl, const QString &memberId)
{
    const WebResult result = sendWebRequest(WebRequest::postForm(
        QUrl(baseUrl + QStringLiteral("/vld6watchlists/getwatchlists")), "id=" + memberId.toLatin1()));
    const auto reply = PropertyList::parseDictionary(result.body);
    return reply ? reply->value(QStringLiteral("entries")).toList() : QVariantList{QStringLiteral("unreadable")};
}

} // namespace

class TestCatalogueService : public QObject
{
    Q_OBJECT

    ServiceProcess m_service;
    QString m_base;

private slots:
    void initTestCase()
    {
        QVERIFY(m_service.start({ServiceProcess::sampleCataloguePath()}));
        m_base = m_service.baseUrl();
    }

    void init() { QVERIFY(pointHostsAt(m_base, {SettingKey::serviceHost, SettingKey::siteHost})); }

    // The service's found and not-found app information is read in updateWithServerInfo.
    void badMemberIdRefused()
    {
        const WebResult posted = sendWebRequest(
            WebRequest::postForm(QUrl(m_base + QStringLiteral("/vld6watchlists/getwatchlists")), "id=nobody"));
        QCOMPARE(posted.status, 400);
    }

    void updateWithServerInfo()
    {
        // On a worker thread, as the program runs it.
        VLApp app = linkRecord("5001");
        bool updated = false;
        const std::unique_ptr<QThread> worker(
            QThread::create([&app, &updated] { updated = VLAppOnServer::updateWithServerInfo(app); }));
        worker->start();
        QVERIFY(worker->wait(60000));
        QVERIFY(updated);
        QCOMPARE((QStringList{app.name, app.displayName, app.developer, app.minOS, app.license, app.beta, app.vlDate,
                              app.bundleID, app.download_url}),
                 L({"Velmora Notes", "Velmora Notes", "Velmora Labs", "10.13", "Free", "release", "Nov 20, 2026",
                    "com.velmora.sample.notes"})
                     << m_base + QStringLiteral("/files/VelmoraNotes-2.0.zip"));
        QVERIFY(app.shortDescription.startsWith(QStringLiteral("A notebook")));
        QVERIFY(app.longDescription.contains(QStringLiteral("sample app")));
        QVERIFY(app.releaseNotes.startsWith(QStringLiteral("Version 2.0")));
        QCOMPARE(app.vlVersion, QStringLiteral("1.0")); // the link's version stands
        QVERIFY(app.isOutdated);

        VLApp unknown = linkRecord("999999");
        const QJsonObject before = unknown.encodeWithCoder();
        QVERIFY(!VLAppOnServer::updateWithServerInfo(unknown));
        QCOMPARE(unknown.encodeWithCoder(), before);
    }

    void iconsAreFetchedOnceIntoTheCache()
    {
        VLApp app = linkRecord("5003");
        const QString cache = VLApp::catalogueIconPath(md5HexHash(QStringLiteral("5003")));
        QVERIFY(!QFileInfo::exists(cache));
        VLAppOnServer::getIcon(app);
        QCOMPARE(app.appIcon, cache);
        QFile file(cache);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.read(8) == QByteArray("\x89PNG\r\n\x1a\n", 8));

        VLApp unknown = linkRecord("999997");
        VLAppOnServer::getIcon(unknown);
        QCOMPARE(unknown.appIcon, QStringLiteral(""));
        QVERIFY(!QFileInfo::exists(VLApp::catalogueIconPath(unknown.digestString)));

        // With the site gone, the cached file still serves.
        QVERIFY(pointHostsAt(QStringLiteral("http://127.0.0.1:1"), // nothing listens there
                             {SettingKey::serviceHost, SettingKey::siteHost}));
        VLApp again = linkRecord("5003");
        VLAppOnServer::getIcon(again);
        QCOMPARE(again.appIcon, cache);
    }

    void watchListChanges()
    {
        QByteArray output;
        const QStringList addMember =
            QStringLiteral("add-member --email wl@example.test --password secret --first Wanda --last Lister")
                .split(u' ');
        QCOMPARE(m_service.runCommand(addMember, &output), 0);
        const QString memberId = QString::fromUtf8(output).trimmed();
        QVERIFY(!memberId.isEmpty());
        VLApp app = linkRecord("5003");

        QVERIFY(!VLAppOnServer::saveToWatchListOnServer(app)); // nobody logged in
        VLSettings().setValue(QString::fromLatin1(SettingKey::lastlogin), memberId.toInt());
        VLSettings().setValue(QString::fromLatin1(SettingKey::sendEmail), true);
        QVERIFY(VLAppOnServer::saveToWatchListOnServer(app));
        const QByteArray added = "GET /vld6watchlists/awl/z/" + md5HexHash(memberId).toLatin1() + "/m/5003/e/1 200";
        QVERIFY(m_service.waitForLog(added));

        // The list's items as records: model/TestCatalogueIngestion; as the CLI prints them: cli/TestCliAccount.
        QCOMPARE(watchListEntries(m_base, memberId).size(), 1);
        QVERIFY(VLAppOnServer::removeFromWatchListOnServer(app));
        QVERIFY(watchListEntries(m_base, memberId).isEmpty());
        QVERIFY(!VLAppOnServer::removeFromWatchListOnServer(app)); // no longer on the list
        QVERIFY(!VLAppOnServer::saveToWatchListOnServer(linkRecord("999996")));
        VLSettings().remove(QString::fromLatin1(SettingKey::lastlogin));
    }
};

VELMORA_TEST_MAIN(TestCatalogueService)
#include "TestCatalogueService.moc"
