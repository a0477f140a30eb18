#pragma once

// What the program tells the user outside its windows: alerts and system notifications. The core says what to
// tell; the front end decides how (the CLI prints them on stderr, the desktop program shows them). Calls may come
// from any thread; a front end that needs its own thread hands them over there.

#include <QString>

class UserFeedback
{
public:
    virtual ~UserFeedback() = default;

    virtual void showAlert(const QString &message, const QString &informativeText) = 0;
    // button: the action's caption ("View"), or "" for a notification without one.
    virtual void showSystemNotification(const QString &title, const QString &informativeText,
                                        const QString &button) = 0;
    // A question with two answers; true for yesButton. A front end that cannot ask answers no (the default).
    virtual bool askQuestion(const QString &message, const QString &informativeText, const QString &yesButton,
                             const QString &noButton);

    // The process's front end; until one is installed, feedback goes to the log only.
    static UserFeedback &current();
    static void install(UserFeedback *feedback);
};
