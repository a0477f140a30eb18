#pragma once

// Downloads for the installer's tests, made at run time with the real tools: an app bundle tree, archives of it
// (zip, tar, bzip2, an ISO/HFS+ disk image), flat installer packages, and a listing of what a folder holds.

#include <QString>
#include <QStringList>

namespace InstallFixtures {

// Runs program with args in folder, its standard output into outFile and its input from inFile when given. false,
// with a warning, when the tool is missing or fails: a test then fails, it never skips.
bool run(const QString &program, const QStringList &args, const QString &folder, const QString &outFile = {},
         const QString &inFile = {});
// Under root: Foo.app (Contents/Info.plist, Contents/MacOS/foo executable, Contents/Current -> MacOS),
// Applications -> /Applications and __MACOSX/._Foo.app.
void makeAppTree(const QString &root);
// Every entry under folder, sorted: "path/" for a folder, "path*" for an executable file, "path -> target" for a
// link (an absolute target shown as "/").
QStringList describe(const QString &folder);
// A flat package of what root holds, its payload gzip-compressed or, with pbzx, in "pbzx" chunks of xz (one
// compressed chunk, one stored as it is); installLocation "" leaves the attribute out.
bool makeFlatPackage(const QString &root, const QString &package, const QString &installLocation, bool pbzx);

} // namespace InstallFixtures
