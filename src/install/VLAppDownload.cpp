#include "install/VLAppDownload.h"

#include "install/DownloadBounds.h"
#include "install/FileHash.h"
#include "install/KeptDownload.h"
#include "install/StagingLeftovers.h"
#include "install/UpdateLock.h"
#include "install/VLInstaller.h"
#include "model/StringUtils.h"
#include "platform/AppPaths.h"
#include "platform/DesktopOpener.h"
#include "platform/FileLock.h"
#include "platform/HttpDownload.h"
#include "platform/Log.h"
#include "platform/UserFeedback.h"
#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"
#include "platform/WebRequest.h"
#include "services/FireAndForget.h"
#include "services/VLAppOnServer.h"
#include "services/VLGoogleTracking.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>
#include <QThreadPool>

namespace {

// An old browser's identity: some download hosts answer nothing else with the file itself.
const QByteArray kUserAgent = QByteArrayLiteral("Mozilla/5.0 (Macintosh; U; PPC Mac OS X; en-us) AppleWebKit/125.2.3 "
                                                "(KHTML, like Gecko) Velmora Desktop/6.0.4");
// The size assumed when the host does not say; progress may then pass 100%.
constexpr qint64 kUnknownLength = 555555;
// A transfer that breaks off is continued from where it stopped this many times, after a short pause.
constexpr int kResumeTries = 3;
constexpr unsigned long kResumePauseMs = 1000;
constexpr unsigned long kWatchListDelayMs = 5000;

void setHeader(HttpHeaders &headers, const QByteArray &name, const QByteArray &value)
{
    headers.removeIf([&name](const auto &header) { return header.first.compare(name, Qt::CaseInsensitive) == 0; });
    headers.append({name, value});
}

// A failure text with the reason a tool or a bound gave, when there is one.
QString withReason(const QString &failure, const QString &reason)
{
    return reason.isEmpty() ? failure : failure + QStringLiteral(": ") + reason;
}

} // namespace

VLAppDownload::InstallKind VLAppDownload::installKindFor(const QString &file)
{
    const QString extension = QFileInfo(file).suffix().toLower();
    const QString path = file.toLower();
    if (extension == QLatin1String("dmg")) {
        return InstallKind::DiskImage;
    }
    if (extension == QLatin1String("zip")) {
        return InstallKind::Zip;
    }
    if (extension == QLatin1String("safariextz")) {
        return InstallKind::SafariExtension;
    }
    if (extension == QLatin1String("pkg")) {
        return InstallKind::Package;
    }
    if (extension == QLatin1String("tgz") || extension == QLatin1String("tar") || extension == QLatin1String("gz") ||
        path.contains(QLatin1String(".tar.gz"))) {
        return InstallKind::TarGzip;
    }
    if (extension == QLatin1String("tbz") || path.contains(QLatin1String(".tar.bz2"))) {
        return InstallKind::TarBzip2;
    }
    if (extension == QLatin1String("bz2")) {
        return InstallKind::Bzip2;
    }
    return InstallKind::None;
}

VLAppDownload::VLAppDownload(std::shared_ptr<VLApp> app, UpdateState &state, RunningAppGate *gate)
    : m_app(std::move(app)), m_state(state), m_gate(gate), m_vlID(m_app->vlID), m_digest(m_app->digestString),
      m_downloadFolder(m_app->createDownloadPath()), m_name(m_app->name), m_displayName(m_app->displayName),
      m_downloadURL(m_app->download_url), m_filehash(m_app->filehash), m_fileSize(m_app->fileSize),
      m_localPath(m_app->localPath), m_installerRecord(*m_app)
{
    const VLSettings settings;
    if (!settings.stringValue(SettingKey::lastlogin).isEmpty() && settings.boolValue(SettingKey::addDownloadWL)) {
        m_watchListRecord = *m_app;
    }
}

