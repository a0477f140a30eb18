#include "services/VLFormSender.h"

#include "platform/VLSettings.h"

void VLFormSender::postForm(const char *hostKey, const QString &scheme, const QString &path, const QString &body,
                            int timeoutSeconds, const QByteArray &userAgent)
{
    const QUrl url(VLSettings().hostURL(hostKey, scheme) + path);
    WebRequest request = WebRequest::postForm(url, body.toUtf8());
    request.timeoutMs = timeoutSeconds * 1000;
    if (!userAgent.isEmpty()) {
        request.headers.append({QByteArrayLiteral("User-Agent"), userAgent});
    }
    startConnection(request);
}

const QByteArray &VLFormSender::reportUserAgent()
{
    static const QByteArray agent = QByteArrayLiteral("Mozilla/5.0 (Macintosh; U; PPC Mac OS X; en-us) "
                                                      "AppleWebKit/125.2.3 (KHTML, like Gecko) Velmora Desktop/6.0");
    return agent;
}
