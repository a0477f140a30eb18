// Downloads to disk on a worker thread, as an update makes them, with the record's progress fields written there while
// this thread copies the record: whole files and resumed ones from the real service, and from scripted hosts the
// cases it cannot show (a host that ignores Range or sends another piece, a cancel, a stall).

#include "model/VLApp.h"
#include "platform/HttpDownload.h"
#include "support/ScriptedHost.h"
#include "support/ServiceProcess.h"
#include "support/TestMain.h"

#include <QFile>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <thread>

namespace {

const QByteArray kBody = QByteArray("0123456789abcdef").repeated(4096);

enum class Host { IgnoresRange, SendsAnotherPiece, StallsAtHalf };

ScriptedHost::Script scriptFor(Host host)
{
    switch (host) {
    case Host::IgnoresRange:
        return [](QTcpSocket *s, const HostRequest &) { ScriptedHost::answer(s, 200, {}, kBody); };
    case Host::SendsAnotherPiece:
        return [](QTcpSocket *s, const HostRequest &request) {
            if (request.header("Range").isNull()) {
                ScriptedHost::answer(s, 200, {}, kBody);
            } else {
                ScriptedHost::answer(s, 206, "Content-Range: bytes 0-65535/65536\r\n", kBody);
            }
        };
    case Host::StallsAtHalf:
        return [](QTcpSocket *s, const HostRequest &) {
            ScriptedHost::dribble(s, "HTTP/1.1 200 OK\r\nContent-Length: 65536\r\n\r\n", kBody, 4096, 10, 32768);
        };
    }
    return {};
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
}

// Runs the download on a worker thread that keeps app's progress fields, while this thread copies app (as the rows
// do) and cancels through app.didCancel once half has arrived, when asked to.
DownloadResult downloadOnWorker(DownloadRequest request, VLApp &app, bool cancelAtHalf = false)
{
    request.cancel = &app.didCancel;
    DownloadResult result;
    std::atomic<bool> done{false};
    std::thread worker([&] {
        HttpDownload download(request);
        QObject::connect(&download, &HttpDownload::progress, &download, [&app](qint64 received, qint64 expected) {
            app.receivedContentLength = received;
            app.expectedContentLength = expected;
            app.percentDownloaded = double(received) / double(expected);
        });
        result = download.run();
        done = true;
    });
    static_cast<void>(QTest::qWaitFor(
        [&] {
            const VLApp seen = app;
            if (cancelAtHalf && seen.percentDownloaded >= 0.5) {
                app.didCancel = true;
            }
            return done.load();
        },
        60000));
    worker.join();
    return result;
}

void writePart(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

} // namespace

Q_DECLARE_METATYPE(Host)
Q_DECLARE_METATYPE(DownloadResult::Outcome)

class TestHttpDownload : public QObject
{
    Q_OBJECT

    ServiceProcess m_service;

private slots:
    void initTestCase() { QVERIFY(m_service.start()); }

    void fromService_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("partBytes"); // -1: no part; the name comes from the address
        QTest::addColumn<int>("status");
        QTest::newRow("whole") << "VelmoraNotes-2.0.zip" << -1 << 200;
        QTest::newRow("resumed") << "VelmoraNotes-2.0.zip" << 100 << 206;
        QTest::newRow("missing") << "Nothing-1.0.zip" << -1 << 404;
    }

    void fromService()
    {
        QFETCH(QString, file);
        QFETCH(int, partBytes);
        QFETCH(int, status);
        const QByteArray served = status == 404 ? QByteArray() : contents(ServiceProcess::filesDir() + u'/' + file);
        QVERIFY(served.size() > partBytes);
        QTemporaryDir folder;
        DownloadRequest request{QUrl(m_service.baseUrl() + QStringLiteral("/files/") + file), {}, folder.path()};
        if (partBytes >= 0) {
            request.fileName = file;
            writePart(folder.filePath(file), served.left(partBytes));
        }
        VLApp app;
        const DownloadResult result = downloadOnWorker(request, app);
        QCOMPARE(result.status, status);
        if (status == 404) {
            QCOMPARE(result.outcome, DownloadResult::Outcome::Failed);
            QCOMPARE(result.errorText, QStringLiteral("HTTP 404"));
            QVERIFY(QDir(folder.path()).isEmpty());
            return;
        }
        QVERIFY2(result.finished(), qPrintable(result.errorText));
        QCOMPARE(result.filePath, folder.filePath(file));
        QCOMPARE(contents(result.filePath), served);
        QCOMPARE(result.resumed, partBytes > 0);
        QCOMPARE(app.receivedContentLength.load(), served.size());
        QCOMPARE(app.expectedContentLength.load(), served.size());
        QCOMPARE(app.percentDownloaded.load(), 1.0);
    }

    void fromScriptedHost_data()
    {
        QTest::addColumn<Host>("host");
        QTest::addColumn<QByteArray>("part");
        QTest::addColumn<bool>("cancelAtHalf");
        QTest::addColumn<int>("idleMs");
        QTest::addColumn<DownloadResult::Outcome>("outcome");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("requests");
        using O = DownloadResult::Outcome;
        QTest::newRow("200 instead of 206: whole file")
            << Host::IgnoresRange << QByteArray("stale") << false << 30000 << O::Finished << kBody << 1;
        QTest::newRow("another piece: asked again whole")
            << Host::SendsAnotherPiece << QByteArray("stale") << false << 30000 << O::Finished << kBody << 2;
        QTest::newRow("cancelled: part kept")
            << Host::StallsAtHalf << QByteArray() << true << 30000 << O::Canceled << kBody.left(32768) << 1;
        QTest::newRow("stalled: part kept")
            << Host::StallsAtHalf << QByteArray() << false << 500 << O::Failed << kBody.left(32768) << 1;
    }

    void fromScriptedHost()
    {
        QFETCH(Host, host);
        QFETCH(QByteArray, part);
        QFETCH(bool, cancelAtHalf);
        QFETCH(int, idleMs);
        ScriptedHost scripted(scriptFor(host));
        QTemporaryDir folder;
        DownloadRequest request{scripted.url("/update.zip"), {}, folder.path(), QStringLiteral("update.zip")};
        request.timeoutMs = idleMs;
        if (!part.isEmpty()) {
            writePart(folder.filePath(request.fileName), part);
        }
        VLApp app;
        const DownloadResult result = downloadOnWorker(request, app, cancelAtHalf);
        QTEST(result.outcome, "outcome");
        QCOMPARE(result.timedOut, idleMs < 1000);
        QTEST(contents(folder.filePath(request.fileName)), "file");
        QTEST(int(scripted.requests().size()), "requests");
        const HostRequest &first = scripted.requests().constFirst();
        QCOMPARE(first.header("Accept-Encoding"), QByteArray("identity"));
        QCOMPARE(first.header("Range"),
                 part.isEmpty() ? QByteArray() : "bytes=" + QByteArray::number(part.size()) + '-');
    }
};

VELMORA_TEST_MAIN(TestHttpDownload)
#include "TestHttpDownload.moc"
