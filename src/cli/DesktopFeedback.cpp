#include "cli/DesktopFeedback.h"

DesktopFeedback::DesktopFeedback(QTextStream &err) : CliFeedback(err)
{
    QObject::connect(&m_notifications, &DesktopNotifications::clicked, &m_notifications,
                     [](quint32 id) { UserFeedback::noticeClicked(id); });
}

void DesktopFeedback::showNotice(const SystemNotice &notice)
{
    CliFeedback::showNotice(notice);
    // Notices come from the updates' threads too; the bus connection is used from the daemon's.
    QMetaObject::invokeMethod(&m_notifications, [this, notice] { m_notifications.notify(notice); });
}

void DesktopFeedback::withdrawNotices()
{
    QMetaObject::invokeMethod(&m_notifications, [this] { m_notifications.closeAll(); });
}
