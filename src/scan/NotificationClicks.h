#pragma once

// What a click on one of our notifications does: logs it, counts it for the analytics ("CLICKED_NOTIFICATION", or
// "UNKNOWN_NOTIFICATION" for a title we do not know), asks for the panel on its updates list when the notice was about
// updates, and takes the delivered notifications off the screen. While it lives it is the process's click handler;
// it acts on the thread it lives on (the front end's).

#include "platform/UserFeedback.h"

#include <QObject>

class NotificationClicks : public QObject
{
    Q_OBJECT

public:
    explicit NotificationClicks(QObject *parent = nullptr);
    ~NotificationClicks() override;

    // Notices about updates, from the check ("Scanning Complete", "new updates are available", "new update is
    // available") and from an update ("Update Complete"), open the panel.
    static bool opensPanel(const SystemNotice &notice);
    void userNotificationCenterDidActivateNotification(const SystemNotice &notice);

signals:
    void showUpdatesPanel();
};
