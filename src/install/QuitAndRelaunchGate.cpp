#include "install/QuitAndRelaunchGate.h"

#include "install/VLAppDownload.h"
#include "model/BundleReader.h"
#include "platform/Log.h"
#include "platform/UserFeedback.h"

#include <QFileInfo>

#include <algorithm>

#include <unistd.h>

QuitAndRelaunchGate::QuitAndRelaunchGate(VLApp *app, const QString &vlID) : m_app(app), m_vlID(vlID) {}

bool QuitAndRelaunchGate::prepareToReplace(const QString &target)
{
    QList<RunningProcess> running = RunningProcesses::inside(target);
    running.removeIf([](const RunningProcess &process) { return process.pid == QCoreApplication::applicationPid(); });
    if (running.isEmpty()) {
        return true;
    }
    const QString appName = QFileInfo(target).completeBaseName();
    // Another user's copy is theirs to quit: stopping it, or starting it again as us, is not ours to do.
    const bool othersRun = std::any_of(running.cbegin(), running.cend(),
                                       [](const RunningProcess &process) { return process.owner != geteuid(); });
    if (othersRun) {
        vlLog(QStringLiteral("installation skipped, %1 is running for another user").arg(target));
        if (m_app) {
            VLAppDownload::setFailure(*m_app, m_vlID,
                                      tr("Installation skipped: %1 is running for another user").arg(appName));
        }
        return false;
    }
    const bool quit = UserFeedback::current().askQuestion(
        tr("Please quit the application before continuing installation."), tr("%1 is running.").arg(appName),
        tr("Quit App and Proceed"), tr("Skip Installation"));
    if (!quit) {
        m_declined = true;
        vlLog(QStringLiteral("installation skipped, %1 is running").arg(target));
        if (m_app) {
            VLAppDownload::setFailure(*m_app, m_vlID, tr("Installation skipped: %1 is running").arg(appName));
        }
        return false;
    }
    bool allQuit = true;
    for (const RunningProcess &process : std::as_const(running)) {
        if (RunningProcesses::terminate(process.pid, kQuitWaitMs)) {
            m_quit.append(process);
        } else {
            allQuit = false;
            vlLog(QStringLiteral("process %1 did not quit").arg(process.pid));
        }
    }
    if (!allQuit) {
        relaunchQuit(QString()); // nothing is replaced: what did quit comes back as it was
        if (m_app) {
            VLAppDownload::setFailure(*m_app, m_vlID, tr("%1 did not quit; the update was not installed").arg(appName));
        }
        return false;
    }
    return true;
}

void QuitAndRelaunchGate::finishedReplacing(const QString &target, bool)
{
    relaunchQuit(target);
}

void QuitAndRelaunchGate::relaunchQuit(const QString &target)
{
    // A new version may name its executable differently: what ran from a path that is gone starts as the new copy's
    // main executable.
    QString mainExecutable;
    if (!target.isEmpty()) {
        BundleReader bundle(target);
        const std::optional<QVariantMap> &info = bundle.bundleInfoDict();
        const QString name = info ? info->value(QStringLiteral("CFBundleExecutable")).toString() : QString();
        if (!name.isEmpty() && !name.contains(QLatin1Char('/'))) {
            mainExecutable = target + QStringLiteral("/Contents/MacOS/") + name;
        }
    }
    for (RunningProcess process : std::as_const(m_quit)) {
        if (!QFileInfo::exists(process.executable) && !mainExecutable.isEmpty()) {
            process.executable = mainExecutable;
        }
        if (!RunningProcesses::relaunch(process)) {
            vlLog(QStringLiteral("cannot relaunch %1").arg(process.executable));
        }
    }
    m_quit.clear();
}
