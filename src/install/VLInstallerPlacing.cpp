#include "install/VLInstaller.h"

#include "install/FlatPackage.h"
#include "install/PlacingRoom.h"
#include "install/Replacement.h"
#include "install/RunningAppGate.h"
#include "install/UpdateState.h"
#include "install/VendorInstaller.h"
#include "install/WorkFolder.h"
#include "model/VLApp.h"
#include "platform/DesktopOpener.h"
#include "platform/FileStatus.h"
#include "platform/FolderReader.h"
#include "platform/Log.h"
#include "platform/NativePath.h"
#include "platform/VLSettings.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>

// Routing the chosen item by its kind, and putting it in place.

namespace {

// Where an app goes when the record knows no installed copy.
QString applicationsFolder()
{
    return VLSettings().volumeRoot() + QStringLiteral("Applications/");
}

QString lastComponent(const QString &path)
{
    return QFileInfo(QDir::cleanPath(path)).fileName();
}

bool lexists(const QString &path)
{
    return FileStatus::of(path, FileStatus::Links::Own).reached();
}

// The app bundles a payload carries, nearest the top first; bundles are not entered.
QStringList appsCarried(const QString &root)
{
    QStringList apps;
    QStringList folders = {root};
    while (!folders.isEmpty()) {
        const QString folder = folders.takeFirst();
        FolderReader reader(NativePath::encode(folder));
        for (const FolderReader::Entry &entry : reader.entries()) {
            const QString path = folder + QLatin1Char('/') + NativePath::decode(entry.name);
            if (entry.kind == FolderReader::Kind::Folder && !entry.isLink) {
                (path.endsWith(QLatin1String(".app")) ? apps : folders).append(path);
            }
        }
    }
    return apps;
}

} // namespace

QString VLInstaller::installNewVersionFrom(const QString &sourceFolder, const QString &localPath)
{
    const QString local = (localPath == QLatin1String("-") || localPath.isEmpty()) ? applicationsFolder() : localPath;
    const QString best = findBestMatchFromCandidates(installCandidates(sourceFolder), lastComponent(local));
    if (best.isEmpty() || !lexists(best)) {
        vlLog(QStringLiteral("DID NOT FIND APP TO INSTALL"));
        return {};
    }
    return handleBestMatch(best, local);
}

QString VLInstaller::handleBestMatch(const QString &best, const QString &localPath)
{
    const QFileInfo info(best);
    const QString ext = info.suffix();
    const bool defaultTarget = localPath == applicationsFolder() || localPath == QLatin1String("-");
    if (ext == QLatin1String("dmg")) {
        return mountDMGandInstall(best, localPath);
    }
    if (ext == QLatin1String("mpkg") || ext == QLatin1String("pkg")) {
        vlLog(QStringLiteral("found pkg %1").arg(best));
        const QString installed = installNewVersionFromPKG(best, localPath);
        if (installed.isEmpty() || installed == QLatin1String("-")) {
            vlLog(QStringLiteral("Problem installing from PKG %1").arg(best));
            return {};
        }
        return installed;
    }
    if (ext == QLatin1String("app") &&
        (info.completeBaseName().contains(QLatin1String("Install"), Qt::CaseInsensitive) ||
         info.completeBaseName().contains(QLatin1String("Welcome"), Qt::CaseInsensitive))) {
        return installWithVendorInstaller(best, localPath);
    }
    if (ext == QLatin1String("safariextz")) {
        DesktopOpener::open(best);
        return {};
    }
    const QList<std::pair<QString, QString>> userFolders = {
        {QStringLiteral("wdgt"), QStringLiteral("Widgets")},
        {QStringLiteral("saver"), QStringLiteral("Screen Savers")},
        {QStringLiteral("prefPane"), QStringLiteral("PreferencePanes")}};
    for (const auto &[kind, folder] : userFolders) {
        if (ext.contains(kind, Qt::CaseInsensitive)) {
            const QString target =
                defaultTarget ? QDir::homePath() + QStringLiteral("/Library/") + folder + u'/' + info.fileName()
                              : localPath;
            return checkIfAppIsRunningAndInstall(best, target) ? target : QString();
        }
    }
    if (ext != QLatin1String("app")) {
        return {};
    }
    // No installed copy known: the app goes into the applications folder under its own name.
    const bool noCopy = defaultTarget || localPath.isEmpty();
    const QString target = noCopy ? applicationsFolder() + info.fileName() : localPath;
    if (!checkIfAppIsRunningAndInstall(best, target)) {
        return {};
    }
    if (m_senderApp && !(m_state && m_state->hasFailed()) && m_senderApp->localPath != target &&
        lexists(m_senderApp->localPath)) {
        m_senderApp->name = lastComponent(m_senderApp->localPath);
        m_senderApp->displayName = m_senderApp->name;
    }
    return target;
}

