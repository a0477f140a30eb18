#include "services/VLCartSender.h"

#include "platform/VLSettings.h"
#include "services/VLMemberAccount.h"

#include <QJsonDocument>
#include <QJsonObject>

VLCartSender::VLCartSender(QObject *parent)
    : VLFormSender(QStringLiteral("Velmora Promo Cart failed! Error - %1"), parent)
{
}

void VLCartSender::post(const QString &body)
{
    postForm(SettingKey::dealsHost, QStringLiteral("https"), QStringLiteral("/cart/vld6"), body, 600);
}

QString VLCartSender::orderBody(const VLMemberAccount &form, qint64 promoID)
{
    const QJsonObject order = {{QStringLiteral("address"), form.address}, {QStringLiteral("city"), form.city},
                               {QStringLiteral("state"), form.state},     {QStringLiteral("zip"), form.zip},
                               {QStringLiteral("country"), form.country}, {QStringLiteral("member_id"), form.memberID},
                               {QStringLiteral("promo_id"), promoID}};
    // The form takes the JSON as it stands, not URL-encoded.
    return QStringLiteral("a=") + QString::fromUtf8(QJsonDocument(order).toJson(QJsonDocument::Compact));
}
