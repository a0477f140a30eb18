// Member log-in (by password digest and by cookie), sign-up, profile, and the site's sign-in page that
// sets the "login" cookie.

#include "http/Reply.h"
#include "http/Routes.h"
#include "members/MemberAccounts.h"
#include "wire/FormBody.h"
#include "wire/Html.h"
#include "wire/PathSegments.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QRegularExpression>

namespace {

const QString incorrectLogin = QStringLiteral("Incorrect email or password");

bool isMd5Hex(const QString &text)
{
    static const QRegularExpression md5(QStringLiteral("^[0-9a-fA-F]{32}$"));
    return md5.match(text).hasMatch();
}

// The key/value pairs after /vld6member/ROUTE/. Nullopt also when the path only reached this route through an
// encoded "/" in its first segments: it would be read apart differently from the way it was routed (and logged).
std::optional<QHash<QString, QString>> pathFields(const httplib::Request &req, const char *route,
                                                  const QString &restKey = {})
{
    const auto segments = PathSegments::split(req.target);
    if (!segments || segments->size() < 2 || segments->at(0) != QLatin1StringView("vld6member") ||
        segments->at(1) != QLatin1StringView(route))
        return std::nullopt;
    return PathSegments::pairs(*segments, 2, restKey);
}

void replyJson(httplib::Response &res, const QJsonObject &object)
{
    Reply::json(res, QJsonDocument(object).toJson(QJsonDocument::Compact));
}

void replyLogin(httplib::Response &res, const ServiceContext &context, const std::optional<Member> &member)
{
    const auto password = member ? MemberAccounts::password(context.secrets, *member) : std::nullopt;
    if (!password)
        return replyJson(res, {{QStringLiteral("error"), incorrectLogin}});
    replyJson(res, MemberAccounts::loginReply(*member, *password));
}

void passwordLogin(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto fields = pathFields(req, "jlogincheck2");
    if (!fields || !isMd5Hex(fields->value(QStringLiteral("u"))) || !isMd5Hex(fields->value(QStringLiteral("p"))))
        return Reply::fail(res, 400, QStringLiteral("malformed log-in"));
    auto member = context.storage.members->memberByEmailDigest(fields->value(QStringLiteral("u")));
    if (member && !MemberAccounts::passwordDigestMatches(context.secrets, *member, fields->value(QStringLiteral("p"))))
        member.reset();
    replyLogin(res, context, member);
}

void cookieLogin(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto fields = pathFields(req, "jlogincheckcookie");
    bool numeric = false;
    const qint64 id = fields ? fields->value(QStringLiteral("u")).toLongLong(&numeric) : 0;
    if (!fields || !numeric || fields->value(QStringLiteral("p")).isEmpty())
        return Reply::fail(res, 400, QStringLiteral("malformed cookie log-in"));
    std::optional<Member> member;
    if (MemberAccounts::tokenMatches(*context.storage.members, id, fields->value(QStringLiteral("p"))))
        member = context.storage.members->memberById(id);
    replyLogin(res, context, member);
}

void signup(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto fields = pathFields(req, "signup", QStringLiteral("utmz"));
    if (!fields)
        return Reply::fail(res, 400, QStringLiteral("malformed sign-up"));
    QString utmz;
    if (fields->contains(QStringLiteral("utmz"))) {
        const auto decoded = QByteArray::fromBase64Encoding(fields->value(QStringLiteral("utmz")).toLatin1(),
                                                            QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded)
            return Reply::fail(res, 400, QStringLiteral("utmz is not base64"));
        utmz = QString::fromUtf8(*decoded);
    }
    QString error;
    const auto member =
        MemberAccounts::create(*context.storage.members, context.secrets,
                               {fields->value(QStringLiteral("e")), fields->value(QStringLiteral("p")),
                                fields->value(QStringLiteral("f")), fields->value(QStringLiteral("l")), utmz},
                               &error);
    if (!member)
        return replyJson(res, {{QStringLiteral("error"), error}});
    replyJson(res, {{QStringLiteral("id"), member->id},
                    {QStringLiteral("first"), member->first},
                    {QStringLiteral("last"), member->last}});
}

// The body is "a=" and the profile as JSON, not URL-encoded; an encoded one is taken too.
void saveProfile(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto json = FormBody::jsonObject(QByteArray::fromStdString(req.body), "a");
    if (!json)
        return Reply::fail(res, 400, QStringLiteral("the body must be a= and a JSON object"));
    const QJsonObject &profile = *json;
    auto member =
        context.storage.members->memberById(FormBody::jsonInteger(profile.value(QStringLiteral("member_id"))));
    if (!member)
        return Reply::fail(res, 404, QStringLiteral("unknown member"));
    const auto text = [&](const char *key, const QString &current) {
        const QJsonValue value = profile.value(QLatin1StringView(key));
        return value.isString() ? value.toString().trimmed() : current;
    };
    member->first = text("fname", member->first);
    member->last = text("lname", member->last);
    member->email = text("email", member->email);
    member->address = text("address", member->address);
    member->city = text("city", member->city);
    member->state = text("state", member->state);
    member->zip = text("zip", member->zip);
    member->country = text("country", member->country);
    if (!MemberAccounts::isValidEmail(member->email) || member->first.isEmpty() || member->last.isEmpty())
        return Reply::fail(res, 422, QStringLiteral("Name and Email address are required"));
    QString error;
    if (!context.storage.members->updateProfile(*member, &error))
        return Reply::fail(res, 409, error);
    replyJson(res, {{QStringLiteral("ok"), true}});
}

const QString signInForm = QStringLiteral(
    "<form method=\"post\" action=\"/member/login\"><p><label>Email <input name=\"email\" type=\"email\"></label></p>"
    "<p><label>Password <input name=\"password\" type=\"password\"></label></p><p><button>Sign in</button></p></form>");

// The web sign-in: on success the "login" cookie (member id, "%3A", token) that the program's cookie log-in
// reads later.
void siteSignIn(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto form = FormBody::parse(QByteArray::fromStdString(req.body));
    const auto email = form ? form->decoded(QStringLiteral("email")) : std::nullopt;
    const auto password = form ? form->decoded(QStringLiteral("password")) : std::nullopt;
    if (!email || !password)
        return Reply::fail(res, 400, QStringLiteral("email and password are required"));
    const QString digest =
        QString::fromLatin1(QCryptographicHash::hash(email->toUtf8(), QCryptographicHash::Md5).toHex());
    const QString passwordDigest =
        QString::fromLatin1(QCryptographicHash::hash(password->toUtf8(), QCryptographicHash::Md5).toHex());
    const auto member = context.storage.members->memberByEmailDigest(digest);
    if (!member || !MemberAccounts::passwordDigestMatches(context.secrets, *member, passwordDigest)) {
        Reply::text(res, Html::page(QStringLiteral("Sign in"), Html::paragraph(incorrectLogin) + signInForm),
                    Html::mime);
        res.status = 403;
        return;
    }
    const QString token = MemberAccounts::newToken();
    if (!context.storage.members->setTokenDigest(member->id, MemberAccounts::tokenDigest(token)))
        return Reply::fail(res, 503, QStringLiteral("cannot sign in now"));
    const QString cookie = QStringLiteral("login=") + QString::number(member->id) + QStringLiteral("%3A") + token +
                           QStringLiteral("; Path=/; Max-Age=2592000; HttpOnly");
    res.set_header("Set-Cookie", cookie.toStdString());
    Reply::text(
        res,
        Html::page(QStringLiteral("Signed in"), Html::paragraph(QStringLiteral("Signed in as %1.").arg(member->email))),
        Html::mime);
}

} // namespace

void registerMemberRoutes(httplib::Server &server, ServiceContext &context)
{
    server.Get(R"(/vld6member/jlogincheck2/.*)", withContext(context, passwordLogin));
    server.Get(R"(/vld6member/jlogincheckcookie/.*)", withContext(context, cookieLogin));
    server.Get(R"(/vld6member/signup/.*)", withContext(context, signup));
    postRoute(server, "/vld6member/save-profile", context, saveProfile);
    server.Get("/member/login", [](const httplib::Request &, httplib::Response &res) {
        Reply::text(res, Html::page(QStringLiteral("Sign in"), signInForm), Html::mime);
    });
    postRoute(server, "/member/login", context, siteSignIn);
}
