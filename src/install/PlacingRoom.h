#pragma once

// Whether the volume an item is placed on keeps its reserve free once the new copy is there. velmora-place copies
// the whole item beside the installed one before it swaps them, so the old copy's room does not count.

#include <QCoreApplication>
#include <QString>

#include <functional>

class PlacingRoom
{
    Q_DECLARE_TR_FUNCTIONS(PlacingRoom)

public:
    // The free bytes of the volume holding folder; -1 when unknown.
    using FreeBytes = std::function<qint64(const QString &folder)>;
    static qint64 volumeFreeBytes(const QString &folder);
    // folder, or where it is missing, the nearest folder above it that exists.
    static QString nearestFolder(QString folder);

    // "" when a copy of item placed at target leaves more than reserveBytes free, else why not, in the user's words.
    static QString check(const QString &item, const QString &target, qint64 reserveBytes,
                         const FreeBytes &freeBytes = volumeFreeBytes);
    // Roughly what a copy of path takes: its files' sizes in whole 4 KiB blocks and a block for each other entry;
    // links are not followed.
    static qint64 copyBytes(const QString &path);
};
