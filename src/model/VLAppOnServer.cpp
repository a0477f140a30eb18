// The record's own calls to the service and the site: app information, watch-list changes and catalogue icons.
// Each waits for its reply on the calling thread.

#include "model/Log.h"
#include "model/StringUtils.h"
#include "model/VLApp.h"
#include "scan/VLSettings.h"
#include "services/WebRequest.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace {

QString pathSegment(const QString &text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

// Watch-list changes are made for the member who last logged in; with nobody logged in there is nothing to change.
bool changeWatchList(bool adding, const QString &vlID)
{
    VLSettings settings;
    const QString member = settings.value(QLatin1String(SettingKey::lastlogin)).toString();
    if (member.isEmpty() || vlID.isEmpty()) {
        return false;
    }
    QString path = (adding ? QStringLiteral("/vld6watchlists/awl/z/") : QStringLiteral("/vld6watchlists/rwl/z/")) +
                   md5HexHash(member) + QStringLiteral("/m/") + pathSegment(vlID);
    if (adding) {
        path += settings.boolValue(SettingKey::sendEmail) ? QStringLiteral("/e/1") : QStringLiteral("/e/0");
    }
    const QUrl url(settings.hostURL(SettingKey::serviceHost, QStringLiteral("https")) + path);
    return sendWebRequest(WebRequest::get(url, QStringLiteral("Watch List"))).succeeded();
}

bool isPng(const QByteArray &bytes)
{
    return bytes.startsWith(QByteArrayLiteral("\x89PNG\r\n\x1a\n"));
}

bool fetchCatalogueIcon(const QString &vlID, const QString &cachePath)
{
    if (vlID.isEmpty()) {
        return false;
    }
    const QUrl url(VLSettings().hostURL(SettingKey::siteHost, QStringLiteral("http")) +
                   QStringLiteral("/util/iconlg/") + pathSegment(vlID) + QStringLiteral(".png"));
    WebRequest request = WebRequest::get(url, QStringLiteral("Icon"));
    request.headers.append({QByteArrayLiteral("Accept-Encoding"), QByteArrayLiteral("identity")});
    const WebResult result = sendWebRequest(request);
    // Only a PNG is kept: the cache holds PNG files, and an error page must not become an icon.
    if (!result.succeeded() || !isPng(result.body)) {
        return false;
    }
    QDir().mkpath(QFileInfo(cachePath).path());
    // Written whole or not at all, so a reader on another thread or process never sees half an image.
    QSaveFile file(cachePath);
    return file.open(QIODevice::WriteOnly) && file.write(result.body) == result.body.size() && file.commit();
}

} // namespace

bool VLApp::updateWithServerInfo()
{
    if (vlID.isEmpty()) {
        return false;
    }
    const QUrl url(VLSettings().hostURL(SettingKey::serviceHost, QStringLiteral("http")) +
                   QStringLiteral("/vld6appinfo/index/vlid/") + pathSegment(vlID));
    const WebResult result = sendWebRequest(WebRequest::get(url, QStringLiteral("App Info")));
    if (!result.succeeded()) {
        return false;
    }
    const QJsonDocument reply = QJsonDocument::fromJson(result.body);
    if (!reply.isObject()) {
        return false;
    }
    applyServerInfo(reply.object().toVariantMap());
    return true;
}

bool VLApp::saveToWatchListOnServer() const
{
    return changeWatchList(true, vlID);
}

bool VLApp::removeFromWatchListOnServer() const
{
    return changeWatchList(false, vlID);
}

void VLApp::getIcon()
{
    if (isInstalled()) {
        appIcon = iconFilePath();
        return;
    }
    if (orderid.isEmpty() && deal_id.isEmpty() && vlID.isEmpty()) {
        appIcon = QStringLiteral("");
        return;
    }
    if (digestString.isEmpty()) {
        digestString = md5HexHash(localPath);
    }
    const QString cache = catalogueIconPath(digestString);
    if (!cache.isEmpty() && (QFileInfo::exists(cache) || fetchCatalogueIcon(vlID, cache))) {
        appIcon = cache;
    } else {
        appIcon = QStringLiteral("");
    }
}
