#include "model/VLApp.h"

#include "platform/AppPaths.h"
#include "model/BundleReader.h"
#include "platform/Log.h"
#include "model/PathNames.h"
#include "model/StringUtils.h"
#include "model/VLMdItem.h"

#include <QJsonArray>
#include <QRandomGenerator>

#include <cstdio>
#include <cstdlib>

namespace {

const QString kDash = QStringLiteral("-");
const QString kEmpty = QStringLiteral("");
// The mark that App Store copies carry after their name.
const QString kAppStoreMark = QStringLiteral(" ") + QChar(0xF8FF);

QString cleanName(const QString &text)
{
    return text.isNull() ? text : removeTabsAndReturns(trimmedString(text));
}

// Archived strings: a number written where text belongs is read as its text; anything else is absent.
QString decodeString(const QJsonObject &archive, const char *key)
{
    const QJsonValue value = archive.value(QLatin1String(key));
    if (value.isString()) {
        return value.toString();
    }
    if (value.isDouble()) {
        return QString::number(value.toDouble(), 'g', 17);
    }
    return {};
}

QDateTime decodeDate(const QJsonObject &archive, const char *key)
{
    const QJsonValue value = archive.value(QLatin1String(key));
    return value.isString() ? QDateTime::fromString(value.toString(), Qt::ISODateWithMs) : QDateTime();
}

QJsonValue encodeString(const QString &text)
{
    return text.isNull() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}

QJsonValue encodeDate(const QDateTime &date)
{
    return date.isValid() ? QJsonValue(date.toUTC().toString(Qt::ISODateWithMs)) : QJsonValue(QJsonValue::Null);
}

// The leading number of a text, as the platform's numeric conversions read it ("12abc" is 12, "x" is 0).
double leadingDouble(const QString &text)
{
    const QByteArray latin = text.trimmed().toLatin1();
    return std::strtod(latin.constData(), nullptr);
}

long leadingInt(const QString &text)
{
    const QByteArray latin = text.trimmed().toLatin1();
    return std::strtol(latin.constData(), nullptr, 10);
}

QString formatted(const char *format, double value)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, value);
    return QString::fromLatin1(buffer);
}

