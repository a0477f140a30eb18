#pragma once

// An application/x-www-form-urlencoded body as the program writes it: some fields URL-encoded, others (the
// installed version, base64 texts, a local path) raw. So each field can be read either way.

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

namespace Percent {
// ASCII without escapes (nor "+" where it stands for a space): the text is the bytes themselves.
bool isPlainAscii(QByteArrayView bytes, bool plusIsSpace);
// Strict percent-decoding to UTF-8; nullopt on a broken escape or bytes that are not UTF-8.
std::optional<QString> decode(QByteArrayView bytes, bool plusIsSpace);
// The same, as UTF-8 bytes.
std::optional<QByteArray> decodeBytes(QByteArrayView bytes, bool plusIsSpace);
// Whether decode() would succeed, without keeping the text.
bool isValid(QByteArrayView bytes, bool plusIsSpace);

// Calls visit(name, value) with the bytes of each "name=value" piece of body, in order, empty pieces skipped (a
// piece without "=" has an empty value). Stops when visit answers false; answers whether every piece was visited.
template <typename Visit> bool forEachPair(QByteArrayView body, Visit visit)
{
    for (qsizetype start = 0; start <= body.size();) {
        qsizetype end = body.indexOf('&', start);
        if (end < 0)
            end = body.size();
        const QByteArrayView piece = body.sliced(start, end - start);
        start = end + 1;
        if (piece.isEmpty())
            continue;
        const qsizetype equals = piece.indexOf('=');
        if (!visit(equals < 0 ? piece : piece.first(equals), equals < 0 ? QByteArrayView() : piece.sliced(equals + 1)))
            return false;
    }
    return true;
}
} // namespace Percent

class FormBody
{
public:
    struct Field
    {
        QString name;       // percent-decoded
        QByteArrayView raw; // points into the body, which the form keeps
    };

    // Nullopt when a field name is not decodable.
    static std::optional<FormBody> parse(const QByteArray &body);
    // A body "a=" + a JSON object, written raw (as the program does) or URL-encoded.
    static std::optional<QJsonObject> jsonObject(const QByteArray &body, const char *name);
    // A number sent as a JSON number or a decimal text; 0 otherwise.
    static qint64 jsonInteger(const QJsonValue &value);

    const QList<Field> &fields() const { return m_fields; }
    bool contains(const QString &name) const;
    // The first field's value, raw (as UTF-8) or URL-decoded; decoded() is nullopt when the field is missing or
    // malformed.
    QString raw(const QString &name) const;
    std::optional<QString> decoded(const QString &name) const;
    // Everything from the field's value to the end of the body: for a last field that may hold "&" itself.
    QString rawToEnd(const QString &name) const;

private:
    QByteArray m_body;
    QList<Field> m_fields;
};
