#pragma once

// A loopback HTTP host that answers as the test scripts it, for what the real service cannot show (a host that
// trickles, floods, stalls, ignores Range, sets cookies, or redirects from https to http). With tls it speaks HTTPS
// with a certificate made for the run by openssl, which this process is then told to trust. It answers from the
// test thread's event loop: the request's own, or QTest::qWaitFor's while another thread asks.

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>

class QTcpServer;
class QTcpSocket;

struct HostRequest
{
    QByteArray target;
    QByteArray head; // request line and headers, as sent
    QByteArray body; // as long as its Content-Length says
    QByteArray header(const QByteArray &name) const;
};

class ScriptedHost : public QObject
{
public:
    using Script = std::function<void(QTcpSocket *socket, const HostRequest &request)>;

    explicit ScriptedHost(Script script, bool tls = false);
    ~ScriptedHost() override;

    QUrl url(const QByteArray &target = "/") const;
    const QList<HostRequest> &requests() const { return m_requests; }
    void close(); // the port refuses from now on

    // A whole answer; the connection is closed after it.
    static void answer(QTcpSocket *socket, int status, const QByteArray &headers = {}, const QByteArray &body = {});
    // The head, then the body in pieces of chunk bytes every intervalMs (as fast as taken with 0), up to stopAfter
    // bytes of it (-1: all); the connection stays open.
    static void dribble(QTcpSocket *socket, const QByteArray &head, const QByteArray &body, qsizetype chunk,
                        int intervalMs, qsizetype stopAfter = -1);

private:
    void accept();

    Script m_script;
    bool m_tls;
    std::unique_ptr<QTcpServer> m_server;
    QList<HostRequest> m_requests;
};

Q_DECLARE_METATYPE(ScriptedHost::Script)
