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

// Unpacking and attaching. Every step works in a fresh folder beside the download, runs its tool there, and checks
// that the archive named nothing outside that folder: the tools refuse such entries or rewrite them inside, and
// either way the unpacking counts as failed. The download's path is made absolute first, since the tools run inside
// the work folder.

namespace {

// A fresh work folder beside the download (whose path is made absolute in file); "" when it cannot be made.
QString prepareWorkFolder(const QString &download, QString *file)
{
    *file = QFileInfo(download).absoluteFilePath();
    const QString workFolder = QFileInfo(*file).path() + QLatin1Char('/') + WorkFolder::uniqueName();
    return WorkFolder::prepare(workFolder) ? workFolder : QString();
}

// bunzip2 writes beside the compressed file, not into the work folder.
bool bunzip(const QString &file, const QString &workFolder)
{
    if (VLSynchronousTask::task(WorkFolder::tool(QStringLiteral("bunzip2")), workFolder,
                                {QStringLiteral("-d"), file})) {
        return true;
    }
    vlLog(QStringLiteral("error extracting to %1").arg(workFolder));
    return false;
}

// tar's listing of what it unpacked (-v) names every entry as the archive spells it, before tar strips a leading
// "/", so it tells whether the archive tried to leave the folder.
bool untar(const QString &tarFile, const QString &workFolder)
{
    const std::optional<QByteArray> listing =
        VLSynchronousTask::task(WorkFolder::tool(QStringLiteral("tar")), workFolder,
                                {QStringLiteral("--no-same-owner"), QStringLiteral("-xvf"), tarFile});
    return listing && WorkFolder::listsContainedNames(*listing) && WorkFolder::holdsOnlyPlainEntries(workFolder);
}

} // namespace

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

void VLInstaller::setUpdateState(UpdateState *state)
{
    m_state = state;
}

QString VLInstaller::extractZIP(const QString &download)
{
    QString file;
    const QString workFolder = prepareWorkFolder(download, &file);
    if (workFolder.isEmpty()) {
        return {};
    }
    // unzip reads the names from the archive's directory alone, so checking them first costs next to nothing; unzip
    // itself then refuses to write through a link.
    const QString unzip = WorkFolder::tool(QStringLiteral("unzip"));
    const std::optional<QByteArray> names = VLSynchronousTask::task(unzip, workFolder, {QStringLiteral("-Z1"), file});
    QStringList arguments{QStringLiteral("-q"), QStringLiteral("-o"), file, QStringLiteral("-d"), workFolder};
    // The resource forks a Mac's archiver adds are left out; asked to leave out what is not there, unzip complains.
    if (names && (names->startsWith("__MACOSX/") || names->contains("\n__MACOSX/"))) {
        arguments << QStringLiteral("-x") << QStringLiteral("__MACOSX/*");
    }
    const bool unpacked = names && WorkFolder::listsContainedNames(*names) &&
                          VLSynchronousTask::task(unzip, workFolder, arguments) &&
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
    if (!untar(file, workFolder)) {
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
    return bunzip(file, workFolder) ? workFolder : QString();
}

QString VLInstaller::extractTBZ(const QString &download)
{
    QString file;
    const QString workFolder = prepareWorkFolder(download, &file);
    if (workFolder.isEmpty()) {
        return {};
    }
    if (!bunzip(file, workFolder)) {
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
    if (!untar(tarFile, workFolder)) {
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
