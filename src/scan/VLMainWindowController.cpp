#include "scan/VLMainWindowController.h"

#include "model/DateDescription.h"
#include "model/StringUtils.h"
#include "platform/AppPaths.h"
#include "platform/Log.h"
#include "platform/UserFeedback.h"
#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"
#include "scan/AutomatchPost.h"
#include "scan/OutdatedFilter.h"
#include "scan/UpdateNotices.h"
#include "scan/VLAppScanner.h"
#include "scan/VLScanData.h"
#include "scan/VLSendAllatOnceHelper.h"
#include "services/VLGoogleTracking.h"
#include "services/VLMemberAccount.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <algorithm>

namespace {

const QString kDoneFlag = QStringLiteral("VLUpdateDoneScannerFlag");

} // namespace

VLMainWindowController::VLMainWindowController(QObject *parent)
    : QObject(parent), m_memberAccount(std::make_unique<VLMemberAccount>())
{
    subscribeToMemberFlags();
    auto &center = VLNotificationCenter::defaultCenter();
    center.subscribe(QString::fromLatin1(kVLAppScannerFinished), this,
                     [this](const QVariant &apps) { matchScanData(apps.value<AppList>(), Mode::Foreground); });
    center.subscribe(QString::fromLatin1(kVLAppScannerFinishedBackground), this,
                     [this](const QVariant &apps) { matchScanData(apps.value<AppList>(), Mode::Background); });
    // updateDoneScannerFlag: the exchange has ended, so periodic checks may run again.
    center.subscribe(kDoneFlag, this, [this](const QVariant &) {
        m_donescanning = true;
        m_forceServerMatch = false;
        m_checkForUpdatesManual = false;
    });
}

VLMainWindowController::~VLMainWindowController()
{
    m_stopping = true;
    m_memberThreads.waitForDone();
    if (m_worker.joinable()) {
        m_worker.join();
    }
}

void VLMainWindowController::runOnWorker(std::function<void()> work, std::function<void()> then)
{
    if (m_worker.joinable()) {
        m_worker.join(); // it has finished: a new job starts only when m_workerRunning is false
    }
    m_workerRunning = true;
    m_worker = std::thread([this, work = std::move(work), then = std::move(then)] {
        // The store is read here, never on the front end's thread.
        if (!m_scanData) {
            m_scanData = std::make_unique<VLScanData>();
        }
        work();
        m_workerRunning = false;
        if (then) {
            QMetaObject::invokeMethod(this, then, Qt::QueuedConnection);
        }
    });
}

void VLMainWindowController::runCheckOnWorker(std::function<bool()> check)
{
    auto matched = std::make_shared<bool>(false);
    runOnWorker([matched, check = std::move(check)] { *matched = check(); },
                [this, matched] {
                    emit listChanged();
                    emit checkFinished(*matched);
                });
}

void VLMainWindowController::loadScanDataOrRunScan(bool appLaunchedFromLoginItem)
{
    m_donescanning = false;
    auto stale = std::make_shared<bool>(true);
    runOnWorker(
        [this, stale] {
            const std::optional<AppList> apps = m_scanData->apps();
            if (apps && !apps->isEmpty()) {
                const std::optional<QDateTime> matched = dateFromDescription(apps->first()->lastmatched);
                *stale = !matched || qAbs(matched->secsTo(QDateTime::currentDateTimeUtc())) > kRescanAgeSeconds;
            }
        },
        [this, stale, appLaunchedFromLoginItem] {
            if (!appLaunchedFromLoginItem && *stale) {
                m_forceServerMatch = true;
                showScanningScreenAndStartScanning(false);
                return;
            }
            m_donescanning = true;
            emit listChanged();
            emit checkFinished(true);
        });
}

void VLMainWindowController::checkForUpdates(bool forceReset)
{
    VLGoogleTracking::trackProgramEvent(QStringLiteral("check_for_updates"), QStringLiteral("MAIN_MENU"));
    if (m_workerRunning) {
        vlLog(QStringLiteral("scanning in progress - no background check"));
        return;
    }
    if (forceReset && QFileInfo::exists(VLScanData::pathForDataFile())) {
        vlLog(QStringLiteral("force delete cache folder"));
        QDir(AppPaths::dataFolder()).removeRecursively();
        m_scanData.reset(); // the next worker starts from an empty store
    }
    m_donescanning = false;
    m_forceServerMatch = true;
    m_checkForUpdatesManual = true;
    showScanningScreenAndStartScanning(false);
}

void VLMainWindowController::checkForUpdatesBackGround()
{
    if (!m_donescanning || m_workerRunning) {
        vlLog(QStringLiteral("scanning in progress - no background check"));
        return;
    }
    vlLog(QStringLiteral("start background checking"));
    VLGoogleTracking::trackProgramEvent(QStringLiteral("check_for_updates"), QStringLiteral("BACKGROUND_SCAN"),
                                        QStringLiteral("AUTO"));
    m_donescanning = false;
    showScanningScreenAndStartScanning(true);
}

