#include "services/RFShortURL.h"

#include "platform/Log.h"
#include "platform/VLSettings.h"

RFShortURL::RFShortURL(QObject *parent) : VLServiceConnection(QStringLiteral("WHOOPS! Something went wrong"), parent) {}

void RFShortURL::shortURL(const QString &link)
{
    // Only "http://" counts as a scheme here: an "https://" link gets the prefix too.
    m_original = link.startsWith(QLatin1String("http://")) ? link : QStringLiteral("http://") + link;
    WebRequest request = WebRequest::get(QUrl(VLSettings().hostURL(SettingKey::shortenerHost, QStringLiteral("http")) +
                                              QStringLiteral("/api-create.php?url=") + m_original));
    request.timeoutMs = 10 * 1000;
    request.headers.append({QByteArrayLiteral("Cache-Control"), QByteArrayLiteral("no-cache")});
    startConnection(request);
}

void RFShortURL::connectionDidFinishLoading()
{
    const QString shortUrl = QString::fromLatin1(receivedData);
    vlLog(QStringLiteral("back from tinyurl %1").arg(shortUrl));
    emit receivedUrl(shortUrl, m_original);
}
