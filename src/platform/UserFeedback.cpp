#include "platform/UserFeedback.h"

#include "platform/Log.h"

#include <atomic>

namespace {

class LogFeedback : public UserFeedback
{
public:
    void showAlert(const QString &message, const QString &informativeText) override
    {
        vlLog(message + QStringLiteral(": ") + informativeText);
    }
    void showSystemNotification(const QString &title, const QString &informativeText, const QString &) override
    {
        vlLog(title + QStringLiteral(": ") + informativeText);
    }
};

LogFeedback g_logFeedback;
std::atomic<UserFeedback *> g_current{&g_logFeedback};

} // namespace

bool UserFeedback::askQuestion(const QString &message, const QString &informativeText, const QString &,
                               const QString &noButton)
{
    vlLog(message + QStringLiteral(": ") + informativeText + QStringLiteral(" - ") + noButton);
    return false;
}

UserFeedback &UserFeedback::current()
{
    return *g_current.load();
}

void UserFeedback::install(UserFeedback *feedback)
{
    g_current.store(feedback ? feedback : &g_logFeedback);
}