void VLMainWindowController::checkForUpdatesBackGroundFast()
{
    vlLog(QStringLiteral("checkForUpdatesBackGroundFast"));
    if (!m_donescanning || m_workerRunning) {
        vlLog(QStringLiteral("background checking skipped - scanning in progress"));
        return;
    }
    m_donescanning = false;
    showScanningScreenAndStartScanning(true);
    VLGoogleTracking::trackProgramEvent(QStringLiteral("check_for_updates"), QStringLiteral("BACKGROUND_SCAN_FAST"),
                                        QStringLiteral("AUTO"));
}

void VLMainWindowController::checkForUpdatesToMASApps()
{
    if (!m_donescanning || m_workerRunning) {
        vlLog(QStringLiteral("MAS CHECK skipped - scanning in progress"));
        return;
    }
    runOnWorker(
        [this] {
            VLScanData::Change change(*m_scanData);
            bool changed = false;
            for (const AppRef &app : m_scanData->apps().value_or(AppList())) {
                if (!app->isAppStore || !app->isInstalled()) {
                    continue;
                }
                const QString before = app->localVersion;
                app->getLocalVersionTakingIntoAccountVersionOverride();
                if (app->localVersion != before) {
                    app->checkIfOutdated();
                    vlLog(QStringLiteral("MAS app new version set %1 %2 %3 isOutdated:%4")
                              .arg(app->displayName, app->localVersion, app->vlVersion)
                              .arg(int(app->isOutdated)));
                    changed = true;
                }
            }
            if (changed) {
                saveAppDatabase();
            }
        },
        [this] { emit listChanged(); });
}

void VLMainWindowController::showScanningScreenAndStartScanning(bool background)
{
    setProgress(0.0);
    setStatus(tr("Scanning for applications..."));
    m_scanner = std::make_unique<VLAppScanner>();
    m_scanner->setSendResultsToBackgroundCheker(background);
    m_scanner->createSearchPredicate();
}

void VLMainWindowController::matchScanData(const AppList &scanned, Mode mode)
{
    runCheckOnWorker([this, scanned, mode] { return loopScanBackgroundThread(scanned, mode); });
}

bool VLMainWindowController::loopScanBackgroundThread(const AppList &scanned, Mode mode)
{
    const bool foreground = mode == Mode::Foreground;
    if (scanned.isEmpty()) {
        if (foreground) {
            UserFeedback::current().showAlert(tr("No applications were found!"),
                                              tr("Please make sure that you have Spotlight enabled and permissions "
                                                 "to access your Applications folder."));
        }
        return finishCheck(false);
    }
    if (!mergeScan(scanned)) {
        return finishCheck(false);
    }
    VLSendAllatOnceHelper exchange;
    exchange.runningAsBackground = !foreground;
    const QString post = buildPost(mode);
    vlLog(foreground ? QStringLiteral("getting server matches for apps")
                     : QStringLiteral("sending post to auto matcher on server for background check"));
    setStatus(tr("Checking for updates..."));
    exchange.getMatches(post);
    if (!exchange.entriesDictionary) {
        return finishCheck(false);
    }
    applyMatches(exchange, mode);
    if (foreground) {
        notifyAfterForegroundCheck();
    } else {
        checkForNewUpdatesSinceLastScanAndNotify();
    }
    return finishCheck(true);
}

bool VLMainWindowController::mergeScan(const AppList &scanned)
{
    VLScanData::Change change(*m_scanData);
    if (m_scanData->apps() && !m_scanData->apps()->isEmpty()) {
        m_scanData->doQuickSanityCheck();
        m_scanData->updateAppsUsingNewScan(scanned);
    } else {
        m_scanData->setApps(scanned);
    }
    // Kept before the match, so a failed exchange leaves the merged records and nothing else.
    if (!m_scanData->saveDataToDisk()) {
        vlLog(QStringLiteral("Save DB error %1").arg(m_scanData->filePath()));
    }
    return true;
}

QString VLMainWindowController::buildPost(Mode mode)
{
    QString post = mode == Mode::Background  ? AutomatchPost::createPostBackGroundScan()
                   : m_checkForUpdatesManual ? AutomatchPost::createPostManualScan()
                                             : AutomatchPost::createPost();
    AppList working = m_scanData->apps().value_or(AppList());
    if (working.isEmpty()) {
        vlLog(QStringLiteral("app data missing"));
        return post;
    }
    std::stable_sort(working.begin(), working.end(),
                     [](const AppRef &a, const AppRef &b) { return a->localPath < b->localPath; });
    setProgress(0.0);
    const QMutexLocker lock(&m_scanData->mutex());
    for (qsizetype index = 0; index < working.size(); ++index) {
        AutomatchPost::appendAppFields(post, int(index), *working.at(index));
        setProgress(double(index + 1) / double(working.size()));
    }
    return post;
}

