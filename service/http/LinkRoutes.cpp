// Short links: "/api-create.php?url=LINK" answers the short link as text; "/s/CODE" redirects to LINK.

#include "http/Reply.h"
#include "http/Routes.h"

namespace {

constexpr qsizetype maxLinkLength = 8192;

void createShortLink(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    // The program inserts the link unescaped, so it runs to the end of the target, "&" and "?" included. It also
    // puts "http://" before a link that starts "https://": that link is the https one.
    const QString target = QString::fromStdString(sentTarget(req));
    const qsizetype at = target.indexOf(QLatin1StringView("?url="));
    QString link = at < 0 ? QString() : target.mid(at + 5);
    if (link.startsWith(QLatin1StringView("http://https://")))
        link.remove(0, 7);
    if (!(link.startsWith(QLatin1StringView("http://")) || link.startsWith(QLatin1StringView("https://"))) ||
        link.size() > maxLinkLength)
        return Reply::fail(res, 400, QStringLiteral("url must be an http or https link"));
    const auto number = context.storage.links->shortLink(link);
    if (!number)
        return Reply::fail(res, 503, QStringLiteral("cannot store the link"));
    Reply::text(res, Reply::baseUrl(req) + QStringLiteral("/s/") + QString::number(*number, 36));
}

void followShortLink(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    bool ok = false;
    const qint64 number = QString::fromStdString(req.matches[1]).toLongLong(&ok, 36);
    const auto link = ok ? context.storage.links->target(number) : std::nullopt;
    if (!link)
        return Reply::fail(res, 404, QStringLiteral("unknown short link"));
    res.set_redirect(link->toStdString(), 302);
}

} // namespace

void registerLinkRoutes(httplib::Server &server, ServiceContext &context)
{
    server.Get("/api-create.php", withContext(context, createShortLink));
    server.Get(R"(/s/([0-9a-z]{1,12}))", withContext(context, followShortLink));
}
