// Posts matching requests of 500 apps each from several keep-alive connections to a velmora-service that
// holds the real-world catalogue, and prints requests per second and latency percentiles.
//
//   bench_service_automatch [--catalogue FILE] [--connections N] [--seconds S] [--apps N] [--url http://HOST:PORT]
//                           [--save PREFIX]
//
// Without --url it starts its own service on a free port with a fresh database and imports the catalogue.
// --save writes one request body to PREFIX.body and the service's reply to PREFIX.reply instead of measuring, for
// an outside load generator and for a static server answering the very same bytes (bench/service/wrk-automatch.sh).

#include "support/ServiceProcess.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QUrl>

#include <httplib.h>
#include <zlib.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

// Most apps of a real scan are in the catalogue, found by each of the three keys; some are not.
QByteArray appFields(int index, const QJsonObject &record, int variant)
{
    const QByteArray i = QByteArray::number(index);
    const QJsonArray ids = record.value(QStringLiteral("bundle_ids")).toArray();
    const QJsonArray files = record.value(QStringLiteral("artifact_names")).toArray();
    QByteArray bundleId =
        variant == 0 && !ids.isEmpty() ? ids.at(0).toString().toUtf8() : QByteArray("org.example.none");
    QByteArray bundleName =
        variant == 1 && !files.isEmpty() ? files.at(0).toString().toUtf8() : QByteArray("Unknown.app");
    QByteArray displayName =
        variant == 2 ? record.value(QStringLiteral("name")).toString().toUtf8() : QByteArray("Unknown");
    if (variant == 3)
        displayName = "Local Tool " + i;
    return "&app[" + i + "][t]=" + bundleName.toPercentEncoding() + "&app[" + i +
           "][p]=" + QByteArray::number(quint64(QRandomGenerator::global()->generate64()), 16) + "&app[" + i +
           "][d]=" + displayName.toPercentEncoding() + "&app[" + i + "][v]=1.0&app[" + i +
           "][b]=" + bundleId.toPercentEncoding() + "&app[" + i + "][m]=2026-11-20%2010%3A00%3A00%20%2B0000";
}

std::vector<std::string> makeBodies(const QJsonArray &catalogue, int apps, int count)
{
    std::vector<std::string> bodies;
    for (int n = 0; n < count; ++n) {
        QByteArray body = "vld=6.0.4&c=C02BENCH&p=0&mid=0&uuid=BENCH-" + QByteArray::number(n) + "&type=auto";
        const int start = int(QRandomGenerator::global()->bounded(catalogue.size()));
        for (int i = 0; i < apps; ++i) {
            // Every third index is left out, as the program leaves out apps that are not installed.
            body += appFields(i + i / 2, catalogue.at((start + i * 7) % catalogue.size()).toObject(),
                              int(QRandomGenerator::global()->bounded(10)) < 8 ? i % 3 : 3);
        }
        bodies.push_back(body.toStdString());
    }
    return bodies;
}

bool replyIsSound(const std::string &body)
{
    std::vector<unsigned char> out(body.size() * 20);
    uLongf length = uLongf(out.size());
    return uncompress(out.data(), &length, reinterpret_cast<const Bytef *>(body.data()), uLong(body.size())) == Z_OK &&
           QJsonDocument::fromJson(QByteArray(reinterpret_cast<const char *>(out.data()), qsizetype(length)))
               .isObject();
}

