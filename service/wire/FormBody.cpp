#include "wire/FormBody.h"

#include "wire/HexDigit.h"

#include <QJsonDocument>
#include <QVarLengthArray>

#include <cmath>

namespace Percent {

bool isPlainAscii(QByteArrayView bytes, bool plusIsSpace)
{
    for (const char c : bytes) {
        if (uchar(c) >= 0x80 || c == '%' || (plusIsSpace && c == '+'))
            return false;
    }
    return true;
}

namespace {

// The bytes with their escapes undone, in out's storage; nullopt on a broken escape or bytes that are not UTF-8.
template <qsizetype Prealloc>
std::optional<QByteArrayView> unescaped(QByteArrayView bytes, bool plusIsSpace, QVarLengthArray<char, Prealloc> &out)
{
    out.resize(bytes.size());
    qsizetype length = 0;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        if (c == '%') {
            const int high = i + 2 < bytes.size() ? hexValue(uchar(bytes[i + 1])) : -1;
            const int low = i + 2 < bytes.size() ? hexValue(uchar(bytes[i + 2])) : -1;
            if (high < 0 || low < 0)
                return std::nullopt;
            out[length++] = char(high * 16 + low);
            i += 2;
        } else {
            out[length++] = plusIsSpace && c == '+' ? ' ' : c;
        }
    }
    const QByteArrayView text(out.constData(), length);
    return text.isValidUtf8() ? std::optional(text) : std::nullopt;
}

} // namespace

std::optional<QString> decode(QByteArrayView bytes, bool plusIsSpace)
{
    // Most values are plain ASCII with nothing to decode; they skip the copying and the UTF-8 check.
    if (isPlainAscii(bytes, plusIsSpace))
        return QString::fromLatin1(bytes);
    QVarLengthArray<char, 256> buffer;
    const auto text = unescaped(bytes, plusIsSpace, buffer);
    return text ? std::optional(QString::fromUtf8(*text)) : std::nullopt;
}

std::optional<QByteArray> decodeBytes(QByteArrayView bytes, bool plusIsSpace)
{
    if (isPlainAscii(bytes, plusIsSpace))
        return bytes.toByteArray();
    QVarLengthArray<char, 256> buffer;
    const auto text = unescaped(bytes, plusIsSpace, buffer);
    return text ? std::optional(text->toByteArray()) : std::nullopt;
}

bool isValid(QByteArrayView bytes, bool plusIsSpace)
{
    // Escapes of ASCII need only their digits checked; a text with anything else is decoded for its UTF-8 check.
    qsizetype i = 0;
    for (; i < bytes.size(); ++i) {
        const uchar c = uchar(bytes[i]);
        if (c >= 0x80)
            break;
        if (c != '%')
            continue;
        const int high = i + 2 < bytes.size() ? hexValue(uchar(bytes[i + 1])) : -1;
        if (high < 0 || hexValue(uchar(bytes[i + 2])) < 0)
            return false;
        if (high >= 8)
            break;
        i += 2;
    }
    if (i >= bytes.size())
        return true;
    QVarLengthArray<char, 256> buffer;
    return unescaped(bytes, plusIsSpace, buffer).has_value();
}

} // namespace Percent

std::optional<FormBody> FormBody::parse(const QByteArray &body)
{
    FormBody form;
    form.m_body = body;
    const bool read = Percent::forEachPair(form.m_body, [&form](QByteArrayView name, QByteArrayView raw) {
        const auto decoded = Percent::decode(name, true);
        if (decoded)
            form.m_fields.append({*decoded, raw});
        return decoded.has_value();
    });
    if (!read)
        return std::nullopt;
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
    if (value.isString())
        return value.toString().toLongLong();
    // A number past what an integer holds reads as 0, as a text that is no integer does.
    const double number = value.toDouble();
    return std::abs(number) < 9.2e18 ? qint64(number) : 0;
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
