#include "scan/NotificationClicks.h"

#include "platform/Log.h"
#include "services/VLGoogleTracking.h"

#include <QCoreApplication>

namespace {

// Each as the program writes it and as the user's language shows it.
bool mentions(const SystemNotice &notice, const char *context, const char *phrase)
{
    for (const QString &text : {QString::fromLatin1(phrase), QCoreApplication::translate(context, phrase)}) {
        const QString stem = text.section(QStringLiteral("%1 "), -1); // "%1 new updates are available"
        if (notice.title.contains(stem) || notice.informativeText.contains(stem)) {
            return true;
        }
    }
    return false;
}

} // namespace

NotificationClicks::NotificationClicks(QObject *parent) : QObject(parent)
{
    UserFeedback::setClickHandler([this](const SystemNotice &notice) {
        QMetaObject::invokeMethod(this, [this, notice] { userNotificationCenterDidActivateNotification(notice); });
    });
}

NotificationClicks::~NotificationClicks()
{
    UserFeedback::setClickHandler({});
}

bool NotificationClicks::opensPanel(const SystemNotice &notice)
{
    return mentions(notice, "VLMainWindowController", "Scanning Complete") ||
           mentions(notice, "VLMainWindowController", "%1 new updates are available") ||
           mentions(notice, "UpdateNotices", "%1 new updates are available") ||
           mentions(notice, "UpdateNotices", "%1 new update is available") ||
           mentions(notice, "VLAppDownload", "Update Complete");
}

void NotificationClicks::userNotificationCenterDidActivateNotification(const SystemNotice &notice)
{
    vlLog(QStringLiteral("clicked %1 notification").arg(notice.title));
    const bool known = opensPanel(notice);
    VLGoogleTracking::trackProgramEvent(known ? QStringLiteral("CLICKED_NOTIFICATION")
                                              : QStringLiteral("UNKNOWN_NOTIFICATION"));
    if (known) {
        emit showUpdatesPanel();
    }
    UserFeedback::current().removeDeliveredNotifications();
}
