#include "scan/InstallLinks.h"

#include "model/VersionRules.h"
#include "platform/Log.h"
#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"
#include "platform/WebRequest.h"
#include "scan/VLScanData.h"
#include "services/VLAppOnServer.h"
#include "services/VLGoogleTracking.h"

#include <QUrl>

namespace {

constexpr int kBundleReplyLimit = 64 * 1024;

bool canBeInstalledFromLink(const VLApp &app)
{
    return app.vld_install_from_link != QLatin1String("2") && !app.download_url.isEmpty();
}

} // namespace

namespace InstallLinks {

QStringList linkedIds(const QString &link)
{
    const QStringList parts = link.split(QLatin1Char('/'));
    const qsizetype bundle = parts.indexOf(QStringLiteral("bundle"));
    if (bundle < 0) {
        // velmora://app/VLID/NAME/VERSION: index 3 is the catalogue id.
        return parts.size() >= 6 && parts.at(2) == QLatin1String("app") && !parts.at(3).isEmpty()
                   ? QStringList{parts.at(3)}
                   : QStringList();
    }
    if (bundle + 1 >= parts.size() || parts.at(bundle + 1).isEmpty()) {
        return {};
    }
    WebRequest request = WebRequest::get(QUrl(VLSettings().hostURL(SettingKey::serviceHost, QStringLiteral("http")) +
                                              QStringLiteral("/bundle/") +
                                              QString::fromLatin1(QUrl::toPercentEncoding(parts.at(bundle + 1)))),
                                         QStringLiteral("Install Link"));
    const WebResult result = sendWebRequest(request);
    if (!result.succeeded() || result.body.size() > kBundleReplyLimit) {
        return {};
    }
    QStringList ids;
    for (const QString &id : QString::fromUtf8(result.body).trimmed().split(QLatin1Char(','))) {
        if (!id.trimmed().isEmpty()) {
            ids << id.trimmed();
        }
    }
    return ids;
}

Decision decide(const VLApp *stored, const VLApp &catalogue, const QString &linkedVersion)
{
    const bool installed = stored && stored->isInstalled();
    if (!canBeInstalledFromLink(catalogue)) {
        vlLog(QStringLiteral("installed app cannot be installed from link %1").arg(catalogue.vlID));
        return Decision::CannotInstall;
    }
    if (installed && !linkedVersion.isEmpty() &&
        isLocalVersionOutdatedByRemoteVersion(stored->localVersion, linkedVersion)) {
        vlLog(QStringLiteral("installed app is showing older VL version than install from link version - updating "
                             "%1 %2 %3 %4")
                  .arg(stored->displayName, stored->localVersion, linkedVersion, catalogue.vlID));
        return Decision::Update;
    }
    if (!installed || stored->isOutdated) {
        vlLog(QStringLiteral("linked app is outdated or not installed %1").arg(catalogue.vlID));
        return installed ? Decision::Update : Decision::Install;
    }
    return Decision::UpToDate;
}

QList<LinkedApp> installFromLink(const QString &link, const VLScanData &store)
{
    VLGoogleTracking::trackProgramEvent(QStringLiteral("INSTALL_FROM_LINK"));
    // An app link names the version it offers; a bundle link leaves it to the catalogue.
    const std::optional<VLApp> linkedApp = VLApp::initWithLink(link);
    const QString linkedVersion = linkedApp ? linkedApp->vlVersion : QString();
    QList<LinkedApp> linked;
    for (const QString &id : linkedIds(link)) {
        AppRef stored = store.appWithVLID(id);
        AppRef catalogue = stored;
        if (!catalogue || catalogue->download_url.isEmpty()) {
            catalogue = std::make_shared<VLApp>(stored ? *stored : VLApp());
            catalogue->vlID = id;
            if (!VLAppOnServer::updateWithServerInfo(*catalogue) && !stored) {
                continue; // the service does not know the id
            }
        }
        linked.append({stored ? stored : catalogue, decide(stored.get(), *catalogue, linkedVersion)});
        VLNotificationCenter::defaultCenter().post(QStringLiteral("VLViewAppDetails"),
                                                   QVariant::fromValue(linked.last().app));
    }
    VLNotificationCenter::defaultCenter().post(QStringLiteral("VLAppInstallCompletedReload"));
    return linked;
}

} // namespace InstallLinks
