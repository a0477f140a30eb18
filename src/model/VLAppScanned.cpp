// An installed record built from a scanned bundle: the file index's attributes, each under its own guard, then
// the facts read from the bundle and the defaults of a record the catalogue has not matched yet.

#include "model/BundleReader.h"
#include "model/PathNames.h"
#include "model/StringUtils.h"
#include "model/VLApp.h"
#include "model/VLMdItem.h"
#include "platform/Log.h"

namespace {

template <typename Read> QString guardedField(const std::optional<QString> &attribute, const char *logName, Read read)
{
    if (!attribute) {
        vlLog(QStringLiteral("Exception %1 %2").arg(QLatin1String(logName), QStringLiteral("attribute not readable")));
        return RecordText::unknown;
    }
    return read(*attribute);
}

} // namespace

VLApp VLApp::initWithBundleAt(const QString &path)
{
    BundleReader bundle(path);
    return initWithMdItem(VLMdItem::fromBundle(bundle), bundle);
}

VLApp VLApp::initWithMdItem(const VLMdItem &item)
{
    BundleReader bundle(item.path.value_or(QString()));
    return initWithMdItem(item, bundle);
}

VLApp VLApp::initWithMdItem(const VLMdItem &item, BundleReader &bundle)
{
    VLApp app;
    app.localPath = guardedField(item.path, "localpath", [](const QString &path) { return path; });
    app.digestString = guardedField(item.path, "digestString", [](const QString &path) { return md5HexHash(path); });
    app.localizedName = guardedField(item.displayName, "localizedName", trimmedString);
    app.name = guardedField(item.fsName, "name", trimmedString);
    app.displayName = guardedField(item.fsName, "displayName", [](const QString &fsName) {
        return removeTabsAndReturns(trimmedString(stringByDeletingPathExtension(trimmedString(fsName))));
    });
    app.bundleID = app.getBundleID(bundle);
    app.localVersion = app.getLocalVersion(bundle);
    app.kind =
        guardedField(item.fsName, "kind", [](const QString &fsName) { return pathExtension(trimmedString(fsName)); });
    if (item.lastUsedDate) {
        app.lastOpened = *item.lastUsedDate;
    }
    if (item.contentModificationDate) {
        app.lastModified = *item.contentModificationDate;
    } else {
        vlLog(QStringLiteral("Exception lastModified %1").arg(QStringLiteral("attribute not readable")));
    }
    app.setInstalledDefaults();
    app.appIcon = app.iconFilePath(bundle);
    app.isAppStore = app.getIsAppStore();
    app.requiresNewerOSVersion = app.getRequiresNewerOSVersion();
    app.markAppStoreName();
    return app;
}

void VLApp::setInstalledDefaults()
{
    markCatalogueUnknown();
    markCatalogueEmpty();
    isOutdated = false;
    isPaidUpgrade = false;
    dontCheckForUpdates = false;
    isSetLocalVersionToCurrent = false;
    downloadPath = createDownloadPath();
}
