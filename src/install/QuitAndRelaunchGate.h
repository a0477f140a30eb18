#pragma once

// The running-app gate of one update: before an installed copy is replaced, its running processes (an executable
// inside the bundle) are quit with the user's consent, and after the replacement they are started again, the new
// copy if it is in place, the old one if it was put back. A refusal or a process that will not quit skips the
// installation, with the reason as the record's failure. Only our own processes are quit and started again: a copy
// another user runs skips the installation, saying so.

#include "install/RunningAppGate.h"
#include "platform/RunningProcesses.h"

#include <QCoreApplication>
#include <QList>

class VLApp;

class QuitAndRelaunchGate : public RunningAppGate
{
    Q_DECLARE_TR_FUNCTIONS(QuitAndRelaunchGate)

public:
    // How long a process is given to quit after SIGTERM.
    static constexpr int kQuitWaitMs = 10000;

    // app (with its catalogue id) receives the failure when the installation is skipped; may be null.
    explicit QuitAndRelaunchGate(VLApp *app = nullptr, const QString &vlID = QString());

    bool prepareToReplace(const QString &target) override;
    // The user chose to keep the app running: the installation was skipped on purpose, which is no failure.
    bool declined() const { return m_declined; }
    void finishedReplacing(const QString &target, bool placed) override;

private:
    // target: the bundle now in place, whose main executable stands in for an executable that is gone; "" for none.
    void relaunchQuit(const QString &target);

    VLApp *m_app;
    QString m_vlID;
    QList<RunningProcess> m_quit;
    bool m_declined = false;
};