void VLMainWindowController::applyMatches(const VLSendAllatOnceHelper &exchange, Mode mode)
{
    const bool foreground = mode == Mode::Foreground;
    VLScanData::Change change(*m_scanData);
    const QMutexLocker lock(&m_scanData->mutex());
    AppList apps = m_scanData->apps().value_or(AppList());
    QHash<QString, AppRef> byDigest;
    for (const AppRef &app : apps) {
        byDigest.insert(app->digestString, app);
    }
    qsizetype done = 0;
    for (const QVariant &entry : exchange.serverApps) {
        QVariantMap item = entry.toMap();
        const auto field = [&item](const char *key) { return item.value(QString::fromLatin1(key)).toString(); };
        if (!foreground) {
            vlLog(QStringLiteral("JSON app %1 %2 %3 %4 %5")
                      .arg(field("g"), field("m"), field("h"), field("a"), field("e")));
        }
        if (field("h").isEmpty()) {
            item.insert(QStringLiteral("h"), md5HexHash(field("m")));
        }
        if (const AppRef app = byDigest.value(field("h"))) {
            app->updateWithServerItemJSON(item);
        } else if (foreground) {
            vlLog(QStringLiteral("no local app found - creating new app %1 %2").arg(field("m"), field("g")));
            apps.append(std::make_shared<VLApp>(VLApp::initWithServerItemJSON(item)));
        } else {
            vlLog(QStringLiteral("no local path match for background scan %1 %2").arg(field("m"), field("g")));
        }
        setProgress(double(++done) / double(exchange.serverApps.size()));
    }
    m_scanData->setApps(apps);
    setStatus(tr("Syncing Done"));
    setProgress(1.0);
    saveAppDatabase();
}

void VLMainWindowController::saveAppDatabase()
{
    if (!m_scanData->saveDataToDisk()) {
        vlLog(QStringLiteral("Save DB error %1").arg(m_scanData->filePath()));
    }
}

AppList VLMainWindowController::outdatedApps() const
{
    return m_workerRunning ? AppList() : storedOutdatedApps();
}

AppList VLMainWindowController::storedOutdatedApps() const
{
    if (!m_scanData) {
        return {};
    }
    return ::outdatedApps(m_scanData->apps().value_or(AppList()), OutdatedFilterOptions::fromSettings(VLSettings()));
}

int VLMainWindowController::numberOfUpdatesFoundSinceLastScan() const
{
    return UpdateNotices::countNumberOfUpdatesFoundSinceLastScan(storedOutdatedApps());
}

void VLMainWindowController::notifyAfterForegroundCheck()
{
    const int count = numberOfUpdatesFoundSinceLastScan();
    const bool startScreen = m_startScreenShown;
    if (startScreen) {
        setStatus(tr("done scanning"));
    }
    if (count <= 0) {
        return;
    }
    const QString title = tr("%1 new updates are available").arg(count);
    if (startScreen) {
        UserFeedback::current().showSystemNotification(title, tr("Scanning Complete"), QString());
    } else {
        UserFeedback::current().showSystemNotification(title, tr("Update your apps now"), tr("View"));
    }
    UpdateNotices::rememberNotified();
}

void VLMainWindowController::checkForNewUpdatesSinceLastScanAndNotify()
{
    const int count = numberOfUpdatesFoundSinceLastScan();
    if (VLSettings().boolValue(SettingKey::showStatusItem) || count <= 0) {
        return;
    }
    vlLog(QStringLiteral("found updates"));
    emit changeStatusIconBlue();
    const UpdateNotices::Notice notice = UpdateNotices::backgroundNotice(count);
    UserFeedback::current().showSystemNotification(notice.title, notice.text, notice.button);
    UpdateNotices::rememberNotified();
}

void VLMainWindowController::setProgress(double fraction)
{
    // The bar follows in steps of a tenth, so a long list does not flood the front end.
    if (!m_startScreenShown || (fraction != 0.0 && fraction != 1.0 && qAbs(fraction - m_shownProgress) <= 0.1)) {
        return;
    }
    m_shownProgress = fraction;
    emit progressChanged(fraction);
}

void VLMainWindowController::setStatus(const QString &status)
{
    if (m_startScreenShown) {
        emit statusChanged(status);
    }
}

bool VLMainWindowController::finishCheck(bool matched)
{
    VLNotificationCenter::defaultCenter().post(kDoneFlag);
    return matched;
}