void VLAppDownload::download()
{
    // The record's folder is this update's alone: another update of the same app, in this process or another, has
    // to end first.
    const QString lockPath = UpdateLock::path(m_digest);
    FileLock updating(lockPath);
    if (!lockPath.isEmpty() && !updating.lock(0)) {
        setFailure(tr("An update of %1 is already running").arg(m_displayName));
        VLNotificationCenter::defaultCenter().post(QStringLiteral("VLDownloadFailed"),
                                                   QVariant::fromValue(m_app.get()));
        return;
    }
    if (QDir::isAbsolutePath(m_localPath)) {
        StagingLeftovers::clearBeside(m_localPath);
    }
    m_downloadPath = m_downloadFolder;
    VLGoogleTracking::trackProgramEvent(QStringLiteral("UPDATE_APP"), m_vlID, m_vlID);
    if (m_watchListRecord) {
        QThreadPool::globalInstance()->start([record = *m_watchListRecord] {
            QThread::msleep(kWatchListDelayMs);
            VLAppOnServer::saveToWatchListOnServer(record);
        });
    }
    sendDownloadRecord();

    // Each update starts in an empty private folder: nothing left by an earlier one is unpacked by mistake.
    if (!prepareFolder()) {
        setFailure(tr("Problem saving download file"));
    } else if (const QString file = fetch(); !file.isEmpty() && !m_state.isCancelled()) {
        downloadDidFinish(file);
    }
    // Nothing of the update stays behind, whatever its end: not the download, not what was unpacked from it. An
    // extension is the exception: the desktop's opener still has to read it.
    if (!m_keepsDownload) {
        cleanUp(m_downloadFolder);
    }
    if (m_state.hasFailed()) {
        VLNotificationCenter::defaultCenter().post(QStringLiteral("VLDownloadFailed"),
                                                   QVariant::fromValue(m_app.get()));
        vlLog(QStringLiteral("canceled download run loop due to failure - %1").arg(m_state.failMessage()));
    }
}

void VLAppDownload::sendDownloadRecord() const
{
    const VLSettings settings;
    const QUrl url(settings.hostURL(SettingKey::serviceHost, QStringLiteral("http")) + QStringLiteral("/download604/") +
                   m_vlID + QLatin1Char('/') + m_digest + QLatin1Char('/') +
                   settings.stringValue(SettingKey::lastlogin) + QStringLiteral("/0/0/") +
                   urlEncodeValue(settings.stringValue(SettingKey::penguin)) + QLatin1Char('/') +
                   urlEncodeValue(settings.stringValue(SettingKey::serial)));
    // Only counted by the service: neither the download nor the program's exit waits for it.
    FireAndForget::send(WebRequest::get(url));
}

bool VLAppDownload::prepareFolder()
{
    if (AppPaths::privateTempFolder().isEmpty() || m_digest.isEmpty() || m_digest.contains(QLatin1Char('/')) ||
        m_digest.startsWith(QLatin1Char('.'))) {
        return false;
    }
    // The record's own folder, never the whole temporary folder: the digest has been checked above.
    cleanUp(m_downloadFolder);
    return QDir().mkpath(m_downloadFolder);
}

QString VLAppDownload::fetch()
{
    const QUrl url(m_downloadURL.trimmed(), QUrl::StrictMode);
    if (!url.isValid() || url.isRelative()) {
        vlLog(QStringLiteral("no download url for %1").arg(m_displayName));
        return {};
    }
    const VLSettings settings;
    DownloadRequest request;
    request.url = url;
    request.folder = m_downloadPath;
    DownloadBounds::apply(request, m_fileSize);
    request.cancel = m_state.cancelFlag();
    request.headers.append({QByteArrayLiteral("User-Agent"), kUserAgent});
    if (!m_downloadURL.contains(QLatin1String("sourceforge"))) {
        request.headers.append(
            {QByteArrayLiteral("Referer"),
             (settings.hostURL(SettingKey::siteHost, QStringLiteral("http")) + QLatin1Char('/')).toUtf8()});
    }
    // A hop away from our own hosts names where it came from, as a browser following the link would.
    const QString serviceDomain = QUrl(settings.hostURL(SettingKey::serviceHost)).host();
    request.onRedirect = [serviceDomain](const QUrl &next, HttpHeaders &headers) {
        if (!next.host().contains(serviceDomain)) {
            setHeader(headers, QByteArrayLiteral("Referer"), next.toEncoded());
        }
    };
    for (int tries = 0;; ++tries) {
        HttpDownload transfer(request);
        QObject::connect(&transfer, &HttpDownload::responded, &transfer, [this, &transfer](const DownloadResult &r) {
            if (!takeResponse(r)) {
                transfer.cancel();
            }
        });
        QObject::connect(&transfer, &HttpDownload::progress, &transfer,
                         [this](qint64 received, qint64) { takeProgress(received); });
        const DownloadResult result = transfer.run();
        if (!result.filePath.isEmpty()) {
            m_downloadPath = result.filePath;
            request.fileName = QFileInfo(result.filePath).fileName();
        }
        if (m_pageRejected || m_state.isCancelled() || result.outcome == DownloadResult::Outcome::Canceled) {
            return {};
        }
        if (result.finished()) {
            return result.filePath;
        }
        const bool broke = !result.overLimit && (result.status == 0 || (result.status >= 200 && result.status < 300));
        if (!broke || result.received <= 0 || tries >= kResumeTries) {
            failTransfer(result);
            return {};
        }
        vlLog(QStringLiteral("try resume downloading from %1").arg(result.filePath));
        QThread::msleep(kResumePauseMs);
    }
}

