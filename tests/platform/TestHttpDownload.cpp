// Downloads to disk on a worker thread, as an update makes them, with the record's progress fields written there while
// this thread copies the record: whole and resumed files from the real service, and from scripted hosts what it
// cannot show (a host that ignores Range or sends another piece, a cancel, a stall, a body shorter than announced,
// endless and trickling hosts against the request's bounds).

#include "platform/HttpDownload.h"
#include "support/DataTable.h"
#include "support/PlistFiles.h"
#include "support/ScriptedHost.h"
#include "support/ServiceProcess.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <atomic>
#include <thread>

namespace {

const QByteArray kBody = QByteArray("0123456789abcdef").repeated(4096);

// What the worker reports while this thread reads it, as an update's views do.
struct Progress
{
    std::atomic<bool> cancel{false};
    std::atomic<qint64> received{0};
    std::atomic<qint64> expected{0};
};

// Runs the download on a worker thread that keeps the progress, while this thread reads it and, when asked, cancels
// once half has arrived. A part is written first when given.
DownloadResult download(DownloadRequest request, Progress &app, const QByteArray &part = {}, bool cancelAtHalf = false)
{
    if (!part.isEmpty()) {
        QFile file(QDir(request.folder).filePath(request.fileName));
        file.open(QIODevice::WriteOnly);
        file.write(part);
    }
    request.cancel = &app.cancel;
    DownloadResult result;
    std::atomic<bool> done{false};
    std::thread worker([&] {
        HttpDownload download(request);
        QObject::connect(&download, &HttpDownload::progress, &download, [&app](qint64 received, qint64 expected) {
            app.received = received;
            app.expected = expected;
        });
        result = download.run();
        done = true;
    });
    static_cast<void>(QTest::qWaitFor(
        [&] {
            if (cancelAtHalf && app.received * 2 >= app.expected && app.expected > 0) {
                app.cancel = true;
            }
            return done.load();
        },
        60000));
    worker.join();
    return result;
}

} // namespace

Q_DECLARE_METATYPE(DownloadResult::Outcome)

class TestHttpDownload : public QObject
{
    Q_OBJECT

    ServiceProcess m_service;

private slots:
    void initTestCase() { QVERIFY(m_service.start()); }

    void fromService_data()
    {
        columns<QString, int, int>("file", "partBytes", "status"); // partBytes -1: no part, the name from the address
        QTest::newRow("whole") << "VelmoraNotes-2.0.zip" << -1 << 200;
        QTest::newRow("resumed") << "VelmoraNotes-2.0.zip" << 100 << 206;
        QTest::newRow("missing: no file") << "Nothing-1.0.zip" << -1 << 404;
    }

