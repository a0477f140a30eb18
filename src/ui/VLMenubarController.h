#pragma once

// The tray item: shown while "showStatusItem" is on, its icon and tooltip carry the count of outdated apps, and a
// click asks for the panel at the icon (or, where the tray gives no geometry, at the cursor as it was clicked).

#include "ui/VLStatusItemView.h"

#include <QObject>
#include <QRect>

#include <memory>

class QMenu;
class QSystemTrayIcon;

class VLMenubarController : public QObject
{
    Q_OBJECT

public:
    explicit VLMenubarController(QObject *parent = nullptr);
    ~VLMenubarController() override;

    static bool trayAvailable();

    void show();
    void hide();
    bool isVisible() const { return m_statusItem != nullptr; }
    bool hasActiveIcon() const { return m_hasActiveIcon; }
    void setHasActiveIcon(bool active);

    void setIconBlack();
    void setIconBlue();
    void setOutdatedCount(int count);
    // The menu the tray shows on a right click (the gear menu's items); owned by the caller.
    void setContextMenu(QMenu *menu);
    const VLStatusItemView &statusItemView() const { return m_view; }

signals:
    // The icon was clicked: anchor is where the panel goes against.
    void togglePanel(const QRect &anchor);

private:
    void refreshIcon();

    std::unique_ptr<QSystemTrayIcon> m_statusItem;
    VLStatusItemView m_view;
    QMenu *m_contextMenu = nullptr;
    bool m_hasActiveIcon = false;
};
