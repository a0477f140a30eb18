// Records made and refreshed from the catalogue: matching-reply items (short keys) and their older long-key
// form, watch-list, purchase and promotion items, app-info replies and install links.

#include "model/DateDescription.h"
#include "model/PathNames.h"
#include "model/StringUtils.h"
#include "model/VLApp.h"
#include "model/VersionRules.h"
#include "platform/AppPaths.h"

#include <QDateTime>
#include <QFileInfo>
#include <QUrl>

namespace {

// Shown for a catalogue date that the item does not give.
const QString kNoDate = QStringLiteral(" -- ");

// The keys of one catalogue item, in the short form of the matching reply or the long form of older replies.
struct ItemKeys
{
    QString name, installedVersion, keywords, ranking, currentVersion, masDate, minOS, vlID, originalPath,
        opensInWindow, installFromLink, paidUpgrade, link, masLink, versionOverride, masVersion, stability, license,
        fileSize, developer, shortDescription, releaseNotes, sortDate, vlDate, wlID, listName, orderID, serialNumber,
        orderDate, purchasedVersion, filehash;
};

const ItemKeys &shortKeys()
{
    static const ItemKeys keys{
        QStringLiteral("g"),  QStringLiteral("i"),  QStringLiteral("g1"),       QStringLiteral("f1"),
        QStringLiteral("j"),  QStringLiteral("r"),  QStringLiteral("l"),        QStringLiteral("m"),
        QStringLiteral("h"),  QStringLiteral("x"),  QStringLiteral("y"),        QStringLiteral("z"),
        QStringLiteral("e1"), QStringLiteral("a1"), QStringLiteral("v"),        QStringLiteral("k"),
        QStringLiteral("n"),  QStringLiteral("o"),  QStringLiteral("p"),        QStringLiteral("u"),
        QStringLiteral("t"),  QStringLiteral("w"),  QStringLiteral("s"),        QStringLiteral("q"),
        QStringLiteral("e"),  QStringLiteral("f"),  QStringLiteral("a"),        QStringLiteral("b"),
        QStringLiteral("c"),  QStringLiteral("d"),  QStringLiteral("filehash"),
    };
    return keys;
}

// Keywords and ranking have no long form: that shape never carried them.
const ItemKeys &longKeys()
{
    static const ItemKeys keys{
        QStringLiteral("name"),
        QStringLiteral("installed_version"),
        QString(),
        QString(),
        QStringLiteral("current_version"),
        QStringLiteral("mas_date"),
        QStringLiteral("min_os"),
        QStringLiteral("vl_id"),
        QStringLiteral("original_path"),
        QStringLiteral("opens_in_window"),
        QStringLiteral("vld_install_from_link"),
        QStringLiteral("paidupgrade"),
        QStringLiteral("link"),
        QStringLiteral("mas_download_url"),
        QStringLiteral("version_override"),
        QStringLiteral("mas_version"),
        QStringLiteral("stability"),
        QStringLiteral("license"),
        QStringLiteral("file_size"),
        QStringLiteral("developer"),
        QStringLiteral("shortdescr"),
        QStringLiteral("release_notes"),
        QStringLiteral("sort_date"),
        QStringLiteral("vl_date"),
        QStringLiteral("wl_id"),
        QStringLiteral("list_name"),
        QStringLiteral("orderid"),
        QStringLiteral("serial_number"),
        QStringLiteral("order_date"),
        QStringLiteral("purchased_version"),
        QStringLiteral("filehash"),
    };
    return keys;
}

QString orDash(const QString &text)
{
    return text.isEmpty() ? RecordText::unknown : text;
}

void setIfPresent(QString &field, const QString &value)
{
    if (!value.isNull()) {
        field = value;
    }
}

std::optional<double> rankingValue(const QVariantMap &item, const QString &key)
{
    const QString text = VLApp::getJSONItemWithName(key, item);
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok ? std::optional<double>(value) : std::nullopt;
}

bool isPlainFileName(const QString &name)
{
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") &&
           !name.contains(QLatin1Char('/')) && !name.contains(QLatin1Char('\\')) && !name.contains(QChar(0));
}

// The digest of a record that is not installed: made from its catalogue id.
QString catalogueDigest(const QString &vlID)
{
    return md5HexHash(vlID.isNull() ? RecordText::empty : vlID);
}

// The digest names the record's scratch folder and icon file, so a value from the wire that is not a plain
// file name is ignored in favour of the one made from the catalogue id.
QString digestFor(const QString &given, const QString &vlID)
{
    return isPlainFileName(given) ? given : catalogueDigest(vlID);
}

// A new download link comes with the hash of its own file, or none: a hash must never outlive its link.
void takeLink(VLApp &app, const QString &link, const QString &hash)
{
    app.download_url = link;
    app.filehash = hash;
}

void takeName(VLApp &app, const QString &name)
{
    app.name = name;
    app.localizedName = name;
    app.displayName = stringByDeletingPathExtension(name);
}

// The icon already in the cache; fetching a missing one is getIcon's job, on a worker thread.
QString cachedIcon(const VLApp &app)
{
    const QString path = VLApp::catalogueIconPath(app.digestString);
    return !path.isEmpty() && QFileInfo::exists(path) ? path : RecordText::empty;
}

// A record that exists only in the catalogue: nothing installed, no versions known yet.
VLApp catalogueOnlyRecord()
{
    VLApp app;
    app.markNotInstalled();
    app.markCatalogueUnknown();
    return app;
}

void finishCatalogueOnlyRecord(VLApp &app)
{
    app.digestString = catalogueDigest(app.vlID);
    app.applyInstallFromLinkRule();
    app.kind = pathExtension(app.name);
    app.isOutdated = false;
    app.requiresNewerOSVersion = app.getRequiresNewerOSVersion();
    app.downloadPath = app.createDownloadPath();
    app.appIcon = cachedIcon(app);
}

void takeListAndPurchaseKeys(VLApp &app, const QVariantMap &item, const ItemKeys &keys)
{
    const auto text = [&item](const QString &key) { return VLApp::getJSONItemWithName(key, item); };
    setIfPresent(app.wlID, text(keys.wlID));
    setIfPresent(app.listname, text(keys.listName));
    setIfPresent(app.orderid, text(keys.orderID));
    setIfPresent(app.serialNumber, text(keys.serialNumber));
    setIfPresent(app.orderDate, text(keys.orderDate));
    setIfPresent(app.purchasedVersion, text(keys.purchasedVersion));
}

VLApp newFromCatalogueItem(const QVariantMap &item, const ItemKeys &keys)
{
    const auto text = [&item](const QString &key) { return VLApp::getJSONItemWithName(key, item); };
    VLApp app;
    app.localPath = RecordText::unknown;

    takeName(app, text(keys.name));
    app.localVersion = orDash(text(keys.installedVersion));
    app.keywords = text(keys.keywords);
    app.ranking = rankingValue(item, keys.ranking);
    app.vlVersion = text(keys.currentVersion);
    app.skippedVersion = RecordText::unknown;
    app.masDate = text(keys.masDate);
    app.minOS = text(keys.minOS);
    app.vlID = text(keys.vlID);
    app.digestString = digestFor(text(keys.originalPath), app.vlID);
    app.opens_in_window = text(keys.opensInWindow);
    app.vld_install_from_link = text(keys.installFromLink);
    app.paid_update = text(keys.paidUpgrade);
    takeLink(app, text(keys.link), text(keys.filehash));
    app.mas_url = text(keys.masLink);
    app.version_override = text(keys.versionOverride);
    app.masVersion = text(keys.masVersion);
    app.beta = text(keys.stability);
    // The size key on purpose, not the licence key: a new record shows its size text as its licence until the
    // first update, which reads the licence key.
    app.license = text(keys.fileSize);
    app.fileSize = text(keys.fileSize);
    app.developer = text(keys.developer);
    app.shortDescription = text(keys.shortDescription);
    app.releaseNotes = text(keys.releaseNotes);
    app.sortDate = text(keys.sortDate);
    const QString vlDate = text(keys.vlDate);
    app.vlDate = vlDate.isNull() ? kNoDate : vlDate;
    // The minimum OS is read a second time, last; this later read is the one that stands.
    app.minOS = text(keys.minOS);
    app.applyInstallFromLinkRule();

    app.isOutdated = false;
    app.isAppStore = app.getIsAppStore();
    app.markAppStoreName();

    app.requiresNewerOSVersion = app.getRequiresNewerOSVersion();
    app.kind = pathExtension(app.name);
    app.appIcon = cachedIcon(app);
    app.lastmatched = currentDateDescription();
    app.downloadPath = app.createDownloadPath();

    takeListAndPurchaseKeys(app, item, keys);
    return app;
}

// What a field does when its item lacks the key: an update clears it, since the item describes the app whole
// and a link or text the catalogue withdrew must not stay on offer; a new record keeps the default it was given.
enum class Missing { Clears, Keeps };

void take(QString &field, const QString &value, Missing missing)
{
    if (missing == Missing::Clears || !value.isNull()) {
        field = value;
    }
}

// The download and store fields, which catalogue updates and watch-list items carry alike.
void takeDownloadFields(VLApp &app, const QVariantMap &item, const ItemKeys &keys, Missing missing)
{
    const auto text = [&item](const QString &key) { return VLApp::getJSONItemWithName(key, item); };
    take(app.opens_in_window, text(keys.opensInWindow), missing);
    take(app.vld_install_from_link, text(keys.installFromLink), missing);
    take(app.paid_update, text(keys.paidUpgrade), missing);
    const QString link = text(keys.link);
    const QString hash = text(keys.filehash);
    if (!link.isNull()) {
        takeLink(app, link, hash);
    } else {
        take(app.download_url, link, missing);
        take(app.filehash, hash, missing);
    }
    take(app.mas_url, text(keys.masLink), missing);
    take(app.version_override, text(keys.versionOverride), missing);
    take(app.masVersion, text(keys.masVersion), missing);
}

void updateFromCatalogueItem(VLApp &app, const QVariantMap &item, const ItemKeys &keys, const VLApp *scanned = nullptr)
{
    const auto text = [&item](const QString &key) { return VLApp::getJSONItemWithName(key, item); };
    const QString version = text(keys.currentVersion);
    const QString id = text(keys.vlID);
    // Dates the catalogue no longer gives must not linger.
    app.vlDate = RecordText::unknown;
    app.masDate = RecordText::unknown;
    app.updateModDate(scanned);
    // The reply's version stands, an absent one too: a version the catalogue withdrew is not offered any more.
    // The user's skipped version stays as it is: it only hides the one version it names.
    app.vlVersion = version;
    setIfPresent(app.vlID, id);

    takeDownloadFields(app, item, keys, Missing::Clears);
    for (const auto &[field, key] : {std::pair{&app.beta, keys.stability},
                                     {&app.license, keys.license},
                                     {&app.fileSize, keys.fileSize},
                                     {&app.developer, keys.developer},
                                     {&app.shortDescription, keys.shortDescription},
                                     {&app.releaseNotes, keys.releaseNotes},
                                     {&app.sortDate, keys.sortDate}}) {
        take(*field, text(key), Missing::Clears);
    }
    setIfPresent(app.vlDate, text(keys.vlDate)); // "-" from above when the item has none
    app.applyInstallFromLinkRule();
    app.lastmatched = currentDateDescription();

    app.refreshLocalVersion(scanned);
    app.setVersiontoMASVersion();

    setIfPresent(app.masDate, text(keys.masDate));
    // The long form never carried keywords and ranking, so only the short form can withdraw them.
    if (!keys.keywords.isEmpty()) {
        app.keywords = text(keys.keywords);
        app.ranking = rankingValue(item, keys.ranking);
    }

    app.checkIfOutdated();
    app.requiresNewerOSVersion = app.getRequiresNewerOSVersion();
    takeListAndPurchaseKeys(app, item, keys);
}

// Watch-list items: the long keys, with the minimum OS cleaned to its number. Like a catalogue reply, an item
// describes the app whole, so an update clears what it no longer gives (a new record keeps its "-" markers).
// The list entry, catalogue id and version change only when given, and an installed record keeps the names
// its bundle gave it.
void takeWatchListItem(VLApp &app, const QVariantMap &item, bool creating)
{
    const ItemKeys &keys = longKeys();
    const auto text = [&item](const QString &key) { return VLApp::getJSONItemWithName(key, item); };
    const Missing missing = creating ? Missing::Keeps : Missing::Clears;
    setIfPresent(app.wlID, text(keys.wlID));
    setIfPresent(app.listname, text(keys.listName));
    const QString name = text(keys.name);
    if (!name.isNull() && !app.isInstalled()) {
        takeName(app, name);
    }
    setIfPresent(app.vlVersion, text(keys.currentVersion));
    take(app.shortDescription, text(keys.shortDescription), missing);
    setIfPresent(app.vlID, text(keys.vlID));
    takeDownloadFields(app, item, keys, missing);
    app.minOS = cleanOSVersion(text(keys.minOS));
    for (const auto &[field, key] : {std::pair{&app.beta, keys.stability},
                                     {&app.license, keys.license},
                                     {&app.fileSize, keys.fileSize},
                                     {&app.developer, keys.developer},
                                     {&app.releaseNotes, keys.releaseNotes},
                                     {&app.sortDate, keys.sortDate}}) {
        take(*field, text(key), missing);
    }
    const QString vlDate = text(keys.vlDate);
    app.vlDate = vlDate.isNull() ? kNoDate : vlDate;
    app.applyInstallFromLinkRule();
}

void takePurchaseItem(VLApp &app, const QVariantMap &item)
{
    const auto text = [&item](const char *key) { return VLApp::getJSONItemWithName(QLatin1String(key), item); };
    const QString name = text("name");
    if (!app.isInstalled()) {
        if (!name.isNull()) {
            takeName(app, name);
        }
        setIfPresent(app.bundleID, text("bundle_id"));
    }
    setIfPresent(app.vlID, text("vl_id"));
    setIfPresent(app.orderid, text("orderid"));
    setIfPresent(app.serialNumber, text("serial_number"));
    setIfPresent(app.orderDate, text("order_date"));
    setIfPresent(app.purchasedVersion, text("purchased_version"));
    setIfPresent(app.opens_in_window, text("opens_in_window"));
    setIfPresent(app.vld_install_from_link, text("vld_install_from_link"));
    app.applyInstallFromLinkRule();
}

} // namespace

