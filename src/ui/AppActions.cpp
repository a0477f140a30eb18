#include "ui/AppActions.h"

#include "model/RecordText.h"
#include "model/UserChoices.h"
#include "platform/DesktopOpener.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"
#include "scan/VLMainWindowController.h"
#include "scan/VLScanData.h"
#include "services/RFShortURL.h"
#include "services/VLAppOnServer.h"
#include "services/VLGoogleTracking.h"
#include "services/VLMemberAccount.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QRegularExpression>
#include <QThreadPool>

AppActions::AppActions(VLMainWindowController &driver, QObject *parent) : QObject(parent), m_driver(driver) {}

RowMenuContext AppActions::rowMenuContext()
{
    const QString applications = VLSettings().volumeRoot() + QStringLiteral("Applications/");
    return {m_driver.memberAccount().isLoggedIn, QFileInfo::exists(applications + QStringLiteral("VLDVersion.app")),
            QFileInfo::exists(applications + QStringLiteral("AppDelete.app"))};
}

void AppActions::perform(PanelAction action, const AppRef &app)
{
    switch (action) {
    case PanelAction::Ignore:
        setIgnored(app, true);
        break;
    case PanelAction::AddToWatchList:
        setOnWatchList(app, true);
        break;
    case PanelAction::RemoveFromWatchList:
        setOnWatchList(app, false);
        break;
    case PanelAction::ViewOnSite:
        viewOnVelmora(*app);
        break;
    case PanelAction::ViewInMacAppStore:
        viewInMacAppStore(*app);
        break;
    case PanelAction::Open:
        launchApp(*app);
        break;
    case PanelAction::Reveal:
        revealInFinder(*app);
        break;
    case PanelAction::OpenVLDV:
    case PanelAction::OpenAppDelete:
        if (action == PanelAction::OpenAppDelete) {
            setIgnored(app, true);
        }
        DesktopOpener::open(app->localPath);
        break;
    case PanelAction::SetVersionToCurrent:
        setVersionToCurrent(app, true);
        break;
    case PanelAction::UnsetVersionToCurrent:
        setVersionToCurrent(app, false);
        break;
    default:
        break;
    }
}

QString AppActions::urlTitle(const QString &name)
{
    static const QRegularExpression separators(QStringLiteral("[^\\p{L}\\p{N}]+"));
    QString title = name.toLower().replace(separators, QStringLiteral("-"));
    while (title.startsWith(QLatin1Char('-'))) {
        title.remove(0, 1);
    }
    while (title.endsWith(QLatin1Char('-'))) {
        title.chop(1);
    }
    return title;
}

QString AppActions::appPageURL(const VLApp &app)
{
    return VLSettings().hostURL(SettingKey::siteHost) + QStringLiteral("/app/mac/") + app.vlID + QLatin1Char('/') +
           urlTitle(app.name);
}

QString AppActions::revealPath(const QString &localPath)
{
    if (QFileInfo::exists(localPath)) {
        return localPath;
    }
    const QFileInfo info(localPath);
    const QString folder = info.path() + QLatin1Char('/') + info.completeBaseName() + QStringLiteral(" Folder");
    if (QFileInfo::exists(folder)) {
        return folder;
    }
    return info.path();
}

void AppActions::launchApp(const VLApp &app)
{
    DesktopOpener::open(app.localPath);
}

void AppActions::revealInFinder(const VLApp &app)
{
    FileManager::showItem(revealPath(app.localPath));
}

void AppActions::viewOnVelmora(const VLApp &app)
{
    DesktopOpener::open(appPageURL(app));
}

void AppActions::viewInMacAppStore(const VLApp &app)
{
    const auto storeLink = [](const QString &link) {
        return link.contains(QLatin1String("apps.apple.com")) || link.contains(QLatin1String("itunes.apple.com"));
    };
    QString link = storeLink(app.download_url) ? app.download_url : storeLink(app.mas_url) ? app.mas_url : QString();
    if (link.isEmpty()) {
        link = QStringLiteral("macappstore://showUpdatesPage");
    } else {
        link.replace(QStringLiteral("https"), QStringLiteral("macappstore"))
            .replace(QStringLiteral("http"), QStringLiteral("macappstore"));
    }
    VLGoogleTracking::trackProgramEvent(QStringLiteral("SHOW_APP_MAS"));
    DesktopOpener::open(link);
}

void AppActions::saveStore()
{
    m_driver.scanData().saveDataToDisk();
}

void AppActions::setIgnored(const AppRef &app, bool ignored)
{
    {
        const VLScanData::Change change(m_driver.scanData());
        ignored ? UserChoices::ignore(*app) : UserChoices::unignore(*app);
        saveStore();
    }
    if (ignored) {
        VLGoogleTracking::trackProgramEvent(QStringLiteral("IGNORE_APP"));
    }
    VLNotificationCenter::defaultCenter().post(QStringLiteral("VLAppIgnored"), QVariant::fromValue(app));
    emit appChanged(app);
}

void AppActions::setVersionToCurrent(const AppRef &app, bool current)
{
    {
        const VLScanData::Change change(m_driver.scanData());
        if (current) {
            vlLog(QStringLiteral("set version to current %1").arg(app->displayName));
            UserChoices::setVersionToCurrent(*app);
        } else {
            vlLog(QStringLiteral("reset local version to %1").arg(app->localVersion));
            UserChoices::unsetVersionToCurrent(*app);
        }
        saveStore();
    }
    VLGoogleTracking::trackProgramEvent(current ? QStringLiteral("SET_VERSION_TO_CURRENT")
                                                : QStringLiteral("UNSET_VERSION_TO_CURRENT"));
    VLNotificationCenter::defaultCenter().post(QStringLiteral("VLAppFilterPrefChanged"));
    VLNotificationCenter::defaultCenter().post(QStringLiteral("VLAppIgnored"), QVariant::fromValue(app));
    emit appChanged(app);
}

void AppActions::setDontCheck(const AppRef &app, bool dontCheck)
{
    {
        const VLScanData::Change change(m_driver.scanData());
        UserChoices::setDontCheckForUpdates(*app, dontCheck);
        saveStore();
    }
    emit appChanged(app);
}

void AppActions::setOnWatchList(const AppRef &app, bool onList)
{
    app->listname = onList ? QStringLiteral("All") : QString();
    saveStore();
    emit appChanged(app);
    // The service call waits for its reply: on a pool thread, with a copy of the record.
    const VLApp copy = *app;
    QThreadPool::globalInstance()->start([copy, onList] {
        onList ? VLAppOnServer::saveToWatchListOnServer(copy) : VLAppOnServer::removeFromWatchListOnServer(copy);
    });
}

void AppActions::shareApp(const AppRef &app)
{
    VLGoogleTracking::trackProgramEvent(QStringLiteral("SHARED_APP"));
    auto *shortener = new RFShortURL(this);
    const QString page = appPageURL(*app);
    connect(shortener, &RFShortURL::receivedUrl, this, [this, app, shortener](const QString &link, const QString &) {
        emit shortLinkReady(app, link.trimmed());
        shortener->deleteLater();
    });
    shortener->shortURL(page);
}
