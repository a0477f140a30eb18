#pragma once

// Plain HTTP to a running service, and the decoders the tests need for its replies.

#include "support/ServiceProcess.h"

#include <QJsonObject>
#include <QVariantMap>

#include <httplib.h>

struct HttpAnswer
{
    int status = 0; // 0: no answer
    QByteArray body;
    httplib::Headers headers;
    QByteArray header(const char *name) const;
};

class ServiceClient
{
public:
    explicit ServiceClient(const ServiceProcess &service);
    HttpAnswer get(const QByteArray &target, const httplib::Headers &headers = {});
    HttpAnswer post(const QByteArray &target, const QByteArray &body,
                    const char *contentType = "application/x-www-form-urlencoded");

    // A new connection to the service as a plain blocking socket whose reads give up after 30 s (-1 when it cannot
    // connect); the caller closes it.
    int openSocket() const;
    // Sends head over a new connection, half-closes it when asked, then sends filler again and again until the
    // service answers (64 MiB at most). Returns what the service answered until it closed the connection; closed
    // says whether it did.
    QByteArray exchange(const QByteArray &head, const QByteArray &filler, bool halfClose, bool *closed);

    // POSTs a matching request and returns the decompressed, parsed reply (empty on any failure).
    QJsonObject automatch(const QByteArray &body);
    // Matches one app, sent as index 0, and returns the reply's record for it (empty when nothing matched).
    QJsonObject matchOne(const QByteArray &bundleId, const QByteArray &bundleName = "x.app",
                         const QByteArray &displayName = "x");

private:
    quint16 m_port;
    httplib::Client m_client;
};

namespace Requests {
// One app group of a matching request, encoded as the program encodes it.
QByteArray appFields(int index, const QByteArray &bundleName, const QByteArray &digest, const QByteArray &displayName,
                     const QByteArray &version, const QByteArray &bundleId);
} // namespace Requests

namespace Replies {
// The "entries" of an XML property-list reply, each a dictionary.
QList<QVariantMap> plistEntries(const QByteArray &xml);
// The values of keys as texts, in order, to compare several fields of a reply at once.
QStringList texts(const QJsonObject &object, std::initializer_list<const char *> keys);
QStringList texts(const QVariantMap &map, std::initializer_list<const char *> keys);
} // namespace Replies
