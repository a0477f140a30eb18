#pragma once

// Turns a downloaded file into the installed new version: unpacks or attaches it in a work folder beside the
// download, finds the item that is the new version, and puts it in place. One installer per installation, used on
// the update's worker thread only. Every operation answers null ("" for paths) on failure, after its log line.

#include "install/AuthHelper.h"
#include "install/UnpackBudget.h"

#include <QMap>
#include <QString>
#include <QStringList>

class RunningAppGate;
class UpdateState;
class VLApp;

class VLInstaller
{
public:
    VLInstaller();

    void setSenderApp(VLApp *app);
    VLApp *senderApp() const;
    // Asked around every replacement of an installed copy; may be null (the default).
    void setRunningAppGate(RunningAppGate *gate);
    // The update this installation belongs to, which learns the installer's failures; may be null (the default).
    void setUpdateState(UpdateState *state);

    // What unpacking may write, relative to each archive's size.
    void setUnpackLimits(const UnpackLimits &limits) { m_unpackLimits = limits; }
    // Why the last unpacking failed, in words for the user; "" when no reason is known.
    const QString &unpackFailure() const { return m_unpackFailure; }

    // Unpacking: each answers the work folder it made beside the download.
    QString extractZIP(const QString &file);
    QString extractTGZ(const QString &file);
    QString extractTBZ(const QString &file);
    QString extractBZ2(const QString &file);
    // Attaches a disk image at a mount point of the installer's choosing (Volumes/<unique name> in the private
    // temporary folder: the volume's contents copied out by 7zz) and answers it; unmount removes that folder.
    QString mountDMG(const QString &file);
    void unmount(const QString &mountPoint, const QString &originalDMG);
    QString findTarFile(const QString &folder);
    // Removes the folder that contains path.
    void cleanUp(const QString &path);

    // Choosing and placing: each answers the installed item's path.
    QString installNewVersionFrom(const QString &sourceFolder, const QString &localPath);
    QStringList installCandidates(const QString &folder);
    QString findBestMatchFromCandidates(const QStringList &candidates, const QString &match);
    QString handleBestMatch(const QString &best, const QString &localPath);
    // Installs a flat package's payloads at their install location under the setting volumeRoot; answers the
    // installed app named like the record, else the first app the payload carries, "-" when it carries none.
    QString installNewVersionFromPKG(const QString &package, const QString &localPath);
    QString mountDMGandInstall(const QString &image, const QString &localPath);
    // Copies item over target (links and modes kept), the gate asked before and told after; the old copy is kept
    // aside until the new one is in place and put back on failure.
    bool checkIfAppIsRunningAndInstall(const QString &item, const QString &target);
    // Whether a copy of item placed at target leaves the volume its reserve; when not, the update fails saying so.
    bool hasRoomToPlace(const QString &item, const QString &target);

private:
    // An installer app of the vendor's own: run it, then find what it installed.
    QString installWithVendorInstaller(const QString &installer, const QString &localPath);
    // A fresh work folder beside the download (made absolute in file); "" when it cannot be made.
    QString prepareWorkFolder(const QString &download, QString *file);
    // Runs an unpacking tool within budget; false, with the reason in unpackFailure, when it failed.
    bool unpackWith(const UnpackBudget &budget, const QString &tool, const QStringList &args, const QString &folder,
                    QByteArray *output = nullptr);
    // Whether tool lists only folders, files and links, all inside the folder; false, with the reason in
    // unpackFailure when one is known, when not.
    bool listsPlainContainedEntries(const UnpackBudget &budget, const QString &tool, const QString &file,
                                    const QString &workFolder);
    // Decompresses a gzip file beside it, the file kept; answers the file it holds, "" on failure.
    QString gunzip(const UnpackBudget &budget, const QString &file, const QString &workFolder);
    bool bunzip(const UnpackBudget &budget, const QString &file, const QString &workFolder);
    bool untar(const UnpackBudget &budget, const QString &tarFile, const QString &workFolder);

    UnpackLimits m_unpackLimits;
    QString m_unpackFailure;
    QMap<QString, QString> m_mountPoints;
    AuthHelper m_authhelper;
    VLApp *m_senderApp = nullptr;
    RunningAppGate *m_gate = nullptr;
    UpdateState *m_state = nullptr;
    bool m_shouldInstall = true;
};
