#include "install/VLInstaller.h"

#include "install/DiskImage.h"
#include "install/VLSynchronousTask.h"
#include "install/WorkFolder.h"
#include "platform/AppPaths.h"
#include "platform/FolderReader.h"
#include "platform/Log.h"
#include "platform/NativePath.h"

#include <QDir>
#include <QFileInfo>

#include <csignal>

// Unpacking and attaching. Every step works in a fresh folder beside the download, runs its tool there within the
// archive's budget, and checks that the archive named nothing outside that folder: the tools refuse such entries or
// rewrite them inside, and either way the unpacking counts as failed. The download's path is made absolute first,
// since the tools run inside the work folder.

QString VLInstaller::prepareWorkFolder(const QString &download, QString *file)
{
    m_unpackFailure.clear();
    *file = QFileInfo(download).absoluteFilePath();
    const QString workFolder = QFileInfo(*file).path() + QLatin1Char('/') + WorkFolder::uniqueName();
    return WorkFolder::prepare(workFolder) ? workFolder : QString();
}

bool VLInstaller::unpackWith(const UnpackBudget &budget, const QString &tool, const QStringList &args,
                             const QString &folder, QByteArray *output)
{
    m_unpackFailure = budget.checkFreeSpace();
    if (!m_unpackFailure.isEmpty()) {
        return false;
    }
    const QStringList command = budget.confine(WorkFolder::tool(tool), args);
    VLSynchronousTask runner;
    runner.setName(tool);
    runner.setWatch([&budget] { return budget.watch(); });
    runner.run(command.first(), folder, command.mid(1), std::nullopt);
    if (!runner.done() || runner.result() != 0) {
        // A file past the size limit ends the tool with a signal: the budget says why.
        const QString overBudget = runner.result() == 128 + SIGXFSZ ? budget.tooLarge() : budget.checkFolder();
        m_unpackFailure = overBudget.isEmpty() ? runner.failureText() : overBudget;
        return false;
    }
    m_unpackFailure = budget.checkFolder();
    if (output) {
        *output = runner.output();
    }
    return m_unpackFailure.isEmpty();
}

// bunzip2 writes beside the compressed file, not into the work folder.
bool VLInstaller::bunzip(const UnpackBudget &budget, const QString &file, const QString &workFolder)
{
    if (unpackWith(budget, QStringLiteral("bunzip2"), {QStringLiteral("-d"), file}, workFolder)) {
        return true;
    }
    vlLog(QStringLiteral("error extracting to %1").arg(workFolder));
    return false;
}

// tar's listing of what it unpacked (-v) names every entry as the archive spells it, before tar strips a leading
// "/", so it tells whether the archive tried to leave the folder. Modes are taken without set-id bits.
bool VLInstaller::untar(const UnpackBudget &budget, const QString &tarFile, const QString &workFolder)
{
    QByteArray listing;
    return unpackWith(budget, QStringLiteral("tar"),
                      {QStringLiteral("--no-same-owner"), QStringLiteral("--no-same-permissions"),
                       QStringLiteral("-xvf"), tarFile},
                      workFolder, &listing) &&
           WorkFolder::listsContainedNames(listing) && WorkFolder::holdsOnlyPlainEntries(workFolder);
}

VLInstaller::VLInstaller() = default;

void VLInstaller::setSenderApp(VLApp *app)
{
    m_senderApp = app;
}

VLApp *VLInstaller::senderApp() const
{
    return m_senderApp;
}

void VLInstaller::setRunningAppGate(RunningAppGate *gate)
{
    m_gate = gate;
}

QString VLInstaller::extractZIP(const QString &download)
{
    QString file;
    const QString workFolder = prepareWorkFolder(download, &file);
    if (workFolder.isEmpty()) {
        return {};
    }
    // unzip reads the names from the archive's directory alone, so checking them first costs next to nothing; unzip
    // itself then refuses to write through a link, and gives no set-id bit.
    const UnpackBudget budget(workFolder, QFileInfo(file).size(), m_unpackLimits);
    QByteArray names;
    const bool listed = unpackWith(budget, QStringLiteral("unzip"), {QStringLiteral("-Z1"), file}, workFolder, &names);
    QStringList arguments{QStringLiteral("-q"), QStringLiteral("-o"), file, QStringLiteral("-d"), workFolder};
    // The resource forks a Mac's archiver adds are left out; asked to leave out what is not there, unzip complains.
    if (names.startsWith("__MACOSX/") || names.contains("\n__MACOSX/")) {
        arguments << QStringLiteral("-x") << QStringLiteral("__MACOSX/*");
    }
    const bool unpacked = listed && WorkFolder::listsContainedNames(names) &&
                          unpackWith(budget, QStringLiteral("unzip"), arguments, workFolder) &&
                          WorkFolder::holdsOnlyPlainEntries(workFolder);
    if (!unpacked) {
        vlLog(QStringLiteral("error extracting to %1").arg(workFolder));
        return {};
    }
    return workFolder;
}

