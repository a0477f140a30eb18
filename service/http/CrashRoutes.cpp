// Crash reports from the program: a form post with the report, the user's details, the version and the
// installation id, stored for `velmora-service crashes`.

#include "http/Reply.h"
#include "http/Routes.h"
#include "wire/FormBody.h"

namespace {

// A report is a few kilobytes of text and the last log lines; anything far larger is not one.
constexpr size_t kMaxCrashBodyBytes = 512 * 1024;

// The report's bytes as sent, whatever they hold: percent escapes decoded, "+" a space.
QByteArray formBytes(QByteArrayView raw)
{
    QByteArray bytes = raw.toByteArray();
    bytes.replace('+', ' ');
    return QByteArray::fromPercentEncoding(bytes);
}

void crashReport(const httplib::Request &req, httplib::Response &res, ServiceContext &context)
{
    if (req.body.size() > kMaxCrashBodyBytes)
        return Reply::fail(res, 413, QStringLiteral("a crash report is at most %1 bytes").arg(kMaxCrashBodyBytes));
    const auto form = FormBody::parse(QByteArray::fromStdString(req.body));
    if (!form || !form->contains(QStringLiteral("report")))
        return Reply::fail(res, 400, QStringLiteral("a crash report needs report"));
    CrashReport crash;
    for (const FormBody::Field &field : form->fields()) {
        if (field.name == u"report" && crash.report.isEmpty())
            crash.report = formBytes(field.raw);
    }
    const auto details = form->decoded(QStringLiteral("details"));
    const auto version = form->decoded(QStringLiteral("version"));
    const auto installation = form->decoded(QStringLiteral("penguin"));
    if (crash.report.isEmpty() || (form->contains(QStringLiteral("details")) && !details))
        return Reply::fail(res, 400, QStringLiteral("a crash report needs a report and readable details"));
    crash.details = details.value_or(QString());
    crash.version = version.value_or(QString());
    crash.installation = installation.value_or(QString());
    if (!context.storage.crashes->addCrash(crash))
        return Reply::fail(res, 503, QStringLiteral("cannot store the crash report"));
    Reply::text(res, QStringLiteral("OK"));
}

} // namespace

void registerCrashRoutes(httplib::Server &server, ServiceContext &context)
{
    postRoute(server, "/quincy/crash_v300.php", context, crashReport);
}
