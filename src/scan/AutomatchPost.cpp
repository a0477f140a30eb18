#include "scan/AutomatchPost.h"

#include "model/DateDescription.h"
#include "model/StringUtils.h"
#include "model/VLApp.h"
#include "platform/VLSettings.h"

namespace {

QString orNull(const QString &value)
{
    return value.isNull() ? QStringLiteral("(null)") : value;
}

QString encoded(const QString &value)
{
    return orNull(urlEncodeValue(value));
}

QString head(const MemberFields &member, const QString &type)
{
    const VLSettings settings;
    return QStringLiteral("vld=6.0.4&c=") + encoded(settings.stringValue(SettingKey::serial)) + QStringLiteral("&p=") +
           QString::number(member.membership) + QStringLiteral("&mid=") + QString::number(member.memberID) +
           QStringLiteral("&uuid=") + encoded(settings.stringValue(SettingKey::penguin)) + QStringLiteral("&type=") +
           type;
}

} // namespace

namespace AutomatchPost {

QString createPost(const MemberFields &member)
{
    return head(member, QStringLiteral("auto"));
}

QString createPostBackGroundScan(const MemberFields &member)
{
    return head(member, QStringLiteral("background"));
}

QString createPostManualScan(const MemberFields &member)
{
    return head(member, QStringLiteral("manual"));
}

void appendAppFields(QString &post, int index, const VLApp &app)
{
    if (app.localPath == QLatin1String("-")) {
        return;
    }
    const QString prefix = QStringLiteral("&app[") + QString::number(index) + QStringLiteral("][");
    const QString opened = app.lastOpened.isValid() ? encoded(dateDescription(app.lastOpened)) : orNull({});
    post += prefix + QStringLiteral("t]=") + encoded(app.name);
    post += prefix + QStringLiteral("p]=") + orNull(app.digestString);
    post += prefix + QStringLiteral("d]=") + encoded(app.localizedName);
    post += prefix + QStringLiteral("v]=") + orNull(app.localVersion);
    post += prefix + QStringLiteral("b]=") + encoded(app.bundleID);
    post += prefix + QStringLiteral("m]=") + opened;
}

} // namespace AutomatchPost
