#include "scan/VLScanData.h"

#include "scan/ScanMerge.h"

#include <QHash>
#include <QJsonObject>

namespace {
bool isPresentMark(const QString &text)
{
    return !text.isEmpty() && text != QLatin1String("-");
}
} // namespace

VLScanData::VLScanData() : VLScanData(pathForDataFile()) {}

VLScanData::VLScanData(const QString &filePath) : m_file(filePath)
{
    if (m_file.stamp().exists) {
        loadDataFromDisk();
        doQuickSanityCheck();
    }
}

VLScanData::VLScanData(const QString &filePath, Unread) : m_file(filePath) {}

QString VLScanData::pathForDataFile()
{
    return ScanStoreFile::defaultPath();
}

void VLScanData::loadDataFromDisk()
{
    QMutexLocker locker(&m_mutex);
    ScanStoreFile::Contents contents = readFile();
    m_knownStamp = contents.stamp;
    if (contents.damage) {
        m_damage = contents.damage;
    }
    if (contents.stamp.exists) {
        m_fileModDate = contents.modified;
    }
    if (contents.status == ScanStoreFile::Status::Loaded) {
        m_apps = std::move(contents.apps);
    } else {
        m_apps.reset();
    }
}

std::optional<ScanStoreFile::Damage> VLScanData::damage() const
{
    QMutexLocker locker(&m_mutex);
    return m_damage;
}

ScanStoreFile::Contents VLScanData::readFile(const AppList &freshScan)
{
    // Restoring a record re-reads its bundle's version, unless a fresh scan has just read it.
    QHash<QString, const VLApp *> scannedByPath;
    scannedByPath.reserve(freshScan.size());
    for (const AppRef &app : freshScan) {
        scannedByPath.insert(app->localPath, app.get());
    }
    return m_file.read([&scannedByPath](const QJsonObject &archive) {
        const VLApp *scanned = scannedByPath.value(archive.value(QLatin1String("localPath")).toString());
        return std::make_shared<VLApp>(VLApp::initWithCoder(archive, scanned));
    });
}

bool VLScanData::saveDataToDisk()
{
    QMutexLocker locker(&m_mutex);
    // An absent store has nothing to keep; an empty file written for it could replace records another process saved.
    if (!m_apps) {
        return true;
    }
    const AppList &apps = *m_apps;
    const std::optional<FileStamp> written =
        m_file.write(apps.size(), [&apps](qsizetype i, QByteArray &out) { apps.at(i)->appendArchiveJson(out); });
    if (written) {
        m_knownStamp = *written;
    }
    return written.has_value();
}

void VLScanData::doQuickSanityCheck()
{
    QMutexLocker locker(&m_mutex);
    if (m_apps) {
        ScanMerge::doQuickSanityCheck(*m_apps);
    }
}

void VLScanData::updateAppsUsingNewScan(const AppList &newScan)
{
    QMutexLocker locker(&m_mutex);
    if (m_apps) {
        ScanMerge::updateAppsUsingNewScan(*m_apps, newScan);
    }
}

AppRef VLScanData::appWithVLID(const QString &vlID) const
{
    QMutexLocker locker(&m_mutex);
    if (m_apps) {
        for (const AppRef &app : std::as_const(*m_apps)) {
            if (app->vlID == vlID) {
                return app;
            }
        }
    }
    return nullptr;
}

bool VLScanData::hasAppWithVLID(const QString &vlID) const
{
    return appWithVLID(vlID) != nullptr;
}

bool VLScanData::hasOutdatedAppWithVLID(const QString &vlID, const std::function<bool(const VLApp &)> &updating) const
{
    QMutexLocker locker(&m_mutex);
    if (m_apps) {
        for (const AppRef &app : std::as_const(*m_apps)) {
            if (app->vlID == vlID && !(updating && updating(*app)) && app->isInstalled() && app->isOutdated) {
                return true;
            }
        }
    }
    return false;
}

bool VLScanData::hasPurchaseWithVLID(const QString &vlID) const
{
    QMutexLocker locker(&m_mutex);
    if (m_apps) {
        for (const AppRef &app : std::as_const(*m_apps)) {
            if (app->vlID == vlID && !app->isInstalled() && isPresentMark(app->purchasedVersion)) {
                return true;
            }
        }
    }
    return false;
}

bool VLScanData::hasPurchaseInstalledWithVLID(const QString &vlID) const
{
    QMutexLocker locker(&m_mutex);
    if (m_apps) {
        for (const AppRef &app : std::as_const(*m_apps)) {
            if (app->vlID == vlID && app->isInstalled() && isPresentMark(app->purchasedVersion)) {
                return true;
            }
        }
    }
    return false;
}

std::optional<AppList> VLScanData::apps() const
{
    QMutexLocker locker(&m_mutex);
    return m_apps;
}

void VLScanData::setApps(const std::optional<AppList> &apps)
{
    QMutexLocker locker(&m_mutex);
    m_apps = apps;
}

QDateTime VLScanData::fileModDate() const
{
    QMutexLocker locker(&m_mutex);
    return m_fileModDate;
}

bool VLScanData::reloadIfChangedOnDisk(const AppList &freshScan)
{
    QMutexLocker locker(&m_mutex);
    if (m_file.stamp() == m_knownStamp) {
        return false;
    }
    ScanStoreFile::Contents contents = readFile(freshScan);
    m_knownStamp = contents.stamp;
    if (contents.damage) {
        m_damage = contents.damage;
    }
    // A file that is gone or damaged holds nothing better than what this process has: keep it, to be saved again.
    if (contents.status != ScanStoreFile::Status::Loaded) {
        return false;
    }
    m_fileModDate = contents.modified;
    m_apps = std::move(contents.apps);
    doQuickSanityCheck();
    return true;
}

VLScanData::Change::Change(VLScanData &store, int timeoutMs, const AppList &freshScan) : m_store(store)
{
    store.m_mutex.lock();
    m_locked = store.m_file.lock(timeoutMs);
    if (m_locked) {
        m_reloaded = store.reloadIfChangedOnDisk(freshScan);
    }
}

VLScanData::Change::~Change()
{
    if (m_locked) {
        m_store.m_file.unlock();
    }
    m_store.m_mutex.unlock();
}
