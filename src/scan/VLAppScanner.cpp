#include "scan/VLAppScanner.h"

#include "model/BundleReader.h"
#include "model/VLMdItem.h"
#include "platform/Log.h"
#include "platform/ParallelMap.h"
#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"
#include "scan/BundleWalk.h"

#include <QDir>

#include <chrono>
#include <system_error>
#include <thread>

namespace {

QString lastComponent(const QString &path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

// The record for the bundle at path, or null when the blacklist hides it.
struct Scanned
{
    AppRef record;
    // The bundle's files that could not be read as property lists, for the bad-list report.
    QStringList problemFiles;
};

Scanned recordFor(const QString &path, const VLBlacklist &blacklist)
{
    // The blacklist and the record share one reader, so each bundle file is opened once.
    BundleReader bundle(path);
    if (blacklist.appIsOnBlackList(lastComponent(path), bundle)) {
        return {};
    }
    return {std::make_shared<VLApp>(VLApp::initWithMdItem(VLMdItem::fromBundle(bundle), bundle)),
            bundle.problemFiles()};
}

// Reading the bundles is most of a scan and each bundle stands alone, so they are read on all cores.
AppList recordsFromPaths(const QStringList &paths, const VLBlacklist &blacklist, const std::atomic<bool> *cancel,
                         int threads = 0, QStringList *problemFiles = nullptr)
{
    std::vector<Scanned> records = parallelMap<Scanned>(
        paths.size(), [&](qsizetype i) { return recordFor(paths.at(i), blacklist); }, cancel, threads);
    AppList apps;
    apps.reserve(paths.size());
    for (Scanned &scanned : records) {
        if (scanned.record) {
            apps.append(std::move(scanned.record));
        }
        if (problemFiles) {
            problemFiles->append(scanned.problemFiles);
        }
    }
    return apps;
}

// Waits for the service's names, giving up when the run is abandoned.
bool awaitServerNames(const std::shared_future<QStringList> &names, const std::atomic<bool> &cancel)
{
    while (names.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready) {
        if (cancel.load()) {
            return false;
        }
    }
    return true;
}

} // namespace

struct VLAppScanner::Run
{
    QStringList scopes;
    VLBlacklist blacklist;
    // Still to be appended to blacklist when valid.
    std::shared_future<QStringList> serverNames;
    std::atomic<bool> cancel{false};
    qsizetype found = 0;
    AppList apps;
    QStringList problemFiles;
    std::optional<QString> failure;
};

VLAppScanner::VLAppScanner(QObject *parent) : QObject(parent)
{
    m_serverNames = VLBlacklist::fetchServerList(VLSettings().hostURL(SettingKey::serviceHost, QStringLiteral("https")),
                                                 m_stopFetch);
}

VLAppScanner::VLAppScanner(const VLBlacklist &blacklist, QObject *parent) : QObject(parent), m_blacklist(blacklist) {}

VLAppScanner::~VLAppScanner()
{
    // A fetch still under way is not waited for to its end.
    m_stopFetch->store(true);
    stopRun();
}

const QStringList &VLAppScanner::blackListApps()
{
    takeServerNames();
    return m_blacklist.names();
}

void VLAppScanner::takeServerNames()
{
    if (m_serverNames.valid()) {
        m_blacklist.append(m_serverNames.get());
        m_serverNames = {};
    }
}

QStringList VLAppScanner::searchScopes()
{
    VLSettings settings;
    const QString root = settings.volumeRoot();
    const QString home = QDir::homePath();
    QStringList scopes = {
        root + QStringLiteral("Applications"),
        home + QStringLiteral("/Applications"),
        root + QStringLiteral("Developer/Applications"),
        home + QStringLiteral("/Library/Screen Savers"),
        home + QStringLiteral("/Library/Widgets"),
        home + QStringLiteral("/Library/PreferencePanes"),
        home + QStringLiteral("/Library/Internet Plug-Ins"),
        root + QStringLiteral("Library/Screen Savers"),
        root + QStringLiteral("Library/Widgets"),
        root + QStringLiteral("Library/PreferencePanes"),
        root + QStringLiteral("Library/Internet Plug-Ins"),
        root + QStringLiteral("Library/Application Support/SIMBL"),
    };
    for (const QString &path : settings.arrayValue(SettingKey::searchpaths)) {
        if (!path.isEmpty()) {
            scopes.append(QDir::cleanPath(QDir::current().absoluteFilePath(path)));
        }
    }
    return scopes;
}

void VLAppScanner::createSearchPredicate()
{
    m_scopes = searchScopes();
    startRun();
}

void VLAppScanner::runQuery()
{
    startRun();
}

bool VLAppScanner::appIsOnBlackList(const VLMdItem &item)
{
    takeServerNames();
    const QString path = item.path.value_or(QString());
    return m_blacklist.appIsOnBlackList(item.fsName.value_or(lastComponent(path)), path);
}

AppList VLAppScanner::collectApps(const QStringList &scopes, const VLBlacklist &blacklist,
                                  const std::atomic<bool> *cancel, int threads)
{
    return recordsFromPaths(BundleWalk::findBundles(scopes, cancel), blacklist, cancel, threads);
}

void VLAppScanner::startRun()
{
    stopRun();
    m_doneScanning.store(false);
    auto run = std::make_shared<Run>();
    run->scopes = m_scopes;
    run->blacklist = m_blacklist;
    run->serverNames = m_serverNames;
    m_run = run;
    // The outcome goes back to this scanner's thread as a queued call; the destructor joins the worker first, so the
    // scanner still exists when the call is posted, and a call left in the queue goes away with the scanner.
    try {
        m_thread = std::thread([this, run] {
            // Nothing may escape a worker thread: a failure becomes the scan's outcome.
            try {
                const QStringList paths = BundleWalk::findBundles(run->scopes, &run->cancel);
                run->found = paths.size();
                if (run->serverNames.valid() && awaitServerNames(run->serverNames, run->cancel)) {
                    run->blacklist.append(run->serverNames.get());
                }
                run->apps = recordsFromPaths(paths, run->blacklist, &run->cancel, 0, &run->problemFiles);
            } catch (const std::exception &e) {
                run->failure = QString::fromLocal8Bit(e.what());
            } catch (...) {
                run->failure = QStringLiteral("unknown failure");
            }
            QMetaObject::invokeMethod(
                this, [this, run] { finishRun(run); }, Qt::QueuedConnection);
        });
    } catch (const std::system_error &e) {
        // A scan that cannot start fails like one that breaks: whoever waits for its notification is not left waiting.
        run->failure = QString::fromLocal8Bit(e.what());
        QMetaObject::invokeMethod(
            this, [this, run] { finishRun(run); }, Qt::QueuedConnection);
    }
}

void VLAppScanner::stopRun()
{
    if (m_run) {
        m_run->cancel.store(true);
        m_run.reset();
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void VLAppScanner::finishRun(const std::shared_ptr<Run> &run)
{
    if (run != m_run) {
        return; // abandoned for a newer scan
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
    m_run.reset();

    VLNotificationCenter &center = VLNotificationCenter::defaultCenter();
    if (run->failure) {
        vlLog(QStringLiteral("Scanner Exception %1").arg(*run->failure));
        m_doneScanning.store(true);
        center.post(QLatin1String(kVLAppScannerFinished));
        return;
    }
    if (run->found == 0) {
        vlLog(QStringLiteral("mdQuery resultCount = 0"));
        m_doneScanning.store(true);
        center.post(QLatin1String(kVLAppScannerFinished));
        return;
    }
    // Posted from here, the scanner's own thread, like every notice of a scan.
    if (!run->problemFiles.isEmpty()) {
        center.post(QString::fromLatin1(kVLBadPlistFound), run->problemFiles);
    }
    m_doneScanning.store(true);
    center.post(
        QLatin1String(m_sendResultsToBackgroundCheker ? kVLAppScannerFinishedBackground : kVLAppScannerFinished),
        QVariant::fromValue(run->apps));
}
