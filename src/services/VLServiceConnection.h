#pragma once

// One asynchronous exchange with a Velmora host, as the account, list, report, deal and short-link classes make
// them: the request goes out on the calling thread's session, the reply's bytes land in receivedData and its
// status in serverResonse, and done() follows once, success or not. A connection that fails logs the class's own
// line with the error's description. The object lives on the thread that made it; a fire-and-forget sender
// deletes itself after done() when made with releaseWhenDone().

#include "platform/WebRequest.h"

#include <QObject>

class WebExchange;

class VLServiceConnection : public QObject
{
    Q_OBJECT

public:
    ~VLServiceConnection() override;

    QByteArray receivedData;
    int serverResonse = 0; // the reply's HTTP status; 0 while none came

    bool isDone() const { return m_done; }
    bool failed() const { return m_failed; }
    // Turns the calling thread's event loop until the exchange has ended (worker threads, velmora-cli, tests).
    void waitUntilDone();
    // Deletes the object once the exchange has ended.
    void releaseWhenDone();

signals:
    void done();

protected:
    // failureLine: the log line of a failed connection, "%1" the error's description.
    explicit VLServiceConnection(const QString &failureLine, QObject *parent = nullptr);
    void startConnection(WebRequest request);
    // The reply has arrived whole (any status).
    virtual void connectionDidFinishLoading() {}
    // No reply came; the failure line is logged already.
    virtual void didFailWithError() {}

private:
    void end();

    QString m_failureLine;
    WebExchange *m_exchange = nullptr;
    bool m_done = false;
    bool m_failed = false;
    bool m_release = false;
};
