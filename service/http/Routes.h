#pragma once

// Each area of the service registers its paths; one process answers every host's paths.

#include "http/Reply.h"
#include "http/ServiceContext.h"
#include "wire/RequestHead.h"

#include <httplib.h>

using RouteHandler = void (*)(const httplib::Request &, httplib::Response &, ServiceContext &);

// An httplib handler that calls a route function with the service's context.
inline httplib::Server::Handler withContext(ServiceContext &context, RouteHandler handler)
{
    return [&context, handler](const httplib::Request &req, httplib::Response &res) { handler(req, res, context); };
}

// The request target as the client sent it (the router may have seen later "?" escaped).
inline std::string sentTarget(const httplib::Request &req)
{
    const std::string sent = req.get_header_value(std::string(RequestHead::sentTargetField));
    return sent.empty() ? req.target : sent;
}

// A POST route. The server library refuses form bodies over 8 KiB before a plain handler sees them (a
// matching request is far larger), so the body is read here; the front has already read it whole, within the
// service's limit.
inline void postRoute(httplib::Server &server, const char *pattern, ServiceContext &context, RouteHandler handler)
{
    server.Post(pattern, [&context, handler](const httplib::Request &req, httplib::Response &res,
                                             const httplib::ContentReader &content) {
        httplib::Request withBody = req;
        const bool read = content([&withBody](const char *data, size_t length) {
            withBody.body.append(data, length);
            return true;
        });
        if (!read)
            return Reply::fail(res, 400, QStringLiteral("request body incomplete"));
        handler(withBody, res, context);
    });
}

void registerCatalogueRoutes(httplib::Server &server, ServiceContext &context);
void registerFileRoutes(httplib::Server &server, ServiceContext &context);
void registerMemberRoutes(httplib::Server &server, ServiceContext &context);
void registerListRoutes(httplib::Server &server, ServiceContext &context);
void registerReportRoutes(httplib::Server &server, ServiceContext &context);
void registerCrashRoutes(httplib::Server &server, ServiceContext &context);
void registerDealRoutes(httplib::Server &server, ServiceContext &context);
void registerLinkRoutes(httplib::Server &server, ServiceContext &context);
void registerSiteRoutes(httplib::Server &server, ServiceContext &context);
