#include "platform/UserFeedback.h"

#include "platform/Log.h"

#include <QHash>
#include <QMutex>

#include <atomic>

namespace {

class LogFeedback : public UserFeedback
{
public:
    void showAlert(const QString &message, const QString &informativeText) override
    {
        vlLog(message + QStringLiteral(": ") + informativeText);
    }

protected:
    void showNotice(const SystemNotice &notice) override
    {
        vlLog(notice.title + QStringLiteral(": ") + notice.informativeText);
    }
};

LogFeedback g_logFeedback;
std::atomic<UserFeedback *> g_current{&g_logFeedback};

// The notifications shown and not yet removed, by id, and who acts on their clicks.
struct Delivered
{
    QMutex mutex;
    quint32 lastId = 0;
    QHash<quint32, SystemNotice> notices;
    UserFeedback::ClickHandler handler;
};

Delivered &delivered()
{
    static Delivered instance;
    return instance;
}

} // namespace

bool UserFeedback::askQuestion(const QString &message, const QString &informativeText, const QString &,
                               const QString &noButton)
{
    vlLog(message + QStringLiteral(": ") + informativeText + QStringLiteral(" - ") + noButton);
    return false;
}

quint32 UserFeedback::showSystemNotification(const QString &title, const QString &informativeText,
                                             const QString &button, QVariantMap userInfo)
{
    if (!userInfo.contains(QStringLiteral("vldinfo"))) {
        userInfo.insert(QStringLiteral("vldinfo"), title);
    }
    SystemNotice notice{0, title, informativeText, button, userInfo};
    {
        Delivered &all = delivered();
        const QMutexLocker lock(&all.mutex);
        notice.id = ++all.lastId;
        all.notices.insert(notice.id, notice);
    }
    showNotice(notice);
    return notice.id;
}

bool UserFeedback::noticeClicked(quint32 id)
{
    Delivered &all = delivered();
    SystemNotice notice;
    ClickHandler handler;
    {
        const QMutexLocker lock(&all.mutex);
        const auto found = all.notices.constFind(id);
        if (found == all.notices.cend()) {
            return false;
        }
        notice = *found;
        handler = all.handler;
    }
    if (handler) {
        handler(notice);
    }
    return true;
}

void UserFeedback::setClickHandler(ClickHandler handler)
{
    Delivered &all = delivered();
    const QMutexLocker lock(&all.mutex);
    all.handler = std::move(handler);
}

void UserFeedback::removeDeliveredNotifications()
{
    withdrawNotices();
    Delivered &all = delivered();
    const QMutexLocker lock(&all.mutex);
    all.notices.clear();
}

UserFeedback &UserFeedback::current()
{
    return *g_current.load();
}

void UserFeedback::install(UserFeedback *feedback)
{
    g_current.store(feedback ? feedback : &g_logFeedback);
}
