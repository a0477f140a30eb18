#include "scan/VLMainWindowController.h"

#include "platform/AppPaths.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/UserFeedback.h"
#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"
#include "platform/WorkerThread.h"
#include "scan/CheckWorker.h"
#include "scan/OutdatedFilter.h"
#include "scan/UpdateNotices.h"
#include "scan/VLAppScanner.h"
#include "scan/VLMemberSession.h"
#include "scan/VLScanData.h"
#include "services/VLGoogleTracking.h"

#include <QDir>
#include <QFileInfo>

VLMainWindowController::VLMainWindowController(QObject *parent)
    : QObject(parent), m_scanData(std::make_unique<VLScanData>(VLScanData::pathForDataFile(), VLScanData::Unread{})),
      m_checkWorker(new CheckWorker(*m_scanData)),
      m_checkThread(std::make_unique<WorkerThread>(m_checkWorker, QStringLiteral("check"))),
      m_memberSession(new VLMemberSession(*m_scanData)),
      m_memberThread(std::make_unique<WorkerThread>(m_memberSession, QStringLiteral("member")))
{
    qRegisterMetaType<QList<InstallLinks::LinkedApp>>();
    connect(m_checkWorker, &CheckWorker::storeLoaded, this, &VLMainWindowController::takeStoreLoaded);
    connect(m_checkWorker, &CheckWorker::checkEnded, this, &VLMainWindowController::takeCheckEnded);
    connect(m_checkWorker, &CheckWorker::progress, this, &VLMainWindowController::forwardProgress);
    connect(m_checkWorker, &CheckWorker::status, this, &VLMainWindowController::forwardStatus);
    connect(m_checkWorker, &CheckWorker::appStoreChecked, this, &VLMainWindowController::listChanged);

    connect(m_memberSession, &VLMemberSession::memberChanged, this, [this](const VLMemberAccount &account) {
        m_member = account;
        emit memberChanged(account.isLoggedIn);
    });
    connect(m_memberSession, &VLMemberSession::listChanged, this, &VLMainWindowController::listChanged);
    connect(m_memberSession, &VLMemberSession::watchListsLoaded, this, &VLMainWindowController::watchListsLoaded);
    connect(m_memberSession, &VLMemberSession::purchasesLoaded, this, &VLMainWindowController::purchasesLoaded);
    connect(m_memberSession, &VLMemberSession::promosLoaded, this, &VLMainWindowController::promosLoaded);
    connect(m_memberSession, &VLMemberSession::loginEnded, this, [this](const VLMemberAccount &account) {
        takeFormSignIn(account);
        emit loginEnded(account);
    });
    connect(m_memberSession, &VLMemberSession::signupEnded, this, [this](const VLMemberAccount &account) {
        takeFormSignIn(account);
        emit signupEnded(account);
    });
    connect(m_memberSession, &VLMemberSession::profileSaveEnded, this, &VLMainWindowController::profileSaveEnded);
    connect(m_memberSession, &VLMemberSession::dealOrdered, this, &VLMainWindowController::dealOrdered);

    auto &center = VLNotificationCenter::defaultCenter();
    center.subscribe(QString::fromLatin1(kVLAppScannerFinished), this,
                     [this](const QVariant &apps) { matchScanData(apps.value<AppList>(), false); });
    center.subscribe(QString::fromLatin1(kVLAppScannerFinishedBackground), this,
                     [this](const QVariant &apps) { matchScanData(apps.value<AppList>(), true); });
}

// The scanner stops first, then the worker threads end (a running step finishes), and the store goes last.
VLMainWindowController::~VLMainWindowController()
{
    m_scanner.reset();
    m_memberThread.reset();
    m_checkThread.reset();
}

void VLMainWindowController::loadScanDataOrRunScan(bool appLaunchedFromLoginItem)
{
    m_donescanning = false;
    m_appLaunchedFromLoginItem = appLaunchedFromLoginItem;
    m_checkThread->post([worker = m_checkWorker] { worker->loadStore(); });
}

