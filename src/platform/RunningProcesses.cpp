#include "platform/RunningProcesses.h"

#include "platform/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QThread>

#include <cerrno>
#include <csignal>

namespace {

const QString kProc = QStringLiteral("/proc");

QStringList commandLine(const QString &pidFolder)
{
    QFile file(pidFolder + QStringLiteral("/cmdline"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QByteArray bytes = file.readAll();
    if (bytes.endsWith('\0')) {
        bytes.chop(1);
    }
    QStringList arguments;
    for (const QByteArray &argument : bytes.split('\0')) {
        arguments.append(QFile::decodeName(argument));
    }
    return arguments;
}

// The real user id on the "Uid:" line of the process's status.
uint realOwner(const QString &pidFolder)
{
    QFile status(pidFolder + QStringLiteral("/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return 0;
    }
    for (QByteArray line = status.readLine(); !line.isEmpty(); line = status.readLine()) {
        if (line.startsWith("Uid:")) {
            return line.mid(4).simplified().split(' ').value(0).toUInt();
        }
    }
    return 0;
}

bool isAlive(qint64 pid)
{
    if (::kill(pid_t(pid), 0) != 0 && errno == ESRCH) {
        return false;
    }
    // A child of ours that has ended stays a zombie until it is reaped: it has quit all the same.
    QFile stat(kProc + QLatin1Char('/') + QString::number(pid) + QStringLiteral("/stat"));
    if (!stat.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray line = stat.readAll();
    const qsizetype afterName = line.lastIndexOf(')');
    return afterName < 0 || line.mid(afterName + 2, 1) != "Z";
}

} // namespace

namespace RunningProcesses {

QList<RunningProcess> list()
{
    QList<RunningProcess> processes;
    const QStringList entries = QDir(kProc).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        bool numeric = false;
        const qint64 pid = entry.toLongLong(&numeric);
        if (!numeric) {
            continue;
        }
        const QString folder = kProc + QLatin1Char('/') + entry;
        QString executable = QFile::symLinkTarget(folder + QStringLiteral("/exe"));
        const QStringList arguments = commandLine(folder);
        // Kernel threads have neither.
        if (executable.isEmpty() && arguments.isEmpty()) {
            continue;
        }
        // A replaced or removed executable reads as "PATH (deleted)".
        executable.remove(QStringLiteral(" (deleted)"));
        processes.append(
            {pid, executable, arguments, QFile::symLinkTarget(folder + QStringLiteral("/cwd")), realOwner(folder)});
    }
    return processes;
}

QList<RunningProcess> inside(const QString &folder)
{
    const QString root = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    const QString canonical = QFileInfo(root).canonicalFilePath();
    QList<RunningProcess> found;
    for (const RunningProcess &process : list()) {
        for (const QString &base : {root, canonical}) {
            if (!base.isEmpty() &&
                (process.executable == base || process.executable.startsWith(base + QLatin1Char('/')))) {
                found.append(process);
                break;
            }
        }
    }
    return found;
}

bool terminate(qint64 pid, int waitMs)
{
    if (::kill(pid_t(pid), SIGTERM) != 0 && errno != ESRCH) {
        vlLog(QStringLiteral("cannot quit process %1").arg(pid));
        return false;
    }
    constexpr int kStepMs = 50;
    for (int waited = 0; isAlive(pid); waited += kStepMs) {
        if (waited >= waitMs) {
            return false;
        }
        QThread::msleep(kStepMs);
    }
    return true;
}

bool relaunch(const RunningProcess &process)
{
    if (!QFileInfo(process.executable).isExecutable()) {
        return false;
    }
    // A folder it ran in may have gone with the old copy.
    const QString folder = QFileInfo(process.workingDirectory).isDir() ? process.workingDirectory : QDir::homePath();
    // Started as from the desktop: not on our terminal, nor holding our output open.
    QProcess starter;
    starter.setProgram(process.executable);
    starter.setArguments(process.arguments.mid(1));
    starter.setWorkingDirectory(folder);
    starter.setStandardInputFile(QProcess::nullDevice());
    starter.setStandardOutputFile(QProcess::nullDevice());
    starter.setStandardErrorFile(QProcess::nullDevice());
    return starter.startDetached();
}

} // namespace RunningProcesses
