#pragma once

// Requests whose answer nobody waits for (analytics hits, the download record): sent from a pool of their own with
// a short deadline, and abandoned when the program ends, so that leaving never waits on a slow or silent host.

#include "platform/WebRequest.h"

namespace FireAndForget {

// The longest one such request may take, and how long it may stand still.
inline constexpr int kDeadlineMs = 15000;
inline constexpr int kIdleMs = 10000;

// Queues request (its deadlines shortened to the above) and returns at once.
void send(WebRequest request);
// Gives requests on their way up to timeoutMs to leave, then abandons them and those still queued. Runs by itself
// when the application object goes; calling it earlier lets a program choose the grace time.
void finish(int timeoutMs);

} // namespace FireAndForget
