#include "install/AuthHelper.h"

#include "install/FlatPackage.h"
#include "install/PlaceTool.h"
#include "install/VLSynchronousTask.h"
#include "install/WorkFolder.h"
#include "platform/VLSettings.h"

#include <QFileInfo>

AuthHelper::AuthHelper() = default;

AuthHelper::AuthHelper(PrivilegedCommand::Escalation escalation) : m_escalation(escalation) {}

bool AuthHelper::copyPathWithForcedAuthentication(const QString &source, const QString &destination)
{
    return runWithForcedAuthentication(QStringLiteral("copy"), {source, destination});
}

bool AuthHelper::removePathWithForcedAuthentication(const QString &path)
{
    return runWithForcedAuthentication(QStringLiteral("remove"), {path});
}

bool AuthHelper::archivePathWithForcedAuthentication(const QString &source, const QString &archive)
{
    return runWithForcedAuthentication(QStringLiteral("archive"), {source, archive});
}

bool AuthHelper::replacePathWithForcedAuthentication(const QString &item, const QString &target)
{
    return runWithForcedAuthentication(QStringLiteral("replace"), {item, target});
}

bool AuthHelper::mergeFoldersWithForcedAuthentication(const QList<FolderMerge> &merges)
{
    return runWithForcedAuthentication(QStringLiteral("merge"), PlaceTool::mergePaths(merges));
}

bool AuthHelper::runPKGInstallerWithForcedAuthentication(const QString &package)
{
    installPackage(package);
    return false;
}

QString AuthHelper::queryInstallerWithPath(const QString &package)
{
    const QString title = FlatPackage::title(package);
    return title.isEmpty() ? QFileInfo(package).fileName() : title.section(QLatin1Char('\n'), 0, 0);
}

void AuthHelper::runinstallerWithPath(const QString &package)
{
    installPackage(package);
}

bool AuthHelper::installPackage(const QString &package)
{
    const QFileInfo packageFile(package);
    const QString workFolder = packageFile.absolutePath() + QLatin1Char('/') + WorkFolder::uniqueName();
    const auto payloads = FlatPackage::unpack(packageFile.absoluteFilePath(), workFolder, VLSettings().volumeRoot());
    QList<FolderMerge> merges;
    for (const UnpackedPayload &payload : payloads.value_or(QList<UnpackedPayload>())) {
        merges.append({payload.files, payload.target});
    }
    const bool installed = payloads && mergeFoldersWithForcedAuthentication(merges);
    WorkFolder::remove(workFolder);
    return installed;
}

bool AuthHelper::runWithForcedAuthentication(const QString &verb, const QStringList &paths)
{
    if (m_refused) {
        return false;
    }
    const QStringList command = PlaceTool::command(verb, paths);
    const CommandLine line = PrivilegedCommand::commandLine(command, m_escalation);
    if (line.program.isEmpty()) {
        m_refused = true;
        return false;
    }
    VLSynchronousTask task;
    task.run(line.program, {}, line.arguments, QByteArray());
    const bool escalated = line.program != command.value(0);
    if (escalated && PrivilegedCommand::wasRefused(task.result())) {
        m_refused = true;
    }
    return task.done() && task.result() == 0;
}
