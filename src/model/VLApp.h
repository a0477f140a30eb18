#pragma once

// One application: installed on this machine, known only from the catalogue, or both.
// Text fields use "-" for "not known" (in localPath: not installed) and "" for empty; a null QString is absent.
//
// Threads. A record is changed by the thread that owns the list it is in (the check driver's worker for the store;
// the command's thread in the CLI), under that list's lock; others read it under the same lock or take a copy. A
// running update never changes it: its state lives in its job (src/install/UpdateJob.h), and what it learns (the new
// localPath, the icon) is handed to the list's owner to apply.

#include "model/RecordText.h"

#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QVariantMap>

#include <optional>

class BundleReader;
struct VLMdItem;

class VLApp
{
public:
    VLApp() = default;

    // An installed record built from a scanned bundle's attributes.
    static VLApp initWithMdItem(const VLMdItem &item);
    // The same, with the bundle's files read through bundle (each parsed once for the attributes and the record).
    static VLApp initWithMdItem(const VLMdItem &item, BundleReader &bundle);
    // The installed record for the bundle at path, each of its files read once.
    static VLApp initWithBundleAt(const QString &path);
    // A record restored from its archive form (the scan store); runs every load-time repair. scanned, when given and
    // of the same path, is a record a scan has just made of the bundle: its readings stand for reading it again.
    static VLApp initWithCoder(const QJsonObject &archive, const VLApp *scanned = nullptr);
    QJsonObject encodeWithCoder() const;
    // The archive form as compact JSON text, appended to out: the object encodeWithCoder() gives.
    void appendArchiveJson(QByteArray &out) const;

    // Catalogue ingestion: the short-key JSON of the matching reply and the other catalogue item shapes.
    static VLApp initWithServerItemJSON(const QVariantMap &item);
    static VLApp initWithServerItem(const QVariantMap &item);
    static VLApp initWithWatchListItem(const QVariantMap &item);
    static VLApp initWithPurchaseItem(const QVariantMap &item);
    static VLApp initWithPromoItem(const QVariantMap &item);
    static std::optional<VLApp> initWithLink(const QString &link);

    // Catalogue updates in place (the calls to the service that feed them are VLAppOnServer's).
    void updateWithServerItemJSON(const QVariantMap &item);
    // scanned as for updateModDate.
    void updateWithServerItemJSON(const QVariantMap &item, const VLApp *scanned);
    void updateWithServerItem(const QVariantMap &item);
    void updateWithWatchListsItem(const QVariantMap &item);
    void updateWithPromoPurchaseItem(const QVariantMap &item);
    // Applies an app-info reply.
    void applyServerInfo(const QVariantMap &info);
    // The cache file of a catalogue icon: dataFolder()/mcache_600/<digestString>; "" for a digest unfit as a file name.
    static QString catalogueIconPath(const QString &digest);
    // The value of a catalogue item's key as text; absent (null) when the key is missing or holds null.
    static QString getJSONItemWithName(const QString &key, const QVariantMap &item);

    QString description() const;
    QString createDownloadPath() const;
    // Reads the bundle's modification date, and its version again when it is newer than lastModified. scanned, here
    // and in refreshLocalVersion: a record a scan has just made of the same bundle, whose readings stand for reading
    // it again where they are the ones needed (ignored when of another path).
    void updateModDate(const VLApp *scanned = nullptr);

    // Installed version discovery from the bundle at localPath.
    bool getIsAppStore() const;
    void getLocalVersionTakingIntoAccountVersionOverride();
    // The installed version again: the catalogue version when the user set it current, else read from the bundle.
    void refreshLocalVersion(const VLApp *scanned = nullptr);
    void setVersiontoMASVersion();
    // Path of the bundle's icon file (.icns or .png), or "" when it has none.
    QString iconFilePath() const;

    // Verdicts.
    void checkIfOutdated();
    void checkIfPaidUpgrade();
    bool getRequiresNewerOSVersion() const;

    bool isInstalled() const { return localPath != RecordText::unknown && !localPath.isEmpty(); }

    // Markers of what is not known yet: "-" for the catalogue versions and dates (markCatalogueUnknown), ""
    // for the catalogue texts (markCatalogueEmpty), "-" for the installed path and version (markNotInstalled).
    void markCatalogueUnknown();
    void markCatalogueEmpty();
    void markNotInstalled();
    // Catalogue id "10146" can never be installed from a link, whatever the catalogue or an older store says.
    void applyInstallFromLinkRule();
    // An App Store copy's display name gets the mark once, and its catalogue version becomes the store's.
    void markAppStoreName();

    static QString stringFromFileSizeString(const QString &kilobytes);
    static quint32 getRandomNumberBetween(qint32 from, qint32 to);

    // Identity and installed state.
    QString localPath;
    QString digestString;
    QString name;
    QString localizedName;
    QString displayName;
    QString bundleID;
    QString localVersion;
    QString kind;
    QDateTime lastOpened;
    QDateTime lastModified;
    QString appIcon; // path of the icon file; the desktop program turns it into an image
    bool isAppStore = false;

    // Catalogue state.
    QString vlID;
    QString vlVersion;
    QString vlDate;
    QString masVersion;
    QString masDate;
    QString mas_url;
    QString download_url;
    QString shortDescription;
    QString longDescription;
    QString releaseNotes;
    QString fileSize;
    QString minOS;
    QString beta;
    QString paid_update;
    QString developer;
    QString license;
    QString version_override;
    QString opens_in_window;
    QString vld_install_from_link;
    QString filehash;
    QString sortDate;
    QString lastmatched;
    QDateTime lastupdated;
    QString keywords;
    std::optional<double> ranking;

    // User choices.
    QString skippedVersion;
    bool isSetLocalVersionToCurrent = false;
    bool dontCheckForUpdates = false;

    // Verdicts.
    bool isOutdated = false;
    bool isPaidUpgrade = false;
    bool requiresNewerOSVersion = false;

    // Watch list.
    QString wlID;
    QString listname;

    // Purchase.
    QString orderid;
    QString serialNumber;
    QString orderDate;
    QString orderTotal;
    QString purchasedVersion;

    // Deal.
    QString deal_id;
    QString deal_url;
    QString discount;
    QString deal_price;
    QString deal_vers;
    QString parent_promo_id;

    QString allAppWords;

    // The private download folder of the record's updates; never archived.
    QString downloadPath;

private:
    void setInstalledDefaults();
    void refreshLocalVersion(BundleReader &bundle);
    // The readers over one BundleReader, so a pass over a bundle parses each file once.
    QString getLocalVersion(BundleReader &bundle) const;
    QString localBundleVersion(BundleReader &bundle) const;
    QString localShortBundleVersion(BundleReader &bundle) const;
    QString localGetInfoVersion(BundleReader &bundle) const;
    QString localShortBundleVersionFromVersionPlist(BundleReader &bundle) const;
    void getLocalVersionTakingIntoAccountVersionOverride(BundleReader &bundle);
    QString getBundleID(BundleReader &bundle) const;
    QString iconFilePath(BundleReader &bundle) const;
};