QString VLApp::getJSONItemWithName(const QString &key, const QVariantMap &item)
{
    const auto found = item.constFind(key);
    if (key.isEmpty() || found == item.cend()) {
        return {};
    }
    const QVariant &value = *found;
    switch (value.typeId()) {
    case QMetaType::QString: {
        const QString text = value.toString();
        return text.isNull() ? RecordText::empty : text;
    }
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        // Numbers where text belongs (ids, sizes, flags) are read as their shortest decimal text: 10146, 0.5.
        return value.toString();
    case QMetaType::QDateTime:
        return dateDescription(value.toDateTime());
    default:
        // Null, and values no text field can hold (lists, dictionaries, data).
        return {};
    }
}

QString VLApp::catalogueIconPath(const QString &digest)
{
    return isPlainFileName(digest) ? AppPaths::dataFolder() + QStringLiteral("/mcache_600/") + digest : QString();
}

VLApp VLApp::initWithServerItemJSON(const QVariantMap &item)
{
    return newFromCatalogueItem(item, shortKeys());
}

VLApp VLApp::initWithServerItem(const QVariantMap &item)
{
    return newFromCatalogueItem(item, longKeys());
}

void VLApp::updateWithServerItemJSON(const QVariantMap &item)
{
    updateFromCatalogueItem(*this, item, shortKeys());
}

