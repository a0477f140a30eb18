#pragma once

// Text helpers shared by the record, the catalogue exchange and the account code.
// A null QString stands for an absent value; "" is a present, empty one. Helpers keep the two apart.

#include <QByteArray>
#include <QString>
#include <QStringView>

// White space and line breaks removed from both ends. Null stays null.
QString trimmedString(const QString &text);
// Every "\n", "\r" and "\t" removed; the pieces are joined with nothing in between.
QString removeTabsAndReturns(const QString &text);
// An empty or absent other text is never found.
bool containsString(const QString &text, const QString &other, bool ignoringCase = false);
// The index of the first ASCII digit, or -1. Other scripts' digits never start a version or a number.
qsizetype firstDigit(QStringView text);

// The MD5 digest of the text's UTF-8 bytes in lower-case hex. Text with unpaired surrogates has no UTF-8 form: null.
QString md5HexHash(const QString &text);

// Standard base64; empty input gives "". The decoder ignores characters outside the alphabet.
QString base64Encoding(const QByteArray &bytes);
QByteArray dataWithBase64EncodedString(const QString &text);

// Percent-escapes the UTF-8 bytes of every character outside A-Z a-z 0-9 - . _ ~. Null input, or text with an
// unpaired surrogate (it has no UTF-8 form), gives null.
QString urlEncodeValue(const QString &text);
