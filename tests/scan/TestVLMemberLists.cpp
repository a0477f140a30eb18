// The member's lists merged into the store, reports, the cart and short links, against the real velmora-service.
// The deals are read end to end by the CLI's account test.

#include "model/PropertyList.h"
#include "model/StringUtils.h"
#include "platform/VLSettings.h"
#include "platform/WebRequest.h"
#include "scan/VLMemberLists.h"
#include "scan/VLScanData.h"
#include "services/BadPlistReports.h"
#include "services/RFShortURL.h"
#include "services/VLAppOnServer.h"
#include "services/VLCartSender.h"
#include "services/VLPurchases.h"
#include "services/VLReportProblemSender.h"
#include "services/VLWatchLists.h"
#include "support/DataTable.h"
#include "support/HostSettings.h"
#include "support/RecordingFeedback.h"
#include "support/ScriptedHost.h"
#include "support/ServiceProcess.h"
#include "support/TestMain.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>
#include <QTemporaryDir>

namespace {

AppRef installedApp(const QString &vlID, const QString &path)
{
    auto app = std::make_shared<VLApp>(*VLApp::initWithLink(QStringLiteral("velmora://app/%1/App/1.0").arg(vlID)));
    app->localPath = path;
    return app;
}

} // namespace

class TestVLMemberLists : public QObject
{
    Q_OBJECT

    ServiceProcess m_service;
    int m_member = 0;

private slots:
    void initTestCase()
    {
        QVERIFY(m_service.start());
        QVERIFY(pointHostsAt(m_service.baseUrl(), {SettingKey::serviceHost, SettingKey::dealsHost,
                                                   SettingKey::shortenerHost, SettingKey::analyticsHost}));
        const WebResult signup = sendWebRequest(WebRequest::get(
            QUrl(m_service.baseUrl() + QStringLiteral("/vld6member/signup/e/l%40example.com/p/pw/f/L/l/M"))));
        m_member = QJsonDocument::fromJson(signup.body).object().value(QStringLiteral("id")).toInt();
        QVERIFY(m_member > 0);
        VLSettings().setValue(QString::fromLatin1(SettingKey::lastlogin), m_member);
    }

    void mergeAndStrip()
    {
        // 5001 installed and watched, 5003 watched but not installed, deal 801 (app 5002) bought.
        VLScanData store(QDir::tempPath() + QStringLiteral("/store.vld6"));
        store.setApps(AppList{installedApp(QStringLiteral("5001"), QStringLiteral("/Applications/Notes.app"))});
        for (const char *id : {"5001", "5003"}) {
            QVERIFY(VLAppOnServer::saveToWatchListOnServer(*installedApp(QString::fromLatin1(id), QString())));
        }
        VLCartSender cart;
        cart.post(QStringLiteral("a={\"member_id\":%1,\"promo_id\":801}").arg(m_member));
        cart.waitUntilDone();
        QCOMPARE(cart.serverResonse, 200);

        VLWatchLists lists;
        lists.getWatchlists(QStringLiteral("id=%1").arg(m_member));
        lists.waitUntilDone();
        QCOMPARE(lists.serverApps.size(), 2);
        VLMemberLists::mergeWatchListItems(store, lists.serverApps);
        VLPurchases purchases;
        purchases.getPurchases(QStringLiteral("id=%1").arg(m_member));
        purchases.waitUntilDone();
        const AppList sorted = VLMemberLists::mergePurchaseItems(store, purchases.serverApps);
        QCOMPARE(sorted.first()->vlID, QStringLiteral("5002"));
        QVERIFY(!sorted.first()->orderid.isEmpty());

        const AppRef installed = store.appWithVLID(QStringLiteral("5001"));
        QVERIFY(installed->isInstalled() && !installed->listname.isEmpty());
        QVERIFY(!store.appWithVLID(QStringLiteral("5003"))->isInstalled());
        QCOMPARE(store.apps()->size(), 3);
        // A second merge changes nothing: every app is on its list already.
        VLMemberLists::mergeWatchListItems(store, lists.serverApps);
        QCOMPARE(store.apps()->size(), 3);

        VLMemberLists::removePurchasesAndWatchListApps(store);
        const AppList reread = VLScanData(store.filePath()).apps().value_or(AppList());
        QCOMPARE(reread.size(), 3);
        for (const AppRef &app : reread) {
            QVERIFY2(app->listname.isEmpty() && app->orderid.isEmpty() && app->wlID.isEmpty(), qPrintable(app->vlID));
        }
    }

