#pragma once

// The folders the installer unpacks into: made fresh under a unique name, checked after a tool has written into
// them, and removed without ever following a link out of them.

#include <QString>
#include <QStringList>

namespace WorkFolder {

// A globally unique name for a new folder.
QString uniqueName();
// Makes an empty folder at path (a leftover there is removed first); false, after its log line, when none could be
// made.
bool prepare(const QString &path);
// Removes path and everything under it, links as links; read-only folders are opened up first. true when gone.
bool remove(const QString &path);
// Whether an archive entry's name stays inside the folder it is unpacked into: not absolute, no ".." step.
bool isContainedName(const QString &name);
// Whether every line of a tool's listing names a contained entry.
bool listsContainedNames(const QByteArray &listing);
// Whether every line of a long listing (each starting with the entry's mode, as "ls -l" shows it) is a folder, a
// file or a link: unpacking such an archive makes no device node, pipe or socket.
bool listsOnlyPlainKinds(const QByteArray &longListing);
// Whether folder is still a real folder holding only folders, files and links (no devices, pipes or sockets).
bool holdsOnlyPlainEntries(const QString &folder);
// The absolute path of a tool, found on PATH, else in /usr/bin.
QString tool(const QString &name);

} // namespace WorkFolder
