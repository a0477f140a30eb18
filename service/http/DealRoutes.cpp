// The deals host: promotions (catalogue records that carry a "deal") and the cart, which records a purchase.

#include "catalogue/RecordFields.h"
#include "http/Reply.h"
#include "http/Routes.h"
#include "members/SecretBox.h"
#include "wire/FormBody.h"
#include "wire/PropertyList.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>

namespace {

QJsonObject promoItem(const httplib::Request &req, const CatalogueEntry &entry)
{
    const QJsonObject deal = entry.record.value(RecordFields::deal).toObject();
    return {
        {QStringLiteral("title"), entry.record.value(QLatin1StringView("name")).toString()},
        {QStringLiteral("bundle_id"), firstBundleId(entry.record)},
        {QStringLiteral("shortdescr"), entry.record.value(QLatin1StringView("shortdescr")).toString()},
        {QStringLiteral("prod_id"), entry.id},
        {QStringLiteral("id"), deal.value(QLatin1StringView("id")).toString()},
        {QStringLiteral("link"), Reply::absoluteLink(req, deal.value(QLatin1StringView("link")).toString())},
        {QStringLiteral("discount"), deal.value(QLatin1StringView("discount")).toString()},
        {QStringLiteral("price"), deal.value(QLatin1StringView("price")).toString()},
        {QStringLiteral("appversion"),
         deal.value(QLatin1StringView("appversion"))
             .toString(entry.record.value(QLatin1StringView("current_version")).toString())},
        {QStringLiteral("parent_sales_profile_id"),
         deal.value(QLatin1StringView("parent_sales_profile_id")).toString()},
    };
}

void promotions(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    QJsonArray entries;
    for (const CatalogueEntry &entry : context.catalogue.current()->entries()) {
        if (entry.record.contains(RecordFields::deal))
            entries.append(promoItem(req, entry));
    }
    Reply::bytes(res, PropertyList::xml({{QStringLiteral("entries"), entries}}), "application/xml; charset=utf-8");
}

const CatalogueEntry *entryForDeal(const CatalogueIndex &index, const QString &dealId)
{
    for (const CatalogueEntry &entry : index.entries()) {
        const QJsonObject deal = entry.record.value(RecordFields::deal).toObject();
        if (!dealId.isEmpty() && deal.value(QLatin1StringView("id")).toString() == dealId)
            return &entry;
    }
    return nullptr;
}

void cart(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto order = FormBody::jsonObject(QByteArray::fromStdString(req.body), "a");
    if (!order)
        return Reply::fail(res, 400, QStringLiteral("the body must be a= and a JSON object"));
    const auto member =
        context.storage.members->memberById(FormBody::jsonInteger(order->value(QStringLiteral("member_id"))));
    if (!member)
        return Reply::fail(res, 404, QStringLiteral("unknown member"));
    const auto index = context.catalogue.current();
    const CatalogueEntry *entry =
        entryForDeal(*index, QString::number(FormBody::jsonInteger(order->value(QStringLiteral("promo_id")))));
    if (!entry)
        return Reply::fail(res, 404, QStringLiteral("unknown promotion"));
    Purchase purchase;
    purchase.appId = entry->id;
    purchase.serialNumber = QString::fromLatin1(SecretBox::randomBytes(8).toHex().toUpper());
    purchase.orderDate = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    purchase.purchasedVersion = promoItem(req, *entry).value(QLatin1StringView("appversion")).toString();
    const auto added = context.storage.lists->addPurchase(member->id, purchase, *order);
    if (!added)
        return Reply::fail(res, 503, QStringLiteral("cannot record the order"));
    Reply::json(res, QJsonDocument(QJsonObject{{QStringLiteral("orderid"), QString::number(added->id)},
                                               {QStringLiteral("serial_number"), added->serialNumber}})
                         .toJson(QJsonDocument::Compact));
}

} // namespace

void registerDealRoutes(httplib::Server &server, ServiceContext &context)
{
    server.Get("/api/promosplist", withContext(context, promotions));
    postRoute(server, "/cart/vld6", context, cart);
}
