#include "http/RequestStream.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
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
    // The held head goes out in the same call as this part of the body.
    const std::string held = std::exchange(m_heldHead, std::string());
    return sendAll(held, std::string_view(ptr, size)) ? ssize_t(size) : -1;
}

bool RequestStream::flush()
{
    const std::string held = std::exchange(m_heldHead, std::string());
    return sendAll(held, {});
}

bool RequestStream::sendAll(std::string_view first, std::string_view second)
{
    iovec parts[] = {{const_cast<char *>(first.data()), first.size()},
                     {const_cast<char *>(second.data()), second.size()}};
    iovec *next = parts;
    const iovec *const end = parts + 2;
    for (;;) {
        while (next != end && next->iov_len == 0)
            ++next;
        if (next == end)
            return true;
        msghdr message{};
        message.msg_iov = next;
        message.msg_iovlen = size_t(end - next);
        ssize_t sent = ::sendmsg(m_connection.fd, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent < 0 && errno != EAGAIN && errno != EINTR)
            return false;
        if (sent <= 0) {
            if (!waitWritable())
                return false;
            continue;
        }
        for (; sent > 0; ++next) {
            const size_t taken = std::min(size_t(sent), next->iov_len);
            next->iov_base = static_cast<char *>(next->iov_base) + taken;
            next->iov_len -= taken;
            sent -= ssize_t(taken);
            if (next->iov_len > 0)
                break;
        }
    }
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
