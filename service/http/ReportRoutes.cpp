// Problem reports, bad property-list reports and analytics hits: stored for the operator
// (`velmora-service reports`, `velmora-service hits`).

#include "http/Reply.h"
#include "http/Routes.h"
#include "wire/FormBody.h"

#include <QStringDecoder>

namespace {

// Base64 sent raw in a form body ("+" stays "+"); a URL-encoded one is accepted too.
std::optional<QByteArray> base64Field(const FormBody &form, const QString &name)
{
    QByteArray raw = form.raw(name).toLatin1();
    if (raw.contains('%')) {
        const auto decoded = Percent::decode(raw, false);
        if (!decoded)
            return std::nullopt;
        raw = decoded->toLatin1();
    }
    const auto bytes = QByteArray::fromBase64Encoding(raw, QByteArray::AbortOnBase64DecodingErrors);
    return bytes ? std::optional(*bytes) : std::nullopt;
}

// UTF-8 text as text; other bytes (a binary property list) under name + "_base64", so none is lost.
QJsonObject bytesField(const QString &name, const QByteArray &bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString text = utf8.decode(bytes);
    if (utf8.hasError())
        return {{name + QStringLiteral("_base64"), QString::fromLatin1(bytes.toBase64())}};
    return {{name, text}};
}

// The member field "m": a decimal number, -1 for no member.
std::optional<qint64> memberField(const FormBody &form)
{
    bool numeric = false;
    const qint64 id = form.raw(QStringLiteral("m")).toLongLong(&numeric);
    return numeric ? std::optional(id) : std::nullopt;
}

void storeReport(httplib::Response &res, ServiceContext &context, const Report &report)
{
    if (!context.storage.activity->addReport(report))
        return Reply::fail(res, 503, QStringLiteral("cannot store the report"));
    Reply::text(res, QStringLiteral("OK"));
}

void problemReport(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto form = FormBody::parse(QByteArray::fromStdString(req.body));
    const auto issue = form ? base64Field(*form, QStringLiteral("issue")) : std::nullopt;
    const auto member = form ? memberField(*form) : std::nullopt;
    const auto appName = form ? form->decoded(QStringLiteral("appname")) : std::nullopt;
    if (!issue || !member || !appName)
        return Reply::fail(res, 400, QStringLiteral("a report needs issue (base64), m and appname"));
    // The path comes last and raw, so an "&" inside it must not end it.
    const QJsonObject fields{
        {QStringLiteral("issue"), QString::fromUtf8(*issue)},
        {QStringLiteral("app_id"), form->raw(QStringLiteral("appid"))},
        {QStringLiteral("app_name"), *appName},
        {QStringLiteral("installed_version"), form->raw(QStringLiteral("installedversion"))},
        {QStringLiteral("vl_version"), form->raw(QStringLiteral("vlversion"))},
        {QStringLiteral("bundle"), form->raw(QStringLiteral("bundle"))},
        {QStringLiteral("vld"), form->raw(QStringLiteral("vld"))},
        {QStringLiteral("path"), form->rawToEnd(QStringLiteral("path"))},
    };
    storeReport(res, context, {0, QStringLiteral("problem"), {}, *member, fields});
}

void badPlistReport(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const auto form = FormBody::parse(QByteArray::fromStdString(req.body));
    const auto plist = form ? base64Field(*form, QStringLiteral("plist")) : std::nullopt;
    const auto member = form ? memberField(*form) : std::nullopt;
    if (!plist || !member)
        return Reply::fail(res, 400, QStringLiteral("a report needs plist (base64) and m"));
    storeReport(res, context,
                {0, QStringLiteral("badplist"), {}, *member, bytesField(QStringLiteral("plist"), *plist)});
}

// Labels and values come unescaped (an e-mail address, a "&"), so each field is taken decoded where it
// decodes and raw otherwise; the body is kept whole as well.
void analyticsHit(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    const QByteArray body = QByteArray::fromStdString(req.body);
    const auto form = FormBody::parse(body);
    if (!form || !form->contains(QStringLiteral("v")) || !form->contains(QStringLiteral("t")))
        return Reply::fail(res, 400, QStringLiteral("a hit needs at least v and t"));
    QJsonObject fields{{QStringLiteral("body"), QString::fromUtf8(body)}};
    for (const FormBody::Field &field : form->fields()) {
        if (!fields.contains(field.name))
            fields.insert(field.name, Percent::decode(field.raw, true).value_or(QString::fromUtf8(field.raw)));
    }
    if (!context.storage.activity->addHit(fields))
        return Reply::fail(res, 503, QStringLiteral("cannot store the hit"));
    Reply::text(res, {});
}

} // namespace

void registerReportRoutes(httplib::Server &server, ServiceContext &context)
{
    postRoute(server, "/vld6scan/reportproblem", context, problemReport);
    postRoute(server, "/vld6scan/badplist", context, badPlistReport);
    postRoute(server, "/collect", context, analyticsHit);
}