void VLApp::updateWithServerItemJSON(const QVariantMap &item, const VLApp *scanned)
{
    updateFromCatalogueItem(*this, item, shortKeys(), scanned);
}

void VLApp::updateWithServerItem(const QVariantMap &item)
{
    updateFromCatalogueItem(*this, item, longKeys());
}

VLApp VLApp::initWithWatchListItem(const QVariantMap &item)
{
    VLApp app = catalogueOnlyRecord();
    takeWatchListItem(app, item, true);
    finishCatalogueOnlyRecord(app);
    return app;
}

void VLApp::updateWithWatchListsItem(const QVariantMap &item)
{
    takeWatchListItem(*this, item, false);
    if (isInstalled()) {
        checkIfOutdated();
    }
    requiresNewerOSVersion = getRequiresNewerOSVersion();
}

VLApp VLApp::initWithPurchaseItem(const QVariantMap &item)
{
    VLApp app = catalogueOnlyRecord();
    takePurchaseItem(app, item);
    finishCatalogueOnlyRecord(app);
    return app;
}

void VLApp::updateWithPromoPurchaseItem(const QVariantMap &item)
{
    takePurchaseItem(*this, item);
}

VLApp VLApp::initWithPromoItem(const QVariantMap &item)
{
    const auto text = [&item](const char *key) { return getJSONItemWithName(QLatin1String(key), item); };
    VLApp app = catalogueOnlyRecord();
    app.name = text("title");
    app.displayName = app.name;
    app.bundleID = text("bundle_id");
    app.shortDescription = text("shortdescr");
    app.vlID = text("prod_id");
    app.deal_id = text("id");
    app.deal_url = text("link");
    app.discount = text("discount");
    app.deal_price = text("price");
    app.deal_vers = text("appversion");
    app.parent_promo_id = text("parent_sales_profile_id");
    finishCatalogueOnlyRecord(app);
    return app;
}

