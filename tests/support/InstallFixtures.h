#pragma once

// Downloads for the installer's tests, made at run time with the real tools.

#include <QString>
#include <QStringList>

namespace InstallFixtures {

// Runs program in folder, output into outFile and input from inFile when given; false (with a warning) when the
// tool is missing or fails: a test then fails, it never skips.
bool run(const QString &program, const QStringList &args, const QString &folder, const QString &outFile = {},
         const QString &inFile = {});
// Foo.app (Contents/Info.plist, Contents/MacOS/foo executable, Contents/Current -> ../Contents/MacOS), a link
// Applications -> /Applications and __MACOSX/._Foo.app under root.
void makeAppTree(const QString &root);
// Every entry under folder, sorted: "path/" a folder, "path*" an executable, "path -> target" a link.
QStringList describe(const QString &folder);
// A flat package titled "Foo Tools" of root's files at installLocation (none when ""), its payload gzip-compressed or
// in "pbzx" chunks (one of xz, one stored as it is).
bool makeFlatPackage(const QString &root, const QString &package, const QString &installLocation, bool pbzx);
// A UDIF disk image around volume: one chunk, raw or zlib-compressed, its block table in the property list, the
// "koly" trailer.
bool makeUdif(const QString &volume, const QString &image, bool zlib);

} // namespace InstallFixtures
