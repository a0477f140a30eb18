#pragma once

// The library's server as a router: it reads a request the front has already read whole (from a stream over
// that request), finds its handler, and writes the answer, ranges and file bodies included. Its own listening,
// reading and threads are not used.

#include <httplib.h>

class RequestRouter : public httplib::Server
{
public:
    // The library writes file bodies only while it believes it listens; it only compares this with "none".
    RequestRouter() { svr_sock_ = 0; }

    // Answers the one request the stream holds. closeAfter asks the answer to close the connection;
    // clientCloses says the client asked for that itself. False when the answer could not be written.
    bool answer(httplib::Stream &stream, bool closeAfter, bool &clientCloses)
    {
        return process_request(stream, closeAfter, clientCloses, nullptr);
    }

    // File bodies being written stop early from now on, so a stop does not wait for long downloads.
    void stopStreaming() { svr_sock_ = INVALID_SOCKET; }
};
