#pragma once

// XML property lists, read with QXmlStreamReader: it honours byte-order marks, the encoding a list declares
// (ISO-8859-1, macintosh, UTF-16, ...), comments, processing instructions and a DOCTYPE, and none of these can
// hide an element from it or fake one. Values become QString, qint64 (PlistWideInteger past 64 bits), double,
// bool, QDateTime (UTC), QByteArray, QVariantList and QVariantMap, within the bounds of PlistBudget.

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

namespace XmlPlistReader {

// The top value of the list in bytes, their encoding told by a byte-order mark or the XML declaration.
std::optional<QVariant> read(const QByteArray &bytes, QString *problem);
// The same for text already decoded (a UTF-16 file without a byte-order mark).
std::optional<QVariant> read(const QString &text, QString *problem);

} // namespace XmlPlistReader
