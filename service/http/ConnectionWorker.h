#pragma once

// The worker's part of a request: decode the body the front read, have the router answer, and leave the
// connection ready for its next request, lingering after its last, or closed when the client is gone.

#include "http/FrontConnection.h"
#include "http/RequestRouter.h"
#include "http/ServerLimits.h"

namespace ConnectionWorker {

void serve(RequestRouter &router, FrontConnection &connection, const ServerLimits &limits);

} // namespace ConnectionWorker
