// Requests read into memory against hosts that refuse, stall, trickle, flood or break off; the https to http redirect
// that is never followed; the cookies that every thread's session shares; where a host setting sends a request.

#include "platform/HttpCookieJar.h"
#include "platform/HttpDownload.h"
#include "platform/VLSettings.h"
#include "platform/WebRequest.h"
#include "support/DataTable.h"
#include "support/ScriptedHost.h"
#include "support/TestMain.h"
#include "support/Utf8.h"

#include <QDir>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <thread>

class TestWebExchange : public QObject
{
    Q_OBJECT

private slots:
    void failsLikeABrokenConnection_data()
    {
        columns<ScriptedHost::Script, int, int, QString>("script", "idleMs", "deadlineMs",
                                                         "error"); // script null: nothing listens
        const ScriptedHost::Script silent = [](QTcpSocket *, const HostRequest &) {};
        // 200 bytes, one every 50 ms: the whole reply would come in 10 s, were there no deadline.
        const ScriptedHost::Script trickling = [](QTcpSocket *s, const HostRequest &) {
            ScriptedHost::dribble(s, "HTTP/1.1 200 OK\r\nContent-Length: 200\r\n\r\n", QByteArray(200, 'x'), 1, 50);
        };
        // 32 MB as fast as they are taken, against a cap of 1 MB.
        const ScriptedHost::Script flooding = [](QTcpSocket *s, const HostRequest &) {
            ScriptedHost::dribble(s, "HTTP/1.1 200 OK\r\nContent-Length: 33554432\r\n\r\n", QByteArray(32 << 20, 'x'),
                                  64 << 10, 0);
        };
        const ScriptedHost::Script breakingOff = [](QTcpSocket *s, const HostRequest &) {
            s->write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n0123456789");
            s->disconnectFromHost();
        };
        QTest::newRow("refused") << ScriptedHost::Script() << 60000 << 60000 << "refused";
        QTest::newRow("silent") << silent << 300 << 60000 << "The request timed out.";
        QTest::newRow("trickling") << trickling << 60000 << 600 << "The request timed out.";
        QTest::newRow("flooding") << flooding << 60000 << 60000 << "The reply is larger than 1048576 bytes.";
        QTest::newRow("breaking off") << breakingOff << 60000 << 60000 << "closed";
    }

    void failsLikeABrokenConnection()
    {
        auto [script, idleMs, deadlineMs, error] =
            fetch<ScriptedHost::Script, int, int, QString>("script", "idleMs", "deadlineMs", "error");
        ScriptedHost host(script ? script : [](QTcpSocket *, const HostRequest &) {});
        if (!script) {
            host.close();
        }
        WebRequest request = WebRequest::get(host.url("/x"), QStringLiteral("Probe"));
        request.timeoutMs = idleMs;
        request.deadlineMs = deadlineMs;
        request.maxBodyBytes = 1 << 20;
        QTest::ignoreMessage(QtInfoMsg, QRegularExpression(QStringLiteral("^Probe Connection failed! Error - .*") +
                                                           QRegularExpression::escape(error)));
        const WebResult result = sendWebRequest(request);
        QCOMPARE(result.status, 0);
        QVERIFY(result.body.isEmpty());
        QVERIFY2(result.errorText.contains(error), qPrintable(result.errorText));
        QCOMPARE(result.timedOut, error.contains(QLatin1String("timed out")));
    }

    // Neither a request nor a download follows it; the plain host never hears of it.
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
        const DownloadResult fetched = HttpDownload({secure.url("/file.zip"), {}, folder.path()}).run();
        QCOMPARE(fetched.outcome, DownloadResult::Outcome::Failed);
        QCOMPARE(fetched.status, 302);
        QVERIFY(QDir(folder.path()).isEmpty());
        QVERIFY(plain.requests().isEmpty());
    }

    // A cookie set in answer to one thread's request goes with another thread's next request.
    void cookiesSharedAcrossThreads()
    {
        ScriptedHost host([](QTcpSocket *s, const HostRequest &request) {
            ScriptedHost::answer(s, 200, request.target == "/login" ? "Set-Cookie: session=abc; Path=/\r\n" : "");
        });
        QVERIFY(sendWebRequest(WebRequest::get(host.url("/login"))).succeeded());
        std::atomic<bool> done{false};
        std::thread worker([&] {
            sendWebRequest(WebRequest::get(host.url("/list")));
            done = true;
        });
        const bool answered = QTest::qWaitFor([&] { return done.load(); }, 20000);
        worker.join();
        QVERIFY(answered);
        QCOMPARE(host.requests().constLast().header("Cookie"), QByteArray("session=abc"));

        HttpCookieJar::shared().setCookies({});
        sendWebRequest(WebRequest::get(host.url("/list")));
        QVERIFY(host.requests().constLast().header("Cookie").isNull());
    }

    void hostUrlScheme_data()
    {
        columns<QString, QString, QString>("setting", "scheme", "url");
        QTest::newRow("host:port takes the request's")
            << s("127.0.0.1:8642") << s("https") << s("https://127.0.0.1:8642");
        QTest::newRow("http kept") << s("http://127.0.0.1:8642") << s("https") << s("http://127.0.0.1:8642");
        QTest::newRow("https kept") << s("https://example.test/") << s("http") << s("https://example.test");
        QTest::newRow("any case") << s(" HTTP://example.test:81// ") << s("https") << s("HTTP://example.test:81");
    }

    void hostUrlScheme()
    {
        auto [setting, scheme, url] = fetch<QString, QString, QString>("setting", "scheme", "url");
        VLSettings settings;
        settings.setValue(QLatin1String(SettingKey::serviceHost), setting);
        QCOMPARE(settings.hostURL(SettingKey::serviceHost, scheme), url);
    }
};

VELMORA_TEST_MAIN(TestWebExchange)
#include "TestWebExchange.moc"
