// Round trips through velmora-service's member, purchase, report and analytics paths. The watch list and the
// analytics hit are driven end to end by the client's own tests (services/).

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

QString base64Text(const QJsonObject &reply, const char *key)
{
    return QString::fromUtf8(QByteArray::fromBase64(reply.value(QLatin1StringView(key)).toString().toLatin1()));
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

    void passwordLogin_data()
    {
        columns<QByteArray, QByteArray, bool>("email", "password", "accepted");
        QTest::newRow("right password") << QByteArray("ann@example.com") << QByteArray("pässword 1") << true;
        QTest::newRow("e-mail in other case") << QByteArray("ANN@example.com") << QByteArray("pässword 1") << false;
        QTest::newRow("wrong password") << QByteArray("ann@example.com") << QByteArray("pässword 2") << false;
        QTest::newRow("unknown member") << QByteArray("nobody@example.com") << QByteArray("pässword 1") << false;
    }

    void passwordLogin()
    {
        auto [email, password, accepted] = fetch<QByteArray, QByteArray, bool>("email", "password", "accepted");
        const QJsonObject reply = getJson(passwordLoginPath(email, password));
        QCOMPARE(reply.contains(QStringLiteral("error")), !accepted);
        if (accepted) {
            QCOMPARE(reply.value(QStringLiteral("id")).toInteger(), m_annId);
            QCOMPARE(reply.value(QStringLiteral("first")).toString(), QStringLiteral("Ann"));
            QCOMPARE(base64Text(reply, "email"), QStringLiteral("ann@example.com"));
            QCOMPARE(base64Text(reply, "password"), QStringLiteral("pässword 1"));
        }
    }

    void passwordIsEncryptedAtRest()
    {
        QFile database(m_service.databasePath());
        QVERIFY(database.open(QIODevice::ReadOnly));
        const QByteArray bytes = database.readAll();
        QVERIFY(!bytes.contains(QStringLiteral("pässword 1").toUtf8()));
        QVERIFY(!bytes.contains(md5("pässword 1")));
    }

    void cookieLoginAfterSiteSignIn()
    {
        QVERIFY(addMember(QStringLiteral("fay@example.com"), QStringLiteral("pässword 1")) > 0);
        const QByteArray form = "email=fay%40example.com&password=p%C3%A4ssword+1";
        const QByteArray answer =
            m_client->raw("POST /member/login HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n"
                          "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: " +
                          QByteArray::number(form.size()) + "\r\n\r\n" + form);
        QVERIFY2(answer.startsWith("HTTP/1.1 200"), answer.constData());
        // login=ID%3ATOKEN; the program splits the value at the literal "%3A".
        const QByteArray field = "\r\nSet-Cookie: login=";
        QVERIFY(answer.contains(field));
        const qsizetype start = answer.indexOf(field) + field.size();
        const QList<QByteArray> pair = answer.mid(start, answer.indexOf(';', start) - start).split('%');
        QCOMPARE(pair.size(), 2);
        const QByteArray memberId = pair[0];
        const QByteArray token = pair[1].mid(2);
        const QJsonObject reply = getJson("/vld6member/jlogincheckcookie/u/" + memberId + "/p/" + token +
                                          "/vld/6.0.4/c/C/os/14/r/1/cpu/1/uuid/U");
        QCOMPARE(QByteArray::number(reply.value(QStringLiteral("id")).toInteger()), memberId);
        QCOMPARE(base64Text(reply, "password"), QStringLiteral("pässword 1"));
        QVERIFY(m_service.waitForLog("/vld6member/jlogincheckcookie/u/***/p/***/vld/6.0.4"));
        QVERIFY(!m_service.log().contains(token));
        QVERIFY(getJson("/vld6member/jlogincheckcookie/u/" + memberId + "/p/0123/vld/6.0.4")
                    .contains(QStringLiteral("error")));
        QCOMPARE(m_client->post("/member/login", "email=fay%40example.com&password=nope").status, 403);
    }

    void signupThenLogin()
    {
        const QByteArray utmz = QByteArray("utmcsr=example|utmccn=(referral)").toBase64();
        const QJsonObject created =
            getJson("/vld6member/signup/e/bo%40example.com/p/s%2Fcret%26/f/Bo/l/Ng/utmz/" + utmz);
        QVERIFY(created.value(QStringLiteral("id")).toInteger() > 0);
        QCOMPARE(created.value(QStringLiteral("first")).toString(), QStringLiteral("Bo"));
        QVERIFY(m_service.waitForLog("/vld6member/signup/e/bo%40example.com/p/***/f/Bo/l/Ng/utmz/***"));
        QVERIFY(!m_service.log().contains("s%2Fcret"));
        QCOMPARE(getJson(passwordLoginPath("bo@example.com", "s/cret&")).value(QStringLiteral("id")),
                 created.value(QStringLiteral("id")));
        // The same address again, or one that is not an address, is refused with a text the program shows.
        QVERIFY(getJson("/vld6member/signup/e/BO%40example.com/p/x/f/Bo/l/Ng").contains(QStringLiteral("error")));
        QVERIFY(getJson("/vld6member/signup/e/not-an-address/p/x/f/Bo/l/Ng").contains(QStringLiteral("error")));
    }

    void savedProfileShowsAtNextLogin()
    {
        const qint64 id = addMember(QStringLiteral("cy@example.com"), QStringLiteral("pw"));
        const QJsonObject profile{{QStringLiteral("fname"), QStringLiteral("Cyd")},
                                  {QStringLiteral("lname"), QStringLiteral("Oak")},
                                  {QStringLiteral("email"), QStringLiteral("cyd@example.com")},
                                  {QStringLiteral("address"), QStringLiteral("1 Main St & Co")},
                                  {QStringLiteral("city"), QStringLiteral("Oslo")},
                                  {QStringLiteral("state"), QString()},
                                  {QStringLiteral("zip"), QStringLiteral("0150")},
                                  {QStringLiteral("country"), QStringLiteral("NO")},
                                  {QStringLiteral("member_id"), id}};
        const HttpAnswer saved =
            m_client->post("/vld6member/save-profile", "a=" + QJsonDocument(profile).toJson(QJsonDocument::Compact));
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
        const QJsonObject order{{QStringLiteral("member_id"), id},
                                {QStringLiteral("promo_id"), 802},
                                {QStringLiteral("address"), QStringLiteral("1 Main St")}};
        QCOMPARE(m_client->post("/cart/vld6", "a=" + QJsonDocument(order).toJson(QJsonDocument::Compact)).status, 200);
        const QList<QVariantMap> entries = purchases();
        QCOMPARE(entries.size(), 1);
        QCOMPARE(Replies::texts(entries[0], {"vl_id", "bundle_id", "purchased_version"}),
                 L({"5003", "com.velmora.sample.clock", "2.0"}));
        for (const char *key : {"orderid", "serial_number", "order_date", "name"})
            QVERIFY2(!entries[0].value(QLatin1StringView(key)).toString().isEmpty(), key);
    }

    void reportsReachTheOperator()
    {
        const QByteArray issue = QStringLiteral("Wrong app matched: Bücher ≠ Books").toUtf8().toBase64();
        const QByteArray report = "issue=" + issue +
                                  "&m=-1&appid=5001&appname=Notes%20%26%20More&installedversion=1.0"
                                  "&vlversion=2.0&bundle=com.velmora.sample.notes&vld=6.0.4&path=/Applications/A&B.app";
        QCOMPARE(m_client->post("/vld6scan/reportproblem", report).status, 200);
        const QByteArray plist = "plist=" + QByteArray("<plist><dict>").toBase64() + "&m=7";
        QCOMPARE(m_client->post("/vld6scan/badplist", plist).status, 200);
        QByteArray output;
        QCOMPARE(m_service.runCommand({QStringLiteral("reports")}, &output), 0);
        const QList<QByteArray> lines = output.trimmed().split('\n');
        QCOMPARE(lines.size(), 2);
        const QJsonObject problem = QJsonDocument::fromJson(lines[0]).object();
        QCOMPARE(Replies::texts(problem, {"kind", "issue", "app_name", "path"}),
                 L({"problem", "Wrong app matched: Bücher ≠ Books", "Notes & More", "/Applications/A&B.app"}));
        QCOMPARE(problem.value(QStringLiteral("member_id")).toInteger(), -1);
        const QJsonObject badPlist = QJsonDocument::fromJson(lines[1]).object();
        QCOMPARE(badPlist.value(QStringLiteral("plist")).toString(), QStringLiteral("<plist><dict>"));
        QCOMPARE(badPlist.value(QStringLiteral("member_id")).toInteger(), 7);
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