    void problemReport_data()
    {
        columns<QString, QString, QString, int, int>("issue", "name", "path", "member", "storedMember");
        row("signed out", "Wrong version", "Notes", "/Applications/Notes.app", 0, -1);
        row("non-ASCII text, & in name and path", "Größe falsch – ✓", "Salt & Pepper", "/Applications/A&B.app", 42, 42);
    }
    void problemReport()
    {
        auto [issue, name, path, member, storedMember] =
            fetch<QString, QString, QString, int, int>("issue", "name", "path", "member", "storedMember");
        AppRef app = installedApp(QStringLiteral("5001"), path);
        app->name = name;
        VLReportProblemSender sender;
        sender.reportIssue(issue, *app, member);
        sender.waitUntilDone();
        QCOMPARE(sender.serverResonse, 200);
        QByteArray reports; // one JSON line each, newest last
        QCOMPARE(m_service.runCommand({QStringLiteral("reports")}, &reports), 0);
        const QJsonObject fields = QJsonDocument::fromJson(reports.trimmed().split('\n').last()).object();
        QCOMPARE(fields.value(QStringLiteral("member_id")).toInt(), storedMember);
        QCOMPARE(fields.value(QStringLiteral("issue")).toString(), issue);
        QCOMPARE(fields.value(QStringLiteral("app_name")).toString(), name);
        QCOMPARE(fields.value(QStringLiteral("path")).toString(), path);
    }

    // An unreadable list goes out once, bytes intact, and only while usage data may be sent.
    void badPlistReports_data()
    {
        columns<bool, int>("sendAnalytics", "stored");
        row("sending allowed", true, 1);
        row("sending not allowed", false, 0);
    }
    void badPlistReports()
    {
        auto [sendAnalytics, stored] = fetch<bool, int>("sendAnalytics", "stored");
        VLSettings().setValue(QString::fromLatin1(SettingKey::sendAnalytics), sendAnalytics);
        const QByteArray binary = "bplist00\xd1\x01\x02\xff\x80" + QByteArray::number(sendAnalytics);
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("Info.plist")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(binary) == binary.size());
        file.close();
        for (int check = 0; check < 2; ++check) {
            QObject owner;
            BadPlistReports::send({file.fileName()}, m_member, &owner);
            QTRY_VERIFY(owner.children().isEmpty());
        }
        QByteArray reports;
        QCOMPARE(m_service.runCommand({QStringLiteral("reports")}, &reports), 0);
        QCOMPARE(int(reports.count(QByteArray("\"plist_base64\":\"" + binary.toBase64() + '"'))), stored);
    }

    // A link without a scheme is sent as http.
    void shortLink()
    {
        RFShortURL shortener;
        QString shortLink;
        QString original;
        connect(&shortener, &RFShortURL::receivedUrl, this, [&](const QString &link, const QString &from) {
            shortLink = link.trimmed();
            original = from;
        });
        const QString target = m_service.baseUrl().mid(7) + QStringLiteral("/desktop/discover");
        shortener.shortURL(target);
        shortener.waitUntilDone();
        QCOMPARE(original, QStringLiteral("http://") + target);
        const WebResult followed = sendWebRequest(WebRequest::get(QUrl(shortLink)));
        QCOMPARE(followed.status, 200);
        QCOMPARE(followed.finalUrl, QUrl(original));
    }

    // A list reply without entries is an empty list, shown without an alert.
    void listReplyWithoutEntries()
    {
        ScriptedHost host([](QTcpSocket *socket, const HostRequest &) {
            ScriptedHost::answer(
                socket, 200, "Content-Type: application/xml\r\n",
                "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>count</key><integer>0</integer>"
                "</dict></plist>");
        });
        QVERIFY(pointHostsAt(host.url().toString(QUrl::StripTrailingSlash), {SettingKey::serviceHost}));
        const RecordingFeedback feedback;
        VLWatchLists lists;
        lists.getWatchlists(QStringLiteral("id=%1").arg(m_member));
        lists.waitUntilDone();
        QVERIFY(pointHostsAt(m_service.baseUrl(), {SettingKey::serviceHost}));
        QVERIFY(lists.serverApps.isEmpty() && feedback.shown().isEmpty());
    }
};

VELMORA_TEST_MAIN(TestVLMemberLists)
#include "TestVLMemberLists.moc"
