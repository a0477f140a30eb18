#include "services/VLCartSender.h"

#include "platform/VLSettings.h"

VLCartSender::VLCartSender(QObject *parent)
    : VLFormSender(QStringLiteral("Velmora Promo Cart failed! Error - %1"), parent)
{
}

void VLCartSender::post(const QString &body)
{
    postForm(SettingKey::dealsHost, QStringLiteral("https"), QStringLiteral("/cart/vld6"), body, 600);
}
