#include "http/FrontConnection.h"

#include "http/RequestLog.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

void describe(const sockaddr_storage &address, std::string &host, int &port)
{
    char text[INET6_ADDRSTRLEN] = "";
    if (address.ss_family == AF_INET6) {
        const auto &v6 = reinterpret_cast<const sockaddr_in6 &>(address);
        inet_ntop(AF_INET6, &v6.sin6_addr, text, sizeof text);
        port = ntohs(v6.sin6_port);
    } else if (address.ss_family == AF_INET) {
        const auto &v4 = reinterpret_cast<const sockaddr_in &>(address);
        inet_ntop(AF_INET, &v4.sin_addr, text, sizeof text);
        port = ntohs(v4.sin_port);
    }
    host = text;
}

const char *statusText(int status)
{
    switch (status) {
    case 408:
        return "Request Timeout";
    case 413:
        return "Content Too Large";
    case 414:
        return "URI Too Long";
    case 415:
        return "Unsupported Media Type";
    case 417:
        return "Expectation Failed";
    case 431:
        return "Request Header Fields Too Large";
    case 501:
        return "Not Implemented";
    case 503:
        return "Service Unavailable";
    case 505:
        return "HTTP Version Not Supported";
    default:
        return "Bad Request";
    }
}

// The method and target for the log: from the parsed head, else from the start of the request line.
std::pair<std::string, std::string> requestLine(const FrontConnection &connection)
{
    if (!connection.head.method.empty())
        return {connection.head.method, connection.head.target};
    const std::string_view input(connection.input);
    const std::string_view line = input.substr(0, std::min({input.find('\r'), input.find('\n'), size_t(2048)}));
    const size_t space = line.find(' ');
    if (space == std::string_view::npos)
        return {"-", "-"};
    const std::string_view rest = line.substr(space + 1);
    return {std::string(line.substr(0, space)), std::string(rest.substr(0, rest.find(' ')))};
}

} // namespace

FrontConnection::FrontConnection(int socket) : fd(socket)
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (getpeername(fd, reinterpret_cast<sockaddr *>(&address), &length) == 0)
        describe(address, client, clientPort);
    length = sizeof address;
    if (getsockname(fd, reinterpret_cast<sockaddr *>(&address), &length) == 0)
        describe(address, local, localPort);
}

FrontConnection::~FrontConnection()
{
    ::close(fd);
}

void FrontConnection::enter(Phase next)
{
    phase = next;
    since = Clock::now();
}

void FrontConnection::refuse(const Refusal &refusal)
{
    const std::string reason = std::string(refusal.reason) + '\n';
    const std::string answer =
        "HTTP/1.1 " + std::to_string(refusal.status) + ' ' + statusText(refusal.status) +
        "\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Length: " + std::to_string(reason.size()) +
        "\r\nConnection: close\r\n\r\n" + reason;
    // A short answer to a fresh connection fits its send buffer; a client that reads nothing loses it.
    ::send(fd, answer.data(), answer.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    const auto [method, target] = requestLine(*this);
    RequestLog::write(client, method, target, refusal.status, std::to_string(reason.size()), refusal.reason);
    finish();
}

void FrontConnection::finish()
{
    ::shutdown(fd, SHUT_WR);
    input.clear();
    std::string().swap(body);
    enter(clientClosed ? Phase::Closed : Phase::Linger);
}
