#pragma once

// An installer package in the flat form (a xar archive): the component packages it holds, each a payload (a cpio
// archive, gzip-compressed or in "pbzx" chunks) with the folder it installs into. Everything here runs as the user:
// only what was unpacked is ever handed to a step with administrator rights.

#include "install/UnpackBudget.h"

#include <QList>
#include <QString>

#include <optional>

struct UnpackedPayload
{
    QString files;  // a folder holding the payload's files, links and modes kept
    QString target; // the folder they install into: an application folder under the root, or a folder in one
};

namespace FlatPackage {

// Unpacks every payload of package into its own folder under workFolder (made fresh), each to be installed under
// root; nullopt, after its log line, when package is no readable package, carries no payload or a damaged one, or
// names a file or an install location outside its folder, or installs anything outside the volume's application
// folders. A payload installing above them ("/") comes back as one folder for each application folder it fills.
// Each step writes within a budget tied to the package's size; failure, when given, gets the reason a tool failed
// or a budget was passed.
std::optional<QList<UnpackedPayload>> unpack(const QString &package, const QString &workFolder, const QString &root,
                                             const UnpackLimits &limits = {}, QString *failure = nullptr);
// The package's title as its distribution gives it; "" when it gives none.
QString title(const QString &package);

} // namespace FlatPackage
