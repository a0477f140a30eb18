#include "app/DesktopApp.h"

#include "install/StagingLeftovers.h"
#include "platform/DesktopOpener.h"
#include "platform/Log.h"
#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"
#include "platform/VLSettingsNotifier.h"
#include "scan/InstallLinks.h"
#include "scan/NotificationClicks.h"
#include "scan/VLAppDelegate.h"
#include "scan/VLAppScanner.h"
#include "scan/VLMainWindowController.h"
#include "scan/VLScanData.h"
#include "services/VLCrashReporter.h"
#include "services/VLGoogleTracking.h"
#include "services/VLMemberAccount.h"
#include "services/VLReportProblemSender.h"
#include "ui/AccountDialog.h"
#include "ui/AppActions.h"
#include "ui/CrashReportDialog.h"
#include "ui/GuiFeedback.h"
#include "ui/PanelExpiry.h"
#include "ui/PreferencesDialog.h"
#include "ui/QuitDecision.h"
#include "ui/UpdateController.h"
#include "ui/VLMainWindow.h"
#include "ui/VLMenubarController.h"
#include "ui/VLPanelController.h"

#include <QApplication>
#include <QClipboard>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <QSessionManager>
#include <QThreadPool>
#include <QTimer>

namespace {
// Past the window's first listing and paint of a large store, even on a busy machine.
constexpr int kSweepDelayMs = 10000;
} // namespace

