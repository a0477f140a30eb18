// The member account against the real velmora-service and a real Secret Service; a scripted host stands in for
// replies the service never gives (a null name, credentials that are not base64).

#include "model/StringUtils.h"
#include "platform/HttpCookieJar.h"
#include "platform/VLSettings.h"
#include "platform/WebRequest.h"
#include "services/VLKeychain.h"
#include "services/VLMemberAccount.h"
#include "support/DataTable.h"
#include "support/HostSettings.h"
#include "support/KeyringSession.h"
#include "support/ScriptedHost.h"
#include "support/ServiceProcess.h"
#include "support/Utf8.h"

#include <QNetworkCookie>
#include <QTcpSocket>

namespace {

const QString keychainName = QStringLiteral("Velmora Desktop");

void setCookie(const QByteArray &name, const QByteArray &value, const QString &domain)
{
    QNetworkCookie cookie(name, value);
    cookie.setDomain(domain);
    cookie.setPath(QStringLiteral("/"));
    HttpCookieJar::shared().insertCookie(cookie);
}

} // namespace

class TestVLMemberAccount : public QObject
{
    Q_OBJECT

    ServiceProcess m_service;

    VLMemberAccount signedUp(const QString &email, const QString &password, const QString &first = s("Ann"))
    {
        VLMemberAccount account;
        account.signupEmail = email;
        account.signupPassword = password;
        account.signupFirstName = first;
        account.signupLastName = QStringLiteral("Lee");
        account.createAccount();
        return account;
    }

private slots:
    void initTestCase() { QVERIFY(m_service.start()); }

    void init()
    {
        pointHostsAt(m_service.baseUrl());
        HttpCookieJar::shared().setCookies({});
        VLMemberAccount().reset();
    }

    void signup_data()
    {
        columns<QString, QString, QString>("email", "password", "status");
        // A four-letter domain, the most the program accepts, and "+" and "." before the @; "+", "/" and "&" in the
        // password.
        row("new member", "ann.b+c@mail.example.info", "s3cret+/&pw", "");
        row("password outside ASCII", "zoe@example.com", "pässwörd ä", "");
        row("address taken", "ann.b+c@mail.example.info", "other", "taken");
        row("five-letter domain", "ann@example.velmo", "pw", "Invalid Email address");
        row("no domain dot", "ann@example", "pw", "Invalid Email address");
        row("space in the address", "a b@example.com", "pw", "Invalid Email address");
        row("no password", "ann@example.com", "", "Please enter required account info");
    }
    void signup()
    {
        auto [email, password, status] = fetch<QString, QString, QString>("email", "password", "status");
        // The first name is kept as sent, in any script.
        const QString first = s("Zoë");
        const VLMemberAccount account = signedUp(email, password, first);
        QCOMPARE(account.isLoggedIn, status.isEmpty());
        if (status.isEmpty()) {
            QCOMPARE(account.createErrorfield, QStringLiteral("Processing..."));
            QCOMPARE(account.firstname, first);
            QCOMPARE(VLKeychain::passwordForLabel(keychainName, email), password);
            QCOMPARE(VLMemberAccount::lastLoginMemberID(), account.memberID);
            QCOMPARE(VLMemberAccount::lastLoginName(), first);
        } else if (status == u"taken") {
            QVERIFY(!account.createErrorfield.isEmpty() && !account.createErrorfield.contains(u"Error"));
        } else {
            QCOMPARE(account.createErrorfield, status);
        }
    }

    void login_data()
    {
        columns<QString, QString, QString>("email", "password", "errorfield");
        row("right password", "ann.b+c@mail.example.info", "s3cret+/&pw", "");
        row("password outside ASCII", "zoe@example.com", "pässwörd ä", "");
        row("wrong password", "ann.b+c@mail.example.info", "wrong", "Incorrect email or password");
        row("no password", "ann.b+c@mail.example.info", "", "Please enter email and password");
    }
    void login()
    {
        auto [email, password, errorfield] = fetch<QString, QString, QString>("email", "password", "errorfield");
        // A stored member whose log-in fails is forgotten, keychain item and all.
        VLKeychain::setPasswordForServiceAccountDesc(QStringLiteral("old"), keychainName, email,
                                                     QString::fromLatin1(VLKeychain::kInternetPassword));
        VLSettings().setValue(QString::fromLatin1(SettingKey::lastlogin), 99);
        VLMemberAccount account;
        account.email = email;
        account.password = password;
        account.login();
        QCOMPARE(account.errorfield, errorfield);
        QCOMPARE(account.isLoggedIn, errorfield.isEmpty());
        if (errorfield.isEmpty()) {
            QCOMPARE(account.fullname, s("Zoë Lee"));
            QCOMPARE(VLKeychain::passwordForLabel(keychainName, email), password);
        } else if (!password.isEmpty()) {
            QVERIFY(VLKeychain::accountsForLabel(keychainName).isEmpty());
            QCOMPARE(VLMemberAccount::lastLoginMemberID(), -1);
        }
    }

