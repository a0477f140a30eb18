#include "ServiceClient.h"

#include "model/PropertyList.h"

#include <QJsonDocument>
#include <QTcpSocket>

#include <zlib.h>

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

QByteArray ServiceClient::raw(const QByteArray &request)
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), m_port);
    if (!socket.waitForConnected(5000))
        return {};
    socket.write(request);
    QByteArray answer;
    while (socket.state() == QAbstractSocket::ConnectedState && socket.waitForReadyRead(5000))
        answer += socket.readAll();
    return answer + socket.readAll();
}

QJsonObject ServiceClient::automatch(const QByteArray &body)
{
    const HttpAnswer reply = post("/vld603scan/automatch", body);
    return reply.status == 200 ? QJsonDocument::fromJson(Replies::inflate(reply.body)).object() : QJsonObject();
}

namespace Replies {

QByteArray inflate(const QByteArray &zlibStream)
{
    // As the program does: start at twice the size and double while zlib says the buffer is too small.
    uLongf capacity = uLongf(std::max<qsizetype>(64, zlibStream.size() * 2));
    for (;;) {
        QByteArray out(qsizetype(capacity), Qt::Uninitialized);
        uLongf length = capacity;
        const int rc = uncompress(reinterpret_cast<Bytef *>(out.data()), &length,
                                  reinterpret_cast<const Bytef *>(zlibStream.constData()), uLong(zlibStream.size()));
        if (rc == Z_OK)
            return out.left(qsizetype(length));
        if (rc != Z_BUF_ERROR)
            return {};
        capacity *= 2;
    }
}

QList<QVariantMap> plistEntries(const QByteArray &xml)
{
    const QVariantMap root = PropertyList::parseDictionary(xml).value_or(QVariantMap());
    QList<QVariantMap> entries;
    for (const QVariant &entry : root.value(QStringLiteral("entries")).toList())
        entries.append(entry.toMap());
    return entries;
}

} // namespace Replies
