#include "platform/Log.h"

#include <QRegularExpression>

#include <syslog.h>

#include <cstdio>

Q_LOGGING_CATEGORY(lcVelmora, "velmora", QtInfoMsg)

void vlLog(const QString &line)
{
    qCInfo(lcVelmora).noquote() << line;
}

QString redactSecrets(const QString &text)
{
    // Form fields and query items that carry secrets, and the member paths that put an MD5 in the path.
    static const QRegularExpression fields(
        QStringLiteral("((?:^|[?&;\\s])(?:password|passwd|pass|pw|token|cookie|login|hash|secret)=)[^&;\\s]*"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression md5s(QStringLiteral("\\b[0-9a-fA-F]{32}\\b"));
    QString out = text;
    out.replace(fields, QStringLiteral("\\1***"));
    out.replace(md5s, QStringLiteral("***"));
    return out;
}

namespace {
bool g_copyToStderr = false;

void routeMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const QByteArray text = message.toUtf8();
    const bool ours = context.category && qstrcmp(context.category, "velmora") == 0;
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