    void cookieLogin_data()
    {
        columns<int, QByteArray, QString, QString>("storedId", "cookie", "email", "password");
        row("pair split at the encoded colon", 0, QByteArray("12345%3Aabc"), "12345", "abc");
        row("stored member id skips the cookie", 7, QByteArray("12345%3Aabc"), "", "");
    }
    void cookieLogin()
    {
        auto [storedId, cookie, email, password] =
            fetch<int, QByteArray, QString, QString>("storedId", "cookie", "email", "password");
        VLSettings().setValue(QString::fromLatin1(SettingKey::lastlogin), storedId);
        setCookie("login", cookie, VLMemberAccount::serviceCookieDomain());
        VLMemberAccount account;
        account.loadAccountFromCookie();
        QCOMPARE(account.email, email);
        QCOMPARE(account.password, password);
        QCOMPARE(account.memberID, storedId ? storedId : email.toInt());
    }

    void siteCookieLogsIn()
    {
        // The site's sign-in sets the cookie; the cookie log-in learns the real credentials from the reply.
        signedUp(QStringLiteral("cookie@example.com"), QStringLiteral("pw-cookie"));
        VLMemberAccount().reset();
        const WebResult signIn =
            sendWebRequest(WebRequest::postForm(QUrl(m_service.baseUrl() + QStringLiteral("/member/login")),
                                                "email=cookie%40example.com&password=pw-cookie"));
        QCOMPARE(signIn.status, 200);
        VLMemberAccount account;
        account.loadAccountFromCookie();
        QVERIFY(!account.email.contains(u'@'));
        account.login();
        QVERIFY(account.isLoggedIn);
        QCOMPARE(account.email, QStringLiteral("cookie@example.com"));
        QCOMPARE(account.password, QStringLiteral("pw-cookie"));
        QVERIFY(m_service.waitForLog("/vld6member/jlogincheckcookie/"));
    }

    void scriptedReplies_data()
    {
        columns<QByteArray, QString, QString>("reply", "firstname", "email");
        row("null first name",
            QByteArray(R"({"id":7,"first":null,"last":"Lee","email":"YkBjLmNvbQ==","password":"cHc="})"), "",
            "b@c.com");
        // Without credentials in the reply the typed ones stay, in the account and in the keychain.
        row("credentials not base64", QByteArray(R"({"id":7,"first":"Ann","last":"Lee","email":"!!","password":"??"})"),
            "Ann", "a@b.com");
        row("credentials missing", QByteArray(R"({"id":"7","first":"Ann","last":"Lee"})"), "Ann", "a@b.com");
        row("credentials null", QByteArray(R"({"id":7,"first":"Ann","last":"Lee","email":null,"password":null})"),
            "Ann", "a@b.com");
    }
    void scriptedReplies()
    {
        auto [reply, firstname, email] = fetch<QByteArray, QString, QString>("reply", "firstname", "email");
        ScriptedHost host([reply](QTcpSocket *socket, const HostRequest &) {
            ScriptedHost::answer(socket, 200, "Content-Type: application/json\r\n", reply);
        });
        pointHostsAt(host.url().toString(QUrl::StripTrailingSlash));
        VLMemberAccount account;
        account.email = QStringLiteral("a@b.com");
        account.password = QStringLiteral("pw");
        account.login();
        QVERIFY(account.isLoggedIn);
        QCOMPARE(account.memberID, 7);
        QCOMPARE(account.firstname, firstname);
        QCOMPARE(account.email, email);
        QCOMPARE(VLKeychain::passwordForLabel(keychainName, email), QStringLiteral("pw"));
        QVERIFY(host.requests().first().target.contains(
            QByteArray("/u/" + md5HexHash(QStringLiteral("a@b.com")).toLatin1())));
    }

    void campaignCookie_data()
    {
        columns<QString, bool>("subdomain", "sent");
        row("service domain", "", true);
        row("deals sub-domain left out", "deals.", false);
    }
    void campaignCookie()
    {
        auto [subdomain, sent] = fetch<QString, bool>("subdomain", "sent");
        ScriptedHost host([](QTcpSocket *socket, const HostRequest &) {
            ScriptedHost::answer(socket, 200, "Content-Type: application/json\r\n",
                                 R"({"id":"5","first":"A","last":"B"})"); // an id as text counts too
        });
        pointHostsAt(host.url().toString(QUrl::StripTrailingSlash));
        setCookie("__utmz", "campaign|x", subdomain + VLMemberAccount::serviceCookieDomain());
        QVERIFY(signedUp(QStringLiteral("u@example.com"), QStringLiteral("pw")).isLoggedIn);
        QCOMPARE(host.requests().first().target.endsWith(QByteArray("/utmz/" + QByteArray("campaign|x").toBase64())),
                 sent);
    }
};

VELMORA_KEYRING_TEST_MAIN(TestVLMemberAccount)
#include "TestVLMemberAccount.moc"
