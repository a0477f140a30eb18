#include "ui/VLMenubarController.h"

#include "platform/Log.h"
#include "ui/PanelPlacement.h"

#include <QCursor>
#include <QSystemTrayIcon>

VLMenubarController::VLMenubarController(QObject *parent) : QObject(parent) {}

VLMenubarController::~VLMenubarController() = default;

bool VLMenubarController::trayAvailable()
{
    return QSystemTrayIcon::isSystemTrayAvailable();
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
