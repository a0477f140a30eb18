// The record's small helpers. The record is made and changed elsewhere: from a scanned bundle (VLAppScanned),
// from its archive (VLAppArchive), from the catalogue (VLAppCatalogue); its verdicts are VLAppVerdicts'.

#include "model/VLApp.h"

#include "model/BundleReader.h"
#include "model/VLMdItem.h"
#include "platform/AppPaths.h"
#include "platform/Log.h"

#include <QRandomGenerator>
#include <QRegularExpression>

#include <cstdio>

namespace {

// The private temporary folder's name, worked out again only when TMPDIR changes: Qt resolves the folder through
// the file system on every call, which cost a check of thousands of records more than its matching. A folder that
// was missing ("") is looked for again.
QString privateTempFolderName()
{
    thread_local QByteArray knownTmpDir;
    thread_local QString folder;
    const QByteArray tmpDir = qgetenv("TMPDIR");
    if (folder.isEmpty() || tmpDir != knownTmpDir) {
        folder = AppPaths::privateTempFolderName();
        knownTmpDir = tmpDir;
    }
    return folder;
}

// The leading decimal number of a text, as the size texts of the catalogue are read: "12abc" is 12, "x" is 0.
// Neither the user's locale nor a hexadecimal "0x" changes what it means.
double leadingNumber(const QString &text, bool wholeOnly)
{
    static const QRegularExpression fraction(
        QStringLiteral("^\\s*[+-]?(?:\\d+(?:\\.\\d*)?|\\.\\d+)(?:[eE][+-]?\\d+)?"));
    static const QRegularExpression whole(QStringLiteral("^\\s*[+-]?\\d+"));
    const QRegularExpressionMatch match = (wholeOnly ? whole : fraction).match(text);
    return match.hasMatch() ? match.captured().trimmed().toDouble() : 0.0;
}

QString formatted(const char *format, double value)
{
    // No decimals are printed, so the locale's decimal sign never shows.
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, value);
    return QString::fromLatin1(buffer);
}

} // namespace

void VLApp::markCatalogueUnknown()
{
    for (QString *field : {&vlVersion, &skippedVersion, &masVersion, &vlDate, &masDate}) {
        *field = RecordText::unknown;
    }
}

void VLApp::markCatalogueEmpty()
{
    for (QString *field :
         {&shortDescription, &fileSize, &minOS, &beta, &vlID, &paid_update, &developer, &license, &lastmatched,
          &releaseNotes, &version_override, &download_url, &mas_url, &purchasedVersion}) {
        *field = RecordText::empty;
    }
}

void VLApp::markNotInstalled()
{
    localPath = RecordText::unknown;
    localVersion = RecordText::unknown;
}

void VLApp::applyInstallFromLinkRule()
{
    if (vlID == QLatin1String("10146")) {
        vld_install_from_link = QStringLiteral("2");
    }
}

void VLApp::markAppStoreName()
{
    if (isAppStore && !displayName.contains(RecordText::appStoreSign, Qt::CaseInsensitive)) {
        displayName += RecordText::appStoreMark;
        setVersiontoMASVersion();
    }
}

void VLApp::refreshLocalVersion(const VLApp *scanned)
{
    // A scan reads the version by the plain rule only; any other rule, or a bundle that gave none, reads the bundle.
    const bool plainRule = version_override.isEmpty() || version_override == QLatin1String("0");
    if (scanned && scanned->localPath == localPath && !isSetLocalVersionToCurrent && plainRule &&
        scanned->localVersion != RecordText::unknown) {
        localVersion = scanned->localVersion;
        return;
    }
    BundleReader bundle(localPath);
    refreshLocalVersion(bundle);
}

void VLApp::refreshLocalVersion(BundleReader &bundle)
{
    if (isSetLocalVersionToCurrent) {
        vlLog(QStringLiteral("set version to current set %1 %2 %3").arg(localPath, localVersion, vlVersion));
        localVersion = vlVersion;
    } else {
        getLocalVersionTakingIntoAccountVersionOverride(bundle);
    }
}

QString VLApp::description() const
{
    return isInstalled() ? localPath + QLatin1Char(' ') + localVersion : displayName;
}

QString VLApp::createDownloadPath() const
{
    // Records are made by the thousand and most never download: the folder is made and checked when one does.
    return privateTempFolderName() + QLatin1Char('/') + digestString;
}

void VLApp::updateModDate(const VLApp *scanned)
{
    if (scanned && scanned->localPath != localPath) {
        scanned = nullptr;
    }
    // A scan's record has the bundle's modification date, or none when it could not be had.
    std::optional<QDateTime> modified;
    if (!scanned) {
        modified = VLMdItem::modificationDate(localPath);
    } else if (scanned->lastModified.isValid()) {
        modified = scanned->lastModified;
    }
    if (!modified || (lastModified.isValid() && *modified <= lastModified)) {
        return;
    }
    localVersion.clear();
    refreshLocalVersion(scanned);
    lastModified = *modified;
}

QString VLApp::stringFromFileSizeString(const QString &kilobytes)
{
    const double bytes = leadingNumber(kilobytes, false) * 1024.0;
    if (bytes == 0) {
        return RecordText::empty;
    }
    if (bytes < 1023.0) {
        // The kilobyte figure itself, not the byte count: it only shows for sizes under one kilobyte.
        return QStringLiteral("%1 bytes").arg(qint64(leadingNumber(kilobytes, true)));
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
