// Download throughput from the local service: an update's download (VLAppDownload: the request, the file written as
// it arrives, the progress for the rows) against curl fetching the same file in the same run, and the download with
// the catalogue hash's check against curl followed by sha256sum. Prints each run and the best and median of each, in
// MB/s, and the ratio of the bests.
//
//     bench_download [MEGABYTES] [RUNS]     (default 256 MB, 5 runs)

#include "install/VLAppDownload.h"
#include "platform/VLSettings.h"
#include "support/ServiceProcess.h"
#include "support/TestMain.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace {

QTextStream out(stdout);

QString makeFile(const QString &path, qint64 megabytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return {};
    }
    QCryptographicHash hash(QCryptographicHash::Sha256);
    QByteArray chunk(1 << 20, Qt::Uninitialized);
    for (qint64 i = 0; i < megabytes; ++i) {
        QRandomGenerator::global()->fillRange(reinterpret_cast<quint32 *>(chunk.data()), chunk.size() / 4);
        file.write(chunk);
        hash.addData(chunk);
    }
    return QString::fromLatin1(hash.result().toHex());
}

// Seconds taken, or -1 when the run failed.
double timed(const std::function<bool()> &run)
{
    QElapsedTimer timer;
    timer.start();
    return run() ? double(timer.nsecsElapsed()) / 1e9 : -1.0;
}

bool curl(const QString &url, const QString &target)
{
    QProcess process;
    process.start(QStringLiteral("curl"),
                  {QStringLiteral("-sS"), QStringLiteral("-f"), QStringLiteral("-o"), target, url});
    return process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

bool sha256sum(const QString &file)
{
    QProcess process;
    process.start(QStringLiteral("sha256sum"), {file});
    return process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

bool update(const QString &url, const QString &hash)
{
    auto app = std::make_shared<VLApp>();
    app->vlID = QStringLiteral("5001");
    app->digestString = QStringLiteral("bench0000000000000000000000000000");
    app->displayName = QStringLiteral("Bench");
    app->localPath = QStringLiteral("-");
    app->download_url = url;
    app->filehash = hash;
    app->downloadPath = app->createDownloadPath();
    UpdateState state;
    VLAppDownload download(app, state);
    download.download();
    return !state.hasFailed();
}

struct Series
{
    QString name;
    std::function<bool()> run;
    QList<double> rates;
};

} // namespace

int main(int argc, char **argv)
{
    QTemporaryDir sandbox;
    TestSupport::isolateEnvironment(sandbox.path());
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const qint64 megabytes = args.size() > 1 ? args.at(1).toLongLong() : 256;
    const int runs = args.size() > 2 ? args.at(2).toInt() : 5;

    QTemporaryDir files;
    const QString hash = makeFile(files.filePath(QStringLiteral("bench.bin")), megabytes);
    ServiceProcess service;
    service.setFilesDir(files.path());
    if (hash.isEmpty() || !service.start()) {
        std::fprintf(stderr, "cannot prepare the file or start velmora-service\n");
        return 1;
    }
    VLSettings settings;
    settings.setValue(QLatin1String(SettingKey::serviceHost), service.baseUrl());
    settings.setValue(QLatin1String(SettingKey::sendAnalytics), false);
    const QString url = service.baseUrl() + QStringLiteral("/files/bench.bin");
    const QString curlTarget = sandbox.filePath(QStringLiteral("curl.bin"));

    QList<Series> series{
        {QStringLiteral("curl"), [&] { return curl(url, curlTarget); }, {}},
        {QStringLiteral("update download"), [&] { return update(url, QString()); }, {}},
        {QStringLiteral("curl + sha256sum"), [&] { return curl(url, curlTarget) && sha256sum(curlTarget); }, {}},
        {QStringLiteral("update download + SHA-256 check"), [&] { return update(url, hash); }, {}},
    };
    out << "file: " << megabytes << " MB from " << url << ", " << runs << " runs, interleaved\n";
    for (int run = 0; run < runs; ++run) {
        for (Series &s : series) {
            const double seconds = timed(s.run);
            if (seconds < 0) {
                std::fprintf(stderr, "%s failed\n", qPrintable(s.name));
                return 1;
            }
            s.rates.append(double(megabytes) / seconds);
            QFile::remove(curlTarget);
        }
    }
    for (Series &s : series) {
        std::sort(s.rates.begin(), s.rates.end());
        out << s.name.leftJustified(34) << " best " << QString::number(s.rates.last(), 'f', 0) << " MB/s, median "
            << QString::number(s.rates.at(s.rates.size() / 2), 'f', 0) << " MB/s, worst "
            << QString::number(s.rates.first(), 'f', 0) << " MB/s\n";
    }
    // Each of ours against its baseline: the plain download against curl, the checked one against curl + sha256sum.
    for (const qsizetype i : {1, 3}) {
        const Series &ours = series.at(i);
        const Series &baseline = series.at(i - 1);
        out << ours.name << " / " << baseline.name << ": best "
            << QString::number(ours.rates.last() / baseline.rates.last(), 'f', 2) << ", median "
            << QString::number(ours.rates.at(runs / 2) / baseline.rates.at(runs / 2), 'f', 2) << '\n';
    }
    return 0;
}
