#pragma once

// The HTTP side: a front that reads whole requests within their limits and deadlines, workers that answer
// them, one log line per request, and a clean stop on SIGINT or SIGTERM.

#include "http/ServerLimits.h"
#include "http/ServiceContext.h"

struct ListenAddress
{
    QString host = QStringLiteral("127.0.0.1");
    int port = 8642;
    // "HOST:PORT", ":PORT" or "PORT"; port 0 picks a free port.
    static std::optional<ListenAddress> parse(const QString &text);
};

namespace HttpServer {

// Serves until a signal arrives. Prints "http://HOST:PORT" (the address really bound) as the first line on
// stdout once it accepts connections. Returns the process exit code.
int run(ServiceContext &context, const ListenAddress &address, const ServerLimits &limits);

} // namespace HttpServer
