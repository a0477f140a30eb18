#include "scan/VLAppDelegate.h"

#include "platform/HttpCookieJar.h"
#include "platform/Log.h"
#include "platform/LoginItem.h"
#include "platform/MachineIdentity.h"
#include "platform/VLSettings.h"
#include "platform/VLSettingsNotifier.h"
#include "scan/VLMainWindowController.h"

#include <QNetworkCookie>
#include <QUrl>
#include <QUuid>

VLAppDelegate::VLAppDelegate(VLMainWindowController &driver, const QStringList &loginItemCommand, QObject *parent)
    : QObject(parent), m_driver(driver), m_loginItemCommand(loginItemCommand)
{
    connect(this, &VLAppDelegate::updateWatchListBackground, &m_driver, &VLMainWindowController::loadWatchLists);
    connect(this, &VLAppDelegate::updatePromosBackground, &m_driver, &VLMainWindowController::loadPromos);
    connect(&VLSettingsNotifier::instance(), &VLSettingsNotifier::changed, this, [this](const QString &key) {
        if (key == QLatin1String(SettingKey::startupItem)) {
            addAppAsLoginItem();
        }
    });
}

void VLAppDelegate::writeStartupSettings()
{
    VLSettings settings;
    settings.setValue(QString::fromLatin1(SettingKey::serial), newStringWithMachineSerialNumber());
    if (!settings.contains(QString::fromLatin1(SettingKey::penguin))) {
        settings.setValue(QString::fromLatin1(SettingKey::penguin), QUuid::createUuid().toString(QUuid::WithoutBraces));
    }
}

void VLAppDelegate::applicationDidFinishLaunching(bool appLaunchedFromLoginItem)
{
    writeStartupSettings();
    Clock::singleShot(kPreviousAgentDelaySeconds * 1000, this, [this] { disableVLD5scanner(); });
    addAppAsLoginItem();
    m_driver.loadScanDataOrRunScan(appLaunchedFromLoginItem);
    m_driver.checkMemberAndTryLogin();
    startTimer(m_fastCheck, kFastCheckSeconds, &VLAppDelegate::checkFast);
    startTimer(m_watchLists, kWatchListSeconds, &VLAppDelegate::updateWatchListBackground);
    startTimer(m_promos, kPromosSeconds, &VLAppDelegate::updatePromosBackground);
    startTimer(m_masCheck, kMASCheckSeconds, &VLAppDelegate::checkMASApps);
    storeSiteCookie();
}

void VLAppDelegate::storeSiteCookie()
{
    // The site tells a visitor with the program from others by this cookie; it lasts an average month.
    QNetworkCookie cookie(QByteArrayLiteral("m604"), QByteArrayLiteral("1"));
    cookie.setDomain(QUrl(VLSettings().hostURL(SettingKey::siteHost)).host());
    cookie.setPath(QStringLiteral("/"));
    cookie.setExpirationDate(Clock::current().now().addSecs(kSiteCookieSeconds));
    HttpCookieJar::shared().insertCookie(cookie);
}

void VLAppDelegate::startTimer(ClockTimer &timer, int seconds, void (VLAppDelegate::*tick)())
{
    connect(&timer, &ClockTimer::timeout, this, tick);
    timer.start(qint64(seconds) * 1000);
}

void VLAppDelegate::checkFast()
{
    m_driver.checkForUpdatesBackGroundFast();
}

void VLAppDelegate::checkMASApps()
{
    m_driver.checkForUpdatesToMASApps();
}

void VLAppDelegate::addAppAsLoginItem()
{
    if (!LoginItem::remove()) {
        vlLog(QStringLiteral("cannot remove the login item %1").arg(LoginItem::autostartPath()));
    }
    if (VLSettings().boolValue(SettingKey::startupItem) && !LoginItem::add(m_loginItemCommand)) {
        vlLog(QStringLiteral("cannot write the login item %1").arg(LoginItem::autostartPath()));
    }
}

void VLAppDelegate::disableVLD5scanner()
{
    for (const QString &path : LoginItem::removePreviousAgent()) {
        vlLog(QStringLiteral("error removing old VLD 5 scanner launchd %1").arg(path));
    }
}
