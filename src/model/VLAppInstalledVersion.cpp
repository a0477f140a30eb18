// Reading the installed facts of a record from its bundle on disk.

#include "model/BundleReader.h"
#include "model/PlistWideInteger.h"
#include "model/StringUtils.h"
#include "model/VLApp.h"
#include "model/VersionRules.h"
#include "platform/Log.h"

#include <QDir>
#include <QFileInfo>

namespace {

const QString &kDash = RecordText::unknown;

// A property-list value as text. Strings and numbers have a text form; anything else (an array where a
// version should be), a negative number or text holding a NUL is a broken bundle, reported through failure. An
// integer too wide for 64 bits keeps the digits it was written with.
QString textOf(const std::optional<QVariantMap> &dict, const QString &key, QString *failure)
{
    if (!dict) {
        return {};
    }
    const auto it = dict->constFind(key);
    if (it == dict->cend()) {
        return {};
    }
    const QVariant &value = *it;
    if (value.typeId() == QMetaType::Bool) {
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    }
    const bool isText = value.typeId() == QMetaType::QString;
    QString text;
    if (isText || value.typeId() == QMetaType::LongLong || value.typeId() == QMetaType::Double) {
        text = value.toString();
    } else if (value.typeId() == qMetaTypeId<PlistWideInteger>()) {
        text = value.value<PlistWideInteger>().digits;
    } else {
        *failure = QStringLiteral("%1 is a %2, not text").arg(key, QString::fromLatin1(value.typeName()));
        return {};
    }
    if (!isText && text.startsWith(QLatin1Char('-'))) {
        *failure = QStringLiteral("%1 is a negative number, not a version").arg(key);
        return {};
    }
    if (text.contains(QChar(0))) {
        *failure = QStringLiteral("%1 holds a NUL character").arg(key);
        return {};
    }
    return text;
}

// One malformed version text seen in the wild carries "0xED"; drop it so the version compares.
QString mendMalformedVersion(QString version)
{
    if (!version.isEmpty() && version != QLatin1String("(null)") && version.contains(QLatin1String("0xE"))) {
        version.remove(QStringLiteral("0xED"));
    }
    return version;
}

QString failedRead(const QString &path, const QString &reason)
{
    vlLog(QStringLiteral("exception 2 checking %1 %2").arg(path, reason));
    return kDash;
}

} // namespace

QString VLApp::getLocalVersion(BundleReader &bundle) const
{
    QString failure;
    const auto &info = bundle.infoDictionary();
    const QString bundleVersion = textOf(info, QStringLiteral("CFBundleVersion"), &failure);
    const QString shortVersion = textOf(info, QStringLiteral("CFBundleShortVersionString"), &failure);
    if (!failure.isEmpty()) {
        return failedRead(localPath, failure);
    }
    QString version;
    if (!shortVersion.isNull()) {
        const qsizetype digit = firstDigit(shortVersion);
        if (digit >= 0) {
            version = shortVersion.mid(digit);
            const qsizetype paren = version.indexOf(QLatin1Char('('));
            if (paren >= 0) {
                version.truncate(paren);
            }
        }
    }
    if (version.isNull() && !bundleVersion.isNull()) {
        version = bundleVersion;
    }
    if (version.isNull()) {
        version = kDash;
    }
    if (version.contains(QLatin1Char('V')) && !version.contains(QLatin1Char(' '))) {
        const qsizetype digit = firstDigit(version);
        if (digit >= 0) {
            version = version.mid(digit);
        }
    }
    // A short version 4.2 with a bundle version 4.2.1 says more in the bundle version, within reason.
    if (!bundleVersion.isNull() && bundleVersion.contains(version) && version.size() < bundleVersion.size() &&
        bundleVersion.size() - version.size() <= 6) {
        version = bundleVersion;
    }
    version = mendMalformedVersion(cleanVersionString(version));

    const auto &strings = bundle.infoPlistStringsDictionary();
    const QString localized = textOf(strings, QStringLiteral("CFBundleShortVersionString"), &failure);
    if (!failure.isEmpty()) {
        return failedRead(localPath, failure);
    }
    if (strings) {
        const QString cleaned = cleanVersionString(localized);
        if (cleaned != kDash) {
            version = cleaned;
        }
    }
    return version;
}

QString VLApp::localBundleVersion(BundleReader &bundle) const
{
    QString failure;
    QString version = cleanVersionString(textOf(bundle.bundleInfoDict(), QStringLiteral("CFBundleVersion"), &failure));
    if (version == kDash) {
        version =
            cleanVersionString(textOf(bundle.versionPlistDictionary(), QStringLiteral("CFBundleVersion"), &failure));
    }
    return failure.isEmpty() ? version : failedRead(localPath, failure);
}

