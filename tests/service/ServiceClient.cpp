#include "ServiceClient.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QTcpSocket>

#include <plist/plist.h>
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

QVariant plistValue(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_STRING: {
        char *text = nullptr;
        plist_get_string_val(node, &text);
        const QString value = QString::fromUtf8(text);
        free(text);
        return value;
    }
    case PLIST_DICT: {
        QVariantMap map;
        plist_dict_iter it = nullptr;
        plist_dict_new_iter(node, &it);
        char *key = nullptr;
        plist_t item = nullptr;
        for (plist_dict_next_item(node, it, &key, &item); key; plist_dict_next_item(node, it, &key, &item)) {
            map.insert(QString::fromUtf8(key), plistValue(item));
            free(key);
            key = nullptr;
        }
        free(it);
        return map;
    }
    case PLIST_ARRAY: {
        QVariantList list;
        for (uint32_t i = 0; i < plist_array_get_size(node); ++i)
            list.append(plistValue(plist_array_get_item(node, i)));
        return list;
    }
    default:
        return {};
    }
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
    plist_t root = nullptr;
    plist_from_xml(xml.constData(), uint32_t(xml.size()), &root);
    if (!root)
        return {};
    QList<QVariantMap> entries;
    for (const QVariant &entry : plistValue(root).toMap().value(QStringLiteral("entries")).toList())
        entries.append(entry.toMap());
    plist_free(root);
    return entries;
}

QString md5Hex(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex());
}

} // namespace Replies
