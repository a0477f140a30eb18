// The site host's pages and icons.

#include "catalogue/RecordFields.h"
#include "http/Reply.h"
#include "http/Routes.h"
#include "wire/Html.h"
#include "wire/PngIcon.h"

#include <QCryptographicHash>
#include <QUrl>

#include <algorithm>

namespace {

constexpr int iconSize = 128;
constexpr int discoverCount = 100;

QString field(const CatalogueEntry &entry, const char *key)
{
    return entry.record.value(QLatin1StringView(key)).toString();
}

QString appPagePath(const CatalogueEntry &entry)
{
    return QStringLiteral("/app/mac/%1/%2")
        .arg(entry.id, QString::fromUtf8(QUrl::toPercentEncoding(field(entry, "name"))));
}

// Every app gets its own colour, derived from its id, so icons differ without any stored image.
void icon(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const QString id = QString::fromStdString(req.matches[1]);
    if (!context.catalogue.current()->byId(id))
        return Reply::fail(res, 404, QStringLiteral("unknown catalogue id"));
    const QByteArray digest = QCryptographicHash::hash(id.toUtf8(), QCryptographicHash::Md5);
    Reply::bytes(res,
                 PngIcon::make(iconSize, quint8(digest[0]) | 0x40, quint8(digest[1]) | 0x40, quint8(digest[2]) | 0x40),
                 "image/png");
}

void appPage(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto index = context.catalogue.current();
    const CatalogueEntry *entry = index->byId(QString::fromStdString(req.matches[1]));
    if (!entry)
        return Reply::fail(res, 404, QStringLiteral("unknown catalogue id"));
    QString body =
        QStringLiteral("<img src=\"/util/iconlg/%1.png\" width=\"64\" height=\"64\" alt=\"\">").arg(entry->id);
    body += Html::paragraph(field(*entry, "shortdescr"));
    body += Html::paragraph(QStringLiteral("Version %1").arg(field(*entry, "current_version")));
    if (!field(*entry, "developer").isEmpty())
        body += Html::paragraph(QStringLiteral("By %1").arg(field(*entry, "developer")));
    if (!field(*entry, "min_os").isEmpty())
        body += Html::paragraph(QStringLiteral("Requires macOS %1 or later").arg(field(*entry, "min_os")));
    body += Html::paragraph(QStringLiteral("Downloads: %1").arg(context.storage.activity->downloadCount(entry->id)));
    if (!field(*entry, "release_notes").isEmpty())
        body += QStringLiteral("<h2>Release notes</h2>") + Html::paragraph(field(*entry, "release_notes"));
    if (!entry->link.isEmpty())
        body += QStringLiteral("<p>%1</p>")
                    .arg(Html::link(Reply::absoluteLink(req, entry->link), QStringLiteral("Download")));
    if (!field(*entry, "homepage").isEmpty())
        body +=
            QStringLiteral("<p>%1</p>").arg(Html::link(field(*entry, "homepage"), QStringLiteral("Developer's site")));
    Reply::text(res, Html::page(field(*entry, "name"), body), Html::mime);
}

// The newest apps first (by their sort date), then by name.
void discover(const httplib::Request &, httplib::Response &res, ServiceContext &context)
{
    const auto index = context.catalogue.current();
    std::vector<const CatalogueEntry *> entries;
    for (const CatalogueEntry &entry : index->entries())
        entries.push_back(&entry);
    const auto newer = [](const CatalogueEntry *a, const CatalogueEntry *b) {
        const qint64 da = field(*a, "sort_date").toLongLong(), db = field(*b, "sort_date").toLongLong();
        return da != db ? da > db : field(*a, "name").compare(field(*b, "name"), Qt::CaseInsensitive) < 0;
    };
    const size_t shown = std::min<size_t>(entries.size(), discoverCount);
    std::partial_sort(entries.begin(), entries.begin() + qsizetype(shown), entries.end(), newer);
    QString list = QStringLiteral("<ul>");
    for (size_t i = 0; i < shown; ++i) {
        list += QStringLiteral("<li>%1 %2</li>")
                    .arg(Html::link(appPagePath(*entries[i]), field(*entries[i], "name")),
                         Html::escape(field(*entries[i], "current_version")));
    }
    Reply::text(res, Html::page(QStringLiteral("Discover new apps"), list + QStringLiteral("</ul>")), Html::mime);
}

void forgotPassword(const httplib::Request &, httplib::Response &res, ServiceContext &)
{
    Reply::text(
        res,
        Html::page(QStringLiteral("Forgot your password?"),
                   Html::paragraph(QStringLiteral("This service does not send e-mail. Ask the person who runs it "
                                                  "to set a new password for your account.")) +
                       QStringLiteral("<p>%1</p>")
                           .arg(Html::link(QStringLiteral("/member/login"), QStringLiteral("Back to sign in")))),
        Html::mime);
}

} // namespace

void registerSiteRoutes(httplib::Server &server, ServiceContext &context)
{
    server.Get(R"(/util/iconlg/([0-9]+)\.png)", withContext(context, icon));
    server.Get(R"(/app/mac/([0-9]+)(/.*)?)", withContext(context, appPage));
    server.Get("/desktop/discover", withContext(context, discover));
    server.Get("/member/forgot-password", withContext(context, forgotPassword));
}