QString VLInstaller::extractTGZ(const QString &download)
{
    QString file;
    const QString workFolder = prepareWorkFolder(download, &file);
    if (workFolder.isEmpty()) {
        return {};
    }
    if (!untar(UnpackBudget(workFolder, QFileInfo(file).size(), m_unpackLimits), file, workFolder)) {
        vlLog(QStringLiteral("error extracting tgz to %1").arg(workFolder));
        return {};
    }
    return workFolder;
}

QString VLInstaller::extractBZ2(const QString &download)
{
    QString file;
    const QString workFolder = prepareWorkFolder(download, &file);
    if (workFolder.isEmpty()) {
        return {};
    }
    // The work folder stays empty: the file is decompressed in place.
    const UnpackBudget budget(workFolder, QFileInfo(file).size(), m_unpackLimits);
    return bunzip(budget, file, workFolder) ? workFolder : QString();
}

QString VLInstaller::extractTBZ(const QString &download)
{
    QString file;
    const QString workFolder = prepareWorkFolder(download, &file);
    if (workFolder.isEmpty()) {
        return {};
    }
    // bunzip2 replaces the archive by the tar file it holds; the tar file is measured by a budget of its own.
    const qint64 archiveBytes = QFileInfo(file).size();
    if (!bunzip(UnpackBudget(workFolder, archiveBytes, m_unpackLimits), file, workFolder)) {
        return {};
    }
    const QFileInfo info(file);
    const QString withoutExtension = info.path() + QLatin1Char('/') + info.completeBaseName();
    QString tarFile =
        file.contains(QLatin1String(".tar"), Qt::CaseInsensitive) ? withoutExtension : withoutExtension + u".tar";
    if (!QFileInfo(tarFile).isFile()) {
        vlLog(QStringLiteral("did not find tar file - searching %1").arg(workFolder));
        tarFile = findTarFile(workFolder);
        if (tarFile.isEmpty()) {
            const QString parent = QFileInfo(workFolder).path();
            vlLog(QStringLiteral("did not find tar file again - searching - %1").arg(parent));
            tarFile = findTarFile(parent);
        }
    }
    if (tarFile.isEmpty()) {
        vlLog(QStringLiteral("error extracting tar to %1").arg(workFolder));
        return {};
    }
    vlLog(QStringLiteral("found tar file - %1").arg(tarFile));
    if (!untar(UnpackBudget(workFolder, archiveBytes, m_unpackLimits), tarFile, workFolder)) {
        vlLog(QStringLiteral("error extracting to %1").arg(workFolder));
        return {};
    }
    return workFolder;
}

QString VLInstaller::findTarFile(const QString &folder)
{
    // An extension is compared without its dot here, so no entry ever matches: the name computed from the download
    // is the only way a tar file is found, as it always has been.
    FolderReader reader(NativePath::encode(folder));
    const std::vector<FolderReader::Entry> entries = reader.entries();
    for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
        if (QFileInfo(NativePath::decode(it->name)).suffix() == QLatin1String(".tar")) {
            return folder + QLatin1Char('/') + NativePath::decode(it->name);
        }
    }
    return {};
}

QString VLInstaller::mountDMG(const QString &download)
{
    const QString file = QFileInfo(download).absoluteFilePath();
    const QString temp = AppPaths::privateTempFolder();
    if (temp.isEmpty()) {
        return {};
    }
    const QString mountPoint = temp + QStringLiteral("/Volumes/") + WorkFolder::uniqueName();
    if (!WorkFolder::prepare(mountPoint)) {
        return {};
    }
    m_mountPoints.insert(file, mountPoint);
    if (!DiskImage::attach(file, mountPoint)) {
        vlLog(QStringLiteral("error extracting to %1 - could not mount dmg").arg(mountPoint));
        unmount(mountPoint, file);
        return {};
    }
    return mountPoint;
}

void VLInstaller::unmount(const QString &mountPoint, const QString &originalDMG)
{
    WorkFolder::remove(mountPoint);
    m_mountPoints.remove(QFileInfo(originalDMG).absoluteFilePath());
}

void VLInstaller::cleanUp(const QString &path)
{
    // Only ever a folder inside our private temporary folder: an empty or relative path would name the current one.
    const QString folder = QFileInfo(path).path();
    const QString temp = AppPaths::privateTempFolderName();
    if (temp.isEmpty() || !QDir::isAbsolutePath(path) || !QDir::cleanPath(folder).startsWith(temp + QLatin1Char('/'))) {
        return;
    }
    if (QFileInfo::exists(folder) || QFileInfo(folder).isSymLink()) {
        WorkFolder::remove(folder);
    }
}
