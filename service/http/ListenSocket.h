#pragma once

// The socket the service listens on: non-blocking, with a listen queue as long as the connections it takes at
// once, so a burst of clients waits there rather than being reset.

#include <QString>

#include <optional>

namespace ListenSocket {

struct Bound
{
    int fd;
    int port; // the port really bound (port 0 asks for a free one)
};

std::optional<Bound> open(const QString &host, int port, int backlog, QString *error);

} // namespace ListenSocket
