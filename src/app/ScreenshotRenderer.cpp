#include "app/ScreenshotRenderer.h"

#include "app/DesktopApp.h"
#include "scan/VLMainWindowController.h"
#include "services/VLMemberAccount.h"
#include "ui/AccountDialog.h"
#include "ui/CartDialog.h"
#include "ui/PreferencesDialog.h"
#include "ui/VLMainWindow.h"
#include "ui/VLPanelController.h"

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QPainter>
#include <QPixmap>
#include <QTextStream>
#include <QTimer>

namespace {

constexpr int kLoadTimeoutMs = 60000;

bool save(QWidget &widget, const QString &folder, const QString &name)
{
    widget.show();
    QApplication::processEvents();
    bool saved = true;
    for (const int scale : {1, 2}) {
        QPixmap pixmap(widget.size() * scale);
        pixmap.setDevicePixelRatio(scale);
        pixmap.fill(widget.palette().color(QPalette::Window));
        widget.render(&pixmap);
        const QString file =
            QDir(folder).filePath(name + (scale == 2 ? QStringLiteral("@2x.png") : QStringLiteral(".png")));
        saved = pixmap.save(file) && saved;
        QTextStream(stdout) << file << '\n';
    }
    return saved;
}

// The account's forms, and for a signed-in member the profile and the cart of the first deal.
bool saveAccountForms(DesktopApp &desktop, const QString &folder)
{
    AccountDialog &account = desktop.account();
    bool saved = true;
    const std::pair<AccountDialog::Page, const char *> pages[] = {{AccountDialog::Page::Login, "account-login"},
                                                                  {AccountDialog::Page::Signup, "account-signup"},
                                                                  {AccountDialog::Page::Profile, "account-profile"}};
    const bool member = desktop.driver().memberAccount().isLoggedIn;
    for (const auto &[page, name] : pages) {
        if (page != AccountDialog::Page::Profile || member) {
            account.showPage(page);
            saved = save(account, folder, QLatin1String(name)) && saved;
        }
    }
    account.hide();
    const AppList deals = desktop.window().deals();
    if (member && !deals.isEmpty()) {
        CartDialog cart(desktop.driver(), deals.first(), &desktop.window());
        saved = save(cart, folder, QStringLiteral("deals-cart")) && saved;
    }
    return saved;
}

} // namespace

namespace ScreenshotRenderer {

bool renderAll(const QString &folder)
{
    if (!QDir().mkpath(folder)) {
        return false;
    }
    DesktopApp desktop;
    VLMainWindowController &driver = desktop.driver();
    QEventLoop loaded;
    QObject::connect(&driver, &VLMainWindowController::checkFinished, &loaded, &QEventLoop::quit);
    QTimer::singleShot(kLoadTimeoutMs, &loaded, &QEventLoop::quit);
    // As a start by the login item: the stored scan is shown as it is, never scanned again first.
    driver.loadScanDataOrRunScan(true);
    loaded.exec();
    QEventLoop promos;
    QObject::connect(&driver, &VLMainWindowController::promosLoaded, &promos, &QEventLoop::quit);
    QTimer::singleShot(kLoadTimeoutMs, &promos, &QEventLoop::quit);
    driver.loadPromos();
    promos.exec();
    // The profile and the cart are drawn for the member the keychain holds, if any.
    QEventLoop member;
    QObject::connect(&driver, &VLMainWindowController::memberChanged, &member, &QEventLoop::quit);
    QTimer::singleShot(kLoadTimeoutMs, &member, &QEventLoop::quit);
    driver.checkMemberAndTryLogin();
    member.exec();

    bool saved = true;
    VLPanelController &panel = desktop.panel();
    panel.setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    panel.hideTableShowScanningInProgress();
    saved = save(panel, folder, QStringLiteral("panel-checking")) && saved;
    panel.showTableHideScanningInProgress(true, {});
    saved = save(panel, folder, QStringLiteral("panel-no-updates")) && saved;
    panel.showTableHideScanningInProgress(true, driver.outdatedApps());
    saved = save(panel, folder, QStringLiteral("panel-updates")) && saved;
    panel.hide();

    VLMainWindow &window = desktop.window();
    const std::pair<AppView, const char *> views[] = {{AppView::Updates, "window-updates"},
                                                      {AppView::Installed, "window-installed"},
                                                      {AppView::WatchList, "window-watch-list"},
                                                      {AppView::Purchases, "window-purchases"},
                                                      {AppView::Deals, "window-deals"}};
    for (const auto &[view, name] : views) {
        window.showView(view);
        saved = save(window, folder, QLatin1String(name)) && saved;
    }
    window.showView(AppView::Installed);
    window.setSearchText(QStringLiteral("a"));
    saved = save(window, folder, QStringLiteral("window-search")) && saved;
    window.setSearchText(QString());
    saved = save(desktop.preferences(), folder, QStringLiteral("preferences")) && saved;
    return saveAccountForms(desktop, folder) && saved;
}

} // namespace ScreenshotRenderer
