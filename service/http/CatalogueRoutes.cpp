// Matching, app information, the blacklist, install-link bundles and download records.

#include "catalogue/RecordFields.h"
#include "http/Reply.h"
#include "http/Routes.h"
#include "wire/AutomatchRequest.h"
#include "wire/JsonText.h"
#include "wire/PathSegments.h"
#include "wire/ZlibJoin.h"

#include <QJsonDocument>

namespace {

// The compressed JSON object: each matched app's own members (h, i, e1) as they come, then its record's members,
// compressed once when the catalogue was read.
QByteArray matchReply(const httplib::Request &req, const CatalogueIndex &index, const AutomatchRequest &request)
{
    // The opening quote and this service's address, escaped: a local link's own escaped text completes it.
    const QByteArray baseJson = JsonText::quoted(Reply::baseUrl(req)).chopped(1);
    // Matched first, so that the reply is allocated once: its records' parts are most of it.
    struct Match
    {
        const AutomatchApp *app;
        const CatalogueEntry *entry;
    };
    std::vector<Match> matched;
    matched.reserve(request.apps.size());
    qsizetype size = 256;
    for (const AutomatchApp &app : request.apps) {
        if (const CatalogueEntry *entry = index.match(app.description)) {
            matched.push_back({&app, entry});
            size += entry->replyTail.deflated.size() + 128;
        }
    }
    ZlibJoin reply(size);
    QByteArray &text = reply.text();
    text.append('{');
    bool first = true;
    for (const auto &[app, entry] : matched) {
        text.append(first ? "\"" : ",\"").append(QByteArray::number(app->index)).append("\":{\"h\":");
        first = false;
        JsonText::appendQuotedBytes(text, app->digest);
        text.append(",\"i\":");
        JsonText::appendQuotedBytes(text, app->installedVersion);
        if (!entry->localLinkJson.isEmpty())
            text.append(",\"e1\":").append(baseJson).append(entry->localLinkJson);
        reply.append(entry->replyTail);
    }
    text.append('}');
    return reply.finish();
}

void automatch(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    QString error;
    // Read where it lies: the request points into the body, which outlives it.
    const auto request = AutomatchRequest::parse(QByteArrayView(req.body.data(), qsizetype(req.body.size())), &error);
    if (!request)
        return Reply::fail(res, 400, error);
    const auto index = context.catalogue.current();
    Reply::bytes(res, matchReply(req, *index, *request), "application/octet-stream");
}

void blacklist(const httplib::Request &, httplib::Response &res, ServiceContext &context)
{
    const QStringList names = context.storage.catalogue->blacklist();
    Reply::text(res, names.isEmpty() ? QString() : names.join(u'\n') + u'\n');
}

void appInfo(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto index = context.catalogue.current();
    const CatalogueEntry *entry = index->byId(QString::fromStdString(req.matches[1]));
    if (!entry)
        return Reply::fail(res, 404, QStringLiteral("unknown catalogue id"));
    QJsonObject info;
    for (const RecordFields::KeyPair &key : RecordFields::appInfoKeys) {
        if (entry->record.contains(key.stored))
            info.insert(key.wire, entry->record.value(key.stored));
    }
    const QString bundleId = firstBundleId(entry->record);
    if (!bundleId.isEmpty())
        info.insert(QLatin1StringView("bundleid"), bundleId);
    if (!entry->link.isEmpty())
        info.insert(QLatin1StringView("link"), Reply::absoluteLink(req, entry->link));
    Reply::json(res, QJsonDocument(info).toJson(QJsonDocument::Compact));
}

void bundle(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto ids = context.storage.catalogue->bundle(QString::fromStdString(req.matches[1]));
    if (!ids)
        return Reply::fail(res, 404, QStringLiteral("unknown bundle"));
    Reply::text(res, ids->join(u','));
}

// /download604/VLID/DIGEST/LOGIN/0/0/INSTALLATION/SERIAL; the login may be empty.
void downloadRecord(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto segments = PathSegments::split(req.target);
    if (!segments || segments->size() < 3)
        return Reply::fail(res, 400, QStringLiteral("malformed download record"));
    const QString appId = segments->at(1);
    if (!context.storage.catalogue->app(appId))
        return Reply::fail(res, 404, QStringLiteral("unknown catalogue id"));
    const auto segment = [&](qsizetype i) { return segments->value(i); };
    if (!context.storage.activity->addDownload({appId, segment(2), segment(3), segment(6), segment(7)}))
        return Reply::fail(res, 503, QStringLiteral("cannot record the download"));
    Reply::text(res, QStringLiteral("OK"));
}

} // namespace

void registerCatalogueRoutes(httplib::Server &server, ServiceContext &context)
{
    postRoute(server, "/vld603scan/automatch", context, automatch);
    server.Get("/vld6blacklist", withContext(context, blacklist));
    server.Get(R"(/vld6appinfo/index/vlid/([^/]*))", withContext(context, appInfo));
    server.Get(R"(/bundle/([^/]+))", withContext(context, bundle));
    server.Get(R"(/download604/.*)", withContext(context, downloadRecord));
}
