#pragma once

// Each area of the service registers its paths; one process answers every host's paths.

#include "http/ServiceContext.h"

#include <httplib.h>

using RouteHandler = void (*)(const httplib::Request &, httplib::Response &, ServiceContext &);

// An httplib handler that calls a route function with the service's context.
inline httplib::Server::Handler withContext(ServiceContext &context, RouteHandler handler)
{
    return [&context, handler](const httplib::Request &req, httplib::Response &res) { handler(req, res, context); };
}

void registerCatalogueRoutes(httplib::Server &server, ServiceContext &context);
void registerFileRoutes(httplib::Server &server, ServiceContext &context);
void registerMemberRoutes(httplib::Server &server, ServiceContext &context);
void registerListRoutes(httplib::Server &server, ServiceContext &context);
void registerReportRoutes(httplib::Server &server, ServiceContext &context);
void registerDealRoutes(httplib::Server &server, ServiceContext &context);
void registerLinkRoutes(httplib::Server &server, ServiceContext &context);
void registerSiteRoutes(httplib::Server &server, ServiceContext &context);
