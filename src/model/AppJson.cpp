#include "model/AppJson.h"

#include "model/VLApp.h"

namespace {
QJsonValue text(const QString &value)
{
    return value.isNull() ? QJsonValue(QJsonValue::Null) : QJsonValue(value);
}
} // namespace

QJsonObject appToJson(const VLApp &app)
{
    QJsonObject json = app.encodeWithCoder();
    json.insert(QStringLiteral("kind"), text(app.kind));
    json.insert(QStringLiteral("appIcon"), text(app.appIcon));
    json.insert(QStringLiteral("requiresNewerOSVersion"), app.requiresNewerOSVersion);
    json.insert(QStringLiteral("deal_url"), text(app.deal_url));
    json.insert(QStringLiteral("discount"), text(app.discount));
    json.insert(QStringLiteral("deal_price"), text(app.deal_price));
    json.insert(QStringLiteral("deal_vers"), text(app.deal_vers));
    json.insert(QStringLiteral("parent_promo_id"), text(app.parent_promo_id));
    json.insert(QStringLiteral("orderTotal"), text(app.orderTotal));
    json.insert(QStringLiteral("downloadPath"), text(app.downloadPath));
    return json;
}

QJsonArray appsToJson(const QList<VLApp> &apps)
{
    QJsonArray array;
    for (const VLApp &app : apps) {
        array.append(appToJson(app));
    }
    return array;
}
