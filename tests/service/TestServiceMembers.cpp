// Round trips through velmora-service's member, purchase and analytics paths. The watch list, the analytics hit and
// the reports are driven end to end by the client's own tests (services/, scan/).

#include "ServiceClient.h"
#include "model/StringUtils.h"
#include "support/DataTable.h"
#include "support/TestMain.h"
#include "support/Utf8.h"

#include <QJsonDocument>

#include <atomic>
#include <thread>

namespace {

QByteArray md5(const QByteArray &text)
{
    return md5HexHash(QString::fromUtf8(text)).toLatin1();
}

QByteArray passwordLoginPath(const QByteArray &email, const QByteArray &password)
{
    return "/vld6member/jlogincheck2/u/" + md5(email) + "/p/" + md5(password) +
           "/vld/6.0.4/c/C02TEST/os/Version%2014.1%20%28Build%2023B74%29/r/16384/cpu/8/uuid/UUID-1";
}

} // namespace

class TestServiceMembers : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    std::unique_ptr<ServiceClient> m_client;
    qint64 m_annId = -1;

    QJsonObject getJson(const QByteArray &target)
    {
        const HttpAnswer reply = m_client->get(target);
        return reply.status == 200 ? QJsonDocument::fromJson(reply.body).object() : QJsonObject();
    }

    qint64 addMember(const QString &email, const QString &password)
    {
        QByteArray output;
        const int rc = m_service.runCommand({QStringLiteral("add-member"), QStringLiteral("--email"), email,
                                             QStringLiteral("--password"), password, QStringLiteral("--first"),
                                             QStringLiteral("Ann"), QStringLiteral("--last"), QStringLiteral("Lee")},
                                            &output);
        return rc == 0 ? output.trimmed().toLongLong() : -1;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_service.start());
        m_client = std::make_unique<ServiceClient>(m_service);
        m_annId = addMember(QStringLiteral("ann@example.com"), QStringLiteral("pässword 1"));
        QVERIFY(m_annId > 0);
    }

    // The credentials a log-in reply carries are read end to end in the client's tests (services/).
    void passwordLogin_data()
    {
        columns<QByteArray, QByteArray, bool>("email", "password", "accepted");
        row("right password, not ASCII", QByteArray("ann@example.com"), QByteArray("pässword 1"), true);
        row("e-mail in other case", QByteArray("ANN@example.com"), QByteArray("pässword 1"), false);
        row("wrong password", QByteArray("ann@example.com"), QByteArray("pässword 2"), false);
        row("unknown member", QByteArray("nobody@example.com"), QByteArray("pässword 1"), false);
    }

    void passwordLogin()
    {
        auto [email, password, accepted] = fetch<QByteArray, QByteArray, bool>("email", "password", "accepted");
        const QJsonObject reply = getJson(passwordLoginPath(email, password));
        QCOMPARE(reply.contains(QStringLiteral("error")), !accepted);
        if (accepted) {
            QCOMPARE(reply.value(QStringLiteral("id")).toInteger(), m_annId);
        }
    }

    void passwordIsEncryptedAtRest()
    {
        const QByteArray bytes = m_service.databaseBytes();
        QVERIFY(!bytes.isEmpty());
        QVERIFY(!bytes.contains(QStringLiteral("pässword 1").toUtf8()));
        QVERIFY(!bytes.contains(md5("pässword 1")));
    }

    // The site's sign-in cookie opens the cookie log-in (through nginx at another process than the sign-in); a wrong
    // token after a sign-in, and a wrong password at the sign-in, are refused. The client's side of it is driven by
    // its own tests (services/).
    void cookieLogin()
    {
        const HttpAnswer signedIn = m_client->post("/member/login", "email=ann%40example.com&password=p%C3%A4ssword+1");
        QCOMPARE(signedIn.status, 200);
        const QByteArray cookie = QByteArray::fromPercentEncoding(signedIn.header("Set-Cookie")).split(';').first();
        const QByteArray login = "/vld6member/jlogincheckcookie/u/" + QByteArray::number(m_annId) + "/p/";
        QCOMPARE(
            getJson(login + cookie.mid(cookie.indexOf(':') + 1) + "/vld/6.0.4").value(QStringLiteral("id")).toInteger(),
            m_annId);
        QVERIFY(getJson(login + "0123/vld/6.0.4").contains(QStringLiteral("error")));
        QCOMPARE(m_client->post("/member/login", "email=ann%40example.com&password=nope").status, 403);
    }

    // Sign-up and log-in run end to end in the client's tests (services/); here what the program never sends.
    void signupRefusals()
    {
        QVERIFY(getJson("/vld6member/signup/e/ANN%40example.com/p/x/f/Bo/l/Ng").contains(QStringLiteral("error")));
        QVERIFY(getJson("/vld6member/signup/e/not-an-address/p/x/f/Bo/l/Ng").contains(QStringLiteral("error")));
    }

    void savedProfileShowsAtNextLogin()
    {
        const qint64 id = addMember(QStringLiteral("cy@example.com"), QStringLiteral("pw"));
        const QByteArray profile =
            R"({"address":"1 Main St & Co","city":"Oslo","country":"NO","email":"cyd@example.com",)"
            R"("fname":"Cyd","lname":"Oak","member_id":)" +
            QByteArray::number(id) + R"(,"state":"","zip":"0150"})";
        const HttpAnswer saved = m_client->post("/vld6member/save-profile", "a=" + profile);
        QCOMPARE(saved.status, 200);
        const QJsonObject reply = getJson(passwordLoginPath("cyd@example.com", "pw"));
        QCOMPARE(Replies::texts(reply, {"first", "address", "zip"}), L({"Cyd", "1 Main St & Co", "0150"}));
        QVERIFY(getJson(passwordLoginPath("cy@example.com", "pw")).contains(QStringLiteral("error")));
    }

    void cartPurchaseShowsInPurchases()
    {
        const qint64 id = addMember(QStringLiteral("eve@example.com"), QStringLiteral("pw"));
        const auto purchases = [&] {
            return Replies::plistEntries(
                m_client->post("/vld6purchases/getpurchases", "id=" + QByteArray::number(id)).body);
        };
        QVERIFY(purchases().isEmpty());
        const QByteArray order =
            R"({"address":"1 Main St","member_id":)" + QByteArray::number(id) + R"(,"promo_id":802})";
        QCOMPARE(m_client->post("/cart/vld6", "a=" + order).status, 200);
        const QList<QVariantMap> entries = purchases();
        QCOMPARE(entries.size(), 1);
        QCOMPARE(Replies::texts(entries[0], {"vl_id", "bundle_id", "purchased_version"}),
                 L({"5003", "com.velmora.sample.clock", "2.0"}));
        for (const char *key : {"orderid", "serial_number", "order_date", "name"})
            QVERIFY2(!entries[0].value(QLatin1StringView(key)).toString().isEmpty(), key);
    }

    void concurrentWritesAllLand()
    {
        constexpr int threads = 8;
        constexpr int perThread = 25;
        std::vector<std::thread> workers;
        std::atomic<int> accepted = 0;
        for (int t = 0; t < threads; ++t) {
            workers.emplace_back([&, t] {
                ServiceClient client(m_service);
                for (int i = 0; i < perThread; ++i) {
                    const QByteArray hit = "v=1&t=event&ea=CONCURRENT&el=" + QByteArray::number(t * perThread + i);
                    accepted += client.post("/collect", hit).status == 200 ? 1 : 0;
                }
            });
        }
        for (std::thread &worker : workers)
            worker.join();
        QCOMPARE(accepted.load(), threads * perThread);
        QByteArray output;
        QCOMPARE(m_service.runCommand({QStringLiteral("hits")}, &output), 0);
        QCOMPARE(output.count("\"ea\":\"CONCURRENT\""), threads * perThread);
    }
};

VELMORA_TEST_MAIN(TestServiceMembers)
#include "TestServiceMembers.moc"
