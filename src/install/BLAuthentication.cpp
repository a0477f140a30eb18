#include "install/BLAuthentication.h"

#include "install/VLSynchronousTask.h"
#include "install/WorkFolder.h"
#include "platform/Log.h"
#include "platform/RunningProcesses.h"

#include <QProcess>

#include <algorithm>

#include <unistd.h>

BLAuthentication::BLAuthentication(PrivilegedCommand::Escalation escalation) : m_escalation(escalation) {}

BLAuthentication &BLAuthentication::sharedInstance()
{
    static BLAuthentication shared;
    return shared;
}

bool BLAuthentication::isAuthenticated(const QString &) const
{
    return m_authorized || (m_escalation == PrivilegedCommand::Escalation::WhenNotRoot && geteuid() == 0);
}

bool BLAuthentication::fetchPassword(const QString &)
{
    // The escalation tool has no "ask only" mode, and a command run just to ask would make the real one ask again:
    // the prompt comes with the command itself, and a refusal there takes the right back (failedExecute).
    m_authorized = true;
    if (m_delegate) {
        m_delegate->authenticationDidAuthorize(this);
    }
    return m_authorized;
}

bool BLAuthentication::authenticate(const QString &command)
{
    if (!isAuthenticated(command)) {
        fetchPassword(command);
    }
    return isAuthenticated(command);
}

void BLAuthentication::deauthenticate()
{
    m_authorized = false;
    if (m_delegate) {
        m_delegate->authenticationDidDeauthorize(this);
    }
}

bool BLAuthentication::executeCommand(const QString &command, const QStringList &args)
{
    if (!authenticate(command)) {
        return failedExecute(-1);
    }
    const CommandLine line =
        PrivilegedCommand::commandLine(QStringList{command} + args.mid(0, kMostArguments), m_escalation);
    if (line.program.isEmpty() || !QProcess::startDetached(line.program, line.arguments)) {
        return failedExecute(-1);
    }
    if (m_delegate) {
        m_delegate->authenticationDidExecute(this);
    }
    return true;
}

std::optional<QByteArray> BLAuthentication::executeCommandSynced(const QString &command, const QStringList &args)
{
    if (!authenticate(command)) {
        failedExecute(-1);
        return std::nullopt;
    }
    const CommandLine line =
        PrivilegedCommand::commandLine(QStringList{command} + args.mid(0, kMostArguments), m_escalation);
    VLSynchronousTask task;
    if (!line.program.isEmpty()) {
        task.run(line.program, {}, line.arguments, QByteArray());
    }
    if (!task.done() || task.result() != 0) {
        failedExecute(task.result());
        return std::nullopt;
    }
    if (m_delegate) {
        m_delegate->authenticationDidExecute(this);
    }
    return task.output();
}

qint64 BLAuthentication::getPID(const QString &name) const
{
    for (const RunningProcess &process : RunningProcesses::list()) {
        // Our own command line may hold the name too.
        if (process.pid != getpid() && process.arguments.join(QLatin1Char(' ')).contains(name)) {
            return process.pid;
        }
    }
    return 0;
}

bool BLAuthentication::killProcess(const QString &name, int signal)
{
    const qint64 pid = authenticate(name) ? getPID(name) : 0;
    // Administrator rights serve our own processes only: another user's is theirs to quit.
    const QList<RunningProcess> processes = RunningProcesses::list();
    const bool ours = std::any_of(processes.cbegin(), processes.cend(), [pid](const RunningProcess &process) {
        return process.pid == pid && process.owner == getuid();
    });
    if (pid < 1 || !ours) {
        vlLog(QStringLiteral("Error killing process %1, invalid PID.").arg(name));
        if (m_delegate) {
            m_delegate->authenticationFailedKill(this);
        }
        return false;
    }
    // The signal as an option: given as a second number, kill would take it for another process id.
    if (!executeCommand(WorkFolder::tool(QStringLiteral("kill")),
                        {QStringLiteral("-s"), QString::number(signal), QString::number(pid)})) {
        return false;
    }
    if (m_delegate) {
        m_delegate->authenticationDidKill(this);
    }
    return true;
}

bool BLAuthentication::failedExecute(int status)
{
    if (PrivilegedCommand::wasRefused(status)) {
        m_authorized = false;
    }
    vlLog(QStringLiteral("Error %1 in AuthorizationExecuteWithPrivileges").arg(status));
    if (m_delegate) {
        m_delegate->authenticationFailedExecute(this);
    }
    return false;
}
