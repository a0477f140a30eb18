// An update's download against the real service and, for what the service cannot show, scripted hosts: each case
// ends with its failure text (or none), the web-page flag, the events posted, and the progress a view saw.

#include "install/UpdateJob.h"
#include "platform/AppPaths.h"
#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"
#include "support/DataTable.h"
#include "support/HostSettings.h"
#include "support/ScriptedHost.h"
#include "support/ServiceProcess.h"
#include "support/TestMain.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QTcpSocket>

namespace {

const QByteArray kBody = QByteArray("velmora update ").repeated(8192);

QString sha256(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

QByteArray finalUrl(quint16 port)
{
    return "http://localhost:" + QByteArray::number(port) + "/final.bin";
}

// First the head and half the file, then the connection breaks; a request for the rest gets it.
void breaksAtHalf(QTcpSocket *socket, const HostRequest &request)
{
    const qsizetype half = kBody.size() / 2;
    if (request.header("Range") == "bytes=" + QByteArray::number(half) + '-') {
        ScriptedHost::answer(socket, 206,
                             "Content-Range: bytes " + QByteArray::number(half) + '-' +
                                 QByteArray::number(kBody.size() - 1) + '/' + QByteArray::number(kBody.size()) + "\r\n",
                             kBody.mid(half));
        return;
    }
    socket->write("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(kBody.size()) + "\r\n\r\n" +
                  kBody.left(half));
    socket->disconnectFromHost();
}

// Sends the client on to the same host under another name, where the file is.
void redirectsAway(QTcpSocket *socket, const HostRequest &request)
{
    if (request.target == "/final.bin") {
        ScriptedHost::answer(socket, 200, {}, kBody);
    } else {
        ScriptedHost::answer(socket, 302, "Location: " + finalUrl(socket->localPort()) + "\r\n");
    }
}

void sendsNoLength(QTcpSocket *socket, const HostRequest &)
{
    socket->write("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Type: application/octet-stream\r\n\r\n" + kBody);
    socket->disconnectFromHost();
}

void sendsGarbage(QTcpSocket *socket, const HostRequest &)
{
    ScriptedHost::answer(socket, 200, {}, "not a disk image");
}

void trickles(QTcpSocket *socket, const HostRequest &)
{
    ScriptedHost::dribble(socket, "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(kBody.size()) + "\r\n\r\n",
                          kBody, 4096, 20);
}

} // namespace

Q_DECLARE_METATYPE(VLAppDownload::InstallKind)
Q_DECLARE_METATYPE(UpdateStatus)
using Statuses = QList<UpdateStatus>;

class TestVLAppDownload : public QObject
{
    Q_OBJECT

    ServiceProcess m_service;

private slots:
    void initTestCase()
    {
        QVERIFY(m_service.start());
        QVERIFY(pointHostsAt(m_service.baseUrl(), {SettingKey::serviceHost, SettingKey::siteHost}));
        QVERIFY(VLSettings().setValue(QLatin1String(SettingKey::sendAnalytics), false));
    }

    void download_data()
    {
        columns<QString, ScriptedHost::Script, QString, bool, QString, bool, QStringList, double, Statuses>(
            "file", "script", "filehash", "cancel", "failure", "opensInWindow", "events", "percent", "statuses");
        const QStringList failed(2, QStringLiteral("VLDownloadFailed"));
        const ScriptedHost::Script none;
        const ScriptedHost::Script noLength(sendsNoLength), broken(breaksAtHalf), slow(trickles), garbage(sendsGarbage);
        const auto D = UpdateStatus::Downloading, I = UpdateStatus::Installing;
        const Statuses F{D, UpdateStatus::Failed}, installed{D, I, UpdateStatus::Done};
        row("web page", "velmora-journal.html", none, "", false, "No direct download found", true, failed, 0.0, F);
        row("404", "Nothing-1.0.zip", none, "", false, "Download - 404 Not Found", true, failed, 0.0, F);
        row("wrong hash", "VelmoraNotes-2.0.zip", none, sha256("another file"), false,
            "The downloaded file does not match the catalogue's checksum; nothing was installed", false, failed, 1.0,
            F);
        row("no length: 555555 bytes assumed", "update.bin", noLength, sha256(kBody), false, "", false, QStringList(),
            kBody.size() / 555555.0, installed);
        row("cut half-way and continued", "update.bin", broken, sha256(kBody), false, "", false, QStringList(), 1.0,
            installed);
        row("cancelled", "update.bin", slow, "", true, "", false, QStringList{QStringLiteral("VLDownloadCanceled")},
            -1.0, Statuses{D, UpdateStatus::Cancelled});
        row("disk image that does not open", "Notes.dmg", garbage, "", false,
            "Problem installing from DMG: 7zz failed with status 2", false, failed, -1.0,
            Statuses{D, I, UpdateStatus::Failed});
    }

