#include "platform/Log.h"

#include "platform/LogRing.h"

#include <QRegularExpression>

#include <syslog.h>

#include <cstdio>

Q_LOGGING_CATEGORY(lcVelmora, "velmora", QtInfoMsg)

void vlLog(const QString &line)
{
    const QString redacted = redactSecrets(line);
    LogRing::append(redacted.toUtf8());
    qCInfo(lcVelmora).noquote() << redacted;
}

namespace {

const QString hidden = QStringLiteral("***");

// Where a request path ends inside a log line. "&" ends it too: a URL written into another URL's query is
// percent-encoded up to the next field.
bool endsPath(QChar c)
{
    return c.isSpace() || c == u'?' || c == u'#' || c == u'&' || c == u'"' || c == u'\'' || c == u'<' || c == u'>';
}

// The member paths carry their parameters as key/value segments after the action:
// "/vld6member/jlogincheck2/u/MD5/p/MD5/vld/...", "/vld6member/signup/e/EMAIL/p/PASSWORD/f/.../utmz/COOKIE".
// u and p hold the log-in pair (e-mail and password MD5s, or the member id and token of the log-in cookie) or the
// sign-up password; utmz, a cookie value in base64 that may hold "/" itself, runs to the end of the path.
QString redactMemberPaths(const QString &text)
{
    static const QRegularExpression member(QStringLiteral("vld6member(/|%2f)"),
                                           QRegularExpression::CaseInsensitiveOption);
    QString out;
    qsizetype copied = 0;
    QRegularExpressionMatchIterator matches = member.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        if (match.capturedStart() < copied) {
            continue; // inside the path just handled
        }
        const QString separator = match.captured(1);
        const qsizetype start = match.capturedEnd();
        qsizetype end = start;
        while (end < text.size() && !endsPath(text.at(end))) {
            ++end;
        }
        QStringList segments = text.mid(start, end - start).split(separator, Qt::KeepEmptyParts, Qt::CaseInsensitive);
        for (qsizetype key = 1; key + 1 < segments.size(); key += 2) {
            const QString name = segments.at(key).toLower();
            if (name == u"utmz") {
                segments = segments.mid(0, key + 1) << hidden;
                break;
            }
            if (name == u"u" || name == u"p") {
                segments[key + 1] = hidden;
            }
        }
        out += QStringView(text).mid(copied, start - copied) + segments.join(separator);
        copied = end;
    }
    return out + QStringView(text).mid(copied);
}

} // namespace

QString redactSecrets(const QString &text)
{
    // A path segment after a secret's name, in any path. Separators are "/" or, in a URL written into another
    // URL, "%2F": the value runs to the next separator of the same form, so an escaped "/" inside a password
    // (written "%2F", or "%252F" once more escaped) never ends it early.
    static const QRegularExpression segments(
        QStringLiteral("((/|%2f)(?:password|passwd|pass|pw|token|cookie|secret)\\2).*?(?=\\2|[\\s?#&\"'<>]|$)"),
        QRegularExpression::CaseInsensitiveOption);
    // Form fields, query items and cookie pairs that carry secrets.
    static const QRegularExpression fields(
        QStringLiteral("((?:^|[?&;\\s])(?:[\\w-]*(?:password|passwd|token|secret)|pass|pw|cookie|login|hash|_*utmz)=)"
                       "[^&;\\s]*"),
        QRegularExpression::CaseInsensitiveOption);
    // Headers whose whole value is a secret.
    static const QRegularExpression headers(QStringLiteral("((?:^|\\s)(?:set-)?cookie:|authorization:)[^\\r\\n]*"),
                                            QRegularExpression::CaseInsensitiveOption);
    // Password MD5s wherever they stand.
    static const QRegularExpression md5s(QStringLiteral("\\b[0-9a-fA-F]{32}\\b"));
    QString out = redactMemberPaths(text);
    out.replace(segments, QStringLiteral("\\1***"));
    out.replace(fields, QStringLiteral("\\1***"));
    out.replace(headers, QStringLiteral("\\1 ***"));
    out.replace(md5s, hidden);
    return out;
}

namespace {
bool g_copyToStderr = false;

void routeMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const bool ours = context.category && qstrcmp(context.category, "velmora") == 0;
    // Our own lines were redacted by vlLog; Qt's may quote a request too.
    const QByteArray text = (ours ? message : redactSecrets(message)).toUtf8();
    syslog(type == QtInfoMsg || type == QtDebugMsg ? LOG_INFO : LOG_WARNING, "%s", text.constData());
    if (g_copyToStderr || (!ours && type != QtInfoMsg && type != QtDebugMsg)) {
        std::fprintf(stderr, "%s\n", text.constData());
    }
}
} // namespace

void installLogRouting(bool copyToStderr)
{
    g_copyToStderr = copyToStderr || qEnvironmentVariable("VELMORA_LOG") == QLatin1String("stderr");
    openlog("velmora", LOG_PID, LOG_USER);
    qInstallMessageHandler(routeMessage);
}
