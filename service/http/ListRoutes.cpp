// Watch lists and purchases: XML property-list replies with "entries", and single watch-list changes.

#include "catalogue/RecordFields.h"
#include "http/Reply.h"
#include "http/Routes.h"
#include "wire/FormBody.h"
#include "wire/PathSegments.h"
#include "wire/PropertyList.h"

#include <QJsonArray>

namespace {

const char *const plistMime = "application/xml; charset=utf-8";

// The member named by the body "id=N"; fails the request otherwise.
std::optional<Member> memberFromBody(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto form = FormBody::parse(QByteArray::fromStdString(req.body));
    bool numeric = false;
    const qint64 id = form ? form->raw(QStringLiteral("id")).toLongLong(&numeric) : 0;
    if (!numeric) {
        Reply::fail(res, 400, QStringLiteral("the body must be id=N"));
        return std::nullopt;
    }
    auto member = context.storage.members->memberById(id);
    if (!member)
        Reply::fail(res, 404, QStringLiteral("unknown member"));
    return member;
}

QString text(const CatalogueEntry &entry, QLatin1StringView key)
{
    return entry.record.value(key).toString();
}

void watchLists(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto member = memberFromBody(req, res, context);
    if (!member)
        return;
    const auto index = context.catalogue.current();
    QJsonArray entries;
    for (const WatchListEntry &item : context.storage.lists->watchList(member->id)) {
        const CatalogueEntry *entry = index->byId(item.appId);
        if (!entry)
            continue;
        QJsonObject object{{QStringLiteral("wl_id"), QString::number(item.id)},
                           {QStringLiteral("list_name"), item.listName},
                           {QStringLiteral("vl_id"), entry->id}};
        for (const QLatin1StringView key : RecordFields::watchListKeys) {
            if (entry->record.value(key).isString())
                object.insert(key, text(*entry, key));
        }
        if (!entry->link.isEmpty())
            object.insert(QStringLiteral("link"), Reply::absoluteLink(req, entry->link));
        entries.append(object);
    }
    Reply::bytes(res, PropertyList::xml({{QStringLiteral("entries"), entries}}), plistMime);
}

void purchases(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto member = memberFromBody(req, res, context);
    if (!member)
        return;
    const auto index = context.catalogue.current();
    QJsonArray entries;
    for (const Purchase &purchase : context.storage.lists->purchases(member->id)) {
        const CatalogueEntry *entry = index->byId(purchase.appId);
        if (!entry)
            continue;
        entries.append(QJsonObject{
            {QStringLiteral("name"), text(*entry, QLatin1StringView("name"))},
            {QStringLiteral("bundle_id"), firstBundleId(entry->record)},
            {QStringLiteral("vl_id"), entry->id},
            {QStringLiteral("orderid"), QString::number(purchase.id)},
            {QStringLiteral("serial_number"), purchase.serialNumber},
            {QStringLiteral("order_date"), purchase.orderDate},
            {QStringLiteral("purchased_version"), purchase.purchasedVersion},
            {QStringLiteral("opens_in_window"), text(*entry, QLatin1StringView("opens_in_window"))},
            {QStringLiteral("vld_install_from_link"), text(*entry, QLatin1StringView("vld_install_from_link"))},
        });
    }
    Reply::bytes(res, PropertyList::xml({{QStringLiteral("entries"), entries}}), plistMime);
}

// /vld6watchlists/awl/z/MD5-OF-MEMBER-ID/m/VLID/e/0|1 and /vld6watchlists/rwl/z/.../m/VLID
void changeWatchList(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto segments = PathSegments::split(req.target);
    const auto fields = segments ? PathSegments::pairs(*segments, 2) : std::nullopt;
    const bool adding = segments && segments->value(1) == QLatin1StringView("awl");
    const QString sendEmail = fields ? fields->value(QStringLiteral("e"), QStringLiteral("0")) : QString();
    if (!fields || !fields->contains(QStringLiteral("z")) || !fields->contains(QStringLiteral("m")) ||
        (adding && sendEmail != u'0' && sendEmail != u'1'))
        return Reply::fail(res, 400, QStringLiteral("malformed watch-list change"));
    const auto member = context.storage.members->memberByIdDigest(fields->value(QStringLiteral("z")));
    if (!member)
        return Reply::fail(res, 404, QStringLiteral("unknown member"));
    const QString appId = fields->value(QStringLiteral("m"));
    if (!context.storage.catalogue->app(appId))
        return Reply::fail(res, 404, QStringLiteral("unknown catalogue id"));
    const bool done = adding ? context.storage.lists->addToWatchList(member->id, appId, sendEmail == u'1')
                             : context.storage.lists->removeFromWatchList(member->id, appId);
    if (!done)
        return Reply::fail(res, adding ? 503 : 404,
                           adding ? QStringLiteral("cannot change the watch list")
                                  : QStringLiteral("not on the watch list"));
    Reply::text(res, QStringLiteral("OK"));
}

} // namespace

void registerListRoutes(httplib::Server &server, ServiceContext &context)
{
    postRoute(server, "/vld6watchlists/getwatchlists", context, watchLists);
    postRoute(server, "/vld6purchases/getpurchases", context, purchases);
    server.Get(R"(/vld6watchlists/(awl|rwl)/.*)", withContext(context, changeWatchList));
}