void VLMainWindowController::takeStoreLoaded(const QDateTime &firstMatched)
{
    const bool stale = !firstMatched.isValid() || qAbs(firstMatched.secsTo(Clock::current().now())) > kRescanAgeSeconds;
    if (!m_appLaunchedFromLoginItem && stale) {
        startCheck(false, false);
        return;
    }
    emit listChanged();
    emit checkFinished(true);
    endCheck();
}

void VLMainWindowController::checkForUpdates(bool forceReset)
{
    VLGoogleTracking::trackProgramEvent(QStringLiteral("check_for_updates"), QStringLiteral("MAIN_MENU"));
    if (!m_donescanning) {
        vlLog(QStringLiteral("check for updates refused - scanning in progress"));
        emit checkRefused(tr("A check for updates is running already."));
        return;
    }
    if (forceReset && QFileInfo::exists(VLScanData::pathForDataFile())) {
        vlLog(QStringLiteral("force delete cache folder"));
        QDir(AppPaths::dataFolder()).removeRecursively();
        m_checkThread->post([worker = m_checkWorker] { worker->resetStore(); });
    }
    startCheck(false, true);
}

void VLMainWindowController::checkForUpdatesBackGround()
{
    if (!m_donescanning) {
        vlLog(QStringLiteral("scanning in progress - no background check"));
        return;
    }
    vlLog(QStringLiteral("start background checking"));
    VLGoogleTracking::trackProgramEvent(QStringLiteral("check_for_updates"), QStringLiteral("BACKGROUND_SCAN"),
                                        QStringLiteral("AUTO"));
    startCheck(true, false);
}

void VLMainWindowController::checkForUpdatesBackGroundFast()
{
    vlLog(QStringLiteral("checkForUpdatesBackGroundFast"));
    if (!m_donescanning) {
        vlLog(QStringLiteral("background checking skipped - scanning in progress"));
        return;
    }
    startCheck(true, false);
    VLGoogleTracking::trackProgramEvent(QStringLiteral("check_for_updates"), QStringLiteral("BACKGROUND_SCAN_FAST"),
                                        QStringLiteral("AUTO"));
}

void VLMainWindowController::checkForUpdatesToMASApps()
{
    if (!m_donescanning) {
        vlLog(QStringLiteral("MAS CHECK skipped - scanning in progress"));
        return;
    }
    m_checkThread->post([worker = m_checkWorker] { worker->recheckAppStoreCopies(); });
}

void VLMainWindowController::startCheck(bool background, bool manual)
{
    m_donescanning = false;
    m_backgroundCheck = background;
    m_checkForUpdatesManual = manual;
    emit checkStarted(background);
    forwardProgress(0.0);
    forwardStatus(tr("Scanning for applications..."));
    m_scanner = std::make_unique<VLAppScanner>();
    m_scanner->setSendResultsToBackgroundCheker(background);
    m_scanner->createSearchPredicate();
}

void VLMainWindowController::matchScanData(const AppList &scanned, bool background)
{
    CheckWorker::Request request;
    request.scanned = scanned;
    request.background = background;
    request.manual = m_checkForUpdatesManual;
    if (m_member.isLoggedIn) {
        request.member = {1, m_member.memberID};
    }
    m_checkThread->post([worker = m_checkWorker, request] { worker->match(request); });
}

void VLMainWindowController::takeCheckEnded(bool matched)
{
    m_scanner.reset();
    if (matched) {
        if (m_backgroundCheck) {
            checkForNewUpdatesSinceLastScanAndNotify();
        } else {
            notifyAfterForegroundCheck();
        }
    }
    VLNotificationCenter::defaultCenter().post(QStringLiteral("VLUpdateDoneScannerFlag"));
    emit listChanged();
    emit checkFinished(matched);
    // The scan merge keeps the purchases the store holds: show them again (the session asks only for a member).
    if (m_member.isLoggedIn) {
        loadPurchaseHistory();
    }
    endCheck();
}

