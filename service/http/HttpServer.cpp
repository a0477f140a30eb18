#include "http/HttpServer.h"

#include "http/ConnectionWorker.h"
#include "http/ListenSocket.h"
#include "http/Reply.h"
#include "http/RequestFront.h"
#include "http/RequestLog.h"
#include "http/RequestRouter.h"
#include "http/Routes.h"
#include "storage/SqlDatabase.h"
#include "wire/Zlib.h"

#include <csignal>
#include <cstdio>
#include <pthread.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace {

// Files are streamed, so their size is in the header rather than in the body.
std::string sentBytes(const httplib::Response &res)
{
    const std::string length = res.get_header_value("Content-Length");
    return res.body.empty() && !length.empty() ? length : std::to_string(res.body.size());
}

// The reply's body as written, inflated when the library compressed it for the client (refusals are short).
std::string sentText(const httplib::Response &res)
{
    if (res.get_header_value("Content-Encoding") != "gzip")
        return res.body;
    const auto text = Zlib::inflate(res.body, Zlib::Wrapper::Gzip, 64 * 1024);
    return std::holds_alternative<std::string>(text) ? std::get<std::string>(text) : res.body;
}

void configure(RequestRouter &router, ServiceContext &context, const ServerLimits &limits)
{
    router.set_payload_max_length(limits.maxBodyBytes);
    // Only for the Keep-Alive field of the answers: the front keeps these times and counts.
    router.set_keep_alive_max_count(size_t(limits.keepAliveMax));
    router.set_keep_alive_timeout(limits.idleTimeout.count());
    router.set_logger([](const httplib::Request &req, const httplib::Response &res) {
        // Only a refusal's reason is logged: a successful answer (a 100 KB matching reply) is never read again.
        RequestLog::write(req.remote_addr, req.method, sentTarget(req), res.status, sentBytes(res),
                          res.status >= 400 ? sentText(res) : std::string());
    });
    router.set_exception_handler([](const httplib::Request &, httplib::Response &res, std::exception_ptr error) {
        QString reason = QStringLiteral("internal error");
        try {
            std::rethrow_exception(error);
        } catch (const std::exception &e) {
            reason += QStringLiteral(": ") + QString::fromUtf8(e.what());
        } catch (...) {
        }
        Reply::fail(res, 500, reason);
    });
    // A database that cannot be reached makes any answer built on it 503, whatever the handler made of the missing
    // rows; the client tries again (nginx on another process, or later).
    router.set_pre_routing_handler([](const httplib::Request &, httplib::Response &) {
        StorageFault::clear();
        return httplib::Server::HandlerResponse::Unhandled;
    });
    router.set_post_routing_handler([](const httplib::Request &, httplib::Response &res) {
        if (StorageFault::occurred()) {
            for (const char *name : {"Content-Type", "Content-Encoding", "Content-Length", "Location", "Set-Cookie"})
                res.headers.erase(name);
            Reply::fail(res, 503, QStringLiteral("the database cannot be reached"));
            res.set_header("Retry-After", "2");
        }
        StorageFault::clear();
    });
    router.set_error_handler([](const httplib::Request &, httplib::Response &res) {
        if (res.body.empty())
            Reply::fail(res, res.status,
                        res.status == 404 ? QStringLiteral("no such path")
                                          : QStringLiteral("request refused (%1)").arg(res.status));
    });
    registerCatalogueRoutes(router, context);
    registerFileRoutes(router, context);
    registerMemberRoutes(router, context);
    registerListRoutes(router, context);
    registerReportRoutes(router, context);
    registerCrashRoutes(router, context);
    registerDealRoutes(router, context);
    registerLinkRoutes(router, context);
    registerSiteRoutes(router, context);
}

// Every connection is a descriptor: take what the hard limit allows.
void raiseDescriptorLimit()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < limit.rlim_max) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
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

int run(ServiceContext &context, const ListenAddress &address, const ServerLimits &limits)
{
    // Signals are taken by one thread with sigwait, so stopping never runs inside a signal handler.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    raiseDescriptorLimit();

    RequestRouter router;
    configure(router, context, limits);
    QString error;
    const auto bound = ListenSocket::open(address.host, address.port, limits.connections, &error);
    if (!bound) {
        std::fprintf(stderr, "error: cannot listen on %s:%d: %s\n", qUtf8Printable(address.host), address.port,
                     qUtf8Printable(error));
        return 1;
    }
    const QString host = address.host.contains(u':') ? u'[' + address.host + u']' : address.host;
    std::printf("http://%s:%d\n", qUtf8Printable(host), bound->port);
    std::fflush(stdout);

    httplib::ThreadPool workers(size_t(limits.workers));
    RequestFront front(bound->fd, limits, [&](std::unique_ptr<FrontConnection> connection) {
        // The pool takes copyable jobs only; each job owns its connection again at once.
        workers.enqueue([&router, &front, &limits, raw = connection.release()] {
            std::unique_ptr<FrontConnection> owned(raw);
            ConnectionWorker::serve(router, *owned, limits);
            front.giveBack(std::move(owned));
        });
    });
    // Only a signal stops the front, so the thread has always returned once run() has.
    std::thread stopper([&front, &router, stopSignals] {
        int signal = 0;
        sigwait(&stopSignals, &signal);
        front.stop();
        router.stopStreaming();
    });
    front.run();
    // Requests already at a worker are answered before the process ends.
    workers.shutdown();
    stopper.join();
    ::close(bound->fd);
    std::fprintf(stderr, "stopped\n");
    return 0;
}

} // namespace HttpServer