DesktopApp::DesktopApp()
    : m_crashAsker(std::make_unique<CrashReportDialog>()), m_driver(std::make_unique<VLMainWindowController>()),
      m_delegate(std::make_unique<VLAppDelegate>(
          *m_driver, QStringList{QCoreApplication::applicationFilePath(), QStringLiteral("--login-item")})),
      m_feedback(std::make_unique<GuiFeedback>()), m_clicks(std::make_unique<NotificationClicks>()),
      m_updates(std::make_unique<UpdateController>(*m_driver)), m_actions(std::make_unique<AppActions>(*m_driver)),
      m_menubar(std::make_unique<VLMenubarController>()), m_panel(std::make_unique<VLPanelController>()),
      m_trayMenu(std::make_unique<QMenu>())
{
    QGuiApplication::setQuitOnLastWindowClosed(false);
    m_panel->setGearMenuState([this] {
        const VLUpdateAllQueue &queue = m_updates->queue();
        const int outdated = m_driver->donescanning() ? int(m_driver->outdatedApps().size()) : 0;
        GearMenuState state{m_driver->donescanning(), outdated, queue.numberOfUpdatesInProgress(),
                            queue.numberOfUpdatesWaiting()};
        // An idle queue has every outdated app waiting to be queued.
        if (queue.updateAllApps().isEmpty()) {
            state.waiting = outdated;
        }
        return state;
    });
    m_panel->setRowMenuContext([this] { return m_actions->rowMenuContext(); });
    m_panel->setJobLookup([this](const VLApp *app) { return m_updates->jobFor(app); });

    connect(m_menubar.get(), &VLMenubarController::togglePanel, this, &DesktopApp::togglePanel);
    connect(m_panel.get(), &VLPanelController::panelClosed, this, [this] { m_menubar->setHasActiveIcon(false); });
    connect(m_panel.get(), &VLPanelController::gearAction, this, &DesktopApp::onGearAction);
    connect(m_panel.get(), &VLPanelController::rowAction, this, &DesktopApp::onRowAction);
    connect(m_panel.get(), &VLPanelController::updateRequested, m_updates.get(), &UpdateController::updateApp);
    connect(m_panel.get(), &VLPanelController::cancelRequested, m_updates.get(), &UpdateController::cancelUpdate);
    connect(m_panel.get(), &VLPanelController::showWebsite, this, [] {
        DesktopOpener::open(VLSettings().hostURL(SettingKey::siteHost) + QStringLiteral("/desktop/discover"));
    });
    connect(m_updates.get(), &UpdateController::progressChanged, m_panel.get(), &VLPanelController::setRowProgress);
    connect(m_updates.get(), &UpdateController::stateChanged, m_panel.get(), &VLPanelController::refreshRow);
    connect(m_updates.get(), &UpdateController::updateFinished, this, &DesktopApp::refreshPanelAndBadge);
    connect(m_actions.get(), &AppActions::appChanged, this, &DesktopApp::refreshPanelAndBadge);
    connect(m_actions.get(), &AppActions::shortLinkReady, this, [](const AppRef &app, const QString &link) {
        QGuiApplication::clipboard()->setText(link);
        QMessageBox::information(QApplication::activeWindow(), tr("Share %1").arg(app->displayName),
                                 tr("The short link %1 is on the clipboard.").arg(link));
    });

    connect(m_driver.get(), &VLMainWindowController::listChanged, this, &DesktopApp::refreshPanelAndBadge);
    // The driver counts the check as done just after telling of it: the panel is refilled on the next turn.
    connect(m_driver.get(), &VLMainWindowController::checkFinished, this,
            [this] { QTimer::singleShot(0, this, [this] { refreshPanelAndBadge(); }); });
    // An install link's apps, read by the driver once no check runs: what it asks to update or install starts.
    connect(m_driver.get(), &VLMainWindowController::linkOpened, this,
            [this](const QList<InstallLinks::LinkedApp> &linkedApps) {
                for (const InstallLinks::LinkedApp &linked : linkedApps) {
                    if (linked.decision == InstallLinks::Decision::Update ||
                        linked.decision == InstallLinks::Decision::Install) {
                        m_updates->updateApp(linked.app);
                    }
                }
                refreshAll();
            });
    connect(m_driver.get(), &VLMainWindowController::statusChanged, this, [this] {
        if (!m_driver->donescanning()) {
            m_panel->hideTableShowScanningInProgress();
        }
    });
    connect(m_driver.get(), &VLMainWindowController::changeStatusIconBlue, m_menubar.get(),
            &VLMenubarController::setIconBlue);
    connect(m_driver.get(), &VLMainWindowController::promosLoaded, this,
            [this](const AppList &featured, const AppList &promos) { window().setDeals(featured + promos); });
    connect(m_delegate.get(), &VLAppDelegate::updateWatchListBackground, m_driver.get(),
            &VLMainWindowController::loadWatchLists);
    connect(m_delegate.get(), &VLAppDelegate::updatePromosBackground, m_driver.get(),
            &VLMainWindowController::loadPromos);
    // A click on an update notice, or its "View" button, opens the window on the updates.
    connect(m_clicks.get(), &NotificationClicks::showUpdatesPanel, this, &DesktopApp::showWindow);
    connect(&VLSettingsNotifier::instance(), &VLSettingsNotifier::changed, this, &DesktopApp::onSettingChanged);

    VLNotificationCenter &center = VLNotificationCenter::defaultCenter();
    center.subscribe(QStringLiteral("VLViewAppDetails"), this, [this](const QVariant &object) {
        if (const AppRef app = object.value<AppRef>()) {
            window().viewAppDetails(app);
        }
    });
    for (const char *name : {"VLAppIgnored", "VLAppFilterPrefChanged", "VLAppInstallCompletedReload"}) {
        center.subscribe(QLatin1String(name), this, [this](const QVariant &) { refreshAll(); });
    }

    m_expiryTimer.setInterval(PanelExpiry::kTimerSeconds * 1000);
    connect(&m_expiryTimer, &QTimer::timeout, this,
            [this] { m_panel->removeOlderLaunchAppsFromPanel(QDateTime::currentDateTimeUtc()); });

    // The tray's right-click menu: the gear menu's own items.
    connect(m_trayMenu.get(), &QMenu::aboutToShow, this, [this] {
        m_trayMenu->clear();
        const QMenu *gear = m_panel->buildGearMenu(m_trayMenu.get());
        m_trayMenu->addActions(gear->actions());
    });
    m_menubar->setContextMenu(m_trayMenu.get());

    auto *app = qobject_cast<QGuiApplication *>(QCoreApplication::instance());
    connect(app, &QGuiApplication::commitDataRequest, this, [this](QSessionManager &) {
        vlLog(QStringLiteral("DEBUG: Initiated logout"));
        m_sessionEnding = true;
    });
}

DesktopApp::~DesktopApp()
{
    m_window.reset();
    m_panel.reset();
}

