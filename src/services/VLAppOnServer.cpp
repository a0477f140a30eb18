#include "services/VLAppOnServer.h"

#include "model/StringUtils.h"
#include "model/VLApp.h"
#include "platform/AtomicFile.h"
#include "platform/Log.h"
#include "platform/VLSettings.h"
#include "platform/WebRequest.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

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
    const AtomicFile::Result written = AtomicFile::write(cachePath, result.body);
    if (!written.ok) {
        vlLog(QStringLiteral("Icon cache write error %1 %2").arg(cachePath, written.reason));
    }
    return written.ok;
}

} // namespace

namespace VLAppOnServer {

bool updateWithServerInfo(VLApp &app)
{
    if (app.vlID.isEmpty()) {
        return false;
    }
    const QUrl url(VLSettings().hostURL(SettingKey::serviceHost, QStringLiteral("http")) +
                   QStringLiteral("/vld6appinfo/index/vlid/") + pathSegment(app.vlID));
    const WebResult result = sendWebRequest(WebRequest::get(url, QStringLiteral("App Info")));
    if (!result.succeeded()) {
        return false;
    }
    const QJsonDocument reply = QJsonDocument::fromJson(result.body);
    if (!reply.isObject()) {
        return false;
    }
    app.applyServerInfo(reply.object().toVariantMap());
    return true;
}

bool saveToWatchListOnServer(const VLApp &app)
{
    return changeWatchList(true, app.vlID);
}

bool removeFromWatchListOnServer(const VLApp &app)
{
    return changeWatchList(false, app.vlID);
}

void getIcon(VLApp &app)
{
    if (app.isInstalled()) {
        app.appIcon = app.iconFilePath();
        return;
    }
    if (app.orderid.isEmpty() && app.deal_id.isEmpty() && app.vlID.isEmpty()) {
        app.appIcon = QStringLiteral("");
        return;
    }
    if (app.digestString.isEmpty()) {
        app.digestString = md5HexHash(app.localPath);
    }
    const QString cache = VLApp::catalogueIconPath(app.digestString);
    if (!cache.isEmpty() && (QFileInfo::exists(cache) || fetchCatalogueIcon(app.vlID, cache))) {
        app.appIcon = cache;
    } else {
        app.appIcon = QStringLiteral("");
    }
}

} // namespace VLAppOnServer
