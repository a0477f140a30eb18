#include "http/RequestFront.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace {

using Phase = FrontConnection::Phase;
using namespace std::chrono_literals;

constexpr auto lingerTime = 2s;
constexpr size_t readSize = 64 * 1024;

// The length of the head through its empty line, or npos while it is incomplete.
size_t headLength(const std::string &input)
{
    for (size_t newline = input.find('\n'); newline != std::string::npos; newline = input.find('\n', newline + 1)) {
        if (input.compare(newline + 1, 1, "\n") == 0)
            return newline + 2;
        if (input.compare(newline + 1, 2, "\r\n") == 0)
            return newline + 3;
    }
    return std::string::npos;
}

} // namespace

RequestFront::RequestFront(int listenSocket, const ServerLimits &limits, Dispatch dispatch)
    : m_listen(listenSocket), m_limits(limits), m_dispatch(std::move(dispatch))
{
    m_epoll = epoll_create1(EPOLL_CLOEXEC);
    m_wake = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    watch(m_listen, EPOLLIN, EPOLL_CTL_ADD);
    watch(m_wake, EPOLLIN, EPOLL_CTL_ADD);
}

RequestFront::~RequestFront()
{
    ::close(m_wake);
    ::close(m_epoll);
}

void RequestFront::watch(int fd, uint32_t events, int operation)
{
    epoll_event event{};
    event.events = events;
    event.data.fd = fd;
    epoll_ctl(m_epoll, operation, fd, &event);
}

void RequestFront::stop()
{
    m_stopping = true;
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_wake, &one, sizeof one);
}

void RequestFront::giveBack(std::unique_ptr<FrontConnection> connection)
{
    {
        std::lock_guard lock(m_returnedMutex);
        if (m_ended)
            return; // closed as it goes
        m_returned.push_back(std::move(connection));
    }
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_wake, &one, sizeof one);
}

void RequestFront::run()
{
    epoll_event events[64];
    while (!m_stopping) {
        const int count = epoll_wait(m_epoll, events, 64, 250);
        for (int i = 0; i < count; ++i) {
            const int fd = events[i].data.fd;
            if (fd == m_listen) {
                acceptAll();
            } else if (fd == m_wake) {
                uint64_t value = 0;
                [[maybe_unused]] const ssize_t read = ::read(m_wake, &value, sizeof value);
                takeReturned();
            } else if (const auto it = m_held.find(fd); it != m_held.end()) {
                receive(*it->second);
            }
        }
        expire();
        if (!m_accepting && m_open < m_limits.connections && FrontConnection::Clock::now() >= m_acceptPausedUntil) {
            m_accepting = true;
            watch(m_listen, EPOLLIN, EPOLL_CTL_MOD);
        }
    }
    {
        std::lock_guard lock(m_returnedMutex);
        m_ended = true;
        m_returned.clear();
    }
    m_held.clear();
}

void RequestFront::acceptAll()
{
    while (m_open < m_limits.connections) {
        const int fd = accept4(m_listen, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (fd < 0) {
            // Out of descriptors or memory: the rest wait in the listen queue for a moment.
            if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM)
                m_acceptPausedUntil = FrontConnection::Clock::now() + 100ms;
            else
                return;
            break;
        }
        // Without it an answer written in two parts waits for the client's delayed acknowledgement.
        const int on = 1;
        setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        ++m_open;
        m_held.emplace(fd, std::make_unique<FrontConnection>(fd));
        watch(fd, EPOLLIN | EPOLLRDHUP, EPOLL_CTL_ADD);
    }
    m_accepting = false;
    watch(m_listen, 0, EPOLL_CTL_MOD);
}

void RequestFront::receive(FrontConnection &connection)
{
    char buffer[readSize];
    const ssize_t got = ::recv(connection.fd, buffer, sizeof buffer, 0);
    if (got < 0 && errno != EAGAIN && errno != EINTR)
        return close(connection);
    if (got == 0)
        connection.clientClosed = true;
    if (got > 0 && connection.phase != Phase::Linger)
        connection.input.append(buffer, size_t(got));
    advance(connection);
}

void RequestFront::advance(FrontConnection &connection)
{
    if (connection.phase == Phase::Idle) {
        // Empty lines before a request are allowed (some clients end a body with an extra CRLF).
        connection.input.erase(0, std::min(connection.input.find_first_not_of("\r\n"), connection.input.size()));
        if (!connection.input.empty())
            connection.enter(Phase::Head);
    }
    if (connection.phase == Phase::Head && readHead(connection) && readBody(connection))
        return dispatch(connection);
    if (connection.phase == Phase::Body && readBody(connection))
        return dispatch(connection);
    if (connection.clientClosed) {
        if (connection.phase == Phase::Head)
            connection.refuse({400, "request head cut short"});
        else if (connection.phase == Phase::Body)
            connection.refuse({400, "request body shorter than its length"});
        else if (connection.phase != Phase::Closed)
            connection.enter(Phase::Closed);
    }
    if (connection.phase == Phase::Closed)
        close(connection);
}

