#include "install/VLInstaller.h"

#include "install/DiskImage.h"
#include "install/VLSynchronousTask.h"
#include "install/WorkFolder.h"
#include "platform/AppPaths.h"
#include "platform/FolderReader.h"
#include "platform/Log.h"
#include "platform/NativePath.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <unistd.h>

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
    m_unpackFailure = budget.run(tool, args, folder, output).failure;
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

// gzip decompresses only a file whose name it knows (".gz", ".tgz", in lower case) and replaces it by what it holds:
// it is given a second name of the download, of our own, beside it, and answers the tar file there.
QString VLInstaller::gunzip(const UnpackBudget &budget, const QString &file, const QString &workFolder)
{
    const QString link = QFileInfo(file).path() + QLatin1Char('/') + WorkFolder::uniqueName() + u".tar.gz";
    if (::link(NativePath::encode(file).constData(), NativePath::encode(link).constData()) != 0 &&
        !QFile::copy(file, link)) {
        vlLog(QStringLiteral("error extracting to %1 - could not name the archive").arg(workFolder));
        return {};
    }
    // -f: gzip refuses a file with a second name otherwise; -n: the name stored in the archive is not used.
    const QString tarFile = link.chopped(3);
    if (!unpackWith(budget, QStringLiteral("gzip"), {QStringLiteral("-dfn"), link}, workFolder)) {
        QFile::remove(link);
        QFile::remove(tarFile);
        return {};
    }
    return tarFile;
}

// The tool that will unpack the archive lists it first, so that nothing is written for an archive that names an
// entry outside the folder (-t prints names as the archive spells them, a leading "/" or ".." included) or that
// would become a device node: tar and bsdtar make a character device 0,0 for one, and Linux lets anyone make that
// one (a whiteout), even without capabilities.
bool VLInstaller::listsPlainContainedEntries(const UnpackBudget &budget, const QString &tool, const QString &file,
                                             const QString &workFolder)
{
    QByteArray names;
    QByteArray kinds;
    if (!unpackWith(budget, tool, {QStringLiteral("-tf"), file}, workFolder, &names) ||
        !unpackWith(budget, tool, {QStringLiteral("-tvf"), file}, workFolder, &kinds)) {
        return false;
    }
    if (!WorkFolder::listsOnlyPlainKinds(kinds)) {
        m_unpackFailure = QCoreApplication::translate("VLInstaller", "the archive holds a device, pipe or socket");
        return false;
    }
    return WorkFolder::listsContainedNames(names);
}

// A plain tar is listed without reading its files' contents, so listing first costs little. Modes are taken
// without set-id bits.
bool VLInstaller::untar(const UnpackBudget &budget, const QString &tarFile, const QString &workFolder)
{
    const QString tar = QStringLiteral("tar");
    return listsPlainContainedEntries(budget, tar, tarFile, workFolder) &&
           unpackWith(budget, tar,
                      {QStringLiteral("--no-same-owner"), QStringLiteral("--no-same-permissions"),
                       QStringLiteral("-xf"), tarFile},
                      workFolder) &&
           WorkFolder::holdsOnlyPlainEntries(workFolder);
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
    // bsdtar unpacks a zip in about four fifths of unzip's time. Unpacking, it refuses ".." and writing through a
    // link, and with --no-same-permissions gives no set-id bit, even as root.
    const UnpackBudget budget(workFolder, QFileInfo(file).size(), m_unpackLimits);
    // The resource forks a Mac's archiver adds are left out ("^": at the top only, where it adds them).
    const QStringList arguments{QStringLiteral("--no-same-owner"),
                                QStringLiteral("--no-same-permissions"),
                                QStringLiteral("--exclude"),
                                QStringLiteral("^__MACOSX"),
                                QStringLiteral("-xf"),
                                file};
    const bool unpacked = listsPlainContainedEntries(budget, QStringLiteral("bsdtar"), file, workFolder) &&
                          unpackWith(budget, QStringLiteral("bsdtar"), arguments, workFolder) &&
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
    // Decompressed once to a plain tar, which is listed cheaply and then unpacked: each listing of the compressed
    // archive would decompress it again. The tar file is measured by a budget of its own, as for tar.bz2.
    const qint64 archiveBytes = QFileInfo(file).size();
    const QString tarFile = gunzip(UnpackBudget(workFolder, archiveBytes, m_unpackLimits), file, workFolder);
    const bool unpacked =
        !tarFile.isEmpty() && untar(UnpackBudget(workFolder, archiveBytes, m_unpackLimits), tarFile, workFolder);
    QFile::remove(tarFile);
    if (!unpacked) {
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
    m_unpackFailure.clear();
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
    if (!DiskImage::attach(file, mountPoint, m_unpackLimits, &m_unpackFailure)) {
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
