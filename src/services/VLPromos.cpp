#include "services/VLPromos.h"

#include "platform/VLSettings.h"

VLPromos::VLPromos(QObject *parent)
    : VLServerList({QString(), QStringLiteral("error initializing promos data from server"),
                    QStringLiteral("error initializing promos data from server"), QString(),
                    QStringLiteral("Promos Connection failed! Error - %1"), QStringLiteral("VLULoadPromosDoneFlag")},
                   parent)
{
}

void VLPromos::getPromos(const QString &what)
{
    Q_UNUSED(what);
    const QUrl url(VLSettings().hostURL(SettingKey::dealsHost, QStringLiteral("http")) +
                   QStringLiteral("/api/promosplist"));
    WebRequest request = WebRequest::get(url, QString(), WebRequest::Kind::List);
    request.headers.append({QByteArrayLiteral("Content-Type"), QByteArrayLiteral("application/x-www-form-urlencoded")});
    request.timeoutMs = 1200 * 1000;
    fetch(request);
}
