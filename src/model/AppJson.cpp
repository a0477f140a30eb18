#include "model/AppJson.h"

#include "model/VLApp.h"

namespace {

// The fields the store does not keep, by their own names.
const std::pair<const char *, QString VLApp::*> shownTexts[] = {
    {"kind", &VLApp::kind},
    {"appIcon", &VLApp::appIcon},
    {"deal_url", &VLApp::deal_url},
    {"discount", &VLApp::discount},
    {"deal_price", &VLApp::deal_price},
    {"deal_vers", &VLApp::deal_vers},
    {"parent_promo_id", &VLApp::parent_promo_id},
    {"orderTotal", &VLApp::orderTotal},
    {"downloadPath", &VLApp::downloadPath},
};

} // namespace

QJsonObject appToJson(const VLApp &app)
{
    QJsonObject json = app.encodeWithCoder();
    for (const auto &[key, member] : shownTexts) {
        const QString &text = app.*member;
        json.insert(QLatin1String(key), text.isNull() ? QJsonValue(QJsonValue::Null) : QJsonValue(text));
    }
    json.insert(QStringLiteral("requiresNewerOSVersion"), app.requiresNewerOSVersion);
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