VLMainWindow &DesktopApp::window()
{
    if (!m_window) {
        m_window = std::make_unique<VLMainWindow>(*m_driver, *m_updates, *m_actions);
        connect(m_window.get(), &VLMainWindow::preferencesRequested, this, [this] { preferences().show(); });
        connect(m_window.get(), &VLMainWindow::accountRequested, this, &DesktopApp::showAccount);
        connect(m_window.get(), &VLMainWindow::signInForCartRequested, this, [this](const AppRef &deal) {
            account().signInThen([this, deal] { window().openCart(deal); });
            showAccount();
        });
        connect(m_window.get(), &VLMainWindow::reportRequested, this, &DesktopApp::reportProblem);
        connect(m_window.get(), &VLMainWindow::closeRequested, this,
                [this](bool shiftHeld) { requestQuit(true, shiftHeld); });
    }
    return *m_window;
}

PreferencesDialog &DesktopApp::preferences()
{
    if (!m_preferences) {
        m_preferences = new PreferencesDialog(m_window.get());
        m_preferences->setAttribute(Qt::WA_DeleteOnClose);
    }
    return *m_preferences;
}

AccountDialog &DesktopApp::account()
{
    if (!m_account) {
        m_account = new AccountDialog(*m_driver, m_window.get());
        m_account->setAttribute(Qt::WA_DeleteOnClose);
    }
    return *m_account;
}

void DesktopApp::showAccount()
{
    account().show();
    account().raise();
}

bool DesktopApp::statusItemShown() const
{
    return m_menubar->isVisible();
}

void DesktopApp::start(bool launchedByLoginItem)
{
    // A crash from now on leaves a report; one from an earlier run is sent, or the user is asked first.
    m_crashReporter = std::make_unique<VLCrashReporter>(QStringLiteral("velmora"), m_crashAsker.get());
    m_crashReporter->startCrashReporting();
    // What a killed update left beside the apps goes, away from the windows' thread: a staged copy can be large. It
    // waits a while after the launch's store read or first check, so as not to take a core from the window's first
    // listing. An update started meanwhile holds its lock, which the sweep respects, and clears its own leftovers.
    connect(
        m_driver.get(), &VLMainWindowController::checkFinished, this,
        [this] {
            QTimer::singleShot(kSweepDelayMs, this, [] {
                QThreadPool::globalInstance()->start([] {
                    StagingLeftovers::sweep(VLScanData().apps().value_or(AppList()), VLAppScanner::searchScopes());
                });
            });
        },
        Qt::SingleShotConnection);
    // The store's read starts on the check thread before the window is made: its first stretch, the JSON, takes one
    // core, and the window is made and shown on the other. The window lists the records once they are read, as it
    // would if it were made first: what the read hands over arrives through this thread's event loop.
    m_delegate->applicationDidFinishLaunching(launchedByLoginItem);
    if (launchedByLoginItem && VLSettings().boolValue(SettingKey::showStatusItem) && m_menubar->waitForTrayHost()) {
        connect(m_menubar.get(), &VLMenubarController::trayHostSettled, this, &DesktopApp::applyShowStatusItem,
                Qt::SingleShotConnection);
    } else {
        applyShowStatusItem();
    }
    m_expiryTimer.start();
    refreshPanelAndBadge();
}

void DesktopApp::applyShowStatusItem()
{
    if (m_menubar->waitingForTrayHost()) {
        return; // applied once the tray host is settled, with the setting as it is then
    }
    const bool wanted = VLSettings().boolValue(SettingKey::showStatusItem);
    if (wanted && VLMenubarController::trayAvailable()) {
        m_menubar->show();
        return;
    }
    m_menubar->hide();
    if (wanted && !m_toldNoTray) {
        // Said once; the program then behaves as without its tray icon.
        m_toldNoTray = true;
        vlLog(QStringLiteral("no system tray available - running as a window"));
        showWindow();
        auto *box = new QMessageBox(QMessageBox::Information, tr("No tray"),
                                    tr("This desktop shows no tray icons, so Velmora Desktop runs as a window."),
                                    QMessageBox::Ok, &window());
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->open();
        return;
    }
    showWindow();
}

void DesktopApp::showWindow()
{
    VLMainWindow &shown = window();
    shown.showNormal();
    shown.raise();
    shown.activateWindow();
}

void DesktopApp::refreshPanelAndBadge()
{
    // While a check runs the panel says so, and its worker holds the store: it is not read until the check is done.
    const bool done = m_driver->donescanning();
    const AppList outdated = done ? m_driver->outdatedApps() : AppList();
    if (done) {
        m_menubar->setOutdatedCount(int(outdated.size()));
    }
    m_panel->showTableHideScanningInProgress(done, outdated);
}

void DesktopApp::refreshAll()
{
    refreshPanelAndBadge();
    if (m_window) {
        m_window->reloadLists();
    }
}

