#include "wire/FormBody.h"

#include <QJsonDocument>
#include <QStringDecoder>

namespace {

int hexValue(uchar c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

namespace Percent {

std::optional<QString> decode(QByteArray bytes, bool plusIsSpace)
{
    QByteArray out;
    out.reserve(bytes.size());
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const char c = bytes.at(i);
        if (c == '%') {
            const int high = i + 2 < bytes.size() ? hexValue(uchar(bytes.at(i + 1))) : -1;
            const int low = i + 2 < bytes.size() ? hexValue(uchar(bytes.at(i + 2))) : -1;
            if (high < 0 || low < 0)
                return std::nullopt;
            out.append(char(high * 16 + low));
            i += 2;
        } else {
            out.append(plusIsSpace && c == '+' ? ' ' : c);
        }
    }
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString text = utf8.decode(out);
    if (utf8.hasError())
        return std::nullopt;
    return text;
}

} // namespace Percent

std::optional<FormBody> FormBody::parse(const QByteArray &body)
{
    FormBody form;
    form.m_body = body;
    for (const QByteArray &piece : body.split('&')) {
        if (piece.isEmpty())
            continue;
        const qsizetype equals = piece.indexOf('=');
        const auto name = Percent::decode(equals < 0 ? piece : piece.left(equals), true);
        if (!name)
            return std::nullopt;
        form.m_fields.append({*name, equals < 0 ? QByteArray() : piece.mid(equals + 1)});
    }
    return form;
}

std::optional<QJsonObject> FormBody::jsonObject(const QByteArray &body, const char *name)
{
    const QByteArray prefix = QByteArray(name) + '=';
    if (!body.startsWith(prefix))
        return std::nullopt;
    QJsonDocument document = QJsonDocument::fromJson(body.mid(prefix.size()));
    if (!document.isObject()) {
        const auto decoded = Percent::decode(body.mid(prefix.size()), true);
        document = decoded ? QJsonDocument::fromJson(decoded->toUtf8()) : QJsonDocument();
    }
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

qint64 FormBody::jsonInteger(const QJsonValue &value)
{
    return value.isString() ? value.toString().toLongLong() : qint64(value.toDouble());
}

bool FormBody::contains(const QString &name) const
{
    return std::any_of(m_fields.begin(), m_fields.end(), [&](const Field &field) { return field.name == name; });
}

QString FormBody::raw(const QString &name) const
{
    for (const Field &field : m_fields) {
        if (field.name == name)
            return QString::fromUtf8(field.raw);
    }
    return {};
}

std::optional<QString> FormBody::decoded(const QString &name) const
{
    for (const Field &field : m_fields) {
        if (field.name == name)
            return Percent::decode(field.raw, true);
    }
    return std::nullopt;
}

QString FormBody::rawToEnd(const QString &name) const
{
    const QByteArray key = name.toUtf8() + '=';
    const qsizetype at = m_body.startsWith(key) ? 0 : m_body.indexOf(QByteArray('&' + key));
    if (at < 0)
        return {};
    return QString::fromUtf8(m_body.mid(at + (at == 0 ? 0 : 1) + key.size()));
}
