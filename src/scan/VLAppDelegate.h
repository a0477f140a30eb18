#pragma once

// Start-up and the long-running life of the program without its windows: the settings written at every start,
// the login item kept in step with "startupItem", the previous version's agent removed, the driver started, and
// the periodic checks. The desktop program adds its tray and windows around it; "velmora-cli daemon" runs it alone.
//
// Owner: the front end, beside the driver it is given (which outlives it). Thread: the front end's; its timers run on
// the clock seam (platform/Clock), so tests move them on with a test clock.

#include "platform/Clock.h"

#include <QObject>
#include <QStringList>

class VLMainWindowController;

class VLAppDelegate : public QObject
{
    Q_OBJECT

public:
    static constexpr int kFastCheckSeconds = 3400;
    static constexpr int kWatchListSeconds = 3000;
    static constexpr int kPromosSeconds = 3600;
    static constexpr int kMASCheckSeconds = 500;
    static constexpr int kPreviousAgentDelaySeconds = 25;
    static constexpr int kSiteCookieSeconds = 2629743;

    // loginItemCommand: what the login item runs ("velmora --login-item", or the daemon where there is no desktop
    // program).
    VLAppDelegate(VLMainWindowController &driver, const QStringList &loginItemCommand, QObject *parent = nullptr);

    // "serial" is written at every start; "penguin" only when it is missing, so it names the installation for good.
    static void writeStartupSettings();

    void applicationDidFinishLaunching(bool appLaunchedFromLoginItem);
    // The login item follows "startupItem": removed, then added back when the setting is on.
    void addAppAsLoginItem();
    void disableVLD5scanner();

signals:
    // The periodic list and deal refreshes, for the account's lists and the deals to follow.
    void updateWatchListBackground();
    void updatePromosBackground();

private:
    void startTimer(ClockTimer &timer, int seconds, void (VLAppDelegate::*tick)());
    void storeSiteCookie();
    void checkFast();
    void checkMASApps();

    VLMainWindowController &m_driver;
    QStringList m_loginItemCommand;
    ClockTimer m_fastCheck;
    ClockTimer m_watchLists;
    ClockTimer m_promos;
    ClockTimer m_masCheck;
};