void DesktopApp::togglePanel(const QRect &anchor)
{
    if (!m_menubar->isVisible()) {
        return;
    }
    if (m_panel->hasActivePanel()) {
        m_panel->closePanel();
        return;
    }
    m_menubar->setHasActiveIcon(true);
    m_menubar->setIconBlack();
    refreshPanelAndBadge();
    m_panel->openPanel(anchor, QGuiApplication::queryKeyboardModifiers().testFlag(Qt::ShiftModifier));
    if (m_panel->isVisible()) {
        vlLog(QStringLiteral("panel opened at %1").arg(QDebug::toString(m_panel->geometry())));
    }
}

void DesktopApp::onGearAction(PanelAction action)
{
    switch (action) {
    case PanelAction::UpdateAll:
        m_updates->updateAll();
        break;
    case PanelAction::CancelUpdateAll:
        m_updates->cancelUpdateAll();
        break;
    case PanelAction::ShowWindow:
        m_panel->closePanel();
        showWindow();
        break;
    case PanelAction::ShowPreferences:
        m_panel->closePanel();
        preferences().show();
        preferences().raise();
        break;
    case PanelAction::Quit:
        vlLog(QStringLiteral("quiting Velmora Desktop"));
        requestQuit(false, false);
        break;
    default:
        break;
    }
}

void DesktopApp::onRowAction(PanelAction action, const AppRef &app)
{
    switch (action) {
    case PanelAction::ViewInMainWindow:
        m_panel->closePanel();
        VLNotificationCenter::defaultCenter().post(QStringLiteral("VLViewAppDetails"), QVariant::fromValue(app));
        break;
    case PanelAction::ReportProblem:
        m_panel->closePanel();
        reportProblem(app);
        break;
    default:
        m_actions->perform(action, app);
        break;
    }
}

void DesktopApp::onSettingChanged(const QString &key)
{
    if (key == QLatin1String(SettingKey::showStatusItem)) {
        applyShowStatusItem();
    } else if (key == QLatin1String(SettingKey::startupItem)) {
        m_delegate->addAppAsLoginItem();
    } else {
        refreshAll();
    }
}

void DesktopApp::requestQuit(bool fromWindow, bool shiftHeld)
{
    const VLSettings settings;
    QuitDecision::Request request;
    request.source = m_sessionEnding ? QuitDecision::Source::SessionEnding
                     : fromWindow    ? QuitDecision::Source::Window
                                     : QuitDecision::Source::GearMenu;
    request.shiftHeld = shiftHeld;
    request.statusItemShown = m_menubar->isVisible();
    request.quitBackGroundWhenStatusItemHidden = settings.boolValue(SettingKey::quitBackGroundWhenStatusItemHidden);
    const QuitDecision::Outcome outcome = QuitDecision::decide(request);
    VLGoogleTracking::trackProgramEvent(QLatin1String(QuitDecision::analyticsAction(outcome)));
    if (outcome == QuitDecision::Outcome::KeepInBackground) {
        if (m_window) {
            m_window->hide();
        }
        return;
    }
    m_panel->closePanel();
    QCoreApplication::quit();
}

void DesktopApp::handleArguments(const QStringList &arguments)
{
    bool linked = false;
    for (const QString &argument : arguments) {
        if (argument.startsWith(QLatin1String("velmora:"), Qt::CaseInsensitive)) {
            linked = true;
            installFromLink(argument);
        }
    }
    if (!linked && !arguments.contains(QStringLiteral("--login-item"))) {
        showWindow();
    }
}

void DesktopApp::installFromLink(const QString &link)
{
    vlLog(QStringLiteral("install link %1").arg(link));
    m_driver->installFromLink(link);
}

void DesktopApp::reportProblem(const AppRef &app)
{
    bool ok = false;
    const QString text = QInputDialog::getMultiLineText(
        m_window.get(), tr("Report a problem"), tr("What is wrong with %1?").arg(app->displayName), QString(), &ok);
    if (!ok || text.trimmed().isEmpty()) {
        return;
    }
    VLGoogleTracking::trackProgramEvent(QStringLiteral("REPORT_PROBLEM"));
    const VLMemberAccount &account = m_driver->memberAccount();
    auto *sender = new VLReportProblemSender(this);
    sender->reportIssue(text, *app, account.isLoggedIn ? account.memberID : 0);
}
