#include "http/ListenSocket.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace ListenSocket {

std::optional<Bound> open(const QString &host, int port, int backlog, QString *error)
{
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
    addrinfo *found = nullptr;
    const int rc =
        getaddrinfo(host.isEmpty() ? nullptr : qPrintable(host), std::to_string(port).c_str(), &hints, &found);
    if (rc != 0) {
        *error = QString::fromLocal8Bit(gai_strerror(rc));
        return std::nullopt;
    }
    std::optional<Bound> bound;
    *error = QStringLiteral("no address");
    for (const addrinfo *address = found; address && !bound; address = address->ai_next) {
        const int fd =
            socket(address->ai_family, address->ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, address->ai_protocol);
        const int on = 1;
        if (fd >= 0 && setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
            bind(fd, address->ai_addr, address->ai_addrlen) == 0 && listen(fd, backlog) == 0) {
            sockaddr_storage local{};
            socklen_t length = sizeof local;
            getsockname(fd, reinterpret_cast<sockaddr *>(&local), &length);
            bound = Bound{fd, ntohs(local.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6 &>(local).sin6_port
                                                                : reinterpret_cast<sockaddr_in &>(local).sin_port)};
            break;
        }
        *error = QString::fromLocal8Bit(std::strerror(errno));
        if (fd >= 0)
            ::close(fd);
    }
    freeaddrinfo(found);
    return bound;
}

} // namespace ListenSocket
