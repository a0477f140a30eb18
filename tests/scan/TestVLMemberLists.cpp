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
#include "support/Utf8.h"

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
        columns<bool, QByteArray, QString>("sendAnalytics", "bytes", "stored");
        const QByteArray binary("bplist00\xd1\x01\x02\xff\x00\x80", 14);
        row("binary list", true, binary, QString::fromLatin1(binary.toBase64()));
        row("text list", true, QByteArray("<plist><dict><key>Größe</key>"), s("<plist><dict><key>Größe</key>"));
        row("sending not allowed", false, QByteArray("<plist>never sent"), QString());
    }
    void badPlistReports()
    {
        auto [sendAnalytics, bytes, stored] = fetch<bool, QByteArray, QString>("sendAnalytics", "bytes", "stored");
        VLSettings().setValue(QString::fromLatin1(SettingKey::sendAnalytics), sendAnalytics);
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("Info.plist")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        file.close();
        const auto badPlists = [this] {
            QByteArray lines;
            m_service.runCommand({QStringLiteral("reports")}, &lines);
            QStringList found;
            for (const QByteArray &line : lines.trimmed().split('\n')) {
                const QJsonObject report = QJsonDocument::fromJson(line).object();
                if (report.value(QStringLiteral("kind")) == QStringLiteral("badplist"))
                    found << report.value(QStringLiteral("plist"))
                                 .toString(report.value(QStringLiteral("plist_base64")).toString());
            }
            return found;
        };
        const QStringList before = badPlists();
        for (int check = 0; check < 2; ++check) {
            QObject owner;
            BadPlistReports::send({file.fileName()}, m_member, &owner);
            QTRY_VERIFY(owner.children().isEmpty());
        }
        VLSettings().setValue(QString::fromLatin1(SettingKey::sendAnalytics), false);
        const QStringList added = badPlists().mid(before.size());
        QCOMPARE(added, stored.isNull() ? QStringList() : QStringList{stored});
    }

    void shortLink_data()
    {
        // A link without a scheme is sent as http; one with a query of its own reaches the service as it stands.
        columns<QString, QString, QString>("link", "sent", "followed");
        const QString discover = m_service.baseUrl().mid(7) + QStringLiteral("/desktop/discover");
        row("no scheme", discover, QStringLiteral("http://") + discover, QStringLiteral("http://") + discover);
        const QString query = QStringLiteral("https://example.com/a?x=1&y=2");
        row("https with a query", query, QStringLiteral("http://") + query, query);
    }
    void shortLink()
    {
        auto [link, sent, followed] = fetch<QString, QString, QString>("link", "sent", "followed");
        RFShortURL shortener;
        QString shortLink;
        QString original;
        connect(&shortener, &RFShortURL::receivedUrl, this, [&](const QString &answer, const QString &from) {
            shortLink = answer.trimmed();
            original = from;
        });
        shortener.shortURL(link);
        shortener.waitUntilDone();
        QCOMPARE(original, sent);
        QVERIFY2(shortLink.startsWith(m_service.baseUrl() + QStringLiteral("/s/")), qPrintable(shortLink));
        WebRequest follow = WebRequest::get(QUrl(shortLink));
        follow.followRedirects = false;
        const WebResult answer = sendWebRequest(follow);
        const auto location = std::find_if(answer.headers.cbegin(), answer.headers.cend(), [](const auto &header) {
            return header.first.compare("Location", Qt::CaseInsensitive) == 0;
        });
        QVERIFY(location != answer.headers.cend());
        QCOMPARE(location->second, followed.toUtf8());
    }

    // A list reply without entries is an empty list; entries that are no list are a fault the member is told of.
    void listReplyShapes_data()
    {
        columns<QByteArray, bool>("entries", "alerted");
        row("no entries", QByteArray(), false);
        row("empty entries", QByteArray("<key>entries</key><array/>"), false);
        row("entries not a list", QByteArray("<key>entries</key><integer>3</integer>"), true);
    }
    void listReplyShapes()
    {
        auto [entries, alerted] = fetch<QByteArray, bool>("entries", "alerted");
        const QByteArray plist = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                                 "<key>count</key><integer>0</integer>" +
                                 entries + "</dict></plist>";
        ScriptedHost host([plist](QTcpSocket *socket, const HostRequest &) {
            ScriptedHost::answer(socket, 200, "Content-Type: application/xml\r\n", plist);
        });
        QVERIFY(pointHostsAt(host.url().toString(QUrl::StripTrailingSlash), {SettingKey::serviceHost}));
        const RecordingFeedback feedback;
        VLWatchLists lists;
        lists.getWatchlists(QStringLiteral("id=%1").arg(m_member));
        lists.waitUntilDone();
        QVERIFY(pointHostsAt(m_service.baseUrl(), {SettingKey::serviceHost}));
        QVERIFY(lists.serverApps.isEmpty());
        QCOMPARE(!feedback.shown().isEmpty(), alerted);
    }
};

VELMORA_TEST_MAIN(TestVLMemberLists)
#include "TestVLMemberLists.moc"
