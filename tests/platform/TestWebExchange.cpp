// Requests read into memory: how they fail against hosts that refuse, stall, trickle, flood or break off, the https
// to http redirect that is never followed, the cookies that every thread's session shares, and where a host setting
// sends a request.

#include "platform/HttpCookieJar.h"
#include "platform/HttpDownload.h"
#include "platform/VLSettings.h"
#include "platform/WebRequest.h"
#include "support/ScriptedHost.h"
#include "support/TestMain.h"

#include <QDir>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <thread>

namespace {

enum class Host { Refusing, Silent, Trickling, Flooding, BreakingOff };

// What a host does with every request.
ScriptedHost::Script scriptFor(Host host)
{
    switch (host) {
    case Host::Trickling: // a byte every 50 ms: done in 10 s, unless the deadline comes first
        return [](QTcpSocket *s, const HostRequest &) {
            ScriptedHost::dribble(s, "HTTP/1.1 200 OK\r\nContent-Length: 200\r\n\r\n", QByteArray(200, 'x'), 1, 50);
        };
    case Host::Flooding: // 32 MB as fast as the client takes them
        return [](QTcpSocket *s, const HostRequest &) {
            ScriptedHost::dribble(s, "HTTP/1.1 200 OK\r\nContent-Length: 33554432\r\n\r\n",
                                  QByteArray(32 * 1024 * 1024, 'x'), 64 * 1024, 0);
        };
    case Host::BreakingOff:
        return [](QTcpSocket *s, const HostRequest &) {
            s->write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n0123456789");
            s->disconnectFromHost();
        };
    default:
        return [](QTcpSocket *, const HostRequest &) {};
    }
}

} // namespace

Q_DECLARE_METATYPE(Host)

class TestWebExchange : public QObject
{
    Q_OBJECT

private slots:
    void failsLikeABrokenConnection_data()
    {
        QTest::addColumn<Host>("host");
        QTest::addColumn<int>("idleMs");
        QTest::addColumn<int>("deadlineMs");
        QTest::addColumn<qint64>("maxBodyBytes");
        QTest::addColumn<bool>("timedOut");
        QTest::addColumn<QString>("error");
        QTest::newRow("refused") << Host::Refusing << 60000 << 60000 << qint64(1000) << false << "refused";
        QTest::newRow("silent") << Host::Silent << 300 << 60000 << qint64(1000) << true << "The request timed out.";
        QTest::newRow("trickling") << Host::Trickling << 60000 << 600 << qint64(1000) << true
                                   << "The request timed out.";
        QTest::newRow("flooding") << Host::Flooding << 60000 << 60000 << qint64(1024 * 1024) << false
                                  << "The reply is larger than 1048576 bytes.";
        QTest::newRow("breaking off") << Host::BreakingOff << 60000 << 60000 << qint64(1000) << false << "closed";
    }

    void failsLikeABrokenConnection()
    {
        QFETCH(Host, host);
        ScriptedHost scripted(scriptFor(host));
        QUrl url = scripted.url("/x");
        if (host == Host::Refusing) {
            scripted.close();
        }
        WebRequest request = WebRequest::get(url, QStringLiteral("Probe"));
        QFETCH(int, idleMs);
        QFETCH(int, deadlineMs);
        QFETCH(qint64, maxBodyBytes);
        request.timeoutMs = idleMs;
        request.deadlineMs = deadlineMs;
        request.maxBodyBytes = maxBodyBytes;
        QFETCH(QString, error);
        QTest::ignoreMessage(QtInfoMsg, QRegularExpression(QStringLiteral("^Probe Connection failed! Error - .*") +
                                                           QRegularExpression::escape(error)));
        const WebResult result = sendWebRequest(request);
        QCOMPARE(result.status, 0);
        QVERIFY(result.body.isEmpty());
        QVERIFY2(result.errorText.contains(error), qPrintable(result.errorText));
        QTEST(result.timedOut, "timedOut");
    }

    // Neither a request nor a download follows a redirect from https to http; the plain host never hears of it.
    void httpsToHttpRedirectRefused()
    {
        ScriptedHost plain([](QTcpSocket *s, const HostRequest &) { ScriptedHost::answer(s, 200, {}, "plain"); });
        const QByteArray location = plain.url("/file.zip").toEncoded();
        ScriptedHost secure(
            [location](QTcpSocket *s, const HostRequest &) {
                ScriptedHost::answer(s, 302, "Location: " + location + "\r\n");
            },
            true);

        const WebResult result = sendWebRequest(WebRequest::get(secure.url("/file.zip")));
        QCOMPARE(result.status, 302);
        QCOMPARE(result.header("Location"), location);

        QTemporaryDir folder;
        HttpDownload download({secure.url("/file.zip"), {}, folder.path()});
        const DownloadResult fetched = download.run();
        QVERIFY(!fetched.finished());
        QCOMPARE(fetched.status, 302);
        QVERIFY(QDir(folder.path()).isEmpty());
        QVERIFY(plain.requests().isEmpty());
    }

    // A cookie set in answer to one thread's request goes with the next request of another thread.
    void cookiesSharedAcrossThreads()
    {
        ScriptedHost host([](QTcpSocket *s, const HostRequest &request) {
            ScriptedHost::answer(s, 200, request.target == "/login" ? "Set-Cookie: session=abc; Path=/\r\n" : "");
        });
        QVERIFY(sendWebRequest(WebRequest::get(host.url("/login"))).succeeded());
        QCOMPARE(HttpCookieJar::shared().cookies().size(), 1);

        std::atomic<bool> done{false};
        std::thread worker([&] {
            sendWebRequest(WebRequest::get(host.url("/list")));
            done = true;
        });
        const bool answered = QTest::qWaitFor([&] { return done.load(); }, 20000);
        worker.join();
        QVERIFY(answered);
        QCOMPARE(host.requests().size(), 2);
        QCOMPARE(host.requests().last().header("Cookie"), QByteArray("session=abc"));

        HttpCookieJar::shared().setCookies({});
        sendWebRequest(WebRequest::get(host.url("/list")));
        QVERIFY(host.requests().last().header("Cookie").isNull());
    }

    void hostUrlScheme_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QString>("scheme");
        QTest::addColumn<QString>("url");
        QTest::newRow("host:port takes the request's") << "127.0.0.1:8642"
                                                       << "https"
                                                       << "https://127.0.0.1:8642";
        QTest::newRow("http kept") << "http://127.0.0.1:8642"
                                   << "https"
                                   << "http://127.0.0.1:8642";
        QTest::newRow("https kept") << "https://example.test/"
                                    << "http"
                                    << "https://example.test";
        QTest::newRow("any case") << " HTTP://example.test:81// "
                                  << "https"
                                  << "HTTP://example.test:81";
    }

    void hostUrlScheme()
    {
        QFETCH(QString, setting);
        QFETCH(QString, scheme);
        VLSettings settings;
        settings.setValue(QLatin1String(SettingKey::serviceHost), setting);
        QTEST(settings.hostURL(SettingKey::serviceHost, scheme), "url");
    }
};

VELMORA_TEST_MAIN(TestWebExchange)
#include "TestWebExchange.moc"
