#pragma once

// The processes running on this machine, read from /proc: which of them run an executable from inside a folder (an
// installed app), quitting one politely, and starting one again as it was started.

#include <QList>
#include <QString>
#include <QStringList>

struct RunningProcess
{
    qint64 pid = 0;
    // The executable's absolute path; "" where it cannot be read (other users' processes).
    QString executable;
    // The command line it was started with, its own name first.
    QStringList arguments;
    QString workingDirectory;
    // The real user id it runs as: only a process of our own may be quit and started again by us.
    uint owner = 0;
};

namespace RunningProcesses {

QList<RunningProcess> list();
// The processes whose executable lies inside folder (folder itself included), of every user.
QList<RunningProcess> inside(const QString &folder);
// SIGTERM, then up to waitMs for the process to end; true when it has ended.
bool terminate(qint64 pid, int waitMs);
// Starts the executable again, detached, with the arguments and folder it had; false when it could not start.
bool relaunch(const RunningProcess &process);

} // namespace RunningProcesses
