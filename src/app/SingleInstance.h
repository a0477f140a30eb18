#pragma once

// One velmora per user: a second start hands its arguments (install links, "show the window") to the running one
// over a local socket named with the user's id, and exits.

#include <QObject>
#include <QStringList>

class QLocalServer;

class SingleInstance : public QObject
{
    Q_OBJECT

public:
    explicit SingleInstance(QObject *parent = nullptr);

    static QString serverName();
    // Hands arguments to a running instance; false when none answers.
    static bool handOver(const QStringList &arguments);
    // Becomes the running instance (a socket left by a crashed one is removed first); false when that fails.
    bool listen();

signals:
    void argumentsReceived(const QStringList &arguments);

private:
    QLocalServer *m_server;
};
