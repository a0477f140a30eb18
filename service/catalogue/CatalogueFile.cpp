#include "catalogue/CatalogueFile.h"

#include "catalogue/CatalogueCache.h"
#include "catalogue/PublicCatalogueMapping.h"
#include "catalogue/RecordFields.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <cmath>
#include <thread>

namespace {

bool isDecimal(const QString &text)
{
    static const QRegularExpression decimal(QStringLiteral("^[1-9][0-9]{0,17}$"));
    return decimal.match(text).hasMatch();
}

// Texts may come as JSON numbers ("ranking": 3, "file_size": 2048); anything else is refused.
bool copyText(const QJsonObject &from, QLatin1StringView key, QJsonObject &to, QString *error)
{
    const QJsonValue value = from.value(key);
    if (value.isUndefined() || value.isNull())
        return true;
    if (value.isString())
        to.insert(key, value);
    else if (value.isDouble())
        to.insert(key, QString::number(value.toDouble(), 'g', 17));
    else {
        *error = QStringLiteral("\"%1\" must be a text").arg(key);
        return false;
    }
    return true;
}

bool copyTextList(const QJsonObject &from, QLatin1StringView key, QJsonObject &to, QString *error)
{
    const QJsonValue value = from.value(key);
    if (value.isUndefined() || value.isNull())
        return true;
    const QJsonArray list = value.toArray();
    if (!value.isArray() || std::any_of(list.begin(), list.end(), [](const QJsonValue &v) { return !v.isString(); })) {
        *error = QStringLiteral("\"%1\" must be a list of texts").arg(key);
        return false;
    }
    to.insert(key, list);
    return true;
}

bool copyDeal(const QJsonObject &from, QJsonObject &to, QString *error)
{
    const QJsonValue value = from.value(RecordFields::deal);
    if (value.isUndefined() || value.isNull())
        return true;
    if (!value.isObject()) {
        *error = QStringLiteral("\"deal\" must be an object");
        return false;
    }
    QJsonObject deal;
    for (const QLatin1StringView key : RecordFields::dealFields) {
        if (!copyText(value.toObject(), key, deal, error))
            return false;
    }
    to.insert(RecordFields::deal, deal);
    return true;
}

// A number is an id only when it is a whole number that a double holds exactly; any other gives "", which is refused.
QString idText(const QJsonValue &value)
{
    if (!value.isDouble())
        return value.toString();
    const double number = value.toDouble();
    constexpr double kLargestExact = 9007199254740992.0; // 2^53
    if (number < 0 || number > kLargestExact || std::floor(number) != number)
        return {};
    return QString::number(qint64(number));
}

bool readApps(const QJsonArray &records, CatalogueImport &import, QString *error)
{
    // Two records of one id (or key) would overwrite each other in the same import: refuse the file instead.
    QHash<QString, qsizetype> seen;
    for (qsizetype i = 0; i < records.size(); ++i) {
        QString reason = QStringLiteral("not an object");
        const QJsonObject source = records.at(i).toObject();
        const QString token = source.value(QLatin1StringView("token")).toString();
        auto app =
            records.at(i).isObject()
                ? CatalogueFile::readRecord(token.isEmpty() ? source : PublicCatalogueMapping::map(source), &reason)
                : std::nullopt;
        if (!app) {
            *error = QStringLiteral("record %1: %2").arg(QString::number(i), reason);
            return false;
        }
        if (!token.isEmpty())
            app->sourceKey = QStringLiteral("token:") + token;
        QStringList claims{QStringLiteral("key ") + app->sourceKey};
        if (!app->id.isEmpty())
            claims.prepend(QStringLiteral("catalogue id ") + app->id);
        for (const QString &claim : claims) {
            if (seen.contains(claim)) {
                *error = QStringLiteral("records %1 and %2 have the same %3")
                             .arg(QString::number(seen.value(claim)), QString::number(i), claim);
                return false;
            }
            seen.insert(claim, i);
        }
        import.apps.append(*app);
    }
    return true;
}

bool readBundles(const QJsonObject &bundles, CatalogueImport &import, QString *error)
{
    for (auto it = bundles.begin(); it != bundles.end(); ++it) {
        QStringList ids;
        for (const QJsonValue &id : it.value().toArray()) {
            if (!isDecimal(idText(id))) {
                *error = QStringLiteral("bundle %1: catalogue ids are decimal texts").arg(it.key());
                return false;
            }
            ids.append(idText(id));
        }
        import.bundles.append({it.key(), ids});
    }
    return true;
}

} // namespace

namespace CatalogueFile {

std::optional<ImportApp> readRecord(const QJsonObject &object, QString *error)
{
    ImportApp app;
    for (const QLatin1StringView key : RecordFields::textFields) {
        if (!copyText(object, key, app.record, error))
            return std::nullopt;
    }
    for (const QLatin1StringView key :
         {RecordFields::bundleIds, RecordFields::bundleNames, RecordFields::displayNames}) {
        if (!copyTextList(object, key, app.record, error))
            return std::nullopt;
    }
    if (object.value(RecordFields::ranking).isDouble())
        app.record.insert(RecordFields::ranking, object.value(RecordFields::ranking));
    if (!copyDeal(object, app.record, error))
        return std::nullopt;
    if (app.record.value(QLatin1StringView("name")).toString().trimmed().isEmpty()) {
        *error = QStringLiteral("\"name\" is missing");
        return std::nullopt;
    }
    const QJsonValue id = object.value(QLatin1StringView("vl_id"));
    if (!id.isUndefined() && !id.isNull()) {
        app.id = idText(id);
        if (!isDecimal(app.id)) {
            *error = QStringLiteral("\"vl_id\" must be a decimal text");
            return std::nullopt;
        }
    }
    // The key keeps an id stable when a record is imported again: the record's own "key", else its id, else
    // its name.
    const QString key = object.value(QLatin1StringView("key")).toString();
    if (!key.isEmpty())
        app.sourceKey = QStringLiteral("key:") + key;
    else if (!app.id.isEmpty())
        app.sourceKey = QStringLiteral("id:") + app.id;
    else
        app.sourceKey = QStringLiteral("name:") + app.record.value(QLatin1StringView("name")).toString().toCaseFolded();
    return app;
}

std::optional<CatalogueImport> parse(const QByteArray &json, QString *error)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        *error = QStringLiteral("not JSON: %1 at offset %2")
                     .arg(parseError.errorString(), QString::number(parseError.offset));
        return std::nullopt;
    }
    CatalogueImport import;
    if (document.isArray())
        return readApps(document.array(), import, error) ? std::optional(import) : std::nullopt;
    const QJsonObject root = document.object();
    for (const QJsonValue &name : root.value(QLatin1StringView("blacklist")).toArray()) {
        if (!name.toString().isEmpty())
            import.blacklist.append(name.toString());
    }
    if (!readApps(root.value(QLatin1StringView("apps")).toArray(), import, error) ||
        !readBundles(root.value(QLatin1StringView("bundles")).toObject(), import, error))
        return std::nullopt;
    return import;
}

std::optional<CatalogueImport> read(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    return parse(file.readAll(), error);
}

ImportSummary importFile(CatalogueStore &store, const QString &path)
{
    QString error;
    const auto import = read(path, &error);
    if (!import)
        return {0, 0, 0, error};
    const ImportSummary summary = store.importCatalogue(*import);
    // A running process may go on matching against the revision it asked for until revisionReuse has passed.
    if (summary.error.isEmpty())
        std::this_thread::sleep_for(CatalogueCache::revisionReuse);
    return summary;
}

} // namespace CatalogueFile
