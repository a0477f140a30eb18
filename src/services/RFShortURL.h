#pragma once

// Turns a long link into a short one with the short-link host: one asynchronous request; receivedUrl follows
// when a reply came (whatever it says), nothing when the connection failed.

#include "services/VLServiceConnection.h"

class RFShortURL : public VLServiceConnection
{
    Q_OBJECT

public:
    explicit RFShortURL(QObject *parent = nullptr);
    void shortURL(const QString &link);

signals:
    void receivedUrl(const QString &shortUrl, const QString &originalUrl);

private:
    void connectionDidFinishLoading() override;

    QString m_original;
};
