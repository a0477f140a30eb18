#include "http/HttpServer.h"

#include "http/Reply.h"
#include "http/Routes.h"
#include "wire/Redaction.h"

#include <QDateTime>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <mutex>
#include <pthread.h>
#include <thread>

namespace {

// Files are streamed, so their size is in the header rather than in the body.
std::string sentBytes(const httplib::Response &res)
{
    const std::string length = res.get_header_value("Content-Length");
    return res.body.empty() && !length.empty() ? length : std::to_string(res.body.size());
}

void logRequest(const httplib::Request &req, const httplib::Response &res)
{
    static std::mutex logMutex;
    // Joined rather than filled in with arg(): a target may hold "%1" itself.
    QString line = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs) + u' ' +
                   QString::fromStdString(req.remote_addr) + u' ' + QString::fromStdString(req.method) + u' ' +
                   Redaction::target(req.target) + u' ' + QString::number(res.status) + u' ' +
                   QString::fromStdString(sentBytes(res));
    if (res.status >= 400 && !res.body.empty())
        line += QStringLiteral(" (") + QString::fromStdString(res.body).trimmed().left(200) + u')';
    const QByteArray bytes = line.toUtf8() + '\n';
    std::lock_guard lock(logMutex);
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
}

void configure(httplib::Server &server, ServiceContext &context)
{
    const unsigned workers = std::max(16u, 4 * std::thread::hardware_concurrency());
    server.new_task_queue = [workers] { return new httplib::ThreadPool(workers); };
    server.set_payload_max_length(maxBodyBytes);
    // Without it a reply written in two parts waits for the client's delayed acknowledgement (about 40 ms).
    server.set_tcp_nodelay(true);
    server.set_keep_alive_max_count(1000);
    server.set_keep_alive_timeout(5);
    server.set_read_timeout(30);
    server.set_write_timeout(30);
    server.set_logger(logRequest);
    server.set_exception_handler([](const httplib::Request &, httplib::Response &res, std::exception_ptr error) {
        QString reason = QStringLiteral("internal error");
        try {
            std::rethrow_exception(error);
        } catch (const std::exception &e) {
            reason += QStringLiteral(": ") + QString::fromUtf8(e.what());
        } catch (...) {
        }
        Reply::fail(res, 500, reason);
    });
    server.set_error_handler([](const httplib::Request &, httplib::Response &res) {
        if (res.body.empty())
            Reply::fail(res, res.status,
                        res.status == 404 ? QStringLiteral("no such path")
                                          : QStringLiteral("request refused (%1)").arg(res.status));
    });
    registerCatalogueRoutes(server, context);
    registerFileRoutes(server, context);
    registerMemberRoutes(server, context);
    registerListRoutes(server, context);
    registerReportRoutes(server, context);
    registerDealRoutes(server, context);
    registerLinkRoutes(server, context);
    registerSiteRoutes(server, context);
}

} // namespace

std::optional<ListenAddress> ListenAddress::parse(const QString &text)
{
    ListenAddress address;
    const qsizetype colon = text.lastIndexOf(u':');
    QString host = colon < 0 ? QString() : text.left(colon);
    if (host.startsWith(u'[') && host.endsWith(u']'))
        host = host.mid(1, host.size() - 2);
    if (!host.isEmpty())
        address.host = host;
    bool ok = false;
    address.port = text.mid(colon + 1).toInt(&ok);
    if (!ok || address.port < 0 || address.port > 65535)
        return std::nullopt;
    return address;
}

namespace HttpServer {

int run(ServiceContext &context, const ListenAddress &address)
{
    // Signals are taken by one thread with sigwait, so stopping never runs inside a signal handler.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    httplib::Server server;
    configure(server, context);
    const std::string host = address.host.toStdString();
    const int port = address.port == 0 ? server.bind_to_any_port(host)
                                       : (server.bind_to_port(host, address.port) ? address.port : -1);
    if (port <= 0) {
        std::fprintf(stderr, "error: cannot listen on %s:%d\n", host.c_str(), address.port);
        return 1;
    }
    std::printf("http://%s:%d\n", host.find(':') == std::string::npos ? host.c_str() : ("[" + host + "]").c_str(),
                port);
    std::fflush(stdout);

    // A signal that comes before the server runs would be lost by one stop(): keep asking until it has ended.
    std::atomic<bool> finished = false;
    std::thread stopper([&server, &finished, stopSignals] {
        int signal = 0;
        sigwait(&stopSignals, &signal);
        while (!finished) {
            server.stop();
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    });
    const bool listened = server.listen_after_bind();
    finished = true;
    pthread_kill(stopper.native_handle(), SIGTERM); // wakes the thread when no signal came
    stopper.join();
    std::fprintf(stderr, "stopped\n");
    return listened ? 0 : 1;
}

} // namespace HttpServer
