#pragma once

// What the file index would say about one bundle: the attributes a record is built from.
// An attribute that could not be read is nullopt, and the record logs and marks that field.

#include <QDateTime>
#include <QString>

#include <optional>

class BundleReader;

struct VLMdItem
{
    std::optional<QString> path;
    std::optional<QString> displayName;
    std::optional<QString> fsName;
    std::optional<QDateTime> lastUsedDate; // absent when the bundle was never opened since it changed
    std::optional<QDateTime> contentModificationDate;
    QString kind;    // path extension of fsName: "app", "prefPane", ...
    qint64 size = 0; // bytes of the bundle folder entry itself (a link's target), as a directory listing gives it

    // Reads the attributes of the bundle (or composition file) at path from the file system.
    static VLMdItem fromPath(const QString &path);
    // The same, taking the bundle's information dictionary from a reader that later readers share.
    static VLMdItem fromBundle(BundleReader &bundle);
    // The modification date of the file or folder itself (of a link's target), or nullopt.
    static std::optional<QDateTime> modificationDate(const QString &path);
};