    void download()
    {
        auto [file, script, filehash, cancel, failure, opensInWindow, events, percent, statuses] =
            fetch<QString, ScriptedHost::Script, QString, bool, QString, bool, QStringList, double, Statuses>(
                "file", "script", "filehash", "cancel", "failure", "opensInWindow", "events", "percent", "statuses");
        std::unique_ptr<ScriptedHost> host(script ? new ScriptedHost(script) : nullptr);
        auto app = std::make_shared<VLApp>();
        app->vlID = QStringLiteral("5001");
        app->digestString = QStringLiteral("0123456789abcdef0123456789abcdef");
        app->displayName = QStringLiteral("Velmora Notes");
        app->localPath = QStringLiteral("/nonexistent/Velmora Notes.app");
        app->download_url =
            host ? host->url("/" + file.toUtf8()).toString() : m_service.baseUrl() + QStringLiteral("/files/") + file;
        app->filehash = filehash;
        app->downloadPath = app->createDownloadPath();
        QStringList posted;
        QObject context;
        for (const QString &name : {QStringLiteral("VLDownloadFailed"), QStringLiteral("VLDownloadCanceled")}) {
            VLNotificationCenter::defaultCenter().subscribe(name, &context,
                                                            [&posted, name](const QVariant &) { posted.append(name); });
        }

        UpdateJob job(app);
        Statuses seen;
        connect(&job, &UpdateJob::statusChanged, &context, [&seen](UpdateStatus s) { seen.append(s); });
        connect(&job, &UpdateJob::progressChanged, &context, [&] {
            if (cancel && job.progress() > 0.2) {
                job.cancel();
            }
        });
        QVERIFY(job.start());
        QVERIFY(QTest::qWaitFor([&] { return job.isFinished(); }, 60000));
        QCoreApplication::processEvents();

        QCOMPARE(seen, statuses);
        QCOMPARE(job.status(), statuses.constLast());
        QCOMPARE(job.failMessage(), failure);
        QCOMPARE(job.outcome().opensInWindow, opensInWindow);
        QVERIFY(job.outcome().installedPath.isEmpty());
        QCOMPARE(posted, events);
        if (percent >= 0) {
            QCOMPARE(job.progress(), percent);
        }
        // Whatever the end, nothing of the update stays behind, not even a disk image's mount folder.
        QVERIFY(!QFileInfo::exists(app->createDownloadPath()));
        QVERIFY(QDir(AppPaths::privateTempFolder() + QStringLiteral("/Volumes")).isEmpty());
    }

    // The browser-like request, and on a hop away from our own hosts a Referer that names the hop.
    void requestHeaders()
    {
        ScriptedHost host(redirectsAway);
        auto app = std::make_shared<VLApp>();
        app->digestString = QStringLiteral("fedcba9876543210fedcba9876543210");
        app->download_url = host.url("/update.bin").toString();
        app->downloadPath = app->createDownloadPath();
        UpdateJob job(app);
        QVERIFY(job.start());
        QVERIFY(QTest::qWaitFor([&] { return job.isFinished(); }, 30000));
        QCOMPARE(host.requests().size(), 2);
        QCOMPARE(job.failMessage(), QString());
        const HostRequest first = host.requests().at(0);
        QCOMPARE(first.header("User-Agent"), "Mozilla/5.0 (Macintosh; U; PPC Mac OS X; en-us) AppleWebKit/125.2.3 "
                                             "(KHTML, like Gecko) Velmora Desktop/6.0.4");
        QCOMPARE(first.header("Referer"), m_service.baseUrl().toUtf8() + '/');
        QCOMPARE(first.header("Accept-Encoding"), "identity");
        QCOMPARE(host.requests().at(1).header("Referer"), finalUrl(host.url().port()));
    }

    void installKind_data()
    {
        using K = VLAppDownload::InstallKind;
        columns<QString, K>("file", "kind");
        const std::pair<const char *, K> rows[] = {
            {"a.dmg", K::DiskImage},       {"a.zip", K::Zip},        {"a.safariextz", K::SafariExtension},
            {"a.pkg", K::Package},         {"a.tgz", K::TarGzip},    {"a.tar", K::TarGzip},
            {"a.gz", K::TarGzip},          {"x.tar.gz", K::TarGzip}, {"X.TAR.GZ", K::TarGzip},
            {"x.tar.gz.part", K::TarGzip}, {"a.tbz", K::TarBzip2},   {"x.tar.bz2", K::TarBzip2},
            {"x.bz2", K::Bzip2},           {"setup.exe", K::None},   {"a.zip.exe", K::None},
            {"A.DMG", K::DiskImage},       {"noextension", K::None},
        };
        for (const auto &[file, kind] : rows) {
            QTest::newRow(file) << QString::fromLatin1(file) << kind;
        }
    }

    void installKind()
    {
        QFETCH(QString, file);
        QTEST(VLAppDownload::installKindFor(QStringLiteral("/tmp/velmora/0123/") + file), "kind");
    }
};

VELMORA_TEST_MAIN(TestVLAppDownload)
#include "TestVLAppDownload.moc"