QString VLInstaller::installWithVendorInstaller(const QString &installer, const QString &localPath)
{
    const auto failed = [this]() {
        if (m_state) {
            m_state->fail(QCoreApplication::translate("VLInstaller", "Installer did not complete"));
        }
        return QString();
    };
    if (!VendorInstaller::runToEnd(installer)) {
        return failed();
    }
    if (m_senderApp && !m_senderApp->bundleID.isEmpty() && m_senderApp->bundleID != QLatin1String("-")) {
        const QString found = VendorInstaller::findInstalledApp(m_senderApp->bundleID, QFileInfo(installer).path());
        if (!found.isEmpty()) {
            return found;
        }
    }
    if (m_senderApp && !m_senderApp->name.isEmpty() && localPath.contains(m_senderApp->name)) {
        return localPath;
    }
    return failed();
}

QString VLInstaller::mountDMGandInstall(const QString &image, const QString &localPath)
{
    const QString mountPoint = mountDMG(image);
    if (mountPoint.isEmpty()) {
        return {};
    }
    vlLog(QStringLiteral("mountDMGandInstall %1").arg(mountPoint));
    const QString installed = installNewVersionFrom(mountPoint, localPath);
    // Here the volume is a copy on disk, not an attached image: it goes whether or not the installation succeeded.
    unmount(mountPoint, image);
    return installed;
}

QString VLInstaller::installNewVersionFromPKG(const QString &package, const QString &localPath)
{
    Q_UNUSED(localPath)
    const QFileInfo packageFile(package);
    const QString workFolder = packageFile.absolutePath() + QLatin1Char('/') + WorkFolder::uniqueName();
    m_unpackFailure.clear();
    const auto payloads = FlatPackage::unpack(packageFile.absoluteFilePath(), workFolder, VLSettings().volumeRoot(),
                                              m_unpackLimits, &m_unpackFailure);
    if (!payloads) {
        WorkFolder::remove(workFolder);
        return {};
    }
    // The app named like the record (with or without its extension), else the first app carried.
    const QString wanted = m_senderApp ? m_senderApp->name : QString();
    QString installed;
    bool named = false;
    QList<FolderMerge> merges;
    for (const UnpackedPayload &payload : *payloads) {
        merges.append({payload.files, payload.target});
        for (const QString &app : appsCarried(payload.files)) {
            const QFileInfo info(app);
            const bool isNamed = !wanted.isEmpty() && (info.fileName() == wanted || info.completeBaseName() == wanted);
            if (!named && (isNamed || installed.isEmpty())) {
                installed = QDir::cleanPath(payload.target + app.mid(payload.files.size()));
                named = isNamed;
            }
        }
    }
    const bool roomForAll = std::all_of(merges.cbegin(), merges.cend(), [this](const FolderMerge &merge) {
        return hasRoomToPlace(merge.folder, merge.target);
    });
    const bool mayInstall = roomForAll && (installed.isEmpty() || !m_gate || m_gate->prepareToReplace(installed));
    const bool complete = mayInstall && Replacement(m_authhelper).merge(merges);
    if (m_gate && !installed.isEmpty() && mayInstall) {
        m_gate->finishedReplacing(installed, complete);
    }
    WorkFolder::remove(workFolder);
    if (!complete) {
        return {};
    }
    return installed.isEmpty() ? QStringLiteral("-") : installed;
}

// Checked before anything is quit or copied: a volume filled by the new copy would leave no room to finish.
bool VLInstaller::hasRoomToPlace(const QString &item, const QString &target)
{
    const QString noRoom = PlacingRoom::check(item, target, m_unpackLimits.reserveBytes);
    if (noRoom.isEmpty()) {
        return true;
    }
    vlLog(QStringLiteral("not enough free space to place %1: %2").arg(item, noRoom));
    if (m_state) {
        m_state->fail(QCoreApplication::translate("VLInstaller", "Not enough free space: %1").arg(noRoom));
    }
    return false;
}

bool VLInstaller::checkIfAppIsRunningAndInstall(const QString &item, const QString &target)
{
    if (!hasRoomToPlace(item, target)) {
        return false;
    }
    m_shouldInstall = !m_gate || m_gate->prepareToReplace(target);
    if (!m_shouldInstall) {
        return false;
    }
    const bool placed = Replacement(m_authhelper).replace(item, target);
    if (m_gate) {
        m_gate->finishedReplacing(target, placed);
    }
    return placed;
}
