#include "http/RequestLog.h"

#include "wire/Redaction.h"

#include <QDateTime>

#include <cstdio>
#include <mutex>

namespace RequestLog {

void write(const std::string &client, const std::string &method, const std::string &target, int status,
           const std::string &bytes, const QString &reason)
{
    static std::mutex logMutex;
    // Joined rather than filled in with arg(): a target may hold "%1" itself.
    QString line = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs) + u' ' + QString::fromStdString(client) +
                   u' ' + QString::fromStdString(method) + u' ' + Redaction::target(target) + u' ' +
                   QString::number(status) + u' ' + QString::fromStdString(bytes);
    if (status >= 400 && !reason.isEmpty())
        line += QStringLiteral(" (") + reason.trimmed().left(200) + u')';
    const QByteArray text = line.toUtf8() + '\n';
    std::lock_guard lock(logMutex);
    std::fwrite(text.constData(), 1, size_t(text.size()), stderr);
    std::fflush(stderr);
}

} // namespace RequestLog
