// velmora-service's HTTP edge over raw sockets: framings a front proxy could read another way, compressed bodies
// that do not end, slow and greedy clients, and secrets in paths however they are spelled.

#include "ServiceClient.h"
#include "platform/RAZipper.h"
#include "support/DataTable.h"
#include "support/TestMain.h"

#include <QCryptographicHash>

#include <sys/socket.h>
#include <unistd.h>
#include <zlib.h>

#include <atomic>
#include <thread>

namespace {

const QByteArray matchBody = "vld=6.0.4&app[0][t]=x.app&app[0][p]=aa&app[0][d]=x&app[0][v]=1"
                             "&app[0][b]=com.velmora.sample.notes&app[0][m]=(null)";

// One gzip (window bits 31) or zlib (15) stream.
QByteArray compressed(const QByteArray &data, int windowBits)
{
    z_stream stream{};
    deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY);
    QByteArray out(qsizetype(deflateBound(&stream, uLong(data.size()))), Qt::Uninitialized);
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(data.constData()));
    stream.avail_in = uInt(data.size());
    stream.next_out = reinterpret_cast<Bytef *>(out.data());
    stream.avail_out = uInt(out.size());
    deflate(&stream, Z_FINISH);
    out.truncate(qsizetype(stream.total_out));
    deflateEnd(&stream);
    return out;
}

QByteArray matchRequest(const QByteArray &fields, const QByteArray &body)
{
    return "POST /vld603scan/automatch HTTP/1.1\r\nHost: t\r\nConnection: close\r\n" + fields + "\r\n" + body;
}

QByteArray encodedRequest(const char *coding, const QByteArray &body)
{
    return matchRequest("Content-Encoding: " + QByteArray(coding) +
                            "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n",
                        body);
}

} // namespace

