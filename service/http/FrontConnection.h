#pragma once

// One client connection, handed between the front (which reads requests) and a worker (which answers one).
// Only one thread holds it at a time.

#include "wire/ChunkedBody.h"
#include "wire/RequestHead.h"

#include <chrono>
#include <string>

struct FrontConnection
{
    using Clock = std::chrono::steady_clock;
    enum class Phase {
        Idle,       // waiting for a request's first byte
        Head,       // reading the request line and fields
        Body,       // reading the body
        Dispatched, // complete, at a worker
        Linger,     // answered for the last time: sending side closed, draining what the client still sends
        Closed,     // to be closed at once (the client is gone)
    };

    explicit FrontConnection(int socket);
    ~FrontConnection();
    FrontConnection(const FrontConnection &) = delete;
    FrontConnection &operator=(const FrontConnection &) = delete;

    // Enters a phase and starts its clock.
    void enter(Phase next);
    // Answers with the refusal, logs it, and lingers: the connection is not used for another request.
    void refuse(const Refusal &refusal);
    // Closes the sending side after the last answer and lingers.
    void finish();

    const int fd;
    std::string client;
    int clientPort = 0;
    std::string local;
    int localPort = 0;

    Phase phase = Phase::Idle;
    Clock::time_point since = Clock::now();
    bool clientClosed = false; // the client sent all it will send
    int served = 0;

    std::string input; // read and not yet used
    RequestHead head;
    ChunkedBody chunked;
    std::string body;
    size_t reserved = 0; // of the limit on bodies being received
};
