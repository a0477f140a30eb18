#pragma once

// Text and byte helpers shared by the record, the catalogue exchange and the account code.
// A null QString stands for an absent value; "" is a present, empty one. Helpers keep the two apart.

#include <QByteArray>
#include <QString>

// White space and line breaks removed from both ends. Null stays null.
QString trimmedString(const QString &text);
// Every "\n", "\r" and "\t" removed; the pieces are joined with nothing in between.
QString removeTabsAndReturns(const QString &text);
// An empty or absent other text is never found.
bool containsString(const QString &text, const QString &other, bool ignoringCase = false);

// Digests of the text's UTF-8 bytes. Text with unpaired surrogates is not representable: null result.
QByteArray md5Hash(const QString &text);
QString md5HexHash(const QString &text);
QByteArray sha1Hash(const QString &text);
QString sha1HexHash(const QString &text);
// Any buffer, an empty one too, has a digest.
QByteArray md5Hash(const QByteArray &bytes);
QString md5HexHash(const QByteArray &bytes);
QByteArray sha1Hash(const QByteArray &bytes);
QString sha1HexHash(const QByteArray &bytes);

// Standard base64; empty input gives "". The decoder ignores characters outside the alphabet.
QString base64Encoding(const QByteArray &bytes);
QByteArray dataWithBase64EncodedString(const QString &text);

// Percent-escapes every character outside A-Z a-z 0-9 - . _ ~. Null input, or any non-ASCII character, gives null.
QString urlEncodeValue(const QString &text);

// The character content of an HTML fragment; markup dropped, a parse error ends the text where it occurs.
QString stripHtml(const QString &html);

// Length-prefixed byte strings (first byte = length). Encodings: "UTF-8", "ISO-8859-1" or any name QStringConverter
// knows. Null when the bytes are fewer than the length byte says, do not decode, or the encoding is unknown.
QString stringWithPascalString(const QByteArray &pascal, const char *encoding = "ISO-8859-1");
// Writes text into buffer (at most size bytes including the length byte); false when it does not fit or cannot be
// encoded.
bool convertToPascalStringInBuffer(const QString &text, char *buffer, int size, const char *encoding = "ISO-8859-1");

// True when the text parses as an absolute URL with a scheme.
bool isValidURL(const QString &text);
// The path itself when nothing exists there, else "base 2.ext", "base 3.ext", ... the first free one.
QString safeFilePath(const QString &path);
// The site's title of an app name: lower case, every run of characters other than a-z and 0-9 becomes one "-",
// none at either end ("Foo Bar 2!" -> "foo-bar-2").
QString urlTitle(const QString &name);
