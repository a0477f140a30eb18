#pragma once

// Alerts and notifications of a velmora-cli run, printed on stderr ("error: MESSAGE: TEXT", "notice: TITLE: TEXT")
// from whichever thread they come. Remembers whether an alert was shown, as a failed step ends in one.

#include "platform/UserFeedback.h"

#include <QMutex>
#include <QTextStream>

#include <atomic>

class CliFeedback : public UserFeedback
{
public:
    explicit CliFeedback(QTextStream &err);
    ~CliFeedback() override;

    void showAlert(const QString &message, const QString &informativeText) override;
    void showSystemNotification(const QString &title, const QString &informativeText, const QString &button) override;

    bool alerted() const { return m_alerted.load(); }

private:
    QTextStream &m_err;
    QMutex m_mutex;
    std::atomic<bool> m_alerted{false};
};
