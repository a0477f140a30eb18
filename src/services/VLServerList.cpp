#include "services/VLServerList.h"

#include "model/PropertyList.h"
#include "platform/Log.h"
#include "platform/UserFeedback.h"
#include "platform/VLNotificationCenter.h"

VLServerList::VLServerList(const Texts &texts, QObject *parent)
    : VLServiceConnection(texts.failureLine, parent), m_texts(texts)
{
}

const QByteArray &VLServerList::listUserAgent()
{
    static const QByteArray agent = QByteArrayLiteral(
        "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_8_2) AppleWebKit/536.26.14 (KHTML, like Gecko) VLD6");
    return agent;
}

void VLServerList::fetch(WebRequest request)
{
    request.headers.append({QByteArrayLiteral("User-Agent"), listUserAgent()});
    if (!m_texts.startLine.isEmpty()) {
        vlLog(m_texts.startLine);
    }
    startConnection(request);
}

void VLServerList::connectionDidFinishLoading()
{
    QString problem;
    const std::optional<QVariantMap> reply = PropertyList::parseDictionary(receivedData, &problem);
    if (!reply) {
        const QString &line = m_texts.unreadableLine;
        vlLog(line.contains(QLatin1String("%1")) ? line.arg(problem) : line);
        showAlert();
    } else if (reply->contains(QStringLiteral("entries")) &&
               !reply->value(QStringLiteral("entries")).canConvert<QVariantList>()) {
        vlLog(m_texts.exceptionLine);
        showAlert();
    } else {
        // A reply without entries is an empty list, not a fault.
        entriesDictionary = *reply;
        serverApps = reply->value(QStringLiteral("entries")).toList();
    }
    VLNotificationCenter::defaultCenter().post(m_texts.doneFlag);
}

void VLServerList::didFailWithError()
{
    VLNotificationCenter::defaultCenter().post(m_texts.doneFlag);
}

void VLServerList::showAlert() const
{
    if (!m_texts.alertMessage.isEmpty()) {
        UserFeedback::current().showAlert(m_texts.alertMessage, QString());
    }
}
