#pragma once

// What the program tells the user outside its windows: alerts, questions and system notifications, for the check
// driver and the updates alike. The core says what to tell; the front end decides how (the CLI prints on stderr, the
// daemon also posts desktop notifications, the desktop program shows them). Calls may come from any thread; a front
// end that needs its own thread hands them over there.
//
// Every notification gets an id unique in the process and carries its user info ("vldinfo"); a front end that lets
// the user click one reports the click with noticeClicked(), which hands the notice to the click handler.

#include <QString>
#include <QVariantMap>

#include <functional>

struct SystemNotice
{
    quint32 id = 0;
    QString title;
    QString informativeText;
    // The action's caption ("View", "Launch"), or "" for a notification without one.
    QString button;
    QVariantMap userInfo;
};

class UserFeedback
{
public:
    using ClickHandler = std::function<void(const SystemNotice &notice)>;

    virtual ~UserFeedback() = default;

    virtual void showAlert(const QString &message, const QString &informativeText) = 0;
    // A question with two answers; true for yesButton. A front end that cannot ask answers no (the default).
    virtual bool askQuestion(const QString &message, const QString &informativeText, const QString &yesButton,
                             const QString &noButton);

    // Shows a notification through the current front end; answers its id. userInfo gets "vldinfo" (the title) when
    // the caller gave none.
    quint32 showSystemNotification(const QString &title, const QString &informativeText, const QString &button,
                                   QVariantMap userInfo = {});
    // The user clicked the notification id (the body, or its button); false when the id is not one of ours.
    static bool noticeClicked(quint32 id);
    // Who acts on clicks (the application delegate's handler); none: clicks are only forgotten.
    static void setClickHandler(ClickHandler handler);
    // Takes every shown notification off the screen where the front end can, and forgets them.
    void removeDeliveredNotifications();

    // The process's front end; until one is installed, feedback goes to the log only.
    static UserFeedback &current();
    static void install(UserFeedback *feedback);

protected:
    virtual void showNotice(const SystemNotice &notice) = 0;
    virtual void withdrawNotices() {}
};
