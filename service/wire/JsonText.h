#pragma once

#include <QByteArray>
#include <QString>

namespace JsonText {

// Appends the text as a JSON string literal, quotes included.
void appendQuoted(QByteArray &out, const QString &text);
QByteArray quoted(const QString &text);
// The same for bytes read as UTF-8, as QString::fromUtf8 reads them (a broken sequence becomes U+FFFD).
void appendQuotedBytes(QByteArray &out, QByteArrayView utf8);

} // namespace JsonText
