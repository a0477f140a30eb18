#pragma once

// Alerts and notifications of a velmora-cli run, printed on stderr ("error: MESSAGE: TEXT", "notice: TITLE: TEXT")
// from whichever thread they come. Remembers whether an alert was shown, as a failed step ends in one. Questions are
// asked on the terminal, one at a time; with --yes they are answered yes, and with no terminal to ask on, no.

#include "platform/UserFeedback.h"

#include <QRecursiveMutex>
#include <QTextStream>

#include <atomic>
#include <functional>

class CliFeedback : public UserFeedback
{
public:
    explicit CliFeedback(QTextStream &err);
    ~CliFeedback() override;

    void showAlert(const QString &message, const QString &informativeText) override;
    bool askQuestion(const QString &message, const QString &informativeText, const QString &yesButton,
                     const QString &noButton) override;

    bool alerted() const { return m_alerted.load(); }
    void setAnswerYes(bool yes) { m_answerYes = yes; }
    // Held while anything is printed on err; others that print there from other threads take it too.
    QRecursiveMutex &outputLock() { return m_mutex; }
    // Called before each message is printed (progress bars step aside); set before the threads start.
    void setBeforePrinting(std::function<void()> beforePrinting) { m_beforePrinting = std::move(beforePrinting); }

protected:
    void showNotice(const SystemNotice &notice) override;

private:
    void stepAside();

    QTextStream &m_err;
    QRecursiveMutex m_mutex;
    std::atomic<bool> m_alerted{false};
    std::atomic<bool> m_answerYes{false};
    std::function<void()> m_beforePrinting;
};
