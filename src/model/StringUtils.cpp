#include "model/StringUtils.h"

#include "model/RecordText.h"

#include <QCryptographicHash>
#include <QStringEncoder>
#include <QUrl>

namespace {

// Qt may hand back a null string for an empty result; a present input must give a present result.
QString keepPresent(const QString &result)
{
    return result.isNull() ? RecordText::empty : result;
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
    if (text.isNull())
        return {};
    // Strict UTF-8: a lone surrogate has no UTF-8 form, and a lossy replacement would give another text's digest.
    QStringEncoder encoder(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
    const QByteArray bytes = encoder.encode(text);
    if (encoder.hasError())
        return {};
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex());
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
