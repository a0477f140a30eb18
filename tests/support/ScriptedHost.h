#pragma once

// A loopback HTTP host that answers as the test scripts it, for what the real service cannot show: a host that
// trickles, floods, stalls, ignores Range, sets cookies, or redirects from https to http. With tls it speaks HTTPS
// with a certificate made for the run by openssl, which this process is told to trust. Lives on the test's thread:
// requests made there are served from the request's own event loop, requests from other threads while the test
// waits (QTest::qWaitFor).

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>

class QTcpServer;
class QTcpSocket;

struct HostRequest
{
    QByteArray target;
    QByteArray head; // the request line and headers as sent
    QByteArray header(const QByteArray &name) const;
};

class ScriptedHost : public QObject
{
public:
    using Script = std::function<void(QTcpSocket *socket, const HostRequest &request)>;

    explicit ScriptedHost(Script script, bool tls = false);
    ~ScriptedHost() override;

    bool isListening() const;
    // Stops listening: the port now refuses.
    void close();
    QUrl url(const QByteArray &target = "/") const;
    const QList<HostRequest> &requests() const { return m_requests; }

    // Writes a whole answer and closes the connection.
    static void answer(QTcpSocket *socket, int status, const QByteArray &headers = {}, const QByteArray &body = {});
    // Writes the head, then body in pieces of chunk bytes every intervalMs; stops writing (without closing) after
    // stopAfter bytes of it.
    static void dribble(QTcpSocket *socket, const QByteArray &head, const QByteArray &body, qsizetype chunk,
                        int intervalMs, qsizetype stopAfter = -1);

private:
    void accept();

    Script m_script;
    bool m_tls;
    std::unique_ptr<QTcpServer> m_server;
    QList<HostRequest> m_requests;
};