template <typename Read> QString guardedField(const std::optional<QString> &attribute, const char *logName, Read read)
{
    if (!attribute) {
        vlLog(QStringLiteral("Exception %1 %2").arg(QLatin1String(logName), QStringLiteral("attribute not readable")));
        return kDash;
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
        return cleanName(stringByDeletingPathExtension(trimmedString(fsName)));
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
    if (app.isAppStore) {
        app.displayName += kAppStoreMark;
        app.setVersiontoMASVersion();
    }
    return app;
}

void VLApp::setInstalledDefaults()
{
    isInstalling = false;
    isDownloading = false;
    for (QString *field : {&vlVersion, &skippedVersion, &masVersion, &vlDate, &masDate}) {
        *field = kDash;
    }
    for (QString *field :
         {&shortDescription, &fileSize, &minOS, &beta, &vlID, &paid_update, &developer, &license, &lastmatched,
          &releaseNotes, &version_override, &download_url, &mas_url, &purchasedVersion}) {
        *field = kEmpty;
    }
    isOutdated = false;
    isPaidUpgrade = false;
    dontCheckForUpdates = false;
    isSetLocalVersionToCurrent = false;
    percentDownloaded = 0.0;
    downloadPath = createDownloadPath();
}

QJsonObject VLApp::encodeWithCoder() const
{
    QJsonObject archive;
    const auto put = [&archive](const char *key, const QJsonValue &value) {
        archive.insert(QLatin1String(key), value);
    };
    put("keywords", encodeString(keywords));
    put("ranking", ranking ? QJsonValue(*ranking) : QJsonValue(QJsonValue::Null));
    put("wlID", encodeString(wlID));
    put("listname", encodeString(listname));
    put("localPath", encodeString(localPath));
    put("digestString", encodeString(digestString));
    put("localizedName", encodeString(localizedName));
    put("name", encodeString(name));
    put("bundleID", encodeString(bundleID));
    put("releaseNotes", encodeString(releaseNotes));
    put("lastModified", encodeDate(lastModified));
    put("displayName", encodeString(displayName));
    put("download_url", encodeString(download_url));
    put("mas_url", encodeString(mas_url));
    put("localVersion", encodeString(localVersion));
    put("vlVersion", encodeString(vlVersion));
    put("masVersion", encodeString(masVersion));
    put("skippedVersion", encodeString(skippedVersion));
    put("vlDate", encodeString(vlDate));
    put("masDate", encodeString(masDate));
    put("sortDate", encodeString(sortDate));
    put("shortDescription", encodeString(shortDescription));
    put("longDescription", encodeString(longDescription));
    put("fileSize", encodeString(fileSize));
    put("minOS", encodeString(minOS));
    put("beta", encodeString(beta));
    put("vlID", encodeString(vlID));
    put("paid_update", encodeString(paid_update));
    put("developer", encodeString(developer));
    put("license", encodeString(license));
    put("lastOpened", encodeDate(lastOpened));
    put("lastmatched", encodeString(lastmatched));
    put("lastupdated", encodeDate(lastupdated));
    put("isPaidUpgrade", isPaidUpgrade);
    put("isOutdated", isOutdated);
    put("isAppStore", isAppStore);
    put("dontCheckForUpdates", dontCheckForUpdates);
    put("orderid", encodeString(orderid));
    put("deal_id", encodeString(deal_id));
    put("purchasedVersion", encodeString(purchasedVersion));
    put("orderDate", encodeString(orderDate));
    put("serialNumber", encodeString(serialNumber));
    put("version_override", encodeString(version_override));
    put("opens_in_window", encodeString(opens_in_window));
    put("vld_install_from_link", encodeString(vld_install_from_link));
    put("isSetLocalVersionToCurrent", isSetLocalVersionToCurrent);
    // Kept so that a later process can still check a download against the catalogue's hash.
    put("filehash", encodeString(filehash));
    return archive;
}

VLApp VLApp::initWithCoder(const QJsonObject &archive)
{
    VLApp app;
    const auto text = [&archive](const char *key) { return decodeString(archive, key); };
    const auto flag = [&archive](const char *key) { return archive.value(QLatin1String(key)).toBool(false); };

    app.isInstalling = false;
    app.isDownloading = false;
    app.keywords = text("keywords");
    if (archive.value(QLatin1String("ranking")).isDouble()) {
        app.ranking = archive.value(QLatin1String("ranking")).toDouble();
    }
    app.wlID = text("wlID");
    app.listname = text("listname");

    app.name = cleanName(text("name"));
    app.localPath = cleanName(text("localPath"));
    app.digestString = text("digestString");
    app.localizedName = cleanName(text("localizedName"));
    app.displayName = cleanName(text("displayName"));
    if (app.localPath.isEmpty() && !app.localPath.isNull()) {
        vlLog(QStringLiteral("localpath for app was blank, setting to - for %1").arg(app.name));
        app.localPath = kDash;
    }

    app.mas_url = text("mas_url");
    app.download_url = text("download_url");
    app.releaseNotes = text("releaseNotes");
    app.localVersion = text("localVersion");
    app.vlVersion = text("vlVersion");
    app.masVersion = text("masVersion");
    app.skippedVersion = text("skippedVersion");
    app.vlDate = text("vlDate");
    app.masDate = text("masDate");
    app.sortDate = text("sortDate");
    app.shortDescription = text("shortDescription");
    app.longDescription = text("longDescription");
    app.fileSize = text("fileSize");
    app.beta = text("beta");
    app.vlID = text("vlID");
    app.paid_update = text("paid_update");
    app.developer = text("developer");
    app.license = text("license");
    app.minOS = text("minOS");
    app.bundleID = text("bundleID");

    if (app.license.isNull()) {
        vlLog(QStringLiteral("fixing null license in cache"));
        app.license = kEmpty;
    }
    if (app.minOS.isNull()) {
        vlLog(QStringLiteral("fixing null min os in cache"));
        app.minOS = kEmpty;
    }
    if (app.bundleID.isNull()) {
        vlLog(QStringLiteral("fixing null bundle id in cache"));
        app.bundleID = app.getBundleID();
    }

    app.lastOpened = decodeDate(archive, "lastOpened");
    app.lastmatched = text("lastmatched");
    app.lastupdated = decodeDate(archive, "lastupdated");
    app.isOutdated = flag("isOutdated");
    app.isPaidUpgrade = flag("isPaidUpgrade");
    app.dontCheckForUpdates = flag("dontCheckForUpdates");
    app.deal_id = text("deal_id");
    app.orderid = text("orderid");
    app.purchasedVersion = text("purchasedVersion");
    app.orderDate = text("orderDate");
    app.serialNumber = text("serialNumber");
    app.version_override = text("version_override");
    app.opens_in_window = text("opens_in_window");
    app.vld_install_from_link = text("vld_install_from_link");
    app.isSetLocalVersionToCurrent = flag("isSetLocalVersionToCurrent");
    app.filehash = text("filehash");

    // This one app can never be installed from a link, whatever an older store says.
    if (app.vlID == QLatin1String("10146")) {
        app.vld_install_from_link = QStringLiteral("2");
    }
    app.lastModified = decodeDate(archive, "lastModified");
    if (app.displayName.isEmpty()) {
        app.displayName = stringByDeletingPathExtension(app.name);
    }

    BundleReader bundle(app.localPath);
    if (app.isSetLocalVersionToCurrent) {
        vlLog(
            QStringLiteral("set version to current set %1 %2 %3").arg(app.localPath, app.localVersion, app.vlVersion));
        app.localVersion = app.vlVersion;
    } else {
        app.getLocalVersionTakingIntoAccountVersionOverride(bundle);
    }
    app.updateModDate();

    app.isAppStore = app.getIsAppStore();
    app.appIcon = app.isInstalled() ? app.iconFilePath(bundle) : kEmpty;
    app.applyAppStoreNaming();
    app.requiresNewerOSVersion = app.getRequiresNewerOSVersion();

    if (!app.skippedVersion.isNull() && app.vlVersion != kDash && app.skippedVersion == app.vlVersion) {
        vlLog(QStringLiteral("skipping %1").arg(app.displayName));
        app.isOutdated = false;
    } else {
        app.checkIfOutdated();
    }
    app.kind = pathExtension(app.name);
    app.downloadPath = app.createDownloadPath();
    return app;
}

void VLApp::applyAppStoreNaming()
{
    if (!isAppStore) {
        return;
    }
    if (!containsString(displayName, QString(QChar(0xF8FF)), true)) {
        displayName += kAppStoreMark;
        setVersiontoMASVersion();
    }
    // Stores written by older versions could carry the mark twice.
    if (displayName.contains(kAppStoreMark + kAppStoreMark)) {
        displayName = stringByDeletingPathExtension(name) + kAppStoreMark;
        setVersiontoMASVersion();
    }
}

QString VLApp::description() const
{
    return isInstalled() ? localPath + QLatin1Char(' ') + localVersion : displayName;
}

QString VLApp::createDownloadPath() const
{
    // Records are made by the thousand and most never download: the folder is made and checked when one does.
    return AppPaths::privateTempFolderName() + QLatin1Char('/') + digestString;
}

void VLApp::updateModDate()
{
    const std::optional<QDateTime> modified = VLMdItem::modificationDate(localPath);
    if (!modified || (lastModified.isValid() && *modified <= lastModified)) {
        return;
    }
    localVersion.clear();
    if (isSetLocalVersionToCurrent) {
        vlLog(QStringLiteral("set version to current set %1 %2 %3").arg(localPath, localVersion, vlVersion));
        localVersion = vlVersion;
    } else {
        getLocalVersionTakingIntoAccountVersionOverride();
    }
    lastModified = *modified;
}

QString VLApp::stringFromFileSizeString(const QString &kilobytes)
{
    const double bytes = leadingDouble(kilobytes) * 1024.0;
    if (bytes == 0) {
        return kEmpty;
    }
    if (bytes < 1023.0) {
        // The kilobyte figure itself, not the byte count: it only shows for sizes under one kilobyte.
        return QStringLiteral("%1 bytes").arg(leadingInt(kilobytes));
    }
    if (bytes / 1024.0 < 1023.0) {
        return formatted("%1.0f KB", bytes / 1024.0);
    }
    if (bytes / 1024.0 / 1024.0 < 1023.0) {
        return formatted("%1.0f MB", bytes / 1024.0 / 1024.0);
    }
    return formatted("%1.0f GB", bytes / 1024.0 / 1024.0 / 1024.0);
}

quint32 VLApp::getRandomNumberBetween(qint32 from, qint32 to)
{
    const quint32 span = quint32(to) - quint32(from) + 1u;
    const quint32 random = QRandomGenerator::global()->generate();
    return (span == 0 ? random : random % span) + quint32(from);
}
