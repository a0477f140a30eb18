#include "scan/CheckWorker.h"

#include "model/DateDescription.h"
#include "model/StringUtils.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/UserFeedback.h"
#include "platform/WebExchange.h"
#include "scan/VLScanData.h"
#include "scan/VLSendAllatOnceHelper.h"

#include <QHash>

#include <algorithm>

CheckWorker::CheckWorker(VLScanData &store) : m_store(store) {}

CheckWorker::~CheckWorker() = default;

void CheckWorker::loadStore()
{
    m_store.loadDataFromDisk();
    m_store.doQuickSanityCheck();
    const std::optional<AppList> apps = m_store.apps();
    QDateTime firstMatched;
    if (apps && !apps->isEmpty()) {
        firstMatched = dateFromDescription(apps->first()->lastmatched).value_or(QDateTime());
    }
    emit storeLoaded(firstMatched);
}

void CheckWorker::resetStore()
{
    m_store.setApps(std::nullopt);
}

void CheckWorker::match(const Request &request)
{
    m_request = request;
    if (request.scanned.isEmpty()) {
        if (!request.background) {
            UserFeedback::current().showAlert(tr("No applications were found!"),
                                              tr("Please make sure that you have Spotlight enabled and permissions "
                                                 "to access your Applications folder."));
        }
        emit checkEnded(false);
        return;
    }
    {
        // Saved with the match's outcome, success or failure, in one write: the file keeps the previous check's
        // records until then, so a kill meanwhile loses only this scan, which the next check makes again.
        VLScanData::Change change(m_store, -1, request.scanned);
        mergeScan(request.scanned);
    }
    const QString post = buildPost();
    vlLog(request.background ? QStringLiteral("sending post to auto matcher on server for background check")
                             : QStringLiteral("getting server matches for apps"));
    emit status(tr("Checking for updates..."));
    m_exchange = std::make_unique<WebExchange>(VLSendAllatOnceHelper::matchRequest(post));
    connect(m_exchange.get(), &WebExchange::finished, this, &CheckWorker::takeReply);
    connect(m_exchange.get(), &WebExchange::failed, this, &CheckWorker::takeReply);
    if (!m_waitTurn) {
        m_waitTurn = new ClockTimer(this);
        connect(m_waitTurn, &ClockTimer::timeout, this, &CheckWorker::tickWait);
    }
    m_waitTurns = 0;
    m_waitTurn->start(kWaitTurnMs);
    m_exchange->start();
}

void CheckWorker::tickWait()
{
    m_waitTurns = std::min(m_waitTurns + 1, kWaitTurnsToFull);
    emit status(tr("Waiting for match data..."));
    emit progress(double(m_waitTurns) / double(kWaitTurnsToFull));
}

void CheckWorker::takeReply(const WebResult &result)
{
    m_waitTurn->stop();
    m_exchange.release()->deleteLater(); // we are in one of its signals
    auto exchange = std::make_unique<VLSendAllatOnceHelper>();
    exchange->runningAsBackground = m_request.background;
    exchange->takeResult(result);
    const bool matched = exchange->entriesDictionary.has_value();
    // Saved with the match's outcome; a failed match keeps the merged records, and nothing of the match.
    VLScanData::Change change(m_store, -1, m_request.scanned);
    // Another process saved the store during the exchange: its records, with this scan merged again.
    if (change.reloaded()) {
        mergeScan(m_request.scanned);
    }
    if (matched) {
        applyMatches(*exchange);
    }
    // The reply and the scan are done with: the save, which holds the whole file's text, is the check's peak.
    exchange.reset();
    m_request.scanned = AppList();
    saveAppDatabase();
    emit checkEnded(matched);
}

void CheckWorker::mergeScan(const AppList &scanned)
{
    if (m_store.apps() && !m_store.apps()->isEmpty()) {
        m_store.doQuickSanityCheck();
        m_store.updateAppsUsingNewScan(scanned);
    } else {
        m_store.setApps(scanned);
    }
}

QString CheckWorker::buildPost()
{
    const MemberFields &member = m_request.member;
    QString post = m_request.background ? AutomatchPost::createPostBackGroundScan(member)
                   : m_request.manual   ? AutomatchPost::createPostManualScan(member)
                                        : AutomatchPost::createPost(member);
    AppList working = m_store.apps().value_or(AppList());
    if (working.isEmpty()) {
        vlLog(QStringLiteral("app data missing"));
        return post;
    }
    std::stable_sort(working.begin(), working.end(),
                     [](const AppRef &a, const AppRef &b) { return a->localPath < b->localPath; });
    setProgress(0.0);
    const QMutexLocker lock(&m_store.mutex());
    for (qsizetype index = 0; index < working.size(); ++index) {
        AutomatchPost::appendAppFields(post, int(index), *working.at(index));
        setProgress(double(index + 1) / double(working.size()));
    }
    return post;
}

void CheckWorker::applyMatches(const VLSendAllatOnceHelper &exchange)
{
    const bool foreground = !m_request.background;
    const QMutexLocker lock(&m_store.mutex());
    AppList apps = m_store.apps().value_or(AppList());
    QHash<QString, AppRef> byDigest;
    for (const AppRef &app : apps) {
        byDigest.insert(app->digestString, app);
    }
    // The bundles this check's scan has just read are not read again for the reply.
    QHash<QString, const VLApp *> scannedByPath;
    for (const AppRef &app : std::as_const(m_request.scanned)) {
        scannedByPath.insert(app->localPath, app.get());
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
            app->updateWithServerItemJSON(item, scannedByPath.value(app->localPath));
        } else if (foreground) {
            vlLog(QStringLiteral("no local app found - creating new app %1 %2").arg(field("m"), field("g")));
            apps.append(std::make_shared<VLApp>(VLApp::initWithServerItemJSON(item)));
        } else {
            vlLog(QStringLiteral("no local path match for background scan %1 %2").arg(field("m"), field("g")));
        }
        setProgress(double(++done) / double(exchange.serverApps.size()));
    }
    m_store.setApps(apps);
    emit status(tr("Syncing Done"));
    setProgress(1.0);
}

void CheckWorker::recheckAppStoreCopies()
{
    VLScanData::Change change(m_store);
    const QMutexLocker lock(&m_store.mutex());
    bool changed = false;
    for (const AppRef &app : m_store.apps().value_or(AppList())) {
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
    emit appStoreChecked();
}

void CheckWorker::saveAppDatabase()
{
    if (!m_store.saveDataToDisk()) {
        vlLog(QStringLiteral("Save DB error %1").arg(m_store.filePath()));
    }
}

void CheckWorker::setProgress(double fraction)
{
    // The bar follows in steps of a tenth, so a long list does not flood the front end.
    if (fraction != 0.0 && fraction != 1.0 && qAbs(fraction - m_shownProgress) <= 0.1) {
        return;
    }
    m_shownProgress = fraction;
    emit progress(fraction);
}