// Processor time (user + system) a process has used so far, in seconds; 0 when unknown.
double processorSeconds(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (pid <= 0 || !stat.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = stat.readAll();
    // Fields after the command name (which may hold spaces) start after the last ')'; utime and stime are 14 and 15.
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return fields.size() > 12 ? double(fields[11].toLongLong() + fields[12].toLongLong()) / double(sysconf(_SC_CLK_TCK))
                              : 0;
}

double percentile(std::vector<double> &sorted, double p)
{
    return sorted.empty() ? 0 : sorted[std::min(sorted.size() - 1, size_t(p * double(sorted.size())))];
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addOptions(
        {{QStringLiteral("catalogue"), QStringLiteral("Real-world catalogue."), QStringLiteral("FILE"),
          QStringLiteral(VELMORA_REAL_CATALOGUE)},
         {QStringLiteral("connections"), QStringLiteral("Parallel connections."), QStringLiteral("N"),
          QStringLiteral("4")},
         {QStringLiteral("seconds"), QStringLiteral("Duration."), QStringLiteral("S"), QStringLiteral("10")},
         {QStringLiteral("apps"), QStringLiteral("Apps per request."), QStringLiteral("N"), QStringLiteral("500")},
         {QStringLiteral("url"), QStringLiteral("A running service instead of a fresh one."), QStringLiteral("URL")},
         {QStringLiteral("save"), QStringLiteral("Write a request and its reply, and stop."),
          QStringLiteral("PREFIX")}});
    parser.addHelpOption();
    parser.process(app);

    QFile file(parser.value(QStringLiteral("catalogue")));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "error: cannot read %s\n", qUtf8Printable(file.fileName()));
        return 1;
    }
    const QJsonArray catalogue = QJsonDocument::fromJson(file.readAll()).array();
    ServiceProcess service;
    QUrl url(parser.value(QStringLiteral("url")));
    if (!parser.isSet(QStringLiteral("url"))) {
        if (!service.start({file.fileName()})) {
            std::fprintf(stderr, "error: the service did not start\n");
            return 1;
        }
        url = QUrl(service.baseUrl());
    }
    const int connections = parser.value(QStringLiteral("connections")).toInt();
    const int apps = parser.value(QStringLiteral("apps")).toInt();
    const auto duration = std::chrono::seconds(parser.value(QStringLiteral("seconds")).toInt());
    const std::vector<std::string> bodies = makeBodies(catalogue, apps, 32);

    if (parser.isSet(QStringLiteral("save"))) {
        httplib::Client client(url.host().toStdString(), url.port());
        const auto result = client.Post("/vld603scan/automatch", bodies.front(), "application/x-www-form-urlencoded");
        const QString prefix = parser.value(QStringLiteral("save"));
        QFile body(prefix + QStringLiteral(".body")), reply(prefix + QStringLiteral(".reply"));
        if (!result || result->status != 200 || !body.open(QIODevice::WriteOnly) || !reply.open(QIODevice::WriteOnly) ||
            body.write(bodies.front().data(), qint64(bodies.front().size())) < 0 ||
            reply.write(result->body.data(), qint64(result->body.size())) < 0) {
            std::fprintf(stderr, "error: no reply to save\n");
            return 1;
        }
        return 0;
    }

    std::vector<std::vector<double>> latencies(static_cast<size_t>(connections));
    std::atomic<long> failures = 0;
    std::atomic<long long> replyBytes = 0;
    const double processorBefore = processorSeconds(service.processId());
    const Clock::time_point start = Clock::now();
    std::vector<std::thread> workers;
    for (int c = 0; c < connections; ++c) {
        workers.emplace_back([&, c] {
            httplib::Client client(url.host().toStdString(), url.port());
            client.set_keep_alive(true);
            client.set_tcp_nodelay(true);
            for (size_t n = size_t(c); Clock::now() - start < duration; n += size_t(connections)) {
                const Clock::time_point sent = Clock::now();
                const auto result = client.Post("/vld603scan/automatch", bodies[n % bodies.size()],
                                                "application/x-www-form-urlencoded");
                latencies[size_t(c)].push_back(std::chrono::duration<double, std::milli>(Clock::now() - sent).count());
                if (!result || result->status != 200 || (n < size_t(connections) && !replyIsSound(result->body)))
                    ++failures;
                else
                    replyBytes += qint64(result->body.size());
            }
        });
    }
    for (std::thread &worker : workers)
        worker.join();
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    const double processorUsed = processorSeconds(service.processId()) - processorBefore;

    std::vector<double> all;
    for (const auto &list : latencies)
        all.insert(all.end(), list.begin(), list.end());
    std::sort(all.begin(), all.end());
    std::printf("catalogue records    %lld\n", qint64(catalogue.size()));
    std::printf("apps per request     %d\n", apps);
    std::printf("connections          %d\n", connections);
    std::printf("requests             %zu in %.1f s (%ld failed)\n", all.size(), seconds, long(failures));
    std::printf("requests per second  %.1f\n", double(all.size()) / seconds);
    std::printf("latency ms           p50 %.1f  p90 %.1f  p99 %.1f  max %.1f\n", percentile(all, 0.50),
                percentile(all, 0.90), percentile(all, 0.99), all.empty() ? 0 : all.back());
    std::printf("reply bytes (zlib)   %.0f on average\n", all.empty() ? 0 : double(replyBytes) / double(all.size()));
    // Less disturbed by other work on a shared machine than the wall-clock figures.
    if (processorUsed > 0)
        std::printf("service cpu          %.2f ms per request\n", processorUsed * 1000 / double(all.size()));
    return failures == 0 ? 0 : 1;
}
