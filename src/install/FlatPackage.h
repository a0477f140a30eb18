#pragma once

// An installer package in the flat form (a xar archive): the component packages it holds, each a payload (a cpio
// archive, gzip-compressed or in "pbzx" chunks) with the folder it installs into.

#include <QList>
#include <QString>

#include <optional>

struct PackagePayload
{
    QString payload;         // the file, inside the folder the package was opened in
    QString installLocation; // absolute, "/" when the package gives none
};

namespace FlatPackage {

// Unpacks package into the empty folder into; nullopt when it is no readable package or carries no payload.
std::optional<QList<PackagePayload>> open(const QString &package, const QString &into);
// Unpacks a payload's files into the empty folder into, links and modes kept; false on a damaged payload or one
// that names a file outside into.
bool unpackPayload(const QString &payload, const QString &into);

} // namespace FlatPackage
