#include "scan/ScanMerge.h"

#include "platform/Log.h"

#include <QFileInfo>
#include <QHash>
#include <QSet>

namespace {

const QString &kNotInstalled = RecordText::unknown;

bool fileExists(const QString &path)
{
    // "-" and "" are markers, not names: a file that happens to be called "-" in the working folder is no app.
    return !path.isEmpty() && path != kNotInstalled && QFileInfo::exists(path);
}

// An order or deal id names a purchase or a deal when it is there at all, "" included (a shop may send one): signing
// out leaves it absent (null), and "-" stands for "not known", like the purchased version that the lookups test.
bool isPresent(const QString &id)
{
    return !id.isNull() && id != kNotInstalled;
}

} // namespace

namespace ScanMerge {

void doQuickSanityCheck(AppList &apps)
{
    QSet<const VLApp *> trashed;
    for (const AppRef &app : std::as_const(apps)) {
        if (!fileExists(app->localPath)) {
            app->localPath = kNotInstalled;
        }
        if (app->localPath.contains(QLatin1String(".Trash"))) {
            vlLog(QStringLiteral("cache data contained app in Trash - removing %1").arg(app->displayName));
            trashed.insert(app.get());
        }
    }
    if (!trashed.isEmpty()) {
        apps.removeIf([&trashed](const AppRef &app) { return trashed.contains(app.get()); });
    }
}

void updateAppsUsingNewScan(AppList &apps, const AppList &newScan)
{
    const AppList scan = newScan;

    QSet<QString> scannedPaths;
    scannedPaths.reserve(scan.size());
    for (const AppRef &entry : scan) {
        scannedPaths.insert(entry->localPath);
    }

    // Removal pass: purchases and deals are remembered even when their app is gone.
    QSet<const VLApp *> removed;
    for (const AppRef &app : std::as_const(apps)) {
        if (scannedPaths.contains(app->localPath)) {
            continue;
        }
        if (isPresent(app->orderid) || isPresent(app->deal_id)) {
            app->localPath = kNotInstalled;
        } else {
            removed.insert(app.get());
        }
    }
    if (!removed.isEmpty()) {
        apps.removeIf([&removed](const AppRef &app) { return removed.contains(app.get()); });
    }

    // Addition pass: the first stored record with a path answers for it, as a search in stored order would.
    QHash<QString, VLApp *> storedByPath;
    storedByPath.reserve(apps.size());
    for (const AppRef &app : std::as_const(apps)) {
        if (!storedByPath.contains(app->localPath)) {
            storedByPath.insert(app->localPath, app.get());
        }
    }
    AppList additions;
    for (const AppRef &entry : scan) {
        const auto found = storedByPath.constFind(entry->localPath);
        if (found != storedByPath.cend()) {
            (*found)->lastOpened = entry->lastOpened;
        } else {
            additions.append(entry);
        }
    }
    apps.append(additions);
}

} // namespace ScanMerge