bool VLAppDownload::takeResponse(const DownloadResult &result)
{
    if (result.mimeType == "text/html") {
        rejectPage();
        return false;
    }
    m_downloadPath = result.filePath;
    m_expectedContentLength = result.expected > 0 ? result.expected : kUnknownLength;
    return true;
}

void VLAppDownload::rejectPage()
{
    m_pageRejected = true;
    m_outcome.opensInWindow = true;
    setFailure(tr("No direct download found"));
}

void VLAppDownload::failTransfer(const DownloadResult &result)
{
    if (result.mimeType == "text/html") {
        rejectPage();
    } else if (result.status >= 400) {
        vlLog(QStringLiteral("download didReceiveResponse 400 error %1 %2")
                  .arg(result.status)
                  .arg(result.finalUrl.toString()));
        m_outcome.opensInWindow = true;
        setFailure(tr("Download - 404 Not Found"));
    } else {
        vlLog(QStringLiteral("didFailWithError %1").arg(result.errorText));
        setFailure(result.errorText);
    }
}

void VLAppDownload::takeProgress(qint64 received)
{
    if (m_expectedContentLength < 1) {
        m_expectedContentLength = kUnknownLength;
    }
    const double fraction = double(received) / double(m_expectedContentLength);
    if (fraction >= 0.0001) {
        m_state.setProgress(fraction);
    }
}

void VLAppDownload::downloadDidFinish(const QString &file)
{
    if (!m_filehash.isEmpty() && !FileHash::matches(file, m_filehash)) {
        vlLog(QStringLiteral("download hash mismatch %1").arg(file));
        cleanUp(file);
        setFailure(tr("The downloaded file does not match the catalogue's checksum; nothing was installed"));
        return;
    }
    const VLSettings settings;
    if (settings.boolValue(SettingKey::keepDownload)) {
        KeptDownload::keep(file, settings);
    }
    if (!m_state.step(UpdateStep::Install)) {
        return; // cancelled just now
    }
    VLInstaller installer;
    installer.setSenderApp(&m_installerRecord);
    installer.setUpdateState(&m_state);
    installer.setRunningAppGate(m_gate);
    switch (installKindFor(file)) {
    case InstallKind::DiskImage:
        mountAndInstallFromDMG(installer, file);
        break;
    case InstallKind::Zip: {
        const QString folder = installer.extractZIP(file);
        if (folder.isEmpty()) {
            setFailure(withReason(tr("Error extracting zip file"), installer.unpackFailure()));
        } else {
            installFrom(installer, folder);
        }
        cleanUp(file);
        break;
    }
    case InstallKind::SafariExtension:
        m_keepsDownload = true;
        DesktopOpener::open(file);
        break;
    case InstallKind::Package:
        installFromPKG(installer, file);
        cleanUp(file);
        break;
    case InstallKind::TarGzip: {
        const QString folder = installer.extractTGZ(file);
        if (folder.isEmpty()) {
            setFailure(withReason(tr("Error extracting tgz file"), installer.unpackFailure()));
        } else {
            installFrom(installer, folder);
            m_state.clearFailure();
        }
        cleanUp(file);
        break;
    }
    case InstallKind::TarBzip2: {
        const QString folder = installer.extractTBZ(file);
        if (folder.isEmpty()) {
            setFailure(withReason(tr("Error extracting tbz file"), installer.unpackFailure()));
        } else {
            installFrom(installer, folder);
        }
        break;
    }
    case InstallKind::Bzip2: {
        const QString folder = installer.extractBZ2(file);
        if (folder.isEmpty()) {
            setFailure(withReason(tr("Error extracting bz2 file"), installer.unpackFailure()));
        } else {
            installFrom(installer, folder);
        }
        break;
    }
    case InstallKind::None:
        break;
    }
    takeInstallerVerdict();
}

