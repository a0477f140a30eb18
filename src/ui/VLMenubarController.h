#pragma once

// The tray item: shown while "showStatusItem" is on, its icon and tooltip carry the count of outdated apps, and a
// click asks for the panel at the icon (or, where the tray gives no geometry, at the cursor as it was clicked).

#include "ui/VLStatusItemView.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QRect>
#include <QTimer>

#include <memory>

class QDBusServiceWatcher;
class QMenu;
class QSystemTrayIcon;

class VLMenubarController : public QObject
{
    Q_OBJECT

public:
    explicit VLMenubarController(QObject *parent = nullptr);
    ~VLMenubarController() override;

    static bool trayAvailable();
    // At login the desktop's tray host may come up after us, and Qt settles whether there is one only once, when the
    // first tray icon is made. True when there is no host yet: trayHostSettled() follows once one has registered with
    // a StatusNotifierWatcher on the session bus or an XEmbed tray owns its selection on the X server, or after a
    // while without either. Ask trayAvailable() only after that.
    bool waitForTrayHost();
    bool waitingForTrayHost() const { return m_hostWatcher != nullptr; }

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
    void trayHostSettled();

private slots:
    void checkTrayHost();

private:
    void settleTrayHost();
    void refreshIcon();

    std::unique_ptr<QSystemTrayIcon> m_statusItem;
    std::unique_ptr<QDBusServiceWatcher> m_hostWatcher;
    // The bus announces a StatusNotifierHost; an XEmbed tray is looked for now and then until the deadline.
    QTimer m_hostPoll;
    QDeadlineTimer m_hostDeadline;
    VLStatusItemView m_view;
    QMenu *m_contextMenu = nullptr;
    bool m_hasActiveIcon = false;
};
