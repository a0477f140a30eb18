#pragma once

// Property lists as bundles ship them: XML and binary (through libplist), and the old-style text form of
// .strings files (UTF-16 with a byte-order mark, or UTF-8), read by our own small parser.

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace PropertyList {

struct ReadResult
{
    std::optional<QVariantMap> dictionary; // nullopt: missing, unreadable, malformed or not a dictionary
    QString problem;                       // why there is no dictionary; "" when the file does not exist
    bool exists = true;                    // false: nothing at the path (or a folder on the way is missing)
};

// An XML or binary property list whose root is a dictionary.
ReadResult readDictionaryFile(const QString &path);
// A .strings file: old-style text ("key" = "value";), or an XML or binary property list.
ReadResult readStringsFile(const QString &path);

std::optional<QVariantMap> parseDictionary(const QByteArray &bytes, QString *problem = nullptr);
std::optional<QVariantMap> parseStrings(const QByteArray &bytes, QString *problem = nullptr);

// Property-list values become QString, qint64, double, bool, QDateTime (UTC), QByteArray, QVariantList, QVariantMap.
QByteArray toXml(const QVariantMap &dictionary);
QByteArray toBinary(const QVariantMap &dictionary);

} // namespace PropertyList
