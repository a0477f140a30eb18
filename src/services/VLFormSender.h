#pragma once

// A fire-and-forget form post to a Velmora host: the body as given (its UTF-8 bytes), Content-Type
// "application/x-www-form-urlencoded", the reply kept in receivedData and not read further.

#include "services/VLServiceConnection.h"

class VLFormSender : public VLServiceConnection
{
    Q_OBJECT

protected:
    using VLServiceConnection::VLServiceConnection;
    // scheme: the one used unless the host setting names its own.
    void postForm(const char *hostKey, const QString &scheme, const QString &path, const QString &body,
                  int timeoutSeconds, const QByteArray &userAgent = QByteArray());

    // The agent the report forms are sent with.
    static const QByteArray &reportUserAgent();
};
