#pragma once

// The update of one record: fetches the newest version's file from the catalogue's download URL into the record's
// private temporary folder, checks it against the catalogue's "filehash", and hands it to the installer by its
// kind. download() blocks until the update has failed, been cancelled or been installed: run it on the update's
// worker thread (its event loop turns while it waits).
//
// The worker changes only the record's download and installation state; what the record's owner must apply (the new
// localPath, the catalogue's word that the link opens a page) comes back in outcome(), for the owner to apply under
// its list's lock (applyOutcome).

#include "model/VLApp.h"

#include <QCoreApplication>
#include <QString>

#include <memory>
#include <optional>

class RunningAppGate;
class UpdateRows;
class VLInstaller;
struct DownloadResult;

struct UpdateOutcome
{
    // The installed item's path once the new version is in place; "" when nothing was installed.
    QString installedPath;
    // The download address leads to a web page: the app's page is opened instead of installing.
    bool opensInWindow = false;
    // The names the installer gave the record when the new copy went elsewhere than the old one; null when kept.
    QString name;
    QString displayName;
    // Left out on purpose (the user kept the app running); its failure message says why.
    bool skipped = false;
};

class VLAppDownload
{
    Q_DECLARE_TR_FUNCTIONS(VLAppDownload)

public:
    // What the downloaded file is, by its name; checked in this order.
    enum class InstallKind { DiskImage, Zip, SafariExtension, Package, TarGzip, TarBzip2, Bzip2, None };
    static InstallKind installKindFor(const QString &file);

    // Made on the thread that owns the record's list, under its lock: the catalogue's facts are read here, once.
    // rows and gate may be null; both must outlive the update.
    explicit VLAppDownload(std::shared_ptr<VLApp> app, UpdateRows *rows = nullptr, RunningAppGate *gate = nullptr);

    void download();
    const UpdateOutcome &outcome() const { return m_outcome; }

    // Stops the record's running update, from any thread.
    static void cancelUpdate(VLApp &app);
    // Records a failure on the record and tells whoever listens ("VLDownloadFailed"); vlID labels the event.
    static void setFailure(VLApp &app, const QString &vlID, const QString &message);
    // Takes what an update learnt into the record; the caller holds the record's list lock.
    static void applyOutcome(VLApp &app, const UpdateOutcome &outcome);
    // Deletes the file or folder at path, if any; errors are ignored.
    static void cleanUp(const QString &path);

private:
    void setFailure(const QString &message) { setFailure(*m_app, m_vlID, message); }
    bool prepareFolder();
    void sendDownloadRecord() const;
    // The file, continued from where a broken transfer stopped; "" when it did not arrive whole.
    QString fetch();
    bool takeResponse(const DownloadResult &result);
    void rejectPage();
    void failTransfer(const DownloadResult &result);
    void takeProgress(qint64 received, qint64 expected);
    void showProgress();
    void downloadDidFinish(const QString &file);
    bool installFrom(VLInstaller &installer, const QString &folder);
    void mountAndInstallFromDMG(VLInstaller &installer, const QString &file);
    void installFromPKG(VLInstaller &installer, const QString &file);
    void updateCompleteNotification();
    // Takes the installer's verdict from its copy: a failure into the record, new names into the outcome.
    void takeInstallerVerdict();

    std::shared_ptr<VLApp> m_app;
    UpdateRows *m_rows;
    RunningAppGate *m_gate;
    UpdateOutcome m_outcome;
    // The record's catalogue facts as they were when the update began.
    QString m_vlID;
    QString m_digest;
    QString m_downloadFolder;
    QString m_name;
    QString m_displayName;
    QString m_downloadURL;
    QString m_filehash;
    QString m_fileSize;
    // The installed copy's path while the update runs; the installer puts the new version there.
    QString m_localPath;
    // The record as the watch list gets it, when the user asked for downloads to be added there.
    std::optional<VLApp> m_watchListRecord;
    // The record as the installer sees and changes it: a copy, since only the record's owner may change its names.
    VLApp m_installerRecord;
    double m_shownProgress = -1.0;
    bool m_pageRejected = false;
    // The download is handed to another program, which reads it after the update has ended.
    bool m_keepsDownload = false;
};
