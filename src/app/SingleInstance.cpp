#include "app/SingleInstance.h"

#include <QDataStream>
#include <QLocalServer>
#include <QLocalSocket>

#include <unistd.h>

namespace {

constexpr int kTimeoutMs = 2000;

} // namespace

SingleInstance::SingleInstance(QObject *parent) : QObject(parent), m_server(new QLocalServer(this))
{
    connect(m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server->nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
                QDataStream in(socket);
                in.startTransaction();
                QStringList arguments;
                in >> arguments;
                if (!in.commitTransaction()) {
                    return; // the rest is still on its way
                }
                socket->write("ok");
                socket->flush();
                emit argumentsReceived(arguments);
            });
        }
    });
}

QString SingleInstance::serverName()
{
    return QStringLiteral("velmora-desktop-%1").arg(getuid());
}

bool SingleInstance::handOver(const QStringList &arguments)
{
    QLocalSocket socket;
    socket.connectToServer(serverName());
    if (!socket.waitForConnected(kTimeoutMs)) {
        return false;
    }
    QByteArray message;
    QDataStream out(&message, QIODevice::WriteOnly);
    out << arguments;
    socket.write(message);
    if (!socket.waitForBytesWritten(kTimeoutMs)) {
        return false;
    }
    // The answer says the running instance took the arguments; without it they may be lost.
    return socket.waitForReadyRead(kTimeoutMs) && socket.readAll() == "ok";
}

bool SingleInstance::listen()
{
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (m_server->listen(serverName())) {
        return true;
    }
    QLocalServer::removeServer(serverName());
    return m_server->listen(serverName());
}
