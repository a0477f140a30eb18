#include "ServiceClient.h"

#include "model/PropertyList.h"
#include "platform/RAZipper.h"

#include <QJsonDocument>

#include <cerrno>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

QByteArray HttpAnswer::header(const char *name) const
{
    const auto it = headers.find(name);
    return it == headers.end() ? QByteArray() : QByteArray::fromStdString(it->second);
}

ServiceClient::ServiceClient(const ServiceProcess &service) : m_port(service.port()), m_client("127.0.0.1", m_port)
{
    m_client.set_read_timeout(30);
}

namespace {

HttpAnswer answer(const httplib::Result &result)
{
    if (!result)
        return {};
    return {result->status, QByteArray::fromStdString(result->body), result->headers};
}

} // namespace

HttpAnswer ServiceClient::get(const QByteArray &target, const httplib::Headers &headers)
{
    return answer(m_client.Get(target.toStdString(), headers));
}

HttpAnswer ServiceClient::post(const QByteArray &target, const QByteArray &body, const char *contentType)
{
    return answer(m_client.Post(target.toStdString(), body.toStdString(), contentType));
}

int ServiceClient::openSocket() const
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const timeval patience{30, 0}; // a bound on a read that would hang, not a timing
    ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(m_port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
        return fd;
    ::close(fd);
    return -1;
}

QByteArray ServiceClient::exchange(const QByteArray &head, const QByteArray &filler, bool halfClose, bool *closed)
{
    *closed = false;
    const int fd = openSocket();
    if (fd < 0)
        return {};
    bool sending = ::send(fd, head.constData(), size_t(head.size()), MSG_NOSIGNAL) == head.size();
    if (halfClose)
        ::shutdown(fd, SHUT_WR);
    // Whole fillers only, so a chunked body stays well formed however the socket takes it.
    for (qint64 sent = 0; sending && !filler.isEmpty() && sent < 64 * 1024 * 1024;) {
        pollfd wait{fd, POLLIN | POLLOUT, 0};
        sending = ::poll(&wait, 1, 10000) > 0 && !(wait.revents & (POLLIN | POLLHUP | POLLERR));
        const qsizetype offset = sent % filler.size();
        const ssize_t n = sending ? ::send(fd, filler.constData() + offset, size_t(filler.size() - offset),
                                           MSG_NOSIGNAL | MSG_DONTWAIT)
                                  : -1;
        sending = n >= 0 || errno == EAGAIN;
        sent += std::max<ssize_t>(n, 0);
    }
    QByteArray answer;
    char buffer[16384];
    for (pollfd wait{fd, POLLIN, 0}; ::poll(&wait, 1, 10000) > 0;) {
        const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
        *closed = n <= 0; // an end, or a reset once the answer is in
        if (n <= 0)
            break;
        answer.append(buffer, n);
    }
    ::close(fd);
    return answer;
}

QJsonObject ServiceClient::automatch(const QByteArray &body)
{
    const HttpAnswer reply = post("/vld603scan/automatch", body);
    return reply.status == 200
               ? QJsonDocument::fromJson(RAZipper::dataForCompressedData(reply.body).value_or(QByteArray())).object()
               : QJsonObject();
}

QJsonObject ServiceClient::matchOne(const QByteArray &bundleId, const QByteArray &bundleName,
                                    const QByteArray &displayName)
{
    return automatch("vld=6.0.4" + Requests::appFields(0, bundleName, "p0", displayName, "1.0", bundleId))
        .value(QStringLiteral("0"))
        .toObject();
}

QByteArray Requests::appFields(int index, const QByteArray &bundleName, const QByteArray &digest,
                               const QByteArray &displayName, const QByteArray &version, const QByteArray &bundleId)
{
    const QByteArray i = QByteArray::number(index);
    return "&app[" + i + "][t]=" + bundleName.toPercentEncoding() + "&app[" + i + "][p]=" + digest + "&app[" + i +
           "][d]=" + displayName.toPercentEncoding() + "&app[" + i + "][v]=" + version + "&app[" + i +
           "][b]=" + bundleId.toPercentEncoding() + "&app[" + i + "][m]=(null)";
}

namespace Replies {

QList<QVariantMap> plistEntries(const QByteArray &xml)
{
    const QVariantMap root = PropertyList::parseDictionary(xml).value_or(QVariantMap());
    QList<QVariantMap> entries;
    for (const QVariant &entry : root.value(QStringLiteral("entries")).toList())
        entries.append(entry.toMap());
    return entries;
}

} // namespace Replies

QStringList Replies::texts(const QJsonObject &object, std::initializer_list<const char *> keys)
{
    return texts(object.toVariantMap(), keys);
}

QStringList Replies::texts(const QVariantMap &map, std::initializer_list<const char *> keys)
{
    QStringList values;
    for (const char *key : keys)
        values.append(map.value(QLatin1StringView(key)).toString());
    return values;
}
