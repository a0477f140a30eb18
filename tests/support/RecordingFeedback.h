#pragma once

// The front end while it lives: records what the core shows, one line each ("alert: MESSAGE", "notice: TITLE / TEXT /
// BUTTON", "question: MESSAGE / YES / NO"), and gives every question the same answer.

#include "platform/UserFeedback.h"

#include <QMutex>
#include <QStringList>

class RecordingFeedback : public UserFeedback
{
public:
    explicit RecordingFeedback(bool answer = false) : m_answer(answer) { UserFeedback::install(this); }
    ~RecordingFeedback() override { UserFeedback::install(nullptr); }

    void showAlert(const QString &message, const QString &) override { add(QStringLiteral("alert: ") + message); }
    bool askQuestion(const QString &message, const QString &, const QString &yes, const QString &no) override
    {
        add(QStringLiteral("question: %1 / %2 / %3").arg(message, yes, no));
        return m_answer;
    }
    QStringList shown() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_shown;
    }

protected:
    void showNotice(const SystemNotice &notice) override
    {
        add(QStringLiteral("notice: %1 / %2 / %3").arg(notice.title, notice.informativeText, notice.button));
    }

private:
    void add(const QString &line)
    {
        const QMutexLocker lock(&m_mutex);
        m_shown << line;
    }

    const bool m_answer;
    mutable QMutex m_mutex;
    QStringList m_shown;
};
