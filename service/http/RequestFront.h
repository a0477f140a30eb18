#pragma once

// Reads requests before any worker sees them. One thread waits on every connection (epoll), reads what each
// client sends, checks the framing and the limits as the bytes come, and hands a request to the workers only
// once it is complete. A client that trickles its request costs a buffer until its deadline, never a worker;
// one that sends too much is refused as soon as it passes a limit.

#include "http/FrontConnection.h"
#include "http/ServerLimits.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

class RequestFront
{
public:
    using Dispatch = std::function<void(std::unique_ptr<FrontConnection>)>;

    // listenSocket is a listening, non-blocking socket; dispatch takes each complete request (on this thread).
    RequestFront(int listenSocket, const ServerLimits &limits, Dispatch dispatch);
    ~RequestFront();
    RequestFront(const RequestFront &) = delete;
    RequestFront &operator=(const RequestFront &) = delete;

    // Serves until stop(); then closes the connections it holds.
    void run();
    // From any thread.
    void stop();
    // From a worker: the connection after its answer. Closed at once once the front has stopped.
    void giveBack(std::unique_ptr<FrontConnection> connection);

private:
    void acceptAll();
    void receive(FrontConnection &connection);
    // Reads on from what is buffered: dispatches, refuses or waits; closes what is done.
    void advance(FrontConnection &connection);
    bool readHead(FrontConnection &connection);
    bool readBody(FrontConnection &connection);
    bool reserve(FrontConnection &connection, size_t bytes);
    void dispatch(FrontConnection &connection);
    void takeReturned();
    void expire();
    void close(FrontConnection &connection);
    void watch(int fd, uint32_t events, int operation);

    const int m_listen;
    const ServerLimits m_limits;
    const Dispatch m_dispatch;
    int m_epoll = -1;
    int m_wake = -1;
    std::atomic<bool> m_stopping = false;

    // The front thread's own.
    std::unordered_map<int, std::unique_ptr<FrontConnection>> m_held;
    int m_open = 0; // held here or at a worker
    bool m_accepting = true;
    FrontConnection::Clock::time_point m_acceptPausedUntil;
    FrontConnection::Clock::time_point m_lastExpiry;
    size_t m_bodyBytes = 0; // reserved by bodies being received or answered

    std::mutex m_returnedMutex;
    std::vector<std::unique_ptr<FrontConnection>> m_returned;
    bool m_ended = false;
};
