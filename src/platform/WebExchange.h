#pragma once

// One WebRequest in flight on the calling thread's HttpSession, without blocking: connect to finished or failed,
// then start(). Exactly one of the two is emitted, once. Lives on the thread that made it; delete it with
// deleteLater, not from a slot of its own signals.

#include "platform/WebRequest.h"

#include <QObject>
#include <QTimer>

#include <memory>

class QNetworkReply;

class WebExchange : public QObject
{
    Q_OBJECT

public:
    explicit WebExchange(const WebRequest &request, QObject *parent = nullptr);
    ~WebExchange() override;

    void start();
    bool isDone() const { return m_done; }
    const WebResult &result() const { return m_result; }

public slots:
    // Gives up now; failed is emitted with "The request was canceled." and nothing is logged.
    void abort();

signals:
    // A reply came, whatever its status (see WebResult::succeeded).
    void finished(const WebResult &result);
    // No reply came: refused, broken, timed out, too large, aborted.
    void failed(const WebResult &result);

private:
    void readBody();
    void giveUp(const QString &reason, bool timedOut);
    void complete();

    WebRequest m_request;
    WebResult m_result;
    std::unique_ptr<QNetworkReply> m_reply;
    QTimer m_idle;
    QTimer m_deadline;
    QTimer m_cancelWatch;
    QString m_failure; // set when we gave up; the reply's own error text otherwise
    bool m_quiet = false;
    bool m_done = false;
};
