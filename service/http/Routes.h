#pragma once

// Each area of the service registers its paths; one process answers every host's paths.

#include "http/Reply.h"
#include "http/ServiceContext.h"

#include <httplib.h>

// The largest request body taken; a matching request for thousands of apps stays far below it.
inline constexpr size_t maxBodyBytes = 16 * 1024 * 1024;

using RouteHandler = void (*)(const httplib::Request &, httplib::Response &, ServiceContext &);

// An httplib handler that calls a route function with the service's context.
inline httplib::Server::Handler withContext(ServiceContext &context, RouteHandler handler)
{
    return [&context, handler](const httplib::Request &req, httplib::Response &res) { handler(req, res, context); };
}

// A POST route. The server library refuses form bodies over 8 KiB before a plain handler sees them (a
// matching request is far larger), so the body is read here, under the service's own size limit only.
inline void postRoute(httplib::Server &server, const char *pattern, ServiceContext &context, RouteHandler handler)
{
    server.Post(pattern, [&context, handler](const httplib::Request &req, httplib::Response &res,
                                             const httplib::ContentReader &content) {
        httplib::Request withBody = req;
        const bool read = content([&withBody](const char *data, size_t length) {
            withBody.body.append(data, length);
            return withBody.body.size() <= maxBodyBytes;
        });
        if (!read)
            return Reply::fail(res, 413, QStringLiteral("request body too large"));
        handler(withBody, res, context);
    });
}

void registerCatalogueRoutes(httplib::Server &server, ServiceContext &context);
void registerFileRoutes(httplib::Server &server, ServiceContext &context);
void registerMemberRoutes(httplib::Server &server, ServiceContext &context);
void registerListRoutes(httplib::Server &server, ServiceContext &context);
void registerReportRoutes(httplib::Server &server, ServiceContext &context);
void registerDealRoutes(httplib::Server &server, ServiceContext &context);
void registerLinkRoutes(httplib::Server &server, ServiceContext &context);
void registerSiteRoutes(httplib::Server &server, ServiceContext &context);
