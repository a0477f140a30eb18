#include "http/RequestStream.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <utility>

RequestStream::RequestStream(const FrontConnection &connection, std::string head,
                             std::chrono::milliseconds writeTimeout)
    : m_connection(connection), m_head(std::move(head)), m_writeTimeoutMs(int(writeTimeout.count()))
{
}

bool RequestStream::is_readable() const
{
    return m_read < m_head.size() + m_connection.body.size();
}

bool RequestStream::is_writable() const
{
    return waitWritable();
}

ssize_t RequestStream::read(char *ptr, size_t size)
{
    size_t copied = 0;
    if (m_read < m_head.size()) {
        copied = std::min(size, m_head.size() - m_read);
        std::memcpy(ptr, m_head.data() + m_read, copied);
    } else {
        const size_t offset = m_read - m_head.size();
        copied = std::min(size, m_connection.body.size() - std::min(offset, m_connection.body.size()));
        std::memcpy(ptr, m_connection.body.data() + offset, copied);
    }
    m_read += copied;
    return ssize_t(copied);
}

ssize_t RequestStream::write(const char *ptr, size_t size)
{
    if (!m_headSeen) {
        m_headSeen = true;
        m_heldHead.assign(ptr, size);
        return ssize_t(size);
    }
    // A body small enough to copy goes out in the same send as the head; a large one follows it.
    constexpr size_t joinedLimit = 64 * 1024;
    if (!m_heldHead.empty() && size <= joinedLimit) {
        m_heldHead.append(ptr, size);
        return flush() ? ssize_t(size) : -1;
    }
    return flush() && sendAll(ptr, size) ? ssize_t(size) : -1;
}

bool RequestStream::flush()
{
    const std::string held = std::exchange(m_heldHead, std::string());
    return sendAll(held.data(), held.size());
}

bool RequestStream::sendAll(const char *ptr, size_t size)
{
    size_t written = 0;
    while (written < size) {
        const ssize_t sent = ::send(m_connection.fd, ptr + written, size - written, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent > 0)
            written += size_t(sent);
        else if ((sent < 0 && errno != EAGAIN && errno != EINTR) || !waitWritable())
            return false;
    }
    return true;
}

bool RequestStream::waitWritable() const
{
    pollfd wait{m_connection.fd, POLLOUT, 0};
    int ready = 0;
    do
        ready = ::poll(&wait, 1, m_writeTimeoutMs);
    while (ready < 0 && errno == EINTR);
    return ready > 0 && !(wait.revents & (POLLERR | POLLHUP));
}

void RequestStream::get_remote_ip_and_port(std::string &ip, int &port) const
{
    ip = m_connection.client;
    port = m_connection.clientPort;
}

void RequestStream::get_local_ip_and_port(std::string &ip, int &port) const
{
    ip = m_connection.local;
    port = m_connection.localPort;
}
