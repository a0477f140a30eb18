#pragma once

// The daemon's front end in a desktop session: what CliFeedback prints, and each notification also on the desktop's
// notification server, where a click reaches the click handler. Made on the thread that runs the daemon's loop.

#include "cli/CliFeedback.h"
#include "platform/DesktopNotifications.h"

class DesktopFeedback : public CliFeedback
{
public:
    explicit DesktopFeedback(QTextStream &err);

protected:
    void showNotice(const SystemNotice &notice) override;
    void withdrawNotices() override;

private:
    DesktopNotifications m_notifications;
};