bool RequestFront::readHead(FrontConnection &connection)
{
    const size_t length = headLength(connection.input);
    if (length == std::string::npos ? connection.input.size() > m_limits.maxHeadBytes
                                    : length > m_limits.maxHeadBytes + 2) {
        connection.refuse(connection.input.find('\n') == std::string::npos ? Refusal{414, "request line too long"}
                                                                           : Refusal{431, "request head too large"});
        return false;
    }
    if (length == std::string::npos)
        return false;
    auto parsed = RequestHead::parse(std::string_view(connection.input).substr(0, length), m_limits.head);
    if (const auto *refusal = std::get_if<Refusal>(&parsed)) {
        connection.refuse(*refusal);
        return false;
    }
    connection.head = std::move(std::get<RequestHead>(parsed));
    connection.input.erase(0, length);
    const RequestHead &head = connection.head;
    if (!head.chunked && head.contentLength > m_limits.maxBodyBytes) {
        connection.refuse({413, "request body too large"});
        return false;
    }
    if (!reserve(connection, head.chunked ? 0 : size_t(head.contentLength)))
        return false;
    if (head.expectsContinue && (head.chunked || head.contentLength > 0) && connection.input.empty()) {
        static const char goOn[] = "HTTP/1.1 100 Continue\r\n\r\n";
        ::send(connection.fd, goOn, sizeof goOn - 1, MSG_DONTWAIT | MSG_NOSIGNAL);
    }
    connection.phase = Phase::Body; // the clock keeps running from the request's first byte
    return true;
}

bool RequestFront::readBody(FrontConnection &connection)
{
    if (connection.head.chunked) {
        const size_t before = connection.body.size();
        const ChunkedBody::Step step =
            connection.chunked.take(connection.input, connection.body, m_limits.maxBodyBytes);
        if (step == ChunkedBody::Step::Refused) {
            connection.refuse(connection.chunked.refusal());
            return false;
        }
        return reserve(connection, connection.body.size() - before) && step == ChunkedBody::Step::Done;
    }
    const size_t count =
        std::min(size_t(connection.head.contentLength) - connection.body.size(), connection.input.size());
    connection.body.append(connection.input, 0, count);
    connection.input.erase(0, count);
    return connection.body.size() == connection.head.contentLength;
}

// Bodies being received share one limit, so many greedy clients together cannot exhaust memory either.
bool RequestFront::reserve(FrontConnection &connection, size_t bytes)
{
    if (m_bodyBytes + bytes > m_limits.bodyBudget) {
        connection.refuse({503, "too many request bodies at once; try again"});
        return false;
    }
    m_bodyBytes += bytes;
    connection.reserved += bytes;
    return true;
}

void RequestFront::dispatch(FrontConnection &connection)
{
    const auto it = m_held.find(connection.fd);
    watch(connection.fd, 0, EPOLL_CTL_DEL);
    connection.phase = Phase::Dispatched;
    std::unique_ptr<FrontConnection> owned = std::move(it->second);
    m_held.erase(it);
    m_dispatch(std::move(owned));
}

void RequestFront::takeReturned()
{
    std::vector<std::unique_ptr<FrontConnection>> returned;
    {
        std::lock_guard lock(m_returnedMutex);
        returned.swap(m_returned);
    }
    for (std::unique_ptr<FrontConnection> &owned : returned) {
        FrontConnection &connection = *owned;
        m_bodyBytes -= connection.reserved;
        connection.reserved = 0;
        m_held.emplace(connection.fd, std::move(owned));
        watch(connection.fd, EPOLLIN | EPOLLRDHUP, EPOLL_CTL_ADD);
        advance(connection); // a request sent behind the last one is already here
    }
}

void RequestFront::expire()
{
    const auto now = FrontConnection::Clock::now();
    if (now - m_lastExpiry < 100ms)
        return;
    m_lastExpiry = now;
    std::vector<FrontConnection *> due;
    for (const auto &[fd, connection] : m_held) {
        const auto waited = now - connection->since;
        switch (connection->phase) {
        case Phase::Idle:
            if (waited > (connection->served == 0 ? m_limits.headTimeout : m_limits.idleTimeout))
                due.push_back(connection.get());
            break;
        case Phase::Head:
            if (waited > m_limits.headTimeout)
                due.push_back(connection.get());
            break;
        case Phase::Body:
            if (waited > m_limits.requestTimeout)
                due.push_back(connection.get());
            break;
        case Phase::Linger:
            if (waited > lingerTime)
                due.push_back(connection.get());
            break;
        case Phase::Dispatched:
        case Phase::Closed:
            break;
        }
    }
    for (FrontConnection *connection : due) {
        if (connection->phase == Phase::Head)
            connection->refuse({408, "request head not complete in time"});
        else if (connection->phase == Phase::Body)
            connection->refuse({400, "request body not complete in time"});
        else
            connection->enter(Phase::Closed);
        if (connection->phase == Phase::Closed)
            close(*connection);
    }
}

void RequestFront::close(FrontConnection &connection)
{
    m_bodyBytes -= connection.reserved;
    --m_open;
    m_held.erase(connection.fd); // the connection closes its socket, which leaves the epoll set
}
