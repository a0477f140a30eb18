#pragma once

// The desktop program put together: the core's driver and start-up, the tray item and its panel, the window, the
// preferences, and what reaches us from outside (install links, a second start, notification clicks, the session
// ending). Decides what quitting means.

#include "scan/AppList.h"
#include "ui/PanelMenus.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>

class AccountDialog;
class AppActions;
class CrashReportDialog;
class GuiFeedback;
class NotificationClicks;
class PreferencesDialog;
class UpdateController;
class VLAppDelegate;
class VLCrashReporter;
class VLMainWindow;
class VLMainWindowController;
class VLMenubarController;
class VLPanelController;
class QMenu;

class DesktopApp : public QObject
{
    Q_OBJECT

public:
    DesktopApp();
    ~DesktopApp() override;

    // The launch: the tray or the window as "showStatusItem" says, then the driver.
    void start(bool launchedByLoginItem);
    // Arguments of this start or handed over by a second one: install links; nothing asks for the window.
    void handleArguments(const QStringList &arguments);

    VLMainWindowController &driver() { return *m_driver; }
    VLPanelController &panel() { return *m_panel; }
    VLMenubarController &menubar() { return *m_menubar; }
    VLMainWindow &window();
    PreferencesDialog &preferences();
    AccountDialog &account();
    bool statusItemShown() const;

    void showWindow();
    // The panel's list and the tray icon's count, from the outdated records; the window follows the driver's and the
    // updates' signals itself.
    void refreshPanelAndBadge();
    // Also the window's lists: for changes only the application hears of (display settings, choices, install links).
    void refreshAll();

private:
    void applyShowStatusItem();
    void showAccount();
    void togglePanel(const QRect &anchor);
    void onGearAction(PanelAction action);
    void onRowAction(PanelAction action, const AppRef &app);
    void onSettingChanged(const QString &key);
    void requestQuit(bool fromWindow, bool shiftHeld);
    void installFromLink(const QString &link);
    void reportProblem(const AppRef &app);

    std::unique_ptr<CrashReportDialog> m_crashAsker;
    std::unique_ptr<VLCrashReporter> m_crashReporter;
    std::unique_ptr<VLMainWindowController> m_driver;
    std::unique_ptr<VLAppDelegate> m_delegate;
    std::unique_ptr<GuiFeedback> m_feedback;
    std::unique_ptr<NotificationClicks> m_clicks;
    std::unique_ptr<UpdateController> m_updates;
    std::unique_ptr<AppActions> m_actions;
    std::unique_ptr<VLMenubarController> m_menubar;
    std::unique_ptr<VLPanelController> m_panel;
    std::unique_ptr<QMenu> m_trayMenu;
    std::unique_ptr<VLMainWindow> m_window;
    QPointer<PreferencesDialog> m_preferences;
    QPointer<AccountDialog> m_account;
    QTimer m_expiryTimer;
    bool m_sessionEnding = false;
    bool m_toldNoTray = false;
};