QString VLApp::localShortBundleVersion(BundleReader &bundle) const
{
    QString failure;
    QString version = mendMalformedVersion(
        cleanVersionString(textOf(bundle.bundleInfoDict(), QStringLiteral("CFBundleShortVersionString"), &failure)));
    if (version == kDash) {
        version = cleanVersionString(
            textOf(bundle.versionPlistDictionary(), QStringLiteral("CFBundleShortVersionString"), &failure));
    }
    return failure.isEmpty() ? version : failedRead(localPath, failure);
}

QString VLApp::localGetInfoVersion(BundleReader &bundle) const
{
    QString failure;
    const QString version =
        cleanVersionString(textOf(bundle.infoDictionary(), QStringLiteral("CFBundleGetInfoString"), &failure));
    return failure.isEmpty() ? version : failedRead(localPath, failure);
}

QString VLApp::localShortBundleVersionFromVersionPlist(BundleReader &bundle) const
{
    QString failure;
    QString version = cleanVersionString(textOf(bundle.infoDictionary(), QStringLiteral("BuildVersion"), &failure));
    if (version == kDash) {
        version =
            cleanVersionString(textOf(bundle.versionPlistDictionary(), QStringLiteral("CFBundleVersion"), &failure));
    }
    if (version == kDash) {
        version = cleanVersionString(
            textOf(bundle.versionPlistDictionary(), QStringLiteral("CFBundleShortVersionString"), &failure));
    }
    const auto &strings = bundle.infoPlistStringsDictionary();
    const QString localized =
        cleanVersionString(textOf(strings, QStringLiteral("CFBundleShortVersionString"), &failure));
    if (strings && localized != kDash) {
        version = localized;
    }
    return failure.isEmpty() ? version : failedRead(localPath, failure);
}

void VLApp::getLocalVersionTakingIntoAccountVersionOverride(BundleReader &bundle)
{
    if (version_override.isEmpty() || version_override == QLatin1String("0")) {
        QString version = getLocalVersion(bundle);
        if (version == kDash) {
            version = localShortBundleVersion(bundle);
        }
        if (version == kDash) {
            version = localBundleVersion(bundle);
        }
        if (version == kDash) {
            version = localShortBundleVersionFromVersionPlist(bundle);
        }
        localVersion = version;
    } else if (version_override == QLatin1String("1")) {
        localVersion = localBundleVersion(bundle);
    } else if (version_override == QLatin1String("2")) {
        localVersion = localShortBundleVersion(bundle);
    } else if (version_override == QLatin1String("3")) {
        localVersion = localGetInfoVersion(bundle);
    } else if (version_override == QLatin1String("4")) {
        localVersion = localShortBundleVersionFromVersionPlist(bundle);
    }
    // Any other instruction from the catalogue leaves the installed version as it is.
}

QString VLApp::getBundleID(BundleReader &bundle) const
{
    const auto &info = bundle.bundleInfoDict();
    if (!info) {
        return {};
    }
    const QVariant id = info->value(QStringLiteral("CFBundleIdentifier"));
    return id.typeId() == QMetaType::QString ? id.toString() : QString();
}

QString VLApp::iconFilePath(BundleReader &bundle) const
{
    const auto &info = bundle.bundleInfoDict();
    const QString iconFile = info ? info->value(QStringLiteral("CFBundleIconFile")).toString() : QString();
    if (iconFile.isEmpty() || iconFile.contains(QLatin1Char('/'))) {
        return RecordText::empty;
    }
    const QString base = localPath + QStringLiteral("/Contents/Resources/") + iconFile;
    for (const QString &candidate : QStringList{base, base + QStringLiteral(".icns"), base + QStringLiteral(".png")}) {
        const QFileInfo file(candidate);
        const QString suffix = file.suffix().toLower();
        if (file.isFile() && (suffix == QLatin1String("icns") || suffix == QLatin1String("png"))) {
            return candidate;
        }
    }
    return RecordText::empty;
}

bool VLApp::getIsAppStore() const
{
    // One app ships a receipt-like file without coming from the store.
    return QFileInfo::exists(localPath + QStringLiteral("/Contents/_MASReceipt/receipt")) &&
           !localPath.contains(QLatin1String("ipswDownloader"));
}

void VLApp::setVersiontoMASVersion()
{
    if (isAppStore && !masVersion.isEmpty() && masVersion != kDash && !vlVersion.isNull() && !vlID.isNull()) {
        vlVersion = masVersion;
    }
}

QString VLApp::iconFilePath() const
{
    BundleReader bundle(localPath);
    return iconFilePath(bundle);
}

void VLApp::getLocalVersionTakingIntoAccountVersionOverride()
{
    BundleReader bundle(localPath);
    getLocalVersionTakingIntoAccountVersionOverride(bundle);
}
