#include "model/StringUtils.h"

#include "model/RecordText.h"

#include <QCryptographicHash>
#include <QStringEncoder>

#include <optional>

namespace {

// Qt may hand back a null string for an empty result; a present input must give a present result.
QString keepPresent(const QString &result)
{
    return result.isNull() ? RecordText::empty : result;
}

// The text's UTF-8 bytes; nullopt for absent text and for text with an unpaired surrogate, which has no UTF-8 form.
std::optional<QByteArray> strictUtf8(const QString &text)
{
    if (text.isNull())
        return std::nullopt;
    QStringEncoder encoder(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
    const QByteArray bytes = encoder.encode(text);
    return encoder.hasError() ? std::nullopt : std::optional(bytes);
}

} // namespace

QString trimmedString(const QString &text)
{
    if (text.isNull())
        return {};
    return keepPresent(text.trimmed());
}

QString removeTabsAndReturns(const QString &text)
{
    if (text.isNull())
        return {};
    QString result = text;
    result.remove(u'\n');
    result.remove(u'\r');
    result.remove(u'\t');
    return keepPresent(result);
}

bool containsString(const QString &text, const QString &other, bool ignoringCase)
{
    // An empty text is never found, so callers cannot mistake "nothing to look for" for a match.
    if (other.isEmpty())
        return false;
    return text.contains(other, ignoringCase ? Qt::CaseInsensitive : Qt::CaseSensitive);
}

qsizetype firstDigit(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] >= u'0' && text[i] <= u'9')
            return i;
    }
    return -1;
}

QString md5HexHash(const QString &text)
{
    // A lossy replacement would give another text's digest.
    const auto bytes = strictUtf8(text);
    if (!bytes)
        return {};
    return QString::fromLatin1(QCryptographicHash::hash(*bytes, QCryptographicHash::Md5).toHex());
}

QString base64Encoding(const QByteArray &bytes)
{
    return keepPresent(QString::fromLatin1(bytes.toBase64()));
}

QByteArray dataWithBase64EncodedString(const QString &text)
{
    if (text.isNull())
        return {};
    // The lenient decoder skips line breaks and other stray characters, as mail and plist data carry them.
    QByteArray bytes = QByteArray::fromBase64(text.toLatin1());
    return bytes.isNull() ? QByteArray("") : bytes;
}

QString urlEncodeValue(const QString &text)
{
    const auto bytes = strictUtf8(text);
    if (!bytes)
        return {};
    // Everything but the unreserved characters is escaped, so "&", "=", "+" and "/" survive inside a form value,
    // and text in other scripts goes out as its UTF-8 bytes.
    return keepPresent(QString::fromLatin1(bytes->toPercentEncoding()));
}
