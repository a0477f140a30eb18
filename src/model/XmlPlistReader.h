#pragma once

// XML property lists, read in one pass over UTF-8 by a reader that knows XML's markup (processing instructions,
// comments, a DOCTYPE with its internal subset, CDATA, references), so that nothing inside them can hide an element
// or fake one. A byte-order mark and the encoding a declaration names (ISO-8859-1, macintosh, ...) are honoured;
// entity declarations are refused. Values become QString, qint64 (PlistWideInteger past 64 bits), double, bool,
// QDateTime (UTC), QByteArray, QVariantList and QVariantMap, within the bounds of PlistBudget.

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

namespace XmlPlistReader {

// The top value of the list in bytes: UTF-8, or the encoding its declaration names.
std::optional<QVariant> read(const QByteArray &bytes, QString *problem);
// The same for text already decoded (UTF-16); a declared encoding is then ignored.
std::optional<QVariant> read(const QString &text, QString *problem);

} // namespace XmlPlistReader
