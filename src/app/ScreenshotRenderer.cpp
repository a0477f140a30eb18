#include "app/ScreenshotRenderer.h"

#include "app/DesktopApp.h"
#include "install/QuitAndRelaunchGate.h"
#include "platform/RunningProcesses.h"
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
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

namespace {

constexpr int kLoadTimeoutMs = 60000;

// A desktop's dark palette, to look at the views as a dark desktop shows them.
QPalette darkPalette()
{
    const QColor text(0xe8, 0xe8, 0xe8);
    QPalette dark;
    const std::pair<QPalette::ColorRole, QColor> roles[] = {{QPalette::Window, QColor(0x2d, 0x2d, 0x2d)},
                                                            {QPalette::WindowText, text},
                                                            {QPalette::Base, QColor(0x1f, 0x1f, 0x1f)},
                                                            {QPalette::AlternateBase, QColor(0x28, 0x28, 0x28)},
                                                            {QPalette::Text, text},
                                                            {QPalette::Button, QColor(0x3a, 0x3a, 0x3a)},
                                                            {QPalette::ButtonText, text},
                                                            {QPalette::BrightText, Qt::white},
                                                            {QPalette::Light, QColor(0x55, 0x55, 0x55)},
                                                            {QPalette::Midlight, QColor(0x48, 0x48, 0x48)},
                                                            {QPalette::Mid, QColor(0x30, 0x30, 0x30)},
                                                            {QPalette::Dark, QColor(0x1a, 0x1a, 0x1a)},
                                                            {QPalette::Shadow, Qt::black},
                                                            {QPalette::Highlight, QColor(0x3d, 0x7a, 0xd6)},
                                                            {QPalette::HighlightedText, Qt::white},
                                                            {QPalette::Link, QColor(0x7a, 0xb4, 0xff)},
                                                            {QPalette::LinkVisited, QColor(0xb4, 0x9a, 0xff)},
                                                            {QPalette::ToolTipBase, QColor(0x3a, 0x3a, 0x3a)},
                                                            {QPalette::ToolTipText, text},
                                                            {QPalette::PlaceholderText, QColor(0x9a, 0x9a, 0x9a)}};
    for (const auto &[role, color] : roles) {
        dark.setColor(role, color);
    }
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        dark.setColor(QPalette::Disabled, role, QColor(0x80, 0x80, 0x80));
    }
    return dark;
}

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

// The question an update asks when it meets its app running, asked by the real gate: a copy of sleep, started from
// inside a bundle named after appName, stands for the running app. The question is drawn and answered "Skip".
bool saveQuitQuestion(const QString &appName, const QString &folder)
{
    QTemporaryDir root;
    const QString bundle = root.filePath(appName + QStringLiteral(".app"));
    const QString executable = bundle + QStringLiteral("/Contents/MacOS/") + appName;
    const QString sleep = QStandardPaths::findExecutable(QStringLiteral("sleep"));
    qint64 pid = 0;
    if (sleep.isEmpty() || !QDir().mkpath(QFileInfo(executable).path()) || !QFile::copy(sleep, executable) ||
        !QProcess::startDetached(executable, {QStringLiteral("60")}, root.path(), &pid)) {
        QTextStream(stderr) << "cannot start a stand-in for a running app from " << bundle << '\n';
        return false;
    }
    QEventLoop started;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &started, [&] {
        if (!RunningProcesses::inside(bundle).isEmpty()) {
            started.quit();
        }
    });
    poll.start(20);
    QTimer::singleShot(kLoadTimeoutMs, &started, &QEventLoop::quit);
    started.exec();

    bool saved = false;
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, &answer, [&] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box) {
            return;
        }
        answer.stop();
        saved = save(*box, folder, QStringLiteral("quit-and-relaunch"));
        for (QAbstractButton *button : box->buttons()) {
            if (box->buttonRole(button) == QMessageBox::RejectRole) {
                button->click();
            }
        }
    });
    answer.start(20);
    QuitAndRelaunchGate gate;
    const bool asked = !gate.prepareToReplace(bundle) && gate.declined();
    RunningProcesses::terminate(pid, 5000);
    if (!asked) {
        QTextStream(stderr) << "no question was asked for the running " << executable << '\n';
    }
    return asked && saved;
}

} // namespace

namespace ScreenshotRenderer {

bool renderAll(const QString &folder)
{
    if (!QDir().mkpath(folder)) {
        return false;
    }
    if (qgetenv("VELMORA_SCREENSHOT_PALETTE") == "dark") {
        QApplication::setPalette(darkPalette());
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
    const AppList outdated = driver.outdatedApps();
    const QString runningName = outdated.isEmpty() ? QStringLiteral("Example") : outdated.first()->displayName;
    saved = saveQuitQuestion(QString(runningName).remove(u'/'), folder) && saved;
    return saveAccountForms(desktop, folder) && saved;
}

} // namespace ScreenshotRenderer
