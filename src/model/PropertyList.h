#pragma once

// Property lists as bundles ship them, in any form the platform's reader takes: XML (in any encoding it declares),
// binary, and old-style text (.strings files, a few Info.plist files; UTF-16 or UTF-8). The readers are our own, so
// that every list is read within the same bounds (PlistBudget) in time that grows with its size; libplist writes.

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

// A property list whose root is a dictionary.
ReadResult readDictionaryFile(const QString &path);
// The same for a .strings file, where an empty file is an empty dictionary.
ReadResult readStringsFile(const QString &path);

std::optional<QVariantMap> parseDictionary(const QByteArray &bytes, QString *problem = nullptr);
std::optional<QVariantMap> parseStrings(const QByteArray &bytes, QString *problem = nullptr);

// Property-list values become QString, qint64 (PlistWideInteger when it does not fit), double, bool, QDateTime
// (UTC), QByteArray, QVariantList, QVariantMap; an empty text value is an empty, not a null, QString.
QByteArray toXml(const QVariantMap &dictionary);
QByteArray toBinary(const QVariantMap &dictionary);

} // namespace PropertyList
