#include "services/VLBadPlistSender.h"

#include "model/StringUtils.h"
#include "platform/VLSettings.h"

VLBadPlistSender::VLBadPlistSender(QObject *parent)
    : VLFormSender(QStringLiteral("Bad plist report connection failed! Error - %1"), parent)
{
}

void VLBadPlistSender::uploadlist(const QByteArray &plist, int memberID)
{
    const QString body = QStringLiteral("plist=") + base64Encoding(plist) + QStringLiteral("&m=") +
                         QString::number(memberID == 0 ? -1 : memberID);
    postForm(SettingKey::serviceHost, QStringLiteral("https"), QStringLiteral("/vld6scan/badplist"), body, 10,
             reportUserAgent());
}
