#include "ui/VLMenubarController.h"

#include "platform/Log.h"
#include "ui/PanelPlacement.h"
#include "ui/XEmbedTray.h"

#include <QCursor>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusServiceWatcher>
#include <QSystemTrayIcon>

namespace {

const QString kWatcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kWatcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString kHostRegistered = QStringLiteral("StatusNotifierHostRegistered");
// Long enough for a desktop's panel to come up at login; a desktop with no tray host shows the window after it.
constexpr int kTrayHostWaitMs = 20000;
constexpr int kTrayPollMs = 500;

// Asked the way Qt asks when it makes the first tray icon, so that both come to the same answer.
bool trayHostRegistered()
{
    QDBusInterface watcher(kWatcherService, kWatcherPath, kWatcherService);
    return watcher.isValid() && watcher.property("IsStatusNotifierHostRegistered").toBool();
}

// A tray of either kind: a StatusNotifierHost on the bus, or an XEmbed tray on the X server.
bool trayHostRunning()
{
    return trayHostRegistered() || XEmbedTray::isRunning();
}

} // namespace

VLMenubarController::VLMenubarController(QObject *parent) : QObject(parent)
{
    connect(&m_hostPoll, &QTimer::timeout, this, [this] {
        if (XEmbedTray::isRunning()) {
            settleTrayHost();
        } else if (m_hostDeadline.hasExpired()) {
            vlLog(QStringLiteral("no tray host registered within %1 s").arg(kTrayHostWaitMs / 1000));
            settleTrayHost();
        }
    });
}

VLMenubarController::~VLMenubarController() = default;

bool VLMenubarController::trayAvailable()
{
    return QSystemTrayIcon::isSystemTrayAvailable();
}

bool VLMenubarController::waitForTrayHost()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (m_hostWatcher || !bus.isConnected() || trayHostRunning()) {
        return m_hostWatcher != nullptr;
    }
    vlLog(QStringLiteral("waiting for a tray host on the session bus"));
    m_hostWatcher =
        std::make_unique<QDBusServiceWatcher>(kWatcherService, bus, QDBusServiceWatcher::WatchForRegistration);
    connect(m_hostWatcher.get(), &QDBusServiceWatcher::serviceRegistered, this, &VLMenubarController::checkTrayHost);
    bus.connect(kWatcherService, kWatcherPath, kWatcherService, kHostRegistered, this, SLOT(checkTrayHost()));
    m_hostDeadline.setRemainingTime(kTrayHostWaitMs);
    m_hostPoll.start(kTrayPollMs);
    return true;
}

void VLMenubarController::checkTrayHost()
{
    if (trayHostRegistered()) {
        settleTrayHost();
    }
}

void VLMenubarController::settleTrayHost()
{
    if (!m_hostWatcher) {
        return;
    }
    m_hostWatcher.reset();
    m_hostPoll.stop();
    QDBusConnection::sessionBus().disconnect(kWatcherService, kWatcherPath, kWatcherService, kHostRegistered, this,
                                             SLOT(checkTrayHost()));
    emit trayHostSettled();
}

void VLMenubarController::show()
{
    if (m_statusItem) {
        vlLog(QStringLiteral("removing item %1").arg(m_statusItem->toolTip()));
        m_statusItem.reset();
    }
    m_statusItem = std::make_unique<QSystemTrayIcon>();
    m_statusItem->setContextMenu(m_contextMenu);
    connect(m_statusItem.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason != QSystemTrayIcon::Trigger) {
            return;
        }
        vlLog(QStringLiteral("VL Menu bar controller togglePanel"));
        emit togglePanel(PanelPlacement::anchorRect(m_statusItem->geometry(), QCursor::pos()));
    });
    refreshIcon();
    m_statusItem->show();
}

void VLMenubarController::hide()
{
    if (!m_statusItem) {
        return;
    }
    vlLog(QStringLiteral("hiding item %1").arg(m_statusItem->toolTip()));
    m_statusItem.reset();
}

void VLMenubarController::setHasActiveIcon(bool active)
{
    m_hasActiveIcon = active;
    m_view.setHighlighted(active);
    refreshIcon();
}

void VLMenubarController::setIconBlack()
{
    m_view.setImage(VLStatusItemView::Image::Status);
    refreshIcon();
}

void VLMenubarController::setIconBlue()
{
    m_view.setImage(VLStatusItemView::Image::StatusBlue);
    refreshIcon();
}

void VLMenubarController::setOutdatedCount(int count)
{
    m_view.setCount(count);
    refreshIcon();
}

void VLMenubarController::setContextMenu(QMenu *menu)
{
    m_contextMenu = menu;
    if (m_statusItem) {
        m_statusItem->setContextMenu(menu);
    }
}

void VLMenubarController::refreshIcon()
{
    if (!m_statusItem) {
        return;
    }
    m_statusItem->setIcon(m_view.icon());
    const int count = m_view.count();
    m_statusItem->setToolTip(count == 0 ? tr("Velmora Desktop: no updates available")
                                        : tr("Velmora Desktop: %n update(s) available", nullptr, count));
}
