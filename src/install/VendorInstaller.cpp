#include "install/VendorInstaller.h"

#include "model/BundleReader.h"
#include "platform/DesktopOpener.h"
#include "platform/FolderReader.h"
#include "platform/NativePath.h"
#include "platform/RunningProcesses.h"
#include "platform/VLSettings.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QSet>
#include <QThread>

namespace {

constexpr int kLongestWaitMinutes = 30;
constexpr int kLookups = 6;

QSet<qint64> runningIds()
{
    QSet<qint64> ids;
    for (const RunningProcess &process : RunningProcesses::list()) {
        ids.insert(process.pid);
    }
    return ids;
}

// The app bundles in folder and, one level down, in its plain subfolders (vendors' folders).
QStringList appsIn(const QString &folder, int depth = 1)
{
    QStringList apps;
    FolderReader reader(NativePath::encode(folder));
    for (const FolderReader::Entry &entry : reader.entries()) {
        const QString path = folder + QLatin1Char('/') + NativePath::decode(entry.name);
        if (entry.kind != FolderReader::Kind::Folder || entry.isLink) {
            continue;
        }
        if (path.endsWith(QLatin1String(".app"))) {
            apps.append(path);
        } else if (depth > 0) {
            apps += appsIn(path, depth - 1);
        }
    }
    return apps;
}

QString lookUp(const QString &bundleID, const QString &excludedFolder)
{
    const QStringList folders = {VLSettings().volumeRoot() + QStringLiteral("Applications"),
                                 QDir::homePath() + QStringLiteral("/Applications")};
    for (const QString &folder : folders) {
        for (const QString &app : appsIn(folder)) {
            BundleReader bundle(app);
            const auto &info = bundle.bundleInfoDict();
            if (info && info->value(QStringLiteral("CFBundleIdentifier")).toString() == bundleID &&
                !app.contains(excludedFolder, Qt::CaseInsensitive)) {
                return app;
            }
        }
    }
    return {};
}

} // namespace

namespace VendorInstaller {

bool runToEnd(const QString &installerApp)
{
    if (!DesktopOpener::hasDisplay()) {
        return false;
    }
    const QSet<qint64> before = runningIds();
    if (!DesktopOpener::open(installerApp)) {
        return false;
    }
    QThread::sleep(2);
    QSet<qint64> installer = runningIds() - before;
    const QDeadlineTimer deadline{std::chrono::minutes(kLongestWaitMinutes)};
    while (!installer.isEmpty() && !deadline.hasExpired()) {
        QThread::sleep(1);
        installer.intersect(runningIds());
    }
    return true;
}

QString findInstalledApp(const QString &bundleID, const QString &excludedFolder)
{
    for (int attempt = 0; attempt < kLookups; ++attempt) {
        const QString found = lookUp(bundleID, excludedFolder);
        if (!found.isEmpty()) {
            return found;
        }
        QThread::sleep(1);
    }
    return {};
}

} // namespace VendorInstaller
