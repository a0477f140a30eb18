#include "http/RequestLog.h"

#include "wire/Redaction.h"

#include <QDateTime>
#include <QStringDecoder>

#include <cstdio>
#include <mutex>

namespace RequestLog {

namespace {

QString escaped(uint code)
{
    return QStringLiteral("\\x") + QString::number(code, 16).toUpper().rightJustified(2, u'0');
}

std::string_view trimmed(std::string_view bytes)
{
    const size_t first = bytes.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos)
        return {};
    return bytes.substr(first, bytes.find_last_not_of(" \t\r\n") - first + 1);
}

// The bytes as a log shows them: UTF-8 text as it is, control characters and bytes that are no UTF-8 as \xNN.
QString printable(std::string_view bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString text = utf8.decode(QByteArrayView(bytes.data(), qsizetype(bytes.size())));
    QString shown;
    if (utf8.hasError()) {
        for (const char byte : bytes)
            shown += uchar(byte) >= 0x20 && uchar(byte) < 0x7f ? QString(QLatin1Char(byte)) : escaped(uchar(byte));
        return shown;
    }
    for (const QChar c : text)
        shown += c.category() == QChar::Other_Control ? escaped(c.unicode()) : QString(c);
    return shown;
}

} // namespace

void write(const std::string &client, const std::string &method, const std::string &target, int status,
           const std::string &bytes, std::string_view reason)
{
    static std::mutex logMutex;
    // Joined rather than filled in with arg(): a target may hold "%1" itself.
    QString line = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs) + u' ' + QString::fromStdString(client) +
                   u' ' + QString::fromStdString(method) + u' ' + Redaction::target(target) + u' ' +
                   QString::number(status) + u' ' + QString::fromStdString(bytes);
    if (status >= 400 && !trimmed(reason).empty())
        line += QStringLiteral(" (") + printable(trimmed(reason)).left(200) + u')';
    const QByteArray text = line.toUtf8() + '\n';
    std::lock_guard lock(logMutex);
    std::fwrite(text.constData(), 1, size_t(text.size()), stderr);
    std::fflush(stderr);
}

} // namespace RequestLog
