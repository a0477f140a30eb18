#pragma once

// The desktop program's alerts, notifications and questions: message boxes on the UI thread (a worker's question
// waits for the answer), notifications through the desktop's notification server, whose clicks reach the click
// handler. Background work never shows an alert box while the window
// is hidden; it goes to the log then.

#include "platform/DesktopNotifications.h"
#include "platform/UserFeedback.h"

#include <QObject>

#include <functional>

class GuiFeedback : public QObject, public UserFeedback
{
    Q_OBJECT

public:
    explicit GuiFeedback(QObject *parent = nullptr);
    ~GuiFeedback() override;

    void showAlert(const QString &message, const QString &informativeText) override;
    bool askQuestion(const QString &message, const QString &informativeText, const QString &yesButton,
                     const QString &noButton) override;

protected:
    void showNotice(const SystemNotice &notice) override;
    void withdrawNotices() override;

private:
    template <typename F> void runOnUiThread(F &&work, bool wait);

    DesktopNotifications m_notifications;
};
