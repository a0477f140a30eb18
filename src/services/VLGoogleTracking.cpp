#include "services/VLGoogleTracking.h"

#include "model/StringUtils.h"
#include "platform/VLSettings.h"
#include "platform/WebRequest.h"
#include "services/FireAndForget.h"

namespace {
const QString kTrackingId = QStringLiteral("UA-271828-3");
const QByteArray kUserAgent = QByteArrayLiteral("Mozilla/5.0 (Macintosh; U; PPC Mac OS X; en-us) AppleWebKit/125.2.3 "
                                                "(KHTML, like Gecko) Velmora Desktop/6.0");
} // namespace

namespace VLGoogleTracking {

QByteArray hitBody(const QString &hitType, const QString &category, const QString &action, const QString &label,
                   const QString &value)
{
    const QString clientId = urlEncodeValue(VLSettings().stringValue(SettingKey::penguin));
    const QString text = QStringLiteral("v=1&tid=") + kTrackingId + QStringLiteral("&cid=") + clientId +
                         QStringLiteral("&an=VLD&av=6.0.4&t=") + hitType + QStringLiteral("&ec=") + category +
                         QStringLiteral("&ea=") + action + QStringLiteral("&el=") + label + QStringLiteral("&ev=") +
                         value;
    return text.toUtf8();
}

void trackEvent(const QString &hitType, const QString &category, const QString &action, const QString &label,
                const QString &value)
{
    const VLSettings settings;
    if (!settings.boolValue(SettingKey::sendAnalytics)) {
        return;
    }
    WebRequest request = WebRequest::postForm(
        QUrl(settings.hostURL(SettingKey::analyticsHost, QStringLiteral("http")) + QStringLiteral("/collect")),
        hitBody(hitType, category, action, label, value), QStringLiteral("Analytics"));
    request.headers.append({QByteArrayLiteral("User-Agent"), kUserAgent});
    // The reply says nothing the program needs; a failed connection is logged by the request itself.
    FireAndForget::send(request);
}

void trackProgramEvent(const QString &action, const QString &label, const QString &value)
{
    trackEvent(QStringLiteral("event"), QString::fromLatin1(kCategory), action, label, value);
}

void waitForPendingHits(int timeoutMs)
{
    FireAndForget::finish(timeoutMs);
}

} // namespace VLGoogleTracking
