#pragma once

// What the service allows each client and all of them together. A request is read whole, within its
// deadlines, before any worker sees it, so slow clients cost a buffer each and never a worker.

#include "wire/RequestHead.h"

#include <chrono>

struct ServerLimits
{
    int connections = 512; // open at once; more wait in the listen queue, none is reset
    int workers = 16;      // threads that answer complete requests
    HeadLimits head;       // request line and field length, field count
    size_t maxHeadBytes = 32 * 1024;
    // The largest request body (decoded); a matching request for thousands of apps stays far below it.
    size_t maxBodyBytes = 16 * 1024 * 1024;
    // Bodies being received on all connections together; past it a request is answered 503.
    size_t bodyBudget = 256 * 1024 * 1024;
    std::chrono::seconds headTimeout{10};    // from the request's first byte (or the connection's opening)
    std::chrono::seconds requestTimeout{30}; // head and body, from the request's first byte
    std::chrono::seconds idleTimeout{5};     // between requests on a kept connection
    std::chrono::seconds writeTimeout{30};   // for each part of an answer the client does not take
    int keepAliveMax = 1000;                 // requests on one connection
};
