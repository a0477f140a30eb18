#include "support/ScriptedHost.h"

#include <QFile>
#include <QProcess>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTimer>

namespace {

// A certificate for 127.0.0.1, trusted by this process from now on.
QSslConfiguration makeServerConfiguration()
{
    QTemporaryDir dir;
    const QString key = dir.filePath(QStringLiteral("key.pem"));
    const QString cert = dir.filePath(QStringLiteral("cert.pem"));
    // An argument vector; no value here holds a space.
    const QString arguments =
        QStringLiteral("req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 1 "
                       "-subj /CN=127.0.0.1 -addext subjectAltName=IP:127.0.0.1");
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"),
                  arguments.split(QLatin1Char(' ')) +
                      QStringList{QStringLiteral("-keyout"), key, QStringLiteral("-out"), cert});
    openssl.waitForFinished(60000);
    QFile keyFile(key);
    QFile certFile(cert);
    if (!keyFile.open(QIODevice::ReadOnly) || !certFile.open(QIODevice::ReadOnly)) {
        qWarning("openssl made no certificate: %s", openssl.readAllStandardError().constData());
        return {};
    }
    const QSslCertificate certificate(certFile.readAll());
    QSslConfiguration client = QSslConfiguration::defaultConfiguration();
    client.addCaCertificate(certificate);
    QSslConfiguration::setDefaultConfiguration(client);

    QSslConfiguration server = QSslConfiguration::defaultConfiguration();
    server.setLocalCertificate(certificate);
    server.setPrivateKey(QSslKey(keyFile.readAll(), QSsl::Ec));
    return server;
}

} // namespace

QByteArray HostRequest::header(const QByteArray &name) const
{
    for (const QByteArray &line : head.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).trimmed().compare(name, Qt::CaseInsensitive) == 0) {
            return line.mid(colon + 1).trimmed();
        }
    }
    return {};
}

ScriptedHost::ScriptedHost(Script script, bool tls) : m_script(std::move(script)), m_tls(tls)
{
    if (tls) {
        auto server = std::make_unique<QSslServer>();
        server->setSslConfiguration(makeServerConfiguration());
        m_server = std::move(server);
    } else {
        m_server = std::make_unique<QTcpServer>();
    }
    connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, &ScriptedHost::accept);
    if (!m_server->listen(QHostAddress::LocalHost)) {
        qWarning("the scripted host cannot listen: %s", qPrintable(m_server->errorString()));
    }
}

ScriptedHost::~ScriptedHost() = default;

void ScriptedHost::close()
{
    m_server->close();
}

QUrl ScriptedHost::url(const QByteArray &target) const
{
    return QUrl(QStringLiteral("%1://127.0.0.1:%2%3")
                    .arg(QLatin1String(m_tls ? "https" : "http"))
                    .arg(m_server->serverPort())
                    .arg(QString::fromLatin1(target)));
}

void ScriptedHost::accept()
{
    while (QTcpSocket *socket = m_server->nextPendingConnection()) {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        // The script runs once the whole request has come, its body included: closing a socket with unread bytes
        // would reset the connection before the client reads the answer.
        auto received = std::make_shared<QByteArray>();
        auto answered = std::make_shared<bool>(false);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket, received, answered] {
            *received += socket->readAll();
            const qsizetype end = received->indexOf("\r\n\r\n");
            if (*answered || end < 0) {
                return;
            }
            HostRequest request{received->split(' ').value(1), received->left(end + 4), {}};
            const qsizetype length = request.header("Content-Length").trimmed().toLongLong();
            if (received->size() < end + 4 + length) {
                return;
            }
            request.body = received->mid(end + 4, length);
            *answered = true;
            m_requests.append(request);
            m_script(socket, request);
        });
    }
}

void ScriptedHost::answer(QTcpSocket *socket, int status, const QByteArray &headers, const QByteArray &body)
{
    socket->write("HTTP/1.1 " + QByteArray::number(status) + " X\r\nConnection: close\r\nContent-Length: " +
                  QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body);
    socket->disconnectFromHost();
}

void ScriptedHost::dribble(QTcpSocket *socket, const QByteArray &head, const QByteArray &body, qsizetype chunk,
                           int intervalMs, qsizetype stopAfter)
{
    socket->write(head);
    auto *timer = new QTimer(socket);
    auto sent = std::make_shared<qsizetype>(0);
    const qsizetype end = stopAfter < 0 ? body.size() : stopAfter;
    QObject::connect(timer, &QTimer::timeout, socket, [socket, timer, body, chunk, sent, end] {
        // Never more than a chunk waiting in the socket: a flood that the client stops reading stays small here too.
        if (socket->bytesToWrite() > chunk) {
            return;
        }
        socket->write(body.mid(*sent, std::min(chunk, end - *sent)));
        *sent += std::min(chunk, end - *sent);
        if (*sent >= end) {
            timer->stop();
        }
    });
    timer->start(intervalMs);
}
