#include "model/StringUtils.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QStringConverter>
#include <QUrl>
#include <QXmlStreamReader>

#include <cstring>
#include <optional>

namespace {

// Qt may hand back a null string for an empty result; a present input must give a present result.
QString keepPresent(const QString &result)
{
    return result.isNull() ? QStringLiteral("") : result;
}

// UTF-8 without lossy replacement: a lone surrogate has no UTF-8 form, so it gives no bytes at all.
std::optional<QByteArray> strictUtf8(const QString &text)
{
    if (text.isNull())
        return std::nullopt;
    QStringEncoder encoder(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
    QByteArray bytes = encoder.encode(text);
    if (encoder.hasError())
        return std::nullopt;
    return bytes;
}

QByteArray digest(const QByteArray &bytes, QCryptographicHash::Algorithm algorithm)
{
    return QCryptographicHash::hash(bytes, algorithm);
}

QString hexDigest(const QByteArray &bytes, QCryptographicHash::Algorithm algorithm)
{
    return QString::fromLatin1(digest(bytes, algorithm).toHex());
}

QByteArray textDigest(const QString &text, QCryptographicHash::Algorithm algorithm)
{
    const std::optional<QByteArray> bytes = strictUtf8(text);
    return bytes ? digest(*bytes, algorithm) : QByteArray();
}

QString textHexDigest(const QString &text, QCryptographicHash::Algorithm algorithm)
{
    const std::optional<QByteArray> bytes = strictUtf8(text);
    return bytes ? hexDigest(*bytes, algorithm) : QString();
}

bool isAsciiAlphanumeric(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9');
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

QByteArray md5Hash(const QString &text)
{
    return textDigest(text, QCryptographicHash::Md5);
}

QString md5HexHash(const QString &text)
{
    return textHexDigest(text, QCryptographicHash::Md5);
}

QByteArray sha1Hash(const QString &text)
{
    return textDigest(text, QCryptographicHash::Sha1);
}

QString sha1HexHash(const QString &text)
{
    return textHexDigest(text, QCryptographicHash::Sha1);
}

QByteArray md5Hash(const QByteArray &bytes)
{
    return digest(bytes, QCryptographicHash::Md5);
}

QString md5HexHash(const QByteArray &bytes)
{
    return hexDigest(bytes, QCryptographicHash::Md5);
}

QByteArray sha1Hash(const QByteArray &bytes)
{
    return digest(bytes, QCryptographicHash::Sha1);
}

QString sha1HexHash(const QByteArray &bytes)
{
    return hexDigest(bytes, QCryptographicHash::Sha1);
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
    if (text.isNull())
        return {};
    for (const QChar c : text) {
        if (c.unicode() > 0x7f)
            return {};
    }
    // Everything but the unreserved characters is escaped, so "&", "=", "+" and "/" survive inside a form value.
    return keepPresent(QString::fromLatin1(QUrl::toPercentEncoding(text)));
}

QString stripHtml(const QString &html)
{
    if (html.isNull())
        return {};
    // Entities are not expanded: "&nbsp;" stays as written and a bare "&" cannot break the parse.
    QString escaped = html;
    escaped.replace(u'&', QStringLiteral("&amp;"));
    QXmlStreamReader reader(QStringLiteral("<root>") + escaped + QStringLiteral("</root>"));
    QString text = QStringLiteral("");
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::Characters)
            text += reader.text();
    }
    return text;
}

QString stringWithPascalString(const QByteArray &pascal, const char *encoding)
{
    if (pascal.isEmpty() || encoding == nullptr)
        return {};
    const auto length = static_cast<unsigned char>(pascal.front());
    if (pascal.size() < 1 + length)
        return {};
    QStringDecoder decoder(encoding, QStringDecoder::Flag::Stateless);
    if (!decoder.isValid())
        return {};
    const QString text = decoder.decode(QByteArrayView(pascal).sliced(1, length));
    if (decoder.hasError())
        return {};
    return keepPresent(text);
}

bool convertToPascalStringInBuffer(const QString &text, char *buffer, int size, const char *encoding)
{
    if (text.isNull() || buffer == nullptr || size < 1 || encoding == nullptr)
        return false;
    QStringEncoder encoder(encoding, QStringEncoder::Flag::Stateless);
    if (!encoder.isValid())
        return false;
    const QByteArray bytes = encoder.encode(text);
    if (encoder.hasError())
        return false;
    // Some encoders (Latin-1) substitute "?" without reporting it: only a lossless round trip counts.
    QStringDecoder decoder(encoding, QStringDecoder::Flag::Stateless);
    if (QString(decoder.decode(bytes)) != text)
        return false;
    // The length byte limits the text to 255 bytes; the buffer is left untouched when it cannot hold it all.
    if (bytes.size() > 255 || bytes.size() + 1 > size)
        return false;
    buffer[0] = static_cast<char>(bytes.size());
    if (!bytes.isEmpty())
        std::memcpy(buffer + 1, bytes.constData(), static_cast<size_t>(bytes.size()));
    return true;
}

bool isValidURL(const QString &text)
{
    if (text.isEmpty())
        return false;
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.scheme().isEmpty();
}

QString safeFilePath(const QString &path)
{
    const auto taken = [](const QString &candidate) {
        const QFileInfo info(candidate);
        // A dangling link is still in the way: writing there would follow it.
        return info.exists() || info.isSymLink();
    };
    if (path.isEmpty() || !taken(path))
        return path;

    const QFileInfo info(path);
    const QString fileName = info.fileName();
    const qsizetype dot = fileName.lastIndexOf(u'.');
    // A leading dot names a hidden file rather than starting an extension.
    const bool hasExtension = dot > 0;
    const QString directoryPart = path.left(path.size() - fileName.size());
    const QString base = directoryPart + (hasExtension ? fileName.left(dot) : fileName);
    const QString extension = hasExtension ? fileName.mid(dot + 1) : QString();

    for (int counter = 2;; ++counter) {
        // Plain concatenation: a "%1" inside a file name must stay as it is.
        QString candidate = base + u' ' + QString::number(counter);
        if (hasExtension)
            candidate += u'.' + extension;
        if (!taken(candidate))
            return candidate;
    }
}

QString urlTitle(const QString &name)
{
    if (name.isNull())
        return {};
    const QString lower = name.toLower();
    QString title = QStringLiteral("");
    bool pendingDash = false;
    for (const QChar c : lower) {
        if (!isAsciiAlphanumeric(c)) {
            pendingDash = true;
            continue;
        }
        if (pendingDash && !title.isEmpty())
            title += u'-';
        pendingDash = false;
        title += c;
    }
    return title;
}