class TestServiceFraming : public QObject
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

    void framings_data()
    {
        // The connection is closed after every answer; filler is sent again and again until the service answers.
        columns<QByteArray, int, QByteArray, bool>("head", "status", "filler", "halfClose");
        const auto row = [](const char *tag, const QByteArray &head, int status, const QByteArray &filler = {},
                            bool halfClose = false) { QTest::newRow(tag) << head << status << filler << halfClose; };
        const QByteArray gzip = compressed(matchBody, 31), zlib = compressed(matchBody, 15);
        row("Content-Length not a number", matchRequest("Content-Length: abc\r\n", matchBody), 400);
        row("negative Content-Length", matchRequest("Content-Length: -1\r\n", matchBody), 400);
        row("overflowing Content-Length", matchRequest("Content-Length: 18446744073709551617\r\n", matchBody), 400);
        row("two Content-Lengths that differ", matchRequest("Content-Length: 5\r\nContent-Length: 6\r\n", matchBody),
            400);
        row("Content-Length beside chunked",
            matchRequest("Content-Length: 5\r\nTransfer-Encoding: chunked\r\n", "0\r\n\r\n"), 400);
        row("chunked not the last coding", matchRequest("Transfer-Encoding: chunked, identity\r\n", "0\r\n\r\n"), 400);
        row("space before a colon", matchRequest("Content-Length : 5\r\n", "vld=6"), 400);
        row("body shorter than its length", matchRequest("Content-Length: 500\r\n", matchBody), 400, {}, true);
        row("whole gzip body", encodedRequest("gzip", gzip), 200);
        row("whole zlib body", encodedRequest("deflate", zlib), 200);
        row("gzip body cut short", encodedRequest("gzip", gzip.left(gzip.size() / 2)), 400);
        row("gzip body without its trailer", encodedRequest("gzip", gzip.chopped(8)), 400);
        row("zlib body without its checksum", encodedRequest("deflate", zlib.chopped(4)), 400);
        row("endless chunked body", "POST /nowhere HTTP/1.1\r\nHost: t\r\nTransfer-Encoding: chunked\r\n\r\n", 413,
            "10000\r\n" + QByteArray(65536, 'a') + "\r\n");
        row("endless header lines", "GET /vld6blacklist HTTP/1.1\r\nHost: t\r\n", 431,
            "X-Filler: " + QByteArray(1000, 'a') + "\r\n");
        row("endless header line", "GET /vld6blacklist HTTP/1.1\r\nHost: t\r\nX-Long: ", 431, QByteArray(65536, 'a'));
    }

    void framings()
    {
        auto [head, status, filler, halfClose] =
            fetch<QByteArray, int, QByteArray, bool>("head", "status", "filler", "halfClose");
        bool closed = false;
        const QByteArray answer = m_client->exchange(head, filler, halfClose, &closed);
        QVERIFY2(answer.startsWith(QByteArray("HTTP/1.1 " + QByteArray::number(status) + ' ')),
                 answer.left(300).constData());
        QVERIFY(closed);
        if (status == 200) // the decoded body was matched
            QVERIFY(RAZipper::dataForCompressedData(answer.mid(answer.indexOf("\r\n\r\n") + 4))
                        .value_or(QByteArray())
                        .contains("\"5001\""));
        QCOMPARE(m_client->get("/vld6blacklist").status, 200);
    }

    void slowClientsDoNotHoldOthersUp()
    {
        // Far more than there are workers, each sending its head a byte at a time meanwhile.
        std::vector<int> slow;
        for (int i = 0; i < 64; ++i) {
            slow.push_back(m_client->openSocket());
            QVERIFY(slow.back() >= 0);
            QVERIFY(::send(slow.back(), "GET /vld6blacklist HTTP/1.1\r\nHost: t\r\nX-Slow: ", 46, MSG_NOSIGNAL) == 46);
        }
        std::atomic<bool> answered = false;
        std::thread trickle([&] {
            while (!answered) {
                for (const int fd : slow)
                    ::send(fd, "a", 1, MSG_NOSIGNAL);
                std::this_thread::sleep_for(std::chrono::milliseconds(200));
            }
        });
        const HttpAnswer normal = m_client->get("/vld6blacklist");
        answered = true;
        trickle.join();
        for (const int fd : slow)
            ::close(fd);
        QCOMPARE(normal.status, 200);
    }

    void manyConnectionsAtOnce()
    {
        // Below the service's connection limit, none is reset however many arrive together.
        std::vector<int> sockets;
        for (int i = 0; i < 300; ++i)
            sockets.push_back(m_client->openSocket());
        static const char request[] = "GET /vld6blacklist HTTP/1.1\r\nHost: t\r\nConnection: close\r\n\r\n";
        int answered = 0;
        for (const int fd : sockets) {
            char status[12] = {};
            if (fd >= 0 && ::send(fd, request, sizeof request - 1, MSG_NOSIGNAL) > 0 &&
                ::recv(fd, status, sizeof status, MSG_WAITALL) == sizeof status &&
                QByteArray(status, sizeof status) == "HTTP/1.1 200")
                ++answered;
            if (fd >= 0)
                ::close(fd);
        }
        QCOMPARE(answered, 300);
    }

    void secretsHiddenInLog_data()
    {
        columns<QByteArray, QByteArray, QByteArray>("target", "logged", "secret");
        const auto row = [](const char *tag, const QByteArray &target, const char *logged, const QByteArray &secret) {
            QTest::newRow(tag) << target << QByteArray(logged) << secret;
        };
        const QByteArray digest = QCryptographicHash::hash("pw-digest", QCryptographicHash::Md5).toHex();
        row("encoded route", "/vld6member/%73ignup/e/a%40b.co/p/Secret-1/f/A/l/B",
            "/vld6member/%73ignup/e/a%40b.co/p/***/f/A/l/B", "Secret-1");
        row("encoded key", "/vld6member/signup/e/c%40d.co/%70/Secret-2/f/A/l/B",
            "/vld6member/signup/e/c%40d.co/%70/***/f/A/l/B", "Secret-2");
        row("log-in with encoded keys", "/vld6member/jlogincheck2/%75/" + digest + "/%70/" + digest,
            "/vld6member/jlogincheck2/%75/***/%70/***", digest);
        row("route reached through an encoded slash", "/vld6member%2Fsignup/x/e/e%40f.co/p/Secret-3/f/A/l/B",
            "/vld6member/signup/***", "Secret-3");
        row("query", "/vld6member/signup/e/g%40h.co/p/Secret-4/f/A/l/B?p=Secret-4",
            "/vld6member/signup/e/g%40h.co/p/***/f/A/l/B?***", "Secret-4");
    }

    void secretsHiddenInLog()
    {
        auto [target, logged, secret] = fetch<QByteArray, QByteArray, QByteArray>("target", "logged", "secret");
        QVERIFY(m_client->get(target).status != 0);
        QVERIFY(m_service.waitForLog(' ' + logged + ' '));
        QVERIFY(!m_service.log().contains(secret));
    }
};

VELMORA_TEST_MAIN(TestServiceFraming)
#include "TestServiceFraming.moc"