void VLAppDownload::takeInstallerVerdict()
{
    if (m_installerRecord.name != m_name || m_installerRecord.displayName != m_displayName) {
        m_outcome.name = m_installerRecord.name;
        m_outcome.displayName = m_installerRecord.displayName;
    }
}

bool VLAppDownload::installFrom(VLInstaller &installer, const QString &folder)
{
    const QString installed = installer.installNewVersionFrom(folder, m_localPath);
    if (installed.isEmpty()) {
        return false;
    }
    m_localPath = installed;
    m_outcome.installedPath = installed;
    updateCompleteNotification();
    return true;
}

void VLAppDownload::mountAndInstallFromDMG(VLInstaller &installer, const QString &file)
{
    const QString mountPoint = installer.mountDMG(file);
    if (mountPoint.isEmpty()) {
        // The installer has logged why; the user learns that the image would not open, and nothing of it stays.
        setFailure(withReason(tr("Problem installing from DMG"), installer.unpackFailure()));
        installer.cleanUp(file);
        return;
    }
    if (installFrom(installer, mountPoint)) {
        cleanUp(file);
    } else if (!m_state.hasFailed()) {
        setFailure(tr("Problem installing from DMG"));
    }
    installer.unmount(mountPoint, file);
    cleanUp(file);
}

void VLAppDownload::installFromPKG(VLInstaller &installer, const QString &file)
{
    if (m_localPath == RecordText::unknown) {
        m_localPath = VLSettings().volumeRoot() + QStringLiteral("Applications/");
    }
    const QString installed = installer.installNewVersionFromPKG(file, m_localPath);
    if (installed.isEmpty() || installed == RecordText::unknown) {
        setFailure(withReason(tr("Problem installing from PKG"), installer.unpackFailure()));
        return;
    }
    m_localPath = installed;
    m_outcome.installedPath = installed;
    UserFeedback::current().showSystemNotification(tr("Install Complete"), m_displayName + tr(" has been installed"),
                                                   tr("Launch"), {{QStringLiteral("vldinfo"), installed}});
}

void VLAppDownload::updateCompleteNotification()
{
    VLGoogleTracking::trackProgramEvent(QStringLiteral("INSTALL_COMPLETED_SUSSESS"), m_vlID, m_vlID);
    if (VLSettings().boolValue(SettingKey::showUpdatesNotification)) {
        UserFeedback::current().showSystemNotification(tr("Update Complete"), m_displayName + tr(" has been updated"),
                                                       tr("Launch"), {{QStringLiteral("vldinfo"), m_localPath}});
    }
}

void VLAppDownload::setFailure(UpdateState &state, const QString &vlID, const QString &message)
{
    state.fail(message);
    VLGoogleTracking::trackProgramEvent(QStringLiteral("FAIL_UPDATE_APP"), vlID, vlID);
    VLNotificationCenter::defaultCenter().post(QStringLiteral("VLDownloadFailed"));
}

void VLAppDownload::applyOutcome(VLApp &app, const UpdateOutcome &outcome)
{
    if (outcome.opensInWindow) {
        app.opens_in_window = QStringLiteral("1");
        app.vld_install_from_link = QStringLiteral("2");
    }
    if (outcome.installedPath.isEmpty()) {
        return;
    }
    // The same app, now at the installed item's path; its names change only where the installer renamed it.
    app.localPath = outcome.installedPath;
    if (!outcome.name.isNull()) {
        app.name = outcome.name;
        app.displayName = outcome.displayName;
    }
    app.refreshLocalVersion();
    app.appIcon = app.iconFilePath();
    app.checkIfOutdated();
}

void VLAppDownload::cleanUp(const QString &path)
{
    const QFileInfo info(path);
    if (path.isEmpty() || (!info.exists() && !info.isSymLink())) {
        return;
    }
    if (info.isDir() && !info.isSymLink()) {
        QDir(path).removeRecursively();
    } else {
        QFile::remove(path);
    }
}
