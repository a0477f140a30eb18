#include "ServiceClient.h"

#include "model/PropertyList.h"
#include "platform/RAZipper.h"

#include <QJsonDocument>
#include <QTcpSocket>

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
    return reply.status == 200
               ? QJsonDocument::fromJson(RAZipper::dataForCompressedData(reply.body).value_or(QByteArray())).object()
               : QJsonObject();
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
