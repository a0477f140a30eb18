// Black-box tests of velmora-service's endpoints against its bundled sample catalogue.

#include "ServiceClient.h"
#include "platform/RAZipper.h"
#include "support/DataTable.h"
#include "support/TestMain.h"
#include "support/Utf8.h"

#include <QFile>
#include <QJsonDocument>

namespace {

const QByteArray head = "vld=6.0.4&c=C02TEST&p=0&mid=0&uuid=5F0B6C1E-0000-4000-8000-000000000001&type=manual";

} // namespace

class TestServiceEndpoints : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    std::unique_ptr<ServiceClient> m_client;

private slots:
    void initTestCase()
    {
        QVERIFY(m_service.start());
        m_client = std::make_unique<ServiceClient>(m_service);
    }

    void automatchReplyShape()
    {
        // Index 0 is skipped, as when the first app of a scan is not installed; index 2 matches nothing.
        const QByteArray body =
            head +
            Requests::appFields(1, "Velmora Notes.app", "0123456789abcdef0123456789abcdef", "Velmora Notes",
                                "1.0 (12)+b", "com.velmora.sample.notes") +
            Requests::appFields(2, "Unknown.app", "ffff", "Unknown", "3", "org.example.unknown") +
            Requests::appFields(5, "Reader.app", "abab", "Reader", "1.0", "com.velmora.sample.reader");
        const QJsonObject reply = m_client->automatch(body);
        QCOMPARE(reply.keys(), (QStringList{QStringLiteral("1"), QStringLiteral("5")}));
        const QJsonObject notes = reply.value(QStringLiteral("1")).toObject();
        // The digest and installed version come back as they were sent.
        QCOMPARE(Replies::texts(notes, {"h", "i", "m", "g", "j", "e1"}),
                 L({"0123456789abcdef0123456789abcdef", "1.0 (12)+b", "5001", "Velmora Notes", "2.0"})
                     << m_service.baseUrl() + QStringLiteral("/files/VelmoraNotes-2.0.zip"));

        // The hash is the SHA-256 of the file the link serves.
        const HttpAnswer file = m_client->get("/files/VelmoraNotes-2.0.zip");
        QCOMPARE(file.status, 200);
        QCOMPARE(notes.value(QStringLiteral("filehash")).toString(),
                 QString::fromLatin1(QCryptographicHash::hash(file.body, QCryptographicHash::Sha256).toHex()));
        QCOMPARE(reply.value(QStringLiteral("5")).toObject().value(QStringLiteral("m")).toString(),
                 QStringLiteral("5005"));
        // A field's name may come URL-encoded, as in any form.
        const QJsonObject encoded = m_client->automatch("app%5B3%5D%5Bb%5D=com.velmora.sample.reader&app[3][m]=x");
        QCOMPARE(encoded.value(QStringLiteral("3")).toObject().value(QStringLiteral("m")).toString(),
                 QStringLiteral("5005"));
        // An index sent again later is the same app, its later fields taking over.
        const QJsonObject split = m_client->automatch(
            "app[4][b]=com.velmora.sample.reader&app[2][p]=x&app[4][p]=first&app[2][b]=com.velmora.sample.notes&"
            "app[4][p]=second&app[4][v]=%41");
        QCOMPARE(split.keys(), (QStringList{QStringLiteral("2"), QStringLiteral("4")}));
        QCOMPARE(Replies::texts(split.value(QStringLiteral("4")).toObject(), {"h", "i", "m"}),
                 L({"second", "%41", "5005"}));
    }

    void emptyRequestGivesEmptyObject()
    {
        const HttpAnswer reply = m_client->post("/vld603scan/automatch", head);
        QCOMPARE(reply.status, 200);
        QCOMPARE(RAZipper::dataForCompressedData(reply.body), std::optional<QByteArray>("{}"));
    }

    void matchingPriority_data()
    {
        columns<QByteArray, QByteArray, QByteArray, QString>("bundleId", "bundleName", "displayName", "expected");
        const auto row = [](const char *tag, const char *bundleId, const char *bundleName, const char *displayName,
                            const char *expected) {
            QTest::newRow(tag) << QByteArray(bundleId) << QByteArray(bundleName) << QByteArray(displayName)
                               << QString::fromUtf8(expected);
        };
        row("bundle id in any case, before file name", "COM.Velmora.SAMPLE.notes", "Velmora Paint.app", "Velmora Clock",
            "5001");
        row("file name before display name", "org.example.none", "velmora PAINT.app", "Velmora Clock", "5002");
        row("display name last", "", "Clock2.app", "velmora clock", "5003");
        row("display name with non-ASCII", "", "x.app", "Velmora Notes \xc3\xa9", "");
        row("bundle id padded with white space", " \tcom.velmora.sample.notes\n ", "", "", "5001");
        row("non-ASCII that folds to ASCII (long s)",
            "COM.velmora.\xc5\xbf"
            "ample.notes",
            "", "", "5001");
    }

    void matchingPriority()
    {
        auto [bundleId, bundleName, displayName, expected] =
            fetch<QByteArray, QByteArray, QByteArray, QString>("bundleId", "bundleName", "displayName", "expected");
        QCOMPARE(m_client->matchOne(bundleId, bundleName, displayName).value(QStringLiteral("m")).toString(), expected);
    }

    void appInfo()
    {
        const HttpAnswer reply = m_client->get("/vld6appinfo/index/vlid/5006");
        QCOMPARE(reply.status, 200);
        const QJsonObject info = QJsonDocument::fromJson(reply.body).object();
        QCOMPARE(Replies::texts(info, {"title", "bundleid", "minOS", "link"}),
                 L({"Velmora Atlas", "com.velmora.sample.atlas", "10.13"})
                     << m_service.baseUrl() + QStringLiteral("/files/VelmoraAtlas-2.0.pkg"));
        for (const char *key :
             {"shortDescription", "developer", "releaseNotes", "vlDate", "license", "stability", "descr", "filesize"})
            QVERIFY2(info.value(QLatin1StringView(key)).isString(), key);
    }

    void blacklistAndBundles()
    {
        QCOMPARE(m_client->get("/vld6blacklist").body, QByteArray("Velmora Helper\nVelmora Uninstaller\n"));
        QCOMPARE(m_client->get("/bundle/1").body, QByteArray("5001,5002,5003"));
        QCOMPARE(
            m_service.runCommand({QStringLiteral("blacklist"), QStringLiteral("add"), QStringLiteral("Foo Agent")}), 0);
        QVERIFY(m_client->get("/vld6blacklist").body.endsWith("\nFoo Agent\n"));
    }

    void downloadRecord()
    {
        // The login name may be empty, which leaves an empty segment.
        QCOMPARE(m_client->get("/download604/5002/abcd//0/0/UUID-1/C02TEST").status, 200);
        QCOMPARE(m_client->get("/download604/5002/abcd/12/0/0/UUID-1/C02TEST").status, 200);
        QVERIFY(m_client->get("/app/mac/5002/Velmora%20Paint").body.contains("Downloads: 2"));
    }

    void rangeDownloads_data()
    {
        columns<QByteArray, int, qsizetype>("range", "status", "from");
        QTest::newRow("whole file") << QByteArray() << 200 << qsizetype(0);
        QTest::newRow("resume") << QByteArray("bytes=100-") << 206 << qsizetype(100);
        QTest::newRow("past the end") << QByteArray("bytes=99999999-") << 416 << qsizetype(-1);
        QTest::newRow("suffix of no bytes") << QByteArray("bytes=-0") << 416 << qsizetype(-1);
    }

    void rangeDownloads()
    {
        auto [range, status, from] = fetch<QByteArray, int, qsizetype>("range", "status", "from");
        QFile original(ServiceProcess::filesDir() + QStringLiteral("/VelmoraReader-2.0.dmg"));
        QVERIFY(original.open(QIODevice::ReadOnly));
        const QByteArray bytes = original.readAll();
        httplib::Headers headers;
        if (!range.isEmpty())
            headers.emplace("Range", range.toStdString());
        const HttpAnswer reply = m_client->get("/files/VelmoraReader-2.0.dmg", headers);
        QCOMPARE(reply.status, status);
        if (from >= 0) {
            QCOMPARE(reply.body, bytes.mid(from));
            QCOMPARE(reply.header("Content-Length").toLongLong(), bytes.size() - from);
            QCOMPARE(reply.header("Content-Type"), QByteArray("application/x-apple-diskimage"));
        }
        if (status == 206)
            QCOMPARE(reply.header("Content-Range"), QByteArray("bytes 100-" + QByteArray::number(bytes.size() - 1) +
                                                               '/' + QByteArray::number(bytes.size())));
    }

    void badRequests_data()
    {
        // logged: the target as the log shows it.
        columns<QByteArray, QByteArray, QByteArray, int, QByteArray>("method", "target", "body", "status", "logged");
        const auto row = [](const char *tag, const char *method, const QByteArray &target, const QByteArray &body,
                            int status, const char *logged = nullptr) {
            QTest::newRow(tag) << QByteArray(method) << target << body << status
                               << (logged ? QByteArray(logged) : target);
        };
        const QByteArray automatch = "/vld603scan/automatch";
        row("broken escape", "POST", automatch, "vld=6.0.4&app[1][t]=%ZZ", 400);
        row("huge index", "POST", automatch, "app[9999999][t]=x", 400);
        row("unknown app field", "POST", automatch, "app[1][q]=x", 400);
        row("index not a number", "POST", automatch, "app[1x][t]=x", 400);
        row("broken escape in a field matching ignores", "POST", automatch, "app[1][m]=%C3%28", 400);
        row("body over the limit", "POST", automatch, QByteArray(17 * 1024 * 1024, 'a'), 413);
        row("unknown bundle", "GET", "/bundle/77", {}, 404);
        row("download of unknown id", "GET", "/download604/424242/a/b/0/0/c/d", {}, 404);
        row("encoded dot-dot", "GET", "/files/%2e%2e/%2e%2e/etc/passwd", {}, 400);
        row("missing file", "GET", "/files/nothing.zip", {}, 404);
        // Member paths are logged with their secrets hidden.
        row("log-in without digests", "GET", "/vld6member/jlogincheck2/u/x/p/y/vld/6.0.4", {}, 400,
            "/vld6member/jlogincheck2/u/***/p/***/vld/6.0.4");
        row("cookie log-in, id not a number", "GET", "/vld6member/jlogincheckcookie/u/abc/p/tok", {}, 400,
            "/vld6member/jlogincheckcookie/u/***/p/***");
        row("sign-up, utmz not base64", "GET", "/vld6member/signup/e/a%40b.co/p/x/f/A/l/B/utmz/%21%21", {}, 400,
            "/vld6member/signup/e/a%40b.co/p/***/f/A/l/B/utmz/***");
        row("profile not JSON", "POST", "/vld6member/save-profile", "a={\"fname\":", 400);
        row("profile of unknown member", "POST", "/vld6member/save-profile", "a={\"member_id\":4242}", 404);
        row("profile of a member id past any integer", "POST", "/vld6member/save-profile", "a={\"member_id\":1e300}",
            404);
        row("purchases of unknown member", "POST", "/vld6purchases/getpurchases", "id=4242", 404);
        row("watch-list add, bad e", "GET", "/vld6watchlists/awl/z/00/m/5001/e/7", {}, 400);
        row("report not base64", "POST", "/vld6scan/reportproblem", "issue=***&m=-1&appname=x", 400);
        row("bad-plist report, bad member", "POST", "/vld6scan/badplist", "plist=aGk=&m=x", 400);
        row("empty analytics hit", "POST", "/collect", {}, 400);
        row("cart body not an object", "POST", "/cart/vld6", "a=[]", 400);
        row("short link of ftp", "GET", "/api-create.php?url=ftp://x", {}, 400);
        row("unknown short link", "GET", "/s/zzzz", {}, 404);
        row("unknown path", "GET", "/nowhere", {}, 404);
    }

    void badRequests()
    {
        auto [method, target, body, status, logged] =
            fetch<QByteArray, QByteArray, QByteArray, int, QByteArray>("method", "target", "body", "status", "logged");
        const HttpAnswer reply = method == "GET" ? m_client->get(target) : m_client->post(target, body);
        QCOMPARE(reply.status, status);
        // The service is still there, and logged the refusal.
        QCOMPARE(m_client->get("/vld6blacklist").status, 200);
        QVERIFY(m_service.waitForLog(' ' + logged + ' ' + QByteArray::number(status) + ' '));
    }

    void sitePages()
    {
        // Icons, unknown app-info ids and a bad watch-list id are driven by the client's own tests (services/).
        QCOMPARE(m_client->get("/util/iconlg/5001.png").header("Content-Type"), QByteArray("image/png"));
        const HttpAnswer page = m_client->get("/app/mac/5001/Velmora%20Notes");
        QCOMPARE(page.status, 200);
        QVERIFY(page.body.contains("Velmora Notes"));
        QVERIFY(page.body.contains("/files/VelmoraNotes-2.0.zip"));
        QVERIFY(m_client->get("/desktop/discover").body.contains("/app/mac/5007/"));
        QCOMPARE(m_client->get("/member/forgot-password").status, 200);
        // An app whose link leads to a page: the link answers HTML.
        const HttpAnswer journal = m_client->get("/files/velmora-journal.html");
        QCOMPARE(journal.status, 200);
        QVERIFY(journal.header("Content-Type").startsWith("text/html"));
    }

    void shortLinks_data()
    {
        // The link goes into the query as it stands, with "http://" before one that starts "https://".
        columns<QByteArray, QByteArray>("sent", "stored");
        row("own query", QByteArray("http://example.com/app/mac/5001/x&ref=share"),
            QByteArray("http://example.com/app/mac/5001/x&ref=share"));
        row("query of its own", QByteArray("http://example.com/a?x=1&y=2?z"),
            QByteArray("http://example.com/a?x=1&y=2?z"));
        row("https link", QByteArray("http://https://example.com/b?q=%3F"), QByteArray("https://example.com/b?q=%3F"));
    }
    void shortLinks()
    {
        auto [sent, stored] = fetch<QByteArray, QByteArray>("sent", "stored");
        const HttpAnswer created = m_client->get("/api-create.php?url=" + sent);
        QCOMPARE(created.status, 200);
        QVERIFY(created.body.startsWith(QByteArray(m_service.baseUrl().toUtf8() + "/s/")));
        QCOMPARE(m_client->get("/api-create.php?url=" + sent).body, created.body);
        const HttpAnswer followed = m_client->get(created.body.mid(m_service.baseUrl().size()));
        QCOMPARE(followed.status, 302);
        // The client library decodes escapes in header values; the log shows the link as sent.
        QCOMPARE(followed.header("Location"), QByteArray::fromPercentEncoding(stored));
        QVERIFY(m_service.waitForLog(" GET /api-create.php?url=" + sent + " 200 "));
    }

    // A refusal's reason reaches the log as text, also when the reply went out compressed.
    void refusalLoggedAsText()
    {
        QCOMPARE(m_client->get("/s/zzzz", {{"Accept-Encoding", "gzip"}}).status, 404);
        QVERIFY(m_service.waitForLog(" GET /s/zzzz 404 "));
        const QByteArray log = m_service.log();
        const qsizetype line = log.indexOf(" GET /s/zzzz 404 ");
        QCOMPARE(log.mid(line, log.indexOf('\n', line) - line).split(' ').mid(5).join(' '),
                 QByteArray("(unknown short link)"));
    }

    void promotions()
    {
        const HttpAnswer reply = m_client->get("/api/promosplist");
        QCOMPARE(reply.status, 200);
        const QList<QVariantMap> entries = Replies::plistEntries(reply.body);
        QCOMPARE(entries.size(), 2);
        QCOMPARE(Replies::texts(entries.first(), {"title", "prod_id", "id", "bundle_id"}),
                 L({"Velmora Paint", "5002", "801", "com.velmora.sample.paint"}));
        for (const char *key : {"shortdescr", "link", "discount", "price", "appversion", "parent_sales_profile_id"})
            QVERIFY2(!entries.first().value(QLatin1StringView(key)).toString().isEmpty(), key);
    }
};

VELMORA_TEST_MAIN(TestServiceEndpoints)
#include "TestServiceEndpoints.moc"
