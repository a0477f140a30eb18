#include "services/VLPurchases.h"

#include "platform/VLSettings.h"

#include <QCoreApplication>

VLPurchases::VLPurchases(QObject *parent)
    : VLServerList(
          {QStringLiteral("Getting Purchases..."), QStringLiteral("error 2 initializing purchases app data - %1"),
           QStringLiteral("error initializing Purchase data from server"),
           QCoreApplication::translate("VLPurchases", "There was an error receiving purchase history."),
           QStringLiteral("Purhcases Connection failed! Error - %1"), QStringLiteral("VLULoadPurchasesDoneFlag")},
          parent)
{
}

void VLPurchases::getPurchases(const QString &body)
{
    const QUrl url(VLSettings().hostURL(SettingKey::serviceHost, QStringLiteral("https")) +
                   QStringLiteral("/vld6purchases/getpurchases"));
    WebRequest request = WebRequest::postForm(url, body.toLatin1(), QString(), WebRequest::Kind::List);
    request.timeoutMs = 1200 * 1000;
    fetch(request);
}
