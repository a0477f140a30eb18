#pragma once

// The processes running on this machine, read from /proc: which of them run an executable from inside a folder (an
// installed app), and quitting one politely.

#include <QList>
#include <QString>

struct RunningProcess
{
    qint64 pid = 0;
    // The executable's absolute path; processes whose executable cannot be read (other users') are left out.
    QString executable;
};

namespace RunningProcesses {

QList<RunningProcess> list();
// The processes whose executable lies inside folder (folder itself included).
QList<RunningProcess> inside(const QString &folder);
// SIGTERM, then up to waitMs for the process to end; true when it has ended.
bool terminate(qint64 pid, int waitMs);

} // namespace RunningProcesses