    void fromService()
    {
        auto [file, partBytes, status] = fetch<QString, int, int>("file", "partBytes", "status");
        const QByteArray served = status == 200 || status == 206
                                      ? PlistFiles::readFile(ServiceProcess::filesDir() + u'/' + file)
                                      : QByteArray();
        QVERIFY(served.size() > partBytes);
        QTemporaryDir folder;
        DownloadRequest request{QUrl(m_service.baseUrl() + QStringLiteral("/files/") + file), {}, folder.path()};
        request.fileName = partBytes < 0 ? QString() : file;
        Progress app;
        const DownloadResult result = download(request, app, served.left(partBytes));
        QCOMPARE(result.status, status);
        QCOMPARE(result.resumed, partBytes > 0);
        QCOMPARE(result.finished(), !served.isEmpty());
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files), served.isEmpty() ? QStringList() : QStringList{file});
        QCOMPARE(PlistFiles::readFile(folder.filePath(file)), served); // its presence is checked just above
        QCOMPARE(app.received.load(), served.size());
        QCOMPARE(app.expected.load(), served.size());
    }

    void fromScriptedHost_data()
    {
        columns<ScriptedHost::Script, QByteArray, bool, int, DownloadResult::Outcome, QByteArray, int>(
            "script", "part", "cancelAtHalf", "idleMs", "outcome", "file", "requests");
        const ScriptedHost::Script ignoresRange = [](QTcpSocket *s, const HostRequest &) {
            ScriptedHost::answer(s, 200, {}, kBody);
        };
        const ScriptedHost::Script sendsAnotherPiece = [](QTcpSocket *s, const HostRequest &request) {
            const bool ranged = !request.header("Range").isNull();
            ScriptedHost::answer(s, ranged ? 206 : 200, ranged ? "Content-Range: bytes 0-65535/65536\r\n" : "", kBody);
        };
        const ScriptedHost::Script stallsAtHalf = [](QTcpSocket *s, const HostRequest &) {
            ScriptedHost::dribble(s, "HTTP/1.1 200 OK\r\nContent-Length: 65536\r\n\r\n", kBody, 4096, 10, 32768);
        };
        using O = DownloadResult::Outcome;
        const QByteArray half = kBody.left(32768);
        row("200 to a Range: the whole file", ignoresRange, QByteArray("stale"), false, 30000, O::Finished, kBody, 1);
        row("another piece: asked again, whole", sendsAnotherPiece, QByteArray("stale"), false, 30000, O::Finished,
            kBody, 2);
        row("cancelled: part kept", stallsAtHalf, QByteArray(), true, 30000, O::Canceled, half, 1);
        row("stalled: part kept", stallsAtHalf, QByteArray(), false, 500, O::Failed, half, 1);
    }

    void fromScriptedHost()
    {
        auto [script, part, cancelAtHalf, idleMs] =
            fetch<ScriptedHost::Script, QByteArray, bool, int>("script", "part", "cancelAtHalf", "idleMs");
        ScriptedHost host(script);
        QTemporaryDir folder;
        DownloadRequest request{host.url("/update.zip"), {}, folder.path(), QStringLiteral("update.zip")};
        request.timeoutMs = idleMs;
        Progress app;
        const DownloadResult result = download(request, app, part, cancelAtHalf);
        QTEST(result.outcome, "outcome");
        QCOMPARE(result.timedOut, idleMs < 1000);
        QTEST(PlistFiles::readFile(folder.filePath(request.fileName)), "file");
        QTEST(int(host.requests().size()), "requests");
        QCOMPARE(host.requests().constFirst().header("Accept-Encoding"), QByteArray("identity"));
        QCOMPARE(host.requests().constFirst().header("Range"),
                 part.isEmpty() ? QByteArray() : "bytes=" + QByteArray::number(part.size()) + '-');
    }

    void bounds_data()
    {
        columns<ScriptedHost::Script, QByteArray, qint64, qint64, DownloadResult::Outcome, bool, bool, QByteArray, int>(
            "script", "part", "maxBytes", "minRate", "outcome", "timedOut", "overLimit", "file", "requests");
        const QByteArray quarter = kBody.left(16384);
        const QByteArray half = kBody.left(32768);
        // Continues a part of a quarter with the second quarter only, as a complete 206 reply of its own.
        const ScriptedHost::Script endsAtHalf = [](QTcpSocket *s, const HostRequest &) {
            ScriptedHost::answer(s, 206, "Content-Range: bytes 16384-32767/65536\r\n", kBody.mid(16384, 16384));
        };
        // A range whose end does not agree with the length sent: asked again, whole.
        const ScriptedHost::Script rangeDisagrees = [](QTcpSocket *s, const HostRequest &request) {
            const bool ranged = !request.header("Range").isNull();
            ScriptedHost::answer(s, ranged ? 206 : 200, ranged ? "Content-Range: bytes 16384-65535/65536\r\n" : "",
                                 ranged ? kBody.mid(16384, 16384) : kBody);
        };
        const ScriptedHost::Script endless = [](QTcpSocket *s, const HostRequest &) {
            ScriptedHost::dribble(s, "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n", kBody.repeated(160), 65536, 0);
        };
        const ScriptedHost::Script trickles = [](QTcpSocket *s, const HostRequest &) {
            ScriptedHost::dribble(s, "HTTP/1.1 200 OK\r\nContent-Length: 2048\r\n\r\n", kBody.left(2048), 16, 50);
        };
        using O = DownloadResult::Outcome;
        row("short of the announced total: broken", endsAtHalf, quarter, qint64(-1), qint64(0), O::Failed, false, false,
            half, 1);
        row("range disagrees with length: whole", rangeDisagrees, quarter, qint64(-1), qint64(0), O::Finished, false,
            false, kBody, 2);
        row("endless: stopped at the bound", endless, QByteArray(), qint64(100000), qint64(0), O::Failed, false, true,
            QByteArray("*"), 1);
        row("trickles below the least rate", trickles, QByteArray(), qint64(-1), qint64(100000), O::Failed, true, false,
            QByteArray("*"), 1);
    }

    void bounds()
    {
        auto [script, part, maxBytes, minRate] =
            fetch<ScriptedHost::Script, QByteArray, qint64, qint64>("script", "part", "maxBytes", "minRate");
        ScriptedHost host(script);
        QTemporaryDir folder;
        DownloadRequest request{host.url("/update.zip"), {}, folder.path(), QStringLiteral("update.zip")};
        request.maxBytes = maxBytes;
        request.minBytesPerSecond = minRate;
        request.rateWindowMs = 300;
        Progress app;
        const DownloadResult result = download(request, app, part);
        QTEST(result.outcome, "outcome");
        QTEST(result.timedOut, "timedOut");
        QTEST(result.overLimit, "overLimit");
        QTEST(int(host.requests().size()), "requests");
        const QByteArray written = PlistFiles::readFile(folder.filePath(request.fileName));
        // "*": the start of the body, never past the bound.
        QFETCH(QByteArray, file);
        if (file == "*") {
            QVERIFY(maxBytes < 0 || written.size() <= maxBytes);
            QVERIFY(kBody.repeated(160).startsWith(written));
        } else {
            QCOMPARE(written, file);
        }
    }
};

VELMORA_TEST_MAIN(TestHttpDownload)
#include "TestHttpDownload.moc"
