#include "services/VLReportProblemSender.h"

#include "model/StringUtils.h"
#include "model/VLApp.h"
#include "platform/VLSettings.h"

VLReportProblemSender::VLReportProblemSender(QObject *parent)
    : VLFormSender(QStringLiteral("Problem report connection failed! Error - %1"), parent)
{
}

QString VLReportProblemSender::reportBody(const QString &issue, const VLApp &app, int memberID)
{
    return QStringLiteral("issue=") + base64Encoding(issue.toUtf8()) + QStringLiteral("&m=") +
           QString::number(memberID == 0 ? -1 : memberID) + QStringLiteral("&appid=") + app.vlID +
           QStringLiteral("&appname=") + urlEncodeValue(app.name) + QStringLiteral("&installedversion=") +
           app.localVersion + QStringLiteral("&vlversion=") + app.vlVersion + QStringLiteral("&bundle=") +
           app.bundleID + QStringLiteral("&vld=6.0.4&path=") + app.localPath;
}

void VLReportProblemSender::reportIssue(const QString &issue, const VLApp &app, int memberID)
{
    postForm(SettingKey::serviceHost, QStringLiteral("https"), QStringLiteral("/vld6scan/reportproblem"),
             reportBody(issue, app, memberID), 10, reportUserAgent());
}