void VLMainWindowController::endCheck()
{
    m_donescanning = true;
    m_checkForUpdatesManual = false;
    // Each may start a check, which holds the rest back until it ends.
    while (m_donescanning && !m_whenDoneScanning.isEmpty()) {
        m_whenDoneScanning.takeFirst()();
    }
}

void VLMainWindowController::whenDoneScanning(std::function<void()> then)
{
    if (m_donescanning) {
        then();
    } else {
        m_whenDoneScanning.append(std::move(then));
    }
}

void VLMainWindowController::installFromLink(const QString &link)
{
    whenDoneScanning([this, link] {
        VLScanData *store = m_scanData.get();
        m_checkThread->post([this, store, link] {
            const QList<InstallLinks::LinkedApp> linked = InstallLinks::installFromLink(link, *store);
            QMetaObject::invokeMethod(
                this, [this, linked] { emit linkOpened(linked); }, Qt::QueuedConnection);
        });
    });
}

void VLMainWindowController::forwardProgress(double fraction)
{
    if (!m_backgroundCheck && m_startScreenShown) {
        emit progressChanged(fraction);
    }
}

void VLMainWindowController::forwardStatus(const QString &status)
{
    if (!m_backgroundCheck && m_startScreenShown) {
        emit statusChanged(status);
    }
}

AppList VLMainWindowController::outdatedApps() const
{
    const QMutexLocker lock(&m_scanData->mutex());
    return ::outdatedApps(m_scanData->apps().value_or(AppList()), OutdatedFilterOptions::fromSettings(VLSettings()));
}

int VLMainWindowController::numberOfUpdatesFoundSinceLastScan() const
{
    const AppList outdated = outdatedApps();
    const QMutexLocker lock(&m_scanData->mutex());
    return UpdateNotices::countNumberOfUpdatesFoundSinceLastScan(outdated);
}

void VLMainWindowController::notifyAfterForegroundCheck()
{
    const int count = numberOfUpdatesFoundSinceLastScan();
    if (m_startScreenShown) {
        emit statusChanged(tr("done scanning"));
    }
    if (count <= 0) {
        return;
    }
    const QString title = tr("%1 new updates are available").arg(count);
    if (m_startScreenShown) {
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

void VLMainWindowController::onMember(std::function<void(VLMemberSession &)> call)
{
    m_memberThread->post([session = m_memberSession, call = std::move(call)] { call(*session); });
}

void VLMainWindowController::checkMemberAndTryLogin()
{
    onMember(&VLMemberSession::checkMemberAndTryLogin);
}

void VLMainWindowController::login(const QString &email, const QString &password)
{
    onMember([email, password](VLMemberSession &session) { session.login(email, password); });
}

void VLMainWindowController::createAccount(const QString &email, const QString &password, const QString &firstName,
                                           const QString &lastName)
{
    onMember([=](VLMemberSession &session) { session.createAccount(email, password, firstName, lastName); });
}

void VLMainWindowController::saveAccountInfo(const VLMemberAccount &form)
{
    onMember([form](VLMemberSession &session) { session.saveAccountInfo(form); });
}

void VLMainWindowController::buyDeal(qint64 promoID, const VLMemberAccount &form)
{
    onMember([promoID, form](VLMemberSession &session) { session.buyDeal(promoID, form); });
}

void VLMainWindowController::takeFormSignIn(const VLMemberAccount &account)
{
    // The member's purchases and watch list come with a match made as the member.
    if (account.isLoggedIn) {
        whenDoneScanning([this] { startCheck(false, false); });
    }
}

void VLMainWindowController::logout()
{
    onMember(&VLMemberSession::logout);
}

void VLMainWindowController::loadWatchLists()
{
    // The merge follows the scan, so it never races its changes to the same records.
    whenDoneScanning([this] { onMember(&VLMemberSession::loadWatchLists); });
}

void VLMainWindowController::loadPurchaseHistory()
{
    onMember(&VLMemberSession::loadPurchaseHistory);
}

void VLMainWindowController::loadPurchases()
{
    onMember(&VLMemberSession::loadPurchases);
}

void VLMainWindowController::loadPromos()
{
    onMember(&VLMemberSession::loadPromos);
}