std::optional<VLApp> VLApp::initWithLink(const QString &link)
{
    // velmora://app/VLID/NAME/VERSION; a bundle link names no single app.
    const QStringList parts = link.split(QLatin1Char('/'));
    if (parts.size() < 6 || parts.at(2).compare(QLatin1String("app"), Qt::CaseInsensitive) != 0 ||
        parts.at(3).isEmpty()) {
        return std::nullopt;
    }
    VLApp app = catalogueOnlyRecord();
    app.markCatalogueEmpty();
    app.vlVersion = QUrl::fromPercentEncoding(parts.at(5).toUtf8());
    app.name = parts.at(4);
    app.localizedName = app.name;
    app.displayName = app.name;
    app.sortDate = QString::number(QDateTime::currentSecsSinceEpoch());
    app.vlID = parts.at(3);
    app.lastmatched = currentDateDescription();
    finishCatalogueOnlyRecord(app);
    // A link always offers an install; updateWithServerInfo fills in the rest.
    app.isOutdated = true;
    return app;
}

void VLApp::applyServerInfo(const QVariantMap &info)
{
    const auto text = [&info](const char *key) { return getJSONItemWithName(QLatin1String(key), info); };
    setIfPresent(shortDescription, text("shortDescription"));
    setIfPresent(developer, text("developer"));
    const QString os = text("minOS");
    if (!os.isNull()) {
        minOS = cleanOSVersion(os);
    }
    setIfPresent(releaseNotes, text("releaseNotes"));
    setIfPresent(vlDate, text("vlDate"));
    setIfPresent(license, text("license"));
    setIfPresent(beta, text("stability"));
    setIfPresent(longDescription, text("descr"));
    setIfPresent(bundleID, text("bundleid"));
    const QString title = text("title");
    if (!title.isNull()) {
        name = title;
        displayName = title;
    }
    setIfPresent(fileSize, text("filesize"));
    setIfPresent(paid_update, text("paidupgrade"));
    setIfPresent(version_override, text("version_override"));
    const QString link = text("link");
    if (!link.isNull()) {
        // This reply seldom carries the hash: the link it already has keeps its own.
        const QString hash = text("filehash");
        takeLink(*this, link, hash.isNull() && link == download_url ? filehash : hash);
    }
    setIfPresent(mas_url, text("mas_download_url"));
    requiresNewerOSVersion = getRequiresNewerOSVersion();
    lastmatched = currentDateDescription();
}
