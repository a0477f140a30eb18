#pragma once

// SIGTERM, SIGINT and SIGHUP turned into a Qt signal on the thread that made the object, so a long-running
// process can end its event loop and finish its work cleanly instead of dying mid-write.

#include <QObject>

class QSocketNotifier;

class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;

signals:
    void received(int signalNumber);

private:
    QSocketNotifier *m_notifier = nullptr;
};
